// A direct search for the integers in the position domain: every candidate vector near the float
// one is tried on the double differences themselves, with the coordinates solved for each.
#pragma once

#include <vector>

#include "foundation/matrix.h"

namespace vornel {

// Double differences of a session, a block for each epoch (and frequency).
struct EpochEquations {
    std::vector<gult::matrixT> y;                  // misclosures with the ambiguity in them, metres
    std::vector<std::vector<int>> ambiguityIndex;  // of each row
    std::vector<std::vector<double>> wavelength;   // of each row's ambiguity, metres
    std::vector<gult::matrixT> B;                  // design in the three coordinates
};

struct IntegerPair {
    std::vector<double> best, second;  // cycles
    double s1 = 0.0, s2 = 0.0;         // their sums of squares; both 0 when nothing was evaluated
};

// a: float ambiguities (cycles), n by 1. Q: their covariance. dof: of the float solution, for the
// width of the search; below 1 nothing is evaluated.
IntegerPair SearchIntegers(gult::matrixT a, gult::matrixT Q, int dof, EpochEquations& equations);

}  // namespace vornel
