#include "io/gnss_time.h"

#include <array>
#include <cmath>
#include <cstdio>

#include "io/text_fields.h"

namespace vornel::io {
namespace {

// Days from 1970-01-01 to 1980-01-06, the origin of GPS weeks.
constexpr std::int64_t kGpsOriginDay = 3657;

// Days from 1970-01-01 to a date of the Gregorian calendar: years are counted from March, so that
// the leap day ends them, in eras of 400 years with 146097 days each.
std::int64_t DaysFromDate(int year, int month, int day) {
    const std::int64_t marchYear = month > 2 ? year : year - 1;
    const std::int64_t era = marchYear / 400;
    const std::int64_t yearOfEra = marchYear - era * 400;
    const std::int64_t marchMonth = (month + 9) % 12;
    const std::int64_t dayOfYear = (153 * marchMonth + 2) / 5 + day - 1;
    const std::int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra - 719468;
}

bool IsLeapYear(int year) {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int DaysInMonth(int year, int month) {
    static constexpr std::array<int, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && IsLeapYear(year) ? 29 : kDays[static_cast<std::size_t>(month - 1)];
}

struct LeapSecond {
    int year;
    int month;    // the first day of this month is the first with `seconds`
    int seconds;  // GPS minus UTC
};

// IERS Bulletin C; the last entry holds until a new one is announced.
constexpr std::array<LeapSecond, 18> kLeapSeconds = {{{1981, 7, 1},
                                                      {1982, 7, 2},
                                                      {1983, 7, 3},
                                                      {1985, 7, 4},
                                                      {1988, 1, 5},
                                                      {1990, 1, 6},
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

// Seconds from the GPS origin to the start of an entry, on the UTC clock.
double StartOf(const LeapSecond& entry) {
    return static_cast<double>(DaysFromDate(entry.year, entry.month, 1) - kGpsOriginDay) *
           kSecondsPerDay;
}

}  // namespace

double SecondsBetween(const GpsTime& earlier, const GpsTime& later) {
    return (later.week - earlier.week) * kSecondsPerWeek + (later.seconds - earlier.seconds);
}

GpsTime Shifted(const GpsTime& time, double seconds) {
    double total = time.seconds + seconds;
    const double weeks = std::floor(total / kSecondsPerWeek);
    total -= weeks * kSecondsPerWeek;
    GpsTime shifted{time.week + static_cast<std::int32_t>(weeks), total};
    if (shifted.seconds >= kSecondsPerWeek) {  // rounding of a tiny negative remainder
        shifted.seconds = 0.0;
        ++shifted.week;
    }
    return shifted;
}

std::optional<GpsTime> FromCalendar(const CalendarTime& time) {
    const bool dateExists = time.year >= 1980 && time.year <= 2099 && time.month >= 1 &&
                            time.month <= 12 && time.day >= 1 &&
                            time.day <= DaysInMonth(time.year, time.month);
    const bool clockExists = time.hour >= 0 && time.hour <= 23 && time.minute >= 0 &&
                             time.minute <= 59 && time.second >= 0.0 && time.second < 61.0;
    if (!dateExists || !clockExists) {
        return std::nullopt;
    }
    const std::int64_t days = DaysFromDate(time.year, time.month, time.day) - kGpsOriginDay;
    if (days < 0) {
        return std::nullopt;
    }
    const auto week = static_cast<std::int32_t>(days / 7);
    const auto whole =
        static_cast<double>((days % 7) * 86400 + time.hour * 3600 + time.minute * 60);
    return Shifted({week, whole}, time.second);
}

bool IsInCalendar(const GpsTime& time) {
    constexpr std::int32_t kLastWeek = 6260;  // the next one begins on 2100-01-03
    return time.week >= 0 && time.week <= kLastWeek && time.seconds >= 0.0 &&
           time.seconds < kSecondsPerWeek;
}

CalendarTime ToCalendar(const GpsTime& time) {
    const auto dayOfWeek = static_cast<std::int64_t>(time.seconds / kSecondsPerDay);
    const std::int64_t days = time.week * 7LL + dayOfWeek + kGpsOriginDay + 719468;
    const std::int64_t era = days / 146097;
    const std::int64_t dayOfEra = days - era * 146097;
    const std::int64_t yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t marchMonth = (5 * dayOfYear + 2) / 153;
    CalendarTime calendar;
    calendar.day = static_cast<int>(dayOfYear - (153 * marchMonth + 2) / 5 + 1);
    calendar.month = static_cast<int>(marchMonth < 10 ? marchMonth + 3 : marchMonth - 9);
    calendar.year = static_cast<int>(yearOfEra + era * 400 + (calendar.month <= 2 ? 1 : 0));
    const double secondsOfDay = time.seconds - static_cast<double>(dayOfWeek) * kSecondsPerDay;
    const auto whole = static_cast<int>(secondsOfDay);
    calendar.hour = whole / 3600;
    calendar.minute = whole % 3600 / 60;
    calendar.second = secondsOfDay - calendar.hour * 3600 - calendar.minute * 60;
    return calendar;
}

std::string FormatTime(const GpsTime& time, int decimals) {
    // Rounded first, so that 59.9996 s becomes the next minute and not 60.000.
    const double unit = std::pow(10.0, -decimals);
    const double rounded = std::round(time.seconds / unit) * unit;
    const CalendarTime calendar = ToCalendar(Shifted({time.week, 0.0}, rounded + 0.25 * unit));
    const double second = std::floor(calendar.second / unit) * unit;
    std::array<char, 64> text{};
    const int width = decimals > 0 ? 3 + decimals : 2;
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02d:%02d:%0*.*f", calendar.year,
                  calendar.month, calendar.day, calendar.hour, calendar.minute, width, decimals,
                  second);
    return text.data();
}

const char* TimeSystemName(TimeSystem system) {
    static constexpr std::array<const char*, 8> kNames = {"GPS", "GLO", "GAL", "BDT",
                                                          "QZS", "IRN", "UTC", "TAI"};
    return kNames[static_cast<std::size_t>(system)];
}

std::optional<TimeSystem> ParseTimeSystem(std::string_view letters) {
    const std::string_view name = Trim(letters);
    for (int i = 0; i <= static_cast<int>(TimeSystem::kTai); ++i) {
        if (name == TimeSystemName(static_cast<TimeSystem>(i))) {
            return static_cast<TimeSystem>(i);
        }
    }
    if (name == "QZT") {
        return TimeSystem::kQzss;
    }
    return name == "BDS" ? std::optional(TimeSystem::kBeiDou) : std::nullopt;
}

int LeapSecondsAtUtc(const GpsTime& utc) {
    const double seconds = SecondsBetween({0, 0.0}, utc);
    int leap = 0;
    for (const LeapSecond& entry : kLeapSeconds) {
        if (seconds >= StartOf(entry)) {
            leap = entry.seconds;
        }
    }
    return leap;
}

int LeapSecondsAtGps(const GpsTime& gps) {
    const double seconds = SecondsBetween({0, 0.0}, gps);
    int leap = 0;
    for (const LeapSecond& entry : kLeapSeconds) {
        if (seconds >= StartOf(entry) + entry.seconds) {
            leap = entry.seconds;
        }
    }
    return leap;
}

GpsTime ToGpsTime(const GpsTime& reading, TimeSystem system) {
    switch (system) {
        case TimeSystem::kGlonass:
        case TimeSystem::kUtc:
            return Shifted(reading, LeapSecondsAtUtc(reading));
        case TimeSystem::kBeiDou:
            return Shifted(reading, 14.0);  // BDT began at UTC of 2006-01-01
        case TimeSystem::kTai:
            return Shifted(reading, -19.0);  // by definition of GPS time
        case TimeSystem::kGps:
        case TimeSystem::kGalileo:
        case TimeSystem::kQzss:
        case TimeSystem::kNavIc:
            break;
    }
    return reading;
}

}  // namespace vornel::io
