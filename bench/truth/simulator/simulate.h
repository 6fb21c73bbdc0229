// From a scenario to what its receivers, satellites and archives hand over.
#pragma once

#include <optional>
#include <vector>

#include "geodesy.h"
#include "io/antennas.h"
#include "io/navigation.h"
#include "io/observations.h"
#include "io/precise_orbits.h"
#include "scenario.h"

namespace vornel::rough {

// What one occupation gives. The numbers have the digits that a file has, so that a file read back
// equals what is here.
struct SimulatedStation {
    io::Observations observations;
    Vector3 marker{};  // m, earth-fixed: the truth
};

struct SimulatedSession {
    std::vector<SimulatedStation> stations;  // one for each occupation, in their order
    io::Navigation navigation;
    std::optional<io::PreciseOrbits> preciseOrbits;
    std::optional<io::AntennaFile> antennas;

    // The true vector from marker to marker, m, earth-fixed.
    Vector3 TrueVector(std::size_t base, std::size_t rover) const {
        return Minus(stations[rover].marker, stations[base].marker);
    }
};

SimulatedSession Simulate(const Scenario& scenario);

}  // namespace vornel::rough
