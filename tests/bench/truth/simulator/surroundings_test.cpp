// Multipath and antennas, against closed forms; the same sky, the same multipath.
#include <gtest/gtest.h>

#include "effect.h"
#include "io/antennas.h"
#include "simulator/antenna.h"
#include "simulator/calendar.h"
#include "simulator/files.h"
#include "simulator/multipath.h"
#include "simulator/scenarios.h"
#include "simulator/sky.h"

namespace vornel::rough {
namespace {

Vector3 Direction(double azimuth, double elevation) {
    return {std::cos(elevation) * std::cos(azimuth), std::cos(elevation) * std::sin(azimuth),
            std::sin(elevation)};
}

TEST(Multipath, OfOneReflectorIsTheClosedForm) {
    Surroundings around;
    around.groundAmplitude = 0.0;
    // Straight below: seen from the zenith, the delay is twice the distance.
    around.scatterers = {{{0.0, 0.0, -3.0}, 0.2, 0.4, -1.0}};
    const Multipath multipath(around, 1.0, 100.0);
    const double wavelength = 0.19;
    const MultipathError zenith = multipath.At({0.0, 0.0, 1.0}, wavelength);
    const double a = 0.2 * 0.0 + 0.0;  // out of reach: the cosine is -1 itself
    EXPECT_NEAR(zenith.phase, a, 1e-12);
    const Vector3 d = Direction(0.3, 30.0 * kDegree);
    const double delay = 3.0 * (1.0 + std::sin(30.0 * kDegree));
    const double amplitude = 0.2 * (1.0 - 0.6 * 0.5);
    const double psi = 2.0 * kPi * delay / wavelength + 0.4;
    const MultipathError error = multipath.At(d, wavelength);
    const double re = 1.0 + amplitude * std::cos(psi), im = amplitude * std::sin(psi);
    EXPECT_NEAR(error.phase, std::atan2(im, re) * wavelength / (2.0 * kPi), 1e-9);
    EXPECT_NEAR(error.code, (delay * amplitude * (amplitude + std::cos(psi))) / (re * re + im * im),
                1e-8);
    EXPECT_NEAR(error.strength, 10.0 * std::log10(re * re + im * im), 1e-8);
}

TEST(Multipath, OfTheGroundComesLaterByTwiceTheHeightTimesTheSine) {
    Surroundings around;
    around.groundHeight = 2.0;
    around.groundAmplitude = 0.3;
    const double elevation = 20.0 * kDegree, wavelength = 0.19;
    const double amplitude = 0.3 * (0.15 + 0.85 * std::exp(-std::sin(elevation) / 0.25));
    const double psi = 2.0 * kPi * (4.0 * std::sin(elevation)) / wavelength + kPi;
    EXPECT_NEAR(Multipath(around, 1.0, 100.0).At(Direction(1.0, elevation), wavelength).phase,
                std::atan2(amplitude * std::sin(psi), 1.0 + amplitude * std::cos(psi)) *
                    wavelength / (2.0 * kPi),
                1e-9);
}

TEST(Multipath, OfFarReflectorsDisturbsNarrowCorrelatorsNoFurther) {
    Surroundings around;
    around.groundAmplitude = 0.0;
    around.scatterers = {{{-30.0, 0.0, 0.0}, 0.1, 0.0, -1.0}};
    const Vector3 d = Direction(0.0, 10.0 * kDegree);
    const double wide = Multipath(around, 1.0, 1000.0).At(d, 0.19).code;
    const double narrow = Multipath(around, 1.0, 6.0).At(d, 0.19).code;
    EXPECT_NEAR(narrow / wide, 6.0 / (30.0 * (1.0 + std::cos(10.0 * kDegree))), 1e-9);
}

TEST(Multipath, NeverPassesAQuarterOfAWavelengthWhileReflectionsAreWeaker) {
    Surroundings around;
    around.groundAmplitude = 0.9;
    const Multipath multipath(around, 1.0, 15.0);
    for (double e = 1.0; e < 89.0; e += 0.1) {
        EXPECT_LT(std::abs(multipath.At(Direction(0.0, e * kDegree), 0.19).phase), 0.19 / 4.0);
    }
}

// What multipath adds to the phases of an hour, and of the hour a sidereal day later.
TEST(Multipath, HasMemoryOfMinutesAndReturnsAfterASiderealDay) {
    Scenario scenario = SilentPair(100.0, {2025, 3, 9, 1, 0, 0.0});
    scenario.systems = {true, false, false, false, false, false, false};
    scenario.duration = 25.0 * 3600.0;
    Random random(4, "surroundings");
    scenario.sites[0].around = DrawSurroundings(random, Environment::kRoof);
    scenario.occupations[1] = scenario.occupations[0];
    scenario.occupations[0].duration = scenario.occupations[1].duration = 3600.0;
    constexpr double kReturn = 86154.0;  // s, of GPS; a turn of the earth against the planes
    scenario.occupations[1].start = kReturn;
    const auto roof = [](Scenario& s) { s.effects.multipath = 1.0; };
    const EffectSeries first = EffectAlone(scenario, roof, 0);
    const EffectSeries second = EffectAlone(scenario, roof, 1);
    scenario.occupations[1].start = kReturn + 1200.0;
    const EffectSeries shifted = EffectAlone(scenario, roof, 1);
    std::vector<double> a, b, c, next;
    for (const auto& [key, points] : first) {
        const auto same = second.find(key), late = shifted.find(key);
        if (same == second.end() || late == shifted.end() || points.size() < 120 ||
            same->second.size() < 120 || late->second.size() < 120) {
            continue;
        }
        for (std::size_t i = 0; i + 1 < 120; ++i) {
            a.push_back(points[i].phase);
            next.push_back(points[i + 1].phase);
            b.push_back(same->second[i].phase);
            c.push_back(late->second[i].phase);
        }
    }
    ASSERT_GT(a.size(), 400U);
    EXPECT_GT(Rms(a), 0.001);
    EXPECT_LT(Rms(a), 0.010);
    EXPECT_GT(Correlation(a, next), 0.6);
    EXPECT_GT(Correlation(a, b), 0.98);
    EXPECT_LT(Correlation(a, c), 0.8);
}

// Everything at once: double differences of two days have the multipath in common.
TEST(Multipath, ShowsInTheDoubleDifferencesOfTwoDays) {
    Scenario scenario = SilentPair(50.0, {2025, 3, 9, 1, 0, 0.0});
    scenario.effects = Effects();
    scenario.effects.slips = scenario.effects.gaps = scenario.effects.tracking = 0.0;
    scenario.systems = {true, false, false, false, false, false, false};
    scenario.duration = 25.0 * 3600.0;
    Random random(5, "surroundings");
    for (Site& site : scenario.sites) {
        site.around = DrawSurroundings(random, Environment::kYard);
        site.around.horizon.clear();
    }
    std::vector<Occupation> occupations;
    for (const double start : {0.0, 86154.0, 43000.0}) {
        for (Occupation occupation : scenario.occupations) {
            occupation.start = start;
            occupation.duration = 3600.0;
            occupations.push_back(occupation);
        }
    }
    scenario.occupations = occupations;
    const SimulatedSession session = Simulate(scenario);
    scenario.effects = Effects::None();
    const SimulatedSession silent = Simulate(scenario);
    // Rover minus base, satellite by satellite, less the mean of all and of the pass.
    const auto differences = [&](std::size_t day) {
        EffectSeries rover = EffectOf(session.stations[2 * day + 1].observations,
                                      silent.stations[2 * day + 1].observations);
        const EffectSeries base =
            EffectOf(session.stations[2 * day].observations, silent.stations[2 * day].observations);
        std::map<io::SatelliteId, std::vector<double>> result;
        for (auto& [key, points] : rover) {
            const auto other = base.find(key);
            if (key.second == 0 && points.size() == 120 && other != base.end() &&
                other->second.size() == 120) {
                for (std::size_t i = 0; i < 120; ++i) {
                    result[key.first].push_back(points[i].phase - other->second[i].phase);
                }
            }
        }
        std::vector<double> mean(120, 0.0);
        for (const auto& [id, values] : result) {
            for (std::size_t i = 0; i < 120; ++i) {
                mean[i] += values[i] / static_cast<double>(result.size());
            }
        }
        for (auto& [id, values] : result) {
            double ofPass = 0.0;
            for (std::size_t i = 0; i < 120; ++i) {
                values[i] -= mean[i];
                ofPass += values[i] / 120.0;
            }
            for (double& value : values) {
                value -= ofPass;
            }
        }
        return result;
    };
    const auto first = differences(0), second = differences(1), other = differences(2);
    std::vector<double> a, b;
    for (const auto& [id, values] : first) {
        const auto found = second.find(id);
        if (found != second.end()) {
            a.insert(a.end(), values.begin(), values.end());
            b.insert(b.end(), found->second.begin(), found->second.end());
        }
    }
    ASSERT_GT(a.size(), 400U);
    EXPECT_GT(Correlation(a, b), 0.7);
    EXPECT_FALSE(other.empty());
}

TEST(Horizon, IsTakenByDirection) {
    Surroundings around;
    EXPECT_EQ(HorizonAt(around, 1.0), 0.0);
    around.horizon.assign(kHorizonDirections, 0.0);
    around.horizon[18] = 0.5;  // east
    EXPECT_EQ(HorizonAt(around, 0.5 * kPi + 0.01), 0.5);
    EXPECT_EQ(HorizonAt(around, 0.5 * kPi + 0.01 - 2.0 * kPi), 0.5);
    EXPECT_EQ(HorizonAt(around, -0.5 * kPi), 0.0);
}

TEST(Antenna, AdvancesTheSignalByItsOffset) {
    Scenario scenario = SilentPair(100.0, {2025, 3, 9, 1, 0, 0.0});
    scenario.effects.phaseCentre = 1.0;
    AntennaType type;
    type.offset = {Vector3{0.001, -0.002, 0.1}, Vector3{0.0, 0.0, 0.12}, Vector3{0.0, 0.0, 0.11}};
    type.horizonVariation = {0.005, 0.0, 0.0};
    scenario.antennas = {type};
    scenario.occupations[0].antenna = 0;
    const Antenna antenna(scenario, scenario.occupations[0]);
    EXPECT_NEAR(antenna.Advance(0, {0.0, 0.0, 1.0}), 0.1, 1e-12);
    EXPECT_NEAR(antenna.Advance(1, {0.0, 0.0, 1.0}), 0.12, 1e-12);
    EXPECT_NEAR(antenna.Advance(0, {1.0, 0.0, 0.0}), 0.006, 1e-12);
    // Half way up a quarter of the variation at the horizon.
    const double half = std::sqrt(0.5);
    EXPECT_NEAR(antenna.Advance(0, {0.0, half, half}), half * (0.1 - 0.002) + 0.00125, 1e-12);
    EXPECT_EQ(Antenna(scenario, scenario.occupations[1]).Advance(0, {0.0, 0.0, 1.0}), 0.0);
    // It stands higher by the offset: an overhead satellite is as much nearer.
    const EffectSeries series = EffectAlone(
        [&] {
            Scenario off = scenario;
            off.effects.phaseCentre = 0.0;
            return off;
        }(),
        [](Scenario& s) { s.effects.phaseCentre = 1.0; });
    for (const auto& [key, points] : series) {
        EXPECT_LT(points[0].phase, 0.01);
        EXPECT_GT(points[0].phase, -0.125);
        EXPECT_NEAR(points[0].phase, points[0].code, 0.002);
    }
}

TEST(Antenna, CalibrationsAreReadBackAndLeaveTheUncalibratedOut) {
    Scenario scenario = SilentPair(100.0, {2025, 3, 9, 1, 0, 0.0});
    Random random(3, "antennas");
    scenario.antennas = {DrawAntennaType(random, Equipment::kGeodetic, 1),
                         DrawAntennaType(random, Equipment::kGeodetic, 2)};
    scenario.antennas[0].calibrated = true;
    scenario.antennas[1].calibrated = false;
    const io::AntennaFile written = CalibrationsOf(scenario);
    const io::AntennaFile read = io::ReadAntennas(Antex(written), "written");
    ASSERT_EQ(read.antennas.size(), 1U);
    EXPECT_EQ(read.antennas[0].type, scenario.antennas[0].type);
    EXPECT_EQ(read.antennas[0].radome, "NONE");
    ASSERT_EQ(read.antennas[0].offsets.size(), written.antennas[0].offsets.size());
    for (std::size_t i = 0; i < written.antennas[0].offsets.size(); ++i) {
        const io::PhaseCentreOffset &a = written.antennas[0].offsets[i],
                                    &b = read.antennas[0].offsets[i];
        EXPECT_EQ(a.frequency, b.frequency);
        EXPECT_EQ(a.north, b.north);
        EXPECT_EQ(a.east, b.east);
        EXPECT_EQ(a.up, b.up);
    }
    EXPECT_NEAR(io::FindOffset(read.antennas[0], "G01")->up, scenario.antennas[0].offset[0][2],
                1e-5);
}

}  // namespace
}  // namespace vornel::rough
