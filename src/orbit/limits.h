// What bounds the use of every broadcast ephemeris.
#pragma once

#include "VornelBlCore.h"
#include "foundation/position.h"

namespace vornel {

// s: more than the rough times of the stores can be off between 1980 and 2100.
inline constexpr double kRoughTimeError = 1e-3;

// Rotation of the earth, rad/s: IS-GPS-200 and Galileo OS SIS ICD; BDS-SIS-ICD and GLONASS ICD.
inline constexpr double kEarthRateGps = 7.2921151467e-05;
inline constexpr double kEarthRateBds = 7.292115e-05;

// Whether a position lies where navigation satellites do.
inline bool HasOrbitRadius(const XYZPosition& position) {
    const double radius = Distance(position, XYZPosition());
    return radius > VORNEL_LEAST_ORBIT_RADIUS && radius < VORNEL_GREATEST_ORBIT_RADIUS;
}

}  // namespace vornel
