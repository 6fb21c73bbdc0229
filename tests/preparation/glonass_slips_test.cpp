#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>
#include <vector>

#include "exports/process_fixture.h"
#include "run/staged_session.h"

namespace vornel::test {
namespace {

// --- the majority among changes

class ClusterDeltas : public ProcessTest {
  protected:
    // Gives satellites 36, 37, ... these changes in this order.
    int Cluster(const std::vector<double>& changes, int frequency) {
        const SolveConfig config;
        const double none[3] = {};
        const StaticSolve solver(1, 0, config, {}, nullptr, nullptr, nullptr, nullptr, 1, {}, none,
                                 none, 0.0, 1, {}, none, none, 0.0);
        double deltas[kSatelliteCount] = {};
        std::vector<int> sats;
        for (std::size_t i = 0; i < changes.size(); ++i) {
            sats.push_back(36 + static_cast<int>(i));
            deltas[35 + i] = changes[i];
        }
        return solver.ClusterDeltas(sats, deltas, frequency, mean, outliers);
    }

    double mean = -77.0;
    std::vector<int> outliers;
};

TEST_F(ClusterDeltas, NoSatellitesAgree) {
    EXPECT_EQ(Cluster({}, 1), 1);
}

TEST_F(ClusterDeltas, OneOrTwoDecideNothingEvenWhenEqual) {
    EXPECT_EQ(Cluster({0.5}, 1), -1);
    EXPECT_EQ(Cluster({0.5, 0.5}, 1), -1);
    EXPECT_EQ(mean, -77.0);
    EXPECT_TRUE(outliers.empty());
}

TEST_F(ClusterDeltas, SatellitesWithinTheToleranceAgree) {
    EXPECT_EQ(Cluster({10.0, 10.03, 9.98, 10.01}, 1), 1);
    EXPECT_TRUE(outliers.empty());
}

TEST_F(ClusterDeltas, AMajorityStandsAgainstOutliers) {
    EXPECT_EQ(Cluster({2.01, 5.0, 1.99, 2.03, -4.0}, 1), 0);
    EXPECT_NEAR(mean, (2.01 + 1.99 + 2.03) / 3.0, 1e-12);
    EXPECT_EQ(outliers, (std::vector<int>{37, 40}));
}

TEST_F(ClusterDeltas, OutliersAreAppended) {
    outliers = {50};
    EXPECT_EQ(Cluster({0.0, 0.0, 0.0, 9.0}, 1), 0);
    EXPECT_EQ(outliers, (std::vector<int>{50, 39}));
}

TEST_F(ClusterDeltas, TwoAgainstTwoDecideNothing) {
    EXPECT_EQ(Cluster({0.0, 1.0, 0.0, 1.0}, 1), -1);
    EXPECT_EQ(mean, -77.0);
    EXPECT_TRUE(outliers.empty());
}

TEST_F(ClusterDeltas, ThreeAgainstThreeAndOneDecideNothing) {
    EXPECT_EQ(Cluster({0.0, 1.0, 0.0, 1.0, 5.0, 0.0, 1.0}, 1), -1);
}

TEST_F(ClusterDeltas, AllApartDecideNothing) {
    EXPECT_EQ(Cluster({0.0, 1.0, 2.0}, 1), -1);
}

TEST_F(ClusterDeltas, AChainBreaksWhereTheMeanIsTooFar) {
    // The second joins the first; the third is 0.06 from the second, but 0.09 from their mean.
    EXPECT_EQ(Cluster({0.00, 0.06, 0.12}, 1), 0);
    EXPECT_NEAR(mean, 0.03, 1e-15);
    EXPECT_EQ(outliers, (std::vector<int>{38}));
}

TEST_F(ClusterDeltas, TheOrderOfSatellitesMatters) {
    EXPECT_EQ(Cluster({0.12, 0.06, 0.00}, 1), 0);
    EXPECT_NEAR(mean, 0.09, 1e-15);
    EXPECT_EQ(outliers, (std::vector<int>{38}));
}

TEST_F(ClusterDeltas, AChangeOnceLeftBehindIsNotTakenUpAgain) {
    // 0.08 is too far from 0.00 when its turn comes; that 0.05 moves the mean near it comes too
    // late.
    EXPECT_EQ(Cluster({0.00, 0.08, 0.05}, 1), 0);
    EXPECT_NEAR(mean, 0.025, 1e-15);
    EXPECT_EQ(outliers, (std::vector<int>{37}));
}

TEST_F(ClusterDeltas, TheFirstFrequencyToleratesBelowSevenCentimetres) {
    EXPECT_EQ(Cluster({0.0, 0.0, 0.07}, 1), 0);
    EXPECT_EQ(Cluster({0.0, 0.0, 0.0699}, 1), 1);
    EXPECT_EQ(Cluster({0.0, 0.0, -0.0699}, 1), 1);
}

TEST_F(ClusterDeltas, TheSecondFrequencyToleratesBelowEightCentimetres) {
    EXPECT_EQ(Cluster({0.0, 0.0, 0.08}, 2), 0);
    EXPECT_EQ(Cluster({0.0, 0.0, 0.0799}, 2), 1);
    EXPECT_EQ(Cluster({0.0, 0.0, 0.07}, 2), 1);
}

// --- the stage

class GlonassSlips : public ProcessTest {
  protected:
    // Session of GLONASS alone, both frequencies, arcs of at least ten epochs.
    static simulation::Scenario Scenario(int count, int model = 3) {
        return SingleSystem(kGlonass, count, model);
    }
    static std::vector<int> AllOf(const StagedSession& staged) {
        std::vector<int> all;
        for (const int sat : staged.session.satellites) {
            if (SplitSatNumber(sat) == kGlonass) {
                all.push_back(sat);
            }
        }
        return all;
    }
    // Makes the epoch undecidable: two against two.
    static void Split(StagedSession& staged, int epoch, double cycles) {
        const std::vector<int> all = AllOf(staged);
        ASSERT_EQ(all.size(), 4u);
        for (const int sat : {all[0], all[1]}) {
            const double metres = cycles * 0.187;
            staged.JumpFrom(sat, epoch,
                            metres / simulation::CarrierWavelength(staged.solver->config, sat, 0),
                            metres / simulation::CarrierWavelength(staged.solver->config, sat, 1));
        }
    }
};

const std::vector<Span> kWhole{{0, 59}};

TEST_F(GlonassSlips, QuietDataAreLeftAsTheyAre) {
    StagedSession staged(Scenario(5));
    staged.solver->RepairGlonassSlips();
    const std::vector<int> all = AllOf(staged);
    ASSERT_EQ(all.size(), 5u);
    for (const int sat : all) {
        EXPECT_EQ(staged.Segments(sat), kWhole);  // the reference like any other
        EXPECT_TRUE(staged.EpochsWithout(sat).empty());
        staged.ExpectClean(sat);
    }
}

TEST_F(GlonassSlips, TheAntennasPartInAChangeIsNoSlip) {
    // On a mast of a hundred metres it is decimetres from epoch to epoch, another for every
    // satellite.
    simulation::Scenario scenario = Scenario(5);
    scenario.interval = 30.0;
    scenario.roverAntenna.height = 100.0;
    StagedSession staged(scenario);
    staged.solver->RepairGlonassSlips();
    for (const int sat : AllOf(staged)) {
        EXPECT_EQ(staged.Segments(sat), kWhole);
        EXPECT_TRUE(staged.EpochsWithout(sat).empty());
        staged.ExpectClean(sat);
    }
}

TEST_F(GlonassSlips, ASlipOfOneAmongFiveIsTakenOutOfAllLaterPhases) {
    for (const auto& [first, second] :
         {std::pair{3.0, 0.0}, {0.0, -2.0}, {-1.0, 1.0}, {123456.0, 98765.0}}) {
        ForgetProcess();
        StagedSession staged(Scenario(5));
        const int sat = staged.Satellite(kGlonass, 1);
        staged.JumpFrom(sat, 30, first, second);
        staged.solver->RepairGlonassSlips();
        staged.ExpectClean(sat);
        EXPECT_EQ(staged.Segments(sat), kWhole);
        EXPECT_TRUE(staged.EpochsWithout(sat).empty());
        staged.ExpectOthersUntouched(kGlonass, sat);
    }
}

TEST_F(GlonassSlips, ASlipOfTheReferenceIsRepairedOnTheReference) {
    StagedSession staged(Scenario(5));
    const int reference = staged.solver->periods[0].refSatGlo;
    staged.JumpFrom(reference, 25, 7.0, -4.0);
    staged.solver->RepairGlonassSlips();
    staged.ExpectClean(reference);
    EXPECT_EQ(staged.Segments(reference), kWhole);
}

TEST_F(GlonassSlips, SlipsOfSeveralSatellitesAtSeveralEpochsAreTakenOut) {
    StagedSession staged(Scenario(6));
    const int a = staged.Satellite(kGlonass, 0), b = staged.Satellite(kGlonass, 1);
    staged.JumpFrom(a, 15, 5.0, 9.0);
    staged.JumpFrom(b, 15, -8.0, 2.0);
    staged.JumpFrom(a, 40, 1.0, 0.0);
    staged.solver->RepairGlonassSlips();
    staged.ExpectClean(a);
    staged.ExpectClean(b);
    EXPECT_EQ(staged.Segments(a), kWhole);
    EXPECT_EQ(staged.Segments(b), kWhole);
}

TEST_F(GlonassSlips, SlipsMadeByTheReceiverAreTakenOut) {
    simulation::Scenario scenario = Scenario(5);
    StagedSession clean(scenario);
    const int a = clean.Satellite(kGlonass, 0), b = clean.Satellite(kGlonass, 2);
    scenario.slips = {{simulation::kRover, a, 20, {12.0, 7.0}},
                      {simulation::kBase, b, 33, {-3.0, 5.0}}};
    ForgetProcess();
    StagedSession staged(scenario);
    staged.solver->RepairGlonassSlips();
    for (const int sat : {a, b}) {
        EXPECT_EQ(staged.Segments(sat), kWhole);
        for (int e = 0; e < 60; ++e) {
            for (int f = 0; f < 2; ++f) {
                EXPECT_NEAR(staged.Epoch(e).phase[sat - 1][f], clean.Epoch(e).phase[sat - 1][f],
                            1e-7);
            }
        }
    }
}

TEST_F(GlonassSlips, OtherSystemsAreLeftAlone) {
    simulation::Scenario scenario = Scenario(5);
    scenario.satellites[0] = 5;
    StagedSession staged(scenario);
    const int gps = staged.Satellite(kGps, 1);
    staged.JumpFrom(gps, 30, 3.0, 4.0);
    staged.solver->RepairGlonassSlips();
    EXPECT_TRUE(staged.Segments(gps).empty());
    staged.ExpectOff(gps, 0, 30, 59, 3.0);
    staged.ExpectOff(gps, 1, 30, 59, 4.0);
    EXPECT_TRUE(staged.EpochsWithout(gps).empty());
}

TEST_F(GlonassSlips, AJumpByNoWholeCycleLosesOneEpochAndStays) {
    // 0.45 cycle is beyond either tolerance and rounds to none. The epoch after, tested across the
    // gap, rounds to none as well.
    StagedSession staged(Scenario(5));
    const int sat = staged.Satellite(kGlonass, 1);
    staged.JumpFrom(sat, 30, 0.45, 0.0);
    staged.solver->RepairGlonassSlips();
    EXPECT_EQ(staged.EpochsWithout(sat), Range(30, 30));
    staged.ExpectOff(sat, 0, 31, 59, 0.45);
    EXPECT_EQ(staged.Segments(sat), kWhole);
}

TEST_F(GlonassSlips, EachFrequencyIsJudgedByItsOwnTolerance) {
    // 7.5 cm is too much for the first frequency and not for the second.
    for (const int signal : {0, 1}) {
        ForgetProcess();
        StagedSession staged(Scenario(5));
        const int sat = staged.Satellite(kGlonass, 1);
        const double cycles =
            0.075 / simulation::CarrierWavelength(staged.solver->config, sat, signal);
        staged.JumpFrom(sat, 30, signal == 0 ? cycles : 0.0, signal == 1 ? cycles : 0.0);
        staged.solver->RepairGlonassSlips();
        EXPECT_EQ(staged.EpochsWithout(sat), signal == 0 ? Range(30, 30) : std::vector<int>());
        staged.ExpectOff(sat, signal, 31, 59, cycles);
        EXPECT_EQ(staged.Segments(sat), kWhole);
    }
}

TEST_F(GlonassSlips, AnOutlyingEpochOnTheSecondFrequencyTakesBackTheRepairOfTheFirst) {
    StagedSession staged(Scenario(5));
    const int sat = staged.Satellite(kGlonass, 1);
    staged.JumpAt(sat, 30, 2.0, 0.45);
    staged.solver->RepairGlonassSlips();
    EXPECT_EQ(staged.EpochsWithout(sat), Range(30, 30));
    staged.ExpectOff(sat, 0, 30, 30, 2.0);
    staged.ExpectOff(sat, 0, 31, 59, 0.0);
    staged.ExpectOff(sat, 1, 31, 59, 0.0);
    EXPECT_EQ(staged.Segments(sat), kWhole);
}

TEST_F(GlonassSlips, ALastingJumpBesideAnOutlyingOneIsRepairedAcrossTheGap) {
    StagedSession staged(Scenario(5));
    const int sat = staged.Satellite(kGlonass, 1);
    staged.JumpFrom(sat, 30, 3.0, 0.45);
    staged.solver->RepairGlonassSlips();
    EXPECT_EQ(staged.EpochsWithout(sat), Range(30, 30));
    staged.ExpectOff(sat, 0, 31, 59, 0.0);
    staged.ExpectOff(sat, 1, 31, 59, 0.45);
    EXPECT_EQ(staged.Segments(sat), kWhole);
}

TEST_F(GlonassSlips, TwoAgainstTwoStartsNewSegmentsForAll) {
    StagedSession staged(Scenario(4));
    Split(staged, 30, 3.0);
    const std::vector<int> all = AllOf(staged);
    staged.solver->RepairGlonassSlips();
    for (const int sat : all) {
        EXPECT_EQ(staged.Segments(sat), (std::vector<Span>{{0, 29}, {30, 59}}));
        EXPECT_TRUE(staged.EpochsWithout(sat).empty());
    }
    EXPECT_GT(staged.Off(all[0], 0, 59), 2.5);  // nothing was repaired
}

TEST_F(GlonassSlips, OneUndecidedFrequencyIsEnough) {
    for (const int signal : {0, 1}) {
        ForgetProcess();
        StagedSession staged(Scenario(4));
        const std::vector<int> all = AllOf(staged);
        for (const int sat : {all[0], all[1]}) {
            const double cycles =
                0.5 / simulation::CarrierWavelength(staged.solver->config, sat, signal);
            staged.JumpFrom(sat, 30, signal == 0 ? cycles : 0.0, signal == 1 ? cycles : 0.0);
        }
        staged.solver->RepairGlonassSlips();
        for (const int sat : all) {
            EXPECT_EQ(staged.Segments(sat), (std::vector<Span>{{0, 29}, {30, 59}}));
            EXPECT_TRUE(staged.EpochsWithout(sat).empty());
        }
    }
}

TEST_F(GlonassSlips, AnUndecidedEpochSoonAfterARepairLosesTheEpochsSince) {
    StagedSession staged(Scenario(4));
    const std::vector<int> all = AllOf(staged);
    staged.JumpFrom(all[0], 20, 4.0, 4.0);
    Split(staged, 25, 3.0);
    staged.solver->RepairGlonassSlips();
    EXPECT_EQ(staged.EpochsWithout(all[0]), Range(21, 24));
    EXPECT_EQ(staged.Segments(all[0]), (std::vector<Span>{{0, 20}, {25, 59}}));
    for (const int sat : {all[1], all[2], all[3]}) {
        EXPECT_TRUE(staged.EpochsWithout(sat).empty());
        EXPECT_EQ(staged.Segments(sat), (std::vector<Span>{{0, 24}, {25, 59}}));
    }
}

TEST_F(GlonassSlips, AnotherUndecidedEpochSoonAfterLosesTheEpochsBetween) {
    StagedSession staged(Scenario(4));
    Split(staged, 30, 3.0);
    Split(staged, 35, 3.0);
    staged.solver->RepairGlonassSlips();
    for (const int sat : AllOf(staged)) {
        EXPECT_EQ(staged.Segments(sat), (std::vector<Span>{{0, 29}, {35, 59}}));
        EXPECT_EQ(staged.EpochsWithout(sat), Range(30, 34));
    }
}

TEST_F(GlonassSlips, AnotherUndecidedEpochTenEpochsLaterKeepsThem) {
    StagedSession staged(Scenario(4));
    Split(staged, 30, 3.0);
    Split(staged, 40, 3.0);
    staged.solver->RepairGlonassSlips();
    for (const int sat : AllOf(staged)) {
        EXPECT_EQ(staged.Segments(sat), (std::vector<Span>{{0, 29}, {30, 39}, {40, 59}}));
        EXPECT_TRUE(staged.EpochsWithout(sat).empty());
    }
}

TEST_F(GlonassSlips, AnUndecidedEpochAfterALongFailureLeavesTheSegmentsEndWhereItWas) {
    // The satellite slips at ten epochs in a row; at the next nobody can tell. It leaves the ten
    // epochs, yet its segment still ends at the last of them.
    StagedSession staged(Scenario(4));
    const int sat = AllOf(staged)[0];
    for (int e = 20; e < 30; ++e) {
        staged.JumpFrom(sat, e, 5.0, 5.0);
    }
    Split(staged, 30, 3.0);
    staged.solver->RepairGlonassSlips();
    EXPECT_EQ(staged.EpochsWithout(sat), Range(20, 29));
    EXPECT_EQ(staged.Segments(sat), (std::vector<Span>{{0, 29}, {30, 59}}));
}

TEST_F(GlonassSlips, AnOutlierAgainSoonAfterItsReturnLosesTheEpochsSinceAndStartsAnew) {
    StagedSession staged(Scenario(5));
    const int sat = staged.Satellite(kGlonass, 1);
    staged.JumpFrom(sat, 20, 4.0, 4.0);
    staged.JumpFrom(sat, 25, 6.0, 6.0);
    staged.solver->RepairGlonassSlips();
    EXPECT_EQ(staged.EpochsWithout(sat), Range(21, 24));
    EXPECT_EQ(staged.Segments(sat), (std::vector<Span>{{0, 20}, {25, 59}}));
    staged.ExpectOff(sat, 0, 20, 20, 0.0);
    staged.ExpectOff(sat, 0, 25, 59, 6.0);  // a new ambiguity takes it
    staged.ExpectOthersUntouched(kGlonass, sat);
}

TEST_F(GlonassSlips, AnOutlierTenGoodEpochsAfterItsReturnIsRepaired) {
    StagedSession staged(Scenario(5));
    const int sat = staged.Satellite(kGlonass, 1);
    staged.JumpFrom(sat, 20, 4.0, 4.0);
    staged.JumpFrom(sat, 31, 6.0, 6.0);
    staged.solver->RepairGlonassSlips();
    EXPECT_TRUE(staged.EpochsWithout(sat).empty());
    EXPECT_EQ(staged.Segments(sat), kWhole);
    staged.ExpectClean(sat);
}

TEST_F(GlonassSlips, AnOutlierNineGoodEpochsAfterItsReturnIsNot) {
    StagedSession staged(Scenario(5));
    const int sat = staged.Satellite(kGlonass, 1);
    staged.JumpFrom(sat, 20, 4.0, 4.0);
    staged.JumpFrom(sat, 30, 6.0, 6.0);
    staged.solver->RepairGlonassSlips();
    EXPECT_EQ(staged.EpochsWithout(sat), Range(21, 29));
    EXPECT_EQ(staged.Segments(sat), (std::vector<Span>{{0, 20}, {30, 59}}));
}

TEST_F(GlonassSlips, AnOutlierForTooLongLosesItsEpochsAndStartsAnew) {
    StagedSession staged(Scenario(5));
    const int sat = staged.Satellite(kGlonass, 1);
    for (int e = 20; e <= 30; ++e) {
        staged.JumpFrom(sat, e, 5.0, 5.0);
    }
    staged.solver->RepairGlonassSlips();
    EXPECT_EQ(staged.EpochsWithout(sat), Range(20, 29));
    EXPECT_EQ(staged.Segments(sat), (std::vector<Span>{{0, 19}, {30, 59}}));
    staged.ExpectOff(sat, 0, 30, 59, 5.0);  // the last slip, at the start of the new segment
}

TEST_F(GlonassSlips, TenSlipsInARowAreStillRepaired) {
    StagedSession staged(Scenario(5));
    const int sat = staged.Satellite(kGlonass, 1);
    for (int e = 20; e < 30; ++e) {
        staged.JumpFrom(sat, e, 5.0, -5.0);
    }
    staged.solver->RepairGlonassSlips();
    staged.ExpectClean(sat);
    EXPECT_EQ(staged.Segments(sat), kWhole);
}

TEST_F(GlonassSlips, AGapWithoutASlipStaysInsideItsSegment) {
    StagedSession staged(Scenario(5));
    const int sat = staged.Satellite(kGlonass, 1);
    staged.DropOut(sat, 15, 40);
    staged.solver->RepairGlonassSlips();
    EXPECT_EQ(staged.Segments(sat), kWhole);
    EXPECT_EQ(staged.EpochsWithout(sat), Range(15, 40));
    staged.ExpectClean(sat);
}

TEST_F(GlonassSlips, ASlipInAGapIsRepairedAgainstTheOtherSatellites) {
    StagedSession staged(Scenario(5));
    const int sat = staged.Satellite(kGlonass, 1);
    staged.DropOut(sat, 20, 24);
    staged.JumpFrom(sat, 23, 11.0, -6.0);
    staged.solver->RepairGlonassSlips();
    EXPECT_EQ(staged.Segments(sat), kWhole);
    EXPECT_EQ(staged.EpochsWithout(sat), Range(20, 24));
    staged.ExpectOff(sat, 0, 25, 59, 0.0);
    staged.ExpectOff(sat, 1, 25, 59, 0.0);
}

TEST_F(GlonassSlips, ASlipOfOneFrequencyInAGapIsRepairedOnThatOne) {
    for (const int slipped : {0, 1}) {
        ForgetProcess();
        StagedSession staged(Scenario(5));
        const int sat = staged.Satellite(kGlonass, 1);
        staged.DropOut(sat, 20, 24);
        staged.JumpFrom(sat, 23, slipped == 0 ? 11.0 : 0.0, slipped == 1 ? -6.0 : 0.0);
        staged.solver->RepairGlonassSlips();
        EXPECT_EQ(staged.Segments(sat), kWhole);
        EXPECT_EQ(staged.EpochsWithout(sat), Range(20, 24));
        staged.ExpectOff(sat, 0, 25, 59, 0.0);
        staged.ExpectOff(sat, 1, 25, 59, 0.0);
        staged.ExpectOthersUntouched(kGlonass, sat);
    }
}

TEST_F(GlonassSlips, ASlipInAGapOfNineEpochsIsStillRepaired) {
    StagedSession staged(Scenario(5));
    const int sat = staged.Satellite(kGlonass, 1);
    staged.DropOut(sat, 20, 27);  // back nine epochs after its last
    staged.JumpFrom(sat, 28, 11.0, -6.0);
    staged.solver->RepairGlonassSlips();
    EXPECT_EQ(staged.Segments(sat), kWhole);
    staged.ExpectOff(sat, 0, 28, 59, 0.0);
}

TEST_F(GlonassSlips, ASlipInAGapOfTenEpochsStartsANewSegmentAndLosesTheLastEpochBefore) {
    StagedSession staged(Scenario(5));
    const int sat = staged.Satellite(kGlonass, 1);
    staged.DropOut(sat, 20, 28);
    staged.JumpFrom(sat, 29, 11.0, -6.0);
    staged.solver->RepairGlonassSlips();
    EXPECT_EQ(staged.Segments(sat), (std::vector<Span>{{0, 18}, {29, 59}}));
    EXPECT_EQ(staged.EpochsWithout(sat), Range(19, 28));
    staged.ExpectOff(sat, 0, 29, 59, 11.0);
}

TEST_F(GlonassSlips, ARepairAcrossAGapCountsOnInTheFailure) {
    // The gap counts from epoch 19 on. Nine epochs and the repair at the return make ten, too many
    // for another slip right after it; eight and the repair do not.
    for (const int back : {28, 27}) {
        ForgetProcess();
        StagedSession staged(Scenario(5));
        const int sat = staged.Satellite(kGlonass, 1);
        staged.DropOut(sat, 20, back - 1);
        staged.JumpFrom(sat, back, 11.0, -6.0);
        staged.JumpFrom(sat, back + 1, 4.0, 4.0);
        staged.solver->RepairGlonassSlips();
        if (back == 28) {
            EXPECT_EQ(staged.Segments(sat), (std::vector<Span>{{0, 18}, {29, 59}}));
            EXPECT_EQ(staged.EpochsWithout(sat), Range(19, 28));
            staged.ExpectOff(sat, 0, 29, 59, 4.0);
        } else {
            EXPECT_EQ(staged.Segments(sat), kWhole);
            EXPECT_EQ(staged.EpochsWithout(sat), Range(20, 26));
            staged.ExpectOff(sat, 0, 27, 59, 0.0);
        }
    }
}

TEST_F(GlonassSlips, AGapThatNobodyCanBridgeStartsANewSegment) {
    // At the last epoch before the gap the satellite stood there with one other, that loses this
    // epoch in turn.
    StagedSession staged(Scenario(5));
    const std::vector<int> all = AllOf(staged);
    const int sat = all[0];
    for (std::size_t i = 2; i < all.size(); ++i) {
        staged.DropOut(all[i], 19, 19);
    }
    staged.DropOut(sat, 20, 24);
    staged.solver->RepairGlonassSlips();
    EXPECT_EQ(staged.Segments(sat), (std::vector<Span>{{0, 18}, {25, 59}}));
    EXPECT_EQ(staged.EpochsWithout(sat), Range(20, 24));
    EXPECT_EQ(staged.EpochsWithout(all[1]), Range(19, 19));
    for (std::size_t i = 2; i < all.size(); ++i) {
        EXPECT_EQ(staged.Segments(all[i]), kWhole);
    }
}

TEST_F(GlonassSlips, TwoAgainstTwoAcrossAGapStartNewSegmentsForAll) {
    // A gap counts from the last epoch before it, which so belongs to the failure: the old segment
    // ends at the one before that.
    StagedSession staged(Scenario(4));
    const std::vector<int> all = AllOf(staged);
    for (const int sat : all) {
        staged.DropOut(sat, 20, 24);
    }
    Split(staged, 25, 3.0);
    staged.solver->RepairGlonassSlips();
    for (const int sat : all) {
        EXPECT_EQ(staged.Segments(sat), (std::vector<Span>{{0, 18}, {25, 59}}));
        EXPECT_EQ(staged.EpochsWithout(sat), Range(20, 24));
    }
    EXPECT_GT(staged.Off(all[0], 0, 59), 2.5);  // nothing was repaired
}

TEST_F(GlonassSlips, TheReturnFromAGapIsTheFirstGoodEpoch) {
    // Back at epoch 25. A slip after one or nine good epochs costs them; after ten it is repaired.
    for (const int slipped : {26, 34, 35}) {
        ForgetProcess();
        StagedSession staged(Scenario(5));
        const int sat = staged.Satellite(kGlonass, 1);
        staged.DropOut(sat, 20, 24);
        staged.JumpFrom(sat, slipped, 6.0, 6.0);
        staged.solver->RepairGlonassSlips();
        if (slipped == 35) {
            EXPECT_EQ(staged.Segments(sat), kWhole);
            EXPECT_EQ(staged.EpochsWithout(sat), Range(20, 24));
            staged.ExpectOff(sat, 0, 25, 59, 0.0);
        } else {
            EXPECT_EQ(staged.Segments(sat), (std::vector<Span>{{0, 24}, {slipped, 59}}));
            EXPECT_EQ(staged.EpochsWithout(sat), Range(20, slipped - 1));
            staged.ExpectOff(sat, 0, slipped, 59, 6.0);
        }
    }
}

TEST_F(GlonassSlips, ASlipOfAnotherSatelliteDoesNotSpoilTheReturnFromALongGap) {
    StagedSession staged(Scenario(5));
    const int sat = staged.Satellite(kGlonass, 1), other = staged.Satellite(kGlonass, 2);
    staged.DropOut(sat, 20, 34);
    staged.JumpFrom(other, 35, 9.0, -4.0);
    staged.solver->RepairGlonassSlips();
    EXPECT_EQ(staged.Segments(sat), kWhole);
    EXPECT_EQ(staged.EpochsWithout(sat), Range(20, 34));
    staged.ExpectClean(sat);
    EXPECT_EQ(staged.Segments(other), kWhole);
    staged.ExpectClean(other);
}

TEST_F(GlonassSlips, ASatelliteThatIsMissingAtTheReturnSaysNothingAboutTheGap) {
    // Three come to the return from the gap, and agree. Three others stood there before the gap as
    // well; their last change, an epoch older, would make it three against three.
    StagedSession staged(Scenario(6));
    const std::vector<int> all = AllOf(staged);
    ASSERT_EQ(all.size(), 6u);
    staged.DropOut(all[0], 20, 24);
    for (const int sat : {all[3], all[4], all[5]}) {
        staged.DropOut(sat, 25, 25);
    }
    staged.solver->RepairGlonassSlips();
    EXPECT_EQ(staged.Segments(all[0]), kWhole);
    EXPECT_EQ(staged.EpochsWithout(all[0]), Range(20, 24));
    // The two that were there at epoch 24 are too few to tell anything at 25.
    for (const int sat : {all[1], all[2]}) {
        EXPECT_EQ(staged.Segments(sat), (std::vector<Span>{{0, 24}, {25, 59}}));
        EXPECT_TRUE(staged.EpochsWithout(sat).empty());
    }
    for (const int sat : {all[3], all[4], all[5]}) {
        EXPECT_EQ(staged.Segments(sat), kWhole);
    }
}

TEST_F(GlonassSlips, SatellitesBackAtTheSameEpochAreTestedWithTheirOwnChanges) {
    // The clocks drift apart, so that a change over the wrong gap is far off. The satellite with
    // the longer gap is tested first, against the other at a time before that one's gap.
    simulation::Scenario scenario = Scenario(6);
    scenario.roverClock.drift = 5e-9;
    StagedSession staged(scenario);
    const std::vector<int> all = AllOf(staged);
    staged.DropOut(all[1], 20, 26);
    staged.DropOut(all[3], 24, 26);
    staged.JumpFrom(all[3], 27, 6.0, 5.0);
    staged.solver->RepairGlonassSlips();
    for (const int sat : {all[1], all[3]}) {
        EXPECT_EQ(staged.Segments(sat), kWhole);
        staged.ExpectOff(sat, 0, 27, 59, 0.0);
        staged.ExpectOff(sat, 1, 27, 59, 0.0);
    }
}

TEST_F(GlonassSlips, NoSegmentSpansTwoPeriodsAndNoSlipIsSeenBetweenThem) {
    simulation::Scenario scenario = Scenario(5);
    scenario.config.periodLength = 290.0;
    StagedSession staged(scenario);
    ASSERT_EQ(staged.solver->periods.size(), 2u);
    ASSERT_EQ(staged.solver->periods[0].endIndex, 29);
    const int sat = staged.Satellite(kGlonass, 1);
    staged.JumpFrom(sat, 30, 3.0, 2.0);
    staged.solver->RepairGlonassSlips();
    for (const int each : AllOf(staged)) {
        EXPECT_EQ(staged.Segments(each), (std::vector<Span>{{0, 29}, {30, 59}}));
    }
    staged.ExpectOff(sat, 0, 30, 59, 3.0);
}

TEST_F(GlonassSlips, CountsGoOnThroughAChangeOfPeriod) {
    simulation::Scenario scenario = Scenario(5);
    scenario.config.periodLength = 290.0;
    StagedSession staged(scenario);
    const int sat = staged.Satellite(kGlonass, 1);
    staged.JumpFrom(sat, 28, 3.0,
                    2.0);  // repaired; 29 is good, 30 the first of its period, 31 good
    staged.JumpFrom(sat, 32, 4.0, 4.0);
    staged.solver->RepairGlonassSlips();
    EXPECT_EQ(staged.EpochsWithout(sat), Range(30, 31));
    EXPECT_EQ(staged.Segments(sat), (std::vector<Span>{{0, 29}, {32, 59}}));
    staged.ExpectOff(sat, 0, 29, 29, 0.0);
    staged.ExpectOff(sat, 0, 32, 59, 4.0);
}

TEST_F(GlonassSlips, TheSecondFrequencyAloneTestsNothingAndCutsSegmentsOnly) {
    simulation::Scenario scenario = Scenario(5, 2);
    scenario.config.periodLength = 290.0;
    StagedSession staged(scenario);
    const int slipped = staged.Satellite(kGlonass, 0);
    const int gapped = staged.Satellite(kGlonass, 1);
    const int lost = staged.Satellite(kGlonass, 2);
    staged.JumpFrom(slipped, 15, 3.0, 3.0);
    staged.DropOut(gapped, 10, 14);
    staged.DropOut(lost, 45, 59);
    staged.solver->RepairGlonassSlips();
    staged.ExpectOff(slipped, 1, 15, 59, 3.0);
    const std::vector<Span> both{{0, 29}, {30, 59}};
    EXPECT_EQ(staged.Segments(slipped), both);
    EXPECT_EQ(staged.Segments(gapped), both);
    EXPECT_EQ(staged.Segments(lost), (std::vector<Span>{{0, 29}, {30, 44}}));
}

TEST_F(GlonassSlips, TheFirstFrequencyAloneLeavesTheSecondUntouched) {
    StagedSession staged(Scenario(5, 1));
    const int sat = staged.Satellite(kGlonass, 1);
    staged.JumpFrom(sat, 30, 3.0, 8.0);
    staged.solver->RepairGlonassSlips();
    staged.ExpectOff(sat, 0, 0, 59, 0.0);
    staged.ExpectOff(sat, 1, 30, 59, 8.0);
    EXPECT_EQ(staged.Segments(sat), kWhole);
}

TEST_F(GlonassSlips, ASegmentShorterThanTheFewestEpochsIsNotFiledYetItsDataStay) {
    StagedSession staged(Scenario(6));
    const int nine = staged.Satellite(kGlonass, 0), ten = staged.Satellite(kGlonass, 1);
    staged.DropOut(nine, 9, 59);
    staged.DropOut(ten, 10, 59);
    staged.solver->RepairGlonassSlips();
    EXPECT_TRUE(staged.Segments(nine).empty());
    EXPECT_EQ(staged.Segments(ten), (std::vector<Span>{{0, 9}}));
    EXPECT_EQ(staged.EpochsWithout(nine), Range(9, 59));
}

TEST_F(GlonassSlips, TwoSatellitesGiveNoAmbiguitiesAtAll) {
    StagedSession staged(Scenario(2));
    staged.solver->RepairGlonassSlips();
    EXPECT_TRUE(staged.solver->ambiguityParas.empty());
    for (const int sat : AllOf(staged)) {
        EXPECT_EQ(staged.EpochsWithout(sat), Range(0, 58));
    }
}

TEST_F(GlonassSlips, SegmentsOfOneEpochAreFiledWhenOneIsEnough) {
    // Epoch 0 counts as good and as bad: at epoch 1 the bad one takes it out, the segment that it
    // was still stands.
    for (const int fewest : {1, 0}) {
        ForgetProcess();
        simulation::Scenario scenario = Scenario(2);
        StagedSession staged(scenario);
        staged.solver->config.minEpochs = fewest;
        staged.solver->RepairGlonassSlips();
        for (const int sat : AllOf(staged)) {
            const std::vector<Span> segments = staged.Segments(sat);
            ASSERT_EQ(segments.size(), 60u);
            for (int e = 0; e < 60; ++e) {
                EXPECT_EQ(segments[static_cast<std::size_t>(e)], Span(e, e));
            }
            EXPECT_EQ(staged.EpochsWithout(sat), Range(0, 0));
        }
    }
}

TEST_F(GlonassSlips, SegmentsAreFiledInOrderOfEpochsThenSatellites) {
    StagedSession staged(Scenario(6));
    staged.DropOut(staged.Satellite(kGlonass, 1), 40, 59);
    staged.DropOut(staged.Satellite(kGlonass, 3), 0, 19);
    staged.solver->RepairGlonassSlips();
    const std::vector<AmbiguityPara>& paras = staged.solver->ambiguityParas;
    ASSERT_EQ(paras.size(), 6u);
    EXPECT_TRUE(std::is_sorted(paras.begin(), paras.end(), [](const auto& a, const auto& b) {
        return std::tie(a.firstEpoch, a.lastEpoch, a.sat) <
               std::tie(b.firstEpoch, b.lastEpoch, b.sat);
    }));
    for (const AmbiguityPara& para : paras) {
        EXPECT_EQ(para.refAmbF1, 0.0);
        EXPECT_EQ(para.refAmbF2, 0.0);
    }
}

TEST_F(GlonassSlips, EpochsOutsideAllPeriodsAreLeftAsTheyAre) {
    StagedSession staged(Scenario(5));
    staged.solver->periods[0].startIndex = 2;
    staged.solver->periods[0].endIndex = 57;
    const int sat = staged.Satellite(kGlonass, 1);
    for (const int e : {0, 1, 58, 59}) {
        staged.JumpAt(sat, e, 7.0, -5.0);
    }
    staged.JumpFrom(sat, 30, 3.0, 2.0);
    staged.solver->RepairGlonassSlips();
    for (const int e : {0, 1, 58, 59}) {
        EXPECT_NEAR(staged.Off(sat, 0, e), e < 30 ? 7.0 : 10.0, 1e-7);
        EXPECT_TRUE(staged.Epoch(e).IsActive(sat));
    }
    staged.ExpectOff(sat, 0, 2, 57, 0.0);
    EXPECT_EQ(staged.Segments(sat), (std::vector<Span>{{2, 57}}));
}

}  // namespace
}  // namespace vornel::test
