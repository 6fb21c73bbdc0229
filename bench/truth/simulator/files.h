// What is simulated as files: RINEX 3.04 observations and navigation, SP3-d, ANTEX 1.4.
#pragma once

#include <string>
#include <vector>

#include "io/antennas.h"
#include "io/navigation.h"
#include "io/observations.h"
#include "io/precise_orbits.h"
#include "simulate.h"

namespace vornel::rough {

// The text of each file. Records are those of this simulator: one station and one table of signals,
// times in GPS time.
std::string RinexObservations(const io::Observations& observations);
std::string RinexNavigation(const io::Navigation& navigation);
std::string Sp3(const io::PreciseOrbits& orbits);
std::string Antex(const io::AntennaFile& antennas);

// Writes a session into a folder, which is made where it is missing: an observation file for each
// occupation, "<site>_<number>.rnx", "navigation.rnx" and, if there are any, "orbits.sp3" and
// "antennas.atx". Answers the names of the observation files. Throws std::runtime_error when a file
// cannot be written.
std::vector<std::string> WriteSession(const SimulatedSession& session, const std::string& folder);

}  // namespace vornel::rough
