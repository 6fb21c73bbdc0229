// Walks through the lines of a text, whole in memory or as it comes from a source. No line is
// copied: each is a view that holds until the next one is asked for.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "io/byte_source.h"
#include "io/input_error.h"

namespace vornel::io {

// More than this of a line is read over, so that a file without line ends cannot fill the memory.
// The longest lines of the formats have 200 observations of 16 columns.
inline constexpr std::size_t kLongestLine = std::size_t{1} << 16;

// Line ends are LF or CR LF; Ctrl-Z at the end is no line, and a byte order mark of UTF-8 at the
// start no part of one.
class LineCursor {
  public:
    // A text in memory, which has to outlive the cursor.
    LineCursor(std::string_view text, std::string file);
    // A source, which has to outlive the cursor, too. Reads its first bytes.
    LineCursor(ByteSource& source, std::string file);

    LineCursor(const LineCursor&) = delete;
    LineCursor& operator=(const LineCursor&) = delete;

    // Goes to the next line; false at the end of the text, where line() is empty.
    bool Next() {
        const char* start = next_;
        const auto* newline = start == end_
                                  ? nullptr
                                  : static_cast<const char*>(std::memchr(
                                        start, '\n', static_cast<std::size_t>(end_ - start)));
        if (newline == nullptr) {
            return NextBeyondBuffer();
        }
        SetLine(start, newline, newline + 1, true);
        return true;
    }

    // Goes to the next line that has something on it.
    bool NextNotBlank();

    // Goes back by one line; only once after each Next().
    void Back() {
        next_ = start_;
        --number_;
    }

    // Whether the line at hand is the last one.
    bool AtEnd();

    // The text from its first line on, as much of it as is at hand: 4096 bytes at least if it has
    // that many. To be asked before the first Next().
    std::string_view Head() const { return {next_, static_cast<std::size_t>(end_ - next_)}; }

    // About how many bytes the text has; 0 when nothing is known.
    std::uint64_t SizeHint() const { return sizeHint_; }

    std::string_view line() const { return line_; }
    std::size_t number() const { return number_; }  // of line(), from 1
    // The line has an end of line; without it the text may have been cut off within the line.
    bool terminated() const { return terminated_; }
    const std::string& file() const { return file_; }

    // Throws with this line as the one to blame.
    [[noreturn]] void Refuse(InputFault fault, std::string reason, std::string hint = {}) const {
        throw InputError(fault, file_, number_, std::move(reason), std::move(hint));
    }
    // A field that cannot be: the file was cut off if this is its last, unfinished line.
    [[noreturn]] void RefuseField(std::string reason, std::string hint = {}) const;

  private:
    void SetLine(const char* start, const char* stop, const char* next, bool terminated) {
        if (stop > start && stop[-1] == '\r') {
            --stop;
        }
        auto size = static_cast<std::size_t>(stop - start);
        size = size > kLongestLine ? kLongestLine : size;
        line_ = std::string_view(start, size);
        start_ = start;
        next_ = next;
        terminated_ = terminated;
        ++number_;
    }
    bool NextBeyondBuffer();
    bool Refill(const char* keep);
    void ReadOverRest();
    void SkipByteOrderMark();

    std::string file_;
    ByteSource* source_ = nullptr;  // null for a text in memory, and at the end of the source
    std::vector<char> buffer_;
    const char* next_ = nullptr;   // where the next line begins
    const char* end_ = nullptr;    // of what is at hand
    const char* start_ = nullptr;  // of the line at hand
    std::string_view line_;
    std::size_t number_ = 0;
    std::uint64_t sizeHint_ = 0;
    bool terminated_ = true;
};

}  // namespace vornel::io
