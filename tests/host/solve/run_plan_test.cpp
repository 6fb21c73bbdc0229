// Which runs the facts of a session lead to.
#include "solve/run_plan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vornel::solve {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::size_t kGalileoIndex = 3;

SessionFacts Facts(double length, double duration) {
    SessionFacts facts;
    facts.length = length;
    facts.duration = duration;
    facts.secondFrequency = true;
    facts.systemsOnTwo = 4;
    facts.shortLimit = 1e4;
    facts.galileoShare = 0.25;
    facts.othersPerEpoch = 18.0;
    return facts;
}

std::vector<std::string> NamesOf(const std::vector<RunSpec>& specs) {
    std::vector<std::string> names;
    for (const RunSpec& spec : specs) {
        names.push_back(spec.name);
    }
    return names;
}

TEST(RunPlan, AShortBaselineAndOneFrequencyAreLeftToTheEngine) {
    EXPECT_EQ(MainRun(Facts(9999.0, 3600.0)).model, std::nullopt);
    SessionFacts one = Facts(5e4, 3600.0);
    one.secondFrequency = false;
    EXPECT_EQ(MainRun(one).model, std::nullopt);
    EXPECT_THAT(MainRun(one).why, HasSubstr("one frequency"));
}

TEST(RunPlan, BelowThirtyKilometresAShortSessionTakesTheFirstFrequency) {
    EXPECT_EQ(MainRun(Facts(1.5e4, 3600.0)).model, 1);
    EXPECT_EQ(MainRun(Facts(1.5e4, 7200.0)).model, 6);
    EXPECT_EQ(MainRun(Facts(3.1e4, 3600.0)).model, 6);
}

TEST(RunPlan, GalileoIsLeftOutOfTheIonosphereFreeCombinationWhereEnoughOthersRemain) {
    EXPECT_TRUE(MainRun(Facts(1e5, 3600.0)).without[kGalileoIndex]);
    SessionFacts few = Facts(1e5, 3600.0);
    few.othersPerEpoch = 5.0;
    EXPECT_FALSE(MainRun(few).without[kGalileoIndex]);
    SessionFacts none = Facts(1e5, 3600.0);
    none.galileoShare = 0.0;
    EXPECT_FALSE(MainRun(none).without[kGalileoIndex]);
}

TEST(RunPlan, AModelThatTheUserGaveWins) {
    SessionFacts given = Facts(1e5, 3600.0);
    given.modelGiven = true;
    given.solveMode = 4;
    EXPECT_EQ(MainRun(given).model, std::nullopt);
    EXPECT_FALSE(MainRun(given).without[kGalileoIndex]);
    RunOutcome floating;
    floating.acceptance = Acceptance::kFloat;
    EXPECT_FALSE(NextBest(given, MainRun(given), floating));
}

TEST(RunPlan, AWideLaneThatPassesNoRatioTestGivesTheIonosphereFreeFloat) {
    const SessionFacts facts = Facts(1e5, 3600.0);
    const RunSpec main = MainRun(facts);
    RunOutcome outcome;
    outcome.acceptance = Acceptance::kFloat;
    outcome.results.floats.resize(1);
    outcome.results.floats[0].mode = 5;
    const auto next = NextBest(facts, main, outcome);
    ASSERT_TRUE(next);
    EXPECT_EQ(next->ratioThreshold, 0.0);
    EXPECT_TRUE(next->floatOnly);
    EXPECT_TRUE(next->without[kGalileoIndex]);
    outcome.results.floats.resize(2);
    outcome.results.floats[1].mode = 6;
    EXPECT_FALSE(NextBest(facts, main, outcome));
    outcome.acceptance = Acceptance::kFixed;
    EXPECT_FALSE(NextBest(facts, main, outcome));
}

TEST(RunPlan, IntegersComeBeforeFloatAndTheIonosphereFreeFloatBeforeTheWideLane) {
    RunOutcome fixed, wideLane, ionosphereFree, triple;
    fixed.acceptance = Acceptance::kFixed;
    wideLane.acceptance = ionosphereFree.acceptance = Acceptance::kFloat;
    wideLane.results.floats.resize(1);
    wideLane.results.floats[0].mode = 5;
    wideLane.results.solveModel = 6;
    ionosphereFree.results.floats.resize(1);
    ionosphereFree.results.floats[0].mode = 6;
    triple.acceptance = Acceptance::kTripleDifference;
    EXPECT_TRUE(Better(fixed, wideLane));
    EXPECT_FALSE(Better(wideLane, fixed));
    EXPECT_TRUE(Better(ionosphereFree, wideLane));
    EXPECT_FALSE(Better(wideLane, ionosphereFree));
    EXPECT_TRUE(Better(wideLane, triple));
    EXPECT_FALSE(Better(triple, triple));
}

TEST(RunPlan, ChecksByKind) {
    const SessionFacts near = Facts(500.0, 3600.0);
    EXPECT_THAT(NamesOf(ChecksOf(near, MainRun(near), 1)),
                ElementsAre(kFirstPart, kLastPart, kBothFrequencies, kOtherFrequency));
    SessionFacts oneSystem = near;
    oneSystem.systemsOnTwo = 1;
    EXPECT_THAT(NamesOf(ChecksOf(oneSystem, MainRun(oneSystem), 1)),
                ElementsAre(kFirstPart, kLastPart, kOtherFrequency));
    SessionFacts one = near;
    one.secondFrequency = false;
    one.systemsOnTwo = 0;
    EXPECT_THAT(NamesOf(ChecksOf(one, MainRun(one), 1)), ElementsAre(kFirstPart, kLastPart));
    const SessionFacts medium = Facts(2e4, 3600.0);
    EXPECT_THAT(NamesOf(ChecksOf(medium, MainRun(medium), 1)),
                ElementsAre(kOtherFrequency, kFirstPart, kLastPart, kHighMask));
    const SessionFacts far = Facts(1e5, 3600.0);
    const auto checks = ChecksOf(far, MainRun(far), 6);
    EXPECT_THAT(NamesOf(checks), ElementsAre(kFirstPart, kLastPart, kHighMask));
    for (const RunSpec& check : checks) {
        EXPECT_EQ(check.model, 6);
        EXPECT_TRUE(check.without[kGalileoIndex]) << check.name;
    }
    EXPECT_NEAR(checks[0].to, 2.0 / 3.0, 1e-12);
    EXPECT_NEAR(checks[1].from, 1.0 / 3.0, 1e-12);
    EXPECT_NEAR(*checks[2].elevationMask, 20.0 * M_PI / 180.0, 1e-12);
}

TEST(RunPlan, TheKindFollowsFromModelAndLength) {
    EXPECT_EQ(KindOf(Facts(500.0, 60.0), 1), AnswerKind::kShort);
    EXPECT_EQ(KindOf(Facts(1e4, 60.0), 1), AnswerKind::kMedium);
    EXPECT_EQ(KindOf(Facts(1e4, 60.0), 2), AnswerKind::kMedium);
    EXPECT_EQ(KindOf(Facts(500.0, 60.0), 5), AnswerKind::kIonosphereFree);
    EXPECT_EQ(KindOf(Facts(500.0, 60.0), 6), AnswerKind::kIonosphereFree);
    EXPECT_EQ(KindOf(Facts(500.0, 60.0), 3), AnswerKind::kOther);
}

}  // namespace
}  // namespace vornel::solve
