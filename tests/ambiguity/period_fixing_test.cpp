// Fixing period by period: what each period resolves to, what float periods borrow from fixed ones,
// and which integers end in the result.
#include "ambiguity/period_fixing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "foundation/dense_reference.h"
#include "foundation/trace_capture.h"
#include "run/period_session.h"

namespace vornel {
namespace {

using reference::Dense;
using reference::ExpectNear;
using reference::Session;
using reference::SessionShape;
using reference::Vector;

struct CraftedPeriod {
    Dense normal;
    Vector rhs;
};

// Period equations of given blocks, with one common parameter and the list of ambiguities in period
// order. `start` holds the common parameter and all ambiguities. Solved.
PeriodEquations Crafted(int model, const Vector& start, const std::vector<CraftedPeriod>& periods) {
    std::size_t widest = 0;
    for (const CraftedPeriod& period : periods) {
        widest = std::max(widest, period.rhs.size() - 1);
    }
    const std::size_t stride = widest + 5;
    PeriodTables tables;
    tables.globalTypes.assign(start.size(), kAmbiguityParameter);
    tables.globalTypes[0] = kCoordinateParameter;
    tables.periodTypes.assign(stride * periods.size(), 0);
    tables.globalIndex.assign(stride * periods.size(), 0);
    tables.ambSat.assign(widest * periods.size(), 0);
    tables.ambList.assign(widest * periods.size(), 0);
    std::vector<AmbRstInfo> list;
    std::vector<gult::matrixT> normals;
    std::vector<gult::matrixT> rhs;
    for (std::size_t p = 0; p < periods.size(); ++p) {
        const std::size_t count = periods[p].rhs.size() - 1;
        const std::size_t tracks = model == 3 ? count / 2 : count;
        const std::size_t first = list.size();
        tables.periodSize.push_back(static_cast<int>(count + 1));
        tables.ambCount.push_back(static_cast<int>(count));
        tables.periodTypes[p * stride] = kCoordinateParameter;
        for (std::size_t i = 0; i < count; ++i) {
            tables.periodTypes[p * stride + 1 + i] = kAmbiguityParameter;
            tables.globalIndex[p * stride + 1 + i] =
                static_cast<int>(1 + first + i % tracks + (i < tracks ? 0 : tracks));
            tables.ambSat[p * widest + i] = static_cast<int>(10 + i % tracks);
            tables.ambList[p * widest + i] = static_cast<int>(first + i % tracks);
        }
        for (std::size_t i = 0; i < tracks; ++i) {
            AmbRstInfo record;
            record.sat = static_cast<int>(10 + i);
            record.firstEpoch = static_cast<int>(100 * p);
            record.lastEpoch = static_cast<int>(100 * p + 99);
            record.firstTime.second = record.firstEpoch + 1;
            record.lastTime.second = record.lastEpoch + 1;
            record.rows1 = 40;
            record.rms1 = 0.003;
            record.rejected1 = 2;
            record.value1 = 0.123;
            list.push_back(record);
        }
        normals.push_back(reference::ToMatrix(periods[p].normal));
        rhs.push_back(reference::ToColumn(periods[p].rhs));
    }
    PeriodEquations equations(model, static_cast<int>(periods.size()), static_cast<int>(widest), 0);
    equations.Set(0, 0, 1, static_cast<int>(start.size()), tables, normals, rhs,
                  reference::ToColumn(start));
    equations.SetAmbiguities(list);
    gult::matrixT cofactors;
    equations.Solve(cofactors);
    return equations;
}

// A period whose ambiguities keep their start values, with the given variances and no coupling.
CraftedPeriod Uncoupled(const std::vector<double>& variances) {
    CraftedPeriod period;
    period.normal = reference::Zeros(variances.size() + 1, variances.size() + 1);
    period.normal[0][0] = 100.0L;
    for (std::size_t i = 0; i < variances.size(); ++i) {
        period.normal[i + 1][i + 1] = 1.0L / variances[i];
    }
    period.rhs.assign(variances.size() + 1, 0.0L);
    return period;
}

// Two periods of one ambiguity each, all starting at zero. A measurement of the common parameter, c
// = `measured` to 0.15; in the first period slope c + a = 7 and in the second 4 c + b = 3, both to
// 0.01. The first ambiguity is 7 and the second 3: with a fixed, c is near zero.
PeriodEquations OneStrongOneWeak(long double measured, long double slope) {
    const long double code = 1.0L / (0.15L * 0.15L);
    const long double phase = 1e4L;
    const CraftedPeriod strong = {
        {{code + phase * slope * slope, phase * slope}, {phase * slope, phase}},
        {code * measured + phase * slope * 7.0L, phase * 7.0L}};
    const CraftedPeriod weak = {{{phase * 16.0L, phase * 4.0L}, {phase * 4.0L, phase}},
                                {phase * 4.0L * 3.0L, phase * 3.0L}};
    return Crafted(1, {0.0L, 0.0L, 0.0L}, {strong, weak});
}

PeriodFixRecord FixedRecord(int period, const Vector& xFixed, const Dense& cofactors) {
    LambdaAR lambda;
    lambda.fixQuality = 3;
    lambda.xFixed = reference::ToColumn(xFixed);
    lambda.QxxFixed = reference::ToMatrix(cofactors);
    return {period, lambda};
}

PeriodFixRecord FloatRecord(int period, const std::vector<AmbRstInfo>& tracks) {
    LambdaAR lambda;
    lambda.fixQuality = 0;
    lambda.ambRecords = tracks;
    return {period, lambda};
}

// ---- borrowing
// ------------------------------------------------------------------------------------------

// Period b borrows; its announcement, and nothing else, goes to the standard error stream.
void Borrow(PeriodFixing& fixing, const std::vector<int>& fixedPeriods, int b) {
    testing::internal::CaptureStderr();
    fixing.GetPeriodXbIWithSubXaIConstraint(static_cast<int>(fixedPeriods.size()),
                                            fixedPeriods.data(), b);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "GetPeriodXbIWithSubXaIConstraint: " + std::to_string(b) + ".\n");
}

SessionShape ThreePeriods() {
    SessionShape shape;
    shape.tracks = {5, 4, 6};
    shape.rowsPerTrack = {20, 20, 12};
    shape.drift = {1.0, 1.0, 0.5};
    shape.noise = 0.01;
    shape.seed = 4;
    return shape;
}

// The common parameters of the truth, a little off, as each fixed period has them.
Vector NearTruth(const Session& session, long double offset) {
    Vector result;
    for (std::size_t k = 0; k < session.shape.commonCount; ++k) {
        result.push_back(session.truth[k] + offset * (k == 1 ? -1.0L : 1.0L));
    }
    return result;
}

const Dense kFirstPrior = {{4e-6L, 1e-6L, 0.0L}, {1e-6L, 9e-6L, -2e-6L}, {0.0L, -2e-6L, 6e-6L}};
const Dense kSecondPrior = {{8e-6L, -1e-6L, 3e-6L}, {-1e-6L, 5e-6L, 0.0L}, {3e-6L, 0.0L, 7e-6L}};

struct Estimate {
    Vector x;
    Dense cofactors;
};

// The period's own estimate with an independent measurement of its common parameters folded in, by
// the gain of a filter: no normal equations of the sum are formed.
Estimate FoldIn(const Estimate& before, const Vector& measured, const Dense& covariance) {
    const std::size_t n = before.x.size();
    const std::size_t nc = measured.size();
    std::vector<std::size_t> all(n);
    std::vector<std::size_t> common(nc);
    for (std::size_t i = 0; i < n; ++i) {
        all[i] = i;
    }
    for (std::size_t i = 0; i < nc; ++i) {
        common[i] = i;
    }
    const Dense cross = reference::Pick(before.cofactors, all, common);
    const Dense innovation =
        reference::Sum(reference::Pick(before.cofactors, common, common), covariance);
    const Dense gain = reference::Multiply(cross, reference::InverseOfPositive(innovation));
    Vector difference(nc);
    for (std::size_t i = 0; i < nc; ++i) {
        difference[i] = measured[i] - before.x[i];
    }
    Estimate after;
    after.x = before.x;
    const Vector change = reference::Multiply(gain, difference);
    for (std::size_t i = 0; i < n; ++i) {
        after.x[i] += change[i];
    }
    after.cofactors = reference::Sum(
        before.cofactors, reference::Multiply(gain, reference::Transposed(cross, nc)), -1.0L);
    return after;
}

// What period p says by itself.
Estimate OwnEstimate(const Session& session, std::size_t p) {
    Estimate own;
    own.cofactors = reference::InverseOfPositive(session.normals[p]);
    own.x = reference::Multiply(own.cofactors, session.rhs[p]);
    for (std::size_t k = 0; k < own.x.size(); ++k) {
        own.x[k] += session.start[session.GlobalIndex(p, k)];
    }
    return own;
}

TEST(BorrowingTest, SeveralFixedPeriodsEqualTheAdjustmentWithTheirPriorsAdded) {
    const Session session(ThreePeriods());
    PeriodEquations equations = session.Equations();
    gult::matrixT cofactors;
    equations.Solve(cofactors);
    PeriodFixing fixing(1, 2.0, equations);
    const Vector first = NearTruth(session, 1e-4L);
    const Vector second = NearTruth(session, -3e-4L);
    fixing.records = {FixedRecord(0, first, kFirstPrior), FixedRecord(1, second, kSecondPrior),
                      FloatRecord(2, equations.AmbiguitiesOfPeriod(2))};
    Borrow(fixing, {0, 1}, 2);

    ASSERT_EQ(fixing.records.size(), 4U);
    const PeriodFixRecord& added = fixing.records[3];
    EXPECT_TRUE(added.CoversOnly(2));
    EXPECT_EQ(added.periodCount, 1);
    EXPECT_EQ(added.periods, std::vector<int>{2});
    EXPECT_EQ(added.lambda.ratioThreshold, 2.0);
    EXPECT_EQ(added.lambda.nx, 3);
    EXPECT_EQ(added.lambda.nb, 6);
    EXPECT_GE(added.lambda.fixQuality, 1);
    ASSERT_EQ(added.lambda.ambRecords.size(), 6U);
    EXPECT_EQ(added.lambda.ambRecords[5].sat, 6);
    EXPECT_EQ(added.lambda.ambRecords[5].firstEpoch, 200);

    const Estimate expected =
        FoldIn(FoldIn(OwnEstimate(session, 2), first, kFirstPrior), second, kSecondPrior);
    ExpectNear(added.lambda.x, expected.x, 1e-9);
    ExpectNear(added.lambda.Q, expected.cofactors, 1e-8);
    const std::vector<double> integers = reference::FromColumn(added.lambda.ambFixed);
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(integers[i], static_cast<double>(session.truth[session.stacked[2][3 + i]]));
    }
}

TEST(BorrowingTest, OneFixedPeriodGivesOnePrior) {
    const Session session(ThreePeriods());
    PeriodEquations equations = session.Equations();
    gult::matrixT cofactors;
    equations.Solve(cofactors);
    PeriodFixing fixing(1, 2.0, equations);
    const Vector measured = NearTruth(session, 2e-4L);
    fixing.records = {FloatRecord(0, equations.AmbiguitiesOfPeriod(0)),
                      FixedRecord(2, measured, kSecondPrior)};
    Borrow(fixing, {2}, 0);
    ASSERT_EQ(fixing.records.size(), 3U);
    const Estimate expected = FoldIn(OwnEstimate(session, 0), measured, kSecondPrior);
    ExpectNear(fixing.records[2].lambda.x, expected.x, 1e-9);
    ExpectNear(fixing.records[2].lambda.Q, expected.cofactors, 1e-8);
    EXPECT_TRUE(fixing.records[2].CoversOnly(0));
}

TEST(BorrowingTest, TheFirstRecordOfAPeriodCounts) {
    const Session session(ThreePeriods());
    PeriodEquations equations = session.Equations();
    gult::matrixT cofactors;
    equations.Solve(cofactors);
    PeriodFixing fixing(1, 2.0, equations);
    const Vector measured = NearTruth(session, 2e-4L);
    PeriodFixRecord ofTwo = FixedRecord(0, NearTruth(session, 0.5L), kFirstPrior);
    ofTwo.periodCount = 2;
    ofTwo.periods = {0, 1};
    PeriodFixRecord countedAsOne = ofTwo;
    countedAsOne.periodCount = 1;
    fixing.records = {ofTwo,
                      countedAsOne,
                      FixedRecord(0, measured, kFirstPrior),
                      FixedRecord(0, NearTruth(session, 0.5L), kFirstPrior),
                      FloatRecord(2, equations.AmbiguitiesOfPeriod(2)),
                      FloatRecord(2, {})};
    Borrow(fixing, {0}, 2);
    ASSERT_EQ(fixing.records.size(), 7U);
    ExpectNear(fixing.records[6].lambda.x, FoldIn(OwnEstimate(session, 2), measured, kFirstPrior).x,
               1e-9);
    EXPECT_EQ(fixing.records[6].lambda.ambRecords.size(), 6U);
}

TEST(BorrowingTest, APeriodWithoutARecordNeitherLendsNorBorrows) {
    const Session session(ThreePeriods());
    PeriodEquations equations = session.Equations();
    gult::matrixT cofactors;
    equations.Solve(cofactors);
    PeriodFixing fixing(1, 2.0, equations);
    fixing.records = {FixedRecord(0, NearTruth(session, 2e-4L), kFirstPrior),
                      FloatRecord(2, equations.AmbiguitiesOfPeriod(2))};
    for (const auto& [lender, borrower] : {std::pair{1, 2}, {0, 1}}) {
        testing::internal::CaptureStderr();
        EXPECT_THROW(fixing.GetPeriodXbIWithSubXaIConstraint(1, &lender, borrower),
                     gult::matrix_error);
        testing::internal::GetCapturedStderr();
    }
    EXPECT_EQ(fixing.records.size(), 2U);
}

TEST(BorrowingTest, LeavesTheEquationsAsTheFloatSolutionLeftThem) {
    const Session session(ThreePeriods());
    PeriodEquations equations = session.Equations();
    gult::matrixT cofactors;
    equations.Solve(cofactors);
    PeriodFixing fixing(1, 2.0, equations);
    fixing.records = {FixedRecord(0, NearTruth(session, 0.0L), kFirstPrior),
                      FloatRecord(2, equations.AmbiguitiesOfPeriod(2))};
    Borrow(fixing, {0}, 2);
    ASSERT_EQ(fixing.records.size(), 3U);
    for (const PeriodEquations* kept : {&equations, &fixing.equations}) {
        ExpectNear(kept->normal[2], session.normals[2], 0.0);
        ExpectNear(kept->rhs[2], session.rhs[2], 0.0);
        ExpectNear(kept->x0, session.start, 0.0);
    }
}

TEST(BorrowingTest, APeriodThatDoesNotFixLeavesNoRecord) {
    const Session session(ThreePeriods());
    PeriodEquations equations = session.Equations();
    gult::matrixT cofactors;
    equations.Solve(cofactors);
    PeriodFixing fixing(1, 1e9, equations);  // no ratio passes
    fixing.records = {FixedRecord(0, NearTruth(session, 0.0L), kFirstPrior),
                      FloatRecord(2, equations.AmbiguitiesOfPeriod(2))};
    Borrow(fixing, {0}, 2);
    EXPECT_EQ(fixing.records.size(), 2U);
}

// Three equals with fractions of 0.29 have a ratio of 1 + 0.42 / (3 * 0.29^2), and the lowest
// grade.
TEST(BorrowingTest, TheLowestGradeIsEnough) {
    const std::vector<double> variances(3, 0.01);
    PeriodFixing fixing(
        1, 1.8,
        Crafted(1, {0.0L, 7.0L, 4.29L, -2.29L, 8.29L}, {Uncoupled({0.01}), Uncoupled(variances)}));
    fixing.records = {FixedRecord(0, {0.0L}, {{0.01L}}),
                      FloatRecord(1, fixing.equations.AmbiguitiesOfPeriod(1))};
    Borrow(fixing, {0}, 1);
    ASSERT_EQ(fixing.records.size(), 3U);
    EXPECT_EQ(fixing.records[2].lambda.fixQuality, 1);
    EXPECT_NEAR(fixing.records[2].lambda.ratio, 1.0 + 0.42 / (3.0 * 0.29 * 0.29), 1e-6);
}

TEST(BorrowingTest, ASingularPriorIsAnError) {
    const Session session(ThreePeriods());
    PeriodEquations equations = session.Equations();
    gult::matrixT cofactors;
    equations.Solve(cofactors);
    PeriodFixing fixing(1, 2.0, equations);
    fixing.records = {FixedRecord(0, NearTruth(session, 0.0L), reference::Zeros(3, 3)),
                      FloatRecord(2, equations.AmbiguitiesOfPeriod(2))};
    EXPECT_THROW(Borrow(fixing, {0}, 2), gult::matrix_error);
    testing::internal::GetCapturedStderr();
}

// The second period: N = (4 2; 2 4), W = (2 3), start (1, 7). The first says 1.5 with cofactor
// 0.25, so that 4 and 2 are added: N = (8 2; 2 4), W = (4 3), inverse (4 -2; -2 8) / 28,
// corrections (10 16) / 28.
TEST(BorrowingTest, EveryStepIsInTheTraceWithItsMatrix) {
    const CraftedPeriod first = {{{5.0L, 1.0L}, {1.0L, 5.0L}}, {0.0L, 0.0L}};
    const CraftedPeriod second = {{{4.0L, 2.0L}, {2.0L, 4.0L}}, {2.0L, 3.0L}};
    PeriodFixing fixing(1, 1.8, Crafted(1, {1.0L, 3.0L, 7.0L}, {first, second}));
    fixing.records = {FixedRecord(0, {1.5L}, {{0.25L}}),
                      FloatRecord(1, fixing.equations.AmbiguitiesOfPeriod(1))};
    reference::TraceCapture trace(5);
    Borrow(fixing, {0}, 1);
    EXPECT_EQ(trace.Text(),
              "1 GetPeriodXbIWithSubXaIConstraint: 1.\n"
              "5 xaI(0):\n"
              "        1.5000\n"
              "5 QaI(0):\n"
              "        0.2500\n"
              "5 eq_Na(0):\n"
              "        4.0000\n"
              "5 eq_Wa(0):\n"
              "        2.0000\n"
              "5 eq_N(0):\n"
              "        8.0000        2.0000\n"
              "        2.0000        4.0000\n"
              "5 eq_W(0):\n"
              "        4.0000\n"
              "        3.0000\n"
              "5 xf0(1):\n"
              "        1.0000\n"
              "        7.0000\n"
              "5 dxf(1):\n"
              "        0.3571\n"
              "        0.5714\n"
              "5 xf (1):\n"
              "        1.3571\n"
              "        7.5714\n"
              "5 Qf (1):\n"
              "        0.1429       -0.0714\n"
              "       -0.0714        0.2857\n"
              "3  LambdaAR::PAR : nb=1.\n");
}

// The label counts the places in the list of fixed periods, not the periods.
TEST(BorrowingTest, TheTraceNumbersPriorsByTheirPlace) {
    const CraftedPeriod period = {{{4.0L, 2.0L}, {2.0L, 4.0L}}, {2.0L, 3.0L}};
    PeriodFixing fixing(1, 1.8, Crafted(1, {1.0L, 3.0L, 7.0L, 2.0L}, {period, period, period}));
    fixing.records = {FloatRecord(0, fixing.equations.AmbiguitiesOfPeriod(0)),
                      FixedRecord(1, {1.5L}, {{0.25L}}), FixedRecord(2, {1.25L}, {{0.5L}})};
    reference::TraceCapture trace(5);
    Borrow(fixing, {2, 1}, 0);
    const std::string text = trace.Text();
    EXPECT_NE(text.find("5 xaI(0):\n        1.2500\n5 QaI(0):\n        0.5000\n"),
              std::string::npos);
    EXPECT_NE(text.find("5 xaI(1):\n        1.5000\n5 QaI(1):\n        0.2500\n"),
              std::string::npos);
    // 4 + 2 after the first prior, 4 more after the second.
    EXPECT_NE(text.find("5 eq_N(0):\n        6.0000        2.0000\n"), std::string::npos);
    EXPECT_NE(text.find("5 eq_N(1):\n       10.0000        2.0000\n"), std::string::npos);
    EXPECT_NE(text.find("5 xf0(0):\n        1.0000\n        3.0000\n"), std::string::npos);
    EXPECT_EQ(text.find("xaI(2)"), std::string::npos);
}

TEST(BorrowingTest, BelowLevelFiveTheTraceHasTheFirstLineAlone) {
    const CraftedPeriod period = {{{4.0L, 2.0L}, {2.0L, 4.0L}}, {2.0L, 3.0L}};
    PeriodFixing fixing(1, 1.8, Crafted(1, {1.0L, 3.0L, 7.0L}, {period, period}));
    fixing.records = {FixedRecord(0, {1.5L}, {{0.25L}}),
                      FloatRecord(1, fixing.equations.AmbiguitiesOfPeriod(1))};
    reference::TraceCapture trace(2);
    Borrow(fixing, {0}, 1);
    EXPECT_EQ(trace.Text(), "1 GetPeriodXbIWithSubXaIConstraint: 1.\n");
}

// ---- the strategy
// ---------------------------------------------------------------------------------------

TEST(PeriodFixingTest, StartsWithTheRatioAtOneAndACopyOfTheEquations) {
    PeriodEquations equations = OneStrongOneWeak(0.1L, 1.0L);
    PeriodFixing fixing(4, 2.5, equations);
    EXPECT_EQ(fixing.model, 4);
    EXPECT_EQ(fixing.ratioThreshold, 2.5);
    EXPECT_EQ(fixing.ratio, 1.0);
    EXPECT_TRUE(fixing.records.empty());
    EXPECT_TRUE(fixing.ambiguities.empty());
    equations.x(0, 0) += 1.0;
    EXPECT_NE(fixing.equations.x(0, 0), equations.x(0, 0));
}

TEST(PeriodFixingTest, EveryPeriodThatCanBeFixedGetsItsIntegers) {
    SessionShape shape = ThreePeriods();
    shape.drift = {20.0, 20.0, 20.0};
    const Session session(shape);
    PeriodEquations equations = session.Equations();
    gult::matrixT cofactors;
    equations.Solve(cofactors);
    PeriodFixing fixing(1, 2.0, equations);
    EXPECT_TRUE(fixing.Resolve());
    EXPECT_EQ(fixing.records.size(), 3U);
    EXPECT_EQ(fixing.ratio, 99.0);
    ASSERT_EQ(fixing.ambiguities.size(), 15U);
    for (std::size_t i = 0; i < 15; ++i) {
        EXPECT_EQ(fixing.ambiguities[i].value1, static_cast<double>(session.truth[3 + i]));
        EXPECT_EQ(fixing.ambiguities[i].value2, 0.0);
    }
}

TEST(PeriodFixingTest, ResultRecordsCarryTheTrackAndTheIntegerAlone) {
    PeriodFixing fixing(1, 1.8, Crafted(1, {1.0L, 3.02L, -7.01L}, {Uncoupled({0.01, 0.01})}));
    EXPECT_TRUE(fixing.Resolve());
    ASSERT_EQ(fixing.ambiguities.size(), 2U);
    const AmbRstInfo& record = fixing.ambiguities[1];
    EXPECT_EQ(record.sat, 11);
    EXPECT_EQ(record.firstEpoch, 0);
    EXPECT_EQ(record.lastEpoch, 99);
    EXPECT_EQ(record.firstTime.second, 1);
    EXPECT_EQ(record.lastTime.second, 100);
    EXPECT_EQ(record.value1, -7.0);
    EXPECT_EQ(record.value2, 0.0);
    EXPECT_EQ(record.rows1, 0);
    EXPECT_EQ(record.rms1, 0.0);
    EXPECT_EQ(record.rejected1, 0);
}

// The ratio of one ambiguity is ((1 - f) / f)^2.
double RatioOfOne(double f) {
    return (1.0 - f) * (1.0 - f) / (f * f);
}

TEST(PeriodFixingTest, TheRatioIsThatOfTheBestPeriod) {
    PeriodFixing fixing(1, 1.8,
                        Crafted(1, {1.0L, 3.25L, -7.125L, 2.1875L},
                                {Uncoupled({0.01}), Uncoupled({0.01}), Uncoupled({0.01})}));
    EXPECT_TRUE(fixing.Resolve());
    EXPECT_NEAR(fixing.ratio, RatioOfOne(0.125), 1e-6);
    EXPECT_EQ(fixing.records.size(), 3U);
    EXPECT_EQ(fixing.ambiguities.size(), 3U);
}

TEST(PeriodFixingTest, TheRatioIsNeverBelowOne) {
    // An integer float value is met again and again: best and second best are both at distance
    // zero.
    PeriodFixing fixing(1, 1.8, Crafted(1, {1.0L, 3.0L}, {Uncoupled({0.01})}));
    EXPECT_TRUE(fixing.Resolve());
    EXPECT_LT(fixing.records.at(0).lambda.ratio, 1.0);
    EXPECT_EQ(fixing.ratio, 1.0);
}

TEST(PeriodFixingTest, AFloatPeriodBorrowsFromTheFixedOne) {
    // c is measured as 0.07375: a is 7 - 0.1475, with a ratio of 33, and b is 3 - 0.295, with one
    // below 6.
    PeriodFixing fixing(1, 6.0, OneStrongOneWeak(0.07375L, 2.0L));
    testing::internal::CaptureStderr();
    EXPECT_TRUE(fixing.Resolve());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "GetPeriodXbIWithSubXaIConstraint: 1.\n");
    ASSERT_EQ(fixing.records.size(), 3U);
    EXPECT_GE(fixing.records[0].lambda.fixQuality, 1);
    EXPECT_EQ(fixing.records[1].lambda.fixQuality, 0);
    EXPECT_TRUE(fixing.records[2].CoversOnly(1));
    EXPECT_EQ(fixing.records[2].lambda.fixQuality, 3);
    EXPECT_EQ(fixing.records[2].lambda.ratio, 99.0);
    // With a at 7, c is 0.07375 and 0 weighed by their variances.
    const double codeWeight = 1.0 / (0.15 * 0.15);
    const double c = codeWeight * 0.07375 / (codeWeight + 4e4);
    EXPECT_NEAR(reference::FromColumn(fixing.records[0].lambda.xFixed)[0], c, 1e-9);
    ASSERT_EQ(fixing.ambiguities.size(), 2U);
    EXPECT_EQ(fixing.ambiguities[0].value1, 7.0);
    EXPECT_EQ(fixing.ambiguities[1].value1, 3.0);
}

TEST(PeriodFixingTest, ABorrowedFixDoesNotRaiseTheRatio) {
    PeriodFixing fixing(1, 6.0, OneStrongOneWeak(0.07375L, 2.0L));
    testing::internal::CaptureStderr();
    fixing.Resolve();
    testing::internal::GetCapturedStderr();
    ASSERT_EQ(fixing.records.size(), 3U);
    EXPECT_EQ(fixing.records[2].lambda.ratio, 99.0);
    EXPECT_NEAR(fixing.ratio, RatioOfOne(0.1475), 1e-2);
}

// b comes out at 3 - 0.705 and is taken for 2 with too low a ratio; with the borrowed c it is 3.
// Both stand in records; the list keeps the one collected first.
TEST(PeriodFixingTest, OfTwoRecordsOfATrackTheEarlierCollectedStands) {
    PeriodFixing fixing(1, 6.0, OneStrongOneWeak(0.17625L, 0.85L));
    testing::internal::CaptureStderr();
    EXPECT_TRUE(fixing.Resolve());
    testing::internal::GetCapturedStderr();
    ASSERT_EQ(fixing.records.size(), 3U);
    EXPECT_EQ(reference::FromColumn(fixing.records[1].lambda.ambFixed)[0], 2.0);
    EXPECT_EQ(reference::FromColumn(fixing.records[2].lambda.ambFixed)[0], 3.0);
    ASSERT_EQ(fixing.ambiguities.size(), 2U);
    EXPECT_EQ(fixing.ambiguities[1].value1, 2.0);
}

// Equals with fractions of 0.29: three of them have a ratio of 2.66, four one of 2.25.
TEST(PeriodFixingTest, APeriodOfTheLowestGradeLends) {
    PeriodFixing fixing(1, 2.5,
                        Crafted(1, {0.0L, 7.29L, 4.29L, -2.29L, 8.29L, 1.29L, 3.29L, -5.29L},
                                {Uncoupled(std::vector<double>(3, 0.01)),
                                 Uncoupled(std::vector<double>(4, 0.01))}));
    testing::internal::CaptureStderr();
    EXPECT_TRUE(fixing.Resolve());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "GetPeriodXbIWithSubXaIConstraint: 1.\n");
    ASSERT_EQ(fixing.records.size(), 2U);
    EXPECT_EQ(fixing.records[0].lambda.fixQuality, 1);
    EXPECT_EQ(fixing.records[1].lambda.fixQuality, 0);
}

TEST(PeriodFixingTest, WithoutAFixedPeriodNothingIsBorrowed) {
    PeriodFixing fixing(1, 1e6, OneStrongOneWeak(0.07375L, 2.0L));
    testing::internal::CaptureStderr();
    EXPECT_TRUE(fixing.Resolve());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(fixing.records.size(), 2U);
    // Grade 0 counts as a result all the same.
    ASSERT_EQ(fixing.ambiguities.size(), 2U);
    EXPECT_EQ(fixing.ambiguities[0].value1, 7.0);
    EXPECT_EQ(fixing.ambiguities[1].value1, 3.0);
}

TEST(PeriodFixingTest, AFixedPeriodBorrowsNothing) {
    PeriodFixing fixing(1, 1.8, OneStrongOneWeak(0.07375L, 2.0L));
    testing::internal::CaptureStderr();
    EXPECT_TRUE(fixing.Resolve());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(fixing.records.size(), 2U);
}

// The more precise ambiguity of the second period starts at an integer and nothing moves it: its
// branch of the search repeats until the limit. The prior of the first period moves it.
PeriodEquations SecondPeriodRunsIntoTheLimit() {
    const CraftedPeriod first = {{{50.0L, 20.0L}, {20.0L, 100.0L}}, {0.0L, 0.0L}};
    const CraftedPeriod second = {{{50.0L, 3.0L, 2.0L}, {3.0L, 400.0L, 0.0L}, {2.0L, 0.0L, 100.0L}},
                                  {0.0L, 0.0L, 0.0L}};
    return Crafted(1, {0.0L, 3.125L, 5.0L, 2.25L}, {first, second});
}

TEST(PeriodFixingTest, APeriodWhoseSearchFailedMayStillBorrow) {
    PeriodFixing fixing(1, 1.8, SecondPeriodRunsIntoTheLimit());
    testing::internal::CaptureStderr();
    EXPECT_TRUE(fixing.Resolve());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "GetPeriodXbIWithSubXaIConstraint: 1.\n");
    ASSERT_EQ(fixing.records.size(), 3U);
    EXPECT_EQ(fixing.records[1].lambda.fixQuality, -1);
    EXPECT_GE(fixing.records[2].lambda.fixQuality, 1);
    ASSERT_EQ(fixing.ambiguities.size(), 3U);
    EXPECT_EQ(fixing.ambiguities[0].value1, 3.0);
    EXPECT_EQ(fixing.ambiguities[1].value1, 5.0);
    EXPECT_EQ(fixing.ambiguities[2].value1, 2.0);
}

TEST(PeriodFixingTest, APeriodThatFoundNothingStaysOutOfTheList) {
    // With this threshold the first period is not fixed and lends nothing.
    PeriodFixing fixing(1, 1e6, SecondPeriodRunsIntoTheLimit());
    EXPECT_TRUE(fixing.Resolve());
    ASSERT_EQ(fixing.records.size(), 2U);
    EXPECT_EQ(fixing.records[1].lambda.fixQuality, -1);
    ASSERT_EQ(fixing.ambiguities.size(), 1U);
    EXPECT_EQ(fixing.ambiguities[0].firstEpoch, 0);
}

TEST(PeriodFixingTest, FailsWhenNoPeriodFindsAnything) {
    // The more precise one is an integer, the other is not.
    PeriodFixing fixing(1, 1.8, Crafted(1, {0.0L, 5.0L, 2.25L}, {Uncoupled({0.01, 0.04})}));
    EXPECT_FALSE(fixing.Resolve());
    EXPECT_EQ(fixing.ratio, 1.0);
    EXPECT_TRUE(fixing.ambiguities.empty());
}

TEST(PeriodFixingTest, APeriodWithoutAmbiguitiesHasNothingToFixAndStopsNoOther) {
    PeriodFixing fixing(1, 1.8, Crafted(1, {0.0L, 5.0625L}, {Uncoupled({}), Uncoupled({0.01})}));
    testing::internal::CaptureStderr();
    EXPECT_TRUE(fixing.Resolve());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "GetPeriodXbIWithSubXaIConstraint: 0.\n");
    ASSERT_EQ(fixing.records.size(), 2U);
    EXPECT_EQ(fixing.records[0].lambda.fixQuality, -1);
    ASSERT_EQ(fixing.ambiguities.size(), 1U);
    EXPECT_EQ(fixing.ambiguities[0].value1, 5.0);
}

TEST(PeriodFixingTest, AmbiguitiesLeftOutOfThePartialSetStayOut) {
    // Five of cost 2 and gap 30, and a weak one; the threshold takes the five.
    PeriodFixing fixing(1, 3.5,
                        Crafted(1, {0.0L, 4.2L, -7.2L, 6.2L, 1.2L, 9.2L, 0.2L},
                                {Uncoupled({0.02, 0.02, 0.2, 0.02, 0.02, 0.02})}));
    EXPECT_TRUE(fixing.Resolve());
    EXPECT_NEAR(fixing.ratio, 4.0, 1e-6);
    ASSERT_EQ(fixing.ambiguities.size(), 5U);
    const int sats[] = {10, 11, 13, 14, 15};
    const double integers[] = {4.0, -7.0, 1.0, 9.0, 0.0};
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(fixing.ambiguities[i].sat, sats[i]);
        EXPECT_EQ(fixing.ambiguities[i].value1, integers[i]);
    }
}

TEST(PeriodFixingTest, TwoFrequenciesGiveBothValues) {
    PeriodFixing fixing(3, 1.8,
                        Crafted(3, {0.0L, 4.0625L, -7.0625L, 1.0625L, 9.0625L},
                                {Uncoupled({0.02, 0.02, 0.02, 0.02})}));
    EXPECT_TRUE(fixing.Resolve());
    ASSERT_EQ(fixing.ambiguities.size(), 2U);
    EXPECT_EQ(fixing.ambiguities[0].sat, 10);
    EXPECT_EQ(fixing.ambiguities[0].value1, 4.0);
    EXPECT_EQ(fixing.ambiguities[0].value2, 1.0);
    EXPECT_EQ(fixing.ambiguities[1].value1, -7.0);
    EXPECT_EQ(fixing.ambiguities[1].value2, 9.0);
}

// Three tracks of two frequencies; the weak ambiguity stands in the first or in the second of them.
TEST(PeriodFixingTest, ATrackNeedsBothItsFrequencies) {
    for (std::size_t weak : {2U, 4U}) {
        SCOPED_TRACE(weak);
        Vector start = {0.0L, 4.2L, -7.2L, 6.2L, 1.2L, 9.2L, 0.2L};
        std::vector<double> variances(6, 0.02);
        variances[weak] = 0.2;
        PeriodFixing fixing(3, 3.5, Crafted(3, start, {Uncoupled(variances)}));
        EXPECT_TRUE(fixing.Resolve());
        ASSERT_EQ(fixing.records[0].lambda.nFixed, 5);
        ASSERT_EQ(fixing.ambiguities.size(), 2U);
        const std::size_t lost = weak % 3;
        EXPECT_EQ(fixing.ambiguities[0].sat, lost == 0 ? 11 : 10);
        EXPECT_EQ(fixing.ambiguities[1].sat, lost == 2 ? 11 : 12);
    }
}

TEST(PeriodFixingTest, HalfCyclesPassIntoTheResult) {
    PeriodFixing fixing(1, 1.8, Crafted(1, {0.0L, 4.4375L}, {Uncoupled({0.01})}));
    EXPECT_TRUE(fixing.Resolve());
    ASSERT_EQ(fixing.ambiguities.size(), 1U);
    EXPECT_EQ(fixing.ambiguities[0].value1, 4.5);
}

// The tracks of the later period stand first in the list of the float solution and start earlier.
TEST(PeriodFixingTest, TheResultIsSortedByEpochsAndSatellite) {
    SessionShape shape = ThreePeriods();
    shape.drift = {20.0, 20.0, 20.0};
    const Session session(shape);
    PeriodEquations equations = session.Equations();
    gult::matrixT cofactors;
    equations.Solve(cofactors);
    for (std::size_t i = 0; i < 5; ++i) {
        equations.ambiguities[i].firstEpoch = 500;
        equations.ambiguities[i].lastEpoch = 600 - static_cast<int>(i);
    }
    PeriodFixing fixing(1, 2.0, equations);
    EXPECT_TRUE(fixing.Resolve());
    ASSERT_EQ(fixing.ambiguities.size(), 15U);
    for (std::size_t i = 0; i < 10; ++i) {
        EXPECT_EQ(fixing.ambiguities[i].value1, static_cast<double>(session.truth[8 + i]));
    }
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(fixing.ambiguities[10 + i].sat, 5 - static_cast<int>(i));
        EXPECT_EQ(fixing.ambiguities[10 + i].value1, static_cast<double>(session.truth[7 - i]));
    }
}

// A period that keeps a part of its ambiguities without passing, and borrows the rest: the list of
// a float result completed by a borrowed one.
TEST(PeriodFixingTest, TheListTakesFromABorrowedFixWhatTheFloatAttemptLeftOut) {
    int completed = 0;
    for (std::uint64_t seed = 1; seed <= 400; ++seed) {
        SessionShape shape;
        shape.tracks = {7, 6};
        shape.rowsPerTrack = {60, 3};
        shape.drift = {0.06, 0.01};
        shape.noise = 0.05;
        shape.seed = seed;
        const Session session(shape);
        PeriodEquations equations = session.Equations();
        gult::matrixT cofactors;
        equations.Solve(cofactors);
        PeriodFixing fixing(1, 6.0, equations);
        testing::internal::CaptureStderr();
        fixing.Resolve();
        testing::internal::GetCapturedStderr();
        std::vector<AmbRstInfo> expected;
        for (const PeriodFixRecord& record : fixing.records) {
            const LambdaAR& lambda = record.lambda;
            for (std::size_t i = 0; lambda.fixQuality >= 0 && i < lambda.fixMask.size(); ++i) {
                bool known = false;
                for (const AmbRstInfo& earlier : expected) {
                    known = known || SameTrack(earlier, lambda.ambRecords[i]);
                }
                if (lambda.fixMask[i] != 0 && !known) {
                    expected.push_back(lambda.ambRecords[i]);
                    expected.back().value1 = reference::FromColumn(lambda.ambFixed)[i];
                }
            }
        }
        const bool partial =
            fixing.records.size() == 3 && fixing.records[1].lambda.fixQuality == 0 &&
            fixing.records[1].lambda.nFixed < 6 && fixing.records[2].lambda.nFixed == 6;
        completed += partial ? 1 : 0;
        SortAmbiguities(expected);
        ASSERT_EQ(fixing.ambiguities.size(), expected.size()) << seed;
        for (std::size_t i = 0; i < expected.size(); ++i) {
            ASSERT_TRUE(SameTrack(fixing.ambiguities[i], expected[i])) << seed;
            ASSERT_EQ(fixing.ambiguities[i].value1, expected[i].value1) << seed;
        }
    }
    EXPECT_GE(completed, 1);
}

TEST(PeriodFixingTest, TheTraceShowsEachPeriodAndThenTheBorrowing) {
    PeriodFixing fixing(1, 6.0, OneStrongOneWeak(0.07375L, 2.0L));
    reference::TraceCapture trace(3);
    testing::internal::CaptureStderr();
    fixing.Resolve();
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(trace.Text(),
              "3  LambdaAR::PAR : nb=1.\n"
              "3  LambdaAR::PAR : nb=1.\n"
              "1 GetPeriodXbIWithSubXaIConstraint: 1.\n"
              "3  LambdaAR::PAR : nb=1.\n");
}

}  // namespace
}  // namespace vornel
