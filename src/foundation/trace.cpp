// The trace file: opening, the daily rollover, lines and matrix dumps, and the expansion of its
// name.
#include "foundation/trace.h"

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "foundation/platform.h"

namespace vornel {

namespace {

constexpr std::size_t kPathSize = 1024;

// State of the process, closed at load.
std::FILE* traceFile = nullptr;                    // may be the standard error stream
int traceLevel = 0;                                // highest level written to the file
char tracePath[kPathSize] = "";                    // the template as given
[[maybe_unused]] unsigned int traceStartTick = 0;  // kept for a debugger
Epoch traceFileTime;                               // when the current file was opened
CriticalSection traceLock;                         // guards the rollover

// Copies a string into a path buffer, cut to its size.
void CopyPath(char* path, const std::string& text) {
    const std::size_t length = text.copy(path, kPathSize - 1);
    path[length] = '\0';
}

Epoch GpsNow() {
    return UtcToGps(UtcNow());
}

std::FILE* OpenOrStandardError(const char* path) {
    std::FILE* file = path[0] != '\0' ? std::fopen(path, "w") : nullptr;
    return file != nullptr ? file : stderr;
}

int DayOfWeek(const Epoch& time) {
    return static_cast<int>(time.SecondsOfWeek() / 86400.0);
}

// Begins a new file when the day of the week is another than at the last opening and the name has
// keywords.
void RollOver() {
    const Epoch now = GpsNow();
    const std::lock_guard<CriticalSection> guard(traceLock);
    if (DayOfWeek(now) == DayOfWeek(traceFileTime)) {
        return;
    }
    traceFileTime = now;
    char path[kPathSize];
    CopyPath(path, tracePath);
    if (ExpandPath(path, "", "", now) <= 0) {
        return;
    }
    if (traceFile != nullptr) {
        std::fclose(
            traceFile);  // the standard error stream too, when the trace had fallen back on it
    }
    traceFile = OpenOrStandardError(path);
}

bool IsWritten(int level) {
    return traceFile != nullptr && level <= traceLevel;
}

#if defined(__GNUC__)
__attribute__((format(printf, 1, 2)))
#endif
std::string
Format(const char* format, ...) {
    char text[32];
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return text;
}

struct Keyword {
    const char* name;
    std::string value;
};

// The time keywords in the order of their replacement: a longer one comes before its own beginning.
std::vector<Keyword> TimeKeywords(const Epoch& time) {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, week = 0;
    double seconds = 0.0, secondsOfWeek = 0.0;
    time.ToCalendar(year, month, day, hour, minute, seconds);
    time.ToWeekSeconds(week, secondsOfWeek);
    return {
        {"%ha", Format("%02d", hour / 3 * 3)},
        {"%hb", Format("%02d", hour / 6 * 6)},
        {"%hc", Format("%02d", hour / 12 * 12)},
        {"%Y", Format("%04.0f", static_cast<double>(year))},
        {"%y", Format("%02.0f", static_cast<double>(year % 100))},
        {"%m", Format("%02.0f", static_cast<double>(month))},
        {"%d", Format("%02.0f", static_cast<double>(day))},
        {"%h", Format("%02.0f", static_cast<double>(hour))},
        {"%M", Format("%02.0f", static_cast<double>(minute))},
        {"%S", Format("%02.0f", std::floor(seconds))},
        {"%n", Format("%03d", time.DayOfYear())},
        {"%W", Format("%04d", week)},
        {"%D", Format("%d", static_cast<int>(secondsOfWeek / 86400.0))},
        {"%H", Format("%c", 'a' + hour)},
        {"%t", Format("%02d", minute / 15 * 15)},
    };
}

// Replaces every occurrence; gives their number.
int ReplaceAll(std::string& text, const Keyword& keyword) {
    const std::size_t length = std::strlen(keyword.name);
    int count = 0;
    for (std::size_t at = text.find(keyword.name); at != std::string::npos;
         at = text.find(keyword.name, at + keyword.value.size())) {
        text.replace(at, length, keyword.value);
        ++count;
    }
    return count;
}

}  // namespace

void TraceOpen(const char* pathTemplate) {
    TraceClose();
    const Epoch now = GpsNow();
    CopyPath(tracePath, pathTemplate != nullptr ? pathTemplate : "");
    char path[kPathSize];
    CopyPath(path, tracePath);
    ExpandPath(path, "", "", now);
    traceFile = OpenOrStandardError(path);
    traceStartTick = timeGetTime();
    traceFileTime = now;
}

void TraceSetLevel(int level) {
    traceLevel = level;
}

void TraceClose() {
    if (traceFile != nullptr && traceFile != stderr) {
        std::fclose(traceFile);
    }
    traceFile = nullptr;
    tracePath[0] = '\0';
}

void TraceWrite(int level, const char* format, ...) {
    std::va_list arguments;
    if (level < 2) {
        va_start(arguments, format);
        std::vfprintf(stderr, format, arguments);
        va_end(arguments);
    }
    if (!IsWritten(level)) {
        return;
    }
    RollOver();
    std::fprintf(traceFile, "%d ", level);
    va_start(arguments, format);
    std::vfprintf(traceFile, format, arguments);
    va_end(arguments);
    std::fflush(traceFile);
}

void TraceMatrix(int level, gult::matrixT matrix, int width, int precision) {
    if (!IsWritten(level)) {
        return;
    }
    for (std::uint32_t i = 0; i < matrix.RowCount(); ++i) {
        const double* row = matrix.RowValues(i);
        for (std::uint32_t j = 0; j < matrix.ColCount(); ++j) {
            std::fprintf(traceFile, " %*.*f", width, precision, row[j]);
        }
        std::fputc('\n', traceFile);
    }
    std::fflush(traceFile);
}

void TraceArray(int level, const double* values, int rows, int columns, int width, int precision) {
    if (!IsWritten(level)) {
        return;
    }
    for (int i = 0; i < rows; ++i) {
        for (int j = 0; j < columns; ++j) {
            std::fprintf(traceFile, " %*.*f", width, precision, values[i + j * rows]);
        }
        std::fputc('\n', traceFile);
    }
    std::fflush(traceFile);
}

int ExpandPath(char* path, const char* rover, const char* base, const Epoch& time) {
    std::string text = path;
    if (text.find('%') == std::string::npos) {
        return 0;
    }
    int count = 0;
    if (rover[0] != '\0') {
        count += ReplaceAll(text, {"%r", rover});
    }
    if (base[0] != '\0') {
        count += ReplaceAll(text, {"%b", base});
    }
    bool timeIsMissing = false;
    for (const Keyword& keyword : TimeKeywords(time)) {
        if (time.IsZero()) {
            timeIsMissing = timeIsMissing || text.find(keyword.name) != std::string::npos;
        } else {
            count += ReplaceAll(text, keyword);
        }
    }
    CopyPath(path, text);
    return timeIsMissing ? -1 : count;
}

}  // namespace vornel
