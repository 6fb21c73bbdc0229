// The solutions of a run, kept until the solver goes.
#pragma once

#include <vector>

#include "foundation/matrix.h"
#include "run/ambiguity_records.h"
#include "run/residuals.h"

namespace vornel {

class SolveResult {
  public:
    int mode = 0;                         // solve model
    double dX = 0.0, dY = 0.0, dZ = 0.0;  // rover minus base, ECEF metres
    double length = 0.0;                  // metres
    double horizontalDistance = 0.0;
    double heightDifference = 0.0;  // 0.0 in all records
    int dof = 0;
    double varianceFactor = 0.0;
    gult::matrixT covXYZ;  // 3 by 3, m^2, when filled; 6 by 6 zeros before
    gult::matrixT covNEU;
    double sigma3 = 0.0;            // metres
    double sigmaLength = 0.0;       // metres
    double relativeAccuracy = 0.0;  // parts per million
    double rms = 0.0;               // metres

    SolveResult() = default;
    SolveResult(const SolveResult&) = default;
    SolveResult& operator=(const SolveResult&) = default;
    virtual ~SolveResult() = default;
};

class SolveResultTD : public SolveResult {};

class SolveResultFloat : public SolveResult {
  public:
    std::vector<AmbRstInfo> ambiguities;
    gult::matrixT ambCov;  // cycles^2
    ResidualList residuals;
};

class SolveResultFixed : public SolveResult {
  public:
    double ratio = 0.0;
    std::vector<AmbRstInfo> ambiguities;
    ResidualList residuals;
};

class ResultManage {
  public:
    int solveModel = 0;
    bool summaryFlagA = false, summaryFlagB = false,
         summaryFlagC = false;  // reported, never written
    int summaryCode = 2;
    double summaryValues[12] = {};
    SolveResultTD tripleDiff;
    std::vector<SolveResultFloat> floatResults;  // in order of completion
    std::vector<SolveResultFixed> fixedResults;

    ResultManage() = default;
    ResultManage(const ResultManage&) = default;
    ResultManage& operator=(const ResultManage&) = default;
    virtual ~ResultManage() = default;

    // A copy of the first record of that solve model, an empty one with mode 0 when there is none.
    SolveResultFloat FindFloat(int mode) const;
    SolveResultFixed FindFixed(int mode) const;
};

}  // namespace vornel
