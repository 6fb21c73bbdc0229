#include "simulator/sun_moon.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "simulator/calendar.h"

namespace vornel::rough {
namespace {

double Declination(const Vector3& body) {
    return std::asin(body[2] / Length(body)) / kDegree;
}

// UTC, as dates of almanacs are.
SunMoon AtUtc(Date date) {
    io::GpsTime time = TimeOf(date);
    return SunMoonAt(Normalised(time.week, time.seconds + 18.0));
}

TEST(SunMoon, SunStandsOnTheEquatorAtTheEquinoxAndOnTheTropicAtTheSolstice) {
    EXPECT_NEAR(Declination(AtUtc({2020, 3, 20, 3, 50, 0.0}).sun), 0.0, 0.03);
    EXPECT_NEAR(Declination(AtUtc({2020, 6, 20, 21, 44, 0.0}).sun), 23.44, 0.01);
    // Noon at Greenwich, by the equation of time of that day 14 s early.
    const Vector3 sun = AtUtc({2020, 4, 15, 12, 0, 0.0}).sun;
    EXPECT_NEAR(std::atan2(sun[1], sun[0]) / kDegree, 0.0, 0.3);
}

TEST(SunMoon, MoonStandsAgainstTheSunAtALunarEclipseAndBeforeItAtASolarOne) {
    const SunMoon lunar = AtUtc({2018, 7, 27, 20, 22, 0.0});
    EXPECT_LT(std::acos(-Dot(Unit(lunar.sun), Unit(lunar.moon))) / kDegree, 0.3);
    const SunMoon solar = AtUtc({2017, 8, 21, 18, 26, 0.0});
    EXPECT_LT(std::acos(Dot(Unit(solar.sun), Unit(solar.moon))) / kDegree, 0.8);
    EXPECT_NEAR(Length(solar.moon), 3.72e8, 0.03e8);
}

TEST(SunMoon, TidesLiftByDecimetresTwiceADay) {
    const Vector3 marker = ToCartesian({20.0 * kDegree, 10.0 * kDegree, 0.0});
    const Vector3 up = Unit(marker);
    double highest = -1.0, lowest = 1.0;
    int turns = 0;
    double last = 0.0, lastStep = 0.0;
    for (int i = 0; i <= 96; ++i) {
        const Date date = {2020, 3, 9, 0, 0, 0.0};  // full moon: spring tide
        const io::GpsTime time = TimeOf(date);
        const double lift =
            Dot(up, TideAt(SunMoonAt(Normalised(time.week, time.seconds + 900.0 * i)), marker));
        highest = std::max(highest, lift);
        lowest = std::min(lowest, lift);
        if (i > 1 && (lift - last) * lastStep < 0.0) {
            ++turns;
        }
        lastStep = lift - last;
        last = lift;
    }
    EXPECT_GT(highest, 0.25);
    EXPECT_LT(highest, 0.45);
    EXPECT_LT(lowest, -0.1);
    EXPECT_GT(lowest, -0.25);
    EXPECT_EQ(turns, 4);
}

}  // namespace
}  // namespace vornel::rough
