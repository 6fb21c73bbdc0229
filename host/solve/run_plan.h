// Which runs of the engine an answer rests on: the main one, the next best where that one gives no
// integers, and those that check it. Everything follows from facts of the session; options that the
// user gave win.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "session/session.h"
#include "solve/feed.h"
#include "solve/outcome.h"
#include "solve/run_spec.h"

namespace vornel::solve {

// What the plan depends on.
struct SessionFacts {
    double length = 0.0;           // m, of the approximate vector
    double duration = 0.0;         // s, first to last common epoch
    bool secondFrequency = false;  // of at least one system, at both receivers
    int systemsOnTwo = 0;          // how many systems have it
    bool modelGiven = false;       // by the user
    int solveMode = 0;             // as asked for; 0 automatic
    double shortLimit = 0.0;       // m: up to here the engine takes the first frequency by itself
    double galileoShare = 0.0;     // of the satellite-epochs
    double othersPerEpoch = 0.0;   // mean number of satellites that are not Galileo's
};

SessionFacts FactsOf(const session::Session& session, const FeedSummary& fed);

// How an answer is come by, which says what can spoil it and so what checks it.
enum class AnswerKind {
    kShort,           // first frequency, to 10 km: the ionosphere cancels
    kMedium,          // first frequency, beyond: some ionosphere is left
    kIonosphereFree,  // wide lane, then the ionosphere-free combination
    kOther            // a model that the user asked for
};

const char* NameOf(AnswerKind kind);  // "short", "medium", "ionosphere-free", "other"

AnswerKind KindOf(const SessionFacts& facts, int solveModel);

// The first run.
RunSpec MainRun(const SessionFacts& facts);

// The run to try when the main one gave no integers; nothing when there is none better.
std::optional<RunSpec> NextBest(const SessionFacts& facts, const RunSpec& main,
                                const RunOutcome& outcome);

// Whether `other` is the better answer of the two: integers before float, float before the triple
// difference, and of two floats the ionosphere-free one.
bool Better(const RunOutcome& other, const RunOutcome& one);

// The runs that may check an answer, in the order in which they are made.
std::vector<RunSpec> ChecksOf(const SessionFacts& facts, const RunSpec& main, int solveModel);

// Names of the checks, which the rule of trust knows them by.
inline constexpr const char* kFirstPart = "first two thirds";
inline constexpr const char* kLastPart = "last two thirds";
inline constexpr const char* kHighMask = "mask of 20 degrees";
inline constexpr const char* kOtherFrequency = "second frequency";
inline constexpr const char* kBothFrequencies = "both frequencies";

}  // namespace vornel::solve
