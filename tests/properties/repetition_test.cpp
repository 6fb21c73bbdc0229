// A run depends on what has been handed over and on nothing that happened before.
#include <gtest/gtest.h>

#include <vector>

#include "VornelBlCore.h"
#include "foundation/satellite.h"
#include "properties/random_sessions.h"
#include "simulation/hand_over.h"

namespace vornel::properties {
namespace {

class Repetition : public Law {};
INSTANTIATE_TEST_SUITE_P(Models, Repetition, ::testing::Range(1, 7), NameOfModel);

// A run that ends for want of a reference satellite: all that the session has are to be ignored.
void RunWithoutSatellites(const Session& session) {
    for (const int satellite : session.satellites) {
        int id = 0;
        const int system = SplitSatNumber(satellite, &id);
        AddOneDelSat(system, id);
    }
    int status = -1;
    ASSERT_EQ(StartProcess(&status), 1);
    ASSERT_LT(status, 20);
    MarkDelSatList(0, nullptr, nullptr);
}

TEST_P(Repetition, OfStartProcessGivesTheSameBitsAlsoAfterAFailedRun) {
    for (std::uint64_t number = 0; number < kSeeds; ++number) {
        SCOPED_TRACE(number);
        test::ForgetProcess();
        const Session session = simulation::Simulate(TroubledScenario(model(), SeedOf(number)));
        const std::string first = AnswersOf(session);
        EXPECT_EQ(FirstDifference(AnswersOfRun(), first), "");
        RunWithoutSatellites(session);
        EXPECT_EQ(FirstDifference(AnswersOfRun(), first), "");
    }
}

TEST_P(Repetition, AfterOtherSettingsAndBackGivesTheSameBits) {
    for (std::uint64_t number = 0; number < kSeeds; ++number) {
        SCOPED_TRACE(number);
        test::ForgetProcess();
        const Session session = simulation::Simulate(TroubledScenario(model(), SeedOf(number)));
        const SolveConfig& config = session.scenario.config;
        const std::string first = AnswersOf(session);

        SolveConfig other = config;
        other.slvmode = model() % 6 + 1;
        other.minEpochs = 25;
        other.outlierFactor = 3.1;
        other.ratioThreshold = 90.0;
        other.periodLength = 700.0;
        simulation::HandOverConfig(other);
        int id = 0;
        const int system = SplitSatNumber(session.satellites.front(), &id);
        AddOneDelSat(system, id);
        AddOneSatTrackInfo(1, system, id, 1, 0, 0.0, 0, 0.0, 0.0, 0, nullptr, nullptr, nullptr,
                           nullptr);
        EXPECT_NE(AnswersOfRun(), first);

        simulation::HandOverConfig(config);
        MarkDelSatList(0, nullptr, nullptr);
        CleanSatTrackList();
        EXPECT_EQ(FirstDifference(AnswersOfRun(), first), "");
    }
}

// Another baseline under the same sky: other stations, noise, receivers and model.
Scenario AnotherBaseline(const Scenario& scenario, int model, std::uint64_t seed) {
    Scenario other = TroubledScenario(model, seed);
    other.week = scenario.week;
    other.startSeconds = scenario.startSeconds;
    other.interval = scenario.interval;
    other.epochCount = scenario.epochCount;
    other.slips.clear();
    other.gaps.clear();
    return other;
}

TEST_P(Repetition, ASecondBaselineEqualsTheSameOneInAFreshProcess) {
    for (std::uint64_t number = 0; number < kSeeds; ++number) {
        SCOPED_TRACE(number);
        test::ForgetProcess();
        const Session session = simulation::Simulate(TroubledScenario(model(), SeedOf(number)));
        const std::string fresh = AnswersOf(session);

        test::ForgetProcess();
        const Session before = simulation::Simulate(
            AnotherBaseline(session.scenario, model() % 6 + 1, SeedOf(number) + 300));
        ASSERT_NE(AnswersOf(before), fresh);
        RunWithoutSatellites(before);
        if (number % 2 == 0) {
            DiposeProcess();
        }
        EXPECT_EQ(FirstDifference(AnswersOf(session), fresh), "");

        // What the first baseline left of ephemerides is enough.
        ASSERT_NE(AnswersOf(before), fresh);
        simulation::HandOverSettings(session);
        simulation::HandOverEpochs(session);
        EXPECT_EQ(FirstDifference(AnswersOfRun(), fresh), "");
    }
}

TEST_P(Repetition, ABaselineOfAnotherTimeBeforeChangesNoBit) {
    for (std::uint64_t number = 0; number < kSeeds; ++number) {
        SCOPED_TRACE(number);
        test::ForgetProcess();
        const Session session = simulation::Simulate(TroubledScenario(model(), SeedOf(number)));
        const std::string fresh = AnswersOf(session);

        test::ForgetProcess();
        Scenario earlier = RandomScenario(model(), SeedOf(number) + 300);
        earlier.week = session.scenario.week - (number % 2 == 0 ? 1 : 0);
        earlier.startSeconds = session.scenario.startSeconds < 302400.0
                                   ? session.scenario.startSeconds + 86400.0
                                   : session.scenario.startSeconds - 86400.0;
        AnswersOf(simulation::Simulate(earlier));
        EXPECT_EQ(FirstDifference(AnswersOf(session), fresh), "");
    }
}

}  // namespace
}  // namespace vornel::properties
