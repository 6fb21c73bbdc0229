// Output files that are there whole or not at all.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace vornel::app {

class OutputError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Writes `content` to a file beside `path` and renames it at the end. When anything fails, or the
// command is interrupted meanwhile (InstallInterruptHandlers), the file beside is removed and what
// stood at `path` stays. Throws OutputError.
void WriteWhole(const std::string& path, std::string_view content);

// Throws OutputError when a file at `path` could not be created, so that a run does not find out at
// its end.
void RequireWritable(const std::string& path);

// SIGINT, SIGTERM and SIGHUP remove the unfinished output file and then end the command as usual.
void InstallInterruptHandlers();

}  // namespace vornel::app
