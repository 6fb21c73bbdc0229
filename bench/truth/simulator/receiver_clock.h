// When a receiver observes, and what its clock shows then.
#pragma once

#include "scenario.h"

namespace vornel::rough {

// One epoch of a receiver. `tag` is the reading that stands in the file.
struct EpochTime {
    double tag = 0.0;     // s since the origin of the world, to 1e-7 s
    double moment = 0.0;  // GPS time of the measurement, same count
    double offset = 0.0;  // s, of the clock that code and phase are measured with: tag - moment
};

// `nominal` is the full second meant, `sinceStart` the same since the start of the scenario.
EpochTime EpochTimeOf(const Receiver& receiver, double nominal, double sinceStart);

}  // namespace vornel::rough
