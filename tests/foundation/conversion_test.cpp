// Doubles cut to ints, whatever the double.
#include "foundation/conversion.h"

#include <gtest/gtest.h>

#include <climits>
#include <limits>

namespace {

using vornel::TruncateToInt;

TEST(TruncateToInt, CutsTowardZero) {
    EXPECT_EQ(TruncateToInt(0.0), 0);
    EXPECT_EQ(TruncateToInt(-0.0), 0);
    EXPECT_EQ(TruncateToInt(2.999), 2);
    EXPECT_EQ(TruncateToInt(-2.999), -2);
    EXPECT_EQ(TruncateToInt(604799.5), 604799);
}

TEST(TruncateToInt, ReachesBothEndsOfTheRange) {
    EXPECT_EQ(TruncateToInt(2147483647.0), INT_MAX);
    EXPECT_EQ(TruncateToInt(2147483647.9), INT_MAX);
    EXPECT_EQ(TruncateToInt(-2147483648.0), INT_MIN);
    EXPECT_EQ(TruncateToInt(-2147483648.9), INT_MIN);
    EXPECT_EQ(TruncateToInt(-2147483647.0), -INT_MAX);
}

TEST(TruncateToInt, WhatDoesNotFitIsTheSmallestInt) {
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double x : {2147483648.0, -2147483649.0, 1e300, -1e300, infinity, -infinity,
                           std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(TruncateToInt(x), INT_MIN) << x;
    }
}

}  // namespace
