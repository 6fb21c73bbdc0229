// The one use case: a baseline from its files, or from observations that were read already. The
// command, the benchmarks, and whatever else embeds the host call this.
//
//   SolveRequest request;
//   request.paths.base = {"base.rnx"};
//   request.paths.rover = {"rover.rnx"};
//   request.paths.others = {"brdc.rnx"};
//   SolveResult result = Solve(std::move(request));
//
// An answer does not depend on what the process solved before: the engine runs in a child process of
// its own. Several threads may solve at once.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "engine/engine.h"
#include "process/child_process.h"
#include "session/settings.h"
#include "solve/solve_result.h"

namespace vornel::solve {

struct SolveRequest {
    session::InputPaths paths;
    std::optional<session::Inputs> inputs;  // read already: `paths` is not looked at
    session::ConfiguredSettings settings;
    bool checks = true;     // false: no check runs, and no answer better than doubtful
    std::string tracePath;  // of the engine's log; empty: none
    int traceLevel = 4;
    process::Progress progress;       // may be empty
    std::function<bool()> cancelled;  // true ends the solve, within the engine too; may be empty
    double timeLimit = 0.0;           // s, of the engine's process; 0: none
    engine::Api engine{};             // the library, or what a test puts in its place
};

// Reads, prepares, hands over, runs and judges. The result has the decisions, the engine's answers,
// the checks and the grade; the observations themselves are freed.
// Throws io::InputError and session::SessionFault for what the files hold, engine::Failure when
// the engine gives up, process::Cancelled, process::ChildDied when the engine's process died or took
// too long, and std::bad_alloc.
SolveResult Solve(SolveRequest request);

}  // namespace vornel::solve
