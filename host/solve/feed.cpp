#include "solve/feed.h"

#include <algorithm>

namespace vornel::solve {
namespace {

using session::CommonSatellites;
using session::EngineTime;
using session::EpochPair;
using session::Exclusion;
using session::FillSlots;
using session::kOrbitComponents;
using session::OrbitTables;
using session::Plus;
using session::Session;
using session::SignalReader;
using session::Station;
using session::TimedGlonass;
using session::TimedKepler;

void AddOrbits(const OrbitTables& orbits, engine::Engine& engine) {
    std::vector<int> weeks;
    std::vector<double> seconds;
    for (const io::GpsTime& time : orbits.times) {
        weeks.push_back(time.week);
        seconds.push_back(time.seconds);
    }
    for (const auto& [satellite, components] : orbits.satellites) {
        for (std::size_t c = 0; c < kOrbitComponents; ++c) {
            engine.AddPrecise(static_cast<int>(c), satellite, weeks, seconds, components[c]);
        }
    }
}

// Ionosphere coefficients, broadcast and precise orbits.
void AddEphemerides(const Session& session, engine::Engine& engine) {
    if (session.ionosphere) {
        engine.SetIonosphere(session.ionosphere->alpha, session.ionosphere->beta);
    }
    for (const TimedKepler& timed : session.ephemerides.kepler) {
        engine.AddKepler(timed.record);
    }
    for (const TimedGlonass& timed : session.ephemerides.glonass) {
        engine.AddGlonass(timed.record);
    }
    if (session.precise) {
        AddOrbits(session.orbits, engine);
    }
}

engine::Station ToEngine(const Station& station, bool antennas) {
    engine::Station result;
    result.xyz = Plus(station.position, station.eccentricity);
    result.height = station.antennaHeight;
    if (antennas) {
        result.offset1 = station.antenna.offset1;
        result.offset2 = station.antenna.offset2;
    }
    return result;
}

// What the session excludes, by satellite.
struct Exclusions {
    std::set<engine::Satellite> whole;
    std::map<engine::Satellite, std::vector<engine::Span>> spans;
};

Exclusions ExclusionsOf(const Session& session) {
    Exclusions exclusions;
    for (const auto& [satellite, reason] : session.leftOut.unknownChannel) {
        exclusions.whole.insert(satellite);
    }
    constexpr double kADay = 86400.0;
    const auto withinCalendar = [](const io::GpsTime& time, const io::GpsTime& otherwise) {
        return io::IsInCalendar(time) ? time : otherwise;
    };
    const io::GpsTime before =
        withinCalendar(io::Shifted(session.FirstTime(), -kADay), session.FirstTime());
    const io::GpsTime after =
        withinCalendar(io::Shifted(session.LastTime(), kADay), session.LastTime());
    for (const Exclusion& exclusion : session.settings.values.exclusions) {
        if (!exclusion.start && !exclusion.end) {
            exclusions.whole.insert(exclusion.satellite);
            continue;
        }
        const io::GpsTime start = exclusion.start.value_or(before);
        const io::GpsTime end = exclusion.end.value_or(after);
        exclusions.spans[exclusion.satellite].push_back(
            {start.week, start.seconds, end.week, end.seconds});
    }
    return exclusions;
}

// Whole satellites into one call, spans of a satellite into one track: the engine's lists forget
// what stands behind a satellite that is added twice.
void Exclude(Exclusions exclusions, engine::Engine& engine) {
    if (!exclusions.whole.empty()) {
        engine.ExcludeSatellites({exclusions.whole.begin(), exclusions.whole.end()});
    }
    for (auto& [satellite, list] : exclusions.spans) {
        std::sort(list.begin(), list.end(), [](const engine::Span& a, const engine::Span& b) {
            return std::pair(a.startWeek, a.startSeconds) < std::pair(b.startWeek, b.startSeconds);
        });
        engine.ExcludeSpans(satellite, list);
    }
}

FeedSummary AddEpochs(const Session& session, engine::Engine& engine, const Progress& progress) {
    FeedSummary fed;
    const io::Observations &rover = session.inputs.rover, &base = session.inputs.base;
    const SignalReader roverReader(rover, session.signals, true);
    const SignalReader baseReader(base, session.signals, false);
    for (const EpochPair& pair : session.pairs) {
        const io::ObservationEpoch& roverEpoch = rover.epochs[pair.rover];
        const io::ObservationEpoch& baseEpoch = base.epochs[pair.base];
        const auto ofRover = roverReader.Read(roverEpoch, fed.roverLosses);
        const auto ofBase = baseReader.Read(baseEpoch, fed.baseLosses);
        const auto common = CommonSatellites(ofRover, ofBase);
        engine.AddEpoch(FillSlots(roverEpoch.time, ofRover, common, fed.noSlot),
                        FillSlots(baseEpoch.time, ofBase, common, fed.noSlot));
        std::array<bool, engine::kSystemCount> seen{};
        for (const engine::Satellite& satellite : common) {
            fed.common[satellite].push_back(static_cast<std::uint32_t>(fed.epochs));
            seen[IndexOf(satellite.system)] = true;
        }
        for (std::size_t i = 0; i < engine::kSystemCount; ++i) {
            fed.systems[i].epochs += seen[i] ? 1 : 0;
        }
        fed.times.push_back(EngineTime(roverEpoch.time, baseEpoch.time));
        ++fed.epochs;
        if (progress) {
            progress("handing epochs over", fed.epochs, session.pairs.size());
        }
    }
    for (const auto& [satellite, epochs] : fed.common) {
        ++fed.systems[IndexOf(satellite.system)].satellites;
    }
    return fed;
}

}  // namespace

FeedSummary Feed(const Session& session, engine::Engine& engine, const FeedOptions& options) {
    return Feed(session, session.config, engine, options);
}

FeedSummary Feed(const Session& session, const engine::Config& config, engine::Engine& engine,
                 const FeedOptions& options) {
    if (options.tracePath.empty()) {
        engine.Create();
    } else {
        engine.CreateWithTrace(options.tracePath, options.traceLevel);
    }
    engine.Configure(config);
    engine.SetStations(ToEngine(session.rover, session.antennasApplied),
                       ToEngine(session.base, session.antennasApplied));
    if (options.orbits) {
        AddEphemerides(session, engine);
    }
    FeedSummary fed = AddEpochs(session, engine, options.progress);
    Exclude(ExclusionsOf(session), engine);
    return fed;
}

void LeaveOut(const Session& session, const FeedSummary& fed,
              const std::vector<engine::Span>& spans, engine::Engine& engine) {
    engine.ForgetExclusions();
    Exclusions exclusions = ExclusionsOf(session);
    for (const auto& [satellite, epochs] : fed.common) {
        auto& list = exclusions.spans[satellite];
        list.insert(list.end(), spans.begin(), spans.end());
        if (list.empty()) {
            exclusions.spans.erase(satellite);
        }
    }
    Exclude(std::move(exclusions), engine);
}

}  // namespace vornel::solve
