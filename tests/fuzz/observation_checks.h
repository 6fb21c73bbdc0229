// What holds for every set of observations that a reader hands on, whatever the file was.
#pragma once

#include <cmath>

#include "io/observations.h"
#include "require.h"

namespace vornel::fuzz {

inline bool IsTime(const io::GpsTime& time) {
    constexpr int kMostWeek = 6260;  // 2099
    return time.week >= 0 && time.week <= kMostWeek && time.seconds >= 0.0 &&
           time.seconds < io::kSecondsPerWeek;
}

// Every index leads somewhere, every value is a number or marked as absent, every time lies within
// the calendar of the formats.
inline void CheckObservations(const io::Observations& observations) {
    FUZZ_REQUIRE(!observations.stations.empty());
    FUZZ_REQUIRE(observations.lossOfLock.size() == observations.values.size());
    FUZZ_REQUIRE(observations.signalStrength.size() == observations.values.size());
    FUZZ_REQUIRE(observations.notes.size() <= io::kMaximumNotes);
    for (const io::ObservationEpoch& epoch : observations.epochs) {
        FUZZ_REQUIRE(IsTime(epoch.time));
        FUZZ_REQUIRE(epoch.station < observations.stations.size());
        FUZZ_REQUIRE(std::size_t{epoch.firstSatellite} + epoch.satelliteCount <=
                     observations.satellites.size());
    }
    for (const io::SatelliteRow& row : observations.satellites) {
        FUZZ_REQUIRE(row.satellite.number >= 1 && row.satellite.number <= 99);
        FUZZ_REQUIRE(row.signalTable < observations.signalTables.size());
        FUZZ_REQUIRE(std::size_t{row.firstValue} + observations.SignalsOf(row).size() <=
                     observations.values.size());
    }
    for (const double value : observations.values) {
        FUZZ_REQUIRE(!std::isinf(value));
    }
    for (const std::uint8_t loss : observations.lossOfLock) {
        FUZZ_REQUIRE(loss <= 7);
    }
}

}  // namespace vornel::fuzz
