// Clock and tick from the standard library.
#include "foundation/platform.h"

#include <chrono>

namespace vornel {

namespace {

UtcClock ReadSystemClock() {
    using namespace std::chrono;
    const auto now = floor<milliseconds>(system_clock::now());
    const auto midnight = floor<days>(now);
    const year_month_day date{midnight};
    const hh_mm_ss time{now - midnight};
    return {static_cast<int>(date.year()),
            static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day())),
            static_cast<int>(time.hours().count()),
            static_cast<int>(time.minutes().count()),
            static_cast<int>(time.seconds().count()),
            static_cast<int>(time.subseconds().count())};
}

UtcClock (*systemTimeSource)() = ReadSystemClock;

}  // namespace

UtcClock GetSystemTime() {
    return systemTimeSource();
}

void SetSystemTimeSource(UtcClock (*source)()) {
    systemTimeSource = source != nullptr ? source : ReadSystemClock;
}

unsigned int timeGetTime() {
    using namespace std::chrono;
    const auto tick = duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
    return static_cast<unsigned int>(tick);  // wraps after 49.7 days
}

}  // namespace vornel
