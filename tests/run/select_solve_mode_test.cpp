// Choice of the solve model from mode, length, latitude and receivers.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "exports/process_fixture.h"
#include "foundation/trace_fixture.h"
#include "run/synthetic_session.h"

namespace vornel {
namespace {

struct Choice {
    int slvmode = 0;
    double limit = 10000.0;
    double latitude = 45.0;  // degrees
    double distance = 1000.0;
    int roverDual = 1;
    int baseDual = 1;
};

std::unique_ptr<StaticSolve> SolverFor(const Choice& choice) {
    CTRLSolve control;
    control.config.slvmode = choice.slvmode;
    control.config.shortBaselineLimit = choice.limit;
    control.roverPosition = test::GeodeticPoint(choice.latitude, 20.0, 100.0);
    control.basePosition = control.roverPosition;
    control.basePosition.Y += choice.distance;
    control.roverDualFreq = choice.roverDual;
    control.baseDualFreq = choice.baseDual;
    return test::MakeSolver(control);
}

int ModelFor(const Choice& choice) {
    const std::unique_ptr<StaticSolve> solver = SolverFor(choice);
    solver->SelectSolveMode();
    EXPECT_EQ(solver->resultManage.solveModel, solver->solveModel);
    return solver->solveModel;
}

TEST(SelectSolveMode, AutomaticTakesTheFirstFrequencyBelowTheLimitAndModel6Above) {
    EXPECT_EQ(ModelFor({.distance = 9999.0}), 1);
    EXPECT_EQ(ModelFor({.distance = 10001.0}), 6);
    EXPECT_EQ(ModelFor({.limit = 20000.0, .distance = 19999.0}), 1);
    EXPECT_EQ(ModelFor({.limit = 20000.0, .distance = 20001.0}), 6);
}

TEST(SelectSolveMode, ADistanceEqualToTheLimitGivesModel6) {
    const std::unique_ptr<StaticSolve> solver = SolverFor({.distance = 7654.321});
    const double distance = Distance(solver->roverPosition, solver->basePosition);
    solver->config.shortBaselineLimit = distance;
    solver->SelectSolveMode();
    EXPECT_EQ(solver->solveModel, 6);
    solver->config.shortBaselineLimit = std::nextafter(distance, 1e9);
    solver->SelectSolveMode();
    EXPECT_EQ(solver->solveModel, 1);
}

TEST(SelectSolveMode, LowLatitudesCutTheLimit) {
    for (const double side : {1.0, -1.0}) {
        EXPECT_EQ(ModelFor({.latitude = side * 10.0, .distance = 4999.0}), 1);
        EXPECT_EQ(ModelFor({.latitude = side * 10.0, .distance = 5001.0}), 6);
        EXPECT_EQ(ModelFor({.latitude = side * 19.999, .distance = 5001.0}), 6);
        EXPECT_EQ(ModelFor({.latitude = side * 20.001, .distance = 5001.0}), 1);
        EXPECT_EQ(ModelFor({.latitude = side * 20.001, .distance = 5999.0}), 1);
        EXPECT_EQ(ModelFor({.latitude = side * 23.499, .distance = 5999.0}), 1);
        EXPECT_EQ(ModelFor({.latitude = side * 23.499, .distance = 6001.0}), 6);
        EXPECT_EQ(ModelFor({.latitude = side * 23.501, .distance = 6001.0}), 1);
        EXPECT_EQ(ModelFor({.latitude = side * 23.501, .distance = 9999.0}), 1);
        EXPECT_EQ(ModelFor({.latitude = side * 23.501, .distance = 10001.0}), 6);
    }
}

TEST(SelectSolveMode, ALimitBelowTheCutsStandsAtEveryLatitude) {
    for (const double latitude : {-22.0, -5.0, 5.0, 19.0, 22.0, 50.0, 80.0}) {
        EXPECT_EQ(ModelFor({.limit = 3000.0, .latitude = latitude, .distance = 2999.0}), 1);
        EXPECT_EQ(ModelFor({.limit = 3000.0, .latitude = latitude, .distance = 3001.0}), 6);
    }
}

TEST(SelectSolveMode, ALimitBetweenTheTwoCutsIsCutBelow20DegreesAlone) {
    EXPECT_EQ(ModelFor({.limit = 5500.0, .latitude = 19.0, .distance = 5400.0}), 6);
    EXPECT_EQ(ModelFor({.limit = 5500.0, .latitude = 21.0, .distance = 5400.0}), 1);
    EXPECT_EQ(ModelFor({.limit = 5500.0, .latitude = 21.0, .distance = 5600.0}), 6);
}

// Walks positions across a latitude in the smallest steps there are; below it, on it and above, the
// zone must be that of "at least".
void ExpectBoundary(double degrees, double distance, int below, int atOrAbove) {
    const std::unique_ptr<StaticSolve> solver = SolverFor({.latitude = degrees});
    const XYZPosition middle = solver->roverPosition;
    int seenBelow = 0, seenOn = 0, seenAbove = 0;
    double x = middle.X;
    for (int i = 0; i < 50; ++i) {
        x = std::nextafter(x, 1e9);
        double z = middle.Z;
        for (int step = 0; step < 600; ++step) {
            z = std::nextafter(z, 0.0);
        }
        for (int step = 0; step < 1200; ++step) {
            z = std::nextafter(z, 1e9);
            solver->roverPosition = XYZPosition(x, middle.Y, z);
            const double latitude = solver->roverPosition.ToBLH().B * 57.29577951308232;
            seenBelow += latitude < degrees ? 1 : 0;
            seenOn += latitude == degrees ? 1 : 0;
            seenAbove += latitude > degrees ? 1 : 0;
            if (std::fabs(latitude - degrees) > 2e-14) {
                continue;
            }
            solver->basePosition = XYZPosition(x, middle.Y + distance, z);
            solver->SelectSolveMode();
            ASSERT_EQ(solver->solveModel, latitude < degrees ? below : atOrAbove) << latitude;
        }
    }
    EXPECT_GT(seenBelow, 0);
    EXPECT_GT(seenOn, 0);
    EXPECT_GT(seenAbove, 0);
}

TEST(SelectSolveMode, TheZonesMeetExactlyAt20And23AndAHalfDegrees) {
    ExpectBoundary(20.0, 5500.0, 6, 1);
    ExpectBoundary(23.5, 8000.0, 6, 1);
}

TEST(SelectSolveMode, AForcedModelStandsWithTwoFrequencies) {
    for (int mode = 1; mode <= 6; ++mode) {
        EXPECT_EQ(ModelFor({.slvmode = mode, .distance = 100.0}), mode);
        EXPECT_EQ(ModelFor({.slvmode = mode, .distance = 90000.0}), mode);
    }
}

TEST(SelectSolveMode, OneFrequencyAtEitherReceiverFallsBackOnAutomatic) {
    for (const auto& [rover, base] : {std::pair{0, 1}, std::pair{1, 0}, std::pair{0, 0}}) {
        for (int mode = 2; mode <= 6; ++mode) {
            const std::unique_ptr<StaticSolve> solver = SolverFor(
                {.slvmode = mode, .distance = 90000.0, .roverDual = rover, .baseDual = base});
            solver->SelectSolveMode();
            EXPECT_EQ(solver->solveModel, 1);
            EXPECT_EQ(solver->config.slvmode, 0);
        }
        EXPECT_EQ(ModelFor({.distance = 90000.0, .roverDual = rover, .baseDual = base}), 1);
        EXPECT_EQ(ModelFor({.distance = 10.0, .roverDual = rover, .baseDual = base}), 1);
    }
}

TEST(SelectSolveMode, TheFirstFrequencyForcedStaysForcedWithOneFrequency) {
    const std::unique_ptr<StaticSolve> solver =
        SolverFor({.slvmode = 1, .distance = 90000.0, .roverDual = 0, .baseDual = 0});
    solver->SelectSolveMode();
    EXPECT_EQ(solver->solveModel, 1);
    EXPECT_EQ(solver->config.slvmode, 1);
}

TEST(SelectSolveMode, StationsAtTheEarthsCentreCountAsAShortBaseline) {
    CTRLSolve control;
    control.roverDualFreq = control.baseDualFreq = 1;
    const std::unique_ptr<StaticSolve> solver = test::MakeSolver(control);
    solver->SelectSolveMode();
    EXPECT_EQ(solver->solveModel, 1);
}

TEST(SelectSolveMode, TheChoiceIsLoggedAtLevel3) {
    for (const int level : {2, 3}) {
        test::TemporaryDirectory directory;
        const std::string path = directory.File("trace.txt");
        const std::unique_ptr<StaticSolve> solver = SolverFor({.distance = 20000.0});
        TraceOpen(path.c_str());
        TraceSetLevel(level);
        solver->SelectSolveMode();
        TraceClose();
        TraceSetLevel(0);
        EXPECT_EQ(test::ReadFile(path), level == 3 ? "3 StaticSolve::SelectSolveMode: 6.\n" : "");
    }
}

}  // namespace
}  // namespace vornel
