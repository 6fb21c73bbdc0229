// The computed rover-minus-base value of a satellite against an independent evaluation.
#include <gtest/gtest.h>

#include <cmath>

#include "foundation/satellite.h"
#include "observation/ionosphere.h"
#include "observation/model_cache.h"
#include "observation/observation_records.h"
#include "observation/reference_atmosphere.h"
#include "observation/reference_geometry.h"
#include "observation/troposphere.h"

namespace vornel {
namespace {

using reference::Direction;
using reference::DirectionOf;
using reference::kLightSpeed;
using reference::Radians;
using reference::Real;
using reference::Station;
using reference::Vector;

constexpr int kNumber = 42;
constexpr int kIndex = kNumber - 1;
constexpr double kAlpha[4] = {1.1176e-08, 7.4506e-09, -5.9605e-08, -5.9605e-08};
constexpr double kBeta[4] = {90112.0, 0.0, -196610.0, -65536.0};
constexpr double kSeconds = 50000.0;  // of week 2204: Sunday 3 April 2022, day 93 of that year
constexpr int kDayOfYear = 93;

const Station kRover{Radians(49.14L), Radians(12.88L), 666.0L};
const Station kBase{Radians(48.65L), Radians(13.40L), 310.0L};

void Put(double (&to)[3], const Vector& from) {
    to[0] = static_cast<double>(from.x);
    to[1] = static_cast<double>(from.y);
    to[2] = static_cast<double>(from.z);
}

class BetweenStations : public ::testing::Test {
  protected:
    SDObsData record_{1};
    Vector satelliteA_ = kRover.Towards(1.2L, 0.6L, 2.23e7L);
    Vector satelliteB_ = satelliteA_ + Vector{15.0L, -8.0L, 12.0L};
    double unit_[3] = {};
    double value_ = 0.0;

    void SetUp() override {
        SetSurfaceWeather(15.0, 950.0, 60.0);
        CurrentIonosphere() = IonosphereParameters();
        record_.epoch = Epoch(2204, kSeconds);
        record_.satList = {kNumber};
        Put(record_.satPosA[kIndex], satelliteA_);
        Put(record_.satPosB[kIndex], satelliteB_);
        record_.satClockA[kIndex] = 1.25e-4;
        record_.satClockB[kIndex] = 1.2500001e-4;
        // Not the true direction: what is stored counts.
        record_.azelB[kIndex][0] = 1.0;
        record_.azelB[kIndex][1] = 0.5;
    }
    void TearDown() override {
        SetSurfaceWeather(18.0, 1013.25, 50.0);
        CurrentIonosphere() = IonosphereParameters();
    }

    void GiveIonosphere() {
        for (int n = 0; n < 4; ++n) {
            CurrentIonosphere().alpha[n] = kAlpha[n];
            CurrentIonosphere().beta[n] = kBeta[n];
        }
        CurrentIonosphere().ionoValid = 1;
    }
    void Model(double ionoFactor, const Station& rover = kRover, const Station& base = kBase) {
        record_.Model(ionoFactor, kNumber, rover.Position(), base.Position(), unit_, value_);
    }
    void ModelFixed(double ionoFactor, const Station& rover = kRover, const Station& base = kBase) {
        record_.ModelFixed(ionoFactor, kNumber, rover.Position(), base.Position(), unit_, value_);
    }

    Real RangeTerm(const Station& rover, const Station& base) const {
        return Norm(satelliteA_ - rover.Cartesian()) - kLightSpeed * record_.satClockA[kIndex] -
               Norm(satelliteB_ - base.Cartesian()) + kLightSpeed * record_.satClockB[kIndex];
    }
    Real TropoTerm(int model, const Station& rover, const Station& base) const {
        const reference::Weather weather{15.0L, 950.0L, 60.0L};
        const Real elevationA = DirectionOf(rover, satelliteA_).elevation;
        const Real elevationB = record_.azelB[kIndex][1];
        if (model == 0) {
            return reference::HopfieldDelay(weather, rover.height, elevationA) -
                   reference::HopfieldDelay(weather, base.height, elevationB);
        }
        return reference::SaastamoinenDelay(weather, rover.latitude, rover.height, elevationA) -
               reference::SaastamoinenDelay(weather, base.latitude, base.height, elevationB);
    }
    Real MopsTerm(const Station& rover, const Station& base) const {
        return reference::MopsDelay(kDayOfYear, rover.latitude, rover.height,
                                    DirectionOf(rover, satelliteA_).elevation) -
               reference::MopsDelay(kDayOfYear, base.latitude, base.height,
                                    record_.azelB[kIndex][1]);
    }
    Real ShellTerm(const Station& rover, const Station& base) const {
        return reference::ShellDelay(rover, kSeconds, DirectionOf(rover, satelliteA_).elevation) -
               reference::ShellDelay(base, kSeconds, record_.azelB[kIndex][1]);
    }
    Real BroadcastIonoTerm(const Station& rover, const Station& base) const {
        const Direction direction = DirectionOf(rover, satelliteA_);
        return reference::BroadcastIonoDelay(kAlpha, kBeta, rover, kSeconds, direction.elevation,
                                             direction.azimuth) -
               reference::BroadcastIonoDelay(kAlpha, kBeta, base, kSeconds,
                                             record_.azelB[kIndex][1], record_.azelB[kIndex][0]);
    }
    void ExpectTerms(Real range, Real tropo, Real iono, double ionoFactor) {
        EXPECT_NEAR(record_.sdRange[kIndex], static_cast<double>(range), 2e-8);
        EXPECT_NEAR(record_.sdTrop[kIndex], static_cast<double>(tropo), 1e-8);
        EXPECT_NEAR(record_.sdIono[kIndex], static_cast<double>(iono), 1e-8);
        EXPECT_NEAR(value_, static_cast<double>(tropo + range - iono * ionoFactor), 1e-7);
    }
};

TEST_F(BetweenStations, TheValueIsRangeAndTroposphereLessTheScaledIonosphere) {
    EXPECT_EQ(record_.epoch.DayOfYear(), kDayOfYear);
    for (const int model : {0, 1}) {
        record_.tropoModel = model;
        for (const double ionoFactor : {1.0, 1.6469444444444445, -1.28}) {
            SCOPED_TRACE(testing::Message() << "model " << model << ", factor " << ionoFactor);
            Model(ionoFactor);
            ExpectTerms(RangeTerm(kRover, kBase), TropoTerm(model, kRover, kBase),
                        ShellTerm(kRover, kBase), ionoFactor);
        }
    }
}

TEST_F(BetweenStations, TheBroadcastIonosphereTakesTheSecondsOfTheWeek) {
    GiveIonosphere();
    Model(1.0);
    ExpectTerms(RangeTerm(kRover, kBase), TropoTerm(1, kRover, kBase),
                BroadcastIonoTerm(kRover, kBase), 1.0);
    const double sunday = record_.sdIono[kIndex];
    record_.epoch = Epoch(2204, kSeconds + 3.0 * 86400.0);
    Model(1.0);
    EXPECT_GT(std::fabs(record_.sdIono[kIndex] - sunday), 1e-3);
}

TEST_F(BetweenStations, WithoutATroposphereModelThatTermIsZero) {
    record_.tropoModel = 2;
    Model(1.0);
    ExpectTerms(RangeTerm(kRover, kBase), 0.0L, ShellTerm(kRover, kBase), 1.0);
}

TEST_F(BetweenStations, TheFixedSolutionTakesTheClimateWhateverTheModelNumber) {
    for (const int model : {0, 1, 2}) {
        record_.tropoModel = model;
        for (const double ionoFactor : {1.0, -0.7}) {
            ModelFixed(ionoFactor);
            ExpectTerms(RangeTerm(kRover, kBase), MopsTerm(kRover, kBase), ShellTerm(kRover, kBase),
                        ionoFactor);
        }
    }
    // The weather does not matter, the day does.
    const double spring = record_.sdTrop[kIndex];
    SetSurfaceWeather(30.0, 1020.0, 90.0);
    ModelFixed(1.0);
    EXPECT_EQ(record_.sdTrop[kIndex], spring);
    record_.epoch = Epoch(2204 + 20, kSeconds);
    ModelFixed(1.0);
    EXPECT_GT(std::fabs(record_.sdTrop[kIndex] - spring), 1e-3);
}

TEST_F(BetweenStations, BothFormsShareRangeIonosphereAndUnitVector) {
    Model(1.5);
    double unit[3];
    double value = 0.0;
    SDObsData other(record_);
    other.ModelFixed(1.5, kNumber, kRover.Position(), kBase.Position(), unit, value);
    EXPECT_EQ(other.sdRange[kIndex], record_.sdRange[kIndex]);
    EXPECT_EQ(other.sdIono[kIndex], record_.sdIono[kIndex]);
    for (int axis = 0; axis < 3; ++axis) {
        EXPECT_EQ(unit[axis], unit_[axis]);
    }
}

TEST_F(BetweenStations, TheUnitVectorPointsToTheRoverAndIsDividedByTheRangeLessTheClock) {
    record_.satClockA[kIndex] = 1e-3;  // 300 km, which lengthen the vector by more than a hundredth
    for (const bool fixed : {false, true}) {
        fixed ? ModelFixed(1.0) : Model(1.0);
        const Vector line = kRover.Cartesian() - satelliteA_;
        const Real divisor = Norm(line) - kLightSpeed * 1e-3L;
        EXPECT_NEAR(unit_[0], static_cast<double>(line.x / divisor), 1e-14);
        EXPECT_NEAR(unit_[1], static_cast<double>(line.y / divisor), 1e-14);
        EXPECT_NEAR(unit_[2], static_cast<double>(line.z / divisor), 1e-14);
        const double length =
            std::sqrt(unit_[0] * unit_[0] + unit_[1] * unit_[1] + unit_[2] * unit_[2]);
        EXPECT_GT(length, 1.013);
    }
}

TEST_F(BetweenStations, TheBasePlaysNoPartInTheUnitVector) {
    Model(1.0);
    const double before[3] = {unit_[0], unit_[1], unit_[2]};
    record_.satClockB[kIndex] = 9e-4;
    record_.satPosB[kIndex][0] += 1e6;
    Model(1.0, kRover, Station{Radians(20.0L), Radians(30.0L), 50.0L});
    for (int axis = 0; axis < 3; ++axis) {
        EXPECT_EQ(unit_[axis], before[axis]);
    }
}

TEST_F(BetweenStations, EachStationIsPairedWithItsOwnSatellite) {
    record_.tropoModel = 2;
    satelliteB_ = satelliteA_ + Vector{1e5L, 2e5L, -3e5L};
    Put(record_.satPosB[kIndex], satelliteB_);
    Model(0.0);
    EXPECT_NEAR(value_, static_cast<double>(RangeTerm(kRover, kBase)), 2e-8);
}

TEST_F(BetweenStations, TheRoversDirectionIsRefreshedAndTheBasesKept) {
    for (const bool fixed : {false, true}) {
        record_.azelA[kIndex][0] = -9.0;
        record_.azelA[kIndex][1] = -9.0;
        const Station moved{Radians(40.0L), Radians(20.0L), 100.0L};
        fixed ? ModelFixed(1.0, moved) : Model(1.0, moved);
        const Direction direction = DirectionOf(moved, satelliteA_);
        EXPECT_NEAR(record_.azelA[kIndex][0], static_cast<double>(direction.azimuth), 1e-9);
        EXPECT_NEAR(record_.azelA[kIndex][1], static_cast<double>(direction.elevation), 1e-9);
        EXPECT_EQ(record_.azelB[kIndex][0], 1.0);
        EXPECT_EQ(record_.azelB[kIndex][1], 0.5);
    }
}

TEST_F(BetweenStations, OtherSatellitesAreNotTouched) {
    Model(1.0);
    ModelFixed(1.0);
    for (int s = 0; s < kSatelliteCount; ++s) {
        if (s != kIndex) {
            EXPECT_EQ(record_.sdRange[s], 0.0);
            EXPECT_EQ(record_.sdIono[s], 0.0);
            EXPECT_EQ(record_.sdTrop[s], 0.0);
            EXPECT_EQ(record_.azelA[s][1], 0.0);
        }
    }
}

TEST_F(BetweenStations, TheCacheFollowsTheTroposphereTheBaseAndTheRover) {
    // One of the three changes at a time, and each comes back.
    const Station otherBase{Radians(48.70L), Radians(13.30L), 820.0L};
    const Station otherRover{Radians(49.10L), Radians(12.80L), 90.0L};
    constexpr double kIonoFactor = 1.5;
    ModelCache cache;
    for (const int model : {1, 0, 1}) {
        record_.tropoModel = model;
        for (const Station& rover : {kRover, otherRover, kRover}) {
            for (const Station& base : {kBase, otherBase, kBase}) {
                const ModelledSatellite modelled =
                    cache.Evaluate(ModelForm::kConfigured, kIonoFactor, record_, 0, kNumber,
                                   rover.Position(), base.Position());
                const Real expected = RangeTerm(rover, base) + TropoTerm(model, rover, base) -
                                      ShellTerm(rover, base) * kIonoFactor;
                EXPECT_NEAR(modelled.value, static_cast<double>(expected), 1e-7);
            }
        }
    }
}

TEST_F(BetweenStations, RepeatedCallsGiveTheSame) {
    for (const bool fixed : {false, true}) {
        fixed ? ModelFixed(1.3) : Model(1.3);
        const double value = value_;
        const double unit[3] = {unit_[0], unit_[1], unit_[2]};
        for (int round = 0; round < 3; ++round) {
            fixed ? ModelFixed(1.3) : Model(1.3);
            EXPECT_EQ(value_, value);
            for (int axis = 0; axis < 3; ++axis) {
                EXPECT_EQ(unit_[axis], unit[axis]);
            }
        }
    }
}

TEST_F(BetweenStations, WithoutAFactorTheIonosphereIsRefreshedButDoesNotCount) {
    for (const bool fixed : {false, true}) {
        record_.sdIono[kIndex] = 1e6;
        fixed ? ModelFixed(0.0) : Model(0.0);
        EXPECT_NEAR(record_.sdIono[kIndex], static_cast<double>(ShellTerm(kRover, kBase)), 1e-8);
        EXPECT_NE(record_.sdIono[kIndex], 0.0);
        const Real tropo = fixed ? MopsTerm(kRover, kBase) : TropoTerm(1, kRover, kBase);
        EXPECT_NEAR(value_, static_cast<double>(RangeTerm(kRover, kBase) + tropo), 1e-7);
    }
}

TEST_F(BetweenStations, AStationAboveTheTroposphereLeavesTheOthersDelay) {
    Station high = kRover;
    high.height = 10001.0L;
    const reference::Weather weather{15.0L, 950.0L, 60.0L};
    Model(1.0, high, kBase);
    EXPECT_NEAR(record_.sdTrop[kIndex],
                -static_cast<double>(
                    reference::SaastamoinenDelay(weather, kBase.latitude, kBase.height, 0.5L)),
                1e-8);
    ModelFixed(1.0, high, kBase);
    EXPECT_NEAR(
        record_.sdTrop[kIndex],
        -static_cast<double>(reference::MopsDelay(kDayOfYear, kBase.latitude, kBase.height, 0.5L)),
        1e-8);
    Model(1.0, kRover, high);
    EXPECT_NEAR(
        record_.sdTrop[kIndex],
        static_cast<double>(reference::SaastamoinenDelay(
            weather, kRover.latitude, kRover.height, DirectionOf(kRover, satelliteA_).elevation)),
        1e-8);
}

TEST_F(BetweenStations, AStationAboveTheIonosphereLeavesTheOthersDelay) {
    Station high = kRover;
    high.height = 100001.0L;
    Model(1.0, high, kBase);
    EXPECT_NEAR(record_.sdIono[kIndex],
                -static_cast<double>(reference::ShellDelay(kBase, kSeconds, 0.5L)), 1e-8);
    Model(1.0, kRover, high);
    EXPECT_NEAR(record_.sdIono[kIndex],
                static_cast<double>(reference::ShellDelay(
                    kRover, kSeconds, DirectionOf(kRover, satelliteA_).elevation)),
                1e-8);
}

TEST_F(BetweenStations, ASatelliteWithoutAPositionIsAtTheCentreOfTheEarth) {
    record_.satPosA[kIndex][0] = 0.0;
    record_.satPosA[kIndex][1] = 0.0;
    record_.satPosA[kIndex][2] = 0.0;
    record_.satClockA[kIndex] = 0.0;
    satelliteA_ = Vector{};
    Model(1.0);
    const Real centre = Norm(kRover.Cartesian());
    EXPECT_NEAR(record_.sdRange[kIndex],
                static_cast<double>(centre - Norm(satelliteB_ - kBase.Cartesian()) +
                                    kLightSpeed * record_.satClockB[kIndex]),
                2e-8);
    // Below the horizon the troposphere is silent, and the unit vector points outwards.
    EXPECT_LT(record_.azelA[kIndex][1], -1.5);
    const Vector outwards = (1.0L / centre) * kRover.Cartesian();
    EXPECT_NEAR(unit_[0], static_cast<double>(outwards.x), 1e-14);
    EXPECT_NEAR(unit_[1], static_cast<double>(outwards.y), 1e-14);
    EXPECT_NEAR(unit_[2], static_cast<double>(outwards.z), 1e-14);
}

TEST_F(BetweenStations, ARoverExactlyBelowTheSatelliteHasAnElevationOfPi) {
    // On the meridian of Greenwich the east part vanishes; a satellite is looked for, step by step
    // of the last digit, whose north part does so too.
    const Station station{Radians(45.0L), 0.0L, 0.0L};
    const XYZPosition rover(static_cast<double>(station.Cartesian().x), 0.0,
                            static_cast<double>(station.Cartesian().z));
    XYZPosition above;
    bool found = false;
    for (int start = 0; start < 200 && !found; ++start) {
        const Vector near = station.Towards(0.0L, reference::kPi / 2.0L, 2.0e7L + 1000.0L * start);
        above = XYZPosition(static_cast<double>(near.x), 0.0, static_cast<double>(near.z));
        for (int step = 0; step < 400; ++step) {
            above.Z = std::nextafter(above.Z, step < 200 ? 1e9 : 0.0);
            if (step == 200) {
                above.Z = static_cast<double>(near.z);
            }
            const NEUPosition local = above.ToNEU(rover);
            if (local.N == 0.0 && local.E == 0.0) {
                found = true;
                break;
            }
        }
    }
    ASSERT_TRUE(found);
    record_.satPosA[kIndex][0] = above.X;
    record_.satPosA[kIndex][1] = above.Y;
    record_.satPosA[kIndex][2] = above.Z;
    for (const bool fixed : {false, true}) {
        if (fixed) {
            record_.ModelFixed(1.0, kNumber, rover, kBase.Position(), unit_, value_);
        } else {
            record_.Model(1.0, kNumber, rover, kBase.Position(), unit_, value_);
        }
        EXPECT_EQ(record_.azelA[kIndex][0], 0.0);
        EXPECT_EQ(record_.azelA[kIndex][1], 3.141592653589793);
    }
}

TEST_F(BetweenStations, TheFirstAndTheLastNumberUseTheEndsOfTheArrays) {
    for (const int number : {1, kSatelliteCount}) {
        Put(record_.satPosA[number - 1], satelliteA_);
        Put(record_.satPosB[number - 1], satelliteB_);
        record_.azelB[number - 1][1] = 0.5;
        record_.Model(1.0, number, kRover.Position(), kBase.Position(), unit_, value_);
        EXPECT_NEAR(record_.sdRange[number - 1],
                    static_cast<double>(Norm(satelliteA_ - kRover.Cartesian()) -
                                        Norm(satelliteB_ - kBase.Cartesian())),
                    2e-8);
    }
}

}  // namespace
}  // namespace vornel
