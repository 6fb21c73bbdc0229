#include "solve/run_plan.h"

#include <algorithm>
#include <cmath>

#include "session/geodesy.h"

namespace vornel::solve {
namespace {

constexpr double kShortLimit = 1e4;   // m
constexpr double kMediumLimit = 3e4;  // m: beyond, the engine leaves one frequency float
// With fewer satellites of the other systems Galileo stays in model 6, although its ambiguities
// there are no integers.
constexpr double kEnoughOthers = 6.0;
// From here on the ionosphere-free combination has had the time that it needs, s.
constexpr double kLongEnough = 5400.0;
constexpr double kHighMaskRadians = 20.0 * M_PI / 180.0;
// Longer than any session: model 3 mixes up its ambiguities when there are several periods, s.
constexpr double kOnePeriod = 1e6;
constexpr double kTwoThirds = 2.0 / 3.0, kThird = 1.0 / 3.0;

std::size_t Galileo() {
    return engine::IndexOf(engine::System::kGalileo);
}

RunSpec IonosphereFree(const SessionFacts& facts) {
    RunSpec spec;
    spec.model = VORNEL_MODEL_IONO_FREE;
    spec.why = "two frequencies over " + std::to_string(std::lround(facts.length / 1000.0)) + " km";
    if (facts.galileoShare > 0.0 && facts.othersPerEpoch >= kEnoughOthers) {
        spec.without[Galileo()] = true;
        spec.why += "; without Galileo, whose ambiguities are no integers in this combination";
    }
    return spec;
}

}  // namespace

SessionFacts FactsOf(const session::Session& session, const FeedSummary& fed) {
    SessionFacts facts;
    facts.length = session::Length(session::Minus(session.rover.position, session.base.position));
    if (fed.times.size() > 1) {
        facts.duration = io::SecondsBetween(fed.times.front(), fed.times.back());
    }
    facts.systemsOnTwo = static_cast<int>(
        std::count_if(session.signals.begin(), session.signals.end(),
                      [](const auto& pairs) { return pairs[0].Usable() && pairs[1].Usable(); }));
    facts.secondFrequency = facts.systemsOnTwo > 0;
    facts.solveMode = session.config.slvmode;
    facts.modelGiven = facts.solveMode != 0;
    facts.shortLimit = session.config.shortBaselineLimit;
    double galileo = 0.0, others = 0.0;
    for (const auto& [satellite, epochs] : fed.common) {
        (satellite.system == engine::System::kGalileo ? galileo : others) +=
            static_cast<double>(epochs.size());
    }
    if (galileo + others > 0.0) {
        facts.galileoShare = galileo / (galileo + others);
        facts.othersPerEpoch = others / static_cast<double>(fed.epochs);
    }
    return facts;
}

const char* NameOf(AnswerKind kind) {
    switch (kind) {
        case AnswerKind::kShort:
            return "short";
        case AnswerKind::kMedium:
            return "medium";
        case AnswerKind::kIonosphereFree:
            return "ionosphere-free";
        case AnswerKind::kOther:
            return "other";
    }
    return "other";
}

AnswerKind KindOf(const SessionFacts& facts, int solveModel) {
    switch (solveModel) {
        case VORNEL_MODEL_FIRST:
        case VORNEL_MODEL_SECOND:
            return facts.length < kShortLimit ? AnswerKind::kShort : AnswerKind::kMedium;
        case VORNEL_MODEL_WIDE_LANE:
        case VORNEL_MODEL_IONO_FREE:
            return AnswerKind::kIonosphereFree;
        default:
            return AnswerKind::kOther;
    }
}

RunSpec MainRun(const SessionFacts& facts) {
    RunSpec spec;
    if (facts.modelGiven) {
        spec.why = "model " + std::to_string(facts.solveMode) + " was asked for";
        return spec;
    }
    if (!facts.secondFrequency) {
        spec.why = "one frequency";
        return spec;
    }
    if (facts.length < std::min(kShortLimit, facts.shortLimit)) {
        spec.why = "a short baseline: the ionosphere cancels";
        return spec;
    }
    if (facts.length < kMediumLimit && facts.duration < kLongEnough) {
        spec.model = VORNEL_MODEL_FIRST;
        spec.why = "too short a session for the ionosphere-free combination";
        return spec;
    }
    return IonosphereFree(facts);
}

std::optional<RunSpec> NextBest(const SessionFacts& facts, const RunSpec& main,
                                const RunOutcome& outcome) {
    if (outcome.acceptance == Acceptance::kFixed || facts.modelGiven || !facts.secondFrequency) {
        return std::nullopt;
    }
    const bool hasIonosphereFree =
        std::any_of(outcome.results.floats.begin(), outcome.results.floats.end(),
                    [](const engine::Solution& s) { return s.mode == VORNEL_MODEL_IONO_FREE; });
    if (main.model == VORNEL_MODEL_IONO_FREE && !hasIonosphereFree) {
        RunSpec spec = main;
        spec.name = "ionosphere-free float";
        spec.why = "the wide lane passed no ratio test; its float solution needs none";
        spec.ratioThreshold = 0.0;
        spec.floatOnly = true;
        return spec;
    }
    if (main.model == VORNEL_MODEL_FIRST) {
        RunSpec spec = IonosphereFree(facts);
        spec.name = "ionosphere-free";
        spec.why = "the first frequency gave no integers";
        return spec;
    }
    if (main.model == VORNEL_MODEL_IONO_FREE && facts.length < kMediumLimit) {
        RunSpec spec;
        spec.name = "first frequency";
        spec.model = VORNEL_MODEL_FIRST;
        spec.why = "the ionosphere-free combination gave no integers";
        return spec;
    }
    return std::nullopt;
}

bool Better(const RunOutcome& other, const RunOutcome& one) {
    if (other.acceptance != one.acceptance) {
        return other.acceptance < one.acceptance;
    }
    const bool ionosphereFree = other.acceptance == Acceptance::kFloat &&
                                other.results.floats.back().mode == VORNEL_MODEL_IONO_FREE;
    return ionosphereFree && one.results.floats.back().mode != VORNEL_MODEL_IONO_FREE &&
           one.results.solveModel != VORNEL_MODEL_FIRST;
}

std::vector<RunSpec> ChecksOf(const SessionFacts& facts, const RunSpec& main, int solveModel) {
    const auto check = [&](const char* name, const char* why) {
        RunSpec spec = main;
        spec.name = name;
        spec.why = why;
        if (!spec.model && !facts.modelGiven) {
            spec.model = solveModel;
        }
        return spec;
    };
    RunSpec first = check(kFirstPart, "the sky of another time");
    first.to = kTwoThirds;
    RunSpec last = check(kLastPart, "the sky of another time");
    last.from = kThird;
    RunSpec high = check(kHighMask, "without the low satellites, which multipath and weather hit");
    high.elevationMask = kHighMaskRadians;
    RunSpec other = check(kOtherFrequency, "other integers, other multipath");
    other.model = solveModel == VORNEL_MODEL_SECOND ? VORNEL_MODEL_FIRST : VORNEL_MODEL_SECOND;

    RunSpec both = check(kBothFrequencies, "the integers of both frequencies at once");
    both.model = VORNEL_MODEL_BOTH;
    both.periodLength = kOnePeriod;

    switch (KindOf(facts, solveModel)) {
        case AnswerKind::kShort:
            // With the satellites of one system alone both frequencies seldom give integers.
            if (facts.systemsOnTwo > 1) {
                return {first, last, both, other};
            }
            if (facts.secondFrequency) {
                return {first, last, other};
            }
            return {first, last};
        case AnswerKind::kMedium:
            if (facts.secondFrequency) {
                return {other, first, last, high};
            }
            return {first, last, high};
        case AnswerKind::kIonosphereFree:
        case AnswerKind::kOther:
            return {first, last, high};
    }
    return {};
}

}  // namespace vornel::solve
