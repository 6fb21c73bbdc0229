// Which satellites of which epochs take part, and where the periods are cut.
#include <gtest/gtest.h>

#include <vector>

#include "exports/ctrl_solve.h"
#include "run/synthetic_session.h"

namespace vornel {
namespace {

constexpr int kWeek = 2200;

// Control object with `count` epochs `interval` seconds apart, the same satellites in each.
void AddEpochs(CTRLSolve& control, int count, double interval, double start = 0.0) {
    for (int i = 0; i < count; ++i) {
        SDObsData epoch(1);
        epoch.epoch = Epoch(kWeek, start + interval * i);
        epoch.satList = {1, 2, 3, 40, 70};
        epoch.satListF1 = {1, 2, 40};
        epoch.satListF2 = {2, 3, 70};
        epoch.satListDual = {2, 40, 70};
        control.epochs.push_back(epoch);
    }
}

struct Expected {
    int start, end, count;
};

void ExpectPeriods(const StaticSolve& solver, const std::vector<Expected>& expected) {
    ASSERT_EQ(solver.periods.size(), expected.size());
    for (std::size_t p = 0; p < expected.size(); ++p) {
        const StaticPeriod& period = solver.periods[p];
        EXPECT_EQ(period.startIndex, expected[p].start);
        EXPECT_EQ(period.endIndex, expected[p].end);
        EXPECT_EQ(period.epochCount, expected[p].count);
        EXPECT_TRUE(period.startTime ==
                    solver.epochs[static_cast<std::size_t>(period.startIndex)].epoch);
        EXPECT_TRUE(period.endTime ==
                    solver.epochs[static_cast<std::size_t>(period.endIndex)].epoch);
        EXPECT_EQ(period.refSatGps, -1);
        EXPECT_EQ(period.refSatGlo, -1);
        EXPECT_EQ(period.refSatBds, -1);
        EXPECT_EQ(period.refSatGal, -1);
    }
}

// Periods of evenly spaced epochs with the default period length and minimum of epochs unless
// given.
void ExpectCut(int count, const std::vector<Expected>& expected, double interval = 30.0,
               double periodLength = 7200.0, int minEpochs = 10) {
    CTRLSolve control;
    AddEpochs(control, count, interval);
    control.config.periodLength = periodLength;
    control.config.minEpochs = minEpochs;
    const auto solver = test::MakeSolver(control);
    EXPECT_EQ(solver->CutPeriods(), 12);
    ExpectPeriods(*solver, expected);
}

// --- periods

TEST(CutPeriods, WithoutEpochsThereIsNothingToCut) {
    CTRLSolve control;
    const auto solver = test::MakeSolver(control);
    EXPECT_EQ(solver->CutPeriods(), 10);
    EXPECT_TRUE(solver->periods.empty());
}

TEST(CutPeriods, FiveHoursGiveTwoPeriodsAndALongTail) {
    ExpectCut(600, {{0, 240, 241}, {241, 481, 241}, {482, 599, 118}});
}

TEST(CutPeriods, ATailBelowFiveTimesTheMinimumJoinsTheLastPeriod) {
    ExpectCut(482 + 49, {{0, 240, 241}, {241, 530, 290}});
    ExpectCut(482 + 50, {{0, 240, 241}, {241, 481, 241}, {482, 531, 50}});
    ExpectCut(482 + 1, {{0, 240, 241}, {241, 482, 242}});
}

TEST(CutPeriods, EpochsThatEndWithAPeriodLeaveNoTail) {
    ExpectCut(482, {{0, 240, 241}, {241, 481, 241}});
    ExpectCut(241, {{0, 240, 241}});
}

TEST(CutPeriods, AFewEpochsMakeOnePeriod) {
    ExpectCut(3, {{0, 2, 3}});
    ExpectCut(1, {{0, 0, 1}});
    ExpectCut(240, {{0, 239, 240}});
}

TEST(CutPeriods, APeriodNeedsItsLengthAndItsEpochs) {
    // One epoch an hour: the length is there with the third, the count with the tenth.
    ExpectCut(10, {{0, 9, 10}}, 3600.0);
    ExpectCut(60,
              {{0, 9, 10}, {10, 19, 10}, {20, 29, 10}, {30, 39, 10}, {40, 49, 10}, {50, 59, 10}},
              3600.0);
    ExpectCut(9, {{0, 8, 9}}, 3600.0);
}

TEST(CutPeriods, ALengthOfZeroCutsByCountAlone) {
    ExpectCut(25, {{0, 9, 10}, {10, 24, 15}}, 30.0, 0.0);
    ExpectCut(4, {{0, 0, 1}, {1, 1, 1}, {2, 2, 1}, {3, 3, 1}}, 30.0, 0.0, 1);
    ExpectCut(3, {{0, 0, 1}, {1, 1, 1}, {2, 2, 1}}, 30.0, 0.0, 0);
}

TEST(CutPeriods, TheLengthCountsFromTheFirstEpochAfterTheCut) {
    CTRLSolve control;
    AddEpochs(control, 5, 10.0);
    AddEpochs(control, 7, 10.0, 1000.0);  // a pause
    control.config.periodLength = 40.0;
    control.config.minEpochs = 1;
    const auto solver = test::MakeSolver(control);
    EXPECT_EQ(solver->CutPeriods(), 12);
    ExpectPeriods(*solver, {{0, 4, 5}, {5, 11, 7}});
}

TEST(CutPeriods, APauseInsideAPeriodEndsItAtTheFirstEpochAfter) {
    CTRLSolve control;
    AddEpochs(control, 4, 10.0);
    AddEpochs(control, 6, 10.0, 1000.0);
    control.config.periodLength = 40.0;
    control.config.minEpochs = 1;
    const auto solver = test::MakeSolver(control);
    EXPECT_EQ(solver->CutPeriods(), 12);
    ExpectPeriods(*solver, {{0, 4, 5}, {5, 9, 5}});
}

TEST(CutPeriods, EpochsWithoutSatellitesCount) {
    CTRLSolve control;
    AddEpochs(control, 20, 30.0);
    for (std::size_t i = 0; i < 20; i += 2) {
        control.epochs[i].satListF1.clear();
    }
    control.config.periodLength = 270.0;
    const auto solver = test::MakeSolver(control);
    solver->solveModel = 1;
    EXPECT_EQ(solver->CutPeriods(), 12);
    ExpectPeriods(*solver, {{0, 9, 10}, {10, 19, 10}});
}

TEST(CutPeriods, AnotherCutStartsFromNothing) {
    CTRLSolve control;
    AddEpochs(control, 20, 30.0);
    const auto solver = test::MakeSolver(control);
    solver->periods.resize(3);
    EXPECT_EQ(solver->CutPeriods(), 12);
    ExpectPeriods(*solver, {{0, 19, 20}});
}

// --- satellites

class Filters : public ::testing::Test {
  protected:
    void SetUp() override {
        AddEpochs(control_, 4, 30.0);
        for (SDObsData& epoch : control_.epochs) {
            epoch.satListF1 = {3, 5, 7, 40, 70, 104};
        }
    }

    void Track(SatTrackList& list, int sat, bool isActive, std::vector<TimePeriod> gaps = {}) {
        SatTrack track;
        track.sat = sat;
        track.isActive = isActive;
        track.gaps = std::move(gaps);
        list.Add(track);
    }

    static Epoch At(double seconds) { return {kWeek, seconds}; }

    // Satellites in use at each epoch in a run of the first frequency.
    std::vector<std::vector<int>> Active() {
        const auto solver = test::MakeSolver(control_);
        solver->solveModel = 1;
        EXPECT_EQ(solver->CutPeriods(), 12);
        std::vector<std::vector<int>> active;
        for (const SDObsData& epoch : solver->epochs) {
            active.push_back(epoch.activeSats);
        }
        return active;
    }

    CTRLSolve control_;
    const std::vector<int> all_{3, 5, 7, 40, 70, 104};
};

TEST_F(Filters, TheModelChoosesTheList) {
    CTRLSolve control;
    AddEpochs(control, 2, 30.0);
    for (int model = 1; model <= 6; ++model) {
        const auto solver = test::MakeSolver(control);
        solver->solveModel = model;
        solver->epochs[0].activeSats = {99};
        solver->CutPeriods();
        for (const SDObsData& epoch : solver->epochs) {
            EXPECT_EQ(epoch.activeSats, model == 1   ? epoch.satListF1
                                        : model == 2 ? epoch.satListF2
                                                     : epoch.satListDual);
            EXPECT_EQ(epoch.satList, control.epochs[0].satList);
        }
    }
}

TEST_F(Filters, WithoutListsEverySatelliteStays) {
    EXPECT_EQ(Active(), (std::vector<std::vector<int>>{all_, all_, all_, all_}));
}

TEST_F(Filters, AbsentListsAreNoFault) {
    auto solver = test::MakeSolver(control_);
    solver->solveModel = 1;
    solver->delSatList = nullptr;
    solver->trackList0 = solver->trackList1 = solver->trackList2 = nullptr;
    EXPECT_EQ(solver->CutPeriods(), 12);
    EXPECT_EQ(solver->epochs[0].activeSats, all_);
}

TEST_F(Filters, AnyOfTheThreeListsTakesASatelliteOutOfEveryEpoch) {
    Track(control_.trackList0, 5, true);
    Track(control_.trackList1, 40, true);
    Track(control_.trackList2, 104, true);
    const std::vector<int> left{3, 7, 70};
    EXPECT_EQ(Active(), (std::vector<std::vector<int>>{left, left, left, left}));
}

TEST_F(Filters, AGapExcludesAtBothItsEnds) {
    Track(control_.trackList1, 7, false, {{At(30.0), At(60.0)}});
    const std::vector<int> left{3, 5, 40, 70, 104};
    EXPECT_EQ(Active(), (std::vector<std::vector<int>>{all_, left, left, all_}));
    Track(control_.trackList1, 7, false, {{At(30.001), At(59.999)}});
    EXPECT_EQ(Active(), (std::vector<std::vector<int>>{all_, all_, all_, all_}));
}

TEST_F(Filters, GapsOfSeveralListsAddUp) {
    Track(control_.trackList0, 7, false, {{At(0.0), At(0.0)}});
    Track(control_.trackList1, 7, false, {{At(30.0), At(30.0)}});
    Track(control_.trackList2, 7, false, {{At(90.0), At(120.0)}});
    const std::vector<int> left{3, 5, 40, 70, 104};
    EXPECT_EQ(Active(), (std::vector<std::vector<int>>{left, left, all_, left}));
}

TEST_F(Filters, TheTracksOwnSpanExcludesNothing) {
    Track(control_.trackList0, 7, false);
    control_.trackList0.tracks[0].span = TimePeriod(At(0.0), At(90.0));
    EXPECT_EQ(Active().at(1), all_);
}

TEST_F(Filters, TheDeleteListTakesItsSatellitesOutOfEveryEpoch) {
    control_.delSatList = {104, 0, 3, 99, 3};
    const std::vector<int> left{5, 7, 40, 70};
    EXPECT_EQ(Active(), (std::vector<std::vector<int>>{left, left, left, left}));
}

TEST_F(Filters, EverySatelliteCanBeTakenOutAndPeriodsAreStillMade) {
    control_.delSatList = all_;
    EXPECT_EQ(Active(), (std::vector<std::vector<int>>(4)));
}

TEST_F(Filters, ARepeatedSatelliteGoesWithAllItsEntries) {
    for (SDObsData& epoch : control_.epochs) {
        epoch.satListF1 = {5, 5, 7, 5};
    }
    control_.delSatList = {5};
    EXPECT_EQ(Active().at(0), std::vector<int>{7});
}

}  // namespace
}  // namespace vornel
