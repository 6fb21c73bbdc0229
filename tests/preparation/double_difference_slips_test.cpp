#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>
#include <vector>

#include "exports/process_fixture.h"
#include "run/staged_session.h"
#include "simulation/noise.h"

// The tolerance of a satellite follows the scatter of its changes. To keep it where a test wants
// it, the data are free of noise and the satellite's phases alternate: with +-0.1 cycle from epoch
// to epoch the scatter is 0.1, three and a half times that is beyond the cap of 0.25, and the cap
// is the limit in every sweep.
namespace vornel::test {
namespace {

constexpr double kSwing = 0.1;
const std::vector<Span> kWhole{{0, 59}};

class DoubleDifferenceSlips : public ProcessTest {
  protected:
    static simulation::Scenario Scenario(int model = 3) { return SingleSystem(kGps, 6, model); }

    // Lets every satellite but the reference swing.
    static void Swing(StagedSession& staged, double cycles = kSwing) {
        for (const int sat : staged.session.satellites) {
            if (!staged.solver->periods[0].IsReference(sat)) {
                staged.Alternate(sat, cycles, cycles);
            }
        }
        staged.TakeAsClean();
    }
};

TEST_F(DoubleDifferenceSlips, QuietDataAreLeftAsTheyAreAndTheReferenceGetsNoSegment) {
    StagedSession staged(Scenario());
    Swing(staged);
    staged.solver->RepairDoubleDifferenceSlips();
    const int reference = staged.solver->periods[0].refSatGps;
    EXPECT_TRUE(staged.Segments(reference).empty());
    EXPECT_EQ(staged.solver->ambiguityParas.size(), 5u);
    staged.ExpectOthersUntouched(kGps, reference);
}

TEST_F(DoubleDifferenceSlips, SlipsAreTakenOutOfAllLaterPhases) {
    for (const auto& [first, second] :
         {std::pair{3.0, -2.0}, {1.0, 0.0}, {0.0, 1.0}, {-123456.0, 98765.0}}) {
        ForgetProcess();
        StagedSession staged(Scenario());
        Swing(staged);
        const int sat = staged.Satellite(kGps, 1);
        staged.JumpFrom(sat, 30, first, second);
        staged.solver->RepairDoubleDifferenceSlips();
        staged.ExpectClean(sat);
        EXPECT_EQ(staged.Segments(sat), kWhole);
        EXPECT_TRUE(staged.EpochsWithout(sat).empty());
        staged.ExpectOthersUntouched(kGps, sat);
    }
}

TEST_F(DoubleDifferenceSlips, EverySystemButGlonassIsRepaired) {
    simulation::Scenario scenario = Scenario();
    std::fill(scenario.satellites, scenario.satellites + 4, 5);
    StagedSession staged(scenario);
    Swing(staged);
    for (const int system : {kGps, kGlonass, kBds, kGalileo}) {
        staged.JumpFrom(staged.Satellite(system, 2), 25, 6.0, -1.0);
    }
    staged.solver->RepairDoubleDifferenceSlips();
    for (const int system : {kGps, kBds, kGalileo}) {
        const int sat = staged.Satellite(system, 2);
        staged.ExpectClean(sat);
        EXPECT_EQ(staged.Segments(sat), kWhole);
    }
    const int glonass = staged.Satellite(kGlonass, 2);
    staged.ExpectOff(glonass, 0, 25, 59, 6.0);
    EXPECT_TRUE(staged.Segments(glonass).empty());
    EXPECT_TRUE(staged.EpochsWithout(glonass).empty());
}

TEST_F(DoubleDifferenceSlips, ManySlipsOfEverySizeAreRepairedExactly) {
    simulation::Scenario scenario = Scenario();
    scenario.epochCount = 120;
    scenario.phaseNoise = 0.002;
    for (std::uint64_t round = 1; round <= 6; ++round) {
        ForgetProcess();
        scenario.seed = round;
        StagedSession staged(scenario);
        std::vector<double> sum(2 * kSatelliteCount, 0.0);
        for (int n = 0; n < 5; ++n) {
            const int sat = staged.Satellite(kGps, n);
            for (int e = 13 + n; e < 110; e += 14) {
                const auto key = static_cast<std::uint64_t>(sat);
                const auto at = static_cast<std::uint64_t>(e);
                const int limit = e % 3 == 0 ? 3 : 1000000;
                staged.JumpFrom(sat, e, simulation::WholeNumber(round, 1, key, at, limit),
                                simulation::WholeNumber(round, 2, key, at, limit));
            }
        }
        staged.solver->RepairDoubleDifferenceSlips();
        for (int n = 0; n < 5; ++n) {
            const int sat = staged.session.satellites[static_cast<std::size_t>(n)];
            if (staged.solver->periods[0].IsReference(sat)) {
                continue;
            }
            for (int e = 0; e < 120; ++e) {
                if (staged.Epoch(e).IsActive(sat)) {
                    staged.ExpectOff(sat, 0, e, e, 0.0);
                    staged.ExpectOff(sat, 1, e, e, 0.0);
                }
            }
            EXPECT_EQ(staged.Segments(sat).size(), 1u);
            EXPECT_LE(staged.EpochsWithout(sat).size(), 3u);  // what noise loses
        }
    }
}

TEST_F(DoubleDifferenceSlips, ASlipOfTheReferenceIsRepairedOnAllOthers) {
    StagedSession staged(Scenario());
    Swing(staged);
    const int reference = staged.solver->periods[0].refSatGps;
    staged.JumpFrom(reference, 30, 4.0, -3.0);
    staged.solver->RepairDoubleDifferenceSlips();
    staged.ExpectOff(reference, 0, 30, 59, 4.0);
    for (const int sat : staged.session.satellites) {
        if (sat != reference) {
            staged.ExpectOff(sat, 0, 0, 29, 0.0);
            staged.ExpectOff(sat, 0, 30, 59, 4.0);
            staged.ExpectOff(sat, 1, 30, 59, -3.0);
            EXPECT_EQ(staged.Segments(sat), kWhole);
        }
    }
}

// --- how near a whole number a change must lie

// One satellite whose change at epoch 31 is the swing plus an addition, and back again at the next.
struct Probe {
    std::vector<int> lost;
    double off[2];  // of the phases from epoch 33 on, cycles
    double offThen[2];
    std::vector<Span> segments;
};

Probe OutlierOf(double first, double second, const simulation::Scenario& scenario) {
    ForgetProcess();
    StagedSession staged(scenario);
    const int sat = staged.Satellite(kGps, 1);
    staged.Alternate(sat, kSwing, kSwing);
    staged.TakeAsClean();
    staged.JumpAt(sat, 32, first, second);  // the change into an even epoch is +0.1
    staged.solver->RepairDoubleDifferenceSlips();
    return {staged.EpochsWithout(sat),
            {staged.Off(sat, 0, 40), staged.Off(sat, 1, 40)},
            {staged.Off(sat, 0, 32), staged.Off(sat, 1, 32)},
            staged.Segments(sat)};
}

TEST_F(DoubleDifferenceSlips, AChangeNearAWholeNumberIsRepairedAndOneFurtherOffLosesTheEpoch) {
    const Probe near = OutlierOf(1.0, 0.0, Scenario());  // 1.1: 0.1 from the whole number
    EXPECT_TRUE(near.lost.empty());
    EXPECT_NEAR(near.offThen[0], 0.0, 1e-7);
    EXPECT_NEAR(near.off[0], 0.0, 1e-7);
    const Probe far = OutlierOf(1.3, 0.0, Scenario());  // 1.4
    EXPECT_EQ(far.lost, Range(32, 32));
    EXPECT_NEAR(far.off[0], 0.0, 1e-7);
    EXPECT_EQ(far.segments, kWhole);
}

// With a cap above 0.3, so that what a repair leaves is no outlier of the next sweep.
simulation::Scenario WideCap() {
    simulation::Scenario scenario = SingleSystem(kGps, 6, 3);
    scenario.config.slipTestCap = 0.33;
    return scenario;
}

TEST_F(DoubleDifferenceSlips, TheFirstFrequencyTakesUpToThreeTenthsFromAWholeNumber) {
    EXPECT_TRUE(OutlierOf(1.19, 0.0, WideCap()).lost.empty());        // 1.29
    EXPECT_EQ(OutlierOf(1.21, 0.0, WideCap()).lost, Range(32, 32));   // 1.31
    EXPECT_TRUE(OutlierOf(0.61, 0.0, WideCap()).lost.empty());        // 0.71
    EXPECT_EQ(OutlierOf(0.59, 0.0, WideCap()).lost, Range(32, 32));   // 0.69
    EXPECT_EQ(OutlierOf(0.30, 0.0, WideCap()).lost, Range(32, 32));   // 0.40: no whole cycle
    EXPECT_EQ(OutlierOf(-1.45, 0.0, WideCap()).lost, Range(32, 32));  // -1.35
}

TEST_F(DoubleDifferenceSlips, TheSecondFrequencyTakesAllBeyondSevenTenths) {
    EXPECT_EQ(OutlierOf(0.0, 0.30, WideCap()).lost, Range(32, 32));  // 0.40
    EXPECT_EQ(OutlierOf(0.0, 0.59, WideCap()).lost, Range(32, 32));  // 0.69
    EXPECT_TRUE(OutlierOf(0.0, 0.61, WideCap()).lost.empty());       // 0.71
    // 1.45 is repaired by 1: there is no test of nearness.
    StagedSession staged(Scenario());
    const int sat = staged.Satellite(kGps, 1);
    staged.Alternate(sat, kSwing, kSwing);
    staged.TakeAsClean();
    staged.JumpFrom(sat, 32, 0.0, 1.35);  // 1.45 at 32, then nothing new
    staged.solver->RepairDoubleDifferenceSlips();
    staged.ExpectOff(sat, 1, 32, 59, 0.35);
}

TEST_F(DoubleDifferenceSlips, AnEightTenthsChangeOnTheSecondFrequencyLeavesTheRestInTheData) {
    StagedSession staged(Scenario());
    const int sat = staged.Satellite(kGps, 1);
    staged.Alternate(sat, kSwing, kSwing);
    staged.TakeAsClean();
    staged.JumpFrom(sat, 32, 0.0, 0.7);  // 0.8 with the swing
    staged.solver->RepairDoubleDifferenceSlips();
    EXPECT_TRUE(staged.EpochsWithout(sat).empty());
    staged.ExpectOff(sat, 1, 32, 59, -0.3);
    staged.ExpectOff(sat, 0, 0, 59, 0.0);
    EXPECT_EQ(staged.Segments(sat), kWhole);
}

TEST_F(DoubleDifferenceSlips, ALostEpochOnTheSecondFrequencyTakesBackTheRepairOfTheFirst) {
    const Probe probe = OutlierOf(1.0, 0.3, Scenario());
    EXPECT_EQ(probe.lost, Range(32, 32));
    EXPECT_NEAR(probe.offThen[0], 1.0, 1e-7);
    EXPECT_NEAR(probe.off[0], 0.0, 1e-7);
    EXPECT_EQ(probe.segments, kWhole);
}

TEST_F(DoubleDifferenceSlips, ALastingSlipBesideALostEpochIsRepairedAtTheNext) {
    StagedSession staged(Scenario());
    const int sat = staged.Satellite(kGps, 1);
    staged.Alternate(sat, kSwing, kSwing);
    staged.TakeAsClean();
    staged.JumpFrom(sat, 32, 5.0, 0.0);
    staged.JumpAt(sat, 32, 0.0, 0.3);
    staged.solver->RepairDoubleDifferenceSlips();
    EXPECT_EQ(staged.EpochsWithout(sat), Range(32, 32));
    staged.ExpectOff(sat, 0, 32, 32, 5.0);
    staged.ExpectOff(sat, 0, 33, 59, 0.0);
    EXPECT_EQ(staged.Segments(sat), kWhole);
}

TEST_F(DoubleDifferenceSlips, TheCapIsTheLimitWhileTheToleranceIsWider) {
    EXPECT_TRUE(OutlierOf(0.14, 0.0, Scenario()).lost.empty());       // 0.24
    EXPECT_EQ(OutlierOf(0.16, 0.0, Scenario()).lost, Range(32, 32));  // 0.26
    simulation::Scenario wide = Scenario();
    wide.config.slipTestCap = 0.33;
    EXPECT_TRUE(OutlierOf(0.16, 0.0, wide).lost.empty());
    EXPECT_EQ(OutlierOf(0.24, 0.0, wide).lost, Range(32, 32));  // 0.34
}

TEST_F(DoubleDifferenceSlips, TheFirstSweepTestsAgainstTheCapAlone) {
    // A quiet satellite with one change of 0.24: within the cap of the first sweep, beyond the
    // tolerance that its scatter gives to the second.
    StagedSession staged(Scenario());
    const int quiet = staged.Satellite(kGps, 1), odd = staged.Satellite(kGps, 2);
    for (const int sat : {quiet, odd}) {
        staged.Alternate(sat, 0.004, 0.004);
    }
    staged.TakeAsClean();
    staged.JumpAt(odd, 32, 0.2, 0.0);
    staged.solver->RepairDoubleDifferenceSlips();
    EXPECT_EQ(staged.EpochsWithout(odd), Range(32, 32));
    EXPECT_EQ(staged.Segments(odd), kWhole);
    EXPECT_TRUE(staged.EpochsWithout(quiet).empty());
    // With a first tolerance below it the first sweep would have lost the slip beside it as well.
    ForgetProcess();
    simulation::Scenario narrow = Scenario();
    narrow.config.outlierFactor = 0.01;  // 0.01 cycle in the first sweep
    StagedSession tight(narrow);
    const int sat = tight.Satellite(kGps, 1);
    tight.Alternate(sat, 0.02, 0.02);
    tight.solver->RepairDoubleDifferenceSlips();
    EXPECT_EQ(tight.Segments(sat), (std::vector<Span>{}));
}

TEST_F(DoubleDifferenceSlips, ScatterIsTheRootMeanSquareOverBothFrequencies) {
    // Changes of 0.01 on the first and 0.05 on the second frequency, 0.036 over both; with two
    // changes of size x among 118 the tolerance is 3.5 sqrt(0.0013 + 2 x^2 / 118), which x passes
    // at 0.142.
    for (const auto& [jump, lost] : {std::pair{0.125, false}, {0.138, true}}) {
        ForgetProcess();
        StagedSession staged(Scenario());
        const int sat = staged.Satellite(kGps, 1);
        staged.Alternate(sat, 0.01, 0.05);
        staged.JumpAt(sat, 32, jump, 0.0);
        staged.solver->RepairDoubleDifferenceSlips();
        EXPECT_EQ(staged.EpochsWithout(sat).size(), lost ? 1u : 0u) << jump;
    }
}

TEST_F(DoubleDifferenceSlips, OutlierFactorSetsTheTolerance) {
    for (const auto& [factor, lost] : {std::pair{3.5, true}, {6.0, false}}) {
        ForgetProcess();
        simulation::Scenario scenario = Scenario();
        scenario.config.outlierFactor = factor;
        StagedSession staged(scenario);
        const int sat = staged.Satellite(kGps, 1);
        staged.Alternate(sat, 0.02, 0.02);
        staged.JumpAt(sat, 32, 0.08, 0.0);  // changes of 0.10 and 0.10 against 0.02
        staged.solver->RepairDoubleDifferenceSlips();
        EXPECT_EQ(staged.EpochsWithout(sat), lost ? Range(32, 32) : std::vector<int>{});
    }
}

// --- restarts and segments

TEST_F(DoubleDifferenceSlips, ASatelliteFailingForTooLongLosesItsEpochsAndStartsANewSegment) {
    // A lasting half cycle. The first sweep gives up at epoch 39, ten epochs after the last good
    // one, and takes the ten before it; the second sees a gap of eleven epochs with the same jump
    // and takes one more.
    StagedSession staged(Scenario());
    Swing(staged);
    const int sat = staged.Satellite(kGps, 1);
    staged.JumpFrom(sat, 30, 0.5, 0.0);
    staged.solver->RepairDoubleDifferenceSlips();
    EXPECT_EQ(staged.EpochsWithout(sat), Range(28, 38));
    EXPECT_EQ(staged.Segments(sat), (std::vector<Span>{{0, 27}, {39, 59}}));
    staged.ExpectOff(sat, 0, 39, 59, 0.5);
    staged.ExpectOthersUntouched(kGps, sat);
}

TEST_F(DoubleDifferenceSlips, AFailureSoonAfterAReturnLosesTheEpochsSince) {
    // The second slip comes five epochs after the first: the epochs between go and a segment begins
    // with it. The next sweep finds the slip again, across a gap now, and repairs it.
    StagedSession staged(Scenario());
    Swing(staged);
    const int sat = staged.Satellite(kGps, 1);
    staged.JumpFrom(sat, 30, 3.0, 3.0);
    staged.JumpFrom(sat, 35, 4.0, 4.0);
    staged.solver->RepairDoubleDifferenceSlips();
    EXPECT_EQ(staged.EpochsWithout(sat), Range(31, 34));
    EXPECT_EQ(staged.Segments(sat), kWhole);
    staged.ExpectOff(sat, 0, 30, 30, 0.0);
    staged.ExpectOff(sat, 0, 35, 59, 0.0);
    staged.ExpectOthersUntouched(kGps, sat);
}

TEST_F(DoubleDifferenceSlips, AFailureTenGoodEpochsAfterAReturnIsRepaired) {
    StagedSession staged(Scenario());
    Swing(staged);
    const int sat = staged.Satellite(kGps, 1);
    staged.JumpFrom(sat, 30, 3.0, 3.0);
    staged.JumpFrom(sat, 41, 4.0, 4.0);
    staged.solver->RepairDoubleDifferenceSlips();
    staged.ExpectClean(sat);
    EXPECT_TRUE(staged.EpochsWithout(sat).empty());
    EXPECT_EQ(staged.Segments(sat), kWhole);
}

TEST_F(DoubleDifferenceSlips, AFailureNineGoodEpochsAfterAReturnLeavesAGapTooLongToRepair) {
    // The first sweep takes the nine epochs; to the second the slip lies in a gap of ten, and epoch
    // 30 goes as well.
    StagedSession staged(Scenario());
    Swing(staged);
    const int sat = staged.Satellite(kGps, 1);
    staged.JumpFrom(sat, 30, 3.0, 3.0);
    staged.JumpFrom(sat, 40, 4.0, 4.0);
    staged.solver->RepairDoubleDifferenceSlips();
    EXPECT_EQ(staged.EpochsWithout(sat), Range(30, 39));
    EXPECT_EQ(staged.Segments(sat), (std::vector<Span>{{0, 29}, {40, 59}}));
    staged.ExpectOff(sat, 0, 40, 59, 4.0);
}

TEST_F(DoubleDifferenceSlips, AGapWithoutASlipStaysInsideItsSegment) {
    StagedSession staged(Scenario());
    Swing(staged);
    const int sat = staged.Satellite(kGps, 1);
    staged.DropOut(sat, 15, 41);
    staged.solver->RepairDoubleDifferenceSlips();
    EXPECT_EQ(staged.EpochsWithout(sat), Range(15, 41));
    EXPECT_EQ(staged.Segments(sat), kWhole);
    staged.ExpectClean(sat);
}

TEST_F(DoubleDifferenceSlips, ASlipInAGapOfNineEpochsIsRepaired) {
    StagedSession staged(Scenario());
    Swing(staged);
    const int sat = staged.Satellite(kGps, 1);
    staged.DropOut(sat, 20, 27);
    staged.JumpFrom(sat, 28, 9.0, -9.0);
    staged.solver->RepairDoubleDifferenceSlips();
    EXPECT_EQ(staged.EpochsWithout(sat), Range(20, 27));
    EXPECT_EQ(staged.Segments(sat), kWhole);
    staged.ExpectOff(sat, 0, 28, 59, 0.0);
    staged.ExpectOff(sat, 1, 28, 59, 0.0);
}

TEST_F(DoubleDifferenceSlips, ASlipInAGapOfTenEpochsStartsANewSegment) {
    // Each of the two sweeps takes as many epochs before the return as the gap is long, and with
    // them one good one.
    StagedSession staged(Scenario());
    Swing(staged);
    const int sat = staged.Satellite(kGps, 1);
    staged.DropOut(sat, 20, 28);
    staged.JumpFrom(sat, 29, 9.0, -9.0);
    staged.solver->RepairDoubleDifferenceSlips();
    EXPECT_EQ(staged.EpochsWithout(sat), Range(18, 28));
    EXPECT_EQ(staged.Segments(sat), (std::vector<Span>{{0, 17}, {29, 59}}));
    staged.ExpectOff(sat, 0, 29, 59, 9.0);
}

TEST_F(DoubleDifferenceSlips, ASegmentOfFewerThanTheFewestEpochsIsNotFiled) {
    StagedSession staged(Scenario());
    Swing(staged);
    const int nine = staged.Satellite(kGps, 1), ten = staged.Satellite(kGps, 2);
    staged.DropOut(nine, 9, 59);
    staged.DropOut(ten, 0, 49);
    staged.solver->RepairDoubleDifferenceSlips();
    EXPECT_TRUE(staged.Segments(nine).empty());
    EXPECT_EQ(staged.EpochsWithout(nine), Range(9, 59));
    EXPECT_EQ(staged.Segments(ten), (std::vector<Span>{{50, 59}}));
}

TEST_F(DoubleDifferenceSlips, NoSegmentSpansTwoPeriodsAndNoSlipIsSeenBetweenThem) {
    simulation::Scenario scenario = Scenario();
    scenario.config.periodLength = 290.0;
    StagedSession staged(scenario);
    ASSERT_EQ(staged.solver->periods.size(), 2u);
    Swing(staged);
    const int sat = staged.Satellite(kGps, 1);
    ASSERT_FALSE(staged.solver->periods[1].IsReference(sat));
    staged.JumpFrom(sat, 30, 3.0, 2.0);
    staged.solver->RepairDoubleDifferenceSlips();
    EXPECT_EQ(staged.Segments(sat), (std::vector<Span>{{0, 29}, {30, 59}}));
    staged.ExpectOff(sat, 0, 30, 59, 3.0);
    EXPECT_TRUE(staged.EpochsWithout(sat).empty());
}

TEST_F(DoubleDifferenceSlips, WithoutItsReferenceAnEpochIsNotTested) {
    // The slip shows at the next epoch that has the reference; the epoch between keeps it.
    simulation::Scenario scenario = Scenario();
    scenario.satellites[2] = 5;
    StagedSession staged(scenario);
    Swing(staged);
    const int gps = staged.Satellite(kGps, 1), bds = staged.Satellite(kBds, 1);
    staged.DropOut(staged.solver->periods[0].refSatGps, 30, 30);
    staged.JumpFrom(gps, 30, 5.0, 5.0);
    staged.JumpFrom(bds, 30, 5.0, 5.0);
    staged.solver->RepairDoubleDifferenceSlips();
    staged.ExpectOff(gps, 0, 30, 30, 5.0);
    staged.ExpectOff(gps, 0, 31, 59, 0.0);
    staged.ExpectOff(bds, 0, 30, 59, 0.0);
    for (const int sat : {gps, bds}) {
        EXPECT_EQ(staged.Segments(sat), kWhole);
        EXPECT_TRUE(staged.EpochsWithout(sat).empty());
    }
}

TEST_F(DoubleDifferenceSlips, AnEpochWithoutTheReferenceEndsTheCountOfBadOnes) {
    // Slips at twelve epochs of thirteen would be given up at the eleventh in a row; the epoch
    // without the reference sets the count back to what the gap adds.
    StagedSession staged(Scenario());
    Swing(staged);
    const int sat = staged.Satellite(kGps, 1);
    staged.DropOut(staged.solver->periods[0].refSatGps, 25, 25);
    for (int e = 20; e <= 32; ++e) {
        staged.JumpFrom(sat, e, 4.0, 4.0);
    }
    staged.solver->RepairDoubleDifferenceSlips();
    EXPECT_TRUE(staged.EpochsWithout(sat).empty());
    EXPECT_EQ(staged.Segments(sat), kWhole);
    staged.ExpectOff(sat, 0, 0, 24, 0.0);
    staged.ExpectOff(sat, 0, 25, 25, 24.0);  // not tested there, so not repaired
    staged.ExpectOff(sat, 0, 26, 59, 0.0);
}

TEST_F(DoubleDifferenceSlips, TheEleventhSlipInARowIsGivenUp) {
    StagedSession staged(Scenario());
    Swing(staged);
    const int sat = staged.Satellite(kGps, 1);
    for (int e = 20; e <= 30; ++e) {
        staged.JumpFrom(sat, e, 4.0, 4.0);
    }
    staged.solver->RepairDoubleDifferenceSlips();
    // Ten epochs go in the first sweep; in the second the gap of eleven takes one more.
    EXPECT_EQ(staged.EpochsWithout(sat), Range(19, 29));
    EXPECT_EQ(staged.Segments(sat), (std::vector<Span>{{0, 18}, {30, 59}}));
}

// --- sweeps

TEST_F(DoubleDifferenceSlips, ASettledSatelliteKeepsItsEntriesWhileOthersAreSweptAgain) {
    StagedSession staged(Scenario());
    Swing(staged, 0.002);
    const int slow = staged.Satellite(kGps, 1);
    staged.JumpAt(slow, 20, 0.2, 0.0);   // goes in the second sweep
    staged.JumpAt(slow, 40, 0.06, 0.0);  // in the third
    staged.solver->RepairDoubleDifferenceSlips();
    EXPECT_EQ(staged.EpochsWithout(slow), (std::vector<int>{20, 40}));
    EXPECT_EQ(staged.Segments(slow), kWhole);
    staged.ExpectOthersUntouched(kGps, slow);  // one entry each
    EXPECT_EQ(staged.solver->ambiguityParas.size(), 5u);
}

TEST_F(DoubleDifferenceSlips, ASatelliteStillUnsettledAfterTheTenthSweepHasNoSegment) {
    // Jumps of falling size, each of which the tolerance of one more sweep brings to light.
    simulation::Scenario scenario = Scenario(1);
    scenario.epochCount = 80;
    for (const auto& [jumps, settles] : {std::pair{6, true}, {12, false}}) {
        ForgetProcess();
        StagedSession staged(scenario);
        Swing(staged, 0.0005);
        const int sat = staged.Satellite(kGps, 1);
        double size = 0.245;
        for (int k = 0; k < jumps; ++k) {
            staged.JumpAt(sat, 70 - (settles ? 12 : 4) * k, size,
                          0.0);  // the largest last, with a quiet past
            size *= 0.75;
        }
        staged.solver->RepairDoubleDifferenceSlips();
        EXPECT_EQ(staged.EpochsWithout(sat).size(), settles ? 6u : 9u);
        EXPECT_EQ(staged.Segments(sat).size(), settles ? 1u : 0u);
        staged.ExpectOthersUntouched(kGps, sat);
    }
}

TEST_F(DoubleDifferenceSlips, ASatelliteWithoutChangesIsFiledInEverySweep) {
    // It settles at once, but is not set aside: with segments of one epoch allowed, each of the two
    // sweeps that the others take files its only one.
    StagedSession staged(Scenario());
    Swing(staged);
    staged.solver->config.minEpochs = 1;
    const int sat = staged.Satellite(kGps, 1);
    staged.DropOut(sat, 0, 19);
    staged.DropOut(sat, 21, 59);
    staged.solver->RepairDoubleDifferenceSlips();
    EXPECT_EQ(staged.Segments(sat), (std::vector<Span>{{20, 20}, {20, 20}}));
}

TEST_F(DoubleDifferenceSlips, EntriesOfTheGlonassStageStay) {
    simulation::Scenario scenario = Scenario();
    scenario.satellites[1] = 5;
    StagedSession staged(scenario);
    Swing(staged);
    staged.solver->RepairGlonassSlips();
    const std::size_t glonass = staged.solver->ambiguityParas.size();
    ASSERT_EQ(glonass, 5u);
    staged.solver->RepairDoubleDifferenceSlips();
    EXPECT_EQ(staged.solver->ambiguityParas.size(), glonass + 5u);
    const auto& paras = staged.solver->ambiguityParas;
    EXPECT_TRUE(std::is_sorted(paras.begin(), paras.end(), [](const auto& a, const auto& b) {
        return std::tie(a.firstEpoch, a.lastEpoch, a.sat) <
               std::tie(b.firstEpoch, b.lastEpoch, b.sat);
    }));
}

// --- solve models and Galileo bands

TEST_F(DoubleDifferenceSlips, TheFirstFrequencyAloneLeavesTheSecondUntouched) {
    StagedSession staged(Scenario(1));
    Swing(staged);
    const int sat = staged.Satellite(kGps, 1);
    staged.JumpFrom(sat, 30, 2.0, 7.3);
    staged.solver->RepairDoubleDifferenceSlips();
    staged.ExpectOff(sat, 0, 0, 59, 0.0);
    staged.ExpectOff(sat, 1, 30, 59, 7.3);
    EXPECT_EQ(staged.Segments(sat), kWhole);
}

TEST_F(DoubleDifferenceSlips, TheSecondFrequencyAloneLeavesTheFirstUntouched) {
    StagedSession staged(Scenario(2));
    Swing(staged);
    const int sat = staged.Satellite(kGps, 1);
    staged.JumpFrom(sat, 30, 7.3, 2.0);
    staged.solver->RepairDoubleDifferenceSlips();
    staged.ExpectOff(sat, 0, 30, 59, 7.3);
    staged.ExpectOff(sat, 1, 0, 59, 0.0);
    EXPECT_EQ(staged.Segments(sat), kWhole);
}

TEST_F(DoubleDifferenceSlips, GalileoWithOneBandTwiceHasNoSecondFrequencyAndNoSegments) {
    simulation::Scenario scenario = Scenario();
    scenario.satellites[3] = 5;
    StagedSession staged(scenario);
    Swing(staged);
    staged.solver->config.galFreq1 = staged.solver->config.galFreq2 = 2;
    const int galileo = staged.Satellite(kGalileo, 1);
    staged.JumpFrom(galileo, 30, 3.0, 3.0);
    staged.solver->RepairDoubleDifferenceSlips();
    EXPECT_TRUE(staged.Segments(galileo).empty());
    staged.ExpectOff(galileo, 0, 30, 59, 3.0);
    EXPECT_EQ(staged.Segments(staged.Satellite(kGps, 1)), kWhole);
}

TEST_F(DoubleDifferenceSlips, GalileoOnItsFirstBandAloneNeedsNoSecond) {
    simulation::Scenario scenario = Scenario(1);
    scenario.satellites[3] = 5;
    StagedSession staged(scenario);
    Swing(staged);
    staged.solver->config.galFreq2 = staged.solver->config.galFreq1;
    const int galileo = staged.Satellite(kGalileo, 1);
    staged.JumpFrom(galileo, 30, 3.0, 0.0);
    staged.solver->RepairDoubleDifferenceSlips();
    EXPECT_EQ(staged.Segments(galileo), kWhole);
    staged.ExpectOff(galileo, 0, 0, 59, 0.0);
}

TEST_F(DoubleDifferenceSlips, AntennasAndOtherGalileoBandsAreInTheComputedValue) {
    // Tall antennas at low satellites: without their term the double differences would wander.
    simulation::Scenario scenario = Scenario();
    scenario.satellites[3] = 4;
    scenario.interval = 30.0;
    scenario.config.galFreq1 = 2;
    scenario.config.galFreq2 = 5;
    scenario.roverAntenna = {0.1, 0.4, 150.0};
    scenario.baseAntenna = {0.2, 0.1, 2.0};
    StagedSession staged(scenario);
    Swing(staged, 0.004);
    staged.solver->RepairDoubleDifferenceSlips();
    for (const int system : {kGps, kGalileo}) {
        const int reference = staged.solver->periods[0].ReferenceOf(system);
        staged.ExpectOthersUntouched(system, reference);
    }
}

TEST_F(DoubleDifferenceSlips, GalileoWithoutItsFirstBandIsNotTestedOnIt) {
    for (const int band : {1, 0}) {
        ForgetProcess();
        StagedSession staged(SingleSystem(kGalileo, 6, 1));
        staged.solver->config.galFreq1 = band;
        const int sat = staged.Satellite(kGalileo, 1);
        staged.JumpFrom(sat, 30, 3.0, 0.0);
        staged.solver->RepairDoubleDifferenceSlips();
        staged.ExpectOff(sat, 0, 30, 59, band == 1 ? 0.0 : 3.0);
        EXPECT_EQ(staged.Segments(sat), kWhole);
    }
}

TEST_F(DoubleDifferenceSlips, EpochsOutsideAllPeriodsOrWithoutTheirReferencesAreLeftAsTheyAre) {
    StagedSession staged(Scenario());
    Swing(staged);
    StaticPeriod lost = staged.solver->periods[0];
    staged.solver->periods[0].startIndex = 2;
    staged.solver->periods[0].endIndex = 57;
    lost.startIndex = 58;
    lost.refSatGps = -1;
    staged.solver->periods.push_back(lost);
    const int sat = staged.Satellite(kGps, 1);
    for (const int e : {0, 1, 58, 59}) {
        staged.JumpAt(sat, e, 7.0, -5.0);
    }
    staged.solver->RepairDoubleDifferenceSlips();
    for (const int e : {0, 1, 58, 59}) {
        EXPECT_EQ(staged.Off(sat, 0, e), 7.0);
        EXPECT_EQ(staged.Off(sat, 1, e), -5.0);
        EXPECT_TRUE(staged.Epoch(e).IsActive(sat));
    }
    staged.ExpectOff(sat, 0, 2, 57, 0.0);
    EXPECT_EQ(staged.Segments(sat), (std::vector<Span>{{2, 57}}));
}

}  // namespace
}  // namespace vornel::test
