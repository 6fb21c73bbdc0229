// Hands a simulated session to the engine, through its exports and nothing else.
#pragma once

#include <functional>
#include <vector>

#include "simulation/simulator.h"

namespace vornel::simulation {

// Makes a new process and hands over configuration, stations, ionosphere, ephemerides and epochs.
// The stores of the process keep what they hold from before.
void HandOver(const Session& session);

// Its parts, in their order: a new process with configuration, stations and ionosphere; the
// ephemerides, each a call of its own; the epochs.
void HandOverSettings(const Session& session);
std::vector<std::function<void()>> EphemerisCalls(const MadeUpSky& sky);
void HandOverEpochs(const Session& session);

// The configuration alone.
void HandOverConfig(const SolveConfig& config);

}  // namespace vornel::simulation
