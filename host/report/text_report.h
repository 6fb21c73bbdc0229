// The answer on standard output: acceptance first, then the vector, its quality, the data, and what
// the user should know.
#pragma once

#include <string>
#include <vector>

#include "session/solve_result.h"

namespace vornel::report {

std::string TextReport(const session::SolveResult& result);

// The one-line verdict, without the station names: "FIXED", "FLOAT", ...
std::string Verdict(const session::RunOutcome& outcome);

// Why, and what to do about it when there is no fixed solution.
std::string VerdictReason(const session::SolveResult& result);

// "Model 1, first frequency (automatic: a short baseline, or one frequency)"; empty when the run did
// not come to choosing one.
std::string ModelText(const session::SolveResult& result);

// The statuses on the way: "12 > 14 > 21".
std::string ChainText(const session::RunOutcome& outcome);

// Standard deviations of the vector in north, east, up at `place`, metres.
session::Vector3 NeuDeviations(const session::Solution& solution, const session::Geodetic& place);

// Which orbits, which records of them were dropped (empty: none), and which ionosphere.
std::string OrbitText(const session::Session& session);
std::string DroppedText(const session::Session& session);
std::string IonosphereText(const session::Session& session);

// What of the observations was left out, one sentence each.
std::vector<std::string> LeftOut(const session::SolveResult& result);

// Of the session, and the first ones of the readers.
std::vector<std::string> NotesOfRun(
    const session::SolveResult& result);  // without those on the files
std::vector<std::string> AllNotes(const session::SolveResult& result);

// Of the session and of the solution.
std::vector<std::string> AllWarnings(const session::SolveResult& result);

// "1C 2W": the tracking codes of one receiver for a system; "-" for a frequency without.
std::string TrackingCodes(const session::SignalChoice& signals, session::EngineSystem system,
                          bool rover);

// Satellites of a system with residuals in a solution.
std::size_t SatellitesWithResiduals(const session::Solution& solution,
                                    session::EngineSystem system);

}  // namespace vornel::report
