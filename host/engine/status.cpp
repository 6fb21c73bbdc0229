#include "engine/status.h"

#include <array>

namespace vornel::engine {
namespace {

using K = StatusKind;

constexpr std::array kStatuses = {
    StatusEntry{0, 0, K::kPassing, "constructed", "the run was not started"},
    StatusEntry{10, 0, K::kNoEpochs, "start", "no epoch was handed to the engine"},
    StatusEntry{11, 0, K::kNoPeriod, "periods", "the session gave no period to work on"},
    StatusEntry{12, 0, K::kPassing, "periods", "session cut into periods"},
    StatusEntry{13, 0, K::kNoReference, "reference satellites",
                "no period has a usable reference satellite"},
    StatusEntry{14, 0, K::kPassing, "reference satellites", "reference satellites selected"},
    StatusEntry{20, 0, K::kTripleDifferenceFailed, "triple difference",
                "the triple-difference solution failed"},
    StatusEntry{21, 0, K::kPassing, "triple difference", "triple-difference solution done"},
    StatusEntry{30, 5, K::kFloatFailed, "wide-lane float", "wide-lane float solution failed"},
    StatusEntry{31, 5, K::kFloatDone, "wide-lane float", "wide-lane float solution done"},
    StatusEntry{32, 6, K::kFloatFailed, "ionosphere-free float",
                "ionosphere-free float solution failed"},
    StatusEntry{33, 6, K::kFloatDone, "ionosphere-free float",
                "ionosphere-free float solution done"},
    StatusEntry{34, 4, K::kFloatFailed, "sum float", "float solution of the sum failed"},
    StatusEntry{35, 4, K::kFloatDone, "sum float", "float solution of the sum done"},
    StatusEntry{40, 1, K::kFloatFailed, "first-frequency float",
                "first-frequency float solution failed"},
    StatusEntry{41, 1, K::kFloatDone, "first-frequency float",
                "first-frequency float solution done"},
    StatusEntry{42, 2, K::kFloatFailed, "second-frequency float",
                "second-frequency float solution failed"},
    StatusEntry{43, 2, K::kFloatDone, "second-frequency float",
                "second-frequency float solution done"},
    StatusEntry{44, 3, K::kFloatFailed, "two-frequency float",
                "two-frequency float solution failed"},
    StatusEntry{45, 3, K::kFloatDone, "two-frequency float", "two-frequency float solution done"},
    StatusEntry{50, 5, K::kFixingFailed, "wide-lane fixing",
                "fixing the wide-lane ambiguities failed"},
    StatusEntry{51, 5, K::kRatioLow, "wide-lane fixing",
                "wide-lane ambiguities found, ratio too low"},
    StatusEntry{52, 5, K::kRatioPassed, "wide-lane fixing",
                "wide-lane ambiguities fixed, ratio passed"},
    StatusEntry{53, 6, K::kFixingFailed, "ionosphere-free fixing",
                "fixing the ionosphere-free ambiguities failed"},
    StatusEntry{54, 6, K::kRatioLow, "ionosphere-free fixing",
                "ionosphere-free ambiguities found, ratio too low"},
    StatusEntry{55, 6, K::kRatioPassed, "ionosphere-free fixing",
                "ionosphere-free ambiguities fixed, ratio passed"},
    StatusEntry{56, 4, K::kFixingFailed, "sum fixing", "fixing the ambiguities of the sum failed"},
    StatusEntry{57, 4, K::kRatioLow, "sum fixing", "ambiguities of the sum found, ratio too low"},
    StatusEntry{58, 4, K::kRatioPassed, "sum fixing", "ambiguities of the sum fixed, ratio passed"},
    StatusEntry{60, 1, K::kFixingFailed, "first-frequency fixing",
                "fixing the first-frequency ambiguities failed"},
    StatusEntry{61, 1, K::kRatioLow, "first-frequency fixing",
                "first-frequency ambiguities found, ratio too low"},
    StatusEntry{62, 1, K::kRatioPassed, "first-frequency fixing",
                "first-frequency ambiguities fixed, ratio passed"},
    StatusEntry{63, 2, K::kFixingFailed, "second-frequency fixing",
                "fixing the second-frequency ambiguities failed"},
    StatusEntry{64, 2, K::kRatioLow, "second-frequency fixing",
                "second-frequency ambiguities found, ratio too low"},
    StatusEntry{65, 2, K::kRatioPassed, "second-frequency fixing",
                "second-frequency ambiguities fixed, ratio passed"},
    StatusEntry{66, 3, K::kFixingFailed, "two-frequency fixing",
                "fixing the ambiguities of both frequencies failed"},
    StatusEntry{67, 3, K::kRatioLow, "two-frequency fixing",
                "ambiguities of both frequencies found, ratio too low"},
    StatusEntry{68, 3, K::kRatioPassed, "two-frequency fixing",
                "ambiguities of both frequencies fixed, ratio passed"},
    StatusEntry{70, 5, K::kFixedFailed, "wide-lane fixed", "wide-lane fixed solution failed"},
    StatusEntry{71, 5, K::kFixedDone, "wide-lane fixed", "wide-lane fixed solution done"},
    StatusEntry{72, 6, K::kFixedFailed, "ionosphere-free fixed",
                "ionosphere-free fixed solution failed"},
    StatusEntry{73, 6, K::kFixedDone, "ionosphere-free fixed",
                "ionosphere-free fixed solution done"},
    StatusEntry{74, 4, K::kFixedFailed, "sum fixed", "fixed solution of the sum failed"},
    StatusEntry{75, 4, K::kFixedDone, "sum fixed", "fixed solution of the sum done"},
    StatusEntry{80, 1, K::kFixedFailed, "first-frequency fixed",
                "first-frequency fixed solution failed"},
    StatusEntry{81, 1, K::kFixedDone, "first-frequency fixed",
                "first-frequency fixed solution done"},
    StatusEntry{82, 2, K::kFixedFailed, "second-frequency fixed",
                "second-frequency fixed solution failed"},
    StatusEntry{83, 2, K::kFixedDone, "second-frequency fixed",
                "second-frequency fixed solution done"},
    StatusEntry{84, 3, K::kFixedFailed, "two-frequency fixed",
                "two-frequency fixed solution failed"},
    StatusEntry{85, 3, K::kFixedDone, "two-frequency fixed", "two-frequency fixed solution done"},
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
    return solveModel >= 1 && solveModel <= 6 ? kNames[static_cast<std::size_t>(solveModel)]
                                              : kNames[0];
}

std::vector<int> StatusChain(int finalStatus, int solveModel, bool wideLaneRatioPassed,
                             bool finalRatioPassed) {
    constexpr int kTripleDifferenceDone = 21;
    constexpr int kWideLane = 5;
    constexpr int kIonosphereFree = 6;
    std::vector<int> chain;
    for (const StatusEntry& entry : kStatuses) {
        const bool before = entry.solveModel == 0 && entry.kind == K::kPassing && entry.status > 0;
        if (before && entry.status < finalStatus) {
            chain.push_back(entry.status);
        }
    }
    if (finalStatus <= kTripleDifferenceDone) {
        chain.push_back(finalStatus);
        return chain;
    }
    if (solveModel == kIonosphereFree &&
        AppendModel(chain, kWideLane, wideLaneRatioPassed, finalStatus)) {
        return chain;
    }
    AppendModel(chain, solveModel, finalRatioPassed, finalStatus);
    return chain;
}

}  // namespace vornel::engine
