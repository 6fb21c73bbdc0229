// Satellite numbers across the four systems, carrier frequencies and what is derived from them.
#pragma once

#include "VornelBlCore.h"

namespace vornel {

inline constexpr int kSatelliteCount = VORNEL_SATELLITES;  // from 1; arrays use number - 1
inline constexpr int kGlonassSlotCount = VORNEL_GLONASS_COUNT;

// System codes.
inline constexpr int kGps = VORNEL_GPS;
inline constexpr int kGlonass = VORNEL_GLONASS;
inline constexpr int kBds = VORNEL_BDS;
inline constexpr int kGalileo = VORNEL_GALILEO;

// The numbers of each system, in order and without a hole.
struct SatelliteBlock {
    int system;
    int count;   // ids run from 1 to count
    int offset;  // from id to number
};
inline constexpr SatelliteBlock kSatelliteBlocks[] = {
    {kGps, VORNEL_GPS_COUNT, VORNEL_GPS_OFFSET},
    {kGlonass, VORNEL_GLONASS_COUNT, VORNEL_GLONASS_OFFSET},
    {kBds, VORNEL_BDS_COUNT, VORNEL_BDS_OFFSET},
    {kGalileo, VORNEL_GALILEO_COUNT, VORNEL_GALILEO_OFFSET},
};
static_assert(
    kSatelliteBlocks[1].offset == kSatelliteBlocks[0].offset + kSatelliteBlocks[0].count &&
    kSatelliteBlocks[2].offset == kSatelliteBlocks[1].offset + kSatelliteBlocks[1].count &&
    kSatelliteBlocks[3].offset == kSatelliteBlocks[2].offset + kSatelliteBlocks[2].count &&
    kSatelliteCount == kSatelliteBlocks[3].offset + kSatelliteBlocks[3].count);

inline constexpr double kSpeedOfLight = 299792458.0;  // m/s

// Carrier frequencies (Hz) and wavelengths (m); IS-GPS-200, BDS-SIS-ICD, Galileo OS SIS ICD.
inline constexpr double kGpsL1Frequency = 1575420000.0;
inline constexpr double kGpsL2Frequency = 1227600000.0;
inline constexpr double kBdsB1Frequency = 1561098000.0;
inline constexpr double kBdsB2Frequency = 1207140000.0;
inline constexpr double kGpsL1Wavelength = 0.19029367279836487;
inline constexpr double kGpsL2Wavelength = 0.24421021342456825;
inline constexpr double kBdsB1Wavelength = 0.19203948631027648;
inline constexpr double kBdsB2Wavelength = 0.2483493695843067;

// Ionospheric delay goes with 1/f^2; every model value is for GPS L1.
inline constexpr double kGpsL1FrequencySquared = 2.4819481764e+18;  // Hz^2
inline constexpr double kGpsL2IonoScale = 1.6469444444444445;       // (L1/L2)^2
inline constexpr double kBdsB1IonoScale = 1.0184327918525378;       // (L1/B1)^2
inline constexpr double kBdsB2IonoScale = 1.7032461936225223;       // (L1/B2)^2

// f1/(f1+f2), narrow-lane factor of the ionosphere-free ambiguity.
inline constexpr double kGpsNarrowLaneFactor = 0.5620437956204379;
inline constexpr double kBdsNarrowLaneFactor = 0.5639320029563932;
// f1^2/(f1^2-f2^2) and -f1 f2/(f1^2-f2^2), coefficients of the ionosphere-free phase in cycles.
inline constexpr double kGpsIonoFreeA = 2.54572778016316;
inline constexpr double kBdsIonoFreeA = 2.4871683136169254;
inline constexpr double kGpsIonoFreeB = -1.983683984542722;
inline constexpr double kBdsIonoFreeB = -1.9232363106605321;

// Number across the systems of satellite `id` of `system`; 0 when there is none.
int MakeSatNumber(int system, int id);
// System code of a number, 0 when it is not from 1 to 135; *id, if given, gets the number in the
// system (the number as handed in when it is out of range).
inline int SplitSatNumber(int number, int* id = nullptr) {
    const bool inRange = number >= 1 && number <= kSatelliteCount;
    const SatelliteBlock* block = nullptr;
    if (inRange) {
        block = kSatelliteBlocks;
        while (number > block->offset + block->count) {
            ++block;
        }
    }
    if (id != nullptr) {
        *id = inRange ? number - block->offset : number;
    }
    return inRange ? block->system : 0;
}

// GLONASS carriers by frequency channel: Hz, m.
double GlonassL1Frequency(int channel);
double GlonassL2Frequency(int channel);
double GlonassL1Wavelength(int channel);
double GlonassL2Wavelength(int channel);

// Galileo carriers by band (VornelGalileoSignal). Any other band has ten times the
// frequency of E1 and wavelength 0.
double BandFrequency(int band);
double BandWavelength(int band);

}  // namespace vornel
