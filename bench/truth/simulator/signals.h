// Carrier frequencies, and which satellites send what.
#pragma once

#include "constellation.h"
#include "scenario.h"

namespace vornel::rough {

// Hz (interface documents; RINEX 3.04, tables 4 to 10).
double FrequencyOf(const Tracking& signal, int glonassChannel);

bool Sends(const Satellite& satellite, const Tracking& signal);

}  // namespace vornel::rough
