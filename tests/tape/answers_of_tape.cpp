// answers_of_tape TAPE...: solves the sessions one after the other in one process and prints every
// answer of the engine on the last of them, to the bit.
#include <VornelBlCore.h>

#include <cstdio>

#include "simulation/all_answers.h"
#include "tape.h"

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: answers_of_tape TAPE...\n");
        return 2;
    }
    int status = -1;
    for (int i = 1; i < argc; ++i) {
        std::FILE* tape = std::fopen(argv[i], "r");
        if (tape == nullptr) {
            std::perror(argv[i]);
            return 2;
        }
        PlayTape(tape);
        std::fclose(tape);
        if (StartProcess(&status) == 0) {
            std::fprintf(stderr, "%s: an error inside the engine\n", argv[i]);
            return 1;
        }
    }
    std::fputs(vornel::simulation::AllAnswers(status).c_str(), stdout);
    return 0;
}
