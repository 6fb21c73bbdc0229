#include "report/tracks.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace vornel::report {
namespace {

using engine::Ambiguity;
using engine::Solution;
using engine::System;

std::optional<engine::Satellite> SatelliteOf(int system, int prn) {
    for (const engine::System known : engine::kSystems) {
        if (static_cast<int>(known) == system) {
            return engine::Satellite{known, prn};
        }
    }
    return std::nullopt;
}

Span SpanOf(const Ambiguity& a) {
    return {static_cast<std::uint32_t>(std::max(a.firstEpoch, 0)),
            static_cast<std::uint32_t>(std::max(a.lastEpoch, 0))};
}

bool CrossesAfter(const std::vector<Ambiguity>& ambiguities, std::size_t epoch) {
    return std::any_of(ambiguities.begin(), ambiguities.end(), [&](const Ambiguity& a) {
        const Span span = SpanOf(a);
        return span.first <= epoch && epoch < span.last;
    });
}

// Seconds since 1980 as a key: the engine keeps whole seconds.
long long Key(int week, double seconds) {
    constexpr long long kWeek = 604800;
    return week * kWeek + std::llround(seconds);
}

std::vector<Residuals> PlacedResiduals(const Solution& solution,
                                       const std::vector<io::GpsTime>& times,
                                       std::size_t& unplaced) {
    std::map<long long, std::uint32_t> epochs;
    for (std::size_t i = 0; i < times.size(); ++i) {
        epochs.emplace(Key(times[i].week, times[i].seconds), static_cast<std::uint32_t>(i));
    }
    std::vector<Residuals> list;
    for (const engine::ResidualSeries& series : solution.residuals) {
        const auto satellite = SatelliteOf(series.system, series.prn);
        if (!satellite) {
            unplaced += series.points.size();
            continue;
        }
        std::map<std::uint32_t, int> values;
        for (const engine::ResidualPoint& point : series.points) {
            const auto epoch = epochs.find(Key(point.week, point.seconds));
            if (epoch == epochs.end()) {
                ++unplaced;
            } else {
                values[epoch->second] = point.millimetres;
            }
        }
        Residuals one{*satellite, series.kind, {}, {}};
        for (const auto& [epoch, value] : values) {
            one.epochs.push_back(epoch);
            one.millimetres.push_back(value);
        }
        if (!one.epochs.empty()) {
            list.push_back(std::move(one));
        }
    }
    std::sort(list.begin(), list.end(), [](const Residuals& a, const Residuals& b) {
        return std::pair(a.satellite, a.block) < std::pair(b.satellite, b.block);
    });
    return list;
}

// The float solution of the same model; null for none.
const Solution* FloatOf(const engine::Results& results, const Solution& solution) {
    for (const Solution& candidate : results.floats) {
        if (candidate.mode == solution.mode && &candidate != &solution) {
            return &candidate;
        }
    }
    return nullptr;
}

std::size_t PeriodOf(const std::vector<Period>& periods, std::uint32_t epoch) {
    std::size_t i = 0;
    while (i + 1 < periods.size() && periods[i].epochs.last < epoch) {
        ++i;
    }
    return i;
}

// Whether the common observations of a satellite miss an epoch between two others.
bool Interrupted(const solve::SolveResult& result, engine::Satellite satellite, std::uint32_t from,
                 std::uint32_t to) {
    const auto found = result.fed.common.find(satellite);
    if (found == result.fed.common.end()) {
        return true;
    }
    const auto& epochs = found->second;
    const auto begin = std::lower_bound(epochs.begin(), epochs.end(), from);
    const auto end = std::upper_bound(begin, epochs.end(), to);
    // An epoch missing at both receivers is none handed over, so the times decide as well.
    const double elapsed = io::SecondsBetween(result.fed.times[from], result.fed.times[to]);
    constexpr double kHalf = 0.5;
    const bool epochMissing =
        result.session.interval > 0.0 &&
        elapsed > (static_cast<double>(to - from) + kHalf) * result.session.interval;
    return epochMissing || static_cast<std::uint32_t>(end - begin) != to - from + 1;
}

std::vector<Track> Tracks(const solve::SolveResult& result, const Solution& solution,
                          const std::vector<Period>& periods) {
    const Solution* floating = FloatOf(result.outcome.results, solution);
    std::vector<Track> tracks;
    for (const Ambiguity& a : solution.ambiguities) {
        const auto satellite = SatelliteOf(a.system, a.prn);
        const Span span = SpanOf(a);
        if (!satellite || span.last >= result.fed.times.size() || span.last < span.first) {
            continue;
        }
        Track track{*satellite, span, TrackStart::kFirst, PeriodOf(periods, span.first), a, {}};
        if (floating != nullptr) {
            for (const Ambiguity& b : floating->ambiguities) {
                if (b.system == a.system && b.prn == a.prn && SpanOf(b) == span) {
                    track.floating = b;
                }
            }
        }
        tracks.push_back(track);
    }
    std::sort(tracks.begin(), tracks.end(), [](const Track& a, const Track& b) {
        return std::pair(a.satellite, a.epochs.first) < std::pair(b.satellite, b.epochs.first);
    });
    for (std::size_t i = 1; i < tracks.size(); ++i) {
        const Track& before = tracks[i - 1];
        Track& track = tracks[i];
        if (before.satellite == track.satellite && before.period == track.period) {
            const bool gap =
                Interrupted(result, track.satellite, before.epochs.last, track.epochs.first);
            track.start = gap ? TrackStart::kGap : TrackStart::kSlip;
        }
    }
    return tracks;
}

bool LeftOutWhole(const solve::SolveResult& result, engine::Satellite satellite) {
    const session::Session& s = result.session;
    const auto& exclusions = s.settings.values.exclusions;
    return s.leftOut.withoutOrbit.contains(satellite) ||
           s.leftOut.unknownChannel.contains(satellite) ||
           std::any_of(exclusions.begin(), exclusions.end(), [&](const session::Exclusion& e) {
               return e.satellite == satellite && !e.start && !e.end;
           });
}

// Mean elevation of a satellite in a stretch, radians; -1 when it is not known, or when it went
// below the mask.
double ElevationIn(const Timeline& timeline, engine::Satellite satellite, const Span& span,
                   double mask) {
    const auto track = timeline.sky.find(satellite);
    constexpr double kUnknown = -1.0;
    // The engine's elevation is the mean at both stations; the sky is that of the base.
    constexpr double kSlack = 0.02;
    if (track == timeline.sky.end()) {
        return kUnknown;
    }
    double sum = 0.0;
    std::size_t count = 0;
    for (const solve::SkyPoint& point : track->second) {
        if (!span.Holds(point.epoch)) {
            continue;
        }
        if (point.elevation < mask - kSlack) {
            return kUnknown;
        }
        sum += point.elevation;
        ++count;
    }
    return count == 0 ? kUnknown : sum / static_cast<double>(count);
}

// Satellites with an ambiguity in a stretch, in whichever solution.
void AddEstimated(const solve::SolveResult& result, const Span& span,
                  std::set<engine::Satellite>& estimated) {
    const engine::Results& results = result.outcome.results;
    for (const auto* solutions : {&results.floats, &results.fixeds}) {
        for (const Solution& solution : *solutions) {
            for (const Ambiguity& a : solution.ambiguities) {
                const auto satellite = SatelliteOf(a.system, a.prn);
                if (satellite && span.Holds(SpanOf(a).first)) {
                    estimated.insert(*satellite);
                }
            }
        }
    }
}

std::vector<engine::Satellite> ReferenceCandidates(const solve::SolveResult& result,
                                                   const Timeline& timeline, const Span& period,
                                                   engine::System system) {
    std::set<std::uint32_t> used;  // epochs with residuals of the system
    std::set<engine::Satellite> estimated;
    for (const Residuals& series : timeline.residuals) {
        if (series.satellite.system != system) {
            continue;
        }
        for (const std::uint32_t epoch : series.epochs) {
            if (period.Holds(epoch)) {
                used.insert(epoch);
                estimated.insert(series.satellite);
            }
        }
    }
    AddEstimated(result, period, estimated);
    if (used.empty()) {
        return {};
    }
    // With precise orbits alone no elevation is known, and none speaks against a candidate.
    const bool elevations = !timeline.sky.empty();
    std::vector<std::pair<double, engine::Satellite>> found;
    for (const auto& [satellite, epochs] : result.fed.common) {
        if (satellite.system != system || estimated.contains(satellite) ||
            LeftOutWhole(result, satellite) ||
            !std::includes(epochs.begin(), epochs.end(), used.begin(), used.end())) {
            continue;
        }
        const Span span{*used.begin(), *used.rbegin()};
        const double elevation =
            ElevationIn(timeline, satellite, span, result.session.config.elevationMask);
        if (elevation >= 0.0 || !elevations) {
            found.emplace_back(elevation, satellite);
        }
    }
    std::sort(found.begin(), found.end(),
              [](const auto& a, const auto& b) { return a.first > b.first; });
    std::vector<engine::Satellite> list;
    for (const auto& [elevation, satellite] : found) {
        list.push_back(satellite);
    }
    return list;
}

// So many nodes of a satellite's path serve an elevation to some hundredths of a degree, and no
// more than a page has room for.
double SkyStep(const solve::SolveResult& result) {
    constexpr double kNodes = 720.0;
    constexpr double kLeast = 60.0;  // s
    const double length = io::SecondsBetween(result.fed.times.front(), result.fed.times.back());
    return std::max(kLeast, length / kNodes);
}

}  // namespace

std::vector<Span> Stretches(const std::vector<std::uint32_t>& epochs, std::uint32_t bridge) {
    std::vector<Span> list;
    for (const std::uint32_t epoch : epochs) {
        if (!list.empty() && epoch <= list.back().last + bridge + 1) {
            list.back().last = epoch;
        } else {
            list.push_back({epoch, epoch});
        }
    }
    return list;
}

std::vector<Span> DerivedPeriods(const std::vector<io::GpsTime>& times, double length,
                                 std::size_t minEpochs, const std::vector<Ambiguity>& ambiguities) {
    std::vector<Span> periods;
    std::size_t first = 0;
    for (std::size_t i = 0; i < times.size(); ++i) {
        const bool last = i + 1 == times.size();
        const bool full = io::SecondsBetween(times[first], times[i]) >= length &&
                          i - first + 1 >= minEpochs && !CrossesAfter(ambiguities, i);
        if (full || last) {
            periods.push_back({static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(i)});
            first = i + 1;
        }
    }
    return periods;
}

Timeline MakeTimeline(const solve::SolveResult& result) {
    Timeline timeline;
    if (result.fed.times.empty()) {
        return timeline;
    }
    timeline.sky = solve::SkyTracks(result.session, result.fed, SkyStep(result));
    const Solution* best = result.outcome.Best();
    if (best == nullptr || best == &result.outcome.results.tripleDifference) {
        return timeline;
    }
    const engine::Config& config = result.session.config;
    for (const Span& span : DerivedPeriods(result.fed.times, config.periodLength,
                                           static_cast<std::size_t>(std::max(config.minEpochs, 0)),
                                           best->ambiguities)) {
        timeline.periods.push_back({span, {}});
    }
    timeline.residuals = PlacedResiduals(*best, result.fed.times, timeline.unplaced);
    timeline.tracks = Tracks(result, *best, timeline.periods);
    for (Period& period : timeline.periods) {
        for (const engine::System system : engine::kSystems) {
            period.references[engine::IndexOf(system)] =
                ReferenceCandidates(result, timeline, period.epochs, system);
        }
    }
    return timeline;
}

}  // namespace vornel::report
