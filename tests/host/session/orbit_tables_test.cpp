#include "session/orbit_tables.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vornel::session {
namespace {

// A file with one satellite at every epoch but those in `missing`.
io::PreciseOrbits File(double first, int count, double step, const std::vector<int>& missing = {},
                       double x = 2.0e7) {
    io::PreciseOrbits file;
    file.coordinateSystem = "IGb14";
    io::OrbitSeries series;
    series.satellite = {io::GnssSystem::kGps, 5};
    for (int i = 0; i < count; ++i) {
        file.epochs.push_back(io::Shifted({2111, 0.0}, first + i * step));
        if (std::find(missing.begin(), missing.end(), i) == missing.end()) {
            series.points.push_back({static_cast<std::uint32_t>(i), {x, 1.0e7, 5.0e6}, 1e-5});
        }
    }
    file.satellites.push_back(series);
    return file;
}

TEST(OrbitTables, MissingValuesGetTheMarker) {
    io::PreciseOrbits file = File(0.0, 12, 300.0, {3});
    file.satellites[0].points[0].clock = NAN;
    file.satellites[0].points[1].position[2] = NAN;
    file.satellites[0].points[2].position = {0.0, 0.0, 0.0};
    file.satellites[0].points[4].clock = 999999.0;
    const OrbitTables tables = JoinOrbits({file});
    const auto& values = tables.satellites.at({engine::System::kGps, 5});
    EXPECT_EQ(values[0][0], 2.0e7);
    EXPECT_EQ(values[3][0], 0.999999999999);
    for (std::size_t c = 0; c < 3; ++c) {
        EXPECT_EQ(values[c][1], 0.999999999999);
        EXPECT_EQ(values[c][2], 0.999999999999);
        EXPECT_EQ(values[c][3], 0.999999999999);
    }
    EXPECT_EQ(values[3][1], 1e-5);
    EXPECT_EQ(values[3][3], 0.999999999999);
    EXPECT_EQ(values[3][5], 0.999999999999);
}

TEST(OrbitTables, TimesThatNoCalendarHasOrThatRepeatAreLeftOut) {
    io::PreciseOrbits file = File(0.0, 12, 300.0);
    file.epochs[3] = {-5, 100.0};
    file.epochs[7] = {2111, NAN};
    file.epochs[8] = {2111, 2700.0000001};  // where the next one stands
    const OrbitTables tables = JoinOrbits({file});
    // The hole of 900 s that 3, 7 and 8 leave behind is marked by an entry each.
    for (std::size_t i = 1; i < tables.times.size(); ++i) {
        EXPECT_GE(io::SecondsBetween(tables.times[i - 1], tables.times[i]), 0.001);
        EXPECT_TRUE(io::IsInCalendar(tables.times[i]));
    }
    EXPECT_EQ(tables.times.size(), 9U + 2U);
    EXPECT_EQ(tables.satellites.at({engine::System::kGps, 5})[0].size(), tables.times.size());
}

TEST(OrbitTables, FilesJoinInTimeAndTheFirstCounts) {
    const OrbitTables tables =
        JoinOrbits({File(3600.0, 12, 300.0, {}, 2.1e7), File(0.0, 13, 300.0, {}, 2.0e7)});
    EXPECT_EQ(tables.times.size(), 24U);
    EXPECT_TRUE(std::is_sorted(tables.times.begin(), tables.times.end()));
    const auto& x = tables.satellites.at({engine::System::kGps, 5})[0];
    EXPECT_EQ(x[11], 2.0e7);
    EXPECT_EQ(x[12], 2.1e7);
}

TEST(OrbitTables, AGapBetweenFilesIsMarked) {
    const OrbitTables tables = JoinOrbits({File(0.0, 12, 300.0), File(7200.0, 12, 300.0)});
    ASSERT_EQ(tables.times.size(), 25U);
    EXPECT_EQ(tables.times[12], (io::GpsTime{2111, 3600.0}));
    EXPECT_EQ(tables.satellites.at({engine::System::kGps, 5})[0][12], 0.999999999999);
}

TEST(OrbitTables, FiveEntriesBeforeAndSixFromTheNextOn) {
    const OrbitTables tables = JoinOrbits({File(0.0, 12, 300.0)});
    // Entries at 0 to 3300 s. The time of transmission lies a little before the epoch.
    EXPECT_FALSE(InsideTable(tables, {2111, 1200.0}));
    EXPECT_TRUE(InsideTable(tables, {2111, 1200.2}));
    EXPECT_TRUE(InsideTable(tables, {2111, 1799.9}));
    EXPECT_FALSE(InsideTable(tables, {2111, 1800.0}));
}

TEST(OrbitTables, SatellitesWithoutANumberAreNamed) {
    io::PreciseOrbits file = File(0.0, 12, 300.0);
    file.satellites[0].satellite = {io::GnssSystem::kQzss, 2};
    const OrbitTables tables = JoinOrbits({file});
    EXPECT_TRUE(tables.Empty());
    EXPECT_EQ(tables.unnumbered, std::vector<std::string>{"J02"});
}

}  // namespace
}  // namespace vornel::session
