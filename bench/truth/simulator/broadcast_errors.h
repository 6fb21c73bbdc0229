// By how much messages and tables of precise orbits miss the truth.
#pragma once

#include <array>

#include "constellation.h"
#include "geodesy.h"
#include "random.h"

namespace vornel::rough {

// Standard deviations of broadcast orbits and clocks, m: radial, along the track, across it, clock.
// For 2015 and later, after Montenbruck, Steigenberger and Hauschild (2015, GPS Solutions 19,
// 321-333; 2018, Adv. Space Res. 61, 3020-3038; 2020 for BeiDou-3): user range errors of 0.5 m (GPS),
// 0.2 m (Galileo), 0.5 m (BeiDou-3), 1 m (BeiDou-2), 1.6 m (GLONASS).
struct BroadcastSigma {
    double radial, along, across, clock;
};
BroadcastSigma BroadcastSigmaOf(const Satellite& satellite);

// Errors of one message over its hours of validity, m and m/s.
struct MessageError {
    double radial = 0.0, along = 0.0, alongRate = 0.0;
    std::array<double, 2> across{};        // at the node and a quarter of a turn later
    std::array<double, 2> eccentricity{};  // m, times the axis
    double clock = 0.0, clockRate = 0.0;
};

// The errors of one satellite's messages, one after the other: they change slowly, over some eight
// hours, and jump from each message to the next by a third of their size.
class MessageErrors {
  public:
    MessageErrors(std::uint64_t seed, const Satellite& satellite, double scale);

    // Of the message `seconds` after the one before.
    MessageError Next(double seconds);

  private:
    double Part(std::size_t i, double sigma, double seconds);

    Random random_;
    BroadcastSigma sigma_;
    double scale_;
    std::array<double, 9> slow_{};
    bool begun_ = false;
};

// Errors of a table of precise orbits: radial, along, across, each a constant of the day and a wave
// of one revolution; 15 to 25 mm in each direction, as multi-system products compare (Steigenberger
// and Montenbruck 2020, IGS MGEX comparisons: 2 to 6 cm in space).
class TableError {
  public:
    TableError(std::uint64_t seed, const Satellite& satellite, double scale);
    Vector3 At(double t) const;      // m
    double ClockAt(double t) const;  // s; 0.05 ns, over hours

  private:
    struct Component {
        double constant = 0.0, amplitude = 0.0, phase = 0.0;
    };
    std::array<Component, 3> components_{};
    Component clock_{};
    double rate_ = 0.0;  // rad/s
};

// Height of the antenna phase centre below the centre of mass, m (IGS antenna models: 0.6 to 2.7 m).
double AntennaBelowMass(const Satellite& satellite);

}  // namespace vornel::rough
