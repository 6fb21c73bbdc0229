// The readers take what is written, and give the numbers that were handed over in memory.
#include "simulator/files.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <set>

#include "io/observation_reader.h"
#include "pair.h"
#include "simulator/scenarios.h"
#include "solve.h"

namespace vornel::rough {
namespace {

// Everything of one file is read back as it was handed over in memory.
void ExpectSame(const io::Observations& written, const io::Observations& read) {
    EXPECT_EQ(read.notes.size(), 0U);
    io::StationHeader expected = written.stations[0];
    EXPECT_EQ(read.stations[0], expected);
    ASSERT_EQ(read.epochs.size(), written.epochs.size());
    for (std::size_t e = 0; e < written.epochs.size(); ++e) {
        EXPECT_EQ(read.epochs[e].time, written.epochs[e].time) << e;
        ASSERT_EQ(read.epochs[e].satelliteCount, written.epochs[e].satelliteCount);
    }
    ASSERT_EQ(read.satellites.size(), written.satellites.size());
    std::size_t values = 0;
    for (std::size_t r = 0; r < written.satellites.size(); ++r) {
        const io::SatelliteRow &a = written.satellites[r], &b = read.satellites[r];
        EXPECT_EQ(a.satellite, b.satellite);
        ASSERT_EQ(written.SignalsOf(a).size(), read.SignalsOf(b).size());
        for (std::size_t c = 0; c < written.SignalsOf(a).size(); ++c) {
            EXPECT_EQ(written.SignalsOf(a)[c].code, read.SignalsOf(b)[c].code);
            const double x = written.Value(a, c), y = read.Value(b, c);
            EXPECT_TRUE(x == y || (std::isnan(x) && std::isnan(y))) << x << ' ' << y;
            EXPECT_EQ(written.LossOfLock(a, c), read.LossOfLock(b, c));
            EXPECT_EQ(written.SignalStrength(a, c), read.SignalStrength(b, c));
            values += std::isnan(x) ? 0 : 1;
        }
    }
    EXPECT_GT(values, 10000U);
}

TEST(Files, ObservationsAreReadBackToTheSameNumbers) {
    Scenario scenario = SilentPair(150.0, {2025, 3, 15, 23, 30, 0.0});
    scenario.occupations[0].receiver.clock = ClockStyle::kTagged;
    scenario.occupations[0].receiver.clockOffset = -2.1034567e-3;
    scenario.occupations[0].receiver.clockDrift = 3.3e-7;
    scenario.occupations[0].antennaHeight = 1.5374;
    scenario.occupations[1].headerOffset.reset();
    SimulatedSession session = Simulate(scenario);
    // Phases may be negative, and small.
    io::Observations& first = session.stations[0].observations;
    first.values[first.satellites[0].firstValue + 1] = -1234567.891;
    first.values[first.satellites[1].firstValue + 1] = -0.25;
    first.lossOfLock[first.satellites[1].firstValue + 1] = 3;
    for (const SimulatedStation& station : session.stations) {
        ExpectSame(station.observations,
                   io::ReadRinexObservations(RinexObservations(station.observations), "written"));
    }
}

TEST(Files, NavigationIsReadBackToTheSameNumbers) {
    const SimulatedSession session = Simulate(SilentPair(150.0, {2024, 6, 8, 23, 30, 0.0}));
    const io::Navigation& written = session.navigation;
    const io::Navigation read = io::ReadNavigation(RinexNavigation(written), "written");
    EXPECT_EQ(read.droppedCount, 0U);
    EXPECT_EQ(read.leapSeconds, written.leapSeconds);
    ASSERT_EQ(read.kepler.size(), written.kepler.size());
    ASSERT_EQ(read.glonass.size(), written.glonass.size());
    std::set<io::NavigationMessage> messages;
    for (std::size_t i = 0; i < written.kepler.size(); ++i) {
        const io::KeplerRecord &a = written.kepler[i], &b = read.kepler[i];
        messages.insert(a.message);
        EXPECT_EQ(a.satellite, b.satellite);
        EXPECT_EQ(a.message, b.message);
        EXPECT_EQ(a.tocWeek, b.tocWeek);
        EXPECT_EQ(a.toeWeek, b.toeWeek);
        EXPECT_EQ(a.dataSources, b.dataSources);
        for (const auto member :
             {&io::KeplerRecord::tocSeconds,   &io::KeplerRecord::toeSeconds,
              &io::KeplerRecord::af0,          &io::KeplerRecord::af1,
              &io::KeplerRecord::sqrtA,        &io::KeplerRecord::eccentricity,
              &io::KeplerRecord::i0,           &io::KeplerRecord::omega0,
              &io::KeplerRecord::omega,        &io::KeplerRecord::m0,
              &io::KeplerRecord::deltaN,       &io::KeplerRecord::omegaDot,
              &io::KeplerRecord::idot,         &io::KeplerRecord::crc,
              &io::KeplerRecord::crs,          &io::KeplerRecord::cuc,
              &io::KeplerRecord::cus,          &io::KeplerRecord::cic,
              &io::KeplerRecord::cis,          &io::KeplerRecord::iode,
              &io::KeplerRecord::iodc,         &io::KeplerRecord::accuracy,
              &io::KeplerRecord::groupDelay1,  &io::KeplerRecord::groupDelay2,
              &io::KeplerRecord::transmitTime, &io::KeplerRecord::fitInterval}) {
            EXPECT_EQ(a.*member, b.*member) << io::ToString(a.satellite);
        }
    }
    EXPECT_EQ(messages.size(), 4U);
    for (std::size_t i = 0; i < written.glonass.size(); ++i) {
        const io::GlonassRecord &a = written.glonass[i], &b = read.glonass[i];
        EXPECT_EQ(a.slot, b.slot);
        EXPECT_EQ(a.referenceWeek, b.referenceWeek);
        EXPECT_EQ(a.referenceSeconds, b.referenceSeconds);
        EXPECT_EQ(a.leapSeconds, b.leapSeconds);
        EXPECT_EQ(a.channel, b.channel);
        EXPECT_EQ(a.clockBias, b.clockBias);
        EXPECT_EQ(a.clockDrift, b.clockDrift);
        EXPECT_EQ(a.position, b.position);
        EXPECT_EQ(a.velocity, b.velocity);
        EXPECT_EQ(a.acceleration, b.acceleration);
    }
}

// Our reader takes the week from the clock's date; others take it from the record.
TEST(Files, BeiDouCountsItsWeeksFrom2006) {
    const SimulatedSession session = Simulate(SilentPair(150.0, {2024, 6, 10, 12, 0, 0.0}));
    const std::string text = RinexNavigation(session.navigation);
    const std::size_t record = text.find("\nC");
    ASSERT_NE(record, std::string::npos);
    std::size_t line = record + 1;
    for (int i = 0; i < 5; ++i) {
        line = text.find('\n', line) + 1;
    }
    // 2024-06-10 lies in the week 2318 of GPS.
    EXPECT_EQ(std::stod(text.substr(line + 4 + 2 * 19, 19)), 2318.0 - 1356.0);
}

TEST(Files, PreciseOrbitsAreReadBackToTheSameNumbers) {
    Scenario scenario = SilentPair(150.0, {2024, 6, 8, 23, 30, 0.0});
    scenario.preciseInterval = 900.0;
    const io::PreciseOrbits written = *Simulate(scenario).preciseOrbits;
    const io::PreciseOrbits read = io::ReadPreciseOrbits(Sp3(written), "written");
    EXPECT_EQ(read.version, 'd');
    EXPECT_EQ(read.interval, written.interval);
    EXPECT_EQ(read.epochs, written.epochs);
    EXPECT_TRUE(read.notes.empty());
    ASSERT_EQ(read.satellites.size(), written.satellites.size());
    for (std::size_t s = 0; s < written.satellites.size(); ++s) {
        EXPECT_EQ(read.satellites[s].satellite, written.satellites[s].satellite);
        ASSERT_EQ(read.satellites[s].points.size(), written.satellites[s].points.size());
        for (std::size_t i = 0; i < written.satellites[s].points.size(); ++i) {
            EXPECT_EQ(read.satellites[s].points[i].position,
                      written.satellites[s].points[i].position);
            EXPECT_EQ(read.satellites[s].points[i].clock, written.satellites[s].points[i].clock);
        }
    }
}

TEST(Files, SessionIsSolvedFromItsFiles) {
    Kind kind;
    kind.name = "written";
    kind.length = {100.0, 500.0};
    kind.durations = {1800.0};
    kind.interval = 30.0;
    kind.preciseInterval = 300.0;
    Scenario scenario = DrawScenario(5, kind);
    scenario.antennaTable = true;
    scenario.antennas[0].calibrated = true;
    const SimulatedSession simulated = Simulate(scenario);
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("rough_world_" + std::to_string(::getpid()));
    const auto names = WriteSession(simulated, folder.string());
    ASSERT_EQ(names, (std::vector<std::string>{"BASE_1.rnx", "ROVR_1.rnx"}));
    session::InputPaths paths;
    paths.base = {(folder / names[0]).string()};
    paths.rover = {(folder / names[1]).string()};
    for (const char* name : {"navigation.rnx", "orbits.sp3", "antennas.atx"}) {
        paths.others.push_back((folder / name).string());
    }
    const session::Inputs inputs = session::ReadInputs(paths, {});
    std::filesystem::remove_all(folder);
    EXPECT_EQ(inputs.navigation.size(), 1U);
    EXPECT_EQ(inputs.orbits.size(), 1U);
    EXPECT_EQ(inputs.antennas.size(), 1U);
    const Answer fromFiles = Solve(inputs);
    ASSERT_TRUE(fromFiles.any);
    EXPECT_EQ(fromFiles.vector, Solve(InputsOf(simulated, 0, 1)).vector);
    EXPECT_LT(Length(Minus(fromFiles.vector, simulated.TrueVector(0, 1))), 0.1);
}

}  // namespace
}  // namespace vornel::rough
