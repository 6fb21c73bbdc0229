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

// A file beside `path` that takes its place at Finish. When anything fails before, or the command is
// interrupted meanwhile (InstallInterruptHandlers), the file beside is removed and what stood at
// `path` stays. One at a time. Throws OutputError.
class OutputFile {
  public:
    explicit OutputFile(const std::string& path);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();

    void Write(std::string_view content);
    void Finish();

  private:
    std::string target_;
    std::string name_;  // of the file beside
    int descriptor_ = -1;
    bool finished_ = false;
};

// The whole of it in one call.
void WriteWhole(const std::string& path, std::string_view content);

// Throws OutputError when a file at `path` could not be created, so that a run does not find out at
// its end.
void RequireWritable(const std::string& path);

// SIGINT, SIGTERM and SIGHUP remove the unfinished output file and then end the command as usual.
void InstallInterruptHandlers();

}  // namespace vornel::app
