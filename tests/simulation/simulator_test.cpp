#include "simulation/simulator.h"

#include <gtest/gtest.h>

#include <cmath>

#include "exports/process.h"
#include "exports/process_fixture.h"
#include "simulation/session_run.h"

namespace vornel::simulation {
namespace {

class Simulator : public test::ProcessTest {};

int IdOf(int satellite) {
    int id = 0;
    SplitSatNumber(satellite, &id);
    return id;
}

// The engine's position and clock for a moment of the session.
bool EnginePosition(const Session& session, int satellite, double time, XYZPosition& position,
                    double& clock) {
    const Epoch at = Epoch(session.scenario.week, session.scenario.startSeconds) + time;
    int channel = 0;
    switch (SplitSatNumber(satellite)) {
        case kGps:
            return GetGpsPosition(at, IdOf(satellite), position, clock);
        case kGlonass:
            return GetGlonassPosition(at, IdOf(satellite), position, clock, channel);
        case kBds:
            return GetBdsPosition(at, IdOf(satellite), position, clock);
        default:
            return GetGalPosition(at, IdOf(satellite), position, clock);
    }
}

TEST_F(Simulator, TheSkyIsTheOneThatItsEphemeridesDescribe) {
    Scenario scenario;
    scenario.startSeconds = 600000.0;  // over the end of a week
    scenario.interval = 600.0;
    scenario.epochCount = 30;
    const Session session = Simulate(scenario);
    HandOver(session);
    for (const int satellite : session.sky.satellites()) {
        for (const double time : {0.0, 123.25, 3599.5, 4801.0, 9000.75, 17900.0}) {
            XYZPosition position;
            double clock = 0.0;
            ASSERT_TRUE(EnginePosition(session, satellite, time, position, clock)) << satellite;
            const SatelliteState truth = session.sky.At(satellite, time);
            EXPECT_LT(static_cast<double>(reference::Separation(truth.position, position)), 1e-3)
                << satellite << " after " << time << " s";
            EXPECT_NEAR(clock, static_cast<double>(truth.clock), 1e-15) << satellite;
        }
    }
}

// Observed minus computed, metres, of a between-station phase with its ambiguity taken off.
double Residual(StaticSolve& solver, const Session& session, int epochIndex, int satellite,
                int signal) {
    SDObsData& epoch = solver.epochs[static_cast<std::size_t>(epochIndex)];
    const double frequency = CarrierFrequency(session.scenario.config, satellite, signal);
    const double toL1 = 1575.42e6 / frequency;
    double unit[3];
    double value = 0.0;
    epoch.Model(toL1 * toL1, satellite, session.rover, session.base, unit, value);
    const double cycles = epoch.phase[satellite - 1][signal] -
                          session.SingleDifferenceAmbiguity(satellite, signal, epochIndex);
    const Antenna& r = session.scenario.roverAntenna;
    const Antenna& b = session.scenario.baseAntenna;
    const double antenna = (signal == 0 ? r.l1Up : r.l2Up) + r.height;
    const double baseAntenna = (signal == 0 ? b.l1Up : b.l2Up) + b.height;
    return cycles * 299792458.0 / frequency - value +
           antenna * std::sin(epoch.azelA[satellite - 1][1]) -
           baseAntenna * std::sin(epoch.azelB[satellite - 1][1]);
}

// What the residuals of an epoch have in common is the receivers' clocks.
double WidestSpread(const Session& session) {
    const auto solver = PreparedSolverOf(session);
    double widest = 0.0;
    for (std::size_t e = 0; e < solver->epochs.size(); ++e) {
        const std::vector<int> active = solver->epochs[e].activeSats;
        EXPECT_GE(active.size(), 12u);
        double least = 1e9, most = -1e9;
        for (const int satellite : active) {
            for (int f = 0; f < 2; ++f) {
                const double residual =
                    Residual(*solver, session, static_cast<int>(e), satellite, f);
                least = std::min(least, residual);
                most = std::max(most, residual);
            }
        }
        widest = std::max(widest, most - least);
    }
    return widest;
}

// The rover's position is known at input, since the turn of the earth during the travel of the
// signal is settled there: a position off by 3 m leaves 3 micrometres.
Scenario Noiseless() {
    Scenario scenario;
    std::fill(scenario.roverError, scenario.roverError + 3, 0.0);
    scenario.phaseNoise = scenario.codeNoise = 0.0;
    scenario.troposphere = Troposphere::kOfFloat;
    return scenario;
}

TEST_F(Simulator, PhasesHoldNothingButModelAmbiguityAndClocks) {
    EXPECT_LT(WidestSpread(Simulate(Noiseless())), 1e-7);
}

TEST_F(Simulator, PhasesAgreeWithTheModelOverADayAcrossTheWeeksEndAndAHundredKilometres) {
    Scenario scenario = Noiseless();
    for (int& count : scenario.satellites) {
        count = -1;
    }
    scenario.startSeconds = 561600.0;
    scenario.interval = 1200.0;
    scenario.epochCount = 72;
    scenario.config.minEpochs = 5;
    scenario.baseline[0] = 80000.0;
    scenario.baseline[1] = 60000.0;
    scenario.config.slvmode = 3;
    EXPECT_LT(WidestSpread(Simulate(scenario)), 5e-6);
}

TEST_F(Simulator, PhasesAgreeWithTheModelForAntennasClocksAndOtherGalileoBands) {
    Scenario scenario = Noiseless();
    scenario.roverAntenna = {0.0912, 0.1187, 1.4321};
    scenario.baseAntenna = {0.0611, 0.0573, 0.2010};
    scenario.roverClock = {-9.1e-4, 3e-9};
    scenario.baseClock = {7.4e-4, -2e-9};
    scenario.config.galFreq1 = 5;
    scenario.config.galFreq2 = 3;
    IonosphereParameters parameters;
    const double alpha[4] = {1.2e-8, 1.5e-8, -6e-8, -1.2e-7};
    const double beta[4] = {9.0e4, 1.3e5, -6.5e4, -5.2e5};
    std::copy(alpha, alpha + 4, parameters.alpha);
    std::copy(beta, beta + 4, parameters.beta);
    parameters.ionoValid = 1;
    scenario.broadcastIonosphere = parameters;
    EXPECT_LT(WidestSpread(Simulate(scenario)), 2e-6);
}

TEST_F(Simulator, CodesStandOffThePhasesByClockFreeAmbiguityAndTwiceTheIonosphere) {
    Scenario scenario = Noiseless();
    scenario.ionosphere = 0.0;
    const Session session = Simulate(scenario);
    const auto solver = SolverOf(session);
    const SDObsData& epoch = solver->epochs[7];
    ASSERT_GE(epoch.satList.size(), 26u);
    for (const int satellite : epoch.satList) {
        for (int f = 0; f < 2; ++f) {
            const double wavelength = CarrierWavelength(session.scenario.config, satellite, f);
            const double ambiguity =
                epoch.phase[satellite - 1][f] - epoch.code[satellite - 1][f] / wavelength;
            EXPECT_NEAR(ambiguity, session.SingleDifferenceAmbiguity(satellite, f, 7), 1e-5);
        }
    }
}

TEST_F(Simulator, NoiseHasTheDeviationAskedFor) {
    Scenario scenario;
    scenario.phaseNoise = 0.003;
    scenario.epochCount = 60;
    const Session noisy = Simulate(scenario);
    scenario.phaseNoise = 0.0;
    const Session clean = Simulate(scenario);
    double sum = 0.0, squares = 0.0;
    int count = 0;
    for (std::size_t e = 0; e < noisy.epochs.size(); ++e) {
        for (std::size_t slot = 0; noisy.epochs[e].rover.satellites[slot] != 0; ++slot) {
            const int satellite = noisy.epochs[e].rover.satellites[slot];
            const double metres =
                (noisy.epochs[e].rover.phase2[slot] - clean.epochs[e].rover.phase2[slot]) *
                CarrierWavelength(scenario.config, satellite, 1);
            sum += metres;
            squares += metres * metres;
            ++count;
        }
    }
    ASSERT_GT(count, 1200);
    EXPECT_NEAR(sum / count, 0.0, 0.0003);
    EXPECT_NEAR(std::sqrt(squares / count), 0.003, 0.0002);
}

TEST_F(Simulator, TheSameScenarioGivesTheSameBits) {
    Scenario scenario;
    const Session first = Simulate(scenario);
    const Session second = Simulate(scenario);
    scenario.seed = 2;
    const Session other = Simulate(scenario);
    EXPECT_EQ(first.epochs[3].rover.phase1, second.epochs[3].rover.phase1);
    EXPECT_EQ(first.epochs[39].base.code2, second.epochs[39].base.code2);
    EXPECT_NE(first.epochs[3].rover.phase1, other.epochs[3].rover.phase1);
}

TEST_F(Simulator, LeavingASatelliteOutChangesNoOther) {
    Scenario scenario;
    const Session all = Simulate(scenario);
    scenario.satellites[3] = 0;
    const Session without = Simulate(scenario);
    ASSERT_LT(without.satellites.size(), all.satellites.size());
    for (std::size_t slot = 0; without.epochs[20].rover.satellites[slot] != 0; ++slot) {
        EXPECT_EQ(all.epochs[20].rover.satellites[slot], without.epochs[20].rover.satellites[slot]);
        EXPECT_EQ(all.epochs[20].rover.phase1[slot], without.epochs[20].rover.phase1[slot]);
        EXPECT_EQ(all.epochs[20].base.code2[slot], without.epochs[20].base.code2[slot]);
    }
}

TEST_F(Simulator, SlipsAndGapsComeWhereTheyAreAskedFor) {
    Scenario scenario;
    const Session plain = Simulate(scenario);
    const int satellite = plain.epochs[0].rover.satellites[2];
    scenario.slips = {{kRover, satellite, 15, {4.0, -2.5}}};
    scenario.gaps = {{kRover, satellite, 18, 20}, {kBase, satellite, 25, 25, 1}};
    const Session session = Simulate(scenario);
    for (std::size_t e = 0; e < 40; ++e) {
        const bool gone = e >= 18 && e <= 20;
        const double slip = e >= 15 ? 1.0 : 0.0;
        const ReceiverRecord& now = session.epochs[e].rover;
        const ReceiverRecord& before = plain.epochs[e].rover;
        EXPECT_NEAR(now.phase1[2], gone ? 0.0 : before.phase1[2] + 4.0 * slip, 1e-7);
        EXPECT_NEAR(now.phase2[2], gone ? 0.0 : before.phase2[2] - 2.5 * slip, 1e-7);
        EXPECT_EQ(now.code1[2], gone ? 0.0 : before.code1[2]);
        EXPECT_EQ(session.epochs[e].base.phase2[2] == 0.0, e == 25);
        EXPECT_NE(session.epochs[e].base.phase1[2], 0.0);
    }
}

TEST_F(Simulator, SatellitesRiseAndSetWhenAllAreReceived) {
    Scenario scenario;
    for (int& count : scenario.satellites) {
        count = -1;
    }
    scenario.interval = 600.0;
    scenario.epochCount = 20;
    const Session session = Simulate(scenario);
    int changes = 0;
    for (std::size_t e = 1; e < session.epochs.size(); ++e) {
        changes += session.epochs[e].rover.satellites != session.epochs[e - 1].rover.satellites;
    }
    EXPECT_GT(changes, 10);
}

}  // namespace
}  // namespace vornel::simulation
