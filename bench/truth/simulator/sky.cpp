#include "sky.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "broadcast_errors.h"
#include "calendar.h"
#include "random.h"

namespace vornel::rough {
namespace {

constexpr double kBdtOffset = 14.0;          // s that BeiDou time is behind GPS time
constexpr double kGlonassInterval = 1800.0;  // s
constexpr double kMargin = 600.0;            // s beyond the session for the path of a signal
constexpr double kTableMargin = 6300.0;      // s of precise tables beyond the session

double IntervalOf(io::GnssSystem system) {
    switch (system) {
        case io::GnssSystem::kGps:
            return 7200.0;
        case io::GnssSystem::kBeiDou:
            return 3600.0;
        default:
            return 1800.0;
    }
}

// With the digits that a file has: one, and twelve behind the point.
double AsWritten(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.12e", value);
    return std::strtod(text, nullptr);
}

double Reduced(double angle) {
    return std::remainder(angle, 2.0 * kPi);
}

std::uint64_t KeyOf(const Satellite& satellite) {
    return static_cast<std::uint64_t>(satellite.id.system) * 100 + satellite.id.number;
}

// Radial, along the track and across it, of a state in turning axes.
struct OrbitAxes {
    Vector3 radial, along, across;
    double rate = 0.0;  // rad/s, of the turn against the stars
};

OrbitAxes AxesOf(const Vector3& position, const Vector3& velocity) {
    const Vector3 atRest = Plus(velocity, Cross({0.0, 0.0, kEarthRate}, position));
    OrbitAxes axes;
    axes.radial = Unit(position);
    const Vector3 momentum = Cross(position, atRest);
    axes.across = Unit(momentum);
    axes.along = Cross(axes.across, axes.radial);
    axes.rate = Length(momentum) / Dot(position, position);
    return axes;
}

Vector3 InAxes(const OrbitAxes& axes, const Vector3& v) {
    return Plus(Plus(Scaled(axes.radial, v[0]), Scaled(axes.along, v[1])),
                Scaled(axes.across, v[2]));
}

// The error of a message, worked into its elements.
void Disturb(Elements& k, const MessageError& error, double gm) {
    const auto motionAt = [gm](double axis) { return std::sqrt(gm / (axis * axis * axis)); };
    const double axis = k.axis;
    k.axis += error.radial;
    k.deltaN += motionAt(axis) - motionAt(k.axis) + error.alongRate / axis;
    k.meanAnomaly += error.along / axis;
    // Across: the plane is turned about the nodes and about the axis that stands across them.
    k.inclination += error.across[1] / axis;
    const double turn = error.across[0] / axis;
    k.node += turn / std::sin(k.inclination);
    k.perigee -= turn / std::tan(k.inclination);
    // Eccentricity vector: towards the perigee and across it.
    k.eccentricity = std::abs(k.eccentricity + error.eccentricity[0] / axis);
    const double swing = error.eccentricity[1] / axis / std::max(1e-4, k.eccentricity);
    k.perigee += swing;
    k.meanAnomaly -= swing;
}

// The same for a state: the error keeps its radial, along and across parts while the axes turn.
void Disturb(GlonassMotion::State& state, const MessageError& error) {
    const OrbitAxes axes = AxesOf(state.position, state.velocity);
    const Vector3 shift = InAxes(axes, {error.radial, error.along, error.across[0]});
    const Vector3 turn = Minus(Scaled(axes.across, axes.rate), {0.0, 0.0, kEarthRate});
    state.position = Plus(state.position, shift);
    state.velocity =
        Plus(state.velocity, Plus(Cross(turn, shift), Scaled(axes.along, error.alongRate)));
}

}  // namespace

ClockTruth::ClockTruth(std::uint64_t seed, const Satellite& satellite, double roughness,
                       double from, double to) {
    Random random(seed, "satellite clock", KeyOf(satellite));
    offset_ = random.Uniform(-4e-4, 4e-4);
    drift_ = random.Normal(0.0, 3e-12);
    constexpr double kAllanAtOne = 5e-12;
    const double step = roughness * kAllanAtOne * std::sqrt(kStep);
    firstTime_ = std::floor(from / kStep) * kStep;
    double value = 0.0;
    for (double t = firstTime_; t < to + 2.0 * kStep; t += kStep) {
        walk_.push_back(value);
        value += step * random.Normal();
    }
}

double ClockTruth::WalkAt(double t) const {
    const double steps = (t - firstTime_) / kStep;
    const double whole =
        std::clamp(std::floor(steps), 0.0, static_cast<double>(walk_.size()) - 2.0);
    const auto i = static_cast<std::size_t>(whole);
    return walk_[i] + (walk_[i + 1] - walk_[i]) * (steps - whole);
}

double GroupDelayOf(std::uint64_t seed, const Satellite& satellite) {
    return Random(seed, "group delay", KeyOf(satellite)).Normal(0.0, 5e-9);
}

Sky::Sky(const Scenario& scenario)
    : seed_(scenario.seed),
      effects_(scenario.effects),
      messageScale_(scenario.effects.broadcastError * scenario.broadcastQuality) {
    constexpr double kQuarter = 900.0;
    const int leap = LeapSeconds(scenario.start);
    const double utc = scenario.start.seconds - leap;
    const double originUtc = std::floor((utc - 1.0) / kQuarter) * kQuarter;
    origin_ = Normalised(scenario.start.week, originUtc + leap);
    startTime_ = utc - originUtc;
    endTime_ = startTime_ + scenario.duration;
    for (const Satellite& satellite : SatellitesAt(origin_)) {
        // Some are always out of order; more of the second generation of BeiDou.
        const bool old = satellite.id.system == io::GnssSystem::kBeiDou && !satellite.modern;
        const bool works =
            effects_.tracking == 0.0 ||
            !Random(seed_, "out of order", KeyOf(satellite)).Chance(old ? 0.2 : 0.04);
        if (works && scenario.systems[static_cast<std::size_t>(satellite.id.system)]) {
            satellites_.push_back(satellite);
        }
    }
    const double reach = scenario.preciseInterval ? 3.0 * 3600.0 : 3600.0;
    const double messageReach = 7200.0 + 3600.0;
    const SunMoonTable bodies(origin_, startTime_ - reach - kMargin, endTime_ + reach + kMargin);
    for (const Satellite& satellite : satellites_) {
        Body body;
        if (satellite.id.system == io::GnssSystem::kGlonass) {
            body.glonass = std::make_unique<GlonassMotion>(satellite, bodies, effects_.lunisolar,
                                                           startTime_ - reach, endTime_ + reach);
            body.path = body.glonass->path();
        } else {
            body.kepler = std::make_unique<KeplerMotion>(satellite);
            body.path = PathOf(*body.kepler, startTime_ - kMargin, endTime_ + kMargin);
        }
        body.clock = ClockTruth(seed_, satellite, effects_.broadcastError,
                                startTime_ - messageReach, endTime_ + messageReach);
        bodies_.push_back(std::move(body));
    }
}

io::GpsTime Sky::TimeAt(double t) const {
    return Normalised(origin_.week, origin_.seconds + t);
}

double Sky::ClockAt(std::size_t satellite, double t) const {
    const Body& body = bodies_[satellite];
    return body.clock.At(t) + (body.kepler ? body.kepler->Relativity(t) : 0.0);
}

Vector3 Sky::AnyPositionAt(std::size_t satellite, double t) const {
    const Body& body = bodies_[satellite];
    return body.kepler ? body.kepler->At(t) : body.path.At(t);
}

io::Navigation Sky::Messages() const {
    io::Navigation messages;
    messages.file = "rough world navigation";
    messages.version = 3.04;
    messages.leapSeconds = LeapSeconds(origin_);
    for (std::size_t s = 0; s < satellites_.size(); ++s) {
        if (bodies_[s].kepler) {
            AddKeplerMessages(s, messages);
        } else {
            AddGlonassMessages(s, messages);
        }
    }
    return messages;
}

void Sky::AddKeplerMessages(std::size_t s, io::Navigation& messages) const {
    const Satellite& satellite = satellites_[s];
    const Body& body = bodies_[s];
    const io::GnssSystem system = satellite.id.system;
    const double offset = system == io::GnssSystem::kBeiDou ? kBdtOffset : 0.0;
    const double interval = IntervalOf(system);
    const double rate = ConstantsOf(system).earthRate;
    // Reference times, in the week of the origin, of the system's own time.
    const double originOfWeek = origin_.seconds - offset;
    const double first = std::floor((originOfWeek + startTime_) / interval) * interval;
    const double last = std::ceil((originOfWeek + endTime_) / interval) * interval;
    MessageErrors errors(seed_, satellite, messageScale_);
    for (double toe = first; toe <= last; toe += interval) {
        const double t = toe - originOfWeek;
        Elements k = body.kepler->ElementsAt(t);
        const MessageError error = errors.Next(interval);
        Disturb(k, error, ConstantsOf(system).gm);
        const io::GpsTime reference = Normalised(origin_.week, toe);
        io::KeplerRecord r;
        r.satellite = satellite.id;
        r.message = system == io::GnssSystem::kGps       ? io::NavigationMessage::kLnav
                    : system == io::GnssSystem::kGalileo ? io::NavigationMessage::kInav
                    : satellite.orbitClass == OrbitClass::kGeostationary
                        ? io::NavigationMessage::kD2
                        : io::NavigationMessage::kD1;
        r.tocWeek = r.toeWeek = reference.week;
        r.tocSeconds = r.toeSeconds = reference.seconds;
        r.af0 = AsWritten(body.clock.At(t) + error.clock / kSpeedOfLight);
        r.af1 = AsWritten(body.clock.drift() + error.clockRate / kSpeedOfLight);
        r.sqrtA = AsWritten(std::sqrt(k.axis));
        r.eccentricity = AsWritten(k.eccentricity);
        r.i0 = AsWritten(k.inclination);
        r.omega0 = AsWritten(Reduced(k.node + rate * reference.seconds));
        r.omega = AsWritten(Reduced(k.perigee));
        r.m0 = AsWritten(Reduced(k.meanAnomaly));
        r.deltaN = AsWritten(k.deltaN);
        r.omegaDot = AsWritten(k.nodeRate);
        r.crc = AsWritten(k.crc);
        r.crs = AsWritten(k.crs);
        r.cuc = AsWritten(k.cuc);
        r.cus = AsWritten(k.cus);
        r.cic = AsWritten(k.cic);
        r.cis = AsWritten(k.cis);
        const double delay = effects_.hardwareBiases * GroupDelayOf(seed_, satellite);
        r.groupDelay1 = AsWritten(delay);
        r.groupDelay2 = system == io::GnssSystem::kGps ? 0.0 : AsWritten(delay);
        r.iode = std::fmod(toe / interval, 128.0) + 1.0;
        r.iodc = system == io::GnssSystem::kGalileo ? 0.0 : r.iode;
        r.accuracy = system == io::GnssSystem::kGalileo ? 3.12 : 2.0;
        r.dataSources = system == io::GnssSystem::kGalileo ? 517 : 0;
        r.codesOnL2 = system == io::GnssSystem::kGps ? 1 : 0;
        r.fitInterval = system == io::GnssSystem::kGps ? 4.0 : 0.0;
        r.transmitTime = AsWritten(Normalised(0, reference.seconds - interval).seconds);
        messages.kepler.push_back(r);
    }
}

void Sky::AddGlonassMessages(std::size_t s, io::Navigation& messages) const {
    const Satellite& satellite = satellites_[s];
    const Body& body = bodies_[s];
    const int leap = LeapSeconds(origin_);
    // A quarter to, and a quarter past, each hour of UTC.
    constexpr double kPhase = 900.0;
    const double utcOfOrigin = origin_.seconds - leap;
    const double first =
        std::floor((utcOfOrigin + startTime_ - kPhase) / kGlonassInterval) * kGlonassInterval +
        kPhase;
    MessageErrors errors(seed_, satellite, messageScale_);
    for (double utc = first; utc - utcOfOrigin < endTime_ + kGlonassInterval;
         utc += kGlonassInterval) {
        const double t = utc - utcOfOrigin;
        GlonassMotion::State state = body.glonass->StateAt(t);
        const MessageError error = errors.Next(kGlonassInterval);
        Disturb(state, error);
        const io::GpsTime reference = Normalised(origin_.week, utc);
        io::GlonassRecord r;
        r.slot = satellite.id.number;
        r.referenceWeek = reference.week;
        r.referenceSeconds = reference.seconds;
        r.leapSeconds = leap;
        r.clockBias = AsWritten(body.clock.At(t) + error.clock / kSpeedOfLight);
        r.clockDrift = AsWritten(body.clock.drift() + error.clockRate / kSpeedOfLight);
        r.messageFrameTime = AsWritten(reference.seconds);
        for (std::size_t c = 0; c < 3; ++c) {
            r.position[c] = AsWritten(state.position[c] / 1000.0);
            r.velocity[c] = AsWritten(state.velocity[c] / 1000.0);
            r.acceleration[c] = AsWritten(state.attraction[c] / 1000.0);
        }
        r.channel = satellite.channel;
        messages.glonass.push_back(r);
    }
}

io::PreciseOrbits Sky::PreciseTables(double interval) const {
    io::PreciseOrbits tables;
    tables.file = "rough world precise orbits";
    tables.version = 'd';
    tables.interval = interval;
    tables.coordinateSystem = "IGS20";
    tables.agency = "RGHW";
    const double offset = origin_.seconds;
    const double first = std::floor((offset + startTime_ - kTableMargin) / interval) * interval;
    const double last = std::ceil((offset + endTime_ + kTableMargin) / interval) * interval;
    for (double seconds = first; seconds <= last; seconds += interval) {
        tables.epochs.push_back(Normalised(origin_.week, seconds));
    }
    for (std::size_t s = 0; s < satellites_.size(); ++s) {
        io::OrbitSeries series;
        series.satellite = satellites_[s].id;
        const TableError error(seed_, satellites_[s], effects_.preciseError);
        const double mass = effects_.satelliteAntenna * AntennaBelowMass(satellites_[s]);
        for (std::size_t e = 0; e < tables.epochs.size(); ++e) {
            const double t = first - offset + static_cast<double>(e) * interval;
            io::OrbitPoint point;
            point.epoch = static_cast<std::uint32_t>(e);
            Vector3 position = AnyPositionAt(s, t);
            constexpr double kH = 1.0;  // s
            const Vector3 velocity =
                Scaled(Minus(AnyPositionAt(s, t + kH), AnyPositionAt(s, t - kH)), 0.5 / kH);
            const Vector3 shift = Plus(error.At(t), {mass, 0.0, 0.0});
            position = Plus(position, InAxes(AxesOf(position, velocity), shift));
            for (std::size_t c = 0; c < 3; ++c) {
                // Kilometres with six digits behind the point.
                point.position[c] = std::round(position[c] * 1000.0) / 1e6 * 1000.0;
            }
            // Microseconds with six.
            point.clock =
                std::round((bodies_[s].clock.At(t) + error.ClockAt(t)) * 1e12) / 1e6 * 1e-6;
            series.points.push_back(point);
        }
        tables.satellites.push_back(std::move(series));
    }
    return tables;
}

}  // namespace vornel::rough
