// What every solution derives from its vector and covariance, against closed forms.
#include "run/solution_closing.h"

#include <gtest/gtest.h>

#include <cmath>

#include "run/synthetic_session.h"

namespace vornel {
namespace {

gult::matrixT Covariance(const double (&values)[3][3]) {
    const double* const rows[3] = {values[0], values[1], values[2]};
    return gult::matrixT(3, 3, rows);
}

TEST(SetBaseline, IsRoverMinusBaseWithItsNorm) {
    SolveResult result;
    SetBaseline(result, XYZPosition(1002.0, 2003.0, 2994.0), XYZPosition(1000.0, 2000.0, 3000.0));
    EXPECT_EQ(result.dX, 2.0);
    EXPECT_EQ(result.dY, 3.0);
    EXPECT_EQ(result.dZ, -6.0);
    EXPECT_EQ(result.length, 7.0);
}

TEST(SetBaseline, OfOnePointIsZero) {
    SolveResult result;
    const XYZPosition point(4e6, 1e6, 4.8e6);
    SetBaseline(result, point, point);
    EXPECT_EQ(result.dX, 0.0);
    EXPECT_EQ(result.length, 0.0);
}

TEST(SetCovariance, IsRotatedIntoNorthEastUpAtTheRover) {
    const double latitude = 40.0, longitude = 25.0;
    const double values[3][3] = {{4.0, 0.5, -0.3}, {0.5, 9.0, 0.7}, {-0.3, 0.7, 2.0}};
    SolveResult result;
    SetCovariance(result, Covariance(values), test::GeodeticPoint(latitude, longitude, 300.0));
    const double b = test::ToRadians(latitude), l = test::ToRadians(longitude);
    const double axes[3][3] = {
        {-std::sin(b) * std::cos(l), -std::sin(b) * std::sin(l), std::cos(b)},
        {-std::sin(l), std::cos(l), 0.0},
        {std::cos(b) * std::cos(l), std::cos(b) * std::sin(l), std::sin(b)}};
    ASSERT_EQ(result.covXYZ.RowCount(), 3U);
    ASSERT_EQ(result.covNEU.RowCount(), 3U);
    ASSERT_EQ(result.covNEU.ColCount(), 3U);
    for (std::uint32_t i = 0; i < 3; ++i) {
        for (std::uint32_t j = 0; j < 3; ++j) {
            EXPECT_EQ(result.covXYZ(i, j), values[i][j]);
            double expected = 0.0;
            for (std::size_t m = 0; m < 3; ++m) {
                for (std::size_t n = 0; n < 3; ++n) {
                    expected += axes[i][m] * values[m][n] * axes[j][n];
                }
            }
            EXPECT_NEAR(result.covNEU(i, j), expected, 1e-9);
        }
    }
}

TEST(SetAccuracy, FollowsFromTheDiagonalOfTheCovariance) {
    const double values[3][3] = {{4.0, 50.0, 60.0}, {50.0, 9.0, 70.0}, {60.0, 70.0, 3.0}};
    SolveResult result;
    SetBaseline(result, XYZPosition(2.0, 3.0, -6.0), XYZPosition());
    SetCovariance(result, Covariance(values), test::GeodeticPoint(40.0, 25.0, 0.0));
    SetAccuracy(result, result.length);
    EXPECT_DOUBLE_EQ(result.sigma3, 4.0);
    EXPECT_DOUBLE_EQ(result.relativeAccuracy, 4.0 / 7.0 * 1e6);
    EXPECT_DOUBLE_EQ(result.sigmaLength, std::sqrt((4.0 * 4.0 + 9.0 * 9.0 + 36.0 * 3.0) / 49.0));
}

TEST(SetAccuracy, TakesTheLengthGiven) {
    const double values[3][3] = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 2.0}};
    SolveResult result;
    SetCovariance(result, Covariance(values), test::GeodeticPoint(40.0, 25.0, 0.0));
    SetAccuracy(result, 1e-8);
    EXPECT_EQ(result.length, 0.0);
    EXPECT_DOUBLE_EQ(result.sigma3, 2.0);
    EXPECT_DOUBLE_EQ(result.relativeAccuracy, 2.0 / 1e-8 * 1e6);
    EXPECT_EQ(result.sigmaLength, 0.0);
}

TEST(IsZeroBaseline, NeedsBothLengthAndRmsBelowATenthOfAMillimetre) {
    SolveResult result;
    const double below = std::nextafter(0.0001, 0.0);
    const double cases[][3] = {{below, below, 1.0},       {0.0, 0.0, 1.0},
                               {0.0001, below, 0.0},      {below, 0.0001, 0.0},
                               {0.0001, 0.0001, 0.0},     {1000.0, below, 0.0},
                               {below, std::nan(""), 0.0}};
    for (const auto& c : cases) {
        result.length = c[0];
        result.rms = c[1];
        EXPECT_EQ(IsZeroBaseline(result), c[2] == 1.0) << c[0] << ", " << c[1];
    }
}

}  // namespace
}  // namespace vornel
