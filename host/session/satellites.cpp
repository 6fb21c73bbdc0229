#include "session/satellites.h"

#include <cctype>
#include <cstdio>

namespace vornel::session {
namespace {

struct SystemEntry {
    const char* name;
    char letter;
    io::GnssSystem format;
    int highest;  // number in the system
    int offset;   // of the number across the systems
};

constexpr std::array<SystemEntry, kEngineSystemCount> kEntries = {{
    {"GPS", 'G', io::GnssSystem::kGps, 35, 0},
    {"GLONASS", 'R', io::GnssSystem::kGlonass, 32, 35},
    {"BeiDou", 'C', io::GnssSystem::kBeiDou, 36, 67},
    {"Galileo", 'E', io::GnssSystem::kGalileo, 32, 103},
}};

const SystemEntry& EntryOf(EngineSystem system) {
    return kEntries[IndexOf(system)];
}

std::string Named(char letter, int prn) {
    char text[16];
    std::snprintf(text, sizeof text, "%c%02d", letter, prn);
    return text;
}

}  // namespace

std::size_t IndexOf(EngineSystem system) {
    switch (system) {
        case EngineSystem::kGps:
            return 0;
        case EngineSystem::kGlonass:
            return 1;
        case EngineSystem::kBds:
            return 2;
        case EngineSystem::kGalileo:
            return 3;
    }
    return 0;
}

const char* NameOf(EngineSystem system) {
    return EntryOf(system).name;
}

char LetterOf(EngineSystem system) {
    return EntryOf(system).letter;
}

std::optional<EngineSystem> EngineSystemOf(io::GnssSystem system) {
    for (const EngineSystem candidate : kEngineSystems) {
        if (EntryOf(candidate).format == system) {
            return candidate;
        }
    }
    return std::nullopt;
}

io::GnssSystem FormatSystemOf(EngineSystem system) {
    return EntryOf(system).format;
}

std::optional<EngineSatellite> ToEngine(io::SatelliteId satellite) {
    const auto system = EngineSystemOf(satellite.system);
    if (!system || satellite.number < 1 || satellite.number > EntryOf(*system).highest) {
        return std::nullopt;
    }
    return EngineSatellite{*system, satellite.number};
}

int NumberAcrossSystems(EngineSatellite satellite) {
    return satellite.prn + EntryOf(satellite.system).offset;
}

std::string ToString(EngineSatellite satellite) {
    return Named(LetterOf(satellite.system), satellite.prn);
}

std::string SatelliteName(int systemCode, int prn) {
    for (const EngineSystem system : kEngineSystems) {
        if (static_cast<int>(system) == systemCode) {
            return Named(LetterOf(system), prn);
        }
    }
    return Named('?', prn);
}

std::optional<EngineSatellite> ParseSatellite(const std::string& text) {
    if (text.size() < 2 || text.size() > 3) {
        return std::nullopt;
    }
    int number = 0;
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (std::isdigit(static_cast<unsigned char>(text[i])) == 0) {
            return std::nullopt;
        }
        number = 10 * number + (text[i] - '0');
    }
    const char letter = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
    for (const EngineSystem system : kEngineSystems) {
        if (LetterOf(system) == letter && number >= 1 && number <= EntryOf(system).highest) {
            return EngineSatellite{system, number};
        }
    }
    return std::nullopt;
}

}  // namespace vornel::session
