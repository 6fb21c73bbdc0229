// Processor time and memory of this process.
#pragma once

#include <sys/resource.h>

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

// The same of the children that have ended.
inline double ProcessorSecondsOfChildren() {
    rusage used{};
    getrusage(RUSAGE_CHILDREN, &used);
    const auto seconds = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + 1e-6 * static_cast<double>(t.tv_usec);
    };
    return seconds(used.ru_utime) + seconds(used.ru_stime);
}

// Peak of the largest child that has ended; pages shared with this process count again.
inline long PeakKbOfChildren() {
    rusage used{};
    getrusage(RUSAGE_CHILDREN, &used);
    return used.ru_maxrss;
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
