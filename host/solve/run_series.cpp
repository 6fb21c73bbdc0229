#include "solve/run_series.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vornel::solve {
namespace {

// The spans before and after the part that is kept; empty for the whole time.
std::vector<engine::Span> SpansOutside(const RunSpec& spec, const std::vector<io::GpsTime>& times) {
    std::vector<engine::Span> spans;
    const auto count = static_cast<double>(times.size());
    const auto index = [&](double share) {
        const double at = std::ceil(share * count);
        return static_cast<std::size_t>(std::min(std::max(at, 0.0), count));
    };
    const auto leaveOut = [&](std::size_t begin, std::size_t end) {
        if (begin < end) {
            spans.push_back({times[begin].week, times[begin].seconds, times[end - 1].week,
                             times[end - 1].seconds});
        }
    };
    leaveOut(0, index(spec.from));
    leaveOut(index(spec.to), times.size());
    return spans;
}

}  // namespace

RunSeries::RunSeries(const session::Session& session, engine::Engine& engine, FeedOptions options)
    : session_(session), engine_(engine), options_(std::move(options)) {}

void RunSeries::HandOver(double elevationMask) {
    if (elevationMask == maskInEngine_) {
        return;
    }
    engine::Config config = session_.config;
    config.elevationMask = elevationMask;
    FeedSummary fed = Feed(session_, config, engine_, options_);
    if (!fed_) {
        fed_ = std::move(fed);
        options_.orbits = false;
    }
    maskInEngine_ = elevationMask;
}

const FeedSummary& RunSeries::HandOver() {
    if (!fed_) {
        HandOver(session_.config.elevationMask);
    }
    return *fed_;
}

engine::Config RunSeries::ConfigFor(const RunSpec& spec) const {
    engine::Config config = session_.config;
    config.elevationMask = maskInEngine_;
    config.slvmode = spec.model.value_or(config.slvmode);
    config.ratioThreshold = spec.ratioThreshold.value_or(config.ratioThreshold);
    config.periodLength = spec.periodLength.value_or(config.periodLength);
    for (std::size_t i = 0; i < engine::kSystemCount; ++i) {
        if (spec.without[i]) {
            config.systems[i] = 0;
        }
    }
    return config;
}

RunOutcome RunSeries::Make(const RunSpec& spec) {
    HandOver(spec.elevationMask.value_or(session_.config.elevationMask));
    const engine::Config config = ConfigFor(spec);
    engine_.Configure(config);
    LeaveOut(session_, *fed_, SpansOutside(spec, fed_->times), engine_);
    if (options_.progress) {
        options_.progress(spec.name.c_str(), 0, 0);
    }
    RunOutcome outcome = Run(session_, config, engine_);
    if (spec.floatOnly && outcome.acceptance == Acceptance::kFixed) {
        outcome.acceptance = Acceptance::kFloat;
        outcome.warnings.clear();
    }
    return outcome;
}

}  // namespace vornel::solve
