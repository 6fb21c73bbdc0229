#include "io/line_cursor.h"

#include <algorithm>
#include <utility>

namespace vornel::io {
namespace {

constexpr std::size_t kPortion = std::size_t{1} << 17;  // read at once
constexpr std::size_t kHead = 4096;                     // read before the first line is asked for
constexpr char kControlZ = '\x1a';

}  // namespace

LineCursor::LineCursor(std::string_view text, std::string file)
    : file_(std::move(file)),
      next_(text.data()),
      end_(text.data() + text.size()),
      start_(next_),
      sizeHint_(text.size()) {
    SkipByteOrderMark();
}

LineCursor::LineCursor(ByteSource& source, std::string file)
    : file_(std::move(file)),
      source_(&source),
      buffer_(kPortion + 2 * kLongestLine),
      next_(buffer_.data()),
      end_(next_),
      start_(next_),
      sizeHint_(source.SizeHint()) {
    while (Head().size() < kHead && Refill(next_)) {
    }
    SkipByteOrderMark();
}

void LineCursor::SkipByteOrderMark() {
    constexpr std::string_view kMark = "\xef\xbb\xbf";
    if (Head().substr(0, kMark.size()) == kMark) {
        next_ += kMark.size();
        start_ = next_;
    }
}

// Reads the next portion behind what is kept, which moves to the front of the buffer. False when
// the source has no more.
bool LineCursor::Refill(const char* keep) {
    if (source_ == nullptr) {
        return false;
    }
    const auto offset = keep - buffer_.data();
    const auto kept = static_cast<std::size_t>(end_ - keep);
    if (offset > 0) {
        std::memmove(buffer_.data(), keep, kept);
        const auto moved = [offset](const char* place) { return place - offset; };
        if (start_ >= keep) {
            start_ = moved(start_);
            line_ = std::string_view(start_, line_.size());
        }
        next_ = moved(next_);
        end_ = moved(end_);
    }
    const std::size_t count = source_->Read(buffer_.data() + kept,
                                            std::min<std::size_t>(kPortion, buffer_.size() - kept));
    end_ += count;
    if (count == 0) {
        source_ = nullptr;
    }
    return count > 0;
}

// The next line when its end is not at hand.
bool LineCursor::NextBeyondBuffer() {
    std::size_t searched = 0;
    for (;;) {
        const auto size = static_cast<std::size_t>(end_ - next_);
        const void* newline =
            size > searched ? std::memchr(next_ + searched, '\n', size - searched) : nullptr;
        if (newline != nullptr) {
            const auto* stop = static_cast<const char*>(newline);
            SetLine(next_, stop, stop + 1, true);
            return true;
        }
        if (source_ != nullptr && size > kLongestLine) {
            ReadOverRest();
            searched = 0;
            continue;
        }
        searched = size;
        if (!Refill(next_)) {
            break;
        }
    }
    const char* stop = end_;
    while (stop != next_ && stop[-1] == kControlZ) {
        --stop;
    }
    if (stop == next_) {
        next_ = end_;
        line_ = {};
        return false;
    }
    SetLine(next_, stop, end_, false);
    return true;
}

// Reads over the rest of a line that is too long. What is at hand then ends it, and holds what
// follows it.
void LineCursor::ReadOverRest() {
    std::memmove(buffer_.data(), next_, kLongestLine);
    next_ = buffer_.data();
    char* const cut = buffer_.data() + kLongestLine;
    for (;;) {
        const std::size_t count = source_->Read(cut, kPortion);
        if (count == 0) {
            source_ = nullptr;
            end_ = cut;
            return;
        }
        auto* newline = static_cast<char*>(std::memchr(cut, '\n', count));
        if (newline != nullptr) {
            const auto rest = static_cast<std::size_t>(cut + count - newline);
            std::memmove(cut, newline, rest);
            end_ = cut + rest;
            return;
        }
    }
}

bool LineCursor::NextNotBlank() {
    while (Next()) {
        if (line_.find_first_not_of(" \t") != std::string_view::npos) {
            return true;
        }
    }
    return false;
}

bool LineCursor::AtEnd() {
    for (;;) {
        const std::string_view rest = Head();
        const bool controlZ = rest.find_first_not_of(kControlZ) == std::string_view::npos;
        if (!controlZ) {
            return false;
        }
        if (rest.size() > kLongestLine || !Refill(std::min(start_, next_))) {
            return source_ == nullptr;
        }
    }
}

void LineCursor::RefuseField(std::string reason, std::string hint) const {
    if (!terminated_) {
        Refuse(InputFault::kTruncated, "the file ends within a record: " + reason,
               "fetch or export the file again");
    }
    if (hint.empty() && line_.find('\t') != std::string_view::npos) {
        hint = "the line has a tab, but the columns of the format are fixed";
    }
    Refuse(InputFault::kMalformed, std::move(reason), std::move(hint));
}

}  // namespace vornel::io
