// Computed rover-minus-base values of one satellite: the model of the epoch and the antennas put
// together.
#include "difference/single_difference.h"

#include <gtest/gtest.h>

#include <cmath>

#include "exports/process_fixture.h"
#include "run/synthetic_session.h"

namespace vornel {
namespace {

constexpr double kLight = 299792458.0;

class SingleDifferences : public test::ProcessTest {
  protected:
    void SetUp() override {
        ProcessTest::SetUp();
        session_.AddSky(kGps, 2, 3);
        session_.AddSky(kGlonass, 3, 2, 30.0);
        session_.AddSky(kGalileo, 2, 4, 60.0);
        session_.epochCount = 1;
        session_.pcoRover[0] = 0.09;
        session_.pcoRover[1] = 0.12;
        session_.pcoBase[0] = 0.06;
        session_.pcoBase[1] = 0.05;
        session_.heightRover = 1.7;
        session_.heightBase = 0.2;
        Make();
    }

    void Make() {
        test::HandOver(control_, session_);
        solver_ = test::MakeSolver(control_);
    }

    SDObsData& TheEpoch() { return solver_->epochs[0]; }

    test::SyntheticSession session_;
    CTRLSolve control_;
    std::unique_ptr<StaticSolve> solver_;
};

TEST_F(SingleDifferences, OneFrequencyIsACombinationOfItsOwn) {
    const Carriers carriers = CarrierTable(1, 2).Of(kGps, 0);
    const PhaseCombination first = SingleFrequency(carriers, 1);
    EXPECT_EQ(first.a, 1.0);
    EXPECT_EQ(first.b, 0.0);
    EXPECT_DOUBLE_EQ(first.wavelength, kLight / 1575.42e6);
    EXPECT_EQ(first.ionoFactor, 1.0);
    const PhaseCombination second = SingleFrequency(carriers, 2);
    EXPECT_EQ(second.a, 0.0);
    EXPECT_EQ(second.b, 1.0);
    EXPECT_DOUBLE_EQ(second.wavelength, kLight / 1227.6e6);
    EXPECT_DOUBLE_EQ(second.ionoFactor, (1575.42 / 1227.6) * (1575.42 / 1227.6));
}

TEST_F(SingleDifferences, CarriersOfASatelliteFollowSystemChannelAndBands) {
    session_.galFreq1 = 5;
    session_.galFreq2 = 3;
    Make();
    const SingleDifferenceModel model(*solver_);
    EXPECT_DOUBLE_EQ(model.CarriersOf(TheEpoch(), 3).frequency2, 1227.6e6);
    for (const test::SyntheticSatellite& satellite : session_.satellites) {
        if (SplitSatNumber(satellite.number) == kGlonass) {
            const Carriers carriers = model.CarriersOf(TheEpoch(), satellite.number);
            EXPECT_DOUBLE_EQ(carriers.frequency1, 1602e6 + 562.5e3 * satellite.channel);
            EXPECT_DOUBLE_EQ(carriers.frequency2, 1246e6 + 437.5e3 * satellite.channel);
        }
    }
    const Carriers galileo = model.CarriersOf(TheEpoch(), 107);
    EXPECT_DOUBLE_EQ(galileo.frequency1, 1278.75e6);
    EXPECT_DOUBLE_EQ(galileo.frequency2, 1207.14e6);
}

TEST_F(SingleDifferences, TheValueIsTheEpochsModelAndTheAntennasApart) {
    const SingleDifferenceModel model(*solver_);
    for (const test::SyntheticSatellite& satellite : session_.satellites) {
        const Carriers carriers = model.CarriersOf(TheEpoch(), satellite.number);
        for (const int frequency : {1, 2}) {
            const PhaseCombination combination = SingleFrequency(carriers, frequency);
            SDObsData copy = TheEpoch();
            double unit[3];
            double value = 0.0;
            copy.Model(combination.ionoFactor, satellite.number, session_.rover, session_.base,
                       unit, value);
            const ComputedDifference computed =
                model.Compute(0, satellite.number, carriers, combination, session_.rover);
            EXPECT_EQ(computed.model, value);
            for (int k = 0; k < 3; ++k) {
                EXPECT_EQ(computed.unit[k], unit[k]);
            }
            const int s = satellite.number - 1;
            const double rover = frequency == 1 ? 1.79 : 1.82;
            const double base = frequency == 1 ? 0.26 : 0.25;
            const double antenna =
                rover * std::sin(copy.azelA[s][1]) - base * std::sin(copy.azelB[s][1]);
            EXPECT_NEAR(computed.antenna, antenna, 1e-10);
            EXPECT_EQ(computed.WithAntenna(), computed.model - computed.antenna);
        }
    }
}

TEST_F(SingleDifferences, TheDirectionIsThatOfTheRoverAskedFor) {
    const SingleDifferenceModel model(*solver_);
    const Carriers carriers = model.CarriersOf(TheEpoch(), 3);
    const PhaseCombination combination = SingleFrequency(carriers, 1);
    TheEpoch().azelA[2][1] = -9.0;
    TheEpoch().sdRange[2] = -9.0;
    const XYZPosition rover = test::Shifted(session_.rover, 5000.0, 0.0, 0.0);
    const ComputedDifference computed = model.Compute(0, 3, carriers, combination, rover);
    const XYZPosition satellite(TheEpoch().satPosA[2]);
    const NEUPosition local = XYZPosition(satellite).ToNEU(rover);
    const double elevation = std::atan2(local.U, std::hypot(local.N, local.E));
    EXPECT_NEAR(computed.sinElevation, std::sin(elevation), 1e-9);
    const double range = Distance(satellite, rover);
    EXPECT_NEAR(computed.unit[0], (rover.X - satellite.X) / range, 1e-8);
    EXPECT_NEAR(computed.unit[1], (rover.Y - satellite.Y) / range, 1e-8);
    EXPECT_NEAR(computed.unit[2], (rover.Z - satellite.Z) / range, 1e-8);
    // The record is read alone.
    EXPECT_EQ(TheEpoch().azelA[2][1], -9.0);
    EXPECT_EQ(TheEpoch().sdRange[2], -9.0);
    EXPECT_NEAR(computed.antenna,
                1.79 * std::sin(elevation) - 0.26 * std::sin(TheEpoch().azelB[2][1]), 1e-9);
}

TEST_F(SingleDifferences, EveryChangeOfPositionTroposphereOrCombinationIsFollowed) {
    const SingleDifferenceModel floating(*solver_);
    const SingleDifferenceModel fixed(*solver_, ModelForm::kMops);
    const XYZPosition rovers[] = {session_.rover,
                                  test::Shifted(session_.rover, 3000.0, 10.0, 400.0)};
    const SDObsData untouched = TheEpoch();
    // Each of the turns differs from the one before in something else; the last goes back to the
    // first.
    const int turns[][4] = {{3, 0, 0, 1}, {3, 0, 1, 1}, {3, 0, 1, 2}, {3, 1, 1, 2}, {3, 1, 0, 2},
                            {4, 1, 0, 2}, {4, 0, 0, 2}, {3, 0, 1, 1}, {3, 0, 0, 1}};
    for (const auto& [sat, place, mops, frequency] : turns) {
        SCOPED_TRACE(testing::Message() << sat << ' ' << place << ' ' << mops << ' ' << frequency);
        const Carriers carriers = floating.CarriersOf(untouched, sat);
        const PhaseCombination combination = SingleFrequency(carriers, frequency);
        SDObsData expected = untouched;
        double unit[3];
        double value = 0.0;
        if (mops == 1) {
            expected.ModelFixed(combination.ionoFactor, sat, rovers[place], session_.base, unit,
                                value);
        } else {
            expected.Model(combination.ionoFactor, sat, rovers[place], session_.base, unit, value);
        }
        const ComputedDifference computed =
            (mops == 1 ? fixed : floating).Compute(0, sat, carriers, combination, rovers[place]);
        EXPECT_EQ(computed.model, value);
        for (int k = 0; k < 3; ++k) {
            EXPECT_EQ(computed.unit[k], unit[k]);
        }
        EXPECT_EQ(computed.sinElevation, std::sin(expected.azelA[sat - 1][1]));
    }
}

TEST_F(SingleDifferences, TheFixedSolutionsEvaluationDiffersByItsTroposphereAlone) {
    const SingleDifferenceModel floating(*solver_);
    const SingleDifferenceModel fixed(*solver_, ModelForm::kMops);
    const Carriers carriers = floating.CarriersOf(TheEpoch(), 3);
    const PhaseCombination combination = SingleFrequency(carriers, 1);
    const ComputedDifference one = floating.Compute(0, 3, carriers, combination, session_.rover);
    const ComputedDifference two = fixed.Compute(0, 3, carriers, combination, session_.rover);
    SDObsData configured = TheEpoch();
    SDObsData mops = TheEpoch();
    double unit[3];
    double value = 0.0;
    configured.Model(1.0, 3, session_.rover, session_.base, unit, value);
    mops.ModelFixed(1.0, 3, session_.rover, session_.base, unit, value);
    EXPECT_NE(mops.sdTrop[2], configured.sdTrop[2]);
    EXPECT_NEAR(two.model - one.model, mops.sdTrop[2] - configured.sdTrop[2], 1e-8);
    EXPECT_EQ(two.antenna, one.antenna);
}

TEST_F(SingleDifferences, AMissingGalileoBandTakesTheUsualWavelengthForItsAntennaTerm) {
    solver_->config.galFreq1 = solver_->config.galFreq2 = 1;
    const SingleDifferenceModel model(*solver_);
    const Carriers carriers = model.CarriersOf(TheEpoch(), 107);
    EXPECT_EQ(carriers.wavelength2, 0.0);
    const PhaseCombination combination = SingleFrequency(carriers, 2);
    const ComputedDifference computed =
        model.Compute(0, 107, carriers, combination, session_.rover);
    EXPECT_NEAR(
        computed.antenna,
        1.82 * std::sin(TheEpoch().azelA[106][1]) - 0.25 * std::sin(TheEpoch().azelB[106][1]),
        1e-10);
    EXPECT_TRUE(std::isfinite(computed.model));
}

}  // namespace
}  // namespace vornel
