// The difference of two receivers' records: common satellites, differences, epoch, and what is
// carried over.
#include <gtest/gtest.h>

#include <vector>

#include "foundation/satellite.h"
#include "observation/observation_records.h"

namespace vornel {
namespace {

constexpr int kWeek = 2204;

class SingleDifference : public ::testing::Test {
  protected:
    ZDObsData rover_{0, 1, 1, 1, 1, 1};
    ZDObsData base_{0, 1, 1, 1, 1, 1};
    SDObsData difference_{1};

    void SetUp() override {
        rover_.epoch = Epoch(kWeek, 288000.0);
        base_.epoch = Epoch(kWeek, 288000.0);
    }

    // The epoch of the difference of receivers at these seconds of the week.
    Epoch FormedEpoch(double roverSeconds, double baseSeconds) {
        rover_.epoch = Epoch(kWeek, roverSeconds);
        base_.epoch = Epoch(kWeek, baseSeconds);
        difference_.Form(rover_, base_);
        return difference_.epoch;
    }
};

TEST_F(SingleDifference, TheEpochIsTheRoundedMean) {
    EXPECT_TRUE(FormedEpoch(288000.0, 288000.0) == Epoch(kWeek, 288000.0));
    EXPECT_TRUE(FormedEpoch(288000.1, 287999.9) == Epoch(kWeek, 288000.0));
    EXPECT_TRUE(FormedEpoch(288000.2, 288000.0) == Epoch(kWeek, 288000.0));
    EXPECT_TRUE(FormedEpoch(288000.4, 288000.2) == Epoch(kWeek, 288000.0));
    EXPECT_TRUE(FormedEpoch(288000.7, 288000.5) == Epoch(kWeek, 288001.0));
    EXPECT_EQ(difference_.epoch.fraction, 0.0);
}

TEST_F(SingleDifference, AHalfSecondRoundsUp) {
    EXPECT_TRUE(FormedEpoch(288000.5, 288000.5) == Epoch(kWeek, 288001.0));
    EXPECT_TRUE(FormedEpoch(288000.25, 288000.75) == Epoch(kWeek, 288001.0));
    EXPECT_TRUE(FormedEpoch(288000.25, 288000.5) == Epoch(kWeek, 288000.0));
    EXPECT_TRUE(FormedEpoch(0.5, 0.5) == Epoch(kWeek, 1.0));
}

TEST_F(SingleDifference, TheLastHalfSecondOfAWeekRoundsIntoTheNext) {
    EXPECT_TRUE(FormedEpoch(604799.5, 604799.75) == Epoch(kWeek + 1, 0.0));
}

TEST_F(SingleDifference, TheWeekIsThatOfTheBase) {
    rover_.epoch = Epoch(kWeek + 1, 1000.0);
    base_.epoch = Epoch(kWeek, 1000.0);
    difference_.Form(rover_, base_);
    EXPECT_TRUE(difference_.epoch == Epoch(kWeek, 1000.0));
    // The mean is of the seconds of the week alone, whatever the weeks.
    rover_.epoch = Epoch(kWeek + 1, 0.0);
    base_.epoch = Epoch(kWeek, 604798.0);
    difference_.Form(rover_, base_);
    EXPECT_TRUE(difference_.epoch == Epoch(kWeek, 302399.0));
}

TEST_F(SingleDifference, EachListIsTheIntersectionInTheRoversOrder) {
    rover_.satList = {2, 9, 30, 40, 70};
    base_.satList = {1, 2, 30, 40, 110};
    rover_.satListF1 = {2, 9, 30};
    base_.satListF1 = {2, 30, 40};
    rover_.satListF2 = {40};
    base_.satListF2 = {1};
    rover_.satListDual = {30, 2};
    base_.satListDual = {2, 30};
    difference_.satList = {99};
    difference_.Form(rover_, base_);
    EXPECT_EQ(difference_.satList, (std::vector<int>{2, 30, 40}));
    EXPECT_EQ(difference_.satListF1, (std::vector<int>{2, 30}));
    EXPECT_TRUE(difference_.satListF2.empty());
    EXPECT_EQ(difference_.satListDual, (std::vector<int>{30, 2}));
    EXPECT_TRUE(difference_.activeSats.empty());
}

TEST_F(SingleDifference, ReceiversWithoutCommonSatellitesGiveEmptyLists) {
    rover_.satList = {1, 3};
    base_.satList = {2, 4};
    rover_.code[0][0] = 2e7;
    base_.code[1][0] = 2e7;
    difference_.Form(rover_, base_);
    EXPECT_TRUE(difference_.satList.empty());
    EXPECT_TRUE(difference_.satListF1.empty());
    EXPECT_EQ(difference_.code[0][0], 0.0);
    EXPECT_EQ(difference_.code[1][0], 0.0);
}

TEST_F(SingleDifference, IsRoverMinusBase) {
    rover_.satList = base_.satList = {1, 135};
    for (const int number : {1, 135}) {
        for (int f = 0; f < 2; ++f) {
            rover_.code[number - 1][f] = 2.2e7 + number + f;
            base_.code[number - 1][f] = 2.1e7 - f;
            rover_.phase[number - 1][f] = -1.1e8 + number;
            base_.phase[number - 1][f] = 1.2e8 + f;
        }
    }
    difference_.Form(rover_, base_);
    for (const int number : {1, 135}) {
        for (int f = 0; f < 2; ++f) {
            EXPECT_EQ(difference_.code[number - 1][f], 1e6 + number + 2 * f);
            EXPECT_EQ(difference_.phase[number - 1][f], -2.3e8 + number - f);
        }
    }
}

TEST_F(SingleDifference, AMissingValueOfEitherReceiverIsMissing) {
    struct Case {
        double roverCode, baseCode, roverPhase, basePhase;
        double code, phase;
    };
    const std::vector<Case> cases = {
        {5.0, 3.0, 20.0, 10.0, 2.0, 10.0}, {0.0, 3.0, 20.0, 10.0, 0.0, 0.0},
        {5.0, 0.0, 20.0, 10.0, 0.0, 0.0},  {5.0, 3.0, 0.0, 10.0, 2.0, 0.0},
        {5.0, 3.0, 20.0, 0.0, 2.0, 0.0},   {5.0, 3.0, 0.0, 0.0, 2.0, 0.0},
        {0.0, 0.0, 20.0, 10.0, 0.0, 0.0},  {-5.0, 3.0, -20.0, 10.0, -8.0, -30.0},
    };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        for (int f = 0; f < 2; ++f) {
            SCOPED_TRACE(testing::Message() << "case " << i << ", signal " << f);
            const Case& one = cases[i];
            ZDObsData rover(0, 1, 1, 1, 1, 1);
            ZDObsData base(0, 1, 1, 1, 1, 1);
            rover.satList = base.satList = {50};
            rover.code[49][1 - f] = 100.0;  // the other signal is whole
            base.code[49][1 - f] = 90.0;
            rover.phase[49][1 - f] = 7.0;
            base.phase[49][1 - f] = 3.0;
            rover.code[49][f] = one.roverCode;
            base.code[49][f] = one.baseCode;
            rover.phase[49][f] = one.roverPhase;
            base.phase[49][f] = one.basePhase;
            SDObsData difference(1);
            difference.Form(rover, base);
            EXPECT_EQ(difference.code[49][f], one.code);
            EXPECT_EQ(difference.phase[49][f], one.phase);
            EXPECT_EQ(difference.code[49][1 - f], 10.0);
            EXPECT_EQ(difference.phase[49][1 - f], 4.0);
        }
    }
}

TEST_F(SingleDifference, SatellitesOutsideTheListHaveNoDifference) {
    rover_.satList = {50, 52};
    base_.satList = {48, 50};
    for (int s = 0; s < kSatelliteCount; ++s) {
        for (int f = 0; f < 2; ++f) {
            rover_.code[s][f] = 5.0;
            base_.code[s][f] = 3.0;
            rover_.phase[s][f] = 20.0;
            base_.phase[s][f] = 10.0;
        }
    }
    difference_.Form(rover_, base_);
    for (int s = 0; s < kSatelliteCount; ++s) {
        for (int f = 0; f < 2; ++f) {
            EXPECT_EQ(difference_.code[s][f], s == 49 ? 2.0 : 0.0) << s;
            EXPECT_EQ(difference_.phase[s][f], s == 49 ? 10.0 : 0.0) << s;
        }
    }
}

TEST_F(SingleDifference, ChannelsComeFromTheRover) {
    const int slot5 = MakeSatNumber(kGlonass, 5);
    const int slot32 = MakeSatNumber(kGlonass, 32);
    rover_.satList = {3, slot5, slot32};
    base_.satList = {3, slot5, slot32};
    rover_.glonassChannel[4] = -6;
    base_.glonassChannel[4] = 2;
    rover_.glonassChannel[31] = 4;
    base_.glonassChannel[31] = 3;
    difference_.Form(rover_, base_);
    EXPECT_EQ(difference_.glonassChannel[4], -6);
    EXPECT_EQ(difference_.glonassChannel[31], 4);
    EXPECT_EQ(difference_.glonassChannel[0], -1);
}

TEST_F(SingleDifference, GeometryAndClocksOfBothAreCarriedOver) {
    rover_.satList = base_.satList = {12};
    const int s = 11;
    for (int axis = 0; axis < 3; ++axis) {
        rover_.satPos[s][axis] = 100.0 + axis;
        base_.satPos[s][axis] = 200.0 + axis;
    }
    rover_.azel[s][0] = 1.0;
    rover_.azel[s][1] = 0.5;
    base_.azel[s][0] = 1.1;
    base_.azel[s][1] = 0.6;
    rover_.satClock[s] = 1e-5;
    base_.satClock[s] = 2e-5;
    rover_.range[s] = 2.25e7;
    base_.range[s] = 2.125e7;
    difference_.Form(rover_, base_);
    for (int axis = 0; axis < 3; ++axis) {
        EXPECT_EQ(difference_.satPosA[s][axis], 100.0 + axis);
        EXPECT_EQ(difference_.satPosB[s][axis], 200.0 + axis);
    }
    EXPECT_EQ(difference_.azelA[s][0], 1.0);
    EXPECT_EQ(difference_.azelA[s][1], 0.5);
    EXPECT_EQ(difference_.azelB[s][0], 1.1);
    EXPECT_EQ(difference_.azelB[s][1], 0.6);
    EXPECT_EQ(difference_.satClockA[s], 1e-5);
    EXPECT_EQ(difference_.satClockB[s], 2e-5);
    EXPECT_EQ(difference_.sdRange[s], 1.25e6);
    EXPECT_EQ(difference_.sdIono[s], 0.0);
    EXPECT_EQ(difference_.sdTrop[s], 0.0);
    EXPECT_EQ(difference_.sdSpare[s], 0.0);
    EXPECT_EQ(difference_.sdObserved[s], 0.0);
}

TEST_F(SingleDifference, TheTwoCorrectionsAreDifferencedIntoTheAtmosphere) {
    rover_.satList = base_.satList = {12};
    rover_.corrA[11] = 5.0;
    base_.corrA[11] = 3.0;
    rover_.corrB[11] = 11.0;
    base_.corrB[11] = 4.0;
    difference_.Form(rover_, base_);
    EXPECT_EQ(difference_.sdIono[11], 2.0);
    EXPECT_EQ(difference_.sdTrop[11], 7.0);
}

}  // namespace
}  // namespace vornel
