#include "solve/outcome.h"

#include <algorithm>
#include <chrono>
#include <set>

#include "engine/status.h"
#include "session/text.h"

namespace vornel::solve {
namespace {

using session::Length;
using session::Minus;
using session::Plural;
using session::Plus;
using session::Session;
using session::Vector3;

// From antenna to antenna on the verticals, to marker to marker.
void ReduceToMarkers(const Session& session, engine::Solution& solution) {
    const Vector3 shift = Minus(session.base.eccentricity, session.rover.eccentricity);
    if (solution.mode == 0 || Length(shift) == 0.0) {
        return;
    }
    solution.vector = Plus(solution.vector, shift);
    solution.length = Length(solution.vector);
    solution.horizontalDistance = solution.horizontalDistance == 0.0 ? 0.0 : solution.length;
}

bool RatioPassed(const engine::Results& results, int mode, double threshold) {
    return std::any_of(
        results.fixeds.begin(), results.fixeds.end(),
        [&](const engine::Solution& s) { return s.mode == mode && s.ratio > threshold; });
}

}  // namespace

const char* AcceptanceName(Acceptance acceptance) {
    switch (acceptance) {
        case Acceptance::kFixed:
            return "fixed";
        case Acceptance::kFloat:
            return "float";
        case Acceptance::kTripleDifference:
            return "triple difference";
        case Acceptance::kNone:
            return "none";
    }
    return "none";
}

Acceptance Judge(const engine::Results& results, double ratioThreshold) {
    const engine::StatusEntry& end = engine::DescribeStatus(results.status);
    const bool fixed = end.kind == engine::StatusKind::kFixedDone && !results.fixeds.empty() &&
                       results.fixeds.back().mode == end.solveModel &&
                       results.fixeds.back().ratio > ratioThreshold;
    if (fixed) {
        return Acceptance::kFixed;
    }
    if (!results.floats.empty()) {
        return Acceptance::kFloat;
    }
    return results.tripleDifference.mode != 0 ? Acceptance::kTripleDifference : Acceptance::kNone;
}

std::vector<std::string> Doubts(const engine::Results& results, Acceptance acceptance) {
    if (acceptance != Acceptance::kFixed) {
        return {};
    }
    // Beside the reference satellites. With fewer the integers have next to no redundancy, and the
    // ratio says little.
    constexpr std::size_t kFew = 4;
    std::set<std::pair<int, int>> satellites;
    for (const engine::ResidualSeries& series : results.fixeds.back().residuals) {
        if (!series.points.empty()) {
            satellites.emplace(series.system, series.prn);
        }
    }
    if (satellites.size() >= kFew) {
        return {};
    }
    return {"the fixed solution rests on " + Plural(satellites.size(), "satellite") +
            " beside the reference; with so few a wrong fix can pass the ratio test"};
}

const engine::Solution* RunOutcome::Best() const {
    switch (acceptance) {
        case Acceptance::kFixed:
            return &results.fixeds.back();
        case Acceptance::kFloat:
            return &results.floats.back();
        case Acceptance::kTripleDifference:
            return &results.tripleDifference;
        case Acceptance::kNone:
            return nullptr;
    }
    return nullptr;
}

RunOutcome Run(const Session& session, engine::Engine& engine) {
    return Run(session, session.config, engine);
}

RunOutcome Run(const Session& session, const engine::Config& config, engine::Engine& engine) {
    RunOutcome outcome;
    const auto begin = std::chrono::steady_clock::now();
    const int status = engine.Run(outcome.completed);
    outcome.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    constexpr int kStarted = 10;
    if (!outcome.completed && status == kStarted) {
        outcome.results.status = status;  // there is no solver to ask
        outcome.chain = {status};
        return outcome;
    }
    outcome.results = engine.ReadResults(status);
    engine::Results& results = outcome.results;
    ReduceToMarkers(session, results.tripleDifference);
    for (engine::Solution& solution : results.floats) {
        ReduceToMarkers(session, solution);
    }
    for (engine::Solution& solution : results.fixeds) {
        ReduceToMarkers(session, solution);
    }
    const double threshold = config.ratioThreshold;
    outcome.chain = engine::StatusChain(status, results.solveModel,
                                        RatioPassed(results, VORNEL_MODEL_WIDE_LANE, threshold),
                                        RatioPassed(results, results.solveModel, threshold));
    outcome.acceptance = Judge(results, session.config.ratioThreshold);
    outcome.warnings = Doubts(results, outcome.acceptance);
    return outcome;
}

}  // namespace vornel::solve
