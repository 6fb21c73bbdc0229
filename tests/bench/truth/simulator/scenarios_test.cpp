// Scenarios drawn by chance: the same from the same seed, inside their bounds, and solvable.
#include "simulator/scenarios.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "effect.h"
#include "io/observation_reader.h"
#include "simulator/calendar.h"
#include "simulator/files.h"
#include "solve.h"

namespace vornel::rough {
namespace {

void ExpectSameNumbers(const io::Observations& a, const io::Observations& b) {
    ASSERT_EQ(a.values.size(), b.values.size());
    for (std::size_t i = 0; i < a.values.size(); ++i) {
        ASSERT_TRUE(a.values[i] == b.values[i] ||
                    (std::isnan(a.values[i]) && std::isnan(b.values[i])));
    }
    EXPECT_EQ(a.lossOfLock, b.lossOfLock);
    EXPECT_EQ(a.signalStrength, b.signalStrength);
    ASSERT_EQ(a.epochs.size(), b.epochs.size());
    for (std::size_t e = 0; e < a.epochs.size(); ++e) {
        ASSERT_EQ(a.epochs[e].time, b.epochs[e].time);
    }
    EXPECT_EQ(a.stations, b.stations);
}

Kind Brief(const std::string& name) {
    Kind kind = KindOf(name);
    kind.durations = {600.0};
    return kind;
}

TEST(Scenarios, OfOneSeedAreTheSameSession) {
    const SimulatedSession a = Simulate(DrawScenario(11, Brief("local")));
    const SimulatedSession b = Simulate(DrawScenario(11, Brief("local")));
    ASSERT_EQ(a.stations.size(), 2U);
    for (std::size_t i = 0; i < 2; ++i) {
        ExpectSameNumbers(a.stations[i].observations, b.stations[i].observations);
        EXPECT_EQ(a.stations[i].marker, b.stations[i].marker);
    }
    EXPECT_EQ(RinexNavigation(a.navigation), RinexNavigation(b.navigation));
    const SimulatedSession c = Simulate(DrawScenario(12, Brief("local")));
    EXPECT_NE(a.stations[0].observations.values, c.stations[0].observations.values);
    EXPECT_NE(a.TrueVector(0, 1), c.TrueVector(0, 1));
}

TEST(Scenarios, LieInsideTheBoundsOfTheirKind) {
    for (const Kind& kind : AllKinds()) {
        std::set<double> durations;
        int differentAntennas = 0, noCoefficients = 0;
        for (std::uint64_t seed = 0; seed < 60; ++seed) {
            const Scenario scenario = DrawScenario(seed, kind);
            ASSERT_EQ(scenario.sites.size(), 2U);
            ASSERT_EQ(scenario.occupations.size(), 2U);
            const Geodetic base = ToGeodetic(scenario.sites[0].marker);
            const Geodetic rover = ToGeodetic(scenario.sites[1].marker);
            const double length = Length(Minus(scenario.sites[1].marker, scenario.sites[0].marker));
            const double dh = std::abs(rover.height - base.height);
            EXPECT_GT(length, 0.97 * kind.shortest) << kind.name;
            EXPECT_LT(length, 1.06 * kind.longest) << kind.name;
            EXPECT_LE(dh, std::min(kind.highest, kind.mostHeight * length * 1.05) + 1e-3);
            EXPECT_GE(base.latitude, kind.lowestLatitude * kDegree - 1e-9);
            EXPECT_LE(base.latitude, kind.highestLatitude * kDegree + 1e-9);
            EXPECT_EQ(scenario.preciseInterval.has_value(), kind.precise);
            EXPECT_EQ(std::fmod(scenario.start.seconds, 1.0), 0.0);
            durations.insert(scenario.duration);
            differentAntennas += scenario.antennas.size() == 2 ? 1 : 0;
            noCoefficients += scenario.ionosphere.broadcast ? 0 : 1;
            for (const Occupation& occupation : scenario.occupations) {
                EXPECT_FALSE(occupation.receiver.signals.empty());
            }
        }
        EXPECT_EQ(durations.size(), kind.durations.size()) << kind.name;
        EXPECT_GT(differentAntennas, 5) << kind.name;
        EXPECT_GT(noCoefficients, 1) << kind.name;
    }
    EXPECT_THROW(KindOf("nothing"), std::out_of_range);
}

// With everything that a receiver does to its data.
TEST(Scenarios, AreReadBackFromTheirFiles) {
    for (const char* name : {"canopy", "low-cost", "street", "beidou"}) {
        const SimulatedSession session = Simulate(DrawScenario(21, Brief(name)));
        for (const SimulatedStation& station : session.stations) {
            const io::Observations read = io::ReadRinexObservations(
                RinexObservations(station.observations), station.observations.file);
            ExpectSameNumbers(station.observations, read);
        }
    }
}

TEST(Scenarios, OfEveryKindAreTakenByTheHost) {
    for (const Kind& kind : AllKinds()) {
        Kind half = kind;
        half.durations = {1800.0};
        const SimulatedSession session = Simulate(DrawScenario(31, half));
        const Solved solved = Solve(InputsOf(session, 0, 1));
        EXPECT_TRUE(solved.outcome.completed) << kind.name;
        const auto* best = solved.outcome.Best();
        ASSERT_NE(best, nullptr) << kind.name;
        EXPECT_LT(Length(Minus(best->vector, session.TrueVector(0, 1))), 10.0) << kind.name;
    }
}

TEST(LookAlikes, ShareLengthDateAndIntervalWithTheirModels) {
    const Scenario wettzell = DrawLookAlike(1, "wettzell");
    EXPECT_EQ(DateOf(wettzell.start).year, 2020);
    EXPECT_NEAR(Length(Minus(wettzell.sites[1].marker, wettzell.sites[0].marker)), 1.6, 0.05);
    const Scenario ebre = DrawLookAlike(1, "ebre-bell");
    EXPECT_NEAR(Length(Minus(ebre.sites[1].marker, ebre.sites[0].marker)), 115000.0, 100.0);
    EXPECT_EQ(ebre.duration, 86400.0);
    EXPECT_EQ(LookAlikes().size(), 6U);
    EXPECT_THROW(DrawLookAlike(1, "elsewhere"), std::out_of_range);
}

TEST(Campaigns, CarryTheirFlawsAndOneWorld) {
    CampaignFlaws flaws;
    flaws.wrongHeight = 0.1;
    flaws.wrongCentring = 0.02;
    flaws.wrongHeader = 40.0;
    const Scenario clean = DrawCampaign(3, 12, 3, {});
    const Scenario flawed = DrawCampaign(3, 12, 3, flaws);
    ASSERT_EQ(clean.sites.size(), 12U);
    ASSERT_EQ(clean.occupations.size(), 2U + 3U * 2U * 4U);
    int heights = 0, centrings = 0, headers = 0;
    std::set<std::size_t> observed;
    for (std::size_t i = 0; i < clean.occupations.size(); ++i) {
        const Occupation &a = clean.occupations[i], &b = flawed.occupations[i];
        observed.insert(a.site);
        EXPECT_LE(a.start + a.duration, clean.duration + 1e-6);
        if (a.headerHeight && std::abs(*b.headerHeight - *a.headerHeight - 0.1) < 1e-9) {
            ++heights;
        }
        const double off = std::hypot(b.centring[0] - a.centring[0], b.centring[1] - a.centring[1]);
        centrings += std::abs(off - 0.02) < 1e-9 ? 1 : 0;
        headers += std::abs(Length(*b.headerOffset) - 40.0) < 1e-6 ? 1 : 0;
    }
    EXPECT_EQ(observed.size(), 12U);
    EXPECT_EQ(heights, 1);
    EXPECT_EQ(centrings, 1);
    EXPECT_EQ(headers, 1);
    // Two receivers of one session see the same sky and air: their vector is found.
    Scenario part = clean;
    part.occupations = {clean.occupations[2], clean.occupations[3]};
    part.duration = 3600.0;
    for (Occupation& occupation : part.occupations) {
        occupation.duration = 3600.0;
    }
    const SimulatedSession session = Simulate(part);
    const Solved solved = Solve(InputsOf(session, 0, 1));
    ASSERT_NE(solved.outcome.Best(), nullptr);
    EXPECT_LT(Length(Minus(solved.outcome.Best()->vector, session.TrueVector(0, 1))), 0.3);
}

}  // namespace
}  // namespace vornel::rough
