// Phase centre offsets of ANTEX files, versions 1.3 and 1.4, in metres.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "io/gnss_time.h"
#include "io/input_error.h"
#include "io/line_cursor.h"

namespace vornel::io {

// Mean phase centre against the antenna reference point, per frequency: "G01", "G02", "R01", ...
struct PhaseCentreOffset {
    std::string frequency;
    double north = 0.0;  // m; for satellites X, Y and Z of the body in these three
    double east = 0.0;   // m
    double up = 0.0;     // m
};

struct AntennaCalibration {
    std::string type;    // without the radome
    std::string radome;  // four letters, "NONE" when there is none; empty for satellites
    std::string serial;  // receivers: serial number, empty for a type mean; satellites: "G05"
    bool satellite = false;
    std::optional<GpsTime> validFrom;   // GPS time
    std::optional<GpsTime> validUntil;  // GPS time
    std::string method;                 // how it was calibrated, e.g. "ROBOT"
    std::vector<PhaseCentreOffset> offsets;
    std::uint32_t line = 0;
};

struct AntennaFile {
    std::string file;
    double version = 0.0;
    bool relative = false;  // phase centres relative to a reference antenna; else absolute
    std::string referenceAntenna;
    std::vector<AntennaCalibration> antennas;  // in the order of the file
    std::vector<InputNote> notes;
};

AntennaFile ReadAntennas(LineCursor& text);

// The same of a text in memory.
inline AntennaFile ReadAntennas(std::string_view bytes, const std::string& name) {
    LineCursor text(bytes, name);
    return ReadAntennas(text);
}

// The offset of a frequency, or nothing.
const PhaseCentreOffset* FindOffset(const AntennaCalibration& antenna, std::string_view frequency);

// The calibration of a receiver antenna at a time: that of the serial number if the file has it,
// else the type mean. An empty radome is taken as "NONE". Nothing when type and radome are not
// there; a fallback to another radome is the caller's decision.
const AntennaCalibration* FindReceiverAntenna(const AntennaFile& file, std::string_view type,
                                              std::string_view radome, std::string_view serial,
                                              const GpsTime& time);

}  // namespace vornel::io
