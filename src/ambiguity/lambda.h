// Integer least squares: the m integer vectors closest to a float vector in the metric of its
// covariance (LAMBDA: Teunissen 1995; search after Chang, Yang and Zhou 2005, "MLAMBDA").
#pragma once

#include "foundation/matrix.h"

namespace vornel {

// a: n float values. Q: their covariance, n by n, element (i, j) at i + j n. F: out, m candidates
// of n integers each, one after the other; s: out, their m squared distances, ascending. False when
// n or m is below 1, when Q is not positive definite, and when the search used up its 10000 passes.
bool LambdaSearch(int n, int m, const double* a, const double* Q, double* F, double* s);

// The same on matrices, with a scale: an ambiguity more than 0.3 cycle from an integer is searched
// on half cycles. a: n by 1, Q: n by n, F, n by m, and s, 1 by m in the
// scaled metric, are filled.
// Outputs are to be read only on true.
bool ScaledLambda(int n, int m, gult::matrixT a, gult::matrixT Q, gult::matrixT& F,
                  gult::matrixT& s);
// F keeps the scaled values.
bool ScaledLambdaRaw(int n, int m, gult::matrixT a, gult::matrixT Q, gult::matrixT& F,
                     gult::matrixT& s);

// Ascending by magnitude through an exchange sort that is not stable; the order of equals is part
// of the result. index: out, where each value stood, or null.
void SortByMagnitude(int n, const int* values, int* sorted, int* index);

}  // namespace vornel
