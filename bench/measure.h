// Processor time and memory of this process.
#pragma once

#include <ctime>
#include <fstream>
#include <string>

namespace vornel::bench {

// Seconds of processor time used so far.
inline double ProcessorSeconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

// A field of /proc/self/status in kilobytes, 0 when there is none: "VmRSS" now, "VmHWM" at the
// peak.
inline long MemoryKb(const std::string& field) {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind(field + ":", 0) == 0) {
            return std::stol(line.substr(field.size() + 1));
        }
    }
    return 0;
}

// Lets the peak count from here.
inline void ResetPeakMemory() {
    std::ofstream("/proc/self/clear_refs") << "5";
}

}  // namespace vornel::bench
