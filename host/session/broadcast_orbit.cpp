#include "session/broadcast_orbit.h"

#include <array>
#include <cmath>

namespace vornel::session {
namespace {

constexpr double kSpeedOfLight = 299792458.0;  // m/s

struct SystemConstants {
    double gm;            // m^3/s^2
    double rotationRate;  // rad/s
};

SystemConstants ConstantsOf(engine::System system) {
    switch (system) {
        case engine::System::kBds:
            return {3.986004418e14, 7.2921150e-5};
        case engine::System::kGalileo:
            return {3.986004418e14, 7.2921151467e-5};
        default:
            return {3.986005e14, 7.2921151467e-5};
    }
}

const TimedKepler* NearestRecord(const Ephemerides& ephemerides, engine::Satellite satellite,
                                 const io::GpsTime& time) {
    const TimedKepler* nearest = nullptr;
    double best = VORNEL_EPHEMERIS_REACH;
    for (const TimedKepler& timed : ephemerides.kepler) {
        const bool same =
            timed.record.system == satellite.system && timed.record.satId == satellite.prn;
        const double distance = std::abs(io::SecondsBetween(timed.reference, time));
        if (same && timed.record.health == 0 && distance <= best) {
            best = distance;
            nearest = &timed;
        }
    }
    return nearest;
}

// E - e sin E = M by Newton's method; e is at most 0.5.
double EccentricAnomaly(double meanAnomaly, double e) {
    double anomaly = meanAnomaly;
    constexpr int kPasses = 30;
    for (int pass = 0; pass < kPasses; ++pass) {
        const double step =
            (anomaly - e * std::sin(anomaly) - meanAnomaly) / (1.0 - e * std::cos(anomaly));
        anomaly -= step;
        if (std::abs(step) < 1e-13) {
            break;
        }
    }
    return anomaly;
}

// Axes turned by an angle.
Vector3 AboutX(const Vector3& v, double angle) {
    return {v[0], std::cos(angle) * v[1] + std::sin(angle) * v[2],
            std::cos(angle) * v[2] - std::sin(angle) * v[1]};
}
Vector3 AboutZ(const Vector3& v, double angle) {
    return {std::cos(angle) * v[0] + std::sin(angle) * v[1],
            std::cos(angle) * v[1] - std::sin(angle) * v[0], v[2]};
}

SatelliteState KeplerState(const TimedKepler& timed, engine::Satellite satellite,
                           const io::GpsTime& time) {
    const bool bds = satellite.system == engine::System::kBds;
    const bool geostationary = bds && satellite.prn <= VORNEL_BDS_GEOSTATIONARY;
    const engine::Kepler& r = timed.record;
    const SystemConstants c = ConstantsOf(satellite.system);
    const double offset = bds ? VORNEL_BDT_OFFSET : 0.0;
    const double tk = io::SecondsBetween(timed.reference, time);
    const double dt = io::SecondsBetween(io::Shifted({r.tocWeek, r.tocSeconds}, offset), time);

    const double axis = r.sqrtA * r.sqrtA;
    const double motion = std::sqrt(c.gm / (axis * axis * axis)) + r.deltaN;
    const double anomaly = EccentricAnomaly(r.m0 + motion * tk, r.e);
    const double trueAnomaly =
        std::atan2(std::sqrt(1.0 - r.e * r.e) * std::sin(anomaly), std::cos(anomaly) - r.e);
    const double phi = trueAnomaly + r.omega;
    const double sin2 = std::sin(2.0 * phi), cos2 = std::cos(2.0 * phi);
    const double latitude = phi + r.cus * sin2 + r.cuc * cos2;
    const double radius = axis * (1.0 - r.e * std::cos(anomaly)) + r.crs * sin2 + r.crc * cos2;
    const double inclination = r.i0 + r.idot * tk + r.cis * sin2 + r.cic * cos2;
    // The node of a geostationary satellite is given in a frame that does not turn.
    const double nodeRate = geostationary ? r.omegaDot : r.omegaDot - c.rotationRate;
    const double node = r.omega0 + nodeRate * tk - c.rotationRate * r.toe;
    const double x = radius * std::cos(latitude), y = radius * std::sin(latitude);

    SatelliteState state;
    state.position = {x * std::cos(node) - y * std::cos(inclination) * std::sin(node),
                      x * std::sin(node) + y * std::cos(inclination) * std::cos(node),
                      y * std::sin(inclination)};
    if (geostationary) {
        constexpr double kTilt = -5.0 * M_PI / 180.0;
        state.position = AboutZ(AboutX(state.position, kTilt), c.rotationRate * tk);
    }
    const double relativity = -2.0 * std::sqrt(c.gm) * r.sqrtA * r.e * std::sin(anomaly) /
                              (kSpeedOfLight * kSpeedOfLight);
    state.clock = r.af0 + r.af1 * dt + r.af2 * dt * dt + relativity;
    return state;
}

const TimedGlonass* NearestGlonass(const Ephemerides& ephemerides, int slot,
                                   const io::GpsTime& time) {
    const TimedGlonass* nearest = nullptr;
    double best = VORNEL_EPHEMERIS_REACH;
    for (const TimedGlonass& timed : ephemerides.glonass) {
        const double distance = std::abs(io::SecondsBetween(timed.reference, time));
        if (timed.record.slot == slot && distance <= best) {
            best = distance;
            nearest = &timed;
        }
    }
    return nearest;
}

using StateVector = std::array<double, 6>;  // m and m/s, earth-fixed

// Constants of PZ-90.11.
StateVector Derivative(const StateVector& s, const Vector3& acceleration) {
    constexpr double kGm = 3.986004418e14, kJ2 = 1.0826257e-3, kRadius = 6378136.0;
    constexpr double kRate = 7.2921151467e-5;
    const double r2 = s[0] * s[0] + s[1] * s[1] + s[2] * s[2];
    const double r3 = r2 * std::sqrt(r2);
    const double flattening = 1.5 * kJ2 * kGm * kRadius * kRadius / (r2 * r3);
    const double z2 = 5.0 * s[2] * s[2] / r2;
    const double equatorial = -kGm / r3 - flattening * (1.0 - z2) + kRate * kRate;
    const double polar = -kGm / r3 - flattening * (3.0 - z2);
    return {s[3],
            s[4],
            s[5],
            equatorial * s[0] + 2.0 * kRate * s[4] + acceleration[0],
            equatorial * s[1] - 2.0 * kRate * s[3] + acceleration[1],
            polar * s[2] + acceleration[2]};
}

StateVector Stepped(const StateVector& s, const Vector3& acceleration, double h) {
    const auto moved = [&s](const StateVector& k, double factor) {
        StateVector result = s;
        for (std::size_t i = 0; i < result.size(); ++i) {
            result[i] += factor * k[i];
        }
        return result;
    };
    const StateVector k1 = Derivative(s, acceleration);
    const StateVector k2 = Derivative(moved(k1, h / 2.0), acceleration);
    const StateVector k3 = Derivative(moved(k2, h / 2.0), acceleration);
    const StateVector k4 = Derivative(moved(k3, h), acceleration);
    StateVector result = s;
    for (std::size_t i = 0; i < result.size(); ++i) {
        result[i] += h / 6.0 * (k1[i] + 2.0 * k2[i] + 2.0 * k3[i] + k4[i]);
    }
    return result;
}

SatelliteState GlonassState(const TimedGlonass& timed, const io::GpsTime& time) {
    constexpr double kKilometre = 1000.0;
    constexpr double kStep = 60.0;  // s
    const engine::Glonass& r = timed.record;
    StateVector state{};
    Vector3 acceleration{};
    for (std::size_t i = 0; i < 3; ++i) {
        state[i] = r.position[i] * kKilometre;
        state[i + 3] = r.velocity[i] * kKilometre;
        acceleration[i] = r.acceleration[i] * kKilometre;
    }
    const double dt = io::SecondsBetween(timed.reference, time);
    const int steps = static_cast<int>(std::ceil(std::abs(dt) / kStep));
    for (int i = 0; i < steps; ++i) {
        state = Stepped(state, acceleration, dt / steps);
    }
    return {{state[0], state[1], state[2]}, r.clockBias + r.clockDrift * dt};
}

}  // namespace

std::optional<SatelliteState> BroadcastState(const Ephemerides& ephemerides,
                                             engine::Satellite satellite, const io::GpsTime& time) {
    if (satellite.system == engine::System::kGlonass) {
        const TimedGlonass* timed = NearestGlonass(ephemerides, satellite.prn, time);
        return timed == nullptr ? std::nullopt : std::optional(GlonassState(*timed, time));
    }
    const TimedKepler* timed = NearestRecord(ephemerides, satellite, time);
    return timed == nullptr ? std::nullopt : std::optional(KeplerState(*timed, satellite, time));
}

}  // namespace vornel::session
