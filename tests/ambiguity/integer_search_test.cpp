// The search in the position domain against trying every vector of a box, each with a least-squares
// adjustment of its own in extended precision.
#include "ambiguity/integer_search.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "foundation/dense_reference.h"

namespace vornel {
namespace {

using reference::Dense;
using reference::Vector;

// Student's quantile of probability 0.995 for 10 degrees of freedom, from the published tables.
constexpr int kDof = 10;
constexpr double kStudent = 3.1693;

// Float ambiguities, and double differences of a few epochs that hold the integers nearest to them.
struct Problem {
    std::vector<double> a;
    Dense Q;
    std::vector<Dense> B;  // by epoch
    std::vector<Vector> y;
    std::vector<std::vector<int>> index;
    std::vector<std::vector<double>> wavelength;

    // Every ambiguity is seen at each of the epochs by one row.
    Problem(const std::vector<double>& values, const Dense& covariance, double noise,
            std::uint64_t seed)
        : a(values), Q(covariance) {
        std::mt19937_64 random(seed);
        std::normal_distribution<double> normal;
        const std::size_t n = a.size();
        for (int e = 0; e < 6; ++e) {
            B.push_back(reference::Zeros(n, 3));
            y.emplace_back(n, 0.0L);
            index.emplace_back();
            wavelength.emplace_back();
            for (std::size_t i = 0; i < n; ++i) {
                const double lambda = 0.19 + 0.01 * static_cast<double>(i);
                long double value = std::round(a[i]) * lambda + noise * normal(random);
                for (std::size_t k = 0; k < 3; ++k) {
                    B.back()[i][k] = normal(random);
                    value += B.back()[i][k] * 0.3L;
                }
                y.back()[i] = static_cast<double>(value);
                index.back().push_back(static_cast<int>(i));
                wavelength.back().push_back(lambda);
            }
        }
    }

    EpochEquations Equations() const {
        EpochEquations equations;
        for (std::size_t e = 0; e < y.size(); ++e) {
            equations.y.push_back(reference::ToColumn(y[e]));
            equations.B.push_back(reference::ToMatrix(B[e]));
        }
        equations.ambiguityIndex = index;
        equations.wavelength = wavelength;
        return equations;
    }

    // Sum of squares left by the best coordinates.
    long double Score(const std::vector<double>& candidate) const {
        Dense normal = reference::Zeros(3, 3);
        Vector right(3, 0.0L);
        std::vector<Vector> misclosures;
        for (std::size_t e = 0; e < y.size(); ++e) {
            Vector& r = misclosures.emplace_back(y[e]);
            for (std::size_t i = 0; i < r.size(); ++i) {
                r[i] -= static_cast<long double>(candidate[static_cast<std::size_t>(index[e][i])]) *
                        wavelength[e][i];
                for (std::size_t k = 0; k < 3; ++k) {
                    right[k] += B[e][i][k] * r[i];
                    for (std::size_t l = 0; l < 3; ++l) {
                        normal[k][l] += B[e][i][k] * B[e][i][l];
                    }
                }
            }
        }
        const Vector x = reference::Multiply(reference::InverseOfPositive(normal), right);
        long double score = 0.0L;
        for (std::size_t e = 0; e < y.size(); ++e) {
            for (std::size_t i = 0; i < y[e].size(); ++i) {
                long double v = misclosures[e][i];
                for (std::size_t k = 0; k < 3; ++k) {
                    v -= B[e][i][k] * x[k];
                }
                score += v * v;
            }
        }
        return score;
    }

    // Half the width of the search in one ambiguity, and how much that widens the tests of pairs.
    double HalfWidth(std::size_t i) const {
        return std::max(std::sqrt(static_cast<double>(Q[i][i])) * kStudent, 1.2);
    }
    double Widening() const {
        double widening = 1.0;
        for (std::size_t i = 0; i < a.size(); ++i) {
            widening = std::max(
                widening, HalfWidth(i) / (std::sqrt(static_cast<double>(Q[i][i])) * kStudent));
        }
        return widening;
    }

    // Whether the search has to try the vector. One on the verge, where the last digits of the
    // quantile decide, is no fair question.
    bool IsTried(const std::vector<double>& candidate) const {
        bool tried = true;
        const auto within = [&tried](double change, double limit) {
            EXPECT_GT(std::fabs(std::fabs(change) - limit), 2e-3 * limit) << "on the verge";
            tried = tried && std::fabs(change) < limit;
        };
        for (std::size_t i = 0; i < a.size(); ++i) {
            within(candidate[i] - a[i], HalfWidth(i));
            for (std::size_t j = 0; j < i; ++j) {
                const auto variance = static_cast<double>(Q[i][i] + Q[j][j] - 2.0L * Q[i][j]);
                within((candidate[i] - candidate[j]) - (a[i] - a[j]),
                       std::sqrt(variance) * kStudent * Widening());
            }
        }
        return tried;
    }
};

struct Tried {
    std::vector<double> best, second;
    long double s1 = std::numeric_limits<long double>::max(), s2 = s1;
    int count = 0;
};

// Every vector of integers within `reach` of the float one that the search has to try.
Tried TryAll(const Problem& problem, int reach) {
    Tried tried;
    const std::size_t n = problem.a.size();
    std::vector<int> offset(n, -reach);
    for (bool more = true; more;) {
        std::vector<double> candidate(n);
        for (std::size_t i = 0; i < n; ++i) {
            candidate[i] = std::round(problem.a[i]) + offset[i];
        }
        if (problem.IsTried(candidate)) {
            ++tried.count;
            const long double score = problem.Score(candidate);
            if (score < tried.s1) {
                tried.s2 = tried.s1;
                tried.second = tried.best;
                tried.s1 = score;
                tried.best = candidate;
            } else if (score < tried.s2) {
                tried.s2 = score;
                tried.second = candidate;
            }
        }
        more = false;
        for (std::size_t i = 0; i < n && !more; ++i) {
            more = ++offset[i] <= reach;
            if (!more) {
                offset[i] = -reach;
            }
        }
    }
    return tried;
}

IntegerPair SearchOf(const Problem& problem, int dof = kDof) {
    EpochEquations equations = problem.Equations();
    return SearchIntegers(reference::ToColumn(problem.a), reference::ToMatrix(problem.Q), dof,
                          equations);
}

void ExpectAsTried(const Problem& problem, int reach, int atLeast) {
    const Tried expected = TryAll(problem, reach);
    ASSERT_GE(expected.count, atLeast);
    const IntegerPair found = SearchOf(problem);
    EXPECT_EQ(found.best, expected.best);
    EXPECT_EQ(found.second, expected.second);
    EXPECT_NEAR(found.s1, static_cast<double>(expected.s1), 1e-9 * (1.0 + found.s1));
    EXPECT_NEAR(found.s2, static_cast<double>(expected.s2), 1e-9 * (1.0 + found.s2));
}

TEST(IntegerSearch, WideAmbiguitiesAreSearchedAsFarAsTheirDeviationsTell) {
    // Half-widths of 1.6 to 3.2 cycles; the covariances keep pairs together.
    const Dense Q = {{0.25L, 0.2L, 0.1L}, {0.2L, 0.36L, 0.1L}, {0.1L, 0.1L, 1.0L}};
    for (std::uint64_t seed = 1; seed <= 5; ++seed) {
        ExpectAsTried(Problem({3.13, -7.37, 12.41}, Q, 0.05, seed), 5, 20);
    }
}

TEST(IntegerSearch, NarrowAmbiguitiesAreSearchedOverAtLeastTwoIntegers) {
    // A deviation of 0.05 would reach 0.16 cycles; 1.2 are searched, and pairs as much wider.
    const Dense Q = {{0.0025L, 0.001L, 0.0L}, {0.001L, 0.01L, 0.0L}, {0.0L, 0.0L, 0.49L}};
    for (std::uint64_t seed = 1; seed <= 5; ++seed) {
        ExpectAsTried(Problem({3.13, -7.37, 12.41}, Q, 0.05, seed), 5, 8);
    }
}

TEST(IntegerSearch, WhenNoVectorFitsNothingIsFound) {
    // Two ambiguities whose difference is known for sure, and is half a cycle.
    const Dense Q = {{0.04L, 0.04L}, {0.04L, 0.04L}};
    const Problem problem({3.0, 5.5}, Q, 0.001, 1);
    const IntegerPair found = SearchOf(problem);
    EXPECT_EQ(found.s1, 0.0);
    EXPECT_EQ(found.s2, 0.0);
    EXPECT_EQ(found.best, (std::vector<double>{0.0, 0.0}));
    EXPECT_EQ(found.second, found.best);
}

TEST(IntegerSearch, WithoutDegreesOfFreedomOrAmbiguitiesNothingIsTried) {
    const Problem problem({3.1, -7.2}, reference::Diagonal({0.01, 0.01}), 0.001, 1);
    ASSERT_GT(SearchOf(problem).s1, 0.0);
    for (const int dof : {0, -3}) {
        const IntegerPair found = SearchOf(problem, dof);
        EXPECT_EQ(found.s1, 0.0);
        EXPECT_EQ(found.s2, 0.0);
        EXPECT_TRUE(found.best.empty());
    }
    EpochEquations none;
    const IntegerPair found = SearchIntegers(gult::matrixT(0, 1), gult::matrixT(0, 0), kDof, none);
    EXPECT_EQ(found.s1, 0.0);
    EXPECT_TRUE(found.best.empty());
}

}  // namespace
}  // namespace vornel
