#include "preparation/normal_equations.h"

#include <cmath>

namespace vornel {

using gult::matrixT;

void CoordinateEquations::Add(const double h[3], double v, double w) {
    for (std::uint32_t i = 0; i < 3; ++i) {
        for (std::uint32_t j = 0; j < 3; ++j) {
            N(i, j) += h[i] * w * h[j];
        }
        U(i, 0) += h[i] * w * v;
        U2(i, 0) += h[i] * v;
    }
    S1 += w * v * v;
    S2 += v * v;
    ++n;
}

CoordinateStep SolveStep(CoordinateEquations& equations, XYZPosition& x) {
    const matrixT inverse = !equations.N;
    matrixT dx = inverse * equations.U;
    x = XYZPosition(x.X + dx(0, 0), x.Y + dx(1, 0), x.Z + dx(2, 0));
    CoordinateStep step;
    step.norm = std::sqrt((dx.Transpose() * dx)(0, 0));
    step.sigmaW =
        std::sqrt((equations.S1 - (equations.U.Transpose() * dx)(0, 0)) / (equations.n - 3));
    step.Q = inverse * step.sigmaW * step.sigmaW;
    step.rms = std::sqrt((equations.S2 - (equations.U2.Transpose() * dx)(0, 0)) / equations.n);
    return step;
}

}  // namespace vornel
