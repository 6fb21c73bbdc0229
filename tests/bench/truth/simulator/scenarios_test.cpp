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

Kind Named(const std::string& name) {
    Kind kind;
    kind.name = name;
    kind.durations = {600.0};
    return kind;
}

std::vector<Kind> VariousKinds() {
    std::vector<Kind> kinds = {Named("plain"),  Named("low-cost"), Named("canopy"),
                               Named("street"), Named("beidou"),   Named("mountain"),
                               Named("sun"),    Named("far"),      Named("old")};
    kinds[0].durations = {300.0, 600.0};
    kinds[1].rover = Equipment::kLowCost;
    kinds[1].baseLikeRover = 0.5;
    kinds[1].systems = {"G", "GE"};
    kinds[2].around = {Environment::kCanopy};
    kinds[3].around = {Environment::kStreet, Environment::kYard};
    kinds[3].rover = Equipment::kLowCostDual;
    kinds[4].systems = {"C"};
    kinds[4].latitude = {20.0, 50.0};
    kinds[4].longitude = {80.0, 130.0};
    kinds[5].length = {1000.0, 10000.0};
    kinds[5].steepest = 0.3;
    kinds[5].heightDifference = 1500.0;
    kinds[6].solar = 1.0;
    kinds[6].latitude = {-25.0, 25.0};
    kinds[7].length = {250000.0, 500000.0};
    kinds[7].preciseInterval = 900.0;
    kinds[8].years = {2002, 2003};
    kinds[8].systems = {"G"};
    kinds[8].frequencies = 2;
    return kinds;
}

TEST(Scenarios, OfOneSeedAreTheSameSession) {
    const SimulatedSession a = Simulate(DrawScenario(11, Named("local")));
    const SimulatedSession b = Simulate(DrawScenario(11, Named("local")));
    ASSERT_EQ(a.stations.size(), 2U);
    for (std::size_t i = 0; i < 2; ++i) {
        ExpectSameNumbers(a.stations[i].observations, b.stations[i].observations);
        EXPECT_EQ(a.stations[i].marker, b.stations[i].marker);
    }
    EXPECT_EQ(RinexNavigation(a.navigation), RinexNavigation(b.navigation));
    const SimulatedSession c = Simulate(DrawScenario(12, Named("local")));
    EXPECT_NE(a.stations[0].observations.values, c.stations[0].observations.values);
    EXPECT_NE(a.TrueVector(0, 1), c.TrueVector(0, 1));
}

TEST(Scenarios, LieInsideTheBoundsOfTheirKind) {
    for (const Kind& kind : VariousKinds()) {
        std::set<double> durations;
        std::set<int> months;
        int differentAntennas = 0, noCoefficients = 0;
        for (std::uint64_t seed = 0; seed < 60; ++seed) {
            const Scenario scenario = DrawScenario(seed, kind);
            ASSERT_EQ(scenario.sites.size(), 2U);
            ASSERT_EQ(scenario.occupations.size(), 2U);
            const Geodetic base = ToGeodetic(scenario.sites[0].marker);
            const Geodetic rover = ToGeodetic(scenario.sites[1].marker);
            const double length = Length(Minus(scenario.sites[1].marker, scenario.sites[0].marker));
            const double dh = std::abs(rover.height - base.height);
            EXPECT_GT(length, 0.97 * kind.length[0]) << kind.name;
            EXPECT_LT(length, 1.06 * kind.length[1]) << kind.name;
            EXPECT_LE(dh, std::min(kind.heightDifference, kind.steepest * length * 1.05) + 1e-3);
            EXPECT_GE(base.latitude, kind.latitude[0] * kDegree - 1e-9);
            EXPECT_LE(base.latitude, kind.latitude[1] * kDegree + 1e-9);
            EXPECT_GE(base.longitude, kind.longitude[0] * kDegree - 1e-9);
            EXPECT_LE(base.longitude, kind.longitude[1] * kDegree + 1e-9);
            EXPECT_GE(std::min(base.height, rover.height), kind.height[0] - 1e-3);
            EXPECT_EQ(scenario.preciseInterval, kind.preciseInterval);
            const Date date = DateOf(scenario.start);
            EXPECT_GE(date.year, kind.years[0]);
            EXPECT_LE(date.year, kind.years[1]);
            months.insert(date.month);
            durations.insert(scenario.duration);
            differentAntennas += scenario.antennas.size() == 2 ? 1 : 0;
            noCoefficients += scenario.ionosphere.broadcast ? 0 : 1;
            for (const Occupation& occupation : scenario.occupations) {
                EXPECT_FALSE(occupation.receiver.signals.empty());
            }
        }
        EXPECT_EQ(durations.size(), kind.durations.size()) << kind.name;
        EXPECT_GT(months.size(), 8U) << kind.name;
        EXPECT_GT(differentAntennas, 5) << kind.name;
        EXPECT_GT(noCoefficients, 1) << kind.name;
    }
}

TEST(Scenarios, HaveOneFrequencyAndHeadersAsAskedFor) {
    Kind kind = Named("asked");
    kind.frequencies = 1;
    kind.headerSigma = 30.0;
    kind.interval = 60.0;
    double off = 0.0;
    for (std::uint64_t seed = 0; seed < 40; ++seed) {
        const Scenario scenario = DrawScenario(seed, kind);
        EXPECT_EQ(scenario.interval, 60.0);
        for (const Occupation& occupation : scenario.occupations) {
            EXPECT_EQ(occupation.receiver.signals.size(), 4U);
            off += Length(*occupation.headerOffset) / 80.0;
        }
    }
    // Of three components with 30, 30 and 45 m the mean length is about 57 m.
    EXPECT_NEAR(off, 57.0, 12.0);
}

// With everything that a receiver does to its data.
TEST(Scenarios, AreReadBackFromTheirFiles) {
    for (const Kind& kind : VariousKinds()) {
        const SimulatedSession session = Simulate(DrawScenario(21, kind));
        for (const SimulatedStation& station : session.stations) {
            const io::Observations read = io::ReadRinexObservations(
                RinexObservations(station.observations), station.observations.file);
            ExpectSameNumbers(station.observations, read);
        }
    }
}

TEST(Scenarios, OfEveryKindAreTakenByTheHost) {
    for (const Kind& kind : VariousKinds()) {
        Kind half = kind;
        half.durations = {1800.0};
        const SimulatedSession session = Simulate(DrawScenario(31, half));
        const Answer answer = Solve(InputsOf(session, 0, 1));
        EXPECT_TRUE(answer.completed) << kind.name;
        ASSERT_TRUE(answer.any) << kind.name;
        EXPECT_LT(Length(Minus(answer.vector, session.TrueVector(0, 1))), 10.0) << kind.name;
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
    const Answer answer = Solve(InputsOf(session, 0, 1));
    ASSERT_TRUE(answer.any);
    EXPECT_LT(Length(Minus(answer.vector, session.TrueVector(0, 1))), 0.3);
}

}  // namespace
}  // namespace vornel::rough
