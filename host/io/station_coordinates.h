// Coordinates of stations from SINEX files (Solution INdependent EXchange format, versions 1.00 to
// 2.10): the blocks SITE/ID, SOLUTION/EPOCHS and SOLUTION/ESTIMATE. Other blocks are read over.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "io/gnss_time.h"
#include "io/input_error.h"
#include "io/line_cursor.h"

namespace vornel::io {

// One solution of one point of a site. A site has several where it moved by a jump or was observed
// anew.
struct SiteSolution {
    std::string site;      // the code of four characters, e.g. "WTZR"
    std::string point;     // of the site, e.g. "A"
    std::string domes;     // number of the marker, e.g. "14201M010"; empty when the file has none
    std::string solution;  // its number in the file, e.g. "1"
    GpsTime reference;     // of the coordinates
    std::array<double, 3> position{};               // m, ECEF, marker
    std::array<double, 3> positionSigma{};          // m
    std::optional<std::array<double, 3>> velocity;  // m a year of 365.25 days
    std::array<double, 3> velocitySigma{};          // m a year
    // Of the observations that the solution was made of; empty where it has no bound.
    std::optional<GpsTime> from;
    std::optional<GpsTime> until;
    bool postSeismic = false;  // the file has terms of this site that the line alone does not hold
    std::uint32_t line = 0;    // of its first coordinate
};

struct StationCoordinates {
    std::string file;
    double version = 0.0;
    std::string agency;                   // that made the file
    std::vector<SiteSolution> solutions;  // in the order of the file
    std::vector<InputNote> notes;
};

// Throws InputError, also for a file without any coordinates and for one that is cut off.
StationCoordinates ReadStationCoordinates(LineCursor& text);

// The same of a text in memory.
inline StationCoordinates ReadStationCoordinates(std::string_view bytes, const std::string& name) {
    LineCursor text(bytes, name);
    return ReadStationCoordinates(text);
}

}  // namespace vornel::io
