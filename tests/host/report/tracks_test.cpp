#include "report/tracks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <sstream>

#include "app/command_fixture.h"
#include "solve/preparation.h"

namespace vornel::report {
namespace {

using engine::Ambiguity;
using engine::System;
using testing::ElementsAre;

std::vector<io::GpsTime> EveryThirtySeconds(std::size_t count) {
    std::vector<io::GpsTime> times;
    for (std::size_t i = 0; i < count; ++i) {
        times.push_back({2111, 30.0 * static_cast<double>(i)});
    }
    return times;
}

Ambiguity Stretch(int first, int last) {
    Ambiguity a;
    a.system = static_cast<int>(engine::System::kGps);
    a.firstEpoch = first;
    a.lastEpoch = last;
    return a;
}

TEST(Stretches, BridgeWhatIsTooShortToBeSeen) {
    const std::vector<std::uint32_t> epochs = {0, 1, 2, 5, 6, 12};
    EXPECT_THAT(Stretches(epochs, 0), ElementsAre(Span{0, 2}, Span{5, 6}, Span{12, 12}));
    EXPECT_THAT(Stretches(epochs, 2), ElementsAre(Span{0, 6}, Span{12, 12}));
    EXPECT_THAT(Stretches({}, 0), ElementsAre());
}

TEST(DerivedPeriods, AreFullBeforeTheyEnd) {
    // Two hours are reached with epoch 240, counted from 0.
    const std::vector<Ambiguity> none;
    EXPECT_THAT(DerivedPeriods(EveryThirtySeconds(600), 7200.0, 10, none),
                ElementsAre(Span{0, 240}, Span{241, 481}, Span{482, 599}));
    EXPECT_THAT(DerivedPeriods(EveryThirtySeconds(100), 7200.0, 10, none),
                ElementsAre(Span{0, 99}));
}

TEST(DerivedPeriods, EndWhereNoTrackGoesOn) {
    // The engine joined the short rest to the second period: a track tells.
    EXPECT_THAT(
        DerivedPeriods(EveryThirtySeconds(520), 7200.0, 10, {Stretch(0, 240), Stretch(241, 519)}),
        ElementsAre(Span{0, 240}, Span{241, 519}));
}

TEST(DerivedPeriods, HoldEnoughEpochs) {
    // Half-hourly epochs: two hours hold five of them.
    std::vector<io::GpsTime> times;
    for (int i = 0; i < 20; ++i) {
        times.push_back({2111, 1800.0 * i});
    }
    EXPECT_THAT(DerivedPeriods(times, 7200.0, 10, {}), ElementsAre(Span{0, 9}, Span{10, 19}));
}

// What the engine's own trace says of its reference satellites.
class References : public test::CommandFixture {
  protected:
    // Numbers across the systems by period and system, -1 for none.
    std::vector<std::array<int, 4>> FromTrace(const std::string& trace) {
        const std::regex line("select refsat: G(-?\\d+) R(-?\\d+) C(-?\\d+) E(-?\\d+)");
        std::vector<std::array<int, 4>> list;
        std::istringstream lines(trace);
        for (std::string text; std::getline(lines, text);) {
            std::smatch found;
            if (std::regex_search(text, found, line)) {
                list.push_back({std::stoi(found[1]), std::stoi(found[2]), std::stoi(found[3]),
                                std::stoi(found[4])});
            }
        }
        return list;
    }

    // Solves with a trace and derives the timeline of the result.
    void Solve(const session::InputPaths& paths) {
        const session::Settings settings;
        result_.session = solve::PrepareSession(
            session::ReadInputs(paths, solve::SelectionFor(settings)), {settings, {}});
        testing::internal::CaptureStderr();
        {
            engine::Engine engine;
            solve::FeedOptions options;
            options.tracePath = Path("trace.log");
            result_.fed = solve::Feed(result_.session, engine, options);
            result_.outcome = solve::Run(result_.session, engine);
        }
        testing::internal::GetCapturedStderr();
        timeline_ = MakeTimeline(result_);
    }

    // The likeliest of each period and system is the engine's.
    void ExpectAsInTrace() {
        const auto truth = FromTrace(Read(Path("trace.log")));
        ASSERT_EQ(timeline_.periods.size(), truth.size());
        for (std::size_t p = 0; p < truth.size(); ++p) {
            for (std::size_t s = 0; s < engine::kSystemCount; ++s) {
                const auto& candidates = timeline_.periods[p].references[s];
                const int likeliest =
                    candidates.empty() ? -1 : engine::NumberAcrossSystems(candidates.front());
                EXPECT_EQ(likeliest, truth[p][s]) << "period " << p << ", system " << s;
            }
        }
    }

    solve::SolveResult result_;
    Timeline timeline_;
};

TEST_F(References, OfFourSystemsAreTheEngines) {
    Solve({{DemoBase()}, {DemoRover()}, {DemoNavigation(), DemoGlonass()}});
    ExpectAsInTrace();
    EXPECT_EQ(timeline_.unplaced, 0U);
    std::size_t residuals = 0;
    for (const Residuals& series : timeline_.residuals) {
        residuals += series.epochs.size();
    }
    std::size_t filed = 0;
    for (const engine::ResidualSeries& series : result_.outcome.Best()->residuals) {
        filed += series.points.size();
    }
    EXPECT_EQ(residuals, filed);
    EXPECT_EQ(timeline_.tracks.size(), result_.outcome.Best()->ambiguities.size());
    for (const Track& track : timeline_.tracks) {
        EXPECT_TRUE(track.floating.has_value());
    }
}

TEST_F(References, OfTwelvePeriodsAreTheEngines) {
    const std::string folder =
        (test::ProjectFolder() / "tests" / "data" / "baselines" / "ebre-bell").string() + "/";
    Solve(
        {{folder + "ebre0300.02o.xz"}, {folder + "bell0300.02o.xz"}, {folder + "brdc0300.02n.xz"}});
    EXPECT_EQ(timeline_.periods.size(), 12U);
    ExpectAsInTrace();
    // No track crosses the end of a period.
    for (const Track& track : timeline_.tracks) {
        EXPECT_TRUE(timeline_.periods[track.period].epochs.Holds(track.epochs.first));
        EXPECT_TRUE(timeline_.periods[track.period].epochs.Holds(track.epochs.last));
    }
}

}  // namespace
}  // namespace vornel::report
