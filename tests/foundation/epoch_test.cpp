// Time: normalisation, weeks, calendar, leap seconds, Moscow time.
#include "foundation/epoch.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "foundation/platform.h"

namespace {

using vornel::Epoch;
using vornel::TimePeriod;

constexpr double kSecondsPerDay = 86400.0;

static_assert(std::has_virtual_destructor_v<Epoch>);
static_assert(std::has_virtual_destructor_v<TimePeriod>);

Epoch FromFields(int day, int second, double fraction) {
    Epoch epoch;
    epoch.day = day;
    epoch.second = second;
    epoch.fraction = fraction;
    return epoch;
}

Epoch FromCalendar(double year, double month, double day, double hour = 0.0, double minute = 0.0,
                   double seconds = 0.0) {
    const double calendar[6] = {year, month, day, hour, minute, seconds};
    return Epoch(calendar);
}

void ExpectFields(const Epoch& epoch, int day, int second, double fraction,
                  double tolerance = 1e-15) {
    EXPECT_EQ(epoch.day, day);
    EXPECT_EQ(epoch.second, second);
    EXPECT_NEAR(epoch.fraction, fraction, tolerance);
}

// --- the fields ----------------------------------------------------------------------------------

TEST(Epoch, DefaultIsNoTime) {
    const Epoch none;
    ExpectFields(none, 0, 0, 0.0, 0.0);
    EXPECT_TRUE(none.IsZero());
    EXPECT_FALSE(FromFields(1, 0, 0.0).IsZero());
    EXPECT_FALSE(FromFields(0, 1, 0.0).IsZero());
    EXPECT_FALSE(FromFields(0, 0, 0.5).IsZero());
}

TEST(Epoch, CopyAndAssignmentTakeAllThreeFields) {
    const Epoch original = FromFields(12, 34, 0.56);
    const Epoch copy(original);
    Epoch assigned;
    assigned = original;
    ExpectFields(copy, 12, 34, 0.56, 0.0);
    ExpectFields(assigned, 12, 34, 0.56, 0.0);
}

TEST(Epoch, PeriodHoldsItsTwoEpochs) {
    const TimePeriod empty;
    EXPECT_TRUE(empty.start.IsZero());
    EXPECT_TRUE(empty.end.IsZero());
    const TimePeriod period(Epoch(2000, 1.0), Epoch(2000, 2.5));
    EXPECT_EQ(period.start, Epoch(2000, 1.0));
    EXPECT_EQ(period.end, Epoch(2000, 2.5));
    const TimePeriod copy = period;
    EXPECT_EQ(copy.end, period.end);
}

// --- normalisation -------------------------------------------------------------------------------

TEST(EpochNormalisation, AFractionJustShortOfASecondRoundsUp) {
    ExpectFields(Epoch(1042, 0.9999999995), -6, 1, 0.0, 0.0);
    ExpectFields(Epoch(1042, 86399.9999999995), -5, 0, 0.0, 0.0);
    ExpectFields(FromCalendar(2000, 1, 1, 23, 59, 59.9999999995), 1, 0, 0.0, 0.0);
    ExpectFields(Epoch() + 0.9999999995, 0, 1, 0.0, 0.0);
}

TEST(EpochNormalisation, AFractionAtTheRoundingLimitStays) {
    ExpectFields(Epoch() + 0.999999999, 0, 0, 0.999999999);
    ExpectFields(Epoch() + 0.9999999985, 0, 0, 0.9999999985);
}

TEST(EpochNormalisation, ATinyNegativeFractionIsNotRoundedUp) {
    // Rounding up comes before the borrow, so 1 - 1e-12 as the outcome of a borrow is left alone.
    const Epoch epoch = FromFields(3, 0, 0.0) - 1e-12;
    ExpectFields(epoch, 2, 86399, 1.0 - 1e-12, 1e-15);
}

TEST(EpochNormalisation, TwoFractionsThatPassOneSecondKeepTheWholeSecondAlone) {
    // A sum of fractions above 1 is above the rounding limit too and becomes 1.0.
    ExpectFields(FromFields(0, 10, 0.75) + 0.75, 0, 11, 0.0, 0.0);
    ExpectFields(FromFields(0, 10, 0.5) + 3.75, 0, 14, 0.0, 0.0);
    ExpectFields(FromFields(0, 10, 0.5) + 0.5, 0, 11, 0.0, 0.0);
}

TEST(EpochNormalisation, BorrowsFromTheSecondAndTheDay) {
    ExpectFields(FromFields(5, 0, 0.0) - 0.25, 4, 86399, 0.75, 0.0);
    ExpectFields(FromFields(5, 0, 0.25) - 0.5, 4, 86399, 0.75, 0.0);
    ExpectFields(FromFields(5, 0, 0.25) - 1.5, 4, 86398, 0.75, 0.0);
    ExpectFields(FromFields(0, 0, 0.0) - 86400.0, -1, 0, 0.0, 0.0);
    ExpectFields(FromFields(0, 0, 0.0) - 86401.0, -2, 86399, 0.0, 0.0);
    ExpectFields(FromFields(0, 0, 0.0) - 864000.5, -11, 86399, 0.5, 0.0);
}

TEST(EpochNormalisation, CarriesIntoTheDay) {
    ExpectFields(FromFields(5, 86399, 0.5) + 0.5, 6, 0, 0.0, 0.0);
    ExpectFields(FromFields(5, 1, 0.0) + 86399.0, 6, 0, 0.0, 0.0);
    ExpectFields(FromFields(-1, 43200, 0.0) + 43200.0, 0, 0, 0.0, 0.0);
    ExpectFields(FromFields(0, 0, 0.0) + 864000.25, 10, 0, 0.25, 0.0);
}

TEST(EpochNormalisation, FractionsAreRoundedAtTheTwentiethPlace) {
    EXPECT_EQ((Epoch() + 4e-21).fraction, 0.0);
    EXPECT_DOUBLE_EQ((Epoch() + 6e-21).fraction, 1e-20);
    EXPECT_DOUBLE_EQ((Epoch() + 1.4e-20).fraction, 1e-20);
    EXPECT_DOUBLE_EQ((Epoch() + 1e-9).fraction, 1e-9);
}

TEST(Epoch, SubtractingIsAddingTheNegative) {
    const Epoch epoch = FromFields(100, 5000, 0.125);
    for (const double seconds : {0.0, 0.0625, 1.0, 86400.0, 123456.5, -0.0625, -7200.25}) {
        EXPECT_EQ(epoch - seconds, epoch + -seconds) << seconds;
    }
    ExpectFields(epoch + 0.25, 100, 5000, 0.375, 0.0);
    ExpectFields(epoch, 100, 5000, 0.125, 0.0);
}

// --- comparison ----------------------------------------------------------------------------------

TEST(Epoch, ComparesDayThenSecondThenFraction) {
    const Epoch middle = FromFields(10, 20, 0.5);
    const Epoch later[] = {FromFields(11, 0, 0.0), FromFields(10, 21, 0.0),
                           FromFields(10, 20, 0.75)};
    for (const Epoch& epoch : later) {
        EXPECT_TRUE(middle < epoch);
        EXPECT_FALSE(epoch < middle);
        EXPECT_TRUE(middle <= epoch);
        EXPECT_FALSE(epoch <= middle);
        EXPECT_FALSE(middle == epoch);
        EXPECT_TRUE(middle != epoch);
    }
    const Epoch same = middle;
    EXPECT_FALSE(middle < same);
    EXPECT_TRUE(middle <= same);
    EXPECT_TRUE(middle == same);
    EXPECT_FALSE(middle != same);
}

TEST(Epoch, FractionsCompareExactly) {
    const Epoch a = FromFields(1, 2, 0.1);
    const Epoch b = FromFields(1, 2, std::nextafter(0.1, 1.0));
    EXPECT_FALSE(a == b);
    EXPECT_TRUE(a != b);
    EXPECT_TRUE(a < b);
    EXPECT_FALSE(b <= a);
}

// --- differences and totals ----------------------------------------------------------------------

TEST(Epoch, DifferenceIsInSeconds) {
    // The difference goes through days, so its rounding is that of a day: 86400 times 1.1e-16 s.
    constexpr double kTolerance = 2e-11;
    EXPECT_NEAR(FromFields(2, 10, 0.75) - FromFields(1, 20, 0.25), 86390.5, kTolerance);
    EXPECT_NEAR(FromFields(1, 20, 0.25) - FromFields(2, 10, 0.75), -86390.5, 2.0 * kTolerance);
    EXPECT_NEAR(FromFields(1, 20, 0.25) - FromFields(1, 20, 0.5), -0.25, kTolerance);
    EXPECT_EQ(FromFields(9, 20, 0.25) - FromFields(9, 20, 0.25), 0.0);
}

TEST(Epoch, DifferenceKeepsItsDigitsHoweverLargeTheDay) {
    // Totals of such days are good to a microsecond only.
    const int day = 20000000;
    const Epoch earlier = FromFields(day, 1000, 0.25);
    const Epoch later = FromFields(day, 1000, 0.25 + 1e-9);
    EXPECT_NEAR(later - earlier, 1e-9, 1e-16);
    EXPECT_NEAR(FromFields(day, 1030, 0.125) - earlier, 29.875, 1e-14);
}

TEST(Epoch, DifferenceIsNormalisedLikeAnyEpoch) {
    EXPECT_NEAR(FromFields(0, 5, 0.9999999995) - FromFields(0, 5, 0.0), 1.0, 1e-15);
}

TEST(Epoch, TotalSecondsRoundsThroughDays) {
    // Equalities at the limits of periods hang on this order of operations.
    std::uint64_t state = 1;
    for (int i = 0; i < 1000; ++i) {
        state = state * 6364136223846793005u + 1442695040888963407u;
        const int day = static_cast<int>((state >> 33) % 20000) - 5000;
        const int second = static_cast<int>((state >> 20) % 86400);
        const double fraction = static_cast<double>((state >> 40) % 1000) / 1000.0;
        const double expected = ((second + fraction) / 86400 + day) * 86400;
        EXPECT_EQ(FromFields(day, second, fraction).TotalSeconds(), expected);
    }
    EXPECT_EQ(FromFields(0, 0, 0.0).TotalSeconds(), 0.0);
    EXPECT_EQ(FromFields(2, 43200, 0.0).TotalSeconds(), 216000.0);
    EXPECT_EQ(FromFields(-1, 43200, 0.0).TotalSeconds(), -43200.0);
}

// --- weeks ---------------------------------------------------------------------------------------

TEST(EpochWeeks, WeekZeroBegins7300DaysBeforeDayZero) {
    ExpectFields(Epoch(0, 0.0), -7300, 0, 0.0, 0.0);
    // GPS time starts with 1980-01-06 (IS-GPS-200).
    int year = 0;
    int month = 0;
    int day = 0;
    Epoch(0, 0.0).ToCalendar(year, month, day);
    EXPECT_EQ(year, 1980);
    EXPECT_EQ(month, 1);
    EXPECT_EQ(day, 6);
}

TEST(EpochWeeks, TheLastHalfSecondOfAWeek) {
    const Epoch epoch(2000, 604799.5);
    ExpectFields(epoch, 2000 * 7 + 6 - 7300, 86399, 0.5, 0.0);
    int week = 0;
    double seconds = 0.0;
    epoch.ToWeekSeconds(week, seconds);
    EXPECT_EQ(week, 2000);
    EXPECT_EQ(seconds, 604799.5);
}

TEST(EpochWeeks, AFullDayOfSecondsIsTheNextDay) {
    ExpectFields(Epoch(1500, 86400.0), 1500 * 7 + 1 - 7300, 0, 0.0, 0.0);
    ExpectFields(Epoch(1500, 604800.0), 1501 * 7 - 7300, 0, 0.0, 0.0);
    ExpectFields(Epoch(1500, 86399.5), 1500 * 7 - 7300, 86399, 0.5, 0.0);
}

TEST(EpochWeeks, NegativeSecondsReachBack) {
    ExpectFields(Epoch(1500, -0.25), 1500 * 7 - 7301, 86399, 0.75, 0.0);
    ExpectFields(Epoch(1500, -86400.0), 1500 * 7 - 7301, 0, 0.0, 0.0);
    ExpectFields(Epoch(1500, -90000.5), 1500 * 7 - 7302, 82799, 0.5, 0.0);
}

TEST(EpochWeeks, RoundTripOverAllWeeksOfACentury) {
    for (int week = 0; week < 6000; week += 7) {
        for (const double seconds : {0.0, 0.125, 1.0, 43199.75, 86399.5, 86400.0, 302400.0,
                                     518400.25, 604799.0, 604799.875}) {
            const Epoch epoch(week, seconds);
            int weekBack = -1;
            double secondsBack = -1.0;
            epoch.ToWeekSeconds(weekBack, secondsBack);
            ASSERT_EQ(weekBack, week);
            ASSERT_EQ(secondsBack, seconds);
            ASSERT_EQ(epoch.SecondsOfWeek(), seconds);
            ASSERT_EQ(epoch.day * 86400LL + epoch.second,
                      (week * 7LL - 7300) * 86400 + static_cast<long long>(seconds));
        }
    }
}

TEST(EpochWeeks, KnownWeeks) {
    // The week number passed 1024 at 1999-08-22 and 2048 at 2019-04-07.
    EXPECT_EQ(Epoch(1024, 0.0), FromCalendar(1999, 8, 22));
    EXPECT_EQ(Epoch(2048, 0.0), FromCalendar(2019, 4, 7));
    EXPECT_EQ(FromCalendar(2024, 2, 29, 1, 2, 3.5), Epoch(2303, 4 * 86400.0 + 3723.5));
}

TEST(EpochWeeks, BeforeWeekZeroTheWeekIsTruncatedTowardsIt) {
    int week = 99;
    double seconds = 0.0;
    FromFields(-7301, 86399, 0.5).ToWeekSeconds(week, seconds);
    EXPECT_EQ(week, 0);
    EXPECT_EQ(seconds, -0.5);
    FromFields(-7308, 10, 0.0).ToWeekSeconds(week, seconds);
    EXPECT_EQ(week, -1);
    EXPECT_EQ(seconds, -86390.0);
}

// --- day counts ----------------------------------------------------------------------------------

TEST(EpochDays, SplitsADayCount) {
    ExpectFields(Epoch(0.0), 0, 0, 0.0, 0.0);
    ExpectFields(Epoch(8000.5), 8000, 43200, 0.0, 0.0);
    ExpectFields(Epoch(-0.25), -1, 64800, 0.0, 0.0);
    ExpectFields(Epoch(-3.0), -3, 0, 0.0, 0.0);
    // 1/1024 of a day is 84.375 s, exactly.
    ExpectFields(Epoch(10.0 + 1.0 / 1024.0), 10, 84, 0.375, 0.0);
}

TEST(EpochDays, AFractionBelowAMicrosecondIsDropped) {
    ExpectFields(Epoch(1e-12), 0, 0, 0.0, 0.0);  // 0.0864 us
    ExpectFields(Epoch(0.9e-6 / kSecondsPerDay), 0, 0, 0.0, 0.0);
    ExpectFields(Epoch(2e-6 / kSecondsPerDay), 0, 0, 2e-6, 1e-15);
}

TEST(EpochDays, AFractionJustShortOfASecondRoundsUp) {
    // The count nearest to 10 s past day 1 falls short of it by less than 1e-10 s, or passes it.
    for (int second = 0; second < 86400; second += 7) {
        const Epoch epoch(1.0 + second / kSecondsPerDay);
        ExpectFields(epoch, 1, second, 0.0, 0.0);
    }
}

// --- calendar ------------------------------------------------------------------------------------

struct CivilDate {
    int year;
    int month;
    int day;
};

// The proleptic Gregorian date of a day counted from 1970-01-01, by eras of 400 years counted from
// 0000-03-01 (H. Hinnant, "chrono-compatible low-level date algorithms").
CivilDate CivilFromDays(int days) {
    days += 719468;
    const int era = (days >= 0 ? days : days - 146096) / 146097;
    const int dayOfEra = days - era * 146097;
    const int yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const int dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int shiftedMonth = (5 * dayOfYear + 2) / 153;
    const int day = dayOfYear - (153 * shiftedMonth + 2) / 5 + 1;
    const int month = shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9;
    return {yearOfEra + era * 400 + (month <= 2 ? 1 : 0), month, day};
}

constexpr int kDaysFrom1970To2000 = 10957;

TEST(EpochCalendar, EveryDayOfFourCenturiesRoundTrips) {
    // 1850 to 2250: the century rule at 1900, 2100 and 2200, its exception at 2000.
    int dayOfYear = 0;
    for (int day = -54786; day < 91312; ++day) {
        const CivilDate expected = CivilFromDays(day + kDaysFrom1970To2000);
        const Epoch epoch = FromCalendar(expected.year, expected.month, expected.day);
        ASSERT_EQ(epoch.day, day) << expected.year << "-" << expected.month << "-" << expected.day;
        ASSERT_EQ(epoch.second, 0);
        ASSERT_EQ(epoch.fraction, 0.0);

        int year = 0;
        int month = 0;
        int dayOfMonth = 0;
        epoch.ToCalendar(year, month, dayOfMonth);
        ASSERT_EQ(year, expected.year) << day;
        ASSERT_EQ(month, expected.month) << day;
        ASSERT_EQ(dayOfMonth, expected.day) << day;

        if (expected.month == 1 && expected.day == 1) {
            dayOfYear = 0;
        }
        ++dayOfYear;
        ASSERT_EQ(epoch.DayOfYear(), dayOfYear) << day;
    }
}

TEST(EpochCalendar, KnownDays) {
    EXPECT_EQ(FromCalendar(2000, 1, 1).day, 0);
    EXPECT_EQ(FromCalendar(1999, 12, 31).day, -1);
    EXPECT_EQ(FromCalendar(1970, 1, 1).day, -kDaysFrom1970To2000);
    EXPECT_EQ(FromCalendar(1980, 1, 6).day, -7300);
    EXPECT_EQ(FromCalendar(2000, 2, 29).day + 1, FromCalendar(2000, 3, 1).day);
    EXPECT_EQ(FromCalendar(2100, 2, 28).day + 1, FromCalendar(2100, 3, 1).day);
    EXPECT_EQ(FromCalendar(2024, 1, 1).DayOfYear(), 1);
    EXPECT_EQ(FromCalendar(2024, 2, 29).DayOfYear(), 60);
    EXPECT_EQ(FromCalendar(2024, 12, 31, 23, 59, 59.5).DayOfYear(), 366);
    EXPECT_EQ(FromCalendar(2023, 12, 31).DayOfYear(), 365);
    EXPECT_EQ(FromCalendar(1999, 3, 1).DayOfYear(), 60);
}

TEST(EpochCalendar, FebruaryIsItselfAgainAfterALeapYear) {
    int year = 0;
    int month = 0;
    int day = 0;
    FromCalendar(2024, 2, 29).ToCalendar(year, month, day);
    FromCalendar(2023, 3, 1).ToCalendar(year, month, day);
    EXPECT_EQ(month, 3);
    EXPECT_EQ(day, 1);
}

TEST(EpochCalendar, TimeOfDayRoundTrips) {
    ExpectFields(FromCalendar(2000, 1, 2, 1, 2, 3.25), 1, 3723, 0.25, 0.0);
    for (int second = 0; second < 86400; second += 61) {
        const Epoch epoch = FromFields(8765, second, 0.625);
        int year = 0;
        int month = 0;
        int day = 0;
        int hour = -1;
        int minute = -1;
        double seconds = -1.0;
        epoch.ToCalendar(year, month, day, hour, minute, seconds);
        ASSERT_EQ(hour, second / 3600);
        ASSERT_EQ(minute, second % 3600 / 60);
        ASSERT_EQ(seconds, second % 60 + 0.625);
        ASSERT_EQ(year, 2023);
        ASSERT_EQ(month, 12);
        ASSERT_EQ(day, 31);
        ASSERT_EQ(FromCalendar(year, month, day, hour, minute, seconds), epoch);
    }
}

TEST(EpochCalendar, TimesBeyondTheDayCarry) {
    EXPECT_EQ(FromCalendar(2016, 12, 31, 23, 59, 60.0), FromCalendar(2017, 1, 1));
    EXPECT_EQ(FromCalendar(2016, 12, 31, 24), FromCalendar(2017, 1, 1));
    EXPECT_EQ(FromCalendar(2016, 12, 30, 49, 61, 1.5), FromCalendar(2017, 1, 1, 2, 1, 1.5));
}

// --- the clock and the time scales ---------------------------------------------------------------

vornel::UtcClock FixedClock() {
    return {2024, 3, 9, 23, 59, 58, 765};
}

TEST(TimeScales, NowIsTheSystemsClock) {
    vornel::SetSystemTimeSource(&FixedClock);
    const Epoch now = vornel::UtcNow();
    vornel::SetSystemTimeSource(nullptr);
    ExpectFields(now, FromCalendar(2024, 3, 9).day, 86398, 0.765, 1e-14);
}

struct LeapSecond {
    int year;
    int month;
    int seconds;
};

// GPS minus UTC from the first day of a month on (IERS Bulletin C).
constexpr LeapSecond kLeapSeconds[] = {
    {1981, 7, 1},  {1982, 7, 2},  {1983, 7, 3},  {1985, 7, 4},  {1988, 1, 5},  {1990, 1, 6},
    {1991, 1, 7},  {1992, 7, 8},  {1993, 7, 9},  {1994, 7, 10}, {1996, 1, 11}, {1997, 7, 12},
    {1999, 1, 13}, {2006, 1, 14}, {2009, 1, 15}, {2012, 7, 16}, {2015, 7, 17}, {2017, 1, 18}};

TEST(TimeScales, LeapSecondsChangeWithTheFirstMomentOfTheirDay) {
    int before = 0;
    for (const LeapSecond& row : kLeapSeconds) {
        const Epoch first = FromCalendar(row.year, row.month, 1);
        const Epoch last = first - 0.0009765625;
        EXPECT_EQ(vornel::UtcToGps(first), first + row.seconds) << row.year << "-" << row.month;
        EXPECT_EQ(vornel::UtcToGps(last), last + before) << row.year << "-" << row.month;
        const Epoch later = first + 86400.0 * 100 + 12345.25;
        EXPECT_EQ(vornel::UtcToGps(later), later + row.seconds) << row.year << "-" << row.month;
        before = row.seconds;
    }
}

TEST(TimeScales, SeventeenSecondsTo2016AndEighteenFrom2017) {
    const Epoch eve = FromCalendar(2016, 12, 31);
    EXPECT_NEAR(vornel::UtcToGps(eve) - eve, 17.0, 1e-11);
    const Epoch newYear = FromCalendar(2017, 1, 1);
    EXPECT_NEAR(vornel::UtcToGps(newYear) - newYear, 18.0, 1e-11);
    const Epoch farAhead = FromCalendar(2099, 6, 1);
    EXPECT_NEAR(vornel::UtcToGps(farAhead) - farAhead, 18.0, 1e-11);
}

TEST(TimeScales, BeforeTheFirstLeapSecondGpsIsUtc) {
    for (const Epoch& utc : {FromCalendar(1980, 1, 6), FromCalendar(1981, 6, 30, 23, 59, 59.875),
                             FromCalendar(1970, 1, 1)}) {
        EXPECT_EQ(vornel::UtcToGps(utc), utc);
    }
}

TEST(TimeScales, DayZeroHadThirteenLeapSeconds) {
    ExpectFields(vornel::UtcToGps(Epoch()), 0, 13, 0.0, 0.0);
}

TEST(TimeScales, MoscowIsThreeHoursAheadWithoutLeapSeconds) {
    EXPECT_EQ(vornel::GlonassSecondsOfDay(2000, 0.0), 10800.0);
    EXPECT_EQ(vornel::GlonassSecondsOfDay(2000, 86400.0), 10800.0);
    EXPECT_EQ(vornel::GlonassSecondsOfDay(2000, 75599.5), 86399.5);
    EXPECT_EQ(vornel::GlonassSecondsOfDay(2000, 75600.0), 0.0);
    EXPECT_EQ(vornel::GlonassSecondsOfDay(2000, 604799.75), 10799.75);
    for (int second = 0; second < 604800; second += 601) {
        ASSERT_EQ(vornel::GlonassSecondsOfDay(1234, second + 0.5), (second + 10800) % 86400 + 0.5);
    }
}

}  // namespace
