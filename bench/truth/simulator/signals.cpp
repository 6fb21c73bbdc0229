#include "signals.h"

#include <string_view>

namespace vornel::rough {

double FrequencyOf(const Tracking& signal, int glonassChannel) {
    using io::GnssSystem;
    if (signal.system == GnssSystem::kGlonass) {
        return signal.band == '1' ? 1602.0e6 + 562.5e3 * glonassChannel
                                  : 1246.0e6 + 437.5e3 * glonassChannel;
    }
    switch (signal.band) {
        case '1':
            return 1575.42e6;
        case '2':
            return signal.system == GnssSystem::kBeiDou ? 1561.098e6 : 1227.60e6;
        case '5':
            return 1176.45e6;
        case '6':
            return signal.system == GnssSystem::kBeiDou ? 1268.52e6 : 1278.75e6;
        case '7':
            return 1207.14e6;
        default:
            return 1191.795e6;
    }
}

bool Sends(const Satellite& satellite, const Tracking& signal) {
    using io::GnssSystem;
    if (satellite.id.system != signal.system) {
        return false;
    }
    switch (signal.system) {
        case GnssSystem::kGps: {
            const bool civilSecond =
                signal.band == '2' &&
                std::string_view("CSLX").find(signal.attribute) != std::string_view::npos;
            return satellite.modern || !(civilSecond || signal.band == '5');
        }
        case GnssSystem::kBeiDou: {
            const bool secondGeneration = signal.band == '7' && signal.attribute == 'I';
            const bool common = signal.band == '2' || signal.band == '6';
            return common || (secondGeneration ? !satellite.modern : satellite.modern);
        }
        default:
            return true;
    }
}

}  // namespace vornel::rough
