// Residual series: rounding to millimetres, order, replacement.
#include "run/residuals.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <vector>

namespace vornel {
namespace {

Epoch At(int second, double fraction = 0.0) {
    Epoch epoch;
    epoch.day = 7000;
    epoch.second = second;
    epoch.fraction = fraction;
    return epoch;
}

std::vector<int> Values(const std::vector<ResidualPoint>& points) {
    std::vector<int> values;
    for (const ResidualPoint& point : points) {
        values.push_back(point.valueMm);
    }
    return values;
}

TEST(ResidualListTest, StartsEmpty) {
    const ResidualList list;
    EXPECT_EQ(list.Size(), 0);
    EXPECT_TRUE(list.emptyResidual.firstBlock.empty());
    EXPECT_TRUE(list.emptyResidual.secondBlock.empty());
    EXPECT_TRUE(std::has_virtual_destructor_v<ResidualList>);
    EXPECT_TRUE(std::has_virtual_destructor_v<Residual>);
}

TEST(ResidualListTest, CutsMillimetresTowardZero) {
    ResidualList list;
    list.Add(0, 12, At(0), 0.0009999);
    list.Add(0, 12, At(1), -0.0009999);
    list.Add(0, 12, At(2), -0.0015);
    list.Add(0, 12, At(3), 0.0125);
    list.Add(0, 12, At(4), -1.5);
    EXPECT_EQ(Values(list.Find(12).firstBlock), (std::vector<int>{0, 0, -1, 12, -1500}));
    EXPECT_EQ(list.Find(12).firstBlock[3].time, At(3));
}

TEST(ResidualListTest, SecondKindOfANewSatelliteLeavesTheFirstBlockEmpty) {
    ResidualList list;
    list.Add(1, 40, At(0), 0.003);
    ASSERT_EQ(list.Size(), 1);
    EXPECT_TRUE(list.Find(40).firstBlock.empty());
    EXPECT_EQ(Values(list.Find(40).secondBlock), std::vector<int>{3});
}

TEST(ResidualListTest, KeepsTheKindsApart) {
    ResidualList list;
    list.Add(0, 40, At(0), 0.001);
    list.Add(1, 40, At(0), 0.002);
    EXPECT_EQ(list.Size(), 1);
    EXPECT_EQ(Values(list.Find(40).firstBlock), std::vector<int>{1});
    EXPECT_EQ(Values(list.Find(40).secondBlock), std::vector<int>{2});
}

TEST(ResidualListTest, ARepeatedTimeMovesToTheEndWithItsNewValue) {
    for (int kind : {0, 1}) {
        ResidualList list;
        list.Add(kind, 5, At(0), 0.001);
        list.Add(kind, 5, At(1), 0.002);
        list.Add(kind, 5, At(2), 0.003);
        list.Add(kind, 5, At(1), 0.007);
        const std::vector<ResidualPoint>& points =
            kind == 0 ? list.Find(5).firstBlock : list.Find(5).secondBlock;
        EXPECT_EQ(Values(points), (std::vector<int>{1, 3, 7}));
        EXPECT_EQ(points.back().time, At(1));
    }
}

TEST(ResidualListTest, AnEarlierTimeIsAppendedAndLaterOnesAreStillFound) {
    ResidualList list;
    list.Add(0, 5, At(2), 0.001);
    list.Add(0, 5, At(1), 0.002);
    list.Add(0, 5, At(4), 0.003);
    list.Add(0, 5, At(2), 0.004);
    EXPECT_EQ(Values(list.Find(5).firstBlock), (std::vector<int>{2, 3, 4}));
    EXPECT_EQ(list.Find(5).firstBlock.front().time, At(1));
    EXPECT_EQ(list.Find(5).firstBlock.back().time, At(2));
}

TEST(ResidualListTest, TwoAddsOfOneTimeLeaveOnePoint) {
    ResidualList list;
    list.Add(0, 5, At(0), 0.001);
    list.Add(0, 5, At(0), 0.009);
    EXPECT_EQ(Values(list.Find(5).firstBlock), std::vector<int>{9});
}

TEST(ResidualListTest, TimesDifferByDaySecondOrFraction) {
    ResidualList list;
    list.Add(0, 5, At(0), 0.001);
    list.Add(0, 5, At(0, 1e-9), 0.002);
    list.Add(0, 5, At(1), 0.003);
    Epoch nextDay = At(0);
    nextDay.day += 1;
    list.Add(0, 5, nextDay, 0.004);
    EXPECT_EQ(Values(list.Find(5).firstBlock), (std::vector<int>{1, 2, 3, 4}));
}

TEST(ResidualListTest, ATimeOfAnotherSatelliteIsNotReplaced) {
    ResidualList list;
    list.Add(0, 5, At(0), 0.001);
    list.Add(0, 6, At(0), 0.002);
    EXPECT_EQ(Values(list.Find(5).firstBlock), std::vector<int>{1});
    EXPECT_EQ(Values(list.Find(6).firstBlock), std::vector<int>{2});
}

TEST(ResidualListTest, EntriesStandInTheOrderOfTheFirstResidual) {
    ResidualList list;
    for (int sat : {30, 4, 70, 4, 30}) {
        list.Add(0, sat, At(sat), 0.001);
    }
    ASSERT_EQ(list.Size(), 3);
    EXPECT_EQ(list.entries[0].first, 30);
    EXPECT_EQ(list.entries[1].first, 4);
    EXPECT_EQ(list.entries[2].first, 70);
}

TEST(ResidualListTest, AnUnknownKindAppendsAnEmptyEntryForANewSatelliteAlone) {
    ResidualList list;
    list.Add(2, 5, At(0), 0.001);
    ASSERT_EQ(list.Size(), 1);
    EXPECT_EQ(list.entries[0].first, 5);
    EXPECT_TRUE(list.Find(5).firstBlock.empty());
    EXPECT_TRUE(list.Find(5).secondBlock.empty());

    list.Add(0, 5, At(0), 0.001);
    list.Add(1, 5, At(0), 0.002);
    list.Add(-1, 5, At(0), 0.003);
    list.Add(2, 5, At(1), 0.004);
    EXPECT_EQ(list.Size(), 1);
    EXPECT_EQ(Values(list.Find(5).firstBlock), std::vector<int>{1});
    EXPECT_EQ(Values(list.Find(5).secondBlock), std::vector<int>{2});
}

TEST(ResidualListTest, AnUnknownSatelliteHasEmptySeries) {
    ResidualList list;
    list.Add(0, 5, At(0), 0.001);
    EXPECT_TRUE(list.Find(6).firstBlock.empty());
    EXPECT_TRUE(list.Find(6).secondBlock.empty());
    EXPECT_EQ(&list.Find(6), &list.emptyResidual);
    EXPECT_EQ(list.Size(), 1);
}

TEST(ResidualListTest, ClearEmptiesTheEntries) {
    ResidualList list;
    list.Add(0, 5, At(0), 0.001);
    list.Clear();
    EXPECT_EQ(list.Size(), 0);
    EXPECT_TRUE(list.Find(5).firstBlock.empty());
}

TEST(ResidualListTest, ACopyIsOfItsOwn) {
    ResidualList list;
    list.Add(0, 5, At(0), 0.001);
    ResidualList copy = list;
    copy.Add(0, 5, At(1), 0.002);
    EXPECT_EQ(list.Find(5).firstBlock.size(), 1U);
    EXPECT_EQ(copy.Find(5).firstBlock.size(), 2U);
}

}  // namespace
}  // namespace vornel
