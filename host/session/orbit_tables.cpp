#include "session/orbit_tables.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <set>

namespace vornel::session {
namespace {

constexpr double kLeastRadius = 6.0e6, kMostRadius = 1.0e8;  // m
constexpr double kMostClock = 1.0;                           // s

using Values = std::array<double, kOrbitComponents>;

constexpr Values kMissing = {VORNEL_MISSING_PRECISE_VALUE, VORNEL_MISSING_PRECISE_VALUE,
                             VORNEL_MISSING_PRECISE_VALUE, VORNEL_MISSING_PRECISE_VALUE};

Values ValuesOf(const io::OrbitPoint& point) {
    Values values = kMissing;
    const double radius = std::hypot(point.position[0], point.position[1], point.position[2]);
    if (radius > kLeastRadius && radius < kMostRadius) {  // false for not-a-number too
        std::copy(point.position.begin(), point.position.end(), values.begin());
    }
    if (std::abs(point.clock) < kMostClock) {
        values[3] = point.clock;
    }
    return values;
}

// The shortest step of the times; the interval of the table.
double StepOf(const std::vector<io::GpsTime>& times) {
    double step = 0.0;
    for (std::size_t i = 1; i < times.size(); ++i) {
        const double gap = io::SecondsBetween(times[i - 1], times[i]);
        step = step == 0.0 ? gap : std::min(step, gap);
    }
    return step;
}

// The times without those that all but repeat the one before.
std::vector<io::GpsTime> Apart(const std::set<io::GpsTime>& distinct) {
    constexpr double kLeastStep = 0.001;  // s
    std::vector<io::GpsTime> times;
    for (const io::GpsTime& time : distinct) {
        if (times.empty() || io::SecondsBetween(times.back(), time) >= kLeastStep) {
            times.push_back(time);
        }
    }
    return times;
}

// The times with one more entry in each gap, which no satellite has a value at.
std::vector<io::GpsTime> WithGapsMarked(const std::vector<io::GpsTime>& times) {
    const double step = StepOf(times);
    std::vector<io::GpsTime> marked;
    for (const io::GpsTime& time : times) {
        constexpr double kGap = 1.5;  // steps
        if (!marked.empty() && io::SecondsBetween(marked.back(), time) > kGap * step) {
            marked.push_back(io::Shifted(marked.back(), step));
        }
        marked.push_back(time);
    }
    return marked;
}

}  // namespace

OrbitTables JoinOrbits(const std::vector<io::PreciseOrbits>& files) {
    OrbitTables tables;
    std::set<io::GpsTime> distinct;
    std::set<std::string> unnumbered;
    for (const io::PreciseOrbits& file : files) {
        std::copy_if(file.epochs.begin(), file.epochs.end(),
                     std::inserter(distinct, distinct.end()), io::IsInCalendar);
        if (!file.coordinateSystem.empty() &&
            std::find(tables.frames.begin(), tables.frames.end(), file.coordinateSystem) ==
                tables.frames.end()) {
            tables.frames.push_back(file.coordinateSystem);
        }
    }
    tables.times = WithGapsMarked(Apart(distinct));

    std::map<engine::Satellite, std::map<io::GpsTime, Values>> points;
    for (const io::PreciseOrbits& file : files) {
        for (const io::OrbitSeries& series : file.satellites) {
            const auto satellite = engine::ToEngine(series.satellite);
            if (!satellite) {
                unnumbered.insert(io::ToString(series.satellite));
                continue;
            }
            for (const io::OrbitPoint& point : series.points) {
                const io::GpsTime& time = file.epochs[point.epoch];
                if (io::IsInCalendar(time)) {
                    points[*satellite].try_emplace(time, ValuesOf(point));
                }
            }
        }
    }
    for (const auto& [satellite, values] : points) {
        auto& table = tables.satellites[satellite];
        for (const io::GpsTime& time : tables.times) {
            const auto found = values.find(time);
            const Values& entry = found == values.end() ? kMissing : found->second;
            for (std::size_t c = 0; c < kOrbitComponents; ++c) {
                table[c].push_back(entry[c]);
            }
        }
    }
    tables.unnumbered.assign(unnumbered.begin(), unnumbered.end());
    return tables;
}

bool InsideTable(const OrbitTables& tables, const io::GpsTime& time) {
    // The engine asks for the time of transmission, and once more a little before it.
    constexpr double kFlight = 0.15;  // s, more than the longest
    const auto covered = [&](const io::GpsTime& t) {
        const auto after = std::upper_bound(tables.times.begin(), tables.times.end(), t);
        return after - tables.times.begin() >= VORNEL_PRECISE_BEFORE &&
               tables.times.end() - after >= VORNEL_PRECISE_AFTER;
    };
    return covered(time) && covered(io::Shifted(time, -kFlight));
}

}  // namespace vornel::session
