#include "sun_moon.h"

#include "calendar.h"

namespace vornel::rough {
namespace {

constexpr double kArcSecond = kDegree / 3600.0;
constexpr double kGmEarth = 3.986004418e14;  // m^3/s^2
constexpr double kGmSun = 1.32712440018e20;
constexpr double kGmMoon = 4.902800e12;
constexpr double kObliquity = 23.43929111 * kDegree;

Vector3 FromEcliptic(double longitude, double latitude, double radius, double siderealAngle) {
    const double cb = std::cos(latitude);
    const Vector3 ecliptic = {radius * cb * std::cos(longitude), radius * cb * std::sin(longitude),
                              radius * std::sin(latitude)};
    return InAxesTurnedAboutZ(InAxesTurnedAboutX(ecliptic, -kObliquity), siderealAngle);
}

Vector3 SunAt(double centuries, double siderealAngle) {
    const double m = (357.5256 + 35999.049 * centuries) * kDegree;
    // The perigee against the equinox of 2000, carried on to that of the date by the precession.
    const double perigee = (282.9400 + 1.3972 * centuries) * kDegree;
    const double longitude =
        perigee + m + (6892.0 * std::sin(m) + 72.0 * std::sin(2.0 * m)) * kArcSecond;
    const double radius = (149.619 - 2.499 * std::cos(m) - 0.021 * std::cos(2.0 * m)) * 1e9;
    return FromEcliptic(longitude, 0.0, radius, siderealAngle);
}

Vector3 MoonAt(double t, double siderealAngle) {
    const double l0 = (218.31617 + 481267.88088 * t) * kDegree;
    const double l = (134.96292 + 477198.86753 * t) * kDegree;
    const double ls = (357.52543 + 35999.04944 * t) * kDegree;
    const double f = (93.27283 + 483202.01873 * t) * kDegree;
    const double d = (297.85027 + 445267.11135 * t) * kDegree;
    using std::cos, std::sin;
    const double dl = (22640.0 * sin(l) + 769.0 * sin(2.0 * l) - 4586.0 * sin(l - 2.0 * d) +
                       2370.0 * sin(2.0 * d) - 668.0 * sin(ls) - 412.0 * sin(2.0 * f) -
                       212.0 * sin(2.0 * l - 2.0 * d) - 206.0 * sin(l + ls - 2.0 * d) +
                       192.0 * sin(l + 2.0 * d) - 165.0 * sin(ls - 2.0 * d) + 148.0 * sin(l - ls) -
                       125.0 * sin(d) - 110.0 * sin(l + ls) - 55.0 * sin(2.0 * f - 2.0 * d)) *
                      kArcSecond;
    const double latitude =
        (18520.0 * sin(f + dl + (412.0 * sin(2.0 * f) + 541.0 * sin(ls)) * kArcSecond) -
         526.0 * sin(f - 2.0 * d) + 44.0 * sin(l + f - 2.0 * d) - 31.0 * sin(-l + f - 2.0 * d) -
         25.0 * sin(-2.0 * l + f) - 23.0 * sin(ls + f - 2.0 * d) + 21.0 * sin(-l + f) +
         11.0 * sin(-ls + f - 2.0 * d)) *
        kArcSecond;
    const double radius =
        (385000.0 - 20905.0 * cos(l) - 3699.0 * cos(2.0 * d - l) - 2956.0 * cos(2.0 * d) -
         570.0 * cos(2.0 * l) + 246.0 * cos(2.0 * l - 2.0 * d) - 205.0 * cos(ls - 2.0 * d) -
         171.0 * cos(l + 2.0 * d) - 152.0 * cos(l + ls - 2.0 * d)) *
        1000.0;
    return FromEcliptic(l0 + dl, latitude, radius, siderealAngle);
}

Vector3 Attraction(double gm, const Vector3& body, const Vector3& satellite) {
    const Vector3 to = Minus(body, satellite);
    const double d = Length(to), r = Length(body);
    return Minus(Scaled(to, gm / (d * d * d)), Scaled(body, gm / (r * r * r)));
}

Vector3 TideOf(double gm, const Vector3& body, const Vector3& marker) {
    constexpr double kH2 = 0.6078, kL2 = 0.0847, kRadius = 6378136.6;
    const double distance = Length(body);
    const Vector3 toBody = Scaled(body, 1.0 / distance);
    const Vector3 up = Unit(marker);
    const double cosine = Dot(toBody, up);
    const double ratio = kRadius / distance;
    const double scale = gm / kGmEarth * ratio * ratio * ratio * kRadius;
    return Plus(Scaled(up, scale * kH2 * (1.5 * cosine * cosine - 0.5)),
                Scaled(Minus(toBody, Scaled(up, cosine)), scale * 3.0 * kL2 * cosine));
}

}  // namespace

double SiderealAngle(const io::GpsTime& time) {
    return (280.46061837 + 360.98564736629 * DaysSince2000(time)) * kDegree;
}

SunMoon SunMoonAt(const io::GpsTime& time) {
    const double centuries = DaysSince2000(time) / 36525.0;
    const double angle = SiderealAngle(time);
    return {SunAt(centuries, angle), MoonAt(centuries, angle)};
}

Vector3 LunisolarAcceleration(const SunMoon& bodies, const Vector3& satellite) {
    return Plus(Attraction(kGmSun, bodies.sun, satellite),
                Attraction(kGmMoon, bodies.moon, satellite));
}

Vector3 TideAt(const SunMoon& bodies, const Vector3& marker) {
    return Plus(TideOf(kGmSun, bodies.sun, marker), TideOf(kGmMoon, bodies.moon, marker));
}

}  // namespace vornel::rough
