// The antenna term of the between-station value against closed forms.
#include <gtest/gtest.h>

#include <cmath>

#include "run/synthetic_session.h"

namespace vornel {
namespace {

constexpr double kL1 = 299792458.0 / 1575.42e6;
constexpr double kL2 = 299792458.0 / 1227.60e6;

struct Antennas {
    double rover1 = 0.0, rover2 = 0.0, roverHeight = 0.0;
    double base1 = 0.0, base2 = 0.0, baseHeight = 0.0;
};

std::unique_ptr<StaticSolve> SolverWith(const Antennas& antennas) {
    CTRLSolve control;
    // Horizontal offsets that must not matter.
    control.l1PcoRover[0] = control.l2PcoRover[1] = 7.0;
    control.l1PcoBase[1] = control.l2PcoBase[0] = -9.0;
    control.l1PcoRover[2] = antennas.rover1;
    control.l2PcoRover[2] = antennas.rover2;
    control.trueHeightRover = antennas.roverHeight;
    control.l1PcoBase[2] = antennas.base1;
    control.l2PcoBase[2] = antennas.base2;
    control.trueHeightBase = antennas.baseHeight;
    return test::MakeSolver(control);
}

const Antennas kMixed{.rover1 = 0.089,
                      .rover2 = 0.117,
                      .roverHeight = 1.5,
                      .base1 = 0.062,
                      .base2 = 0.071,
                      .baseHeight = 0.3};

TEST(AntennaSdCorrection, EqualAntennasAtTheZenithCancel) {
    const std::unique_ptr<StaticSolve> solver = SolverWith({.rover1 = 0.1,
                                                            .rover2 = 0.2,
                                                            .roverHeight = 1.5,
                                                            .base1 = 0.1,
                                                            .base2 = 0.2,
                                                            .baseHeight = 1.5});
    const double up = test::kTestPi / 2.0;
    EXPECT_EQ(solver->AntennaSdCorrection(1.0, 0.0, kL1, kL2, up, up), 0.0);
    EXPECT_EQ(solver->AntennaSdCorrection(0.0, 1.0, kL1, kL2, up, up), 0.0);
    EXPECT_EQ(solver->AntennaSdCorrection(1.0, -1.0, kL1, kL2, up, up), 0.0);
}

TEST(AntennaSdCorrection, OneFrequencyGivesTheDifferenceOfTheVerticalPartsSeenFromTheSatellite) {
    const std::unique_ptr<StaticSolve> solver = SolverWith(kMixed);
    for (const double rover : {0.3, 0.9, 1.4}) {
        for (const double base : {0.25, 0.95, 1.5}) {
            EXPECT_NEAR(solver->AntennaSdCorrection(1.0, 0.0, kL1, kL2, rover, base),
                        1.589 * std::sin(rover) - 0.362 * std::sin(base), 1e-11);
            EXPECT_NEAR(solver->AntennaSdCorrection(0.0, 1.0, kL1, kL2, rover, base),
                        1.617 * std::sin(rover) - 0.371 * std::sin(base), 1e-11);
        }
    }
}

TEST(AntennaSdCorrection, ACombinationCarriesBothOffsetsInItsOwnWavelength) {
    const std::unique_ptr<StaticSolve> solver = SolverWith(kMixed);
    const double rover = 0.8, base = 0.7;
    const long double d1 = 1.589L * std::sin(0.8L) - 0.362L * std::sin(0.7L);
    const long double d2 = 1.617L * std::sin(0.8L) - 0.371L * std::sin(0.7L);
    const double cases[][2] = {
        {1.0, 1.0}, {1.0, -1.0}, {2.54572778016316, -1.983683984542722}, {77.0, -60.0}};
    for (const auto& c : cases) {
        const long double cycles =
            c[0] / static_cast<long double>(kL1) * d1 + c[1] / static_cast<long double>(kL2) * d2;
        const long double wavelength =
            1.0L / (c[0] / static_cast<long double>(kL1) + c[1] / static_cast<long double>(kL2));
        EXPECT_NEAR(solver->AntennaSdCorrection(c[0], c[1], kL1, kL2, rover, base),
                    static_cast<double>(cycles * wavelength), 1e-9);
    }
}

TEST(AntennaSdCorrection, TheConstantKeepsAVanishingCombinationFinite) {
    const std::unique_ptr<StaticSolve> solver = SolverWith(kMixed);
    EXPECT_EQ(solver->AntennaSdCorrection(0.0, 0.0, kL1, kL2, 0.8, 0.7), 0.0);
    // Equal wavelengths, opposite coefficients: the combination has no wavelength.
    const double d1 = 1.589 * std::sin(0.8) - 0.362 * std::sin(0.7);
    const double d2 = 1.617 * std::sin(0.8) - 0.371 * std::sin(0.7);
    EXPECT_NEAR(solver->AntennaSdCorrection(1.0, -1.0, 0.2, 0.2, 0.8, 0.7) /
                    ((d1 - d2) / 0.2 * 0.04 / 1e-12),
                1.0, 1e-9);
}

TEST(AntennaSdCorrection, WithoutAntennasThereIsNone) {
    EXPECT_EQ(SolverWith({})->AntennaSdCorrection(1.0, -1.0, kL1, kL2, 0.8, 0.7), 0.0);
}

}  // namespace
}  // namespace vornel
