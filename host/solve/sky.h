// Where the satellites stood in the sky of the base, for plots.
#pragma once

#include <map>
#include <vector>

#include "solve/feed.h"

namespace vornel::solve {

struct SkyPoint {
    std::uint32_t epoch = 0;  // index of the epoch handed over
    double azimuth = 0.0;     // rad, from north over east, 0 to 2 pi
    double elevation = 0.0;   // rad
};

// The satellites that both receivers observed, at the epochs at which they did, at most one point
// per `step` seconds; from the broadcast orbits, to some thousandths of a degree. A satellite
// without broadcast record has no points.
std::map<engine::Satellite, std::vector<SkyPoint>> SkyTracks(const session::Session& session,
                                                             const FeedSummary& fed, double step);

}  // namespace vornel::solve
