// Orbits held against independent data: neighbouring records of one satellite agree where they
// meet, and positions of real stations come out.
#include "session/broadcast_orbit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

#include "io/file_bytes.h"
#include "project_folder.h"

namespace vornel::session {
namespace {

const io::GpsTime kDay{2111, 345600.0};

std::vector<io::Navigation> DemoNavigation() {
    const auto folder = test::ProjectFolder() / "data" / "wettzell";
    std::vector<io::Navigation> files;
    for (const char* name :
         {"ESBC00DNK_R_20201770000_01D_MN.rnx.gz", "ESBC00DNK_R_20201770000_01D_RN.rnx.gz"}) {
        const auto file = io::ReadFile((folder / name).string()).front();
        files.push_back(io::ReadNavigation(file.bytes, file.name));
    }
    return files;
}

// The records without the one at `index`.
template <typename Record>
std::vector<Record> Without(std::vector<Record> records, std::size_t index) {
    records.erase(records.begin() + static_cast<std::ptrdiff_t>(index));
    return records;
}

TEST(BroadcastOrbit, GlonassStatesRunIntoTheNextRecord) {
    const Ephemerides all = SelectEphemerides(DemoNavigation(), kDay, kDay);
    std::size_t compared = 0;
    for (std::size_t i = 0; i < all.glonass.size(); ++i) {
        Ephemerides others = all;
        others.glonass = Without(all.glonass, i);
        const engine::Glonass& record = all.glonass[i].record;
        const auto state = BroadcastState(others, {engine::System::kGlonass, record.slot},
                                          all.glonass[i].reference);
        if (!state) {
            continue;
        }
        const Vector3 broadcast = {record.position[0] * 1e3, record.position[1] * 1e3,
                                   record.position[2] * 1e3};
        // A new upload moves the orbit by metres; a wrong equation by kilometres.
        EXPECT_LT(Length(Minus(state->position, broadcast)), 10.0) << "R" << record.slot;
        EXPECT_NEAR(state->clock, record.clockBias, 3e-8) << "R" << record.slot;
        ++compared;
    }
    EXPECT_GT(compared, 50U);
}

TEST(BroadcastOrbit, KeplerRecordsMeetTheirNeighbours) {
    const Ephemerides all = SelectEphemerides(DemoNavigation(), kDay, kDay);
    std::map<engine::System, std::size_t> compared;
    std::size_t geostationary = 0;
    for (std::size_t i = 0; i + 1 < all.kepler.size(); ++i) {
        const engine::Kepler &a = all.kepler[i].record, &b = all.kepler[i + 1].record;
        const double gap = io::SecondsBetween(all.kepler[i].reference, all.kepler[i + 1].reference);
        if (a.system != b.system || a.satId != b.satId || a.health != 0 || b.health != 0 ||
            gap > 7200.0) {
            continue;
        }
        Ephemerides first, second;
        first.kepler = {all.kepler[i]};
        second.kepler = {all.kepler[i + 1]};
        const io::GpsTime middle = io::Shifted(all.kepler[i].reference, gap / 2.0);
        const engine::Satellite satellite{a.system, a.satId};
        const auto one = BroadcastState(first, satellite, middle);
        const auto other = BroadcastState(second, satellite, middle);
        ASSERT_TRUE(one && other);
        EXPECT_LT(Length(Minus(one->position, other->position)), 20.0) << ToString(satellite);
        ++compared[a.system];
        geostationary += a.system == engine::System::kBds && a.satId <= 5 ? 1 : 0;
    }
    EXPECT_GT(compared[engine::System::kGps], 5U);
    EXPECT_GT(compared[engine::System::kGalileo], 20U);
    EXPECT_GT(compared[engine::System::kBds], 5U);
    EXPECT_GT(geostationary, 0U);
}

TEST(BroadcastOrbit, AGeostationarySatelliteStandsStill) {
    // C05 stands at 58.75 degrees east (BDS-SIS-ICD).
    const Ephemerides all = SelectEphemerides(DemoNavigation(), kDay, kDay);
    const auto state = BroadcastState(all, {engine::System::kBds, 5}, io::Shifted(kDay, 1800.0));
    ASSERT_TRUE(state);
    EXPECT_NEAR(std::atan2(state->position[1], state->position[0]) * 180.0 / M_PI, 58.75, 0.3);
    EXPECT_NEAR(Length(state->position), 42164e3, 60e3);
}

TEST(BroadcastOrbit, NothingBeyondFourHours) {
    const Ephemerides all = SelectEphemerides(DemoNavigation(), kDay, kDay);
    EXPECT_FALSE(BroadcastState(all, {engine::System::kGps, 5}, io::Shifted(kDay, 86400.0)));
    EXPECT_FALSE(BroadcastState(all, {engine::System::kGlonass, 1}, io::Shifted(kDay, 86400.0)));
}

}  // namespace
}  // namespace vornel::session
