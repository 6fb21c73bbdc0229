#include "engine/satellites.h"

#include <gtest/gtest.h>

namespace vornel::engine {
namespace {

TEST(Satellites, NumbersAcrossSystemsAreThoseOfTheHeader) {
    EXPECT_EQ(NumberAcrossSystems({System::kGps, 1}), 1);
    EXPECT_EQ(NumberAcrossSystems({System::kGps, 35}), 35);
    EXPECT_EQ(NumberAcrossSystems({System::kGlonass, 1}), 36);
    EXPECT_EQ(NumberAcrossSystems({System::kGlonass, 32}), 67);
    EXPECT_EQ(NumberAcrossSystems({System::kBds, 1}), 68);
    EXPECT_EQ(NumberAcrossSystems({System::kBds, 36}), 103);
    EXPECT_EQ(NumberAcrossSystems({System::kGalileo, 1}), 104);
    EXPECT_EQ(NumberAcrossSystems({System::kGalileo, 32}), 135);
}

TEST(Satellites, BeyondTheNumberingThereIsNone) {
    using io::GnssSystem;
    EXPECT_TRUE(ToEngine({GnssSystem::kBeiDou, 36}));
    EXPECT_FALSE(ToEngine({GnssSystem::kBeiDou, 37}));
    EXPECT_TRUE(ToEngine({GnssSystem::kGalileo, 32}));
    EXPECT_FALSE(ToEngine({GnssSystem::kGalileo, 33}));
    EXPECT_FALSE(ToEngine({GnssSystem::kGlonass, 33}));
    EXPECT_TRUE(ToEngine({GnssSystem::kGps, 35}));
    EXPECT_FALSE(ToEngine({GnssSystem::kGps, 36}));
    EXPECT_FALSE(ToEngine({GnssSystem::kGps, 0}));
    EXPECT_FALSE(ToEngine({GnssSystem::kSbas, 23}));
    EXPECT_FALSE(ToEngine({GnssSystem::kQzss, 1}));
    EXPECT_FALSE(ToEngine({GnssSystem::kNavIc, 1}));
}

TEST(Satellites, NamesAreReadBack) {
    for (const System system : engine::kSystems) {
        for (const int prn : {1, 9, 10, 32}) {
            const Satellite satellite{system, prn};
            EXPECT_EQ(ParseSatellite(ToString(satellite)), satellite);
        }
    }
    EXPECT_EQ(ParseSatellite("g5"), (Satellite{System::kGps, 5}));
    for (const char* bad : {"", "G", "5", "G00", "G36", "C37", "S23", "G5x", "G005", "GG5"}) {
        EXPECT_FALSE(ParseSatellite(bad)) << bad;
    }
    EXPECT_EQ(SatelliteName(4, 8), "C08");
}

}  // namespace
}  // namespace vornel::engine
