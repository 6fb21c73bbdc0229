// What is handed over, in which order, and that no value lies outside the bounds of the public header:
// a session of real files, with a recording engine in place of the library.
#include "solve/feed.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <string>
#include <vector>

#include "engine/recording_engine.h"
#include "solve/outcome.h"
#include "solve/preparation.h"
#include "solve/wettzell.h"

namespace vornel::solve {
namespace {

using namespace session;
using namespace engine;
using test::Call;
using test::Calls;
using test::ReadWettzell;

std::vector<std::string> NamesInOrder() {
    std::vector<std::string> names;
    for (const Call& call : Calls()) {
        if (names.empty() || names.back() != call.name) {
            names.push_back(call.name);
        }
    }
    return names;
}

std::size_t CountOf(const std::string& name) {
    std::size_t count = 0;
    for (const Call& call : Calls()) {
        count += call.name == name ? 1 : 0;
    }
    return count;
}

TEST(SessionFeed, CallsComeInTheOrderOfTheHeader) {
    ConfiguredSettings settings;
    settings.values.exclusions = {ParseExclusion("G05"),
                                  ParseExclusion("R01@2020-06-25T00:10/2020-06-25T00:20"),
                                  ParseExclusion("R01@2020-06-25T00:40/")};
    const Session session = PrepareSession(ReadWettzell(), settings);
    Engine engine(test::RecordingEngine());
    const FeedSummary fed = Feed(session, engine, {});
    vornel::solve::Run(session, engine);
    EXPECT_THAT(NamesInOrder(),
                testing::ElementsAre("CreateBLProcess", "InputSolveConfig", "InputAntCorrData",
                                     "InputIonCorrData", "InputOneSatNavGPS", "InputOneSatNavBDS",
                                     "InputOneSatNavGAL", "InputOneSatNavGLO", "InputEpochObsData",
                                     "MarkDelSatList", "AddOneSatTrackInfo", "StartProcess"));
    EXPECT_EQ(CountOf("InputEpochObsData"), 120U);
    EXPECT_EQ(fed.epochs, 120U);
    EXPECT_EQ(CountOf("MarkDelSatList"), 1U);
    // Both spans of a satellite in one track: a second one would undo the first.
    EXPECT_EQ(CountOf("AddOneSatTrackInfo"), 1U);
    EXPECT_EQ(CountOf("InputIonCorrData"), 1U);
}

TEST(SessionFeed, NoIonosphereMeansNoCall) {
    ConfiguredSettings settings;
    settings.values.noIonosphere = true;
    const Session session = PrepareSession(ReadWettzell(), settings);
    Engine engine(test::RecordingEngine());
    Feed(session, engine, {});
    EXPECT_EQ(CountOf("InputIonCorrData"), 0U);
}

TEST(SessionFeed, EveryEpochKeepsTheBoundsAndItsOwnTags) {
    const Session session = PrepareSession(ReadWettzell(), {});
    Engine engine(test::RecordingEngine());
    Feed(session, engine, {});
    constexpr std::size_t kReceiver = 2 + 64 + 4 * 64;
    double lastRover = -1.0, lastBase = -1.0;
    for (const Call& call : Calls()) {
        if (call.name != "InputEpochObsData") {
            continue;
        }
        ASSERT_EQ(call.values.size(), 2 * kReceiver);
        for (const std::size_t offset : {std::size_t{0}, kReceiver}) {
            EXPECT_EQ(call.values[offset], 2111);
            std::set<double> seen;
            for (std::size_t slot = 0; slot < 64; ++slot) {
                const double number = call.values[offset + 2 + slot];
                const double* values = &call.values[offset + 2 + 64 + slot];
                if (number == 0.0) {
                    EXPECT_EQ(values[0], 0.0);
                    continue;
                }
                EXPECT_TRUE(number >= 1 && number <= 135);
                EXPECT_TRUE(seen.insert(number).second) << "satellite twice: " << number;
                EXPECT_TRUE(values[0] >= 1e6 && values[0] <= 1e9);
                EXPECT_TRUE(values[64] == 0.0 || (values[64] >= 1e6 && values[64] <= 1e9));
                EXPECT_TRUE(std::isfinite(values[128]) && std::isfinite(values[192]));
            }
        }
        EXPECT_GT(call.values[1], lastRover);
        EXPECT_GT(call.values[kReceiver + 1], lastBase);
        EXPECT_LE(std::abs(call.values[1] - call.values[kReceiver + 1]), 0.1);
        lastRover = call.values[1];
        lastBase = call.values[kReceiver + 1];
    }
    EXPECT_GE(lastRover, 345600.0 + 3570.0 - 0.1);
}

TEST(SessionFeed, StationsAreTheHeadersPositionsAndHeights) {
    const Session session = PrepareSession(ReadWettzell(), {});
    Engine engine(test::RecordingEngine());
    Feed(session, engine, {});
    const auto call = std::find_if(Calls().begin(), Calls().end(),
                                   [](const Call& c) { return c.name == "InputAntCorrData"; });
    ASSERT_NE(call, Calls().end());
    EXPECT_THAT(call->values, testing::ElementsAre(4075578.4, 931852.75, 4801569.98, 0, 0, 0, 0, 0,
                                                   0, 0.284, 4075580.8863, 931853.5784,
                                                   4801567.9707, 0, 0, 0, 0, 0, 0, 0.071));
}

TEST(SessionFeed, TheFirstRecordsStandInTheFile) {
    // First GPS record of the navigation file that reaches the session, digit by digit.
    const Session session = PrepareSession(ReadWettzell(), {});
    ASSERT_FALSE(session.ephemerides.kepler.empty());
    for (const TimedKepler& timed : session.ephemerides.kepler) {
        EXPECT_FALSE(OutOfBounds(timed.record));
        EXPECT_LE(std::abs(io::SecondsBetween(timed.reference, session.FirstTime())), 18100.0);
    }
    ASSERT_TRUE(session.ionosphere);
    EXPECT_EQ(session.ionosphere->alpha[0], 4.6566e-09);
    EXPECT_EQ(session.ionosphere->beta[3], -5.2429e+05);
}

}  // namespace
}  // namespace vornel::solve
