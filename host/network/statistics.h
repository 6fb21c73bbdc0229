// Distributions behind the tests of a network.
#pragma once

namespace vornel::network {

// P(X >= statistic) for X of the chi-square distribution; 1 for a statistic below 0.
// `dof`, here and below, is at least 1.
double ChiSquareTail(double statistic, int dof);

// The value that X exceeds with probability `tail`, 0 < tail < 1.
double ChiSquareCritical(double tail, int dof);

// The same two for the F distribution.
double FisherTail(double statistic, int dof1, int dof2);
double FisherCritical(double tail, int dof1, int dof2);

// Noncentrality at which a chi-square test of significance `level` rejects with probability `power`
// (Baarda 1968: 17.075 for one degree of freedom, 0.001 and 0.8). `level` < `power` < 1.
double Noncentrality(int dof, double level, double power);

// Significance of each of `tests` independent tests that together are wrong with probability `level`
// (Sidak 1967).
double LevelOfEach(double level, int tests);

}  // namespace vornel::network
