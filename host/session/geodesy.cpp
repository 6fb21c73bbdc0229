#include "session/geodesy.h"

#include <cmath>

namespace vornel::session {
namespace {

// WGS 84 (NIMA TR8350.2).
constexpr double kSemiMajorAxis = 6378137.0;
constexpr double kFlattening = 1.0 / 298.257223563;
constexpr double kEccentricitySquared = kFlattening * (2.0 - kFlattening);

}  // namespace

double Length(const Vector3& v) {
    return std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
}

Geodetic ToGeodetic(const Vector3& xyz) {
    const double equatorial = std::hypot(xyz[0], xyz[1]);
    double latitude = std::atan2(xyz[2], equatorial * (1.0 - kEccentricitySquared));
    double curvature = kSemiMajorAxis;
    constexpr int kPasses = 20;  // converges in 4 to 6 near the surface
    for (int pass = 0; pass < kPasses; ++pass) {
        const double sine = std::sin(latitude);
        curvature = kSemiMajorAxis / std::sqrt(1.0 - kEccentricitySquared * sine * sine);
        const double next =
            std::atan2(xyz[2] + kEccentricitySquared * curvature * sine, equatorial);
        const double change = std::abs(next - latitude);
        latitude = next;
        if (change < 1e-14) {
            break;
        }
    }
    // Height along the normal; this form is well conditioned at the poles too.
    const double sine = std::sin(latitude);
    const double height = equatorial * std::cos(latitude) + xyz[2] * sine -
                          kSemiMajorAxis * std::sqrt(1.0 - kEccentricitySquared * sine * sine);
    return {latitude, std::atan2(xyz[1], xyz[0]), height};
}

Vector3 ToNeu(const Geodetic& place, const Vector3& v) {
    const double sinLat = std::sin(place.latitude), cosLat = std::cos(place.latitude);
    const double sinLon = std::sin(place.longitude), cosLon = std::cos(place.longitude);
    return {-sinLat * cosLon * v[0] - sinLat * sinLon * v[1] + cosLat * v[2],
            -sinLon * v[0] + cosLon * v[1],
            cosLat * cosLon * v[0] + cosLat * sinLon * v[1] + sinLat * v[2]};
}

Vector3 FromNeu(const Geodetic& place, const Vector3& neu) {
    const double sinLat = std::sin(place.latitude), cosLat = std::cos(place.latitude);
    const double sinLon = std::sin(place.longitude), cosLon = std::cos(place.longitude);
    return {-sinLat * cosLon * neu[0] - sinLon * neu[1] + cosLat * cosLon * neu[2],
            -sinLat * sinLon * neu[0] + cosLon * neu[1] + cosLat * sinLon * neu[2],
            cosLat * neu[0] + sinLat * neu[2]};
}

}  // namespace vornel::session
