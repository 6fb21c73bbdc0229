// What several reports say in the same words.
#pragma once

#include <string>
#include <vector>

#include "solve/solve_result.h"

namespace vornel::report {

// The grade as the one-line verdict, without the station names: "TRUSTED", "DOUBTFUL", ...
std::string Verdict(const solve::SolveResult& result);

// Why, and what to do about it when there is no fixed solution.
std::string VerdictReason(const solve::SolveResult& result);

// What each run behind the answer gave, a line each: the main one, the next best where it was tried,
// the checks.
std::vector<std::string> RunLines(const solve::SolveResult& result);

// Why the answer is not trusted, with the advice, a line each.
std::vector<std::string> DoubtLines(const solve::SolveResult& result);

// "Model 1, first frequency (automatic: a short baseline, or one frequency)"; empty when the run did
// not come to choosing one.
std::string ModelText(const solve::SolveResult& result);

// The statuses on the way: "12 > 14 > 21".
std::string ChainText(const solve::RunOutcome& outcome);

// Standard deviations of the vector in north, east, up at `place`, metres.
session::Vector3 NeuDeviations(const engine::Solution& solution, const session::Geodetic& place);

// Which orbits, which records of them were dropped (empty: none), and which ionosphere.
std::string OrbitText(const session::Session& session);
std::string DroppedText(const session::Session& session);
std::string IonosphereText(const session::Session& session);

// What of the observations was left out, one sentence each.
std::vector<std::string> LeftOut(const solve::SolveResult& result);

// Of the session, and the first ones of the readers.
std::vector<std::string> NotesOfRun(
    const solve::SolveResult& result);  // without those on the files
std::vector<std::string> AllNotes(const solve::SolveResult& result);

// Of the session and of the solution.
std::vector<std::string> AllWarnings(const solve::SolveResult& result);

// "1C 2W": the tracking codes of one receiver for a system; "-" for a frequency without.
std::string TrackingCodes(const session::SignalChoice& signals, engine::System system, bool rover);

// Satellites of a system with residuals in a solution.
std::size_t SatellitesWithResiduals(const engine::Solution& solution, engine::System system);

// Root of a variance; 0 of one that is none.
double Deviation(double variance);

}  // namespace vornel::report
