// The satellites of a world: where they truly are, what their clocks truly show, and what messages
// and tables of precise orbits say of them.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "constellation.h"
#include "io/navigation.h"
#include "io/precise_orbits.h"
#include "orbit.h"
#include "scenario.h"

namespace vornel::rough {

// A satellite clock: a straight line and a random walk, s.
class ClockTruth {
  public:
    ClockTruth() = default;
    // A caesium or rubidium clock: the random walk of the phase follows an Allan deviation of
    // 5e-12 at 1 s, falling with the root of the time (Senior, Ray and Beard 2008, GPS Solutions 12,
    // 211-225, for the newer rubidium clocks).
    ClockTruth(std::uint64_t seed, const Satellite& satellite, double roughness, double from,
               double to);

    double At(double t) const { return offset_ + drift_ * t + WalkAt(t); }
    double drift() const { return drift_; }

  private:
    static constexpr double kStep = 300.0;  // s, of the walk's nodes
    double WalkAt(double t) const;

    double offset_ = 0.0;  // s
    double drift_ = 0.0;   // s/s
    double firstTime_ = 0.0;
    std::vector<double> walk_;
};

// Delay of the first signal in the satellite's hardware against the combination free of the
// ionosphere, s: 1 to 10 ns (group delay of the messages).
double GroupDelayOf(std::uint64_t seed, const Satellite& satellite);

class Sky {
  public:
    // Satellites of the scenario's systems but for some that are out of order, from some minutes before its start to its end. Times are
    // seconds since `origin`, a quarter of an hour of UTC before the start.
    explicit Sky(const Scenario& scenario);

    const io::GpsTime& origin() const { return origin_; }
    double startTime() const { return startTime_; }  // of the scenario, s

    const std::vector<Satellite>& satellites() const { return satellites_; }
    // Antenna phase centre, m, earth-fixed at t.
    Vector3 PositionAt(std::size_t satellite, double t) const {
        return bodies_[satellite].path.At(t);
    }
    // Clock of the satellite against GPS time, s, the periodic relativistic part included.
    double ClockAt(std::size_t satellite, double t) const;

    // Messages of the whole span: GPS every 2 hours, BeiDou every hour, Galileo and GLONASS every
    // half hour.
    io::Navigation Messages() const;

    // Tables from an hour and a half before the start to as much behind the end.
    io::PreciseOrbits PreciseTables(double interval) const;

  private:
    struct Body {
        std::unique_ptr<KeplerMotion> kepler;    // not GLONASS
        std::unique_ptr<GlonassMotion> glonass;  // GLONASS
        Path path;
        ClockTruth clock;
    };

    io::GpsTime TimeAt(double t) const;
    void AddKeplerMessages(std::size_t satellite, io::Navigation& messages) const;
    void AddGlonassMessages(std::size_t satellite, io::Navigation& messages) const;
    Vector3 AnyPositionAt(std::size_t satellite, double t) const;

    std::uint64_t seed_;
    Effects effects_;
    double messageScale_;
    io::GpsTime origin_;
    double startTime_ = 0.0;
    double endTime_ = 0.0;
    std::vector<Satellite> satellites_;
    std::vector<Body> bodies_;
};

}  // namespace vornel::rough
