#include "session/inputs.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <set>
#include <utility>

#include "io/file_bytes.h"
#include "io/observation_reader.h"
#include "session/fault.h"
#include "session/sha256.h"

namespace vornel::session {
namespace {

// One path for the several spellings of a file.
std::string CanonicalPath(const std::string& path) {
    std::error_code error;
    const auto canonical = std::filesystem::weakly_canonical(path, error);
    return error ? path : canonical.string();
}

std::string Upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

// Whether two marker names mean one station: equal, or one is the four-character name that the
// other (nine characters, with monument and country) begins with.
bool SameMarker(const std::string& one, const std::string& other) {
    const std::string a = Upper(one), b = Upper(other);
    constexpr std::size_t kShort = 4, kLong = 9;
    if (a.empty() || b.empty()) {
        return false;
    }
    return a == b || (a.size() == kShort && b.size() == kLong && b.compare(0, kShort, a) == 0) ||
           (b.size() == kShort && a.size() == kLong && a.compare(0, kShort, b) == 0);
}

bool IsObservation(io::FileKind kind) {
    return kind == io::FileKind::kObservation || kind == io::FileKind::kCompactObservation;
}

class Reader {
  public:
    Reader(const io::ObservationSelection& selection, io::UnpackingLimit& limit)
        : selection_(selection), limit_(limit) {}

    Inputs Read(const InputPaths& paths) {
        ReadStation(paths.base, FileRole::kBase, base_);
        for (const std::string& path : paths.rover) {
            if (seen_.contains(CanonicalPath(path))) {
                throw SessionFault(Fault::kWrongRole, path + ": given for base and rover",
                                   "give each station its own observation file");
            }
        }
        ReadStation(paths.rover, FileRole::kRover, rover_);
        for (const std::string& path : paths.others) {
            if (seen_.insert(CanonicalPath(path)).second) {
                ReadOther(path);
            }
        }
        AssignObservations();
        inputs_.base = io::JoinObservations(std::move(base_));
        inputs_.rover = io::JoinObservations(std::move(rover_));
        return std::move(inputs_);
    }

  private:
    void ReadStation(const std::vector<std::string>& paths, FileRole role,
                     std::vector<io::Observations>& parts) {
        for (const std::string& path : paths) {
            if (!seen_.insert(CanonicalPath(path)).second) {
                continue;
            }
            bool any = false;
            std::string otherKind;
            io::ReadMembers(path, limit_, [&](io::FileMember& file) {
                io::LineCursor text(file.bytes, file.name);
                const io::FileKind kind = io::RecogniseFile(text.Head(), file.name);
                if (IsObservation(kind)) {
                    any = true;
                    parts.push_back(io::ReadObservations(text, selection_));
                    Note(file, role, kind);
                } else {
                    otherKind = io::KindName(kind);
                    ReadShared(file, text, kind);
                }
            });
            if (!any) {
                throw SessionFault(
                    Fault::kWrongRole, path + ": this is a " + otherKind + ", not observations",
                    std::string("give the observations of the ") + RoleName(role) + " with --" +
                        RoleName(role) + ", and other files without an option");
            }
        }
    }

    void ReadOther(const std::string& path) {
        io::ReadMembers(path, limit_, [&](io::FileMember& file) {
            io::LineCursor text(file.bytes, file.name);
            const io::FileKind kind = io::RecogniseFile(text.Head(), file.name);
            if (IsObservation(kind)) {
                unassigned_.push_back(io::ReadObservations(text, selection_));
                Note(file, FileRole::kBase, kind);
                unassignedFiles_.push_back(inputs_.files.size() - 1);
            } else {
                ReadShared(file, text, kind);
            }
        });
    }

    void ReadShared(const io::FileMember& file, io::LineCursor& text, io::FileKind kind) {
        if (kind == io::FileKind::kNavigation) {
            inputs_.navigation.push_back(io::ReadNavigation(text));
            Note(file, FileRole::kNavigation, kind);
        } else if (kind == io::FileKind::kPreciseOrbit) {
            inputs_.orbits.push_back(io::ReadPreciseOrbits(text));
            Note(file, FileRole::kPreciseOrbit, kind);
        } else if (kind == io::FileKind::kStationCoordinates) {
            inputs_.coordinates.push_back(io::ReadStationCoordinates(text));
            Note(file, FileRole::kCoordinates, kind);
        } else {
            inputs_.antennas.push_back(io::ReadAntennas(text));
            Note(file, FileRole::kAntenna, kind);
        }
    }

    void Note(const io::FileMember& file, FileRole role, io::FileKind kind) {
        inputs_.files.push_back({file.path, file.name, role, kind, file.packing, file.packedSize,
                                 FileSha256(file.path)});
    }

    void AssignObservations() {
        for (std::size_t i = 0; i < unassigned_.size(); ++i) {
            const std::string marker = unassigned_[i].station().markerName;
            const bool ofBase = SameMarker(marker, base_.front().station().markerName);
            const bool ofRover = SameMarker(marker, rover_.front().station().markerName);
            if (ofBase == ofRover) {
                throw SessionFault(
                    Fault::kUnassignedObservations,
                    unassigned_[i].file + ": observations of " +
                        (marker.empty() ? "an unnamed station" : "station " + marker) +
                        (ofBase ? ", as base and rover are called both"
                                : ", which is neither the base nor the rover"),
                    "give it with --base or --rover, or leave it out");
            }
            inputs_.files[unassignedFiles_[i]].role = ofBase ? FileRole::kBase : FileRole::kRover;
            (ofBase ? base_ : rover_).push_back(std::move(unassigned_[i]));
        }
    }

    const io::ObservationSelection& selection_;
    io::UnpackingLimit& limit_;
    Inputs inputs_;
    std::vector<io::Observations> base_, rover_, unassigned_;
    std::vector<std::size_t> unassignedFiles_;  // indices in inputs_.files
    std::set<std::string> seen_;
};

}  // namespace

const char* RoleName(FileRole role) {
    switch (role) {
        case FileRole::kBase:
            return "base";
        case FileRole::kRover:
            return "rover";
        case FileRole::kNavigation:
            return "navigation";
        case FileRole::kPreciseOrbit:
            return "precise orbits";
        case FileRole::kAntenna:
            return "antennas";
        case FileRole::kCoordinates:
            return "station coordinates";
    }
    return "file";
}

std::vector<FileNote> NotesOfReaders(const Inputs& inputs) {
    std::vector<FileNote> all;
    const auto take = [&all](const std::string& file, const std::vector<io::InputNote>& notes) {
        for (const io::InputNote& note : notes) {
            all.push_back({file, note.line, note.text});
        }
    };
    take(inputs.base.file, inputs.base.notes);
    take(inputs.rover.file, inputs.rover.notes);
    for (const io::Navigation& file : inputs.navigation) {
        take(file.file, file.notes);
        take(file.file, file.dropped);
    }
    for (const io::PreciseOrbits& file : inputs.orbits) {
        take(file.file, file.notes);
    }
    for (const io::AntennaFile& file : inputs.antennas) {
        take(file.file, file.notes);
    }
    for (const io::StationCoordinates& file : inputs.coordinates) {
        take(file.file, file.notes);
    }
    return all;
}

Inputs ReadInputs(const InputPaths& paths, const io::ObservationSelection& selection,
                  std::uint64_t unpackLimit) {
    io::UnpackingLimit limit(unpackLimit);
    return Reader(selection, limit).Read(paths);
}

}  // namespace vornel::session
