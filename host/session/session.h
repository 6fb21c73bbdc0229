// One baseline, from the files read to the engine's answer.
//
//   Inputs inputs = ReadInputs(...);
//   Session session = PrepareSession(std::move(inputs), settings);   decides everything
//   Engine engine;
//   FeedSummary fed = Feed(session, engine, options);                the calls, in their order
//   RunOutcome outcome = Run(session, engine);                       the engine's results
//
// Nothing is decided silently: what the data forced, what was left out, and what the user should
// know stands in the session's origins, notes and warnings.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "session/engine.h"
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
    std::set<std::string> unnumbered;                       // observed by a receiver
    std::set<EngineSatellite> withoutOrbit;                 // common to both, no orbit at any epoch
    std::map<EngineSatellite, std::string> unknownChannel;  // GLONASS; the reason
};

struct Session {
    Inputs inputs;
    ConfiguredSettings settings;  // with origins of what the data forced
    EngineConfig config;          // as handed over
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

// Throws SessionFault when no run makes sense.
Session PrepareSession(Inputs inputs, ConfiguredSettings settings);

// What is kept of the observations while reading, by the settings.
io::ObservationSelection SelectionFor(const Settings& settings);

// Told while work goes on; `total` 0 when it is not known.
using Progress = std::function<void(const char* what, std::size_t done, std::size_t total)>;

struct FeedOptions {
    std::string tracePath;  // empty: no trace
    int traceLevel = 4;
    Progress progress;  // may be empty
};

struct SystemFeed {
    std::size_t epochs = 0;  // with at least one common satellite
    std::size_t satellites = 0;
};

struct FeedSummary {
    std::size_t epochs = 0;
    std::vector<io::GpsTime> times;  // of the epochs, as the engine counts them
    std::array<SystemFeed, kEngineSystemCount> systems{};
    // Indices of the epochs at which both receivers observed a satellite.
    std::map<EngineSatellite, std::vector<std::uint32_t>> common;
    std::set<EngineSatellite> noSlot;  // left out somewhere because an epoch takes 64
    ValueLosses roverLosses;
    ValueLosses baseLosses;
};

// Creates the process and hands everything over, in the order that VornelBlCore.h asks for:
// configuration, stations, ionosphere, broadcast and precise orbits, epochs, exclusions.
FeedSummary Feed(const Session& session, Engine& engine, const FeedOptions& options);

// How far the answer can be trusted.
enum class Acceptance { kFixed, kFloat, kTripleDifference, kNone };

const char* AcceptanceName(Acceptance acceptance);

struct RunOutcome {
    EngineResults results;   // vectors from marker to marker
    bool completed = true;   // false: an exception ended the run inside the engine
    std::vector<int> chain;  // the statuses on the way
    Acceptance acceptance = Acceptance::kNone;
    double seconds = 0.0;               // the run took
    std::vector<std::string> warnings;  // about the solution

    // The solution to be used: by acceptance the last fixed, the last float, the triple difference;
    // null with kNone.
    const Solution* Best() const;
};

RunOutcome Run(const Session& session, Engine& engine);

// The decision alone, from the status and the solutions filed.
Acceptance Judge(const EngineResults& results, double ratioThreshold);

// What speaks against trusting the solution, one sentence each.
std::vector<std::string> Doubts(const EngineResults& results, Acceptance acceptance);

}  // namespace vornel::session
