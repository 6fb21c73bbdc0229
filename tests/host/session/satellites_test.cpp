#include "session/satellites.h"

#include <gtest/gtest.h>

namespace vornel::session {
namespace {

TEST(Satellites, NumbersAcrossSystemsAreThoseOfTheHeader) {
    EXPECT_EQ(NumberAcrossSystems({EngineSystem::kGps, 1}), 1);
    EXPECT_EQ(NumberAcrossSystems({EngineSystem::kGps, 35}), 35);
    EXPECT_EQ(NumberAcrossSystems({EngineSystem::kGlonass, 1}), 36);
    EXPECT_EQ(NumberAcrossSystems({EngineSystem::kGlonass, 32}), 67);
    EXPECT_EQ(NumberAcrossSystems({EngineSystem::kBds, 1}), 68);
    EXPECT_EQ(NumberAcrossSystems({EngineSystem::kBds, 36}), 103);
    EXPECT_EQ(NumberAcrossSystems({EngineSystem::kGalileo, 1}), 104);
    EXPECT_EQ(NumberAcrossSystems({EngineSystem::kGalileo, 32}), 135);
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
    for (const EngineSystem system : kEngineSystems) {
        for (const int prn : {1, 9, 10, 32}) {
            const EngineSatellite satellite{system, prn};
            EXPECT_EQ(ParseSatellite(ToString(satellite)), satellite);
        }
    }
    EXPECT_EQ(ParseSatellite("g5"), (EngineSatellite{EngineSystem::kGps, 5}));
    for (const char* bad : {"", "G", "5", "G00", "G36", "C37", "S23", "G5x", "G005", "GG5"}) {
        EXPECT_FALSE(ParseSatellite(bad)) << bad;
    }
    EXPECT_EQ(SatelliteName(4, 8), "C08");
}

}  // namespace
}  // namespace vornel::session
