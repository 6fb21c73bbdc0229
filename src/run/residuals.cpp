#include "run/residuals.h"

#include <algorithm>

#include "foundation/conversion.h"

namespace vornel {

namespace {

// The points of a kind; nullptr for a kind that does not exist.
std::vector<ResidualPoint>* PointsOfKind(Residual& residual, int kind) {
    switch (kind) {
        case 0:
            return &residual.firstBlock;
        case 1:
            return &residual.secondBlock;
        default:
            return nullptr;
    }
}

}  // namespace

void ResidualList::Add(int kind, int sat, const Epoch& time, double value) {
    auto entry = std::find_if(entries.begin(), entries.end(),
                              [sat](const auto& candidate) { return candidate.first == sat; });
    if (entry == entries.end()) {
        entry = entries.insert(entries.end(), {sat, Residual()});
    }
    std::vector<ResidualPoint>* points = PointsOfKind(entry->second, kind);
    if (points == nullptr) {
        return;
    }
    bool& ascends = entry->second.ascends[kind];
    ascends = ascends && (points->empty() || points->back().time < time);
    // A time behind all others, the usual case within a pass, needs no search for itself.
    if (!ascends) {
        const auto sameTime =
            std::find_if(points->begin(), points->end(),
                         [&time](const ResidualPoint& point) { return point.time == time; });
        if (sameTime != points->end()) {
            points->erase(sameTime);
        }
    }
    points->push_back({time, TruncateToInt(value * 1000.0)});
}

const Residual& ResidualList::Find(int sat) const {
    for (const auto& [entrySat, residual] : entries) {
        if (entrySat == sat) {
            return residual;
        }
    }
    return emptyResidual;
}

}  // namespace vornel
