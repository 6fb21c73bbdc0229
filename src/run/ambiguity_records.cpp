#include "run/ambiguity_records.h"

#include <algorithm>
#include <tuple>

namespace vornel {

namespace {

template <class Record>
bool InOrder(const Record& left, const Record& right) {
    return std::tie(left.firstEpoch, left.lastEpoch, left.sat) <
           std::tie(right.firstEpoch, right.lastEpoch, right.sat);
}

template <class Record>
int FindCovering(const std::vector<Record>& list, int sat, int epoch) {
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (list[i].sat == sat && list[i].firstEpoch <= epoch && epoch <= list[i].lastEpoch) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

}  // namespace

void AmbRstInfo::ResetStatistics() {
    rms1 = rms2 = 0.0;
    rows1 = rows2 = 0;
    rejected1 = rejected2 = 0;
}

AmbRstInfo TrackOf(const AmbRstInfo& source) {
    AmbRstInfo track;
    track.sat = source.sat;
    track.firstEpoch = source.firstEpoch;
    track.lastEpoch = source.lastEpoch;
    track.firstTime = source.firstTime;
    track.lastTime = source.lastTime;
    return track;
}

bool SameTrack(const AmbRstInfo& left, const AmbRstInfo& right) {
    return left.sat == right.sat && left.firstEpoch == right.firstEpoch &&
           left.lastEpoch == right.lastEpoch;
}

void SortAmbiguities(std::vector<AmbiguityPara>& list) {
    std::stable_sort(list.begin(), list.end(), InOrder<AmbiguityPara>);
}

void SortAmbiguities(std::vector<AmbRstInfo>& list) {
    std::stable_sort(list.begin(), list.end(), InOrder<AmbRstInfo>);
}

int FindAmbiguity(const std::vector<AmbRstInfo>& list, int sat, int epoch) {
    return FindCovering(list, sat, epoch);
}

int FindAmbiguity(const std::vector<AmbiguityPara>& list, int sat, int epoch) {
    return FindCovering(list, sat, epoch);
}

}  // namespace vornel
