// Rounding, quantiles and the robust weight, against tables and closed forms.
#include "foundation/statistics.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>

namespace {

using vornel::BetaSeries;
using vornel::IggWeight;
using vornel::NormalQuantile;
using vornel::RoundHalfAway;
using vornel::StudentCdf;
using vornel::StudentQuantile;

constexpr double kPi = 3.14159265358979323846;

// --- rounding ------------------------------------------------------------------------------------

TEST(RoundHalfAway, HalvesGoAwayFromZero) {
    EXPECT_EQ(RoundHalfAway(0.5), 1.0);
    EXPECT_EQ(RoundHalfAway(-0.5), -1.0);
    EXPECT_EQ(RoundHalfAway(1.5), 2.0);
    EXPECT_EQ(RoundHalfAway(-1.5), -2.0);
    EXPECT_EQ(RoundHalfAway(2.5), 3.0);
    EXPECT_EQ(RoundHalfAway(-2.5), -3.0);
}

TEST(RoundHalfAway, OthersGoToTheNearest) {
    EXPECT_EQ(RoundHalfAway(0.0), 0.0);
    EXPECT_EQ(RoundHalfAway(0.49), 0.0);
    EXPECT_EQ(RoundHalfAway(-0.49), 0.0);
    EXPECT_EQ(RoundHalfAway(0.51), 1.0);
    EXPECT_EQ(RoundHalfAway(-0.51), -1.0);
    EXPECT_EQ(RoundHalfAway(7.0), 7.0);
    EXPECT_EQ(RoundHalfAway(-7.0), -7.0);
    EXPECT_EQ(RoundHalfAway(123456789.4), 123456789.0);
    EXPECT_EQ(RoundHalfAway(-123456789.6), -123456790.0);
}

TEST(RoundHalfAway, TheLastNumberBelowAHalfIsRoundedWithItsSum) {
    // x + 0.5 is 1.0 in double arithmetic already.
    EXPECT_EQ(RoundHalfAway(std::nextafter(0.5, 0.0)), 1.0);
    EXPECT_EQ(RoundHalfAway(std::nextafter(-0.5, 0.0)), -1.0);
}

TEST(RoundHalfAway, NotANumberStays) {
    EXPECT_TRUE(std::isnan(RoundHalfAway(std::numeric_limits<double>::quiet_NaN())));
}

// --- normal quantile -----------------------------------------------------------------------------

TEST(NormalQuantile, FixedValues) {
    EXPECT_EQ(NormalQuantile(0.5), 0.0);
    EXPECT_EQ(NormalQuantile(0.9999998), 5.0);
    EXPECT_EQ(NormalQuantile(1.0), 5.0);
    EXPECT_EQ(NormalQuantile(1e-07), -5.0);
    EXPECT_EQ(NormalQuantile(0.0), -5.0);
}

TEST(NormalQuantile, TheCutsThemselvesAreNotCut) {
    // The quantile of 0.9999997 is 4.991217; so far out the approximation has lost digits.
    EXPECT_NEAR(NormalQuantile(0.9999997), 4.991217, 5e-3);
    EXPECT_LT(NormalQuantile(3.1e-07), -4.98);
    EXPECT_GT(NormalQuantile(3.1e-07), -5.0);
}

TEST(NormalQuantile, MatchesTheTable) {
    // Abramowitz and Stegun, table 26.5 and the common percentage points.
    const double table[][2] = {{0.75, 0.67448975},  {0.8, 0.84162123},   {0.9, 1.28155157},
                               {0.95, 1.64485363},  {0.975, 1.95996398}, {0.99, 2.32634787},
                               {0.995, 2.57582930}, {0.999, 3.09023231}, {0.9995, 3.29052673},
                               {0.9999, 3.71901649}};
    for (const auto& [p, quantile] : table) {
        EXPECT_NEAR(NormalQuantile(p), quantile, 1e-7) << p;  // the approximation is good to 1e-7
    }
}

TEST(NormalQuantile, InvertsTheErrorFunction) {
    for (int i = 1; i < 4000; ++i) {
        const double p = i / 4000.0;
        const double cdf = 0.5 * std::erfc(-NormalQuantile(p) / std::sqrt(2.0));
        ASSERT_NEAR(cdf, p, 2e-8) << p;
    }
}

TEST(NormalQuantile, IsOddAboutTheMedian) {
    for (const double p : {0.25, 0.125, 0.0625, 0.0009765625}) {  // 1 - p is exact for these
        EXPECT_EQ(NormalQuantile(p), -NormalQuantile(1.0 - p));
        EXPECT_LT(NormalQuantile(p), 0.0);
    }
}

// --- incomplete beta -----------------------------------------------------------------------------

// x^(a/2) (1-x)^(b/2) / B(a/2, b/2)
double BetaTerm(int a, int b, double x) {
    const double logBeta = std::lgamma(a / 2.0) + std::lgamma(b / 2.0) - std::lgamma((a + b) / 2.0);
    return std::exp(a / 2.0 * std::log(x) + b / 2.0 * std::log1p(-x) - logBeta);
}

constexpr double kArguments[] = {0.001, 0.05, 0.25, 0.5, 0.8, 0.999};

double Series(int a, int b, double x) {
    double d = 0.0;
    return BetaSeries(a, b, x, d);
}

TEST(BetaSeries, StartingValues) {
    for (const double x : kArguments) {
        EXPECT_NEAR(Series(1, 1, x), 2.0 / kPi * std::asin(std::sqrt(x)), 1e-14);
        EXPECT_NEAR(Series(1, 2, x), std::sqrt(x), 1e-14);
        EXPECT_NEAR(Series(2, 1, x), 1.0 - std::sqrt(1.0 - x), 1e-14);
        EXPECT_NEAR(Series(2, 2, x), x, 1e-14);
    }
}

TEST(BetaSeries, OneWholeParameterIsAPower) {
    for (const double x : kArguments) {
        for (int n = 1; n <= 30; ++n) {
            ASSERT_NEAR(Series(n, 2, x), std::pow(x, n / 2.0), 1e-13) << n << " " << x;
            ASSERT_NEAR(Series(2, n, x), 1.0 - std::pow(1.0 - x, n / 2.0), 1e-13) << n << " " << x;
        }
    }
}

TEST(BetaSeries, WholeParametersAreABinomialTail) {
    for (const double x : kArguments) {
        for (int p = 1; p <= 8; ++p) {
            for (int q = 1; q <= 8; ++q) {
                const int n = p + q - 1;
                double tail = 0.0;
                for (int k = p; k <= n; ++k) {
                    tail += std::exp(std::lgamma(n + 1.0) - std::lgamma(k + 1.0) -
                                     std::lgamma(n - k + 1.0)) *
                            std::pow(x, k) * std::pow(1.0 - x, n - k);
                }
                ASSERT_NEAR(Series(2 * p, 2 * q, x), tail, 1e-12) << p << " " << q << " " << x;
            }
        }
    }
}

TEST(BetaSeries, IsSymmetricInItsTails) {
    for (int a = 1; a <= 12; ++a) {
        for (int b = 1; b <= 12; ++b) {
            for (const double x : kArguments) {
                ASSERT_NEAR(Series(a, b, x), 1.0 - Series(b, a, 1.0 - x), 1e-12)
                    << a << " " << b << " " << x;
            }
        }
    }
}

TEST(BetaSeries, MatchesTheIntegralForHalves) {
    // With x = sin^2 the integral of the density is smooth for all halves: 2 / B times the integral
    // of sin^(a-1) cos^(b-1), by Simpson's rule.
    for (int a = 1; a <= 7; ++a) {
        for (int b = 1; b <= 9; ++b) {
            const double x = 0.37;
            const double end = std::asin(std::sqrt(x));
            const int steps = 2000;
            double sum = 0.0;
            for (int i = 0; i <= steps; ++i) {
                const double angle = end * i / steps;
                const double weight = i == 0 || i == steps ? 1.0 : (i % 2 == 1 ? 4.0 : 2.0);
                sum += weight * std::pow(std::sin(angle), a - 1) * std::pow(std::cos(angle), b - 1);
            }
            const double logBeta =
                std::lgamma(a / 2.0) + std::lgamma(b / 2.0) - std::lgamma((a + b) / 2.0);
            const double integral = sum * end / steps / 3.0 * 2.0 / std::exp(logBeta);
            ASSERT_NEAR(Series(a, b, x), integral, 1e-12) << a << " " << b;
        }
    }
}

TEST(BetaSeries, GivesTheDerivativeTerm) {
    for (int a = 1; a <= 9; ++a) {
        for (int b = 1; b <= 21; ++b) {
            for (const double x : kArguments) {
                double d = -1.0;
                BetaSeries(a, b, x, d);
                ASSERT_NEAR(d / BetaTerm(a, b, x), 1.0, 1e-12) << a << " " << b << " " << x;
            }
        }
    }
}

TEST(BetaSeries, RunsFromZeroToOne) {
    for (const auto& [a, b] : {std::pair{1, 1}, {1, 4}, {4, 1}, {2, 6}, {5, 3}}) {
        EXPECT_NEAR(Series(a, b, 0.0), 0.0, 1e-15) << a << " " << b;
        EXPECT_NEAR(Series(a, b, 1.0), 1.0, 1e-15) << a << " " << b;
    }
}

// --- Student's t ---------------------------------------------------------------------------------

// The distribution functions of few degrees of freedom in closed form.
double ClosedStudentCdf(int n, double t) {
    switch (n) {
        case 1:
            return 0.5 + std::atan(t) / kPi;
        case 2:
            return 0.5 + t / (2.0 * std::sqrt(2.0 + t * t));
        case 3: {
            const double s = t / std::sqrt(3.0);
            return 0.5 + (s / (1.0 + s * s) + std::atan(s)) / kPi;
        }
        case 4: {
            const double u = 1.0 + t * t / 4.0;
            return 0.5 + 0.375 * t / std::sqrt(u) * (1.0 - t * t / (12.0 * u));
        }
        default: {  // 5
            const double s = t / std::sqrt(5.0);
            const double u = 1.0 + s * s;
            return 0.5 + (s / u * (1.0 + 2.0 / (3.0 * u)) + std::atan(s)) / kPi;
        }
    }
}

double StudentDensity(int n, double t) {
    return std::exp(std::lgamma((n + 1) / 2.0) - std::lgamma(n / 2.0) -
                    (n + 1) / 2.0 * std::log1p(t * t / n)) /
           std::sqrt(n * kPi);
}

TEST(StudentCdf, MatchesClosedForms) {
    for (int n = 1; n <= 5; ++n) {
        for (const double t : {1e-3, 0.1, 0.7, 1.0, 2.5, 10.0, 200.0}) {
            double density = 0.0;
            EXPECT_NEAR(StudentCdf(n, t, density), ClosedStudentCdf(n, t), 1e-13) << n << " " << t;
        }
    }
}

TEST(StudentCdf, GivesTheDensity) {
    for (const int n : {1, 2, 3, 4, 5, 10, 31, 120}) {
        for (const double t : {1e-3, 0.1, 1.0, 2.5, 10.0}) {
            double density = -1.0;
            StudentCdf(n, t, density);
            EXPECT_NEAR(density / StudentDensity(n, t), 1.0, 1e-11) << n << " " << t;
        }
    }
}

TEST(StudentCdf, IntegratesItsDensity) {
    for (const int n : {6, 7, 30, 101}) {
        const double end = 2.25;
        const int steps = 2000;
        double sum = 0.0;
        for (int i = 0; i <= steps; ++i) {
            const double weight = i == 0 || i == steps ? 1.0 : (i % 2 == 1 ? 4.0 : 2.0);
            sum += weight * StudentDensity(n, end * i / steps);
        }
        double density = 0.0;
        EXPECT_NEAR(StudentCdf(n, end, density), 0.5 + sum * end / steps / 3.0, 1e-12) << n;
    }
}

TEST(StudentCdf, AtZeroTheDensityIsNotWritten) {
    for (const double t : {0.0, 1e-17, -1e-17}) {
        double density = 123.0;
        EXPECT_EQ(StudentCdf(5, t, density), 0.5);
        EXPECT_EQ(density, 123.0);
    }
}

TEST(StudentCdf, KnowsNoSignOfT) {
    for (const int n : {1, 2, 5, 12}) {
        double density = 0.0;
        double mirrored = 0.0;
        EXPECT_EQ(StudentCdf(n, -1.5, mirrored), StudentCdf(n, 1.5, density));
        EXPECT_EQ(mirrored, density);
        EXPECT_GT(mirrored, 0.0);
    }
}

TEST(StudentQuantile, FixedValues) {
    EXPECT_NEAR(StudentQuantile(1, 0.75), 1.0, 1e-15);
    EXPECT_EQ(StudentQuantile(2, 0.5), 0.0);
    EXPECT_NEAR(StudentQuantile(1, 0.5), 0.0, 1e-15);
    for (const int n : {3, 4, 10, 1000}) {
        EXPECT_EQ(StudentQuantile(n, 0.5), 0.0) << n;
    }
}

TEST(StudentQuantile, OneAndTwoDegreesAreClosedForms) {
    for (const double p : {0.5625, 0.6, 0.75, 0.9, 0.975, 0.9995}) {
        EXPECT_NEAR(StudentQuantile(1, p) / std::tan((p - 0.5) * kPi), 1.0, 1e-14);
        EXPECT_NEAR(ClosedStudentCdf(2, StudentQuantile(2, p)), p, 1e-14);
    }
}

TEST(StudentQuantile, MatchesTheTable) {
    // Percentage points of the t distribution, p and n as in the common tables. The last Newton
    // step is below 0.001, which leaves less than 1e-5.
    struct Row {
        int n;
        double p;
        double t;
    };
    const Row table[] = {
        {1, 0.975, 12.70620}, {2, 0.975, 4.30265},   {3, 0.975, 3.18245},  {4, 0.975, 2.77645},
        {5, 0.975, 2.57058},  {6, 0.975, 2.44691},   {7, 0.975, 2.36462},  {8, 0.975, 2.30600},
        {9, 0.975, 2.26216},  {10, 0.975, 2.22814},  {20, 0.975, 2.08596}, {30, 0.975, 2.04227},
        {60, 0.975, 2.00030}, {120, 0.975, 1.97993}, {3, 0.95, 2.35336},   {10, 0.95, 1.81246},
        {30, 0.95, 1.69726},  {3, 0.995, 5.84091},   {5, 0.995, 4.03214},  {10, 0.995, 3.16927},
        {30, 0.995, 2.75000}, {10, 0.9, 1.37218},    {10, 0.75, 0.69981}};
    for (const Row& row : table) {
        EXPECT_NEAR(StudentQuantile(row.n, row.p), row.t, 1.5e-5) << row.n << " " << row.p;
    }
}

TEST(StudentQuantile, InvertsTheDistributionFunction) {
    for (const int n : {3, 4, 5, 6, 9, 50, 501}) {
        for (const double p : {0.51, 0.6, 0.75, 0.9, 0.99, 0.999, 0.9999}) {
            double density = 0.0;
            EXPECT_NEAR(StudentCdf(n, StudentQuantile(n, p), density), p, 1e-6) << n << " " << p;
        }
    }
}

TEST(StudentQuantile, IsOddAboutTheMedian) {
    for (const int n : {1, 2, 3, 8}) {
        for (const double p : {0.25, 0.125, 0.0078125}) {  // 1 - p is exact for these
            EXPECT_EQ(StudentQuantile(n, p), -StudentQuantile(n, 1.0 - p)) << n << " " << p;
            EXPECT_LT(StudentQuantile(n, p), 0.0);
        }
    }
}

TEST(StudentQuantile, StartsFromTheWidenedNormalQuantile) {
    // Newton's steps on the closed distribution functions, ended as soon as one is below 0.001.
    // What the last step leaves depends on the start, and shows far above the tolerance.
    for (const int n : {3, 4, 5}) {
        for (const double p : {0.7, 0.95, 0.99}) {
            double t = std::sqrt(n / (n - 2.0)) * NormalQuantile(p);
            for (double step = 1.0; std::fabs(step) >= 0.001;) {
                step = (ClosedStudentCdf(n, t) - p) / StudentDensity(n, t);
                t -= step;
            }
            EXPECT_NEAR(StudentQuantile(n, p), t, 1e-11) << n << " " << p;
        }
    }
}

TEST(StudentQuantile, JustAboveTheMedianIsNearZero) {
    for (const double p : {std::nextafter(0.5, 1.0), 0.5 + 1e-9, 0.5 + 1e-6}) {
        EXPECT_NEAR(StudentQuantile(6, p), 0.0, 1e-5) << p;
    }
}

TEST(StudentQuantile, ManyDegreesApproachTheNormal) {
    EXPECT_NEAR(StudentQuantile(100000, 0.975), 1.95996398, 1e-4);
}

// --- robust weight -------------------------------------------------------------------------------

TEST(IggWeight, IsOneUpToTheFirstLimit) {
    EXPECT_EQ(IggWeight(0.0, 1.5, 3.0), 1.0);
    EXPECT_EQ(IggWeight(1.5, 1.5, 3.0), 1.0);
    EXPECT_EQ(IggWeight(-1.5, 1.5, 3.0), 1.0);
    EXPECT_EQ(IggWeight(0.0, 0.0, 3.0), 1.0);
}

TEST(IggWeight, FallsBetweenTheLimits) {
    // Only the second factor is squared: (2/3) (2/3)^2.
    EXPECT_NEAR(IggWeight(3.0, 2.0, 5.0), 8.0 / 27.0, 1e-16);
    EXPECT_NEAR(IggWeight(-3.0, 2.0, 5.0), 8.0 / 27.0, 1e-16);
    EXPECT_NEAR(IggWeight(4.0, 2.0, 6.0), 0.125, 1e-16);
    EXPECT_NEAR(IggWeight(std::nextafter(2.0, 3.0), 2.0, 5.0), 1.0, 1e-14);
    double last = 1.0;
    for (double u = 2.125; u <= 5.0; u += 0.125) {
        const double weight = IggWeight(u, 2.0, 5.0);
        EXPECT_LT(weight, last) << u;
        last = weight;
    }
}

TEST(IggWeight, IsZeroFromTheSecondLimitOn) {
    EXPECT_EQ(IggWeight(5.0, 2.0, 5.0), 0.0);
    EXPECT_EQ(IggWeight(std::nextafter(5.0, 6.0), 2.0, 5.0), 0.0);
    EXPECT_EQ(IggWeight(-1000.0, 2.0, 5.0), 0.0);
    EXPECT_EQ(IggWeight(std::numeric_limits<double>::infinity(), 2.0, 5.0), 0.0);
}

TEST(IggWeight, EqualLimitsMakeAStep) {
    EXPECT_EQ(IggWeight(2.0, 2.0, 2.0), 1.0);
    EXPECT_EQ(IggWeight(std::nextafter(2.0, 3.0), 2.0, 2.0), 0.0);
    EXPECT_EQ(IggWeight(-2.5, 2.0, 2.0), 0.0);
}

TEST(IggWeight, NotANumberHasNoWeight) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(IggWeight(nan, 2.0, 5.0), 0.0);
    EXPECT_EQ(IggWeight(-nan, 2.0, 2.0), 0.0);
}

}  // namespace
