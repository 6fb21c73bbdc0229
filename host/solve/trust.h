// Whether an answer can be trusted: what its checks said, what contradicts it, and the grade that
// follows. The rule stands in one place, Decide(), and reads as it is documented in
// docs/accuracy.md.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "solve/run_plan.h"

namespace vornel::solve {

// From best to worst. Only a trusted answer is one to build on.
enum class Grade {
    kTrusted,      // integers, and independent runs confirm them
    kDoubtful,     // integers, but a check failed or something contradicts them
    kFloat,        // no integers
    kApproximate,  // triple difference alone: decimetres to metres
    kNone          // no vector
};

const char* NameOf(Grade grade);  // "trusted", "doubtful", "float", "approximate", "none"

// What a check run says of the answer.
enum class Relation {
    kAgrees,   // its integers give the same vector, within 40 mm horizontally and 80 mm in height
    kBetween,  // neither near enough to confirm nor far enough to contradict
    kContradicts,  // its integers give another vector, beyond 100 mm or 200 mm
    kNoIntegers    // it says nothing
};

const char* NameOf(Relation relation);  // "agrees", "between", "contradicts", "no integers"

// One run of a solve, as it is told.
struct RunRecord {
    RunSpec spec;
    int status = 0;
    int solveModel = 0;
    bool completed = true;
    Acceptance acceptance = Acceptance::kNone;
    double ratio = 0.0;        // of the last fixed solution; 0 when there is none
    std::size_t integers = 0;  // of the last fixed solution
    double seconds = 0.0;
    // Check runs: against the answer, at the base.
    std::optional<Relation> relation;
    double horizontal = 0.0;  // m; 0 without integers
    double up = 0.0;          // m, absolute
};

RunRecord RecordOf(const RunSpec& spec, const RunOutcome& outcome);

// The answer's and a check's last fixed solution, `place`: where north, east and up are taken.
void Compare(const engine::Solution& answer, const engine::Solution& check,
             const session::Geodetic& place, RunRecord& record);

// What the checks still have to say.
enum class Verdict { kOpen, kConfirmed, kRefuted };

// `left`: how many checks are still to come.
Verdict Decide(AnswerKind kind, bool twoFrequencies, const RunRecord& answer,
               const std::vector<RunRecord>& checks, std::size_t left);

// Something that keeps an answer from being trusted, as a clause, and what to do about it.
struct Doubt {
    std::string text;
    std::string advice;  // may be empty
};

// Why `checks` do not confirm; empty when they do.
std::vector<Doubt> Unconfirmed(AnswerKind kind, bool twoFrequencies, const RunRecord& answer,
                               const std::vector<RunRecord>& checks);

}  // namespace vornel::solve
