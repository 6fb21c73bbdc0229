// Orbits computed a second time, in extended precision, from the interface control documents of the
// systems (IS-GPS-200, BDS-SIS-ICD, Galileo OS SIS ICD, GLONASS ICD edition 5.1), to hold the
// engine's against.
//
// Times are seconds from the reference of a record, so that nothing here depends on the engine's
// epochs.
#pragma once

#include <cmath>
#include <vector>

#include "orbit/broadcast_ephemeris.h"
#include "orbit/glonass_orbit.h"

namespace vornel::reference {

using Real = long double;

inline constexpr Real kPi = 3.14159265358979323846264338327950288L;
inline constexpr Real kLightSpeed = 299792458.0L;

struct Vector {
    Real x = 0.0L;
    Real y = 0.0L;
    Real z = 0.0L;
};

inline Vector operator+(const Vector& a, const Vector& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline Vector operator-(const Vector& a, const Vector& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline Vector operator*(Real factor, const Vector& a) {
    return {factor * a.x, factor * a.y, factor * a.z};
}
inline Real Dot(const Vector& a, const Vector& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline Real Norm(const Vector& a) {
    return std::sqrt(Dot(a, a));
}
inline Real Separation(const Vector& a, const XYZPosition& b) {
    return Norm(a - Vector{b.X, b.Y, b.Z});
}

// Coordinates in axes turned by `angle` about Z and about X.
inline Vector TurnAxesZ(Real angle, const Vector& v) {
    const Real c = std::cos(angle);
    const Real s = std::sin(angle);
    return {c * v.x + s * v.y, -s * v.x + c * v.y, v.z};
}
inline Vector TurnAxesX(Real angle, const Vector& v) {
    const Real c = std::cos(angle);
    const Real s = std::sin(angle);
    return {v.x, c * v.y + s * v.z, -s * v.y + c * v.z};
}

struct SatelliteState {
    Vector position;    // m, earth-fixed
    Real clock = 0.0L;  // s
};

// --- Keplerian elements

struct KeplerConstants {
    Real gravity;    // m^3/s^2
    Real earthRate;  // rad/s
};
inline constexpr KeplerConstants kGpsConstants{3.986005e14L, 7.2921151467e-5L};
inline constexpr KeplerConstants kBdsConstants{3.986004418e14L, 7.2921150e-5L};
inline constexpr KeplerConstants kGalileoConstants{3.986004418e14L, 7.2921151467e-5L};

// Kepler's equation by Newton's method.
inline Real EccentricAnomaly(Real meanAnomaly, Real e) {
    Real anomaly = meanAnomaly;
    for (int round = 0; round < 100; ++round) {
        anomaly -= (anomaly - e * std::sin(anomaly) - meanAnomaly) / (1.0L - e * std::cos(anomaly));
    }
    return anomaly;
}

// State `orbitTime` seconds after toe and `clockTime` seconds after toc.
inline SatelliteState KeplerState(const KeplerEphemeris& record, const KeplerConstants& constants,
                                  Real orbitTime, Real clockTime, bool geostationary) {
    const Real e = record.e;
    const Real a = static_cast<Real>(record.sqrtA) * record.sqrtA;
    const Real meanMotion = std::sqrt(constants.gravity / (a * a * a)) + record.deltaN;
    const Real anomaly = EccentricAnomaly(record.m0 + meanMotion * orbitTime, e);
    // True anomaly by the half-angle formula.
    const Real trueAnomaly = 2.0L * std::atan2(std::sqrt(1.0L + e) * std::sin(anomaly / 2.0L),
                                               std::sqrt(1.0L - e) * std::cos(anomaly / 2.0L));
    const Real latitude = trueAnomaly + record.omega;
    const Real s2 = std::sin(2.0L * latitude);
    const Real c2 = std::cos(2.0L * latitude);
    const Real u = latitude + record.cus * s2 + record.cuc * c2;
    const Real r = a * (1.0L - e * std::cos(anomaly)) + record.crs * s2 + record.crc * c2;
    const Real i = record.i0 + record.idot * orbitTime + record.cis * s2 + record.cic * c2;

    const Real turned = constants.earthRate * orbitTime;
    Real node = record.omega0 + record.omegaDot * orbitTime - constants.earthRate * record.toe;
    if (!geostationary) {
        node -= turned;
    }
    // From the plane of the orbit: tilt about the node, then turn the node to its longitude.
    const Vector inPlane{r * std::cos(u), r * std::sin(u), 0.0L};
    SatelliteState state;
    state.position = TurnAxesZ(-node, TurnAxesX(-i, inPlane));
    if (geostationary) {
        state.position = TurnAxesZ(turned, TurnAxesX(-5.0L * kPi / 180.0L, state.position));
    }
    const Real relativity = -2.0L * std::sqrt(constants.gravity) / (kLightSpeed * kLightSpeed) * e *
                            record.sqrtA * std::sin(anomaly);
    state.clock = record.af0 + clockTime * (record.af1 + clockTime * record.af2) + relativity;
    return state;
}

// Elements of the size that GPS satellites broadcast, with every correction term in use.
inline KeplerEphemeris SampleKeplerRecord(int satId, int week, double toe) {
    KeplerEphemeris record;
    record.toeEpoch = Epoch(week, toe);
    record.satId = satId;
    record.tocWeek = week;
    record.tocSeconds = toe;
    record.toeWeek = week;
    record.toe = toe;
    record.af0 = -2.109566703439e-04;
    record.af1 = 5.229594535194e-12;
    record.af2 = 1.5e-18;
    record.sqrtA = 5153.682157516;
    record.e = 0.01271651359275;
    record.i0 = 0.9642117494853;
    record.omega0 = -1.284319763107;
    record.omega = 0.7715270482619;
    record.m0 = 2.318429670345;
    record.deltaN = 4.601263087924e-09;
    record.omegaDot = -8.034263195843e-09;
    record.idot = -3.571577196e-11;
    record.crc = 241.84375;
    record.crs = -21.28125;
    record.cuc = -1.095235347748e-06;
    record.cus = 7.512047886848e-06;
    record.cic = 1.303851604462e-07;
    record.cis = -9.872019290924e-08;
    return record;
}

// --- GLONASS

struct Motion {
    Vector position;  // km
    Vector velocity;  // km/s
};

// The equations of motion in the turning frame (km, s), constants of PZ-90.
inline Motion GlonassDerivative(const Motion& at, const Vector& lunisolar) {
    const Real gravity = 398600.44L;
    const Real radius = 6378.136L;
    const Real j2 = 1082.63e-6L;
    const Real rate = 7.292115e-5L;
    const Real r = Norm(at.position);
    const Real central = gravity / (r * r * r);
    const Real oblate = 1.5L * j2 * gravity * radius * radius / std::pow(r, 5.0L);
    const Real polar = 5.0L * at.position.z * at.position.z / (r * r);
    Motion derivative;
    derivative.position = at.velocity;
    derivative.velocity.x = -(central + oblate * (1.0L - polar) - rate * rate) * at.position.x +
                            2.0L * rate * at.velocity.y + lunisolar.x;
    derivative.velocity.y = -(central + oblate * (1.0L - polar) - rate * rate) * at.position.y -
                            2.0L * rate * at.velocity.x + lunisolar.y;
    derivative.velocity.z = -(central + oblate * (3.0L - polar)) * at.position.z + lunisolar.z;
    return derivative;
}

inline Motion Moved(const Motion& at, Real step, const Motion& rate) {
    return {at.position + step * rate.position, at.velocity + step * rate.velocity};
}

// Classical Runge-Kutta of order four over the given steps (s); metres.
inline Vector IntegrateGlonass(const GlonassEphemeris& record, const std::vector<Real>& steps) {
    Motion at{{record.x, record.y, record.z}, {record.vx, record.vy, record.vz}};
    const Vector lunisolar{record.ax, record.ay, record.az};
    for (const Real h : steps) {
        const Motion k1 = GlonassDerivative(at, lunisolar);
        const Motion k2 = GlonassDerivative(Moved(at, h / 2.0L, k1), lunisolar);
        const Motion k3 = GlonassDerivative(Moved(at, h / 2.0L, k2), lunisolar);
        const Motion k4 = GlonassDerivative(Moved(at, h, k3), lunisolar);
        at = Moved(at, h / 6.0L, k1);
        at = Moved(at, h / 3.0L, k2);
        at = Moved(at, h / 3.0L, k3);
        at = Moved(at, h / 6.0L, k4);
    }
    return 1000.0L * at.position;
}

// The trajectory `time` seconds after the record's reference, by steps of about one second.
inline Vector GlonassTrajectory(const GlonassEphemeris& record, Real time) {
    const int count = static_cast<int>(std::fabs(time)) + 1;
    return IntegrateGlonass(record, std::vector<Real>(static_cast<std::size_t>(count),
                                                      time / static_cast<Real>(count)));
}

// A state of the size that GLONASS satellites broadcast. `week` and `seconds` are in the time scale
// of the record, which GPS time precedes by 18 s.
inline GlonassEphemeris SampleGlonassRecord(int slot, int week, double seconds) {
    GlonassEphemeris record;
    record.slot = slot;
    record.refEpoch = Epoch(week, seconds);
    record.tbSeconds = std::fmod(seconds, 86400.0);
    record.leapSeconds = 18;
    record.clockBias = 3.472398966551e-05;
    record.clockDrift = -1.818989403546e-12;
    record.x = 7003.008789;
    record.y = -12206.626953;
    record.z = 21280.765625;
    record.vx = 0.7835417;
    record.vy = 2.8042530;
    record.vz = 1.3525150;
    record.ax = 0.0;
    record.ay = 1.7e-09;
    record.az = -5.41e-09;
    record.channel = -4;
    return record;
}

}  // namespace vornel::reference
