// The numbers that a run's status takes for each solve model.
#pragma once

namespace vornel {

struct ModelStatus {
    int floatFailed, floatDone;
    int fixFailed, ratioLow, ratioPassed;
    int fixedFailed, fixedDone;
};

// Any model outside 2 to 6 has the numbers of model 1.
const ModelStatus& StatusOfModel(int solveModel);

}  // namespace vornel
