// Time of the readers: GPS weeks and seconds, the calendar, and the time scales of the formats.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vornel::io {

inline constexpr double kSecondsPerWeek = 604800.0;
inline constexpr double kSecondsPerDay = 86400.0;

// An instant in GPS time, unless the name or comment of a field tells another scale.
// Weeks count from 1980-01-06 without rollover; 0 <= seconds < 604800.
struct GpsTime {
    std::int32_t week = 0;
    double seconds = 0.0;

    friend bool operator==(const GpsTime&, const GpsTime&) = default;
    friend auto operator<=>(const GpsTime&, const GpsTime&) = default;
};

// later - earlier, in seconds.
double SecondsBetween(const GpsTime& earlier, const GpsTime& later);

// `time` moved by `seconds` (any sign), normalised.
GpsTime Shifted(const GpsTime& time, double seconds);

struct CalendarTime {
    int year = 0;  // four digits
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    double second = 0.0;  // up to, not including, 61 (a leap second)
};

// The same reading of the clock as week and seconds; the scale stays what it was. Empty for a date
// that does not exist or lies outside 1980-01-06 to 2099-12-31.
std::optional<GpsTime> FromCalendar(const CalendarTime& time);

// Whether a time is one that the calendar above has, as that of every record that is read is: not
// before 1980-01-06, and before 2100-01-03, where a week begins. False for not-a-number.
bool IsInCalendar(const GpsTime& time);

CalendarTime ToCalendar(const GpsTime& time);

// "2020-06-25 00:59:30.000"; `decimals` of the second from 0 to 9.
std::string FormatTime(const GpsTime& time, int decimals = 3);

// The time scales that the formats name.
enum class TimeSystem : std::uint8_t {
    kGps,
    kGlonass,
    kGalileo,
    kBeiDou,
    kQzss,
    kNavIc,
    kUtc,
    kTai
};

// "GPS", "GLO", "GAL", "BDT", "QZS", "IRN", "UTC", "TAI".
const char* TimeSystemName(TimeSystem system);

// From the three letters of a header. Empty when unknown. Blanks around the letters are ignored.
std::optional<TimeSystem> ParseTimeSystem(std::string_view letters);

// GPS minus UTC in whole seconds at a reading of the UTC clock (bulletins C of the IERS).
int LeapSecondsAtUtc(const GpsTime& utc);

// The same at an instant of GPS time.
int LeapSecondsAtGps(const GpsTime& gps);

// A reading of a clock of `system`, as an instant of GPS time. GLONASS time in files is UTC.
GpsTime ToGpsTime(const GpsTime& reading, TimeSystem system);

}  // namespace vornel::io
