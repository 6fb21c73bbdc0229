// Normal equations of the three rover coordinates, accumulated row by row: what the robust first
// solutions share.
#pragma once

#include "foundation/matrix.h"
#include "foundation/position.h"

namespace vornel {

class CoordinateEquations {
  public:
    double N[3][3] = {};
    double U[3] = {};   // weighted right-hand side
    double U2[3] = {};  // unweighted
    double S1 = 0.0;    // weighted sum of squares
    double S2 = 0.0;    // unweighted
    int n = 0;          // rows

    // A row with design h, misclosure v (metres) and weight w.
    void Add(const double h[3], double v, double w);
    // Adds to N and U alone. weight: 3 by 3, misclosure: 3 by 1.
    void AddConstraint(gult::matrixT weight, const gult::matrixT& misclosure);
};

// One step of the iteration.
struct CoordinateStep {
    double norm = 0.0;    // of the correction, metres
    double sigmaW = 0.0;  // of unit weight
    double rms = 0.0;     // unweighted, metres
    gult::matrixT Q;      // covariance of the coordinates
};

// Solves the equations and moves x. Throws matrix_error when they are singular.
CoordinateStep SolveStep(const CoordinateEquations& equations, XYZPosition& x);

}  // namespace vornel
