// The files of a session, read and sorted by what they hold.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "io/antennas.h"
#include "io/file_bytes.h"
#include "io/file_kind.h"
#include "io/navigation.h"
#include "io/observations.h"
#include "io/precise_orbits.h"
#include "io/station_coordinates.h"

namespace vornel::session {

enum class FileRole { kBase, kRover, kNavigation, kPreciseOrbit, kAntenna, kCoordinates };

const char* RoleName(FileRole role);

// One file, or one member of an archive, that was read.
struct InputFile {
    std::string path;  // as given
    std::string name;  // with the member, for an archive
    FileRole role = FileRole::kBase;
    io::FileKind kind = io::FileKind::kObservation;
    std::string packing;     // "plain", "gzip", ...
    std::uint64_t size = 0;  // of the file on disk
    std::string sha256;      // of the file on disk
};

struct InputPaths {
    std::vector<std::string> base;
    std::vector<std::string> rover;
    std::vector<std::string> others;
};

struct Inputs {
    io::Observations base;
    io::Observations rover;
    std::vector<io::Navigation> navigation;
    std::vector<io::PreciseOrbits> orbits;
    std::vector<io::AntennaFile> antennas;
    std::vector<io::StationCoordinates> coordinates;
    std::vector<InputFile> files;
};

// What a reader said of a file that it read.
struct FileNote {
    std::string file;
    std::size_t line = 0;  // counts from 1; 0 when no line is meant
    std::string text;
};

// Of all files, in the order of their roles; records dropped as unreadable too.
std::vector<FileNote> NotesOfReaders(const Inputs& inputs);

// Reads everything. A file given for a station must hold observations. The other files are told by
// content; an observation file among them joins the station whose marker name it carries. A path
// given twice is read once. All files together may unpack to `unpackLimit` bytes. Throws
// io::InputError and SessionFault.
Inputs ReadInputs(const InputPaths& paths, const io::ObservationSelection& selection,
                  std::uint64_t unpackLimit = io::kUsualUnpackedBytes);

}  // namespace vornel::session
