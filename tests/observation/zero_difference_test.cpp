// Satellite positions, clocks and directions at one receiver, against an independent solution of
// the way of the signal, and the sorting into the lists of usable satellites.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "foundation/satellite.h"
#include "observation/observation_records.h"
#include "observation/reference_geometry.h"
#include "orbit/orbit_stores.h"
#include "orbit/reference_orbits.h"

namespace vornel {
namespace {

using reference::Direction;
using reference::DirectionOf;
using reference::kLightSpeed;
using reference::Radians;
using reference::Real;
using reference::SampleGlonassRecord;
using reference::SampleKeplerRecord;
using reference::SatelliteState;
using reference::Separation;
using reference::Station;
using reference::Vector;

constexpr int kWeek = 2204;
constexpr double kStart = 288000.0;  // s of the week; times below count from here
constexpr double kEarthRate = 7.2921151467e-05;
constexpr double kEarthRateShort = 7.292115e-05;
constexpr double kNoMask = -4.0;  // rad, below every elevation
const Station kStation{Radians(49.14L), Radians(12.88L), 666.0L};

// A satellite as the tests know it: state by GPS seconds after kStart, in the frame of its
// ephemeris.
struct KnownSatellite {
    std::string name;
    int number;
    std::function<SatelliteState(Real)> state;
    Vector frameShift;  // added in the frame of reception
    double earthRate;
};

KnownSatellite KnownKepler(const std::string& name, int system, int id,
                           const reference::KeplerConstants& constants, double behindGps,
                           double earthRate) {
    KeplerEphemeris record = SampleKeplerRecord(id, kWeek, kStart);
    const bool geostationary = system == kBds && id < 6;
    if (geostationary) {
        record.sqrtA = 6493.426;
        record.i0 = 0.0871;
    }
    KeplerStore& store = system == kGps ? GpsStore() : system == kBds ? BdsStore() : GalileoStore();
    store.AddEphemeris(record);
    return {name, MakeSatNumber(system, id),
            [record, constants, behindGps, geostationary](Real time) {
                return KeplerState(record, constants, time - behindGps, time - behindGps,
                                   geostationary);
            },
            Vector{}, earthRate};
}

KnownSatellite KnownGlonass(int slot) {
    const GlonassEphemeris record = SampleGlonassRecord(slot, kWeek, kStart - 18.0);
    GlonassEphemerides().AddGlonassEphemeris(record);
    return {"GLONASS", MakeSatNumber(kGlonass, slot),
            [record](Real time) {
                return SatelliteState{reference::GlonassTrajectory(record, time),
                                      record.clockBias + record.clockDrift * time};
            },
            Vector{-0.36L, 0.08L, 0.18L}, kEarthRateShort};
}

std::vector<KnownSatellite> KnownBroadcastSatellites() {
    return {
        KnownKepler("GPS", kGps, 7, reference::kGpsConstants, 0.0, kEarthRate),
        KnownKepler("BDS", kBds, 14, reference::kBdsConstants, 14.0, kEarthRateShort),
        KnownKepler("BDS geostationary", kBds, 3, reference::kBdsConstants, 14.0, kEarthRateShort),
        KnownKepler("Galileo", kGalileo, 11, reference::kGalileoConstants, 0.0, kEarthRate),
        KnownGlonass(3)};
}

// What a receiver measures and what is behind it.
struct Reception {
    Real code;         // m
    Vector satellite;  // at transmission, in the frame of reception, m
    Real range;        // m
    Real clock;        // s, of the satellite
    Real sentAt;       // s after kStart
};

// The way of a signal that arrives when a clock `receiverClock` ahead of GPS time shows `tag`.
Reception Receive(const KnownSatellite& satellite, const Station& station, Real tag,
                  Real receiverClock) {
    const Real arrival = tag - receiverClock;
    Reception reception{};
    Real travel = 0.07L;
    SatelliteState state;
    for (int round = 0; round < 20; ++round) {
        state = satellite.state(arrival - travel);
        reception.satellite = reference::TurnAxesZ(satellite.earthRate * travel, state.position) +
                              satellite.frameShift;
        reception.range = Norm(reception.satellite - station.Cartesian());
        travel = reception.range / kLightSpeed;
    }
    reception.clock = state.clock;
    reception.sentAt = arrival - travel;
    reception.code = reception.range + kLightSpeed * (receiverClock - reception.clock);
    return reception;
}

class ZeroDifference : public testing_support::EmptyOrbitStores {
  protected:
    ZDObsData record_{0, 1, 1, 1, 1, 1};
    int dualFlag_ = 0;

    // Puts an observation into the record as the input does, codes and phases on both signals.
    void Observe(int number, double code, double code2 = 1.0, double phase1 = 1.0,
                 double phase2 = 1.0) {
        record_.satList.push_back(number);
        double(&codes)[2] = record_.code[number - 1];
        double(&phases)[2] = record_.phase[number - 1];
        codes[0] = code;
        codes[1] = code2;
        phases[0] = phase1;
        phases[1] = phase2;
    }
    void SetTime(double tag) { record_.epoch = Epoch(kWeek, kStart + tag); }
    void Correct(double mask = kNoMask) { record_.Correct(kStation.Position(), mask, dualFlag_); }
    void UsePreciseOrbits() { record_.ephemerisSource = 1; }

    XYZPosition SatellitePosition(int number) const {
        return XYZPosition(record_.satPos[number - 1]);
    }
    void ExpectNothingStored(int number) const {
        for (int axis = 0; axis < 3; ++axis) {
            EXPECT_EQ(record_.satPos[number - 1][axis], 0.0);
        }
        EXPECT_EQ(record_.range[number - 1], 0.0);
        EXPECT_EQ(record_.satClock[number - 1], 0.0);
        EXPECT_EQ(record_.azel[number - 1][0], 0.0);
        EXPECT_EQ(record_.azel[number - 1][1], 0.0);
    }
    void ExpectInNoDerivedList() const {
        EXPECT_TRUE(record_.satListF1.empty());
        EXPECT_TRUE(record_.satListF2.empty());
        EXPECT_TRUE(record_.satListDual.empty());
        EXPECT_EQ(dualFlag_, 0);
    }
};

// A GPS satellite in a circular orbit without clock drift, so that its clock is `clock` at all
// times.
KeplerEphemeris PlainRecord(int satId, double clock = 0.0) {
    KeplerEphemeris record = SampleKeplerRecord(satId, kWeek, kStart);
    record.e = 0.0;
    record.af0 = clock;
    record.af1 = 0.0;
    record.af2 = 0.0;
    return record;
}

// --- the way of the signal

TEST_F(ZeroDifference, FindsTheGeometryOfTheSignalsWay) {
    const std::vector<KnownSatellite> satellites = KnownBroadcastSatellites();
    for (const double receiverClock : {0.0, 1e-3, -0.05, 0.4}) {
        for (const double tag : {0.0, 1830.0, -3000.25}) {
            record_ = ZDObsData(0, 1, 1, 1, 1, 1);
            std::vector<Reception> receptions;
            for (const KnownSatellite& satellite : satellites) {
                receptions.push_back(Receive(satellite, kStation, tag, receiverClock));
                Observe(satellite.number, static_cast<double>(receptions.back().code));
            }
            SetTime(tag);
            Correct();
            for (std::size_t i = 0; i < satellites.size(); ++i) {
                SCOPED_TRACE(testing::Message() << satellites[i].name << ", tag " << tag
                                                << ", receiver clock " << receiverClock);
                const int number = satellites[i].number;
                const Reception& truth = receptions[i];
                EXPECT_LT(Separation(truth.satellite, SatellitePosition(number)), 1e-3);
                EXPECT_NEAR(record_.range[number - 1], static_cast<double>(truth.range), 1e-3);
                EXPECT_NEAR(record_.satClock[number - 1], static_cast<double>(truth.clock), 1e-16);
                const Direction direction = DirectionOf(kStation, truth.satellite);
                EXPECT_NEAR(record_.azel[number - 1][0], static_cast<double>(direction.azimuth),
                            1e-9);
                EXPECT_NEAR(record_.azel[number - 1][1], static_cast<double>(direction.elevation),
                            1e-9);
                EXPECT_EQ(record_.corrA[number - 1], 0.0);
                EXPECT_EQ(record_.corrB[number - 1], 0.0);
            }
        }
    }
}

TEST_F(ZeroDifference, TheObservationsThemselvesAreNotTouched) {
    const std::vector<KnownSatellite> satellites = KnownBroadcastSatellites();
    for (const KnownSatellite& satellite : satellites) {
        Observe(satellite.number, 2.25e7, 2.26e7, -1.1e8, 9.9e7);
    }
    SetTime(0.0);
    const std::vector<int> before = record_.satList;
    Correct();
    EXPECT_EQ(record_.satList, before);
    for (const KnownSatellite& satellite : satellites) {
        EXPECT_EQ(record_.code[satellite.number - 1][0], 2.25e7);
        EXPECT_EQ(record_.code[satellite.number - 1][1], 2.26e7);
        EXPECT_EQ(record_.phase[satellite.number - 1][0], -1.1e8);
        EXPECT_EQ(record_.phase[satellite.number - 1][1], 9.9e7);
    }
}

TEST_F(ZeroDifference, TheTurnOfTheEarthIsThatOfTheWayBeforeTheTurn) {
    const std::vector<KnownSatellite> satellites = KnownBroadcastSatellites();
    const double code = 2.3e7;
    for (const KnownSatellite& satellite : satellites) {
        Observe(satellite.number, code);
    }
    SetTime(600.0);
    Correct();
    for (const KnownSatellite& satellite : satellites) {
        SCOPED_TRACE(satellite.name);
        Real sentAt = 600.0L - code / kLightSpeed;
        for (int round = 0; round < 10; ++round) {
            sentAt = 600.0L - code / kLightSpeed - satellite.state(sentAt).clock;
        }
        const Vector position = satellite.state(sentAt).position;
        const Real way = Norm(position - kStation.Cartesian());
        const Vector turned =
            reference::TurnAxesZ(satellite.earthRate * way / kLightSpeed, position) +
            satellite.frameShift;
        // A turn of the way after the turn would be 0.2 mm off.
        EXPECT_LT(Separation(turned, SatellitePosition(satellite.number)), 5e-5);
        EXPECT_NEAR(record_.range[satellite.number - 1],
                    static_cast<double>(Norm(turned - kStation.Cartesian())), 5e-5);
    }
}

TEST_F(ZeroDifference, VelocityIsTheStepOfTheLastHundredthSecondInTheFrameOfTheEphemeris) {
    const std::vector<KnownSatellite> satellites = KnownBroadcastSatellites();
    std::vector<Reception> receptions;
    for (const KnownSatellite& satellite : satellites) {
        receptions.push_back(Receive(satellite, kStation, 900.0L, 0.0L));
        Observe(satellite.number, static_cast<double>(receptions.back().code));
    }
    SetTime(900.0);
    Correct();
    for (std::size_t i = 0; i < satellites.size(); ++i) {
        SCOPED_TRACE(satellites[i].name);
        const Real sentAt = receptions[i].sentAt;
        const Vector velocity = 100.0L * (satellites[i].state(sentAt).position -
                                          satellites[i].state(sentAt - 0.01L).position);
        EXPECT_LT(Separation(velocity, XYZPosition(record_.satVel[satellites[i].number - 1])),
                  1e-3);
    }
}

TEST_F(ZeroDifference, ASecondCodeAloneStartsFromTheEpochItself) {
    const KnownSatellite gps =
        KnownKepler("GPS", kGps, 7, reference::kGpsConstants, 0.0, kEarthRate);
    Observe(gps.number, 0.0, 2.3e7);
    SetTime(600.0);
    Correct();
    const SatelliteState state = gps.state(600.0L - gps.state(600.0L).clock);
    const Vector turned = reference::TurnAxesZ(
        kEarthRate * Norm(state.position - kStation.Cartesian()) / kLightSpeed, state.position);
    EXPECT_LT(Separation(turned, SatellitePosition(gps.number)), 2e-5);
    EXPECT_NEAR(record_.satClock[gps.number - 1], static_cast<double>(state.clock), 1e-16);
    EXPECT_EQ(record_.satList, (std::vector<int>{gps.number}));
    EXPECT_TRUE(record_.satListF1.empty());
    EXPECT_TRUE(record_.satListDual.empty());
    EXPECT_EQ(record_.satListF2, (std::vector<int>{gps.number}));
    EXPECT_EQ(dualFlag_, 0);
}

TEST_F(ZeroDifference, TenPassesAreAllowedAndNoMore) {
    // A clock that runs off by a tenth shortens each change to a tenth: from c0 s to c0 1e-9 s in
    // the tenth pass, to be below 1e-8 s.
    const double code = 0.07 * kSpeedOfLight;
    for (const double firstClock : {5.0, 50.0, -5.0, -50.0}) {
        SCOPED_TRACE(firstClock);
        GpsStore().Clear();
        KeplerEphemeris record = PlainRecord(7);
        record.af1 = 0.1;
        record.af0 = firstClock + 0.1 * 0.07;  // firstClock at the first time tried
        GpsStore().AddEphemeris(record);
        record_ = ZDObsData(0, 1, 1, 1, 1, 1);
        Observe(7, code);
        SetTime(0.0);
        Correct();
        if (std::fabs(firstClock) < 10.0) {
            // t + 0.07 = -clock(t): the clock at the time found.
            const double sentAt = -(0.07 + record.af0) / 1.1;
            EXPECT_NEAR(record_.satClock[6], record.af0 + 0.1 * sentAt, 1e-8);
            EXPECT_GT(record_.range[6], 1e6);
            EXPECT_EQ(record_.satListF1, (std::vector<int>{7}));
        } else {
            ExpectNothingStored(7);
            EXPECT_TRUE(record_.satListF1.empty());
            EXPECT_EQ(record_.satList, (std::vector<int>{7}));
        }
    }
}

TEST_F(ZeroDifference, ASatelliteAtTheStationIsInTheZenith) {
    // With the station on the satellite there is no way, no turn and no horizontal part.
    GpsStore().AddEphemeris(PlainRecord(7));
    const double code = 0.0625 * kSpeedOfLight;
    SetTime(0.0);
    XYZPosition there;
    double clock = 0.0;
    ASSERT_TRUE(GetGpsPosition(record_.epoch - code / kSpeedOfLight, 7, there, clock));
    Observe(7, code);
    record_.Correct(there, 1.57, dualFlag_);
    EXPECT_EQ(record_.range[6], 0.0);
    EXPECT_EQ(record_.azel[6][0], 0.0);
    EXPECT_EQ(record_.azel[6][1], 1.5707963267948966);
    EXPECT_EQ(record_.satListF1, (std::vector<int>{7}));
}

// --- systems, sources and the turn of the earth

struct RateCase {
    const char* name;
    int system;
    int id;
    bool precise;
    double earthRate;
};

class EarthTurn : public testing_support::EmptyOrbitStores,
                  public ::testing::WithParamInterface<RateCase> {};

TEST_P(EarthTurn, HasTheRateOfTheSystem) {
    // Seen from a thousand gigametres the turn is a quarter of a radian, and the digits of its rate
    // show.
    const RateCase& one = GetParam();
    const XYZPosition farAway(1e12, 2e11, 3e11);
    const int number = MakeSatNumber(one.system, one.id);
    const double code = 0.0625 * kSpeedOfLight;
    ZDObsData record(one.precise ? 1 : 0, 1, 1, 1, 1, 1);
    Vector position;
    Vector shift;
    if (one.precise) {
        position = {1.5e7L, -1.2e7L, 1.8e7L};
        for (int i = 0; i < 12; ++i) {
            const Epoch epoch(kWeek, kStart + 900.0 * (i - 5));
            AddValue(PreciseStore(0), number, epoch, 1.5e7);
            AddValue(PreciseStore(1), number, epoch, -1.2e7);
            AddValue(PreciseStore(2), number, epoch, 1.8e7);
            AddValue(PreciseStore(3), number, epoch, 0.0);
        }
    } else if (one.system == kGlonass) {
        GlonassEphemeris ephemeris = SampleGlonassRecord(one.id, kWeek, kStart - 18.0);
        ephemeris.clockBias = 0.0;
        ephemeris.clockDrift = 0.0;
        GlonassEphemerides().AddGlonassEphemeris(ephemeris);
        position = reference::GlonassTrajectory(ephemeris, -0.0625L);
        shift = {-0.36L, 0.08L, 0.18L};
    } else {
        const KeplerEphemeris ephemeris = PlainRecord(one.id);
        const double behind = one.system == kBds ? 14.0 : 0.0;
        KeplerStore& store = one.system == kGps   ? GpsStore()
                             : one.system == kBds ? BdsStore()
                                                  : GalileoStore();
        store.AddEphemeris(ephemeris);
        position = KeplerState(ephemeris,
                               one.system == kGps   ? reference::kGpsConstants
                               : one.system == kBds ? reference::kBdsConstants
                                                    : reference::kGalileoConstants,
                               -0.0625L - behind, 0.0L, one.system == kBds && one.id < 6)
                       .position;
    }
    record.epoch = Epoch(kWeek, kStart);
    record.satList = {number};
    record.code[number - 1][0] = code;
    int dualFlag = 0;
    record.Correct(farAway, kNoMask, dualFlag);
    const Real way = Separation(position, farAway);
    const Real angle = way / kLightSpeed * one.earthRate;
    const Vector expected = reference::TurnAxesZ(angle, position) + shift;
    EXPECT_LT(Separation(expected, XYZPosition(record.satPos[number - 1])), 2e-3);
    const double otherRate = one.earthRate == kEarthRate ? kEarthRateShort : kEarthRate;
    EXPECT_GT(Separation(reference::TurnAxesZ(way / kLightSpeed * otherRate, position) + shift,
                         XYZPosition(record.satPos[number - 1])),
              0.02);
}

INSTANTIATE_TEST_SUITE_P(
    Sources, EarthTurn,
    ::testing::Values(RateCase{"GpsBroadcast", kGps, 7, false, kEarthRate},
                      RateCase{"GpsPrecise", kGps, 7, true, kEarthRate},
                      RateCase{"GlonassBroadcast", kGlonass, 3, false, kEarthRateShort},
                      RateCase{"GlonassPrecise", kGlonass, 3, true, kEarthRate},
                      RateCase{"BdsBroadcast", kBds, 14, false, kEarthRateShort},
                      RateCase{"BdsGeostationary", kBds, 2, false, kEarthRateShort},
                      RateCase{"BdsPrecise", kBds, 14, true, kEarthRateShort},
                      RateCase{"GalileoBroadcast", kGalileo, 11, false, kEarthRate},
                      RateCase{"GalileoPrecise", kGalileo, 11, true, kEarthRate}),
    [](const ::testing::TestParamInfo<RateCase>& one) { return std::string(one.param.name); });

// A smooth path of the size of an orbit, in the turning frame, and a clock.
SatelliteState SmoothPath(Real time) {
    const Real angle = 1.4e-4L * time;
    return {{2.0e7L * std::cos(angle), 1.5e7L * std::sin(angle + 0.6L),
             1.7e7L * std::cos(angle + 1.0L)},
            1.5e-5L + 2e-11L * time};
}

void TabulateSmoothPath(int number) {
    for (int i = -12; i <= 12; ++i) {
        const Real time = 900.0L * i;
        const SatelliteState state = SmoothPath(time);
        const Epoch epoch(kWeek, kStart + static_cast<double>(time));
        AddValue(PreciseStore(0), number, epoch, static_cast<double>(state.position.x));
        AddValue(PreciseStore(1), number, epoch, static_cast<double>(state.position.y));
        AddValue(PreciseStore(2), number, epoch, static_cast<double>(state.position.z));
        AddValue(PreciseStore(3), number, epoch, static_cast<double>(state.clock));
    }
}

TEST_F(ZeroDifference, PreciseOrbitsServeEverySystemWithoutAShift) {
    UsePreciseOrbits();
    SetTime(300.0);
    for (const int number : {MakeSatNumber(kGps, 7), MakeSatNumber(kGlonass, 3),
                             MakeSatNumber(kBds, 3), MakeSatNumber(kGalileo, 11)}) {
        TabulateSmoothPath(number);
        const KnownSatellite satellite{"", number, SmoothPath, Vector{}, kEarthRate};
        const Reception truth = Receive(satellite, kStation, 300.0L, 1e-4L);
        record_.satList.clear();
        Observe(number, static_cast<double>(truth.code));
        Correct();
        SCOPED_TRACE(number);
        // The table's times resolve a millimetre of the way; a shift of the frame would be 0.4 m
        // and more.
        EXPECT_LT(Separation(truth.satellite, SatellitePosition(number)), 5e-3);
        EXPECT_NEAR(record_.satClock[number - 1], static_cast<double>(truth.clock), 1e-14);
        EXPECT_EQ(record_.satListDual, (std::vector<int>{number}));
    }
}

TEST_F(ZeroDifference, AnyOtherSourceThanZeroMeansPreciseOrbits) {
    GpsStore().AddEphemeris(PlainRecord(7));
    TabulateSmoothPath(7);
    SetTime(300.0);
    Observe(7, 2.2e7);
    double positions[4] = {};
    const int sources[4] = {0, 1, 2, -1};
    for (int i = 0; i < 4; ++i) {
        record_.ephemerisSource = sources[i];
        Correct();
        positions[i] = record_.satPos[6][0];
    }
    EXPECT_GT(std::fabs(positions[0] - positions[1]), 1e5);
    EXPECT_EQ(positions[1], positions[2]);
    EXPECT_EQ(positions[1], positions[3]);
}

TEST_F(ZeroDifference, ASystemSwitchedOffGetsNoResult) {
    const std::vector<KnownSatellite> satellites = KnownBroadcastSatellites();
    for (const int off : {kGps, kGlonass, kBds, kGalileo}) {
        record_ = ZDObsData(0, off != kGps, off != kGlonass, off != kBds, off != kGalileo, 1);
        for (const KnownSatellite& satellite : satellites) {
            Observe(satellite.number, 2.3e7);
        }
        SetTime(0.0);
        Correct();
        EXPECT_EQ(record_.satList.size(), satellites.size());
        for (const KnownSatellite& satellite : satellites) {
            SCOPED_TRACE(satellite.name);
            if (SplitSatNumber(satellite.number) == off) {
                ExpectNothingStored(satellite.number);
                for (const int listed : record_.satListF1) {
                    EXPECT_NE(listed, satellite.number);
                }
            } else {
                EXPECT_GT(record_.range[satellite.number - 1], 1e6);
            }
        }
    }
}

TEST_F(ZeroDifference, ANumberThatIsNoSatellitesIsLeftOut) {
    GpsStore().AddEphemeris(PlainRecord(7));
    Observe(7, 2.2e7);
    record_.satList = {0, 7, kSatelliteCount + 1};
    SetTime(0.0);
    Correct();
    EXPECT_EQ(record_.satListF1, (std::vector<int>{7}));
    EXPECT_EQ(record_.satListF2, (std::vector<int>{7}));
    EXPECT_EQ(record_.satListDual, (std::vector<int>{7}));
}

TEST_F(ZeroDifference, ASatelliteWithoutAnOrbitStaysInTheListOfTheObserved) {
    GpsStore().AddEphemeris(PlainRecord(7));
    Observe(7, 2.2e7);
    Observe(8, 2.2e7);
    SetTime(0.0);
    Correct();
    ExpectNothingStored(8);
    EXPECT_EQ(record_.satList, (std::vector<int>{7, 8}));
    EXPECT_EQ(record_.satListF1, (std::vector<int>{7}));
    EXPECT_EQ(record_.satListF2, (std::vector<int>{7}));
    EXPECT_EQ(record_.satListDual, (std::vector<int>{7}));
}

TEST_F(ZeroDifference, ASatelliteWhoseVelocityCannotBeHadIsSkipped) {
    // Sent 5 ms inside the four hours before the record, so that 10 ms earlier is outside.
    GpsStore().AddEphemeris(PlainRecord(7));
    GalileoStore().AddEphemeris(PlainRecord(7));
    const double code = 0.0625 * kSpeedOfLight;
    const int galileo = MakeSatNumber(kGalileo, 7);
    Observe(7, code);
    Observe(galileo, code);
    SetTime(-14400.0 + 0.0625 + 0.005);
    Correct();
    ExpectNothingStored(7);
    ExpectNothingStored(galileo);
    ExpectInNoDerivedList();
    // 20 ms inside, both are to be had.
    SetTime(-14400.0 + 0.0625 + 0.020);
    Correct();
    EXPECT_EQ(record_.satListF1, (std::vector<int>{7, galileo}));
}

TEST_F(ZeroDifference, APreciseGlonassSatelliteWithoutVelocityIsSkipped) {
    // The table serves from its fifth entry on: 5 ms after it, and not 5 ms before.
    const int number = MakeSatNumber(kGlonass, 3);
    TabulateSmoothPath(number);  // from -10800 s; the fifth entry stands at -7200 s
    for (int component = 0; component < 4; ++component) {
        for (auto& value : PreciseStore(component).satellites[0].values) {
            value.second = component == 3 ? 0.0 : value.second;
        }
    }
    UsePreciseOrbits();
    Observe(number, 0.0625 * kSpeedOfLight);
    SetTime(-7200.0 + 0.0625 + 0.005);
    Correct();
    ExpectNothingStored(number);
    ExpectInNoDerivedList();
    SetTime(-7200.0 + 0.0625 + 0.020);
    Correct();
    EXPECT_EQ(record_.satListF1, (std::vector<int>{number}));
}

TEST_F(ZeroDifference, AGlonassSatelliteWithoutVelocityIsTakenForTheCentreOfTheEarth) {
    GlonassEphemeris ephemeris = SampleGlonassRecord(3, kWeek, kStart - 18.0);
    ephemeris.clockBias = 0.0;
    ephemeris.clockDrift = 0.0;
    GlonassEphemerides().AddGlonassEphemeris(ephemeris);
    const int number = MakeSatNumber(kGlonass, 3);
    Observe(number, 0.0625 * kSpeedOfLight);
    SetTime(-14400.0 + 0.0625 + 0.005);
    Correct();
    for (int axis = 0; axis < 3; ++axis) {
        EXPECT_EQ(record_.satPos[number - 1][axis], 0.0);
    }
    EXPECT_EQ(record_.satClock[number - 1], 0.0);
    EXPECT_EQ(record_.glonassChannel[2], -1);
    EXPECT_NEAR(record_.range[number - 1], static_cast<double>(Norm(kStation.Cartesian())), 1e-6);
    const Direction direction = DirectionOf(kStation, Vector{});
    EXPECT_NEAR(std::remainder(record_.azel[number - 1][0] - static_cast<double>(direction.azimuth),
                               2.0 * static_cast<double>(reference::kPi)),
                0.0, 1e-6);
    EXPECT_NEAR(record_.azel[number - 1][1], static_cast<double>(direction.elevation), 1e-9);
    EXPECT_EQ(record_.satListF1, (std::vector<int>{number}));
    EXPECT_EQ(record_.satListF2, (std::vector<int>{number}));
    EXPECT_EQ(record_.satListDual, (std::vector<int>{number}));
    EXPECT_EQ(dualFlag_, 1);
    // A mask above the horizon keeps it out.
    dualFlag_ = 0;
    Correct(0.1);
    ExpectInNoDerivedList();
}

// --- GLONASS channels

TEST_F(ZeroDifference, TheChannelOfABroadcastOrbitIsThatOfTheVelocityCall) {
    // Two records, three hours before and after: the satellite sends 5 ms nearer to the second one.
    GlonassEphemeris before = SampleGlonassRecord(3, kWeek, kStart - 10800.0);
    GlonassEphemeris after = SampleGlonassRecord(3, kWeek, kStart + 10800.0);
    for (GlonassEphemeris* record : {&before, &after}) {
        record->leapSeconds = 0;
        record->clockBias = 0.0;
        record->clockDrift = 0.0;
    }
    before.channel = 5;
    after.channel = 6;
    GlonassEphemerides().AddGlonassEphemeris(before);
    GlonassEphemerides().AddGlonassEphemeris(after);
    const int number = MakeSatNumber(kGlonass, 3);
    Observe(number, 0.0625 * kSpeedOfLight);
    SetTime(0.0625 + 0.005);
    Correct();
    EXPECT_EQ(record_.glonassChannel[2], 5);
    const Vector position = reference::GlonassTrajectory(after, -10800.0L + 0.005L);
    const Real way = Norm(position - kStation.Cartesian());
    const Vector turned = reference::TurnAxesZ(kEarthRateShort * way / kLightSpeed, position) +
                          Vector{-0.36L, 0.08L, 0.18L};
    EXPECT_LT(Separation(turned, SatellitePosition(number)), 2e-3);
    SetTime(0.0625 + 0.020);
    Correct();
    EXPECT_EQ(record_.glonassChannel[2], 6);
}

TEST_F(ZeroDifference, TheChannelOfAPreciseOrbitIsThatOfTheFirstBroadcastRecord) {
    const int number = MakeSatNumber(kGlonass, 3);
    TabulateSmoothPath(number);
    GlonassEphemeris other = SampleGlonassRecord(4, kWeek, kStart - 18.0);
    other.channel = 2;
    GlonassEphemeris first = SampleGlonassRecord(3, kWeek, kStart + 50000.0);  // however far
    first.channel = -6;
    GlonassEphemeris second = SampleGlonassRecord(3, kWeek, kStart - 18.0);
    second.channel = 4;
    for (const GlonassEphemeris& record : {other, first, second}) {
        GlonassEphemerides().AddGlonassEphemeris(record);
    }
    UsePreciseOrbits();
    Observe(number, 2.2e7);
    SetTime(0.0);
    Correct();
    EXPECT_EQ(record_.glonassChannel[2], -6);
    EXPECT_EQ(record_.glonassChannel[3], -1);  // not observed
}

TEST_F(ZeroDifference, WithoutABroadcastRecordTheChannelIsThatOfTheSlot) {
    UsePreciseOrbits();
    SetTime(0.0);
    for (const int slot : {2, 10, 24, 25}) {
        const int number = MakeSatNumber(kGlonass, slot);
        TabulateSmoothPath(number);
        Observe(number, 2.2e7);
    }
    Correct();
    EXPECT_EQ(record_.glonassChannel[1], -4);
    EXPECT_EQ(record_.glonassChannel[9], -7);
    EXPECT_EQ(record_.glonassChannel[23], 2);
    EXPECT_EQ(record_.glonassChannel[24], 0);
    EXPECT_EQ(record_.glonassChannel[0], -1);
}

// --- the lists

TEST_F(ZeroDifference, AnElevationEqualToTheMaskIsKept) {
    GpsStore().AddEphemeris(PlainRecord(7));
    Observe(7, 2.2e7);
    SetTime(0.0);
    Correct();
    const double elevation = record_.azel[6][1];
    Correct(elevation);
    EXPECT_EQ(record_.satListF1, (std::vector<int>{7}));
    EXPECT_EQ(record_.satListF2, (std::vector<int>{7}));
    EXPECT_EQ(record_.satListDual, (std::vector<int>{7}));
    dualFlag_ = 0;
    Correct(std::nextafter(elevation, 2.0));
    ExpectInNoDerivedList();
    // Its place is known all the same.
    EXPECT_EQ(record_.satList, (std::vector<int>{7}));
    EXPECT_GT(record_.range[6], 1e6);
    EXPECT_EQ(record_.azel[6][1], elevation);
}

TEST_F(ZeroDifference, UsableMeansACodeAndAPhaseOnTheSignal) {
    struct Case {
        double code1, code2, phase1, phase2;
        bool first, second, dual;
    };
    const std::vector<Case> cases = {
        {2e7, 2e7, 1e8, 1e8, true, true, true},
        {2e7, 0.0, 1e8, 0.0, true, false, false},
        {2e7, 0.0, 1e8, 1e8, true, false, false},
        {2e7, 2e7, 1e8, 0.0, true, false, false},
        {2e7, 2e7, 0.0, 1e8, false, true, false},
        {0.0, 2e7, 1e8, 1e8, false, true, false},
        {0.0, 2e7, 0.0, 1e8, false, true, false},
        {2e7, 2e7, 0.0, 0.0, false, false, false},
        {2e7, 0.0, 0.0, 0.0, false, false, false},
        {1e-9, 1e-9, 1e-9, 1e-9, true, true, true},  // nothing but 0.0 is missing
        {2e7, 2e7, -1e8, -1e8, true, true, true},    // a phase may be negative
        {-2e7, 2e7, 1e8, 1e8, true, true, true},  // and a code, when the other listed the satellite
    };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        SCOPED_TRACE(i);
        const Case& one = cases[i];
        GpsStore().Clear();
        GpsStore().AddEphemeris(PlainRecord(7));
        record_ = ZDObsData(0, 1, 1, 1, 1, 1);
        dualFlag_ = 0;
        Observe(7, one.code1, one.code2, one.phase1, one.phase2);
        SetTime(0.0);
        Correct();
        EXPECT_EQ(record_.satListF1.size(), one.first ? 1U : 0U);
        EXPECT_EQ(record_.satListF2.size(), one.second ? 1U : 0U);
        EXPECT_EQ(record_.satListDual.size(), one.dual ? 1U : 0U);
        EXPECT_EQ(dualFlag_, one.dual ? 1 : 0);
    }
}

TEST_F(ZeroDifference, TheDualFlagIsRaisedAndNeverLowered) {
    GpsStore().AddEphemeris(PlainRecord(7));
    SetTime(0.0);
    Observe(7, 2.2e7, 0.0, 1.0, 0.0);
    Correct();
    EXPECT_EQ(dualFlag_, 0);
    dualFlag_ = 1;
    Correct();
    EXPECT_EQ(dualFlag_, 1);
}

TEST_F(ZeroDifference, TheListsAscendAndStartAnewWithEachCorrection) {
    for (const int id : {30, 2, 17}) {
        GpsStore().AddEphemeris(PlainRecord(id));
    }
    SetTime(0.0);
    for (const int id : {30, 2, 17}) {  // out of order on purpose
        Observe(id, 2.2e7);
    }
    Correct();
    Correct();
    EXPECT_EQ(record_.satListF1, (std::vector<int>{2, 17, 30}));
    EXPECT_EQ(record_.satListF2, (std::vector<int>{2, 17, 30}));
    EXPECT_EQ(record_.satListDual, (std::vector<int>{2, 17, 30}));
    EXPECT_EQ(record_.satList, (std::vector<int>{30, 2, 17}));
    record_.satList.clear();
    Correct();
    EXPECT_TRUE(record_.satListF1.empty());
    EXPECT_TRUE(record_.satListF2.empty());
    EXPECT_TRUE(record_.satListDual.empty());
}

}  // namespace
}  // namespace vornel
