// Records of ambiguities: what they start as, their order, and how they are looked up.
#include "run/ambiguity_records.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <type_traits>
#include <vector>

namespace vornel {
namespace {

AmbRstInfo Record(int sat, int first, int last, double value = 0.0) {
    AmbRstInfo record;
    record.sat = sat;
    record.firstEpoch = first;
    record.lastEpoch = last;
    record.value1 = value;
    return record;
}

template <typename T>
std::vector<std::vector<int>> Tracks(const std::vector<T>& list) {
    std::vector<std::vector<int>> tracks;
    for (const T& record : list) {
        tracks.push_back({record.firstEpoch, record.lastEpoch, record.sat});
    }
    return tracks;
}

TEST(AmbiguityParaTest, TakesItsTrackAndStartsWithoutReferenceAmbiguity) {
    const AmbiguityPara segment(45, 3, 17);
    EXPECT_EQ(segment.sat, 45);
    EXPECT_EQ(segment.firstEpoch, 3);
    EXPECT_EQ(segment.lastEpoch, 17);
    EXPECT_EQ(segment.refAmbF1, 0.0);
    EXPECT_EQ(segment.refAmbF2, 0.0);
    EXPECT_TRUE(std::has_virtual_destructor_v<AmbiguityPara>);
}

TEST(AmbRstInfoTest, StartsUnsetAndEmpty) {
    const AmbRstInfo record;
    EXPECT_EQ(record.sat, -1);
    EXPECT_EQ(record.firstEpoch, -1);
    EXPECT_EQ(record.lastEpoch, -1);
    EXPECT_TRUE(record.firstTime.IsZero());
    EXPECT_TRUE(record.lastTime.IsZero());
    EXPECT_EQ(record.rms1, 0.0);
    EXPECT_EQ(record.rms2, 0.0);
    EXPECT_EQ(record.rows1, 0);
    EXPECT_EQ(record.rows2, 0);
    EXPECT_EQ(record.rejected1, 0);
    EXPECT_EQ(record.rejected2, 0);
    EXPECT_EQ(record.value1, 0.0);
    EXPECT_EQ(record.value2, 0.0);
    EXPECT_TRUE(std::has_virtual_destructor_v<AmbRstInfo>);
}

AmbRstInfo FilledRecord() {
    AmbRstInfo record = Record(7, 2, 9, 12.25);
    record.firstTime.day = 7000;
    record.lastTime.second = 40;
    record.rms1 = 0.003;
    record.rms2 = 0.004;
    record.rows1 = 5;
    record.rows2 = 6;
    record.rejected1 = 1;
    record.rejected2 = 2;
    record.value2 = -3.5;
    return record;
}

void ExpectTrackAndValuesKept(const AmbRstInfo& record) {
    EXPECT_EQ(record.sat, 7);
    EXPECT_EQ(record.firstEpoch, 2);
    EXPECT_EQ(record.lastEpoch, 9);
    EXPECT_EQ(record.firstTime.day, 7000);
    EXPECT_EQ(record.lastTime.second, 40);
    EXPECT_EQ(record.value1, 12.25);
    EXPECT_EQ(record.value2, -3.5);
}

TEST(AmbRstInfoTest, CopiesEveryField) {
    const AmbRstInfo original = FilledRecord();
    AmbRstInfo assigned;
    assigned = original;
    for (const AmbRstInfo& copy : {AmbRstInfo(original), assigned}) {
        ExpectTrackAndValuesKept(copy);
        EXPECT_EQ(copy.rms1, 0.003);
        EXPECT_EQ(copy.rms2, 0.004);
        EXPECT_EQ(copy.rows1, 5);
        EXPECT_EQ(copy.rows2, 6);
        EXPECT_EQ(copy.rejected1, 1);
        EXPECT_EQ(copy.rejected2, 2);
    }
}

TEST(AmbRstInfoTest, ResetOfStatisticsKeepsTrackAndValues) {
    AmbRstInfo record = FilledRecord();
    record.ResetStatistics();
    ExpectTrackAndValuesKept(record);
    EXPECT_EQ(record.rms1, 0.0);
    EXPECT_EQ(record.rms2, 0.0);
    EXPECT_EQ(record.rows1, 0);
    EXPECT_EQ(record.rows2, 0);
    EXPECT_EQ(record.rejected1, 0);
    EXPECT_EQ(record.rejected2, 0);
}

TEST(SameTrackTest, ComparesSatelliteAndBothEpochsAlone) {
    const AmbRstInfo record = Record(7, 2, 9, 1.0);
    EXPECT_TRUE(SameTrack(record, Record(7, 2, 9, 2.0)));
    EXPECT_FALSE(SameTrack(record, Record(8, 2, 9, 1.0)));
    EXPECT_FALSE(SameTrack(record, Record(7, 1, 9, 1.0)));
    EXPECT_FALSE(SameTrack(record, Record(7, 2, 8, 1.0)));
}

TEST(SortAmbiguitiesTest, OrdersByFirstEpochThenLastEpochThenSatellite) {
    std::vector<AmbRstInfo> records = {Record(3, 5, 9),  Record(9, 0, 20), Record(2, 0, 20),
                                       Record(30, 0, 4), Record(1, 5, 8),  Record(4, -1, 50)};
    std::vector<AmbiguityPara> segments;
    for (const AmbRstInfo& record : records) {
        segments.emplace_back(record.sat, record.firstEpoch, record.lastEpoch);
    }
    const std::vector<std::vector<int>> expected = {{-1, 50, 4}, {0, 4, 30}, {0, 20, 2},
                                                    {0, 20, 9},  {5, 8, 1},  {5, 9, 3}};
    SortAmbiguities(records);
    SortAmbiguities(segments);
    EXPECT_EQ(Tracks(records), expected);
    EXPECT_EQ(Tracks(segments), expected);
}

TEST(SortAmbiguitiesTest, KeepsRecordsOfOneTrackInTheirOrder) {
    std::vector<AmbRstInfo> records;
    for (int i = 0; i < 40; ++i) {
        records.push_back(Record(1 + i % 2, 0, 10, i));
    }
    SortAmbiguities(records);
    for (std::size_t i = 0; i < 20; ++i) {
        EXPECT_EQ(records[i].value1, 2.0 * static_cast<double>(i));
        EXPECT_EQ(records[20 + i].value1, 2.0 * static_cast<double>(i) + 1.0);
    }
}

TEST(FindAmbiguityTest, IncludesBothEndsOfTheStretch) {
    const std::vector<AmbRstInfo> records = {Record(5, 0, 3), Record(6, 2, 4)};
    const std::vector<AmbiguityPara> segments = {{5, 0, 3}, {6, 2, 4}};
    EXPECT_EQ(FindAmbiguity(records, 6, 1), -1);
    EXPECT_EQ(FindAmbiguity(records, 6, 2), 1);
    EXPECT_EQ(FindAmbiguity(records, 6, 4), 1);
    EXPECT_EQ(FindAmbiguity(records, 6, 5), -1);
    EXPECT_EQ(FindAmbiguity(segments, 6, 1), -1);
    EXPECT_EQ(FindAmbiguity(segments, 6, 2), 1);
    EXPECT_EQ(FindAmbiguity(segments, 6, 4), 1);
    EXPECT_EQ(FindAmbiguity(segments, 6, 5), -1);
}

TEST(FindAmbiguityTest, TellsTracksOfOneSatelliteApartByTheirStretches) {
    const std::vector<AmbRstInfo> records = {Record(5, 0, 3), Record(5, 6, 9)};
    EXPECT_EQ(FindAmbiguity(records, 5, 3), 0);
    EXPECT_EQ(FindAmbiguity(records, 5, 5), -1);
    EXPECT_EQ(FindAmbiguity(records, 5, 6), 1);
}

TEST(FindAmbiguityTest, TakesTheFirstOfOverlappingStretches) {
    const std::vector<AmbRstInfo> records = {Record(5, 0, 6), Record(5, 4, 9)};
    EXPECT_EQ(FindAmbiguity(records, 5, 5), 0);
    EXPECT_EQ(FindAmbiguity(records, 5, 7), 1);
    const std::vector<AmbiguityPara> segments = {{5, 0, 6}, {5, 4, 9}};
    EXPECT_EQ(FindAmbiguity(segments, 5, 5), 0);
    EXPECT_EQ(FindAmbiguity(segments, 5, 7), 1);
}

TEST(FindAmbiguityTest, ADefaultRecordMatchesNoSatelliteAndNoEpoch) {
    const std::vector<AmbRstInfo> records(1);
    for (int sat = 1; sat <= 135; ++sat) {
        EXPECT_EQ(FindAmbiguity(records, sat, 0), -1);
    }
    EXPECT_EQ(FindAmbiguity(std::vector<AmbRstInfo>(), 1, 0), -1);
    EXPECT_EQ(FindAmbiguity(std::vector<AmbiguityPara>(), 1, 0), -1);
}

// --- the same lookup by satellite, prepared once

// Position of the first record of the satellite whose stretch holds the epoch.
template <typename T>
int FirstHolding(const std::vector<T>& list, int sat, int epoch) {
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (list[i].sat == sat && epoch >= list[i].firstEpoch && epoch <= list[i].lastEpoch) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

TEST(AmbiguityIndexTest, FindsTheFirstRecordOfEverySatelliteAndEpoch) {
    // Lists in no order, with stretches that overlap, repeat, hold one epoch or end before they
    // begin.
    std::mt19937_64 random(7);
    const auto drawn = [&random](int least, int most) {
        return std::uniform_int_distribution<int>(least, most)(random);
    };
    for (int round = 0; round < 40; ++round) {
        std::vector<AmbRstInfo> records;
        std::vector<AmbiguityPara> segments;
        for (int count = drawn(0, 60); count > 0; --count) {
            const int sat = round % 2 == 0 ? drawn(1, 6) : drawn(1, 135);
            const int first = drawn(0, 20);
            const int last = first + drawn(-1, 8);
            records.push_back(Record(sat, first, last));
            segments.emplace_back(sat, first, last);
        }
        const AmbiguityIndex ofRecords(records), ofSegments(segments);
        for (int sat = 1; sat <= 135; ++sat) {
            for (int epoch = -1; epoch <= 30; ++epoch) {
                const int expected = FirstHolding(records, sat, epoch);
                ASSERT_EQ(ofRecords.Find(sat, epoch), expected) << sat << " at " << epoch;
                ASSERT_EQ(ofSegments.Find(sat, epoch), expected) << sat << " at " << epoch;
            }
        }
    }
}

TEST(AmbiguityIndexTest, NumbersOfNoSatelliteAreNotFoundAndDisturbNoOther) {
    const std::vector<AmbRstInfo> records = {Record(-1, 0, 9),  Record(0, 0, 9), Record(136, 0, 9),
                                             Record(135, 2, 4), Record(1, 5, 6), AmbRstInfo()};
    const AmbiguityIndex index(records);
    EXPECT_EQ(index.Find(135, 2), 3);
    EXPECT_EQ(index.Find(135, 5), -1);
    EXPECT_EQ(index.Find(1, 6), 4);
    EXPECT_EQ(index.Find(1, 0), -1);
    EXPECT_EQ(index.Find(2, 0), -1);
    EXPECT_EQ(AmbiguityIndex(std::vector<AmbRstInfo>()).Find(1, 0), -1);
}

}  // namespace
}  // namespace vornel
