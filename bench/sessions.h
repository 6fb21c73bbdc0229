// The simulated sessions of the benchmarks: four systems, every satellite above the horizon, real
// noise.
#pragma once

#include "simulation/session_run.h"
#include "simulation/simulator.h"

namespace vornel::bench {

inline simulation::Scenario FourSystems(int epochCount, double interval, int solveMode) {
    simulation::Scenario scenario;
    scenario.epochCount = epochCount;
    scenario.interval = interval;
    for (int& count : scenario.satellites) {
        count = -1;
    }
    scenario.phaseNoise = 0.002;
    scenario.codeNoise = 0.3;
    scenario.config.slvmode = solveMode;
    return scenario;
}

}  // namespace vornel::bench
