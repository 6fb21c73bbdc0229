// Precise ephemerides: the lists, the span of the interpolation, and its values against polynomials
// and an analytic orbit.
#include "orbit/precise_ephemeris.h"

#include <gtest/gtest.h>

#include <cmath>
#include <type_traits>
#include <vector>

#include "VornelBlCore.h"
#include "orbit/orbit_stores.h"

namespace vornel {
namespace {

constexpr int kWeek = 2204;
constexpr double kStep = 900.0;  // s
constexpr int kSat = 17;

// `count` entries of `value(i)` at i * kStep seconds of week `week`.
template <typename Value>
OneSatSP3ValList MakeList(int count, int week, Value value) {
    OneSatSP3ValList list;
    list.satNumber = kSat;
    for (int i = 0; i < count; ++i) {
        list.values.emplace_back(Epoch(week, kStep * i), value(i));
    }
    return list;
}

double Line(int i) {
    return 10.0 * i;
}

bool Served(const OneSatSP3ValList& list, double seconds) {
    double out = 0.0;
    return InterpolateOne(list, Epoch(kWeek, seconds), out);
}

// --- the span

TEST(PreciseInterpolation, AListOfElevenServesFromTheFifthEntryToBelowTheSixth) {
    const OneSatSP3ValList list = MakeList(11, kWeek, Line);
    EXPECT_FALSE(Served(list, 4.0 * kStep - 0.001));
    EXPECT_TRUE(Served(list, 4.0 * kStep));  // on an entry the next one is the first after it
    EXPECT_TRUE(Served(list, 4.0 * kStep + 0.001));
    EXPECT_TRUE(Served(list, 5.0 * kStep - 0.001));
    EXPECT_FALSE(Served(list, 5.0 * kStep));
    EXPECT_FALSE(Served(list, 5.0 * kStep + 0.001));
}

TEST(PreciseInterpolation, NothingIsServedNearTheEndsOfAList) {
    const OneSatSP3ValList list = MakeList(20, kWeek, Line);
    EXPECT_FALSE(Served(list, 0.0));
    EXPECT_FALSE(Served(list, 3.5 * kStep));
    EXPECT_TRUE(Served(list, 4.5 * kStep));
    EXPECT_TRUE(Served(list, 13.5 * kStep));
    EXPECT_FALSE(Served(list, 14.0 * kStep));
    EXPECT_FALSE(Served(list, 18.5 * kStep));
    EXPECT_FALSE(Served(list, 19.0 * kStep));
    EXPECT_FALSE(Served(list, 30.0 * kStep));
    double out = 0.0;
    EXPECT_FALSE(InterpolateOne(list, Epoch(kWeek - 1, 600000.0), out));
}

TEST(PreciseInterpolation, AListTooShortServesNothing) {
    for (const int count : {0, 1, 5, 10}) {
        const OneSatSP3ValList list = MakeList(count, kWeek, Line);
        for (int half = 0; half <= 2 * count; ++half) {
            EXPECT_FALSE(Served(list, 0.5 * kStep * half)) << count << " entries, " << half;
        }
    }
}

TEST(PreciseInterpolation, OnlyElevenEntriesEnter) {
    // Between entries 9 and 10 the entries 5 to 15 count.
    const double time = 9.5 * kStep;
    const OneSatSP3ValList clean = MakeList(25, kWeek, Line);
    double expected = 0.0;
    ASSERT_TRUE(InterpolateOne(clean, Epoch(kWeek, time), expected));
    EXPECT_NEAR(expected, 95.0, 1e-7);
    for (int spoiled = 0; spoiled < 25; ++spoiled) {
        OneSatSP3ValList list = clean;
        list.values[static_cast<std::size_t>(spoiled)].second += 1e6;
        double out = 0.0;
        ASSERT_TRUE(InterpolateOne(list, Epoch(kWeek, time), out));
        if (spoiled >= 5 && spoiled <= 15) {
            EXPECT_GT(std::fabs(out - expected), 100.0) << spoiled;
        } else {
            EXPECT_EQ(out, expected) << spoiled;
        }
    }
}

TEST(PreciseInterpolation, AMissingValueAmongTheElevenFails) {
    for (int missing = 0; missing < 25; ++missing) {
        OneSatSP3ValList list = MakeList(25, kWeek, Line);
        list.values[static_cast<std::size_t>(missing)].second = 0.999999999999;
        EXPECT_EQ(Served(list, 9.5 * kStep), missing < 5 || missing > 15) << missing;
        // Even on an entry, where the last of the eleven has no weight.
        EXPECT_EQ(Served(list, 9.0 * kStep), missing < 5 || missing > 15) << missing;
    }
}

TEST(PreciseInterpolation, OnlyTheExactMarkerIsMissing) {
    for (const double value : {0.99999999999, 1.0, -0.999999999999, 0.9999999999991, 0.0}) {
        OneSatSP3ValList list = MakeList(25, kWeek, Line);
        list.values[10].second = value;
        EXPECT_TRUE(Served(list, 9.5 * kStep)) << value;
    }
    EXPECT_EQ(VORNEL_MISSING_PRECISE_VALUE, 0.999999999999);
}

// --- the values

TEST(PreciseInterpolation, PolynomialsOfDegreeTenComeBack) {
    // Near the origin of the day count, where the times keep all their digits.
    for (int degree = 0; degree <= 10; ++degree) {
        const auto power = [degree](double x) { return std::pow(x - 7.3, degree); };
        const OneSatSP3ValList list =
            MakeList(16, 0, [&power](int i) { return power(static_cast<double>(i)); });
        for (const double at : {4.0, 4.25, 6.5, 7.0, 8.125, 9.75}) {
            double out = 0.0;
            ASSERT_TRUE(InterpolateOne(list, Epoch(0, kStep * at), out));
            // Weights of the interpolation amplify the rounding of the largest value in the span.
            const double largest = std::pow(8.7, degree);
            EXPECT_NEAR(out, power(at), 1e-12 * largest) << "degree " << degree << " at " << at;
        }
    }
}

TEST(PreciseInterpolation, ATableEntryComesBack) {
    const OneSatSP3ValList list =
        MakeList(20, kWeek, [](int i) { return 26.5e6 * std::sin(0.13 * i + 0.4); });
    for (int i = 4; i <= 13; ++i) {
        double out = 0.0;
        ASSERT_TRUE(InterpolateOne(list, Epoch(kWeek, kStep * i), out));
        EXPECT_NEAR(out, 26.5e6 * std::sin(0.13 * i + 0.4), 1e-7) << i;
    }
}

TEST(PreciseInterpolation, AWeekIsCrossedWithoutASeam) {
    OneSatSP3ValList list;
    for (int i = 0; i < 20; ++i) {
        const double seconds = 604800.0 + kStep * (i - 10);
        list.values.emplace_back(
            seconds < 604800.0 ? Epoch(kWeek, seconds) : Epoch(kWeek + 1, seconds - 604800.0),
            7.0 * i);
    }
    double out = 0.0;
    ASSERT_TRUE(InterpolateOne(list, Epoch(kWeek, 604800.0 - 0.5 * kStep), out));
    EXPECT_NEAR(out, 7.0 * 9.5, 1e-7);
    ASSERT_TRUE(InterpolateOne(list, Epoch(kWeek + 1, 0.5 * kStep), out));
    EXPECT_NEAR(out, 7.0 * 10.5, 1e-7);
}

TEST(LagrangeInterpolation, BeyondTheLastPointTheLastFiveGoOn) {
    // Five points hold a polynomial of the fourth degree exactly; those before them lie elsewhere.
    const auto polynomial = [](double t) {
        return (((0.1 * t - 0.3) * t + 1.0) * t - 2.0) * t + 3.0;
    };
    std::vector<double> x, y;
    for (int i = 0; i < 12; ++i) {
        x.push_back(0.5 * i);
        y.push_back(i < 7 ? 1000.0 : polynomial(0.5 * i));
    }
    for (const double t : {5.6, 6.0, 7.25}) {
        EXPECT_NEAR(Lagrange(12, x.data(), y.data(), t), polynomial(t), 1e-9 * polynomial(t));
    }
}

TEST(LagrangeInterpolation, SmallTables) {
    const double x[] = {1.0, 3.0, 4.0};
    const double y[] = {5.0, 9.0, -2.0};
    EXPECT_EQ(Lagrange(0, x, y, 2.0), 0.0);
    EXPECT_EQ(Lagrange(-3, x, y, 2.0), 0.0);
    EXPECT_EQ(Lagrange(1, x, y, 2.0), 5.0);
    EXPECT_EQ(Lagrange(1, x, y, -7.0), 5.0);
    EXPECT_DOUBLE_EQ(Lagrange(2, x, y, 2.0), 7.0);
    EXPECT_DOUBLE_EQ(Lagrange(2, x, y, 5.0), 13.0);  // a line goes on beyond its points
    // The parabola through the three points: 5 + 2 (t - 1) - 13/3 (t - 1)(t - 3).
    EXPECT_NEAR(Lagrange(3, x, y, 2.0), 5.0 + 2.0 + 13.0 / 3.0, 1e-13);
    EXPECT_NEAR(Lagrange(3, x, y, 3.0), 9.0, 1e-13);
    EXPECT_NEAR(Lagrange(3, x, y, 3.5), 5.0 + 5.0 - 13.0 / 3.0 * 2.5 * 0.5, 1e-13);
}

TEST(LagrangeInterpolation, TakesFivePointsBeforeAndFiveAfterTheFirstAtOrAboveTheTime) {
    std::vector<double> x;
    std::vector<double> y;
    for (int i = 0; i < 30; ++i) {
        x.push_back(i);
        y.push_back(2.0 * i - 5.0);
    }
    for (const double t : {14.5, 15.0}) {  // the first at or above either is number 15
        for (std::size_t spoiled = 0; spoiled < 30; ++spoiled) {
            std::vector<double> bad = y;
            bad[spoiled] += 1e9;
            const double out = Lagrange(30, x.data(), bad.data(), t);
            const bool inSpan = spoiled >= 10 && spoiled <= 20;
            const bool counts = inSpan && (t < 15.0 || spoiled == 15);
            EXPECT_EQ(std::fabs(out - (2.0 * t - 5.0)) > 1.0, counts) << t << " " << spoiled;
        }
    }
}

TEST(LagrangeInterpolation, TheSpanIsCutAtTheEndsOfTheTable) {
    std::vector<double> x;
    std::vector<double> y;
    for (int i = 0; i < 30; ++i) {
        x.push_back(i);
        y.push_back(i * i);
    }
    // First at or above 1.5 is number 2: points 0 to 7. At or above 28.5 is number 29: 24 to 29.
    for (std::size_t spoiled = 0; spoiled < 30; ++spoiled) {
        std::vector<double> bad = y;
        bad[spoiled] += 1e9;
        EXPECT_EQ(std::fabs(Lagrange(30, x.data(), bad.data(), 1.5) - 2.25) > 1.0, spoiled <= 7);
        EXPECT_EQ(std::fabs(Lagrange(30, x.data(), bad.data(), 28.5) - 812.25) > 1.0,
                  spoiled >= 24);
    }
}

// --- the lists

TEST(PreciseLists, ValuesStandInTheOrderOfInput) {
    SP3ValList store;
    AddValue(store, 5, Epoch(kWeek, 900.0), 2.0);
    AddValue(store, 9, Epoch(kWeek, 0.0), 7.0);
    AddValue(store, 5, Epoch(kWeek, 0.0), 1.0);
    ASSERT_EQ(store.satellites.size(), 2U);
    EXPECT_EQ(store.satellites[0].satNumber, 5);
    EXPECT_EQ(store.satellites[1].satNumber, 9);
    ASSERT_EQ(store.satellites[0].values.size(), 2U);
    EXPECT_EQ(store.satellites[0].values[0].second, 2.0);
    EXPECT_EQ(store.satellites[0].values[1].second, 1.0);
    EXPECT_TRUE(store.satellites[0].values[0].first == Epoch(kWeek, 900.0));
}

TEST(PreciseLists, ARepeatedEpochReplacesTheEarlierValueAndMovesToTheEnd) {
    SP3ValList store;
    for (int i = 0; i < 4; ++i) {
        AddValue(store, 5, Epoch(kWeek, kStep * i), i);
    }
    AddValue(store, 5, Epoch(kWeek, kStep), 50.0);
    const OneSatSP3ValList* list = store.Find(5);
    ASSERT_NE(list, nullptr);
    ASSERT_EQ(list->values.size(), 4U);
    const double expected[] = {0.0, 2.0, 3.0, 50.0};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(list->values[i].second, expected[i]);
    }
    // The same epoch of another satellite is not touched.
    AddValue(store, 6, Epoch(kWeek, 0.0), -1.0);
    EXPECT_EQ(store.Find(5)->values.size(), 4U);
}

TEST(PreciseLists, EveryEarlierValueOfTheEpochGoes) {
    SP3ValList store;
    OneSatSP3ValList list;
    list.satNumber = 5;
    list.values.emplace_back(Epoch(kWeek, 0.0), 1.0);
    list.values.emplace_back(Epoch(kWeek, kStep), 2.0);
    list.values.emplace_back(Epoch(kWeek, 0.0), 3.0);
    store.satellites.push_back(list);
    AddValue(store, 5, Epoch(kWeek, 0.0), 4.0);
    ASSERT_EQ(store.satellites[0].values.size(), 2U);
    EXPECT_EQ(store.satellites[0].values[0].second, 2.0);
    EXPECT_EQ(store.satellites[0].values[1].second, 4.0);
}

TEST(PreciseLists, AreFoundByTheirNumber) {
    SP3ValList store;
    EXPECT_EQ(store.Find(5), nullptr);
    AddValue(store, 5, Epoch(kWeek, 0.0), 1.0);
    EXPECT_EQ(store.Find(5), &store.satellites[0]);
    EXPECT_EQ(store.Find(6), nullptr);
    static_assert(std::has_virtual_destructor_v<SP3ValList>);
    static_assert(std::has_virtual_destructor_v<OneSatSP3ValList>);
}

TEST(PreciseLists, AnAssignedListHoldsAllAndIsItsOwn) {
    SP3ValList store;
    AddValue(store, 5, Epoch(kWeek, 0.0), 1.0);
    AddValue(store, 5, Epoch(kWeek, kStep), 2.0);
    OneSatSP3ValList assigned;
    assigned.satNumber = 9;
    assigned = *store.Find(5);
    AddValue(store, 5, Epoch(kWeek, 0.0), 3.0);
    EXPECT_EQ(assigned.satNumber, 5);
    ASSERT_EQ(assigned.values.size(), 2U);
    EXPECT_EQ(assigned.values[0].second, 1.0);
    EXPECT_EQ(assigned.values[1].second, 2.0);
    EXPECT_TRUE(assigned.IsAscending());
}

TEST(PreciseLists, FourStoresAreKeptApart) {
    for (int one = 0; one < 4; ++one) {
        EXPECT_EQ(&PreciseStore(one), &PreciseStore(one));
        for (int other = 0; other < one; ++other) {
            EXPECT_NE(&PreciseStore(one), &PreciseStore(other));
        }
    }
}

// --- positions

// A satellite in a circular orbit, seen from the turning earth.
XYZPosition CircularOrbit(double seconds) {
    const double radius = 26559.7e3;
    const double inclination = 0.96;
    const double latitude = 1.4585e-4 * seconds + 0.7;
    const double node = 1.1 - 7.2921151467e-05 * seconds;
    const double x = radius * std::cos(latitude);
    const double y = radius * std::sin(latitude);
    return {x * std::cos(node) - y * std::cos(inclination) * std::sin(node),
            x * std::sin(node) + y * std::cos(inclination) * std::cos(node),
            y * std::sin(inclination)};
}
double SteadyClock(double seconds) {
    return 2e-5 + 3e-11 * seconds;
}

class PrecisePosition : public testing_support::EmptyOrbitStores {
  protected:
    // The tables of a satellite over `count` entries.
    static void Tabulate(int number, int count) {
        for (int i = 0; i < count; ++i) {
            const double seconds = kStep * i;
            const XYZPosition at = CircularOrbit(seconds);
            const double values[] = {at.X, at.Y, at.Z, SteadyClock(seconds)};
            for (int component = 0; component < 4; ++component) {
                AddValue(PreciseStore(component), number, Epoch(kWeek, seconds), values[component]);
            }
        }
    }

    bool Ask(double seconds, int number) {
        position_ = XYZPosition(1.0, 2.0, 3.0);
        clock_ = 4.0;
        return GetPrecisePosition(Epoch(kWeek, seconds), number, position_, clock_);
    }

    void ExpectNothing(double seconds, int number) {
        EXPECT_FALSE(Ask(seconds, number));
        EXPECT_EQ(position_.X, 0.0);
        EXPECT_EQ(position_.Y, 0.0);
        EXPECT_EQ(position_.Z, 0.0);
        EXPECT_EQ(clock_, 0.0);
    }

    XYZPosition position_;
    double clock_ = 0.0;
};

TEST_F(PrecisePosition, FollowsACircularOrbit) {
    Tabulate(kSat, 40);
    for (double seconds = 4.0 * kStep; seconds < 34.0 * kStep; seconds += 173.0) {
        ASSERT_TRUE(Ask(seconds, kSat)) << seconds;
        // The day count of a date resolves a sixth of a microsecond: under a millimetre of the way.
        EXPECT_LT(Distance(position_, CircularOrbit(seconds)), 3e-3) << seconds;
        EXPECT_NEAR(clock_, SteadyClock(seconds), 1e-15) << seconds;
    }
}

TEST_F(PrecisePosition, UnknownSatellitesAndTimesGiveZeros) {
    Tabulate(kSat, 12);
    EXPECT_TRUE(Ask(5.5 * kStep, kSat));
    ExpectNothing(5.5 * kStep, kSat + 1);
    ExpectNothing(3.0 * kStep, kSat);
    ExpectNothing(6.0 * kStep, kSat);
    ExpectNothing(100.0 * kStep, kSat);
}

TEST_F(PrecisePosition, EveryComponentMustBeThere) {
    for (int component = 0; component < 4; ++component) {
        SCOPED_TRACE(component);
        testing_support::ClearOrbitStores();
        Tabulate(kSat, 12);
        PreciseStore(component).satellites.clear();
        EXPECT_FALSE(Ask(5.5 * kStep, kSat));
        testing_support::ClearOrbitStores();
        Tabulate(kSat, 12);
        AddValue(PreciseStore(component), kSat, Epoch(kWeek, 11.0 * kStep),
                 VORNEL_MISSING_PRECISE_VALUE);
        EXPECT_FALSE(Ask(5.5 * kStep, kSat));
        EXPECT_TRUE(Ask(4.5 * kStep, kSat));  // the twelfth entry is not among the eleven
    }
}

TEST_F(PrecisePosition, SatellitesAreKeptApartByTheirNumberAcrossTheSystems) {
    Tabulate(1, 12);
    for (int component = 0; component < 4; ++component) {
        for (int i = 0; i < 12; ++i) {
            AddValue(PreciseStore(component), 36, Epoch(kWeek, kStep * i), 1000.0 + component);
        }
    }
    ASSERT_TRUE(Ask(5.5 * kStep, 36));
    EXPECT_NEAR(position_.X, 1000.0, 1e-9);
    EXPECT_NEAR(position_.Y, 1001.0, 1e-9);
    EXPECT_NEAR(position_.Z, 1002.0, 1e-9);
    EXPECT_NEAR(clock_, 1003.0, 1e-9);
    ASSERT_TRUE(Ask(5.5 * kStep, 1));
    EXPECT_LT(Distance(position_, CircularOrbit(5.5 * kStep)), 3e-3);
}

}  // namespace
}  // namespace vornel
