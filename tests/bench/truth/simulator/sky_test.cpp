// Messages and tables against the truth they are about, by the host's own orbit formulas.
#include "simulator/sky.h"

#include <gtest/gtest.h>

#include <map>

#include "effect.h"
#include "session/broadcast_orbit.h"
#include "session/ephemerides.h"
#include "simulator/broadcast_errors.h"
#include "simulator/calendar.h"

namespace vornel::rough {
namespace {

struct Errors {
    std::vector<double> radial, along, across, clock;
};

// Position as told minus truth, in the orbit's own directions, and the clock, m.
void Add(Errors& errors, const Vector3& difference, const Vector3& position,
         const Vector3& velocity, double clock) {
    const Vector3 r = Unit(position);
    const Vector3 n =
        Unit(Cross(position, Plus(velocity, Cross({0.0, 0.0, kEarthRate}, position))));
    errors.radial.push_back(Dot(difference, r));
    errors.across.push_back(Dot(difference, n));
    errors.along.push_back(Dot(difference, Cross(n, r)));
    errors.clock.push_back(clock * kSpeedOfLight);
}

Vector3 VelocityAt(const Sky& sky, std::size_t s, double t) {
    return Scaled(Minus(sky.PositionAt(s, t + 1.0), sky.PositionAt(s, t - 1.0)), 0.5);
}

std::string ClassOf(const Satellite& satellite) {
    std::string name(1, io::SystemLetter(satellite.id.system));
    if (satellite.id.system == io::GnssSystem::kBeiDou) {
        name += satellite.modern ? '3' : '2';
        name += satellite.orbitClass == OrbitClass::kMedium ? 'M' : 'S';
        name += satellite.orbitClass == OrbitClass::kGeostationary ? "G" : "";
    }
    return name;
}

// Three hours of many worlds.
std::map<std::string, Errors> BroadcastErrorsOf(double scale, double lunisolar = 0.0) {
    std::map<std::string, Errors> errors;
    for (std::uint64_t seed = 1; seed <= 12; ++seed) {
        Scenario scenario = SilentPair(100.0, {2025, 3, 9, 1, 20, 0.0});
        scenario.seed = seed;
        scenario.duration = 10800.0;
        scenario.effects.broadcastError = scale;
        scenario.effects.lunisolar = lunisolar;
        const Sky sky(scenario);
        const io::GpsTime last = Normalised(scenario.start.week, scenario.start.seconds + 10800.0);
        const session::Ephemerides told =
            session::SelectEphemerides({sky.Messages()}, scenario.start, last);
        for (std::size_t s = 0; s < sky.satellites().size(); ++s) {
            const auto satellite = engine::ToEngine(sky.satellites()[s].id);
            for (double t = 10.0; satellite && t < 10800.0; t += 1300.0) {
                const double moment = sky.startTime() + t;
                const auto state = session::BroadcastState(
                    told, *satellite, Normalised(sky.origin().week, sky.origin().seconds + moment));
                EXPECT_TRUE(state.has_value());
                const Vector3 position = sky.PositionAt(s, moment);
                Add(errors[ClassOf(sky.satellites()[s])], Minus(state->position, position),
                    position, VelocityAt(sky, s, moment), state->clock - sky.ClockAt(s, moment));
            }
        }
    }
    return errors;
}

TEST(BroadcastErrors, HaveThePublishedSizes) {
    const auto errors = BroadcastErrorsOf(1.0);
    // GPS, Galileo, GLONASS, BeiDou-3 in medium orbits: radial, along, across, clock.
    const std::map<std::string, BroadcastSigma> expected = {{"G", {0.15, 0.75, 0.45, 0.40}},
                                                            {"E", {0.12, 0.30, 0.22, 0.12}},
                                                            {"R", {0.40, 1.80, 1.30, 1.50}},
                                                            {"C3M", {0.08, 0.35, 0.30, 0.45}}};
    for (const auto& [name, sigma] : expected) {
        const Errors& e = errors.at(name);
        EXPECT_NEAR(Rms(e.radial) / sigma.radial, 1.0, 0.3) << name;
        EXPECT_NEAR(Rms(e.along) / sigma.along, 1.0, 0.3) << name;
        EXPECT_NEAR(Rms(e.across) / sigma.across, 1.0, 0.3) << name;
        // The walk of the clock since the message, 0.1 m, comes on top.
        EXPECT_NEAR(std::hypot(Rms(e.clock), 0.0) / std::hypot(sigma.clock, 0.12), 1.0, 0.3)
            << name;
    }
}

TEST(BroadcastErrors, AreNoneInASilentWorld) {
    for (const auto& [name, e] : BroadcastErrorsOf(0.0)) {
        EXPECT_LT(Rms(e.radial) + Rms(e.along) + Rms(e.across), name == "R" ? 0.01 : 1e-4) << name;
        EXPECT_LT(Rms(e.clock), 1e-4) << name;
    }
}

TEST(BroadcastErrors, SunAndMoonMoveGlonassByDecimetresWithinAMessage) {
    const auto errors = BroadcastErrorsOf(0.0, 1.0);
    const Errors& e = errors.at("R");
    EXPECT_GT(Rms(e.along) + Rms(e.radial), 0.02);
    EXPECT_LT(Rms(e.along) + Rms(e.radial), 0.5);
}

TEST(BroadcastErrors, JumpFromMessageToMessageAndLastForHours) {
    std::vector<double> now, next, later;
    for (std::uint64_t seed = 0; seed < 4000; ++seed) {
        Satellite satellite;
        satellite.id = {io::GnssSystem::kGps, 7};
        MessageErrors errors(seed, satellite, 1.0);
        now.push_back(errors.Next(7200.0).along);
        next.push_back(errors.Next(7200.0).along);
        for (int i = 0; i < 6; ++i) {
            errors.Next(7200.0);
        }
        later.push_back(errors.Next(7200.0).along);
    }
    // 0.9 of the variance is slow, with a memory of 8 hours.
    EXPECT_NEAR(Correlation(now, next), 0.9 * std::exp(-2.0 / 8.0), 0.04);
    EXPECT_NEAR(Correlation(now, later), 0.9 * std::exp(-16.0 / 8.0), 0.04);
}

TEST(PreciseTables, MissByCentimetresAndTellTheCentreOfMass) {
    Errors errors;
    double mass = 0.0;
    for (std::uint64_t seed = 1; seed <= 8; ++seed) {
        Scenario scenario = SilentPair(100.0, {2025, 3, 9, 1, 20, 0.0});
        scenario.seed = seed;
        scenario.preciseInterval = 900.0;
        scenario.effects.preciseError = 1.0;
        const Sky sky(scenario);
        const io::PreciseOrbits tables = sky.PreciseTables(900.0);
        scenario.effects.satelliteAntenna = 1.0;
        const io::PreciseOrbits ofMass = Sky(scenario).PreciseTables(900.0);
        for (std::size_t s = 0; s < tables.satellites.size(); ++s) {
            const std::size_t e = tables.epochs.size() / 2;
            const double t = tables.epochs[e].seconds - sky.origin().seconds;
            const io::OrbitPoint& point = tables.satellites[s].points[e];
            const Vector3 position = sky.PositionAt(s, t);
            Add(errors, Minus(point.position, position), position, VelocityAt(sky, s, t), 0.0);
            mass = std::max(mass,
                            Length(Minus(ofMass.satellites[s].points[e].position, point.position)));
            EXPECT_GT(Length(ofMass.satellites[s].points[e].position),
                      Length(point.position) + 0.5);
        }
    }
    EXPECT_NEAR(Rms(errors.radial), 0.015, 0.004);
    EXPECT_NEAR(Rms(errors.along), 0.025, 0.006);
    EXPECT_NEAR(Rms(errors.across), 0.020, 0.005);
    EXPECT_GT(mass, 2.0);
    EXPECT_LT(mass, 3.0);
}

TEST(Constellation, IsThatOfTheYears) {
    const auto count = [](int year, io::GnssSystem system) {
        const auto satellites = SatellitesAt(TimeOf({year, 1, 30, 0, 0, 0.0}));
        return std::count_if(satellites.begin(), satellites.end(),
                             [&](const Satellite& s) { return s.id.system == system; });
    };
    EXPECT_EQ(count(2002, io::GnssSystem::kGps), 28);
    EXPECT_EQ(count(2002, io::GnssSystem::kGlonass), 8);
    EXPECT_EQ(count(2002, io::GnssSystem::kGalileo), 0);
    EXPECT_EQ(count(2002, io::GnssSystem::kBeiDou), 0);
    EXPECT_EQ(count(2025, io::GnssSystem::kGps), 31);
    EXPECT_EQ(count(2025, io::GnssSystem::kGlonass), 24);
    EXPECT_EQ(count(2025, io::GnssSystem::kGalileo), 26);
    EXPECT_EQ(count(2025, io::GnssSystem::kBeiDou), 45);
}

// Ground tracks: GPS and synchronous satellites return after a turn of the earth under their plane.
TEST(Constellation, TracksRepeatAfterASiderealDay) {
    Scenario scenario = SilentPair(100.0, {2025, 3, 9, 1, 20, 0.0});
    scenario.duration = 2.0 * kDay;
    const Sky sky(scenario);
    for (std::size_t s = 0; s < sky.satellites().size(); ++s) {
        const Satellite& satellite = sky.satellites()[s];
        const bool daily = satellite.id.system == io::GnssSystem::kGps ||
                           satellite.orbitClass != OrbitClass::kMedium;
        if (daily) {
            const double period = 2.0 * kPi / (kEarthRate - satellite.nodeRate);
            EXPECT_NEAR(period, 86160.0, 12.0);
            const double t = sky.startTime() + 3000.0;
            EXPECT_LT(Length(Minus(sky.PositionAt(s, t), sky.PositionAt(s, t + period))), 1000.0)
                << static_cast<int>(satellite.id.number);
        }
    }
}

TEST(Constellation, GeostationarySatellitesStandStill) {
    Scenario scenario = SilentPair(100.0, {2025, 3, 9, 1, 20, 0.0});
    scenario.duration = kDay;
    const Sky sky(scenario);
    int found = 0;
    for (std::size_t s = 0; s < sky.satellites().size(); ++s) {
        const Satellite& satellite = sky.satellites()[s];
        if (satellite.orbitClass != OrbitClass::kGeostationary || satellite.id.number != 1) {
            continue;
        }
        ++found;
        for (double t = 0.0; t < kDay; t += 7200.0) {
            const Vector3 position = sky.PositionAt(s, sky.startTime() + t);
            EXPECT_NEAR(std::atan2(position[1], position[0]) / kDegree, 140.0, 1.0);
            EXPECT_LT(std::abs(position[2]) / Length(position), std::sin(1.7 * kDegree));
        }
    }
    EXPECT_EQ(found, 1);
}

}  // namespace
}  // namespace vornel::rough
