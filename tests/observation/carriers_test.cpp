// Carriers by system: frequencies and wavelengths of the interface documents, and the Galileo bands
// as configured.
#include "observation/carriers.h"

#include <gtest/gtest.h>

#include "foundation/satellite.h"

namespace vornel {
namespace {

constexpr double kLight = 299792458.0;
constexpr double kL1 = 1575.42e6;

void ExpectPair(const Carriers& carriers, double frequency1, double frequency2) {
    EXPECT_DOUBLE_EQ(carriers.frequency1, frequency1);
    EXPECT_DOUBLE_EQ(carriers.frequency2, frequency2);
    EXPECT_DOUBLE_EQ(carriers.wavelength1, kLight / frequency1);
    EXPECT_DOUBLE_EQ(carriers.wavelength2, kLight / frequency2);
    EXPECT_DOUBLE_EQ(carriers.ionoScale1, kL1 * kL1 / (frequency1 * frequency1));
    EXPECT_DOUBLE_EQ(carriers.ionoScale2, kL1 * kL1 / (frequency2 * frequency2));
    EXPECT_EQ(carriers.antennaWavelength1, carriers.wavelength1);
    EXPECT_EQ(carriers.antennaWavelength2, carriers.wavelength2);
}

TEST(Carriers, OfGpsAndBds) {
    const CarrierTable table(1, 2);
    ExpectPair(table.Of(kGps, 0), 1575.42e6, 1227.60e6);
    ExpectPair(table.Of(kGps, 5), 1575.42e6, 1227.60e6);
    ExpectPair(table.Of(kBds, 0), 1561.098e6, 1207.14e6);
}

TEST(Carriers, OfGlonassGoWithTheChannel) {
    const CarrierTable table(1, 2);
    for (int channel = -7; channel <= 6; ++channel) {
        ExpectPair(table.Of(kGlonass, channel), 1602e6 + 562.5e3 * channel,
                   1246e6 + 437.5e3 * channel);
    }
}

TEST(Carriers, OfGalileoGoWithTheBands) {
    ExpectPair(CarrierTable(1, 2).Of(kGalileo, 0), 1575.42e6, 1176.45e6);
    ExpectPair(CarrierTable(3, 5).Of(kGalileo, 0), 1207.14e6, 1278.75e6);
    ExpectPair(CarrierTable(4, 1).Of(kGalileo, 0), 1191.795e6, 1575.42e6);
    EXPECT_TRUE(CarrierTable(4, 1).HasFirstGalileoBand());
    EXPECT_TRUE(CarrierTable(4, 1).HasSecondGalileoBand());
}

TEST(Carriers, EqualGalileoBandsLeaveNoSecondFrequency) {
    const CarrierTable table(3, 3);
    const Carriers carriers = table.Of(kGalileo, 0);
    EXPECT_TRUE(table.HasFirstGalileoBand());
    EXPECT_FALSE(table.HasSecondGalileoBand());
    EXPECT_DOUBLE_EQ(carriers.wavelength1, kLight / 1207.14e6);
    EXPECT_EQ(carriers.wavelength2, 0.0);
    EXPECT_EQ(carriers.frequency2, 15754200000.0);
    EXPECT_NEAR(carriers.ionoScale2, 0.01, 1e-15);
    EXPECT_EQ(carriers.antennaWavelength1, carriers.wavelength1);
    EXPECT_DOUBLE_EQ(carriers.antennaWavelength2, kLight / 1176.45e6);
}

TEST(Carriers, AnUnknownFirstGalileoBandHasNoWavelength) {
    const CarrierTable table(0, 2);
    const Carriers carriers = table.Of(kGalileo, 0);
    EXPECT_FALSE(table.HasFirstGalileoBand());
    EXPECT_TRUE(table.HasSecondGalileoBand());
    EXPECT_EQ(carriers.wavelength1, 0.0);
    EXPECT_DOUBLE_EQ(carriers.antennaWavelength1, kLight / 1575.42e6);
    EXPECT_DOUBLE_EQ(carriers.antennaWavelength2, kLight / 1176.45e6);
}

}  // namespace
}  // namespace vornel
