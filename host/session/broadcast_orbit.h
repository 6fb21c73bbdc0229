// Satellite position and clock from a broadcast record, for the host's own single-point fix and sky
// plots. The engine has its own orbits; it is reached through its public header alone, which offers
// none.
#pragma once

#include <optional>

#include "session/ephemerides.h"
#include "session/geodesy.h"

namespace vornel::session {

struct SatelliteState {
    Vector3 position{};  // m, earth-fixed at the time asked for
    double clock = 0.0;  // s, satellite clock minus system time, with the relativistic term
};

// From the healthy record of the satellite nearest in time, within the engine's reach. Keplerian orbits
// as in IS-GPS-200 (20.3.3.4), Galileo OS-SIS-ICD (5.1) and BDS-SIS-ICD (5.2.4.12, geostationary
// satellites too); GLONASS states integrated by a Runge-Kutta method in steps of at most 60 s
// (GLONASS ICD, A.3.1.2), good to some metres. Group delays are not applied, and frames not
// distinguished. Nothing without a record.
std::optional<SatelliteState> BroadcastState(const Ephemerides& ephemerides,
                                             engine::Satellite satellite, const io::GpsTime& time);

}  // namespace vornel::session
