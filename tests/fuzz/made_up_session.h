// One small session that solves, in the two shapes that the targets damage: as the arguments of the
// exports, and as the records of the host's readers. Twelve epochs, fourteen satellites of four
// systems, two frequencies, a rover 3 km from the base; from the simulator of the engine's tests.
#pragma once

#include <vector>

#include "engine/engine.h"
#include "session/inputs.h"

namespace vornel::fuzz {

inline constexpr int kMadeUpEpochs = 12;

struct EpochOfTwo {
    engine::ReceiverEpoch rover, base;
};

// A component of a satellite as InputOneSatPreEphValue takes it.
struct PreciseTable {
    int component = 0;
    engine::Satellite satellite;
    std::vector<int> weeks;
    std::vector<double> seconds, values;
};

struct EngineSession {
    engine::Config config;
    engine::Station rover, base;
    std::vector<engine::Kepler> kepler;
    std::vector<engine::Glonass> glonass;
    std::vector<PreciseTable> precise;  // all but GLONASS; used if the configuration says so
    std::vector<EpochOfTwo> epochs;
};

const EngineSession& MadeUpSession();

const session::Inputs& MadeUpInputs();

// Puts the engine back to where it stands in a fresh process.
void ForgetEverything();

}  // namespace vornel::fuzz
