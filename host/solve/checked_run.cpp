#include "solve/checked_run.h"

#include <utility>

#include "session/geodesy.h"
#include "solve/sky.h"

namespace vornel::solve {
namespace {

constexpr double kSkyStep = 300.0;  // s

Grade GradeOf(Acceptance acceptance, bool doubted) {
    switch (acceptance) {
        case Acceptance::kFixed:
            return doubted ? Grade::kDoubtful : Grade::kTrusted;
        case Acceptance::kFloat:
            return Grade::kFloat;
        case Acceptance::kTripleDifference:
            return Grade::kApproximate;
        case Acceptance::kNone:
            return Grade::kNone;
    }
    return Grade::kNone;
}

// Whether a check may hand the epochs over again with another mask. The model that the engine takes
// by itself follows from the length.
bool MasksMayCheck(const SessionFacts& facts, const RunSpec& main) {
    const bool automaticFirst = facts.length < facts.shortLimit || !facts.secondFrequency;
    const int automatic = automaticFirst ? VORNEL_MODEL_FIRST : VORNEL_MODEL_IONO_FREE;
    const int model = main.model.value_or(facts.modelGiven ? facts.solveMode : automatic);
    return KindOf(facts, model) != AnswerKind::kShort;
}

// Makes checks until the rule of trust has heard enough.
std::vector<RunRecord> MakeChecks(RunSeries& series, const SessionFacts& facts, AnswerKind kind,
                                  const RunSpec& spec, const RunRecord& answer,
                                  const engine::Solution& fixed, const session::Geodetic& place,
                                  bool masks) {
    std::vector<RunRecord> records;
    std::vector<RunSpec> specs = ChecksOf(facts, spec, answer.solveModel);
    std::erase_if(specs, [&](const RunSpec& s) { return s.elevationMask && !masks; });
    for (std::size_t i = 0; i < specs.size(); ++i) {
        if (Decide(kind, facts.secondFrequency, answer, records, specs.size() - i) !=
            Verdict::kOpen) {
            break;
        }
        const RunOutcome outcome = series.Make(specs[i]);
        RunRecord& record = records.emplace_back(RecordOf(specs[i], outcome));
        record.relation = Relation::kNoIntegers;
        if (outcome.acceptance == Acceptance::kFixed) {
            Compare(fixed, outcome.results.fixeds.back(), place, record);
        }
    }
    return records;
}

}  // namespace

void ForgetObservations(session::Session& session) {
    session.inputs.rover.ForgetSatellites();
    session.inputs.base.ForgetSatellites();
}

CheckedOutcome RunChecked(session::Session& session, engine::Engine& engine,
                          const FeedOptions& options, bool checks) {
    RunSeries series(session, engine, options);
    const SessionFacts facts = FactsOf(session, series.HandOver());
    CheckedOutcome result;
    const std::vector<Doubt> contradictions = SessionContradictions(session, series.HandOver());
    result.spec = MainRun(facts);
    const bool masks = checks && MasksMayCheck(facts, result.spec);
    if (!masks) {
        ForgetObservations(session);
    }
    result.outcome = series.Make(result.spec);
    result.tried.push_back(RecordOf(result.spec, result.outcome));
    if (const auto next = NextBest(facts, result.spec, result.outcome)) {
        RunOutcome outcome = series.Make(*next);
        result.tried.push_back(RecordOf(*next, outcome));
        if (Better(outcome, result.outcome)) {
            result.outcome = std::move(outcome);
            result.spec = *next;
        }
    }
    const RunOutcome& outcome = result.outcome;
    result.kind = KindOf(facts, outcome.results.solveModel);
    const session::Geodetic place = session::ToGeodetic(session.base.position);
    if (outcome.acceptance == Acceptance::kFixed) {
        const RunRecord answer = RecordOf(result.spec, outcome);
        if (checks) {
            result.checks = MakeChecks(series, facts, result.kind, result.spec, answer,
                                       outcome.results.fixeds.back(), place, masks);
        }
        result.doubts = Unconfirmed(result.kind, facts.secondFrequency, answer, result.checks);
    }
    result.fed = series.Fed();
    if (const engine::Solution* best = outcome.Best()) {
        result.residuals =
            StatisticsOf(*best, session.config.samplingInterval,
                         {SkyTracks(session, result.fed, kSkyStep), result.fed.times});
    }
    for (const std::vector<Doubt>& more :
         {contradictions, AnswerContradictions(facts, outcome, result.residuals)}) {
        result.doubts.insert(result.doubts.end(), more.begin(), more.end());
    }
    result.grade = GradeOf(outcome.acceptance, !result.doubts.empty());
    return result;
}

}  // namespace vornel::solve
