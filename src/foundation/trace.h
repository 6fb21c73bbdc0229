// The trace: a leveled text log in process-wide state that any code can write to.
#pragma once

#include "foundation/epoch.h"
#include "foundation/matrix.h"

namespace vornel {

// Opens the log on a path whose keywords are replaced by the time (GPS time); an empty path, or one
// that can't be opened, logs to the standard error stream.
void TraceOpen(const char* pathTemplate);
void TraceSetLevel(int level);
void TraceClose();

// One printf-style line: "level message". Level 1 and below go to the standard error stream as
// well, without the level, with or without a trace. Every line is flushed.
#if defined(__GNUC__)
__attribute__((format(printf, 2, 3)))
#endif
void TraceWrite(int level, const char* format, ...);

// Elements as " %*.*f", a row to a line, without the level.
void TraceMatrix(int level, gult::matrixT matrix, int width, int precision);
// The same of an array stored column by column.
void TraceArray(int level, const double* values, int rows, int columns, int width, int precision);

// Replaces the keywords of a path in place (`path` holds 1024 bytes): %r and %b by `rover` and
// `base` unless these are empty, the time keywords by `time`. The number of replacements; -1 when a
// time keyword meets the zero time.
int ExpandPath(char* path, const char* rover, const char* base, const Epoch& time);

}  // namespace vornel
