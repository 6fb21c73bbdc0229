#include "simulation/made_up_sky.h"

#include <algorithm>
#include <cmath>

#include "simulation/noise.h"

namespace vornel::simulation {

namespace {

using reference::kPi;
using reference::Motion;

constexpr double kWeek = 604800.0;
constexpr double kKeplerSpacing = 7200.0;   // s, between the records of a satellite
constexpr double kGlonassSpacing = 1800.0;  // s
constexpr double kGlonassStep = 30.0;       // s, of the integration
constexpr double kGlonassLead =
    1800.0;  // s, of integrated motion before the start and after the end
constexpr double kBdsTimeOffset = 14.0;  // s, GPS time - BDT
constexpr int kLeapSeconds = 18;         // GPS time - UTC
constexpr Real kEarthRateGps = 7.2921151467e-5L;
constexpr Real kEarthRateBds = 7.292115e-5L;

// Semi-major axes, m, and inclinations, rad, near those of the systems.
constexpr double kSynchronousRoot = 6493.405;  // root of 42,164.3 km
constexpr double kDegree = 3.14159265358979323846 / 180.0;

double Wrapped(Real angle) {
    return static_cast<double>(std::remainder(angle, 2.0L * kPi));
}

reference::KeplerConstants ConstantsOf(int system) {
    return system == kGps   ? reference::kGpsConstants
           : system == kBds ? reference::kBdsConstants
                            : reference::kGalileoConstants;
}

// Elements of a satellite in its plane, at the start of the session, with clock and corrections of
// the usual size.
KeplerEphemeris ElementsOf(int system, int id, double sqrtA, double inclination, double node,
                           double anomaly) {
    const auto draw = [&](std::uint64_t use) {
        return 2.0 * Uniform({static_cast<std::uint64_t>(system), static_cast<std::uint64_t>(id),
                              use}) -
               1.0;
    };
    KeplerEphemeris elements;
    elements.satId = id;
    elements.sqrtA = sqrtA;
    elements.e = 0.006 + 0.005 * draw(1);
    elements.i0 = inclination + 0.01 * draw(2);
    elements.omega0 = node;
    elements.omega = 3.0 * draw(3);
    elements.m0 = anomaly - elements.omega;
    elements.deltaN = 4.5e-9 + 5e-10 * draw(4);
    elements.omegaDot = -8.1e-9 + 3e-10 * draw(5);
    elements.idot = 3e-10 * draw(6);
    elements.crc = 200.0 + 60.0 * draw(7);
    elements.crs = 50.0 * draw(8);
    elements.cuc = 3e-6 * draw(9);
    elements.cus = 7e-6 + 2e-6 * draw(10);
    elements.cic = 1e-7 * draw(11);
    elements.cis = 1e-7 * draw(12);
    elements.af0 = 4e-4 * draw(13);
    elements.af1 = 1e-11 * draw(14);
    elements.af2 = 1e-19 * draw(15);
    return elements;
}

// A plane with its node at the given earth-fixed longitude and equal spacing in the plane, planes
// shifted by `phasing` against each other: the pattern of Walker (1984).
struct Pattern {
    int planes;
    int perPlane;
    double phasing;  // rad
    double turn;     // rad, of the whole pattern

    double Node(int index) const {
        return turn + 2.0 * static_cast<double>(kPi) * (index / perPlane) / planes;
    }
    double Anomaly(int index) const {
        return 2.0 * static_cast<double>(kPi) * (index % perPlane) / perPlane +
               phasing * (index / perPlane);
    }
};

// On a circle, its velocity seen from the turning earth.
Motion CircularMotion(double radius, double inclination, double node, double anomaly) {
    const Real speed = std::sqrt(398600.44L / radius);
    const Real u = anomaly;
    const Vector inPlane{radius * std::cos(u), radius * std::sin(u), 0.0L};
    const Vector forward{-speed * std::sin(u), speed * std::cos(u), 0.0L};
    const auto toEarth = [&](const Vector& v) {
        return reference::TurnAxesZ(-node, reference::TurnAxesX(-inclination, v));
    };
    Motion motion{toEarth(inPlane), toEarth(forward)};
    motion.velocity.x += kEarthRateBds * motion.position.y;
    motion.velocity.y -= kEarthRateBds * motion.position.x;
    return motion;
}

Motion Stepped(const Motion& at, const Vector& lunisolar, Real h) {
    using reference::GlonassDerivative;
    using reference::Moved;
    const Motion k1 = GlonassDerivative(at, lunisolar);
    const Motion k2 = GlonassDerivative(Moved(at, h / 2.0L, k1), lunisolar);
    const Motion k3 = GlonassDerivative(Moved(at, h / 2.0L, k2), lunisolar);
    const Motion k4 = GlonassDerivative(Moved(at, h, k3), lunisolar);
    const Motion first = Moved(Moved(at, h / 6.0L, k1), h / 3.0L, k2);
    return Moved(Moved(first, h / 3.0L, k3), h / 6.0L, k4);
}

Vector LunisolarOf(int slot) {
    return {1.9e-9L * (slot % 3 - 1), -2.8e-9L * (slot % 2), 9.3e-10L};
}

// Newton's method on Kepler's equation to the last digit.
Real EccentricAnomalyOf(Real meanAnomaly, Real e) {
    Real anomaly = meanAnomaly;
    for (int round = 0; round < 20; ++round) {
        const Real step =
            (anomaly - e * std::sin(anomaly) - meanAnomaly) / (1.0L - e * std::cos(anomaly));
        anomaly -= step;
        if (std::fabs(step) < 1e-17L) {
            break;
        }
    }
    return anomaly;
}

SatelliteState StateOf(const KeplerEphemeris& record, const reference::KeplerConstants& constants,
                       Real sinceToe, bool geostationary) {
    const Real e = record.e;
    const Real a = static_cast<Real>(record.sqrtA) * record.sqrtA;
    const Real anomaly = EccentricAnomalyOf(
        record.m0 + (std::sqrt(constants.gravity / (a * a * a)) + record.deltaN) * sinceToe, e);
    const Real sine = std::sin(anomaly);
    const Real cosine = std::cos(anomaly);
    const Real latitude = std::atan2(std::sqrt(1.0L - e * e) * sine, cosine - e) + record.omega;
    const Real s2 = std::sin(2.0L * latitude);
    const Real c2 = std::cos(2.0L * latitude);
    const Real u = latitude + record.cus * s2 + record.cuc * c2;
    const Real r = a * (1.0L - e * cosine) + record.crs * s2 + record.crc * c2;
    const Real i = record.i0 + record.idot * sinceToe + record.cis * s2 + record.cic * c2;
    const Real turned = constants.earthRate * sinceToe;
    const Real node = record.omega0 - constants.earthRate * record.toe +
                      record.omegaDot * sinceToe - (geostationary ? 0.0L : turned);
    const Vector inPlane{r * std::cos(u), r * std::sin(u), 0.0L};
    SatelliteState state;
    state.position = reference::TurnAxesZ(-node, reference::TurnAxesX(-i, inPlane));
    if (geostationary) {
        state.position = reference::TurnAxesZ(
            turned, reference::TurnAxesX(-5.0L * kPi / 180.0L, state.position));
    }
    // toc and toe are one in these records.
    state.clock = record.af0 + sinceToe * (record.af1 + sinceToe * record.af2) -
                  2.0L * std::sqrt(constants.gravity) /
                      (reference::kLightSpeed * reference::kLightSpeed) * e * record.sqrtA * sine;
    return state;
}

}  // namespace

MadeUpSky::MadeUpSky(int week, double startSeconds, double duration)
    : week_(week),
      startSeconds_(startSeconds),
      duration_(duration),
      glonassMotion_(kGlonassSlotCount + 1) {
    // Turned so that seven and more satellites of each system stay up over the first hour at 47
    // degrees north and 11 degrees east.
    const Pattern gps{6, 5, 0.7, 1.8};
    for (int i = 0; i < 30; ++i) {
        AddKepler(kGps, i + 1, ElementsOf(kGps, i + 1, 5153.65, 0.96, gps.Node(i), gps.Anomaly(i)),
                  false);
    }
    for (int slot = 1; slot <= 24; ++slot) {
        AddGlonass(slot);
    }
    for (int id = 1; id <= 5; ++id) {
        // Around the meridian of 15 degrees, 28 degrees apart: u + pi is the longitude.
        const double longitude = (15.0 + 28.0 * (id - 3)) * kDegree;
        AddKepler(kBds, id,
                  ElementsOf(kBds, id, kSynchronousRoot, 5.6 * kDegree, 180.0 * kDegree,
                             longitude - 180.0 * kDegree),
                  true);
    }
    for (int i = 0; i < 5; ++i) {
        // One figure of eight over 20 degrees of longitude: nodes and anomalies sum to it.
        const double node = 72.0 * kDegree * i;
        AddKepler(kBds, 6 + i,
                  ElementsOf(kBds, 6 + i, kSynchronousRoot, 0.96, node, 20.0 * kDegree - node),
                  false);
    }
    const Pattern medium{3, 8, 0.26, 0.9};
    for (int i = 0; i < 24; ++i) {
        AddKepler(kBds, 11 + i,
                  ElementsOf(kBds, 11 + i, 5282.6, 0.97, medium.Node(i), medium.Anomaly(i)), false);
    }
    const Pattern galileo{3, 8, 1.1, 0.8};
    for (int i = 0; i < 24; ++i) {
        AddKepler(kGalileo, i + 1,
                  ElementsOf(kGalileo, i + 1, 5440.6, 0.98, galileo.Node(i), galileo.Anomaly(i)),
                  false);
    }
    std::sort(satellites_.begin(), satellites_.end());
}

// Files a record every two hours, all of one orbit (a geostationary one is made anew each time,
// since its elements refer to axes that turn). On entry omega0 is the longitude of the node at the
// start of the session.
void MadeUpSky::AddKepler(int system, int id, KeplerEphemeris elements, bool geostationary) {
    Records& records = kepler_[system];
    records.first.resize(static_cast<std::size_t>(id) + 1, 0);
    records.first[static_cast<std::size_t>(id)] = static_cast<int>(records.all.size());
    satellites_.push_back(MakeSatNumber(system, id));
    const reference::KeplerConstants constants = ConstantsOf(system);
    const Real a = static_cast<Real>(elements.sqrtA) * elements.sqrtA;
    const Real motion = std::sqrt(constants.gravity / (a * a * a)) + elements.deltaN;
    const double offset = system == kBds ? kBdsTimeOffset : 0.0;
    const double first = std::floor(startSeconds_ / kKeplerSpacing) * kKeplerSpacing;
    for (double toe = first; toe <= startSeconds_ + duration_ + kKeplerSpacing;
         toe += kKeplerSpacing) {
        KeplerEphemeris record = elements;
        const int weeksOn = static_cast<int>(toe / kWeek);
        record.toe = toe - weeksOn * kWeek;
        record.toeWeek = record.tocWeek = week_ + weeksOn;
        record.tocSeconds = record.toe;
        record.toeEpoch = Epoch(record.toeWeek, record.toe);
        const Real on = static_cast<Real>(toe) + offset - startSeconds_;
        if (!geostationary) {
            record.m0 = Wrapped(elements.m0 + motion * on);
            record.i0 = elements.i0 + elements.idot * static_cast<double>(on);
        }
        // The node's longitude at the reference time, told as the document wants it: at the start
        // of the week.
        const Real longitude =
            elements.omega0 +
            (geostationary ? 0.0L : (elements.omegaDot - constants.earthRate) * on);
        record.omega0 = Wrapped(longitude + constants.earthRate * record.toe);
        record.af0 = elements.af0 + elements.af1 * static_cast<double>(on);
        records.all.push_back(record);
    }
}

void MadeUpSky::AddGlonass(int slot) {
    satellites_.push_back(MakeSatNumber(kGlonass, slot));
    const Pattern pattern{3, 8, 0.5, 3.0};
    const Vector lunisolar = LunisolarOf(slot);
    Motion motion =
        CircularMotion(25508.0, 64.8 * kDegree, pattern.Node(slot - 1), pattern.Anomaly(slot - 1));
    auto& states = glonassMotion_[static_cast<std::size_t>(slot)];
    const int recordEvery = static_cast<int>(kGlonassSpacing / kGlonassStep);
    const int count =
        static_cast<int>(std::ceil((duration_ + 2.0 * kGlonassLead) / kGlonassStep)) + 1;
    for (int i = 0; i < count; ++i) {
        if (i % recordEvery == 0) {
            const double time = i * kGlonassStep - kGlonassLead;  // after the start, GPS time
            GlonassEphemeris record;
            record.slot = slot;
            record.leapSeconds = kLeapSeconds;
            record.refEpoch = Epoch(week_, startSeconds_) + (time - kLeapSeconds);
            record.tbSeconds = record.refEpoch.second;
            record.channel = GlonassChannel(MakeSatNumber(kGlonass, slot));
            record.clockBias = 1e-5 * (slot - 12) + 1e-12 * time;
            record.clockDrift = 1e-12;
            record.x = static_cast<double>(motion.position.x);
            record.y = static_cast<double>(motion.position.y);
            record.z = static_cast<double>(motion.position.z);
            record.vx = static_cast<double>(motion.velocity.x);
            record.vy = static_cast<double>(motion.velocity.y);
            record.vz = static_cast<double>(motion.velocity.z);
            record.ax = static_cast<double>(lunisolar.x);
            record.ay = static_cast<double>(lunisolar.y);
            record.az = static_cast<double>(lunisolar.z);
            glonass_.push_back(record);
        }
        states.push_back(motion);
        motion = Stepped(motion, lunisolar, kGlonassStep);
    }
}

int MadeUpSky::GlonassChannel(int satellite) {
    // The channels in use in 2020, by slot; satellites on opposite sides of an orbit share one.
    static constexpr int channels[24] = {1,  -4, 5, 6,  1,  -4, 5, 6, -2, -7, 0, -1,
                                         -2, -7, 0, -1, -6, -3, 3, 2, 4,  -3, 3, 2};
    int slot = 0;
    return SplitSatNumber(satellite, &slot) == kGlonass && slot <= 24 ? channels[slot - 1] : 0;
}

Real MadeUpSky::EarthRate(int satellite) {
    const int system = SplitSatNumber(satellite);
    return system == kBds || system == kGlonass ? kEarthRateBds : kEarthRateGps;
}

const std::vector<KeplerEphemeris>& MadeUpSky::keplerRecords(int system) const {
    return kepler_[system].all;
}

Real MadeUpSky::SinceStart(int week, double seconds) const {
    return static_cast<Real>(week - week_) * kWeek + (static_cast<Real>(seconds) - startSeconds_);
}

SatelliteState MadeUpSky::At(int satellite, Real time) const {
    int id = 0;
    const int system = SplitSatNumber(satellite, &id);
    return system == kGlonass ? GlonassAt(id, time) : KeplerAt(system, id, time);
}

SatelliteState MadeUpSky::KeplerAt(int system, int id, Real time) const {
    const Records& records = kepler_[system];
    const Real own = time - (system == kBds ? kBdsTimeOffset : 0.0);
    const KeplerEphemeris* best = nullptr;
    Real bestSince = 0.0L;
    for (auto i = static_cast<std::size_t>(records.first[static_cast<std::size_t>(id)]);
         i < records.all.size() && records.all[i].satId == id; ++i) {
        const Real since = own - SinceStart(records.all[i].toeWeek, records.all[i].toe);
        if (best == nullptr || std::fabs(since) < std::fabs(bestSince)) {
            best = &records.all[i];
            bestSince = since;
        }
    }
    return StateOf(*best, ConstantsOf(system), bestSince, system == kBds && id < 6);
}

SatelliteState MadeUpSky::GlonassAt(int slot, Real time) const {
    const auto& states = glonassMotion_[static_cast<std::size_t>(slot)];
    const Real place = (time + kGlonassLead) / kGlonassStep;
    const auto nearest = std::clamp(std::lround(place), 0L, static_cast<long>(states.size()) - 1);
    const Real rest = (place - static_cast<Real>(nearest)) * kGlonassStep;
    const Motion motion =
        Stepped(states[static_cast<std::size_t>(nearest)], LunisolarOf(slot), rest);
    return {1000.0L * motion.position, 1e-5L * (slot - 12) + 1e-12L * time};
}

}  // namespace vornel::simulation
