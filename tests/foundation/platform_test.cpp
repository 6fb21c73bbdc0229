// The door to the platform: clock, tick and lock.
#include "foundation/platform.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace {

using vornel::UtcClock;

// Milliseconds since 1970-01-01 of a reading of the clock, by the calendar of <chrono>.
std::chrono::sys_time<std::chrono::milliseconds> ToSystemTime(const UtcClock& clock) {
    const std::chrono::year_month_day date(std::chrono::year(clock.year),
                                           std::chrono::month(static_cast<unsigned>(clock.month)),
                                           std::chrono::day(static_cast<unsigned>(clock.day)));
    return std::chrono::sys_days(date) + std::chrono::hours(clock.hour) +
           std::chrono::minutes(clock.minute) + std::chrono::seconds(clock.second) +
           std::chrono::milliseconds(clock.millisecond);
}

UtcClock LeapDayClock() {
    return {2024, 2, 29, 23, 58, 57, 986};
}

TEST(Platform, ClockTellsTheUtcOfNow) {
    using std::chrono::floor;
    using std::chrono::milliseconds;
    const auto before = floor<milliseconds>(std::chrono::system_clock::now());
    const UtcClock clock = vornel::GetSystemTime();
    const auto after = floor<milliseconds>(std::chrono::system_clock::now());
    EXPECT_GE(ToSystemTime(clock), before);
    EXPECT_LE(ToSystemTime(clock), after);
    EXPECT_GE(clock.millisecond, 0);
    EXPECT_LE(clock.millisecond, 999);
    EXPECT_LE(clock.second, 59);
    EXPECT_LE(clock.minute, 59);
    EXPECT_LE(clock.hour, 23);
}

TEST(Platform, ClockCanBeReplacedAndGivenBack) {
    vornel::SetSystemTimeSource(&LeapDayClock);
    const UtcClock fake = vornel::GetSystemTime();
    vornel::SetSystemTimeSource(nullptr);
    EXPECT_EQ(fake.year, 2024);
    EXPECT_EQ(fake.month, 2);
    EXPECT_EQ(fake.day, 29);
    EXPECT_EQ(fake.hour, 23);
    EXPECT_EQ(fake.minute, 58);
    EXPECT_EQ(fake.second, 57);
    EXPECT_EQ(fake.millisecond, 986);
    EXPECT_LT(
        std::chrono::abs(std::chrono::system_clock::now() - ToSystemTime(vornel::GetSystemTime())),
        std::chrono::seconds(5));
}

TEST(Platform, TickCountsMillisecondsOfASteadyClock) {
    const auto steadyStart = std::chrono::steady_clock::now();
    const unsigned int start = vornel::timeGetTime();
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    const unsigned int elapsed = vornel::timeGetTime() - start;  // good over a wrap of the counter
    const auto steadyElapsed = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - steadyStart);
    EXPECT_GE(elapsed, 29u);  // both ends are cut to whole milliseconds
    EXPECT_LE(elapsed, static_cast<unsigned int>(steadyElapsed.count()) + 1u);
}

TEST(Platform, CriticalSectionExcludesAnotherThread) {
    vornel::CriticalSection section;
    const auto enteredElsewhere = [&section] {
        bool entered = false;
        std::thread([&] {
            entered = section.try_lock();
            if (entered) {
                section.unlock();
            }
        }).join();
        return entered;
    };
    section.lock();
    EXPECT_FALSE(enteredElsewhere());
    section.unlock();
    EXPECT_TRUE(enteredElsewhere());
}

}  // namespace
