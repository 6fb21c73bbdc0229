// The engine's numbering of satellites, against the letters and numbers of the exchange formats.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>

#include "io/satellite.h"

namespace vornel::session {

// The four systems of the engine, with its codes.
enum class EngineSystem : int { kGps = 1, kGlonass = 2, kBds = 4, kGalileo = 8 };

inline constexpr std::size_t kEngineSystemCount = 4;
inline constexpr std::array<EngineSystem, kEngineSystemCount> kEngineSystems = {
    EngineSystem::kGps, EngineSystem::kGlonass, EngineSystem::kBds, EngineSystem::kGalileo};

struct EngineSatellite {
    EngineSystem system = EngineSystem::kGps;
    int prn = 0;  // number in the system

    friend bool operator==(const EngineSatellite&, const EngineSatellite&) = default;
    friend auto operator<=>(const EngineSatellite&, const EngineSatellite&) = default;
};

// 0 to 3 in the order of kEngineSystems.
std::size_t IndexOf(EngineSystem system);

// "GPS", "GLONASS", "BeiDou", "Galileo".
const char* NameOf(EngineSystem system);

char LetterOf(EngineSystem system);

// Nothing for a system that the engine does not have.
std::optional<EngineSystem> EngineSystemOf(io::GnssSystem system);
io::GnssSystem FormatSystemOf(EngineSystem system);

// Nothing for a satellite that the engine's numbering has no place for (GPS above 35, GLONASS above
// 32, BeiDou above 36, Galileo above 32, other systems).
std::optional<EngineSatellite> ToEngine(io::SatelliteId satellite);

// The number across the systems, from 1.
inline constexpr int kHighestSatelliteNumber = 135;
int NumberAcrossSystems(EngineSatellite satellite);

// "G05".
std::string ToString(EngineSatellite satellite);

// From the engine's code and number; a code that is none of the four gives "?<number>".
std::string SatelliteName(int systemCode, int prn);

// "G05", "g5", "C12". Nothing when it is no satellite of the engine's.
std::optional<EngineSatellite> ParseSatellite(const std::string& text);

}  // namespace vornel::session
