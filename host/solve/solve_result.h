// Everything that a solve knows at its end. The text answer, the JSON, the CSV and any report are
// made from this alone.
#pragma once

#include <string>

#include "session/session.h"
#include "solve/feed.h"
#include "solve/outcome.h"

namespace vornel::solve {

struct SolveResult {
    session::Session session;  // inputs, decisions, notes, warnings
    FeedSummary fed;           // what was handed over
    RunOutcome outcome;        // the engine's results
    std::string engineLines;   // what the engine wrote to its error stream
    std::string version;       // of the command
    std::string commandLine;   // as it was given
    std::string startedUtc;    // "2026-05-01T12:00:00Z"
    double secondsInAll = 0.0;
};

}  // namespace vornel::solve
