// The simulated sessions that benchmarks and comparisons of two builds run on: four systems, every
// satellite above the horizon, real noise.
#pragma once

#include <string>
#include <vector>

#include "simulation/simulator.h"

namespace vornel::simulation {

Scenario FourSystems(int epochCount, double interval, int solveMode);

struct KnownScenario {
    std::string name;
    Scenario scenario;
};

// Every solve model, and what leads a run into its other branches: slips, gaps, a GLONASS bias,
// several periods, a long baseline.
std::vector<KnownScenario> KnownScenarios();

}  // namespace vornel::simulation
