// What is simulated: when, where, with what equipment, and how rough the world is. A scenario is a
// value: the same scenario gives the same session, to the bit. scenarios.h draws them by chance.
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
    double broadcastError = 1.0;    // of orbits and clocks, against the truth
    double preciseError = 1.0;      // of tabulated orbits and clocks
    double satelliteAntenna = 1.0;  // tables tell the centre of mass, messages the antenna
    double lunisolar = 1.0;         // on GLONASS satellites, constant in their messages
    double relativisticPath = 1.0;  // bending of signals by the earth's mass
    double windUp = 1.0;            // of the phase by the turn of the satellites
    double tide = 1.0;              // of the solid earth
    double hydrostatic = 1.0;       // troposphere
    double wet = 1.0;
    double turbulence = 1.0;  // of the wet troposphere
    double ionosphere = 1.0;
    double travellingWaves = 1.0;  // of the ionosphere
    double scintillation = 1.0;
    double phaseCentre = 1.0;  // of receiver antennas, mean and by direction
    double codeNoise = 1.0;
    double phaseNoise = 1.0;
    double multipath = 1.0;
    double canopy = 1.0;          // weakening and scattering by leaves
    double slips = 1.0;           // rate
    double gaps = 1.0;            // rate of missing epochs
    double tracking = 1.0;        // 0: every signal above the horizon, from its first epoch on
    double hardwareBiases = 1.0;  // of receivers and satellites, by system, signal and channel

    static Effects None();
};

struct Weather {
    double seaLevelPressure = 1013.25;         // hPa
    double temperature = 288.15;               // K, at sea level
    std::array<double, 2> pressureGradient{};  // hPa per 100 km, north and east
    double wetZenith = 0.12;                   // m, at sea level, at the first site
    double wetScaleHeight = 2000.0;            // m
    std::array<double, 2> wetGradient{};       // m per 100 km, north and east
    double wetDrift = 0.0;                     // m/h
    double turbulence = 2.4e-7;                // m^(-1/3)
    double windSpeed = 8.0;                    // m/s
    double windDirection = 0.0;                // rad, where it blows to
};

struct TravellingWave {
    double amplitude = 0.0;             // TECU, vertical
    double length = 200e3;              // m
    double period = 1200.0;             // s
    double azimuth = 0.0;               // rad, where it travels to
    double phase = 0.0;                 // rad
    double time = 0.0, duration = 1.0;  // s: its height, and where it has fallen to 1/e
};

struct Depletion {
    double depth = 0.0;                 // TECU, vertical
    double longitude = 0.0;             // rad, at `time`
    double width = 100e3;               // m, to 1/e
    double drift = 100.0;               // m/s eastwards
    double time = 0.0, duration = 1.0;  // s
};

struct IonosphereState {
    double dayPeak = 30.0;       // TECU at 14 h where the latitude profile is 1
    double night = 0.15;         // share of it that is left in the night
    double anomaly = 1.0;        // strength of the equatorial crests
    double roughness = 0.06;     // relative, rms, of fluctuations of 300 to 3000 km
    double scintillation = 0.0;  // 0 quiet, 1 a disturbed night
    std::vector<TravellingWave> waves;
    std::vector<Depletion> depletions;
    bool broadcast = true;         // coefficients stand in the messages
    double broadcastFactor = 1.0;  // of their amplitude against the truth
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

    // Carrier-to-noise densities, dB-Hz: first frequency in the zenith; loss from there to the
    // horizon; further loss on other frequencies, and of GPS L2 without its code (grows as the
    // square where signals are weak).
    double strengthAtZenith = 50.0;
    double strengthDrop = 14.0;
    double secondLoss = 2.0;
    double codelessLoss = 5.0;
    double codeNoise = 0.15;     // m, at 45 dB-Hz
    double phaseNoise = 0.8e-3;  // m, at 45 dB-Hz; both grow with the root of the noise density
    double correlator = 12.0;    // m: reflections that come later disturb the code no more
    double smoothing = 0.0;      // s, of the code by the phase inside the receiver

    double elevationCutoff = 0.0;     // rad
    double acquisition = 29.0;        // dB-Hz needed to begin
    double loss = 25.0;               // dB-Hz below which lock is lost
    double phaseMargin = 0.0;         // dB-Hz above `loss` that a phase needs; the code does not
    double acquisitionDelay = 20.0;   // s, mean, from a clear view to the first observation
    double dropouts = 0.0;            // per hour and satellite: short losses of a signal in view
    double settling = 0.0;            // cycles: error of a phase just locked, gone within a minute
    std::uint8_t highestBeiDou = 63;  // numbers above it are unknown to the receiver
    double slipRate = 0.01;           // per hour and signal at 45 dB-Hz; tenfold for each 12 less
    double burst = 0.5;               // probability that a slip begins a burst of them
    double slipsReported = 0.9;       // share of slips and new locks with the indicator set
    double halfCycles = 0.0;          // share of slips that are of half cycles
    double missedEpochs = 2e-4;       // share of epochs
    double gapRate = 0.0;             // per hour, of longer gaps
    double gapLength = 300.0;         // s, mean
    std::size_t channels = 0;         // satellites tracked at once; 0: all

    // Hardware biases: seed of a make. Receivers of one make share their biases to a tenth.
    std::uint64_t make = 0;
    double glonassSlope = 0.0;  // m per channel, of the phase
};

// Antenna phase centres in three groups of frequencies: about 1.6, 1.25 and 1.18 GHz.
inline constexpr std::size_t kBandGroups = 3;

struct AntennaType {
    std::string type = "ROUGH-A1";
    std::string radome = "NONE";
    bool calibrated = true;  // the offsets stand in the table of antennas that is handed over
    // Mean phase centre above the reference point, m, north, east, up, by group of frequencies.
    std::array<Vector3, kBandGroups> offset{};
    // Variation by direction, m: falling to the horizon, in the middle of the sky, by azimuth.
    std::array<double, kBandGroups> horizonVariation{};
    std::array<double, kBandGroups> middleVariation{};
    std::array<double, kBandGroups> azimuthVariation{};
    double individual = 0.0;     // m, standard deviation of one antenna's offsets from the type's
    double multipathGain = 1.0;  // of reflected signals: choke ring 0.5, patch 2
};

// Something that reflects or scatters signals into an antenna.
struct Scatterer {
    Vector3 place{};         // m, north, east, up of the antenna
    double amplitude = 0.0;  // of its signal against the direct one
    double phase = 0.0;      // rad, of the reflection
    double reach = 1.0;      // cosine of the angle from its bearing up to which satellites are seen
};

// What stands around a site. The same sky gives the same multipath on every day.
struct Surroundings {
    double groundHeight = 1.5;      // m, of the antenna above what lies below it
    double groundAmplitude = 0.05;  // of the reflection at the horizon
    std::vector<Scatterer> scatterers;
    // Height of the horizon, rad, over 72 directions from north over east; empty: free to 0.
    std::vector<double> horizon;
    double canopyLoss = 0.0;     // dB, mean, towards the zenith; grows with the way through it
    double canopyFlutter = 0.0;  // dB, rms, of the loss by leaves that move
    double canopyScatter = 0.0;  // m, rms, of the phase by leaves that move, near the zenith
};
inline constexpr std::size_t kHorizonDirections = 72;

struct Site {
    std::string name;
    Vector3 marker{};  // m, earth-fixed
    Surroundings around;
};

// A receiver that stands on a site for a time.
struct Occupation {
    std::size_t site = 0;
    Receiver receiver;
    std::optional<std::size_t> antenna;  // in Scenario::antennas; empty: the phase centre is the
                                         // reference point
    bool antennaNamed = true;            // the header names it
    std::string antennaSerial = "0001";
    double start = 0.0;                  // s after the start of the scenario
    double duration = 0.0;               // s
    double antennaHeight = 0.0;          // m, of the reference point above the marker
    std::optional<double> headerHeight;  // m, where the header tells another
    std::array<double, 2> centring{};    // m, north and east of the marker, that nobody knows of
    // Position of the header against the marker, m, north, east, up; empty: the header has none.
    std::optional<Vector3> headerOffset = Vector3{};
};

struct Scenario {
    std::uint64_t seed = 0;
    std::string kind;
    io::GpsTime start;       // whole seconds
    double duration = 0.0;   // s
    double interval = 30.0;  // s
    std::vector<Site> sites;
    std::vector<AntennaType> antennas;
    std::vector<Occupation> occupations;
    std::array<bool, io::kSystemCount> systems = {true, true, true, true, false, false, false};
    std::optional<double> preciseInterval;  // s; tables of precise orbits are handed over
    bool antennaTable = true;               // a table of the calibrated antennas is handed over
    Weather weather;
    IonosphereState ionosphere;
    double broadcastQuality = 1.0;  // of orbits and clocks: more in the years before 2010
    Effects effects;
};

// Tracking codes of receivers: all that a geodetic one with two frequencies gives, or the first
// frequency alone.
std::vector<Tracking> GeodeticSignals();
std::vector<Tracking> SingleFrequencySignals();

}  // namespace vornel::rough
