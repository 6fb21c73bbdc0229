// Conversions between earth-centred, geodetic and local coordinates on the WGS 84 ellipsoid.
#include "foundation/position.h"

#include <cmath>
#include <numbers>

namespace vornel {

namespace {

// NIMA TR8350.2: semi-major axis (m), first eccentricity squared, and their product.
constexpr double kSemiMajorAxis = 6378137.0;
constexpr double kEccentricitySquared = 0.00669437999014;
constexpr double kAxisTimesEccentricitySquared = 42697.672707171565;

}  // namespace

// Fixed-point iteration of tan B = (Z + a e^2 sin B / w) / p, with the right side written by the
// geocentric latitude psi, so that Z is divided by: not a number for Z = 0. A comparison with that
// ends the loop.
BLHPosition XYZPosition::ToBLH() const {
    const double p = std::sqrt(X * X + Y * Y);
    const double r = std::sqrt(X * X + Y * Y + Z * Z);
    const double psi = std::atan(Z / p);
    const double t = std::tan(psi);
    const double q = std::cos(psi) * r;

    BLHPosition result(psi, std::atan2(Y, X), 0.0);
    double previous = 0.0;
    do {
        previous = result.B;
        const double s = std::sin(previous);
        const double w = std::sqrt(1.0 - kEccentricitySquared * (s * s));
        const double n = kSemiMajorAxis / w;
        result.B = std::atan((s * kAxisTimesEccentricitySquared / Z / w + 1.0) * t);
        result.H = q / std::cos(result.B) - n;
    } while (std::fabs(result.B - previous) > 1e-11);
    return result;
}

Station::Station(const XYZPosition& stationPosition)
    : position(stationPosition),
      geodetic(stationPosition.ToBLH()),
      sinB(std::sin(geodetic.B)),
      cosB(std::cos(geodetic.B)),
      sinL(std::sin(geodetic.L)),
      cosL(std::cos(geodetic.L)) {}

NEUPosition Station::Local(const XYZPosition& point) const {
    const double dX = point.X - position.X;
    const double dY = point.Y - position.Y;
    const double dZ = point.Z - position.Z;
    return {dZ * cosB - sinB * (sinL * dY + cosL * dX), cosL * dY - sinL * dX,
            sinB * dZ + cosB * (cosL * dX + sinL * dY)};
}

NEUPosition XYZPosition::ToNEU(XYZPosition station) const {
    return Station(station).Local(*this);
}

double Distance(XYZPosition a, XYZPosition b) {
    const double dX = a.X - b.X;
    const double dY = a.Y - b.Y;
    const double dZ = a.Z - b.Z;
    return std::sqrt(dX * dX + dY * dY + dZ * dZ);
}

void MakeRotationNEU(gult::matrixT& r, XYZPosition position) {
    const Station station(position);
    const double sinB = station.sinB;
    const double cosB = station.cosB;
    const double sinL = station.sinL;
    const double cosL = station.cosL;
    const double north[3] = {-sinB * cosL, -sinB * sinL, cosB};
    const double east[3] = {-sinL, cosL, 0.0};
    const double up[3] = {cosB * cosL, cosB * sinL, sinB};
    const double* const rows[3] = {north, east, up};
    r = gult::matrixT(3, 3, rows);
}

double Azimuth(double north, double east) {
    constexpr double kPi = std::numbers::pi;
    if (north == 0.0) {
        if (east > 0.0) {
            return kPi / 2.0;
        }
        return east < 0.0 ? 3.0 * kPi / 2.0 : 0.0;
    }
    if (east == 0.0 && north > 0.0) {
        return 0.0;
    }
    if (east == 0.0 && north < 0.0) {
        return kPi;
    }
    double azimuth = std::atan(east / north);
    if (north < 0.0) {
        azimuth += kPi;
    }
    if (north > 0.0 && east < 0.0) {
        azimuth += 2.0 * kPi;
    }
    return azimuth;
}

double Elevation(const NEUPosition& local, double atZenith) {
    const double horizontal = std::sqrt(local.N * local.N + local.E * local.E);
    return horizontal == 0.0 ? atZenith : std::atan(local.U / horizontal);
}

}  // namespace vornel
