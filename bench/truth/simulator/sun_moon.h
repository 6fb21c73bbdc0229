// Sun and moon, and what they do: accelerations of satellites, tides of the solid earth.
#pragma once

#include "geodesy.h"
#include "io/gnss_time.h"

namespace vornel::rough {

// Greenwich mean sidereal time (rad, not reduced) at an instant of GPS time. UT1 is taken as GPS
// time: nothing here needs the axes better than 0.1 degrees.
double SiderealAngle(const io::GpsTime& time);

struct SunMoon {
    Vector3 sun{};   // m, earth-fixed
    Vector3 moon{};  // m, earth-fixed
};

// Low-precision series (Montenbruck and Gill 2000, Satellite Orbits, section 3.3.2): the sun to
// 0.1 %, the moon to some minutes of arc and 500 km.
SunMoon SunMoonAt(const io::GpsTime& time);

// Third-body acceleration of a satellite against the earth's centre, m/s^2, earth-fixed axes.
Vector3 LunisolarAcceleration(const SunMoon& bodies, const Vector3& satellite);

// Displacement of a marker by the solid earth tide, m, earth-fixed: degree 2 in phase, with the
// nominal Love and Shida numbers h2 = 0.6078 and l2 = 0.0847 (IERS Conventions 2010, equation 7.5).
Vector3 TideAt(const SunMoon& bodies, const Vector3& marker);

}  // namespace vornel::rough
