// Values by satellite that take room only where they were written.
#include "observation/slot_table.h"

#include <gtest/gtest.h>

namespace vornel {
namespace {

TEST(SlotTable, ReadsZerosWhereNothingWasWritten) {
    SlotTable<2> table;
    const SlotTable<2>& read = table;
    EXPECT_EQ(read[0][0], 0.0);
    EXPECT_EQ(read[kSatelliteCount - 1][1], 0.0);
    table[7][1] = 3.5;
    EXPECT_EQ(read[7][0], 0.0);
    EXPECT_EQ(read[7][1], 3.5);
    EXPECT_EQ(read[6][1], 0.0);
}

TEST(SlotTable, HoldsEverySatelliteNumber) {
    SlotTable<1> table;
    for (int s = 0; s < kSatelliteCount; ++s) {
        table[s] = s + 0.25;
    }
    const SlotTable<1>& read = table;
    for (int s = 0; s < kSatelliteCount; ++s) {
        EXPECT_EQ(read[s], s + 0.25);
    }
}

TEST(SlotTable, CopiesDoNotSeeEachOthersChanges) {
    SlotTable<3> original;
    original[10][2] = 1.0;
    SlotTable<3> copy = original;
    copy[10][2] = 2.0;
    copy[11][0] = 5.0;
    const SlotTable<3>& readOriginal = original;
    const SlotTable<3>& readCopy = copy;
    EXPECT_EQ(readOriginal[10][2], 1.0);
    EXPECT_EQ(readOriginal[11][0], 0.0);
    EXPECT_EQ(readCopy[10][2], 2.0);
    EXPECT_EQ(readCopy[11][0], 5.0);
    original[10][0] = 9.0;
    EXPECT_EQ(readCopy[10][0], 0.0);
}

TEST(SlotTable, ARowStaysWhereItIsOnceRoomIsReserved) {
    SlotTable<2> table;
    table.Reserve(3);
    double* first = table[40];
    table[3][0] = 1.0;
    table[100][1] = 2.0;
    EXPECT_EQ(first, table[40]);
}

TEST(SlotTable, ClearedItReadsZerosAndACopyKeepsItsValues) {
    SlotTable<2> table;
    const SlotTable<2>& read = table;
    table.Clear();
    EXPECT_EQ(read[0][0], 0.0);
    table[40][1] = 1.5;
    table.Clear();
    EXPECT_EQ(read[40][1], 0.0);
    table[41][0] = 2.5;
    EXPECT_EQ(read[41][0], 2.5);
    EXPECT_EQ(read[41][1], 0.0);
    EXPECT_EQ(read[40][1], 0.0);
    const SlotTable<2> copy = table;
    table.Clear();
    EXPECT_EQ(read[41][0], 0.0);
    EXPECT_EQ(copy[41][0], 2.5);
}

}  // namespace
}  // namespace vornel
