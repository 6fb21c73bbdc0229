// simulated_run EPOCHS INTERVAL_S [MODE]: one run of the engine on a simulated four-system session,
// as a line of JSON: processor seconds of input and run, memory that the engine added at its peak,
// final status.
#include <cstdio>
#include <cstdlib>

#include "VornelBlCore.h"
#include "measure.h"
#include "simulation/known_scenarios.h"
#include "simulation/session_run.h"

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: simulated_run EPOCHS INTERVAL_S [MODE]\n");
        return 2;
    }
    using namespace vornel::bench;
    const int epochCount = std::atoi(argv[1]);
    const auto session = vornel::simulation::Simulate(vornel::simulation::FourSystems(
        epochCount, std::atof(argv[2]), argc > 3 ? std::atoi(argv[3]) : 6));
    ResetPeakMemory();
    const long before = MemoryKb("VmRSS");
    const double start = ProcessorSeconds();
    vornel::simulation::HandOver(session);
    const double handedOver = ProcessorSeconds();
    int status = 0;
    StartProcess(&status);
    const double done = ProcessorSeconds();
    std::printf(
        "{\"epochs\": %d, \"input_s\": %.4f, \"run_s\": %.4f, \"engine_peak_kb\": %ld, \"status\": "
        "%d}\n",
        epochCount, handedOver - start, done - handedOver, MemoryKb("VmHWM") - before, status);
    return status >= 21 ? 0 : 1;
}
