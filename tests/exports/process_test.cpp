// The life of the two process-wide objects: what each call makes, deletes and leaves, and in which
// order.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "VornelBlCore.h"
#include "exports/process_fixture.h"
#include "foundation/trace_fixture.h"
#include "run/synthetic_session.h"

namespace vornel {
namespace {

class ProcessLife : public test::ProcessTest {};

// What happened, in order.
std::vector<std::string>& Events() {
    static std::vector<std::string> events;
    return events;
}

class WatchedControl : public CTRLSolve {
  public:
    ~WatchedControl() override {
        Events().push_back(CurrentProcess().solver ? "control before solver" : "control");
    }
};

class WatchedSolver : public StaticSolve {
  public:
    explicit WatchedSolver(const int* hostStatus = nullptr)
        : StaticSolve(0, 0, SolveConfig(), {}, nullptr, nullptr, nullptr, nullptr, 0, XYZPosition(),
                      kZeros, kZeros, 0.0, 0, XYZPosition(), kZeros, kZeros, 0.0),
          hostStatus_(hostStatus) {}
    WatchedSolver(const WatchedSolver&) = delete;
    WatchedSolver& operator=(const WatchedSolver&) = delete;
    ~WatchedSolver() override {
        Events().push_back(
            hostStatus_ == nullptr ? "solver" : "solver at status " + std::to_string(*hostStatus_));
        TraceWrite(3, "earlier solver gone\n");
    }

  private:
    static constexpr double kZeros[3] = {0.0, 0.0, 0.0};
    const int* hostStatus_;
};

void Plant(const int* hostStatus = nullptr) {
    CurrentProcess().control = std::make_unique<WatchedControl>();
    CurrentProcess().solver = std::make_unique<WatchedSolver>(hostStatus);
    Events().clear();
}

TEST_F(ProcessLife, NothingExistsBeforeTheFirstCreate) {
    EXPECT_EQ(CurrentProcess().control, nullptr);
    EXPECT_EQ(CurrentProcess().solver, nullptr);
}

TEST_F(ProcessLife, CreateMakesAControlObjectAndNoSolver) {
    EXPECT_EQ(CreateBLProcess(), 1);
    EXPECT_NE(CurrentProcess().control, nullptr);
    EXPECT_EQ(CurrentProcess().solver, nullptr);
}

TEST_F(ProcessLife, EveryRoadDeletesTheSolverBeforeTheControlObject) {
    const std::vector<std::string> expected{"solver", "control"};
    Plant();
    EXPECT_EQ(CreateBLProcess(), 1);
    EXPECT_EQ(Events(), expected);
    EXPECT_NE(CurrentProcess().control, nullptr);
    Plant();
    EXPECT_EQ(CreateBLProcessWithTrace("", 0), 1);
    EXPECT_EQ(Events(), expected);
    EXPECT_NE(CurrentProcess().control, nullptr);
    Plant();
    EXPECT_EQ(DiposeProcess(), 1);
    EXPECT_EQ(Events(), expected);
    EXPECT_EQ(CurrentProcess().control, nullptr);
    EXPECT_EQ(CurrentProcess().solver, nullptr);
}

TEST_F(ProcessLife, CreateStartsOver) {
    CreateBLProcess();
    test::SyntheticSession session;
    session.AddSky(kGps, 6);
    session.epochCount = 3;
    test::HandOver(Control(), session);
    AddOneDelSat(kGps, 1);
    CreateBLProcess();
    EXPECT_TRUE(Control().epochs.empty());
    EXPECT_TRUE(Control().delSatList.empty());
    EXPECT_EQ(Control().roverDualFreq, 0);
    EXPECT_EQ(Control().basePosition.X, 0.0);
}

TEST_F(ProcessLife, StartClearsTheStatusAndDeletesTheEarlierSolverBeforeItMakesANewOne) {
    test::TemporaryDirectory directory;
    const std::string path = directory.File("trace.txt");
    int status = 99;
    Plant(&status);
    TraceOpen(path.c_str());
    TraceSetLevel(3);
    EXPECT_EQ(StartProcess(&status), 1);
    EXPECT_EQ(Events(), std::vector<std::string>{"solver at status 0"});
    EXPECT_EQ(status, 10);
    ASSERT_NE(CurrentProcess().solver, nullptr);
    EXPECT_NE(dynamic_cast<WatchedControl*>(CurrentProcess().control.get()), nullptr);
    EXPECT_EQ(dynamic_cast<WatchedSolver*>(CurrentProcess().solver.get()), nullptr);
    EXPECT_EQ(test::ReadFile(path),
              "3 earlier solver gone\n3 StaticSolve : \n3 StaticSolve::SelectSolveMode: 1.\n");
}

TEST_F(ProcessLife, StartWithoutEpochsEndsAt10) {
    CreateBLProcess();
    int status = 99;
    EXPECT_EQ(StartProcess(&status), 1);
    EXPECT_EQ(status, 10);
    EXPECT_EQ(Solver().status, 10);
    EXPECT_TRUE(Solver().periods.empty());
    EXPECT_EQ(Solver().resultManage.tripleDiff.mode, 0);
    EXPECT_EQ(Solver().resultManage.tripleDiff.length, 0.0);
    EXPECT_TRUE(Solver().resultManage.floatResults.empty());
    EXPECT_TRUE(Solver().resultManage.fixedResults.empty());
}

TEST_F(ProcessLife, TheSolverCopiesWhatItChangesAndRefersToTheLists) {
    CreateBLProcess();
    test::SyntheticSession session;
    session.AddSky(kGps, 6);
    session.epochCount = 3;
    session.pcoRover[0] = 0.1;
    session.pcoRover[1] = 0.2;
    session.pcoBase[0] = 0.3;
    session.pcoBase[1] = 0.4;
    session.heightRover = 1.1;
    session.heightBase = 1.2;
    test::HandOver(Control(), session);
    Control().l1PcoRover[0] = 0.5;
    Control().l2PcoBase[1] = 0.6;
    Control().hasGlonass = 1;
    Control().baseDualFreq = 0;
    Control().config.minEpochs = 2;
    int status = 0;
    ASSERT_EQ(StartProcess(&status), 1);
    StaticSolve& solver = Solver();
    EXPECT_EQ(solver.hasGlonass, 1);
    EXPECT_EQ(solver.roverDualFreq, 1);
    EXPECT_EQ(solver.baseDualFreq, 0);
    EXPECT_EQ(solver.reservedProcessFlag, 0);
    EXPECT_EQ(solver.basePosition.Y, session.base.Y);
    EXPECT_EQ(solver.l1PcoRover[0], 0.5);
    EXPECT_EQ(solver.l1PcoRover[2], 0.1);
    EXPECT_EQ(solver.l2PcoRover[2], 0.2);
    EXPECT_EQ(solver.l1PcoBase[2], 0.3);
    EXPECT_EQ(solver.l2PcoBase[1], 0.6);
    EXPECT_EQ(solver.l2PcoBase[2], 0.4);
    EXPECT_EQ(solver.trueHeightRover, 1.1);
    EXPECT_EQ(solver.trueHeightBase, 1.2);
    EXPECT_EQ(solver.epochs.size(), 3U);
    EXPECT_EQ(solver.delSatList, &Control().delSatList);
    EXPECT_EQ(solver.trackList0, &Control().trackList0);
    EXPECT_EQ(solver.trackList1, &Control().trackList1);
    EXPECT_EQ(solver.trackList2, &Control().trackList2);
    // The run filled the working lists of its own epochs; those handed over are as they were.
    EXPECT_EQ(solver.epochs[0].activeSats.size(), 6U);
    EXPECT_TRUE(Control().epochs[0].activeSats.empty());
    EXPECT_EQ(Control().epochs[0].phase[0][0], session.Epochs()[0].phase[0][0]);
}

TEST_F(ProcessLife, ASolverThatWasNotRunHasNoStatusAndEmptyFields) {
    CTRLSolve control;
    const std::unique_ptr<StaticSolve> solver = test::MakeSolver(control);
    EXPECT_EQ(solver->status, 0);
    EXPECT_EQ(solver->periodFlag, 0);
    EXPECT_TRUE(solver->periods.empty());
    EXPECT_TRUE(solver->ambiguityParas.empty());
    EXPECT_TRUE(solver->periodValues.empty());
    EXPECT_EQ(solver->priorBaseline.X, 0.0);
    EXPECT_EQ(solver->priorBaselineCov.RowCount(), 6U);
    EXPECT_EQ(solver->priorBaselineCov.ColCount(), 6U);
}

TEST_F(ProcessLife, LaterInputsDoNotChangeTheExistingSolver) {
    CreateBLProcess();
    test::SyntheticSession session;
    session.AddSky(kGps, 6);
    test::HandOver(Control(), session);
    int status = 0;
    ASSERT_EQ(StartProcess(&status), 1);
    ASSERT_EQ(status, 81);
    Control().epochs.clear();
    Control().config.minEpochs = 99;
    Control().basePosition.X = 0.0;
    EXPECT_EQ(Solver().epochs.size(), 40U);
    EXPECT_EQ(Solver().config.minEpochs, 10);
    EXPECT_EQ(Solver().basePosition.X, session.base.X);
    EXPECT_EQ(GetFixedSolNum(), 1);
}

TEST_F(ProcessLife, ASecondStartDiscardsTheResultsOfTheFirst) {
    CreateBLProcess();
    test::SyntheticSession session;
    session.AddSky(kGps, 6);
    test::HandOver(Control(), session);
    int status = 0;
    ASSERT_EQ(StartProcess(&status), 1);
    ASSERT_EQ(status, 81);
    ASSERT_EQ(GetFloatSolNum(), 1);
    ASSERT_EQ(GetFixedSolNum(), 1);
    Control().epochs.clear();
    EXPECT_EQ(StartProcess(&status), 1);
    EXPECT_EQ(status, 10);
    EXPECT_EQ(GetFloatSolNum(), 0);
    EXPECT_EQ(GetFixedSolNum(), 0);
    EXPECT_EQ(Solver().resultManage.tripleDiff.length, 0.0);
}

TEST_F(ProcessLife, ARunCanBeRepeatedToTheSameResult) {
    CreateBLProcess();
    test::SyntheticSession session;
    session.AddSky(kGps, 6);
    test::HandOver(Control(), session);
    int status = 0;
    ASSERT_EQ(StartProcess(&status), 1);
    const int firstStatus = status;
    const SolveResultFixed first = Solver().resultManage.fixedResults.at(0);
    ASSERT_EQ(StartProcess(&status), 1);
    const SolveResultFixed& second = Solver().resultManage.fixedResults.at(0);
    EXPECT_EQ(status, firstStatus);
    EXPECT_EQ(second.dX, first.dX);
    EXPECT_EQ(second.dY, first.dY);
    EXPECT_EQ(second.dZ, first.dZ);
    EXPECT_EQ(second.ratio, first.ratio);
    EXPECT_EQ(second.rms, first.rms);
}

TEST_F(ProcessLife, DisposeWithoutAProcessStillWritesItsLineAndAnswers1) {
    test::TemporaryDirectory directory;
    const std::string path = directory.File("trace.txt");
    TraceOpen(path.c_str());
    TraceSetLevel(1);
    std::string errors;
    {
        test::StderrCapture capture;
        EXPECT_EQ(DiposeProcess(), 1);
        EXPECT_EQ(DiposeProcess(), 1);
        errors = capture.Text();
    }
    EXPECT_EQ(errors, "CTRLSolve::Dispose suc.\nCTRLSolve::Dispose suc.\n");
    EXPECT_EQ(test::ReadFile(path), "1 CTRLSolve::Dispose suc.\n");
}

TEST_F(ProcessLife, DisposeWritesItsLineAfterTheDeletionAndThenClosesTheTrace) {
    test::TemporaryDirectory directory;
    const std::string path = directory.File("trace.txt");
    test::StderrCapture capture;
    ASSERT_EQ(CreateBLProcessWithTrace(path.c_str(), 3), 1);
    Plant();  // its solver logs its own construction
    TraceWrite(3, "before\n");
    EXPECT_EQ(DiposeProcess(), 1);
    TraceWrite(3, "after\n");
    EXPECT_EQ(test::ReadFile(path),
              "3 StaticSolve : \n3 before\n3 earlier solver gone\n1 CTRLSolve::Dispose suc.\n");
    EXPECT_EQ(capture.Text(), "CTRLSolve::Dispose suc.\n");
}

TEST_F(ProcessLife, CreateWithoutTraceLeavesTheTraceOpen) {
    test::TemporaryDirectory directory;
    const std::string path = directory.File("trace.txt");
    ASSERT_EQ(CreateBLProcessWithTrace(path.c_str(), 3), 1);
    ASSERT_EQ(CreateBLProcess(), 1);
    TraceWrite(3, "still there\n");
    EXPECT_EQ(test::ReadFile(path), "3 still there\n");
}

TEST_F(ProcessLife, CreateWithTraceReplacesTheTrace) {
    test::TemporaryDirectory directory;
    const std::string first = directory.File("first.txt");
    const std::string second = directory.File("second.txt");
    ASSERT_EQ(CreateBLProcessWithTrace(first.c_str(), 5), 1);
    TraceWrite(5, "one\n");
    Plant();
    ASSERT_EQ(CreateBLProcessWithTrace(second.c_str(), 3), 1);
    TraceWrite(5, "two\n");
    TraceWrite(3, "three\n");
    EXPECT_EQ(test::ReadFile(first), "5 one\n3 StaticSolve : \n");
    // The trace is changed before the earlier process goes.
    EXPECT_EQ(test::ReadFile(second), "3 earlier solver gone\n3 three\n");
}

TEST_F(ProcessLife, AnEmptyTracePathLogsToTheStandardErrorStream) {
    test::StderrCapture capture;
    ASSERT_EQ(CreateBLProcessWithTrace("", 3), 1);
    int status = 0;
    ASSERT_EQ(StartProcess(&status), 1);
    EXPECT_EQ(capture.Text(), "3 StaticSolve : \n3 StaticSolve::SelectSolveMode: 1.\n");
}

}  // namespace
}  // namespace vornel
