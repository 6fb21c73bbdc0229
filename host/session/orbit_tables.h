// Precise orbits of several files made into the tables that the engine interpolates in.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "engine/satellites.h"
#include "io/precise_orbits.h"

namespace vornel::session {

// X, Y, Z in metres, clock in seconds: VornelPrecise.
inline constexpr std::size_t kOrbitComponents = VORNEL_PRECISE_CLOCK + 1;

struct OrbitTables {
    std::vector<io::GpsTime> times;  // strictly ascending, of all files together
    // Values by satellite and component, one for each of `times`.
    std::map<engine::Satellite, std::array<std::vector<double>, kOrbitComponents>> satellites;
    std::vector<std::string> unnumbered;  // satellites without place in the numbering
    std::vector<std::string> frames;      // coordinate systems of the files, each once

    bool Empty() const { return satellites.empty(); }
};

// Joins the files in time; of an epoch that two files hold, the earlier file of the list counts.
// Where the files leave a gap, an entry of missing values is put in, because the engine interpolates
// over the entries it has, however far apart they are. Positions that are not between 6000 and
// 100000 km from the centre, and clocks of a second and more, become missing.
OrbitTables JoinOrbits(const std::vector<io::PreciseOrbits>& files);

// Whether the engine can interpolate at a time as far as the table's ends go: it takes five entries
// before and six from the first entry after the time on.
bool InsideTable(const OrbitTables& tables, const io::GpsTime& time);

}  // namespace vornel::session
