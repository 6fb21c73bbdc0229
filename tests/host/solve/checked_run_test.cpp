// The runs behind an answer, made by the engine on the session under data/, whose vector is known.
#include "solve/checked_run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "solve/wettzell.h"

namespace vornel::solve {
namespace {

using test::kWtzr;
using test::kWtzz;
using test::ReadWettzell;

double Off(const engine::Solution& solution) {
    return session::Length(session::Minus(solution.vector, session::Minus(kWtzz, kWtzr)));
}

session::Session Wettzell(session::Settings settings = {}) {
    session::ConfiguredSettings configured;
    configured.values = std::move(settings);
    return PrepareSession(ReadWettzell(), std::move(configured));
}

TEST(RunSeries, ARunAfterOthersEqualsTheSameRunAlone) {
    const session::Session session = Wettzell();
    RunSpec high;
    high.elevationMask = 0.5;
    RunSpec first;
    first.to = 0.5;
    const auto vectorOf = [](const RunOutcome& outcome) { return outcome.Best()->vector; };

    engine::Engine one;
    RunSeries alone(session, one, {});
    const auto plain = vectorOf(alone.Make({}));

    engine::Engine other;
    RunSeries series(session, other, {});
    const auto half = vectorOf(series.Make(first));
    const auto masked = vectorOf(series.Make(high));
    EXPECT_EQ(vectorOf(series.Make({})), plain);
    EXPECT_EQ(vectorOf(series.Make(first)), half);
    EXPECT_EQ(vectorOf(series.Make(high)), masked);
    EXPECT_NE(half, plain);
    EXPECT_NE(masked, plain);
}

TEST(RunSeries, APartOfTheTimeIsThatOfASessionCutThere) {
    // 120 epochs every 30 s: the first two thirds end with that of 39 min 30 s.
    session::Settings cut;
    cut.end = session::ParseTime("2020-06-25T00:39:30");
    session::ConfiguredSettings configured;
    configured.values = cut;
    const session::Session part = PrepareSession(ReadWettzell(cut), configured);
    engine::Engine one;
    const RunOutcome expected = RunSeries(part, one, {}).Make({});

    const session::Session whole = Wettzell();
    engine::Engine other;
    RunSpec first;
    first.to = 2.0 / 3.0;
    const RunOutcome found = RunSeries(whole, other, {}).Make(first);
    EXPECT_EQ(found.results.status, expected.results.status);
    EXPECT_NEAR(Off(*found.Best()), Off(*expected.Best()), 1e-4);
    std::size_t expectedPoints = 0, points = 0;
    for (const auto& series : expected.Best()->residuals) {
        expectedPoints += series.points.size();
    }
    for (const auto& series : found.Best()->residuals) {
        points += series.points.size();
    }
    EXPECT_EQ(points, expectedPoints);
}

TEST(RunSeries, WhatTheUserExcludesStaysExcludedInEveryPart) {
    session::Settings settings;
    settings.exclusions = {session::ParseExclusion("G05"),
                           session::ParseExclusion("G07@/2020-06-25T00:30")};
    const session::Session session = Wettzell(settings);
    engine::Engine engine;
    RunSeries series(session, engine, {});
    RunSpec last;
    last.from = 1.0 / 3.0;
    for (const RunSpec& spec : {RunSpec{}, last, RunSpec{}}) {
        const RunOutcome outcome = series.Make(spec);
        for (const auto& residuals : outcome.Best()->residuals) {
            const auto name = engine::SatelliteName(residuals.system, residuals.prn);
            EXPECT_NE(name, "G05");
            for (const auto& point : residuals.points) {
                EXPECT_TRUE(name != "G07" || point.seconds > 4 * 86400.0 + 1800.0);
            }
        }
    }
}

TEST(CheckedRun, TheSessionOfTheDemoIsTrusted) {
    session::Session session = Wettzell();
    engine::Engine engine;
    const CheckedOutcome checked = RunChecked(session, engine, {}, true);
    EXPECT_EQ(checked.grade, Grade::kTrusted);
    EXPECT_TRUE(checked.doubts.empty());
    EXPECT_EQ(checked.kind, AnswerKind::kShort);
    ASSERT_EQ(checked.checks.size(), 1U);
    EXPECT_EQ(checked.checks[0].relation, Relation::kAgrees);
    EXPECT_LT(Off(*checked.outcome.Best()), 0.01);
    EXPECT_GT(checked.residuals.residuals, 1000U);
}

TEST(CheckedRun, WithoutChecksTheAnswerIsTheSameAndDoubtful) {
    session::Session session = Wettzell();
    session::Session again = Wettzell();
    engine::Engine one, other;
    const CheckedOutcome with = RunChecked(session, one, {}, true);
    const CheckedOutcome without = RunChecked(again, other, {}, false);
    EXPECT_EQ(without.grade, Grade::kDoubtful);
    EXPECT_EQ(without.outcome.Best()->vector, with.outcome.Best()->vector);
    EXPECT_TRUE(without.checks.empty());
}

TEST(CheckedRun, TheSameObservationsTwiceAreNeverTrusted) {
    session::Inputs inputs = ReadWettzell();
    inputs.rover = inputs.base;
    session::Session session = PrepareSession(std::move(inputs), {});
    engine::Engine engine;
    const CheckedOutcome checked = RunChecked(session, engine, {}, true);
    EXPECT_NE(checked.grade, Grade::kTrusted);
    ASSERT_FALSE(checked.doubts.empty());
    EXPECT_THAT(checked.doubts.back().text, testing::HasSubstr("the same observations"));
}

TEST(CheckedRun, AnAntennaHeightThatNoTripodHasIsNeverTrusted) {
    session::Settings settings;
    settings.roverHeight = 17.0;
    session::Session session = Wettzell(settings);
    engine::Engine engine;
    const CheckedOutcome checked = RunChecked(session, engine, {}, true);
    EXPECT_EQ(checked.grade, Grade::kDoubtful);
    ASSERT_EQ(checked.doubts.size(), 1U);
    EXPECT_THAT(checked.doubts[0].text, testing::HasSubstr("17.0000 m"));
}

}  // namespace
}  // namespace vornel::solve
