// Epochs: normalisation, arithmetic, GPS week, calendar, and the leap seconds between UTC and GPS
// time.
#include "foundation/epoch.h"

#include <cmath>
#include <cstdint>

#include "foundation/conversion.h"
#include "foundation/platform.h"

namespace vornel {

namespace {

constexpr int kSecondsPerDay = 86400;
constexpr int kGpsOriginDays = 7300;  // from 1980-01-06, where GPS week 0 begins, to 2000-01-01
constexpr int kFirstYear = 2000;      // that of day 0

// Days before each month of a common year, and of each month.
constexpr int kDaysBeforeMonth[12] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
constexpr int kDaysOfMonth[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

// UTC minus GPS time from a UTC date on, newest first; a row of zeros ends the table. IERS Bulletin
// C.
constexpr double kLeapSeconds[][7] = {
    {2017, 1, 1, 0, 0, 0, -18}, {2015, 7, 1, 0, 0, 0, -17}, {2012, 7, 1, 0, 0, 0, -16},
    {2009, 1, 1, 0, 0, 0, -15}, {2006, 1, 1, 0, 0, 0, -14}, {1999, 1, 1, 0, 0, 0, -13},
    {1997, 7, 1, 0, 0, 0, -12}, {1996, 1, 1, 0, 0, 0, -11}, {1994, 7, 1, 0, 0, 0, -10},
    {1993, 7, 1, 0, 0, 0, -9},  {1992, 7, 1, 0, 0, 0, -8},  {1991, 1, 1, 0, 0, 0, -7},
    {1990, 1, 1, 0, 0, 0, -6},  {1988, 1, 1, 0, 0, 0, -5},  {1985, 7, 1, 0, 0, 0, -4},
    {1983, 7, 1, 0, 0, 0, -3},  {1982, 7, 1, 0, 0, 0, -2},  {1981, 7, 1, 0, 0, 0, -1},
    {0, 0, 0, 0, 0, 0, 0},
};

bool IsLeapYear(int year) {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int DaysOfYear(int year) {
    return IsLeapYear(year) ? 366 : 365;
}

int DaysOfMonth(int year, int month) {
    return kDaysOfMonth[month - 1] + (month == 2 && IsLeapYear(year) ? 1 : 0);
}

// Days from 2000-01-01 to the first day of a year.
int DaysToYear(int year) {
    int days = 0;
    for (int y = kFirstYear; y < year; ++y) {
        days += DaysOfYear(y);
    }
    for (int y = kFirstYear - 1; y >= year; --y) {
        days -= DaysOfYear(y);
    }
    return days;
}

// Days from 2000-01-01 to a date.
int DaysToDate(int year, int month, int dayOfMonth) {
    const int leapDay = month > 2 && IsLeapYear(year) ? 1 : 0;
    return DaysToYear(year) + kDaysBeforeMonth[month - 1] + leapDay + dayOfMonth - 1;
}

}  // namespace

Epoch::Epoch(double days) {
    const double wholeDays = std::floor(days);
    const double seconds = (days - wholeDays) * kSecondsPerDay;
    const double wholeSeconds = std::floor(seconds);
    day = static_cast<int>(wholeDays);
    second = static_cast<int>(wholeSeconds);
    fraction = seconds - wholeSeconds;
    if (fraction < 1e-6) {
        fraction = 0.0;  // what is left of a day count's rounding
    }
    Normalise();
}

Epoch::Epoch(int week, double seconds) {
    const int days = TruncateToInt(seconds / kSecondsPerDay);
    const double secondsOfDay = seconds - static_cast<double>(days) * kSecondsPerDay;
    day = static_cast<int>(std::int64_t{week} * 7 + days - kGpsOriginDays);
    second = TruncateToInt(secondsOfDay);
    fraction = secondsOfDay - second;
    Normalise();
}

Epoch::Epoch(const double calendar[6]) {
    const int wholeSeconds = static_cast<int>(calendar[5]);
    day = DaysToDate(static_cast<int>(calendar[0]), static_cast<int>(calendar[1]),
                     static_cast<int>(calendar[2]));
    second =
        static_cast<int>(calendar[3]) * 3600 + static_cast<int>(calendar[4]) * 60 + wholeSeconds;
    fraction = calendar[5] - wholeSeconds;
    Normalise();
}

// Brings `second` and `fraction` into their ranges. A fraction just short of a whole second counts
// as one, and so does any above.
void Epoch::Normalise() {
    if (fraction > 0.999999999) {
        fraction = 1.0;
    }
    if (fraction < 0.0) {
        int borrowed = TruncateToInt(-fraction);
        if (-static_cast<double>(borrowed) > fraction) {
            ++borrowed;
        }
        second -= borrowed;
        fraction += borrowed;
    } else if (fraction == 1.0) {
        ++second;
        fraction = 0.0;
    }
    day += second / kSecondsPerDay;
    second %= kSecondsPerDay;
    if (second < 0) {
        second += kSecondsPerDay;
        --day;
    }
    fraction = std::floor(fraction * 1e20 + 0.5) / 1e20;
}

void Epoch::ToWeekSeconds(int& week, double& seconds) const {
    const int days = day + kGpsOriginDays;
    week = days / 7;
    seconds = (days - week * 7) * kSecondsPerDay + second + fraction;
}

double Epoch::SecondsOfWeek() const {
    int week = 0;
    double seconds = 0.0;
    ToWeekSeconds(week, seconds);
    return seconds;
}

// The division comes before the multiplication: the rounding decides equalities at the ends of
// periods.
double Epoch::TotalSeconds() const {
    return ((second + fraction) / kSecondsPerDay + day) * kSecondsPerDay;
}

void Epoch::ToCalendar(int& year, int& month, int& dayOfMonth) const {
    int rest = day;
    year = kFirstYear;
    while (rest < 0) {
        --year;
        rest += DaysOfYear(year);
    }
    while (rest >= DaysOfYear(year)) {
        rest -= DaysOfYear(year);
        ++year;
    }
    month = 1;
    while (rest >= DaysOfMonth(year, month)) {
        rest -= DaysOfMonth(year, month);
        ++month;
    }
    dayOfMonth = rest + 1;
}

void Epoch::ToCalendar(int& year, int& month, int& dayOfMonth, int& hour, int& minute,
                       double& seconds) const {
    ToCalendar(year, month, dayOfMonth);
    hour = second / 3600;
    minute = second % 3600 / 60;
    seconds = second % 60 + fraction;
}

int Epoch::DayOfYear() const {
    int year = 0;
    int month = 0;
    int dayOfMonth = 0;
    ToCalendar(year, month, dayOfMonth);
    return day - DaysToYear(year) + 1;
}

bool operator<(const Epoch& left, const Epoch& right) {
    if (left.day != right.day) {
        return left.day < right.day;
    }
    if (left.second != right.second) {
        return left.second < right.second;
    }
    return left.fraction < right.fraction;
}

bool operator<=(const Epoch& left, const Epoch& right) {
    if (left.day != right.day) {
        return left.day < right.day;
    }
    if (left.second != right.second) {
        return left.second < right.second;
    }
    return left.fraction <= right.fraction;
}

double operator-(const Epoch& left, const Epoch& right) {
    Epoch difference;
    difference.day = left.day - right.day;
    difference.second = left.second - right.second;
    difference.fraction = left.fraction - right.fraction;
    difference.Normalise();
    return difference.TotalSeconds();
}

Epoch operator+(const Epoch& epoch, double seconds) {
    const int whole = TruncateToInt(seconds);
    Epoch sum = epoch;
    sum.second += whole;
    sum.fraction += seconds - whole;
    sum.Normalise();
    return sum;
}

Epoch operator-(const Epoch& epoch, double seconds) {
    return epoch + -seconds;
}

Epoch UtcNow() {
    const UtcClock now = GetSystemTime();
    const double calendar[6] = {
        static_cast<double>(now.year),   static_cast<double>(now.month),
        static_cast<double>(now.day),    static_cast<double>(now.hour),
        static_cast<double>(now.minute), now.second + 0.001 * now.millisecond};
    return Epoch(calendar);
}

Epoch UtcToGps(const Epoch& utc) {
    for (const double* row = kLeapSeconds[0]; row[0] > 0.0; row += 7) {
        if (utc - Epoch(row) >= 0.0) {
            return utc - row[6];
        }
    }
    return utc;
}

double GlonassSecondsOfDay(int week, double seconds) {
    const Epoch moscow = Epoch(week, seconds) + 10800.0;
    int year = 0;
    int month = 0;
    int dayOfMonth = 0;
    int hour = 0;
    int minute = 0;
    double secondsOfMinute = 0.0;
    moscow.ToCalendar(year, month, dayOfMonth, hour, minute, secondsOfMinute);
    return secondsOfMinute + minute * 60.0 + hour * 3600.0;
}

}  // namespace vornel
