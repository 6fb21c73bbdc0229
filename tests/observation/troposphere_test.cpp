// Troposphere models against extended precision, quadrature, published values and hand arithmetic.
#include "observation/troposphere.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "observation/reference_atmosphere.h"
#include "observation/reference_geometry.h"

namespace vornel {
namespace {

using reference::Radians;
using reference::Real;
using reference::Station;

constexpr double kZenith = 1.5707963267948966;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

double Degrees(double degrees) {
    return static_cast<double>(Radians(degrees));
}

class Troposphere : public ::testing::Test {
  protected:
    void SetUp() override { SetSurfaceWeather(18.0, 1013.25, 50.0); }
    void TearDown() override { SetSurfaceWeather(18.0, 1013.25, 50.0); }
};

void ExpectRelative(double got, Real truth, double tolerance) {
    EXPECT_NEAR(got, static_cast<double>(truth), tolerance * std::fabs(static_cast<double>(truth)));
}

// --- surface weather

void ExpectWeather(double temperature, double pressure, double humidity) {
    EXPECT_EQ(CurrentSurfaceWeather().temperature, temperature);
    EXPECT_EQ(CurrentSurfaceWeather().pressure, pressure);
    EXPECT_EQ(CurrentSurfaceWeather().humidity, humidity);
}

TEST_F(Troposphere, WeatherInsideItsBoundsIsKept) {
    SetSurfaceWeather(-49.5, 500.5, 0.5);
    ExpectWeather(-49.5, 500.5, 0.5);
    SetSurfaceWeather(99.5, 1999.5, 99.5);
    ExpectWeather(99.5, 1999.5, 99.5);
    SetSurfaceWeather(0.0, 1000.0, 70.0);
    ExpectWeather(0.0, 1000.0, 70.0);
}

TEST_F(Troposphere, WeatherOnABoundIsReplaced) {
    SetSurfaceWeather(-50.0, 2000.0, 100.0);
    ExpectWeather(18.0, 1013.25, 50.0);
    SetSurfaceWeather(100.0, 500.0, 0.0);
    ExpectWeather(18.0, 1013.25, 50.0);
}

TEST_F(Troposphere, EachWeatherValueIsReplacedByItself) {
    SetSurfaceWeather(-60.0, 900.0, 20.0);
    ExpectWeather(18.0, 900.0, 20.0);
    SetSurfaceWeather(5.0, 2500.0, 20.0);
    ExpectWeather(5.0, 1013.25, 20.0);
    SetSurfaceWeather(5.0, 900.0, 120.0);
    ExpectWeather(5.0, 900.0, 50.0);
    SetSurfaceWeather(kNaN, kNaN, kNaN);
    ExpectWeather(18.0, 1013.25, 50.0);
}

TEST(SurfaceWeatherRecord, StartsAtTheStandardAtmosphere) {
    const SurfaceWeather weather;
    EXPECT_EQ(weather.temperature, 18.0);
    EXPECT_EQ(weather.pressure, 1013.25);
    EXPECT_EQ(weather.humidity, 50.0);
}

// --- modified Hopfield

TEST_F(Troposphere, HopfieldIsTheIntegralOfItsTwoLayers) {
    for (const reference::Weather& weather :
         {reference::Weather{18.0L, 1013.25L, 50.0L}, reference::Weather{-12.5L, 870.0L, 85.0L},
          reference::Weather{35.0L, 1030.0L, 15.0L}}) {
        SetSurfaceWeather(static_cast<double>(weather.temperature),
                          static_cast<double>(weather.pressure),
                          static_cast<double>(weather.humidity));
        for (const double height : {-80.0, 0.0, 666.0, 4000.0, 9999.0}) {
            for (const double elevation : {0.0, 2.0, 5.0, 15.0, 45.0, 80.0, 90.0}) {
                SCOPED_TRACE(testing::Message() << height << " m, " << elevation << " degrees");
                ExpectRelative(ModifiedHopfield(height, Degrees(elevation)),
                               reference::HopfieldDelay(weather, height, Degrees(elevation)),
                               1e-11);
            }
        }
    }
}

TEST_F(Troposphere, HopfieldInTheZenithIsAFifthOfTheLayers) {
    // The integral of (1 - h/H)^4 is H/5.
    const double kelvin = 18.0 + 273.15;
    const double dry = 77.6e-6 * 1013.25 / kelvin * (40.136 + 0.14872 * (kelvin - 273.16));
    const double vapour =
        0.5 * std::exp(0.213166 * kelvin - 37.2465 - 0.000256908 * kelvin * kelvin);
    const double wet = 0.373 * vapour / (kelvin * kelvin) * 11.0;
    EXPECT_NEAR(ModifiedHopfield(0.0, kZenith), 1000.0 * (dry + wet) / 5.0, 1e-12);
    EXPECT_NEAR(ModifiedHopfield(0.0, kZenith), 2.4, 0.05);  // the size of a sea level zenith delay
}

TEST_F(Troposphere, HopfieldIsZeroBelowTheHorizon) {
    EXPECT_EQ(ModifiedHopfield(100.0, -1e-12), 0.0);
    EXPECT_EQ(ModifiedHopfield(100.0, -1.0), 0.0);
}

TEST_F(Troposphere, HopfieldAcceptsTheHorizon) {
    const double horizon = ModifiedHopfield(0.0, 0.0);
    EXPECT_GT(horizon, 50.0);
    EXPECT_LT(horizon, 150.0);
}

// --- Saastamoinen

TEST_F(Troposphere, SaastamoinenAgreesWithTheFormula) {
    for (const reference::Weather& weather :
         {reference::Weather{18.0L, 1013.25L, 50.0L}, reference::Weather{-12.5L, 870.0L, 85.0L},
          reference::Weather{35.0L, 1030.0L, 15.0L}}) {
        SetSurfaceWeather(static_cast<double>(weather.temperature),
                          static_cast<double>(weather.pressure),
                          static_cast<double>(weather.humidity));
        for (const double latitude : {-80.0, -20.0, 0.0, 49.1, 90.0}) {
            for (const double height : {-80.0, 0.0, 666.0, 4000.0, 9999.0}) {
                for (const double elevation : {1.0, 5.0, 15.0, 45.0, 90.0}) {
                    ExpectRelative(Saastamoinen(Degrees(latitude), height, Degrees(elevation)),
                                   reference::SaastamoinenDelay(weather, Degrees(latitude), height,
                                                                Degrees(elevation)),
                                   1e-12);
                }
            }
        }
    }
}

TEST_F(Troposphere, SaastamoinenHasThePublishedDryZenithDelay) {
    // 2.277 mm per hPa at latitude 45 degrees and sea level: 2.307 m. Humidity is all but taken
    // out.
    SetSurfaceWeather(18.0, 1013.25, 1e-9);
    EXPECT_NEAR(Saastamoinen(Degrees(45.0), 0.0, kZenith), 2.3072, 1e-4);
    EXPECT_NEAR(Saastamoinen(0.0, 0.0, kZenith), 2.3072 / (1.0 - 0.00266), 1e-4);
}

TEST_F(Troposphere, SaastamoinenWetPartFollowsThePublishedSaturationPressure) {
    // 23.37 hPa at 20 degrees Celsius; 0.002277 (1255 / T + 0.05) e.
    SetSurfaceWeather(20.0, 1013.25, 1e-9);
    const double dry = Saastamoinen(Degrees(45.0), 0.0, kZenith);
    SetSurfaceWeather(20.0, 1013.25, 50.0);
    const double wet = Saastamoinen(Degrees(45.0), 0.0, kZenith) - dry;
    EXPECT_NEAR(wet, 0.002277 * (1255.0 / 293.15 + 0.05) * 0.5 * 23.37, 0.01 * wet);
}

TEST_F(Troposphere, SaastamoinenGrowsWithTheCosecantAlone) {
    const double zenith = Saastamoinen(0.8, 500.0, kZenith);
    EXPECT_NEAR(Saastamoinen(0.8, 500.0, Degrees(30.0)), 2.0 * zenith, 1e-12);
    EXPECT_NEAR(Saastamoinen(0.8, 500.0, 1e-3), zenith / std::sin(1e-3), 1e-7);
}

TEST_F(Troposphere, SaastamoinenAcceptsTheHorizonWithAHugeValue) {
    EXPECT_GT(Saastamoinen(0.8, 0.0, 0.0), 1e15);
    EXPECT_EQ(Saastamoinen(0.8, 0.0, -1e-12), 0.0);
    EXPECT_EQ(Saastamoinen(0.8, 0.0, -1.0), 0.0);
}

// --- the choice of a model

const Station kStation{Radians(49.14L), Radians(12.88L), 666.0L};

TEST_F(Troposphere, TheModelNumberChooses) {
    SetSurfaceWeather(7.0, 950.0, 60.0);
    const double latitude = static_cast<double>(kStation.latitude);
    for (const double elevation : {0.2, 0.7, 1.4}) {
        EXPECT_NEAR(TropoDelay(0, kStation.Position(), elevation),
                    ModifiedHopfield(666.0, elevation), 1e-10);
        EXPECT_NEAR(TropoDelay(1, kStation.Position(), elevation),
                    Saastamoinen(latitude, 666.0, elevation), 1e-10);
        EXPECT_EQ(TropoDelay(2, kStation.Position(), elevation), 0.0);
        EXPECT_EQ(TropoDelay(-1, kStation.Position(), elevation), 0.0);
        EXPECT_EQ(TropoDelay(3, kStation.Position(), elevation), 0.0);
    }
    EXPECT_EQ(TropoDelay(0, kStation.Position(), -0.1), 0.0);
    EXPECT_EQ(TropoDelay(1, kStation.Position(), -0.1), 0.0);
}

TEST_F(Troposphere, StationsBeyondTenKilometresHaveNoDelay) {
    for (const int model : {0, 1}) {
        Station station = kStation;
        for (const Real height : {-9999.0L, 9999.0L}) {
            station.height = height;
            EXPECT_GT(TropoDelay(model, station.Position(), 0.5), 0.1) << height;
        }
        for (const Real height : {-10001.0L, 10001.0L, 1e6L}) {
            station.height = height;
            EXPECT_EQ(TropoDelay(model, station.Position(), 0.5), 0.0) << height;
        }
    }
}

TEST_F(Troposphere, AStationAtExactlyTenKilometresIsModelled) {
    int found = 0;
    for (int i = 0; i < 20000 && found < 3; ++i) {
        const Station station{Radians(20.0L + 0.002L * i), 0.3L, 10000.0L};
        if (station.Position().ToBLH().H == 10000.0) {
            ++found;
            EXPECT_GT(TropoDelay(0, station.Position(), 0.5), 0.1);
            EXPECT_GT(TropoDelay(1, station.Position(), 0.5), 0.1);
        }
    }
    EXPECT_GT(found, 0);
}

// --- MOPS

// 2023, days counted from 1 January as 1.
Epoch DayOf2023(int dayOfYear) {
    const double newYear[] = {2023.0, 1.0, 1.0, 6.0, 0.0, 0.0};
    return Epoch(newYear) + 86400.0 * (dayOfYear - 1);
}

double Mops(int dayOfYear, double latitude, double height, double elevation) {
    const double azel[] = {1.0, elevation};
    double variance = -1.0;
    const double delay =
        MopsTroposphere(DayOf2023(dayOfYear), BLHPosition(latitude, 0.3, height), azel, variance);
    // 0.12 m in the zenith, mapped like the delay.
    const double mapped =
        0.12 * 1.001 / std::sqrt(0.002001 + std::sin(elevation) * std::sin(elevation));
    EXPECT_NEAR(variance, mapped * mapped, 1e-12 * mapped * mapped);
    return delay;
}

TEST_F(Troposphere, MopsAgreesWithThePublishedModel) {
    for (const double latitude : {-90.0, -75.0, -61.0, -50.0, -15.0, -3.0, 0.0, 14.9, 15.1, 22.5,
                                  30.0, 44.9, 45.0, 49.14, 60.0, 74.9, 75.1, 90.0}) {
        for (const int day : {1, 28, 100, 211, 365}) {
            for (const double height : {-100.0, 0.0, 666.0, 10000.0}) {
                for (const double elevation : {0.01, 5.0, 30.0, 90.0}) {
                    SCOPED_TRACE(testing::Message() << latitude << " degrees, day " << day << ", "
                                                    << height << " m, " << elevation);
                    ExpectRelative(
                        Mops(day, Degrees(latitude), height, Degrees(elevation)),
                        reference::MopsDelay(day, Degrees(latitude), height, Degrees(elevation)),
                        1e-12);
                }
            }
        }
    }
}

TEST_F(Troposphere, MopsRowsAtTheirLatitudesInHandArithmetic) {
    // Sea level on the day of the coldest air, where the season enters in full; zenith, so that the
    // mapping is 1.001 / sqrt(1.002001) = 1.0000000. k1 Rd / gm = 0.00227684 m/hPa, k2 Rd =
    // 109.654628.
    const double dryPerHpa = 77.604e-6 * 287.054 / 9.784;
    struct Row {
        double latitude, pressure, kelvin, vapour, lapse, lambda;
    };
    for (const Row& row : {Row{15.0, 1013.25, 299.65, 26.31, 0.0063, 2.77},
                           Row{30.0, 1021.0, 287.15, 12.94, 0.0058, 2.82},
                           Row{45.0, 1018.0, 272.15, 4.42, 0.00526, 2.11},
                           Row{60.0, 1013.5, 257.15, 1.42, 0.00458, 1.07},
                           Row{75.0, 1013.5, 249.15, 0.72, 0.00391, 1.25}}) {
        const double wet = 109.654628 / ((row.lambda + 1.0) * 9.784 - row.lapse * 287.054) *
                           row.vapour / row.kelvin;
        EXPECT_NEAR(Mops(28, Degrees(row.latitude), 0.0, kZenith), row.pressure * dryPerHpa + wet,
                    1e-9)
            << row.latitude;
        EXPECT_NEAR(Mops(211, Degrees(-row.latitude), 0.0, kZenith), row.pressure * dryPerHpa + wet,
                    1e-9)
            << -row.latitude;
    }
}

TEST_F(Troposphere, MopsBetweenTwoRowsIsTheirMean) {
    // Day 28 at 22.5 degrees: the means of the rows of 15 and 30 degrees, less half the season of
    // 30.
    const double pressure = (1013.25 + 1021.0) / 2.0;
    const double kelvin = (299.65 + 287.15) / 2.0;
    const double vapour = (26.31 + 12.94) / 2.0;
    const double lapse = (0.0063 + 0.0058) / 2.0;
    const double lambda = (2.77 + 2.82) / 2.0;
    const double expected =
        77.604e-6 * 287.054 / 9.784 * pressure +
        109.654628 / ((lambda + 1.0) * 9.784 - lapse * 287.054) * vapour / kelvin;
    EXPECT_NEAR(Mops(28, Degrees(22.5), 0.0, kZenith), expected, 1e-9);
}

TEST_F(Troposphere, MopsHasNoSeasonInTheTropics) {
    const double winter = Mops(28, 0.0, 0.0, kZenith);
    for (const int day : {1, 119, 211, 300, 365}) {
        EXPECT_EQ(Mops(day, 0.0, 0.0, kZenith), winter);
        EXPECT_EQ(Mops(day, Degrees(-15.0), 0.0, kZenith), winter);
    }
    EXPECT_EQ(Mops(28, Degrees(12.0), 0.0, kZenith), winter);
}

TEST_F(Troposphere, MopsSeasonsOfTheHemispheresAreHalfAYearApart) {
    // The same number of days after the day that each hemisphere counts from.
    for (const int after : {0, 40, 91, 150}) {
        EXPECT_NEAR(Mops(211 + after, Degrees(-50.0), 0.0, kZenith),
                    Mops(28 + after, Degrees(50.0), 0.0, kZenith), 1e-12);
    }
    EXPECT_GT(
        std::fabs(Mops(28, Degrees(-50.0), 0.0, kZenith) - Mops(28, Degrees(50.0), 0.0, kZenith)),
        0.05);
}

TEST_F(Troposphere, MopsIsSilentOutsideItsBounds) {
    struct Case {
        double height, elevation;
        bool modelled;
    };
    for (const Case& one : {Case{-100.0, 0.5, true}, Case{-100.001, 0.5, false},
                            Case{10000.0, 0.5, true}, Case{10000.001, 0.5, false},
                            Case{0.0, 0.0, false}, Case{0.0, -0.1, false}, Case{0.0, 1e-9, true}}) {
        SCOPED_TRACE(testing::Message() << one.height << " m, " << one.elevation);
        const double azel[] = {0.0, one.elevation};
        double variance = -1.0;
        const double delay =
            MopsTroposphere(DayOf2023(100), BLHPosition(0.8, 0.3, one.height), azel, variance);
        if (one.modelled) {
            EXPECT_GT(delay, 0.5);
            EXPECT_GT(variance, 0.0143);
        } else {
            EXPECT_EQ(delay, 0.0);
            EXPECT_EQ(variance, 0.0);
        }
    }
}

TEST_F(Troposphere, MopsKeepsNothingBetweenCalls) {
    const double first = Mops(100, 0.8, 100.0, 0.5);
    Mops(300, -0.4, 5000.0, 1.1);
    EXPECT_EQ(Mops(100, 0.8, 100.0, 0.5), first);
    SetSurfaceWeather(40.0, 700.0, 99.0);
    EXPECT_EQ(Mops(100, 0.8, 100.0, 0.5), first);
}

}  // namespace
}  // namespace vornel
