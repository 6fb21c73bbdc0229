// Satellite numbers, carriers and the constants derived from them.
#include "foundation/satellite.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <iterator>

namespace {

using namespace vornel;

struct Block {
    int system;
    int count;
    int offset;
};

// The four systems: code, satellites, what is added to the number in the system.
constexpr Block kBlocks[] = {{1, 35, 0}, {2, 32, 35}, {4, 36, 67}, {8, 32, 103}};

TEST(Satellite, SystemCodesAreBits) {
    EXPECT_EQ(kGps, 1);
    EXPECT_EQ(kGlonass, 2);
    EXPECT_EQ(kBds, 4);
    EXPECT_EQ(kGalileo, 8);
    EXPECT_EQ(kSatelliteCount, 135);
    EXPECT_EQ(kGlonassSlotCount, 32);
}

TEST(Satellite, TheTableOfBlocksIsComplete) {
    std::size_t i = 0;
    for (const SatelliteBlock& block : kSatelliteBlocks) {
        ASSERT_LT(i, std::size(kBlocks));
        EXPECT_EQ(block.system, kBlocks[i].system);
        EXPECT_EQ(block.count, kBlocks[i].count);
        EXPECT_EQ(block.offset, kBlocks[i].offset);
        ++i;
    }
    EXPECT_EQ(i, std::size(kBlocks));
}

TEST(Satellite, NumbersRunThroughTheSystems) {
    EXPECT_EQ(MakeSatNumber(1, 1), 1);
    EXPECT_EQ(MakeSatNumber(1, 35), 35);
    EXPECT_EQ(MakeSatNumber(2, 1), 36);
    EXPECT_EQ(MakeSatNumber(2, 32), 67);
    EXPECT_EQ(MakeSatNumber(4, 1), 68);
    EXPECT_EQ(MakeSatNumber(4, 36), 103);
    EXPECT_EQ(MakeSatNumber(8, 1), 104);
    EXPECT_EQ(MakeSatNumber(8, 32), 135);
}

TEST(Satellite, EverySystemHasItsOwnLimit) {
    EXPECT_EQ(MakeSatNumber(1, 36), 0);
    EXPECT_EQ(MakeSatNumber(2, 33), 0);  // GPS allows 33, GLONASS does not
    EXPECT_EQ(MakeSatNumber(4, 37), 0);
    EXPECT_EQ(MakeSatNumber(8, 33), 0);
}

TEST(Satellite, WhatIsNoSatelliteHasNumberZero) {
    for (const int system : {1, 2, 4, 8}) {
        for (const int id : {0, -1, INT_MIN, 100, INT_MAX}) {
            EXPECT_EQ(MakeSatNumber(system, id), 0) << system << "/" << id;
        }
    }
    for (const int system : {INT_MIN, -1, 0, 3, 5, 6, 7, 9, 16, INT_MAX}) {
        EXPECT_EQ(MakeSatNumber(system, 1), 0) << system;
    }
}

TEST(Satellite, EveryNumberSplitsIntoWhatItWasMadeOf) {
    int number = 0;
    for (const Block& block : kBlocks) {
        for (int id = 1; id <= block.count; ++id) {
            ++number;
            EXPECT_EQ(MakeSatNumber(block.system, id), number);
            EXPECT_EQ(number, id + block.offset);
            int splitId = -1;
            EXPECT_EQ(SplitSatNumber(number, &splitId), block.system) << number;
            EXPECT_EQ(splitId, id) << number;
            EXPECT_EQ(SplitSatNumber(number), block.system) << number;
        }
    }
    EXPECT_EQ(number, kSatelliteCount);
}

TEST(Satellite, SplitsAtTheEdgesOfTheBlocks) {
    int id = -1;
    EXPECT_EQ(SplitSatNumber(67, &id), 2);
    EXPECT_EQ(id, 32);
    EXPECT_EQ(SplitSatNumber(68, &id), 4);
    EXPECT_EQ(id, 1);
    EXPECT_EQ(SplitSatNumber(136), 0);
}

TEST(Satellite, ANumberOutOfRangeComesBackAsItsOwnId) {
    for (const int number : {0, -1, INT_MIN, 136, 1000, INT_MAX}) {
        int id = 77;
        EXPECT_EQ(SplitSatNumber(number, &id), 0) << number;
        EXPECT_EQ(id, number);
        EXPECT_EQ(SplitSatNumber(number), 0) << number;
    }
}

// Published carriers: IS-GPS-200 (154 and 120 times 10.23 MHz), BDS-SIS-ICD (B1I 1561.098 MHz, B2I
// 1207.14 MHz), Galileo OS SIS ICD (E1 1575.42, E5a 1176.45, E5b 1207.14, E5 1191.795, E6 1278.75
// MHz).
TEST(Carriers, AreThePublishedOnes) {
    EXPECT_EQ(kSpeedOfLight, 299792458.0);
    EXPECT_EQ(kGpsL1Frequency, 154.0 * 10230000.0);
    EXPECT_EQ(kGpsL2Frequency, 120.0 * 10230000.0);
    EXPECT_EQ(kBdsB1Frequency, 1561098000.0);
    EXPECT_EQ(kBdsB2Frequency, 1207140000.0);
}

TEST(Carriers, WavelengthsAreLightSpeedByFrequency) {
    EXPECT_DOUBLE_EQ(kGpsL1Wavelength, 299792458.0 / 1575420000.0);
    EXPECT_DOUBLE_EQ(kGpsL2Wavelength, 299792458.0 / 1227600000.0);
    EXPECT_DOUBLE_EQ(kBdsB1Wavelength, 299792458.0 / 1561098000.0);
    EXPECT_DOUBLE_EQ(kBdsB2Wavelength, 299792458.0 / 1207140000.0);
}

TEST(Carriers, DerivedConstantsFollowFromTheFrequencies) {
    const long double l1 = 1575420000.0L;
    const long double l2 = 1227600000.0L;
    const long double b1 = 1561098000.0L;
    const long double b2 = 1207140000.0L;
    const auto as = [](long double value) { return static_cast<double>(value); };
    EXPECT_DOUBLE_EQ(kGpsL1FrequencySquared, as(l1 * l1));
    EXPECT_DOUBLE_EQ(kGpsL2IonoScale, as((l1 / l2) * (l1 / l2)));
    EXPECT_DOUBLE_EQ(kBdsB1IonoScale, as((l1 / b1) * (l1 / b1)));
    EXPECT_DOUBLE_EQ(kBdsB2IonoScale, as((l1 / b2) * (l1 / b2)));
    EXPECT_DOUBLE_EQ(kGpsNarrowLaneFactor, as(l1 / (l1 + l2)));
    EXPECT_DOUBLE_EQ(kBdsNarrowLaneFactor, as(b1 / (b1 + b2)));
    EXPECT_DOUBLE_EQ(kGpsIonoFreeA, as(l1 * l1 / (l1 * l1 - l2 * l2)));
    EXPECT_DOUBLE_EQ(kBdsIonoFreeA, as(b1 * b1 / (b1 * b1 - b2 * b2)));
    EXPECT_DOUBLE_EQ(kGpsIonoFreeB, as(-l1 * l2 / (l1 * l1 - l2 * l2)));
    EXPECT_DOUBLE_EQ(kBdsIonoFreeB, as(-b1 * b2 / (b1 * b1 - b2 * b2)));
}

// GLONASS ICD, table of carriers: channel 0 at 1602.0 and 1246.0 MHz, steps of 562.5 and 437.5 kHz.
TEST(Carriers, GlonassFollowsItsChannel) {
    EXPECT_EQ(GlonassL1Frequency(0), 1602000000.0);
    EXPECT_EQ(GlonassL2Frequency(0), 1246000000.0);
    EXPECT_EQ(GlonassL1Frequency(-7), 1598062500.0);
    EXPECT_EQ(GlonassL2Frequency(-7), 1242937500.0);
    EXPECT_EQ(GlonassL1Frequency(6), 1605375000.0);
    EXPECT_EQ(GlonassL2Frequency(6), 1248625000.0);
    EXPECT_EQ(GlonassL1Frequency(13), 1609312500.0);
    for (int channel = -7; channel <= 13; ++channel) {
        EXPECT_EQ(GlonassL1Wavelength(channel), 299792458.0 / GlonassL1Frequency(channel));
        EXPECT_EQ(GlonassL2Wavelength(channel), 299792458.0 / GlonassL2Frequency(channel));
        EXPECT_NEAR(GlonassL1Frequency(channel) / GlonassL2Frequency(channel), 9.0 / 7.0, 1e-15);
    }
}

TEST(Carriers, GalileoBands) {
    EXPECT_EQ(BandFrequency(1), 1575420000.0);
    EXPECT_EQ(BandFrequency(2), 1176450000.0);
    EXPECT_EQ(BandFrequency(3), 1207140000.0);
    EXPECT_EQ(BandFrequency(4), 1191795000.0);
    EXPECT_EQ(BandFrequency(5), 1278750000.0);
    for (int band = 1; band <= 5; ++band) {
        EXPECT_DOUBLE_EQ(BandWavelength(band), 299792458.0 / BandFrequency(band)) << band;
    }
    EXPECT_EQ(BandWavelength(1), kGpsL1Wavelength);
    EXPECT_EQ(BandWavelength(3), kBdsB2Wavelength);
}

TEST(Carriers, AnUnknownBandHasTenfoldFrequencyAndNoWavelength) {
    for (const int band : {INT_MIN, -1, 0, 6, 7, INT_MAX}) {
        EXPECT_EQ(BandFrequency(band), 15754200000.0) << band;
        EXPECT_EQ(BandWavelength(band), 0.0) << band;
    }
}

}  // namespace
