// Precise orbits and clocks of SP3 files, versions a, b, c and d, in metres, seconds and GPS time.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "io/gnss_time.h"
#include "io/input_error.h"
#include "io/line_cursor.h"
#include "io/satellite.h"

namespace vornel::io {

struct OrbitPoint {
    std::uint32_t epoch = 0;           // in PreciseOrbits::epochs
    std::array<double, 3> position{};  // m, earth-fixed frame of the file; NaN when missing
    double clock = 0.0;                // s; NaN when missing
};

struct OrbitSeries {
    SatelliteId satellite;
    std::vector<OrbitPoint> points;  // ascending in time; epochs without a record have no point
};

struct PreciseOrbits {
    std::string file;
    char version = ' ';            // 'a', 'b', 'c', 'd'
    double interval = 0.0;         // s, from the header
    std::string coordinateSystem;  // e.g. "IGb14"
    std::string agency;
    TimeSystem timeSystem = TimeSystem::kGps;  // of the file; the epochs here are GPS time
    std::vector<GpsTime> epochs;               // strictly ascending
    std::vector<OrbitSeries> satellites;       // in the order first met
    std::vector<InputNote> notes;
};

// Throws InputError, also for a file that ends without its EOF line.
PreciseOrbits ReadPreciseOrbits(LineCursor& text);

// The same of a text in memory.
inline PreciseOrbits ReadPreciseOrbits(std::string_view bytes, const std::string& name) {
    LineCursor text(bytes, name);
    return ReadPreciseOrbits(text);
}

}  // namespace vornel::io
