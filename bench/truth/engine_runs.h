// The engine runs of one session, as rows of a table.
#pragma once

#include <string>
#include <vector>

#include "scene.h"

namespace vornel::truth {

// The names of the columns, joined by commas, without an end of line. README.md describes them.
std::string RowHeader();

// One line for each run of the list that makes sense for the session, in the order of the list; a
// run that would repeat another one (a system taken out that the session has not) is left out. A
// session that the host refuses gives one line with the label "refused".
//
// Runs that need the same epochs share an engine, in a process of their own, so that no run sees the
// orbits or coefficients of another. A process that dies, or takes longer than five minutes, gives
// one line with the label "died". Messages of the engine are dropped.
std::string RunScene(const Scene& scene, const std::vector<RunSpec>& runs);

}  // namespace vornel::truth
