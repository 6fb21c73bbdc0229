// What every solution derives from its vector and covariance.
#pragma once

#include "foundation/position.h"
#include "run/solution_records.h"

namespace vornel {

// Fills dX, dY, dZ and length from the two stations.
void SetBaseline(SolveResult& result, const XYZPosition& rover, const XYZPosition& base);

// Fills covXYZ and its rotation into north, east, up at the rover.
void SetCovariance(SolveResult& result, const gult::matrixT& covXYZ, const XYZPosition& rover);

// Fills sigma3, and relativeAccuracy and sigmaLength over `length` (metres), the record's own or
// one kept off zero.
void SetAccuracy(SolveResult& result, double length);

// Whether both the length and the rms are below a tenth of a millimetre: accuracies mean nothing
// then.
bool IsZeroBaseline(const SolveResult& result);

}  // namespace vornel
