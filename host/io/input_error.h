// What a reader says about bytes it cannot use: the file, the line, the reason, and what to do.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace vornel::io {

// The kinds of bad input. A host maps each to an exit code of its own.
enum class InputFault : std::uint8_t {
    kMissingFile,         // no such file
    kUnreadable,          // it exists but cannot be opened or read (rights, a directory, a device)
    kEmpty,               // no bytes, also after unpacking
    kTruncated,           // the bytes end in the middle of something
    kWrongKind,           // readable, but not of a kind that is known or was asked for
    kUnsupportedVersion,  // a known format in a version that is not read
    kMalformed,           // a header line or data record that the format does not allow
    kDamagedPacking,      // a compressed file that does not unpack
    kTooLarge             // beyond a documented limit of the readers
};

// A short name of the fault for people and for machine-readable output, e.g. "truncated file".
const char* FaultName(InputFault fault);

// Thrown by every reader; no reader throws anything else for bad bytes.
class InputError : public std::runtime_error {
  public:
    // `line` counts from 1; 0 when no line is to blame. `hint` tells what to do and may be empty.
    InputError(InputFault fault, std::string file, std::size_t line, std::string reason,
               std::string hint = {});

    InputFault fault() const { return fault_; }
    const std::string& file() const { return file_; }
    std::size_t line() const { return line_; }
    const std::string& reason() const { return reason_; }
    const std::string& hint() const { return hint_; }

  private:
    InputFault fault_;
    std::string file_;
    std::size_t line_;
    std::string reason_;
    std::string hint_;
};

// Thrown when the bytes themselves cannot be had: a damaged or cut packing, a disk that fails, more
// bytes than a run may unpack. No reader can go on behind it.
class SourceError : public InputError {
  public:
    using InputError::InputError;
};

// Something a reader accepted or left out that the user should know of.
struct InputNote {
    std::size_t line = 0;  // counts from 1; 0 when no line is meant
    std::string text;
};

// Readers keep at most this many notes of a file, so that a damaged one cannot fill the memory.
inline constexpr std::size_t kMaximumNotes = 1000;

}  // namespace vornel::io
