// Keplerian orbits of GPS, BDS and Galileo: one algorithm, with the constants of each system.
#include "orbit/broadcast_ephemeris.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "orbit/limits.h"

namespace vornel {

namespace {

constexpr double kSpeedOfLightSquared = 8.987551787368176e+16;  // m^2/s^2
constexpr double kHalfWeek = 302400.0;                          // s
constexpr double kWeek = 604800.0;                              // s
constexpr double kKeplerTolerance = 1e-13;                      // rad

// IS-GPS-200 table 20-IV; BDS-SIS-ICD-2.1 table 5-11; Galileo OS SIS ICD table 58.
struct KeplerConstants {
    double gm;          // m^3/s^2
    double earthRate;   // rad/s
    double startBound;  // of the selection, s
    bool checksRadius;
    double timeShift;        // from GPS time to the system's own, s
    int geostationaryCount;  // ids from 1 to this use the geostationary elements
};

constexpr KeplerConstants kGpsConstants = {
    398600500000000.0, kEarthRateGps, 604800.0, true, 0.0, 0};
constexpr KeplerConstants kBdsConstants = {398600441800000.0,  kEarthRateBds,           1e10, false,
                                           -VORNEL_BDT_OFFSET, VORNEL_BDS_GEOSTATIONARY};
constexpr KeplerConstants kGalileoConstants = {
    398600441800000.0, kEarthRateGps, 1e10, false, 0.0, 0};

// A difference of seconds of the week, folded into half a week on either side.
double FoldWeek(double seconds) {
    if (seconds > kHalfWeek) {
        return seconds - kWeek;
    }
    if (seconds < -kHalfWeek) {
        return seconds + kWeek;
    }
    return seconds;
}

double ClockPolynomial(const KeplerEphemeris& record, double secondsOfWeek) {
    const double dt = FoldWeek(secondsOfWeek - record.tocSeconds);
    return record.af0 + record.af1 * dt + record.af2 * (dt * dt);
}

// The last of the iterates that differ by no more than the tolerance. Not a number ends it too.
double EccentricAnomaly(double meanAnomaly, double e) {
    double anomaly = meanAnomaly;
    double previous = 0.0;
    do {
        previous = anomaly;
        anomaly = meanAnomaly + e * std::sin(previous);
    } while (std::fabs(anomaly - previous) > kKeplerTolerance);
    return anomaly;
}

// The satellite in its orbital plane: x towards the ascending node, m, and the plane's inclination.
struct InPlane {
    double x, y, inclination;
};

InPlane OrbitalPlane(const KeplerEphemeris& record, double eccentricAnomaly, double tk) {
    const double e = record.e;
    const double cosE = std::cos(eccentricAnomaly);
    const double sinE = std::sin(eccentricAnomaly);
    const double d = 1.0 - e * cosE;
    const double v = std::atan2(std::sqrt(1.0 - e * e) * sinE / d, (cosE - e) / d);
    const double phi = v + record.omega;
    const double sin2Phi = std::sin(2.0 * phi);
    const double cos2Phi = std::cos(2.0 * phi);
    const double u = phi + record.cus * sin2Phi + record.cuc * cos2Phi;
    const double r = record.sqrtA * record.sqrtA * d + record.crs * sin2Phi + record.crc * cos2Phi;
    const double i = record.i0 + record.cis * sin2Phi + record.cic * cos2Phi + record.idot * tk;
    return {r * std::cos(u), r * std::sin(u), i};
}

// From the orbital plane to axes whose x axis lies `node` short of the ascending node.
XYZPosition TurnByNode(const InPlane& plane, double node) {
    const double cosI = std::cos(plane.inclination);
    const double sinI = std::sin(plane.inclination);
    const double cosNode = std::cos(node);
    const double sinNode = std::sin(node);
    return {plane.x * cosNode - plane.y * cosI * sinNode,
            plane.x * sinNode + plane.y * cosI * cosNode, plane.y * sinI};
}

// The elements of a geostationary satellite refer to a plane tilted by 5 degrees, in which the node
// does not turn with the earth (BDS-SIS-ICD-2.1, table 5-11): the tilt and the turn follow here.
XYZPosition FromTiltedPlane(const XYZPosition& tilted, double turn) {
    constexpr double kTilt = -0.08726646259971647;  // rad
    const double cosA = std::cos(kTilt);
    const double sinA = std::sin(kTilt);
    const double cosB = std::cos(turn);
    const double sinB = std::sin(turn);
    const double untilted = cosA * tilted.Y + sinA * tilted.Z;
    return {cosB * tilted.X + sinB * untilted, -sinB * tilted.X + cosB * untilted,
            -sinA * tilted.Y + cosA * tilted.Z};
}

// IS-GPS-200, 20.3.3.3.3.1 (clock) and 20.3.3.4.3 (orbit). The group delay is left to the
// receivers' difference, in which it drops out.
bool KeplerPosition(const KeplerStore& store, const KeplerConstants& constants,
                    const Epoch& gpsTime, int satId, XYZPosition& position, double& clock) {
    position = XYZPosition();
    clock = 0.0;
    const Epoch time = constants.timeShift != 0.0 ? gpsTime + constants.timeShift : gpsTime;
    const KeplerEphemeris* record = store.Select(time, satId, constants.startBound);
    if (record == nullptr) {
        return false;
    }
    const double secondsOfWeek = time.SecondsOfWeek();
    const double tk = FoldWeek(secondsOfWeek - record->toeEpoch.SecondsOfWeek());
    const double sqrtA = record->sqrtA;
    const double meanMotion = std::sqrt(constants.gm) / (sqrtA * sqrtA * sqrtA) + record->deltaN;
    const double anomaly = EccentricAnomaly(meanMotion * tk + record->m0, record->e);
    const InPlane plane = OrbitalPlane(*record, anomaly, tk);

    const double earthRate = constants.earthRate;
    if (satId <= constants.geostationaryCount) {
        const double node = record->omegaDot * tk + record->omega0 - earthRate * record->toe;
        position = FromTiltedPlane(TurnByNode(plane, node), earthRate * tk);
    } else {
        const double node =
            (record->omegaDot - earthRate) * tk + record->omega0 - earthRate * record->toe;
        position = TurnByNode(plane, node);
    }

    const double relativity = 2.0 * std::sqrt(constants.gm * (sqrtA * sqrtA)) * record->e *
                              std::sin(anomaly) / kSpeedOfLightSquared;
    clock = ClockPolynomial(*record, secondsOfWeek) - relativity;

    return !constants.checksRadius || HasOrbitRadius(position);
}

}  // namespace

void KeplerStore::AddEphemeris(const KeplerEphemeris& record) {
    RecordsOfSatellite& ofSatellite = bySatellite_[record.satId];
    ofSatellite.lastChoice = ClosestBetween();
    std::vector<Reference>& references = ofSatellite.references;
    for (Reference& reference : references) {
        KeplerEphemeris& stored = records_[reference.position];
        if (stored.toeEpoch == record.toeEpoch) {
            stored = record;
            reference.healthy = record.health == 0;
            return;
        }
    }
    // The record first: without memory for either, no reference points behind the end.
    records_.push_back(record);
    references.push_back({record.toeEpoch.TotalSeconds(), record.health == 0, records_.size() - 1});
}

KeplerStore::ClosestBetween KeplerStore::AroundChoice(const std::vector<Reference>& references,
                                                      const Reference& chosen) {
    ClosestBetween around{-std::numeric_limits<double>::infinity(),
                          std::numeric_limits<double>::infinity(), chosen.position};
    for (const Reference& other : references) {
        if (!other.healthy || other.position == chosen.position) {
            continue;
        }
        const double middle = (other.toeSeconds + chosen.toeSeconds) / 2.0;
        if (other.toeSeconds < chosen.toeSeconds) {
            around.from = std::max(around.from, middle + 2.0 * kRoughTimeError);
        } else {
            around.to = std::min(around.to, middle - 2.0 * kRoughTimeError);
        }
    }
    return around;
}

const KeplerEphemeris* KeplerStore::Select(const Epoch& time, int satId, double startBound) const {
    const auto found = bySatellite_.find(satId);
    if (found == bySatellite_.end()) {
        return nullptr;
    }
    const RecordsOfSatellite& ofSatellite = found->second;
    const double seconds = time.TotalSeconds();
    const KeplerEphemeris* best = nullptr;
    double bestDifference = startBound;
    const auto compare = [&](std::size_t position) {
        const KeplerEphemeris& record = records_[position];
        const double difference = std::fabs(time - record.toeEpoch);
        if (difference < bestDifference) {
            bestDifference = difference;
            best = &record;
        }
    };
    const ClosestBetween& last = ofSatellite.lastChoice;
    if (seconds > last.from && seconds < last.to) {
        compare(last.position);
        return bestDifference > VORNEL_EPHEMERIS_REACH ? nullptr : best;
    }
    double closest = std::numeric_limits<double>::infinity();
    for (const Reference& reference : ofSatellite.references) {
        if (reference.healthy) {
            closest = std::min(closest, std::fabs(seconds - reference.toeSeconds));
        }
    }
    // What is clearly further away than another need not be compared exactly.
    int compared = 0;
    const Reference* chosen = nullptr;
    for (const Reference& reference : ofSatellite.references) {
        const double rough = std::fabs(seconds - reference.toeSeconds);
        if (reference.healthy && rough <= closest + 2.0 * kRoughTimeError) {
            compare(reference.position);
            chosen = &reference;
            ++compared;
        }
    }
    if (compared == 1) {
        ofSatellite.lastChoice = AroundChoice(ofSatellite.references, *chosen);
    }
    return bestDifference > VORNEL_EPHEMERIS_REACH ? nullptr : best;
}

KeplerStore& GpsStore() {
    static KeplerStore store;
    return store;
}

KeplerStore& BdsStore() {
    static KeplerStore store;
    return store;
}

KeplerStore& GalileoStore() {
    static KeplerStore store;
    return store;
}

bool GetGpsPosition(Epoch time, int satId, XYZPosition& position, double& clock) {
    return KeplerPosition(GpsStore(), kGpsConstants, time, satId, position, clock);
}

bool GetBdsPosition(Epoch time, int satId, XYZPosition& position, double& clock) {
    return KeplerPosition(BdsStore(), kBdsConstants, time, satId, position, clock);
}

bool GetGalPosition(Epoch time, int satId, XYZPosition& position, double& clock) {
    return KeplerPosition(GalileoStore(), kGalileoConstants, time, satId, position, clock);
}

}  // namespace vornel
