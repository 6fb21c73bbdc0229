#include "io/observation_codes.h"

#include <algorithm>

#include "io/text_fields.h"

namespace vornel::io {
namespace {

bool Has(std::span<const std::string> types, char letter, char band) {
    const std::string wanted{letter, band};
    return std::find(types.begin(), types.end(), wanted) != types.end();
}

// The tracking mode of the civil code of a band.
char CivilAttribute(GnssSystem system, char band) {
    switch (system) {
        case GnssSystem::kGps:
        case GnssSystem::kQzss:
        case GnssSystem::kSbas:
            return band == '1' ? 'C' : 'X';
        case GnssSystem::kGlonass:
            return band == '1' || band == '2' ? 'C' : 'X';
        case GnssSystem::kBeiDou:
            return 'I';
        case GnssSystem::kNavIc:
            return 'A';
        case GnssSystem::kGalileo:
            break;
    }
    return 'X';
}

char PreciseAttribute(GnssSystem system) {
    return system == GnssSystem::kGlonass ? 'P' : 'W';
}

// The mode of phase, Doppler and strength on a band, from the codes that the file has there.
char CarrierAttribute(GnssSystem system, char band, std::span<const std::string> types) {
    const bool hasPrecise = system == GnssSystem::kGps || system == GnssSystem::kGlonass;
    const bool civil = Has(types, 'C', band);
    const bool precise = Has(types, 'P', band);
    if (hasPrecise && band == '1' && precise && !civil) {
        return PreciseAttribute(system);
    }
    const bool preciseBand2 = precise || (!civil && system == GnssSystem::kGps);
    if (hasPrecise && band == '2' && preciseBand2) {
        return PreciseAttribute(system);
    }
    return CivilAttribute(system, band);
}

// The signals that RINEX 2.12 names by letters: L1 C/A, L1C, L2C, and the civil code of GLONASS G2.
std::optional<ObservationCode> CodeOfLetterBand(char type, char letter, GnssSystem system) {
    switch (letter) {
        case 'A':
            return ObservationCode{type, '1', 'C'};
        case 'B':
            return ObservationCode{type, '1', 'X'};
        case 'C':
            return ObservationCode{type, '2', 'X'};
        case 'D':
            return ObservationCode{type, '2', CivilAttribute(system, '2')};
        default:
            return std::nullopt;
    }
}

}  // namespace

std::optional<ObservationCode> CodeOfRinex2(std::string_view type, GnssSystem system,
                                            std::span<const std::string> fileTypes) {
    if (type.size() != 2 || std::string_view("CPLDS").find(type[0]) == std::string_view::npos) {
        return std::nullopt;
    }
    const char letter = type[0];
    char band = type[1];
    if (!IsDigit(band)) {
        return letter == 'P' ? std::nullopt : CodeOfLetterBand(letter, band, system);
    }
    if (std::string_view("125678").find(band) == std::string_view::npos) {
        return std::nullopt;
    }
    if (letter == 'P') {
        return ObservationCode{'C', band, PreciseAttribute(system)};
    }
    if (system == GnssSystem::kBeiDou && band == '1') {
        band = '2';
    }
    const char attribute =
        letter == 'C' ? CivilAttribute(system, band) : CarrierAttribute(system, band, fileTypes);
    return ObservationCode{letter, band, attribute};
}

std::optional<ObservationCode> CodeOfRinex3(std::string_view type, GnssSystem system,
                                            double version) {
    const bool shaped = type.size() == 3 && type[0] >= 'A' && type[0] <= 'Z' && IsDigit(type[1]) &&
                        type[2] >= 'A' && type[2] <= 'Z';
    if (!shaped) {
        return std::nullopt;
    }
    ObservationCode code{type[0], type[1], type[2]};
    if (system == GnssSystem::kBeiDou && code.band == '1') {
        const bool in302 = version > 3.015 && version < 3.025;
        const bool isB1I =
            code.attribute == 'I' || code.attribute == 'Q' || (in302 && code.attribute == 'X');
        code.band = isB1I ? '2' : code.band;
    }
    return code;
}

}  // namespace vornel::io
