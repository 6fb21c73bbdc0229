// Readers of RINEX observation files 2.00 to 2.12, 3.00 to 3.05 and 4.00 to 4.02, and of Compact
// RINEX 1 and 3 holding them. One pass over bytes in memory.
#pragma once

#include <string>
#include <string_view>

#include "io/observations.h"

namespace vornel::io {

// Plain RINEX. Throws InputError with the line of the first record that the format does not allow.
Observations ReadRinexObservations(std::string_view bytes, const std::string& name,
                                   const ObservationSelection& selection = {});

// Compact RINEX; lines in errors and notes are those of the compact file.
Observations ReadCompactRinex(std::string_view bytes, const std::string& name,
                              const ObservationSelection& selection = {});

// Either, told by content; kWrongKind for anything else.
Observations ReadObservations(std::string_view bytes, const std::string& name,
                              const ObservationSelection& selection = {});

}  // namespace vornel::io
