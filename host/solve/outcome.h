// The engine's run, its answers, and how far they can be trusted.
#pragma once

#include <string>
#include <vector>

#include "session/session.h"

namespace vornel::solve {

// How far the answer can be trusted.
enum class Acceptance { kFixed, kFloat, kTripleDifference, kNone };

const char* AcceptanceName(Acceptance acceptance);

struct RunOutcome {
    engine::Results results;  // vectors from marker to marker
    bool completed = true;    // false: an exception ended the run inside the engine
    std::vector<int> chain;   // the statuses on the way
    Acceptance acceptance = Acceptance::kNone;
    double seconds = 0.0;               // the run took
    std::vector<std::string> warnings;  // about the solution

    // The solution to be used: by acceptance the last fixed, the last float, the triple difference;
    // null with kNone.
    const engine::Solution* Best() const;
};

// `config`: with which the run was started; the session's, if not given. A solution counts as fixed
// when its ratio passes the session's threshold, whatever that of `config`.
RunOutcome Run(const session::Session& session, const engine::Config& config,
               engine::Engine& engine);
RunOutcome Run(const session::Session& session, engine::Engine& engine);

// The decision alone, from the status and the solutions filed.
Acceptance Judge(const engine::Results& results, double ratioThreshold);

// What speaks against trusting the solution, one sentence each.
std::vector<std::string> Doubts(const engine::Results& results, Acceptance acceptance);

}  // namespace vornel::solve
