// GLONASS broadcast orbits: the choice of a record, the integration against an independent one in
// extended precision, and its steps.
#include "orbit/glonass_orbit.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

#include "orbit/orbit_stores.h"
#include "orbit/reference_orbits.h"

namespace vornel {
namespace {

using reference::GlonassTrajectory;
using reference::IntegrateGlonass;
using reference::Real;
using reference::SampleGlonassRecord;
using reference::Separation;
using reference::Vector;

constexpr int kWeek = 2204;
constexpr double kReference = 294300.0;  // s of the week, UTC, Wednesday 09:45
constexpr double kLeap = 18.0;
constexpr int kSlot = 3;

struct Answer {
    bool usable = false;
    XYZPosition position;
    double clock = 123.0;
    int channel = 123;
};

Answer Ask(const Epoch& time, int slot) {
    Answer answer;
    answer.usable = GetGlonassPosition(time, slot, answer.position, answer.clock, answer.channel);
    return answer;
}

// GPS time `after` seconds past the reference of the sample record.
Epoch After(double after) {
    return Epoch(kWeek, kReference + kLeap + after);
}

// A record whose channel tells which one was chosen.
GlonassEphemeris MarkedRecord(double reference, int channel) {
    GlonassEphemeris record = SampleGlonassRecord(kSlot, kWeek, reference);
    record.channel = channel;
    return record;
}

// A record without a date, by its seconds of the day.
GlonassEphemeris UndatedRecord(double tbSeconds, int channel) {
    GlonassEphemeris record = SampleGlonassRecord(kSlot, kWeek, 0.0);
    record.refEpoch = Epoch();
    record.tbSeconds = tbSeconds;
    record.channel = channel;
    return record;
}

class GlonassOrbit : public testing_support::EmptyOrbitStores {};

// --- integration

TEST_F(GlonassOrbit, AtTheReferenceTimeTheStartStateComesBack) {
    const GlonassEphemeris record = SampleGlonassRecord(kSlot, kWeek, kReference);
    GlonassEphemerides().AddGlonassEphemeris(record);
    const Answer answer = Ask(After(0.0), kSlot);
    EXPECT_TRUE(answer.usable);
    EXPECT_DOUBLE_EQ(answer.position.X, record.x * 1000.0);
    EXPECT_DOUBLE_EQ(answer.position.Y, record.y * 1000.0);
    EXPECT_DOUBLE_EQ(answer.position.Z, record.z * 1000.0);
    EXPECT_EQ(answer.clock, record.clockBias);
    EXPECT_EQ(answer.channel, record.channel);
}

TEST_F(GlonassOrbit, AgreesWithAFineIntegrationWithinAMillimetre) {
    const GlonassEphemeris record = SampleGlonassRecord(kSlot, kWeek, kReference);
    GlonassEphemerides().AddGlonassEphemeris(record);
    for (const double after : {-1800.0, -900.0, -45.0, -0.5, 0.25, 30.0, 100.0, 899.75, 1800.0}) {
        SCOPED_TRACE(after);
        const Answer answer = Ask(After(after), kSlot);
        EXPECT_TRUE(answer.usable);
        EXPECT_LT(Separation(GlonassTrajectory(record, after), answer.position), 1e-3);
        EXPECT_NEAR(answer.clock, record.clockBias + record.clockDrift * after, 1e-18);
    }
}

TEST_F(GlonassOrbit, AgreesWithAFineIntegrationAtTheLimitsOfUse) {
    const GlonassEphemeris record = SampleGlonassRecord(kSlot, kWeek, kReference);
    GlonassEphemerides().AddGlonassEphemeris(record);
    for (const double after : {-14399.75, -14399.5, 14399.5, 14400.0}) {
        SCOPED_TRACE(after);
        const Answer answer = Ask(After(after), kSlot);
        EXPECT_TRUE(answer.usable);
        EXPECT_LT(Separation(GlonassTrajectory(record, after), answer.position), 2e-3);
        EXPECT_NEAR(answer.clock, record.clockBias + record.clockDrift * after, 1e-18);
    }
}

TEST_F(GlonassOrbit, TheLuniSolarAccelerationOfEachAxisActsThroughout) {
    for (int axis = 0; axis < 3; ++axis) {
        SCOPED_TRACE(axis);
        GlonassEphemerides().Clear();
        GlonassEphemeris record = SampleGlonassRecord(kSlot, kWeek, kReference);
        record.ax = axis == 0 ? 1e-6 : 0.0;
        record.ay = axis == 1 ? 1e-6 : 0.0;
        record.az = axis == 2 ? 1e-6 : 0.0;
        GlonassEphemerides().AddGlonassEphemeris(record);
        // a t^2 / 2 is 405 m in this time.
        EXPECT_LT(Separation(GlonassTrajectory(record, 900.0), Ask(After(900.0), kSlot).position),
                  1e-3);
    }
}

// A throw out from near the centre: the pull changes so much within a step that every other
// division of the time gives another end point.
GlonassEphemeris SteepRecord() {
    GlonassEphemeris record = SampleGlonassRecord(kSlot, kWeek, kReference);
    record.x = 1500.0;
    record.y = 300.0;
    record.z = -900.0;
    record.vx = 500.0;
    record.vy = -20.0;
    record.vz = 60.0;
    return record;
}

// The same, with the far end at the reference time and the centre in the past.
GlonassEphemeris SteepRecordBackwards() {
    GlonassEphemeris record = SteepRecord();
    record.vx = -500.0;
    record.vy = 20.0;
    record.vz = -60.0;
    return record;
}

struct StepCase {
    double time;
    std::vector<Real> steps;
    std::vector<std::vector<Real>> others;  // divisions that it must not be
};

class GlonassSteps : public testing_support::EmptyOrbitStores,
                     public ::testing::WithParamInterface<StepCase> {};

TEST_P(GlonassSteps, AreThirtySecondsAndThenTheRemainder) {
    const StepCase& one = GetParam();
    const GlonassEphemeris record = one.time < 0.0 ? SteepRecordBackwards() : SteepRecord();
    GlonassEphemerides().AddGlonassEphemeris(record);
    const Answer answer = Ask(After(one.time), kSlot);
    EXPECT_TRUE(answer.usable);
    const Vector expected = IntegrateGlonass(record, one.steps);
    EXPECT_LT(Separation(expected, answer.position), 1e-4);
    for (const std::vector<Real>& other : one.others) {
        EXPECT_GT(Norm(IntegrateGlonass(record, other) - expected), 1e-2);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Divisions, GlonassSteps,
    ::testing::Values(StepCase{45.0, {30.0L, 15.0L}, {{15.0L, 30.0L}, {22.5L, 22.5L}, {45.0L}}},
                      StepCase{
                          -45.0, {-30.0L, -15.0L}, {{-15.0L, -30.0L}, {-22.5L, -22.5L}, {-45.0L}}},
                      StepCase{60.0, {30.0L, 30.0L, 0.0L}, {{60.0L}, {20.0L, 20.0L, 20.0L}}},
                      StepCase{-60.0, {-30.0L, -30.0L, 0.0L}, {{-60.0L}, {-20.0L, -20.0L, -20.0L}}},
                      StepCase{30.0, {30.0L, 0.0L}, {{15.0L, 15.0L}}},
                      StepCase{-30.0, {-30.0L, 0.0L}, {{-15.0L, -15.0L}}},
                      StepCase{59.75, {30.0L, 29.75L}, {{29.75L, 30.0L}, {29.875L, 29.875L}}},
                      StepCase{-30.25, {-30.0L, -0.25L}, {{-0.25L, -30.0L}}}));

// --- the bounds of the radius

TEST_F(GlonassOrbit, TheRadiusMustLieStrictlyBetweenItsBounds) {
    struct Case {
        double radius;  // km
        bool usable;
    };
    for (const Case& one : {Case{14999.999, false}, Case{15000.0, false}, Case{15000.001, true},
                            Case{39999.999, true}, Case{40000.0, false}, Case{40000.001, false}}) {
        SCOPED_TRACE(one.radius);
        GlonassEphemerides().Clear();
        GlonassEphemeris record = SampleGlonassRecord(kSlot, kWeek, kReference);
        record.x = 0.0;
        record.y = 0.0;
        record.z = -one.radius;
        GlonassEphemerides().AddGlonassEphemeris(record);
        const Answer answer = Ask(After(0.0), kSlot);
        EXPECT_EQ(answer.usable, one.usable);
        EXPECT_EQ(answer.channel, -4);  // known even where the radius is not believed
    }
}

TEST_F(GlonassOrbit, TheRadiusIsThatAfterTheIntegration) {
    GlonassEphemeris record = SampleGlonassRecord(kSlot, kWeek, kReference);
    record.x = 0.0;
    record.y = 0.0;
    record.z = 39990.0;
    record.vx = 0.0;
    record.vy = 0.0;
    record.vz = 1.0;
    GlonassEphemerides().AddGlonassEphemeris(record);
    EXPECT_TRUE(Ask(After(5.0), kSlot).usable);
    EXPECT_FALSE(Ask(After(20.0), kSlot).usable);
}

// --- the choice of a record

TEST_F(GlonassOrbit, AnAbsentSlotHasNoChannel) {
    GlonassEphemerides().AddGlonassEphemeris(SampleGlonassRecord(kSlot, kWeek, kReference));
    const Answer answer = Ask(After(0.0), kSlot + 1);
    EXPECT_FALSE(answer.usable);
    EXPECT_EQ(answer.channel, -99);
}

TEST_F(GlonassOrbit, ARecordFourHoursAwayIsUsedAndHalfASecondMoreIsNot) {
    GlonassEphemerides().AddGlonassEphemeris(SampleGlonassRecord(kSlot, kWeek, kReference));
    EXPECT_TRUE(Ask(After(14400.0), kSlot).usable);
    // A time before the reference counts from the day before, which costs the last digits of the
    // difference.
    EXPECT_TRUE(Ask(After(-14399.999), kSlot).usable);
    for (const double beyond : {-14400.5, 14400.5}) {
        const Answer answer = Ask(After(beyond), kSlot);
        EXPECT_FALSE(answer.usable);
        EXPECT_EQ(answer.channel, -99);
    }
}

TEST_F(GlonassOrbit, LeapSecondsStandBetweenTheTimeAndTheReference) {
    GlonassEphemeris record = SampleGlonassRecord(kSlot, kWeek, kReference);
    record.leapSeconds = 100;
    GlonassEphemerides().AddGlonassEphemeris(record);
    EXPECT_DOUBLE_EQ(Ask(Epoch(kWeek, kReference + 100.0), kSlot).position.X, record.x * 1000.0);
    EXPECT_TRUE(Ask(Epoch(kWeek, kReference + 14500.0), kSlot).usable);
    EXPECT_FALSE(Ask(Epoch(kWeek, kReference + 14500.5), kSlot).usable);
    EXPECT_TRUE(Ask(Epoch(kWeek, kReference - 14299.999), kSlot).usable);
    EXPECT_FALSE(Ask(Epoch(kWeek, kReference - 14300.5), kSlot).usable);
}

TEST_F(GlonassOrbit, TheClosestRecordIsChosen) {
    GlonassEphemerides().AddGlonassEphemeris(MarkedRecord(kReference + 1800.0, 2));
    GlonassEphemerides().AddGlonassEphemeris(MarkedRecord(kReference, 1));
    EXPECT_EQ(Ask(After(899.5), kSlot).channel, 1);
    EXPECT_EQ(Ask(After(900.5), kSlot).channel, 2);
    EXPECT_EQ(Ask(After(-5000.0), kSlot).channel, 1);
}

TEST_F(GlonassOrbit, OfEquallyCloseRecordsTheEarliestStoredIsChosen) {
    // Three hours are an eighth of a day: the difference keeps every digit on both sides.
    for (const bool ascending : {true, false}) {
        GlonassEphemerides().Clear();
        GlonassEphemeris first = MarkedRecord(kReference + (ascending ? 0.0 : 21600.0), 1);
        GlonassEphemeris second = MarkedRecord(kReference + (ascending ? 21600.0 : 0.0), 2);
        first.leapSeconds = 0;
        second.leapSeconds = 0;
        GlonassEphemerides().AddGlonassEphemeris(first);
        GlonassEphemerides().AddGlonassEphemeris(second);
        EXPECT_EQ(Ask(Epoch(kWeek, kReference + 10800.0), kSlot).channel, 1);
    }
}

TEST_F(GlonassOrbit, AnUnhealthyRecordIsUsed) {
    GlonassEphemeris record = SampleGlonassRecord(kSlot, kWeek, kReference);
    record.health = 1;
    record.age = 5;
    record.spare1 = 7.0;
    record.spare2 = 8.0;
    GlonassEphemerides().AddGlonassEphemeris(record);
    EXPECT_TRUE(Ask(After(60.0), kSlot).usable);
}

TEST_F(GlonassOrbit, ADatedRecordIsTakenAcrossTheStartOfAWeek) {
    const GlonassEphemeris record = SampleGlonassRecord(kSlot, kWeek, 604800.0 - 900.0);
    GlonassEphemerides().AddGlonassEphemeris(record);
    const Answer answer = Ask(Epoch(kWeek + 1, 118.0), kSlot);
    EXPECT_TRUE(answer.usable);
    EXPECT_LT(Separation(GlonassTrajectory(record, 1000.0L), answer.position), 1e-3);
}

TEST_F(GlonassOrbit, ARecordWithoutADateServesItsTimeOfDayOnAnyDay) {
    const GlonassEphemeris record = UndatedRecord(35100.0, 5);
    GlonassEphemerides().AddGlonassEphemeris(record);
    for (const int day : {0, 3, 6}) {
        SCOPED_TRACE(day);
        const Answer answer = Ask(Epoch(kWeek, 86400.0 * day + 35100.0 + kLeap + 200.0), kSlot);
        EXPECT_TRUE(answer.usable);
        EXPECT_EQ(answer.channel, 5);
        EXPECT_LT(Separation(GlonassTrajectory(record, 200.0L), answer.position), 1e-3);
        EXPECT_NEAR(answer.clock, record.clockBias + record.clockDrift * 200.0, 1e-18);
        EXPECT_TRUE(Ask(Epoch(kWeek, 86400.0 * day + 35100.0 + kLeap + 14400.0), kSlot).usable);
        EXPECT_FALSE(Ask(Epoch(kWeek, 86400.0 * day + 35100.0 + kLeap + 14400.5), kSlot).usable);
    }
}

TEST_F(GlonassOrbit, ARecordWithoutADateReachesAcrossMidnight) {
    const GlonassEphemeris evening = UndatedRecord(86000.0, 5);
    GlonassEphemerides().AddGlonassEphemeris(evening);
    const Answer forward = Ask(Epoch(kWeek, 2.0 * 86400.0 + 100.0 + kLeap), kSlot);
    EXPECT_TRUE(forward.usable);
    EXPECT_LT(Separation(GlonassTrajectory(evening, 500.0L), forward.position), 1e-3);

    GlonassEphemerides().Clear();
    const GlonassEphemeris morning = UndatedRecord(100.0, 6);
    GlonassEphemerides().AddGlonassEphemeris(morning);
    const Answer back = Ask(Epoch(kWeek, 3.0 * 86400.0 - 200.0 + kLeap), kSlot);
    EXPECT_TRUE(back.usable);
    EXPECT_LT(Separation(GlonassTrajectory(morning, -300.0L), back.position), 1e-3);
}

TEST_F(GlonassOrbit, TheLeapSecondsOfARecordWithoutADateComeOffBeforeTheDayIsCut) {
    // 10 s after midnight of GPS time it is still the day before on the time scale of the record.
    const GlonassEphemeris record = UndatedRecord(86300.0, 5);
    GlonassEphemerides().AddGlonassEphemeris(record);
    const Answer answer = Ask(Epoch(kWeek, 2.0 * 86400.0 + 10.0), kSlot);
    EXPECT_TRUE(answer.usable);
    EXPECT_LT(Separation(GlonassTrajectory(record, 92.0L), answer.position), 1e-3);
}

// --- the store

TEST(GlonassRecords, TheSameSlotAndDateOverwriteInPlace) {
    GlonassStore store;
    store.AddGlonassEphemeris(MarkedRecord(kReference, 1));
    store.AddGlonassEphemeris(MarkedRecord(kReference + 1800.0, 2));
    store.AddGlonassEphemeris(MarkedRecord(kReference, 3));
    ASSERT_EQ(store.records().size(), 2U);
    EXPECT_EQ(store.records()[0].channel, 3);
    EXPECT_EQ(store.records()[1].channel, 2);
    GlonassEphemeris other = MarkedRecord(kReference, 4);
    other.slot = kSlot + 1;
    store.AddGlonassEphemeris(other);
    EXPECT_EQ(store.records().size(), 3U);
    // A date of the same time of day is another record.
    GlonassEphemeris nextDay = MarkedRecord(kReference + 86400.0, 5);
    store.AddGlonassEphemeris(nextDay);
    EXPECT_EQ(store.records().size(), 4U);
    store.Clear();
    EXPECT_TRUE(store.records().empty());
}

TEST(GlonassRecords, WithoutADateTheSameSlotAndTimeOfDayOverwriteInPlace) {
    GlonassStore store;
    store.AddGlonassEphemeris(UndatedRecord(900.0, 1));
    store.AddGlonassEphemeris(UndatedRecord(2700.0, 2));
    store.AddGlonassEphemeris(UndatedRecord(900.0, 3));
    ASSERT_EQ(store.records().size(), 2U);
    EXPECT_EQ(store.records()[0].channel, 3);
    GlonassEphemeris other = UndatedRecord(900.0, 4);
    other.slot = kSlot + 1;
    store.AddGlonassEphemeris(other);
    EXPECT_EQ(store.records().size(), 3U);
}

TEST(GlonassRecords, TheStoredRecordDecidesByWhatItIsCompared) {
    // A stored record without a date compares its time of day, even with a record that has a date.
    GlonassStore store;
    store.AddGlonassEphemeris(UndatedRecord(900.0, 1));
    GlonassEphemeris dated = MarkedRecord(kReference, 2);
    dated.tbSeconds = 900.0;
    store.AddGlonassEphemeris(dated);
    ASSERT_EQ(store.records().size(), 1U);
    EXPECT_EQ(store.records()[0].channel, 2);
    // A stored record with a date compares dates: one without is another record.
    store.AddGlonassEphemeris(UndatedRecord(900.0, 3));
    ASSERT_EQ(store.records().size(), 2U);
    EXPECT_EQ(store.records()[1].channel, 3);
}

TEST(GlonassRecords, TheFirstRecordOfASlot) {
    GlonassStore store;
    EXPECT_EQ(store.FirstOfSlot(kSlot), nullptr);
    GlonassEphemeris other = MarkedRecord(kReference, 9);
    other.slot = kSlot + 1;
    store.AddGlonassEphemeris(other);
    EXPECT_EQ(store.FirstOfSlot(kSlot), nullptr);
    store.AddGlonassEphemeris(MarkedRecord(kReference + 1800.0, 2));
    store.AddGlonassEphemeris(MarkedRecord(kReference, 1));
    ASSERT_NE(store.FirstOfSlot(kSlot), nullptr);
    EXPECT_EQ(store.FirstOfSlot(kSlot)->channel, 2);
}

TEST(GlonassChannels, OfTheSlots) {
    const std::array<int, 24> channels = {1,  -4, 5, 6,  1,  -4, 5, 6, -2, -7, 0, -1,
                                          -2, -7, 0, -1, -6, -3, 3, 2, 4,  -3, 3, 2};
    for (int slot = 1; slot <= 24; ++slot) {
        EXPECT_EQ(GlonassChannelOfSlot(slot), channels[static_cast<std::size_t>(slot - 1)]) << slot;
    }
}

TEST(GlonassChannels, OutsideTheTableAreZero) {
    for (const int slot : {-1, 0, 25, 26, 32, 1000}) {
        EXPECT_EQ(GlonassChannelOfSlot(slot), 0) << slot;
    }
}

}  // namespace
}  // namespace vornel
