#include "exports/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>
#include <set>

#include "exports/export_set.h"

namespace vornel::exports {
namespace {

std::string ToChars(double value, std::chars_format format, int precision) {
    std::array<char, 512> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(),
                                   value == 0.0 ? 0.0 : value, format, precision);
    return {buffer.data(), end.ptr};
}

std::string Digits(int value, std::size_t width) {
    std::string text = std::to_string(value);
    return std::string(width - std::min(width, text.size()), '0') + text;
}

// The character at `at` and its length in bytes; length 0 where there is no valid one (Unicode 15,
// table 3-7).
struct Character {
    std::uint32_t code = 0;
    std::size_t length = 0;
};

Character CharacterAt(std::string_view text, std::size_t at) {
    const auto byte = [&](std::size_t i) {
        return static_cast<std::uint32_t>(static_cast<unsigned char>(text[at + i]));
    };
    const std::uint32_t first = byte(0);
    if (first < 0x80) {
        return {first, 1};
    }
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || at + length > text.size()) {
        return {};
    }
    std::uint32_t code = first & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80U) {
            return {};
        }
        code = code << 6U | (byte(i) & 0x3FU);
    }
    constexpr std::array<std::uint32_t, 5> kSmallest{0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    return code < kSmallest[length] || code > 0x10FFFF || isSurrogate ? Character{}
                                                                      : Character{code, length};
}

// The characters of a clean text, each in its bytes.
std::vector<std::string> Characters(std::string_view text) {
    std::vector<std::string> characters;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = std::max<std::size_t>(1, CharacterAt(text, at).length);
        characters.emplace_back(text.substr(at, length));
        at += length;
    }
    return characters;
}

bool IsLetterOrDigit(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
}

std::string Joined(const std::vector<std::string>& parts, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < std::min(count, parts.size()); ++i) {
        text += parts[i];
    }
    return text;
}

std::string Fitted(const std::string& name, const NameRule& rule) {
    std::vector<std::string> characters = Characters(CleanText(name));
    for (std::string& character : characters) {
        const char c = character[0];
        const bool isAscii = character.size() == 1;
        const bool isAllowed =
            (isAscii && IsLetterOrDigit(c)) ||
            (rule.allowed == nullptr ? rule.keepsBlanks || c != ' '
                                     : isAscii && std::strchr(rule.allowed, c) != nullptr);
        if (!isAllowed) {
            character.assign(1, '_');
        }
        if (rule.isUpper && isAscii && c >= 'a' && c <= 'z') {
            character = static_cast<char>(c - 'a' + 'A');
        }
    }
    if (rule.allowed != nullptr && std::strchr(rule.allowed, '_') == nullptr) {
        std::erase(characters, "_");
    }
    return Joined(characters, rule.largest);
}

}  // namespace

std::string Fixed(double value, int decimals) {
    const std::string text = ToChars(value, std::chars_format::fixed, decimals);
    const bool isZero = text.find_first_of("123456789") == std::string::npos;
    return isZero && text[0] == '-' ? text.substr(1) : text;
}

std::string Scientific(double value, int decimals) {
    std::string text = ToChars(value, std::chars_format::scientific, decimals);
    std::replace(text.begin(), text.end(), 'e', 'E');
    return text;
}

std::string Right(std::string text, std::size_t width) {
    text.insert(0, width - std::min(width, text.size()), ' ');
    return text;
}

std::string Left(std::string text, std::size_t width) {
    text.resize(std::max(width, text.size()), ' ');
    return text;
}

std::string IsoTime(const io::GpsTime& time, int decimals, char between) {
    std::string text = io::FormatTime(time, decimals);
    text[text.find(' ')] = between;
    return text;
}

std::string IsoTime(const io::CalendarTime& time) {
    return Digits(time.year, 4) + "-" + Digits(time.month, 2) + "-" + Digits(time.day, 2) + "T" +
           Digits(time.hour, 2) + ":" + Digits(time.minute, 2) + ":" +
           Digits(static_cast<int>(time.second), 2);
}

std::string DayMonthYear(const io::GpsTime& time) {
    const io::CalendarTime calendar = io::ToCalendar(time);
    return Digits(calendar.day, 2) + "." + Digits(calendar.month, 2) + "." +
           Digits(calendar.year, 4);
}

namespace {

double SecondsFromNewYear(const io::GpsTime& time, int year) {
    return io::SecondsBetween(*io::FromCalendar({year, 1, 1, 0, 0, 0.0}), time);
}

}  // namespace

std::string SinexTime(const io::GpsTime& time) {
    const int year = io::ToCalendar(time).year;
    const auto seconds = static_cast<std::int64_t>(std::floor(SecondsFromNewYear(time, year)));
    const auto day = static_cast<int>(seconds / 86400);
    return Digits(year % 100, 2) + ":" + Digits(day + 1, 3) + ":" +
           Digits(static_cast<int>(seconds % 86400), 5);
}

double DecimalYear(const io::GpsTime& time) {
    const int year = io::ToCalendar(time).year;
    const bool isLeap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    return year + SecondsFromNewYear(time, year) / (86400.0 * (isLeap ? 366.0 : 365.0));
}

std::string CleanText(std::string_view text) {
    std::string clean;
    for (std::size_t at = 0; at < text.size();) {
        const Character character = CharacterAt(text, at);
        const std::size_t length = std::max<std::size_t>(1, character.length);
        const std::uint32_t code = character.code;
        if (character.length == 0 || code == 0xFFFE || code == 0xFFFF) {
            clean += "\xEF\xBF\xBD";
        } else if (code < 0x20 || (code >= 0x7F && code < 0xA0)) {
            clean += ' ';
        } else {
            clean += text.substr(at, length);
        }
        at += length;
    }
    return clean;
}

std::string AsciiText(std::string_view text) {
    std::string ascii;
    for (const std::string& character : Characters(CleanText(text))) {
        ascii += character.size() == 1 ? character : "?";
    }
    return ascii;
}

FittedNames FitNames(const std::vector<std::string>& names, const NameRule& rule) {
    FittedNames fitted;
    fitted.names.resize(names.size());
    std::set<std::string> taken;
    std::map<std::string, int> lastNumber;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (!names[i].empty() && Fitted(names[i], rule) == names[i] &&
            taken.insert(names[i]).second) {
            fitted.names[i] = names[i];
        }
    }
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (!fitted.names[i].empty()) {
            continue;
        }
        std::string name = Fitted(names[i], rule);
        const std::vector<std::string> characters = Characters(name.empty() ? "S" : name);
        // Names that become the same count on from the last of them.
        int& number = lastNumber[name];
        while (name.empty() || !taken.insert(name).second) {
            const std::string suffix = std::to_string(++number);
            if (suffix.size() > rule.largest) {
                throw ExportError(std::string(rule.format) + ": too many stations for names of " +
                                  std::to_string(rule.largest) + " characters");
            }
            name = Joined(characters, rule.largest - suffix.size()) + suffix;
        }
        fitted.names[i] = name;
        fitted.warnings.push_back(std::string(rule.format) + ": station " + CleanText(names[i]) +
                                  " is called " + name);
    }
    return fitted;
}

}  // namespace vornel::exports
