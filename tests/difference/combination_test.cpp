// Phase combinations of the solve models: coefficients, wavelengths, ionosphere and the splitting
// of the ionosphere-free ambiguity, from the frequencies of the interface documents.
#include "difference/combination.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "foundation/satellite.h"

namespace vornel {
namespace {

constexpr double kLight = 299792458.0;
constexpr double kL1 = 1575.42e6;

struct Signals {
    int system;
    int channel;
    int galFreq1, galFreq2;
    double f1, f2;

    Carriers Table() const { return CarrierTable(galFreq1, galFreq2).Of(system, channel); }
};

std::vector<Signals> AllSignals() {
    std::vector<Signals> signals{{kGps, 0, 1, 2, 1575.42e6, 1227.6e6},
                                 {kBds, 0, 1, 2, 1561.098e6, 1207.14e6},
                                 {kGalileo, 0, 1, 2, 1575.42e6, 1176.45e6},
                                 {kGalileo, 0, 5, 3, 1278.75e6, 1207.14e6},
                                 {kGalileo, 0, 4, 1, 1191.795e6, 1575.42e6}};
    for (int channel = -7; channel <= 6; ++channel) {
        signals.push_back(
            {kGlonass, channel, 1, 2, 1602e6 + 562.5e3 * channel, 1246e6 + 437.5e3 * channel});
    }
    return signals;
}

void ExpectRelative(double value, long double expected, double tolerance = 1e-12) {
    EXPECT_NEAR(value, static_cast<double>(expected),
                tolerance * std::fabs(static_cast<double>(expected)));
}

// Wavelength and ionosphere factor of a combination with these coefficients.
void ExpectDerived(const LaneCombination& combination, const Signals& s) {
    const long double f1 = s.f1, f2 = s.f2, a = combination.a, b = combination.b;
    const long double frequency = a * f1 + b * f2;
    ExpectRelative(combination.wavelength, kLight / frequency, 1e-11);
    // The delay goes with 1/f^2; in cycles of each phase it is f times that, over c.
    const long double l1 = kL1;
    const long double delay = (a * l1 * l1 / f1 + b * l1 * l1 / f2) / frequency;
    EXPECT_NEAR(combination.ionoFactor, static_cast<double>(delay), 1e-11);
}

TEST(Combination, CoefficientsOfTheSimpleModels) {
    const double expected[][3] = {
        {1, 1.0, 0.0}, {2, 0.0, 1.0}, {3, 1.0, 0.0}, {4, 1.0, 1.0}, {5, 1.0, -1.0}};
    for (const Signals& s : AllSignals()) {
        for (const auto& e : expected) {
            const int mode = static_cast<int>(e[0]);
            SCOPED_TRACE(testing::Message() << s.system << ' ' << s.channel << ' ' << mode);
            const LaneCombination combination =
                CombinationOf(mode, kFirstBlock, s.system, s.Table());
            EXPECT_EQ(combination.a, e[1]);
            EXPECT_EQ(combination.b, e[2]);
            ExpectDerived(combination, s);
        }
    }
}

TEST(Combination, TheSecondBlockOfModel3IsTheSecondFrequency) {
    EXPECT_EQ(BlockCount(3), 2);
    for (const int mode : {1, 2, 4, 5, 6}) {
        EXPECT_EQ(BlockCount(mode), 1);
    }
    for (const Signals& s : AllSignals()) {
        const LaneCombination combination = CombinationOf(3, kSecondBlock, s.system, s.Table());
        EXPECT_EQ(combination.a, 0.0);
        EXPECT_EQ(combination.b, 1.0);
        ExpectRelative(combination.wavelength, kLight / s.f2);
        ExpectRelative(combination.ionoFactor, kL1 / s.f2 * (kL1 / s.f2));
    }
}

TEST(Combination, OneFrequencyHasItsOwnWavelengthAndDelay) {
    for (const Signals& s : AllSignals()) {
        const LaneCombination first = CombinationOf(1, kFirstBlock, s.system, s.Table());
        ExpectRelative(first.wavelength, kLight / s.f1);
        ExpectRelative(first.ionoFactor, kL1 / s.f1 * (kL1 / s.f1));
        const LaneCombination second = CombinationOf(2, kFirstBlock, s.system, s.Table());
        ExpectRelative(second.wavelength, kLight / s.f2);
        ExpectRelative(second.ionoFactor, kL1 / s.f2 * (kL1 / s.f2));
    }
}

TEST(Combination, PublishedWideAndNarrowLanes) {
    const Carriers gps = CarrierTable(1, 2).Of(kGps, 0);
    const LaneCombination wide = CombinationOf(5, kFirstBlock, kGps, gps);
    EXPECT_NEAR(wide.wavelength, 0.8619, 5e-5);
    EXPECT_NEAR(wide.ionoFactor, -77.0 / 60.0, 1e-12);  // -f1/f2
    const LaneCombination sum = CombinationOf(4, kFirstBlock, kGps, gps);
    EXPECT_NEAR(sum.wavelength, 0.1070, 5e-5);
    EXPECT_NEAR(sum.ionoFactor, 77.0 / 60.0, 1e-12);
    EXPECT_NEAR(CombinationOf(5, kFirstBlock, kBds, CarrierTable(1, 2).Of(kBds, 0)).wavelength,
                0.8470, 5e-5);
}

TEST(Combination, IonosphereFreeOutsideGalileoHasNoIonosphereAndTheFirstWavelength) {
    for (const Signals& s : AllSignals()) {
        if (s.system == kGalileo) {
            continue;
        }
        const LaneCombination combination = CombinationOf(6, kFirstBlock, s.system, s.Table());
        const long double f1 = s.f1, f2 = s.f2, gap = f1 * f1 - f2 * f2;
        ExpectRelative(combination.a, f1 * f1 / gap);
        ExpectRelative(combination.b, -f1 * f2 / gap);
        EXPECT_NEAR(combination.ionoFactor, 0.0, 1e-12);
        ExpectRelative(combination.wavelength, kLight / f1, 1e-11);
    }
}

TEST(Combination, IonosphereFreeOfGalileoHasACoefficientOfItsOwn) {
    for (const Signals& s : AllSignals()) {
        if (s.system != kGalileo) {
            continue;
        }
        const LaneCombination combination = CombinationOf(6, kFirstBlock, kGalileo, s.Table());
        const long double f1 = s.f1, f2 = s.f2, gap = f1 * f1 - f2 * f2;
        ExpectRelative(combination.a, f1 * f1 / gap);
        ExpectRelative(combination.b, -f2 * f2 / gap);
        ExpectDerived(combination, s);
        EXPECT_GT(std::fabs(combination.ionoFactor), 0.1);
    }
}

TEST(Combination, TheIonosphereFreeAmbiguitySplitsIntoNarrowAndWideLane) {
    for (const Signals& s : AllSignals()) {
        const LaneCombination combination = CombinationOf(6, kFirstBlock, s.system, s.Table());
        const long double f1 = s.f1, f2 = s.f2;
        ExpectRelative(combination.narrowLane, f1 / (f1 + f2));
        ExpectRelative(combination.wideLane, f1 * f2 / (f1 * f1 - f2 * f2));
        if (s.system != kGalileo) {
            // a N1 + b N2 = k N1 + w (N1 - N2) for any pair of integers.
            for (const auto& [n1, n2] : {std::pair{7.0, -3.0}, std::pair{-120.0, 45.0}}) {
                EXPECT_NEAR(combination.a * n1 + combination.b * n2,
                            combination.narrowLane * n1 + combination.wideLane * (n1 - n2), 1e-10);
            }
        }
    }
}

TEST(Combination, PublishedIonosphereFreeNumbersOfGpsAndBds) {
    const LaneCombination gps = CombinationOf(6, kFirstBlock, kGps, CarrierTable(1, 2).Of(kGps, 0));
    EXPECT_DOUBLE_EQ(gps.a, 2.54572778016316);
    EXPECT_DOUBLE_EQ(gps.b, -1.983683984542722);
    EXPECT_DOUBLE_EQ(gps.narrowLane, 0.5620437956204379);
    EXPECT_DOUBLE_EQ(gps.wideLane, 1.983683984542722);
    const LaneCombination bds = CombinationOf(6, kFirstBlock, kBds, CarrierTable(1, 2).Of(kBds, 0));
    EXPECT_DOUBLE_EQ(bds.a, 2.4871683136169254);
    EXPECT_DOUBLE_EQ(bds.b, -1.9232363106605321);
    EXPECT_DOUBLE_EQ(bds.narrowLane, 0.5639320029563932);
    EXPECT_DOUBLE_EQ(bds.wideLane, 1.9232363106605321);
}

TEST(Combination, IonosphereFreeOfGalileoNeedsBothBands) {
    for (const auto& [first, second] :
         {std::pair{3, 3}, std::pair{0, 2}, std::pair{1, 0}, std::pair{6, 7}}) {
        const LaneCombination combination =
            CombinationOf(6, kFirstBlock, kGalileo, CarrierTable(first, second).Of(kGalileo, 0));
        EXPECT_EQ(combination.a, 0.0);
        EXPECT_EQ(combination.b, 0.0);
        EXPECT_EQ(combination.wavelength, 0.0);
        EXPECT_EQ(combination.ionoFactor, 0.0);
    }
}

TEST(Combination, ADoubleDifferenceCarriesTheNoiseOfFourPhasesInTheWavelengthOfGps) {
    const double f1 = 1575.42e6, f2 = 1227.6e6;
    for (const double phaseStd : {0.01, 0.02}) {
        const double twice = 2.0 * phaseStd * kLight;
        EXPECT_DOUBLE_EQ(DoubleDifferenceSigma(1, phaseStd), twice / f1);
        EXPECT_DOUBLE_EQ(DoubleDifferenceSigma(2, phaseStd), twice / f2);
        EXPECT_DOUBLE_EQ(DoubleDifferenceSigma(3, phaseStd), twice / f1);
        ExpectRelative(DoubleDifferenceSigma(4, phaseStd), twice / (f1 + f2) * std::sqrt(2.0));
        ExpectRelative(DoubleDifferenceSigma(5, phaseStd), twice / (f1 - f2) * std::sqrt(2.0));
        ExpectRelative(DoubleDifferenceSigma(6, phaseStd),
                       twice / f1 * std::hypot(2.54572778016316, 1.983683984542722));
    }
    EXPECT_EQ(DoubleDifferenceSigma(5, 0.0), 0.0);
}

}  // namespace
}  // namespace vornel
