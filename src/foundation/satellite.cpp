// The numbering of satellites, and the carriers that depend on a channel or a band.
#include "foundation/satellite.h"

namespace vornel {

namespace {

struct Carrier {
    double frequency;   // Hz
    double wavelength;  // m
};

// Galileo OS SIS ICD, table 2: E1, E5a, E5b, E5, E6. E1 and E5b share the carriers of GPS L1 and
// BDS B2.
Carrier CarrierOfBand(int band) {
    switch (band) {
        case VORNEL_GALILEO_E1:
            return {kGpsL1Frequency, kGpsL1Wavelength};
        case VORNEL_GALILEO_E5A:
            return {1176450000.0, 0.25482804879085386};
        case VORNEL_GALILEO_E5B:
            return {kBdsB2Frequency, kBdsB2Wavelength};
        case VORNEL_GALILEO_E5:
            return {1191795000.0, 0.251547000952345};
        case VORNEL_GALILEO_E6:
            return {1278750000.0, 0.23444180488758554};
        default:
            return {15754200000.0, 0.0};
    }
}

}  // namespace

int MakeSatNumber(int system, int id) {
    for (const SatelliteBlock& block : kSatelliteBlocks) {
        if (block.system == system && id >= 1 && id <= block.count) {
            return id + block.offset;
        }
    }
    return 0;
}

// GLONASS ICD 5.1, 3.3.1.1.
double GlonassL1Frequency(int channel) {
    return channel * 562500.0 + 1602000000.0;
}

double GlonassL2Frequency(int channel) {
    return channel * 437500.0 + 1246000000.0;
}

double GlonassL1Wavelength(int channel) {
    return kSpeedOfLight / GlonassL1Frequency(channel);
}

double GlonassL2Wavelength(int channel) {
    return kSpeedOfLight / GlonassL2Frequency(channel);
}

double BandFrequency(int band) {
    return CarrierOfBand(band).frequency;
}

double BandWavelength(int band) {
    return CarrierOfBand(band).wavelength;
}

}  // namespace vornel
