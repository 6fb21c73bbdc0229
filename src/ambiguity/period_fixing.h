// Fixing period by period: the float problem of each period, resolved by itself, and float periods
// that borrow the coordinates of fixed ones.
#pragma once

#include <vector>

#include "ambiguity/lambda_ar.h"
#include "run/ambiguity_records.h"
#include "run/period_equations.h"

namespace vornel {

// One attempt at one period.
struct PeriodFixRecord {
    int periodCount = 1;
    std::vector<int> periods;  // indices of the periods covered: one
    LambdaAR lambda;

    PeriodFixRecord() = default;
    PeriodFixRecord(int period, const LambdaAR& resolved) : periods{period}, lambda(resolved) {}

    bool CoversOnly(int period) const {
        return periodCount == 1 && periods.size() == 1 && periods.front() == period;
    }
};

class PeriodFixing {
  public:
    int model;
    double ratioThreshold;
    double ratio = 1.0;         // the largest of all periods
    PeriodEquations equations;  // a copy: the solver's own stay as the float solution left them
    std::vector<PeriodFixRecord> records;
    std::vector<AmbRstInfo> ambiguities;  // the result, sorted, without repeats

    PeriodFixing(int solveModel, double threshold, const PeriodEquations& floatEquations)
        : model(solveModel), ratioThreshold(threshold), equations(floatEquations) {}

    // Resolves every period, lets float ones borrow, and collects the integers. True when the
    // search of at least one period succeeded.
    bool Resolve();

    // Resolves period b again, with the conditioned common parameters of each fixed period as a
    // prior, and appends a record when that fixes it.
    void GetPeriodXbIWithSubXaIConstraint(int fixedCount, const int* fixedPeriods, int b);

  private:
    const PeriodFixRecord& RecordOf(int period) const;
    void Collect();
};

}  // namespace vornel
