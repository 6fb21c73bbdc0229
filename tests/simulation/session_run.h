// Runs of simulated sessions.
#pragma once

#include <memory>

#include "foundation/position.h"
#include "run/static_solve.h"
#include "simulation/hand_over.h"
#include "simulation/simulator.h"

namespace vornel::simulation {

// Hands over and runs; the status.
int RunSession(const Session& session);

// Hands over and makes a solver as StartProcess makes it, to run stage by stage. It refers to the
// process and must not outlive it.
std::unique_ptr<StaticSolve> SolverOf(const Session& session);

// A solver after its first stages, with the rover at the true position: periods, reference
// satellites.
std::unique_ptr<StaticSolve> PreparedSolverOf(const Session& session);

// Distance of a solution's vector from the truth, metres.
double ErrorOf(const SolveResult& result, const Session& session);

}  // namespace vornel::simulation
