// Lines and fixed-width fields of the exchange formats. No locale, no stream, no copy: everything
// is a view of the bytes in memory, and every index is checked.
#pragma once

#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "io/input_error.h"
#include "io/satellite.h"

namespace vornel::io {

// Walks through the lines of a text. Line ends are LF or CR LF; a trailing Ctrl-Z is no line.
class LineCursor {
  public:
    LineCursor(std::string_view text, const std::string& file) : file_(&file) {
        while (!text.empty() && text.back() == '\x1a') {
            text.remove_suffix(1);
        }
        next_ = text.data();
        end_ = next_ + text.size();
    }

    // Goes to the next line; false at the end of the text, where line() stays what it was.
    bool Next() {
        if (next_ == end_) {
            return false;
        }
        const char* start = next_;
        const auto* newline = static_cast<const char*>(
            std::memchr(start, '\n', static_cast<std::size_t>(end_ - start)));
        terminated_ = newline != nullptr;
        const char* stop = terminated_ ? newline : end_;
        next_ = terminated_ ? newline + 1 : end_;
        if (stop > start && stop[-1] == '\r') {
            --stop;
        }
        line_ = std::string_view(start, static_cast<std::size_t>(stop - start));
        start_ = start;
        ++number_;
        return true;
    }

    // Goes back by one line; only once after each Next().
    void Back() {
        next_ = start_;
        --number_;
    }

    bool AtEnd() const { return next_ == end_; }
    std::string_view line() const { return line_; }
    std::size_t number() const { return number_; }  // of line(), from 1
    // The line has an end of line; without it the text may have been cut off within the line.
    bool terminated() const { return terminated_; }
    const std::string& file() const { return *file_; }

    // Throws with this line as the one to blame.
    [[noreturn]] void Refuse(InputFault fault, std::string reason, std::string hint = {}) const {
        throw InputError(fault, *file_, number_, std::move(reason), std::move(hint));
    }
    // A field that cannot be: the file was cut off if this is its last, unfinished line.
    [[noreturn]] void RefuseField(std::string reason, std::string hint = {}) const;

  private:
    const std::string* file_;
    const char* next_ = nullptr;
    const char* end_ = nullptr;
    const char* start_ = nullptr;
    std::string_view line_;
    std::size_t number_ = 0;
    bool terminated_ = true;
};

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
