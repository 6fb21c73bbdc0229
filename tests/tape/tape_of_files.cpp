// tape_of_files TAPE BASE ROVER OTHER...: writes to TAPE what `vornel solve` hands to the engine for
// these files with its default settings.
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "solve/feed.h"
#include "solve/preparation.h"
#include "tape/recorder.h"

namespace {

void WriteTape(const std::vector<std::string>& paths) {
    using namespace vornel;
    session::ConfiguredSettings settings;
    session::Inputs inputs =
        session::ReadInputs({{paths[0]}, {paths[1]}, {paths.begin() + 2, paths.end()}},
                            solve::SelectionFor(settings.values));
    const session::Session session = solve::PrepareSession(std::move(inputs), std::move(settings));
    engine::Engine engine;
    solve::Feed(session, engine, {});
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 4) {
        std::fprintf(stderr, "usage: tape_of_files TAPE BASE ROVER OTHER...\n");
        return 2;
    }
    std::FILE* tape = std::fopen(argv[1], "w");
    if (tape == nullptr) {
        std::perror(argv[1]);
        return 2;
    }
    vornel::tape::RecordTo(tape);
    try {
        WriteTape({argv + 2, argv + argc});
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tape_of_files: %s\n", error.what());
        return 1;
    }
    return std::fclose(tape) == 0 ? 0 : 1;
}
