#include "orbit.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "calendar.h"
#include "random.h"
#include "sun_moon.h"

namespace vornel::rough {
namespace {

constexpr std::uint64_t kSkySeed = 20000102;

Vector3 InPlaneToEquator(double x, double y, double inclination, double node) {
    const double ci = std::cos(inclination), si = std::sin(inclination);
    const double cn = std::cos(node), sn = std::sin(node);
    return {x * cn - y * ci * sn, x * sn + y * ci * cn, y * si};
}

double SolveKepler(double meanAnomaly, double e) {
    double anomaly = meanAnomaly;
    for (int pass = 0; pass < 20; ++pass) {
        const double step =
            (anomaly - e * std::sin(anomaly) - meanAnomaly) / (1.0 - e * std::cos(anomaly));
        anomaly -= step;
        if (std::abs(step) < 1e-14) {
            break;
        }
    }
    return anomaly;
}

// Classical elements of a state in axes at rest.
Elements FromState(const Vector3& r, const Vector3& v, double gm) {
    const Vector3 h = Cross(r, v);
    const double radius = Length(r);
    const double speedSquared = Dot(v, v);
    const Vector3 eVector =
        Minus(Scaled(r, speedSquared / gm - 1.0 / radius), Scaled(v, Dot(r, v) / gm));
    Elements elements;
    elements.axis = 1.0 / (2.0 / radius - speedSquared / gm);
    elements.eccentricity = Length(eVector);
    elements.inclination = std::atan2(std::hypot(h[0], h[1]), h[2]);
    elements.node = std::atan2(h[0], -h[1]);
    const Vector3 toNode = {std::cos(elements.node), std::sin(elements.node), 0.0};
    const Vector3 ahead = Unit(Cross(h, toNode));
    elements.perigee = std::atan2(Dot(eVector, ahead), Dot(eVector, toNode));
    const double latitudeArgument = std::atan2(Dot(r, ahead), Dot(r, toNode));
    const double trueAnomaly = latitudeArgument - elements.perigee;
    const double e = elements.eccentricity;
    const double anomaly =
        std::atan2(std::sqrt(1.0 - e * e) * std::sin(trueAnomaly), e + std::cos(trueAnomaly));
    elements.meanAnomaly = anomaly - e * std::sin(anomaly);
    return elements;
}

// --- GLONASS

constexpr double kGlonassStep = SunMoonTable::kStep;

struct StateVector {
    Vector3 position{}, velocity{};
};

// PZ-90.11 (GLONASS ICD, edition 5.1).
Vector3 GlonassAcceleration(const StateVector& s, const Vector3& attraction) {
    constexpr double kGm = 3.986004418e14, kJ2 = 1.08262575e-3, kRadius = 6378136.0;
    constexpr double kRate = 7.292115e-5;
    const Vector3& p = s.position;
    const double r2 = Dot(p, p);
    const double r = std::sqrt(r2);
    const double central = -kGm / (r2 * r);
    const double flat = 1.5 * kJ2 * kGm * kRadius * kRadius / (r2 * r2 * r);
    const double z2 = 5.0 * p[2] * p[2] / r2;
    const double across = central - flat * (1.0 - z2) + kRate * kRate;
    return {across * p[0] + 2.0 * kRate * s.velocity[1] + attraction[0],
            across * p[1] - 2.0 * kRate * s.velocity[0] + attraction[1],
            (central - flat * (3.0 - z2)) * p[2] + attraction[2]};
}

StateVector Moved(const StateVector& s, const Vector3& dp, const Vector3& dv, double factor) {
    return {Plus(s.position, Scaled(dp, factor)), Plus(s.velocity, Scaled(dv, factor))};
}

// One step with the attraction of sun and moon linear in time.
StateVector Stepped(const StateVector& s, const Vector3& attraction, const Vector3& attractionLater,
                    double h) {
    const Vector3 middle = Scaled(Plus(attraction, attractionLater), 0.5);
    const Vector3 p1 = s.velocity, v1 = GlonassAcceleration(s, attraction);
    const StateVector s2 = Moved(s, p1, v1, h / 2.0);
    const Vector3 p2 = s2.velocity, v2 = GlonassAcceleration(s2, middle);
    const StateVector s3 = Moved(s, p2, v2, h / 2.0);
    const Vector3 p3 = s3.velocity, v3 = GlonassAcceleration(s3, middle);
    const StateVector s4 = Moved(s, p3, v3, h);
    const Vector3 p4 = s4.velocity, v4 = GlonassAcceleration(s4, attractionLater);
    const auto sum = [](const Vector3& a, const Vector3& b, const Vector3& c, const Vector3& d) {
        return Plus(Plus(a, d), Scaled(Plus(b, c), 2.0));
    };
    return Moved(s, sum(p1, p2, p3, p4), sum(v1, v2, v3, v4), h / 6.0);
}

}  // namespace

SystemConstants ConstantsOf(io::GnssSystem system) {
    switch (system) {
        case io::GnssSystem::kBeiDou:
            return {3.986004418e14, 7.2921150e-5};
        case io::GnssSystem::kGalileo:
            return {3.986004418e14, 7.2921151467e-5};
        default:
            return {3.986005e14, 7.2921151467e-5};
    }
}

KeplerMotion::KeplerMotion(const Satellite& satellite)
    : geostationary_(satellite.orbitClass == OrbitClass::kGeostationary),
      constants_(ConstantsOf(satellite.id.system)) {
    Random random(kSkySeed, "harmonics", static_cast<std::uint64_t>(satellite.id.system),
                  satellite.id.number);
    motion_ = satellite.revolutions * (constants_.earthRate - satellite.nodeRate);
    atStart_.eccentricity = satellite.eccentricity;
    atStart_.inclination = satellite.inclination;
    atStart_.node = satellite.nodeLongitude;
    atStart_.nodeRate = satellite.nodeRate;
    atStart_.perigee = satellite.perigee;
    atStart_.meanAnomaly = satellite.meanAnomaly;
    if (!geostationary_) {
        // Of the size that the messages have.
        atStart_.deltaN = random.Uniform(3.0e-9, 5.5e-9);
        atStart_.crc = random.Uniform(150.0, 350.0);
        atStart_.crs = random.Uniform(-120.0, 120.0);
        atStart_.cuc = random.Uniform(-6e-6, 6e-6);
        atStart_.cus = random.Uniform(2e-6, 12e-6);
        atStart_.cic = random.Uniform(-2e-7, 2e-7);
        atStart_.cis = random.Uniform(-2e-7, 2e-7);
    }
    const double unperturbed = motion_ - atStart_.deltaN;
    atStart_.axis = std::cbrt(constants_.gm / (unperturbed * unperturbed));
}

double KeplerMotion::EccentricAnomaly(double t) const {
    return SolveKepler(std::remainder(atStart_.meanAnomaly + motion_ * t, 2.0 * kPi),
                       atStart_.eccentricity);
}

double KeplerMotion::Relativity(double t) const {
    return -2.0 * std::sqrt(constants_.gm * atStart_.axis) * atStart_.eccentricity *
           std::sin(EccentricAnomaly(t)) / (kSpeedOfLight * kSpeedOfLight);
}

Vector3 KeplerMotion::Inertial(double t) const {
    const Elements& k = atStart_;
    const double anomaly = EccentricAnomaly(t);
    const double x = k.axis * (std::cos(anomaly) - k.eccentricity);
    const double y = k.axis * std::sqrt(1.0 - k.eccentricity * k.eccentricity) * std::sin(anomaly);
    const double c = std::cos(k.perigee), s = std::sin(k.perigee);
    return InPlaneToEquator(x * c - y * s, x * s + y * c, k.inclination, k.node);
}

Vector3 KeplerMotion::At(double t) const {
    const Elements& k = atStart_;
    if (geostationary_) {
        return InAxesTurnedAboutZ(Inertial(t), constants_.earthRate * t);
    }
    const double anomaly = EccentricAnomaly(t);
    const double ce = std::cos(anomaly), se = std::sin(anomaly);
    const double e = k.eccentricity;
    const double phi = std::atan2(std::sqrt(1.0 - e * e) * se, ce - e) + k.perigee;
    const double s2 = std::sin(2.0 * phi), c2 = std::cos(2.0 * phi);
    const double u = phi + k.cus * s2 + k.cuc * c2;
    const double r = k.axis * (1.0 - e * ce) + k.crs * s2 + k.crc * c2;
    const double i = k.inclination + k.cis * s2 + k.cic * c2;
    return InPlaneToEquator(r * std::cos(u), r * std::sin(u), i,
                            k.node + (k.nodeRate - constants_.earthRate) * t);
}

Elements KeplerMotion::ElementsAt(double t) const {
    if (!geostationary_) {
        Elements k = atStart_;
        k.meanAnomaly = std::remainder(k.meanAnomaly + motion_ * t, 2.0 * kPi);
        k.node += (k.nodeRate - constants_.earthRate) * t;
        return k;
    }
    // Position and velocity in axes at rest that lie, at t, as the earth-fixed ones; then in the
    // tilted ones.
    const Elements& k = atStart_;
    const double anomaly = EccentricAnomaly(t);
    const double e = k.eccentricity, root = std::sqrt(1.0 - e * e);
    const double rate = motion_ / (1.0 - e * std::cos(anomaly));
    const double c = std::cos(k.perigee), s = std::sin(k.perigee);
    const auto inTiltedAxes = [&](double x, double y) {
        const Vector3 atRest =
            InPlaneToEquator(x * c - y * s, x * s + y * c, k.inclination, k.node);
        return InAxesTurnedAboutX(InAxesTurnedAboutZ(atRest, constants_.earthRate * t),
                                  kGeostationaryTilt);
    };
    const Vector3 position =
        inTiltedAxes(k.axis * (std::cos(anomaly) - e), k.axis * root * std::sin(anomaly));
    const Vector3 velocity =
        inTiltedAxes(-k.axis * std::sin(anomaly) * rate, k.axis * root * std::cos(anomaly) * rate);
    Elements tilted = FromState(position, velocity, constants_.gm);
    tilted.axis = k.axis;
    return tilted;
}

Vector3 Path::At(double t) const {
    const double steps = (t - firstTime_) / kStep;
    const auto last = static_cast<double>(nodes_.size()) - 2.0;
    const double whole = std::clamp(std::floor(steps), 0.0, last);
    const auto i = static_cast<std::size_t>(whole);
    const PathNode &a = nodes_[i], &b = nodes_[i + 1];
    const double s = steps - whole;
    const double s2 = s * s, s3 = s2 * s, s4 = s3 * s, s5 = s4 * s;
    const double pb = 10.0 * s3 - 15.0 * s4 + 6.0 * s5;
    const double pa = 1.0 - pb;
    const double va = (s - 6.0 * s3 + 8.0 * s4 - 3.0 * s5) * kStep;
    const double vb = (-4.0 * s3 + 7.0 * s4 - 3.0 * s5) * kStep;
    const double aa = 0.5 * (s2 - 3.0 * s3 + 3.0 * s4 - s5) * kStep * kStep;
    const double ab = 0.5 * (s3 - 2.0 * s4 + s5) * kStep * kStep;
    Vector3 result;
    for (std::size_t c = 0; c < 3; ++c) {
        result[c] = pa * a.position[c] + pb * b.position[c] + va * a.velocity[c] +
                    vb * b.velocity[c] + aa * a.acceleration[c] + ab * b.acceleration[c];
    }
    return result;
}

Path PathOf(const KeplerMotion& motion, double from, double to) {
    constexpr double kH = 2.0;  // s, of the numerical derivatives
    const double first = std::floor(from / Path::kStep) * Path::kStep;
    const auto count = static_cast<std::size_t>(std::ceil((to - first) / Path::kStep)) + 1;
    std::vector<PathNode> nodes;
    nodes.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double t = first + static_cast<double>(i) * Path::kStep;
        const Vector3 p = motion.At(t);
        const Vector3 b1 = motion.At(t - kH), f1 = motion.At(t + kH);
        const Vector3 b2 = motion.At(t - 2.0 * kH), f2 = motion.At(t + 2.0 * kH);
        PathNode node;
        node.position = p;
        for (std::size_t c = 0; c < 3; ++c) {
            node.velocity[c] = (8.0 * (f1[c] - b1[c]) - (f2[c] - b2[c])) / (12.0 * kH);
            node.acceleration[c] =
                (16.0 * (f1[c] + b1[c]) - (f2[c] + b2[c]) - 30.0 * p[c]) / (12.0 * kH * kH);
        }
        nodes.push_back(node);
    }
    return {first, std::move(nodes)};
}

SunMoonTable::SunMoonTable(const io::GpsTime& start, double from, double to)
    : first_(static_cast<int>(std::floor(from / kStep))) {
    for (int step = first_; step * kStep <= to; ++step) {
        bodies_.push_back(SunMoonAt(Normalised(start.week, start.seconds + step * kStep)));
    }
}

GlonassMotion::GlonassMotion(const Satellite& satellite, const SunMoonTable& bodies,
                             double lunisolar, double from, double to) {
    // The start: a Keplerian orbit's state, with the velocity against the turning axes.
    constexpr double kGm = 3.986004418e14;
    const double motion = satellite.revolutions * (kEarthRate - satellite.nodeRate);
    const double axis = std::cbrt(kGm / (motion * motion));
    const double e = satellite.eccentricity;
    const double anomaly = SolveKepler(satellite.meanAnomaly, e);
    const double root = std::sqrt(1.0 - e * e);
    const double rate = motion / (1.0 - e * std::cos(anomaly));
    const double c = std::cos(satellite.perigee), s = std::sin(satellite.perigee);
    const auto fixed = [&](double x, double y) {
        return InPlaneToEquator(x * c - y * s, x * s + y * c, satellite.inclination,
                                satellite.nodeLongitude);
    };
    StateVector state;
    state.position = fixed(axis * (std::cos(anomaly) - e), axis * root * std::sin(anomaly));
    state.velocity =
        fixed(-axis * std::sin(anomaly) * rate, axis * root * std::cos(anomaly) * rate);
    state.velocity[0] += kEarthRate * state.position[1];
    state.velocity[1] -= kEarthRate * state.position[0];

    const int back = static_cast<int>(std::ceil(std::max(0.0, -from) / Path::kStep)) *
                     static_cast<int>(Path::kStep / kGlonassStep);
    const int ahead = (static_cast<int>(std::ceil(std::max(0.0, to) / Path::kStep)) + 1) *
                      static_cast<int>(Path::kStep / kGlonassStep);
    firstTime_ = -back * kGlonassStep;
    states_.resize(static_cast<std::size_t>(back + ahead + 1));
    const auto attractionAt = [&](const Vector3& position, int step) {
        return lunisolar == 0.0
                   ? Vector3{}
                   : Scaled(LunisolarAcceleration(bodies.At(step), position), lunisolar);
    };
    const auto integrate = [&](int direction, int steps) {
        StateVector at = state;
        Vector3 attraction = attractionAt(at.position, 0);
        for (int k = 0; k <= steps; ++k) {
            const int step = direction * k;
            states_[static_cast<std::size_t>(back + step)] = {at.position, at.velocity, attraction};
            const double h = direction * kGlonassStep;
            // The attraction a step further, at the place reached without turning.
            const Vector3 later =
                attractionAt(Plus(at.position, Scaled(at.velocity, h)), step + direction);
            at = Stepped(at, attraction, later, h);
            attraction = later;
        }
    };
    integrate(-1, back);
    integrate(1, ahead);
    std::vector<PathNode> nodes;
    const auto stride = static_cast<std::size_t>(Path::kStep / kGlonassStep);
    for (std::size_t i = 0; i < states_.size(); i += stride) {
        const State& at = states_[i];
        nodes.push_back({at.position, at.velocity,
                         GlonassAcceleration({at.position, at.velocity}, at.attraction)});
    }
    path_ = Path(firstTime_, std::move(nodes));
}

GlonassMotion::State GlonassMotion::StateAt(double t) const {
    const auto index = static_cast<std::size_t>(std::lround((t - firstTime_) / kGlonassStep));
    return states_.at(index);
}

}  // namespace vornel::rough
