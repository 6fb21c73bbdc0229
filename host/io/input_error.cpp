#include "io/input_error.h"

#include <utility>

namespace vornel::io {
namespace {

std::string Compose(const std::string& file, std::size_t line, const std::string& reason,
                    const std::string& hint) {
    std::string text = file;
    if (line > 0) {
        text += ':' + std::to_string(line);
    }
    text += ": " + reason;
    if (!hint.empty()) {
        text += " (" + hint + ')';
    }
    return text;
}

}  // namespace

const char* FaultName(InputFault fault) {
    switch (fault) {
        case InputFault::kMissingFile:
            return "missing file";
        case InputFault::kUnreadable:
            return "unreadable file";
        case InputFault::kEmpty:
            return "empty file";
        case InputFault::kTruncated:
            return "truncated file";
        case InputFault::kWrongKind:
            return "wrong kind of file";
        case InputFault::kUnsupportedVersion:
            return "unsupported version";
        case InputFault::kMalformed:
            return "malformed file";
        case InputFault::kDamagedPacking:
            return "damaged packing";
        case InputFault::kTooLarge:
            return "file too large";
    }
    return "bad input";
}

InputError::InputError(InputFault fault, std::string file, std::size_t line, std::string reason,
                       std::string hint)
    : std::runtime_error(Compose(file, line, reason, hint)),
      fault_(fault),
      file_(std::move(file)),
      line_(line),
      reason_(std::move(reason)),
      hint_(std::move(hint)) {}

}  // namespace vornel::io
