#include "network/statistics.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vornel::network {
namespace {

TEST(NetworkStatistics, ChiSquareOfThreeIsTheClosedForm) {
    for (const double x : {1e-6, 0.1, 1.0, 2.366, 7.815, 16.27, 60.0, 400.0}) {
        const double expected =
            std::erfc(std::sqrt(x / 2.0)) + std::sqrt(2.0 * x / M_PI) * std::exp(-x / 2.0);
        EXPECT_NEAR(ChiSquareTail(x, 3) / expected, 1.0, 1e-13) << x;
    }
    EXPECT_EQ(ChiSquareTail(-1.0, 3), 1.0);
    EXPECT_EQ(ChiSquareTail(0.0, 3), 1.0);
    EXPECT_EQ(ChiSquareTail(1e9, 3), 0.0);
}

// Tables of Abramowitz and Stegun (1964), 26.8 and 26.9.
TEST(NetworkStatistics, CriticalValuesAreThoseOfTheTables) {
    EXPECT_NEAR(ChiSquareCritical(0.05, 3), 7.81473, 5e-6);
    EXPECT_NEAR(ChiSquareCritical(0.001, 3), 16.266, 5e-4);
    EXPECT_NEAR(ChiSquareCritical(0.05, 100), 124.342, 5e-4);
    EXPECT_NEAR(FisherCritical(0.05, 3, 10), 3.71, 5e-3);
    EXPECT_NEAR(FisherCritical(0.01, 3, 20), 4.94, 5e-3);
    EXPECT_NEAR(FisherTail(FisherCritical(0.01, 3, 20), 3, 20), 0.01, 1e-12);
}

// Baarda (1968), nomograms; 17.075 is the value that textbooks print for 0.001 and 0.8.
TEST(NetworkStatistics, NoncentralityIsBaardas) {
    EXPECT_NEAR(Noncentrality(1, 0.001, 0.8), 17.075, 5e-4);
    EXPECT_NEAR(Noncentrality(1, 0.05, 0.8), 7.849, 5e-4);
}

// For three degrees of freedom against the sum of its definition: Poisson weights of central
// chi-square distributions with 3, 5, 7, ... degrees of freedom, these by their recurrence.
TEST(NetworkStatistics, NoncentralityOfThreeGivesThePower) {
    for (const double power : {0.5, 0.8, 0.95}) {
        const double lambda = Noncentrality(3, 0.001, power);
        const double critical = ChiSquareCritical(0.001, 3);
        double weight = std::exp(-lambda / 2.0), sum = 0.0;
        double term = std::sqrt(2.0 * critical / M_PI) * std::exp(-critical / 2.0);
        double tail = std::erfc(std::sqrt(critical / 2.0)) + term;
        for (int j = 0; j < 400; ++j) {
            sum += weight * tail;
            weight *= lambda / 2.0 / (j + 1);
            term *= critical / (3 + 2 * j);
            tail += term;
        }
        EXPECT_NEAR(sum, power, 1e-10);
    }
}

TEST(NetworkStatistics, ManyTestsTogetherAreWrongAsOftenAsSaid) {
    EXPECT_NEAR(1.0 - std::pow(1.0 - LevelOfEach(0.05, 50), 50), 0.05, 1e-12);
    EXPECT_DOUBLE_EQ(LevelOfEach(0.05, 1), 0.05);
}

}  // namespace
}  // namespace vornel::network
