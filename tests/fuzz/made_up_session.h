// One small session that solves, in the two shapes that the targets damage: as the arguments of the
// exports, and as the records of the host's readers. Twelve epochs, fourteen satellites of four
// systems, two frequencies, a rover 3 km from the base; from the simulator of the engine's tests.
#pragma once

#include <vector>

#include "session/engine.h"
#include "session/inputs.h"

namespace vornel::fuzz {

inline constexpr int kMadeUpEpochs = 12;

struct EpochOfTwo {
    session::EngineReceiverEpoch rover, base;
};

// A component of a satellite as InputOneSatPreEphValue takes it.
struct PreciseTable {
    int component = 0;
    session::EngineSatellite satellite;
    std::vector<int> weeks;
    std::vector<double> seconds, values;
};

struct EngineSession {
    session::EngineConfig config;
    session::EngineStation rover, base;
    std::vector<session::EngineKepler> kepler;
    std::vector<session::EngineGlonass> glonass;
    std::vector<PreciseTable> precise;  // all but GLONASS; used if the configuration says so
    std::vector<EpochOfTwo> epochs;
};

const EngineSession& MadeUpSession();

const session::Inputs& MadeUpInputs();

// Puts the engine back to where it stands in a fresh process.
void ForgetEverything();

}  // namespace vornel::fuzz
