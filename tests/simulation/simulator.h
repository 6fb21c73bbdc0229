// Sessions of two receivers with exact truth: what the receivers would have recorded under a
// made-up sky.
//
// Codes and phases are formed from the positions of satellites and antennas in extended precision,
// with the travel time of the signal, the turning earth and all clocks, apart from the engine. The
// atmosphere is the engine's own, of the model asked for, so that a solution with the same model
// has nothing left to explain but noise.
//
// All signals of a satellite leave it at the moment that its first code tells.
//
//     Scenario scenario;                       // 40 epochs, four systems, rover 3 km from the base
//     scenario.slips.push_back({kRover, 5, 20, {3.0, 0.0}});
//     const Session session = Simulate(scenario);
//     const int status = RunSession(session);  // simulation/session_run.h
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "foundation/position.h"
#include "observation/ionosphere.h"
#include "observation/reference_geometry.h"
#include "run/solve_config.h"
#include "simulation/made_up_sky.h"

namespace vornel::simulation {

enum Receiver { kRover, kBase };

// The troposphere that delays the signals: none, that of the run's stages up to the float solution
// (the model of the configuration), or that of the fixed solution.
enum class Troposphere { kNone, kOfFloat, kOfFixed };

struct Antenna {
    double l1Up = 0.0;  // metres, phase centres above the reference point
    double l2Up = 0.0;
    double height = 0.0;  // metres, reference point above the marker
};

struct ReceiverClock {
    double offset = 0.0;  // s, reading minus GPS time at the first epoch
    double drift = 0.0;   // s/s
};

// The phases of a satellite jump by whole or other cycles from an epoch on.
struct Slip {
    Receiver receiver;
    int satellite;
    int epoch;
    double cycles[2];  // by signal
};

// A satellite is not received from one epoch to another, both included. signal 0 or 1: on that
// signal alone; -1: on both.
struct Gap {
    Receiver receiver;
    int satellite;
    int first;
    int last;
    int signal = -1;
};

struct Scenario {
    int week = 2200;
    double startSeconds = 131400.0;  // whole
    double interval = 30.0;          // s, whole
    int epochCount = 40;

    reference::Station base{reference::Radians(47.1L), reference::Radians(11.4L), 600.0L};
    double baseline[3] = {2100.0, -1900.0, 35.0};  // metres north, east, up at the base
    double roverError[3] = {1.5, -0.8,
                            2.1};  // metres north, east, up: what the host knows too little
    Antenna roverAntenna, baseAntenna;
    ReceiverClock roverClock{3.1e-5, 2e-10}, baseClock{-1.2e-5, -1e-10};

    // GPS, GLONASS, BDS, Galileo: how many satellites are received, those that stay highest; -1:
    // all above the horizon.
    int satellites[4] = {7, 6, 7, 7};
    double horizon = 0.2;  // rad: lower satellites are not received

    double phaseNoise = 0.00002;  // metres, of each phase
    double codeNoise = 0.1;       // metres, of each code
    double glonassBias = 0.0;     // metres for each MHz of carrier, of the rover's phases
    int ambiguityLimit = 100000;  // cycles
    std::vector<Slip> slips;
    std::vector<Gap> gaps;
    std::uint64_t seed = 1;

    Troposphere troposphere = Troposphere::kOfFixed;
    double ionosphere = 1.0;                                  // times the engine's
    std::optional<IonosphereParameters> broadcastIonosphere;  // none: the fixed diurnal model

    SolveConfig
        config;  // handed over with the session; its sampling interval is set from `interval`
};

// One receiver's side of an epoch as the exports take it: 64 slots, in order of satellite numbers.
struct ReceiverRecord {
    int week = 0;
    double seconds = 0.0;
    std::array<int, 64> satellites{};
    std::array<double, 64> code1{}, code2{}, phase1{}, phase2{};
};

struct SessionEpoch {
    ReceiverRecord rover, base;
};

struct Session {
    Scenario scenario;
    MadeUpSky sky;
    std::vector<int> satellites;  // received at any epoch, by number
    XYZPosition base;             // markers
    XYZPosition rover;            // the truth
    XYZPosition roverApproximate;
    std::vector<SessionEpoch> epochs;

    // Rover minus base ambiguity of a satellite's signal (0 or 1) at an epoch, slips included,
    // cycles.
    double SingleDifferenceAmbiguity(int satellite, int signal, int epoch) const;
};

// Sets the process-wide ionosphere and surface weather to those of the scenario, whose models then
// make the data.
Session Simulate(const Scenario& scenario);

// Carrier frequency of signal 0 or 1, Hz, from the interface documents.
double CarrierFrequency(const SolveConfig& config, int satellite, int signal);
inline double CarrierWavelength(const SolveConfig& config, int satellite, int signal) {
    return 299792458.0 / CarrierFrequency(config, satellite, signal);
}

// Of the ellipsoid WGS 84.
reference::Station StationAt(const XYZPosition& position);

}  // namespace vornel::simulation
