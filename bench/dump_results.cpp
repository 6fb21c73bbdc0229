// dump_results: everything that the queries give on simulated sessions of every solve model, each
// double in hexadecimal, so that the outputs of two builds can be compared to the bit.
#include <cstdio>

#include "simulation/all_answers.h"
#include "simulation/known_scenarios.h"
#include "simulation/session_run.h"

int main() {
    using namespace vornel::simulation;
    for (const KnownScenario& known : KnownScenarios()) {
        const int status = RunSession(Simulate(known.scenario));
        std::printf("== %s\n%s", known.name.c_str(), AllAnswers(status).c_str());
    }
    return 0;
}
