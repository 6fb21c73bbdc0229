// Positions: earth-centred cartesian, geodetic (WGS 84), and local north, east, up.
#pragma once

#include "foundation/matrix.h"

namespace vornel {

class BLHPosition {
  public:
    double B = 0.0;  // latitude, radians
    double L = 0.0;  // longitude, radians
    double H = 0.0;  // ellipsoidal height, metres

    BLHPosition() = default;
    BLHPosition(double latitude, double longitude, double height)
        : B(latitude), L(longitude), H(height) {}
    BLHPosition(const BLHPosition&) = default;
    BLHPosition& operator=(const BLHPosition&) = default;
    virtual ~BLHPosition() = default;
};

class NEUPosition {
  public:
    double N = 0.0;  // metres
    double E = 0.0;
    double U = 0.0;

    NEUPosition() = default;
    NEUPosition(double north, double east, double up) : N(north), E(east), U(up) {}
    NEUPosition(const NEUPosition&) = default;
    NEUPosition& operator=(const NEUPosition&) = default;
    virtual ~NEUPosition() = default;
};

class XYZPosition {
  public:
    double X = 0.0;  // metres, earth-centred earth-fixed
    double Y = 0.0;
    double Z = 0.0;

    XYZPosition() = default;
    XYZPosition(double x, double y, double z) : X(x), Y(y), Z(z) {}
    explicit XYZPosition(const double xyz[3]) : X(xyz[0]), Y(xyz[1]), Z(xyz[2]) {}
    XYZPosition(const XYZPosition&) = default;
    XYZPosition& operator=(const XYZPosition&) = default;
    virtual ~XYZPosition() = default;

    // Geodetic coordinates by iteration to 1e-11 rad. Not a number on the equatorial plane.
    BLHPosition ToBLH() const;
    // This point seen from `station`.
    NEUPosition ToNEU(XYZPosition station) const;
};

// A station with its geodetic coordinates and local axes, worked out once for all that is seen from
// it.
class Station {
  public:
    XYZPosition position;
    BLHPosition geodetic;
    double sinB, cosB, sinL, cosL;

    explicit Station(const XYZPosition& position);

    // A point seen from the station.
    NEUPosition Local(const XYZPosition& point) const;
};

// Metres.
double Distance(XYZPosition a, XYZPosition b);

// Fills r with the 3 by 3 rotation from earth-centred to local axes at `position`, rows north,
// east, up.
void MakeRotationNEU(gult::matrixT& r, XYZPosition position);

// Radians clockwise from north, 0 up to below 2 pi; 0 for a zero vector.
double Azimuth(double north, double east);

// Elevation of a local vector, radians; `atZenith` when its horizontal part is exactly 0.
double Elevation(const NEUPosition& local, double atZenith);

}  // namespace vornel
