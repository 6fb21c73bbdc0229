// Keeps what the engine writes to the standard error stream out of the user's sight.
#pragma once

#include <cstdio>
#include <string>

namespace vornel::app {

// From construction to Stop everything written to file descriptor 2 goes into a file without name.
// Where that cannot be set up, nothing is captured and the text is empty.
class StderrCapture {
  public:
    StderrCapture();
    StderrCapture(const StderrCapture&) = delete;
    StderrCapture& operator=(const StderrCapture&) = delete;
    ~StderrCapture();

    // Ends the capture and answers what was written; empty at a second call.
    std::string Stop();

    // A descriptor of the real standard error while captured, for progress; -1 without capture.
    int RealDescriptor() const { return real_; }

  private:
    std::FILE* file_ = nullptr;
    int real_ = -1;
};

}  // namespace vornel::app
