// What the float and the fixed solution do alike round their normal equations.
//
// Of the run, DropUnusedBias
//   reads   hasGlonass
//   writes  hasGlonass
// Of the run, CloseSolution
//   reads   roverPosition, basePosition
//   writes  roverPosition
#pragma once

#include "foundation/matrix.h"
#include "run/ambiguity_records.h"
#include "run/static_solve.h"

namespace vornel {

inline constexpr int kMaxPasses = 10;
inline constexpr double kFullWeightLimit = 3.0;  // residual scales: full weight up to here
inline constexpr double kUnusableRow = 99999.0;  // metres: a misclosure that gets weight 0

// The fields of an ambiguity that belong to one frequency block.
struct BlockOfTrack {
    double& value;       // cycles
    double& sumSquares;  // of residuals during a pass, m^2; then their rms, m
    int& rows;
    int& rejected;
};
BlockOfTrack BlockOf(AmbRstInfo& ambiguity, int block);

// The common parameters: rover coordinates, then with hasGlonass 1 a GLONASS bias for each block.
int CommonParameterCount(int mode, int hasGlonass);
inline std::uint32_t BiasColumn(int block) {
    return static_cast<std::uint32_t>(3 + block);
}

// Without a row that carries the bias it is no parameter any more, for the rest of the run, and
// takes no part in the misclosures. biasRows: such rows of the pass. True when it was dropped now.
bool DropUnusedBias(StaticSolve& solver, int biasRows, double bias[2]);

// Keeps a bias of value B near zero: adds its row to N, W and the unweighted right-hand side Wu.
void AddBiasConstraint(gult::matrixT& N, gult::matrixT& W, gult::matrixT& Wu, int block, double B,
                       double sigmaDd);

// Standard deviations after a solve, metres.
struct AdjustmentQuality {
    double sigma0 = 0.0;  // of unit weight
    double rms = 0.0;     // of the residuals, unweighted
};
// vPv, vv: weighted and plain sum of squares after the solve.
AdjustmentQuality QualityOf(double vPv, double vv, int dof, int rows);

// The residual scale of the next pass, metres.
double ResidualScale(double rms);

// Length of the coordinate part of a correction, metres.
double CoordinateCorrection(gult::matrixT& dx);

// Completes a record: vector, covariance, accuracies, degrees of freedom. minLength is added to a
// length of zero. Moves the solver's rover to the end of the vector.
void CloseSolution(SolveResult& result, StaticSolve& solver, const gult::matrixT& covariance,
                   const AdjustmentQuality& quality, int dof, double sigmaDd, double minLength);

}  // namespace vornel
