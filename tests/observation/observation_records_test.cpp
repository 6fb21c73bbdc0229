// The records of an epoch: their shape, defaults and copies, and the input of one receiver's
// observations.
#include "observation/observation_records.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>
#include <vector>

namespace vornel {
namespace {

constexpr int kSlots = 64;

// Builds a record on memory that is all ones before, so that a field left alone shows.
template <typename Record, typename... Arguments>
class OnDirtyMemory {
  public:
    explicit OnDirtyMemory(Arguments... arguments) : memory_(new std::byte[sizeof(Record)]) {
        std::memset(memory_.get(), 0xff, sizeof(Record));
        record_ = new (memory_.get()) Record(arguments...);
    }
    ~OnDirtyMemory() { record_->~Record(); }
    OnDirtyMemory(const OnDirtyMemory&) = delete;
    OnDirtyMemory& operator=(const OnDirtyMemory&) = delete;
    Record& operator*() { return *record_; }

  private:
    std::unique_ptr<std::byte[]> memory_;
    Record* record_;
};

template <int Width>
void ExpectZero(const SlotTable<Width>& table) {
    for (int s = 0; s < kSatelliteCount; ++s) {
        for (int f = 0; f < Width; ++f) {
            ASSERT_EQ(table[s][f], 0.0) << s << " " << f;
        }
    }
}
void ExpectZero(const SlotTable<1>& table) {
    for (int s = 0; s < kSatelliteCount; ++s) {
        ASSERT_EQ(table[s], 0.0) << s;
    }
}

void ExpectFresh(const RWObsData& record) {
    EXPECT_TRUE(record.epoch.IsZero());
    EXPECT_TRUE(record.satList.empty());
    EXPECT_TRUE(record.satListF1.empty());
    EXPECT_TRUE(record.satListF2.empty());
    EXPECT_TRUE(record.satListDual.empty());
    ExpectZero(record.code);
    ExpectZero(record.phase);
    for (const std::int16_t channel : record.glonassChannel) {
        EXPECT_EQ(channel, -1);
    }
}

TEST(ObservationRecords, HaveOneSlotForEachSatelliteNumber) {
    static_assert(kSatelliteCount == 135);
    static_assert(std::is_same_v<decltype(RWObsData::code), SlotTable<2>>);
    static_assert(std::is_same_v<decltype(RWObsData::phase), SlotTable<2>>);
    static_assert(std::is_same_v<SlotTable<2>::Row, double[2]>);
    static_assert(std::extent_v<decltype(RWObsData::glonassChannel)> == 32);
    static_assert(
        std::is_same_v<std::remove_extent_t<decltype(RWObsData::glonassChannel)>, std::int16_t>);
    static_assert(std::is_same_v<decltype(ZDObsData::satPos), SlotTable<3>>);
    static_assert(std::is_same_v<decltype(ZDObsData::satVel), SlotTable<3>>);
    static_assert(std::is_same_v<decltype(SDObsData::satPosA), SlotTable<3>>);
    static_assert(std::has_virtual_destructor_v<RWObsData>);
    static_assert(std::is_base_of_v<RWObsData, ZDObsData>);
    static_assert(std::is_base_of_v<RWObsData, SDObsData>);
}

TEST(ObservationRecords, TheCommonBaseStartsEmpty) {
    OnDirtyMemory<RWObsData> record;
    ExpectFresh(*record);
}

TEST(ObservationRecords, AReceiverRecordStartsEmptyWithItsSettings) {
    OnDirtyMemory<ZDObsData, int, int, int, int, int, int> made(7, 1, 0, 2, 3, 9);
    ZDObsData& record = *made;
    ExpectFresh(record);
    EXPECT_EQ(record.ephemerisSource, 7);
    EXPECT_EQ(record.useGps, 1);
    EXPECT_EQ(record.useGlonass, 0);
    EXPECT_EQ(record.useBds, 2);
    EXPECT_EQ(record.useGalileo, 3);
    EXPECT_EQ(record.tropoModel, 9);
    ExpectZero(record.azel);
    ExpectZero(record.satPos);
    ExpectZero(record.satVel);
    ExpectZero(record.range);
    ExpectZero(record.corrA);
    ExpectZero(record.corrB);
    ExpectZero(record.satClock);
}

TEST(ObservationRecords, ADifferenceStartsEmptyWithItsTroposphereModel) {
    OnDirtyMemory<SDObsData, int> made(5);
    SDObsData& record = *made;
    ExpectFresh(record);
    EXPECT_EQ(record.tropoModel, 5);
    EXPECT_TRUE(record.activeSats.empty());
    ExpectZero(record.azelA);
    ExpectZero(record.azelB);
    ExpectZero(record.satPosA);
    ExpectZero(record.satPosB);
    ExpectZero(record.satClockA);
    ExpectZero(record.satClockB);
    ExpectZero(record.sdRange);
    ExpectZero(record.sdIono);
    ExpectZero(record.sdTrop);
    ExpectZero(record.sdSpare);
    ExpectZero(record.sdObserved);
}

TEST(ObservationRecords, AnEmptyRecordIsCopied) {
    const SDObsData difference(1);
    const SDObsData copy(difference);
    ExpectFresh(copy);
    EXPECT_EQ(copy.tropoModel, 1);
    const ZDObsData receiver(0, 1, 1, 1, 1, 0);
    const ZDObsData receiverCopy(receiver);
    ExpectFresh(receiverCopy);
}

TEST(ObservationRecords, ACopyHasEverythingAndIsItsOwn) {
    SDObsData record(1);
    record.epoch = Epoch(2204, 100.0);
    record.satList = {1, 40};
    record.satListF1 = {1};
    record.satListF2 = {40};
    record.satListDual = {1, 40};
    record.activeSats = {40};
    record.code[134][1] = 1.5;
    record.phase[0][0] = 2.5;
    record.glonassChannel[31] = -7;
    record.azelA[3][1] = 0.3;
    record.azelB[4][0] = 0.4;
    record.satPosA[5][2] = 5.0;
    record.satPosB[6][0] = 6.0;
    record.satClockA[7] = 7.0;
    record.satClockB[8] = 8.0;
    record.sdRange[9] = 9.0;
    record.sdIono[10] = 10.0;
    record.sdTrop[11] = 11.0;
    record.sdSpare[12] = 12.0;
    record.sdObserved[13] = 13.0;
    std::vector<SDObsData> list;
    list.push_back(record);
    list.push_back(SDObsData(0));
    list[1] = record;
    record.code[134][1] = -1.0;
    record.satList.clear();
    record.activeSats.clear();
    for (const SDObsData& copy : list) {
        EXPECT_TRUE(copy.epoch == Epoch(2204, 100.0));
        EXPECT_EQ(copy.satList, (std::vector<int>{1, 40}));
        EXPECT_EQ(copy.satListF1, (std::vector<int>{1}));
        EXPECT_EQ(copy.satListF2, (std::vector<int>{40}));
        EXPECT_EQ(copy.satListDual, (std::vector<int>{1, 40}));
        EXPECT_EQ(copy.activeSats, (std::vector<int>{40}));
        EXPECT_EQ(copy.tropoModel, 1);
        EXPECT_EQ(copy.code[134][1], 1.5);
        EXPECT_EQ(copy.phase[0][0], 2.5);
        EXPECT_EQ(copy.glonassChannel[31], -7);
        EXPECT_EQ(copy.azelA[3][1], 0.3);
        EXPECT_EQ(copy.azelB[4][0], 0.4);
        EXPECT_EQ(copy.satPosA[5][2], 5.0);
        EXPECT_EQ(copy.satPosB[6][0], 6.0);
        EXPECT_EQ(copy.satClockA[7], 7.0);
        EXPECT_EQ(copy.satClockB[8], 8.0);
        EXPECT_EQ(copy.sdRange[9], 9.0);
        EXPECT_EQ(copy.sdIono[10], 10.0);
        EXPECT_EQ(copy.sdTrop[11], 11.0);
        EXPECT_EQ(copy.sdSpare[12], 12.0);
        EXPECT_EQ(copy.sdObserved[13], 13.0);
    }
}

TEST(ObservationRecords, ActiveSatellitesAreLookedUpAndTakenOut) {
    SDObsData record(0);
    EXPECT_FALSE(record.IsActive(5));
    record.RemoveActive(5);
    record.activeSats = {3, 5, 9};
    EXPECT_TRUE(record.IsActive(5));
    EXPECT_FALSE(record.IsActive(4));
    record.RemoveActive(4);
    EXPECT_EQ(record.activeSats, (std::vector<int>{3, 5, 9}));
    record.RemoveActive(5);
    EXPECT_EQ(record.activeSats, (std::vector<int>{3, 9}));
    EXPECT_FALSE(record.IsActive(5));
}

// --- the input of a receiver's observations

struct Slots {
    int satellites[kSlots] = {};
    double code1[kSlots] = {};
    double code2[kSlots] = {};
    double phase1[kSlots] = {};
    double phase2[kSlots] = {};

    void Set(int slot, int satellite, double c1, double c2, double p1, double p2) {
        satellites[slot] = satellite;
        code1[slot] = c1;
        code2[slot] = c2;
        phase1[slot] = p1;
        phase2[slot] = p2;
    }
    void FillInto(ZDObsData& record, int week = 2204, double seconds = 288000.0) const {
        record.Fill(week, seconds, satellites, code1, code2, phase1, phase2);
    }
};

TEST(ReceiverInput, StoresTheFourValuesUnderTheSatelliteNumber) {
    Slots slots;
    slots.Set(0, 1, 2.1e7, 2.2e7, 1.1e8, 8.6e7);
    slots.Set(63, 135, 2.5e7, 2.6e7, -1.3e8, -9.9e7);
    ZDObsData record(0, 1, 1, 1, 1, 0);
    slots.FillInto(record, 2204, 288000.25);
    EXPECT_TRUE(record.epoch == Epoch(2204, 288000.25));
    EXPECT_EQ(record.satList, (std::vector<int>{1, 135}));
    EXPECT_EQ(record.code[0][0], 2.1e7);
    EXPECT_EQ(record.code[0][1], 2.2e7);
    EXPECT_EQ(record.phase[0][0], 1.1e8);
    EXPECT_EQ(record.phase[0][1], 8.6e7);
    EXPECT_EQ(record.code[134][0], 2.5e7);
    EXPECT_EQ(record.code[134][1], 2.6e7);
    EXPECT_EQ(record.phase[134][0], -1.3e8);
    EXPECT_EQ(record.phase[134][1], -9.9e7);
    EXPECT_TRUE(record.satListF1.empty());
    EXPECT_TRUE(record.satListF2.empty());
    EXPECT_TRUE(record.satListDual.empty());
}

TEST(ReceiverInput, AllSixtyFourSlotsCount) {
    Slots slots;
    std::vector<int> expected;
    for (int slot = 0; slot < kSlots; ++slot) {
        slots.Set(slot, 135 - 2 * slot, 1000.0 + slot, 0.0, 0.0, 0.0);
        expected.insert(expected.begin(), 135 - 2 * slot);
    }
    ZDObsData record(0, 1, 1, 1, 1, 0);
    slots.FillInto(record);
    EXPECT_EQ(record.satList, expected);
    for (int slot = 0; slot < kSlots; ++slot) {
        EXPECT_EQ(record.code[134 - 2 * slot][0], 1000.0 + slot);
    }
}

TEST(ReceiverInput, ASixtyFifthSlotIsNotRead) {
    int satellites[kSlots + 1] = {};
    double values[kSlots + 1] = {};
    satellites[kSlots - 1] = 20;
    satellites[kSlots] = 21;
    values[kSlots - 1] = 2e7;
    values[kSlots] = 2e7;
    ZDObsData record(0, 1, 1, 1, 1, 0);
    record.Fill(2204, 288000.0, satellites, values, values, values, values);
    EXPECT_EQ(record.satList, (std::vector<int>{20}));
    EXPECT_EQ(record.code[20][0], 0.0);
}

TEST(ReceiverInput, NumbersOutsideTheNumberingAreSkipped) {
    Slots slots;
    slots.Set(0, 0, 1.0, 1.0, 1.0, 1.0);
    slots.Set(1, -5, 1.0, 1.0, 1.0, 1.0);
    slots.Set(2, 136, 1.0, 1.0, 1.0, 1.0);
    slots.Set(3, std::numeric_limits<int>::max(), 1.0, 1.0, 1.0, 1.0);
    slots.Set(4, std::numeric_limits<int>::min(), 1.0, 1.0, 1.0, 1.0);
    slots.Set(5, 20, 2e7, 0.0, 0.0, 0.0);
    ZDObsData record(0, 1, 1, 1, 1, 0);
    slots.FillInto(record);
    EXPECT_EQ(record.satList, (std::vector<int>{20}));
    double sum = 0.0;
    for (int s = 0; s < kSatelliteCount; ++s) {
        sum += record.code[s][0] + record.code[s][1];
    }
    EXPECT_EQ(sum, 2e7);
}

TEST(ReceiverInput, ASatelliteNeedsAPositiveCodeOnEitherSignal) {
    Slots slots;
    slots.Set(0, 1, 2e7, 0.0, 0.0, 0.0);
    slots.Set(1, 2, 0.0, 2e7, 0.0, 0.0);
    slots.Set(2, 3, 0.0, 0.0, 1e8, 1e8);  // phases alone
    slots.Set(3, 4, -2e7, -2e7, 1e8, 1e8);
    slots.Set(4, 5, -2e7, 2e7, 0.0, 0.0);
    slots.Set(5, 6, 1e-9, 0.0, 0.0, 0.0);
    ZDObsData record(0, 1, 1, 1, 1, 0);
    slots.FillInto(record);
    EXPECT_EQ(record.satList, (std::vector<int>{1, 2, 5, 6}));
    // What the others brought is stored all the same.
    EXPECT_EQ(record.phase[2][0], 1e8);
    EXPECT_EQ(record.code[3][1], -2e7);
}

TEST(ReceiverInput, ARepeatedNumberStandsOnceWithItsLastValues) {
    Slots slots;
    slots.Set(0, 9, 1.0, 2.0, 3.0, 4.0);
    slots.Set(1, 3, 2e7, 0.0, 0.0, 0.0);
    slots.Set(2, 9, 5.0, 6.0, 7.0, 8.0);
    slots.Set(3, 9, 9.0, 10.0, 11.0, 12.0);
    ZDObsData record(0, 1, 1, 1, 1, 0);
    slots.FillInto(record);
    EXPECT_EQ(record.satList, (std::vector<int>{3, 9}));
    EXPECT_EQ(record.code[8][0], 9.0);
    EXPECT_EQ(record.code[8][1], 10.0);
    EXPECT_EQ(record.phase[8][0], 11.0);
    EXPECT_EQ(record.phase[8][1], 12.0);
}

TEST(ReceiverInput, EachInputStartsTheListAnew) {
    Slots slots;
    slots.Set(0, 9, 1.0, 2.0, 3.0, 4.0);
    ZDObsData record(0, 1, 1, 1, 1, 0);
    slots.FillInto(record);
    Slots others;
    others.Set(0, 4, 1.0, 0.0, 0.0, 0.0);
    others.FillInto(record, 2204, 288030.0);
    EXPECT_EQ(record.satList, (std::vector<int>{4}));
    EXPECT_TRUE(record.epoch == Epoch(2204, 288030.0));
}

TEST(ReceiverInput, NothingOfTheInputBeforeIsLeft) {
    Slots slots;
    slots.Set(0, 9, 1.0, 2.0, 3.0, 4.0);
    ZDObsData record(0, 1, 1, 1, 1, 0);
    slots.FillInto(record);
    record.satListF1 = record.satListF2 = record.satListDual = {9};
    record.glonassChannel[5] = 4;
    for (SlotTable<3>* table : {&record.satPos, &record.satVel}) {
        (*table)[8][2] = 7.0;
    }
    for (SlotTable<1>* table : {&record.range, &record.corrA, &record.corrB, &record.satClock}) {
        (*table)[8] = 7.0;
    }
    record.azel[8][1] = 7.0;
    const ZDObsData copy = record;
    Slots().FillInto(record);

    EXPECT_TRUE(record.satList.empty());
    EXPECT_TRUE(record.satListF1.empty());
    EXPECT_TRUE(record.satListF2.empty());
    EXPECT_TRUE(record.satListDual.empty());
    EXPECT_EQ(record.glonassChannel[5], -1);
    const ZDObsData& read = record;
    EXPECT_EQ(read.code[8][0], 0.0);
    EXPECT_EQ(read.phase[8][1], 0.0);
    EXPECT_EQ(read.azel[8][1], 0.0);
    EXPECT_EQ(read.satPos[8][2], 0.0);
    EXPECT_EQ(read.satVel[8][2], 0.0);
    EXPECT_EQ(read.range[8], 0.0);
    EXPECT_EQ(read.corrA[8], 0.0);
    EXPECT_EQ(read.corrB[8], 0.0);
    EXPECT_EQ(read.satClock[8], 0.0);
    EXPECT_EQ(copy.code[8][0], 1.0);
    EXPECT_EQ(copy.satVel[8][2], 7.0);
}

}  // namespace
}  // namespace vornel
