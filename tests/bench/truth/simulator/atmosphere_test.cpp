// The air and the electrons above the stations, against closed forms and published figures.
#include <gtest/gtest.h>

#include <cmath>

#include "effect.h"
#include "simulator/calendar.h"
#include "simulator/ionosphere.h"
#include "simulator/troposphere.h"

namespace vornel::rough {
namespace {

Scenario At(double latitude, std::uint64_t seed = 1) {
    Scenario scenario = SilentPair(1000.0, {2025, 3, 9, 1, 0, 0.0}, latitude);
    scenario.seed = seed;
    scenario.effects = Effects();
    return scenario;
}

TEST(Troposphere, HydrostaticDelayIsThatOfThePressure) {
    Scenario scenario = At(45.0);
    const Troposphere region(scenario, scenario.start);
    // 2.2768 mm per hPa at 45 degrees; at 1000 m the standard atmosphere has 898.75 hPa.
    EXPECT_NEAR(StationTroposphere(region, {45.0 * kDegree, 0.0, 0.0}).ZenithHydrostatic(),
                1013.25 * 2.2768e-3, 1e-4);
    EXPECT_NEAR(StationTroposphere(region, {45.0 * kDegree, 0.0, 1000.0}).ZenithHydrostatic(),
                898.75 * 2.2768e-3 * 1.00028, 5e-4);
    scenario.effects.hydrostatic = 0.0;
    const Troposphere none(scenario, scenario.start);
    EXPECT_EQ(StationTroposphere(none, {45.0 * kDegree, 0.0, 0.0}).ZenithHydrostatic(), 0.0);
}

TEST(Troposphere, RaysAreMappedAsByNiell) {
    Scenario scenario = At(45.0);
    scenario.effects.turbulence = 0.0;
    const Geodetic place{45.0 * kDegree, 0.0, 0.0};
    const auto mapping = [&](double elevation, bool wet, double height = 0.0) {
        Scenario one = scenario;
        (wet ? one.effects.hydrostatic : one.effects.wet) = 0.0;
        const Troposphere region(one, one.start);
        const StationTroposphere station(region, {place.latitude, 0.0, height});
        return station.Delay(0.3, elevation * kDegree, 0.0) / station.Delay(0.3, 0.5 * kPi, 0.0);
    };
    // Niell (1996): at 5 degrees about 10.15 (hydrostatic) and 10.75 (wet) in middle latitudes.
    EXPECT_NEAR(mapping(5.0, false), 10.15, 0.05);
    EXPECT_NEAR(mapping(5.0, true), 10.75, 0.05);
    EXPECT_NEAR(mapping(30.0, false), 1.9928, 0.003);
    EXPECT_NEAR(mapping(30.0, true), 1.9970, 0.003);
    // The correction for the height of a station, 2000 m: equation 6 there.
    const double atSea = mapping(5.0, false);
    EXPECT_NEAR(mapping(5.0, false, 2000.0) - atSea, 0.0439, 0.003);
}

TEST(Troposphere, TurbulenceFollowsItsStructureFunction) {
    constexpr int kSeeds = 400;
    for (const double distance : {200.0, 3000.0, 30000.0, 300000.0}) {
        double sum = 0.0;
        for (int seed = 0; seed < kSeeds; ++seed) {
            Scenario scenario = At(45.0, static_cast<std::uint64_t>(seed));
            const Troposphere region(scenario, scenario.start);
            const double d = region.TurbulenceAt(0.0, 0.0, 0.0) -
                             region.TurbulenceAt(distance * 0.6, distance * 0.8, 0.0);
            sum += d * d / kSeeds;
        }
        // The same from the refractivity: twice the integral over the slab of
        // (h - u) (D(sqrt(r^2 + u^2)) - D(u)).
        const double c = Weather().turbulence, h = 1000.0, du = 1.0;
        double expected = 0.0;
        for (double u = 0.5 * du; u < h; u += du) {
            expected += 2.0 * (h - u) * c * c * du *
                        (std::cbrt(distance * distance + u * u) - std::cbrt(u * u));
        }
        EXPECT_NEAR(std::sqrt(sum / expected), 1.0, 0.2) << distance;
    }
}

TEST(Troposphere, WindCarriesTheTurbulence) {
    Scenario scenario = At(45.0);
    scenario.weather.windSpeed = 10.0;
    scenario.weather.windDirection = 0.5 * kPi;  // to the east
    const Troposphere region(scenario, scenario.start);
    EXPECT_NEAR(region.TurbulenceAt(100.0, 0.0, 0.0), region.TurbulenceAt(100.0, 6000.0, 600.0),
                1e-9);
}

TEST(Troposphere, WetDelayFallsWithHeightAndDiffersWithPlace) {
    Scenario scenario = At(45.0);
    scenario.effects.turbulence = 0.0;
    scenario.weather.wetGradient = {0.01, 0.0};
    const Troposphere region(scenario, scenario.start);
    const Geodetic base = ToGeodetic(scenario.sites[0].marker);
    const Geodetic higher{base.latitude, base.longitude, base.height + 1000.0};
    const Geodetic north = PlaceAt(base, 50000.0, 0.0, base.height);
    const StationTroposphere atBase(region, base), atHigher(region, higher), atNorth(region, north);
    EXPECT_NEAR(atHigher.ZenithWet(0.0) / atBase.ZenithWet(0.0), std::exp(-0.5), 1e-3);
    EXPECT_NEAR(atNorth.ZenithWet(0.0) - atBase.ZenithWet(0.0),
                0.005 * std::exp(-base.height / 2000.0), 2e-5);
}

TEST(Ionosphere, ContentFollowsTheSunAndTheMagneticLatitude) {
    Scenario scenario = At(45.0);
    scenario.ionosphere.dayPeak = 100.0;
    scenario.ionosphere.roughness = 0.0;
    const Ionosphere electrons(scenario, TimeOf({2025, 3, 9, 0, 0, 0.0}));
    const double noon = electrons.VerticalAt(0.7, 0.0, 14.0 * 3600.0);
    EXPECT_GT(noon, electrons.VerticalAt(0.7, 0.0, 10.0 * 3600.0));
    EXPECT_GT(noon, electrons.VerticalAt(0.7, 0.0, 18.0 * 3600.0));
    EXPECT_NEAR(electrons.VerticalAt(0.7, 0.0, 2.0 * 3600.0) / noon, 0.15, 0.05);
    // The same local time stands 90 degrees to the west six hours later, where the magnetic latitude
    // is another, but the level no more than that.
    EXPECT_GT(electrons.VerticalAt(0.7, -0.5 * kPi, 20.0 * 3600.0), 0.8 * noon);
    // Crests on both sides of the magnetic equator, which lies at -2.8 degrees at this longitude.
    const auto atMagnetic = [&](double degrees) {
        return electrons.VerticalAt((degrees - 2.8) * kDegree, 0.0, 14.0 * 3600.0);
    };
    EXPECT_GT(atMagnetic(14.0), 1.1 * atMagnetic(0.0));
    EXPECT_GT(atMagnetic(-14.0), 1.1 * atMagnetic(0.0));
    EXPECT_GT(atMagnetic(14.0), 2.0 * atMagnetic(50.0));
}

TEST(Ionosphere, DelayIsThatOfAThinShell) {
    // 1 TECU is 0.1624 m on GPS L1.
    EXPECT_NEAR(IonosphereDelay(1.0, 1575.42e6), 0.1624, 1e-4);
    Scenario scenario = At(45.0);
    scenario.ionosphere.roughness = 0.0;
    const Ionosphere electrons(scenario, scenario.start);
    const Vector3 station = ToCartesian({0.8, 0.2, 100.0});
    const Vector3 zenith = Unit(station);
    const double above = electrons.Seen(station, zenith, 0.0).content;
    EXPECT_NEAR(above, electrons.VerticalAt(std::asin(zenith[2]), 0.2, 0.0), 1e-9 * above);
    // At 10 degrees of elevation the ray passes the shell of 400 km at 67.9 degrees from its normal.
    const Horizon horizon{{std::asin(zenith[2]), 0.2, 0.0}};
    const Vector3 low = horizon.FromNeu({0.0, std::cos(10.0 * kDegree), std::sin(10.0 * kDegree)});
    const double obliquity = electrons.Seen(station, low, 0.0).content / above;
    EXPECT_NEAR(obliquity, 1.0 / std::cos(67.9 * kDegree), 0.4);
}

TEST(Ionosphere, WavesTravel) {
    Scenario scenario = At(45.0);
    scenario.effects.ionosphere = 0.0;
    TravellingWave wave;
    wave.amplitude = 0.7;
    wave.length = 200e3;
    wave.period = 1200.0;
    wave.azimuth = 0.0;
    wave.duration = 1e6;
    scenario.ionosphere.waves = {wave};
    const Ionosphere electrons(scenario, scenario.start);
    const double half = 100e3 / kEarthRadius;
    double largest = 0.0;
    for (double t = 0.0; t < 1200.0; t += 10.0) {
        const double here = electrons.VerticalAt(0.8, 0.1, t);
        largest = std::max(largest, std::abs(here));
        EXPECT_NEAR(electrons.VerticalAt(0.8 + half, 0.1, t), -here, 2e-3);
        EXPECT_NEAR(electrons.VerticalAt(0.8 + half, 0.1, t + 600.0), here, 2e-3);
        // A quarter of the way on in a quarter of the period: northwards.
        EXPECT_NEAR(electrons.VerticalAt(0.8 + 0.5 * half, 0.1, t + 300.0), here, 2e-3);
    }
    EXPECT_NEAR(largest, 0.7, 0.01);
}

TEST(Ionosphere, BroadcastCoefficientsFitWithinTheirFactor) {
    Scenario scenario = At(45.0);
    scenario.ionosphere.dayPeak = 60.0;
    scenario.ionosphere.roughness = 0.0;
    scenario.ionosphere.broadcastFactor = 1.0;
    const Ionosphere electrons(scenario, TimeOf({2025, 3, 9, 0, 0, 0.0}));
    const Geodetic place{45.0 * kDegree, 0.0, 0.0};
    const io::IonosphereSet set = electrons.BroadcastCoefficients(place);
    ASSERT_TRUE(set.hasAlpha && set.hasBeta);
    // Amplitude of the cosine over the place's geomagnetic latitude (47 degrees, semicircles).
    const double phi = 47.5 / 180.0;
    const double amplitude =
        set.alpha[0] + phi * (set.alpha[1] + phi * (set.alpha[2] + phi * set.alpha[3]));
    const double truth =
        IonosphereDelay(electrons.VerticalAt(place.latitude, 0.0, 14.0 * 3600.0), 1575.42e6) /
        kSpeedOfLight;
    EXPECT_NEAR(amplitude / truth, 1.0, 0.1);
    scenario.ionosphere.broadcastFactor = 0.5;
    const Ionosphere half(scenario, TimeOf({2025, 3, 9, 0, 0, 0.0}));
    EXPECT_NEAR(half.BroadcastCoefficients(place).alpha[0] / set.alpha[0], 0.5, 1e-3);
}

TEST(Ionosphere, CodeIsDelayedAndPhaseAdvanced) {
    Scenario scenario = SilentPair(1000.0, {2025, 3, 9, 12, 0, 0.0});
    const EffectSeries series =
        EffectAlone(scenario, [](Scenario& s) { s.effects.ionosphere = 1.0; });
    int seen = 0;
    for (const auto& [key, points] : series) {
        const double ratio = 1575.42e6 / 1227.60e6;
        if (key.first.system == io::GnssSystem::kGps && key.second == 0 &&
            series.contains({key.first, 1})) {
            const EffectPoint& first = points.front();
            const EffectPoint& second = series.at({key.first, 1}).front();
            EXPECT_GT(first.code, 1.0);
            EXPECT_NEAR(first.code, -first.phase, 0.002);
            EXPECT_NEAR(second.code / first.code, ratio * ratio, 0.001);
            ++seen;
        }
    }
    EXPECT_GT(seen, 5);
}

}  // namespace
}  // namespace vornel::rough
