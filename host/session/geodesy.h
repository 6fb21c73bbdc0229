// Geodetic latitude, longitude and height, and local north, east, up.
#pragma once

#include <array>

namespace vornel::session {

using Vector3 = std::array<double, 3>;

inline Vector3 Minus(const Vector3& a, const Vector3& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
inline Vector3 Plus(const Vector3& a, const Vector3& b) {
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}
double Length(const Vector3& v);

struct Geodetic {
    double latitude = 0.0;   // rad
    double longitude = 0.0;  // rad
    double height = 0.0;     // m above the WGS 84 ellipsoid
};

// From an ECEF position in metres that is not near the earth's centre (iteration on the latitude,
// to better than 0.1 mm for heights of -10 to 1000 km).
Geodetic ToGeodetic(const Vector3& xyz);

// An ECEF vector turned into north, east, up at a place, and back.
Vector3 ToNeu(const Geodetic& place, const Vector3& vector);
Vector3 FromNeu(const Geodetic& place, const Vector3& neu);

}  // namespace vornel::session
