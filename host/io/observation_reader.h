// Readers of RINEX observation files 2.00 to 2.12, 3.00 to 3.05 and 4.00 to 4.02, and of Compact
// RINEX 1 and 3 holding them. One pass over the lines, whole in memory or as they are unpacked.
#pragma once

#include <string>
#include <string_view>

#include "io/line_cursor.h"
#include "io/observations.h"

namespace vornel::io {

// Plain RINEX. Throws InputError with the line of the first record that the format does not allow.
Observations ReadRinexObservations(LineCursor& text, const ObservationSelection& selection = {});

// Compact RINEX; lines in errors and notes are those of the compact file.
Observations ReadCompactRinex(LineCursor& text, const ObservationSelection& selection = {});

// Either, told by content; kWrongKind for anything else.
Observations ReadObservations(LineCursor& text, const ObservationSelection& selection = {});

// The same of a text in memory.
inline Observations ReadRinexObservations(std::string_view bytes, const std::string& name,
                                          const ObservationSelection& selection = {}) {
    LineCursor text(bytes, name);
    return ReadRinexObservations(text, selection);
}
inline Observations ReadCompactRinex(std::string_view bytes, const std::string& name,
                                     const ObservationSelection& selection = {}) {
    LineCursor text(bytes, name);
    return ReadCompactRinex(text, selection);
}
inline Observations ReadObservations(std::string_view bytes, const std::string& name,
                                     const ObservationSelection& selection = {}) {
    LineCursor text(bytes, name);
    return ReadObservations(text, selection);
}

}  // namespace vornel::io
