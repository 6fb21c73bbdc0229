// What must come of a session that is turned, moved or shifted as a whole.
#include <gtest/gtest.h>

#include <cmath>
#include <utility>

#include "properties/random_sessions.h"
#include "simulation/noise.h"

namespace vornel::properties {
namespace {

XYZPosition Plus(const XYZPosition& a, const XYZPosition& b) {
    return {a.X + b.X, a.Y + b.Y, a.Z + b.Z};
}
XYZPosition Minus(const XYZPosition& a, const XYZPosition& b) {
    return {a.X - b.X, a.Y - b.Y, a.Z - b.Z};
}

// The rover's place becomes the base, known exactly, and the other way round.
Session Exchanged(Session session) {
    const XYZPosition error = Minus(session.roverApproximate, session.rover);
    std::swap(session.base, session.rover);
    session.roverApproximate = Plus(session.rover, error);
    std::swap(session.scenario.roverAntenna, session.scenario.baseAntenna);
    for (simulation::SessionEpoch& epoch : session.epochs) {
        std::swap(epoch.rover, epoch.base);
    }
    return session;
}

class Geometry : public Law {};
INSTANTIATE_TEST_SUITE_P(Models, Geometry, ::testing::Range(1, 7), NameOfModel);

TEST_P(Geometry, BaseAndRoverExchangedNegateTheVectorToWithinItsFormalError) {
    for (std::uint64_t number = 0; number < kSeeds; ++number) {
        SCOPED_TRACE(number);
        test::ForgetProcess();
        const Session session = simulation::Simulate(RandomScenario(model(), SeedOf(number)));
        simulation::RunSession(session);
        const SolveResult there = FinalSolution();
        simulation::RunSession(Exchanged(session));
        SolveResult back = FinalSolution();
        EXPECT_EQ(back.mode, there.mode);
        EXPECT_LT(std::hypot(there.dX + back.dX, there.dY + back.dY, there.dZ + back.dZ),
                  there.sigma3);
    }
}

TEST_P(Geometry, ABaseMovedByAMillimetreMovesTheRoverTheSame) {
    for (std::uint64_t number = 0; number < kSeeds; ++number) {
        SCOPED_TRACE(number);
        test::ForgetProcess();
        Session session = simulation::Simulate(RandomScenario(model(), SeedOf(number)));
        simulation::RunSession(session);
        const SolveResult before = FinalSolution();
        Draw draw(SeedOf(number));
        const XYZPosition moved(draw.Real(-6e-4, 6e-4), draw.Real(-6e-4, 6e-4),
                                draw.Real(-6e-4, 6e-4));
        session.base = Plus(session.base, moved);
        session.roverApproximate = Plus(session.roverApproximate, moved);
        simulation::RunSession(session);
        EXPECT_LT(Difference(FinalSolution(), before), 1e-6);
    }
}

TEST_P(Geometry, AnotherApproximatePositionOfTheRoverGivesTheSameVector) {
    for (std::uint64_t number = 0; number < kSeeds; ++number) {
        SCOPED_TRACE(number);
        test::ForgetProcess();
        Session session = simulation::Simulate(RandomScenario(model(), SeedOf(number)));
        simulation::RunSession(session);
        const SolveResult before = FinalSolution();
        Draw draw(SeedOf(number));
        session.roverApproximate =
            Plus(session.rover, {draw.Real(-9.0, 9.0), draw.Real(-9.0, 9.0), draw.Real(-9.0, 9.0)});
        simulation::RunSession(session);
        EXPECT_LT(Difference(FinalSolution(), before), 1e-4);
    }
}

// The whole session `weeks` later, with its ephemerides.
Session Later(const Session& session, int weeks) {
    Scenario scenario = session.scenario;
    scenario.week += weeks;
    Session later = simulation::Simulate(scenario);
    later.epochs = session.epochs;
    for (simulation::SessionEpoch& epoch : later.epochs) {
        epoch.rover.week += weeks;
        epoch.base.week += weeks;
    }
    return later;
}

TEST_P(Geometry, WholeWeeksLaterTheFloatVectorIsTheSame) {
    for (std::uint64_t number = 0; number < kSeeds; ++number) {
        SCOPED_TRACE(number);
        test::ForgetProcess();
        const Session session = simulation::Simulate(RandomScenario(model(), SeedOf(number)));
        simulation::RunSession(session);
        const SolveResult before = LastFloatSolution();
        for (const int weeks : {1, 52, -700}) {
            test::ForgetProcess();
            simulation::RunSession(Later(session, weeks));
            EXPECT_LT(Difference(LastFloatSolution(), before), 1e-6) << weeks;
        }
    }
}

TEST_P(Geometry, WholeCyclesAddedToASatellitesPhasesThroughoutLeaveTheVector) {
    for (std::uint64_t number = 0; number < kSeeds; ++number) {
        SCOPED_TRACE(number);
        test::ForgetProcess();
        Session session = simulation::Simulate(RandomScenario(model(), SeedOf(number)));
        simulation::RunSession(session);
        const SolveResult before = FinalSolution();
        for (simulation::SessionEpoch& epoch : session.epochs) {
            for (std::size_t slot = 0; epoch.rover.satellites[slot] != 0; ++slot) {
                const auto satellite = static_cast<std::uint64_t>(epoch.rover.satellites[slot]);
                epoch.rover.phase1[slot] += simulation::WholeNumber(5, 1, satellite, 0, 100000);
                epoch.rover.phase2[slot] += simulation::WholeNumber(5, 2, satellite, 1, 100000);
            }
        }
        simulation::RunSession(session);
        EXPECT_LT(Difference(FinalSolution(), before), 1e-6);
    }
}

}  // namespace
}  // namespace vornel::properties
