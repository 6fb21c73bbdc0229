// The configuration as TOML: read from a file, and printed with the origin of each value.
#pragma once

#include <stdexcept>
#include <string>

#include "report/exit_codes.h"
#include "session/settings.h"

namespace vornel::app {

using report::ExitCode;

// What is wrong with a configuration file; the text begins with "FILE:LINE: ".
class ConfigError : public std::runtime_error {
  public:
    ConfigError(ExitCode code, const std::string& what) : std::runtime_error(what), code_(code) {}
    ExitCode code() const { return code_; }

  private:
    ExitCode code_;
};

// Takes every key of the file into `settings`, with its origin. Keys are the names of the options
// ("elevation-mask") or of the engine's fields ("elevationMask"), values in the unit of the option.
// Throws ConfigError and io::InputError (missing or unreadable file).
void ReadTomlConfig(const std::string& path, session::ConfiguredSettings& settings);

// The same of a text at hand; `path` is used in messages and origins. Throws ConfigError.
void TakeToml(const std::string& text, const std::string& path,
              session::ConfiguredSettings& settings);

// Every setting as "key = value  # origin"; one that is not set as a comment.
std::string PrintToml(const session::ConfiguredSettings& settings);

}  // namespace vornel::app
