#include "exports/export_set.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "exports/text.h"

namespace vornel::exports {
namespace {

template <typename Numbers>
bool AreFinite(const Numbers& numbers) {
    return std::all_of(numbers.begin(), numbers.end(), [](double v) { return std::isfinite(v); });
}

// Positive definite, by its three leading minors.
bool IsCovariance(const Matrix3& m) {
    const double minor = m[0] * m[4] - m[1] * m[3];
    const double determinant = m[0] * (m[4] * m[8] - m[5] * m[7]) -
                               m[1] * (m[3] * m[8] - m[5] * m[6]) +
                               m[2] * (m[3] * m[7] - m[4] * m[6]);
    return m[0] > 0.0 && minor > 0.0 && determinant > 0.0;
}

void CheckStations(const ExportSet& set) {
    std::set<std::string> names;
    for (const ExportStation& station : set.stations) {
        const std::string name = CleanText(station.name);
        if (!names.insert(station.name).second) {
            throw ExportError("two stations are called " + name);
        }
        constexpr double kSmallestRadius = 6.0e6, kLargestRadius = 5.0e7;  // m
        const double radius = session::Length(station.position);
        if (!AreFinite(station.position) || radius < kSmallestRadius || radius > kLargestRadius) {
            throw ExportError("station " + name + " has no position on the earth");
        }
        if (!std::isfinite(station.equipment.antennaHeight)) {
            throw ExportError("the antenna height of station " + name + " is not finite");
        }
    }
}

void CheckVector(const ExportSet& set, const ExportVector& vector) {
    const std::string name = "vector " + CleanText(vector.id);
    if (vector.from >= set.stations.size() || vector.to >= set.stations.size() ||
        vector.from == vector.to) {
        throw ExportError(name + " does not join two stations of the set");
    }
    if (!AreFinite(vector.vector) || !AreFinite(vector.covariance)) {
        throw ExportError(name + " or its covariance is not finite");
    }
    if (!IsCovariance(vector.covariance)) {
        throw ExportError("the covariance of " + name + " is not positive definite");
    }
    if (!io::IsInCalendar(vector.start) || !io::IsInCalendar(vector.end) ||
        vector.end < vector.start) {
        throw ExportError(name + " has no time of observation");
    }
    const auto isBad = [](const std::optional<double>& v) { return v && !std::isfinite(*v); };
    if (isBad(vector.ratio) || isBad(vector.statistic) || isBad(vector.rms) ||
        isBad(vector.elevationMask) || !std::isfinite(vector.sigmaScale) ||
        (vector.residualNeu && !AreFinite(*vector.residualNeu))) {
        throw ExportError("a quality figure of " + name + " is not finite");
    }
    for (const std::size_t input : vector.inputs) {
        if (input >= set.inputs.size()) {
            throw ExportError(name + " names an input that is not in the set");
        }
    }
}

}  // namespace

void CheckSet(const ExportSet& set) {
    CheckStations(set);
    std::set<std::string> ids;
    for (const ExportVector& vector : set.vectors) {
        CheckVector(set, vector);
        if (!ids.insert(vector.id).second) {
            throw ExportError("two vectors have the id " + CleanText(vector.id));
        }
    }
    if (!io::IsInCalendar(set.epoch)) {
        throw ExportError("the positions have no epoch");
    }
    if (!io::FromCalendar(set.createdUtc)) {
        throw ExportError("the set has no time of creation");
    }
    const std::size_t count = set.stations.size();
    if (!set.positionCovariance.empty() && set.positionCovariance.size() != count * count) {
        throw ExportError("the positions' covariance is not that of " + std::to_string(count) +
                          " stations");
    }
    if (!std::all_of(set.positionCovariance.begin(), set.positionCovariance.end(),
                     [](const Matrix3& block) { return AreFinite(block); })) {
        throw ExportError("the positions' covariance is not finite");
    }
}

std::vector<std::string> StationNames(const ExportSet& set) {
    std::vector<std::string> names;
    for (const ExportStation& station : set.stations) {
        names.push_back(station.name);
    }
    return names;
}

std::vector<std::string> Provenance(const ExportSet& set) {
    std::vector<std::string> lines;
    const auto add = [&](const std::string& line) { lines.push_back(CleanText(line)); };
    if (!set.title.empty()) {
        add(set.title);
    }
    add("Written by " + set.software.name + " " + set.software.version + ", " +
        IsoTime(set.createdUtc) + " UTC");
    add("Frame " + set.frame + ", that of the orbits; positions at " + IsoTime(set.epoch, 0, ' ') +
        " GPS time (" + Fixed(DecimalYear(set.epoch), 4) + ")");
    add("Vectors lead from base to rover, mark to mark, earth-centred, earth-fixed, each at the "
        "epoch of its own session");
    add("Covariances are " + std::string(SigmaKindName(set.sigmaKind)) +
        (set.sigmaNote.empty() ? "" : ": " + set.sigmaNote) +
        "; vectors count as independent of each other");
    for (const InputFile& input : set.inputs) {
        add("Input " + input.name + " sha256 " + input.sha256);
    }
    return lines;
}

const char* SigmaKindName(SigmaKind kind) {
    return kind == SigmaKind::kFormal ? "formal" : "calibrated";
}

}  // namespace vornel::exports
