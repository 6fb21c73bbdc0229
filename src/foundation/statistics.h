// Rounding, quantiles and the robust weight.
#pragma once

namespace vornel {

// The nearest integer, halves away from zero.
double RoundHalfAway(double x);

// Quantile of the standard normal distribution (Toda's approximation), cut to -5 and 5.
double NormalQuantile(double p);

// Student's t with n degrees of freedom: the distribution function of |t| and its density (not
// written for t of about 0).
double StudentCdf(int n, double t, double& density);
double StudentQuantile(int n, double p);

// Incomplete beta function for whole numbers of halves a, b by finite sums; d gets the derivative
// term.
double BetaSeries(int a, int b, double x, double& d);

// Three-segment robust weight (IGG III) of a standardised residual u: 1 up to k0, falling to 0 at
// k1, 0 beyond, and 0 for a u that is not a number.
double IggWeight(double u, double k0, double k1);

}  // namespace vornel
