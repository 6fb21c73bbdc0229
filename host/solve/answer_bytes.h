// An answer as bytes, for the way from the engine's process to that of the caller. Both are the same
// program at the same moment, so the bytes are no format to keep.
#pragma once

#include <string>

#include "solve/checked_run.h"

namespace vornel::solve {

std::string ToBytes(const CheckedOutcome& answer);

// Throws cereal::Exception on bytes that ToBytes did not write.
CheckedOutcome FromBytes(const std::string& bytes);

}  // namespace vornel::solve
