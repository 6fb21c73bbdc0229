#include "io/text_fields.h"

#include <array>
#include <charconv>
#include <cmath>

namespace vornel::io {

std::string_view Trim(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) {
        text.remove_prefix(1);
    }
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r')) {
        text.remove_suffix(1);
    }
    return text;
}

std::optional<int> ParseInteger(std::string_view field) {
    std::size_t first = field.find_first_not_of(' ');
    if (first == std::string_view::npos) {
        return std::nullopt;
    }
    const std::size_t last = field.find_last_not_of(' ');
    if (field[first] == '+' && first < last && IsDigit(field[first + 1])) {
        ++first;
    }
    int value = 0;
    const char* end = field.data() + last + 1;
    const auto result = std::from_chars(field.data() + first, end, value);
    return result.ec == std::errc() && result.ptr == end ? std::optional(value) : std::nullopt;
}

std::optional<double> ParseReal(std::string_view field) {
    std::size_t first = field.find_first_not_of(' ');
    if (first == std::string_view::npos) {
        return std::nullopt;
    }
    const std::size_t last = field.find_last_not_of(' ');
    if (field[first] == '+' && first < last) {
        ++first;
        if (field[first] == '-') {
            return std::nullopt;
        }
    }
    std::array<char, 48> text{};
    const std::size_t size = last + 1 - first;
    if (size > text.size()) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < size; ++i) {
        const char c = field[first + i];
        text[i] = c == 'D' || c == 'd' ? 'e' : c;
        const bool allowed = IsDigit(c) || c == '.' || c == '-' || c == '+' || c == 'D' ||
                             c == 'd' || c == 'e' || c == 'E';
        if (!allowed) {
            return std::nullopt;
        }
    }
    double value = 0.0;
    const char* end = text.data() + size;
    const auto result = std::from_chars(text.data(), end, value);
    if (result.ptr != end) {
        return std::nullopt;
    }
    if (result.ec == std::errc::result_out_of_range) {
        // Too small is zero, too large is no number; from_chars does not tell which.
        const std::string_view digits(text.data(), size);
        const std::size_t exponent = digits.find_first_of("eE");
        const bool tiny = exponent != std::string_view::npos && exponent + 1 < size &&
                          digits[exponent + 1] == '-';
        return tiny ? std::optional(0.0) : std::nullopt;
    }
    return result.ec == std::errc() && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

std::optional<SatelliteId> ParseSatellite(std::string_view field, GnssSystem blankSystem) {
    if (field.size() < 3) {
        return std::nullopt;
    }
    const auto system = field[0] == ' ' ? std::optional(blankSystem) : SystemOfLetter(field[0]);
    const char tens = field[1] == ' ' ? '0' : field[1];
    if (!system || !IsDigit(tens) || !IsDigit(field[2])) {
        return std::nullopt;
    }
    const int number = (tens - '0') * 10 + (field[2] - '0');
    if (number == 0) {
        return std::nullopt;
    }
    return SatelliteId{*system, static_cast<std::uint8_t>(number)};
}

std::string Quote(std::string_view text) {
    constexpr std::size_t kLongest = 60;
    std::string quoted = "'";
    for (const char c : text.substr(0, kLongest)) {
        quoted += c >= ' ' && c <= '~' ? c : '?';
    }
    return quoted + (text.size() > kLongest ? "...'" : "'");
}

}  // namespace vornel::io
