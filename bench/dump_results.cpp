// dump_results: everything that the queries give on simulated sessions of every solve model, each
// double in hexadecimal, so that the outputs of two builds can be compared to the bit.
#include <cstdio>
#include <string>
#include <vector>

#include "sessions.h"
#include "simulation/all_answers.h"

namespace {

using vornel::simulation::Scenario;

struct NamedScenario {
    std::string name;
    Scenario scenario;
};

std::vector<NamedScenario> Scenarios() {
    std::vector<NamedScenario> all;
    for (int mode = 0; mode <= 6; ++mode) {
        all.push_back({"four systems, mode " + std::to_string(mode),
                       vornel::bench::FourSystems(120, 30.0, mode)});
    }
    Scenario slips = vornel::bench::FourSystems(240, 15.0, 3);
    slips.slips.push_back({vornel::simulation::kRover, 5, 60, {3.0, -2.0}});
    slips.slips.push_back({vornel::simulation::kBase, 40, 90, {1.0, 4.0}});
    slips.gaps.push_back({vornel::simulation::kRover, 110, 70, 95});
    slips.glonassBias = 0.003;
    all.push_back({"slips, gaps and a GLONASS bias, mode 3", slips});
    Scenario periods = vornel::bench::FourSystems(600, 30.0, 1);
    periods.config.useBds = 0;
    all.push_back({"three periods, mode 1", periods});
    Scenario longBaseline = vornel::bench::FourSystems(360, 30.0, 6);
    longBaseline.baseline[0] = 40000.0;
    longBaseline.baseline[1] = 25000.0;
    all.push_back({"47 km, mode 6", longBaseline});
    return all;
}

}  // namespace

int main() {
    for (const NamedScenario& named : Scenarios()) {
        const int status =
            vornel::simulation::RunSession(vornel::simulation::Simulate(named.scenario));
        std::printf("== %s\n%s", named.name.c_str(),
                    vornel::simulation::AllAnswers(status).c_str());
    }
    return 0;
}
