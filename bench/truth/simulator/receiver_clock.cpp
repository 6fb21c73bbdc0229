#include "receiver_clock.h"

#include <cmath>

namespace vornel::rough {
namespace {

constexpr double kMillisecond = 1e-3;  // s
constexpr double kTagDigit = 1e7;      // of a second, in the file

}  // namespace

EpochTime EpochTimeOf(const Receiver& receiver, double nominal, double sinceStart) {
    const double free = receiver.clockOffset + receiver.clockDrift * sinceStart;
    EpochTime time{nominal, nominal, 0.0};
    switch (receiver.clock) {
        case ClockStyle::kSteered: {
            // A loop that holds the clock within some tens of nanoseconds.
            constexpr double kPeriod = 900.0;  // s
            time.offset = receiver.clockOffset * std::cos(2.0 * kPi * sinceStart / kPeriod);
            break;
        }
        case ClockStyle::kJumping:
            time.offset = free - kMillisecond * std::round(free / kMillisecond);
            break;
        case ClockStyle::kFree:
            time.offset = free;
            break;
        case ClockStyle::kTagged: {
            const double whole = std::floor(nominal);
            time.tag = whole + std::round((nominal - whole + free) * kTagDigit) / kTagDigit;
            time.moment = nominal + free;
            time.offset = time.tag - time.moment;
            return time;
        }
    }
    time.moment = time.tag - time.offset;
    return time;
}

}  // namespace vornel::rough
