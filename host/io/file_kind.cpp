#include "io/file_kind.h"

#include <algorithm>

#include "io/input_error.h"
#include "io/line_cursor.h"
#include "io/text_fields.h"

namespace vornel::io {
namespace {

constexpr const char* kGiveKnown =
    "give RINEX observation or navigation, Compact RINEX, SP3, ANTEX or SINEX";

[[noreturn]] void RefuseKind(const std::string& name, std::size_t line, const std::string& reason,
                             const std::string& hint = kGiveKnown) {
    throw InputError(InputFault::kWrongKind, name, line, reason, hint);
}

// Version lines of RINEX tell the kind by the letter in column 21; GLONASS, Galileo, ... navigation
// of RINEX 2 have letters of their own.
FileKind KindOfRinex(std::string_view line, const std::string& name) {
    const std::string_view type = Field(line, 20, 20);
    switch (type.empty() ? ' ' : type.front()) {
        case 'O':
        case 'o':
            return FileKind::kObservation;
        case 'N':
        case 'n':
        case 'G':
        case 'E':
        case 'L':
        case 'H':
        case 'B':
        case 'J':
            return FileKind::kNavigation;
        case 'M':
            RefuseKind(name, 1, "it is a RINEX meteorological file");
        case 'C':
            RefuseKind(name, 1, "it is a RINEX clock file",
                       "satellite clocks are taken from SP3 files");
        case 'S':
            RefuseKind(name, 1, "it is a RINEX summary file");
        default:
            RefuseKind(name, 1, "it is a RINEX file of an unknown type " + Quote(Trim(type)));
    }
}

bool LooksBinary(std::string_view bytes) {
    const std::string_view head = bytes.substr(0, 512);
    const auto odd = std::count_if(head.begin(), head.end(), [](char c) {
        const auto code = static_cast<unsigned char>(c);
        return code < 32 && c != '\n' && c != '\r' && c != '\t';
    });
    return odd * 20 > static_cast<std::ptrdiff_t>(head.size());
}

// The first line with something on it, when the first of all has nothing.
bool StartsWithBlankLines(std::string_view head, const std::string& name) {
    LineCursor cursor(head, name);
    while (cursor.Next()) {
        if (!Trim(cursor.line()).empty()) {
            return cursor.number() > 1 && HeaderLabel(cursor.line()) == "RINEX VERSION / TYPE";
        }
    }
    return false;
}

}  // namespace

const char* KindName(FileKind kind) {
    switch (kind) {
        case FileKind::kObservation:
            return "RINEX observation file";
        case FileKind::kCompactObservation:
            return "Compact RINEX observation file";
        case FileKind::kNavigation:
            return "RINEX navigation file";
        case FileKind::kPreciseOrbit:
            return "SP3 orbit file";
        case FileKind::kAntenna:
            return "ANTEX antenna file";
        case FileKind::kStationCoordinates:
            return "SINEX station coordinates";
    }
    return "unknown file";
}

FileKind RecogniseFile(std::string_view bytes, const std::string& name) {
    if (bytes.empty()) {
        throw InputError(InputFault::kEmpty, name, 0, "the file is empty",
                         "fetch or export the file again");
    }
    LineCursor cursor(bytes, name);
    if (!cursor.Next()) {
        RefuseKind(name, 1, "there is nothing in it");
    }
    const std::string_view line = cursor.line();
    const std::string_view label = HeaderLabel(line);
    if (label == "RINEX VERSION / TYPE") {
        return KindOfRinex(line, name);
    }
    if (label == "CRINEX VERS   / TYPE") {
        return FileKind::kCompactObservation;
    }
    if (label == "ANTEX VERSION / SYST") {
        return FileKind::kAntenna;
    }
    if (line.substr(0, 5) == "%=SNX") {
        return FileKind::kStationCoordinates;
    }
    if (line.substr(0, 2) == "%=") {
        RefuseKind(name, 1, "it is a file of the SINEX family without coordinates of stations");
    }
    if (line.size() >= 3 && line[0] == '#' &&
        (line[2] == 'P' || line[2] == 'V' || line[2] == ' ')) {
        return FileKind::kPreciseOrbit;
    }
    if (StartsWithBlankLines(bytes, name)) {
        RefuseKind(name, 1, "the first line is blank, not the RINEX VERSION / TYPE line",
                   "remove the blank lines at the top");
    }
    if (LooksBinary(bytes)) {
        RefuseKind(name, 0, "it is a binary file",
                   "convert receiver formats to RINEX first; packed files may be .gz, .Z, .bz2, "
                   ".xz, .zst, .zip or .tar");
    }
    const std::string_view text = Trim(line);
    if (!text.empty() && text.front() == '<') {
        RefuseKind(name, 1, "it looks like a web page",
                   "the download may have failed; look into it");
    }
    RefuseKind(name, 1, "the first line is of no format that is read: " + Quote(text));
}

}  // namespace vornel::io
