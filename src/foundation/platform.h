// The platform behind one door: clock, tick, lock. Nothing else of the engine calls the system.
#pragma once

#include <mutex>

namespace vornel {

struct UtcClock {
    int year, month, day, hour, minute, second, millisecond;
};

// The system's clock in UTC.
UtcClock GetSystemTime();
// Replaces the clock for tests; nullptr gives the system's back.
void SetSystemTimeSource(UtcClock (*source)());

// Milliseconds of a steady clock.
unsigned int timeGetTime();

using CriticalSection = std::mutex;

}  // namespace vornel
