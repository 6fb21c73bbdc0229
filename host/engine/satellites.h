// The engine's numbering of satellites, against the letters and numbers of the exchange formats.
#pragma once

#include <VornelBlCore.h>

#include <array>
#include <cstddef>
#include <optional>
#include <string>

#include "io/satellite.h"

namespace vornel::engine {

// The four systems of the engine, with its codes.
enum class System : int {
    kGps = VORNEL_GPS,
    kGlonass = VORNEL_GLONASS,
    kBds = VORNEL_BDS,
    kGalileo = VORNEL_GALILEO
};

inline constexpr std::size_t kSystemCount = 4;
inline constexpr std::array<System, kSystemCount> kSystems = {System::kGps, System::kGlonass,
                                                              System::kBds, System::kGalileo};

struct Satellite {
    System system = System::kGps;
    int prn = 0;  // number in the system

    friend bool operator==(const Satellite&, const Satellite&) = default;
    friend auto operator<=>(const Satellite&, const Satellite&) = default;
};

// 0 to 3 in the order of kSystems.
std::size_t IndexOf(System system);

// "GPS", "GLONASS", "BeiDou", "Galileo".
const char* NameOf(System system);

char LetterOf(System system);

// Nothing for a system that the engine does not have.
std::optional<System> SystemOf(io::GnssSystem system);
io::GnssSystem FormatSystemOf(System system);

// Nothing for a satellite that the engine's numbering has no place for: one above the count of its
// system, or of another system.
std::optional<Satellite> ToEngine(io::SatelliteId satellite);

// The number for all systems, 1 to VORNEL_SATELLITES.
int NumberAcrossSystems(Satellite satellite);

// "G05".
std::string ToString(Satellite satellite);

// From the engine's code and number; a code that is none of the four gives "?<number>".
std::string SatelliteName(int systemCode, int prn);

// "G05", "g5", "C12". Nothing when it is no satellite of the engine's.
std::optional<Satellite> ParseSatellite(const std::string& text);

}  // namespace vornel::engine
