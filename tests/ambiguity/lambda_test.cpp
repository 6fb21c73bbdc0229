// The integer search against exhaustion, its limits, ties and steps of zero; the half-cycle scale;
// the sort by magnitude.
#include "ambiguity/lambda.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <numeric>
#include <random>
#include <set>
#include <utility>
#include <vector>

#include "ambiguity/integer_reference.h"
#include "foundation/dense_reference.h"

#if defined(__SANITIZE_ADDRESS__)
#define VORNEL_TEST_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(undefined_behavior_sanitizer)
#define VORNEL_TEST_SANITIZED 1
#endif
#endif

namespace vornel {
namespace {

using reference::Dense;
using reference::IntegerVector;
using reference::NearestIntegers;

#if defined(VORNEL_TEST_SANITIZED)
constexpr int kExhaustiveProblems = 10000;
#else
constexpr int kExhaustiveProblems = 200000;
#endif

struct Candidates {
    bool found = false;
    std::vector<std::vector<double>> vectors;
    std::vector<double> distances;
};

Candidates Search(const std::vector<double>& a, const std::vector<double>& covariance, int m) {
    const std::size_t n = a.size();
    const auto count = static_cast<std::size_t>(m);
    std::vector<double> flat(n * count, -77.0);
    Candidates result;
    result.distances.assign(count, -77.0);
    result.found = LambdaSearch(static_cast<int>(n), m, a.data(), covariance.data(), flat.data(),
                                result.distances.data());
    for (std::size_t c = 0; c < count; ++c) {
        const auto first = flat.begin() + static_cast<std::ptrdiff_t>(c * n);
        result.vectors.emplace_back(first, first + static_cast<std::ptrdiff_t>(n));
    }
    return result;
}

std::vector<double> DiagonalCovariance(const std::vector<double>& variances) {
    const std::size_t n = variances.size();
    std::vector<double> covariance(n * n, 0.0);
    for (std::size_t i = 0; i < n; ++i) {
        covariance[i * n + i] = variances[i];
    }
    return covariance;
}

// A problem whose solution is easy to exhaust in a space of little correlation, handed to the
// search in another space, which a unimodular transformation makes strongly correlated. The values
// are multiples of powers of two, so that the transformed problem is exact.
class HiddenProblem {
  public:
    HiddenProblem(std::mt19937_64& random, std::size_t n)
        : n_(n), mildCovariance_(reference::Zeros(n, n)), mild_(n), forward_(n), backward_(n) {
        std::uniform_real_distribution<double> logVariance(std::log(0.02), 0.0);
        std::uniform_real_distribution<double> unit(-1.0, 1.0);
        for (std::size_t i = 0; i < n; ++i) {
            mildCovariance_[i][i] = OnGrid(std::exp(logVariance(random)), 20);
            mild_[i] = OnGrid(10.0 * unit(random), 30);
            forward_[i].assign(n, 0.0);
            backward_[i].assign(n, 0.0);
            forward_[i][i] = backward_[i][i] = 1.0;
        }
        const double limit = n > 1 ? 0.9 / static_cast<double>(n - 1) : 0.0;
        for (std::size_t i = 0; i < n; ++i) {
            for (std::size_t j = 0; j < i; ++j) {
                const auto product =
                    static_cast<double>(mildCovariance_[i][i] * mildCovariance_[j][j]);
                mildCovariance_[i][j] = mildCovariance_[j][i] =
                    OnGrid(limit * unit(random) * std::sqrt(product), 20);
            }
        }
        if (n > 1) {
            Entangle(random);
        }
    }

    std::vector<double> Floats() const { return Apply(forward_, mild_); }

    std::vector<double> Covariance() const {
        std::vector<double> result(n_ * n_, 0.0);
        for (std::size_t i = 0; i < n_; ++i) {
            for (std::size_t j = 0; j < n_; ++j) {
                long double sum = 0.0L;
                for (std::size_t k = 0; k < n_; ++k) {
                    for (std::size_t l = 0; l < n_; ++l) {
                        sum += forward_[i][k] * mildCovariance_[k][l] * forward_[j][l];
                    }
                }
                result[i + j * n_] = static_cast<double>(sum);
            }
        }
        return result;
    }

    std::vector<IntegerVector> Nearest(std::size_t m) const {
        return NearestIntegers(mildCovariance_, mild_, m);
    }

    std::vector<double> ToMildSpace(const std::vector<double>& integers) const {
        return Apply(backward_, integers);
    }

  private:
    static double OnGrid(double value, int bits) {
        return std::ldexp(std::floor(std::ldexp(value, bits)) + 0.5, -bits);
    }

    static std::vector<double> Apply(const std::vector<std::vector<double>>& matrix,
                                     const std::vector<double>& vector) {
        std::vector<double> result;
        for (const std::vector<double>& row : matrix) {
            result.push_back(std::inner_product(row.begin(), row.end(), vector.begin(), 0.0));
        }
        return result;
    }

    // Adds multiples of rows to others; the inverse follows with columns.
    void Entangle(std::mt19937_64& random) {
        std::uniform_int_distribution<std::size_t> row(0, n_ - 1);
        std::uniform_int_distribution<int> factor(-3, 3);
        for (std::size_t step = 0; step < n_ + 2; ++step) {
            const std::size_t to = row(random);
            const std::size_t from = row(random);
            const double multiple = factor(random);
            if (to == from) {
                continue;
            }
            for (std::size_t k = 0; k < n_; ++k) {
                forward_[to][k] += multiple * forward_[from][k];
                backward_[k][from] -= multiple * backward_[k][to];
            }
        }
    }

    std::size_t n_;
    Dense mildCovariance_;
    std::vector<double> mild_;
    std::vector<std::vector<double>> forward_;
    std::vector<std::vector<double>> backward_;
};

void CompareWithExhaustion(const HiddenProblem& problem, int m) {
    const Candidates found = Search(problem.Floats(), problem.Covariance(), m);
    ASSERT_TRUE(found.found);
    const auto count = static_cast<std::size_t>(m);
    const std::vector<IntegerVector> nearest = problem.Nearest(count + 1);
    const double tolerance = 1e-6 * (1.0 + nearest.back().distance);
    std::set<std::vector<double>> distinct;
    for (std::size_t c = 0; c < count; ++c) {
        ASSERT_NEAR(found.distances[c], nearest[c].distance, tolerance) << "candidate " << c;
        distinct.insert(found.vectors[c]);
        const bool clear =
            (c == 0 || nearest[c].distance - nearest[c - 1].distance > 2.0 * tolerance) &&
            nearest[c + 1].distance - nearest[c].distance > 2.0 * tolerance;
        if (clear) {
            std::vector<double> mild = problem.ToMildSpace(found.vectors[c]);
            for (double& value : mild) {
                ASSERT_NEAR(value, std::round(value), 1e-6);
                value = std::round(value);
            }
            ASSERT_EQ(mild, nearest[c].values) << "candidate " << c;
        }
    }
    ASSERT_EQ(distinct.size(), count);
}

TEST(LambdaSearchTest, AgreesWithExhaustiveSearchOnCorrelatedProblems) {
    std::mt19937_64 random(20240601);
    const int candidateCounts[] = {2, 1, 3, 2, 5};
    for (int i = 0; i < kExhaustiveProblems; ++i) {
        const auto n = static_cast<std::size_t>(1 + i % 5);
        const HiddenProblem problem(random, n);
        CompareWithExhaustion(problem, candidateCounts[(i / 5) % 5]);
        ASSERT_FALSE(HasFatalFailure()) << "problem " << i << " of " << n << " ambiguities";
    }
}

// The check of the check: slices of the ellipsoid hold what a walk over a generous box finds.
TEST(IntegerReferenceTest, SlicesHoldWhatAWalkOverTheBoxFinds) {
    const Dense covariance = {
        {0.50L, 0.20L, -0.10L}, {0.20L, 0.30L, 0.05L}, {-0.10L, 0.05L, 0.40L}};
    const std::vector<double> centre = {1.3, -0.45, 2.6};
    const Dense weight = reference::InverseOfPositive(covariance);
    std::vector<double> distances;
    for (int x = -9; x <= 11; ++x) {
        for (int y = -10; y <= 10; ++y) {
            for (int z = -7; z <= 12; ++z) {
                const double d[] = {x - centre[0], y - centre[1], z - centre[2]};
                double sum = 0.0;
                for (std::size_t i = 0; i < 3; ++i) {
                    for (std::size_t j = 0; j < 3; ++j) {
                        sum += d[i] * static_cast<double>(weight[i][j]) * d[j];
                    }
                }
                distances.push_back(sum);
            }
        }
    }
    std::sort(distances.begin(), distances.end());
    const std::vector<IntegerVector> nearest = NearestIntegers(covariance, centre, 40);
    for (std::size_t c = 0; c < nearest.size(); ++c) {
        EXPECT_NEAR(nearest[c].distance, distances[c], 1e-9);
    }
}

TEST(LambdaSearchTest, OneAmbiguityAlternatesOnTheTwoSidesOfItsValue) {
    const Candidates found = Search({3.2}, {0.25}, 5);
    ASSERT_TRUE(found.found);
    const std::vector<std::vector<double>> expected = {{3.0}, {4.0}, {2.0}, {5.0}, {1.0}};
    EXPECT_EQ(found.vectors, expected);
    const double offsets[] = {0.2, 0.8, 1.2, 1.8, 2.2};
    for (std::size_t c = 0; c < 5; ++c) {
        EXPECT_NEAR(found.distances[c], offsets[c] * offsets[c] / 0.25, 1e-12);
    }
}

TEST(LambdaSearchTest, NegativeValuesAlternateFromTheNearerSide) {
    const Candidates found = Search({-3.2}, {1.0}, 4);
    ASSERT_TRUE(found.found);
    const std::vector<std::vector<double>> expected = {{-3.0}, {-4.0}, {-2.0}, {-5.0}};
    EXPECT_EQ(found.vectors, expected);
}

TEST(LambdaSearchTest, FailsWithoutAmbiguitiesOrCandidates) {
    const double a[] = {0.2};
    const double covariance[] = {1.0};
    double vectors[] = {-77.0};
    double distances[] = {-77.0};
    EXPECT_FALSE(LambdaSearch(0, 1, a, covariance, vectors, distances));
    EXPECT_FALSE(LambdaSearch(-1, 1, a, covariance, vectors, distances));
    EXPECT_FALSE(LambdaSearch(1, 0, a, covariance, vectors, distances));
    EXPECT_FALSE(LambdaSearch(1, -2, a, covariance, vectors, distances));
    EXPECT_EQ(vectors[0], -77.0);
    EXPECT_EQ(distances[0], -77.0);
}

TEST(LambdaSearchTest, FailsOnACovarianceThatIsNotPositiveDefinite) {
    EXPECT_FALSE(Search({0.2}, {0.0}, 1).found);
    EXPECT_FALSE(Search({0.2}, {-1.0}, 1).found);
    EXPECT_FALSE(Search({0.2, 0.4}, {1.0, 0.0, 0.0, 0.0}, 1).found);
    EXPECT_FALSE(Search({0.2, 0.4}, {0.0, 0.0, 0.0, 1.0}, 1).found);
    // Both variances positive, the conditional one exactly zero or negative.
    EXPECT_FALSE(Search({0.2, 0.4}, {1.0, 1.0, 1.0, 1.0}, 1).found);
    EXPECT_FALSE(Search({0.2, 0.4}, {1.0, 2.0, 2.0, 1.0}, 1).found);
    EXPECT_FALSE(Search({0.2}, {std::numeric_limits<double>::quiet_NaN()}, 1).found);
}

// One ambiguity: m candidates take m passes, one more pass closes the bound, and the next leaves.
TEST(LambdaSearchTest, AWalkThatLeavesInItsLastPassSucceeds) {
    const Candidates found = Search({0.3}, {1.0}, 9998);
    ASSERT_TRUE(found.found);
    EXPECT_EQ(found.vectors.front(), std::vector<double>{0.0});
    EXPECT_EQ(found.vectors.back(), std::vector<double>{4999.0});
    EXPECT_NEAR(found.distances.back(), 4998.7 * 4998.7, 1e-6);
}

TEST(LambdaSearchTest, AWalkThatNeedsOnePassMoreThanTheLimitFails) {
    EXPECT_FALSE(Search({0.3}, {1.0}, 9999).found);
}

TEST(LambdaSearchTest, AnIntegerAtTheTopLevelRepeatsItsBranchUntilTheLimit) {
    EXPECT_FALSE(Search({0.3, 5.0}, DiagonalCovariance({1.0, 1.0}), 1).found);
    EXPECT_FALSE(Search({0.3, 5.0}, DiagonalCovariance({1.0, 1.0}), 2).found);
}

TEST(LambdaSearchTest, AnIntegerAtTheLowestLevelIsStoredAgainAndAgain) {
    const Candidates found = Search({5.0, 0.3}, DiagonalCovariance({1.0, 1.0}), 2);
    ASSERT_TRUE(found.found);
    EXPECT_EQ(found.vectors[0], (std::vector<double>{5.0, 0.0}));
    EXPECT_EQ(found.vectors[1], (std::vector<double>{5.0, 0.0}));
    EXPECT_DOUBLE_EQ(found.distances[0], 0.09);
    EXPECT_EQ(found.distances[0], found.distances[1]);
}

TEST(LambdaSearchTest, ASingleIntegerFillsTheListWithItself) {
    const Candidates found = Search({-7.0}, {0.5}, 3);
    ASSERT_TRUE(found.found);
    for (std::size_t c = 0; c < 3; ++c) {
        EXPECT_EQ(found.vectors[c], std::vector<double>{-7.0});
        EXPECT_EQ(found.distances[c], 0.0);
    }
}

TEST(LambdaSearchTest, AllIntegersEndWithTheBoundAtZero) {
    const Candidates found = Search({2.0, 5.0}, DiagonalCovariance({1.0, 1.0}), 2);
    ASSERT_TRUE(found.found);
    for (std::size_t c = 0; c < 2; ++c) {
        EXPECT_EQ(found.vectors[c], (std::vector<double>{2.0, 5.0}));
        EXPECT_EQ(found.distances[c], 0.0);
    }
}

// Which of two ambiguities stands on top shows in which of them may be an integer without a
// failure.
TEST(LambdaSearchTest, TheMorePreciseAmbiguityStandsOnTop) {
    const std::vector<double> covariance = DiagonalCovariance({0.1, 0.5});
    EXPECT_FALSE(Search({5.0, 0.3}, covariance, 2).found);
    EXPECT_TRUE(Search({0.3, 5.0}, covariance, 2).found);
}

TEST(LambdaSearchTest, VariancesWithinAMillionthKeepTheirOrder) {
    const std::vector<double> covariance = DiagonalCovariance({1e-7, 9e-7});
    EXPECT_TRUE(Search({5.0, 0.3}, covariance, 2).found);
    EXPECT_FALSE(Search({0.3, 5.0}, covariance, 2).found);
}

TEST(LambdaSearchTest, OfTwoEquallyDistantIntegersTheFirstMetStands) {
    EXPECT_EQ(Search({0.5}, {1.0}, 1).vectors[0], std::vector<double>{1.0});
    EXPECT_EQ(Search({-0.5}, {1.0}, 1).vectors[0], std::vector<double>{-1.0});
}

TEST(LambdaSearchTest, TheFinalSortExchangesTies) {
    const std::vector<std::vector<double>> expected = {{0.0}, {1.0}};
    const Candidates found = Search({0.5}, {1.0}, 2);
    ASSERT_TRUE(found.found);
    EXPECT_EQ(found.vectors, expected);
    EXPECT_EQ(found.distances, (std::vector<double>{0.25, 0.25}));
    const std::vector<std::vector<double>> mirrored = {{0.0}, {-1.0}};
    EXPECT_EQ(Search({-0.5}, {1.0}, 2).vectors, mirrored);
}

TEST(LambdaSearchTest, ACandidateExactlyAtTheBoundIsNotAccepted) {
    const std::vector<double> a = {0.25, 0.5};
    const std::vector<double> covariance = DiagonalCovariance({1.0, 1.0});
    // (0, 1) is met first; (0, 0) is exactly as far.
    const Candidates one = Search(a, covariance, 1);
    ASSERT_TRUE(one.found);
    EXPECT_EQ(one.vectors[0], (std::vector<double>{0.0, 1.0}));
    EXPECT_EQ(one.distances[0], 0.3125);
    // With room for two, (0, 0) takes the place of (1, 1), and the sort then exchanges the tie.
    const Candidates two = Search(a, covariance, 2);
    ASSERT_TRUE(two.found);
    EXPECT_EQ(two.vectors[0], (std::vector<double>{0.0, 0.0}));
    EXPECT_EQ(two.vectors[1], (std::vector<double>{0.0, 1.0}));
    EXPECT_EQ(two.distances, (std::vector<double>{0.3125, 0.3125}));
}

struct Scaled {
    bool found = false;
    gult::matrixT vectors;
    gult::matrixT distances;
};

Scaled RunScaled(bool raw, const std::vector<double>& a, const Dense& covariance, int m) {
    const auto n = static_cast<std::uint32_t>(a.size());
    Scaled result;
    result.vectors = gult::matrixT(n, static_cast<std::uint32_t>(m));
    result.distances = gult::matrixT(1, static_cast<std::uint32_t>(m));
    const auto search = raw ? ScaledLambdaRaw : ScaledLambda;
    result.found = search(static_cast<int>(n), m, reference::ToColumn(a),
                          reference::ToMatrix(covariance), result.vectors, result.distances);
    EXPECT_EQ(result.vectors.RowCount(), n);
    EXPECT_EQ(result.vectors.ColCount(), static_cast<std::uint32_t>(m));
    EXPECT_EQ(result.distances.RowCount(), 1U);
    EXPECT_EQ(result.distances.ColCount(), static_cast<std::uint32_t>(m));
    return result;
}

TEST(ScaledLambdaTest, AFractionOfExactlyThreeTenthsStaysOnWholeCycles) {
    for (double sign : {1.0, -1.0}) {
        Scaled whole = RunScaled(false, {sign * 0.3}, {{0.5L}}, 2);
        ASSERT_TRUE(whole.found);
        EXPECT_EQ(whole.vectors(0, 0), 0.0);
        EXPECT_EQ(whole.vectors(0, 1), sign);
        EXPECT_DOUBLE_EQ(whole.distances(0, 0), 0.09 / 0.5);
        EXPECT_DOUBLE_EQ(whole.distances(0, 1), 0.49 / 0.5);

        Scaled half = RunScaled(false, {sign * std::nextafter(0.3, 1.0)}, {{0.5L}}, 2);
        ASSERT_TRUE(half.found);
        EXPECT_EQ(half.vectors(0, 0), sign * 0.5);
        EXPECT_EQ(half.vectors(0, 1), 0.0);
        // On half cycles a distance counts four times in cycles, since value and deviation both
        // double.
        EXPECT_DOUBLE_EQ(half.distances(0, 0), 0.16 / (4.0 * 0.5));
        EXPECT_DOUBLE_EQ(half.distances(0, 1), 0.36 / (4.0 * 0.5));
    }
}

TEST(ScaledLambdaTest, AnAmbiguityFarFromIntegersMayGetAHalfCycle) {
    Scaled found = RunScaled(false, {12.45, -8.6, 3.1}, reference::Diagonal({0.01, 0.02, 0.03}), 1);
    ASSERT_TRUE(found.found);
    EXPECT_EQ(found.vectors(0, 0), 12.5);
    EXPECT_EQ(found.vectors(1, 0), -8.5);
    EXPECT_EQ(found.vectors(2, 0), 3.0);
    EXPECT_NEAR(found.distances(0, 0), 0.01 / 0.04 + 0.04 / 0.08 + 0.01 / 0.03, 1e-11);
}

TEST(ScaledLambdaTest, TheRawFormKeepsTheScale) {
    Scaled found = RunScaled(true, {12.45, -8.6, 3.1}, reference::Diagonal({0.01, 0.02, 0.03}), 1);
    ASSERT_TRUE(found.found);
    EXPECT_EQ(found.vectors(0, 0), 25.0);
    EXPECT_EQ(found.vectors(1, 0), -17.0);
    EXPECT_EQ(found.vectors(2, 0), 3.0);
    EXPECT_NEAR(found.distances(0, 0), 0.01 / 0.04 + 0.04 / 0.08 + 0.01 / 0.03, 1e-11);
}

TEST(ScaledLambdaTest, AgreesWithExhaustionOfTheScaledProblem) {
    std::mt19937_64 random(5);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    constexpr std::size_t kCandidates = 4;
    for (int round = 0; round < 300; ++round) {
        const auto n = static_cast<std::size_t>(1 + round % 4);
        Dense root = reference::Zeros(n, n);
        std::vector<double> a(n);
        for (std::size_t i = 0; i < n; ++i) {
            a[i] = 20.0 * unit(random);
            for (std::size_t j = 0; j < n; ++j) {
                root[i][j] = 0.4 * unit(random) + (i == j ? 0.5 : 0.0);
            }
        }
        Dense covariance = reference::Multiply(root, reference::Transposed(root, n));
        for (std::size_t i = 0; i < n; ++i) {
            covariance[i][i] += 0.02L;
        }
        std::vector<double> scale(n, 1.0);
        std::vector<double> scaledA = a;
        Dense scaledCovariance = covariance;
        for (std::size_t i = 0; i < n; ++i) {
            scale[i] = std::fabs(a[i] - std::round(a[i])) > 0.3 ? 2.0 : 1.0;
        }
        for (std::size_t i = 0; i < n; ++i) {
            scaledA[i] = scale[i] * a[i];
            for (std::size_t j = 0; j < n; ++j) {
                scaledCovariance[i][j] *= scale[i] * scale[j];
            }
        }
        const std::vector<IntegerVector> nearest =
            NearestIntegers(scaledCovariance, scaledA, kCandidates);
        Scaled cycles = RunScaled(false, a, covariance, kCandidates);
        Scaled raw = RunScaled(true, a, covariance, kCandidates);
        ASSERT_TRUE(cycles.found);
        ASSERT_TRUE(raw.found);
        for (std::uint32_t c = 0; c < kCandidates; ++c) {
            const double tolerance = 1e-9 * (1.0 + nearest[c].distance);
            EXPECT_NEAR(cycles.distances(0, c), nearest[c].distance, tolerance);
            EXPECT_NEAR(raw.distances(0, c), nearest[c].distance, tolerance);
            for (std::uint32_t i = 0; i < n; ++i) {
                EXPECT_NEAR(raw.vectors(i, c), nearest[c].values[i], 1e-9);
                EXPECT_NEAR(cycles.vectors(i, c), nearest[c].values[i] / scale[i], 1e-9);
            }
        }
    }
}

TEST(ScaledLambdaTest, AFailureOfTheSearchIsPassedOn) {
    EXPECT_FALSE(RunScaled(false, {0.1, 0.2}, {{1.0L, 2.0L}, {2.0L, 1.0L}}, 2).found);
    EXPECT_FALSE(RunScaled(true, {0.1, 0.2}, {{1.0L, 2.0L}, {2.0L, 1.0L}}, 2).found);
    EXPECT_FALSE(RunScaled(false, {}, {}, 2).found);
    EXPECT_FALSE(RunScaled(true, {}, {}, 2).found);
    EXPECT_FALSE(RunScaled(false, {0.3}, {{1.0L}}, 9999).found);
}

TEST(ScaledLambdaTest, LeavesItsArgumentsAlone) {
    gult::matrixT a = reference::ToColumn(std::vector<double>{0.4, 7.1});
    gult::matrixT covariance = reference::ToMatrix(reference::Diagonal({0.1, 0.2}));
    gult::matrixT vectors(2, 1);
    gult::matrixT distances(1, 1);
    ASSERT_TRUE(ScaledLambda(2, 1, a, covariance, vectors, distances));
    EXPECT_EQ(a(0, 0), 0.4);
    EXPECT_EQ(a(1, 0), 7.1);
    EXPECT_EQ(covariance(0, 0), 0.1);
    EXPECT_EQ(covariance(1, 1), 0.2);
}

using Order = std::pair<std::vector<int>, std::vector<int>>;

Order SortedByMagnitude(const std::vector<int>& values) {
    Order result{std::vector<int>(values.size(), -77), std::vector<int>(values.size(), -77)};
    SortByMagnitude(static_cast<int>(values.size()), values.data(), result.first.data(),
                    result.second.data());
    return result;
}

TEST(SortByMagnitudeTest, OrdersByMagnitudeAndKeepsSigns) {
    const Order order = SortedByMagnitude({-5, 3, -1, 4});
    EXPECT_EQ(order.first, (std::vector<int>{-1, 3, 4, -5}));
    EXPECT_EQ(order.second, (std::vector<int>{2, 1, 3, 0}));
}

// The 1 changes places with the first 2, which so comes to stand behind the second.
TEST(SortByMagnitudeTest, ExchangesMayTurnEqualValuesRound) {
    EXPECT_EQ(SortedByMagnitude({2, 2, 1}).second, (std::vector<int>{2, 1, 0}));
    EXPECT_EQ(SortedByMagnitude({3, -3, 3, 1}).second, (std::vector<int>{3, 1, 2, 0}));
    EXPECT_EQ(SortedByMagnitude({7, 7, 7}).second, (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(SortedByMagnitude({2, -2}).first, (std::vector<int>{2, -2}));
}

TEST(SortByMagnitudeTest, MayGoWithoutIndexAndWithoutValues) {
    const int values[] = {3, -2, 1};
    int sorted[3] = {};
    SortByMagnitude(3, values, sorted, nullptr);
    EXPECT_EQ(std::vector<int>(sorted, sorted + 3), (std::vector<int>{1, -2, 3}));
    int untouched = -77;
    SortByMagnitude(0, values, &untouched, &untouched);
    EXPECT_EQ(untouched, -77);
    EXPECT_EQ(SortedByMagnitude({-4}), (Order{{-4}, {0}}));
}

// Each position in turn takes every smaller value that a walk over the positions behind it meets.
Order ExchangeSort(const std::vector<int>& values) {
    std::vector<std::pair<int, int>> entries;
    for (std::size_t i = 0; i < values.size(); ++i) {
        entries.emplace_back(values[i], static_cast<int>(i));
    }
    for (auto place = entries.begin(); place != entries.end(); ++place) {
        for (auto later = place + 1; later < entries.end(); ++later) {
            if (std::abs(later->first) < std::abs(place->first)) {
                std::iter_swap(place, later);
            }
        }
    }
    Order result;
    for (const auto& [value, index] : entries) {
        result.first.push_back(value);
        result.second.push_back(index);
    }
    return result;
}

TEST(SortByMagnitudeTest, TheOrderOfEqualsIsThatOfTheExchanges) {
    std::mt19937_64 random(11);
    std::uniform_int_distribution<int> value(-4, 4);
    for (int round = 0; round < 2000; ++round) {
        std::vector<int> values(static_cast<std::size_t>(round % 15));
        for (int& entry : values) {
            entry = value(random);
        }
        EXPECT_EQ(SortedByMagnitude(values), ExchangeSort(values));
    }
}

}  // namespace
}  // namespace vornel
