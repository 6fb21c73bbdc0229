// Everything that a solve knows at its end. The text answer, the JSON, the CSV and any report are
// made from this alone.
#pragma once

#include <string>

#include "session/session.h"
#include "solve/checked_run.h"

namespace vornel::solve {

// The answer with its checks and grade, and what it came from.
struct SolveResult : CheckedOutcome {
    session::Session session;  // inputs, decisions, notes, warnings
    std::string engineLines;   // what the engine wrote to its error stream
    std::string version;       // of the command
    std::string commandLine;   // as it was given
    std::string startedUtc;    // "2026-05-01T12:00:00Z"
    double secondsInAll = 0.0;
};

}  // namespace vornel::solve
