#include "difference/double_difference.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "exports/process_fixture.h"
#include "run/adjusted_session.h"

namespace vornel::test {
namespace {

using simulation::Scenario;

std::vector<AmbRstInfo> TracksOf(const StaticSolve& solver) {
    std::vector<AmbRstInfo> tracks;
    for (const AmbiguityPara& para : solver.ambiguityParas) {
        AmbRstInfo track;
        track.sat = para.sat;
        track.firstEpoch = para.firstEpoch;
        track.lastEpoch = para.lastEpoch;
        tracks.push_back(track);
    }
    return tracks;
}

std::vector<int> SatellitesOf(const std::vector<Row>& rows) {
    std::vector<int> satellites;
    for (const Row& row : rows) {
        satellites.push_back(row.sat);
    }
    return satellites;
}

class DoubleDifferences : public ProcessTest, public ::testing::WithParamInterface<int> {
  protected:
    // The double difference of the n-th row of an epoch, modelled from a rover position.
    static DoubleDifference FormAt(AdjustedSession& staged, int mode, int block, int e,
                                   std::size_t n, const XYZPosition& rover) {
        StaticSolve& solver = *staged.solver;
        const XYZPosition kept = solver.roverPosition;
        solver.roverPosition = rover;
        const std::vector<AmbRstInfo> tracks = TracksOf(solver);
        const RowFinder finder(solver, tracks, nullptr);
        DoubleDifferencer differencer(solver, mode, block, ModelForm::kConfigured);
        const StaticPeriod& period = *solver.PeriodOf(e);
        EXPECT_TRUE(differencer.TakeUpEpoch(e, period));
        const DoubleDifference formed = differencer.Form(finder.RowsOfEpoch(e, period)[n]);
        solver.roverPosition = kept;
        return formed;
    }
};
INSTANTIATE_TEST_SUITE_P(Models, DoubleDifferences, ::testing::Range(1, 7),
                         [](const auto& model) { return "Model" + std::to_string(model.param); });

TEST_P(DoubleDifferences, HoldTheirAmbiguityAndNothingElseAtTheTruth) {
    const int mode = GetParam();
    Scenario scenario = QuietScenario(4, 4, 4, mode == 6 ? 0 : 4, mode);
    scenario.phaseNoise = 0.0;
    scenario.roverAntenna = {0.09, 0.12, 1.5};
    scenario.baseAntenna = {0.06, 0.05, 0.3};
    std::fill(scenario.roverError, scenario.roverError + 3, 0.0);
    AdjustedSession staged(scenario);
    const XYZPosition rover = staged.session.rover;
    for (int block = 0; block < BlockCount(mode); ++block) {
        const auto rows = RowFinder(*staged.solver, TracksOf(*staged.solver), nullptr)
                              .RowsOfEpoch(11, staged.solver->periods[0]);
        ASSERT_EQ(rows.size(), mode == 6 ? 9u : 12u);
        for (std::size_t n = 0; n < rows.size(); ++n) {
            const DoubleDifference formed = FormAt(staged, mode, block, 11, n, rover);
            const double wavelength = formed.combination.wavelength;
            const int sat = rows[n].sat;
            double cycles = staged.TrueAmbiguity(mode, block, sat, 11);
            if (mode == 6) {
                cycles = formed.combination.narrowLane * staged.TrueAmbiguity(sat, 0, 11) +
                         formed.combination.wideLane * staged.TrueAmbiguity(5, 0, sat, 11);
            }
            EXPECT_NEAR(formed.v, cycles * wavelength, 5e-6) << sat;
        }
    }
}

TEST_P(DoubleDifferences, ChangeWithTheRoverAsTheirDirectionsSay) {
    const int mode = GetParam();
    Scenario scenario = QuietScenario(3, 3, 3, 3, mode);
    scenario.config.tropoModel = 2;
    AdjustedSession staged(scenario);
    // Without the satellite's clock the line of sight has unit length.
    for (SDObsData& epoch : staged.solver->epochs) {
        for (const int sat : staged.session.satellites) {
            epoch.satClockA[sat - 1] = epoch.satClockB[sat - 1] = 0.0;
        }
    }
    const XYZPosition rover = staged.session.rover;
    for (int block = 0; block < BlockCount(mode); ++block) {
        for (std::size_t n = 0; n < 8; ++n) {
            const DoubleDifference here = FormAt(staged, mode, block, 20, n, rover);
            for (int axis = 0; axis < 3; ++axis) {
                const double x = axis == 0 ? 50.0 : 0.0, y = axis == 1 ? 50.0 : 0.0,
                             z = axis == 2 ? 50.0 : 0.0;
                const double ahead =
                    FormAt(staged, mode, block, 20, n, {rover.X + x, rover.Y + y, rover.Z + z}).v;
                const double behind =
                    FormAt(staged, mode, block, 20, n, {rover.X - x, rover.Y - y, rover.Z - z}).v;
                // The observed stays, the computed grows along the direction. The ionosphere adds
                // some micrometres for each metre.
                EXPECT_NEAR((behind - ahead) / 100.0, here.direction[axis], 1.5e-5);
            }
        }
    }
}

TEST_P(DoubleDifferences, ChangeWithAGlonassBiasOfFrequency) {
    const int mode = GetParam();
    AdjustedSession staged(QuietScenario(3, 5, 0, 0, mode));
    const auto rows = RowFinder(*staged.solver, TracksOf(*staged.solver), nullptr)
                          .RowsOfEpoch(3, staged.solver->periods[0]);
    int different = 0;
    for (std::size_t n = 0; n < rows.size(); ++n) {
        const DoubleDifference formed = FormAt(staged, mode, 0, 3, n, staged.session.rover);
        if (rows[n].system != kGlonass) {
            EXPECT_EQ(formed.biasFactor, 0.0);
            continue;
        }
        // In megahertz of the combined carrier.
        const double f[2] = {simulation::CarrierFrequency(staged.solver->config, rows[n].sat, 0) -
                                 simulation::CarrierFrequency(staged.solver->config,
                                                              staged.ReferenceOf(kGlonass), 0),
                             simulation::CarrierFrequency(staged.solver->config, rows[n].sat, 1) -
                                 simulation::CarrierFrequency(staged.solver->config,
                                                              staged.ReferenceOf(kGlonass), 1)};
        const double expected = mode == 2   ? f[1]
                                : mode == 4 ? f[0] + f[1]
                                : mode == 5 ? f[0] - f[1]
                                            : f[0];
        EXPECT_NEAR(formed.biasFactor, expected / 1e6, 1e-9);
        different += std::fabs(formed.biasFactor) > 0.01;
    }
    EXPECT_GT(different, 1);
}

class DoubleDifferenceRows : public ProcessTest {};

TEST_F(DoubleDifferenceRows, StandInOrderOfSatellitesWithoutTheReferences) {
    AdjustedSession staged(QuietScenario(4, 4, 4, 4, 1));
    std::vector<int>& active = staged.Epoch(5).activeSats;
    std::reverse(active.begin(), active.end());
    const auto rows = RowFinder(*staged.solver, TracksOf(*staged.solver), nullptr)
                          .RowsOfEpoch(5, staged.solver->periods[0]);
    const std::vector<int> satellites = SatellitesOf(rows);
    EXPECT_EQ(satellites.size(), 12u);
    EXPECT_TRUE(std::is_sorted(satellites.begin(), satellites.end()));
    for (const Row& row : rows) {
        EXPECT_FALSE(staged.solver->periods[0].IsReference(row.sat));
        EXPECT_EQ(row.system, SplitSatNumber(row.sat));
        EXPECT_EQ(TracksOf(*staged.solver)[static_cast<std::size_t>(row.ambiguity)].sat, row.sat);
        EXPECT_EQ(row.wideLane, -1);
        EXPECT_EQ(row.para >= 0, row.system == kGlonass);
    }
}

TEST_F(DoubleDifferenceRows, NeedATrackAtTheirEpoch) {
    AdjustedSession staged(QuietScenario(5, 0, 0, 0, 1));
    std::vector<AmbRstInfo> tracks = TracksOf(*staged.solver);
    tracks[1].firstEpoch = 6;
    tracks[2].lastEpoch = 4;
    const int first = tracks[0].sat, early = tracks[3].sat;
    staged.DropOut(early, 5, 5);
    const auto rows =
        RowFinder(*staged.solver, tracks, nullptr).RowsOfEpoch(5, staged.solver->periods[0]);
    EXPECT_EQ(SatellitesOf(rows), (std::vector<int>{first}));
}

TEST_F(DoubleDifferenceRows, TakeTheFirstOfTwoTracksOfASatellite) {
    AdjustedSession staged(QuietScenario(5, 0, 0, 0, 1));
    std::vector<AmbRstInfo> tracks = TracksOf(*staged.solver);
    tracks.resize(2);
    tracks[1].sat = tracks[0].sat;
    tracks[0].lastEpoch = 10;
    tracks[1].firstEpoch = 8;
    const RowFinder finder(*staged.solver, tracks, nullptr);
    const auto trackAt = [&](int e) {
        return finder.RowsOfEpoch(e, staged.solver->periods[0])[0].ambiguity;
    };
    EXPECT_EQ(trackAt(7), 0);
    EXPECT_EQ(trackAt(9), 0);
    EXPECT_EQ(trackAt(11), 1);
}

TEST_F(DoubleDifferenceRows, OfGlonassNeedASegmentOfTheRunAsWell) {
    AdjustedSession staged(QuietScenario(0, 5, 0, 0, 1));
    const std::vector<AmbRstInfo> tracks = TracksOf(*staged.solver);
    const int sat = tracks[1].sat;
    staged.Forget(sat);
    const auto rows =
        RowFinder(*staged.solver, tracks, nullptr).RowsOfEpoch(5, staged.solver->periods[0]);
    EXPECT_EQ(rows.size(), 3u);
    for (const Row& row : rows) {
        EXPECT_NE(row.sat, sat);
        EXPECT_EQ(staged.solver->ambiguityParas[static_cast<std::size_t>(row.para)].sat, row.sat);
    }
}

TEST_F(DoubleDifferenceRows, UnderAWideLaneNeedItsTrackToo) {
    AdjustedSession staged(QuietScenario(5, 0, 0, 0, 6));
    const std::vector<AmbRstInfo> tracks = TracksOf(*staged.solver);
    std::vector<AmbRstInfo> wideLane = tracks;
    wideLane[0].firstEpoch = 9;
    std::swap(wideLane[1], wideLane[3]);
    const RowFinder finder(*staged.solver, tracks, &wideLane);
    const auto rows = finder.RowsOfEpoch(5, staged.solver->periods[0]);
    ASSERT_EQ(rows.size(), 3u);
    for (const Row& row : rows) {
        EXPECT_NE(row.sat, tracks[0].sat);
        EXPECT_EQ(wideLane[static_cast<std::size_t>(row.wideLane)].sat, row.sat);
    }
    EXPECT_EQ(finder.RowsOfEpoch(9, staged.solver->periods[0]).size(), 4u);
}

TEST_F(DoubleDifferenceRows, HaveAReferenceWhereItIsInUse) {
    AdjustedSession staged(QuietScenario(4, 0, 4, 0, 1));
    StaticSolve& solver = *staged.solver;
    staged.DropOut(staged.ReferenceOf(kBds), 5, 6);
    staged.DropOut(staged.ReferenceOf(kGps), 6, 6);
    DoubleDifferencer differencer(solver, 1, 0, ModelForm::kConfigured);
    EXPECT_TRUE(differencer.TakeUpEpoch(4, solver.periods[0]));
    EXPECT_TRUE(differencer.ReferenceOf(kGps).present);
    EXPECT_TRUE(differencer.ReferenceOf(kBds).present);
    EXPECT_FALSE(differencer.ReferenceOf(kGalileo).present);
    EXPECT_TRUE(differencer.TakeUpEpoch(5, solver.periods[0]));
    EXPECT_TRUE(differencer.ReferenceOf(kGps).present);
    EXPECT_FALSE(differencer.ReferenceOf(kBds).present);
    EXPECT_FALSE(differencer.TakeUpEpoch(6, solver.periods[0]));
}

}  // namespace
}  // namespace vornel::test
