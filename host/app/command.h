// The command: what main() calls, and what tests call in its place.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "engine/engine.h"

namespace vornel::app {

struct Surroundings {
    std::ostream& out;
    std::ostream& err;
    bool errIsTerminal = false;  // progress is shown on a terminal only
    engine::Api engine{};
};

// Runs `vornel` with these arguments (without the program's name) and answers its exit code. Every
// failure is one line on `err`.
int RunCommand(const std::vector<std::string>& arguments, const Surroundings& around);

}  // namespace vornel::app
