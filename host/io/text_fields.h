// Fixed-width fields of the exchange formats. No locale, no stream, no copy: everything is a view of
// the bytes in memory, and every index is checked.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "io/satellite.h"

namespace vornel::io {

// Columns `start` (from 0) to `start + width` of a line, shorter where the line ends.
inline std::string_view Field(std::string_view line, std::size_t start, std::size_t width) {
    return start < line.size() ? line.substr(start, width) : std::string_view();
}

std::string_view Trim(std::string_view text);
inline bool IsBlank(std::string_view text) {
    return text.find_first_not_of(' ') == std::string_view::npos;
}
inline bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// A whole number with blanks around it; empty for anything else, blanks alone included.
std::optional<int> ParseInteger(std::string_view field);

// A decimal number with blanks around it, exponents e, E, d or D; empty for anything else: blanks
// alone, "nan", "inf", numbers beyond the range of double.
std::optional<double> ParseReal(std::string_view field);

// A letter and a number of two columns, "G05", "G 5"; a blank letter stands for `blankSystem`.
std::optional<SatelliteId> ParseSatellite(std::string_view field, GnssSystem blankSystem);

// The text for a message: in quotes, cut to 60 characters, bytes that do not print as '?'.
std::string Quote(std::string_view text);

// The label of a header line, columns 61 to 80, trimmed.
inline std::string_view HeaderLabel(std::string_view line) {
    return Trim(Field(line, 60, 20));
}

}  // namespace vornel::io
