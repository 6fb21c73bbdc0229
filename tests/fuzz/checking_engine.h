// A stand-in for the library that holds every call of the host to the public header: to the order of
// calls and to the range of each argument. A breach is a finding.
#pragma once

#include "engine/engine.h"

namespace vornel::fuzz {

// `solve`: hand the calls on to the engine, and let it run; else set-up functions answer 1, a run
// status 10, and queries nothing. One at a time: making one forgets the calls of the last.
engine::Api CheckingEngine(bool solve);

// How many epochs and orbit records have reached the one in force.
struct HandedOver {
    std::size_t epochs = 0;
    std::size_t orbits = 0;
};
const HandedOver& CallsSoFar();

}  // namespace vornel::fuzz
