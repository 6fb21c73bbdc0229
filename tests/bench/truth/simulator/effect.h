// What one effect alone adds to the observations: a session with it minus the same without.
#pragma once

#include <cmath>
#include <functional>
#include <map>
#include <vector>

#include "pair.h"
#include "simulator/signals.h"
#include "simulator/simulate.h"

namespace vornel::rough {

struct EffectPoint {
    double seconds = 0.0;  // since the first epoch
    double code = 0.0;     // m
    double phase = 0.0;    // m
    std::uint8_t lossOfLock = 0;
};

// By satellite and column pair (0 the first signal, 1 the second).
using EffectSeries = std::map<std::pair<io::SatelliteId, std::size_t>, std::vector<EffectPoint>>;

inline double WavelengthOf(const io::Observations& data, const io::SatelliteRow& row,
                           std::size_t column) {
    int channel = 0;
    for (const auto& [slot, number] : data.station().glonassChannels) {
        channel = slot == row.satellite.number ? number : channel;
    }
    const io::ObservationCode& code = data.SignalsOf(row)[column].code;
    return kSpeedOfLight / FrequencyOf({row.satellite.system, code.band, code.attribute}, channel);
}

// Phases of both sessions have the same whole numbers where neither has slips nor gaps.
inline EffectSeries EffectOf(const io::Observations& with, const io::Observations& without) {
    std::map<std::pair<double, io::SatelliteId>, std::pair<const io::SatelliteRow*, double>> plain;
    const auto key = [](const io::GpsTime& time) { return time.week * 604800.0 + time.seconds; };
    for (const io::ObservationEpoch& epoch : without.epochs) {
        for (const io::SatelliteRow& row : without.SatellitesOf(epoch)) {
            plain[{key(epoch.time), row.satellite}] = {&row, 0.0};
        }
    }
    EffectSeries series;
    for (const io::ObservationEpoch& epoch : with.epochs) {
        for (const io::SatelliteRow& row : with.SatellitesOf(epoch)) {
            const auto found = plain.find({key(epoch.time), row.satellite});
            if (found == plain.end()) {
                continue;
            }
            for (std::size_t pair = 0; 2 * pair + 1 < with.SignalsOf(row).size(); ++pair) {
                const std::size_t code = 2 * pair, phase = code + 1;
                EffectPoint point;
                point.seconds = key(epoch.time) - key(with.epochs.front().time);
                point.code = with.Value(row, code) - without.Value(*found->second.first, code);
                point.phase =
                    (with.Value(row, phase) - without.Value(*found->second.first, phase)) *
                    WavelengthOf(with, row, phase);
                point.lossOfLock = with.LossOfLock(row, phase);
                if (!std::isnan(point.code) && !std::isnan(point.phase)) {
                    series[{row.satellite, pair}].push_back(point);
                }
            }
        }
    }
    return series;
}

// The effect that `change` switches on in a silent world, at one occupation.
inline EffectSeries EffectAlone(Scenario scenario, const std::function<void(Scenario&)>& change,
                                std::size_t occupation = 0) {
    const SimulatedSession without = Simulate(scenario);
    change(scenario);
    const SimulatedSession with = Simulate(scenario);
    return EffectOf(with.stations[occupation].observations,
                    without.stations[occupation].observations);
}

// Root mean square, and the correlation of values `lag` steps apart.
inline double Rms(const std::vector<double>& values) {
    double sum = 0.0;
    for (const double value : values) {
        sum += value * value;
    }
    return values.empty() ? 0.0 : std::sqrt(sum / static_cast<double>(values.size()));
}

inline double Correlation(const std::vector<double>& a, const std::vector<double>& b) {
    double ab = 0.0, aa = 0.0, bb = 0.0, ma = 0.0, mb = 0.0;
    const auto n = static_cast<double>(a.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
        ma += a[i] / n;
        mb += b[i] / n;
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        ab += (a[i] - ma) * (b[i] - mb);
        aa += (a[i] - ma) * (a[i] - ma);
        bb += (b[i] - mb) * (b[i] - mb);
    }
    return ab / std::sqrt(aa * bb);
}

inline double LagCorrelation(const std::vector<double>& values, std::size_t lag) {
    return Correlation({values.begin(), values.end() - static_cast<std::ptrdiff_t>(lag)},
                       {values.begin() + static_cast<std::ptrdiff_t>(lag), values.end()});
}

}  // namespace vornel::rough
