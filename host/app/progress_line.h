// One line on a terminal that tells what the command is doing, once it takes over a second.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <thread>

namespace vornel::app {

// Writes to `descriptor` from a thread of its own, ten times a second, from the first second on;
// nothing at all when `enabled` is false. The line is wiped by Stop.
class ProgressLine {
  public:
    ProgressLine(int descriptor, bool enabled);
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;
    ~ProgressLine();

    // `total` 0: not known.
    void Tell(const std::string& what, std::size_t done, std::size_t total);
    void Stop();

  private:
    void Loop();
    void Draw();

    int descriptor_;
    std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
    std::mutex mutex_;
    std::condition_variable wake_;
    bool stopping_ = false;
    bool drawn_ = false;
    std::string what_;
    std::size_t done_ = 0;
    std::size_t total_ = 0;
    std::thread thread_;
};

}  // namespace vornel::app
