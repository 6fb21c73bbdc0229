// What the host says about satellites over time: tracks with spans in which a satellite is left
// out.
#pragma once

#include <vector>

#include "foundation/epoch.h"

namespace vornel {

class SatTrack {
  public:
    int sat = 0;            // number across the systems
    bool isActive = false;  // left out at every epoch
    double value = 0.0;     // kept, read by nothing
    TimePeriod span;        // kept, read by nothing
    std::vector<TimePeriod> gaps;

    SatTrack() = default;
    SatTrack(const SatTrack&) = default;
    SatTrack& operator=(const SatTrack&) = default;
    virtual ~SatTrack() = default;

    // Whether `time` lies in a gap, both ends included.
    bool InGap(const Epoch& time) const;
};

class SatTrackList {
  public:
    std::vector<SatTrack> tracks;

    SatTrackList() = default;
    SatTrackList(const SatTrackList&) = default;
    SatTrackList& operator=(const SatTrackList&) = default;
    virtual ~SatTrackList() = default;

    // Appends the track; an earlier one of the same satellite goes, and every track after that one
    // with it.
    void Add(const SatTrack& track);
    // The first track of the satellite decides; false when there is none.
    bool IsExcluded(int sat, const Epoch& time) const;
};

}  // namespace vornel
