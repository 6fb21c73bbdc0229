#include "engine/status.h"

#include <gtest/gtest.h>

#include <set>

namespace vornel::engine {
namespace {

TEST(Status, EveryStatusOfTheHeaderHasItsOwnWords) {
    const std::set<int> all = {0,  10, 11, 12, 13, 14, 20, 21, 30, 31, 32, 33, 34, 35, 40, 41, 42,
                               43, 44, 45, 50, 51, 52, 53, 54, 55, 56, 57, 58, 60, 61, 62, 63, 64,
                               65, 66, 67, 68, 70, 71, 72, 73, 74, 75, 80, 81, 82, 83, 84, 85};
    std::set<int> described;
    std::set<std::string> texts;
    for (const StatusEntry& entry : AllStatuses()) {
        described.insert(entry.status);
        texts.insert(entry.text);
    }
    EXPECT_EQ(described, all);
    EXPECT_EQ(texts.size(), all.size());
    EXPECT_STREQ(DescribeStatus(46).text, "unknown status");
}

TEST(Status, ModelsHaveTheShapeFloatFixRatioFixed) {
    // The table of VornelBlCore.h, by rows: float failed, done, fixing failed, ratio low, passed,
    // fixed failed, done.
    const int table[6][7] = {{40, 41, 60, 61, 62, 80, 81}, {42, 43, 63, 64, 65, 82, 83},
                             {44, 45, 66, 67, 68, 84, 85}, {34, 35, 56, 57, 58, 74, 75},
                             {30, 31, 50, 51, 52, 70, 71}, {32, 33, 53, 54, 55, 72, 73}};
    const StatusKind kinds[7] = {StatusKind::kFloatFailed,  StatusKind::kFloatDone,
                                 StatusKind::kFixingFailed, StatusKind::kRatioLow,
                                 StatusKind::kRatioPassed,  StatusKind::kFixedFailed,
                                 StatusKind::kFixedDone};
    for (int model = 1; model <= 6; ++model) {
        for (int i = 0; i < 7; ++i) {
            const StatusEntry& entry = DescribeStatus(table[model - 1][i]);
            EXPECT_EQ(entry.solveModel, model) << entry.status;
            EXPECT_EQ(entry.kind, kinds[i]) << entry.status;
        }
    }
}

TEST(Status, ChainOfModel6GoesThroughTheWideLane) {
    using V = std::vector<int>;
    EXPECT_EQ(StatusChain(73, 6, true, true), (V{12, 14, 21, 31, 52, 71, 33, 55, 73}));
    EXPECT_EQ(StatusChain(73, 6, true, false), (V{12, 14, 21, 31, 52, 71, 33, 54, 73}));
    EXPECT_EQ(StatusChain(71, 6, false, false), (V{12, 14, 21, 31, 51, 71}));
    EXPECT_EQ(StatusChain(53, 6, true, false), (V{12, 14, 21, 31, 52, 71, 33, 53}));
    EXPECT_EQ(StatusChain(30, 6, false, false), (V{12, 14, 21, 30}));
    EXPECT_EQ(StatusChain(81, 1, false, true), (V{12, 14, 21, 41, 62, 81}));
    EXPECT_EQ(StatusChain(41, 1, false, false), (V{12, 14, 21, 41}));
    EXPECT_EQ(StatusChain(21, 6, false, false), (V{12, 14, 21}));
    EXPECT_EQ(StatusChain(20, 1, false, false), (V{12, 14, 20}));
    EXPECT_EQ(StatusChain(13, 1, false, false), (V{12, 13}));
    EXPECT_EQ(StatusChain(10, 1, false, false), (V{10}));
}

}  // namespace
}  // namespace vornel::engine
