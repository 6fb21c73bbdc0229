#include "solve/outcome.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engine/recording_engine.h"
#include "solve/feed.h"
#include "solve/preparation.h"
#include "solve/wettzell.h"

namespace vornel::solve {
namespace {

using namespace session;
using namespace engine;
using test::ReadWettzell;

Solution SolutionOf(int mode, double ratio) {
    Solution solution;
    solution.mode = mode;
    solution.ratio = ratio;
    return solution;
}

TEST(Judgement, AFixMustPassTheRatioOfTheLastModel) {
    engine::Results results;
    EXPECT_EQ(Judge(results, 1.8), Acceptance::kNone);
    results.status = 21;
    results.tripleDifference.mode = 3;
    EXPECT_EQ(Judge(results, 1.8), Acceptance::kTripleDifference);
    results.status = 73;
    results.floats = {SolutionOf(5, 0.0), SolutionOf(6, 0.0)};
    results.fixeds = {SolutionOf(5, 9.0), SolutionOf(6, 1.9)};
    EXPECT_EQ(Judge(results, 1.8), Acceptance::kFixed);
    EXPECT_EQ(Judge(results, 1.9), Acceptance::kFloat);  // equality does not pass
    results.status = 72;
    results.fixeds.pop_back();
    EXPECT_EQ(Judge(results, 1.8), Acceptance::kFloat);
    results.status = 71;
    results.floats.pop_back();
    results.fixeds[0].ratio = 1.2;
    EXPECT_EQ(Judge(results, 1.8), Acceptance::kFloat);
}

TEST(Judgement, AFixOnFewSatellitesIsSaidToBeDoubtful) {
    engine::Results results;
    results.status = 81;
    Solution fixed = SolutionOf(1, 9.0);
    for (int prn = 1; prn <= 3; ++prn) {
        fixed.residuals.push_back({1, prn, 0, {{2111, 0.0, 1}}});
    }
    results.fixeds = {fixed};
    results.floats = {SolutionOf(1, 0.0)};
    EXPECT_THAT(Doubts(results, Acceptance::kFixed),
                testing::ElementsAre(testing::HasSubstr("3 satellites")));
    results.fixeds[0].residuals.push_back({8, 1, 0, {{2111, 0.0, 1}}});
    EXPECT_TRUE(Doubts(results, Acceptance::kFixed).empty());
}

TEST(Judgement, AnEngineWithoutSolverIsNotAsked) {
    engine::Api api = test::RecordingEngine();
    test::NextRun() = {10, 0};
    const Session session = PrepareSession(ReadWettzell(), {});
    Engine engine(api);
    Feed(session, engine, {});
    const RunOutcome outcome = vornel::solve::Run(session, engine);
    EXPECT_FALSE(outcome.completed);
    EXPECT_EQ(outcome.acceptance, Acceptance::kNone);
    EXPECT_EQ(outcome.Best(), nullptr);
}

}  // namespace
}  // namespace vornel::solve
