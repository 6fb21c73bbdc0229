#include "session/ephemerides.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

#include "session/broadcast_orbit.h"

namespace vornel::session {
namespace {

using io::GnssSystem;
using io::NavigationMessage;

constexpr io::GpsTime kFirst{2111, 345600.0}, kLast{2111, 349200.0};

io::KeplerRecord Kepler(GnssSystem system, int number, double toe = 345600.0) {
    io::KeplerRecord record;
    record.satellite = {system, static_cast<std::uint8_t>(number)};
    record.tocWeek = record.toeWeek = 2111;
    record.tocSeconds = record.toeSeconds = toe;
    record.sqrtA = 5153.7;
    record.eccentricity = 0.01;
    record.i0 = 0.96;
    return record;
}

io::GlonassRecord Glonass(int slot, double seconds = 345600.0) {
    io::GlonassRecord record;
    record.slot = static_cast<std::uint8_t>(slot);
    record.referenceWeek = 2111;
    record.referenceSeconds = seconds;
    record.leapSeconds = 18;
    record.position = {19000.0, 10000.0, 14000.0};
    record.channel = -4;
    return record;
}

Ephemerides Select(io::Navigation navigation) {
    return SelectEphemerides({std::move(navigation)}, kFirst, kLast);
}

struct BadKepler {
    const char* reason;
    std::function<void(io::KeplerRecord&)> spoil;
};

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

TEST(Ephemerides, RecordsBeyondTheBoundsOfTheHeaderAreDropped) {
    const BadKepler cases[] = {
        {"eccentricity out of bounds", [](auto& r) { r.eccentricity = 0.5000001; }},
        {"eccentricity out of bounds", [](auto& r) { r.eccentricity = -1e-9; }},
        {"semi-major axis out of bounds", [](auto& r) { r.sqrtA = 999.9; }},
        {"semi-major axis out of bounds", [](auto& r) { r.sqrtA = 10000.1; }},
        {"clock out of bounds", [](auto& r) { r.af0 = 1.0001; }},
        {"clock out of bounds", [](auto& r) { r.af1 = -1.1e-3; }},
        {"clock out of bounds", [](auto& r) { r.af2 = 1.1e-6; }},
        {"angle out of bounds", [](auto& r) { r.m0 = 300.0; }},
        {"angle out of bounds", [](auto& r) { r.omega0 = -7.01; }},
        {"angle out of bounds", [](auto& r) { r.omega = 7.01; }},
        {"angle out of bounds", [](auto& r) { r.i0 = 7.01; }},
        {"angle out of bounds", [](auto& r) { r.cic = 7.01; }},
        {"rate out of bounds", [](auto& r) { r.deltaN = 1.1e-3; }},
        {"rate out of bounds", [](auto& r) { r.omegaDot = -1.1e-3; }},
        {"rate out of bounds", [](auto& r) { r.idot = 1.1e-3; }},
        {"value not finite", [](auto& r) { r.af0 = kNan; }},
        {"value not finite", [](auto& r) { r.crs = INFINITY; }},
        {"value not finite", [](auto& r) { r.eccentricity = kNan; }},
        {"value not finite", [](auto& r) { r.toeSeconds = kNan; }},
        {"reference time out of bounds", [](auto& r) { r.toeSeconds = 604800.0; }},
        {"reference time out of bounds", [](auto& r) { r.toeSeconds = -1.0; }},
        {"reference time out of bounds", [](auto& r) { r.toeWeek = -1; }},
        {"reference time out of bounds", [](auto& r) { r.tocWeek = 7000; }},
    };
    for (const BadKepler& bad : cases) {
        io::Navigation navigation;
        navigation.kepler.push_back(Kepler(GnssSystem::kGps, 5));
        bad.spoil(navigation.kepler.back());
        const Ephemerides result = Select(navigation);
        EXPECT_TRUE(result.Empty()) << bad.reason;
        EXPECT_EQ(result.dropped.count(bad.reason), 1U) << bad.reason;
        EXPECT_EQ(result.recordsRead, 1U);
    }
    // On the bounds they stand.
    io::Navigation good;
    good.kepler.push_back(Kepler(GnssSystem::kGps, 5));
    good.kepler.back().eccentricity = 0.5;
    good.kepler.back().m0 = -7.0;
    good.kepler.back().deltaN = 1e-3;
    good.kepler.back().sqrtA = 10000.0;
    EXPECT_EQ(Select(good).kepler.size(), 1U);
}

TEST(Ephemerides, GlonassStatesKeepTheirBounds) {
    const auto with = [](const std::function<void(io::GlonassRecord&)>& change) {
        io::Navigation navigation;
        navigation.glonass.push_back(Glonass(3));
        change(navigation.glonass.back());
        return Select(navigation);
    };
    EXPECT_EQ(with([](auto&) {}).glonass.size(), 1U);
    EXPECT_EQ(with([](auto& r) {
                  r.position = {14999.0, 0, 0};
              }).dropped.count("GLONASS position out of bounds"),
              1U);
    EXPECT_EQ(with([](auto& r) {
                  r.position = {40001.0, 0, 0};
              }).dropped.count("GLONASS position out of bounds"),
              1U);
    EXPECT_EQ(with([](auto& r) { r.position[1] = kNan; }).dropped.count("value not finite"), 1U);
    EXPECT_EQ(with([](auto& r) { r.velocity[1] = INFINITY; }).dropped.count("value not finite"),
              1U);
    for (const int leapSeconds : {-1, 101}) {
        EXPECT_EQ(with([&](auto& r) {
                      r.leapSeconds = leapSeconds;
                  }).dropped.count("reference time out of bounds"),
                  1U);
    }
    EXPECT_EQ(with([](auto& r) { r.clockBias = -1.1; }).dropped.count("clock out of bounds"), 1U);
    EXPECT_EQ(with([](auto& r) { r.clockDrift = 2e-3; }).dropped.count("clock out of bounds"), 1U);
    EXPECT_EQ(with([](auto& r) { r.channel = 14; }).dropped.count("GLONASS channel out of bounds"),
              1U);
    EXPECT_EQ(with([](auto& r) { r.health = 1; }).dropped.count("GLONASS satellite not healthy"),
              1U);
    EXPECT_EQ(with([](auto& r) { r.slot = 33; }).unnumbered, std::set<std::string>{"R33"});
}

TEST(Ephemerides, GlonassTimesAreUtcWithTheLeapSecondsOfTheDay) {
    io::Navigation navigation;
    navigation.glonass.push_back(Glonass(3, 345600.0 + 900.0));
    const Ephemerides result = Select(navigation);
    ASSERT_EQ(result.glonass.size(), 1U);
    const engine::Glonass& record = result.glonass[0].record;
    EXPECT_EQ(record.week, 2111);
    EXPECT_EQ(record.seconds, 346500.0);
    EXPECT_EQ(record.tbSeconds, 900.0);
    EXPECT_EQ(record.leapSeconds, 18);
    EXPECT_EQ(result.glonass[0].reference, (io::GpsTime{2111, 346518.0}));
}

TEST(Ephemerides, ABetterMessageOfTheSameHoursIsTaken) {
    io::Navigation navigation;
    for (const NavigationMessage message : {NavigationMessage::kFnav, NavigationMessage::kInav}) {
        navigation.kepler.push_back(Kepler(GnssSystem::kGalileo, 7));
        navigation.kepler.back().message = message;
        navigation.kepler.back().af0 = message == NavigationMessage::kInav ? 1e-4 : 2e-4;
    }
    // F/NAV at another time within the hours that I/NAV serves, and far from it.
    for (const double toe : {345600.0 + 600.0, 345600.0 + 9000.0}) {
        navigation.kepler.push_back(Kepler(GnssSystem::kGalileo, 7, toe));
        navigation.kepler.back().message = NavigationMessage::kFnav;
    }
    const Ephemerides result = Select(navigation);
    ASSERT_EQ(result.kepler.size(), 2U);
    EXPECT_EQ(result.kepler[0].record.af0, 1e-4);
    EXPECT_EQ(result.kepler[1].record.toe, 354600.0);
    EXPECT_EQ(result.dropped.at("another message was preferred"), 2U);
}

TEST(Ephemerides, OfRepeatedRecordsTheFirstStands) {
    io::Navigation navigation;
    navigation.kepler.push_back(Kepler(GnssSystem::kGps, 5));
    navigation.kepler.push_back(Kepler(GnssSystem::kGps, 5));
    navigation.kepler.back().af0 = 1.0;
    const Ephemerides result = Select(navigation);
    ASSERT_EQ(result.kepler.size(), 1U);
    EXPECT_EQ(result.kepler[0].record.af0, 0.0);
    EXPECT_EQ(result.dropped.at("repeated"), 1U);
}

TEST(Ephemerides, BeiDouTimesStayInBdtAndReachFourHours) {
    io::Navigation navigation;
    // 14386 s before the session in BDT is 14400 s less 28 s in GPS time, and 120 s more is not.
    navigation.kepler.push_back(Kepler(GnssSystem::kBeiDou, 11, 345600.0 - 14400.0 - 14.0));
    navigation.kepler.push_back(Kepler(GnssSystem::kBeiDou, 12, 345600.0 - 14600.0));
    const Ephemerides result = Select(navigation);
    ASSERT_EQ(result.kepler.size(), 1U);
    EXPECT_EQ(result.kepler[0].record.toe, 331186.0);
    EXPECT_EQ(result.kepler[0].reference, (io::GpsTime{2111, 331200.0}));
    EXPECT_TRUE(HasOrbit(result, {engine::System::kBds, 11}, {kFirst}));
    EXPECT_FALSE(HasOrbit(result, {engine::System::kBds, 11}, {kLast}));
    // Any of the times will do, however far they lie apart.
    EXPECT_TRUE(HasOrbit(result, {engine::System::kBds, 11}, {{0, 0.0}, kFirst, {6000, 0.0}}));
    EXPECT_FALSE(HasOrbit(result, {engine::System::kBds, 11}, {{0, 0.0}, {6000, 0.0}}));
    EXPECT_EQ(result.dropped.at("too far from the session"), 1U);
}

TEST(Ephemerides, SatellitesWithoutANumberAreNamed) {
    io::Navigation navigation;
    navigation.kepler.push_back(Kepler(GnssSystem::kBeiDou, 37));
    navigation.kepler.push_back(Kepler(GnssSystem::kGalileo, 36));
    navigation.kepler.push_back(Kepler(GnssSystem::kQzss, 2));
    EXPECT_EQ(Select(navigation).unnumbered, (std::set<std::string>{"C37", "E36", "J02"}));
}

// Position from the equations of the message itself, with its rates (IS-GPS-200, 30.3.3.1).
Vector3 CnavPosition(const io::KeplerRecord& r, double tk) {
    const double gm = 3.986005e14, we = 7.2921151467e-5;
    const double a0 = r.sqrtA * r.sqrtA, a = a0 + r.aDot * tk;
    const double n = std::sqrt(gm / (a0 * a0 * a0)) + r.deltaN + 0.5 * r.deltaNDot * tk;
    const double m = r.m0 + n * tk;
    double e = m;
    for (int i = 0; i < 50; ++i) {
        e = m + r.eccentricity * std::sin(e);
    }
    const double v = std::atan2(std::sqrt(1 - r.eccentricity * r.eccentricity) * std::sin(e),
                                std::cos(e) - r.eccentricity);
    const double u = v + r.omega, radius = a * (1 - r.eccentricity * std::cos(e));
    const double i = r.i0 + r.idot * tk;
    const double node = r.omega0 + (r.omegaDot - we) * tk - we * r.toeSeconds;
    const double x = radius * std::cos(u), y = radius * std::sin(u);
    return {x * std::cos(node) - y * std::cos(i) * std::sin(node),
            x * std::sin(node) + y * std::cos(i) * std::cos(node), y * std::sin(i)};
}

TEST(Ephemerides, MessagesWithRatesAreRightWithinTheirTwoHours) {
    io::KeplerRecord record = Kepler(GnssSystem::kGps, 5, 349200.0);
    record.message = NavigationMessage::kCnav;
    record.hasRates = true;
    record.aDot = 5e-3;
    record.deltaNDot = 1e-14;
    record.deltaN = 4e-9;
    record.omegaDot = -8e-9;
    record.idot = 3e-10;
    record.omega = 0.7;
    record.m0 = 1.1;
    io::Navigation navigation;
    navigation.kepler.push_back(record);
    const Ephemerides result = SelectEphemerides({navigation}, {2111, 342000.0}, {2111, 356400.0});
    EXPECT_EQ(result.kepler.size(), 17U);
    for (double tk = -7000.0; tk <= 7000.0; tk += 333.0) {
        const auto state = BroadcastState(result, {engine::System::kGps, 5}, {2111, 349200.0 + tk});
        ASSERT_TRUE(state);
        // Half a step of the rate that is left: 5e-3 m/s over 450 s.
        EXPECT_LT(Length(Minus(state->position, CnavPosition(record, tk))), 3.0) << tk;
    }
    // Without the rates it would be tens of metres off.
    io::KeplerRecord plain = record;
    plain.aDot = plain.deltaNDot = 0.0;
    EXPECT_GT(Length(Minus(CnavPosition(plain, 7000.0), CnavPosition(record, 7000.0))), 30.0);
}

TEST(Ephemerides, TheFirstCompleteGpsIonosphereIsTaken) {
    io::Navigation navigation;
    const auto add = [&](GnssSystem system, double alpha, bool beta) {
        io::IonosphereSet set;
        set.system = system;
        set.alpha = {alpha, 0, 0, 0};
        set.hasAlpha = true;
        set.hasBeta = beta;
        navigation.ionosphere.push_back(set);
    };
    add(GnssSystem::kBeiDou, 1.0, true);
    add(GnssSystem::kGps, 2.0, false);
    EXPECT_FALSE(FirstGpsIonosphere({navigation}));
    add(GnssSystem::kGps, 3.0, true);
    add(GnssSystem::kGps, 4.0, true);
    ASSERT_TRUE(FirstGpsIonosphere({navigation}));
    EXPECT_EQ(FirstGpsIonosphere({navigation})->alpha[0], 3.0);
    navigation.ionosphere[2].model = io::IonosphereModel::kNequick;
    EXPECT_EQ(FirstGpsIonosphere({navigation})->alpha[0], 4.0);
}

}  // namespace
}  // namespace vornel::session
