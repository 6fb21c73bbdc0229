// The pieces of the fixed solution that can be told alone: variances, covariances and robust
// weights of the double differences of an epoch.
#pragma once

#include <vector>

#include "foundation/matrix.h"

namespace vornel {

// Fills the covariance for a row that takes no part, so that it can be inverted.
inline constexpr double kUnknownVariance = 9999.0;

// A-priori variance, m^2, of a satellite's part in a double difference: constant, with elevation
// (radians), and with the length of the baseline (metres), for the phase combination coefA, coefB.
double PhaseVariance(int system, double elevation, double baselineLength, double coefA,
                     double coefB);

// The same from the sine of the elevation.
double PhaseVarianceOfSine(int system, double sine, double baselineLength, double coefA,
                           double coefB);

// Covariance of the double differences of a block. counts: rows of each of systemCount systems, in
// row order; qr, qs: variances of each row's reference and satellite. Rows of a system share their
// reference.
gult::matrixT CovOfDoubleDifferences(const int* counts, int systemCount,
                                     const std::vector<double>& qr, const std::vector<double>& qs,
                                     int size);

// Robust weights of the misclosures L (size by 1, metres) against their median.
std::vector<double> MedianWeights(const std::vector<double>& qr, const std::vector<double>& qs,
                                  gult::matrixT L, int size);

std::vector<double> MedianWeights(const std::vector<double>& qr, const std::vector<double>& qs,
                                  const std::vector<double>& misclosures);

// Multiplies the diagonal of D by the weights.
void ApplyWeights(int size, const std::vector<double>& weights, gult::matrixT& D);

// Weight matrix sigma^2 C^-1, its elements scaled by the roots of D's diagonal.
gult::matrixT WeightFromCovariance(double sigma, const gult::matrixT& C, gult::matrixT D);

}  // namespace vornel
