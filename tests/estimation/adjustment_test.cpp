// The small pieces that the float and the fixed solution share.
#include "estimation/adjustment.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vornel {
namespace {

TEST(Adjustment, TheResidualScaleStaysBetweenThreeMillimetresAndSixtyCentimetres) {
    EXPECT_EQ(ResidualScale(0.0), 0.003);
    EXPECT_EQ(ResidualScale(0.0029), 0.003);
    EXPECT_EQ(ResidualScale(0.0031), 0.0031);
    EXPECT_EQ(ResidualScale(0.599), 0.599);
    EXPECT_EQ(ResidualScale(0.601), 0.6);
    EXPECT_EQ(ResidualScale(1e9), 0.6);
}

TEST(Adjustment, TheRmsIsPlainAndTheUnitWeightIsOfTheDegreesOfFreedom) {
    const AdjustmentQuality quality = QualityOf(8.0, 45.0, 2, 5);
    EXPECT_EQ(quality.sigma0, 2.0);
    EXPECT_EQ(quality.rms, 3.0);
    // The plain sum is kept off zero.
    EXPECT_DOUBLE_EQ(QualityOf(8.0, -1.0, 2, 4).rms, std::sqrt(1e-12 / 4.0));
}

TEST(Adjustment, OnlyTheCoordinatesMakeTheLengthOfACorrection) {
    gult::matrixT dx(5, 1);
    dx(0, 0) = 2.0;
    dx(1, 0) = -3.0;
    dx(2, 0) = 6.0;
    dx(3, 0) = 100.0;
    EXPECT_EQ(CoordinateCorrection(dx), 7.0);
}

}  // namespace
}  // namespace vornel
