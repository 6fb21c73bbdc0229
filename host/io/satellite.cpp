#include "io/satellite.h"

namespace vornel::io {

const char* SystemName(GnssSystem system) {
    static constexpr std::array<const char*, kSystemCount> kNames = {
        "GPS", "GLONASS", "Galileo", "BeiDou", "QZSS", "NavIC", "SBAS"};
    return kNames[static_cast<std::size_t>(system)];
}

std::optional<GnssSystem> SystemOfLetter(char letter) {
    for (std::size_t i = 0; i < kSystemCount; ++i) {
        if (kSystemLetters[i] == letter) {
            return static_cast<GnssSystem>(i);
        }
    }
    return std::nullopt;
}

std::string ToString(SatelliteId satellite) {
    std::string text(1, SystemLetter(satellite.system));
    if (satellite.number < 10) {
        text += '0';
    }
    return text + std::to_string(satellite.number);
}

}  // namespace vornel::io
