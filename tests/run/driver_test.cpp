// The sequence of stages of each solve model, and the statuses in which runs end, brought about by
// data.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "VornelBlCore.h"
#include "exports/process_fixture.h"
#include "foundation/trace_fixture.h"
#include "run/run_status.h"
#include "run/synthetic_session.h"

namespace vornel {
namespace {

struct Outcome {
    int result = -1;
    int status = -1;
};

class Driver : public test::ProcessTest {
  protected:
    void SetUp() override {
        ProcessTest::SetUp();
        ASSERT_EQ(CreateBLProcess(), 1);
    }

    static void Hand(const test::SyntheticSession& session, int slvmode) {
        test::HandOver(Control(), session);
        Control().config.slvmode = slvmode;
    }

    static Outcome Start() {
        test::StderrCapture quiet;
        Outcome outcome;
        outcome.result = StartProcess(&outcome.status);
        EXPECT_EQ(Solver().status, outcome.status);
        return outcome;
    }

    static Outcome RunOn(const test::SyntheticSession& session, int slvmode) {
        Hand(session, slvmode);
        return Start();
    }

    // Modes of the filed solutions.
    static std::vector<int> FloatModes() {
        std::vector<int> modes(static_cast<std::size_t>(GetFloatSolNum()));
        GetFloatSolNumAndMode(GetFloatSolNum(), modes.data());
        return modes;
    }
    static std::vector<int> FixedModes() {
        std::vector<int> modes(static_cast<std::size_t>(GetFixedSolNum()));
        GetFixedSolNumAndMode(GetFixedSolNum(), modes.data());
        return modes;
    }
    static double FixedRatio(int index) {
        double ratio = -1.0;
        GetFixedSolAmbListData(index, 0, &ratio, nullptr, nullptr, nullptr, nullptr, nullptr,
                               nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                               nullptr, nullptr, nullptr, nullptr);
        return ratio;
    }
};

test::SyntheticSession SmallSession() {
    test::SyntheticSession session;
    session.AddSky(kGps, 7);
    return session;
}

constexpr int kSingleModels[] = {1, 2, 3, 4, 5};

TEST(RunStatus, NumbersOfEachModel) {
    const int expected[6][7] = {
        {40, 41, 60, 61, 62, 80, 81}, {42, 43, 63, 64, 65, 82, 83}, {44, 45, 66, 67, 68, 84, 85},
        {34, 35, 56, 57, 58, 74, 75}, {30, 31, 50, 51, 52, 70, 71}, {32, 33, 53, 54, 55, 72, 73},
    };
    for (int model = 1; model <= 6; ++model) {
        const ModelStatus& status = StatusOfModel(model);
        const int* numbers = expected[model - 1];
        EXPECT_EQ(status.floatFailed, numbers[0]);
        EXPECT_EQ(status.floatDone, numbers[1]);
        EXPECT_EQ(status.fixFailed, numbers[2]);
        EXPECT_EQ(status.ratioLow, numbers[3]);
        EXPECT_EQ(status.ratioPassed, numbers[4]);
        EXPECT_EQ(status.fixedFailed, numbers[5]);
        EXPECT_EQ(status.fixedDone, numbers[6]);
    }
    for (const int other : {0, -1, 7, 100}) {
        EXPECT_EQ(StatusOfModel(other).floatDone, 41);
        EXPECT_EQ(StatusOfModel(other).fixedDone, 81);
    }
}

TEST_F(Driver, EveryModelEndsInItsFixedStatusWithTheTrueVector) {
    const test::SyntheticSession session = SmallSession();
    const int done[] = {81, 83, 85, 75, 71};
    for (const int model : kSingleModels) {
        SCOPED_TRACE(model);
        const Outcome outcome = RunOn(session, model);
        EXPECT_EQ(outcome.result, 1);
        ASSERT_EQ(outcome.status, done[model - 1]);
        EXPECT_EQ(FloatModes(), std::vector<int>{model});
        EXPECT_EQ(FixedModes(), std::vector<int>{model});
        EXPECT_GT(FixedRatio(0), 1.8);
        const SolveResultFixed& fixed = Solver().resultManage.fixedResults.at(0);
        // The phases follow the float solution's troposphere; over two kilometres that is a matter
        // of millimetres.
        EXPECT_NEAR(fixed.dX, session.rover.X - session.base.X, 0.01);
        EXPECT_NEAR(fixed.dY, session.rover.Y - session.base.Y, 0.01);
        EXPECT_NEAR(fixed.dZ, session.rover.Z - session.base.Z, 0.01);
        EXPECT_EQ(Solver().periodValues, std::vector<double>(Solver().periods.size(), 0.0));
    }
}

TEST_F(Driver, Model6GoesThroughTheWideLane) {
    const test::SyntheticSession session = SmallSession();
    const Outcome outcome = RunOn(session, 6);
    EXPECT_EQ(outcome.result, 1);
    ASSERT_EQ(outcome.status, 73);
    EXPECT_EQ(FloatModes(), (std::vector<int>{5, 6}));
    EXPECT_EQ(FixedModes(), (std::vector<int>{5, 6}));
    EXPECT_GT(FixedRatio(0), 1.8);
    const SolveResultFixed& fixed = Solver().resultManage.fixedResults.at(1);
    EXPECT_NEAR(fixed.dX, session.rover.X - session.base.X, 0.01);
    EXPECT_NEAR(fixed.dY, session.rover.Y - session.base.Y, 0.01);
    EXPECT_NEAR(fixed.dZ, session.rover.Z - session.base.Z, 0.01);
}

TEST_F(Driver, AutomaticTakesModel1OnThisLengthAndModel6BeyondTheLimit) {
    const test::SyntheticSession session = SmallSession();
    EXPECT_EQ(RunOn(session, 0).status, 81);
    Hand(session, 0);
    Control().config.shortBaselineLimit = 1000.0;
    EXPECT_EQ(Start().status, 73);
}

TEST_F(Driver, WideLaneAloneHasNoModel6Stage) {
    ASSERT_EQ(RunOn(SmallSession(), 5).status, 71);
    EXPECT_EQ(FloatModes(), std::vector<int>{5});
    EXPECT_EQ(FixedModes(), std::vector<int>{5});
    EXPECT_GT(FixedRatio(0), 1.8);
}

TEST_F(Driver, AWideLaneRatioThatDoesNotPassEndsModel6At71) {
    Hand(SmallSession(), 6);
    Control().config.ratioThreshold = 1e9;
    EXPECT_EQ(Start().status, 71);
    EXPECT_EQ(FloatModes(), std::vector<int>{5});
    EXPECT_EQ(FixedModes(), std::vector<int>{5});
}

TEST_F(Driver, AWideLaneRatioExactlyAtTheThresholdEndsModel6At71) {
    Hand(SmallSession(), 6);
    Control().config.ratioThreshold = 99.0;  // ratios are capped at this value
    EXPECT_EQ(Start().status, 71);
    EXPECT_EQ(FixedModes(), std::vector<int>{5});
    ASSERT_EQ(FixedRatio(0), 99.0);
    Control().config.ratioThreshold = 98.9;
    EXPECT_EQ(Start().status, 73);
}

TEST_F(Driver, ALowRatioStillGetsItsFixedSolution) {
    const int done[] = {81, 83, 85, 75, 71};
    for (const int model : kSingleModels) {
        Hand(SmallSession(), model);
        Control().config.ratioThreshold = 1e9;
        EXPECT_EQ(Start().status, done[model - 1]);
        EXPECT_EQ(FixedModes(), std::vector<int>{model});
    }
}

// --- ends before the models

TEST_F(Driver, NoSystemInUseEndsAt13) {
    Hand(SmallSession(), 1);
    Control().config.useGps = 0;
    const Outcome outcome = Start();
    EXPECT_EQ(outcome.result, 1);
    EXPECT_EQ(outcome.status, 13);
    EXPECT_EQ(Solver().resultManage.tripleDiff.mode, 0);
}

TEST_F(Driver, FourZeroSystemSwitchesEndAt13) {
    Hand(SmallSession(), 1);
    SolveConfig& config = Control().config;
    config.useGps = config.useGlonass = config.useBds = config.useGalileo = 0;
    EXPECT_EQ(Start().status, 13);
}

TEST_F(Driver, SatellitesTakenOutByTheHostEndAt13) {
    Hand(SmallSession(), 1);
    for (int prn = 1; prn <= 7; ++prn) {
        AddOneDelSat(kGps, prn);
    }
    EXPECT_EQ(Start().status, 13);
    Hand(SmallSession(), 1);
    int none = 0;
    MarkDelSatList(0, &none, &none);
    EXPECT_EQ(Start().status, 81);
}

TEST_F(Driver, ASingleEpochEndsAt20) {
    test::SyntheticSession session = SmallSession();
    session.epochCount = 1;
    Hand(session, 1);
    Control().config.minEpochs = 1;
    const Outcome outcome = Start();
    EXPECT_EQ(outcome.result, 1);
    EXPECT_EQ(outcome.status, 20);
    EXPECT_EQ(Solver().roverPosition.X, Control().roverPosition.X);
    EXPECT_EQ(GetFloatSolNum(), 0);
}

// --- failed stages of the models

TEST_F(Driver, ArcsTooShortForTheFloatSolutionFailIt) {
    test::SyntheticSession session = SmallSession();
    session.epochCount = 5;  // a track needs six rows
    const int failed[] = {40, 42, 44, 34, 30, 30};
    for (int model = 1; model <= 6; ++model) {
        Hand(session, model);
        Control().config.minEpochs = 3;
        const Outcome outcome = Start();
        EXPECT_EQ(outcome.result, 1);
        EXPECT_EQ(outcome.status, failed[model - 1]);
        EXPECT_EQ(GetFloatSolNum(), 0);
        EXPECT_NE(Solver().resultManage.tripleDiff.length, 0.0);
    }
}

TEST_F(Driver, AModelThatThereIsNotFailsAtTheFloatSolution) {
    for (const int model : {-1, 7, 100}) {
        Hand(SmallSession(), model);
        const Outcome outcome = Start();
        EXPECT_EQ(outcome.result, 1);
        EXPECT_EQ(outcome.status, 40);
        EXPECT_EQ(GetFloatSolNum(), 0);
        EXPECT_NE(Solver().resultManage.tripleDiff.length, 0.0);
    }
}

// A hundred ambiguities that are no integers: the search for their best candidates runs out of
// passes.
test::SyntheticSession UnfixableSession(bool wideLaneIsWhole) {
    test::SyntheticSession session;
    session.AddSky(kGps, 35);
    session.AddSky(kBds, 36, 1, 20.0);
    session.AddSky(kGalileo, 32, 1, 70.0);
    session.epochCount = wideLaneIsWhole ? 20 : 10;
    session.interval = wideLaneIsWhole ? 30.0 : 5.0;
    std::uint32_t x = 10;
    for (test::SyntheticSatellite& satellite : session.satellites) {
        x = x * 1664525U + 1013904223U;
        const double fraction = static_cast<double>(x >> 8) / 16777216.0;
        x = x * 1664525U + 1013904223U;
        satellite.ambiguity[0] += fraction;
        satellite.ambiguity[1] +=
            wideLaneIsWhole ? fraction : static_cast<double>(x >> 8) / 16777216.0;
    }
    return session;
}

TEST_F(Driver, ASearchThatFindsNothingFailsTheFixingAndKeepsTheFloatSolution) {
    const test::SyntheticSession session = UnfixableSession(false);
    const int failed[] = {60, 63, 66, 56, 50, 50};
    for (int model = 1; model <= 6; ++model) {
        const Outcome outcome = RunOn(session, model);
        EXPECT_EQ(outcome.result, 1);
        EXPECT_EQ(outcome.status, failed[model - 1]);
        EXPECT_EQ(FloatModes(), std::vector<int>{model == 6 ? 5 : model});
        EXPECT_EQ(GetFixedSolNum(), 0);
    }
}

TEST_F(Driver, AFailedFixingOfModel6KeepsTheWideLane) {
    EXPECT_EQ(RunOn(UnfixableSession(true), 6).status, 53);
    EXPECT_EQ(FloatModes(), (std::vector<int>{5, 6}));
    EXPECT_EQ(FixedModes(), std::vector<int>{5});
}

TEST_F(Driver, AFailedFloatSolutionOfModel6KeepsTheWideLane) {
    test::SyntheticSession session = SmallSession();
    session.epochCount = 151;
    session.interval = 10.0;
    ASSERT_EQ(RunOn(session, 6).status, 73);
    const int reference = Solver().periods.at(0).refSatGps;
    // Both phases drift alike, in cycles, up and down again, too slowly for a slip: the wide lane
    // sees nothing of it, and the ionosphere-free tracks lose rows.
    for (int i = 0; i < 151; ++i) {
        const double rise = 0.2 * (i <= 75 ? i : 150 - i);
        for (int sat = 1; sat <= 7; ++sat) {
            const double drift = sat == reference ? 0.0 : sat % 2 == 0 ? rise : -rise;
            Control().epochs[static_cast<std::size_t>(i)].phase[sat - 1][0] += drift;
            Control().epochs[static_cast<std::size_t>(i)].phase[sat - 1][1] += drift;
        }
    }
    Control().config.minEpochs = 151;
    EXPECT_EQ(Start().status, 32);
    EXPECT_EQ(FloatModes(), std::vector<int>{5});
    EXPECT_EQ(FixedModes(), std::vector<int>{5});
}

// --- the longest baseline on which one frequency is fixed

TEST_F(Driver, ModelsOfOneFrequencyStayFloatFromTheLimitOn) {
    for (const auto& [model, floatDone, fixedDone] :
         {std::array{1, 41, 81}, std::array{2, 43, 83}}) {
        Hand(SmallSession(), model);
        Control().config.maxFixBaseline = 1.0;
        EXPECT_EQ(Start().status, floatDone);
        EXPECT_EQ(GetFloatSolNum(), 1);
        EXPECT_EQ(GetFixedSolNum(), 0);
        // The length that the driver compares is that after the float solution.
        const double distance = Distance(Solver().roverPosition, Solver().basePosition);
        Control().config.maxFixBaseline = distance;
        EXPECT_EQ(Start().status, floatDone);
        Control().config.maxFixBaseline = std::nextafter(distance, 1e9);
        EXPECT_EQ(Start().status, fixedDone);
    }
}

TEST_F(Driver, OtherModelsAreFixedAtAnyLength) {
    const int done[] = {0, 0, 85, 75, 71, 73};
    for (int model = 3; model <= 6; ++model) {
        Hand(SmallSession(), model);
        Control().config.maxFixBaseline = 1.0;
        EXPECT_EQ(Start().status, done[model - 1]);
    }
}

// --- exceptions

TEST_F(Driver, AnExceptionInTheFixedSolutionLeavesTheRatioStatus) {
    // Without phase noise the weights of the fixed solution are zero and its equations singular.
    const int passed[] = {62, 65, 68, 58, 52, 52};
    const int low[] = {61, 64, 67, 57, 51, 51};
    for (int model = 1; model <= 6; ++model) {
        Hand(SmallSession(), model);
        Control().config.phaseStd = 0.0;
        const Outcome outcome = Start();
        EXPECT_EQ(outcome.result, 0);
        EXPECT_EQ(outcome.status, passed[model - 1]);
        EXPECT_EQ(GetFloatSolNum(), 1);
        EXPECT_EQ(GetFixedSolNum(), 0);
        Control().config.ratioThreshold = 1e9;
        const Outcome lowOutcome = Start();
        EXPECT_EQ(lowOutcome.result, 0);
        EXPECT_EQ(lowOutcome.status, low[model - 1]);
    }
}

TEST_F(Driver, TracksThatTheTenthPassGivesUpAreStillFixed) {
    // Phases that run away from each other, slowly at first: no model holds for all epochs. The
    // float solution wanders, and its tenth pass, which rejects no row any more, erases tracks after
    // the last solve. The fixing works on that solve: its tables, and the list that they index.
    // Equal runs of both phases leave the wide lane as it is; of opposite sign they spoil it, so
    // that the fixed solution rejects every row and its equations are singular.
    struct Case {
        int model;
        double second;  // times the run of the first phase
        int result, status;
        std::vector<int> floatModes, fixedModes;
    };
    for (const Case& c : {Case{1, 1.0, 1, 81, {1}, {1}},
                          {2, 1.0, 1, 83, {2}, {2}},
                          {3, 1.0, 1, 85, {3}, {3}},
                          {4, 1.0, 1, 75, {4}, {4}},
                          {5, -1.0, 0, 51, {5}, {}},
                          {6, -1.0, 0, 51, {5}, {}},
                          {6, 1.0, 1, 73, {5, 6}, {5, 6}}}) {
        SCOPED_TRACE(c.status);
        test::SyntheticSession session = SmallSession();
        session.epochCount = 151;
        session.interval = 10.0;
        Hand(session, c.model);
        for (int i = 0; i < 151; ++i) {
            for (int sat = 1; sat <= 7; ++sat) {
                const double run = 0.05 * i * i / 150.0 * (sat % 3 - 1);
                Control().epochs[static_cast<std::size_t>(i)].phase[sat - 1][0] += run;
                Control().epochs[static_cast<std::size_t>(i)].phase[sat - 1][1] += c.second * run;
            }
        }
        const Outcome outcome = Start();
        EXPECT_EQ(outcome.result, c.result);
        EXPECT_EQ(outcome.status, c.status);
        EXPECT_EQ(FloatModes(), c.floatModes);
        EXPECT_EQ(FixedModes(), c.fixedModes);
        const PeriodEquations& equations = Solver().equationBlock;
        ASSERT_EQ(equations.tables.ambCount.size(), 1u);
        EXPECT_EQ(equations.ambiguities.size() * (c.model == 3 ? 2 : 1),
                  static_cast<std::size_t>(equations.tables.ambCount[0]));
        // The record of the float solution tells the tracks that the last pass kept.
        EXPECT_LT(Solver().resultManage.floatResults.back().ambiguities.size(),
                  equations.ambiguities.size());
    }
}

TEST_F(Driver, AnExceptionInTheFloatSolutionLeavesStatus21) {
    // All GLONASS satellites on one channel have no inter-frequency bias to solve for, and without
    // phase noise nothing holds it.
    test::SyntheticSession session;
    session.AddSky(kGlonass, 6);
    for (test::SyntheticSatellite& satellite : session.satellites) {
        satellite.channel = 3;
    }
    Hand(session, 1);
    ASSERT_EQ(Control().hasGlonass, 1);
    Control().config.phaseStd = 0.0;
    const Outcome outcome = Start();
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.status, 21);
    EXPECT_NE(Solver().resultManage.tripleDiff.length, 0.0);
    EXPECT_EQ(GetFloatSolNum(), 0);
}

TEST_F(Driver, ARunAfterAnExceptionStartsAnew) {
    Hand(SmallSession(), 1);
    Control().config.phaseStd = 0.0;
    ASSERT_EQ(Start().result, 0);
    Control().config.phaseStd = 0.01;
    const Outcome outcome = Start();
    EXPECT_EQ(outcome.result, 1);
    EXPECT_EQ(outcome.status, 81);
}

// --- the preliminary stage

TEST_F(Driver, TheReservedFlagPutsThePreliminaryBaselineBeforeTheTripleDifferences) {
    const test::SyntheticSession session = SmallSession();
    Hand(session, 1);
    Control().reservedProcessFlag = 1;
    // Otherwise the observed differences are those of the model to the last digit.
    for (std::size_t i = 0; i < Control().epochs.size(); ++i) {
        for (int s = 0; s < 7; ++s) {
            Control().epochs[i].sdObserved[s] +=
                0.01 * std::sin(3.0 * static_cast<double>(i) + 7.0 * s);
        }
    }
    EXPECT_EQ(Start().status, 81);
    EXPECT_EQ(Solver().priorBaselineCov.RowCount(), 3U);
    EXPECT_NEAR(Solver().priorBaseline.X, session.rover.X, 0.05);
    EXPECT_NEAR(Solver().priorBaseline.Y, session.rover.Y, 0.05);
    EXPECT_NEAR(Solver().priorBaseline.Z, session.rover.Z, 0.05);
}

TEST_F(Driver, AFailedPreliminaryBaselineEndsAt14) {
    Hand(SmallSession(), 1);
    Control().reservedProcessFlag = 1;
    Control().config.codeStd = 1e-6;
    for (std::size_t i = 0; i < Control().epochs.size(); ++i) {
        for (int s = 0; s < 7; ++s) {
            Control().epochs[i].sdObserved[s] += std::sin(3.0 * static_cast<double>(i) + 7.0 * s);
        }
    }
    const Outcome outcome = Start();
    EXPECT_EQ(outcome.result, 1);
    EXPECT_EQ(outcome.status, 14);
    EXPECT_EQ(Solver().resultManage.tripleDiff.length, 0.0);
    EXPECT_EQ(Solver().roverPosition.X, Control().roverPosition.X);
}

TEST_F(Driver, WithoutTheFlagThePreliminaryBaselineDoesNotRun) {
    for (const int flag : {0, 2}) {
        Hand(SmallSession(), 1);
        Control().reservedProcessFlag = flag;
        Control().config.codeStd = 1e-6;
        EXPECT_EQ(Start().status, 81);
        EXPECT_EQ(Solver().priorBaseline.X, 0.0);
        EXPECT_EQ(Solver().priorBaselineCov.RowCount(), 6U);
    }
}

}  // namespace
}  // namespace vornel
