// vornel: the vector between two receivers, from their files.
#include <unistd.h>

#include <iostream>
#include <string>
#include <vector>

#include "app/command.h"
#include "app/heap.h"
#include "app/output_file.h"

int main(int argc, char** argv) {
    vornel::app::PrepareHeap();
    vornel::app::InstallInterruptHandlers();
    const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    const vornel::app::Surroundings around{std::cout, std::cerr, ::isatty(STDERR_FILENO) == 1};
    return vornel::app::RunCommand(arguments, around);
}
