// Positions: geodetic coordinates against the closed forward formula, local axes against its
// derivatives.
#include "foundation/position.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace {

using gult::matrixT;
using vornel::BLHPosition;
using vornel::NEUPosition;
using vornel::XYZPosition;

constexpr double kPi = 3.14159265358979323846;
constexpr double kDegree = kPi / 180.0;
constexpr double kSemiMajor = 6378137.0;
constexpr double kEccentricitySquared = 0.00669437999014;

static_assert(std::has_virtual_destructor_v<XYZPosition>);
static_assert(std::has_virtual_destructor_v<BLHPosition>);
static_assert(std::has_virtual_destructor_v<NEUPosition>);

// The closed formula from geodetic to cartesian coordinates.
XYZPosition ToXYZ(double latitude, double longitude, double height) {
    const double sinLatitude = std::sin(latitude);
    const double n = kSemiMajor / std::sqrt(1.0 - kEccentricitySquared * sinLatitude * sinLatitude);
    return {(n + height) * std::cos(latitude) * std::cos(longitude),
            (n + height) * std::cos(latitude) * std::sin(longitude),
            (n * (1.0 - kEccentricitySquared) + height) * sinLatitude};
}

// Latitudes off the equator and the pole on both hemispheres, longitudes in all quadrants.
constexpr double kLatitudes[] = {-89.99, -89.0, -60.0, -33.3, -1.0, 1.0,
                                 12.5,   45.0,  49.14, 75.0,  89.9};
constexpr double kLongitudes[] = {-179.9, -120.0, -90.0, -0.1, 0.0, 12.88, 90.0, 135.0, 180.0};

// --- the three classes ---------------------------------------------------------------------------

TEST(Position, DefaultsAreZero) {
    const XYZPosition xyz;
    const BLHPosition blh;
    const NEUPosition neu;
    for (const double value : {xyz.X, xyz.Y, xyz.Z, blh.B, blh.L, blh.H, neu.N, neu.E, neu.U}) {
        EXPECT_EQ(value, 0.0);
    }
}

TEST(Position, ConstructionKeepsTheOrderOfItsValues) {
    const double values[3] = {1.0, 2.0, 3.0};
    const XYZPosition fromArray(values);
    const XYZPosition fromValues(1.0, 2.0, 3.0);
    const XYZPosition copy(fromValues);
    for (const XYZPosition& position : {fromArray, fromValues, copy}) {
        EXPECT_EQ(position.X, 1.0);
        EXPECT_EQ(position.Y, 2.0);
        EXPECT_EQ(position.Z, 3.0);
    }
    const BLHPosition blh(0.1, 0.2, 0.3);
    EXPECT_EQ(blh.B, 0.1);
    EXPECT_EQ(blh.L, 0.2);
    EXPECT_EQ(blh.H, 0.3);
    const NEUPosition neu(4.0, 5.0, 6.0);
    const NEUPosition sameNeu(neu);
    for (const NEUPosition* each : {&neu, &sameNeu}) {
        EXPECT_EQ(each->N, 4.0);
        EXPECT_EQ(each->E, 5.0);
        EXPECT_EQ(each->U, 6.0);
    }
}

TEST(Position, DistanceIsEuclidean) {
    EXPECT_EQ(vornel::Distance(XYZPosition(1.0, 2.0, 3.0), XYZPosition(3.0, 5.0, 9.0)), 7.0);
    EXPECT_EQ(vornel::Distance(XYZPosition(3.0, 5.0, 9.0), XYZPosition(1.0, 2.0, 3.0)), 7.0);
    EXPECT_EQ(vornel::Distance(XYZPosition(-4e6, 0.0, 3e6), XYZPosition()), 5e6);
    EXPECT_EQ(vornel::Distance(XYZPosition(1.0, 2.0, 3.0), XYZPosition(1.0, 2.0, 3.0)), 0.0);
}

// --- geodetic coordinates ------------------------------------------------------------------------

TEST(Geodetic, AgreesWithTheForwardFormulaToAMillimetre) {
    for (const double latitude : kLatitudes) {
        for (const double longitude : kLongitudes) {
            for (const double height : {-400.0, 0.0, 123.456, 8848.0, 20.2e6}) {
                const XYZPosition point = ToXYZ(latitude * kDegree, longitude * kDegree, height);
                const BLHPosition blh = point.ToBLH();
                const XYZPosition back = ToXYZ(blh.B, blh.L, blh.H);
                EXPECT_LT(vornel::Distance(point, back), 1e-3)
                    << latitude << " " << longitude << " " << height;
                EXPECT_NEAR(blh.B, latitude * kDegree, 1e-11);
                EXPECT_NEAR(blh.L, longitude * kDegree, 1e-14);
                EXPECT_NEAR(blh.H, height, 1e-3) << latitude << " " << longitude;
            }
        }
    }
}

TEST(Geodetic, IteratesToTheLimitAndNoFurther) {
    // The iteration in its plainest form, ended by a step of 1e-11 rad. One round more or less
    // shows at low latitudes, where a round takes off hardly more than two digits.
    for (const double latitude : kLatitudes) {
        const XYZPosition point = ToXYZ(latitude * kDegree, 0.3, 300.0);
        const double p = std::sqrt(point.X * point.X + point.Y * point.Y);
        const double r = std::sqrt(p * p + point.Z * point.Z);
        const double psi = std::atan(point.Z / p);
        double b = psi;
        double h = 0.0;
        for (double last = b + 1.0; std::fabs(b - last) > 1e-11;) {
            last = b;
            const double s = std::sin(b);
            const double w = std::sqrt(1.0 - kEccentricitySquared * s * s);
            b = std::atan((s * 42697.672707171565 / point.Z / w + 1.0) * std::tan(psi));
            h = std::cos(psi) * r / std::cos(b) - kSemiMajor / w;
        }
        const BLHPosition blh = point.ToBLH();
        EXPECT_NEAR(blh.B, b, 1e-15) << latitude;
        EXPECT_NEAR(blh.H, h, 1e-5) << latitude;  // 1e-15 rad times the tangent near the pole
    }
}

TEST(Geodetic, KnownStation) {
    // Wettzell, IGS station WTZR: about 49 08 39.1 N, 12 52 44.1 E, 666 m (site log), from its
    // approximate cartesian coordinates.
    const BLHPosition blh = XYZPosition(4075580.6, 931853.8, 4801568.1).ToBLH();
    EXPECT_NEAR(blh.B / kDegree, 49.0 + 8.0 / 60.0 + 39.1 / 3600.0, 1e-4);
    EXPECT_NEAR(blh.L / kDegree, 12.0 + 52.0 / 60.0 + 44.1 / 3600.0, 1e-4);
    EXPECT_NEAR(blh.H, 666.0, 1.0);
}

TEST(Geodetic, TheEquatorialPlaneIsNotANumber) {
    const BLHPosition blh = XYZPosition(-3e6, 4e6, 0.0).ToBLH();
    EXPECT_TRUE(std::isnan(blh.B));
    EXPECT_TRUE(std::isnan(blh.H));
    EXPECT_DOUBLE_EQ(blh.L, std::atan2(4.0, -3.0));
}

TEST(Geodetic, TheZeroPositionIsNotANumberAndEnds) {
    const BLHPosition blh = XYZPosition().ToBLH();
    EXPECT_TRUE(std::isnan(blh.B));
    EXPECT_TRUE(std::isnan(blh.H));
    const NEUPosition neu = XYZPosition(1.0, 2.0, 3.0).ToNEU(XYZPosition());
    EXPECT_TRUE(std::isnan(neu.N));
    EXPECT_TRUE(std::isnan(neu.U));
}

TEST(Geodetic, OnTheAxisTheLatitudeIsThatOfThePole) {
    // The height is wrong there: it is counted from the curvature radius, not from the pole itself.
    const double z = 6400000.0;
    const double polarCurvature = kSemiMajor / std::sqrt(1.0 - kEccentricitySquared);
    const BLHPosition north = XYZPosition(0.0, 0.0, z).ToBLH();
    EXPECT_NEAR(north.B, kPi / 2.0, 1e-11);
    EXPECT_NEAR(north.H, z - polarCurvature, 1e-3);
    const BLHPosition south = XYZPosition(0.0, 0.0, -z).ToBLH();
    EXPECT_NEAR(south.B, -kPi / 2.0, 1e-11);
    EXPECT_NEAR(south.H, z - polarCurvature, 1e-3);
}

// --- local axes ----------------------------------------------------------------------------------

TEST(Local, APointSeenFromItselfIsZero) {
    for (const double latitude : kLatitudes) {
        const XYZPosition point = ToXYZ(latitude * kDegree, 1.0, 100.0);
        const NEUPosition neu = point.ToNEU(point);
        EXPECT_EQ(neu.N, 0.0);
        EXPECT_EQ(neu.E, 0.0);
        EXPECT_EQ(neu.U, 0.0);
    }
}

TEST(Local, AxesFollowLatitudeLongitudeAndHeight) {
    // A short step in one geodetic coordinate is a step along one local axis, of a length known
    // from the radii of curvature; what it strays to the others is of second order.
    const double step = 1e-6;  // rad, some 6 m
    for (const double latitude : {-75.0, -33.3, 1.0, 45.0, 80.0}) {
        for (const double longitude : kLongitudes) {
            const double b = latitude * kDegree;
            const double l = longitude * kDegree;
            const XYZPosition station = ToXYZ(b, l, 500.0);
            const double w = std::sqrt(1.0 - kEccentricitySquared * std::sin(b) * std::sin(b));
            const double meridian = kSemiMajor * (1.0 - kEccentricitySquared) / (w * w * w) + 500.0;
            const double parallel = (kSemiMajor / w + 500.0) * std::cos(b);
            constexpr double kSecondOrder = 2e-5;  // step^2 times the earth's radius, and rounding

            const NEUPosition north = ToXYZ(b + step, l, 500.0).ToNEU(station);
            EXPECT_NEAR(north.N, meridian * step, kSecondOrder);
            EXPECT_NEAR(north.E, 0.0, kSecondOrder);
            EXPECT_NEAR(north.U, 0.0, kSecondOrder);

            const NEUPosition east = ToXYZ(b, l + step, 500.0).ToNEU(station);
            EXPECT_NEAR(east.N, 0.0, kSecondOrder);
            EXPECT_NEAR(east.E, parallel * step, kSecondOrder);
            EXPECT_NEAR(east.U, 0.0, kSecondOrder);

            const NEUPosition up = ToXYZ(b, l, 1500.0).ToNEU(station);
            EXPECT_NEAR(up.N, 0.0, 1e-7);
            EXPECT_NEAR(up.E, 0.0, 1e-7);
            EXPECT_NEAR(up.U, 1000.0, 1e-7);
        }
    }
}

TEST(Local, KeepsTheDistance) {
    const XYZPosition station = ToXYZ(49.0 * kDegree, 12.0 * kDegree, 600.0);
    const XYZPosition satellite(15000000.0, -9000000.0, 20000000.0);
    const NEUPosition neu = satellite.ToNEU(station);
    EXPECT_NEAR(std::hypot(neu.N, neu.E, neu.U), vornel::Distance(satellite, station), 1e-7);
}

TEST(Local, AStationSeesWhatThePointsThemselvesTell) {
    for (const double latitude : kLatitudes) {
        const double l = -2.1;
        const XYZPosition position = ToXYZ(latitude * kDegree, l, 77.0);
        const vornel::Station station(position);
        EXPECT_EQ(station.position.X, position.X);
        EXPECT_EQ(station.position.Y, position.Y);
        EXPECT_EQ(station.position.Z, position.Z);
        EXPECT_NEAR(station.geodetic.B, latitude * kDegree, 1e-11);
        EXPECT_NEAR(station.geodetic.L, l, 1e-14);
        EXPECT_NEAR(station.geodetic.H, 77.0, 1e-3);
        EXPECT_NEAR(station.sinB, std::sin(latitude * kDegree), 1e-11);
        EXPECT_NEAR(station.cosB, std::cos(latitude * kDegree), 1e-11);
        EXPECT_NEAR(station.sinL, std::sin(l), 1e-14);
        EXPECT_NEAR(station.cosL, std::cos(l), 1e-14);

        const XYZPosition satellite(12e6, -15e6, 18e6);
        const NEUPosition local = station.Local(satellite);
        const NEUPosition direct = satellite.ToNEU(position);
        EXPECT_EQ(local.N, direct.N);
        EXPECT_EQ(local.E, direct.E);
        EXPECT_EQ(local.U, direct.U);
        EXPECT_EQ(station.Local(position).U, 0.0);
    }
}

TEST(Rotation, HasRowsNorthEastUp) {
    for (const double latitude : kLatitudes) {
        for (const double longitude : kLongitudes) {
            const double b = latitude * kDegree;
            const double l = longitude * kDegree;
            const double expected[3][3] = {
                {-std::sin(b) * std::cos(l), -std::sin(b) * std::sin(l), std::cos(b)},
                {-std::sin(l), std::cos(l), 0.0},
                {std::cos(b) * std::cos(l), std::cos(b) * std::sin(l), std::sin(b)}};
            matrixT r;
            vornel::MakeRotationNEU(r, ToXYZ(b, l, 250.0));
            ASSERT_EQ(r.RowCount(), 3u);
            ASSERT_EQ(r.ColCount(), 3u);
            for (std::uint32_t i = 0; i < 3; ++i) {
                for (std::uint32_t j = 0; j < 3; ++j) {
                    EXPECT_NEAR(r(i, j), expected[i][j], 2e-11) << i << "," << j;
                }
            }
            EXPECT_EQ(r(1, 2), 0.0);
        }
    }
}

TEST(Rotation, TurnsADifferenceIntoTheLocalVector) {
    const XYZPosition station = ToXYZ(-21.0 * kDegree, 55.5 * kDegree, 30.0);
    const XYZPosition point(station.X + 100.0, station.Y - 200.0, station.Z + 300.0);
    matrixT r;
    vornel::MakeRotationNEU(r, station);
    matrixT difference(3, 1);
    difference(0, 0) = 100.0;
    difference(1, 0) = -200.0;
    difference(2, 0) = 300.0;
    matrixT local = r * difference;
    const NEUPosition neu = point.ToNEU(station);
    EXPECT_NEAR(local(0, 0), neu.N, 1e-8);
    EXPECT_NEAR(local(1, 0), neu.E, 1e-8);
    EXPECT_NEAR(local(2, 0), neu.U, 1e-8);
}

TEST(Rotation, IsOrthonormalAndLeftHandedUpToThePole) {
    for (const double latitude : {-89.9999, -45.0, 2.0, 60.0, 89.9, 89.9999, 89.9999999}) {
        for (const double longitude : kLongitudes) {
            matrixT r;
            vornel::MakeRotationNEU(r, ToXYZ(latitude * kDegree, longitude * kDegree, 0.0));
            matrixT gram = r * r.Transpose();
            for (std::uint32_t i = 0; i < 3; ++i) {
                for (std::uint32_t j = 0; j < 3; ++j) {
                    EXPECT_NEAR(gram(i, j), i == j ? 1.0 : 0.0, 1e-15) << i << "," << j;
                }
            }
            // North, east, up in this order are a left-handed triad.
            const double determinant = r(0, 0) * (r(1, 1) * r(2, 2) - r(1, 2) * r(2, 1)) -
                                       r(0, 1) * (r(1, 0) * r(2, 2) - r(1, 2) * r(2, 0)) +
                                       r(0, 2) * (r(1, 0) * r(2, 1) - r(1, 1) * r(2, 0));
            EXPECT_NEAR(determinant, -1.0, 1e-15);
        }
    }
}

TEST(Rotation, LeavesSharersOfItsMatrixAlone) {
    matrixT r(3, 3);
    r(0, 0) = 5.0;
    matrixT sharer = r;
    vornel::MakeRotationNEU(r, ToXYZ(0.7, 0.2, 0.0));
    EXPECT_EQ(sharer(0, 0), 5.0);
    EXPECT_NE(r(0, 0), 5.0);
}

// --- azimuth and elevation -----------------------------------------------------------------------

TEST(Azimuth, OnTheAxesItIsExact) {
    EXPECT_EQ(vornel::Azimuth(1.0, 0.0), 0.0);
    EXPECT_EQ(vornel::Azimuth(0.0, 1.0), kPi / 2.0);
    EXPECT_EQ(vornel::Azimuth(-1.0, 0.0), kPi);
    EXPECT_DOUBLE_EQ(vornel::Azimuth(0.0, -1.0), 3.0 * kPi / 2.0);
    EXPECT_EQ(vornel::Azimuth(0.0, 0.0), 0.0);
    EXPECT_EQ(vornel::Azimuth(1e-300, 0.0), 0.0);
    EXPECT_EQ(vornel::Azimuth(-1e-300, 0.0), kPi);
    EXPECT_EQ(vornel::Azimuth(0.0, 1e-300), kPi / 2.0);
}

TEST(Azimuth, ANegativeZeroIsZero) {
    EXPECT_EQ(vornel::Azimuth(-0.0, 1.0), kPi / 2.0);
    EXPECT_DOUBLE_EQ(vornel::Azimuth(-0.0, -1.0), 3.0 * kPi / 2.0);
    EXPECT_EQ(vornel::Azimuth(1.0, -0.0), 0.0);
    EXPECT_EQ(vornel::Azimuth(-1.0, -0.0), kPi);
    EXPECT_EQ(vornel::Azimuth(-0.0, -0.0), 0.0);
    EXPECT_FALSE(std::signbit(vornel::Azimuth(0.5, -0.0)));
}

TEST(Azimuth, OfNoNumberIsNone) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(std::isnan(vornel::Azimuth(nan, 0.0)));
    EXPECT_TRUE(std::isnan(vornel::Azimuth(nan, 1.0)));
    EXPECT_TRUE(std::isnan(vornel::Azimuth(1.0, nan)));
}

TEST(Azimuth, DiagonalsOfTheFourQuadrants) {
    EXPECT_DOUBLE_EQ(vornel::Azimuth(1.0, 1.0), kPi / 4.0);
    EXPECT_DOUBLE_EQ(vornel::Azimuth(-1.0, 1.0), 3.0 * kPi / 4.0);
    EXPECT_DOUBLE_EQ(vornel::Azimuth(-1.0, -1.0), 5.0 * kPi / 4.0);
    EXPECT_DOUBLE_EQ(vornel::Azimuth(1.0, -1.0), 7.0 * kPi / 4.0);
}

TEST(Azimuth, RunsClockwiseThroughTheWholeCircle) {
    for (int tenth = 0; tenth < 3600; ++tenth) {
        const double angle = (tenth + 0.05) * kDegree / 10.0;
        const double azimuth = vornel::Azimuth(1000.0 * std::cos(angle), 1000.0 * std::sin(angle));
        ASSERT_NEAR(azimuth, angle, 1e-14);
        ASSERT_GE(azimuth, 0.0);
        ASSERT_LT(azimuth, 2.0 * kPi);
    }
}

TEST(Elevation, IsTheAngleAboveTheHorizon) {
    EXPECT_DOUBLE_EQ(vornel::Elevation(NEUPosition(3.0, 4.0, 5.0), 9.0), kPi / 4.0);
    EXPECT_DOUBLE_EQ(vornel::Elevation(NEUPosition(-3.0, -4.0, -5.0), 9.0), -kPi / 4.0);
    EXPECT_EQ(vornel::Elevation(NEUPosition(1.0, 0.0, 0.0), 9.0), 0.0);
    EXPECT_NEAR(vornel::Elevation(NEUPosition(0.0, 1.0, std::tan(30.0 * kDegree)), 9.0),
                30.0 * kDegree, 1e-15);
}

TEST(Elevation, InTheZenithTheCallerSaysWhatItIs) {
    EXPECT_EQ(vornel::Elevation(NEUPosition(0.0, 0.0, 100.0), kPi / 2.0), kPi / 2.0);
    EXPECT_EQ(vornel::Elevation(NEUPosition(0.0, 0.0, 100.0), kPi), kPi);
    EXPECT_EQ(vornel::Elevation(NEUPosition(0.0, 0.0, -100.0), kPi), kPi);
    EXPECT_EQ(vornel::Elevation(NEUPosition(), 1.25), 1.25);
    // A horizontal part that is not exactly zero gives the plain angle.
    EXPECT_NEAR(vornel::Elevation(NEUPosition(1e-9, 0.0, 100.0), kPi), kPi / 2.0, 1e-10);
}

}  // namespace
