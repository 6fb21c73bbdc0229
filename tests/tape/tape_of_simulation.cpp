// tape_of_simulation FOLDER: writes to FOLDER one tape for each simulated session that comparisons
// run on, NAME.tape, and says their names.
#include <cstdio>
#include <string>

#include "simulation/hand_over.h"
#include "simulation/known_scenarios.h"
#include "tape/recorder.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: tape_of_simulation FOLDER\n");
        return 2;
    }
    using namespace vornel;
    for (const simulation::KnownScenario& known : simulation::KnownScenarios()) {
        const std::string path = std::string(argv[1]) + "/" + known.name + ".tape";
        std::FILE* tape = std::fopen(path.c_str(), "w");
        if (tape == nullptr) {
            std::perror(path.c_str());
            return 2;
        }
        tape::RecordTo(tape);
        simulation::HandOver(simulation::Simulate(known.scenario));
        if (std::fclose(tape) != 0) {
            std::perror(path.c_str());
            return 1;
        }
        std::printf("%s\n", known.name.c_str());
    }
    return 0;
}
