// Stations and directions from textbook formulas, to hold the engine's geometry against.
#pragma once

#include <cmath>

#include "foundation/position.h"
#include "orbit/reference_orbits.h"

namespace vornel::reference {

constexpr Real Radians(Real degrees) {
    return degrees * kPi / 180.0L;
}

// A point by its geodetic coordinates on the WGS 84 ellipsoid, radians and metres.
struct Station {
    Real latitude = 0.0L;
    Real longitude = 0.0L;
    Real height = 0.0L;

    Vector Cartesian() const {
        const Real a = 6378137.0L;
        const Real e2 = 0.00669437999014L;
        const Real s = std::sin(latitude);
        const Real n = a / std::sqrt(1.0L - e2 * s * s);
        return {(n + height) * std::cos(latitude) * std::cos(longitude),
                (n + height) * std::cos(latitude) * std::sin(longitude),
                (n * (1.0L - e2) + height) * s};
    }
    XYZPosition Position() const {
        const Vector v = Cartesian();
        return {static_cast<double>(v.x), static_cast<double>(v.y), static_cast<double>(v.z)};
    }
    Vector Up() const {
        return {std::cos(latitude) * std::cos(longitude), std::cos(latitude) * std::sin(longitude),
                std::sin(latitude)};
    }
    Vector North() const {
        return {-std::sin(latitude) * std::cos(longitude),
                -std::sin(latitude) * std::sin(longitude), std::cos(latitude)};
    }
    Vector East() const { return {-std::sin(longitude), std::cos(longitude), 0.0L}; }

    // The point `distance` metres away in a direction.
    Vector Towards(Real azimuth, Real elevation, Real distance) const {
        return Cartesian() + distance * (std::cos(elevation) * std::cos(azimuth) * North() +
                                         std::cos(elevation) * std::sin(azimuth) * East() +
                                         std::sin(elevation) * Up());
    }
};

struct Direction {
    Real azimuth;    // 0 up to 2 pi
    Real elevation;  // radians
};

inline Direction DirectionOf(const Station& station, const Vector& target) {
    const Vector d = target - station.Cartesian();
    Real azimuth = std::atan2(Dot(d, station.East()), Dot(d, station.North()));
    if (azimuth < 0.0L) {
        azimuth += 2.0L * kPi;
    }
    return {azimuth, std::asin(Dot(d, station.Up()) / Norm(d))};
}

}  // namespace vornel::reference
