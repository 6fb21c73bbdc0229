// rewind_tape FROM TO: plays a tape into a new one. Both must be the same to the byte.
#include <cstdio>

#include "tape.h"
#include "tape/recorder.h"

int main(int argc, char** argv) {
    std::FILE* from = argc == 3 ? std::fopen(argv[1], "r") : nullptr;
    std::FILE* to = argc == 3 ? std::fopen(argv[2], "w") : nullptr;
    if (from == nullptr || to == nullptr) {
        std::fprintf(stderr, "usage: rewind_tape FROM TO\n");
        return 2;
    }
    vornel::tape::RecordTo(to);
    PlayTape(from);
    std::fclose(from);
    return std::fclose(to) == 0 ? 0 : 1;
}
