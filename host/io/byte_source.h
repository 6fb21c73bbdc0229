// Where the bytes of a text come from, one portion after the other: a file, a packed file, memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace vornel::io {

enum class SeekFrom { kStart, kCurrent, kEnd };

class ByteSource {
  public:
    ByteSource() = default;
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;
    virtual ~ByteSource() = default;

    // The next bytes, at most `room` of them; 0 only at the end, and then always. Throws
    // SourceError.
    virtual std::size_t Read(char* to, std::size_t room) = 0;

    // Goes to another place and answers it; nothing when the source runs in one direction only.
    virtual std::optional<std::int64_t> Seek(std::int64_t /*offset*/, SeekFrom /*from*/) {
        return std::nullopt;
    }

    // About how many bytes there will be; 0 when nothing is known.
    virtual std::uint64_t SizeHint() const { return 0; }
};

}  // namespace vornel::io
