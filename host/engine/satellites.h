// The engine's numbering of satellites, against the letters and numbers of the exchange formats.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>

#include "io/satellite.h"

namespace vornel::engine {

// The four systems of the engine, with its codes.
enum class System : int { kGps = 1, kGlonass = 2, kBds = 4, kGalileo = 8 };

inline constexpr std::size_t kSystemCount = 4;
inline constexpr std::array<System, kSystemCount> kSystems = {System::kGps, System::kGlonass,
                                                              System::kBds, System::kGalileo};

struct Satellite {
    System system = System::kGps;
    int prn = 0;  // number in the system

    friend bool operator==(const Satellite&, const Satellite&) = default;
    friend auto operator<=>(const Satellite&, const Satellite&) = default;
};

// 0 to 3 in the order of kEngineSystems.
std::size_t IndexOf(System system);

// "GPS", "GLONASS", "BeiDou", "Galileo".
const char* NameOf(System system);

char LetterOf(System system);

// Nothing for a system that the engine does not have.
std::optional<System> SystemOf(io::GnssSystem system);
io::GnssSystem FormatSystemOf(System system);

// Nothing for a satellite that the engine's numbering has no place for (GPS above 35, GLONASS above
// 32, BeiDou above 36, Galileo above 32, other systems).
std::optional<Satellite> ToEngine(io::SatelliteId satellite);

// The number across the systems, from 1.
inline constexpr int kHighestSatelliteNumber = 135;
int NumberAcrossSystems(Satellite satellite);

// "G05".
std::string ToString(Satellite satellite);

// From the engine's code and number; a code that is none of the four gives "?<number>".
std::string SatelliteName(int systemCode, int prn);

// "G05", "g5", "C12". Nothing when it is no satellite of the engine's.
std::optional<Satellite> ParseSatellite(const std::string& text);

}  // namespace vornel::engine
