#include "run/sat_track.h"

#include <algorithm>

namespace vornel {

bool SatTrack::InGap(const Epoch& time) const {
    return std::any_of(gaps.begin(), gaps.end(), [&time](const TimePeriod& gap) {
        return gap.start <= time && time <= gap.end;
    });
}

void SatTrackList::Add(const SatTrack& track) {
    // The track may stand in this very list.
    const SatTrack added = track;
    const auto holdsSatellite = [this, &added] {
        return std::any_of(tracks.begin(), tracks.end(),
                           [&added](const SatTrack& other) { return other.sat == added.sat; });
    };
    // Blunt, and kept so: as long as the satellite stands anywhere in the list, the last track
    // goes, so that an earlier track of the satellite takes all behind it along.
    for (std::size_t i = tracks.size(); i-- > 0;) {
        if (holdsSatellite()) {
            tracks.erase(tracks.begin() + static_cast<std::ptrdiff_t>(i));
        }
    }
    tracks.push_back(added);
}

bool SatTrackList::IsExcluded(int sat, const Epoch& time) const {
    for (const SatTrack& track : tracks) {
        if (track.sat == sat) {
            return track.isActive || track.InGap(time);
        }
    }
    return false;
}

}  // namespace vornel
