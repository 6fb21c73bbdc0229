// The arguments of the command, read and checked.
#pragma once

#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

#include "session/inputs.h"
#include "session/settings.h"

namespace vornel::app {

struct SolveArguments {
    session::InputPaths paths;
    session::ConfiguredSettings settings;  // defaults, then the file of --config, then the options
    std::string json;                      // paths of outputs; empty: not asked for
    std::string csv;
    std::string report;
    std::string trace;
    int traceLevel = 4;
    bool verbose = false;
    bool checks = true;  // --no-checks
};

struct InfoArguments {
    std::vector<std::string> files;
};

// Without files the configuration as far as it is known before any data.
struct ConfigArguments {
    session::InputPaths paths;
    session::ConfiguredSettings settings;
};

// Text for standard output: --help or --version.
struct TextArguments {
    std::string text;
};

using Arguments = std::variant<SolveArguments, InfoArguments, ConfigArguments, TextArguments>;

class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Throws UsageError, and what ReadTomlConfig throws.
Arguments ParseCommandLine(const std::vector<std::string>& arguments);

}  // namespace vornel::app
