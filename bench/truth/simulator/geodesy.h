// Vectors, the WGS 84 ellipsoid, and the local horizon. Metres and radians throughout.
#pragma once

#include <array>
#include <cmath>
#include <numbers>

namespace vornel::rough {

inline constexpr double kPi = std::numbers::pi;
inline constexpr double kDegree = kPi / 180.0;         // rad
inline constexpr double kSpeedOfLight = 299792458.0;   // m/s
inline constexpr double kEarthRate = 7.2921151467e-5;  // rad/s, WGS 84
inline constexpr double kEarthRadius = 6371000.0;      // m, of the sphere of equal volume

using Vector3 = std::array<double, 3>;

inline Vector3 Plus(const Vector3& a, const Vector3& b) {
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}
inline Vector3 Minus(const Vector3& a, const Vector3& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
inline Vector3 Scaled(const Vector3& a, double factor) {
    return {a[0] * factor, a[1] * factor, a[2] * factor};
}
inline double Dot(const Vector3& a, const Vector3& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
inline Vector3 Cross(const Vector3& a, const Vector3& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
inline double Length(const Vector3& a) {
    return std::sqrt(Dot(a, a));
}
inline Vector3 Unit(const Vector3& a) {
    return Scaled(a, 1.0 / Length(a));
}

// Components of a vector in axes turned by `angle` about the third, or the first, axis.
inline Vector3 InAxesTurnedAboutZ(const Vector3& v, double angle) {
    const double c = std::cos(angle), s = std::sin(angle);
    return {c * v[0] + s * v[1], c * v[1] - s * v[0], v[2]};
}
inline Vector3 InAxesTurnedAboutX(const Vector3& v, double angle) {
    const double c = std::cos(angle), s = std::sin(angle);
    return {v[0], c * v[1] + s * v[2], c * v[2] - s * v[1]};
}

struct Geodetic {
    double latitude = 0.0;   // rad
    double longitude = 0.0;  // rad, east
    double height = 0.0;     // m above the ellipsoid
};

// Closed formula of Bowring (1976), repeated once: better than 1 micrometre from -10 to 1000 km.
Geodetic ToGeodetic(const Vector3& xyz);
Vector3 ToCartesian(const Geodetic& place);

// North, east and up at a place, as earth-fixed unit vectors.
struct Horizon {
    Vector3 north{}, east{}, up{};

    Horizon() = default;
    explicit Horizon(const Geodetic& place);

    Vector3 ToNeu(const Vector3& vector) const {
        return {Dot(vector, north), Dot(vector, east), Dot(vector, up)};
    }
    Vector3 FromNeu(const Vector3& neu) const {
        return Plus(Plus(Scaled(north, neu[0]), Scaled(east, neu[1])), Scaled(up, neu[2]));
    }
};

// The place at a distance along the chord's horizontal direction from another, at a height of its
// own. The distance is kept to the square of it over the earth's radius.
Geodetic PlaceAt(const Geodetic& from, double distance, double azimuth, double height);

}  // namespace vornel::rough
