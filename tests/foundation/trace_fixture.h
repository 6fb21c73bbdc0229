// What tests of trace messages need: the bytes of the standard error stream, a directory of one's
// own, and a clock that stands where it is put.
#pragma once

#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "foundation/platform.h"

namespace vornel::test {

inline std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// A new directory, removed with all it holds at the end of its life.
class TemporaryDirectory {
  public:
    TemporaryDirectory() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "vornel-test-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary directory");
        }
        path_ = pattern;
    }
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    std::string File(const std::string& name) const { return (path_ / name).string(); }
    // Entries of the directory itself, not of those below it.
    int EntryCount() const {
        int count = 0;
        for (const auto& entry : std::filesystem::directory_iterator(path_)) {
            count += entry.exists() ? 1 : 0;
        }
        return count;
    }

  private:
    std::filesystem::path path_;
};

// Turns file descriptor 2 to a file for its life, so that every road to the standard error stream
// is seen.
class StderrCapture {
  public:
    StderrCapture() : file_(std::tmpfile()) {
        std::fflush(stderr);
        saved_ = dup(STDERR_FILENO);
        if (file_ == nullptr || saved_ < 0 || dup2(fileno(file_), STDERR_FILENO) < 0) {
            throw std::runtime_error("the standard error stream can't be captured");
        }
    }
    ~StderrCapture() {
        std::fflush(stderr);
        dup2(saved_, STDERR_FILENO);
        close(saved_);
        std::fclose(file_);
    }
    StderrCapture(const StderrCapture&) = delete;
    StderrCapture& operator=(const StderrCapture&) = delete;

    // All bytes that have reached the descriptor so far.
    std::string Text() const {
        std::string text;
        char buffer[4096];
        off_t offset = 0;
        for (ssize_t count; (count = pread(fileno(file_), buffer, sizeof buffer, offset)) > 0;
             offset += count) {
            text.append(buffer, static_cast<std::size_t>(count));
        }
        return text;
    }

  private:
    std::FILE* file_;
    int saved_;
};

// Takes the system clock's place for its life. One at a time.
class FakeClock {
  public:
    explicit FakeClock(const UtcClock& utc) {
        Set(utc);
        readings_ = 0;
        SetSystemTimeSource(&Read);
    }
    ~FakeClock() { SetSystemTimeSource(nullptr); }
    FakeClock(const FakeClock&) = delete;
    FakeClock& operator=(const FakeClock&) = delete;

    void Set(const UtcClock& utc) { utc_ = utc; }
    // How often the clock was read since it stands here.
    int Readings() const { return readings_; }

  private:
    static UtcClock Read() {
        ++readings_;
        return utc_;
    }

    static inline UtcClock utc_{};
    static inline int readings_ = 0;
};

}  // namespace vornel::test
