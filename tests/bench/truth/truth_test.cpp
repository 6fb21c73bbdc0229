// The measuring of sessions with known answers, on the session of the demo and on made-up numbers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "engine_runs.h"
#include "plan.h"
#include "row.h"
#include "scene.h"
#include "session/session.h"
#include "simulated.h"
#include "solve/feed.h"
#include "solve/outcome.h"
#include "solve/preparation.h"
#include "solve/residual_statistics.h"
#include "workers.h"

namespace vornel::truth {
namespace {

using solve::kUnknown;
using solve::ResidualStatistics;
using solve::SkyOfSession;
using solve::StatisticsOf;

constexpr const char* kWettzell = R"({
  "sets": [{
    "name": "wettzell",
    "base": ["WTZR00DEU_R_20201770000_01H_30S_MO.rnx.gz"],
    "rover": ["WTZZ00DEU_R_20201770000_01H_30S_MO.rnx.gz"],
    "others": ["ESBC00DNK_R_20201770000_01D_MN.rnx.gz", "ESBC00DNK_R_20201770000_01D_RN.rnx.gz"],
    "known": {"base": [4075580.3111, 931854.0543, 4801568.2808],
              "rover": [4075579.1913, 931853.3696, 4801569.1897],
              "sigmaHorizontal": 0.001, "sigmaUp": 0.002}
  }]
})";

const LoadedSet& Wettzell() {
    static const LoadedSet set = Load(ParsePlan(kWettzell).sets.front(), VORNEL_DEMO_DATA);
    return set;
}

Cut FirstMinutes(double minutes) {
    Cut cut;
    cut.duration = 60.0 * minutes;
    cut.systems = "GREC";
    return cut;
}

std::vector<RunSpec> Runs(const std::string& list) {
    return ParsePlan("{\"runs\": [" + list + "]}").runs;
}

std::vector<std::string> Split(const std::string& text, char at) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, at);) {
        parts.push_back(part);
    }
    return parts;
}

using NamedRow = std::map<std::string, std::string>;

// The rows by label.
std::map<std::string, NamedRow> Table(const std::string& rows) {
    const auto names = Split(RowHeader(), ',');
    std::map<std::string, NamedRow> table;
    for (const std::string& line : Split(rows, '\n')) {
        auto values = Split(line, ',');
        values.resize(names.size());  // a last value that is empty
        NamedRow row;
        for (std::size_t i = 0; i < names.size(); ++i) {
            row[names[i]] = values[i];
        }
        table[row["run"]] = row;
    }
    return table;
}

double Real(const NamedRow& row, const std::string& name) {
    return std::stod(row.at(name));
}

// What one engine gave must not depend on the time it took.
NamedRow WithoutTimes(NamedRow row) {
    for (const char* name : {"run", "group", "run_cpu", "feed_cpu"}) {
        row.erase(name);
    }
    return row;
}

TEST(TruthRuns, TellTheErrorOfTheVectorThatTheHostGives) {
    const Scene scene = MakeScene(Wettzell(), FirstMinutes(60));
    session::ConfiguredSettings settings;
    session::Session prepared = solve::PrepareSession(Wettzell().inputs, settings);
    session::Vector3 vector{};
    {
        engine::Engine engine;
        solve::Feed(prepared, engine, {});
        vector = solve::Run(prepared, engine).results.fixeds.back().vector;
    }
    const NamedRow main = Table(RunScene(scene, Runs(R"({"label": "main"})")))["main"];
    // North, east and up at WTZR, from its latitude and longitude as formulas.
    const double x = 4075580.3111, y = 931854.0543;
    const double b = session::ToGeodetic({x, y, 4801568.2808}).latitude, l = std::atan2(y, x);
    const double dx = vector[0] - -1.1198, dy = vector[1] - -0.6847, dz = vector[2] - 0.9089;
    const double north = -std::sin(b) * (std::cos(l) * dx + std::sin(l) * dy) + std::cos(b) * dz;
    const double east = std::cos(l) * dy - std::sin(l) * dx;
    const double up = std::cos(b) * (std::cos(l) * dx + std::sin(l) * dy) + std::sin(b) * dz;
    EXPECT_NEAR(Real(main, "e_n"), 1000.0 * north, 1e-3);
    EXPECT_NEAR(Real(main, "e_e"), 1000.0 * east, 1e-3);
    EXPECT_NEAR(Real(main, "e_u"), 1000.0 * up, 1e-3);
    EXPECT_EQ(main.at("acceptance"), "fixed");
    EXPECT_EQ(main.at("status"), "81");
    EXPECT_EQ(main.at("epochs"), "120");
    EXPECT_EQ(main.at("start"), "2020-06-25 00:00:00");
    EXPECT_NEAR(Real(main, "length"), 1.5965, 1e-4);
    EXPECT_LT(std::hypot(north, east), 0.010);
}

TEST(TruthRuns, OneRunKnowsNothingOfTheOthers) {
    const Scene scene = MakeScene(Wettzell(), FirstMinutes(20));
    const std::string others =
        R"({"label": "first", "keep": [[0, 0.5]]}, {"label": "zeros", "ionosphere": "zeros"},
           {"label": "few", "systems": "G", "everyNth": 3}, {"label": "mask", "mask": 30},
           {"label": "wide", "model": 5, "ratioThreshold": 9})";
    auto after = Table(RunScene(scene, Runs(others + R"(, {"label": "main"})")));
    auto alone = Table(RunScene(scene, Runs(R"({"label": "main"})")));
    ASSERT_EQ(after.size(), 6U);
    EXPECT_EQ(WithoutTimes(after["main"]), WithoutTimes(alone["main"]));
    for (const char* label : {"first", "few", "mask", "wide"}) {
        EXPECT_NE(after[label]["fx_n"], after["main"]["fx_n"]) << label;
    }
    EXPECT_EQ(after["few"]["sats_used"].find_first_of("REC"), std::string::npos);
}

TEST(TruthRuns, KeptPartsOfTheTimeGiveTheSessionOfThatTime) {
    auto kept = Table(RunScene(MakeScene(Wettzell(), FirstMinutes(60)),
                               Runs(R"({"label": "half", "keep": [[0, 0.5]]})")))["half"];
    auto cut = Table(
        RunScene(MakeScene(Wettzell(), FirstMinutes(30)), Runs(R"({"label": "main"})")))["main"];
    EXPECT_EQ(kept["epochs"], "120");
    EXPECT_EQ(cut["epochs"], "60");
    EXPECT_EQ(kept["fx_dof"], cut["fx_dof"]);
    for (const char* name : {"fx_n", "fx_e", "fx_u"}) {
        EXPECT_NEAR(Real(kept, name), Real(cut, name), 0.1) << name;
    }
}

TEST(TruthRuns, ExchangedStationsNegateTheError) {
    Cut cut = FirstMinutes(30);
    const auto runs = Runs(R"({"label": "main"})");
    const auto plain = Table(RunScene(MakeScene(Wettzell(), cut), runs)).at("main");
    cut.swapped = true;
    const auto swapped = Table(RunScene(MakeScene(Wettzell(), cut), runs)).at("main");
    for (const char* name : {"fx_n", "fx_e", "fx_u"}) {
        EXPECT_NEAR(Real(plain, name), -Real(swapped, name), 0.5) << name;
    }
    EXPECT_NEAR(Real(plain, "dh"), -Real(swapped, "dh"), 1e-6);
}

TEST(TruthRuns, RunsThatWouldRepeatTheMainOneAreLeftOut) {
    Cut cut = FirstMinutes(10);
    cut.systems = "G";
    cut.frequencies = 1;
    const auto table =
        Table(RunScene(MakeScene(Wettzell(), cut),
                       Runs(R"({"label": "main"}, {"label": "no_galileo", "without": "E"},
                {"label": "no_gps", "without": "G"}, {"label": "model2", "model": 2},
                {"label": "no_offsets", "antennas": false}, {"label": "s30", "interval": 30},
                {"label": "s60", "interval": 60}, {"label": "long", "mask": 20, "leastLength": 10},
                {"label": "short", "mask": 20, "mostLength": 1.5})")));
    ASSERT_EQ(table.size(), 2U);
    EXPECT_EQ(table.at("main").at("model"), "1");
    EXPECT_EQ(table.at("s60").at("epochs"), "10");
}

TEST(TruthRuns, SessionThatTheHostRefusesIsARowToo) {
    Scene scene = MakeScene(Wettzell(), FirstMinutes(10));
    scene.inputs.navigation.clear();
    const auto table = Table(RunScene(scene, Runs(R"({"label": "main"})")));
    ASSERT_TRUE(table.contains("refused"));
    EXPECT_NE(table.at("refused").at("fault"), "");
}

// ---- cuts ---------------------------------------------------------------------------------------

TEST(Cuts, HoldTheObservationsOfTheirTime) {
    const io::Observations& whole = Wettzell().inputs.base;
    const io::GpsTime start = io::Shifted(Wettzell().first, 600.0);
    const io::Observations part = CutObservations(whole, start, io::Shifted(start, 300.0), "GE", 2);
    ASSERT_EQ(part.epochs.size(), 10U);
    std::size_t rows = 0;
    for (std::size_t e = 0; e < part.epochs.size(); ++e) {
        const io::ObservationEpoch& original = whole.epochs[20 + e];
        EXPECT_EQ(part.epochs[e].time, original.time);
        auto taken = part.SatellitesOf(part.epochs[e]).begin();
        for (const io::SatelliteRow& row : whole.SatellitesOf(original)) {
            const char letter = io::SystemLetter(row.satellite.system);
            if (letter != 'G' && letter != 'E') {
                continue;
            }
            EXPECT_EQ(taken->satellite, row.satellite);
            for (std::size_t c = 0; c < whole.SignalsOf(row).size(); ++c) {
                const double there = whole.Value(row, c), here = part.Value(*taken, c);
                EXPECT_TRUE(there == here || (std::isnan(there) && std::isnan(here)));
            }
            ++taken;
            ++rows;
        }
    }
    EXPECT_EQ(part.satellites.size(), rows);
    EXPECT_GT(rows, 100U);
}

TEST(Cuts, OneFrequencyLeavesNoSecondSignal) {
    Cut cut = FirstMinutes(10);
    cut.frequencies = 1;
    const Scene scene = MakeScene(Wettzell(), cut);
    const session::Session prepared = solve::PrepareSession(scene.inputs, {});
    for (const auto& pairs : prepared.signals) {
        EXPECT_TRUE(pairs[0].Usable());
        EXPECT_FALSE(pairs[1].Usable());
    }
}

TEST(Cuts, CoverTheSetWithoutOverlapAndOnce) {
    const auto rules = ParsePlan(R"({"cuts": [
        {"durations": [900], "systems": ["GREC", "GRECG", "G"], "orbits": ["broadcast", "precise"]},
        {"durations": [900], "systems": ["G"]}, {"durations": [1800], "step": 600},
        {"durations": [7200]}, {"sets": ["other"], "durations": [60]}]})")
                           .cuts;
    const auto cuts = AllCuts(rules, {Wettzell()});
    // Four quarters for two lists of systems, and half hours at 0, 10, 20 and 30 minutes. The set
    // has no precise orbits.
    ASSERT_EQ(cuts.size(), 12U);
    std::vector<double> starts;
    for (const Cut& cut : cuts) {
        EXPECT_EQ(cut.orbits, OrbitChoice::kBroadcast);
        if (cut.duration == 1800.0) {
            starts.push_back(cut.start);
        }
    }
    EXPECT_THAT(starts, ::testing::ElementsAre(0.0, 600.0, 1200.0, 1800.0));
}

TEST(Cuts, MovedHeadersLieThatFarOff) {
    Cut cut = FirstMinutes(10);
    const Scene plain = MakeScene(Wettzell(), cut);
    cut.headerOffset = 30.0;
    const Scene moved = MakeScene(Wettzell(), cut);
    const auto off = [](const io::Observations& a, const io::Observations& b) {
        return session::Length(
            session::Minus(*a.station().approximatePosition, *b.station().approximatePosition));
    };
    EXPECT_NEAR(off(plain.inputs.base, moved.inputs.base), 30.0, 1e-9);
    EXPECT_NEAR(off(plain.inputs.rover, moved.inputs.rover), 30.0, 1e-9);
    EXPECT_NE(plain.cut, moved.cut);
}

// ---- simulated sessions -------------------------------------------------------------------------

TEST(SimulatedScenes, KeepToTheirKindAndFollowTheirSeed) {
    const Kind kind = ParsePlan(R"({"kinds": [{"name": "here", "length": [1000, 2000],
        "latitude": [40, 50], "durations": [600], "interval": 60, "systems": ["GE"],
        "frequencies": 1, "orbits": "precise", "headerSigma": 30}]})")
                          .kinds.front();
    std::vector<Vector3> vectors;
    double off = 0.0;
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        const Scene scene = SimulatedScene(kind, seed);
        vectors.push_back(scene.known.vector);
        EXPECT_NEAR(session::Length(scene.known.vector), 1500.0, 525.0);
        const double latitude = session::ToGeodetic(*scene.known.base).latitude * 180.0 / M_PI;
        EXPECT_NEAR(std::abs(latitude), 45.0, 5.0);
        // But for epochs that a receiver missed.
        EXPECT_LE(scene.inputs.base.epochs.size(), 10U);
        EXPECT_GE(scene.inputs.base.epochs.size(), 5U);
        EXPECT_EQ(SystemsOf(scene.inputs), "GE");
        EXPECT_EQ(scene.inputs.orbits.size(), 1U);
        EXPECT_EQ(scene.inputs.navigation.size(), 1U);
        off += session::Length(session::Minus(*scene.inputs.base.station().approximatePosition,
                                              *scene.known.base)) /
               20.0;
    }
    // Of three components with 30, 30 and 45 m the mean length is about 57 m.
    EXPECT_NEAR(off, 57.0, 20.0);
    EXPECT_EQ(SimulatedScene(kind, 7).known.vector, vectors[6]);
    EXPECT_EQ(SimulatedScene(kind, 7).inputs.rover.values,
              SimulatedScene(kind, 7).inputs.rover.values);
    std::sort(vectors.begin(), vectors.end());
    EXPECT_EQ(std::unique(vectors.begin(), vectors.end()), vectors.end());
}

// ---- statistics ---------------------------------------------------------------------------------

constexpr double kInterval = 30.0;

SkyOfSession FlatSky(std::size_t epochs, double degrees) {
    SkyOfSession sky;
    std::vector<solve::SkyPoint> track;
    for (std::size_t i = 0; i < epochs; ++i) {
        sky.times.push_back({2000, 1000.0 + kInterval * static_cast<double>(i)});
        track.push_back({static_cast<std::uint32_t>(i), 0.0, degrees * M_PI / 180.0});
    }
    sky.tracks[{engine::System::kGps, 5}] = track;
    return sky;
}

engine::Solution WithResiduals(const SkyOfSession& sky, const std::vector<int>& millimetres) {
    engine::Solution solution;
    engine::ResidualSeries series{1, 5, 0, {}};
    for (std::size_t i = 0; i < millimetres.size(); ++i) {
        series.points.push_back({sky.times[i].week, sky.times[i].seconds, millimetres[i]});
    }
    solution.residuals = {series};
    return solution;
}

// A process of first order with correlation r has correlation r^k at k steps, and the sum of all is
// (1 + r) / (1 - r).
TEST(ResidualStatistics, CorrelationsOfAFirstOrderProcess) {
    constexpr std::size_t kCount = 20000;
    constexpr double kR = 0.9, kSigma = 500.0;
    const SkyOfSession sky = FlatSky(kCount, 40.0);
    std::vector<int> values;
    double state = 0.0;
    for (std::size_t i = 0; i < kCount; ++i) {
        const Vector3 d = DirectionOf(std::to_string(i));  // components are uniform in +-1
        state = kR * state + kSigma * std::sqrt(1.0 - kR * kR) * d[2] * std::sqrt(3.0);
        values.push_back(static_cast<int>(std::lround(state)));
    }
    const ResidualStatistics r = StatisticsOf(WithResiduals(sky, values), kInterval, sky);
    EXPECT_EQ(r.residuals, kCount);
    EXPECT_NEAR(r.rms, kSigma, 0.05 * kSigma);
    EXPECT_NEAR(r.nextEpoch, kR, 0.01);
    EXPECT_NEAR(r.atLag[0], std::pow(kR, 2), 0.02);
    EXPECT_NEAR(r.atLag[1], std::pow(kR, 10), 0.04);
    // The tail below 0.1 is not in the sum: (0.9 - 0.9^22) / 0.1 of 9.0.
    EXPECT_NEAR(r.correlationTime, kInterval * (1.0 + 2.0 * 8.015), 0.12 * kInterval * 17.0);
    EXPECT_TRUE(std::isnan(r.rmsByElevation[0]));
    EXPECT_NEAR(r.rmsByElevation[2], r.rms, 1e-9);
}

TEST(ResidualStatistics, MeanOfASatelliteInDeviations) {
    const SkyOfSession sky = FlatSky(100, 15.0);
    std::vector<int> values;
    for (int i = 0; i < 100; ++i) {
        values.push_back(i % 2 == 0 ? 13 : -7);  // mean 3
    }
    const ResidualStatistics r = StatisticsOf(WithResiduals(sky, values), kInterval, sky);
    EXPECT_NEAR(r.rms, std::sqrt(0.5 * (169.0 + 49.0)), 1e-9);
    EXPECT_LT(r.nextEpoch, -0.8);
    EXPECT_NEAR(r.correlationTime, kInterval, 1e-9);
    EXPECT_NEAR(r.worstMean, 3.0, 1e-9);
    EXPECT_NEAR(r.worstMeanSigmas, 3.0 * 10.0 / r.rms, 1e-9);
    EXPECT_EQ(r.worstSatellite, "G05");
    EXPECT_NEAR(r.rmsByElevation[0], r.rms, 1e-9);
}

TEST(ResidualStatistics, GapsAreNoNeighbours) {
    const SkyOfSession sky = FlatSky(100, 50.0);
    engine::Solution solution = WithResiduals(sky, std::vector<int>(100, 4));
    std::erase_if(solution.residuals[0].points, [&](const engine::ResidualPoint& point) {
        return std::fmod(point.seconds - sky.times[0].seconds, 2.0 * kInterval) > 1.0;
    });
    const ResidualStatistics r = StatisticsOf(solution, kInterval, sky);
    EXPECT_EQ(r.residuals, 50U);
    EXPECT_TRUE(std::isnan(r.nextEpoch));
    EXPECT_NEAR(r.atLag[0], 1.0, 1e-12);
}

// ---- plan, workers, rows ------------------------------------------------------------------------

TEST(Plan, UnknownFieldsAndValuesAreRefused) {
    EXPECT_THROW(ParsePlan("nothing"), PlanError);
    EXPECT_THROW(ParsePlan(R"({"runs": [{"label": "a", "musk": 20}]})"), PlanError);
    EXPECT_THROW(ParsePlan(R"({"runs": [{"mask": 20}]})"), PlanError);
    EXPECT_THROW(ParsePlan(R"({"runs": [{"label": "a", "keep": [[0.5, 0.2]]}]})"), PlanError);
    EXPECT_THROW(ParsePlan(R"({"cuts": [{"durations": [60], "orbits": ["best"]}]})"), PlanError);
    EXPECT_THROW(ParsePlan(R"({"sets": [{"name": "a", "base": [], "rover": [], "known":
        {"sigmaHorizontal": 1, "sigmaUp": 1}}]})"),
                 PlanError);
    EXPECT_THROW(ReadText("/nowhere/plan.json"), PlanError);
}

TEST(Plan, RunsOfOneFeedShareTheirKey) {
    const auto runs = Runs(R"({"label": "a", "model": 2, "without": "E", "keep": [[0, 0.5]]},
        {"label": "b", "ratioThreshold": 3}, {"label": "c", "mask": 20}, {"label": "d", "mask": 25},
        {"label": "e", "ionosphere": "zeros"})");
    EXPECT_EQ(runs[0].FeedKey(), runs[1].FeedKey());
    EXPECT_NE(runs[0].FeedKey(), runs[2].FeedKey());
    EXPECT_NE(runs[2].FeedKey(), runs[3].FeedKey());
    EXPECT_NE(runs[0].FeedKey(), runs[4].FeedKey());
}

TEST(Workers, GiveTheirResultsInOrder) {
    std::vector<std::size_t> order;
    std::string all;
    InProcesses(
        50, 3,
        [](std::size_t i) {
            return std::string(i % 7 == 0 ? 200000 : 3, static_cast<char>('a' + i % 26));
        },
        [&](std::size_t i, const std::string& text) {
            order.push_back(i);
            all += text[0];
        });
    ASSERT_EQ(order.size(), 50U);
    for (std::size_t i = 0; i < order.size(); ++i) {
        EXPECT_EQ(order[i], i);
        EXPECT_EQ(all[i], static_cast<char>('a' + i % 26));
    }
}

TEST(Workers, ALostProcessIsAnError) {
    const auto make = [](std::size_t i) -> std::string {
        if (i == 5) {
            throw std::runtime_error("lost on purpose");
        }
        return "x";
    };
    EXPECT_THROW(InProcesses(10, 2, make, [](std::size_t, const std::string&) {}),
                 std::runtime_error);
}

TEST(Row, KeepsItsColumns) {
    Row row;
    row.Text("a", "one, two\n");
    row.Real("b", kUnknown);
    row.Real("c", 1234.5678, 6);
    row.Whole("d", -3);
    EXPECT_EQ(row.Names(), "a,b,c,d");
    EXPECT_EQ(row.Values(), "one; two;,,1234.57,-3");
}

}  // namespace
}  // namespace vornel::truth
