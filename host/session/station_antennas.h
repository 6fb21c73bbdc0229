// Phase centre offsets of the two stations from an ANTEX file.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "io/antennas.h"
#include "io/observations.h"
#include "session/geodesy.h"

namespace vornel::session {

// What was found for one station.
struct AntennaChoice {
    std::string type;    // of the header
    std::string radome;  // of the header; "NONE" when it names none
    bool found = false;
    std::string usedRadome;  // of the calibration
    std::string serial;      // of the calibration; empty for a type mean
    std::string method;
    std::string file;
    bool relative = false;
    bool firstForBoth = false;  // no G02 in the calibration: G01 stands for both
    Vector3 offset1{};          // north, east, up, metres, from the reference point; GPS L1
    Vector3 offset2{};          // GPS L2
};

// Type, radome and serial number of the header, the radome NONE as the fallback, in the first file
// that has it. The GPS values are taken, as the engine has one pair of offsets for all systems.
AntennaChoice FindAntenna(const std::vector<io::AntennaFile>& files,
                          const io::StationHeader& station, const io::GpsTime& time);

}  // namespace vornel::session
