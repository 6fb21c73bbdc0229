#include "session/station_antennas.h"

#include <cmath>

namespace vornel::session {
namespace {

Vector3 Neu(const io::PhaseCentreOffset& offset) {
    return {offset.north, offset.east, offset.up};
}

bool IsFinite(const io::PhaseCentreOffset& offset) {
    return std::isfinite(offset.north) && std::isfinite(offset.east) && std::isfinite(offset.up);
}

bool Take(AntennaChoice& choice, const io::AntennaFile& file, const std::string& radome,
          const io::StationHeader& station, const io::GpsTime& time) {
    const io::AntennaCalibration* antenna =
        io::FindReceiverAntenna(file, station.antennaType, radome, station.antennaSerial, time);
    const io::PhaseCentreOffset* first =
        antenna == nullptr ? nullptr : io::FindOffset(*antenna, "G01");
    if (first == nullptr || !IsFinite(*first)) {
        return false;
    }
    const io::PhaseCentreOffset* second = io::FindOffset(*antenna, "G02");
    if (second != nullptr && !IsFinite(*second)) {
        return false;
    }
    choice.found = true;
    choice.usedRadome = antenna->radome;
    choice.serial = antenna->serial;
    choice.method = antenna->method;
    choice.file = file.file;
    choice.relative = file.relative;
    choice.firstForBoth = second == nullptr;
    choice.offset1 = Neu(*first);
    choice.offset2 = Neu(second == nullptr ? *first : *second);
    return true;
}

}  // namespace

AntennaChoice FindAntenna(const std::vector<io::AntennaFile>& files,
                          const io::StationHeader& station, const io::GpsTime& time) {
    AntennaChoice choice;
    choice.type = station.antennaType;
    choice.radome = station.antennaRadome.empty() ? "NONE" : station.antennaRadome;
    if (choice.type.empty()) {
        return choice;
    }
    for (const std::string& radome : {choice.radome, std::string("NONE")}) {
        for (const io::AntennaFile& file : files) {
            if (Take(choice, file, radome, station, time)) {
                return choice;
            }
        }
    }
    return choice;
}

}  // namespace vornel::session
