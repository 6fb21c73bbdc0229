// The statuses of a run, in words: one table for every text and decision that depends on them.
#pragma once

#include <span>
#include <string>
#include <vector>

namespace vornel::engine {

// What kind of end a status is.
enum class StatusKind {
    kNoEpochs,
    kNoPeriod,
    kNoReference,
    kTripleDifferenceFailed,
    kPassing,  // a stage done on the way; final only when an exception ended the run
    kFloatFailed,
    kFloatDone,
    kFixingFailed,
    kRatioLow,
    kRatioPassed,
    kFixedFailed,
    kFixedDone
};

struct StatusEntry {
    int status;      // VornelStatus
    int solveModel;  // VornelModel; 0 for the stages before the first float solution
    StatusKind kind;
    const char* stage;  // short, for machine-readable output
    const char* text;   // a clause for people
};

// Every status, ascending.
std::span<const StatusEntry> AllStatuses();

// Never fails: a number outside the table gives an entry with the text "unknown status".
const StatusEntry& DescribeStatus(int status);

// "first frequency", ..., "ionosphere-free"; "unknown" outside 1 to 6.
const char* SolveModelName(int solveModel);

// The statuses that a run went through, as the final one and the model tell: 12, 14, 21, ... For
// model 6 the chain runs through the wide lane first. `wideLaneRatioPassed` and
// `finalRatioPassed` tell which of the two ratio statuses stood on the way.
std::vector<int> StatusChain(int finalStatus, int solveModel, bool wideLaneRatioPassed,
                             bool finalRatioPassed);

}  // namespace vornel::engine
