// What the residuals of a solution say: how they correlate in time, how they grow towards the
// horizon, and whether a satellite is off as a whole.
#pragma once

#include <array>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "session/session.h"
#include "solve/sky.h"

namespace vornel::solve {

inline constexpr double kUnknown = std::numeric_limits<double>::quiet_NaN();

inline constexpr std::array<double, 4> kLags = {60.0, 300.0, 900.0, 1800.0};    // s
inline constexpr std::array<double, 4> kElevations = {20.0, 30.0, 45.0, 60.0};  // degrees, bounds

// Not-a-number where the residuals do not reach.
struct ResidualStatistics {
    std::size_t residuals = 0;
    double rms = kUnknown;  // mm, about zero
    // Correlation of residuals of one satellite one epoch apart, and kLags apart, about zero.
    double nextEpoch = kUnknown;
    std::array<double, 4> atLag = {kUnknown, kUnknown, kUnknown, kUnknown};
    // Interval times 1 + 2 * (sum of the correlations up to the first below 0.1): s. So long it takes
    // until an observation tells something new.
    double correlationTime = kUnknown;
    // mm, below 20, from 20 to 30, 30 to 45, 45 to 60, above 60 degrees of elevation at the base.
    std::array<double, 5> rmsByElevation = {kUnknown, kUnknown, kUnknown, kUnknown, kUnknown};
    // Of the satellites with at least ten residuals: the mean furthest from zero, in mm, and in
    // standard deviations of a mean whose residuals have `rms` and the correlation time above.
    double worstMean = kUnknown;
    double worstMeanSigmas = kUnknown;
    std::string worstSatellite;
    double rejectedShare = kUnknown;  // of the rows of the adjustment
};

// Azimuth and elevation of the satellites, and the times of the epochs they refer to.
struct SkyOfSession {
    std::map<engine::Satellite, std::vector<SkyPoint>> tracks;
    std::vector<io::GpsTime> times;
};

ResidualStatistics StatisticsOf(const engine::Solution& solution, double interval,
                                const SkyOfSession& sky);

}  // namespace vornel::solve
