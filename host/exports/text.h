// Numbers, times and names as the formats want them. Nothing depends on a locale.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "io/gnss_time.h"

namespace vornel::exports {

// "-12.3456"; a zero has no sign.
std::string Fixed(double value, int decimals);

// "1.23456E-05", with so many digits after the point.
std::string Scientific(double value, int decimals);

// Blanks put before or after a text up to `width` characters.
std::string Right(std::string text, std::size_t width);
std::string Left(std::string text, std::size_t width);

std::string IsoTime(const io::GpsTime& time, int decimals, char between = 'T');
std::string IsoTime(const io::CalendarTime& time);  // "2020-06-25T00:59:30", whole seconds
std::string DayMonthYear(const io::GpsTime& time);  // "25.06.2020"
std::string SinexTime(const io::GpsTime& time);     // "20:177:03570"
double DecimalYear(const io::GpsTime& time);

// Text that any of the formats can hold: bytes that are not UTF-8, and characters that XML cannot
// hold, become U+FFFD; control characters, line ends and tabs, blanks.
std::string CleanText(std::string_view text);

// The same in ASCII: every other character becomes '?'.
std::string AsciiText(std::string_view text);

struct NameRule {
    const char* format = "";        // of the warning
    std::size_t largest = 0;        // characters
    bool isUpper = false;           // capital letters
    const char* allowed = nullptr;  // besides ASCII letters and digits; nullptr: all but blanks
    bool keepsBlanks = false;       // with nullptr: blanks too
};

struct FittedNames {
    std::vector<std::string> names;     // all different
    std::vector<std::string> warnings;  // one for each that is not as it was
};

// For formats that quote or escape whatever a text holds.
inline NameRule AnyName(const char* format) {
    return {format, 1000, false, nullptr, true};
}

// Names cut and changed to what a format allows. Names that need no change keep theirs; of those that
// become the same, all but the first get a number at the end.
FittedNames FitNames(const std::vector<std::string>& names, const NameRule& rule);

}  // namespace vornel::exports
