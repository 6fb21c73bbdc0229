// What is exported: stations and the vectors between them, and where they come from. Every writer
// takes this record alone.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "io/gnss_time.h"
#include "session/geodesy.h"

namespace vornel::exports {

using session::Vector3;
using Matrix3 = std::array<double, 9>;  // row by row

enum class SigmaKind {
    kFormal,     // as the least squares of the observations gave them
    kCalibrated  // scaled to the errors that such solutions have
};

struct InputFile {
    std::string name;
    std::string sha256;  // 64 hexadecimal digits
};

struct Software {
    std::string name;
    std::string version;
    std::string url;  // empty where there is none
};

// Empty texts are unknown.
struct StationEquipment {
    std::string receiver;
    std::string receiverSerial;
    std::string firmware;
    std::string antenna;  // with the radome in columns 17 to 20, as in the files of the IGS
    std::string antennaSerial;
    double antennaHeight = 0.0;  // m, of the reference point above the mark
};

struct ExportStation {
    std::string name;    // UTF-8, as it is known; writers fit it to their formats and say so
    Vector3 position{};  // m, ECEF, of the mark, at ExportSet::epoch
    bool isHeld = false;
    StationEquipment equipment;
};

struct ExportVector {
    std::string id;
    std::string session;
    std::size_t from = 0;  // base, index into ExportSet::stations
    std::size_t to = 0;    // rover
    Vector3 vector{};      // m, ECEF, rover minus base, mark to mark
    Matrix3 covariance{};  // m^2, ECEF; vectors are exported as independent of each other
    io::GpsTime start;     // of its observations
    io::GpsTime end;
    bool isUsed = true;  // false: left out of the adjustment
    std::string kind;    // of solution: "fixed", "float", ...
    std::string grade;
    std::optional<double> ratio;         // of the integer search
    double sigmaScale = 1.0;             // from formal standard deviations to those of `covariance`
    std::optional<Vector3> residualNeu;  // m, observed - adjusted, at the base
    std::optional<double> statistic;     // of the adjustment's test of the whole vector
    std::size_t loops = 0;               // closed with it
    std::size_t badLoops = 0;            // of these
    int epochs = 0;                      // 0 where unknown
    std::optional<double> elevationMask;  // degrees
    std::optional<double> rms;            // m, of the observations' residuals
    // Indices into ExportSet::inputs of the files it was made from; empty: of all of them.
    std::vector<std::size_t> inputs;
};

// What holds the positions.
enum class Constraint {
    kTight,        // a station, or several, without error
    kSignificant,  // known positions by their covariances
    kLoose         // nothing
};

struct ExportSet {
    std::string title;
    std::string agency;  // empty where unknown, as the next two
    std::string observer;
    std::string email;
    Software software;  // that solved the vectors and writes the file
    io::CalendarTime createdUtc;
    std::string frame;        // of vectors and positions, e.g. "ITRF2014": that of the orbits
    io::GpsTime epoch;        // of the positions
    std::string orbitType;    // "broadcast", "precise"
    std::string orbitSource;  // e.g. the file's name
    SigmaKind sigmaKind = SigmaKind::kFormal;
    std::string sigmaNote;  // one line: by what they were scaled, what was added
    std::vector<InputFile> inputs;
    std::vector<ExportStation> stations;
    std::vector<ExportVector> vectors;
    Constraint constraint = Constraint::kTight;
    // Covariances (m^2, ECEF) of the positions: block (i, j) of stations i and j stands at
    // i * stations + j. Empty where they are not known. Zero for stations held without error.
    std::vector<Matrix3> positionCovariance;
    // For GVX: the frame's datum number in the ISO Geodetic Registry, which no name tells for sure.
    std::optional<int> referenceSystem;
};

// A set that a format cannot hold, or whose parts do not fit together. One line.
class ExportError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Throws ExportError where an index leads nowhere, a number is not finite, a variance not positive, a
// position not on the earth, or two stations have one name.
void CheckSet(const ExportSet& set);

std::vector<std::string> StationNames(const ExportSet& set);

// The sentences that every export carries, each a line: frame, epoch, meaning of vectors and standard
// deviations, software, inputs with their hashes.
std::vector<std::string> Provenance(const ExportSet& set);

const char* SigmaKindName(SigmaKind kind);  // "formal", "calibrated"

}  // namespace vornel::exports
