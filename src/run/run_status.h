// Where a run stands, or ended.
#pragma once

#include "VornelBlCore.h"

namespace vornel {

// The numbers that the status (VornelStatus) takes for a solve model.
struct ModelStatus {
    int floatFailed, floatDone;
    int fixFailed, ratioLow, ratioPassed;
    int fixedFailed, fixedDone;
};

// Any model outside 2 to 6 has the numbers of model 1.
const ModelStatus& StatusOfModel(int solveModel);

}  // namespace vornel
