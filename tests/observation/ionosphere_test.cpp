// Ionosphere models: the fixed shell and the broadcast model, against extended precision and hand
// arithmetic.
#include "observation/ionosphere.h"

#include <gtest/gtest.h>

#include <cmath>

#include "foundation/satellite.h"
#include "observation/reference_atmosphere.h"
#include "observation/reference_geometry.h"

namespace vornel {
namespace {

using reference::Radians;
using reference::Real;
using reference::Station;

constexpr double kZenith = 1.5707963267948966;
constexpr double kNight = 40.3 / (1575.42e6 * 1575.42e6) * 1e17;  // m, zenith

constexpr double kAlpha[4] = {1.1176e-08, 7.4506e-09, -5.9605e-08, -5.9605e-08};
constexpr double kBeta[4] = {90112.0, 0.0, -196610.0, -65536.0};

class Ionosphere : public ::testing::Test {
  protected:
    void SetUp() override { CurrentIonosphere() = IonosphereParameters(); }
    void TearDown() override { CurrentIonosphere() = IonosphereParameters(); }

    static void GiveCoefficients(const double alpha[4], const double beta[4]) {
        IonosphereParameters& parameters = CurrentIonosphere();
        for (int n = 0; n < 4; ++n) {
            parameters.alpha[n] = alpha[n];
            parameters.beta[n] = beta[n];
        }
        parameters.ionoValid = 1;
    }
};

Station At(Real latitude, Real longitude, Real height) {
    return {Radians(latitude), Radians(longitude), height};
}

// --- without coefficients

TEST_F(Ionosphere, StartsWithoutCoefficients) {
    const IonosphereParameters fresh;
    EXPECT_EQ(fresh.ionoValid, 0);
    for (int n = 0; n < 4; ++n) {
        EXPECT_EQ(fresh.alpha[n], 0.0);
        EXPECT_EQ(fresh.beta[n], 0.0);
    }
    EXPECT_EQ(&CurrentIonosphere(), &CurrentIonosphere());
}

TEST_F(Ionosphere, TheShellAgreesWithTheFormula) {
    for (const Real latitude : {-70.0L, 1.0L, 49.0L}) {
        for (const Real longitude : {-179.0L, -95.0L, 0.0L, 12.9L, 120.0L, 179.0L}) {
            for (const double second :
                 {0.0, 20000.5, 43200.0, 60000.0, 86399.0, 86400.0, 300000.0, 604799.0}) {
                for (const double elevation : {0.05, 0.3, 1.0, kZenith}) {
                    SCOPED_TRACE(testing::Message()
                                 << static_cast<double>(longitude) << " degrees, " << second
                                 << " s, " << elevation);
                    const Station station = At(latitude, longitude, 666.0L);
                    const Real truth = reference::ShellDelay(
                        station, std::fmod(static_cast<Real>(second), 86400.0L), elevation);
                    EXPECT_NEAR(IonoDelay(station.Position(), second, elevation, 1.0),
                                static_cast<double>(truth), 1e-9);
                }
            }
        }
    }
}

TEST_F(Ionosphere, TheShellInTheZenithByNightAndAtTwoInTheAfternoon) {
    const XYZPosition greenwich = At(51.5L, 0.0L, 0.0L).Position();
    EXPECT_NEAR(kNight, 1.6237, 1e-4);
    EXPECT_NEAR(IonoDelay(greenwich, 3600.0, kZenith, 0.0), kNight, 1e-12);
    EXPECT_NEAR(IonoDelay(greenwich, 14.0 * 3600.0, kZenith, 0.0), 4.0 * kNight, 1e-12);
    EXPECT_NEAR(IonoDelay(greenwich, 10.0 * 3600.0, kZenith, 0.0), 2.5 * kNight, 1e-12);
    EXPECT_NEAR(IonoDelay(greenwich, 18.0 * 3600.0, kZenith, 0.0), 2.5 * kNight, 1e-12);
}

TEST_F(Ionosphere, TheShellHasItsNightValueAtEightAndAtTwenty) {
    const XYZPosition greenwich = At(51.5L, 0.0L, 0.0L).Position();
    EXPECT_DOUBLE_EQ(IonoDelay(greenwich, 8.0 * 3600.0, kZenith, 0.0), kNight);
    EXPECT_DOUBLE_EQ(IonoDelay(greenwich, 20.0 * 3600.0, kZenith, 0.0), kNight);
    EXPECT_DOUBLE_EQ(IonoDelay(greenwich, 8.0 * 3600.0 - 0.5, kZenith, 0.0), kNight);
    EXPECT_DOUBLE_EQ(IonoDelay(greenwich, 20.0 * 3600.0 + 0.5, kZenith, 0.0), kNight);
    EXPECT_GT(IonoDelay(greenwich, 8.01 * 3600.0, kZenith, 0.0), kNight + 1e-3);
    EXPECT_GT(IonoDelay(greenwich, 19.99 * 3600.0, kZenith, 0.0), kNight + 1e-3);
}

TEST_F(Ionosphere, TheShellKnowsTheLocalTimeOnBothSidesOfTheDateLine) {
    // 14 h local time, at 2 h and at 26 h of Greenwich.
    EXPECT_NEAR(IonoDelay(At(30.0L, 179.999999L, 0.0L).Position(), 2.0 * 3600.0, kZenith, 0.0),
                4.0 * kNight, 1e-6);
    EXPECT_NEAR(IonoDelay(At(30.0L, -179.999999L, 0.0L).Position(), 2.0 * 3600.0, kZenith, 0.0),
                4.0 * kNight, 1e-6);
    EXPECT_NEAR(IonoDelay(At(30.0L, 150.0L, 0.0L).Position(), 28.0 * 3600.0, kZenith, 0.0),
                4.0 * kNight, 1e-6);
}

TEST_F(Ionosphere, TheShellLooksAtNoAzimuth) {
    const XYZPosition station = At(40.0L, 20.0L, 100.0L).Position();
    EXPECT_EQ(IonoDelay(station, 43200.0, 0.4, 0.0), IonoDelay(station, 43200.0, 0.4, 3.0));
}

// --- with coefficients

TEST_F(Ionosphere, TheBroadcastModelAgreesWithTheFormulaInWholeTurns) {
    GiveCoefficients(kAlpha, kBeta);
    int days = 0;
    for (const Real latitude : {-75.0L, -20.0L, 1.0L, 49.0L, 88.0L}) {
        for (const Real longitude : {-170.0L, -60.0L, 12.9L, 120.0L}) {
            for (const double second :
                 {0.0, 20000.0, 43200.0, 50400.0, 70000.0, 86399.0, 100000.0}) {
                for (const double elevation : {0.05, 0.3, 1.0, kZenith}) {
                    for (const double azimuth : {0.0, 1.0, 3.5, 6.0}) {
                        const Station station = At(latitude, longitude, 666.0L);
                        const Real truth = reference::BroadcastIonoDelay(
                            kAlpha, kBeta, station, second, elevation, azimuth);
                        const Real night = reference::BroadcastIonoDelay(
                            kAlpha, kBeta, station, 604800.0L, elevation, azimuth);
                        days += truth > night + 0.1L ? 1 : 0;
                        EXPECT_NEAR(IonoDelay(station.Position(), second, elevation, azimuth),
                                    static_cast<double>(truth), 1e-9);
                    }
                }
            }
        }
    }
    EXPECT_GT(days, 100);  // the daily bulge took part
}

TEST_F(Ionosphere, ZeroCoefficientsLeaveTheConstantTerm) {
    const double zeros[4] = {};
    GiveCoefficients(zeros, zeros);
    const XYZPosition station = At(49.0L, 12.9L, 666.0L).Position();
    // The zenith is a quarter turn: F = 1 + 16 * 0.28^3 = 1.351232.
    const double constant = 1.351232 * 5e-9 * kSpeedOfLight;
    for (const double second : {0.0, 50400.0, 604799.0}) {
        EXPECT_NEAR(IonoDelay(station, second, kZenith, 1.0), constant, 1e-12);
    }
    const double low = 0.1;
    const double slant = 1.0 + 16.0 * std::pow(0.53 - low / 6.283185307179586, 3.0);
    EXPECT_NEAR(IonoDelay(station, 50400.0, low, 1.0), slant * 5e-9 * kSpeedOfLight, 1e-12);
}

TEST_F(Ionosphere, TheSecondsOfTheWeekAreCutByOneDayOnly) {
    GiveCoefficients(kAlpha, kBeta);
    const Station station = At(49.0L, 12.9L, 666.0L);
    const double noon = 50400.0;
    const double night = 1.351232 * 5e-9 * kSpeedOfLight;
    const double firstDay = IonoDelay(station.Position(), noon, kZenith, 0.0);
    EXPECT_GT(firstDay, night + 0.5);
    EXPECT_NEAR(IonoDelay(station.Position(), noon + 86400.0, kZenith, 0.0), firstDay, 1e-9);
    for (int day = 2; day < 7; ++day) {
        EXPECT_NEAR(IonoDelay(station.Position(), noon + 86400.0 * day, kZenith, 0.0), night,
                    1e-12);
    }
}

// With periods of up to weeks the course reaches far into the week; with none it ends on the second
// day, for all directions at once or for some of them.
TEST_F(Ionosphere, TheCourseEndsWhereTheFormulaEndsIt) {
    const double betas[3][4] = {{90112.0, 0.0, -196610.0, -65536.0},
                                {72000.0, 300000.0, 0.0, 0.0},
                                {900000.0, -300000.0, 500000.0, -800000.0}};
    int courses = 0;
    int nights = 0;
    for (const auto& beta : betas) {
        GiveCoefficients(kAlpha, beta);
        for (const Real latitude : {-75.0L, -45.0L, 1.0L, 36.0L, 60.0L, 89.0L}) {
            for (const Real longitude : {-170.0L, 12.9L, 179.0L}) {
                const Station station = At(latitude, longitude, 666.0L);
                const XYZPosition position = station.Position();
                const StationIonosphere ionosphere(position.ToBLH());
                for (double second = 86400.0; second < 604800.0; second += 7777.0) {
                    for (const double elevation : {-0.7, 0.05, 0.3, 1.0}) {
                        for (const double azimuth : {0.3, 1.6, 3.2, 4.8}) {
                            const Real truth = reference::BroadcastIonoDelay(
                                kAlpha, beta, station, second, elevation, azimuth);
                            const Real night = reference::BroadcastIonoDelay(
                                kAlpha, kBeta, station, 604800.0L, elevation, azimuth);
                            ++(truth > night + 0.1L ? courses : nights);
                            EXPECT_NEAR(IonoDelay(position, second, elevation, azimuth),
                                        static_cast<double>(truth), 1e-8);
                            const NEUPosition local(2e7 * std::cos(azimuth),
                                                    2e7 * std::sin(azimuth), 1e6);
                            EXPECT_EQ(
                                ionosphere.Delay(second, elevation, local),
                                ionosphere.Delay(second, elevation, Azimuth(local.N, local.E)));
                        }
                    }
                }
            }
        }
    }
    EXPECT_GT(courses, 1000);
    EXPECT_GT(nights, 10000);
}

TEST_F(Ionosphere, ALocalTimeBelowZeroGainsADay) {
    GiveCoefficients(kAlpha, kBeta);
    // Half a turn west is a quarter of a day back on this scale: -21600 s become 64800 s.
    const Station station = At(10.0L, -179.9L, 0.0L);
    const double delay = IonoDelay(station.Position(), 0.0, kZenith, 0.0);
    EXPECT_GT(delay, 1.351232 * 5e-9 * kSpeedOfLight + 0.1);
    EXPECT_NEAR(delay,
                static_cast<double>(
                    reference::BroadcastIonoDelay(kAlpha, kBeta, station, 0.0L, kZenith, 0.0L)),
                1e-9);
}

TEST_F(Ionosphere, ANegativeAmplitudeCountsAsNone) {
    const double alpha[4] = {-1e-8, 0.0, 0.0, 0.0};
    GiveCoefficients(alpha, kBeta);
    EXPECT_NEAR(IonoDelay(At(49.0L, 12.9L, 666.0L).Position(), 48000.0, kZenith, 0.0),
                1.351232 * 5e-9 * kSpeedOfLight, 1e-12);
}

TEST_F(Ionosphere, AShortPeriodBecomesTwentyHours) {
    const double alpha[4] = {2e-8, 0.0, 0.0, 0.0};
    const double shortPeriod[4] = {10000.0, 0.0, 0.0, 0.0};
    const double twentyHours[4] = {72000.0, 0.0, 0.0, 0.0};
    const XYZPosition station = At(49.0L, 12.9L, 666.0L).Position();
    GiveCoefficients(alpha, shortPeriod);
    const double raised = IonoDelay(station, 40000.0, kZenith, 0.0);
    GiveCoefficients(alpha, twentyHours);
    EXPECT_EQ(raised, IonoDelay(station, 40000.0, kZenith, 0.0));
    EXPECT_GT(raised, 1.351232 * 5e-9 * kSpeedOfLight + 1.0);
}

TEST_F(Ionosphere, ThePiercePointStaysOffThePoles) {
    // Far below the horizon the pierce point runs off by more than the limit of 0.416 turns.
    const double alpha[4] = {3e-08, 1e-08, 0.0, 0.0};
    const double beta[4] = {100000.0, 0.0, 0.0, 0.0};
    GiveCoefficients(alpha, beta);
    for (const double elevation : {-0.6, -0.62}) {
        for (const double azimuth : {0.1, 3.1}) {
            for (const Real latitude : {60.0L, -60.0L}) {
                const Station station = At(latitude, 12.9L, 0.0L);
                const double slant =
                    1.0 + 16.0 * std::pow(0.53 - elevation / 6.283185307179586, 3.0);
                const double delay = IonoDelay(station.Position(), 50400.0, elevation, azimuth);
                EXPECT_GT(delay, slant * 5e-9 * kSpeedOfLight + 1.0);  // by day
                EXPECT_NEAR(delay,
                            static_cast<double>(reference::BroadcastIonoDelay(
                                alpha, beta, station, 50400.0L, elevation, azimuth)),
                            1e-8);
            }
        }
    }
}

// --- both

TEST_F(Ionosphere, StationsAboveAHundredKilometresHaveNoDelay) {
    for (const bool broadcast : {false, true}) {
        if (broadcast) {
            GiveCoefficients(kAlpha, kBeta);
        }
        EXPECT_GT(IonoDelay(At(49.0L, 12.9L, 99999.0L).Position(), 40000.0, 0.5, 1.0), 1.0);
        EXPECT_EQ(IonoDelay(At(49.0L, 12.9L, 100001.0L).Position(), 40000.0, 0.5, 1.0), 0.0);
        EXPECT_EQ(IonoDelay(At(49.0L, 12.9L, 1e6L).Position(), 40000.0, 0.5, 1.0), 0.0);
        // There is no bound below.
        EXPECT_GT(IonoDelay(At(49.0L, 12.9L, -200000.0L).Position(), 40000.0, 0.5, 1.0), 1.0);
    }
}

TEST_F(Ionosphere, AStationAtExactlyAHundredKilometresIsModelled) {
    int found = 0;
    for (int i = 0; i < 20000 && found < 3; ++i) {
        const Station station = At(20.0L + 0.002L * i, 12.9L, 100000.0L);
        if (station.Position().ToBLH().H == 100000.0) {
            ++found;
            EXPECT_GT(IonoDelay(station.Position(), 40000.0, 0.5, 1.0), 1.0);
        }
    }
    EXPECT_GT(found, 0);
}

}  // namespace
}  // namespace vornel
