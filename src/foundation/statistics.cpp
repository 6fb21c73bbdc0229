// Rounding, quantiles of the normal and of Student's distribution, and the robust weight.
#include "foundation/statistics.h"

#include <cmath>
#include <numbers>

namespace vornel {

namespace {

constexpr double kPi = std::numbers::pi;

}  // namespace

double RoundHalfAway(double x) {
    return x > 0.0 ? std::floor(x + 0.5) : std::ceil(x - 0.5);
}

double NormalQuantile(double p) {
    // Of Toda's polynomial in y, the highest power first.
    constexpr double kCoefficients[] = {6.936233982e-13, 3.657763036e-11,  -3.231081277e-09,
                                        8.360937017e-08, -1.04527497e-06,  5.824238515e-06,
                                        6.841218299e-06, -0.0002250947176, -0.0008364353589,
                                        0.03706987906,   1.570796288};
    if (p == 0.5) {
        return 0.0;
    }
    if (p > 0.9999997) {
        return 5.0;
    }
    if (p < 3e-07) {
        return -5.0;
    }
    if (p < 0.5) {
        return -NormalQuantile(1.0 - p);
    }
    const double y = -std::log(4.0 * p * (1.0 - p));
    double polynomial = 0.0;
    for (const double coefficient : kCoefficients) {
        polynomial = polynomial * y + coefficient;
    }
    return std::sqrt(y * polynomial);
}

// The recurrence starts at the halves that share the parity of a and b and climbs in whole steps:
// first i to b, then j to a.
double BetaSeries(int a, int b, double x, double& d) {
    const bool aIsOdd = a % 2 != 0;
    const bool bIsOdd = b % 2 != 0;
    double result = 0.0;
    if (aIsOdd && bIsOdd) {
        d = std::sqrt(x * (1.0 - x)) / kPi;
        result = 1.0 - 2.0 * std::atan(std::sqrt((1.0 - x) / x)) / kPi;
    } else if (aIsOdd) {
        d = (1.0 - x) * std::sqrt(x) / 2.0;
        result = std::sqrt(x);
    } else if (bIsOdd) {
        d = std::sqrt(1.0 - x) * x / 2.0;
        result = 1.0 - std::sqrt(1.0 - x);
    } else {
        d = (1.0 - x) * x;
        result = x;
    }
    int i = bIsOdd ? 1 : 2;
    int j = aIsOdd ? 1 : 2;
    while (i != b) {
        result += 2.0 * d / i;
        d = (static_cast<double>(j) / i + 1.0) * d * (1.0 - x);
        i += 2;
    }
    while (j != a) {
        result -= 2.0 * d / j;
        d = (static_cast<double>(i) / j + 1.0) * d * x;
        j += 2;
    }
    return result;
}

// Half of the probability within |t| is added whatever the sign of t: callers have none below 0.
double StudentCdf(int n, double t, double& density) {
    if (t + 1.0 == 1.0) {
        return 0.5;
    }
    const double x = t * t / (n + t * t);
    double d = 0.0;
    const double q = BetaSeries(1, n, x, d) * 0.5;
    density = d / std::fabs(t);
    return 0.5 + q;
}

double StudentQuantile(int n, double p) {
    if (p < 0.5) {
        return -StudentQuantile(n, 1.0 - p);
    }
    if (n == 1) {
        return std::tan((p - 0.5) * kPi);
    }
    if (n == 2) {
        const double y = 2.0 * p - 1.0;
        return std::sqrt(2.0 * (y * y) / (1.0 - y * y));
    }
    double t = std::sqrt(static_cast<double>(n) / (n - 2)) * NormalQuantile(p);
    double density = 1.0;  // stands where t is 0: p is 0.5 there, and the step is none
    double step = 0.0;
    do {
        step = (StudentCdf(n, t, density) - p) / density;
        t -= step;
    } while (std::fabs(step) >= 0.001);
    return t;
}

double IggWeight(double u, double k0, double k1) {
    const double a = std::fabs(u);
    if (a <= k0) {
        return 1.0;
    }
    if (a <= k1) {
        const double fall = (k1 - a) / (k1 - k0);
        return (k0 / a) * (fall * fall);
    }
    return 0.0;
}

}  // namespace vornel
