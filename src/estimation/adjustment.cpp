#include "estimation/adjustment.h"

#include <algorithm>
#include <cmath>

#include "difference/combination.h"
#include "run/solution_closing.h"

namespace vornel {

using gult::matrixT;

namespace {

constexpr double kBiasStd = 0.0025;  // divides the weight of the bias's expectation once
constexpr double kExpectedBias = 1e-06;
constexpr double kMinScale = 0.003;  // metres
constexpr double kMaxScale = 0.6;

}  // namespace

BlockOfTrack BlockOf(AmbRstInfo& ambiguity, int block) {
    if (block == kFirstBlock) {
        return {ambiguity.value1, ambiguity.rms1, ambiguity.rows1, ambiguity.rejected1};
    }
    return {ambiguity.value2, ambiguity.rms2, ambiguity.rows2, ambiguity.rejected2};
}

int CommonParameterCount(int mode, int hasGlonass) {
    return 3 + (hasGlonass == 1 ? BlockCount(mode) : 0);
}

bool DropUnusedBias(StaticSolve& solver, int biasRows, double bias[2]) {
    if (solver.hasGlonass != 1 || biasRows != 0) {
        return false;
    }
    solver.hasGlonass = 0;
    bias[0] = bias[1] = 0.0;
    return true;
}

void AddBiasConstraint(matrixT& N, matrixT& W, matrixT& Wu, int block, double B, double sigmaDd) {
    const std::uint32_t column = BiasColumn(block);
    const double weight = sigmaDd / kBiasStd;
    const double misclosure = kExpectedBias - B;
    W(column, 0) += weight * misclosure;
    Wu(column, 0) += misclosure;
    N(column, column) += weight;
}

AdjustmentQuality QualityOf(double vPv, double vv, int dof, int rows) {
    return {std::sqrt(vPv / dof), std::sqrt(std::max(vv, 1e-12) / rows)};
}

double ResidualScale(double rms) {
    return std::min(std::max(rms, kMinScale), kMaxScale);
}

double CoordinateCorrection(matrixT& dx) {
    return std::sqrt(dx(0, 0) * dx(0, 0) + dx(1, 0) * dx(1, 0) + dx(2, 0) * dx(2, 0));
}

void CloseSolution(SolveResult& result, StaticSolve& solver, const matrixT& covariance,
                   const AdjustmentQuality& quality, int dof, double sigmaDd, double minLength) {
    const XYZPosition rover = solver.roverPosition;
    const XYZPosition& base = solver.basePosition;
    SetBaseline(result, rover, base);
    result.rms = quality.rms;
    const bool zeroBaseline = IsZeroBaseline(result);
    const matrixT covXYZ = quality.rms >= 0.0001 ? SubBlock(covariance, 0, 0, 3, 3) : matrixT(3, 3);
    SetCovariance(result, covXYZ, rover);
    if (result.length < 1e-12) {
        result.length += minLength;
    }
    SetAccuracy(result, result.length);
    if (zeroBaseline) {
        result.relativeAccuracy = 0.0;
        result.sigmaLength = 0.0;
    }
    // The height difference comes from two local vectors that nothing fills, and stays 0.
    result.heightDifference = 0.0;
    result.horizontalDistance = std::sqrt(result.length * result.length -
                                          result.heightDifference * result.heightDifference);
    result.dof = dof;
    result.varianceFactor = quality.sigma0 * quality.sigma0 / (sigmaDd * sigmaDd);
    solver.roverPosition = XYZPosition(base.X + result.dX, base.Y + result.dY, base.Z + result.dZ);
}

}  // namespace vornel
