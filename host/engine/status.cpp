#include "engine/status.h"

#include <VornelBlCore.h>

#include <array>

namespace vornel::engine {
namespace {

using K = StatusKind;

constexpr std::array kStatuses = {
    StatusEntry{VORNEL_STATUS_CONSTRUCTED, 0, K::kPassing, "constructed",
                "the run was not started"},
    StatusEntry{VORNEL_STATUS_STARTED, 0, K::kNoEpochs, "start",
                "no epoch was handed to the engine"},
    StatusEntry{VORNEL_STATUS_NO_PERIOD, 0, K::kNoPeriod, "periods",
                "the session gave no period to work on"},
    StatusEntry{VORNEL_STATUS_PERIODS_CUT, 0, K::kPassing, "periods", "session cut into periods"},
    StatusEntry{VORNEL_STATUS_NO_REFERENCE, 0, K::kNoReference, "reference satellites",
                "no period has a usable reference satellite"},
    StatusEntry{VORNEL_STATUS_REFERENCES_CHOSEN, 0, K::kPassing, "reference satellites",
                "reference satellites selected"},
    StatusEntry{VORNEL_STATUS_TRIPLE_FAILED, 0, K::kTripleDifferenceFailed, "triple difference",
                "the triple-difference solution failed"},
    StatusEntry{VORNEL_STATUS_TRIPLE_DONE, 0, K::kPassing, "triple difference",
                "triple-difference solution done"},
    StatusEntry{VORNEL_STATUS_WIDE_LANE_FLOAT_FAILED, VORNEL_MODEL_WIDE_LANE, K::kFloatFailed,
                "wide-lane float", "wide-lane float solution failed"},
    StatusEntry{VORNEL_STATUS_WIDE_LANE_FLOAT_DONE, VORNEL_MODEL_WIDE_LANE, K::kFloatDone,
                "wide-lane float", "wide-lane float solution done"},
    StatusEntry{VORNEL_STATUS_IONO_FREE_FLOAT_FAILED, VORNEL_MODEL_IONO_FREE, K::kFloatFailed,
                "ionosphere-free float", "ionosphere-free float solution failed"},
    StatusEntry{VORNEL_STATUS_IONO_FREE_FLOAT_DONE, VORNEL_MODEL_IONO_FREE, K::kFloatDone,
                "ionosphere-free float", "ionosphere-free float solution done"},
    StatusEntry{VORNEL_STATUS_SUM_FLOAT_FAILED, VORNEL_MODEL_SUM, K::kFloatFailed, "sum float",
                "float solution of the sum failed"},
    StatusEntry{VORNEL_STATUS_SUM_FLOAT_DONE, VORNEL_MODEL_SUM, K::kFloatDone, "sum float",
                "float solution of the sum done"},
    StatusEntry{VORNEL_STATUS_FIRST_FLOAT_FAILED, VORNEL_MODEL_FIRST, K::kFloatFailed,
                "first-frequency float", "first-frequency float solution failed"},
    StatusEntry{VORNEL_STATUS_FIRST_FLOAT_DONE, VORNEL_MODEL_FIRST, K::kFloatDone,
                "first-frequency float", "first-frequency float solution done"},
    StatusEntry{VORNEL_STATUS_SECOND_FLOAT_FAILED, VORNEL_MODEL_SECOND, K::kFloatFailed,
                "second-frequency float", "second-frequency float solution failed"},
    StatusEntry{VORNEL_STATUS_SECOND_FLOAT_DONE, VORNEL_MODEL_SECOND, K::kFloatDone,
                "second-frequency float", "second-frequency float solution done"},
    StatusEntry{VORNEL_STATUS_BOTH_FLOAT_FAILED, VORNEL_MODEL_BOTH, K::kFloatFailed,
                "two-frequency float", "two-frequency float solution failed"},
    StatusEntry{VORNEL_STATUS_BOTH_FLOAT_DONE, VORNEL_MODEL_BOTH, K::kFloatDone,
                "two-frequency float", "two-frequency float solution done"},
    StatusEntry{VORNEL_STATUS_WIDE_LANE_FIXING_FAILED, VORNEL_MODEL_WIDE_LANE, K::kFixingFailed,
                "wide-lane fixing", "fixing the wide-lane ambiguities failed"},
    StatusEntry{VORNEL_STATUS_WIDE_LANE_RATIO_LOW, VORNEL_MODEL_WIDE_LANE, K::kRatioLow,
                "wide-lane fixing", "wide-lane ambiguities found, ratio too low"},
    StatusEntry{VORNEL_STATUS_WIDE_LANE_RATIO_PASSED, VORNEL_MODEL_WIDE_LANE, K::kRatioPassed,
                "wide-lane fixing", "wide-lane ambiguities fixed, ratio passed"},
    StatusEntry{VORNEL_STATUS_IONO_FREE_FIXING_FAILED, VORNEL_MODEL_IONO_FREE, K::kFixingFailed,
                "ionosphere-free fixing", "fixing the ionosphere-free ambiguities failed"},
    StatusEntry{VORNEL_STATUS_IONO_FREE_RATIO_LOW, VORNEL_MODEL_IONO_FREE, K::kRatioLow,
                "ionosphere-free fixing", "ionosphere-free ambiguities found, ratio too low"},
    StatusEntry{VORNEL_STATUS_IONO_FREE_RATIO_PASSED, VORNEL_MODEL_IONO_FREE, K::kRatioPassed,
                "ionosphere-free fixing", "ionosphere-free ambiguities fixed, ratio passed"},
    StatusEntry{VORNEL_STATUS_SUM_FIXING_FAILED, VORNEL_MODEL_SUM, K::kFixingFailed, "sum fixing",
                "fixing the ambiguities of the sum failed"},
    StatusEntry{VORNEL_STATUS_SUM_RATIO_LOW, VORNEL_MODEL_SUM, K::kRatioLow, "sum fixing",
                "ambiguities of the sum found, ratio too low"},
    StatusEntry{VORNEL_STATUS_SUM_RATIO_PASSED, VORNEL_MODEL_SUM, K::kRatioPassed, "sum fixing",
                "ambiguities of the sum fixed, ratio passed"},
    StatusEntry{VORNEL_STATUS_FIRST_FIXING_FAILED, VORNEL_MODEL_FIRST, K::kFixingFailed,
                "first-frequency fixing", "fixing the first-frequency ambiguities failed"},
    StatusEntry{VORNEL_STATUS_FIRST_RATIO_LOW, VORNEL_MODEL_FIRST, K::kRatioLow,
                "first-frequency fixing", "first-frequency ambiguities found, ratio too low"},
    StatusEntry{VORNEL_STATUS_FIRST_RATIO_PASSED, VORNEL_MODEL_FIRST, K::kRatioPassed,
                "first-frequency fixing", "first-frequency ambiguities fixed, ratio passed"},
    StatusEntry{VORNEL_STATUS_SECOND_FIXING_FAILED, VORNEL_MODEL_SECOND, K::kFixingFailed,
                "second-frequency fixing", "fixing the second-frequency ambiguities failed"},
    StatusEntry{VORNEL_STATUS_SECOND_RATIO_LOW, VORNEL_MODEL_SECOND, K::kRatioLow,
                "second-frequency fixing", "second-frequency ambiguities found, ratio too low"},
    StatusEntry{VORNEL_STATUS_SECOND_RATIO_PASSED, VORNEL_MODEL_SECOND, K::kRatioPassed,
                "second-frequency fixing", "second-frequency ambiguities fixed, ratio passed"},
    StatusEntry{VORNEL_STATUS_BOTH_FIXING_FAILED, VORNEL_MODEL_BOTH, K::kFixingFailed,
                "two-frequency fixing", "fixing the ambiguities of both frequencies failed"},
    StatusEntry{VORNEL_STATUS_BOTH_RATIO_LOW, VORNEL_MODEL_BOTH, K::kRatioLow,
                "two-frequency fixing", "ambiguities of both frequencies found, ratio too low"},
    StatusEntry{VORNEL_STATUS_BOTH_RATIO_PASSED, VORNEL_MODEL_BOTH, K::kRatioPassed,
                "two-frequency fixing", "ambiguities of both frequencies fixed, ratio passed"},
    StatusEntry{VORNEL_STATUS_WIDE_LANE_FIXED_FAILED, VORNEL_MODEL_WIDE_LANE, K::kFixedFailed,
                "wide-lane fixed", "wide-lane fixed solution failed"},
    StatusEntry{VORNEL_STATUS_WIDE_LANE_FIXED_DONE, VORNEL_MODEL_WIDE_LANE, K::kFixedDone,
                "wide-lane fixed", "wide-lane fixed solution done"},
    StatusEntry{VORNEL_STATUS_IONO_FREE_FIXED_FAILED, VORNEL_MODEL_IONO_FREE, K::kFixedFailed,
                "ionosphere-free fixed", "ionosphere-free fixed solution failed"},
    StatusEntry{VORNEL_STATUS_IONO_FREE_FIXED_DONE, VORNEL_MODEL_IONO_FREE, K::kFixedDone,
                "ionosphere-free fixed", "ionosphere-free fixed solution done"},
    StatusEntry{VORNEL_STATUS_SUM_FIXED_FAILED, VORNEL_MODEL_SUM, K::kFixedFailed, "sum fixed",
                "fixed solution of the sum failed"},
    StatusEntry{VORNEL_STATUS_SUM_FIXED_DONE, VORNEL_MODEL_SUM, K::kFixedDone, "sum fixed",
                "fixed solution of the sum done"},
    StatusEntry{VORNEL_STATUS_FIRST_FIXED_FAILED, VORNEL_MODEL_FIRST, K::kFixedFailed,
                "first-frequency fixed", "first-frequency fixed solution failed"},
    StatusEntry{VORNEL_STATUS_FIRST_FIXED_DONE, VORNEL_MODEL_FIRST, K::kFixedDone,
                "first-frequency fixed", "first-frequency fixed solution done"},
    StatusEntry{VORNEL_STATUS_SECOND_FIXED_FAILED, VORNEL_MODEL_SECOND, K::kFixedFailed,
                "second-frequency fixed", "second-frequency fixed solution failed"},
    StatusEntry{VORNEL_STATUS_SECOND_FIXED_DONE, VORNEL_MODEL_SECOND, K::kFixedDone,
                "second-frequency fixed", "second-frequency fixed solution done"},
    StatusEntry{VORNEL_STATUS_BOTH_FIXED_FAILED, VORNEL_MODEL_BOTH, K::kFixedFailed,
                "two-frequency fixed", "two-frequency fixed solution failed"},
    StatusEntry{VORNEL_STATUS_BOTH_FIXED_DONE, VORNEL_MODEL_BOTH, K::kFixedDone,
                "two-frequency fixed", "two-frequency fixed solution done"},
};

constexpr StatusEntry kUnknown{-1, 0, K::kPassing, "unknown", "unknown status"};

// The status of a stage of a solve model, or -1.
int StatusOf(int solveModel, StatusKind kind) {
    for (const StatusEntry& entry : kStatuses) {
        if (entry.solveModel == solveModel && entry.kind == kind) {
            return entry.status;
        }
    }
    return -1;
}

// Appends the stages of one solve model up to `finalStatus`; answers whether it was met.
bool AppendModel(std::vector<int>& chain, int solveModel, bool ratioPassed, int finalStatus) {
    const std::array<std::array<StatusKind, 2>, 3> stages = {
        {{K::kFloatFailed, K::kFloatDone},
         {K::kFixingFailed, ratioPassed ? K::kRatioPassed : K::kRatioLow},
         {K::kFixedFailed, K::kFixedDone}}};
    for (const auto& [failed, done] : stages) {
        if (StatusOf(solveModel, failed) == finalStatus) {
            chain.push_back(finalStatus);
            return true;
        }
        chain.push_back(StatusOf(solveModel, done));
        if (chain.back() == finalStatus) {
            return true;
        }
    }
    return false;
}

}  // namespace

std::span<const StatusEntry> AllStatuses() {
    return kStatuses;
}

const StatusEntry& DescribeStatus(int status) {
    for (const StatusEntry& entry : kStatuses) {
        if (entry.status == status) {
            return entry;
        }
    }
    return kUnknown;
}

const char* SolveModelName(int solveModel) {
    constexpr std::array<const char*, 7> kNames = {
        "unknown",     "first frequency", "second frequency", "both frequencies",
        "sum of both", "wide lane",       "ionosphere-free"};
    return solveModel >= VORNEL_MODEL_FIRST && solveModel <= VORNEL_MODEL_IONO_FREE
               ? kNames[static_cast<std::size_t>(solveModel)]
               : kNames[0];
}

std::vector<int> StatusChain(int finalStatus, int solveModel, bool wideLaneRatioPassed,
                             bool finalRatioPassed) {
    std::vector<int> chain;
    for (const StatusEntry& entry : kStatuses) {
        const bool before = entry.solveModel == 0 && entry.kind == K::kPassing && entry.status > 0;
        if (before && entry.status < finalStatus) {
            chain.push_back(entry.status);
        }
    }
    if (finalStatus <= VORNEL_STATUS_TRIPLE_DONE) {
        chain.push_back(finalStatus);
        return chain;
    }
    if (solveModel == VORNEL_MODEL_IONO_FREE &&
        AppendModel(chain, VORNEL_MODEL_WIDE_LANE, wideLaneRatioPassed, finalStatus)) {
        return chain;
    }
    AppendModel(chain, solveModel, finalRatioPassed, finalStatus);
    return chain;
}

}  // namespace vornel::engine
