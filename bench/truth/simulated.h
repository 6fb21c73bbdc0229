// Sessions of the simulated world, drawn by chance within a kind.
#pragma once

#include <cstdint>

#include "scene.h"

namespace vornel::truth {

// The session that a kind and a seed give: always the same one. Its block is the seed: sessions of
// two seeds share nothing.
Scene SimulatedScene(const Kind& kind, std::uint64_t seed);

}  // namespace vornel::truth
