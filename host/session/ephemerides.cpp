#include "session/ephemerides.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vornel::session {
namespace {

// Bounds of VornelBlCore.h.
constexpr double kMostEccentricity = 0.5;
constexpr double kLeastSqrtA = 1000.0, kMostSqrtA = 10000.0;         // m^0.5
constexpr double kMostAngle = 7.0;                                   // rad
constexpr double kMostRate = 1e-3;                                   // rad/s
constexpr double kLeastRadius = VORNEL_LEAST_ORBIT_RADIUS / 1000.0;  // km
constexpr double kMostRadius = VORNEL_GREATEST_ORBIT_RADIUS / 1000.0;
constexpr double kMostClock = 1.0;        // s
constexpr double kMostClockDrift = 1e-3;  // s/s
constexpr double kMostClockAging = 1e-6;  // s/s^2
constexpr int kMostLeapSeconds = 100;

// Gravitational parameter, m^3/s^2, of the CNAV messages (IS-GPS-200, BDS-SIS-ICD).
constexpr double kGmGps = 3.986005e14;
constexpr double kGmOther = 3.986004418e14;

int ToInt(double value) {
    constexpr double kMost = 2e9;
    return std::isfinite(value) && std::abs(value) < kMost ? static_cast<int>(value) : 0;
}

double FiniteOrZero(double value) {
    return std::isfinite(value) ? value : 0.0;
}

// Place of a message among those of its system; the lowest is taken.
int Rank(io::NavigationMessage message) {
    using M = io::NavigationMessage;
    switch (message) {
        case M::kLnav:
        case M::kD1:
        case M::kD2:
        case M::kInav:
        case M::kFdma:
            return 0;
        case M::kFnav:
        case M::kCnav:
        case M::kCnv1:
            return 1;
        case M::kCnv2:
            return 2;
        case M::kCnv3:
            return 3;
    }
    return 4;
}

io::GpsTime ReferenceOf(const engine::Kepler& record) {
    const double offset = record.system == engine::System::kBds ? VORNEL_BDT_OFFSET : 0.0;
    return io::Shifted({record.toeWeek, record.toe}, offset);
}

io::GpsTime ReferenceOf(const engine::Glonass& record) {
    return io::Shifted({record.week, record.seconds}, record.leapSeconds);
}

// A record moved to the reference time `shift` seconds later, with the rates of axis and mean
// motion worked into the elements. Along the orbit M, n and the angles are those of the message at
// the new reference time; only the square of `shift` times half the rate is beyond the engine's
// formulas between two references.
engine::Kepler Moved(const engine::Kepler& original, const io::KeplerRecord& message,
                     double shift) {
    engine::Kepler record = original;
    const double gm = original.system == engine::System::kGps ? kGmGps : kGmOther;
    const double axis = original.sqrtA * original.sqrtA;
    const double newAxis = axis + message.aDot * shift;
    // The mean motion refers to the axis at the message's own reference time.
    const double motion =
        std::sqrt(gm / (axis * axis * axis)) + original.deltaN + message.deltaNDot * shift;
    const double mean =
        std::sqrt(gm / (axis * axis * axis)) + original.deltaN + 0.5 * message.deltaNDot * shift;
    record.sqrtA = std::sqrt(newAxis);
    record.deltaN = motion - std::sqrt(gm / (newAxis * newAxis * newAxis));
    record.m0 = std::remainder(original.m0 + mean * shift, 2.0 * M_PI);
    record.omega0 = original.omega0 + original.omegaDot * shift;
    record.i0 = original.i0 + original.idot * shift;
    const io::GpsTime toe = io::Shifted({original.toeWeek, original.toe}, shift);
    // omega0 is counted from the week's start: crossing it turns the node by a week of the earth.
    record.toeWeek = toe.week;
    record.toe = toe.seconds;
    return record;
}

// The records that stand for one message.
std::vector<engine::Kepler> Spread(const engine::Kepler& record, const io::KeplerRecord& message) {
    if (!message.hasRates) {
        return {record};
    }
    constexpr double kStep = 900.0;   // s between references
    constexpr double kHalf = 7200.0;  // s that a message is good for, each side
    std::vector<engine::Kepler> records;
    for (double shift = -kHalf; shift <= kHalf; shift += kStep) {
        const engine::Kepler moved = Moved(record, message, shift);
        if (moved.toeWeek == record.toeWeek) {
            records.push_back(moved);
        }
    }
    return records;
}

bool Reaches(const io::GpsTime& reference, const io::GpsTime& first, const io::GpsTime& last) {
    // A margin for the time of flight, and so that no record on the edge is lost.
    constexpr double kMargin = 60.0;
    return io::SecondsBetween(reference, first) <= VORNEL_EPHEMERIS_REACH + kMargin &&
           io::SecondsBetween(last, reference) <= VORNEL_EPHEMERIS_REACH + kMargin;
}

struct Candidate {
    int rank = 0;
    bool partOfSpread = false;  // one of several that stand for one message
    TimedKepler timed;
};

// Walks all files; answers the best record of each satellite and reference time.
class Selector {
  public:
    Selector(Ephemerides& result, const io::GpsTime& first, const io::GpsTime& last)
        : result_(result), first_(first), last_(last) {}

    void Take(const io::KeplerRecord& message) {
        const auto satellite = engine::ToEngine(message.satellite);
        if (!satellite) {
            result_.unnumbered.insert(io::ToString(message.satellite));
            return;
        }
        ++result_.recordsRead;
        const engine::Kepler record = ToEngineKepler(message, *satellite);
        if (const auto reason = OutOfBounds(record)) {
            Drop(*reason);
            return;
        }
        for (const engine::Kepler& part : Spread(record, message)) {
            const io::GpsTime reference = ReferenceOf(part);
            if (OutOfBounds(part) || !Reaches(reference, first_, last_)) {
                if (!message.hasRates) {
                    Drop("too far from the session");
                }
                continue;
            }
            Offer(*satellite,
                  Candidate{Rank(message.message), message.hasRates, {reference, part}});
        }
    }

    void Take(const io::GlonassRecord& message) {
        const auto satellite = engine::ToEngine({io::GnssSystem::kGlonass, message.slot});
        if (!satellite) {
            result_.unnumbered.insert(io::ToString({io::GnssSystem::kGlonass, message.slot}));
            return;
        }
        ++result_.recordsRead;
        const engine::Glonass record = ToEngineGlonass(message);
        if (const auto reason = OutOfBounds(record)) {
            Drop(*reason);
            return;
        }
        if (record.health != 0) {
            Drop("GLONASS satellite not healthy");
            return;
        }
        const io::GpsTime reference = ReferenceOf(record);
        if (!Reaches(reference, first_, last_)) {
            Drop("too far from the session");
            return;
        }
        if (!glonass_.try_emplace({record.slot, reference}, TimedGlonass{reference, record})
                 .second) {
            Drop("repeated");
        }
    }

    void Finish() {
        for (const auto& [key, candidate] : kepler_) {
            if (Outranked(key.first, candidate)) {
                if (!candidate.partOfSpread) {
                    Drop(kPreferred);
                }
                continue;
            }
            result_.kepler.push_back(candidate.timed);
            ++result_.taken[engine::IndexOf(candidate.timed.record.system)];
        }
        for (const auto& [key, timed] : glonass_) {
            result_.glonass.push_back(timed);
            ++result_.taken[engine::IndexOf(engine::System::kGlonass)];
        }
    }

  private:
    static constexpr const char* kPreferred = "another message was preferred";
    using Key = std::pair<engine::Satellite, io::GpsTime>;

    void Drop(const std::string& reason) { ++result_.dropped[reason]; }

    // Whether a better message of the satellite serves the same hours.
    bool Outranked(engine::Satellite satellite, const Candidate& candidate) const {
        constexpr double kServes = 7200.0;  // s from the reference time
        const io::GpsTime& time = candidate.timed.reference;
        const auto begin = kepler_.lower_bound({satellite, io::Shifted(time, -kServes)});
        const auto end = kepler_.upper_bound({satellite, io::Shifted(time, kServes)});
        return std::any_of(begin, end,
                           [&](const auto& entry) { return entry.second.rank < candidate.rank; });
    }

    void Offer(engine::Satellite satellite, const Candidate& candidate) {
        const auto [place, added] =
            kepler_.try_emplace({satellite, candidate.timed.reference}, candidate);
        if (added) {
            return;
        }
        const bool sameMessage = place->second.rank == candidate.rank;
        Drop(sameMessage ? "repeated" : kPreferred);
        if (candidate.rank < place->second.rank) {
            place->second = candidate;
        }
    }

    Ephemerides& result_;
    io::GpsTime first_;
    io::GpsTime last_;
    std::map<Key, Candidate> kepler_;
    std::map<std::pair<int, io::GpsTime>, TimedGlonass> glonass_;
};

}  // namespace

engine::Kepler ToEngineKepler(const io::KeplerRecord& r, engine::Satellite satellite) {
    engine::Kepler record;
    record.system = satellite.system;
    record.satId = satellite.prn;
    record.tocWeek = r.tocWeek;
    record.tocSeconds = r.tocSeconds;
    record.af0 = r.af0;
    record.af1 = r.af1;
    record.af2 = r.af2;
    record.sqrtA = r.sqrtA;
    record.e = r.eccentricity;
    record.i0 = r.i0;
    record.omega0 = r.omega0;
    record.omega = r.omega;
    record.m0 = r.m0;
    record.deltaN = r.deltaN;
    record.omegaDot = r.omegaDot;
    record.idot = r.idot;
    record.crc = r.crc;
    record.crs = r.crs;
    record.cuc = r.cuc;
    record.cus = r.cus;
    record.cic = r.cic;
    record.cis = r.cis;
    record.iode = ToInt(r.iode);
    record.iodc = FiniteOrZero(r.iodc);
    record.toe = r.toeSeconds;
    record.toeWeek = r.toeWeek;
    record.transmitTime = FiniteOrZero(r.transmitTime);
    record.l2Codes = r.codesOnL2;
    record.health = r.health;
    record.accuracy = FiniteOrZero(r.accuracy);
    record.l2PFlag = r.l2PFlag;
    record.tgd = FiniteOrZero(r.groupDelay1);
    record.tgd2 = FiniteOrZero(r.groupDelay2);
    record.fitInterval = ToInt(r.fitInterval);
    return record;
}

engine::Glonass ToEngineGlonass(const io::GlonassRecord& r) {
    engine::Glonass record;
    record.slot = r.slot;
    record.week = r.referenceWeek;
    record.seconds = r.referenceSeconds;
    record.tbSeconds = std::fmod(r.referenceSeconds, io::kSecondsPerDay);
    record.clockBias = r.clockBias;
    record.clockDrift = r.clockDrift;
    record.position = r.position;
    record.velocity = r.velocity;
    record.acceleration = r.acceleration;
    record.health = r.health;
    record.channel = r.channel;
    record.age = ToInt(r.age);
    record.leapSeconds = r.leapSeconds;
    return record;
}

std::optional<std::string> OutOfBounds(const engine::Kepler& r) {
    for (const double value :
         {r.af0,    r.af1,        r.af2,          r.sqrtA, r.e,   r.i0,  r.omega0, r.omega, r.m0,
          r.deltaN, r.omegaDot,   r.idot,         r.crc,   r.crs, r.cuc, r.cus,    r.cic,   r.cis,
          r.toe,    r.tocSeconds, r.transmitTime, r.tgd,   r.tgd2}) {
        if (!std::isfinite(value)) {
            return "value not finite";
        }
    }
    if (!io::IsInCalendar({r.toeWeek, r.toe}) || !io::IsInCalendar({r.tocWeek, r.tocSeconds})) {
        return "reference time out of bounds";
    }
    if (!(std::abs(r.af0) <= kMostClock && std::abs(r.af1) <= kMostClockDrift &&
          std::abs(r.af2) <= kMostClockAging)) {
        return "clock out of bounds";
    }
    if (!(r.e >= 0.0 && r.e <= kMostEccentricity)) {
        return "eccentricity out of bounds";
    }
    if (!(r.sqrtA >= kLeastSqrtA && r.sqrtA <= kMostSqrtA)) {
        return "semi-major axis out of bounds";
    }
    for (const double angle : {r.i0, r.omega0, r.omega, r.m0, r.cuc, r.cus, r.cic, r.cis}) {
        if (!(std::abs(angle) <= kMostAngle)) {
            return "angle out of bounds";
        }
    }
    for (const double rate : {r.deltaN, r.omegaDot, r.idot}) {
        if (!(std::abs(rate) <= kMostRate)) {
            return "rate out of bounds";
        }
    }
    return std::nullopt;
}

std::optional<std::string> OutOfBounds(const engine::Glonass& r) {
    for (const auto& vector : {r.position, r.velocity, r.acceleration}) {
        for (const double value : vector) {
            if (!std::isfinite(value)) {
                return "value not finite";
            }
        }
    }
    if (!std::isfinite(r.clockBias) || !std::isfinite(r.clockDrift)) {
        return "value not finite";
    }
    if (!(std::abs(r.clockBias) <= kMostClock && std::abs(r.clockDrift) <= kMostClockDrift)) {
        return "clock out of bounds";
    }
    if (!io::IsInCalendar({r.week, r.seconds}) || r.leapSeconds < 0 ||
        r.leapSeconds > kMostLeapSeconds) {
        return "reference time out of bounds";
    }
    const double radius = std::hypot(r.position[0], r.position[1], r.position[2]);
    if (!(radius >= kLeastRadius && radius <= kMostRadius)) {
        return "GLONASS position out of bounds";
    }
    if (r.channel < VORNEL_LOWEST_CHANNEL || r.channel > VORNEL_HIGHEST_CHANNEL) {
        return "GLONASS channel out of bounds";
    }
    return std::nullopt;
}

Ephemerides SelectEphemerides(const std::vector<io::Navigation>& files, const io::GpsTime& first,
                              const io::GpsTime& last) {
    Ephemerides result;
    Selector selector(result, first, last);
    for (const io::Navigation& file : files) {
        for (const io::KeplerRecord& record : file.kepler) {
            selector.Take(record);
        }
        for (const io::GlonassRecord& record : file.glonass) {
            selector.Take(record);
        }
        if (file.droppedCount > 0) {
            result.dropped["unreadable in the file"] += file.droppedCount;
            result.recordsRead += file.droppedCount;
        }
    }
    selector.Finish();
    return result;
}

bool HasOrbit(const Ephemerides& ephemerides, engine::Satellite satellite,
              const std::vector<io::GpsTime>& times) {
    const auto reachesAny = [&times](const io::GpsTime& reference) {
        const auto first = std::lower_bound(times.begin(), times.end(),
                                            io::Shifted(reference, -VORNEL_EPHEMERIS_REACH));
        return first != times.end() &&
               io::SecondsBetween(reference, *first) <= VORNEL_EPHEMERIS_REACH;
    };
    if (satellite.system == engine::System::kGlonass) {
        return std::any_of(
            ephemerides.glonass.begin(), ephemerides.glonass.end(), [&](const TimedGlonass& timed) {
                return timed.record.slot == satellite.prn && reachesAny(timed.reference);
            });
    }
    return std::any_of(
        ephemerides.kepler.begin(), ephemerides.kepler.end(), [&](const TimedKepler& timed) {
            return timed.record.system == satellite.system && timed.record.satId == satellite.prn &&
                   timed.record.health == 0 && reachesAny(timed.reference);
        });
}

std::optional<IonosphereChoice> FirstGpsIonosphere(const std::vector<io::Navigation>& files) {
    for (const io::Navigation& file : files) {
        for (const io::IonosphereSet& set : file.ionosphere) {
            const bool klobuchar = set.system == io::GnssSystem::kGps &&
                                   set.model == io::IonosphereModel::kKlobuchar && set.hasAlpha &&
                                   set.hasBeta;
            const auto finite = [](double value) { return std::isfinite(value); };
            if (klobuchar && std::all_of(set.alpha.begin(), set.alpha.end(), finite) &&
                std::all_of(set.beta.begin(), set.beta.end(), finite)) {
                return IonosphereChoice{set.alpha, set.beta, file.file, set.line};
            }
        }
    }
    return std::nullopt;
}

}  // namespace vornel::session
