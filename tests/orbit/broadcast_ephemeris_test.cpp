// Broadcast ephemerides of GPS, BDS and Galileo: the choice of a record, and positions and clocks
// against the algorithms of the interface control documents in extended precision.
#include "orbit/broadcast_ephemeris.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "foundation/satellite.h"
#include "orbit/orbit_stores.h"
#include "orbit/reference_orbits.h"

namespace vornel {
namespace {

using reference::KeplerState;
using reference::Real;
using reference::SampleKeplerRecord;
using reference::SatelliteState;
using reference::Separation;

constexpr int kWeek = 2204;
constexpr double kToe = 288000.0;        // s of the week, a Wednesday 08:00
constexpr double kGarbage = 123.0;       // stands in results before a call
constexpr double kPositionBound = 1e-5;  // m, room for the double arithmetic of the engine
constexpr double kBdsBehindGps = 14.0;   // s
constexpr double kSecondsOfWeek = 604800.0;

struct Answer {
    bool usable = false;
    XYZPosition position{kGarbage, kGarbage, kGarbage};
    double clock = kGarbage;
};

using Routine = bool (*)(Epoch, int, XYZPosition&, double&);

Answer Ask(Routine routine, const Epoch& time, int satId) {
    Answer answer;
    answer.usable = routine(time, satId, answer.position, answer.clock);
    return answer;
}

void ExpectNothing(const Answer& answer) {
    EXPECT_FALSE(answer.usable);
    EXPECT_EQ(answer.position.X, 0.0);
    EXPECT_EQ(answer.position.Y, 0.0);
    EXPECT_EQ(answer.position.Z, 0.0);
    EXPECT_EQ(answer.clock, 0.0);
}

void ExpectState(const Answer& answer, const SatelliteState& truth) {
    EXPECT_TRUE(answer.usable);
    EXPECT_LT(Separation(truth.position, answer.position), kPositionBound);
    EXPECT_NEAR(answer.clock, static_cast<double>(truth.clock), 1e-17);
}

// A record whose af0 tells which one was chosen, in a circular orbit, where no relativity enters.
KeplerEphemeris MarkedRecord(int satId, double toe, double af0) {
    KeplerEphemeris record = SampleKeplerRecord(satId, kWeek, toe);
    record.e = 0.0;
    record.af0 = af0;
    record.af1 = 0.0;
    record.af2 = 0.0;
    return record;
}

class KeplerOrbit : public testing_support::EmptyOrbitStores {};

// --- positions and clocks

TEST_F(KeplerOrbit, GpsAgreesWithTheInterfaceDocument) {
    KeplerEphemeris record = SampleKeplerRecord(7, kWeek, kToe);
    record.tocSeconds = kToe - 16.0;
    GpsStore().AddEphemeris(record);
    for (const double after :
         {-14400.0, -7200.0, -900.5, -0.25, 0.0, 30.0, 3600.0, 7199.75, 14400.0}) {
        SCOPED_TRACE(after);
        ExpectState(Ask(GetGpsPosition, Epoch(kWeek, kToe + after), 7),
                    KeplerState(record, reference::kGpsConstants, after, after + 16.0L, false));
    }
}

TEST_F(KeplerOrbit, GalileoAgreesWithTheInterfaceDocument) {
    KeplerEphemeris record = SampleKeplerRecord(11, kWeek, kToe);
    record.sqrtA = 5440.612319946;
    record.e = 2.27e-04;
    GalileoStore().AddEphemeris(record);
    for (const double after : {-14400.0, -600.0, 0.0, 1234.5, 14400.0}) {
        SCOPED_TRACE(after);
        ExpectState(Ask(GetGalPosition, Epoch(kWeek, kToe + after), 11),
                    KeplerState(record, reference::kGalileoConstants, after, after, false));
    }
}

TEST_F(KeplerOrbit, BdsAgreesWithTheInterfaceDocumentFourteenSecondsBehindGpsTime) {
    KeplerEphemeris record = SampleKeplerRecord(14, kWeek, kToe);
    record.sqrtA = 5282.610231400;
    BdsStore().AddEphemeris(record);
    for (const double after : {-14400.0, -600.0, 0.0, 1234.5, 14400.0}) {
        SCOPED_TRACE(after);
        ExpectState(Ask(GetBdsPosition, Epoch(kWeek, kToe + after + kBdsBehindGps), 14),
                    KeplerState(record, reference::kBdsConstants, after, after, false));
    }
}

TEST_F(KeplerOrbit, TheSystemsDifferInGravityAndEarthRate) {
    const KeplerEphemeris record = SampleKeplerRecord(14, kWeek, kToe);
    GpsStore().AddEphemeris(record);
    BdsStore().AddEphemeris(record);
    GalileoStore().AddEphemeris(record);
    // At the same time on each system's own scale.
    const Answer gps = Ask(GetGpsPosition, Epoch(kWeek, kToe + 7200.0), 14);
    const Answer bds = Ask(GetBdsPosition, Epoch(kWeek, kToe + 7200.0 + kBdsBehindGps), 14);
    const Answer galileo = Ask(GetGalPosition, Epoch(kWeek, kToe + 7200.0), 14);
    // Half the relative difference of gravity, 5.5e-10, on the 28,000 km of two hours: some
    // millimetres.
    EXPECT_GT(Distance(gps.position, galileo.position), 1e-3);
    // 1.467e-12 rad/s over the seconds of the week.
    const double turned = 1.467e-12 * (kToe + 7200.0) * std::hypot(bds.position.X, bds.position.Y);
    EXPECT_NEAR(Distance(bds.position, galileo.position), turned, 1e-3 * turned);
}

TEST_F(KeplerOrbit, BdsIdsBelowSixTakeTheGeostationaryRotation) {
    for (const int satId : {1, 2, 3, 4, 5, 6}) {
        SCOPED_TRACE(satId);
        KeplerEphemeris record = SampleKeplerRecord(satId, kWeek, kToe);
        record.sqrtA = 6493.426;
        record.e = 7.1e-04;
        record.i0 = 0.0871;
        BdsStore().AddEphemeris(record);
        for (const double after : {-14400.0, -1800.0, 0.0, 1800.0, 14400.0}) {
            SCOPED_TRACE(after);
            const bool geostationary = satId < 6;
            ExpectState(Ask(GetBdsPosition, Epoch(kWeek, kToe + after + kBdsBehindGps), satId),
                        KeplerState(record, reference::kBdsConstants, after, after, geostationary));
            // The other path is elsewhere, by far.
            EXPECT_GT(
                Separation(
                    KeplerState(record, reference::kBdsConstants, after, after, !geostationary)
                        .position,
                    Ask(GetBdsPosition, Epoch(kWeek, kToe + after + kBdsBehindGps), satId)
                        .position),
                1e5);
        }
    }
}

TEST_F(KeplerOrbit, LowIdsOfGpsAndGalileoTakeTheOrdinaryPath) {
    for (const int satId : {1, 2, 3, 4, 5}) {
        SCOPED_TRACE(satId);
        const KeplerEphemeris record = SampleKeplerRecord(satId, kWeek, kToe);
        GpsStore().AddEphemeris(record);
        GalileoStore().AddEphemeris(record);
        const Epoch time(kWeek, kToe + 3600.0);
        ExpectState(Ask(GetGpsPosition, time, satId),
                    KeplerState(record, reference::kGpsConstants, 3600.0L, 3600.0L, false));
        ExpectState(Ask(GetGalPosition, time, satId),
                    KeplerState(record, reference::kGalileoConstants, 3600.0L, 3600.0L, false));
    }
}

TEST_F(KeplerOrbit, AGeostationarySatelliteStandsStillOverTheEquator) {
    // A circular orbit of one sidereal day in the plane of the equator, which stands five degrees
    // against the plane that the elements of these satellites refer to.
    KeplerEphemeris record;
    record.satId = 3;
    record.toeEpoch = Epoch(kWeek, kToe);
    record.toe = kToe;
    record.tocSeconds = kToe;
    record.sqrtA = std::sqrt(std::cbrt(398600441800000.0 / (7.292115e-05 * 7.292115e-05)));
    record.i0 = 5.0 * static_cast<double>(reference::kPi) / 180.0;
    record.omega0 = static_cast<double>(reference::kPi) + 7.292115e-05 * kToe;
    BdsStore().AddEphemeris(record);
    const Answer atToe = Ask(GetBdsPosition, Epoch(kWeek, kToe + kBdsBehindGps), 3);
    EXPECT_TRUE(atToe.usable);
    EXPECT_NEAR(atToe.position.Z, 0.0, 1e-5);
    EXPECT_NEAR(std::hypot(atToe.position.X, atToe.position.Y), 42164170.0, 100.0);
    for (const double after : {-14400.0, -3600.0, 5400.0, 14400.0}) {
        const Answer later = Ask(GetBdsPosition, Epoch(kWeek, kToe + after + kBdsBehindGps), 3);
        EXPECT_LT(Distance(atToe.position, later.position), 1e-4) << after;
    }
}

TEST_F(KeplerOrbit, AnEccentricOrbitSatisfiesKeplersEquation) {
    for (const double e : {1e-4, 0.02, 0.1, 0.3, 0.5}) {
        for (const double m0 : {-6.9, -3.1, -1.0, 0.0, 1e-3, 0.7, 3.141592653589793, 5.0, 6.9}) {
            SCOPED_TRACE(testing::Message() << "e " << e << " m0 " << m0);
            GalileoStore().Clear();
            KeplerEphemeris record;
            record.satId = 1;
            record.toeEpoch = Epoch(kWeek, 0.0);
            record.sqrtA = 5153.0;
            record.e = e;
            record.m0 = m0;
            GalileoStore().AddEphemeris(record);
            const Answer answer = Ask(GetGalPosition, Epoch(kWeek, 0.0), 1);
            ASSERT_TRUE(answer.usable);
            // Node, perigee and inclination are zero: X and Y are those of the orbital plane.
            const Real a = 5153.0L * 5153.0L;
            const Real cosine = answer.position.X / a + e;
            const Real sine = answer.position.Y / (a * std::sqrt(1.0L - static_cast<Real>(e) * e));
            EXPECT_NEAR(static_cast<double>(cosine * cosine + sine * sine), 1.0, 1e-13);
            const Real anomaly = std::atan2(sine, cosine);
            const Real residual = std::remainder(anomaly - e * sine - m0, 2.0L * reference::kPi);
            EXPECT_NEAR(static_cast<double>(residual), 0.0, 1e-12);
            EXPECT_EQ(answer.position.Z, 0.0);
        }
    }
}

TEST_F(KeplerOrbit, TheClockCarriesTheRelativityTermOfTheInterfaceDocument) {
    // F e sqrt(A) sin E, largest at E = pi/2. F in s per root of a metre: IS-GPS-200, and the
    // Galileo and BDS documents with their gravity.
    const double published = -4.442807633e-10;
    const double publishedElsewhere = -4.442807309e-10;
    const double e = 0.02;
    KeplerEphemeris record;
    record.satId = 1;
    record.toeEpoch = Epoch(kWeek, 0.0);
    record.sqrtA = 5153.0;
    record.e = e;
    record.m0 = static_cast<double>(reference::kPi / 2.0L) - e;
    GpsStore().AddEphemeris(record);
    BdsStore().AddEphemeris(record);  // geostationary
    GalileoStore().AddEphemeris(record);
    const double scale = e * 5153.0;
    EXPECT_NEAR(Ask(GetGpsPosition, Epoch(kWeek, 0.0), 1).clock / scale, published, 1e-18);
    EXPECT_NEAR(Ask(GetBdsPosition, Epoch(kWeek, kBdsBehindGps), 1).clock / scale,
                publishedElsewhere, 1e-18);
    EXPECT_NEAR(Ask(GetGalPosition, Epoch(kWeek, 0.0), 1).clock / scale, publishedElsewhere, 1e-18);
}

TEST_F(KeplerOrbit, GroupDelaysAndBookkeepingFieldsDoNotEnter) {
    const KeplerEphemeris plain = SampleKeplerRecord(2, kWeek, kToe);
    KeplerEphemeris loaded = plain;
    loaded.tgd = 1.1e-08;
    loaded.tgd2 = -2.2e-08;
    loaded.iode = 77;
    loaded.iodc = 589.0;
    loaded.l2Codes = 1;
    loaded.l2PFlag = 1;
    loaded.accuracy = 2.4;
    loaded.transmitTime = 1.0;
    loaded.fitInterval = 4;
    loaded.tocWeek = 5;
    loaded.toeWeek = 6;
    const Epoch time(kWeek, kToe + 1800.0);
    for (int system = 0; system < 3; ++system) {
        KeplerStore& store = system == 0 ? GpsStore() : system == 1 ? BdsStore() : GalileoStore();
        const Routine routine = system == 0   ? GetGpsPosition
                                : system == 1 ? GetBdsPosition
                                              : GetGalPosition;
        store.AddEphemeris(plain);
        const Answer before = Ask(routine, time, 2);
        store.AddEphemeris(loaded);
        const Answer after = Ask(routine, time, 2);
        EXPECT_TRUE(before.usable);
        EXPECT_EQ(before.clock, after.clock);
        EXPECT_EQ(Distance(before.position, after.position), 0.0);
    }
}

TEST_F(KeplerOrbit, TheNodeUsesTheToeFieldAndTheOrbitTimeTheReferenceEpoch) {
    KeplerEphemeris record = SampleKeplerRecord(9, kWeek, kToe);
    record.toe = 1000.0;
    GpsStore().AddEphemeris(record);
    ExpectState(Ask(GetGpsPosition, Epoch(kWeek, kToe + 500.0), 9),
                KeplerState(record, reference::kGpsConstants, 500.0L, 500.0L, false));
}

TEST_F(KeplerOrbit, AnElementThatIsNotANumberEndsTheIteration) {
    KeplerEphemeris record = SampleKeplerRecord(20, kWeek, kToe);
    record.m0 = std::numeric_limits<double>::quiet_NaN();
    GpsStore().AddEphemeris(record);
    BdsStore().AddEphemeris(record);
    GalileoStore().AddEphemeris(record);
    EXPECT_FALSE(Ask(GetGpsPosition, Epoch(kWeek, kToe), 20).usable);  // no radius to check
    const Answer bds = Ask(GetBdsPosition, Epoch(kWeek, kToe), 20);
    EXPECT_TRUE(bds.usable);
    EXPECT_TRUE(std::isnan(bds.position.X));
    EXPECT_TRUE(Ask(GetGalPosition, Epoch(kWeek, kToe), 20).usable);
}

// --- folding at the bounds of the week

TEST_F(KeplerOrbit, TheOrbitRunsOnAcrossTheStartOfAWeek) {
    const double toe = kSecondsOfWeek - 800.0;
    KeplerEphemeris record = SampleKeplerRecord(4, kWeek, toe);
    GpsStore().AddEphemeris(record);
    BdsStore().AddEphemeris(record);
    GalileoStore().AddEphemeris(record);
    const Epoch time(kWeek + 1, 100.0);  // 900 s after toe
    ExpectState(Ask(GetGpsPosition, time, 4),
                KeplerState(record, reference::kGpsConstants, 900.0L, 900.0L, false));
    ExpectState(Ask(GetGalPosition, time, 4),
                KeplerState(record, reference::kGalileoConstants, 900.0L, 900.0L, false));
    ExpectState(Ask(GetBdsPosition, time, 4),
                KeplerState(record, reference::kBdsConstants, 886.0L, 886.0L, true));
}

TEST_F(KeplerOrbit, TheOrbitRunsBackAcrossTheStartOfAWeek) {
    KeplerEphemeris record = SampleKeplerRecord(14, kWeek, 0.0);
    GpsStore().AddEphemeris(record);
    BdsStore().AddEphemeris(record);
    ExpectState(Ask(GetGpsPosition, Epoch(kWeek - 1, kSecondsOfWeek - 600.0), 14),
                KeplerState(record, reference::kGpsConstants, -600.0L, -600.0L, false));
    // Five seconds into the GPS week the BDS time is still of the week before.
    ExpectState(Ask(GetBdsPosition, Epoch(kWeek, 5.0), 14),
                KeplerState(record, reference::kBdsConstants, -9.0L, -9.0L, false));
}

// The clock of a record near `secondsOfWeek` with toc at `tocSeconds`, in units of af1: its dt.
double FoldedClockTime(double secondsOfWeek, double tocSeconds) {
    GpsStore().Clear();
    KeplerEphemeris record = MarkedRecord(1, secondsOfWeek, 0.0);
    record.af1 = 1e-6;
    record.tocSeconds = tocSeconds;
    GpsStore().AddEphemeris(record);
    return Ask(GetGpsPosition, Epoch(kWeek, secondsOfWeek), 1).clock / 1e-6;
}

TEST_F(KeplerOrbit, ClockTimesBeyondHalfAWeekAreFolded) {
    EXPECT_NEAR(FoldedClockTime(302401.0, 0.0), 302401.0 - kSecondsOfWeek, 1e-6);
    EXPECT_NEAR(FoldedClockTime(403000.0, 100000.0), 303000.0 - kSecondsOfWeek, 1e-6);
    EXPECT_NEAR(FoldedClockTime(0.0, 302401.0), kSecondsOfWeek - 302401.0, 1e-6);
}

TEST_F(KeplerOrbit, ClockTimesOfExactlyHalfAWeekStay) {
    EXPECT_NEAR(FoldedClockTime(302400.0, 0.0), 302400.0, 1e-6);
    EXPECT_NEAR(FoldedClockTime(0.0, 302400.0), -302400.0, 1e-6);
}

// --- the choice of a record

TEST_F(KeplerOrbit, ARecordFourHoursAwayIsUsedAndHalfASecondMoreIsNot) {
    GpsStore().AddEphemeris(SampleKeplerRecord(1, kWeek, kToe));
    GalileoStore().AddEphemeris(SampleKeplerRecord(1, kWeek, kToe));
    for (const Routine routine : {Routine{GetGpsPosition}, Routine{GetGalPosition}}) {
        EXPECT_TRUE(Ask(routine, Epoch(kWeek, kToe + 14400.0), 1).usable);
        EXPECT_TRUE(Ask(routine, Epoch(kWeek, kToe - 14400.0), 1).usable);
        ExpectNothing(Ask(routine, Epoch(kWeek, kToe + 14400.5), 1));
        ExpectNothing(Ask(routine, Epoch(kWeek, kToe - 14400.5), 1));
    }
}

TEST_F(KeplerOrbit, TheBdsLimitOfFourHoursCountsFromTheCorrectedTime) {
    BdsStore().AddEphemeris(SampleKeplerRecord(8, kWeek, kToe));
    EXPECT_TRUE(Ask(GetBdsPosition, Epoch(kWeek, kToe + 14414.0), 8).usable);
    ExpectNothing(Ask(GetBdsPosition, Epoch(kWeek, kToe + 14414.5), 8));
    EXPECT_TRUE(Ask(GetBdsPosition, Epoch(kWeek, kToe - 14386.0), 8).usable);
    ExpectNothing(Ask(GetBdsPosition, Epoch(kWeek, kToe - 14386.5), 8));
}

TEST_F(KeplerOrbit, BdsChoosesTheRecordClosestToTheCorrectedTime) {
    BdsStore().AddEphemeris(MarkedRecord(8, kToe, 1e-5));
    BdsStore().AddEphemeris(MarkedRecord(8, kToe + 21600.0, 2e-5));
    EXPECT_EQ(Ask(GetBdsPosition, Epoch(kWeek, kToe + 10813.0), 8).clock, 1e-5);
    EXPECT_EQ(Ask(GetBdsPosition, Epoch(kWeek, kToe + 10814.0), 8).clock, 1e-5);  // a tie
    EXPECT_EQ(Ask(GetBdsPosition, Epoch(kWeek, kToe + 10815.0), 8).clock, 2e-5);
}

TEST_F(KeplerOrbit, TheClosestRecordIsChosenWhateverTheOrder) {
    for (const bool ascending : {true, false}) {
        GpsStore().Clear();
        for (int hour = 0; hour < 5; ++hour) {
            const int of = ascending ? hour : 4 - hour;
            GpsStore().AddEphemeris(MarkedRecord(3, kToe + 7200.0 * of, 1e-6 * (1 + of)));
        }
        EXPECT_EQ(Ask(GetGpsPosition, Epoch(kWeek, kToe + 3599.0), 3).clock, 1e-6);
        EXPECT_EQ(Ask(GetGpsPosition, Epoch(kWeek, kToe + 3601.0), 3).clock, 1e-6 * 2);
        EXPECT_EQ(Ask(GetGpsPosition, Epoch(kWeek, kToe + 15000.0), 3).clock, 1e-6 * 3);
        EXPECT_EQ(Ask(GetGpsPosition, Epoch(kWeek, kToe + 40000.0), 3).clock, 1e-6 * 5);
    }
}

TEST_F(KeplerOrbit, OfEquallyCloseRecordsTheEarliestStoredIsChosen) {
    // Three hours are an eighth of a day: the difference keeps every digit on both sides.
    for (const bool ascending : {true, false}) {
        GpsStore().Clear();
        GpsStore().AddEphemeris(MarkedRecord(3, kToe + (ascending ? 0.0 : 21600.0), 1e-6));
        GpsStore().AddEphemeris(MarkedRecord(3, kToe + (ascending ? 21600.0 : 0.0), 2e-6));
        EXPECT_EQ(Ask(GetGpsPosition, Epoch(kWeek, kToe + 10800.0), 3).clock, 1e-6);
    }
}

TEST_F(KeplerOrbit, AnUnhealthyRecordIsSkippedEvenAlone) {
    KeplerEphemeris record = SampleKeplerRecord(1, kWeek, kToe);
    record.health = 1;
    GpsStore().AddEphemeris(record);
    BdsStore().AddEphemeris(record);
    GalileoStore().AddEphemeris(record);
    ExpectNothing(Ask(GetGpsPosition, Epoch(kWeek, kToe), 1));
    ExpectNothing(Ask(GetBdsPosition, Epoch(kWeek, kToe), 1));
    ExpectNothing(Ask(GetGalPosition, Epoch(kWeek, kToe), 1));
}

TEST_F(KeplerOrbit, AHealthyRecordFurtherAwayTakesTheUnhealthyOnesPlace) {
    KeplerEphemeris ill = MarkedRecord(1, kToe, 1e-6);
    ill.health = -1;
    GpsStore().AddEphemeris(ill);
    GpsStore().AddEphemeris(MarkedRecord(1, kToe + 7200.0, 2e-6));
    EXPECT_EQ(Ask(GetGpsPosition, Epoch(kWeek, kToe), 1).clock, 2e-6);
}

TEST_F(KeplerOrbit, SatellitesAndSystemsAreKeptApart) {
    GpsStore().AddEphemeris(MarkedRecord(5, kToe, 1e-6));
    GpsStore().AddEphemeris(MarkedRecord(6, kToe, 2e-6));
    GalileoStore().AddEphemeris(MarkedRecord(5, kToe, 3e-6));
    const Epoch time(kWeek, kToe);
    EXPECT_EQ(Ask(GetGpsPosition, time, 5).clock, 1e-6);
    EXPECT_EQ(Ask(GetGpsPosition, time, 6).clock, 2e-6);
    EXPECT_EQ(Ask(GetGalPosition, time, 5).clock, 3e-6);
    ExpectNothing(Ask(GetGalPosition, time, 6));
    ExpectNothing(Ask(GetBdsPosition, time, 5));
    ExpectNothing(Ask(GetGpsPosition, time, 4));
    ExpectNothing(Ask(GetGpsPosition, time, 0));
    EXPECT_EQ(&GpsStore(), &GpsStore());
    EXPECT_NE(&GpsStore(), &GalileoStore());
    EXPECT_NE(&BdsStore(), &GalileoStore());
}

TEST_F(KeplerOrbit, OnlyGpsChecksTheRadius) {
    struct Case {
        double radius;
        bool gpsUsable;
    };
    for (const Case& one : {Case{14999900.0, false}, Case{15000100.0, true}, Case{39999900.0, true},
                            Case{40000100.0, false}}) {
        SCOPED_TRACE(one.radius);
        testing_support::ClearOrbitStores();
        KeplerEphemeris record = SampleKeplerRecord(30, kWeek, kToe);
        record.e = 0.0;
        record.crs = 0.0;
        record.crc = 0.0;
        record.sqrtA = std::sqrt(one.radius);
        GpsStore().AddEphemeris(record);
        BdsStore().AddEphemeris(record);
        GalileoStore().AddEphemeris(record);
        const Epoch time(kWeek, kToe);
        EXPECT_EQ(Ask(GetGpsPosition, time, 30).usable, one.gpsUsable);
        EXPECT_TRUE(Ask(GetBdsPosition, time, 30).usable);
        EXPECT_TRUE(Ask(GetGalPosition, time, 30).usable);
    }
}

// --- the store

TEST(KeplerRecords, TheSameSatelliteAndReferenceTimeOverwriteInPlace) {
    KeplerStore store;
    store.AddEphemeris(MarkedRecord(3, kToe + 21600.0, 1.0));
    store.AddEphemeris(MarkedRecord(3, kToe, 2.0));
    store.AddEphemeris(MarkedRecord(4, kToe, 3.0));
    store.AddEphemeris(MarkedRecord(3, kToe + 21600.0, 4.0));
    ASSERT_EQ(store.records().size(), 3U);
    EXPECT_EQ(store.records()[0].af0, 4.0);
    EXPECT_EQ(store.records()[1].af0, 2.0);
    EXPECT_EQ(store.records()[2].af0, 3.0);
    // In its old place the new record still wins the tie.
    const KeplerEphemeris* chosen = store.Select(Epoch(kWeek, kToe + 10800.0), 3, 604800.0);
    ASSERT_NE(chosen, nullptr);
    EXPECT_EQ(chosen->af0, 4.0);
}

TEST(KeplerRecords, AnIllRecordOverwritesAHealthyOne) {
    KeplerStore store;
    store.AddEphemeris(MarkedRecord(3, kToe, 1.0));
    KeplerEphemeris ill = MarkedRecord(3, kToe, 2.0);
    ill.health = 63;
    store.AddEphemeris(ill);
    ASSERT_EQ(store.records().size(), 1U);
    EXPECT_EQ(store.Select(Epoch(kWeek, kToe), 3, 604800.0), nullptr);
}

TEST(KeplerRecords, AReferenceTimeThatDiffersAtAllIsAnotherRecord) {
    KeplerStore store;
    store.AddEphemeris(MarkedRecord(3, kToe, 1.0));
    store.AddEphemeris(MarkedRecord(3, kToe + 0.5, 2.0));
    KeplerEphemeris weekLater = MarkedRecord(3, kToe, 3.0);
    weekLater.toeEpoch = Epoch(kWeek + 1, kToe);
    store.AddEphemeris(weekLater);
    EXPECT_EQ(store.records().size(), 3U);
    store.Clear();
    EXPECT_TRUE(store.records().empty());
}

TEST(KeplerRecords, ARecordMustBeStrictlyCloserThanTheStartingBound) {
    KeplerStore store;
    store.AddEphemeris(MarkedRecord(3, kToe, 1.0));
    EXPECT_EQ(store.Select(Epoch(kWeek, kToe + 100.0), 3, 100.0), nullptr);
    EXPECT_NE(store.Select(Epoch(kWeek, kToe + 99.5), 3, 100.0), nullptr);
    EXPECT_EQ(store.Select(Epoch(kWeek, kToe + 14400.5), 3, 1e10), nullptr);
    EXPECT_NE(store.Select(Epoch(kWeek, kToe + 14400.0), 3, 1e10), nullptr);
    EXPECT_EQ(store.Select(Epoch(kWeek + 1, kToe), 3, 1e10), nullptr);
}

// The choice by looking at every record, as Select is documented.
const KeplerEphemeris* ClosestOfAll(const KeplerStore& store, const Epoch& time, int satId) {
    const KeplerEphemeris* best = nullptr;
    double bestDifference = 604800.0;
    for (const KeplerEphemeris& record : store.records()) {
        const double difference = std::fabs(time - record.toeEpoch);
        if (record.satId == satId && record.health == 0 && difference < bestDifference) {
            bestDifference = difference;
            best = &record;
        }
    }
    return bestDifference > 14400.0 ? nullptr : best;
}

TEST(KeplerRecords, TheChoiceIsTheSameInWhateverOrderTimesAndRecordsCome) {
    std::mt19937 random(7);
    const auto upTo = [&random](int bound) {
        return static_cast<int>(random() % static_cast<unsigned>(bound));
    };
    int chosen = 0;
    for (int store = 0; store < 40; ++store) {
        KeplerStore records;
        for (int step = 0; step < 200; ++step) {
            // Reference times an hour, a second, a millisecond and less apart, some of them ill.
            if (step < 4 || upTo(10) == 0) {
                KeplerEphemeris record = MarkedRecord(
                    1 + upTo(2), kToe + 3600.0 * upTo(8) + upTo(3) + 0.0007 * upTo(4), step);
                record.health = upTo(5) == 0 ? 1 : 0;
                records.AddEphemeris(record);
            }
            // Many times lie next to each other, others at the middle of two records.
            const double seconds =
                upTo(3) == 0 ? 1800.0 * upTo(20) + 0.0005 * upTo(5) : 3600.0 * upTo(10) + upTo(40);
            const Epoch time(kWeek, kToe + seconds);
            const int satId = 1 + upTo(2);
            const KeplerEphemeris* const expected = ClosestOfAll(records, time, satId);
            EXPECT_EQ(records.Select(time, satId, 604800.0), expected);
            chosen += expected != nullptr ? 1 : 0;
        }
    }
    EXPECT_GT(chosen, 4000);
}

TEST(KeplerRecords, ARecordThatComesLaterIsChosenAtOnce) {
    KeplerStore store;
    store.AddEphemeris(MarkedRecord(3, kToe, 1.0));
    const Epoch time(kWeek, kToe + 3000.0);
    ASSERT_EQ(store.Select(time, 3, 604800.0)->af0, 1.0);
    store.AddEphemeris(MarkedRecord(3, kToe + 3600.0, 2.0));
    EXPECT_EQ(store.Select(time, 3, 604800.0)->af0, 2.0);
    KeplerEphemeris ill = MarkedRecord(3, kToe + 3600.0, 2.0);
    ill.health = 1;
    store.AddEphemeris(ill);
    EXPECT_EQ(store.Select(time, 3, 604800.0)->af0, 1.0);
    store.Clear();
    EXPECT_EQ(store.Select(time, 3, 604800.0), nullptr);
}

TEST(KeplerRecords, AllFieldsAreKept) {
    KeplerStore store;
    KeplerEphemeris record = SampleKeplerRecord(21, kWeek, kToe);
    record.iode = 45;
    record.l2Codes = 1;
    record.l2PFlag = 2;
    record.accuracy = 2.8;
    record.tgd = -1.1e-8;
    record.tgd2 = 3.3e-9;
    record.iodc = 301.0;
    record.transmitTime = 287999.0;
    record.fitInterval = 4;
    store.AddEphemeris(record);
    const KeplerEphemeris* kept = store.Select(Epoch(kWeek, kToe), 21, 604800.0);
    ASSERT_NE(kept, nullptr);
    EXPECT_TRUE(kept->toeEpoch == record.toeEpoch);
    EXPECT_EQ(kept->iode, 45);
    EXPECT_EQ(kept->l2Codes, 1);
    EXPECT_EQ(kept->l2PFlag, 2);
    EXPECT_EQ(kept->accuracy, 2.8);
    EXPECT_EQ(kept->tgd, -1.1e-8);
    EXPECT_EQ(kept->tgd2, 3.3e-9);
    EXPECT_EQ(kept->iodc, 301.0);
    EXPECT_EQ(kept->transmitTime, 287999.0);
    EXPECT_EQ(kept->fitInterval, 4);
    EXPECT_EQ(kept->sqrtA, record.sqrtA);
    EXPECT_EQ(kept->cis, record.cis);
    EXPECT_EQ(kept->idot, record.idot);
}

}  // namespace
}  // namespace vornel
