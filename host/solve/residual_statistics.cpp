#include "solve/residual_statistics.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace vornel::solve {
namespace {

// Residuals of one satellite by epoch number; not-a-number where it has none.
using Series = std::vector<double>;

Series OnGrid(const engine::ResidualSeries& series, const io::GpsTime& first, double interval) {
    Series grid;
    for (const engine::ResidualPoint& point : series.points) {
        const double after = io::SecondsBetween(first, {point.week, point.seconds});
        const auto index = static_cast<std::size_t>(std::max(0.0, std::round(after / interval)));
        if (index >= grid.size()) {
            grid.resize(index + 1, kUnknown);
        }
        grid[index] = point.millimetres;
    }
    return grid;
}

// About zero, over all satellites; nothing where fewer than 20 pairs lie `lag` epochs apart.
std::optional<double> Correlation(const std::vector<Series>& all, std::size_t lag) {
    constexpr std::size_t kFewest = 20;
    double products = 0.0, earlier = 0.0, later = 0.0;
    std::size_t pairs = 0;
    for (const Series& series : all) {
        for (std::size_t i = lag; i < series.size(); ++i) {
            const double a = series[i - lag], b = series[i];
            if (!std::isnan(a) && !std::isnan(b)) {
                products += a * b;
                earlier += a * a;
                later += b * b;
                ++pairs;
            }
        }
    }
    if (pairs < kFewest || earlier == 0.0 || later == 0.0) {
        return std::nullopt;
    }
    return products / std::sqrt(earlier * later);
}

double CorrelationTime(const std::vector<Series>& all, double interval) {
    constexpr double kNothingLeft = 0.1;
    constexpr std::size_t kMostLags = 400;
    double sum = 0.0;
    for (std::size_t lag = 1; lag <= kMostLags; ++lag) {
        const auto correlation = Correlation(all, lag);
        if (!correlation || *correlation < kNothingLeft) {
            break;
        }
        sum += *correlation;
    }
    return interval * (1.0 + 2.0 * sum);
}

// rad, between the points of a track; nothing outside it.
std::optional<double> ElevationAt(const std::vector<SkyPoint>& track,
                                  const std::vector<io::GpsTime>& times, const io::GpsTime& time) {
    constexpr double kNear = 600.0;  // s beyond an end, or within a gap
    const auto after = std::lower_bound(
        track.begin(), track.end(), time,
        [&](const SkyPoint& point, const io::GpsTime& t) { return times[point.epoch] < t; });
    const auto secondsTo = [&](const SkyPoint& point) {
        return io::SecondsBetween(time, times[point.epoch]);
    };
    if (after == track.end()) {
        return !track.empty() && -secondsTo(track.back()) <= kNear
                   ? std::optional(track.back().elevation)
                   : std::nullopt;
    }
    if (after == track.begin()) {
        return secondsTo(*after) <= kNear ? std::optional(after->elevation) : std::nullopt;
    }
    const SkyPoint &left = *(after - 1), &right = *after;
    const double toLeft = -secondsTo(left), toRight = secondsTo(right);
    return (left.elevation * toRight + right.elevation * toLeft) / (toLeft + toRight);
}

class RootMeanSquare {
  public:
    void Add(double value) {
        sum_ += value * value;
        ++count_;
    }
    double Value() const {
        return count_ == 0 ? kUnknown : std::sqrt(sum_ / static_cast<double>(count_));
    }
    std::size_t Count() const { return count_; }

  private:
    double sum_ = 0.0;
    std::size_t count_ = 0;
};

void FindWorstMean(const engine::Solution& solution, double interval, ResidualStatistics& result) {
    constexpr std::size_t kFewest = 10;
    double worst = -1.0;
    for (const engine::ResidualSeries& series : solution.residuals) {
        if (series.points.size() < kFewest) {
            continue;
        }
        double sum = 0.0;
        for (const engine::ResidualPoint& point : series.points) {
            sum += point.millimetres;
        }
        const auto count = static_cast<double>(series.points.size());
        const double independent = std::max(1.0, count * interval / result.correlationTime);
        const double sigmas = std::abs(sum / count) * std::sqrt(independent) / result.rms;
        if (sigmas > worst) {
            worst = sigmas;
            result.worstMeanSigmas = sigmas;
            result.worstMean = sum / count;
            result.worstSatellite = engine::SatelliteName(series.system, series.prn);
        }
    }
}

}  // namespace

ResidualStatistics StatisticsOf(const engine::Solution& solution, double interval,
                                const SkyOfSession& sky) {
    ResidualStatistics result;
    double rows = 0.0, rejected = 0.0;
    for (const engine::Ambiguity& ambiguity : solution.ambiguities) {
        rows += ambiguity.rows1 + ambiguity.rows2;
        rejected += ambiguity.rejected1 + ambiguity.rejected2;
    }
    if (rows + rejected > 0.0) {
        result.rejectedShare = rejected / (rows + rejected);
    }
    if (sky.times.empty() || !(interval > 0.0)) {
        return result;
    }

    RootMeanSquare all;
    std::array<RootMeanSquare, 5> byElevation;
    std::vector<Series> grids;
    for (const engine::ResidualSeries& series : solution.residuals) {
        grids.push_back(OnGrid(series, sky.times.front(), interval));
        const auto satellite =
            engine::ParseSatellite(engine::SatelliteName(series.system, series.prn));
        const auto track = satellite ? sky.tracks.find(*satellite) : sky.tracks.end();
        for (const engine::ResidualPoint& point : series.points) {
            all.Add(point.millimetres);
            if (track == sky.tracks.end()) {
                continue;
            }
            if (const auto elevation =
                    ElevationAt(track->second, sky.times, {point.week, point.seconds})) {
                const auto bin = std::upper_bound(kElevations.begin(), kElevations.end(),
                                                  *elevation * 180.0 / M_PI) -
                                 kElevations.begin();
                byElevation[static_cast<std::size_t>(bin)].Add(point.millimetres);
            }
        }
    }
    result.residuals = all.Count();
    result.rms = all.Value();
    for (std::size_t i = 0; i < byElevation.size(); ++i) {
        result.rmsByElevation[i] = byElevation[i].Value();
    }
    if (result.residuals == 0) {
        return result;
    }
    result.nextEpoch = Correlation(grids, 1).value_or(kUnknown);
    for (std::size_t i = 0; i < kLags.size(); ++i) {
        const auto lag = static_cast<std::size_t>(std::llround(kLags[i] / interval));
        if (lag > 0) {
            result.atLag[i] = Correlation(grids, lag).value_or(kUnknown);
        }
    }
    result.correlationTime = CorrelationTime(grids, interval);
    FindWorstMean(solution, interval, result);
    return result;
}

}  // namespace vornel::solve
