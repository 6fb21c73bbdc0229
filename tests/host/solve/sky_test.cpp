#include "solve/sky.h"

#include <gtest/gtest.h>

#include <cmath>

#include "engine/recording_engine.h"
#include "solve/wettzell.h"

namespace vornel::solve {
namespace {

TEST(Sky, SatellitesStandWhereTheStationSawThem) {
    const session::Session session = PrepareSession(test::ReadWettzell(), {});
    engine::Engine engine(test::RecordingEngine());
    const FeedSummary fed = Feed(session, engine, {});
    const auto tracks = SkyTracks(session, fed, 300.0);
    EXPECT_GT(tracks.size(), 25U);
    for (const auto& [satellite, points] : tracks) {
        for (const SkyPoint& point : points) {
            // What is observed is above the horizon.
            EXPECT_GT(point.elevation, -0.01) << ToString(satellite);
            EXPECT_LE(point.elevation, M_PI / 2.0);
            EXPECT_TRUE(point.azimuth >= 0.0 && point.azimuth < 2.0 * M_PI);
        }
        EXPECT_LE(points.size(), 12U);
    }
    // C05 at 58.75 degrees east: azimuth and elevation of a geostationary place over Wettzell.
    const auto geo = tracks.find({engine::System::kBds, 5});
    ASSERT_NE(geo, tracks.end());
    const session::Geodetic place = session::ToGeodetic(test::kWtzr);
    const double dlon = 58.75 * M_PI / 180.0 - place.longitude;
    const double azimuth = M_PI - std::atan(std::tan(dlon) / std::sin(place.latitude));
    EXPECT_NEAR(geo->second[0].azimuth, azimuth, 0.05);
}

}  // namespace
}  // namespace vornel::solve
