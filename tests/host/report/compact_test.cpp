#include "report/compact.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "decoding.h"

namespace vornel::report {
namespace {

using testing::ElementsAre;

std::string Encoded(std::initializer_list<std::int64_t> values) {
    std::string text;
    for (const std::int64_t value : values) {
        AppendInteger(text, value);
    }
    return text;
}

// The values of source maps for the same numbers ("Source Map Revision 3").
TEST(AppendInteger, IsTheQuantityOfSourceMaps) {
    EXPECT_EQ(Encoded({0}), "A");
    EXPECT_EQ(Encoded({1}), "C");
    EXPECT_EQ(Encoded({-1}), "D");
    EXPECT_EQ(Encoded({15}), "e");
    EXPECT_EQ(Encoded({16}), "gB");
    EXPECT_EQ(Encoded({123}), "2H");
    EXPECT_EQ(Encoded({123456789}), "qxmvrH");
    EXPECT_EQ(Encoded({0, 0, 16, 1}), "AAgBC");
}

TEST(AppendInteger, ComesBack) {
    std::string text;
    std::vector<std::int64_t> values;
    for (std::int64_t value = -70000; value <= 70000; value += 37) {
        values.push_back(value);
        AppendInteger(text, value);
    }
    EXPECT_EQ(test::Integers(text), values);
}

TEST(EncodedEpochs, AreStretches) {
    EXPECT_EQ(EncodedEpochs({}), "");
    EXPECT_THAT(test::Integers(EncodedEpochs({3, 4, 5, 9, 20, 21})),
                ElementsAre(3, 3, 3, 1, 10, 2));
    EXPECT_THAT(test::Epochs(EncodedEpochs({3, 4, 5, 9, 20, 21})), ElementsAre(3, 4, 5, 9, 20, 21));
}

TEST(EncodedTimes, CountEqualSteps) {
    EXPECT_EQ(EncodedTimes({{2111, 0.0}}), "");
    EXPECT_THAT(test::Integers(
                    EncodedTimes({{2110, 604740.0}, {2110, 604770.0}, {2111, 0.0}, {2111, 60.0}})),
                ElementsAre(30, 2, 60, 1));
}

}  // namespace
}  // namespace vornel::report
