// Partial resolution: every way through the choice of a set, the grade, the recovery, and the
// conditioned parameters.
//
// Most problems here have a diagonal covariance and fractions of at most 0.3 cycle, so that
// distances, candidates and ratios follow from a line of arithmetic: an ambiguity with fraction f
// and variance q costs f^2 / q, and taking its second nearest integer costs (1 - 2 f) / q more.
#include "ambiguity/lambda_ar.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numeric>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "ambiguity/integer_reference.h"
#include "ambiguity/lambda.h"
#include "foundation/dense_reference.h"
#include "foundation/statistics.h"
#include "foundation/trace_capture.h"

namespace vornel {
namespace {

using reference::Dense;
using reference::Vector;

struct Problem {
    std::vector<double> a;
    Dense covariance;
    std::vector<int> rows;  // of the records
};

struct Ambiguity {
    double value;
    double variance;
    int rows = 50;
};

Problem Diagonal(const std::vector<Ambiguity>& ambiguities) {
    Problem problem;
    std::vector<double> variances;
    for (const Ambiguity& ambiguity : ambiguities) {
        problem.a.push_back(ambiguity.value);
        problem.rows.push_back(ambiguity.rows);
        variances.push_back(ambiguity.variance);
    }
    problem.covariance = reference::Diagonal(variances);
    return problem;
}

// Ambiguities that move together: one shift of large variance for all, and small deviations from
// it. All near candidates differ by a common shift, so that no ambiguity agrees between two of
// them. `weak` lies so far off the others that it spoils the ratio of every set that it is in.
Problem MovingTogether(std::size_t n, std::size_t weak, const std::vector<int>& rows,
                       double weakDeviation = 0.057) {
    Problem problem;
    problem.rows = rows;
    problem.covariance = Dense(n, Vector(n, 0.8L));
    for (std::size_t i = 0; i < n; ++i) {
        problem.a.push_back(3.1 - 2.0 * static_cast<double>(i) +
                            (i == weak ? weakDeviation : 0.001 * static_cast<double>(i)));
        problem.covariance[i][i] += 0.0016L;
    }
    return problem;
}

std::vector<AmbRstInfo> RecordsOf(const std::vector<int>& rows) {
    std::vector<AmbRstInfo> records(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        records[i].sat = static_cast<int>(i) + 1;
        records[i].rows1 = rows[i];
    }
    return records;
}

struct Resolution {
    int returned = -77;
    int kept = 0;
    std::vector<int> mask;
    std::vector<double> fixed;
    double ratio = 1.0;
};

Resolution RunPar(double threshold, const Problem& problem) {
    const std::size_t nb = problem.a.size();
    LambdaAR resolver;
    resolver.ratioThreshold = threshold;
    Resolution result;
    result.mask.assign(nb, 0);
    gult::matrixT fixed(static_cast<std::uint32_t>(nb), 1);
    result.returned = resolver.PAR(static_cast<int>(nb), reference::ToColumn(problem.a),
                                   reference::ToMatrix(problem.covariance), RecordsOf(problem.rows),
                                   result.kept, result.mask.data(), fixed, result.ratio);
    result.fixed = reference::FromColumn(fixed);
    return result;
}

std::vector<double> Rounded(const std::vector<double>& values) {
    std::vector<double> result;
    for (double value : values) {
        result.push_back(std::round(value));
    }
    return result;
}

// Ratio of the masked set by exhaustion; all fractions at most 0.3 cycle.
double RatioOf(const Problem& problem, const std::vector<int>& mask) {
    std::vector<std::size_t> kept;
    std::vector<double> a;
    for (std::size_t i = 0; i < mask.size(); ++i) {
        if (mask[i] != 0) {
            kept.push_back(i);
            a.push_back(problem.a[i]);
        }
    }
    const auto nearest =
        reference::NearestIntegers(reference::Pick(problem.covariance, kept, kept), a, 2);
    return nearest[1].distance / (nearest[0].distance + 1e-12);
}

double RatioOfWhole(const Problem& problem) {
    return RatioOf(problem, std::vector<int>(problem.a.size(), 1));
}

void ExpectResolution(const Problem& problem, const Resolution& result, int returned,
                      const std::vector<int>& mask) {
    EXPECT_EQ(result.returned, returned);
    EXPECT_EQ(result.mask, mask);
    EXPECT_EQ(result.kept, std::accumulate(mask.begin(), mask.end(), 0));
    EXPECT_NEAR(result.ratio, RatioOf(problem, mask), 1e-6 * result.ratio);
    EXPECT_EQ(result.fixed, Rounded(problem.a));
}

std::vector<int> Without(std::size_t n, const std::vector<std::size_t>& dropped) {
    std::vector<int> mask(n, 1);
    for (std::size_t i : dropped) {
        mask[i] = 0;
    }
    return mask;
}

// ---- the whole set
// --------------------------------------------------------------------------------------

TEST(PartialResolutionTest, AFailedSearchOfTheWholeSetAnswersMinusOne) {
    Problem problem;
    problem.a = {0.1, 0.2};
    problem.covariance = {{1.0L, 2.0L}, {2.0L, 1.0L}};
    problem.rows = {5, 5};
    EXPECT_EQ(RunPar(1.8, problem).returned, -1);
}

TEST(PartialResolutionTest, AWholeSetAboveThresholdAndTwoPassesAtOnce) {
    // Any subset of these equals would have a larger ratio: none is tried.
    const Problem problem = Diagonal(std::vector<Ambiguity>(8, {7.2499, 0.001}));
    const Resolution result = RunPar(1.5, problem);
    EXPECT_GT(result.ratio, 2.0);
    EXPECT_LT(result.ratio, 2.01);
    ExpectResolution(problem, result, 1, std::vector<int>(8, 1));
}

// Eight equals of cost 2048 and gap 16384: the ratio of the set is 32768 / 16384. Four different
// ambiguities change in the candidates next to the best; the first three of them agree in two
// pairs, and go.
TEST(PartialResolutionTest, AWholeSetAtExactlyTwoIsPutThroughTheTrials) {
    const Problem problem = Diagonal(std::vector<Ambiguity>(8, {7.25, std::ldexp(1.0, -15)}));
    const Resolution result = RunPar(1.5, problem);
    EXPECT_EQ(result.returned, 1);
    EXPECT_EQ(result.kept, 5);
    EXPECT_EQ(std::accumulate(result.mask.begin(), result.mask.end(), 0), 5);
    EXPECT_DOUBLE_EQ(result.ratio, 13.0 / 5.0);
    EXPECT_EQ(result.fixed, std::vector<double>(8, 7.0));
}

// Costs 1, 1, 2 and 4 units, smallest gap 8: the ratio is 16 / 8. A set of four loses nothing in a
// trial, which so gives the same ratio again, and an equal ratio is no better one.
TEST(PartialResolutionTest, AWholeSetAtExactlyTwoStandsWhenNoTrialBeatsIt) {
    const double unit = std::ldexp(1.0, -15);
    const Problem problem =
        Diagonal({{1.25, unit}, {-4.25, unit}, {0.25, unit / 2}, {9.25, unit / 4}});
    const Resolution result = RunPar(1.5, problem);
    EXPECT_EQ(result.ratio, 2.0);
    ExpectResolution(problem, result, 1, std::vector<int>(4, 1));
}

TEST(PartialResolutionTest, AWholeSetThatPassedBelowTwoIsNotPutThroughTheElimination) {
    const Problem problem = MovingTogether(6, 0, {1, 9, 9, 9, 9, 9});
    const double whole = RatioOfWhole(problem);
    ASSERT_GT(whole, 1.5);
    ASSERT_LT(whole, 1.8);
    ASSERT_GT(RatioOf(problem, Without(6, {0})), 10.0);
    ExpectResolution(problem, RunPar(1.5, problem), 1, std::vector<int>(6, 1));
}

TEST(PartialResolutionTest, ARatioEqualToTheThresholdDoesNotPass) {
    const double unit = std::ldexp(1.0, -15);
    const Problem problem =
        Diagonal({{1.25, unit}, {-4.25, unit}, {0.25, unit / 2}, {9.25, unit / 4}});
    const Resolution result = RunPar(2.0, problem);
    EXPECT_EQ(result.ratio, 2.0);
    EXPECT_EQ(result.returned, 0);
    EXPECT_EQ(result.kept, 4);
}

double SubsetRatio(const Problem& problem, const std::vector<int>& mask, double threshold,
                   bool& passes);

// ---- trials by agreement
// --------------------------------------------------------------------------------

TEST(PartialResolutionTest, AnAgreementLevelThatPassesDropsWhatAgreesNoMore) {
    const Ambiguity good{5.01, 0.001};
    const Problem problem = Diagonal({good, good, good, {-2.7, 0.05}, good, good});
    const Resolution result = RunPar(10.0, problem);
    EXPECT_LT(RatioOfWhole(problem), 10.0);
    ExpectResolution(problem, result, 1, Without(6, {3}));
}

// The level does not pass with a ratio equal to the threshold; the elimination then takes one more,
// and does.
TEST(PartialResolutionTest, ATrialEqualToTheThresholdDoesNotPass) {
    const Ambiguity good{5.01, 0.001};
    const Problem problem = Diagonal({good, good, good, {-2.7, 0.05}, good, good});
    bool passes = true;
    const double ratio = SubsetRatio(problem, Without(6, {3}), 1e6, passes);
    EXPECT_FALSE(passes);
    ExpectResolution(problem, RunPar(ratio, problem), 1, Without(6, {0, 3}));
}

// The weak one agrees in one pair, none in no pair: its gaps 19.2 and 20.8 come first, those of the
// next two, 40 and 50, after them.
TEST(PartialResolutionTest, ALevelThatNoAmbiguityHasIsPassedOver) {
    const Ambiguity good{5.02, 0.001};
    const Problem problem =
        Diagonal({good, {8.02, 0.05}, good, {-3.02, 0.024}, {1.02, 0.0192}, good});
    const Resolution result = RunPar(20.0, problem);
    EXPECT_LT(RatioOfWhole(problem), 20.0);
    ExpectResolution(problem, result, 1, Without(6, {1}));
}

// Four ambiguities agree in two or three pairs; the level of two names three of them and drops the
// first two.
TEST(PartialResolutionTest, ALevelDropsInAscendingOrderAndNeverBelowFour) {
    const Ambiguity good{5.01, 0.001};
    const Problem problem =
        Diagonal({good, {0.2, 0.6 / 14.0}, {-6.2, 0.06}, {12.2, 0.05}, {3.2, 0.6 / 16.0}, good});
    const Resolution result = RunPar(5.0, problem);
    EXPECT_LT(RatioOfWhole(problem), 5.0);
    ExpectResolution(problem, result, 1, Without(6, {1, 2}));
}

TEST(PartialResolutionTest, AHigherLevelIsTriedWhenALowerOneFails) {
    const Ambiguity good{5.01, 0.001};
    // The first weak one takes all four places next to the best but one, which the second takes.
    const Problem problem = Diagonal({good, {-2.7, 1.0}, good, {4.3, 0.4 / 3.0}, good, good, good});
    const Resolution result = RunPar(10.0, problem);
    ASSERT_LT(RatioOf(problem, Without(7, {1})), 10.0);
    ExpectResolution(problem, result, 1, Without(7, {1, 3}));
}

// The second one lies at its integer, so that its cost is lost in the sum and the ratio is the same
// with and without it. Its two alternatives stand side by side among the near candidates, so that
// it agrees in fewer pairs than any other and is tried alone before the first goes with it.
TEST(PartialResolutionTest, ALevelTrialEqualToTheWholeSetIsNoBetterOne) {
    const Ambiguity good{5.2, 0.01};
    const Problem problem =
        Diagonal({{-3.29, 0.0525}, {1e-9, 0.08}, {4.2, 0.6 / 18.0}, good, good, good});
    bool passes = false;
    const double whole = SubsetRatio(problem, std::vector<int>(6, 1), 1.5, passes);
    ASSERT_TRUE(passes);
    ASSERT_LT(whole, 2.0);
    ASSERT_EQ(SubsetRatio(problem, Without(6, {1}), 1.5, passes), whole);
    ExpectResolution(problem, RunPar(1.5, problem), 1, Without(6, {0, 1}));
}

// One weak ambiguity takes the places up to the fifth candidate, a second one shows among the sixth
// to tenth. Only a search for ten candidates sees the second, and drops both by their agreement.
std::vector<Ambiguity> SecondWeakOneBehindTheFifth(std::size_t n) {
    std::vector<Ambiguity> ambiguities(n, {5.01, 0.001, 20});
    ambiguities[2] = {-2.7, 1.0, 50};
    ambiguities[4] = {8.25, 0.5 / 6.0, 90};
    return ambiguities;
}

TEST(PartialResolutionTest, ThirteenAmbiguitiesAreComparedOverTenCandidates) {
    const Problem problem = Diagonal(SecondWeakOneBehindTheFifth(13));
    ASSERT_LT(RatioOf(problem, Without(13, {2})), 10.0);
    ExpectResolution(problem, RunPar(10.0, problem), 1, Without(13, {2, 4}));
}

TEST(PartialResolutionTest, TwelveAmbiguitiesAreComparedOverFiveCandidates) {
    const Problem problem = Diagonal(SecondWeakOneBehindTheFifth(12));
    // By agreement only the first weak one goes, which does not pass; the elimination then takes
    // the equals in the order of their rows, and its last trial above 1.8 holds the second weak
    // one, which has the most rows.
    const Resolution result = RunPar(10.0, problem);
    EXPECT_EQ(result.returned, 0);
    EXPECT_EQ(result.kept, 4);
    EXPECT_EQ(result.mask[2], 0);
    EXPECT_EQ(result.mask[4], 1);
    EXPECT_NEAR(result.ratio, RatioOf(problem, result.mask), 1e-9 * result.ratio);
    EXPECT_LT(result.ratio, 10.0);
}

// ---- trials by elimination
// ------------------------------------------------------------------------------

TEST(PartialResolutionTest, TheEliminationStartsWithTheFewestRows) {
    const Problem problem = MovingTogether(6, 4, {40, 30, 60, 50, 10, 20});
    const Resolution result = RunPar(10.0, problem);
    ExpectResolution(problem, result, 1, Without(6, {4}));
}

TEST(PartialResolutionTest, WithoutAnyAgreementTheEliminationGoesThroughAllByTheirRows) {
    const Problem problem = MovingTogether(6, 4, {40, 30, 60, 50, 20, 10});
    ASSERT_LT(RatioOf(problem, Without(6, {5})), 1.8);
    ExpectResolution(problem, RunPar(10.0, problem), 1, Without(6, {4, 5}));
}

// The 1 changes places with the first 2, which then stands behind the second: 2, 1, 0 is the order.
TEST(PartialResolutionTest, EqualRowsGoInTheOrderThatTheExchangesLeave) {
    const Problem problem = MovingTogether(6, 1, {2, 2, 1, 9, 9, 9});
    ExpectResolution(problem, RunPar(10.0, problem), 1, Without(6, {1, 2}));
}

// The first ambiguity changes in all near candidates and is out from the start, whatever its rows.
// The second, with the costs, and the third agree in all of them; the third has fewer rows and goes
// first.
TEST(PartialResolutionTest, TheEliminationTakesOnlyAmbiguitiesOfTheHighestAgreement) {
    const Ambiguity good{5.01, 0.001, 50};
    const Problem problem =
        Diagonal({{-2.7, 1.0, 1}, {8.25, 0.02, 5}, {5.01, 0.001, 3}, good, good, good, good});
    ASSERT_LT(RatioOf(problem, Without(7, {0})), 10.0);
    ASSERT_LT(RatioOf(problem, Without(7, {0, 2})), 10.0);
    ExpectResolution(problem, RunPar(10.0, problem), 1, Without(7, {0, 1, 2}));
}

TEST(PartialResolutionTest, TheEliminationEndsBelowFourAndLeavesTheWholeSet) {
    for (std::size_t n : {3U, 4U, 5U}) {
        Problem problem = MovingTogether(n, n, std::vector<int>(n, 10));
        for (std::size_t i = 0; i < n; ++i) {
            problem.a[i] += i % 2 == 0 ? 0.06 : -0.06;  // spoils every subset
        }
        ASSERT_LT(RatioOfWhole(problem), 1.8);
        // Only a set of five is tried at all, once, without one of its equals.
        for (std::size_t i = 0; i < 5 && n == 5; ++i) {
            ASSERT_LT(RatioOf(problem, Without(n, {i})), 1.8);
        }
        ExpectResolution(problem, RunPar(3.0, problem), 0, std::vector<int>(n, 1));
    }
}

TEST(PartialResolutionTest, ATrialAboveTheBarIsRecordedWithoutPassing) {
    const Problem problem = MovingTogether(5, 2, {40, 30, 10, 50, 20});
    ASSERT_GT(RatioOf(problem, Without(5, {2})), 1.8);
    ExpectResolution(problem, RunPar(1e6, problem), 0, Without(5, {2}));
}

TEST(PartialResolutionTest, ATrialAtOrBelowTheBarIsNotRecorded) {
    // Dropping the first does not help; then the set is down to four, and the next drop ends it.
    const Problem problem = MovingTogether(5, 2, {10, 30, 40, 50, 20});
    ASSERT_LT(RatioOf(problem, Without(5, {0})), 1.8);
    ExpectResolution(problem, RunPar(1e6, problem), 0, std::vector<int>(5, 1));
}

// Without the first, which no near candidate agrees on, and without the last, costs of 1, 1, 4 and
// 4 units are left and a smallest gap of 8: the ratio is 18 / 10.
TEST(PartialResolutionTest, ATrialAtExactlyTheBarIsNotRecorded) {
    const double unit = std::ldexp(1.0, -15);
    const Problem problem = Diagonal({{2.25, 32.0 * unit, 40},
                                      {1.25, unit, 40},
                                      {-4.25, unit, 40},
                                      {0.25, unit / 4, 40},
                                      {9.25, unit / 4, 40},
                                      {3.25, unit / 4, 10}});
    bool passes = false;
    ASSERT_EQ(SubsetRatio(problem, Without(6, {0, 5}), 3.0, passes), 1.8);
    ExpectResolution(problem, RunPar(3.0, problem), 0, std::vector<int>(6, 1));
}

// Five move together as before. The sixth follows the common shift by 1.3 cycles a cycle and tells
// shifts apart: once it is gone, the ratio falls, yet stays above the bar.
TEST(PartialResolutionTest, ALaterTrialAboveTheBarOverwritesABetterOne) {
    Problem problem = MovingTogether(6, 0, {1, 9, 9, 9, 9, 2});
    const double shiftVariance = 2.0;
    const double slope[] = {1.0, 1.0, 1.0, 1.0, 1.0, 1.3};
    for (std::size_t i = 0; i < 6; ++i) {
        for (std::size_t j = 0; j < 6; ++j) {
            problem.covariance[i][j] = shiftVariance * slope[i] * slope[j];
        }
        problem.covariance[i][i] += i == 5 ? 0.02 : 0.0016;
    }
    problem.a = {1.12, 4.06, 6.04, 3.055, 7.045, 2.065};
    const double first = RatioOf(problem, Without(6, {0}));
    const double second = RatioOf(problem, Without(6, {0, 5}));
    ASSERT_GT(first, second);
    ASSERT_GT(second, 1.8);
    ExpectResolution(problem, RunPar(1e6, problem), 0, Without(6, {0, 5}));
}

// The last ambiguity follows the first to a billionth of a cycle: the set has the same ratio, to
// the last bit in some of these problems, with it and without it.
TEST(PartialResolutionTest, ATrialEqualToTheWholeSetIsRecordedByTheBarAlone) {
    int equal = 0;
    for (int k = 0; k < 400 && equal < 5; ++k) {
        Problem problem = MovingTogether(5, 5, {40, 30, 60, 50, 10});
        problem.a = {1.1 + 1e-4 * k, 4.12, 6.08, 3.105, 0.0};
        problem.a[4] = problem.a[0] + 1e-12;
        for (std::size_t i = 0; i < 5; ++i) {
            problem.covariance[4][i] = problem.covariance[0][i];
            problem.covariance[i][4] = problem.covariance[i][0];
        }
        problem.covariance[4][4] = problem.covariance[0][0] + 1e-5L;
        bool passes = false;
        const double whole = SubsetRatio(problem, std::vector<int>(5, 1), 1e6, passes);
        const double trial = SubsetRatio(problem, Without(5, {4}), 1e6, passes);
        if (whole != trial) {
            continue;
        }
        ++equal;
        ASSERT_GT(trial, 1.8);
        const Resolution result = RunPar(1e6, problem);
        EXPECT_EQ(result.ratio, whole);
        ExpectResolution(problem, result, 0, Without(5, {4}));
    }
    EXPECT_GE(equal, 1);
}

TEST(PartialResolutionTest, ARecordForTwoFrequenciesOrdersBothOfItsAmbiguities) {
    // Keys 5 1 9 5 1 9: ambiguities 1 and 4 go first, in this order.
    const Problem second = MovingTogether(6, 1, {5, 1, 9});
    ExpectResolution(second, RunPar(10.0, second), 1, Without(6, {1}));
    const Problem fifth = MovingTogether(6, 4, {5, 1, 9});
    ExpectResolution(fifth, RunPar(10.0, fifth), 1, Without(6, {1, 4}));
}

TEST(PartialResolutionTest, AnAmbiguityWithoutARecordGoesFirst) {
    // Three records give the first six their keys.
    const Problem problem = MovingTogether(7, 6, {5, 1, 9});
    ExpectResolution(problem, RunPar(10.0, problem), 1, Without(7, {6}));
}

TEST(PartialResolutionTest, WithoutRecordsTheEliminationGoesByIndex) {
    const Problem problem = MovingTogether(6, 1, {});
    ExpectResolution(problem, RunPar(10.0, problem), 1, Without(6, {0, 1}));
}

TEST(PartialResolutionTest, RecordsBeyondTheAmbiguitiesAreNotRead) {
    const Problem problem = MovingTogether(6, 3, {40, 30, 60, 20, 50, 70, 1, 2, 3});
    ExpectResolution(problem, RunPar(10.0, problem), 1, Without(6, {3}));
}

// ---- one trial
// ------------------------------------------------------------------------------------------

double SubsetRatio(const Problem& problem, const std::vector<int>& mask, double threshold,
                   bool& passes) {
    const auto nb = static_cast<int>(mask.size());
    const int m = std::accumulate(mask.begin(), mask.end(), 0);
    const auto [picked, dropped] = gult::SelectionPair(nb, m, mask.data());
    LambdaAR resolver;
    resolver.ratioThreshold = threshold;
    gult::matrixT candidates(2, 3);
    candidates(1, 2) = -77.0;
    double ratio = -77.0;
    passes = resolver.TrySubset(nb, reference::ToColumn(problem.a),
                                reference::ToMatrix(problem.covariance), m, picked, dropped,
                                candidates, ratio);
    EXPECT_EQ(candidates.RowCount(), 2U);
    EXPECT_EQ(candidates.ColCount(), 3U);
    EXPECT_EQ(candidates(1, 2), -77.0);
    return ratio;
}

TEST(TrySubsetTest, GivesTheRatioOfTheSubset) {
    const Problem problem = Diagonal({{5.1, 0.01}, {3.3, 0.02}, {-2.2, 0.05}, {7.05, 0.03}});
    bool passes = false;
    const double ratio = SubsetRatio(problem, {1, 0, 1, 1}, 3.0, passes);
    const double best = 0.01 / 0.01 + 0.04 / 0.05 + 0.0025 / 0.03;
    EXPECT_NEAR(ratio, (best + 0.6 / 0.05) / best, 1e-9);
    EXPECT_TRUE(passes);
    SubsetRatio(problem, {1, 0, 1, 1}, ratio, passes);
    EXPECT_FALSE(passes);
}

TEST(TrySubsetTest, SearchesAFractionAboveThreeTenthsOnHalfCycles) {
    const Problem problem = Diagonal({{5.4, 0.01}, {3.3, 0.02}});
    bool passes = false;
    // Twice 5.4 is 10.8, with four times the variance.
    EXPECT_NEAR(SubsetRatio(problem, {1, 0}, 3.0, passes), (0.64 / 0.04) / (0.04 / 0.04), 1e-9);
}

TEST(TrySubsetTest, AFailedSearchHasNoRatio) {
    Problem problem = Diagonal({{5.1, 0.01}, {3.3, 0.02}, {-2.2, 0.05}});
    problem.covariance[1][1] = -1.0L;
    bool passes = true;
    EXPECT_EQ(SubsetRatio(problem, {1, 1, 0}, 0.0, passes), 0.0);
    EXPECT_FALSE(passes);
}

// ---- a restatement of the whole choice
// ------------------------------------------------------------------

// What the choice comes to, written down once more with sets instead of matrices. The searches are
// those that are held to exhaustion elsewhere; `branch` names the way that was taken.
class Restated {
  public:
    Restated(double threshold, const Problem& problem)
        : threshold_(threshold), problem_(problem), n_(problem.a.size()) {}

    std::string branch;
    Resolution result;
    bool subsetDisagrees = false;  // the kept subset's own integers differ from those handed on

    void Run() {
        if (!SearchWholeSet()) {
            branch = "failed";
            result.returned = -1;
            return;
        }
        if (whole_ > threshold_ && whole_ > 2.0) {
            branch = "whole at once";
            result.returned = 1;
            return;
        }
        CountAgreement();
        if (TryLevels()) {
            branch = "level";
            result.returned = 1;
        } else if (whole_ > threshold_) {
            branch = "whole kept";
            result.returned = 1;
        } else {
            Eliminate();
        }
    }

  private:
    bool SearchWholeSet() {
        candidateCount_ = n_ > 12 ? 10 : 5;
        const auto c = static_cast<std::uint32_t>(candidateCount_);
        candidates_ = gult::matrixT(static_cast<std::uint32_t>(n_), c);
        gult::matrixT s(1, c);
        if (!ScaledLambda(static_cast<int>(n_), candidateCount_, reference::ToColumn(problem_.a),
                          reference::ToMatrix(problem_.covariance), candidates_, s)) {
            return false;
        }
        whole_ = s(0, 1) / (s(0, 0) + 1e-12);
        Record(std::vector<int>(n_, 1), whole_);
        return true;
    }

    void Record(const std::vector<int>& mask, double ratio) {
        result.mask = mask;
        result.kept = std::accumulate(mask.begin(), mask.end(), 0);
        result.ratio = ratio;
        result.fixed.clear();
        for (std::uint32_t i = 0; i < n_; ++i) {
            result.fixed.push_back(candidates_(i, 0));
        }
    }

    void CountAgreement() {
        agreement_.assign(n_, 0);
        for (std::uint32_t i = 0; i < n_; ++i) {
            for (std::uint32_t j = 0; j + 1 < candidates_.ColCount(); ++j) {
                agreement_[i] += std::fabs(candidates_(i, j) - candidates_(i, j + 1)) < 0.1 ? 1 : 0;
            }
        }
        highest_ = *std::max_element(agreement_.begin(), agreement_.end());
    }

    double Trial(const std::vector<int>& mask) {
        std::vector<std::size_t> kept;
        std::vector<double> a;
        for (std::size_t i = 0; i < n_; ++i) {
            if (mask[i] != 0) {
                kept.push_back(i);
                a.push_back(problem_.a[i]);
            }
        }
        const auto m = static_cast<std::uint32_t>(kept.size());
        gult::matrixT F(m, 2);
        gult::matrixT s(1, 2);
        const Dense covariance = reference::Pick(problem_.covariance, kept, kept);
        if (!ScaledLambda(static_cast<int>(m), 2, reference::ToColumn(a),
                          reference::ToMatrix(covariance), F, s)) {
            return 0.0;
        }
        subsetDisagrees = false;
        for (std::uint32_t i = 0; i < m; ++i) {
            subsetDisagrees |= F(i, 0) != candidates_(static_cast<std::uint32_t>(kept[i]), 0);
        }
        return s(0, 1) / (s(0, 0) + 1e-12);
    }

    bool TryLevels() {
        for (int level = 0; level < highest_; ++level) {
            if (std::count(agreement_.begin(), agreement_.end(), level) == 0) {
                continue;
            }
            std::vector<int> mask(n_, 1);
            std::size_t left = n_;
            for (std::size_t i = 0; i < n_ && left >= 5; ++i) {
                if (agreement_[i] <= level) {
                    mask[i] = 0;
                    --left;
                }
            }
            const double ratio = Trial(mask);
            if (ratio > threshold_ && ratio > whole_) {
                Record(mask, ratio);
                return true;
            }
        }
        return false;
    }

    std::vector<std::size_t> OrderByRows() const {
        const std::vector<int>& rows = problem_.rows;
        std::vector<std::pair<int, std::size_t>> keys;
        for (std::size_t i = 0; i < n_; ++i) {
            int key = 0;
            if (i < rows.size()) {
                key = rows[i];
            } else if (i < 2 * rows.size()) {
                key = rows[i - rows.size()];
            }
            keys.emplace_back(key, i);
        }
        for (std::size_t i = 0; i < n_; ++i) {
            for (std::size_t j = i + 1; j < n_; ++j) {
                if (keys[j].first < keys[i].first) {
                    std::swap(keys[i], keys[j]);
                }
            }
        }
        std::vector<std::size_t> order;
        for (const auto& key : keys) {
            order.push_back(key.second);
        }
        return order;
    }

    void Eliminate() {
        branch = "nothing recorded";
        result.returned = 0;
        std::vector<int> mask(n_, 1);
        for (std::size_t i = 0; i < n_; ++i) {
            mask[i] = agreement_[i] == highest_ ? 1 : 0;
        }
        for (std::size_t i : OrderByRows()) {
            if (agreement_[i] != highest_) {
                continue;
            }
            mask[i] = 0;
            if (std::accumulate(mask.begin(), mask.end(), 0) < 4) {
                return;
            }
            const double ratio = Trial(mask);
            if (ratio > threshold_ && ratio > whole_) {
                branch = "elimination";
                result.returned = 1;
                Record(mask, ratio);
                return;
            }
            if (ratio > 1.8) {
                branch = "recorded by the bar";
                Record(mask, ratio);
            }
        }
    }

    double threshold_;
    const Problem& problem_;
    std::size_t n_;
    int candidateCount_ = 0;
    gult::matrixT candidates_;
    double whole_ = 0.0;
    std::vector<int> agreement_;
    int highest_ = 0;
};

// A problem like that of a short session: three coordinates common to all ambiguities, and noise
// that differs.
Problem SessionLike(std::mt19937_64& random) {
    std::normal_distribution<double> normal;
    const std::size_t n = 1 + random() % 14;
    const double coordinate = std::exp(std::uniform_real_distribution<double>(-4.0, 1.0)(random));
    const double noise = std::exp(std::uniform_real_distribution<double>(-3.5, -0.7)(random));
    Problem problem;
    problem.covariance = reference::Zeros(n, n);
    std::vector<Vector> geometry(n, Vector(3));
    for (Vector& row : geometry) {
        for (long double& value : row) {
            value = normal(random);
        }
    }
    double shift[3];
    for (double& value : shift) {
        value = coordinate * normal(random);
    }
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j < n; ++j) {
            for (std::size_t k = 0; k < 3; ++k) {
                problem.covariance[i][j] +=
                    coordinate * coordinate * geometry[i][k] * geometry[j][k];
            }
        }
        const double own = noise * (random() % 4 == 0 ? 4.0 : 1.0);
        problem.covariance[i][i] += own * own;
        double value = static_cast<double>(random() % 40) - 20.0 + own * normal(random);
        for (std::size_t k = 0; k < 3; ++k) {
            value += shift[k] * static_cast<double>(geometry[i][k]);
        }
        problem.a.push_back(value);
    }
    const std::size_t records[] = {n, n, n / 2, n / 3, n + 2, (n + 1) / 2};
    problem.rows.resize(records[random() % 6]);
    for (int& rows : problem.rows) {
        rows = static_cast<int>(random() % 6);
    }
    return problem;
}

TEST(PartialResolutionTest, AgreesWithItsRestatementOnEveryBranch) {
    std::mt19937_64 random(77);
    std::map<std::string, int> taken;
    int disagreeing = 0;
    for (int round = 0; round < 4000; ++round) {
        Problem problem = SessionLike(random);
        // To double, as the engine sees it.
        for (Vector& row : problem.covariance) {
            for (long double& value : row) {
                value = static_cast<double>(value);
            }
        }
        if (random() % 50 == 0) {
            problem.covariance[0][0] = -1.0L;
        }
        const double thresholds[] = {1.2, 1.5, 1.8, 2.5, 4.0};
        const double threshold = thresholds[random() % 5];
        Restated restated(threshold, problem);
        restated.Run();
        const Resolution result = RunPar(threshold, problem);
        ++taken[restated.branch];
        ASSERT_EQ(result.returned, restated.result.returned) << round << " " << restated.branch;
        if (result.returned < 0) {
            continue;
        }
        ASSERT_EQ(result.kept, restated.result.kept) << round << " " << restated.branch;
        ASSERT_EQ(result.mask, restated.result.mask) << round << " " << restated.branch;
        ASSERT_EQ(result.fixed, restated.result.fixed) << round << " " << restated.branch;
        ASSERT_NEAR(result.ratio, restated.result.ratio, 1e-12 * restated.result.ratio) << round;
        if (restated.branch == "level" || restated.branch == "elimination") {
            disagreeing += restated.subsetDisagrees ? 1 : 0;
        }
    }
    for (const char* branch : {"failed", "whole at once", "level", "whole kept", "elimination",
                               "recorded by the bar", "nothing recorded"}) {
        EXPECT_GE(taken[branch], 10) << branch;
    }
    // In some of these the subset by itself has other integers: those of the whole search are
    // handed on.
    EXPECT_GE(disagreeing, 1);
}

// ---- the grade
// ------------------------------------------------------------------------------------------

TEST(GradeOfFixTest, GradesByTheRatio) {
    const double above3 = std::nextafter(3.0, 4.0);
    const double above5 = std::nextafter(5.0, 6.0);
    EXPECT_EQ(GradeOfFix(1.9, 1.8, 4, 5), 1);
    EXPECT_EQ(GradeOfFix(3.0, 1.8, 4, 5), 1);
    EXPECT_EQ(GradeOfFix(above3, 1.8, 4, 5), 2);
    EXPECT_EQ(GradeOfFix(5.0, 1.8, 4, 5), 2);
    EXPECT_EQ(GradeOfFix(above5, 1.8, 4, 5), 3);
    EXPECT_EQ(GradeOfFix(250.0, 1.8, 4, 5), 3);
}

TEST(GradeOfFixTest, ARatioAtTheThresholdIsGradedAndOneBelowItIsNot) {
    EXPECT_EQ(GradeOfFix(1.8, 1.8, 4, 5), 1);
    EXPECT_EQ(GradeOfFix(std::nextafter(1.8, 0.0), 1.8, 10, 10), 0);
    EXPECT_EQ(GradeOfFix(5.5, 6.0, 10, 10), 0);
    EXPECT_EQ(GradeOfFix(100.0, 120.0, 10, 10), 0);
    EXPECT_EQ(GradeOfFix(std::numeric_limits<double>::quiet_NaN(), 1.8, 10, 10), 0);
}

TEST(GradeOfFixTest, FromSixAmbiguitiesAShareAboveFourFifthsRaisesOneToTwo) {
    EXPECT_EQ(GradeOfFix(2.5, 1.8, 6, 7), 2);
    EXPECT_EQ(GradeOfFix(2.5, 1.8, 6, 8), 1);
    EXPECT_EQ(GradeOfFix(2.5, 1.8, 5, 5), 1);
    EXPECT_EQ(GradeOfFix(2.5, 1.8, 8, 10), 1);   // exactly four fifths
    EXPECT_EQ(GradeOfFix(2.5, 1.8, 21, 26), 2);  // 20.8 are four fifths
    EXPECT_EQ(GradeOfFix(2.5, 1.8, 9, 10), 2);
}

TEST(GradeOfFixTest, FromSixAmbiguitiesAShareAboveThreeFifthsRaisesTwoToThree) {
    EXPECT_EQ(GradeOfFix(4.0, 1.8, 6, 9), 3);
    EXPECT_EQ(GradeOfFix(4.0, 1.8, 6, 10), 2);   // exactly three fifths
    EXPECT_EQ(GradeOfFix(4.0, 1.8, 22, 36), 3);  // 21.6 are three fifths
    EXPECT_EQ(GradeOfFix(4.0, 1.8, 5, 5), 2);
    EXPECT_EQ(GradeOfFix(4.0, 1.8, 7, 10), 3);
}

TEST(GradeOfFixTest, OnePromotionAtMost) {
    EXPECT_EQ(GradeOfFix(2.5, 1.8, 10, 10), 2);
    EXPECT_EQ(GradeOfFix(6.0, 1.8, 10, 10), 3);
}

// ---- conditioning
// ---------------------------------------------------------------------------------------

// Holding ambiguities at values that lie da below the float ones, in terms of the normal equations
// N = Q^-1: x + Nxx^-1 Nxa da, with cofactors Nxx^-1.
struct Conditioned {
    Vector x;
    Dense cofactors;
};

Conditioned ConditionByNormals(const Dense& cofactors, std::size_t nx, const Vector& x,
                               const Vector& da) {
    const Dense normal = reference::InverseOfPositive(cofactors);
    std::vector<std::size_t> common(nx);
    std::iota(common.begin(), common.end(), 0U);
    std::vector<std::size_t> ambiguities(cofactors.size() - nx);
    std::iota(ambiguities.begin(), ambiguities.end(), nx);
    Conditioned result;
    result.cofactors = reference::InverseOfPositive(reference::Pick(normal, common, common));
    const Vector change = reference::Multiply(
        result.cofactors, reference::Multiply(reference::Pick(normal, common, ambiguities), da));
    result.x = x;
    for (std::size_t i = 0; i < nx; ++i) {
        result.x[i] += change[i];
    }
    return result;
}

// Cofactors of nx parameters ahead of the ambiguities of a problem, coupled to each of them.
Dense WithParameters(std::size_t nx, const Dense& ambiguityCovariance, std::uint64_t seed) {
    std::mt19937_64 random(seed);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    const std::size_t nb = ambiguityCovariance.size();
    Dense gain = reference::Zeros(nx, nb);
    for (Vector& row : gain) {
        for (long double& value : row) {
            value = 0.3 * unit(random);
        }
    }
    const Dense coupling = reference::Multiply(gain, ambiguityCovariance);
    const Dense explained = reference::Multiply(coupling, reference::Transposed(gain, nb));
    Dense result = reference::Zeros(nx + nb, nx + nb);
    for (std::size_t i = 0; i < nx + nb; ++i) {
        for (std::size_t j = 0; j < nx + nb; ++j) {
            if (i < nx && j < nx) {
                result[i][j] = explained[i][j] + (i == j ? 0.01L : 0.002L);
            } else if (i < nx) {
                result[i][j] = result[j][i] = coupling[i][j - nx];
            } else if (j >= nx) {
                result[i][j] = ambiguityCovariance[i - nx][j - nx];
            }
        }
    }
    return result;
}

TEST(ConditionalUpdateTest, AgreesWithHoldingTheAmbiguitiesInTheNormalEquations) {
    const Problem problem = MovingTogether(4, 1, {});
    const Dense cofactors = WithParameters(3, problem.covariance, 3);
    const Vector x = {1.0L, -2.0L, 0.5L};
    const Vector da = {0.1L, -0.2L, 0.05L, 0.3L};
    const Conditioned expected = ConditionByNormals(cofactors, 3, x, da);
    gult::matrixT xIn = reference::ToColumn(x);
    gult::matrixT xOut;
    gult::matrixT qOut;
    LambdaAR::ConditionalUpdate(
        reference::ToMatrix(reference::Pick(cofactors, {0, 1, 2}, {0, 1, 2})),
        reference::ToMatrix(reference::Pick(cofactors, {0, 1, 2}, {3, 4, 5, 6})),
        reference::ToMatrix(reference::Pick(cofactors, {3, 4, 5, 6}, {3, 4, 5, 6})),
        reference::ToColumn(da), xIn, xOut, qOut);
    reference::ExpectNear(xOut, expected.x, 1e-10);
    reference::ExpectNear(qOut, expected.cofactors, 1e-9);
    EXPECT_EQ(xIn(0, 0), 1.0);
}

TEST(ConditionalUpdateTest, OneOfEachIsTheTextbookRegression) {
    gult::matrixT qxx(1, 1);
    gult::matrixT qxa(1, 1);
    gult::matrixT qaa(1, 1);
    gult::matrixT da(1, 1);
    gult::matrixT x(1, 1);
    gult::matrixT xOut;
    gult::matrixT qOut;
    qxx(0, 0) = 2.0;
    qxa(0, 0) = 0.5;
    qaa(0, 0) = 0.25;
    da(0, 0) = 0.125;
    x(0, 0) = 10.0;
    LambdaAR::ConditionalUpdate(qxx, qxa, qaa, da, x, xOut, qOut);
    EXPECT_EQ(xOut(0, 0), 10.0 - 2.0 * 0.125);
    EXPECT_EQ(qOut(0, 0), 2.0 - 2.0 * 0.5);
}

TEST(ConditionalUpdateTest, ASingularAmbiguityBlockIsAnError) {
    gult::matrixT out;
    gult::matrixT cofactors;
    EXPECT_THROW(
        LambdaAR::ConditionalUpdate(gult::matrixT(1, 1), gult::matrixT(1, 2), gult::matrixT(2, 2),
                                    gult::matrixT(2, 1), gult::matrixT(1, 1), out, cofactors),
        gult::matrix_error);
}

// ---- resolving
// ------------------------------------------------------------------------------------------

const Vector kParameters = {0.25L, -1.5L, 3.75L};

struct FloatProblem {
    Vector x;
    Dense cofactors;
};

FloatProblem WithThreeParameters(const Problem& problem) {
    FloatProblem result;
    result.cofactors = WithParameters(3, problem.covariance, 9);
    result.x = kParameters;
    result.x.insert(result.x.end(), problem.a.begin(), problem.a.end());
    return result;
}

LambdaAR MakeResolver(double threshold, const Problem& problem) {
    const FloatProblem complete = WithThreeParameters(problem);
    return LambdaAR(threshold, 3, static_cast<int>(problem.a.size()),
                    reference::ToColumn(complete.x), reference::ToMatrix(complete.cofactors),
                    RecordsOf(problem.rows));
}

// The conditioned parameters follow from the kept ambiguities, held at the values handed out.
void ExpectConditioned(const LambdaAR& resolver, const Problem& problem) {
    const FloatProblem complete = WithThreeParameters(problem);
    const std::vector<double> fixed = reference::FromColumn(resolver.ambFixed);
    std::vector<std::size_t> kept = {0, 1, 2};
    Vector da;
    for (std::size_t i = 0; i < problem.a.size(); ++i) {
        if (resolver.fixMask.at(i) != 0) {
            kept.push_back(3 + i);
            da.push_back(static_cast<long double>(problem.a[i]) - fixed.at(i));
        }
    }
    EXPECT_EQ(static_cast<std::size_t>(resolver.nFixed), da.size());
    const Conditioned expected =
        ConditionByNormals(reference::Pick(complete.cofactors, kept, kept), 3, kParameters, da);
    reference::ExpectNear(resolver.xFixed, expected.x, 1e-9);
    reference::ExpectNear(resolver.QxxFixed, expected.cofactors, 1e-8);
}

// Five equals of cost 2 and gap 30, and one whose four alternatives all lie nearer than that.
Problem FiveAndOneWeak(double weak) {
    return Diagonal(
        {{4.2, 0.02}, {-7.2, 0.02}, {weak, 0.2}, {1.2, 0.02}, {9.2, 0.02}, {0.2, 0.02}});
}

TEST(LambdaArTest, StartsWithoutResult) {
    const Problem problem = FiveAndOneWeak(6.1);
    const LambdaAR resolver = MakeResolver(2.5, problem);
    EXPECT_EQ(resolver.ratioThreshold, 2.5);
    EXPECT_EQ(resolver.ratio, 1.0);
    EXPECT_EQ(resolver.n, 9);
    EXPECT_EQ(resolver.nx, 3);
    EXPECT_EQ(resolver.nb, 6);
    EXPECT_EQ(resolver.nFixed, 0);
    EXPECT_EQ(resolver.fixMask, std::vector<int>(6, 0));
    EXPECT_EQ(resolver.fixQuality, 0);
    EXPECT_EQ(resolver.ambRecords.size(), 6U);
    EXPECT_TRUE(std::has_virtual_destructor_v<LambdaAR>);
}

TEST(LambdaArTest, ADefaultOneHasDefaultMatricesAndNoEntries) {
    const LambdaAR resolver;
    for (const gult::matrixT* matrix :
         {&resolver.x, &resolver.Q, &resolver.xFixed, &resolver.ambFixed, &resolver.QxxFixed}) {
        EXPECT_EQ(matrix->RowCount(), 6U);
        EXPECT_EQ(matrix->ColCount(), 6U);
    }
    EXPECT_TRUE(resolver.fixMask.empty());
    EXPECT_TRUE(resolver.ambRecords.empty());
    EXPECT_EQ(resolver.ratio, 1.0);
    EXPECT_EQ(resolver.fixQuality, 0);
}

TEST(LambdaArTest, AThresholdThatIsNotPositiveBecomesOnePointEight) {
    const Problem problem = FiveAndOneWeak(6.1);
    EXPECT_EQ(MakeResolver(0.0, problem).ratioThreshold, 1.8);
    EXPECT_EQ(MakeResolver(-3.0, problem).ratioThreshold, 1.8);
    EXPECT_EQ(MakeResolver(0.1, problem).ratioThreshold, 0.1);
}

TEST(LambdaArTest, KeepsCopiesOfItsOwn) {
    gult::matrixT x(2, 1);
    gult::matrixT q(2, 2);
    x(1, 0) = 4.0;
    q(0, 0) = q(1, 1) = 1.0;
    LambdaAR resolver(1.8, 1, 1, x, q, {});
    EXPECT_EQ(resolver.x.RefCount(), 1);
    EXPECT_EQ(resolver.Q.RefCount(), 1);
    EXPECT_EQ(resolver.x(1, 0), 4.0);
    EXPECT_EQ(resolver.Q(1, 1), 1.0);
}

TEST(LambdaArTest, AFailedSearchLeavesEverythingButTheGrade) {
    Problem problem = FiveAndOneWeak(6.1);
    LambdaAR resolver = MakeResolver(2.5, problem);
    resolver.Q(5, 5) = -1.0;
    const gult::matrixT xBefore = resolver.xFixed;
    const gult::matrixT ambBefore = resolver.ambFixed;
    EXPECT_EQ(resolver.Resolve(), -1);
    EXPECT_EQ(resolver.fixQuality, -1);
    EXPECT_EQ(resolver.ratio, 1.0);
    EXPECT_EQ(resolver.nFixed, 0);
    EXPECT_EQ(resolver.fixMask, std::vector<int>(6, 0));
    reference::ExpectNear(resolver.xFixed, reference::FromMatrix(xBefore), 0.0);
    reference::ExpectNear(resolver.ambFixed, reference::FromMatrix(ambBefore), 0.0);
}

TEST(LambdaArTest, WithoutAmbiguitiesTheSearchFails) {
    gult::matrixT x(3, 1);
    gult::matrixT q(3, 3);
    q.SetIdentity();
    LambdaAR resolver(1.8, 3, 0, x, q, {});
    EXPECT_EQ(resolver.Resolve(), -1);
    EXPECT_EQ(resolver.fixQuality, -1);
}

TEST(LambdaArTest, AWholeSetConditionsTheParametersOnAllAmbiguities) {
    const Problem problem = MovingTogether(5, 5, std::vector<int>(5, 10));
    LambdaAR resolver = MakeResolver(1.8, problem);
    EXPECT_EQ(resolver.Resolve(), 0);
    EXPECT_EQ(resolver.nFixed, 5);
    EXPECT_EQ(resolver.fixQuality, 3);
    EXPECT_EQ(resolver.fixMask, std::vector<int>(5, 1));
    EXPECT_EQ(reference::FromColumn(resolver.ambFixed), Rounded(problem.a));
    ExpectConditioned(resolver, problem);
}

TEST(LambdaArTest, ASubsetConditionsTheParametersOnItsOwnAmbiguities) {
    const Problem problem = FiveAndOneWeak(6.2);
    LambdaAR resolver = MakeResolver(3.5, problem);
    EXPECT_EQ(resolver.Resolve(), 0);
    EXPECT_EQ(resolver.nFixed, 5);
    EXPECT_EQ(resolver.fixMask, Without(6, {2}));
    EXPECT_NEAR(resolver.ratio, 4.0, 1e-9);
    EXPECT_EQ(resolver.fixQuality, 2);
    // The one left out has its best candidate's value all the same.
    EXPECT_EQ(reference::FromColumn(resolver.ambFixed), Rounded(problem.a));
    ExpectConditioned(resolver, problem);
}

TEST(LambdaArTest, ADroppedAmbiguityNearItsIntegerComesBackAndTheGradeStays) {
    const Problem problem = FiveAndOneWeak(6.1);
    LambdaAR resolver = MakeResolver(3.5, problem);
    EXPECT_EQ(resolver.Resolve(), 0);
    EXPECT_EQ(resolver.nFixed, 6);
    EXPECT_EQ(resolver.fixMask, std::vector<int>(6, 1));
    EXPECT_NEAR(resolver.ratio, 4.0, 1e-9);
    EXPECT_EQ(resolver.fixQuality, 2);  // six of six would have made it 3
    ExpectConditioned(resolver, problem);
}

TEST(LambdaArTest, TheRecoveryEndsAtFifteenHundredthsOfACycle) {
    const Problem at = FiveAndOneWeak(0.15);
    LambdaAR atLimit = MakeResolver(3.5, at);
    EXPECT_EQ(atLimit.Resolve(), 0);
    EXPECT_EQ(atLimit.fixMask, Without(6, {2}));
    ExpectConditioned(atLimit, at);

    const Problem below = FiveAndOneWeak(-std::nextafter(0.15, 0.0));
    LambdaAR belowLimit = MakeResolver(3.5, below);
    EXPECT_EQ(belowLimit.Resolve(), 0);
    EXPECT_EQ(belowLimit.fixMask, std::vector<int>(6, 1));
    ExpectConditioned(belowLimit, below);
}

TEST(LambdaArTest, ADroppedHalfCycleIsComparedWithItsRoundedValueAndStaysOut) {
    const Problem problem = FiveAndOneWeak(12.45);
    LambdaAR resolver = MakeResolver(3.5, problem);
    EXPECT_EQ(resolver.Resolve(), 0);
    EXPECT_EQ(reference::FromColumn(resolver.ambFixed).at(2), 12.5);
    EXPECT_EQ(resolver.fixMask, Without(6, {2}));
    ExpectConditioned(resolver, problem);
}

TEST(LambdaArTest, AKeptHalfCycleIsHeldAsItIs) {
    const Problem problem = Diagonal({{4.02, 0.001}, {12.48, 0.001}, {-3.01, 0.001}});
    LambdaAR resolver = MakeResolver(1.8, problem);
    EXPECT_EQ(resolver.Resolve(), 0);
    EXPECT_EQ(resolver.fixMask, std::vector<int>(3, 1));
    EXPECT_EQ(reference::FromColumn(resolver.ambFixed), (std::vector<double>{4.0, 12.5, -3.0}));
    ExpectConditioned(resolver, problem);
}

TEST(LambdaArTest, ARatioBelowTheThresholdGradesZeroAndStillConditions) {
    const Problem problem = MovingTogether(5, 2, {40, 30, 10, 50, 20}, 0.157);
    LambdaAR resolver = MakeResolver(1e6, problem);
    EXPECT_EQ(resolver.Resolve(), 0);
    EXPECT_EQ(resolver.fixQuality, 0);
    EXPECT_EQ(resolver.fixMask, Without(5, {2}));
    EXPECT_EQ(resolver.nFixed, 4);
    EXPECT_LE(resolver.ratio, 99.0);
    ExpectConditioned(resolver, problem);
}

// The fraction f puts (1 - f)^2 at 250 times f^2.
TEST(LambdaArTest, ARatioAbove99IsReportedAs99AndGradedAsItIs) {
    const Problem problem = Diagonal({{5.0 + 1.0 / (1.0 + std::sqrt(250.0)), 0.0025}});
    LambdaAR passed = MakeResolver(150.0, problem);
    EXPECT_EQ(passed.Resolve(), 0);
    EXPECT_EQ(passed.ratio, 99.0);
    EXPECT_EQ(passed.fixQuality, 3);
    LambdaAR failed = MakeResolver(260.0, problem);
    EXPECT_EQ(failed.Resolve(), 0);
    EXPECT_EQ(failed.ratio, 99.0);
    EXPECT_EQ(failed.fixQuality, 0);
}

TEST(LambdaArTest, TheChoiceIsAnnouncedInTheTrace) {
    const Problem problem = FiveAndOneWeak(6.2);
    {
        reference::TraceCapture trace(3);
        LambdaAR resolver = MakeResolver(3.5, problem);
        resolver.Resolve();
        EXPECT_EQ(trace.Text(), "3  LambdaAR::PAR : nb=6.\n");
    }
    {
        reference::TraceCapture trace(2);
        LambdaAR resolver = MakeResolver(3.5, problem);
        resolver.Resolve();
        EXPECT_EQ(trace.Text(), "");
    }
}

TEST(LambdaArTest, TheAnnouncementComesBeforeTheSearchThatFails) {
    reference::TraceCapture trace(3);
    LambdaAR resolver = MakeResolver(3.5, FiveAndOneWeak(6.2));
    resolver.Q(5, 5) = -1.0;
    EXPECT_EQ(resolver.Resolve(), -1);
    EXPECT_EQ(trace.Text(), "3  LambdaAR::PAR : nb=6.\n");
}

}  // namespace
}  // namespace vornel
