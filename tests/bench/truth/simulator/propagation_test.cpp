// What the way and the orientation of antennas do to a signal: bending, wind-up, tides.
#include <gtest/gtest.h>

#include "effect.h"
#include "simulator/calendar.h"
#include "simulator/sky.h"
#include "simulator/sun_moon.h"

namespace vornel::rough {
namespace {

TEST(Propagation, TheMassOfTheEarthDelaysByTwoCentimetresAtMost) {
    const EffectSeries series = EffectAlone(SilentPair(100.0, {2025, 3, 9, 1, 0, 0.0}),
                                            [](Scenario& s) { s.effects.relativisticPath = 1.0; });
    ASSERT_GT(series.size(), 50U);
    for (const auto& [key, points] : series) {
        for (const EffectPoint& point : points) {
            // 2 G M / c^2 is 8.87 mm; the logarithm runs from 1.2 to 2.2.
            EXPECT_GT(point.phase, 0.010);
            EXPECT_LT(point.phase, 0.0225);  // synchronous orbits; medium ones 0.020
            EXPECT_NEAR(point.code, point.phase, 0.0015);
        }
    }
}

TEST(Propagation, WindUpIsOneNumberOfCyclesOnAllFrequenciesAndAllButTheSameNearby) {
    Scenario scenario = SilentPair(1000.0, {2025, 3, 9, 1, 0, 0.0});
    const auto on = [](Scenario& s) { s.effects.windUp = 1.0; };
    const EffectSeries base = EffectAlone(scenario, on, 0), near = EffectAlone(scenario, on, 1);
    const EffectSeries far = EffectAlone(SilentPair(1000000.0, {2025, 3, 9, 1, 0, 0.0}), on, 1);
    double most = 0.0, mostNear = 0.0, mostFar = 0.0;
    for (const auto& [key, points] : base) {
        if (key.first.system != io::GnssSystem::kGps || key.second != 0) {
            continue;
        }
        const double l1 = kSpeedOfLight / 1575.42e6, l2 = kSpeedOfLight / 1227.60e6;
        const auto second = base.find({key.first, 1});
        ASSERT_NE(second, base.end());
        EXPECT_EQ(points[0].code, 0.0);
        const auto other = near.find(key), away = far.find(key);
        for (std::size_t i = 0; i < points.size(); ++i) {
            const double cycles = points[i].phase / l1;
            EXPECT_NEAR(cycles, second->second[i].phase / l2, 0.0021);
            most = std::max(most, std::abs(cycles));
            if (other != near.end() && other->second.size() == points.size()) {
                mostNear = std::max(mostNear, std::abs(cycles - other->second[i].phase / l1));
            }
            if (away != far.end() && away->second.size() == points.size()) {
                mostFar = std::max(mostFar, std::abs(cycles - away->second[i].phase / l1));
            }
        }
    }
    EXPECT_GT(most, 0.1);
    EXPECT_LT(most, 1.5);
    EXPECT_LT(mostNear, 0.003);  // rounding of the phases
    EXPECT_GT(mostFar, 0.01);
    EXPECT_LT(mostFar, 0.3);
}

TEST(Propagation, TidesMoveTheAntennaAlongTheRay) {
    Scenario scenario = SilentPair(1000.0, {2025, 3, 14, 1, 0, 0.0});
    const EffectSeries series = EffectAlone(scenario, [](Scenario& s) { s.effects.tide = 1.0; });
    const Sky sky(scenario);
    const Vector3 marker = scenario.sites[0].marker;
    const Vector3 tide = TideAt(SunMoonAt(scenario.start), marker);
    EXPECT_GT(Length(tide), 0.05);
    int compared = 0;
    for (std::size_t s = 0; s < sky.satellites().size(); ++s) {
        const auto found = series.find({sky.satellites()[s].id, 0});
        if (found == series.end() || found->second[0].seconds != 0.0) {
            continue;
        }
        const Vector3 ray = Unit(Minus(sky.PositionAt(s, sky.startTime()), marker));
        EXPECT_NEAR(found->second[0].phase, -Dot(ray, tide), 0.001);
        ++compared;
    }
    EXPECT_GT(compared, 20);
}

TEST(Propagation, BiasesOfCentringShiftTheVector) {
    Scenario scenario = SilentPair(1000.0, {2025, 3, 14, 1, 0, 0.0});
    const EffectSeries series = EffectAlone(scenario, [](Scenario& s) {
        s.occupations[0].centring = {0.012, -0.016};
    });
    double most = 0.0;
    for (const auto& [key, points] : series) {
        for (const EffectPoint& point : points) {
            most = std::max(most, std::abs(point.phase));
        }
    }
    EXPECT_NEAR(most, 0.020, 0.0015);
}

}  // namespace
}  // namespace vornel::rough
