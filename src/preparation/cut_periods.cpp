// Which satellites take part in each epoch, and how the epochs fall into periods.
//
// Of the run, CutPeriods
//   reads   epochs (epoch, satListF1, satListF2, satListDual), solveModel, config (periodLength,
//           minEpochs), delSatList, trackList0, trackList1, trackList2
//   writes  epochs (activeSats), periods
#include <algorithm>

#include "run/static_solve.h"

namespace vornel {

namespace {

// The list of the epoch that holds the satellites of a solve model.
const std::vector<int>& UsableSatellites(const SDObsData& epoch, int solveModel) {
    switch (solveModel) {
        case VORNEL_MODEL_FIRST:
            return epoch.satListF1;
        case VORNEL_MODEL_SECOND:
            return epoch.satListF2;
        default:
            return epoch.satListDual;
    }
}

// Takes the satellites that the host left out from the epoch.
void FilterSatellites(SDObsData& epoch, const StaticSolve& solver) {
    std::vector<int>& sats = epoch.activeSats;
    std::erase_if(sats, [&](int sat) {
        for (const SatTrackList* list : {solver.trackList0, solver.trackList1, solver.trackList2}) {
            if (list != nullptr && list->IsExcluded(sat, epoch.epoch)) {
                return true;
            }
        }
        return false;
    });
    if (solver.delSatList != nullptr) {
        const std::vector<int>& deleted = *solver.delSatList;
        std::erase_if(sats, [&deleted](int sat) {
            return std::find(deleted.begin(), deleted.end(), sat) != deleted.end();
        });
    }
}

}  // namespace

int StaticSolve::CutPeriods() {
    if (epochs.empty()) {
        return VORNEL_STATUS_STARTED;
    }
    const int lastIndex = static_cast<int>(epochs.size()) - 1;
    periods.clear();
    StaticPeriod open;
    const auto openAt = [&](int index) {
        open = StaticPeriod();
        open.startTime = epochs[static_cast<std::size_t>(index)].epoch;
        open.startIndex = index;
    };
    const auto extendTo = [&](StaticPeriod& period, int index, int count) {
        period.endTime = epochs[static_cast<std::size_t>(index)].epoch;
        period.endIndex = index;
        period.epochCount += count;
    };

    openAt(0);
    int count = 0;
    for (int i = 0; i <= lastIndex; ++i) {
        SDObsData& epoch = epochs[static_cast<std::size_t>(i)];
        epoch.activeSats = UsableSatellites(epoch, solveModel);
        FilterSatellites(epoch, *this);
        ++count;
        if (epoch.epoch - open.startTime >= config.periodLength && count >= config.minEpochs) {
            extendTo(open, i, count);
            periods.push_back(open);
            count = 0;
            if (i != lastIndex) {
                openAt(i + 1);
            }
        }
    }

    // A short tail joins the last period; a first period stands however short it is.
    const double threshold = periods.empty() ? config.minEpochs : 5.0 * config.minEpochs;
    if (count > 0) {
        if (count < threshold && !periods.empty()) {
            extendTo(periods.back(), lastIndex, count);
        } else {
            extendTo(open, lastIndex, count);
            periods.push_back(open);
        }
    }
    return periods.empty() ? VORNEL_STATUS_NO_PERIOD : VORNEL_STATUS_PERIODS_CUT;
}

}  // namespace vornel
