// Without errors the world is the one that messages and formats describe: the host's own orbits give
// the simulated ranges to a millimetre, and the engine finds the true vector.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>

#include "pair.h"
#include "session/broadcast_orbit.h"
#include "session/ephemerides.h"
#include "solve.h"

namespace vornel::rough {
namespace {

// What is left of a code when range, satellite clock and the turn of the earth are taken off, by the
// host's broadcast orbits: the receiver's clock, the same for all satellites of an epoch.
std::map<char, std::vector<double>> SpreadBySystem(const SimulatedSession& session,
                                                   std::size_t station) {
    const io::Observations& data = session.stations[station].observations;
    const session::Ephemerides ephemerides = session::SelectEphemerides(
        {session.navigation}, data.epochs.front().time, data.epochs.back().time);
    std::map<char, std::vector<double>> spread;
    for (std::size_t e = 0; e < data.epochs.size(); e += 20) {
        const io::ObservationEpoch& epoch = data.epochs[e];
        std::vector<std::pair<char, double>> clocks;
        for (const io::SatelliteRow& row : data.SatellitesOf(epoch)) {
            const auto satellite = engine::ToEngine(row.satellite);
            if (!satellite) {
                continue;
            }
            const double code = data.Value(row, 0);
            double sent = -code / kSpeedOfLight;
            std::optional<session::SatelliteState> state;
            for (int pass = 0; pass < 3; ++pass) {
                state = session::BroadcastState(
                    ephemerides, *satellite,
                    io::GpsTime{epoch.time.week, epoch.time.seconds + sent});
                if (!state) {
                    break;
                }
                sent = -code / kSpeedOfLight - state->clock;
            }
            EXPECT_TRUE(state.has_value()) << io::ToString(row.satellite);
            if (!state) {
                continue;
            }
            const Vector3& antenna = session.stations[station].marker;
            double range = Length(Minus(state->position, antenna));
            for (int pass = 0; pass < 3; ++pass) {
                range = Length(
                    Minus(InAxesTurnedAboutZ(state->position, kEarthRate * range / kSpeedOfLight),
                          antenna));
            }
            clocks.emplace_back(io::SystemLetter(row.satellite.system),
                                code - range + kSpeedOfLight * state->clock);
        }
        std::vector<double> sorted;
        for (const auto& [letter, clock] : clocks) {
            sorted.push_back(clock);
        }
        std::sort(sorted.begin(), sorted.end());
        for (const auto& [letter, clock] : clocks) {
            spread[letter].push_back(clock - sorted[sorted.size() / 2]);
        }
    }
    return spread;
}

double Largest(const std::vector<double>& values) {
    double largest = 0.0;
    for (const double value : values) {
        largest = std::max(largest, std::abs(value));
    }
    return largest;
}

TEST(SilentWorld, CodesAreRangesByTheMessagesOfEverySystem) {
    for (const double latitude : {-66.0, 0.5, 31.0, 47.0}) {
        Scenario scenario = SilentPair(100.0, {2025, 3, 9, 1, 0, 0.0}, latitude);
        scenario.occupations[0].receiver.clock = ClockStyle::kJumping;
        scenario.occupations[0].receiver.clockOffset = 3.1e-4;
        scenario.occupations[0].receiver.clockDrift = 2e-7;
        const auto spread = SpreadBySystem(Simulate(scenario), 0);
        ASSERT_EQ(spread.size(), 4U);
        for (const auto& [letter, values] : spread) {
            EXPECT_GT(values.size(), 15U) << letter;
            // Half a millimetre of rounding on either side, and of GLONASS the other value of its
            // gravity constant.
            EXPECT_LT(Largest(values), letter == 'R' ? 0.008 : 0.0015) << letter << latitude;
        }
    }
}

TEST(SilentWorld, WeekEndsAreCrossed) {
    // Saturday to Sunday: reference times of the new week, of BeiDou's 14 s later.
    const Scenario scenario = SilentPair(100.0, {2024, 6, 8, 23, 30, 0.0});
    for (const auto& [letter, values] : SpreadBySystem(Simulate(scenario), 0)) {
        EXPECT_LT(Largest(values), letter == 'R' ? 0.008 : 0.0015) << letter;
    }
}

double ErrorOf(const Scenario& scenario, solve::Acceptance& acceptance,
               session::ConfiguredSettings settings = {}) {
    const SimulatedSession simulated = Simulate(scenario);
    const Answer answer = Solve(InputsOf(simulated, 0, 1), std::move(settings));
    acceptance = answer.acceptance;
    return answer.any ? Length(Minus(answer.vector, simulated.TrueVector(0, 1))) : 1e9;
}

TEST(SilentWorld, EngineFindsShortVectorToAMillimetre) {
    solve::Acceptance acceptance{};
    EXPECT_LT(ErrorOf(SilentPair(200.0, {2025, 3, 10, 6, 0, 0.0}), acceptance), 0.001);
    EXPECT_EQ(acceptance, solve::Acceptance::kFixed);
}

TEST(SilentWorld, EngineFindsVectorWithClocksAndTagsOffTheSecond) {
    Scenario scenario = SilentPair(150.0, {2025, 3, 11, 6, 0, 0.0});
    scenario.occupations[0].receiver.clock = ClockStyle::kJumping;
    scenario.occupations[0].receiver.clockDrift = 4e-7;
    scenario.occupations[0].receiver.clockOffset = 4.2e-4;
    scenario.occupations[1].receiver.clock = ClockStyle::kTagged;
    scenario.occupations[1].receiver.clockOffset = -2.1e-3;
    scenario.occupations[1].receiver.clockDrift = 3e-7;
    solve::Acceptance acceptance{};
    EXPECT_LT(ErrorOf(scenario, acceptance), 0.001);
    EXPECT_EQ(acceptance, solve::Acceptance::kFixed);
}

TEST(SilentWorld, AntennaHeightsAreReduced) {
    Scenario scenario = SilentPair(150.0, {2025, 3, 12, 6, 0, 0.0});
    scenario.occupations[0].antennaHeight = 1.537;
    scenario.occupations[1].antennaHeight = 0.071;
    solve::Acceptance acceptance{};
    EXPECT_LT(ErrorOf(scenario, acceptance), 0.001);
}

// Lagrange interpolation of degree 9 between the ten entries around a time.
Vector3 Interpolated(const io::PreciseOrbits& tables, const io::OrbitSeries& series,
                     const io::GpsTime& time) {
    const double step = tables.interval;
    const auto seconds = [&](std::size_t e) {
        const io::GpsTime& t = tables.epochs[e];
        return (t.week - time.week) * 604800.0 + t.seconds - time.seconds;
    };
    const auto first = static_cast<std::size_t>(std::floor(-seconds(0) / step)) - 4;
    Vector3 sum{};
    for (std::size_t j = first; j < first + 10; ++j) {
        double product = 1.0;
        for (std::size_t m = first; m < first + 10; ++m) {
            product *= m == j ? 1.0 : -seconds(m) / (seconds(j) - seconds(m));
        }
        sum = Plus(sum, Scaled(series.points[j].position, product));
    }
    return sum;
}

TEST(SilentWorld, PreciseTablesTellTheOrbitsOfTheMessages) {
    Scenario scenario = SilentPair(100.0, {2025, 3, 13, 20, 10, 0.0});
    scenario.preciseInterval = 300.0;
    const SimulatedSession session = Simulate(scenario);
    const io::GpsTime first = session.stations[0].observations.epochs.front().time;
    const io::GpsTime last = session.stations[0].observations.epochs.back().time;
    const session::Ephemerides ephemerides =
        session::SelectEphemerides({session.navigation}, first, last);
    std::size_t compared = 0;
    for (const io::OrbitSeries& series : session.preciseOrbits->satellites) {
        const auto satellite = engine::ToEngine(series.satellite);
        for (const double seconds : {77.0, 1800.0, 3500.0}) {
            const io::GpsTime time{first.week, first.seconds + seconds};
            const auto state =
                satellite ? session::BroadcastState(ephemerides, *satellite, time) : std::nullopt;
            if (state) {
                const Vector3 difference =
                    Minus(state->position, Interpolated(*session.preciseOrbits, series, time));
                const bool glonass = satellite->system == engine::System::kGlonass;
                EXPECT_LT(Length(difference), glonass ? 0.006 : 0.002)
                    << ToString(*satellite) << ' ' << seconds;
                ++compared;
            }
        }
    }
    EXPECT_GT(compared, 200U);
    for (const std::size_t margin : {std::size_t{0}, session.preciseOrbits->epochs.size() - 1}) {
        const io::GpsTime& end = session.preciseOrbits->epochs[margin];
        EXPECT_GT(std::abs(end.seconds - (margin == 0 ? first : last).seconds), 6000.0);
    }
}

}  // namespace
}  // namespace vornel::rough
