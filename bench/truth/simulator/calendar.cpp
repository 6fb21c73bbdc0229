#include "calendar.h"

#include <array>
#include <chrono>
#include <cmath>

namespace vornel::rough {
namespace {

using std::chrono::sys_days;

sys_days DayOf(int year, int month, int day) {
    return sys_days(std::chrono::year_month_day(std::chrono::year(year),
                                                std::chrono::month(static_cast<unsigned>(month)),
                                                std::chrono::day(static_cast<unsigned>(day))));
}

// GPS weeks begin here.
const sys_days kOrigin = DayOf(1980, 1, 6);

struct LeapDay {
    int year, month;
    int seconds;
};

constexpr std::array<LeapDay, 13> kLeapDays = {{{1990, 1, 6},
                                                {1991, 1, 7},
                                                {1992, 7, 8},
                                                {1993, 7, 9},
                                                {1994, 7, 10},
                                                {1996, 1, 11},
                                                {1997, 7, 12},
                                                {1999, 1, 13},
                                                {2006, 1, 14},
                                                {2009, 1, 15},
                                                {2012, 7, 16},
                                                {2015, 7, 17},
                                                {2017, 1, 18}}};

}  // namespace

io::GpsTime Normalised(int week, double seconds) {
    const double weeks = std::floor(seconds / kWeek);
    io::GpsTime time{week + static_cast<int>(weeks), seconds - weeks * kWeek};
    if (time.seconds >= kWeek) {  // by rounding
        time.seconds = 0.0;
        ++time.week;
    }
    return time;
}

io::GpsTime TimeOf(const Date& date) {
    const auto days = (DayOf(date.year, date.month, date.day) - kOrigin).count();
    return Normalised(static_cast<int>(days / 7), static_cast<double>(days % 7) * kDay +
                                                      date.hour * 3600.0 + date.minute * 60.0 +
                                                      date.second);
}

Date DateOf(const io::GpsTime& time) {
    const double day = std::floor(time.seconds / kDay);
    const std::chrono::year_month_day date(
        kOrigin + std::chrono::days(time.week * 7 + static_cast<int>(day)));
    const double ofDay = time.seconds - day * kDay;
    const int hour = static_cast<int>(ofDay / 3600.0);
    const int minute = static_cast<int>((ofDay - hour * 3600.0) / 60.0);
    return {static_cast<int>(date.year()),
            static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day())),
            hour,
            minute,
            ofDay - hour * 3600.0 - minute * 60.0};
}

double DaysSince2000(const io::GpsTime& time) {
    const auto noon = (DayOf(2000, 1, 1) - kOrigin).count();
    return time.week * 7.0 + time.seconds / kDay - static_cast<double>(noon) - 0.5;
}

double DayOfYear(const io::GpsTime& time) {
    const Date date = DateOf(time);
    const io::GpsTime newYear = TimeOf({date.year, 1, 1, 0, 0, 0.0});
    return 1.0 + (time.week - newYear.week) * 7.0 + (time.seconds - newYear.seconds) / kDay;
}

int LeapSeconds(const io::GpsTime& time) {
    int seconds = 5;
    for (const LeapDay& leap : kLeapDays) {
        if (TimeOf({leap.year, leap.month, 1, 0, 0, 0.0 + leap.seconds}) <= time) {
            seconds = leap.seconds;
        }
    }
    return seconds;
}

}  // namespace vornel::rough
