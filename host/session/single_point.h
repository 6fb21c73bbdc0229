// The position of a station from its own code observations: a least-squares fix good to some
// metres, to start from where the header gives no position and to check the one it gives.
//
// At each of up to 40 epochs, spread over the session, the position and one receiver clock per
// system are estimated from the code of all systems; the ionosphere-free combination where both frequencies are there, else the first frequency as it is. A standard
// troposphere is taken off. The result is the median of the epochs in each coordinate, which a few
// bad epochs do not move.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "session/ephemerides.h"
#include "session/geodesy.h"
#include "session/signals.h"

namespace vornel::session {

struct CodeFix {
    Vector3 position{};      // m, ECEF: the antenna, which is within metres of the marker
    double spread = 0.0;     // m, median distance of the epochs' fixes from it
    std::size_t epochs = 0;  // that gave a fix
};

// `epochs` are indices into the observations. Nothing when fewer than 1 epoch gives a fix.
std::optional<CodeFix> FixFromCode(const io::Observations& observations,
                                   const std::vector<std::size_t>& epochs,
                                   const SignalReader& reader, const Ephemerides& ephemerides,
                                   GalileoSignals galileo);

// The fix of one epoch from prepared values; for tests. `time` is the receiver's time tag.
std::optional<Vector3> FixOneEpoch(const std::vector<SignalValues>& values, const io::GpsTime& time,
                                   const Ephemerides& ephemerides, GalileoSignals galileo);

}  // namespace vornel::session
