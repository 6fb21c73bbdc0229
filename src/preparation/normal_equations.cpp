#include "preparation/normal_equations.h"

#include <cmath>

namespace vornel {

using gult::matrixT;

namespace {

matrixT Column(const double values[3]) {
    const double* const rows[3] = {values, values + 1, values + 2};
    return matrixT(3, 1, rows);
}

}  // namespace

void CoordinateEquations::Add(const double h[3], double v, double w) {
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            N[i][j] += h[i] * w * h[j];
        }
        U[i] += h[i] * w * v;
        U2[i] += h[i] * v;
    }
    S1 += w * v * v;
    S2 += v * v;
    ++n;
}

void CoordinateEquations::AddConstraint(matrixT weight, const matrixT& misclosure) {
    matrixT weighted = weight * misclosure;
    for (std::uint32_t i = 0; i < 3; ++i) {
        for (std::uint32_t j = 0; j < 3; ++j) {
            N[i][j] += weight(i, j);
        }
        U[i] += weighted(i, 0);
    }
}

CoordinateStep SolveStep(const CoordinateEquations& equations, XYZPosition& x) {
    const double* const rows[3] = {equations.N[0], equations.N[1], equations.N[2]};
    const matrixT inverse = !matrixT(3, 3, rows);
    const matrixT U = Column(equations.U);
    matrixT dx = inverse * U;
    x = XYZPosition(x.X + dx(0, 0), x.Y + dx(1, 0), x.Z + dx(2, 0));
    CoordinateStep step;
    step.norm = std::sqrt((dx.Transpose() * dx)(0, 0));
    step.sigmaW = std::sqrt((equations.S1 - (U.Transpose() * dx)(0, 0)) / (equations.n - 3));
    step.Q = inverse * step.sigmaW * step.sigmaW;
    step.rms =
        std::sqrt((equations.S2 - (Column(equations.U2).Transpose() * dx)(0, 0)) / equations.n);
    return step;
}

}  // namespace vornel
