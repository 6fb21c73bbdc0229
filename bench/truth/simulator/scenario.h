// What is simulated: when, where, with what equipment, and how rough the world is. A scenario is a
// value: the same scenario gives the same session, to the bit.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "geodesy.h"
#include "io/gnss_time.h"
#include "io/satellite.h"

namespace vornel::rough {

// How strongly each effect acts: 0 not at all, 1 as published (the sources stand where each effect
// is worked out), anything between or beyond scales its magnitude.
struct Effects {
    double broadcastError = 1.0;    // of orbits and clocks
    double preciseError = 1.0;      // of tabulated orbits and clocks
    double satelliteAntenna = 1.0;  // centre of mass in tables, antenna in messages
    double lunisolar = 1.0;         // of GLONASS satellites, constant in their messages

    static Effects None();
};

// One tracking code of a receiver: band and attribute as in the observation codes of RINEX 3.
struct Tracking {
    io::GnssSystem system = io::GnssSystem::kGps;
    char band = '1';
    char attribute = 'C';

    friend bool operator==(const Tracking&, const Tracking&) = default;
};

// How a receiver's clock and the time tags of its observations behave.
enum class ClockStyle {
    kSteered,  // kept on GPS time to some tens of nanoseconds; tags on the full second
    kJumping,  // runs free, set by a millisecond whenever half of one is reached; tags on the full
               // second of that clock; code and phase follow the clock
    kFree,     // runs free for the whole session; tags on the full second of that clock
    kTagged    // runs free; tags tell the moment in GPS time, off the full second
};

struct Receiver {
    std::string type = "ROUGH WORLD";
    std::string serial = "0001";
    std::vector<Tracking> signals;
    ClockStyle clock = ClockStyle::kSteered;
    double clockOffset = 0.0;  // s, at the start of the scenario; kTagged: of the tags
    double clockDrift = 0.0;   // s/s
};

struct Site {
    std::string name;
    Vector3 marker{};  // m, earth-fixed
};

// A receiver that stands on a site for a time.
struct Occupation {
    std::size_t site = 0;
    Receiver receiver;
    double start = 0.0;                    // s after the start of the scenario
    double duration = 0.0;                 // s
    double antennaHeight = 0.0;            // m, of the reference point above the marker
    std::optional<double> headerHeight;    // m, where the header tells another
    std::array<double, 2> centring{};      // m, north and east of the marker, that nobody knows of
    std::optional<Vector3> headerOffset =  // m, north, east, up: position of the header against
        Vector3{};                         // the marker; empty: the header has none
};

struct Scenario {
    std::uint64_t seed = 0;
    io::GpsTime start;       // whole seconds
    double duration = 0.0;   // s
    double interval = 30.0;  // s
    std::vector<Site> sites;
    std::vector<Occupation> occupations;
    std::array<bool, io::kSystemCount> systems = {true, true, true, true, false, false, false};
    std::optional<double> preciseInterval;  // s; tables of precise orbits are given
    Effects effects;
};

// Tracking codes of receivers: all that a geodetic one with two frequencies gives, or the first
// frequency alone.
std::vector<Tracking> GeodeticSignals();
std::vector<Tracking> SingleFrequencySignals();

}  // namespace vornel::rough
