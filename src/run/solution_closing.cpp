#include "run/solution_closing.h"

#include <cmath>

namespace vornel {

using gult::matrixT;

void SetBaseline(SolveResult& result, const XYZPosition& rover, const XYZPosition& base) {
    result.dX = rover.X - base.X;
    result.dY = rover.Y - base.Y;
    result.dZ = rover.Z - base.Z;
    result.length =
        std::sqrt(result.dX * result.dX + result.dY * result.dY + result.dZ * result.dZ);
}

void SetCovariance(SolveResult& result, const matrixT& covXYZ, const XYZPosition& rover) {
    result.covXYZ = covXYZ;
    matrixT rotation;
    MakeRotationNEU(rotation, rover);
    result.covNEU = rotation * covXYZ * rotation.Transpose();
}

void SetAccuracy(SolveResult& result, double length) {
    matrixT Q = result.covXYZ;
    result.sigma3 = std::sqrt(Q(0, 0) + Q(1, 1) + Q(2, 2));
    result.relativeAccuracy = result.sigma3 / length * 1000000.0;
    // Only the diagonal enters.
    result.sigmaLength = std::sqrt(result.dX * result.dX / length / length * Q(0, 0) +
                                   result.dY * result.dY / length / length * Q(1, 1) +
                                   result.dZ * result.dZ / length / length * Q(2, 2));
}

bool IsZeroBaseline(const SolveResult& result) {
    return result.length < 0.0001 && result.rms < 0.0001;
}

}  // namespace vornel
