// Where a run stands, or ended.
#pragma once

namespace vornel {

// Up to the first solution.
namespace run_status {
inline constexpr int kConstructed = 0;
inline constexpr int kStarted = 10;
inline constexpr int kNoPeriod = 11;
inline constexpr int kPrepared = 12;
inline constexpr int kNoReference = 13;
inline constexpr int kReferencesSelected = 14;
inline constexpr int kTripleDifferenceFailed = 20;
inline constexpr int kTripleDifferenceDone = 21;
}  // namespace run_status

// The numbers that the status takes for a solve model.

struct ModelStatus {
    int floatFailed, floatDone;
    int fixFailed, ratioLow, ratioPassed;
    int fixedFailed, fixedDone;
};

// Any model outside 2 to 6 has the numbers of model 1.
const ModelStatus& StatusOfModel(int solveModel);

}  // namespace vornel
