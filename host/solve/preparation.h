// What is decided before the engine is called.
#pragma once

#include "session/session.h"

namespace vornel::solve {

// Throws SessionFault when no run makes sense.
session::Session PrepareSession(session::Inputs inputs, session::ConfiguredSettings settings);

// What is kept of the observations while reading, by the settings.
io::ObservationSelection SelectionFor(const session::Settings& settings);

// Bytes that all files together may unpack to.
std::uint64_t UnpackLimitOf(const session::Settings& settings);

}  // namespace vornel::solve
