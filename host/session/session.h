// A session as it was decided from its files: what is handed to the engine, what was left out, and
// why. Nothing is decided silently: what the data forced, what was left out, and what the user should
// know stands in the origins, notes and warnings.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "engine/engine.h"
#include "session/ephemerides.h"
#include "session/epochs.h"
#include "session/geodesy.h"
#include "session/inputs.h"
#include "session/orbit_tables.h"
#include "session/settings.h"
#include "session/signals.h"
#include "session/single_point.h"
#include "session/station_antennas.h"

namespace vornel::session {

enum class PositionSource { kOption, kHeader, kCode };

// "--base-xyz or --rover-xyz", "header", "code observations".
const char* PositionSourceName(PositionSource source);

struct Station {
    std::string name;  // marker name, or the file's name
    io::StationHeader header;
    Vector3 position{};  // marker, ECEF metres, as handed over (rover: approximate)
    PositionSource positionSource = PositionSource::kHeader;
    std::optional<CodeFix> codeFix;     // the host's own, when it could be made
    std::optional<double> offFromCode;  // m, given position against the code fix
    double antennaHeight = 0.0;         // m, reference point above the marker
    bool heightFromOption = false;
    Vector3 eccentricity{};  // m, ECEF: reference point off the marker's vertical (north, east)
    AntennaChoice antenna;
    io::GpsTime firstEpoch;
    io::GpsTime lastEpoch;
    std::size_t epochs = 0;
};

// Satellites of the observations that the engine has no number for, or no orbit of.
struct SatellitesLeftOut {
    std::set<std::string> unnumbered;          // observed by a receiver
    std::set<engine::Satellite> withoutOrbit;  // common to both, no orbit at any epoch
    std::map<engine::Satellite, std::string> unknownChannel;  // GLONASS; the reason
};

struct Session {
    Inputs inputs;
    ConfiguredSettings settings;  // with origins of what the data forced
    engine::Config config;        // as handed over
    GalileoSignals galileo;
    Station rover;
    Station base;
    bool antennasApplied = false;
    SignalChoice signals;
    EpochPairs pairing;               // what pairing left out; its pairs are those below
    std::vector<EpochPair> pairs;     // handed over
    std::size_t lostAtTableEnds = 0;  // pairs without precise orbit, left out
    double interval = 0.0;            // s, of the pairs
    Ephemerides ephemerides;
    OrbitTables orbits;  // empty unless precise orbits are used
    bool precise = false;
    std::optional<IonosphereChoice> ionosphere;
    SatellitesLeftOut leftOut;
    std::vector<std::string> notes;     // facts worth saying
    std::vector<std::string> warnings;  // facts that may spoil the result

    io::GpsTime FirstTime() const;  // of the pairs, as the engine counts
    io::GpsTime LastTime() const;
};

}  // namespace vornel::session
