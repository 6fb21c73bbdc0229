// Sets to export, and what reads the files again.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <string>

#include "exports/writers.h"
#include "project_folder.h"

namespace vornel::test {

using exports::ExportSet;
using exports::ExportStation;
using exports::ExportVector;
using session::Vector3;

// From latitude, longitude (degrees) and height by the closed formula of the ellipsoid of WGS 84.
inline Vector3 FromGeodetic(double latitude, double longitude, double height) {
    const double a = 6378137.0, f = 1.0 / 298.257223563, e2 = f * (2.0 - f);
    const double phi = latitude * M_PI / 180.0, lambda = longitude * M_PI / 180.0;
    const double n = a / std::sqrt(1.0 - e2 * std::sin(phi) * std::sin(phi));
    return {(n + height) * std::cos(phi) * std::cos(lambda),
            (n + height) * std::cos(phi) * std::sin(lambda),
            (n * (1.0 - e2) + height) * std::sin(phi)};
}

// A covariance of millimetres with large correlations.
inline exports::Matrix3 SampleCovariance(std::mt19937& random) {
    std::uniform_real_distribution<double> entry(-1.0, 1.0);
    exports::Matrix3 root{}, m{};
    for (double& value : root) {
        value = 0.003 * entry(random);
    }
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            for (std::size_t k = 0; k < 3; ++k) {
                m[3 * i + j] += root[3 * i + k] * root[3 * j + k];
            }
            m[3 * i + j] += i == j ? 1e-8 : 0.0;
        }
    }
    return m;
}

// Four stations on three continents and one at the edge of the map, six vectors, of which one is not
// used; the first station is held.
inline ExportSet SampleSet() {
    std::mt19937 random(7);
    ExportSet set;
    set.title = "Harbour & quay <2020>";
    set.agency = "Survey Office";
    set.observer = "N. N.";
    set.software = {"vornel", "0.1.0", ""};
    set.createdUtc = {2020, 7, 1, 12, 30, 5.0};
    set.frame = "ITRF2014";
    set.epoch = *io::FromCalendar({2020, 6, 25, 0, 29, 45.0});
    set.orbitType = "precise";
    set.orbitSource = "COD0MGXFIN_20201770000_01D_05M_ORB.SP3";
    set.sigmaKind = exports::SigmaKind::kCalibrated;
    set.sigmaNote = "formal standard deviations times 2.5, centring 1 mm";
    set.inputs = {{"WTZR1770.20o", std::string(64, 'a')}, {"WTZZ1770.20o", std::string(64, 'b')}};
    set.referenceSystem = 153;
    const auto station = [&](const char* name, const Vector3& position) {
        ExportStation entry;
        entry.name = name;
        entry.position = position;
        entry.equipment = {"JAVAD TRE_3 DELTA",    "00810",    "3.7.9",
                           "LEIAR25.R3      LEIT", "09300021", 0.0710};
        set.stations.push_back(entry);
    };
    station("WTZR", FromGeodetic(49.144, 12.879, 666.0319));
    station("TOW2", FromGeodetic(-19.2693, 147.0557, 88.2261));
    station("SUVA", FromGeodetic(-18.1489, 178.4256, 81.1234));
    station("SAMO", FromGeodetic(-13.8493, -171.7384, 76.8765));
    set.stations[0].isHeld = true;
    const std::size_t pairs[][2] = {{0, 1}, {1, 2}, {3, 2}, {2, 0}, {3, 0}, {1, 3}};
    for (const auto& [from, to] : pairs) {
        ExportVector vector;
        vector.id = "session1:" + std::to_string(set.vectors.size());
        vector.session = "2020-177";
        vector.from = from;
        vector.to = to;
        vector.vector = session::Minus(set.stations[to].position, set.stations[from].position);
        for (double& value : vector.vector) {
            value += 1e-4 * std::uniform_real_distribution<double>(-50.0, 50.0)(random);
        }
        vector.covariance = SampleCovariance(random);
        vector.start = *io::FromCalendar({2020, 6, 25, 0, 0, 0.0});
        vector.end = *io::FromCalendar({2020, 6, 25, 0, 59, 30.0});
        vector.kind = "fixed";
        vector.grade = "A";
        vector.ratio = 7.6;
        vector.sigmaScale = 2.5;
        vector.residualNeu = Vector3{0.001, -0.002, 0.0035};
        vector.statistic = 3.25;
        vector.loops = 2;
        vector.epochs = 120;
        vector.elevationMask = 10.0;
        vector.rms = 0.0048;
        set.vectors.push_back(vector);
    }
    set.vectors[4].isUsed = false;
    set.vectors[4].badLoops = 2;
    set.vectors[4].kind = "float";
    set.vectors[1].inputs = {1};
    // Positions: the first without error, the others correlated with each other.
    const std::size_t count = set.stations.size();
    set.positionCovariance.assign(count * count, {});
    const exports::Matrix3 common = SampleCovariance(random);
    for (std::size_t i = 1; i < count; ++i) {
        for (std::size_t j = 1; j < count; ++j) {
            set.positionCovariance[i * count + j] = common;
        }
        const exports::Matrix3 own = SampleCovariance(random);
        for (std::size_t k = 0; k < 9; ++k) {
            set.positionCovariance[i * count + i][k] += own[k];
        }
    }
    return set;
}

// A folder that goes when the test ends.
class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "vornel-XXXXXX").string();
        folder_ = ::mkdtemp(name.data());
    }
    ~TemporaryFolder() { std::filesystem::remove_all(folder_); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string Write(const std::string& name, const std::string& bytes) const {
        const std::string path = (folder_ / name).string();
        std::ofstream(path, std::ios::binary) << bytes;
        return path;
    }

  private:
    std::filesystem::path folder_;
};

struct CommandAnswer {
    int code = 0;
    std::string out;  // both streams
};

inline CommandAnswer RunShell(const std::string& command) {
    CommandAnswer answer;
    std::FILE* pipe = ::popen((command + " 2>&1").c_str(), "r");
    std::array<char, 4096> buffer{};
    std::size_t count = 0;
    while ((count = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0) {
        answer.out.append(buffer.data(), count);
    }
    const int status = ::pclose(pipe);
    answer.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return answer;
}

inline bool IsInstalled(const std::string& command) {
    return RunShell("command -v " + command).code == 0;
}

// What the reader of a format, which knows nothing of the writers, finds in a file.
inline nlohmann::json ReadBack(const std::string& format, const std::string& bytes) {
    const TemporaryFolder folder;
    const CommandAnswer answer =
        RunShell("python3 -B " + (ProjectFolder() / "tests/host/exports/read_exports.py").string() +
                 " " + format + " " + folder.Write("file", bytes));
    if (answer.code != 0) {
        throw std::runtime_error(answer.out);
    }
    return nlohmann::json::parse(answer.out);
}

}  // namespace vornel::test
