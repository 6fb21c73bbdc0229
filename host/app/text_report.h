// The answer on standard output: acceptance first, then the vector, its quality, the data, and what
// the user should know.
#pragma once

#include <string>
#include <vector>

#include "app/solve_result.h"

namespace vornel::app {

std::string TextReport(const SolveResult& result);

// The one-line verdict, without the station names: "FIXED", "FLOAT", ...
std::string Verdict(const session::RunOutcome& outcome);

// Why, and what to do about it when there is no fixed solution.
std::string VerdictReason(const SolveResult& result);

// Of the session, and the first ones of the readers.
std::vector<std::string> AllNotes(const SolveResult& result);

// Of the session and of the solution.
std::vector<std::string> AllWarnings(const SolveResult& result);

// "1C 2W": the tracking codes of one receiver for a system; "-" for a frequency without.
std::string TrackingCodes(const session::SignalChoice& signals, session::EngineSystem system,
                          bool rover);

// Satellites of a system with residuals in a solution.
std::size_t SatellitesWithResiduals(const session::Solution& solution,
                                    session::EngineSystem system);

}  // namespace vornel::app
