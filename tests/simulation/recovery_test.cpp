// Whole runs on simulated sessions: the truth comes out again.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <string>
#include <vector>

#include "exports/process.h"
#include "exports/process_fixture.h"
#include "run/run_status.h"
#include "simulation/session_run.h"

namespace vornel::simulation {
namespace {

constexpr double kTenthMillimetre = 1e-4;

const ResultManage& Results() {
    return CurrentProcess().solver->resultManage;
}

// A session for a solve model: all four systems, GPS and BDS for model 6.
Scenario ScenarioOf(int model) {
    Scenario scenario;
    scenario.config.slvmode = model;
    scenario.epochCount = 100;
    if (model == 6) {
        scenario.satellites[1] = scenario.satellites[3] = 0;
    }
    return scenario;
}

// The ambiguity of a model's phase combination, cycles, of a satellite against the reference of its
// period.
double TrueAmbiguity(const Session& session, int model, int block, const AmbRstInfo& track) {
    const StaticSolve& solver = *CurrentProcess().solver;
    const StaticPeriod* period = solver.PeriodOf(track.firstEpoch);
    const int reference = period->ReferenceOf(SplitSatNumber(track.sat));
    double n[2];
    for (int f = 0; f < 2; ++f) {
        n[f] = session.SingleDifferenceAmbiguity(track.sat, f, track.firstEpoch) -
               session.SingleDifferenceAmbiguity(reference, f, track.firstEpoch);
    }
    switch (model) {
        case 2:
            return n[1];
        case 3:
            return n[block];
        case 4:
            return n[0] + n[1];
        case 5:
            return n[0] - n[1];
        default:
            return n[0];  // in model 6 what is left beside the wide lane
    }
}

void ExpectTrueIntegers(const Session& session, const SolveResultFixed& fixed) {
    for (const AmbRstInfo& track : fixed.ambiguities) {
        EXPECT_EQ(track.value1, TrueAmbiguity(session, fixed.mode, 0, track))
            << "model " << fixed.mode << ", satellite " << track.sat;
        if (fixed.mode == 3) {
            EXPECT_EQ(track.value2, TrueAmbiguity(session, 3, 1, track)) << track.sat;
        }
    }
}

// Runs to the end of the fixed solution of the model, with every ambiguity at its true integer.
const SolveResultFixed& RunToFixed(const Session& session, int model) {
    EXPECT_EQ(RunSession(session), StatusOfModel(model).fixedDone);
    const SolveResultFixed& fixed = Results().fixedResults.back();
    EXPECT_EQ(fixed.mode, model);
    EXPECT_GT(fixed.ratio, session.scenario.config.ratioThreshold);
    EXPECT_EQ(fixed.ambiguities.size(), Results().floatResults.back().ambiguities.size());
    ExpectTrueIntegers(session, fixed);
    return fixed;
}

class Recovery : public test::ProcessTest, public ::testing::WithParamInterface<int> {};

std::string NameOfModel(const ::testing::TestParamInfo<int>& info) {
    return "Model" + std::to_string(info.param);
}
INSTANTIATE_TEST_SUITE_P(Models, Recovery, ::testing::Range(1, 7), NameOfModel);

TEST_P(Recovery, OfTheFixedVectorToATenthOfAMillimetre) {
    const Session session = Simulate(ScenarioOf(GetParam()));
    EXPECT_LT(ErrorOf(RunToFixed(session, GetParam()), session), kTenthMillimetre);
}

TEST_P(Recovery, OfTheFloatVectorToATenthOfAMillimetreUnderItsOwnTroposphere) {
    Scenario scenario = ScenarioOf(GetParam());
    scenario.troposphere = Troposphere::kOfFloat;
    scenario.epochCount = 240;
    const Session session = Simulate(scenario);
    RunSession(session);
    const SolveResultFloat& result = Results().floatResults.back();
    EXPECT_EQ(result.mode, GetParam());
    EXPECT_LT(ErrorOf(result, session), kTenthMillimetre);
}

TEST_P(Recovery, UnderTheOtherTroposphereOfTheFloatSolution) {
    Scenario scenario = ScenarioOf(GetParam());
    scenario.troposphere = Troposphere::kOfFloat;
    scenario.config.tropoModel = 0;
    scenario.epochCount = 240;
    const Session session = Simulate(scenario);
    RunSession(session);
    EXPECT_LT(ErrorOf(Results().floatResults.back(), session), kTenthMillimetre);
}

TEST_P(Recovery, AtNoiseLevelWithRealNoise) {
    // Three millimetres on each phase and three decimetres on each code. The error stays within
    // four times what the solution says of itself, and what it says is right to a factor.
    for (const std::uint64_t seed : {11u, 12u, 13u}) {
        test::ForgetProcess();
        Scenario scenario = ScenarioOf(GetParam());
        scenario.phaseNoise = 0.003;
        scenario.codeNoise = 0.3;
        scenario.epochCount = 240;
        scenario.seed = seed;
        const Session session = Simulate(scenario);
        const SolveResultFixed& fixed = RunToFixed(session, GetParam());
        EXPECT_LT(ErrorOf(fixed, session), 4.0 * fixed.sigma3) << seed;
        EXPECT_LT(fixed.sigma3, GetParam() == 5 ? 0.006 : 0.003) << seed;
        EXPECT_GT(fixed.sigma3, 1e-4) << seed;
        const SolveResultFloat& result = Results().floatResults.back();
        // The float solution's troposphere differs from that of the data by half a millimetre or so
        // here.
        EXPECT_LT(ErrorOf(result, session), 4.0 * result.sigma3 + 0.003) << seed;
    }
}

TEST_P(Recovery, WithAntennas) {
    Scenario scenario = ScenarioOf(GetParam());
    scenario.roverAntenna = {0.0893, 0.1178, 1.5310};
    scenario.baseAntenna = {0.0611, 0.0584, 0.0083};
    const Session session = Simulate(scenario);
    EXPECT_LT(ErrorOf(RunToFixed(session, GetParam()), session), kTenthMillimetre);
}

TEST_P(Recovery, WithSlipsAndGapsInEverySystem) {
    Scenario scenario = ScenarioOf(GetParam());
    const std::vector<int> satellites = Simulate(scenario).satellites;
    // Two satellites of a system slip, the reference perhaps among them, twice each and well apart
    // in time, since a slip soon after another starts a new segment.
    std::map<int, int> slipped;
    int n = 0;
    for (const int sat : satellites) {
        ++n;
        const Receiver receiver = n % 2 == 0 ? kRover : kBase;
        const int turn = slipped[SplitSatNumber(sat)];
        if (n % 3 == 0 && turn < 2) {
            scenario.slips.push_back({receiver, sat, 14 + 14 * turn, {3.0 * n, 1.0 - n}});
            scenario.slips.push_back({receiver, sat, 62 + 14 * turn, {-1.0, 77.0 * n}});
            ++slipped[SplitSatNumber(sat)];
        }
        if (n % 5 == 2) {
            scenario.gaps.push_back({receiver, sat, 45, 49});
        }
    }
    const Session session = Simulate(scenario);
    const SolveResultFixed& fixed = RunToFixed(session, GetParam());
    EXPECT_LT(ErrorOf(fixed, session), kTenthMillimetre);
}

// Without model 3: over several periods its ambiguities share places in the start vector, and the
// later periods don't come right.
class RecoveryOverPeriods : public Recovery {};
INSTANTIATE_TEST_SUITE_P(Models, RecoveryOverPeriods, ::testing::Values(1, 2, 4, 5, 6),
                         NameOfModel);

TEST_P(RecoveryOverPeriods, ToATenthOfAMillimetre) {
    Scenario scenario = ScenarioOf(GetParam());
    for (int& count : scenario.satellites) {
        count = count > 0 ? -1 : 0;
    }
    scenario.epochCount = 301;
    scenario.config.periodLength = 3000.0;
    const Session session = Simulate(scenario);
    const SolveResultFixed& fixed = RunToFixed(session, GetParam());
    EXPECT_EQ(CurrentProcess().solver->periods.size(), 3u);
    EXPECT_LT(ErrorOf(fixed, session), kTenthMillimetre);
}

class RecoveryWithGlonassBias : public Recovery {};
INSTANTIATE_TEST_SUITE_P(Models, RecoveryWithGlonassBias, ::testing::Range(1, 6), NameOfModel);

TEST_P(RecoveryWithGlonassBias, ToATenthOfAMillimetre) {
    // One millimetre for each megahertz is 4 mm between the outer channels: forty times the bound
    // if it stayed.
    Scenario scenario = ScenarioOf(GetParam());
    scenario.glonassBias = 0.001;
    const Session session = Simulate(scenario);
    EXPECT_LT(ErrorOf(RunToFixed(session, GetParam()), session), kTenthMillimetre);
}

TEST_P(Recovery, UnderTheBroadcastIonosphere) {
    Scenario scenario = ScenarioOf(GetParam());
    scenario.startSeconds =
        43200.0;  // by day, on the first day of the week, when that model knows a day
    IonosphereParameters parameters;
    const double alpha[4] = {2.4e-8, 2.2e-8, -1.2e-7, -1.8e-7};
    const double beta[4] = {1.2e5, 1.3e5, -2.0e5, -4.6e5};
    std::copy(alpha, alpha + 4, parameters.alpha);
    std::copy(beta, beta + 4, parameters.beta);
    parameters.ionoValid = 1;
    scenario.broadcastIonosphere = parameters;
    const Session session = Simulate(scenario);
    EXPECT_LT(ErrorOf(RunToFixed(session, GetParam()), session), kTenthMillimetre);
}

TEST_P(Recovery, OfABaselineOfEightyKilometres) {
    Scenario scenario = ScenarioOf(GetParam());
    scenario.baseline[0] = -60000.0;
    scenario.baseline[1] = 52000.0;
    scenario.baseline[2] = -310.0;
    scenario.config.maxFixBaseline = 200000.0;
    // The height differs by 0.8 km: the two tropospheres differ too much for the float solution to
    // lead to the integers.
    scenario.troposphere = Troposphere::kOfFloat;
    scenario.epochCount = 240;
    const Session session = Simulate(scenario);
    RunSession(session);
    const SolveResultFloat& result = Results().floatResults.back();
    EXPECT_EQ(result.mode, GetParam());
    EXPECT_LT(ErrorOf(result, session), 2.0 * kTenthMillimetre);
}

class RecoveryOfOne : public test::ProcessTest {};

TEST_F(RecoveryOfOne, Model6IsFreeOfAnIonosphereThatNoModelKnows) {
    // Two and a half times the ionosphere of the model over 30 km. The wide lane, that keeps it, is
    // off by centimetres.
    Scenario scenario = ScenarioOf(6);
    scenario.ionosphere = 2.5;
    scenario.baseline[0] = 24000.0;
    scenario.baseline[1] = -18000.0;
    scenario.startSeconds = 127800.0;
    scenario.epochCount = 240;
    const Session session = Simulate(scenario);
    const SolveResultFixed& fixed = RunToFixed(session, 6);
    EXPECT_LT(ErrorOf(fixed, session), 2.0 * kTenthMillimetre);
    EXPECT_GT(ErrorOf(Results().fixedResults.front(), session), 0.01);
    ExpectTrueIntegers(session, Results().fixedResults.front());
}

TEST_F(RecoveryOfOne, Model6TakesGlonassAsWell) {
    Scenario scenario = ScenarioOf(6);
    scenario.satellites[1] = 6;
    const Session session = Simulate(scenario);
    EXPECT_LT(ErrorOf(RunToFixed(session, 6), session), kTenthMillimetre);
}

TEST_F(RecoveryOfOne, EverySystemServesAlone) {
    for (int system = 0; system < 4; ++system) {
        test::ForgetProcess();
        Scenario scenario = ScenarioOf(3);
        for (int i = 0; i < 4; ++i) {
            scenario.satellites[i] = i == system ? 8 : 0;
        }
        scenario.epochCount = 200;
        const Session session = Simulate(scenario);
        EXPECT_LT(ErrorOf(RunToFixed(session, 3), session), 2.0 * kTenthMillimetre) << system;
    }
}

TEST_F(RecoveryOfOne, EveryPairOfGalileoBandsServes) {
    for (const auto& [first, second] : {std::pair{1, 3}, {1, 4}, {5, 1}, {2, 5}}) {
        test::ForgetProcess();
        Scenario scenario = ScenarioOf(3);
        scenario.satellites[0] = scenario.satellites[1] = scenario.satellites[2] = 0;
        scenario.satellites[3] = 8;
        scenario.config.galFreq1 = first;
        scenario.config.galFreq2 = second;
        scenario.epochCount = 200;
        const Session session = Simulate(scenario);
        EXPECT_LT(ErrorOf(RunToFixed(session, 3), session), 2.0 * kTenthMillimetre);
    }
}

TEST_F(RecoveryOfOne, ClocksOfTheReceiversCancel) {
    Scenario scenario = ScenarioOf(1);
    scenario.roverClock = {-9.3e-4, 4e-9};
    scenario.baseClock = {8.8e-4, -3e-9};
    const Session session = Simulate(scenario);
    EXPECT_LT(ErrorOf(RunToFixed(session, 1), session), kTenthMillimetre);
}

TEST_F(RecoveryOfOne, AShortBaselineByAutomaticChoiceEndsInModel1) {
    const Session session = Simulate(ScenarioOf(0));
    EXPECT_EQ(RunSession(session), StatusOfModel(1).fixedDone);
    EXPECT_LT(ErrorOf(Results().fixedResults.back(), session), kTenthMillimetre);
}

TEST_F(RecoveryOfOne, ADayOfFourSystems) {
    Scenario scenario = ScenarioOf(4);
    for (int& count : scenario.satellites) {
        count = -1;
    }
    scenario.interval = 120.0;
    scenario.epochCount = 720;
    scenario.phaseNoise = 0.001;
    const Session session = Simulate(scenario);
    EXPECT_EQ(RunSession(session), StatusOfModel(4).fixedDone);
    EXPECT_EQ(CurrentProcess().solver->periods.size(), 11u);
    ExpectTrueIntegers(session, Results().fixedResults.back());
    EXPECT_LT(ErrorOf(Results().fixedResults.back(), session), kTenthMillimetre);
}

}  // namespace
}  // namespace vornel::simulation
