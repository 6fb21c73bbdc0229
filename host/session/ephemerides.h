// From the records of navigation files to those that the engine can take: chosen, converted, and
// inside the bounds of VornelBlCore.h, because the engine trusts what it is given.
//
// What is left out, and counted by reason:
//   - satellites that the engine's numbering has no place for; named
//   - records with a value that no orbit can be computed from (not finite, or outside the bounds)
//   - GLONASS records that are not healthy (the engine does not test that)
//   - of several records of a satellite for one reference time all but one, and every record that a
//     better message of the satellite serves within two hours. Order of messages: GPS LNAV, CNAV, CNV2; BeiDou D1/D2, CNV1, CNV2, CNV3; Galileo
//     I/NAV, F/NAV.
//   - records that reach no epoch of the session (further from it than the engine's reach)
//
// Messages of the CNAV family carry rates of the semi-major axis and of the mean motion that the
// engine's record has no place for. Such a record is handed over as several, each moved to another
// reference time within its two hours, so that the rates are right at each of them.
#pragma once

#include <array>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "engine/engine.h"
#include "io/navigation.h"

namespace vornel::session {

// A record with its reference time on the GPS time scale.
struct TimedKepler {
    io::GpsTime reference;
    engine::Kepler record;
};
struct TimedGlonass {
    io::GpsTime reference;
    engine::Glonass record;
};

struct Ephemerides {
    std::vector<TimedKepler> kepler;             // by satellite, then time
    std::vector<TimedGlonass> glonass;           // by slot, then time
    std::map<std::string, std::size_t> dropped;  // records left out, by reason
    std::set<std::string> unnumbered;            // satellites without place in the numbering
    std::size_t recordsRead = 0;                 // of the four systems
    std::array<std::size_t, engine::kSystemCount> taken{};  // records handed over, by system

    bool Empty() const { return kepler.empty() && glonass.empty(); }
};

// `first` and `last` are the ends of the session in GPS time.
Ephemerides SelectEphemerides(const std::vector<io::Navigation>& files, const io::GpsTime& first,
                              const io::GpsTime& last);

// Why a record cannot be handed over; nothing when it can.
std::optional<std::string> OutOfBounds(const engine::Kepler& record);
std::optional<std::string> OutOfBounds(const engine::Glonass& record);

// The record as the engine takes it. Weeks and seconds stay in the time scale of the system.
engine::Kepler ToEngineKepler(const io::KeplerRecord& record, engine::Satellite satellite);
engine::Glonass ToEngineGlonass(const io::GlonassRecord& record);

// Whether the engine has an orbit of the satellite at any of some times, which ascend: a usable
// record within reach.
bool HasOrbit(const Ephemerides& ephemerides, engine::Satellite satellite,
              const std::vector<io::GpsTime>& times);

// The ionosphere coefficients that are handed over: the first complete GPS set of the files.
struct IonosphereChoice {
    std::array<double, 4> alpha{};
    std::array<double, 4> beta{};
    std::string file;
    std::size_t line = 0;
};
std::optional<IonosphereChoice> FirstGpsIonosphere(const std::vector<io::Navigation>& files);

}  // namespace vornel::session
