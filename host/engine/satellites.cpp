#include "engine/satellites.h"

#include <cctype>
#include <cstdio>

namespace vornel::engine {
namespace {

struct SystemEntry {
    const char* name;
    char letter;
    io::GnssSystem format;
    int highest;  // number in the system
    int offset;   // of the number for all systems
};

constexpr std::array<SystemEntry, kSystemCount> kEntries = {{
    {"GPS", 'G', io::GnssSystem::kGps, VORNEL_GPS_COUNT, VORNEL_GPS_OFFSET},
    {"GLONASS", 'R', io::GnssSystem::kGlonass, VORNEL_GLONASS_COUNT, VORNEL_GLONASS_OFFSET},
    {"BeiDou", 'C', io::GnssSystem::kBeiDou, VORNEL_BDS_COUNT, VORNEL_BDS_OFFSET},
    {"Galileo", 'E', io::GnssSystem::kGalileo, VORNEL_GALILEO_COUNT, VORNEL_GALILEO_OFFSET},
}};

const SystemEntry& EntryOf(System system) {
    return kEntries[IndexOf(system)];
}

std::string Named(char letter, int prn) {
    char text[16];
    std::snprintf(text, sizeof text, "%c%02d", letter, prn);
    return text;
}

}  // namespace

std::size_t IndexOf(System system) {
    switch (system) {
        case System::kGps:
            return 0;
        case System::kGlonass:
            return 1;
        case System::kBds:
            return 2;
        case System::kGalileo:
            return 3;
    }
    return 0;
}

const char* NameOf(System system) {
    return EntryOf(system).name;
}

char LetterOf(System system) {
    return EntryOf(system).letter;
}

std::optional<System> SystemOf(io::GnssSystem system) {
    for (const System candidate : kSystems) {
        if (EntryOf(candidate).format == system) {
            return candidate;
        }
    }
    return std::nullopt;
}

io::GnssSystem FormatSystemOf(System system) {
    return EntryOf(system).format;
}

std::optional<Satellite> ToEngine(io::SatelliteId satellite) {
    const auto system = SystemOf(satellite.system);
    if (!system || satellite.number < 1 || satellite.number > EntryOf(*system).highest) {
        return std::nullopt;
    }
    return Satellite{*system, satellite.number};
}

int NumberAcrossSystems(Satellite satellite) {
    return satellite.prn + EntryOf(satellite.system).offset;
}

std::string ToString(Satellite satellite) {
    return Named(LetterOf(satellite.system), satellite.prn);
}

std::string SatelliteName(int systemCode, int prn) {
    for (const System system : kSystems) {
        if (static_cast<int>(system) == systemCode) {
            return Named(LetterOf(system), prn);
        }
    }
    return Named('?', prn);
}

std::optional<Satellite> ParseSatellite(const std::string& text) {
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
    for (const System system : kSystems) {
        if (LetterOf(system) == letter && number >= 1 && number <= EntryOf(system).highest) {
            return Satellite{system, number};
        }
    }
    return std::nullopt;
}

}  // namespace vornel::engine
