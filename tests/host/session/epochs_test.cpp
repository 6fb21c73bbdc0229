#include "session/epochs.h"

#include <gtest/gtest.h>

#include "observation_maker.h"

namespace vornel::session {
namespace {

using test::ObservationMaker;

io::Observations AtSeconds(const std::vector<double>& seconds, int week = 2111) {
    ObservationMaker maker("C1C L1C");
    for (const double second : seconds) {
        maker.Epoch(week, second);
    }
    return maker.Done();
}

std::vector<std::pair<std::size_t, std::size_t>> Indices(const EpochPairs& pairs) {
    std::vector<std::pair<std::size_t, std::size_t>> list;
    for (const EpochPair& pair : pairs.pairs) {
        list.emplace_back(pair.rover, pair.base);
    }
    return list;
}

using List = std::vector<std::pair<std::size_t, std::size_t>>;

TEST(Epochs, ATenthOfASecondIsStillTogether) {
    const auto base = AtSeconds({0.0, 30.0, 60.0, 90.0});
    EXPECT_EQ(Indices(PairEpochs(AtSeconds({0.1, 29.9, 60.11, 89.89}), base)),
              (List{{0, 0}, {1, 1}}));
}

TEST(Epochs, WhatNoCalendarHasIsTakenOut) {
    io::Observations observations = AtSeconds({0.0, -1.0, 604800.0, 30.0, NAN, 604799.5});
    observations.epochs.push_back(observations.epochs.front());
    observations.epochs.back().time.week = 6261;
    observations.epochs.push_back(observations.epochs.front());
    observations.epochs.back().time.week = -1;
    EXPECT_EQ(DropUntimed(observations), 5U);
    ASSERT_EQ(observations.epochs.size(), 3U);
    EXPECT_EQ(observations.epochs[1].time.seconds, 30.0);
    EXPECT_EQ(observations.epochs[2].time.seconds, 604799.5);
}

TEST(Epochs, MissingEpochsAreCountedOnBothSides) {
    const EpochPairs pairs =
        PairEpochs(AtSeconds({0, 30, 90, 120, 150}), AtSeconds({30, 60, 90, 150}));
    EXPECT_EQ(Indices(pairs), (List{{1, 0}, {2, 2}, {4, 3}}));
    EXPECT_EQ(pairs.roverOnly, 2U);
    EXPECT_EQ(pairs.baseOnly, 1U);
}

TEST(Epochs, TheNearestPartnerIsTaken) {
    EXPECT_EQ(Indices(PairEpochs(AtSeconds({10.0}), AtSeconds({9.92, 10.01}))), (List{{0, 1}}));
    EXPECT_EQ(Indices(PairEpochs(AtSeconds({9.92, 10.01}), AtSeconds({10.0}))), (List{{1, 0}}));
}

TEST(Epochs, OnePairASecondAndOnlyForward) {
    const EpochPairs pairs = PairEpochs(AtSeconds({0.0, 0.2, 0.4, 1.0, 1.0, 0.5, 2.0}),
                                        AtSeconds({0.0, 0.2, 0.4, 1.0, 2.0}));
    EXPECT_EQ(Indices(pairs), (List{{0, 0}, {3, 3}, {6, 4}}));
    EXPECT_EQ(pairs.sameSecond, 2U);
    EXPECT_EQ(pairs.outOfOrder, 2U);
}

TEST(Epochs, MovingAntennasAreLeftOut) {
    const auto rover = ObservationMaker("C1C L1C").Epoch(1, 0).Epoch(1, 30).Moving().Done();
    const EpochPairs pairs = PairEpochs(rover, AtSeconds({0, 30}, 1));
    EXPECT_EQ(Indices(pairs), (List{{0, 0}}));
    EXPECT_EQ(pairs.moving, 1U);
}

TEST(Epochs, NoPairAcrossTheEndOfAWeek) {
    const auto rover = ObservationMaker("C1C L1C").Epoch(2110, 604799.99).Epoch(2111, 30.0).Done();
    const EpochPairs pairs = PairEpochs(rover, AtSeconds({0.0, 30.0}));
    EXPECT_EQ(Indices(pairs), (List{{1, 1}}));
    EXPECT_EQ(pairs.acrossWeeks, 1U);
}

TEST(Epochs, TheEnginesTimeIsTheRoundedMean) {
    EXPECT_EQ(EngineTime({2111, 29.99}, {2111, 30.02}), (io::GpsTime{2111, 30.0}));
    EXPECT_EQ(EngineTime({2111, 604799.97}, {2111, 604799.99}), (io::GpsTime{2112, 0.0}));
}

SignalValues Values(engine::System system, int prn) {
    SignalValues values;
    values.satellite = {system, prn};
    values.code = {2e7 + prn, 3e7 + prn};
    values.phase = {1e8 + prn, 2e8 + prn};
    return values;
}

TEST(Epochs, SixtyFourSlotsCommonOnesFirst) {
    std::vector<SignalValues> list;
    for (int prn = 1; prn <= 35; ++prn) {
        list.push_back(Values(engine::System::kGps, prn));
    }
    for (int prn = 1; prn <= 32; ++prn) {
        list.push_back(Values(engine::System::kGalileo, prn));
    }
    const std::vector<engine::Satellite> common = {{engine::System::kGalileo, 31},
                                                   {engine::System::kGalileo, 32}};
    std::set<engine::Satellite> leftOut;
    const engine::ReceiverEpoch epoch = FillSlots({2111, 30.5}, list, common, leftOut);
    EXPECT_EQ(epoch.week, 2111);
    EXPECT_EQ(epoch.seconds, 30.5);
    EXPECT_EQ(epoch.satellites[0], 134);
    EXPECT_EQ(epoch.satellites[1], 135);
    EXPECT_EQ(epoch.code1[1], 2e7 + 32);
    EXPECT_EQ(epoch.code2[1], 3e7 + 32);
    EXPECT_EQ(epoch.phase1[1], 1e8 + 32);
    EXPECT_EQ(epoch.phase2[1], 2e8 + 32);
    EXPECT_EQ(epoch.satellites[2], 1);
    EXPECT_EQ(epoch.satellites[63], 103 + 27);
    EXPECT_EQ(leftOut, (std::set<engine::Satellite>{{engine::System::kGalileo, 28},
                                                    {engine::System::kGalileo, 29},
                                                    {engine::System::kGalileo, 30}}));
}

TEST(Epochs, EmptySlotsAreZero) {
    std::set<engine::Satellite> leftOut;
    const auto epoch = FillSlots({2111, 0.0}, {Values(engine::System::kGlonass, 7)}, {}, leftOut);
    EXPECT_EQ(epoch.satellites[0], 42);
    for (std::size_t i = 1; i < engine::kSlots; ++i) {
        EXPECT_EQ(epoch.satellites[i], 0);
        EXPECT_EQ(epoch.code1[i], 0.0);
    }
    EXPECT_TRUE(leftOut.empty());
}

}  // namespace
}  // namespace vornel::session
