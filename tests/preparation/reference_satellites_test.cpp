// Choice of each period's reference satellites, and what it leaves in the epochs.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "exports/process_fixture.h"
#include "foundation/trace_fixture.h"
#include "run/synthetic_session.h"

namespace vornel {
namespace {

constexpr int kGlo = 35;  // number before the first GLONASS satellite
constexpr int kBdsBefore = 67;
constexpr int kGalBefore = 103;

class References : public test::ProcessTest {
  protected:
    // One period of `count` epochs 30 s apart, with no satellites yet.
    void MakeEpochs(int count, int periodCount = 1) {
        CTRLSolve control;
        for (int i = 0; i < count * periodCount; ++i) {
            SDObsData epoch(1);
            epoch.epoch = Epoch(2200, 30.0 * i);
            control.epochs.push_back(epoch);
        }
        solver_ = test::MakeSolver(control);
        for (int p = 0; p < periodCount; ++p) {
            StaticPeriod period;
            period.startIndex = p * count;
            period.endIndex = (p + 1) * count - 1;
            period.startTime = solver_->epochs[static_cast<std::size_t>(period.startIndex)].epoch;
            period.endTime = solver_->epochs[static_cast<std::size_t>(period.endIndex)].epoch;
            period.epochCount = count;
            solver_->periods.push_back(period);
        }
    }

    SDObsData& EpochOf(int index) { return solver_->epochs[static_cast<std::size_t>(index)]; }

    // The satellite in epochs first to last, at an elevation (radians) as the mean of the two
    // stations.
    void See(int sat, int first, int last, double elevation) {
        for (int i = first; i <= last; ++i) {
            EpochOf(i).activeSats.push_back(sat);
            EpochOf(i).azelA[sat - 1][1] = elevation + 0.05;
            EpochOf(i).azelB[sat - 1][1] = elevation - 0.05;
        }
    }

    static void SetChannel(int slot, int channel) {
        GlonassEphemeris record;
        record.slot = slot;
        record.channel = channel;
        record.refEpoch =
            Epoch(2200, 900.0 * static_cast<double>(GlonassEphemerides().records().size() + 1));
        GlonassEphemerides().AddGlonassEphemeris(record);
    }

    // GLONASS slots 1, 2, ... on channels -7, -6, ... seen for these numbers of epochs at these
    // elevations.
    int GlonassReference(const std::vector<int>& counts, const std::vector<double>& elevations) {
        for (std::size_t i = 0; i < counts.size(); ++i) {
            const int slot = static_cast<int>(i) + 1;
            SetChannel(slot, slot - 8);
            See(kGlo + slot, 0, counts[i] - 1, elevations[i]);
        }
        solver_->SelectRefSats();
        const int number = solver_->periods[0].refSatGlo;
        return number == -1 ? -1 : number - kGlo;
    }

    std::vector<std::vector<int>> Active() const {
        std::vector<std::vector<int>> active;
        for (const SDObsData& epoch : solver_->epochs) {
            active.push_back(epoch.activeSats);
        }
        return active;
    }

    std::unique_ptr<StaticSolve> solver_;
};

TEST(PeriodReferences, AreThoseOfTheFourSystemsAndNoOther) {
    StaticPeriod period;
    period.refSatGps = 3;
    period.refSatGlo = 40;
    period.refSatBds = 70;
    period.refSatGal = 110;
    EXPECT_EQ(period.ReferenceOf(kGps), 3);
    EXPECT_EQ(period.ReferenceOf(kGlonass), 40);
    EXPECT_EQ(period.ReferenceOf(kBds), 70);
    EXPECT_EQ(period.ReferenceOf(kGalileo), 110);
    for (const int none : {0, 3, 5, 16, -1}) {
        EXPECT_EQ(period.ReferenceOf(none), -1) << none;
    }
}

// --- most epochs, then highest

TEST_F(References, TheMostEpochsWin) {
    MakeEpochs(20);
    See(4, 0, 17, 1.4);
    See(7, 0, 19, 0.3);
    See(9, 0, 18, 1.2);
    EXPECT_EQ(solver_->SelectRefSats(), 14);
    EXPECT_EQ(solver_->periods[0].refSatGps, 7);
    EXPECT_EQ(solver_->periods[0].refSatGlo, -1);
    EXPECT_EQ(solver_->periods[0].refSatBds, -1);
    EXPECT_EQ(solver_->periods[0].refSatGal, -1);
}

TEST_F(References, EqualCountsGoToTheHigherMeanElevation) {
    MakeEpochs(20);
    See(4, 0, 19, 0.6);
    See(7, 0, 19, 0.9);
    See(9, 0, 19, 0.8);
    solver_->SelectRefSats();
    EXPECT_EQ(solver_->periods[0].refSatGps, 7);
}

TEST_F(References, TheElevationIsTheMeanOverEpochsAndStations) {
    MakeEpochs(20);
    See(4, 0, 19, 0.6);
    See(7, 0, 19, 0.5);
    // High at the rover in the first epochs alone: on the mean 0.5 + 2 x 0.25 x 0.3 is above 0.6.
    for (int i = 0; i < 10; ++i) {
        EpochOf(i).azelA[6][1] += 0.6;
    }
    solver_->SelectRefSats();
    EXPECT_EQ(solver_->periods[0].refSatGps, 7);
}

TEST_F(References, EqualInBothTheFirstSeenStays) {
    MakeEpochs(20);
    See(9, 0, 19, 0.5);
    See(4, 0, 19, 0.5);
    solver_->SelectRefSats();
    EXPECT_EQ(solver_->periods[0].refSatGps, 9);
}

TEST_F(References, AnElevationCountsOnlyAmongEqualCounts) {
    MakeEpochs(20);
    See(4, 0, 18, 0.9);
    See(7, 0, 19, 0.4);
    See(9, 0, 19, 0.5);  // above 0.4, the mean of the one it must beat
    solver_->SelectRefSats();
    EXPECT_EQ(solver_->periods[0].refSatGps, 9);
}

TEST_F(References, TheMinimumOfEpochsSufficesForASatelliteAboveTheHorizon) {
    MakeEpochs(20);
    See(4, 0, 9, 0.3);
    EXPECT_EQ(solver_->SelectRefSats(), 14);
    EXPECT_EQ(solver_->periods[0].refSatGps, 4);
    MakeEpochs(20);
    See(4, 0, 9, 0.0);
    EXPECT_EQ(solver_->SelectRefSats(), 13);
    EXPECT_EQ(solver_->periods[0].refSatGps, -1);
}

TEST_F(References, BdsAndGalileoAreChosenLikeGps) {
    MakeEpochs(20);
    See(kBdsBefore + 3, 0, 17, 1.0);
    See(kBdsBefore + 5, 0, 18, 0.4);
    See(kGalBefore + 2, 0, 19, 0.4);
    See(kGalBefore + 8, 0, 19, 0.5);
    EXPECT_EQ(solver_->SelectRefSats(), 14);
    EXPECT_EQ(solver_->periods[0].refSatGps, -1);
    EXPECT_EQ(solver_->periods[0].refSatBds, kBdsBefore + 5);
    EXPECT_EQ(solver_->periods[0].refSatGal, kGalBefore + 8);
}

// --- what is left in the epochs

TEST_F(References, ASatelliteSeenTooLittleLeavesThePeriod) {
    MakeEpochs(20);
    See(4, 0, 19, 0.6);
    See(7, 0, 8, 1.2);
    See(9, 5, 14, 0.7);
    solver_->SelectRefSats();
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(EpochOf(i).activeSats,
                  i >= 5 && i <= 14 ? (std::vector<int>{4, 9}) : std::vector<int>{4});
    }
}

TEST_F(References, AnEpochWithoutTheReferenceLosesTheSystemAndNothingElse) {
    MakeEpochs(20);
    See(4, 0, 9, 0.6);
    See(4, 11, 19, 0.6);
    See(7, 0, 18, 0.5);
    See(9, 2, 18, 0.7);
    See(kBdsBefore + 1, 0, 19, 0.5);
    solver_->SelectRefSats();
    ASSERT_EQ(solver_->periods[0].refSatGps, 4);
    EXPECT_EQ(EpochOf(9).activeSats, (std::vector<int>{4, 7, 9, kBdsBefore + 1}));
    EXPECT_EQ(EpochOf(10).activeSats, std::vector<int>{kBdsBefore + 1});
    EXPECT_EQ(EpochOf(11).activeSats, (std::vector<int>{4, 7, 9, kBdsBefore + 1}));
}

TEST_F(References, ASystemWithoutAReferenceLeavesEveryEpoch) {
    MakeEpochs(20);
    See(4, 0, 19, 0.6);
    See(kBdsBefore + 1, 0, 8, 0.5);
    See(kBdsBefore + 2, 11, 19, 0.5);
    See(kGlo + 3, 0, 19, 0.5);
    See(kGlo + 4, 0, 19, 0.5);
    solver_->config.useGlonass = 0;
    solver_->SelectRefSats();
    EXPECT_EQ(solver_->periods[0].refSatBds, -1);
    for (const auto& active : Active()) {
        EXPECT_EQ(active, (std::vector<int>{4, kGlo + 3, kGlo + 4}));
    }
}

TEST_F(References, ASwitchedOffSystemHasNoReferenceAndKeepsItsSatellites) {
    MakeEpochs(20);
    for (const int sat : {4, kGlo + 2, kBdsBefore + 2, kGalBefore + 2}) {
        See(sat, 0, 19, 0.6);
        See(sat + 1, 0, 5, 0.6);
    }
    solver_->periods[0].refSatGps = solver_->periods[0].refSatGlo = 77;
    solver_->periods[0].refSatBds = solver_->periods[0].refSatGal = 77;
    SolveConfig& config = solver_->config;
    config.useGps = config.useGlonass = config.useBds = config.useGalileo = 0;
    const auto before = Active();
    EXPECT_EQ(solver_->SelectRefSats(), 13);
    EXPECT_EQ(solver_->periods[0].refSatGps, -1);
    EXPECT_EQ(solver_->periods[0].refSatGlo, -1);
    EXPECT_EQ(solver_->periods[0].refSatBds, -1);
    EXPECT_EQ(solver_->periods[0].refSatGal, -1);
    EXPECT_EQ(Active(), before);
}

TEST_F(References, ASwitchOtherThanOneIsOff) {
    MakeEpochs(20);
    See(4, 0, 19, 0.6);
    See(kGlo + 2, 0, 19, 0.6);
    See(kBdsBefore + 2, 0, 19, 0.6);
    See(kGalBefore + 2, 0, 19, 0.6);
    SolveConfig& config = solver_->config;
    config.useGps = config.useGlonass = config.useBds = config.useGalileo = 2;
    EXPECT_EQ(solver_->SelectRefSats(), 13);
}

TEST_F(References, AnEpochWithoutSatellitesStaysEmpty) {
    MakeEpochs(20);
    See(4, 0, 9, 0.6);
    See(4, 11, 19, 0.6);
    EXPECT_EQ(solver_->SelectRefSats(), 14);
    EXPECT_EQ(solver_->epochs.size(), 20U);
    EXPECT_TRUE(EpochOf(10).activeSats.empty());
    EXPECT_EQ(solver_->periods[0].epochCount, 20);
}

TEST_F(References, EachPeriodChoosesForItself) {
    MakeEpochs(12, 3);
    See(4, 0, 11, 0.6);
    See(7, 0, 10, 0.9);
    See(7, 12, 23, 0.6);
    See(4, 12, 22, 0.9);
    See(9, 24, 30, 0.6);  // too few
    EXPECT_EQ(solver_->SelectRefSats(), 14);
    EXPECT_EQ(solver_->periods[0].refSatGps, 4);
    EXPECT_EQ(solver_->periods[1].refSatGps, 7);
    EXPECT_EQ(solver_->periods[2].refSatGps, -1);
    EXPECT_EQ(EpochOf(11).activeSats, std::vector<int>{4});
    EXPECT_EQ(EpochOf(23).activeSats, std::vector<int>{7});
    EXPECT_TRUE(EpochOf(24).activeSats.empty());
}

TEST_F(References, CountsDoNotCarryOverFromOnePeriodToTheNext) {
    MakeEpochs(12, 2);
    See(4, 0, 11, 0.6);
    See(4, 12, 16, 0.6);  // seventeen in all, five in the second
    See(7, 12, 22, 0.6);
    solver_->SelectRefSats();
    EXPECT_EQ(solver_->periods[1].refSatGps, 7);
    EXPECT_EQ(EpochOf(13).activeSats, std::vector<int>{7});
}

TEST_F(References, EpochsOutsideAllPeriodsAreLeftAlone) {
    MakeEpochs(20);
    See(4, 0, 19, 0.6);
    See(9, 0, 19, 0.9);
    solver_->periods[0].startIndex = 2;
    solver_->periods[0].endIndex = 13;
    See(7, 2, 8, 0.5);
    See(7, 14, 19, 0.5);
    solver_->SelectRefSats();
    EXPECT_EQ(EpochOf(5).activeSats, (std::vector<int>{4, 9}));
    EXPECT_EQ(EpochOf(15).activeSats, (std::vector<int>{4, 9, 7}));
}

TEST_F(References, NoPeriodWithAReferenceIs13) {
    MakeEpochs(12, 2);
    See(4, 0, 8, 0.6);
    See(7, 12, 20, 0.6);
    EXPECT_EQ(solver_->SelectRefSats(), 13);
    for (const auto& active : Active()) {
        EXPECT_TRUE(active.empty());
    }
}

// --- GLONASS: from the middle of the channels

// 31 epochs are 900 s: 20 epochs are needed.

TEST_F(References, EightGlonassSatellitesLetTheMiddleTwoCompete) {
    MakeEpochs(31);
    EXPECT_EQ(GlonassReference(std::vector<int>(8, 31), {1.5, 1.5, 1.5, 0.4, 0.5, 1.5, 1.5, 1.5}),
              5);
}

TEST_F(References, OfTheMiddleTwoTheLowerChannelWinsEquality) {
    MakeEpochs(31);
    EXPECT_EQ(GlonassReference(std::vector<int>(8, 31), {1.5, 1.5, 1.5, 0.5, 0.5, 1.5, 1.5, 1.5}),
              4);
}

TEST_F(References, OfTheMiddleTwoTheOneSeenEnoughWins) {
    MakeEpochs(31);
    EXPECT_EQ(GlonassReference({31, 19, 20, 31}, {1.0, 1.4, 0.3, 1.4}), 3);
    GlonassEphemerides().Clear();
    MakeEpochs(31);
    EXPECT_EQ(GlonassReference({31, 20, 19, 31}, {1.0, 0.3, 1.4, 1.4}), 2);
}

TEST_F(References, PairsAreTriedOutwardToTheLast) {
    MakeEpochs(31);
    EXPECT_EQ(GlonassReference({31, 19, 19, 31}, {0.9, 1.4, 1.4, 0.3}), 1);
    GlonassEphemerides().Clear();
    MakeEpochs(31);
    EXPECT_EQ(GlonassReference({31, 24, 19, 19, 23, 31}, {0.9, 0.4, 1.4, 1.4, 0.5, 0.3}), 5);
}

TEST_F(References, SevenGlonassSatellitesTakeTheFourthWhateverItsElevation) {
    MakeEpochs(31);
    EXPECT_EQ(GlonassReference(std::vector<int>(7, 31), {1.5, 1.5, 1.5, 0.2, 1.5, 1.5, 1.5}), 4);
}

TEST_F(References, AnOddMiddleSeenTooLittleGivesWayToItsNeighbours) {
    MakeEpochs(31);
    EXPECT_EQ(GlonassReference({31, 31, 31, 19, 31, 31, 31}, {1.5, 1.5, 0.6, 1.5, 0.5, 1.5, 1.5}),
              3);
    GlonassEphemerides().Clear();
    MakeEpochs(31);
    EXPECT_EQ(GlonassReference({31, 31, 19, 19, 31, 31, 31}, {1.5, 1.5, 0.6, 1.5, 0.5, 1.5, 1.5}),
              5);
    GlonassEphemerides().Clear();
    MakeEpochs(31);
    EXPECT_EQ(GlonassReference({31, 31, 31, 19, 19, 31, 31}, {1.5, 1.5, 0.6, 1.5, 0.9, 1.5, 1.5}),
              3);
    GlonassEphemerides().Clear();
    MakeEpochs(31);
    EXPECT_EQ(GlonassReference({31, 31, 19, 19, 19, 20, 31}, {1.5, 0.3, 0.6, 1.5, 0.9, 0.4, 1.5}),
              6);
}

TEST_F(References, OfAnOddPairTheUpperChannelWinsEquality) {
    MakeEpochs(31);
    EXPECT_EQ(GlonassReference({31, 31, 19, 31, 31}, {1.5, 0.5, 1.5, 0.5, 1.5}), 4);
}

TEST_F(References, TheOutermostOfAnOddNumberAreNotTried) {
    MakeEpochs(31);
    EXPECT_EQ(GlonassReference({31, 19, 31}, {1.0, 1.0, 1.0}), -1);
    GlonassEphemerides().Clear();
    MakeEpochs(31);
    EXPECT_EQ(GlonassReference({31, 19, 19, 19, 31}, {1.0, 1.0, 1.0, 1.0, 1.0}), -1);
    for (const auto& active : Active()) {
        EXPECT_TRUE(active.empty());
    }
}

TEST_F(References, OneGlonassSatelliteIsItsOwnMiddle) {
    MakeEpochs(31);
    EXPECT_EQ(GlonassReference({31}, {1.0}), 1);
    EXPECT_EQ(EpochOf(0).activeSats, std::vector<int>{kGlo + 1});
}

TEST_F(References, TwoGlonassSatellitesAreAPair) {
    MakeEpochs(31);
    EXPECT_EQ(GlonassReference({31, 31}, {0.5, 0.6}), 2);
}

TEST_F(References, TheNeedFallsToTwoThirdsOfTheBestWhenNoneReachesIt) {
    // 19 epochs at most, 20 needed: now 12 are (19 / 1.5 cut down).
    MakeEpochs(31);
    EXPECT_EQ(GlonassReference({19, 12, 19}, {1.0, 1.0, 1.0}), 2);
    GlonassEphemerides().Clear();
    MakeEpochs(31);
    EXPECT_EQ(GlonassReference({19, 11, 19}, {1.0, 1.0, 1.0}), -1);
}

TEST_F(References, TheNeedStandsWhenTheBestJustReachesIt) {
    MakeEpochs(31);
    EXPECT_EQ(GlonassReference({20, 19, 20}, {1.0, 1.0, 1.0}), -1);
    GlonassEphemerides().Clear();
    MakeEpochs(31);
    EXPECT_EQ(GlonassReference({20, 20, 19}, {1.0, 1.0, 1.0}), 2);
}

TEST_F(References, TheNeedFollowsTheDeclaredInterval) {
    // Declared as 60 s: 900 / 90 is 10.
    MakeEpochs(31);
    solver_->config.samplingInterval = 60.0;
    EXPECT_EQ(GlonassReference({31, 10, 31}, {1.0, 1.0, 1.0}), 2);
    GlonassEphemerides().Clear();
    // As 44.9 s the need is 13.36, cut to 13.
    MakeEpochs(31);
    solver_->config.samplingInterval = 44.9;
    EXPECT_EQ(GlonassReference({31, 13, 31}, {1.0, 1.0, 1.0}), 2);
    GlonassEphemerides().Clear();
    MakeEpochs(31);
    solver_->config.samplingInterval = 44.9;
    EXPECT_EQ(GlonassReference({31, 12, 31}, {1.0, 1.0, 1.0}), -1);
}

TEST_F(References, AGlonassReferenceBelowTheMinimumOfEpochsStaysChosenButLeavesTheEpochs) {
    MakeEpochs(31);
    solver_->config.minEpochs = 15;
    // Needed 12; the middle one has 14 epochs, fewer than the minimum.
    EXPECT_EQ(GlonassReference({19, 14, 18}, {1.0, 1.0, 1.0}), 2);
    for (int i = 0; i < 31; ++i) {
        EXPECT_EQ(EpochOf(i).activeSats,
                  i < 14 ? (std::vector<int>{kGlo + 1, kGlo + 3}) : std::vector<int>{});
    }
}

TEST_F(References, GlonassIsSortedByChannelAndNotBySlot) {
    MakeEpochs(31);
    SetChannel(1, 5);
    SetChannel(2, -7);
    SetChannel(3, 6);
    for (int slot = 1; slot <= 3; ++slot) {
        See(kGlo + slot, 0, 30, 1.0);
    }
    solver_->SelectRefSats();
    EXPECT_EQ(solver_->periods[0].refSatGlo, kGlo + 1);
}

TEST_F(References, ChannelsAreComparedAsSigned16BitNumbers) {
    // 65534 wraps to -2, between -5 and 3; -32769 to 32767, above all.
    MakeEpochs(31);
    SetChannel(1, -5);
    SetChannel(2, 3);
    SetChannel(3, 65534);
    for (int slot = 1; slot <= 3; ++slot) {
        See(kGlo + slot, 0, 30, 1.0);
    }
    solver_->SelectRefSats();
    EXPECT_EQ(solver_->periods[0].refSatGlo, kGlo + 3);

    GlonassEphemerides().Clear();
    SetChannel(1, -32769);
    SetChannel(2, -5);
    SetChannel(3, 3);
    solver_->SelectRefSats();
    EXPECT_EQ(solver_->periods[0].refSatGlo, kGlo + 3);
}

TEST_F(References, TheFirstRecordOfASlotNamesItsChannel) {
    MakeEpochs(31);
    SetChannel(1, 5);
    SetChannel(2, 0);
    SetChannel(3, 6);
    SetChannel(2, 9);  // a later record
    for (int slot = 1; slot <= 3; ++slot) {
        See(kGlo + slot, 0, 30, 1.0);
    }
    solver_->SelectRefSats();
    EXPECT_EQ(solver_->periods[0].refSatGlo, kGlo + 1);
}

TEST_F(References, EqualChannelsKeepTheOrderOfFirstAppearance) {
    for (const std::vector<int>& order : {std::vector<int>{2, 9, 5}, std::vector<int>{9, 5, 2}}) {
        GlonassEphemerides().Clear();
        MakeEpochs(31);
        for (const int slot : order) {
            SetChannel(slot, 4);
            See(kGlo + slot, 0, 30, 1.0);
        }
        solver_->SelectRefSats();
        EXPECT_EQ(solver_->periods[0].refSatGlo, kGlo + order[1]);
    }
}

TEST_F(References, ManyEqualChannelsKeepTheOrderOfFirstAppearanceToo) {
    MakeEpochs(31);
    std::vector<int> order;
    for (int i = 0; i < 23; ++i) {
        order.push_back(1 + (7 * i) % 23);
    }
    for (const int slot : order) {
        SetChannel(slot, 4);
        See(kGlo + slot, 0, 30, 1.0);
    }
    SetChannel(31, 6);
    See(kGlo + 31, 0, 30, 1.0);
    SetChannel(32, -6);
    See(kGlo + 32, 0, 30, 1.0);
    solver_->SelectRefSats();
    EXPECT_EQ(solver_->periods[0].refSatGlo, kGlo + order[11]);
}

TEST_F(References, AGlonassSatelliteWithoutARecordCountsAsChannel0) {
    MakeEpochs(31);
    SetChannel(1, -3);
    SetChannel(3, 2);
    for (const int slot : {1, 3, 2}) {
        See(kGlo + slot, 0, 30, 1.0);
    }
    solver_->SelectRefSats();
    EXPECT_EQ(solver_->periods[0].refSatGlo, kGlo + 2);
}

// --- the log

TEST_F(References, EveryPeriodIsLoggedAfterAllAreChosen) {
    for (const int level : {2, 3}) {
        test::TemporaryDirectory directory;
        const std::string path = directory.File("trace.txt");
        MakeEpochs(12, 2);
        See(4, 0, 11, 0.6);
        See(kGlo + 2, 0, 11, 0.6);
        See(kBdsBefore + 3, 12, 23, 0.6);
        See(kGalBefore + 4, 12, 23, 0.6);
        TraceOpen(path.c_str());
        TraceSetLevel(level);
        solver_->SelectRefSats();
        EXPECT_EQ(test::ReadFile(path), level == 2
                                            ? ""
                                            : "3 Period[0],select refsat: G4 R37 C-1 E-1.\n"
                                              "3 Period[1],select refsat: G-1 R-1 C70 E107.\n");
        TraceClose();
    }
}

}  // namespace
}  // namespace vornel
