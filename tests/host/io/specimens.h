// Specimens of tests/data/formats, and what the tests of the readers ask of them.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "io/file_bytes.h"
#include "io/observations.h"

namespace vornel::io {

// The path of a specimen, which may be kept packed by gzip under its name and ".gz".
inline std::string SpecimenPath(const std::string& name) {
    const std::string plain = std::string(VORNEL_TEST_DATA) + "/formats/" + name;
    return std::filesystem::exists(plain) ? plain : plain + ".gz";
}

inline FileBytes ReadSpecimen(const std::string& name) {
    return ReadFile(SpecimenPath(name)).front();
}

// The observation of a satellite by its code; NaN when the epoch has none.
inline double ValueOf(const Observations& data, std::size_t epoch, SatelliteId satellite,
                      const std::string& code) {
    for (const SatelliteRow& row : data.SatellitesOf(data.epochs.at(epoch))) {
        for (std::size_t i = 0; row.satellite == satellite && i < data.SignalsOf(row).size(); ++i) {
            if (ToString(data.SignalsOf(row)[i].code) == code) {
                return data.Value(row, i);
            }
        }
    }
    return std::nan("");
}

// The loss of lock indicator and signal strength, as two digits; -1 without such a column.
inline int FlagsOf(const Observations& data, std::size_t epoch, SatelliteId satellite,
                   const std::string& code) {
    for (const SatelliteRow& row : data.SatellitesOf(data.epochs.at(epoch))) {
        for (std::size_t i = 0; row.satellite == satellite && i < data.SignalsOf(row).size(); ++i) {
            if (ToString(data.SignalsOf(row)[i].code) == code) {
                return 10 * data.LossOfLock(row, i) + data.SignalStrength(row, i);
            }
        }
    }
    return -1;
}

inline std::size_t CountValues(const Observations& data) {
    std::size_t count = 0;
    for (const double value : data.values) {
        count += std::isnan(value) ? 0 : 1;
    }
    return count;
}

inline SatelliteId Gps(int n) {
    return {GnssSystem::kGps, static_cast<std::uint8_t>(n)};
}
inline SatelliteId Glonass(int n) {
    return {GnssSystem::kGlonass, static_cast<std::uint8_t>(n)};
}
inline SatelliteId Galileo(int n) {
    return {GnssSystem::kGalileo, static_cast<std::uint8_t>(n)};
}
inline SatelliteId BeiDou(int n) {
    return {GnssSystem::kBeiDou, static_cast<std::uint8_t>(n)};
}

}  // namespace vornel::io
