// The lines that the frame writes to the trace: exact text, order and level.
#include <gtest/gtest.h>

#include <string>

#include "VornelBlCore.h"
#include "exports/process_fixture.h"
#include "foundation/trace_fixture.h"
#include "run/synthetic_session.h"

namespace vornel {
namespace {

class Messages : public test::ProcessTest {
  protected:
    // A process that logs up to `level`.
    void Create(int level) { ASSERT_EQ(CreateBLProcessWithTrace(path_.c_str(), level), 1); }
    std::string Log() const { return test::ReadFile(path_); }

    static void Configure() {
        int systems[4] = {1, 0, 1, -1};
        InputSolveConfig(5, 0.26, 15.0, 10, 10000.0, 30000.0, 0, systems, 3.5, 0.25, 2.25, 25.0,
                         10.0, 12.3456, 0.0126, 7200.0, 1, 900.0, 20.0, 60.0, 1, 0, 0.0, 0, 0.0, 1,
                         2);
    }
    static void GiveStations() {
        double rover[3] = {4075580.12346, -931853.5, 4801568.0};
        double base[3] = {-1.0, 0.00004, 12345678.98766};
        double pcos[4][3] = {{0.001, -0.002, 0.0886},
                             {0.0004, 0.0006, 0.119},
                             {1.0, 2.0, 3.0},
                             {-100.5, 0.0, 1000.25}};
        InputAntCorrData(rover, pcos[0], pcos[1], 1.5, base, pcos[2], pcos[3], -0.25);
    }

    test::TemporaryDirectory directory_;
    std::string path_ = directory_.File("trace.txt");
};

TEST_F(Messages, TheConfigurationIsLoggedAtLevel4) {
    Create(4);
    Configure();
    EXPECT_EQ(Log(),
              "4 solveConfig: slvmode=5, EpochGap=       15.000, ratio=   2.250, "
              "Pstd=       12.346,PhaseStd=        0.013,sys=1 0 1 -1.\n");
}

TEST_F(Messages, TheStationsAreLoggedInSevenLinesAtLevel4) {
    Create(4);
    GiveStations();
    EXPECT_EQ(Log(),
              "4 xyzPosR :  4075580.1235  -931853.5000  4801568.0000.\n"
              "4 xyzPosB :       -1.0000        0.0000 12345678.9877.\n"
              "4 L1PCOR  :         0.001        -0.002         0.089.\n"
              "4 L2PCOR  :         0.000         0.001         0.119.\n"
              "4 L1PCOB  :         1.000         2.000         3.000.\n"
              "4 L2PCOB  :      -100.500         0.000      1000.250.\n"
              "4 TrueHgtR:         1.500, TrueHgtB:        -0.250.\n");
}

TEST_F(Messages, NothingOfTheInputsIsLoggedBelowLevel4) {
    Create(3);
    Configure();
    GiveStations();
    AddOneDelSat(kGps, 1);
    CleanSatTrackList();
    EXPECT_EQ(Log(), "");
}

TEST_F(Messages, ARunWithoutEpochsLogsItsSolverAndItsModelAtLevel3) {
    Create(3);
    int status = 0;
    StartProcess(&status);
    EXPECT_EQ(Log(), "3 StaticSolve : \n3 StaticSolve::SelectSolveMode: 1.\n");
}

TEST_F(Messages, NothingOfTheRunsFrameIsLoggedBelowLevel3) {
    Create(2);
    int status = 0;
    StartProcess(&status);
    EXPECT_EQ(Log(), "");
}

TEST_F(Messages, EveryPeriodLogsItsReferences) {
    Create(3);
    test::SyntheticSession session;
    session.AddSky(kGps, 5);
    session.epochCount = 48;
    session.interval = 120.0;
    session.angularRate = 2e-5;
    test::HandOver(Control(), session);
    Control().config.periodLength = 1800.0;
    Control().config.minEpochs = 3;
    // From the second period on satellite 2 alone is seen at every epoch.
    for (std::size_t i = 16; i < 48; ++i) {
        auto& list = Control().epochs[i].satListF1;
        list = i % 2 == 0 ? std::vector<int>{1, 2, 3} : std::vector<int>{2, 4, 5};
    }
    for (std::size_t i = 32; i < 48; ++i) {
        Control().epochs[i].satListF1.clear();
    }
    int status = 0;
    StartProcess(&status);
    const std::string log = Log();
    const std::string::size_type at = log.find("3 Period[0]");
    ASSERT_NE(at, std::string::npos) << log;
    EXPECT_EQ(log.substr(0, at), "3 StaticSolve : \n3 StaticSolve::SelectSolveMode: 1.\n");
    int highest = 1;
    for (int sat = 2; sat <= 5; ++sat) {
        const auto mean = [&](int number) {
            double sum = 0.0;
            for (std::size_t i = 0; i < 16; ++i) {
                const SDObsData& epoch = Control().epochs[i];
                sum += epoch.azelA[number - 1][1] + epoch.azelB[number - 1][1];
            }
            return sum;
        };
        highest = mean(sat) > mean(highest) ? sat : highest;
    }
    const std::string expected = "3 Period[0],select refsat: G" + std::to_string(highest) +
                                 " R-1 C-1 E-1.\n"
                                 "3 Period[1],select refsat: G2 R-1 C-1 E-1.\n"
                                 "3 Period[2],select refsat: G-1 R-1 C-1 E-1.\n";
    EXPECT_EQ(log.substr(at, expected.size()), expected);
}

TEST_F(Messages, ASuccessfulRunsLinesOfLevels1And3StandInOrder) {
    test::StderrCapture capture;
    Create(3);
    test::SyntheticSession session;
    session.AddSky(kGps, 6);
    test::HandOver(Control(), session);
    int status = 0;
    StartProcess(&status);
    ASSERT_EQ(status, 81);
    std::string log = Log();
    const int reference = Solver().periods.at(0).refSatGps;
    std::string expected =
        "3 StaticSolve : \n"
        "3 StaticSolve::SelectSolveMode: 1.\n"
        "3 Period[0],select refsat: G" +
        std::to_string(reference) +
        " R-1 C-1 E-1.\n"
        "3 FloatSolveMulEq : mode=1.\n"
        "1 solveModel=1,step=";
    ASSERT_EQ(log.substr(0, expected.size()), expected);
    log.erase(0, expected.size());
    const std::string::size_type end = log.find(".\n");
    ASSERT_NE(end, std::string::npos);
    const std::string step = log.substr(0, end);
    EXPECT_EQ(log.substr(end), ".\n3  LambdaAR::PAR : nb=5.\n");
    EXPECT_EQ(capture.Text(), "solveModel=1,step=" + step + ".\n");
}

}  // namespace
}  // namespace vornel
