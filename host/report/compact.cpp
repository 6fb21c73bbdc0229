#include "report/compact.h"

#include <cmath>

#include "session/text.h"

namespace vornel::report {
namespace {

constexpr double kTenthsPerRadian = 1800.0 / M_PI;

// Times as if GPS time were UTC, so that a browser's calendar shows GPS time.
std::int64_t UnixSeconds(const io::GpsTime& time) {
    constexpr std::int64_t kGpsOrigin = 315964800;  // 1980-01-06
    constexpr std::int64_t kWeek = 604800;
    return kGpsOrigin + time.week * kWeek + std::llround(time.seconds);
}

std::string EncodedSky(const Sky& sky) {
    std::string json;
    for (const auto& [satellite, points] : sky) {
        std::string epochs, elevations;
        std::int64_t epoch = 0, elevation = 0;
        for (const solve::SkyPoint& point : points) {
            const std::int64_t tenths = std::llround(point.elevation * kTenthsPerRadian);
            AppendInteger(epochs, point.epoch - epoch);
            AppendInteger(elevations, tenths - elevation);
            epoch = point.epoch;
            elevation = tenths;
        }
        json += json.empty() ? "\"" : ",\n\"";
        json += engine::ToString(satellite);
        json += "\":[\"" + epochs + "\",\"" + elevations + "\"]";
    }
    return json;
}

std::string EncodedResiduals(const std::vector<Residuals>& residuals, std::uint32_t thinning) {
    std::string json;
    for (const Residuals& series : residuals) {
        std::vector<std::uint32_t> epochs;
        std::string values;
        for (std::size_t i = 0; i < series.epochs.size(); ++i) {
            if (series.epochs[i] % thinning == 0) {
                epochs.push_back(series.epochs[i] / thinning);
                AppendInteger(values, series.millimetres[i]);
            }
        }
        json += json.empty() ? "[\"" : ",\n[\"";
        json += engine::ToString(series.satellite) + "\"," + std::to_string(series.block);
        json += ",\"" + EncodedEpochs(epochs);
        json += "\",\"" + values + "\"]";
    }
    return json;
}

}  // namespace

void AppendInteger(std::string& text, std::int64_t value) {
    constexpr std::string_view kAlphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
    constexpr std::uint64_t kMore = 32, kDigit = 31;
    const bool negative = value < 0;
    std::uint64_t rest = (static_cast<std::uint64_t>(negative ? -value : value) << 1) |
                         static_cast<std::uint64_t>(negative);
    do {
        const std::uint64_t digit = rest & kDigit;
        rest >>= 5;
        text += kAlphabet[digit | (rest != 0 ? kMore : 0)];
    } while (rest != 0);
}

std::string EncodedEpochs(const std::vector<std::uint32_t>& epochs) {
    std::string text;
    std::uint32_t next = 0;
    for (const Span& stretch : Stretches(epochs, 0)) {
        AppendInteger(text, stretch.first - next);
        AppendInteger(text, stretch.last - stretch.first + 1);
        next = stretch.last + 1;
    }
    return text;
}

std::string EncodedTimes(const std::vector<io::GpsTime>& times) {
    std::string text;
    std::size_t i = 1;
    while (i < times.size()) {
        const std::int64_t step = UnixSeconds(times[i]) - UnixSeconds(times[i - 1]);
        std::size_t end = i + 1;
        while (end < times.size() &&
               UnixSeconds(times[end]) - UnixSeconds(times[end - 1]) == step) {
            ++end;
        }
        AppendInteger(text, step);
        AppendInteger(text, static_cast<std::int64_t>(end - i));
        i = end;
    }
    return text;
}

EncodedData EncodeData(const solve::SolveResult& result, const Timeline& timeline,
                       std::size_t limit) {
    const auto& times = result.fed.times;
    std::string json = "{\"start\":";
    json += std::to_string(times.empty() ? 0 : UnixSeconds(times.front()));
    json += ",\n\"times\":\"" + EncodedTimes(times);
    json += "\",\n\"periods\":[";
    for (const Period& period : timeline.periods) {
        json += &period == &timeline.periods.front() ? "" : ",";
        json += std::to_string(period.epochs.first);
    }
    json += "],\n\"sky\":{" + EncodedSky(timeline.sky);
    json += "},\n\"thinning\":";

    constexpr std::size_t kFrame = 40;
    const std::size_t room =
        limit > 2 * (json.size() + kFrame) ? limit - json.size() - kFrame : limit / 2;
    EncodedData data;
    std::string residuals = EncodedResiduals(timeline.residuals, data.thinning);
    while (residuals.size() > room) {
        data.thinning += static_cast<std::uint32_t>(
            std::max<std::size_t>(1, data.thinning * (residuals.size() - room) / room));
        residuals = EncodedResiduals(timeline.residuals, data.thinning);
    }
    json += std::to_string(data.thinning);
    json += ",\n\"residuals\":[" + residuals;
    data.json = json + "]}";
    return data;
}

}  // namespace vornel::report
