// Satellites as the exchange formats name them: a letter and a number.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace vornel::io {

enum class GnssSystem : std::uint8_t { kGps, kGlonass, kGalileo, kBeiDou, kQzss, kNavIc, kSbas };

inline constexpr std::size_t kSystemCount = 7;
inline constexpr std::array<char, kSystemCount> kSystemLetters = {'G', 'R', 'E', 'C',
                                                                  'J', 'I', 'S'};

inline char SystemLetter(GnssSystem system) {
    return kSystemLetters[static_cast<std::size_t>(system)];
}

// "GPS", "GLONASS", "Galileo", "BeiDou", "QZSS", "NavIC", "SBAS".
const char* SystemName(GnssSystem system);

std::optional<GnssSystem> SystemOfLetter(char letter);

struct SatelliteId {
    GnssSystem system = GnssSystem::kGps;
    std::uint8_t number = 0;  // as the formats count within the system, 1 to 99

    friend bool operator==(const SatelliteId&, const SatelliteId&) = default;
    friend auto operator<=>(const SatelliteId&, const SatelliteId&) = default;
};

// "G05".
std::string ToString(SatelliteId satellite);

}  // namespace vornel::io
