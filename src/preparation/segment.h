// An open ambiguity segment of a satellite, as the slip stages extend and close it.
//
// Of the run, RemoveFromEpochsBefore
//   reads   epochs (activeSats)
//   writes  epochs (activeSats)
#pragma once

#include <vector>

#include "run/ambiguity_records.h"
#include "run/static_solve.h"

namespace vornel {

struct Segment {
    int arcStart = -1;  // epoch indices; -1: not begun
    int arcEnd = -1;

    void Extend(int epochIndex) {
        if (arcStart == -1) {
            arcStart = epochIndex;
        }
        arcEnd = epochIndex;
    }

    // Files the segment up to `end`, unless it is shorter than minEpochs.
    void Close(int sat, int end, double minEpochs, std::vector<AmbiguityPara>& paras) const {
        if (end - arcStart >= minEpochs - 1 && arcStart >= 0 && end >= 0) {
            paras.emplace_back(sat, arcStart, end);
        }
    }
};

// A value remembered from an earlier epoch; -1.0: none.
struct Remembered {
    double epochIndex = -1.0;
    double value = 0.0;
};

// Takes a satellite out of the `count` epochs before epoch e, as far as they exist; how many it
// left.
inline int RemoveFromEpochsBefore(StaticSolve& solver, int sat, int e, int count) {
    int removed = 0;
    for (int i = e - count < 0 ? 0 : e - count; i < e; ++i) {
        SDObsData& epoch = solver.epochs[static_cast<std::size_t>(i)];
        if (epoch.IsActive(sat)) {
            epoch.RemoveActive(sat);
            ++removed;
        }
    }
    return removed;
}

}  // namespace vornel
