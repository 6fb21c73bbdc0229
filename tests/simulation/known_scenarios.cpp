#include "simulation/known_scenarios.h"

namespace vornel::simulation {

Scenario FourSystems(int epochCount, double interval, int solveMode) {
    Scenario scenario;
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

std::vector<KnownScenario> KnownScenarios() {
    std::vector<KnownScenario> all;
    for (int mode = 0; mode <= 6; ++mode) {
        all.push_back({"mode-" + std::to_string(mode), FourSystems(120, 30.0, mode)});
    }
    Scenario slips = FourSystems(240, 15.0, 3);
    slips.slips.push_back({kRover, 5, 60, {3.0, -2.0}});
    slips.slips.push_back({kBase, 40, 90, {1.0, 4.0}});
    slips.gaps.push_back({kRover, 110, 70, 95});
    slips.glonassBias = 0.003;
    all.push_back({"slips-gaps-bias", slips});
    Scenario periods = FourSystems(600, 30.0, 1);
    periods.config.useBds = 0;
    all.push_back({"three-periods", periods});
    Scenario longBaseline = FourSystems(360, 30.0, 6);
    longBaseline.baseline[0] = 40000.0;
    longBaseline.baseline[1] = 25000.0;
    all.push_back({"47-km", longBaseline});
    return all;
}

}  // namespace vornel::simulation
