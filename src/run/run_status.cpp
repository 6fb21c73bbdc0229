#include "run/run_status.h"

namespace vornel {

const ModelStatus& StatusOfModel(int solveModel) {
    static constexpr ModelStatus kStatus[] = {
        {40, 41, 60, 61, 62, 80, 81}, {42, 43, 63, 64, 65, 82, 83}, {44, 45, 66, 67, 68, 84, 85},
        {34, 35, 56, 57, 58, 74, 75}, {30, 31, 50, 51, 52, 70, 71}, {32, 33, 53, 54, 55, 72, 73}};
    return kStatus[solveModel >= 1 && solveModel <= 6 ? solveModel - 1 : 0];
}

}  // namespace vornel
