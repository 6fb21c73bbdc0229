// The rule of trust, on check runs that are made up: what confirms an answer, what refutes it, and
// when the checks may stop.
#include "solve/trust.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vornel::solve {
namespace {

using testing::HasSubstr;

RunRecord Answer(std::size_t integers, double ratio) {
    RunRecord record;
    record.integers = integers;
    record.ratio = ratio;
    record.acceptance = Acceptance::kFixed;
    return record;
}

RunRecord Check(const char* name, Relation relation) {
    RunRecord record;
    record.spec.name = name;
    record.relation = relation;
    return record;
}

const RunRecord kStrong = Answer(12, 9.0);
const RunRecord kWeak = Answer(7, 2.5);

TEST(Trust, NamesAreThoseOfTheOutputs) {
    EXPECT_STREQ(NameOf(Grade::kTrusted), "trusted");
    EXPECT_STREQ(NameOf(Grade::kDoubtful), "doubtful");
    EXPECT_STREQ(NameOf(Grade::kFloat), "float");
    EXPECT_STREQ(NameOf(Grade::kApproximate), "approximate");
    EXPECT_STREQ(NameOf(Grade::kNone), "none");
    EXPECT_STREQ(NameOf(Relation::kAgrees), "agrees");
    EXPECT_STREQ(NameOf(Relation::kBetween), "between");
    EXPECT_STREQ(NameOf(Relation::kContradicts), "contradicts");
    EXPECT_STREQ(NameOf(Relation::kNoIntegers), "no integers");
}

TEST(Trust, FourIntegersAreNeverConfirmed) {
    const std::vector<RunRecord> checks = {Check(kFirstPart, Relation::kAgrees),
                                           Check(kLastPart, Relation::kAgrees)};
    EXPECT_EQ(Decide(AnswerKind::kShort, true, Answer(4, 99.0), checks, 2), Verdict::kRefuted);
    EXPECT_EQ(Decide(AnswerKind::kShort, true, Answer(5, 99.0), checks, 2), Verdict::kConfirmed);
    EXPECT_THAT(Unconfirmed(AnswerKind::kShort, true, Answer(4, 99.0), checks).front().text,
                HasSubstr("only 4 integers"));
}

TEST(Trust, AShortBaselineNeedsOneCheckOrTwoWhereTheIntegersAreWeak) {
    const std::vector<RunRecord> one = {Check(kFirstPart, Relation::kAgrees)};
    const std::vector<RunRecord> two = {Check(kFirstPart, Relation::kAgrees),
                                        Check(kLastPart, Relation::kAgrees)};
    EXPECT_EQ(Decide(AnswerKind::kShort, true, kStrong, {}, 3), Verdict::kOpen);
    EXPECT_EQ(Decide(AnswerKind::kShort, true, kStrong, one, 2), Verdict::kConfirmed);
    EXPECT_EQ(Decide(AnswerKind::kShort, true, kWeak, one, 2), Verdict::kOpen);
    EXPECT_EQ(Decide(AnswerKind::kShort, true, kWeak, one, 0), Verdict::kRefuted);
    EXPECT_EQ(Decide(AnswerKind::kShort, true, kWeak, two, 1), Verdict::kConfirmed);
    // Many integers, or a clear ratio: either is enough.
    EXPECT_EQ(Decide(AnswerKind::kShort, true, Answer(10, 2.0), one, 2), Verdict::kConfirmed);
    EXPECT_EQ(Decide(AnswerKind::kShort, true, Answer(5, 5.0), one, 2), Verdict::kConfirmed);
}

TEST(Trust, AsManyContradictingAsAgreeingChecksRefute) {
    std::vector<RunRecord> checks = {Check(kFirstPart, Relation::kContradicts),
                                     Check(kLastPart, Relation::kAgrees)};
    EXPECT_EQ(Decide(AnswerKind::kShort, true, kStrong, checks, 0), Verdict::kRefuted);
    EXPECT_EQ(Decide(AnswerKind::kShort, true, kStrong, checks, 1), Verdict::kOpen);
    checks.push_back(Check(kOtherFrequency, Relation::kAgrees));
    EXPECT_EQ(Decide(AnswerKind::kShort, true, kStrong, checks, 0), Verdict::kConfirmed);
    EXPECT_EQ(Decide(AnswerKind::kShort, true, kStrong,
                     {Check(kFirstPart, Relation::kContradicts),
                      Check(kLastPart, Relation::kContradicts)},
                     1),
              Verdict::kRefuted);
}

TEST(Trust, NeitherNearNorFarSaysNothing) {
    EXPECT_EQ(Decide(AnswerKind::kShort, true, kStrong, {Check(kFirstPart, Relation::kBetween)}, 0),
              Verdict::kRefuted);
    EXPECT_EQ(
        Decide(AnswerKind::kShort, true, kStrong,
               {Check(kFirstPart, Relation::kBetween), Check(kLastPart, Relation::kAgrees)}, 0),
        Verdict::kConfirmed);
}

TEST(Trust, AMediumBaselineNeedsTheTwoFrequenciesAndOneMore) {
    const auto decide = [](std::vector<RunRecord> checks, std::size_t left) {
        return Decide(AnswerKind::kMedium, true, kStrong, checks, left);
    };
    EXPECT_EQ(decide({Check(kOtherFrequency, Relation::kAgrees)}, 3), Verdict::kOpen);
    EXPECT_EQ(decide({Check(kOtherFrequency, Relation::kAgrees)}, 0), Verdict::kRefuted);
    EXPECT_EQ(
        decide({Check(kOtherFrequency, Relation::kAgrees), Check(kFirstPart, Relation::kAgrees)},
               2),
        Verdict::kConfirmed);
    // Without the second frequency nothing else helps.
    EXPECT_EQ(decide({Check(kOtherFrequency, Relation::kBetween)}, 3), Verdict::kRefuted);
    EXPECT_THAT(Unconfirmed(AnswerKind::kMedium, true, kStrong,
                            {Check(kOtherFrequency, Relation::kNoIntegers)})
                    .front()
                    .text,
                HasSubstr("frequencies do not agree"));
}

TEST(Trust, TheIonosphereFreeCombinationNeedsTwoChecks) {
    const auto decide = [](std::vector<RunRecord> checks, std::size_t left) {
        return Decide(AnswerKind::kIonosphereFree, true, kStrong, checks, left);
    };
    EXPECT_EQ(decide({Check(kFirstPart, Relation::kAgrees)}, 2), Verdict::kOpen);
    EXPECT_EQ(decide({Check(kFirstPart, Relation::kAgrees)}, 0), Verdict::kRefuted);
    EXPECT_EQ(
        decide({Check(kFirstPart, Relation::kAgrees), Check(kHighMask, Relation::kAgrees)}, 0),
        Verdict::kConfirmed);
    EXPECT_EQ(
        decide({Check(kFirstPart, Relation::kNoIntegers), Check(kLastPart, Relation::kNoIntegers)},
               1),
        Verdict::kRefuted);
}

TEST(Trust, WithoutChecksAnAnswerIsDoubtful) {
    const auto doubts = Unconfirmed(AnswerKind::kShort, true, kStrong, {});
    ASSERT_EQ(doubts.size(), 1U);
    EXPECT_THAT(doubts[0].text, HasSubstr("no check run was made"));
    EXPECT_TRUE(
        Unconfirmed(AnswerKind::kShort, true, kStrong, {Check(kFirstPart, Relation::kAgrees)})
            .empty());
}

TEST(Trust, ACheckIsComparedHorizontallyAndInHeight) {
    const session::Geodetic pole{M_PI / 2.0, 0.0, 0.0};  // up is Z
    const auto relation = [&](double across, double up) {
        engine::Solution answer, check;
        answer.vector = {1.0, 2.0, 3.0};
        check.vector = {1.0 + across, 2.0, 3.0 + up};
        RunRecord record;
        Compare(answer, check, pole, record);
        EXPECT_NEAR(record.horizontal, std::abs(across), 1e-12);
        EXPECT_NEAR(record.up, std::abs(up), 1e-12);
        return *record.relation;
    };
    EXPECT_EQ(relation(0.039, 0.079), Relation::kAgrees);
    EXPECT_EQ(relation(0.041, 0.0), Relation::kBetween);
    EXPECT_EQ(relation(0.0, -0.081), Relation::kBetween);
    EXPECT_EQ(relation(0.099, -0.199), Relation::kBetween);
    EXPECT_EQ(relation(-0.101, 0.0), Relation::kContradicts);
    EXPECT_EQ(relation(0.0, 0.201), Relation::kContradicts);
}

}  // namespace
}  // namespace vornel::solve
