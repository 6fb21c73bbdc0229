#include "geodesy.h"

namespace vornel::rough {
namespace {

constexpr double kMajorAxis = 6378137.0;  // m
constexpr double kFlattening = 1.0 / 298.257223563;
constexpr double kMinorAxis = kMajorAxis * (1.0 - kFlattening);
constexpr double kFirstSquared = kFlattening * (2.0 - kFlattening);
constexpr double kSecondSquared = kFirstSquared / (1.0 - kFirstSquared);

}  // namespace

Geodetic ToGeodetic(const Vector3& xyz) {
    const double p = std::hypot(xyz[0], xyz[1]);
    double reduced = std::atan2(xyz[2] * kMajorAxis, p * kMinorAxis);
    double latitude = 0.0;
    for (int pass = 0; pass < 3; ++pass) {
        const double s = std::sin(reduced), c = std::cos(reduced);
        latitude = std::atan2(xyz[2] + kSecondSquared * kMinorAxis * s * s * s,
                              p - kFirstSquared * kMajorAxis * c * c * c);
        reduced = std::atan2(kMinorAxis * std::sin(latitude), kMajorAxis * std::cos(latitude));
    }
    const double s = std::sin(latitude), c = std::cos(latitude);
    const double normal = kMajorAxis / std::sqrt(1.0 - kFirstSquared * s * s);
    // Along the normal: sound at the poles too.
    const double height = (p - normal * c) * c + (xyz[2] - (1.0 - kFirstSquared) * normal * s) * s;
    return {latitude, std::atan2(xyz[1], xyz[0]), height};
}

Vector3 ToCartesian(const Geodetic& place) {
    const double s = std::sin(place.latitude), c = std::cos(place.latitude);
    const double normal = kMajorAxis / std::sqrt(1.0 - kFirstSquared * s * s);
    return {(normal + place.height) * c * std::cos(place.longitude),
            (normal + place.height) * c * std::sin(place.longitude),
            ((1.0 - kFirstSquared) * normal + place.height) * s};
}

Horizon::Horizon(const Geodetic& place) {
    const double sp = std::sin(place.latitude), cp = std::cos(place.latitude);
    const double sl = std::sin(place.longitude), cl = std::cos(place.longitude);
    north = {-sp * cl, -sp * sl, cp};
    east = {-sl, cl, 0.0};
    up = {cp * cl, cp * sl, sp};
}

Geodetic PlaceAt(const Geodetic& from, double distance, double azimuth, double height) {
    const Horizon horizon(from);
    const double angle = distance / kEarthRadius;
    const double along = kEarthRadius * std::sin(angle);
    const double down = kEarthRadius * (1.0 - std::cos(angle));
    const Vector3 shift =
        horizon.FromNeu({along * std::cos(azimuth), along * std::sin(azimuth), -down});
    Geodetic place = ToGeodetic(Plus(ToCartesian(from), shift));
    place.height = height;
    return place;
}

}  // namespace vornel::rough
