// The one model of observations of the host: whatever format a file has, its reader fills this.
// Values lie in one array, in the order of the file, so that a day of 1 s data stays small and is
// walked without a look-up. Times are receiver time tags in GPS time; code in metres, phase in
// cycles, Doppler in Hz, signal strength in the unit of the receiver (commonly dB-Hz).
#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "io/gnss_time.h"
#include "io/input_error.h"
#include "io/satellite.h"

namespace vornel::io {

// An observation code of RINEX 3: C1C, L2W, ... The types of RINEX 2 are mapped to these
// (observation_codes.h tells how).
struct ObservationCode {
    char type = ' ';       // C code, L phase, D Doppler, S strength, others as they come
    char band = ' ';       // '1' to '9'
    char attribute = ' ';  // the tracking mode

    friend bool operator==(const ObservationCode&, const ObservationCode&) = default;
};

std::string ToString(ObservationCode code);

// One column of a system's observations.
struct Signal {
    ObservationCode code;
    std::string fileName;  // as the file calls it: "P2" or "C2W"
};

// The columns that are kept, per system; indexed by GnssSystem.
using SignalTable = std::array<std::vector<Signal>, kSystemCount>;

// What the header tells about the station. Text is trimmed; empty when not given.
struct StationHeader {
    std::string markerName;
    std::string markerNumber;
    std::string markerType;
    std::string observer;
    std::string agency;
    std::string receiverSerial;
    std::string receiverType;
    std::string receiverVersion;
    std::string antennaSerial;
    std::string antennaType;    // without the radome, e.g. "LEIAR25.R3"
    std::string antennaRadome;  // e.g. "LEIT", "NONE"; empty when the header has none
    // Approximate marker position, earth-centred earth-fixed, metres. Empty when the header has
    // none or only zeros.
    std::optional<std::array<double, 3>> approximatePosition;
    double antennaHeight = 0.0;                // antenna reference point above the marker, metres
    double antennaEast = 0.0;                  // reference point east of the marker, metres
    double antennaNorth = 0.0;                 // and north, metres
    std::optional<double> interval;            // seconds; empty when not given or not positive
    std::optional<GpsTime> firstEpoch;         // GPS time
    std::optional<GpsTime> lastEpoch;          // GPS time
    TimeSystem timeSystem = TimeSystem::kGps;  // of the file; the model is in GPS time
    std::optional<int> leapSeconds;            // GPS minus UTC
    bool clockOffsetApplied = false;           // tags, code and phase are corrected by the offset
    std::vector<std::pair<int, int>> glonassChannels;  // slot, channel
    std::string programName;
    std::string runBy;
    std::string fileDate;

    friend bool operator==(const StationHeader&, const StationHeader&) = default;
};

struct ObservationEpoch {
    GpsTime time;                      // receiver time tag, GPS time, the fraction as in the file
    double receiverClockOffset = 0.0;  // seconds; NaN when not given
    std::uint32_t firstSatellite = 0;  // in Observations::satellites
    std::uint32_t satelliteCount = 0;
    std::uint32_t line = 0;     // of the epoch record in the (unpacked) file
    std::uint16_t station = 0;  // in Observations::stations
    bool powerFailure = false;  // between the epoch before and this one
    bool moving = false;        // the antenna is on its way (after event 2, until event 3)
};

struct SatelliteRow {
    SatelliteId satellite;
    std::uint16_t signalTable = 0;  // in Observations::signalTables
    std::uint32_t firstValue = 0;   // in values, lossOfLock and signalStrength
};

// Loss of lock indicator, bits of RINEX 3: a slip is possible; the phase may be off by half a
// cycle; tracked under anti-spoofing (RINEX 2) or BOC mode.
inline constexpr std::uint8_t kLossOfLock = 1;
inline constexpr std::uint8_t kHalfCycle = 2;

struct Observations {
    std::string file;                     // for messages
    double version = 0.0;                 // e.g. 2.11
    bool compact = false;                 // came as Compact RINEX
    std::vector<StationHeader> stations;  // at least one; more when events change the header
    std::vector<SignalTable> signalTables;
    std::vector<ObservationEpoch> epochs;  // in the order of the file
    std::vector<SatelliteRow> satellites;
    std::vector<double> values;                // NaN where absent (blank or 0.0 in the file)
    std::vector<std::uint8_t> lossOfLock;      // 0 to 7, 0 when blank
    std::vector<std::uint8_t> signalStrength;  // 1 to 9, 0 when blank
    std::size_t slipRecords = 0;               // epochs of repaired slips, read and left aside
    std::size_t externalEvents = 0;
    std::vector<InputNote> notes;

    // Frees the satellites of the epochs and their values; the epochs stay, with none.
    void ForgetSatellites();

    const StationHeader& station() const { return stations.front(); }

    std::span<const SatelliteRow> SatellitesOf(const ObservationEpoch& epoch) const {
        return std::span(satellites).subspan(epoch.firstSatellite, epoch.satelliteCount);
    }
    // The columns of a row; the i-th stands at row.firstValue + i.
    const std::vector<Signal>& SignalsOf(const SatelliteRow& row) const {
        return signalTables[row.signalTable][static_cast<std::size_t>(row.satellite.system)];
    }
    double Value(const SatelliteRow& row, std::size_t column) const {
        return values[row.firstValue + column];
    }
    std::uint8_t LossOfLock(const SatelliteRow& row, std::size_t column) const {
        return lossOfLock[row.firstValue + column];
    }
    std::uint8_t SignalStrength(const SatelliteRow& row, std::size_t column) const {
        return signalStrength[row.firstValue + column];
    }
};

// What of a file is kept; memory is proportional to it.
struct ObservationSelection {
    std::optional<GpsTime> start;  // epochs from here, inclusive, GPS time
    std::optional<GpsTime> end;    // to here, inclusive
    double interval = 0.0;  // seconds; keeps epochs whose tag rounded to 0.1 s is a multiple; 0 all
    std::array<bool, kSystemCount> systems = {true, true, true, true, true, true, true};
    std::string types = "CLDS";  // first letters of the codes that are kept
    bool strict = false;         // damage refuses the file; else it is left out and told
};

// Joins files of one station into one, in the order of their first epochs; an epoch that repeats
// the time of an earlier one (overlapping files) is left out and counted in the notes.
Observations JoinObservations(std::vector<Observations> parts);

}  // namespace vornel::io
