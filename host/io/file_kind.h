// What a file is, told by its first lines and never by its name.
#pragma once

#include <string>
#include <string_view>

namespace vornel::io {

enum class FileKind {
    kObservation,         // RINEX observation 2, 3, 4
    kCompactObservation,  // Compact RINEX 1, 3
    kNavigation,          // RINEX navigation 2, 3, 4
    kPreciseOrbit,        // SP3
    kAntenna,             // ANTEX
    kStationCoordinates   // SINEX
};

// "RINEX observation file" and so on.
const char* KindName(FileKind kind);

// Throws InputError: kEmpty without bytes; kWrongKind when the content is nothing of the above,
// with what it looks like where that can be told (a RINEX meteorological or clock file, text,
// binary).
FileKind RecogniseFile(std::string_view bytes, const std::string& name);

}  // namespace vornel::io
