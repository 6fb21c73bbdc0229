#include "session/geodesy.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vornel::session {
namespace {

constexpr double kDegree = M_PI / 180.0;

// From latitude, longitude and height by the closed formula of the ellipsoid.
Vector3 Forward(double latitude, double longitude, double height) {
    const double a = 6378137.0, f = 1.0 / 298.257223563, e2 = f * (2.0 - f);
    const double n = a / std::sqrt(1.0 - e2 * std::sin(latitude) * std::sin(latitude));
    return {(n + height) * std::cos(latitude) * std::cos(longitude),
            (n + height) * std::cos(latitude) * std::sin(longitude),
            (n * (1.0 - e2) + height) * std::sin(latitude)};
}

TEST(Geodesy, InvertsTheClosedFormulaEverywhere) {
    for (const double latitude : {-90.0, -66.0, -23.5, 0.0, 1e-6, 20.0, 49.0, 89.999, 90.0}) {
        for (const double longitude : {-179.0, -90.0, 0.0, 12.9, 180.0}) {
            for (const double height : {-400.0, 0.0, 8848.0, 400000.0}) {
                const Vector3 xyz = Forward(latitude * kDegree, longitude * kDegree, height);
                const Geodetic place = ToGeodetic(xyz);
                EXPECT_NEAR(place.latitude, latitude * kDegree, 1e-11);
                EXPECT_NEAR(place.height, height, 1e-4) << latitude << " " << height;
            }
        }
    }
}

TEST(Geodesy, LocalAxesAreNorthEastUp) {
    const Geodetic equator{0.0, 0.0, 0.0};
    EXPECT_EQ(ToNeu(equator, {0.0, 0.0, 1.0})[0], 1.0);
    EXPECT_EQ(ToNeu(equator, {0.0, 1.0, 0.0})[1], 1.0);
    EXPECT_EQ(ToNeu(equator, {1.0, 0.0, 0.0})[2], 1.0);
    const Geodetic place{0.85, 0.22, 0.0};
    const Vector3 vector{1.0, -2.0, 3.0};
    const Vector3 back = FromNeu(place, ToNeu(place, vector));
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(back[i], vector[i], 1e-15);
    }
}

}  // namespace
}  // namespace vornel::session
