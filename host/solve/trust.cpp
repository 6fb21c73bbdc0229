#include "solve/trust.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "session/geodesy.h"
#include "session/text.h"
#include "solve/residual_statistics.h"

namespace vornel::solve {
namespace {

using session::Format;
using session::Plural;

// Metres between the fixed vectors of an answer and a check.
constexpr double kAgreeHorizontal = 0.040, kAgreeUp = 0.080;
constexpr double kContradictHorizontal = 0.100, kContradictUp = 0.200;

// With fewer integers the next best set of them hardly ever fails a ratio test.
constexpr std::size_t kFewestIntegers = 5;
// On short baselines one agreeing check is enough when the integers are many or stand out by
// themselves; otherwise two.
constexpr std::size_t kManyIntegers = 10;
constexpr double kClearRatio = 5.0;

std::size_t IntegersOf(const engine::Solution& solution) {
    return solution.ambiguities.size();
}

struct Tally {
    int agree = 0;     // of the checks that count for this kind of answer
    int allAgree = 0;  // of all checks
    int contradict = 0;
    bool frequencies = false;  // the two frequencies agree
};

Tally Count(AnswerKind kind, const std::vector<RunRecord>& checks) {
    Tally tally;
    for (const RunRecord& check : checks) {
        const bool agrees = check.relation == Relation::kAgrees;
        tally.allAgree += agrees ? 1 : 0;
        tally.contradict += check.relation == Relation::kContradicts ? 1 : 0;
        const bool otherFrequency = check.spec.name == kOtherFrequency;
        const bool highMask = check.spec.name == kHighMask;
        tally.frequencies = tally.frequencies || (otherFrequency && agrees);
        // On a short baseline a higher mask leaves nearly the same observations, and on a longer one
        // the second frequency shows the ionosphere, not the integers.
        const bool counts = kind == AnswerKind::kShort    ? !highMask
                            : kind == AnswerKind::kMedium ? !otherFrequency
                                                          : true;
        tally.agree += agrees && counts ? 1 : 0;
    }
    return tally;
}

int AgreeingNeeded(AnswerKind kind, bool twoFrequencies, const RunRecord& answer) {
    switch (kind) {
        case AnswerKind::kShort:
            return answer.ratio >= kClearRatio || answer.integers >= kManyIntegers ? 1 : 2;
        case AnswerKind::kMedium:
            return twoFrequencies ? 1 : 2;
        case AnswerKind::kIonosphereFree:
        case AnswerKind::kOther:
            return 2;
    }
    return 2;
}

bool Confirmed(AnswerKind kind, bool twoFrequencies, const RunRecord& answer, const Tally& tally) {
    const bool ionosphere = kind != AnswerKind::kMedium || !twoFrequencies || tally.frequencies;
    return ionosphere && tally.agree >= AgreeingNeeded(kind, twoFrequencies, answer) &&
           tally.allAgree > tally.contradict;
}

}  // namespace

const char* NameOf(Grade grade) {
    switch (grade) {
        case Grade::kTrusted:
            return "trusted";
        case Grade::kDoubtful:
            return "doubtful";
        case Grade::kFloat:
            return "float";
        case Grade::kApproximate:
            return "approximate";
        case Grade::kNone:
            return "none";
    }
    return "none";
}

const char* NameOf(Relation relation) {
    switch (relation) {
        case Relation::kAgrees:
            return "agrees";
        case Relation::kBetween:
            return "between";
        case Relation::kContradicts:
            return "contradicts";
        case Relation::kNoIntegers:
            return "no integers";
    }
    return "no integers";
}

RunRecord RecordOf(const RunSpec& spec, const RunOutcome& outcome) {
    RunRecord record;
    record.spec = spec;
    record.status = outcome.results.status;
    record.solveModel = outcome.results.solveModel;
    record.completed = outcome.completed;
    record.acceptance = outcome.acceptance;
    record.seconds = outcome.seconds;
    if (!outcome.results.fixeds.empty()) {
        record.ratio = outcome.results.fixeds.back().ratio;
        record.integers = IntegersOf(outcome.results.fixeds.back());
    }
    return record;
}

void Compare(const engine::Solution& answer, const engine::Solution& check,
             const session::Geodetic& place, RunRecord& record) {
    const auto neu = session::ToNeu(place, session::Minus(check.vector, answer.vector));
    record.horizontal = std::hypot(neu[0], neu[1]);
    record.up = std::abs(neu[2]);
    if (record.horizontal <= kAgreeHorizontal && record.up <= kAgreeUp) {
        record.relation = Relation::kAgrees;
    } else if (record.horizontal > kContradictHorizontal || record.up > kContradictUp) {
        record.relation = Relation::kContradicts;
    } else {
        record.relation = Relation::kBetween;
    }
}

Verdict Decide(AnswerKind kind, bool twoFrequencies, const RunRecord& answer,
               const std::vector<RunRecord>& checks, std::size_t left) {
    if (answer.integers < kFewestIntegers) {
        return Verdict::kRefuted;
    }
    Tally tally = Count(kind, checks);
    if (Confirmed(kind, twoFrequencies, answer, tally)) {
        return Verdict::kConfirmed;
    }
    const bool frequenciesAsked = std::any_of(checks.begin(), checks.end(), [](const RunRecord& c) {
        return c.spec.name == kOtherFrequency;
    });
    if (kind == AnswerKind::kMedium && twoFrequencies && frequenciesAsked && !tally.frequencies) {
        return Verdict::kRefuted;
    }
    // As if all that are left agreed.
    tally.agree += static_cast<int>(left);
    tally.allAgree += static_cast<int>(left);
    tally.frequencies = tally.frequencies || !frequenciesAsked;
    return left > 0 && Confirmed(kind, twoFrequencies, answer, tally) ? Verdict::kOpen
                                                                      : Verdict::kRefuted;
}

std::vector<Doubt> Unconfirmed(AnswerKind kind, bool twoFrequencies, const RunRecord& answer,
                               const std::vector<RunRecord>& checks) {
    if (answer.integers < kFewestIntegers) {
        return {{"only " + Plural(answer.integers, "integer") +
                     " could be fixed; with fewer than five a wrong set passes the ratio test",
                 "observe longer, or with more systems"}};
    }
    if (checks.empty()) {
        return {{"no check run was made", "leave out --no-checks"}};
    }
    const Tally tally = Count(kind, checks);
    if (Confirmed(kind, twoFrequencies, answer, tally)) {
        return {};
    }
    std::vector<Doubt> doubts;
    for (const RunRecord& check : checks) {
        if (check.relation == Relation::kContradicts) {
            doubts.push_back({"the check \"" + check.spec.name + "\" gives another vector, " +
                                  Format("%.3f", check.horizontal) + " m off horizontally and " +
                                  Format("%.3f", check.up) + " m in height",
                              "observe longer"});
        }
    }
    if (kind == AnswerKind::kMedium && twoFrequencies && !tally.frequencies) {
        doubts.push_back(
            {"the two frequencies do not agree within 40 mm: the ionosphere is too "
             "different at the two stations, or the integers are wrong",
             "observe for two hours or more, for the ionosphere-free combination"});
    }
    if (doubts.empty()) {
        const int needed = AgreeingNeeded(kind, twoFrequencies, answer);
        doubts.push_back({"too few of the check runs agree: " + std::to_string(tally.agree) +
                              " of the " + std::to_string(needed) + " that are needed",
                          "observe longer"});
    }
    return doubts;
}

}  // namespace vornel::solve
