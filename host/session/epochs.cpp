#include "session/epochs.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace vornel::session {
namespace {

// Indices of the epochs that can be used, in strictly ascending time.
std::vector<std::size_t> UsableEpochs(const io::Observations& observations, EpochPairs& pairs) {
    std::vector<std::size_t> usable;
    for (std::size_t i = 0; i < observations.epochs.size(); ++i) {
        const io::ObservationEpoch& epoch = observations.epochs[i];
        if (epoch.moving) {
            ++pairs.moving;
        } else if (!usable.empty() && !(observations.epochs[usable.back()].time < epoch.time)) {
            ++pairs.outOfOrder;
        } else {
            usable.push_back(i);
        }
    }
    return usable;
}

void Append(EpochPairs& result, const io::Observations& rover, const io::Observations& base,
            EpochPair pair) {
    const io::GpsTime& roverTime = rover.epochs[pair.rover].time;
    const io::GpsTime& baseTime = base.epochs[pair.base].time;
    if (roverTime.week != baseTime.week) {
        ++result.acrossWeeks;
        return;
    }
    if (!result.pairs.empty()) {
        const EpochPair& last = result.pairs.back();
        if (EngineTime(rover.epochs[last.rover].time, base.epochs[last.base].time) ==
            EngineTime(roverTime, baseTime)) {
            ++result.sameSecond;
            return;
        }
    }
    result.pairs.push_back(pair);
}

}  // namespace

io::GpsTime EngineTime(const io::GpsTime& rover, const io::GpsTime& base) {
    return io::Shifted({base.week, std::round((rover.seconds + base.seconds) / 2.0)}, 0.0);
}

std::size_t DropUntimed(io::Observations& observations) {
    return std::erase_if(observations.epochs, [](const io::ObservationEpoch& epoch) {
        return !io::IsInCalendar(epoch.time);
    });
}

EpochPairs PairEpochs(const io::Observations& rover, const io::Observations& base) {
    EpochPairs result;
    const auto rovers = UsableEpochs(rover, result);
    const auto bases = UsableEpochs(base, result);
    const auto gap = [&](std::size_t r, std::size_t b) {
        return io::SecondsBetween(base.epochs[bases[b]].time, rover.epochs[rovers[r]].time);
    };
    std::size_t r = 0, b = 0, used = 0;
    // A margin for tags that differ by the tolerance to the last digit of the file.
    constexpr double kTolerance = kPairingTolerance + 1e-7;
    while (r < rovers.size() && b < bases.size()) {
        const double difference = gap(r, b);
        if (difference > kTolerance) {
            ++b;
        } else if (difference < -kTolerance) {
            ++r;
        } else if (b + 1 < bases.size() && std::abs(gap(r, b + 1)) < std::abs(difference)) {
            ++b;
        } else if (r + 1 < rovers.size() && std::abs(gap(r + 1, b)) < std::abs(difference)) {
            ++r;
        } else {
            Append(result, rover, base, {rovers[r], bases[b]});
            ++used;
            ++r;
            ++b;
        }
    }
    result.roverOnly = rovers.size() - used;
    result.baseOnly = bases.size() - used;
    return result;
}

std::vector<engine::Satellite> CommonSatellites(const std::vector<SignalValues>& rover,
                                                const std::vector<SignalValues>& base) {
    std::vector<engine::Satellite> common;
    common.reserve(std::min(rover.size(), base.size()));
    auto other = base.begin();
    for (const SignalValues& values : rover) {
        while (other != base.end() && other->satellite < values.satellite) {
            ++other;
        }
        if (other != base.end() && other->satellite == values.satellite) {
            common.push_back(values.satellite);
        }
    }
    return common;
}

engine::ReceiverEpoch FillSlots(const io::GpsTime& time, const std::vector<SignalValues>& values,
                                const std::vector<engine::Satellite>& common,
                                std::set<engine::Satellite>& leftOut) {
    engine::ReceiverEpoch epoch;
    epoch.week = time.week;
    epoch.seconds = time.seconds;
    std::size_t slot = 0;
    for (const bool wanted : {true, false}) {
        for (const SignalValues& value : values) {
            if (std::binary_search(common.begin(), common.end(), value.satellite) != wanted) {
                continue;
            }
            if (slot == engine::kSlots) {
                leftOut.insert(value.satellite);
                continue;
            }
            epoch.satellites[slot] = NumberAcrossSystems(value.satellite);
            epoch.code1[slot] = value.code[0];
            epoch.code2[slot] = value.code[1];
            epoch.phase1[slot] = value.phase[0];
            epoch.phase2[slot] = value.phase[1];
            ++slot;
        }
    }
    return epoch;
}

double IntervalOf(const io::Observations& rover, const std::vector<EpochPair>& pairs) {
    std::map<long long, std::size_t> counts;  // by milliseconds
    for (std::size_t i = 1; i < pairs.size(); ++i) {
        const double step = io::SecondsBetween(rover.epochs[pairs[i - 1].rover].time,
                                               rover.epochs[pairs[i].rover].time);
        ++counts[std::llround(step * 10.0) * 100];  // tags wander by milliseconds
    }
    const auto most =
        std::max_element(counts.begin(), counts.end(),
                         [](const auto& a, const auto& b) { return a.second < b.second; });
    return most == counts.end() ? 0.0 : static_cast<double>(most->first) / 1000.0;
}

}  // namespace vornel::session
