// The input functions of the engine, defined anew: a program that links these has every call
// written to a tape (examples/tape.h) instead of handed to the engine.
#pragma once

#include <cstdio>

namespace vornel::tape {

// Where the calls go from now on. Doubles are written so that they are read back to the bit.
void RecordTo(std::FILE* tape);

}  // namespace vornel::tape
