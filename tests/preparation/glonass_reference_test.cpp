#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <tuple>
#include <vector>

#include "exports/process_fixture.h"
#include "run/staged_session.h"
#include "simulation/noise.h"

namespace vornel::test {
namespace {

constexpr int kReference = 40;  // slot 5
constexpr int kOther = 50;
constexpr int kThird = 55;

using Entry =
    std::tuple<int, int, int, double, double>;  // satellite, first, last, both ambiguities

// What carrier-smoothed code leaves of carrier minus code, cycles, written apart from the filter:
// the smoothed code less the carrier is the mean of code less carrier since the last restart.
std::vector<double> AmbiguitySeries(const std::vector<double>& code,
                                    const std::vector<double>& phase, double wavelength) {
    std::vector<double> series;
    std::size_t restart = 0;
    for (std::size_t t = 0; t < code.size(); ++t) {
        if (phase[t] == 0.0 || (t > 0 && phase[t - 1] == 0.0)) {
            restart = t;
        }
        double sum = 0.0;
        for (std::size_t i = restart; i <= t; ++i) {
            sum += phase[i] - code[i] / wavelength;
        }
        series.push_back(sum / static_cast<double>(t - restart + 1));
    }
    return series;
}

double MeanWithoutOutliers(std::vector<double> values) {
    for (;;) {
        double mean = 0.0, square = 0.0;
        for (const double v : values) {
            mean += v / static_cast<double>(values.size());
        }
        for (const double v : values) {
            square += (v - mean) * (v - mean) / static_cast<double>(values.size());
        }
        const std::size_t before = values.size();
        std::erase_if(values,
                      [&](double v) { return std::fabs(v - mean) > 3.5 * std::sqrt(square); });
        if (values.size() == before) {
            return mean;
        }
    }
}

class GlonassReference : public ProcessTest {
  protected:
    // A run of epochs without observations, in one period with a GLONASS reference.
    void Begin(int epochCount, int channel = 0) {
        SDObsData record(1);
        record.glonassChannel[kReference - 36] = static_cast<std::int16_t>(channel);
        const double none[3] = {};
        solver = std::make_unique<StaticSolve>(
            1, 0, SolveConfig(),
            std::vector<SDObsData>(static_cast<std::size_t>(epochCount), record), nullptr, nullptr,
            nullptr, nullptr, 1, XYZPosition(), none, none, 0.0, 1, XYZPosition(), none, none, 0.0);
        solver->periods.clear();
        AddPeriod(0, epochCount - 1, kReference);
    }
    void AddPeriod(int first, int last, int reference) {
        StaticPeriod period;
        period.startIndex = first;
        period.endIndex = last;
        period.epochCount = last - first + 1;
        period.refSatGlo = reference;
        solver->periods.push_back(period);
    }
    void AddSegment(int sat, int first, int last) {
        solver->ambiguityParas.emplace_back(sat, first, last);
    }
    SDObsData& At(int epoch) { return solver->epochs[static_cast<std::size_t>(epoch)]; }

    // Codes that tell an ambiguity of the reference at an epoch, with the phase missing, so that
    // nothing is smoothed.
    void Tell(int epoch, double first, double second) {
        const double lambda1 = GlonassL1Wavelength(At(epoch).glonassChannel[kReference - 36]);
        const double lambda2 = GlonassL2Wavelength(At(epoch).glonassChannel[kReference - 36]);
        At(epoch).code[kReference - 1][0] = -first * lambda1;
        At(epoch).code[kReference - 1][1] = -second * lambda2;
    }
    void TellAll(int first, int last, double cycles1, double cycles2) {
        for (int e = first; e <= last; ++e) {
            Tell(e, cycles1, cycles2);
        }
    }

    std::vector<Entry> Entries() const {
        std::vector<Entry> entries;
        for (const AmbiguityPara& para : solver->ambiguityParas) {
            entries.emplace_back(para.sat, para.firstEpoch, para.lastEpoch, para.refAmbF1,
                                 para.refAmbF2);
        }
        return entries;
    }

    // The ambiguity found for the reference's first frequency when its codes tell these, epoch by
    // epoch.
    double Found(const std::vector<double>& told) {
        const int count = static_cast<int>(told.size());
        Begin(count);
        AddSegment(kReference, 0, count - 1);
        AddSegment(kOther, 0, count - 1);
        for (int e = 0; e < count; ++e) {
            Tell(e, told[static_cast<std::size_t>(e)], 0.0);
        }
        solver->AlignGlonassReference();
        EXPECT_EQ(solver->ambiguityParas.size(), 1u);
        return solver->ambiguityParas.empty() ? NAN : solver->ambiguityParas[0].refAmbF1;
    }

    std::unique_ptr<StaticSolve> solver;
};

// --- segments

TEST_F(GlonassReference, AReferenceWithOneArcLeavesTheListAndGivesAllItsAmbiguities) {
    Begin(60);
    TellAll(0, 59, 17.0, -23.0);
    AddSegment(kReference, 0, 59);
    AddSegment(kOther, 0, 59);
    AddSegment(kThird, 7, 41);
    solver->AlignGlonassReference();
    EXPECT_EQ(Entries(),
              (std::vector<Entry>{{kOther, 0, 59, 17.0, -23.0}, {kThird, 7, 41, 17.0, -23.0}}));
}

TEST_F(GlonassReference, ALongSegmentIsCutByTheArcsOfTheReference) {
    Begin(60);
    TellAll(0, 29, 17.0, -23.0);
    TellAll(30, 59, 1000.0, 4.0);
    AddSegment(kReference, 0, 27);
    AddSegment(kOther, 3, 59);
    AddSegment(kReference, 30, 55);
    solver->AlignGlonassReference();
    EXPECT_EQ(Entries(),
              (std::vector<Entry>{{kOther, 3, 27, 17.0, -23.0}, {kOther, 30, 55, 1000.0, 4.0}}));
}

TEST_F(GlonassReference, AnOverlapOfTheFewestEpochsIsKeptAndOneLessIsDropped) {
    Begin(60);
    TellAll(0, 59, 5.0, 6.0);
    AddSegment(kReference, 0, 29);
    AddSegment(kOther, 20, 59);  // 20 to 29: ten epochs
    AddSegment(kThird, 21, 59);  // nine
    solver->AlignGlonassReference();
    EXPECT_EQ(Entries(), (std::vector<Entry>{{kOther, 20, 29, 5.0, 6.0}}));
}

TEST_F(GlonassReference, ASegmentThatTouchesAnArcAtOneEpochDoesNotOverlapIt) {
    Begin(60);
    solver->config.minEpochs = 1;  // any overlap would do
    TellAll(0, 59, 5.0, 6.0);
    AddSegment(kReference, 0, 20);
    AddSegment(kReference, 40, 59);
    AddSegment(kOther, 20, 40);
    AddSegment(kThird, 19, 41);
    solver->AlignGlonassReference();
    EXPECT_EQ(Entries(),
              (std::vector<Entry>{{kThird, 19, 20, 5.0, 6.0}, {kThird, 40, 41, 5.0, 6.0}}));
}

TEST_F(GlonassReference, ASegmentBesideAllArcsIsLost) {
    Begin(60);
    TellAll(0, 59, 5.0, 6.0);
    AddSegment(kReference, 0, 25);
    AddSegment(kOther, 30, 59);
    solver->AlignGlonassReference();
    EXPECT_TRUE(Entries().empty());
}

TEST_F(GlonassReference, WithoutAnArcOfTheReferenceAllSegmentsOfThePeriodAreLost) {
    Begin(60);
    AddSegment(kOther, 0, 59);
    AddSegment(12, 0, 59);
    solver->AlignGlonassReference();
    EXPECT_EQ(Entries(), (std::vector<Entry>{{12, 0, 59, 0.0, 0.0}}));
}

TEST_F(GlonassReference, OtherSystemsKeepTheirSegmentsAndTheListIsSorted) {
    Begin(60);
    TellAll(0, 59, 5.0, 6.0);
    AddSegment(3, 0, 59);
    AddSegment(kReference, 0, 59);
    AddSegment(kOther, 0, 59);
    AddSegment(110, 0, 59);
    AddSegment(70, 10, 30);
    AddSegment(kThird, 10, 30);
    solver->AlignGlonassReference();
    EXPECT_EQ(Entries(), (std::vector<Entry>{{3, 0, 59, 0.0, 0.0},
                                             {kOther, 0, 59, 5.0, 6.0},
                                             {110, 0, 59, 0.0, 0.0},
                                             {kThird, 10, 30, 5.0, 6.0},
                                             {70, 10, 30, 0.0, 0.0}}));
    EXPECT_LT(kThird, 70);
}

TEST_F(GlonassReference, APeriodWithoutAReferenceKeepsItsSegments) {
    Begin(60);
    solver->periods.clear();
    AddPeriod(0, 29, -1);
    AddPeriod(30, 59, kReference);
    TellAll(0, 59, 5.0, 6.0);
    AddSegment(kReference, 0, 29);
    AddSegment(kOther, 0, 29);
    AddSegment(kReference, 30, 59);
    AddSegment(kOther, 30, 59);
    solver->AlignGlonassReference();
    EXPECT_EQ(Entries(), (std::vector<Entry>{{kReference, 0, 29, 0.0, 0.0},
                                             {kOther, 0, 29, 0.0, 0.0},
                                             {kOther, 30, 59, 5.0, 6.0}}));
}

TEST_F(GlonassReference, EveryPeriodGoesByItsOwnReference) {
    Begin(60);
    solver->periods.clear();
    AddPeriod(0, 29, kReference);
    AddPeriod(30, 59, kOther);
    TellAll(0, 29, 5.0, 6.0);
    for (int e = 30; e < 60; ++e) {
        At(e).glonassChannel[kOther - 36] = 3;
        At(e).code[kOther - 1][0] = 8.0 * GlonassL1Wavelength(3);
        At(e).code[kOther - 1][1] = -9.0 * GlonassL2Wavelength(3);
    }
    AddSegment(kReference, 0, 29);
    AddSegment(kOther, 0, 29);
    AddSegment(kReference, 30, 59);
    AddSegment(kOther, 30, 59);
    solver->AlignGlonassReference();
    EXPECT_EQ(Entries(),
              (std::vector<Entry>{{kOther, 0, 29, 5.0, 6.0}, {kReference, 30, 59, -8.0, 9.0}}));
}

TEST_F(GlonassReference, SegmentsThatReachOverAPeriodsEndAreLeftAlone) {
    Begin(60);
    solver->periods.clear();
    AddPeriod(10, 49, kReference);
    TellAll(0, 59, 5.0, 6.0);
    AddSegment(kReference, 9, 30);
    AddSegment(kOther, 20, 50);
    AddSegment(kReference, 10, 49);
    AddSegment(kThird, 10, 49);
    solver->AlignGlonassReference();
    EXPECT_EQ(Entries(), (std::vector<Entry>{{kReference, 9, 30, 0.0, 0.0},
                                             {kThird, 10, 49, 5.0, 6.0},
                                             {kOther, 20, 50, 0.0, 0.0}}));
}

// --- the ambiguity

TEST_F(GlonassReference, TheAmbiguityIsTheMeanOfTheSmoothedSeriesAtTheNearestWholeNumber) {
    // Codes with noise of metres, phases of a moving satellite, in three stretches with an
    // ambiguity each, so that the restart at a missing phase shows.
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        const int channel = static_cast<int>(seed % 14) - 7;
        Begin(50, channel);
        const double wavelength[2] = {GlonassL1Wavelength(channel), GlonassL2Wavelength(channel)};
        double expected[2];
        for (int f = 0; f < 2; ++f) {
            std::vector<double> code, phase;
            for (int e = 0; e < 50; ++e) {
                const double range = 1000.0 + 31.0 * e - 0.4 * e * e;
                const double ambiguity = e < 15 ? 400.0 : e < 31 ? -200.0 : 90.0;
                code.push_back(range + 3.0 * simulation::Gaussian(seed,
                                                                  static_cast<std::uint64_t>(f), 1,
                                                                  static_cast<std::uint64_t>(e)));
                phase.push_back(e == 15 || e == 31 ? 0.0 : range / wavelength[f] + ambiguity);
                At(e).code[kReference - 1][f] = code.back();
                At(e).phase[kReference - 1][f] = phase.back();
            }
            expected[f] =
                std::round(MeanWithoutOutliers(AmbiguitySeries(code, phase, wavelength[f])));
        }
        AddSegment(kReference, 0, 49);
        AddSegment(kOther, 0, 49);
        solver->AlignGlonassReference();
        EXPECT_EQ(Entries(), (std::vector<Entry>{{kOther, 0, 49, expected[0], expected[1]}}))
            << seed;
    }
}

TEST_F(GlonassReference, TheSeriesStartsAnewAtTheStartOfAnArc) {
    // Before the arc the codes were far off; its first epoch is not the first of the run.
    Begin(60);
    for (int e = 0; e < 60; ++e) {
        for (int f = 0; f < 2; ++f) {
            At(e).phase[kReference - 1][f] = 500.0 + e;
            At(e).code[kReference - 1][f] = e < 20 ? 1e6 : 0.2;
        }
    }
    AddSegment(kReference, 20, 59);
    AddSegment(kOther, 0, 59);
    solver->AlignGlonassReference();
    std::vector<double> code, phase;
    for (int e = 20; e < 60; ++e) {
        code.push_back(0.2);
        phase.push_back(500.0 + e);
    }
    const double f1 =
        std::round(MeanWithoutOutliers(AmbiguitySeries(code, phase, GlonassL1Wavelength(0))));
    const double f2 =
        std::round(MeanWithoutOutliers(AmbiguitySeries(code, phase, GlonassL2Wavelength(0))));
    EXPECT_EQ(Entries(), (std::vector<Entry>{{kOther, 20, 59, f1, f2}}));
}

TEST_F(GlonassReference, TheWavelengthIsThatOfTheChannelAtTheArcsFirstEpoch) {
    Begin(30, 6);
    for (int e = 0; e < 30; ++e) {
        At(e).code[kReference - 1][0] = -1000.0 * GlonassL1Wavelength(6);
        At(e).code[kReference - 1][1] = -1000.0 * GlonassL2Wavelength(6);
        At(e).glonassChannel[kReference - 36] = e == 5 ? std::int16_t{6} : std::int16_t{-7};
    }
    AddSegment(kReference, 5, 29);
    AddSegment(kOther, 0, 29);
    solver->AlignGlonassReference();
    EXPECT_EQ(Entries(), (std::vector<Entry>{{kOther, 5, 29, 1000.0, 1000.0}}));
}

TEST_F(GlonassReference, HalvesRoundAwayFromZero) {
    EXPECT_EQ(Found(std::vector<double>(20, -2.5)), -3.0);
    EXPECT_EQ(Found(std::vector<double>(20, 2.5)), 3.0);
    EXPECT_EQ(Found(std::vector<double>(20, -2.4)), -2.0);
}

TEST_F(GlonassReference, EpochsWithoutCodeAreInTheSeries) {
    // With the phase missing as well they tell 0 cycles: 20 zeros and 20 thousands.
    std::vector<double> told(40, 1000.0);
    std::fill(told.begin(), told.begin() + 20, 0.0);
    EXPECT_EQ(Found(told), 500.0);
}

TEST_F(GlonassReference, SmoothingBeginsWithTheFirstCodeThereIs) {
    // Ten epochs with a phase of 700 cycles and no code tell 700; then codes of 600 cycles tell 100
    // from the first on.
    Begin(40);
    for (int e = 0; e < 40; ++e) {
        At(e).phase[kReference - 1][0] = 700.0;
        At(e).code[kReference - 1][0] = e < 10 ? 0.0 : 600.0 * GlonassL1Wavelength(0);
    }
    AddSegment(kReference, 0, 39);
    AddSegment(kOther, 0, 39);
    solver->AlignGlonassReference();
    EXPECT_EQ(Entries(), (std::vector<Entry>{{kOther, 0, 39, 250.0, 0.0}}));
}

TEST_F(GlonassReference, AValueBeyondThreeAndAHalfDeviationsIsTakenOut) {
    std::vector<double> told(30, 5.0);
    told[11] = 100.0;
    EXPECT_EQ(Found(told), 5.0);
}

TEST_F(GlonassReference, FourteenValuesAreTheFewestThatCanLoseOne) {
    // One value stands sqrt(n - 1) population deviations off n - 1 equal ones: 3.46 of 13, 3.61 of
    // 14.
    std::vector<double> told(13, 0.0);
    told[4] = 1300.0;
    EXPECT_EQ(Found(told), 100.0);
    told.push_back(0.0);
    EXPECT_EQ(Found(told), 0.0);
}

TEST_F(GlonassReference, CleaningGoesOnUntilNothingIsTakenOut) {
    // The small outlier hides behind the large one at first.
    std::vector<double> told(40, 7.0);
    told[3] = 100000.0;
    told[30] = 900.0;
    EXPECT_EQ(Found(told), 7.0);
}

TEST_F(GlonassReference, TheOutlierFactorOfTheConfigurationPlaysNoPart) {
    Begin(20);
    solver->config.outlierFactor = 0.5;
    AddSegment(kReference, 0, 19);
    AddSegment(kOther, 0, 19);
    for (int e = 0; e < 20; ++e) {
        Tell(e, e < 5 ? 40.0 : 0.0, 0.0);
    }
    solver->AlignGlonassReference();
    EXPECT_EQ(Entries(), (std::vector<Entry>{{kOther, 0, 19, 10.0, 0.0}}));
}

TEST_F(GlonassReference, OneValueLessThanTheFewestEpochsIsEnoughAndTwoLessGiveNone) {
    // Sixteen values, sixteen epochs at the fewest. Cleaning takes the largest outlier, then the
    // next.
    for (const auto& [second, expected] : {std::pair{33.0, 33.0}, {5000.0, 0.0}}) {
        Begin(16);
        solver->config.minEpochs = 16;
        TellAll(0, 15, 33.0, 44.0);
        Tell(4, 1e8, 44.0);
        Tell(9, second, 44.0);
        AddSegment(kReference, 0, 15);
        AddSegment(kOther, 0, 15);
        solver->AlignGlonassReference();
        EXPECT_EQ(Entries(), (std::vector<Entry>{{kOther, 0, 15, expected, 44.0}}));
    }
}

TEST_F(GlonassReference, AnArcAtTheFirstEpochOfTheRunReadsNothingBeforeIt) {
    EXPECT_EQ(Found(std::vector<double>(12, 3.0)), 3.0);  // under a sanitizer this speaks
}

TEST_F(GlonassReference, ASimulatedReferenceHasItsTrueAmbiguity) {
    simulation::Scenario scenario = SingleSystem(kGlonass, 5, 3);
    scenario.ionosphere = 0.0;
    scenario.codeNoise = 0.3;
    scenario.phaseNoise = 0.002;
    const StagedSession staged(scenario);
    staged.solver->RepairGlonassSlips();
    staged.solver->AlignGlonassReference();
    const int reference = staged.solver->periods[0].refSatGlo;
    ASSERT_EQ(staged.solver->ambiguityParas.size(), 4u);
    for (const AmbiguityPara& para : staged.solver->ambiguityParas) {
        EXPECT_NE(para.sat, reference);
        EXPECT_NEAR(para.refAmbF1, staged.session.SingleDifferenceAmbiguity(reference, 0, 0), 1.0);
        EXPECT_NEAR(para.refAmbF2, staged.session.SingleDifferenceAmbiguity(reference, 1, 0), 1.0);
    }
}

TEST_F(GlonassReference, AnArcThatEndsBeforeItBeginsIsNone) {
    Begin(60);
    TellAll(0, 59, 5.0, 6.0);
    AddSegment(kReference, 30, 20);
    AddSegment(kReference, 0, 59);
    AddSegment(kOther, 0, 59);
    solver->AlignGlonassReference();
    EXPECT_EQ(Entries(), (std::vector<Entry>{{kOther, 0, 59, 5.0, 6.0}}));
}

}  // namespace
}  // namespace vornel::test
