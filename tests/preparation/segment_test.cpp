// The open segment of a satellite: what it spans, and when closing it files an ambiguity.
#include "preparation/segment.h"

#include <gtest/gtest.h>

#include <vector>

namespace vornel {
namespace {

TEST(SegmentTest, GoesFromItsFirstEpochToItsLast) {
    Segment segment;
    segment.Extend(4);
    segment.Extend(7);
    std::vector<AmbiguityPara> paras;
    segment.Close(12, 7, 1.0, paras);
    segment.Close(12, 5, 1.0, paras);
    ASSERT_EQ(paras.size(), 2u);
    EXPECT_EQ(paras[0].sat, 12);
    EXPECT_EQ(paras[0].firstEpoch, 4);
    EXPECT_EQ(paras[0].lastEpoch, 7);
    EXPECT_EQ(paras[1].lastEpoch, 5);
}

TEST(SegmentTest, IsFiledFromTheFewestEpochsOn) {
    Segment segment;
    segment.Extend(4);
    std::vector<AmbiguityPara> paras;
    segment.Close(12, 12, 10.0, paras);  // nine epochs
    EXPECT_TRUE(paras.empty());
    segment.Close(12, 13, 10.0, paras);
    EXPECT_EQ(paras.size(), 1u);
}

TEST(SegmentTest, WithoutABeginningOrAnEndNothingIsFiled) {
    std::vector<AmbiguityPara> paras;
    Segment none;
    none.Close(12, none.arcEnd, 1.0, paras);
    none.Close(12, 30, 1.0, paras);
    EXPECT_TRUE(paras.empty());
    // However few epochs are enough, one before the first of the run is no end.
    Segment begun;
    begun.Extend(0);
    begun.Close(12, -1, 0.0, paras);
    EXPECT_TRUE(paras.empty());
}

}  // namespace
}  // namespace vornel
