// Dates of the simulated world, in GPS time, and the leap seconds that GLONASS needs.
#pragma once

#include "io/gnss_time.h"

namespace vornel::rough {

inline constexpr double kDay = 86400.0;    // s
inline constexpr double kWeek = 604800.0;  // s

struct Date {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0;
    double second = 0.0;
};

io::GpsTime Normalised(int week, double seconds);
io::GpsTime TimeOf(const Date& date);
Date DateOf(const io::GpsTime& time);

// Days since 2000-01-01 12:00 of the same clock.
double DaysSince2000(const io::GpsTime& time);
// From 1 on; the fraction of the day counts.
double DayOfYear(const io::GpsTime& time);

// GPS minus UTC (IERS bulletins C), from 1990 on; the last value holds for the future.
int LeapSeconds(const io::GpsTime& time);

}  // namespace vornel::rough
