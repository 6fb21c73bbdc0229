#include "session/broadcast_orbit.h"

#include <cmath>

namespace vornel::session {
namespace {

constexpr double kSpeedOfLight = 299792458.0;  // m/s

struct SystemConstants {
    double gm;            // m^3/s^2
    double rotationRate;  // rad/s
};

SystemConstants ConstantsOf(EngineSystem system) {
    switch (system) {
        case EngineSystem::kBds:
            return {3.986004418e14, 7.2921150e-5};
        case EngineSystem::kGalileo:
            return {3.986004418e14, 7.2921151467e-5};
        default:
            return {3.986005e14, 7.2921151467e-5};
    }
}

const TimedKepler* NearestRecord(const Ephemerides& ephemerides, EngineSatellite satellite,
                                 const io::GpsTime& time) {
    const TimedKepler* nearest = nullptr;
    double best = kEphemerisReach;
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

}  // namespace

std::optional<SatelliteState> BroadcastState(const Ephemerides& ephemerides,
                                             EngineSatellite satellite, const io::GpsTime& time) {
    constexpr int kLastGeostationary = 5;
    const bool bds = satellite.system == EngineSystem::kBds;
    if (satellite.system == EngineSystem::kGlonass ||
        (bds && satellite.prn <= kLastGeostationary)) {
        return std::nullopt;
    }
    const TimedKepler* timed = NearestRecord(ephemerides, satellite, time);
    if (timed == nullptr) {
        return std::nullopt;
    }
    const EngineKepler& r = timed->record;
    const SystemConstants c = ConstantsOf(satellite.system);
    const double offset = bds ? kBdtOffset : 0.0;
    const double tk = io::SecondsBetween(timed->reference, time);
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
    const double node = r.omega0 + (r.omegaDot - c.rotationRate) * tk - c.rotationRate * r.toe;
    const double x = radius * std::cos(latitude), y = radius * std::sin(latitude);

    SatelliteState state;
    state.position = {x * std::cos(node) - y * std::cos(inclination) * std::sin(node),
                      x * std::sin(node) + y * std::cos(inclination) * std::cos(node),
                      y * std::sin(inclination)};
    const double relativity = -2.0 * std::sqrt(c.gm) * r.sqrtA * r.e * std::sin(anomaly) /
                              (kSpeedOfLight * kSpeedOfLight);
    state.clock = r.af0 + r.af1 * dt + r.af2 * dt * dt + relativity;
    return state;
}

}  // namespace vornel::session
