#include "app/progress_line.h"

#include <unistd.h>

#include <cstdio>

namespace vornel::app {

ProgressLine::ProgressLine(int descriptor, bool enabled) : descriptor_(descriptor) {
    if (enabled) {
        thread_ = std::thread([this] { Loop(); });
    }
}

ProgressLine::~ProgressLine() {
    Stop();
}

void ProgressLine::Tell(const std::string& what, std::size_t done, std::size_t total) {
    if (!thread_.joinable()) {
        return;
    }
    const std::lock_guard lock(mutex_);
    what_ = what;
    done_ = done;
    total_ = total;
}

void ProgressLine::Stop() {
    if (!thread_.joinable()) {
        return;
    }
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_all();
    thread_.join();
}

void ProgressLine::Loop() {
    constexpr auto kQuiet = std::chrono::seconds(1);
    constexpr auto kStep = std::chrono::milliseconds(100);
    std::unique_lock lock(mutex_);
    wake_.wait_for(lock, kQuiet, [this] { return stopping_; });
    while (!stopping_) {
        Draw();
        wake_.wait_for(lock, kStep, [this] { return stopping_; });
    }
    if (drawn_) {
        constexpr char kWipe[] = "\r\033[K";
        [[maybe_unused]] const auto written = ::write(descriptor_, kWipe, sizeof kWipe - 1);
    }
}

void ProgressLine::Draw() {
    if (what_.empty()) {
        return;
    }
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin_).count();
    char line[160];
    int length = 0;
    if (total_ > 0) {
        length = std::snprintf(line, sizeof line, "\r\033[K%s: %zu of %zu (%.0f s)", what_.c_str(),
                               done_, total_, seconds);
    } else {
        length = std::snprintf(line, sizeof line, "\r\033[K%s (%.0f s)", what_.c_str(), seconds);
    }
    if (length > 0) {
        [[maybe_unused]] const auto written =
            ::write(descriptor_, line, static_cast<std::size_t>(length));
        drawn_ = true;
    }
}

}  // namespace vornel::app
