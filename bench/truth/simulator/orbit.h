// True orbits. Those of GPS, Galileo and BeiDou follow the formulas of the broadcast messages
// exactly, with one set of elements for all time, so that a broadcast record without errors gives
// the true position; those of GLONASS are integrated with its equations of motion. Times are seconds
// since the start of the world, positions earth-fixed.
#pragma once

#include <vector>

#include "constellation.h"
#include "geodesy.h"
#include "sun_moon.h"

namespace vornel::rough {

// Of the messages (IS-GPS-200 20.3.3.4.3, BDS-SIS-ICD, Galileo OS SIS ICD).
struct SystemConstants {
    double gm;         // m^3/s^2
    double earthRate;  // rad/s
};
SystemConstants ConstantsOf(io::GnssSystem system);

// Elements at a reference time, named as in the messages.
struct Elements {
    double axis = 0.0;  // m, semi-major
    double eccentricity = 0.0;
    double inclination = 0.0;
    double node = 0.0;  // rad: longitude at the reference time, or for a geostationary satellite
                        // the node on the tilted plane in axes at rest
    double nodeRate = 0.0;  // rad/s against the stars
    double perigee = 0.0;
    double meanAnomaly = 0.0;
    double deltaN = 0.0;                                // rad/s
    double crc = 0.0, crs = 0.0;                        // m
    double cuc = 0.0, cus = 0.0, cic = 0.0, cis = 0.0;  // rad
};

class KeplerMotion {
  public:
    explicit KeplerMotion(const Satellite& satellite);

    Vector3 At(double t) const;
    // As a message with this reference time tells them. For a geostationary satellite they refer to
    // the plane tilted by 5 degrees.
    Elements ElementsAt(double t) const;
    // The periodic part of the satellite clock by relativity, s: F e sqrt(A) sin E.
    double Relativity(double t) const;

  private:
    double EccentricAnomaly(double t) const;
    Vector3 Inertial(double t) const;  // geostationary: in the axes of t = 0

    bool geostationary_;
    SystemConstants constants_;
    Elements atStart_;
    double motion_ = 0.0;  // rad/s
};

// The tilted plane to which geostationary elements refer.
inline constexpr double kGeostationaryTilt = 5.0 * kDegree;

struct PathNode {
    Vector3 position{}, velocity{}, acceleration{};  // m, m/s, m/s^2, earth-fixed axes
};

// A path given by nodes at even times: quintic Hermite interpolation. With nodes of 240 s the error
// is below 2 micrometres (h^6 r w^6 / 46080).
class Path {
  public:
    static constexpr double kStep = 240.0;  // s

    Path() = default;
    Path(double firstTime, std::vector<PathNode> nodes)
        : firstTime_(firstTime), nodes_(std::move(nodes)) {}

    Vector3 At(double t) const;

  private:
    double firstTime_ = 0.0;
    std::vector<PathNode> nodes_;
};

Path PathOf(const KeplerMotion& motion, double from, double to);

// Sun and moon every 30 s.
class SunMoonTable {
  public:
    // `start` is the instant of t = 0.
    SunMoonTable(const io::GpsTime& start, double from, double to);
    const SunMoon& At(int step) const { return bodies_[static_cast<std::size_t>(step - first_)]; }

    static constexpr double kStep = 30.0;  // s

  private:
    int first_ = 0;
    std::vector<SunMoon> bodies_;
};

// GLONASS ICD, equations of motion in the rotating frame with the earth's oblateness and the
// attraction of sun and moon, by Runge-Kutta steps of 30 s from the mean elements at t = 0.
// `lunisolar` scales that attraction. The table reaches ten minutes beyond the span.
class GlonassMotion {
  public:
    GlonassMotion(const Satellite& satellite, const SunMoonTable& bodies, double lunisolar,
                  double from, double to);

    const Path& path() const { return path_; }

    struct State {
        Vector3 position{}, velocity{};
        Vector3 attraction{};  // of sun and moon, m/s^2
    };
    // At a multiple of 30 s inside the span.
    State StateAt(double t) const;

  private:
    double firstTime_ = 0.0;
    std::vector<State> states_;  // every 30 s
    Path path_;
};

}  // namespace vornel::rough
