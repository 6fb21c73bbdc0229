#include "estimation/fixed_solution.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <vector>

#include "exports/process_fixture.h"
#include "run/adjusted_session.h"
#include "simulation/noise.h"

namespace vornel::test {
namespace {

using simulation::Scenario;

// --- the variance of a satellite's phase

TEST(PhaseVariance, HasAConstantAnElevationAndALengthPart) {
    // 2 (1 mm)^2 + (2 mm)^2 / sin^2 30 deg + (20 km * 0.05 mm / km)^2
    const double elevation = std::asin(0.5);
    EXPECT_NEAR(PhaseVariance(kGps, elevation, 20000.0, 1.0, 0.0), 2e-6 + 16e-6 + 1e-6, 1e-15);
    EXPECT_NEAR(PhaseVariance(kBds, elevation, 20000.0, 0.0, 1.0), 19e-6, 1e-15);
    EXPECT_NEAR(PhaseVariance(kGalileo, elevation, 20000.0, 1.0, -1.0), 38e-6, 1e-15);
    EXPECT_NEAR(PhaseVariance(kGps, elevation, 20000.0, 2.5, -2.0), 19e-6 * 10.25, 1e-15);
}

TEST(PhaseVariance, GlonassIsOneAndAHalfTimesAsNoisyButForTheLength) {
    const double elevation = std::asin(0.5);
    EXPECT_NEAR(PhaseVariance(kGlonass, elevation, 20000.0, 1.0, 0.0), 2.25 * 18e-6 + 1e-6, 1e-15);
}

TEST(PhaseVariance, ABaselineOfNoLengthLosesTheLengthPartOnly) {
    EXPECT_NEAR(PhaseVariance(kGps, 1.5707963267948966, 0.0, 1.0, 0.0), 6e-6, 1e-18);
}

TEST(PhaseVariance, WithoutCoefficientsTheFirstIsOne) {
    const double one = PhaseVariance(kGps, 0.7, 5000.0, 1.0, 0.0);
    EXPECT_EQ(PhaseVariance(kGps, 0.7, 5000.0, 0.0, 0.0), one);
    // The second stays as it is.
    EXPECT_NEAR(PhaseVariance(kGps, 0.7, 5000.0, 0.0009, -0.0009), one * (1.0 + 8.1e-7),
                1e-9 * one);
    EXPECT_NEAR(PhaseVariance(kGps, 0.7, 5000.0, 0.0, 0.001), one * 1e-6, 1e-12 * one);
}

// --- covariance and weights of a block

TEST(CovarianceOfABlock, OneSystemSharesItsReferenceBetweenAllRows) {
    const int counts[4] = {3, 0, 0, 0};
    gult::matrixT c = CovOfDoubleDifferences(counts, 4, {4.0, 4.0, 4.0}, {1.0, 2.0, 3.0}, 3);
    const double expected[3][3] = {{5.0, 4.0, 4.0}, {4.0, 6.0, 4.0}, {4.0, 4.0, 7.0}};
    for (std::uint32_t i = 0; i < 3; ++i) {
        for (std::uint32_t j = 0; j < 3; ++j) {
            EXPECT_EQ(c(i, j), expected[i][j]);
        }
    }
}

TEST(CovarianceOfABlock, SystemsAreIndependent) {
    const int counts[4] = {2, 1, 0, 2};
    gult::matrixT c = CovOfDoubleDifferences(counts, 4, {1.0, 1.0, 2.0, 3.0, 3.0},
                                             {10.0, 20.0, 30.0, 40.0, 50.0}, 5);
    const double expected[5][5] = {{11.0, 1.0, 0.0, 0.0, 0.0},
                                   {1.0, 21.0, 0.0, 0.0, 0.0},
                                   {0.0, 0.0, 32.0, 0.0, 0.0},
                                   {0.0, 0.0, 0.0, 43.0, 3.0},
                                   {0.0, 0.0, 0.0, 3.0, 53.0}};
    for (std::uint32_t i = 0; i < 5; ++i) {
        for (std::uint32_t j = 0; j < 5; ++j) {
            EXPECT_EQ(c(i, j), expected[i][j]);
        }
    }
}

TEST(CovarianceOfABlock, WeightsAreItsScaledInverseBetweenTheRootsOfTheDiagonal) {
    const int counts[1] = {2};
    const gult::matrixT c = CovOfDoubleDifferences(counts, 1, {1.0, 1.0}, {2.0, 4.0}, 2);
    gult::matrixT d(2, 2);
    d(0, 0) = 0.25;
    d(1, 1) = 0.64;
    // The inverse of {{3, 1}, {1, 5}} is {{5, -1}, {-1, 3}} / 14.
    gult::matrixT p = WeightFromCovariance(0.7, c, d);
    EXPECT_NEAR(p(0, 0), 0.49 * 5.0 / 14.0 * 0.25, 1e-15);
    EXPECT_NEAR(p(0, 1), 0.49 * -1.0 / 14.0 * 0.4, 1e-15);
    EXPECT_NEAR(p(1, 0), 0.49 * -1.0 / 14.0 * 0.4, 1e-15);
    EXPECT_NEAR(p(1, 1), 0.49 * 3.0 / 14.0 * 0.64, 1e-15);
}

TEST(CovarianceOfABlock, RobustWeightsMultiplyTheDiagonal) {
    gult::matrixT d(2, 2);
    d(0, 0) = 0.5;
    d(1, 1) = 1.0;
    d(0, 1) = 7.0;
    ApplyWeights(2, {0.5, 0.0}, d);
    EXPECT_EQ(d(0, 0), 0.25);
    EXPECT_EQ(d(1, 1), 0.0);
    EXPECT_EQ(d(0, 1), 7.0);
}

// Weights of misclosures in units of their standard deviations.
std::vector<double> WeightsOf(const std::vector<double>& standardised) {
    const int m = static_cast<int>(standardised.size());
    const std::vector<double> qr(standardised.size(), 3e-6), qs(standardised.size(), 1e-6);
    gult::matrixT misclosures(static_cast<std::uint32_t>(m), 1);
    for (int i = 0; i < m; ++i) {
        // The variance is kept off zero by 1e-12.
        misclosures(static_cast<std::uint32_t>(i), 0) =
            standardised[static_cast<std::size_t>(i)] * std::sqrt(4e-6 + 1e-12);
    }
    return MedianWeights(qr, qs, misclosures, m);
}

TEST(MedianWeights, ThreeRowsAllKeepTheirs) {
    EXPECT_EQ(WeightsOf({0.0, 50.0, 900.0}), (std::vector<double>{1.0, 1.0, 1.0}));
}

TEST(MedianWeights, ARowWithinTwoDeviationsLosesNothingHoweverSmallTheMedian) {
    EXPECT_EQ(WeightsOf({0.0, 0.0, 0.0, 1.999, -1.999}),
              (std::vector<double>{1.0, 1.0, 1.0, 1.0, 1.0}));
}

TEST(MedianWeights, BeyondThreeScalesARowHasNone) {
    // The median 2 gives a scale of 2.966.
    const std::vector<double> weights = WeightsOf({2.0, -2.0, 2.0, 2.0, 8.9, -8.9});
    EXPECT_EQ(weights[4], 0.0);
    EXPECT_EQ(weights[5], 0.0);
    EXPECT_EQ(weights[0], 1.0);
}

TEST(MedianWeights, BetweenOneAndAHalfAndThreeScalesAWeightFalls) {
    const double scale = 2.0 * 1.483;
    const std::vector<double> weights = WeightsOf(
        {2.0, -2.0, 2.0, 1.49 * scale, 1.51 * scale, -2.25 * scale, 2.0, 2.0, 2.99 * scale});
    EXPECT_EQ(weights[3], 1.0);
    for (const auto& [row, t] : {std::pair{4u, 1.51}, {5u, 2.25}, {8u, 2.99}}) {
        EXPECT_NEAR(weights[row], 1.5 * std::pow((3.0 - t) / 1.5, 2) / t, 1e-9);
    }
}

TEST(MedianWeights, TheMedianOfAnEvenNumberIsTheMeanOfTheMiddleTwo) {
    // 1 and 3 in the middle: a scale of 2 * 1.483; T of 6 is 2.0229.
    const double t = 6.0 / (2.0 * 1.483);
    const std::vector<double> weights = WeightsOf({1.0, 0.5, -3.0, 6.0});
    EXPECT_NEAR(weights[3], 1.5 * std::pow((3.0 - t) / 1.5, 2) / t, 1e-9);
}

TEST(MedianWeights, TheMedianIsHeldBetweenItsLimits) {
    // Below 0.008 the scale stays at 0.011864: 2.0 is 168 of them.
    EXPECT_EQ(WeightsOf({0.0, 0.0, 0.0, 0.0, 2.0})[4], 0.0);
    // Above 8 it stays at 11.864, so that rows all alike lose weight.
    const double t = 30.0 / (8.0 * 1.483);
    for (const double weight : WeightsOf({30.0, -30.0, 30.0, 30.0, 30.0})) {
        EXPECT_NEAR(weight, 1.5 * std::pow((3.0 - t) / 1.5, 2) / t, 1e-9);
    }
}

// --- the solution

class FixedSolution : public ProcessTest {
  protected:
    static Scenario ScenarioOf(int gps, int glonass, int bds, int galileo, int mode) {
        Scenario scenario = QuietScenario(gps, glonass, bds, galileo, mode);
        scenario.troposphere = simulation::Troposphere::kOfFixed;
        return scenario;
    }
    // Solves with the true integers; what was filed.
    static const SolveResultFixed& Solve(AdjustedSession& staged, int mode) {
        SolveResultFixed fix = staged.TrueFix(mode);
        EXPECT_EQ(staged.solver->FixedSolveMulEq(mode, fix), 1);
        return staged.Fixed();
    }
};

class FixedSolutionOfModel : public FixedSolution, public ::testing::WithParamInterface<int> {};
INSTANTIATE_TEST_SUITE_P(Models, FixedSolutionOfModel, ::testing::Range(1, 7),
                         [](const auto& model) { return "Model" + std::to_string(model.param); });

TEST_P(FixedSolutionOfModel, FindsTheTruthWithTheTrueIntegersFromAMetreOff) {
    const int mode = GetParam();
    AdjustedSession staged(ScenarioOf(6, 5, 6, mode == 6 ? 0 : 5, mode));
    if (mode == 6) {
        staged.FileWideLane();
    }
    staged.solver->roverPosition.X += 0.8;
    staged.solver->roverPosition.Z -= 0.7;
    const SolveResultFixed& result = Solve(staged, mode);
    EXPECT_EQ(result.mode, mode);
    EXPECT_LT(simulation::ErrorOf(result, staged.session), 1e-4);
    EXPECT_EQ(staged.solver->roverPosition.X, staged.session.base.X + result.dX);
}

// Coefficients, wavelength and scale of the ionosphere of a combination, from the frequencies.
struct Lane {
    double a, b, wavelength, ionosphere;
};
Lane LaneOf(const SolveConfig& config, int mode, int block, int sat) {
    const double f1 = simulation::CarrierFrequency(config, sat, 0);
    const double f2 = simulation::CarrierFrequency(config, sat, 1);
    const double squares = f1 * f1 - f2 * f2, gps = 1575.42e6 * 1575.42e6;
    Lane lane{1.0, 0.0, 0.0, 0.0};
    if (mode == 2 || block == 1) {
        lane = {0.0, 1.0, 0.0, 0.0};
    } else if (mode == 4 || mode == 5) {
        lane = {1.0, mode == 4 ? 1.0 : -1.0, 0.0, 0.0};
    } else if (mode == 6) {
        lane = {f1 * f1 / squares, -f1 * f2 / squares, 0.0, 0.0};
    }
    const double f = lane.a * f1 + lane.b * f2;
    lane.wavelength = 299792458.0 / f;
    lane.ionosphere = (lane.a * gps / f1 + lane.b * gps / f2) / f;
    return lane;
}

using Column = std::vector<long double>;
using Square = std::vector<Column>;

// Of a positive definite matrix, by Gauss-Jordan elimination.
Square InverseOf(Square matrix) {
    const std::size_t n = matrix.size();
    Square inverse(n, Column(n, 0.0L));
    for (std::size_t i = 0; i < n; ++i) {
        inverse[i][i] = 1.0L;
    }
    for (std::size_t pivot = 0; pivot < n; ++pivot) {
        const long double scale = 1.0L / matrix[pivot][pivot];
        for (std::size_t j = 0; j < n; ++j) {
            matrix[pivot][j] *= scale;
            inverse[pivot][j] *= scale;
        }
        for (std::size_t i = 0; i < n; ++i) {
            const long double factor = matrix[i][pivot];
            for (std::size_t j = 0; i != pivot && j < n; ++j) {
                matrix[i][j] -= factor * matrix[pivot][j];
                inverse[i][j] -= factor * inverse[pivot][j];
            }
        }
    }
    return inverse;
}

// The weighted adjustment of the whole session a second time: every epoch's double differences with
// their full covariance, in extended precision, at the solution. What the solution leaves of the
// gradient, and its cofactors.
struct Independent {
    std::vector<long double> step;  // what is left to correct, metres
    Square cofactors;
    long double squares = 0.0L;  // weighted
    long double plain = 0.0L;    // unweighted
    int rows = 0;
};

Independent AdjustAgain(AdjustedSession& staged, int mode, const XYZPosition& startRover) {
    StaticSolve& solver = *staged.solver;
    const XYZPosition rover = solver.roverPosition;
    const double length = Distance(startRover, solver.basePosition);
    const Lane gps = LaneOf(solver.config, mode, 0, 1);
    const double sigma = 2.0 * solver.config.phaseStd * gps.wavelength * std::hypot(gps.a, gps.b);
    const std::size_t blocks = mode == 3 ? 2 : 1;
    const std::size_t nc = 3 + (solver.hasGlonass == 1 ? blocks : 0);
    Square normal(nc, Column(nc, 0.0L));
    Column rhs(nc, 0.0L);
    Independent result;
    for (std::size_t e = 0; e < solver.epochs.size(); ++e) {
        SDObsData record = solver.epochs[e];
        for (std::size_t block = 0; block < blocks; ++block) {
            for (const int system : {kGps, kGlonass, kBds, kGalileo}) {
                const int reference = staged.ReferenceOf(system);
                if (reference == -1 || !record.IsActive(reference)) {
                    continue;
                }
                const auto observe = [&](int sat, double unit[3]) {
                    const Lane lane = LaneOf(solver.config, mode, static_cast<int>(block), sat);
                    double value = 0.0;
                    record.ModelFixed(lane.ionosphere, sat, rover, staged.session.base, unit,
                                      value);
                    return lane.wavelength * (lane.a * record.phase[sat - 1][0] +
                                              lane.b * record.phase[sat - 1][1]) -
                           value;
                };
                const auto variance = [&](int sat) {
                    const Lane lane = LaneOf(solver.config, mode, static_cast<int>(block), sat);
                    const double u = system == kGlonass ? 1.5 : 1.0;
                    const double s = std::sin(record.azelA[sat - 1][1]);
                    return (lane.a * lane.a + lane.b * lane.b) *
                           (2e-6 * u * u + 4e-6 * u * u / (s * s) +
                            std::pow(length * 5e-5 / 1000.0, 2));
                };
                double referenceUnit[3];
                const double referenceValue = observe(reference, referenceUnit);
                const double referenceVariance = variance(reference);
                const Lane referenceLane =
                    LaneOf(solver.config, mode, static_cast<int>(block), reference);
                std::vector<Column> design;
                Column misclosures;
                std::vector<double> variances;
                for (const int sat : record.activeSats) {
                    if (SplitSatNumber(sat) != system || sat == reference) {
                        continue;
                    }
                    const Lane lane = LaneOf(solver.config, mode, static_cast<int>(block), sat);
                    double unit[3];
                    double v = observe(sat, unit) - referenceValue;
                    const int at = static_cast<int>(e);
                    // The ambiguities in their wavelengths, the reference's where it does not
                    // cancel.
                    for (int f = 0; f < 2; ++f) {
                        const double factor = f == 0 ? lane.a : lane.b;
                        const double referenceFactor = f == 0 ? referenceLane.a : referenceLane.b;
                        v -= lane.wavelength * factor *
                                 staged.session.SingleDifferenceAmbiguity(sat, f, at) -
                             referenceLane.wavelength * referenceFactor *
                                 staged.session.SingleDifferenceAmbiguity(reference, f, at);
                    }
                    Column row(nc, 0.0L);
                    for (std::size_t k = 0; k < 3; ++k) {
                        row[k] = unit[k] - referenceUnit[k];
                    }
                    if (system == kGlonass) {
                        row[3 + block] = (299792458.0 / lane.wavelength -
                                          299792458.0 / referenceLane.wavelength) /
                                         1e6;
                    }
                    design.push_back(row);
                    misclosures.push_back(v);
                    variances.push_back(variance(sat));
                }
                const std::size_t m = design.size();
                Square covariance(m, Column(m, referenceVariance));
                for (std::size_t i = 0; i < m; ++i) {
                    covariance[i][i] += variances[i];
                }
                const Square inverse = InverseOf(covariance);
                const long double weight = (system == kGlonass ? 0.25L : 1.0L) * sigma * sigma;
                for (std::size_t i = 0; i < m; ++i) {
                    result.plain += misclosures[i] * misclosures[i];
                    ++result.rows;
                    for (std::size_t j = 0; j < m; ++j) {
                        const long double p = weight * inverse[i][j];
                        result.squares += misclosures[i] * p * misclosures[j];
                        for (std::size_t k = 0; k < nc; ++k) {
                            rhs[k] += design[i][k] * p * misclosures[j];
                            for (std::size_t l = 0; l < nc; ++l) {
                                normal[k][l] += design[i][k] * p * design[j][l];
                            }
                        }
                    }
                }
            }
        }
    }
    for (std::size_t k = 3; k < nc; ++k) {
        normal[k][k] += sigma / 0.0025;
        rhs[k] += sigma / 0.0025 * 1e-6;
    }
    result.cofactors = InverseOf(normal);
    result.step.assign(nc, 0.0L);
    for (std::size_t k = 0; k < nc; ++k) {
        for (std::size_t l = 0; l < nc; ++l) {
            result.step[k] += result.cofactors[k][l] * rhs[l];
        }
    }
    for (std::size_t k = 0; k < nc; ++k) {
        result.squares -= result.step[k] * rhs[k];
    }
    return result;
}

TEST_P(FixedSolutionOfModel, IsTheAdjustmentWithTheFullCovarianceOfEveryEpoch) {
    // The noise is within two of the model's deviations and three of the residuals', so that no
    // robust weight enters.
    const int mode = GetParam();
    Scenario scenario = ScenarioOf(6, 5, 6, mode == 6 ? 0 : 5, mode);
    scenario.phaseNoise = mode == 5 ? 0.0001 : mode == 6 ? 0.0003 : 0.0006;
    AdjustedSession staged(scenario);
    if (mode == 6) {
        staged.FileWideLane();
    }
    const XYZPosition start = staged.solver->roverPosition;
    const SolveResultFixed& result = Solve(staged, mode);
    int rejected = 0, rows = 0;
    for (const AmbRstInfo& track : result.ambiguities) {
        rejected += track.rejected1 + track.rejected2;
        rows += track.rows1 + track.rows2;
    }
    ASSERT_EQ(rejected, 0);

    const Independent again = AdjustAgain(staged, mode, start);
    EXPECT_EQ(again.rows, rows);
    EXPECT_EQ(result.dof, rows - 3);
    for (std::size_t k = 0; k < 3; ++k) {
        EXPECT_NEAR(static_cast<double>(again.step[k]), 0.0, 5e-7);
    }
    const double unitVariance = static_cast<double>(again.squares) / (rows - 3);
    gult::matrixT xyz = result.covXYZ;
    const double trace = xyz(0, 0) + xyz(1, 1) + xyz(2, 2);
    for (std::uint32_t i = 0; i < 3; ++i) {
        for (std::uint32_t j = 0; j < 3; ++j) {
            EXPECT_NEAR(xyz(i, j), unitVariance * static_cast<double>(again.cofactors[i][j]),
                        1e-3 * trace);
        }
    }
    EXPECT_NEAR(result.sigma3, std::sqrt(trace), 1e-12);
    EXPECT_NEAR(result.relativeAccuracy, result.sigma3 / result.length * 1e6, 1e-9);
}

TEST_F(FixedSolution, KeepsWhatTheFixingSaidAndFilesACopy) {
    AdjustedSession staged(ScenarioOf(7, 0, 0, 0, 1));
    SolveResultFixed fix = staged.TrueFix(1);
    fix.ratio = 3.75;
    ASSERT_EQ(staged.solver->FixedSolveMulEq(1, fix), 1);
    EXPECT_EQ(fix.ratio, 3.75);
    EXPECT_EQ(staged.Fixed().ratio, 3.75);
    EXPECT_EQ(staged.Fixed().dX, fix.dX);
    EXPECT_EQ(staged.Fixed().residuals.Size(), fix.residuals.Size());
    EXPECT_EQ(fix.residuals.Size(), 6);
    EXPECT_EQ(fix.heightDifference, 0.0);
    EXPECT_EQ(fix.horizontalDistance, fix.length);
    EXPECT_EQ(staged.solver->resultManage.fixedResults.size(), 1u);
}

TEST_F(FixedSolution, ARecordOfAnotherModelOrWithoutAmbiguitiesFailsAndFilesNothing) {
    AdjustedSession staged(ScenarioOf(7, 0, 0, 0, 3));
    SolveResultFixed other = staged.TrueFix(2);
    EXPECT_EQ(staged.solver->FixedSolveMulEq(1, other), 0);
    SolveResultFixed empty = staged.TrueFix(1);
    empty.ambiguities.clear();
    EXPECT_EQ(staged.solver->FixedSolveMulEq(1, empty), 0);
    SolveResultFixed ionosphereFree = staged.TrueFix(6);
    EXPECT_EQ(staged.solver->FixedSolveMulEq(6, ionosphereFree), 0);  // there is no wide lane
    SolveResultFixed wideLane;
    wideLane.mode = 5;
    staged.solver->resultManage.fixedResults.push_back(wideLane);
    EXPECT_EQ(staged.solver->FixedSolveMulEq(6, ionosphereFree), 0);
    EXPECT_EQ(staged.solver->resultManage.fixedResults.size(), 1u);
}

TEST_F(FixedSolution, ATrackWithoutRowsShowsItInItsRms) {
    AdjustedSession staged(ScenarioOf(7, 0, 0, 0, 3));
    SolveResultFixed fix = staged.TrueFix(3);
    const int sat = fix.ambiguities[2].sat;
    fix.ambiguities[2].value1 += 1000.0;  // 190 m: out of every scale
    ASSERT_EQ(staged.solver->FixedSolveMulEq(3, fix), 1);
    const AmbRstInfo track = AdjustedSession::TrackOf(fix.ambiguities, sat);
    EXPECT_EQ(track.rms1, -99.99);
    EXPECT_EQ(track.rows1, 0);
    EXPECT_EQ(track.rejected1, 40);
    EXPECT_EQ(track.rows2, 40);
    EXPECT_GT(track.rms2, 0.0);
    EXPECT_LT(track.rms2, 1e-4);
    EXPECT_LT(simulation::ErrorOf(fix, staged.session), 1e-4);
    EXPECT_TRUE(fix.residuals.Find(sat).firstBlock.empty());
    EXPECT_EQ(fix.residuals.Find(sat).secondBlock.size(), 40u);
}

TEST_F(FixedSolution, OutsideModel3TheSecondBlocksRmsStaysZero) {
    AdjustedSession staged(ScenarioOf(7, 0, 0, 0, 1));
    for (const AmbRstInfo& track : Solve(staged, 1).ambiguities) {
        EXPECT_EQ(track.rms2, 0.0);
        EXPECT_EQ(track.rows1, 40);
        EXPECT_GT(track.rms1, 1e-6);
        EXPECT_LT(track.rms1, 1e-4);
    }
}

TEST_F(FixedSolution, ASecondPassRunsHoweverSmallTheFirstCorrection) {
    // From the truth the first correction is far below a millimetre. The residual scale of the
    // first pass, 5 m, lets a decimetre through, that of the second does not.
    AdjustedSession staged(ScenarioOf(7, 0, 7, 0, 1));
    const int sat = staged.Satellite(kGps, 2);
    staged.JumpAt(sat, 11, 0.1 / 0.19029367, 0.0);
    const SolveResultFixed& result = Solve(staged, 1);
    EXPECT_EQ(AdjustedSession::TrackOf(result.ambiguities, sat).rejected1, 1);
    EXPECT_EQ(AdjustedSession::TrackOf(result.ambiguities, sat).rows1, 39);
}

TEST_F(FixedSolution, ARowThatOnlyTheMedianRefusesStaysCountedWithoutInfluence) {
    // A centimetre at ten epochs: within three and a half times the least residual scale of 3 mm,
    // beyond two deviations of the variance model at a satellite high up, and far beyond the
    // median.
    AdjustedSession staged(ScenarioOf(7, 0, 7, 0, 1));
    int sat = 0;
    double highest = 0.0;
    for (int n = 0; n < 6; ++n) {
        const int each = staged.Satellite(kGps, n);
        if (staged.Epoch(20).azelA[each - 1][1] > highest) {
            highest = staged.Epoch(20).azelA[each - 1][1];
            sat = each;
        }
    }
    for (int e = 10; e < 20; ++e) {
        staged.JumpAt(sat, e, 0.0098 / 0.19029367, 0.0);
    }
    const SolveResultFixed& result = Solve(staged, 1);
    const AmbRstInfo track = AdjustedSession::TrackOf(result.ambiguities, sat);
    EXPECT_EQ(track.rows1, 40);
    EXPECT_EQ(track.rejected1, 0);
    EXPECT_NEAR(track.rms1, 0.0098 * std::sqrt(10.0 / 40.0), 2e-4);
    EXPECT_LT(simulation::ErrorOf(result, staged.session), 5e-5);
}

TEST_F(FixedSolution, ValuesEndRounded) {
    AdjustedSession staged(ScenarioOf(7, 0, 0, 0, 3));
    SolveResultFixed fix = staged.TrueFix(3);
    const std::vector<AmbRstInfo> whole = fix.ambiguities;
    fix.ambiguities[0].value1 += 0.004;
    fix.ambiguities[1].value2 -= 0.004;
    fix.ambiguities[2].value1 +=
        whole[2].value1 > 0.0 ? 0.5 : -0.5;  // half a cycle, away from zero
    ASSERT_EQ(staged.solver->FixedSolveMulEq(3, fix), 1);
    EXPECT_EQ(fix.ambiguities[0].value1, whole[0].value1);
    EXPECT_EQ(fix.ambiguities[1].value2, whole[1].value2);
    EXPECT_EQ(fix.ambiguities[2].value1, whole[2].value1 + (whole[2].value1 > 0.0 ? 1.0 : -1.0));
    EXPECT_EQ(staged.Fixed().ambiguities[2].value1, fix.ambiguities[2].value1);
}

TEST_F(FixedSolution, SatellitesWithoutAFixedAmbiguityHaveNoRows) {
    AdjustedSession staged(ScenarioOf(7, 0, 0, 0, 1));
    SolveResultFixed fix = staged.TrueFix(1);
    const int sat = fix.ambiguities[3].sat;
    fix.ambiguities.erase(fix.ambiguities.begin() + 3);
    fix.ambiguities[0].firstEpoch = 13;
    ASSERT_EQ(staged.solver->FixedSolveMulEq(1, fix), 1);
    EXPECT_TRUE(fix.residuals.Find(sat).firstBlock.empty());
    EXPECT_EQ(AdjustedSession::TrackOf(fix.ambiguities, fix.ambiguities[0].sat).rows1 +
                  AdjustedSession::TrackOf(fix.ambiguities, fix.ambiguities[1].sat).rows1,
              27 + 40);
}

TEST_F(FixedSolution, IonosphereFreeRowsNeedTheWideLaneOfTheirEpoch) {
    AdjustedSession staged(ScenarioOf(7, 0, 0, 0, 6));
    staged.FileWideLane();
    std::vector<AmbRstInfo>& wideLane = staged.solver->resultManage.fixedResults[0].ambiguities;
    const int sat = wideLane[2].sat, other = wideLane[0].sat;
    wideLane[2].lastEpoch = 9;
    const SolveResultFixed& result = Solve(staged, 6);
    EXPECT_EQ(AdjustedSession::TrackOf(result.ambiguities, sat).rows1, 10);
    EXPECT_EQ(AdjustedSession::TrackOf(result.ambiguities, other).rows1, 40);
}

TEST_F(FixedSolution, GlonassRowsNeedTheirSegment) {
    AdjustedSession staged(ScenarioOf(6, 5, 0, 0, 1));
    SolveResultFixed fix = staged.TrueFix(1);
    const int sat = staged.Satellite(kGlonass, 1);
    staged.Shorten(sat, 0, 24);
    ASSERT_EQ(staged.solver->FixedSolveMulEq(1, fix), 1);
    EXPECT_EQ(AdjustedSession::TrackOf(fix.ambiguities, sat).rows1, 25);
}

TEST_F(FixedSolution, WithoutGlonassRowsTheBiasIsGivenUp) {
    for (const int mode : {1, 3}) {
        ForgetProcess();
        AdjustedSession staged(ScenarioOf(7, 5, 0, 0, mode));
        staged.ForgetSystem(kGlonass);
        ASSERT_EQ(staged.solver->hasGlonass, 1);
        const SolveResultFixed& result = Solve(staged, mode);
        EXPECT_EQ(staged.solver->hasGlonass, 0);
        EXPECT_LT(simulation::ErrorOf(result, staged.session), 1e-4);
    }
}

TEST_F(FixedSolution, GalileoWithoutABandIsRejectedInEveryBlock) {
    // The fixed solution needs both bands for either block. Of equal ones the second is missing;
    // there is no band 0.
    for (const auto& [firstBand, secondBand] : {std::pair{1, 1}, {0, 2}}) {
        SCOPED_TRACE(firstBand);
        ForgetProcess();
        AdjustedSession staged(ScenarioOf(7, 0, 0, 5, 3));
        SolveResultFixed fix = staged.TrueFix(3);
        staged.solver->config.galFreq1 = firstBand;
        staged.solver->config.galFreq2 = secondBand;
        ASSERT_EQ(staged.solver->FixedSolveMulEq(3, fix), 1);
        for (const AmbRstInfo& track : fix.ambiguities) {
            const bool galileo = SplitSatNumber(track.sat) == kGalileo;
            EXPECT_EQ(track.rows1, galileo ? 0 : 40);
            EXPECT_EQ(track.rows2, galileo ? 0 : 40);
            EXPECT_EQ(track.rejected1, galileo ? 40 : 0);
        }
        EXPECT_LT(simulation::ErrorOf(fix, staged.session), 1e-4);
    }
}

TEST_F(FixedSolution, ANoiseBelowATenthOfAMillimetreLeavesNoCovariance) {
    AdjustedSession staged(ScenarioOf(7, 0, 0, 0, 1));
    const SolveResultFixed& result = Solve(staged, 1);
    gult::matrixT xyz = result.covXYZ;
    ASSERT_EQ(xyz.RowCount(), 3u);
    EXPECT_EQ(xyz(1, 1), 0.0);
    EXPECT_EQ(result.sigma3, 0.0);
}

TEST_F(FixedSolution, AVectorOfNoLengthIsHeldOffZeroInItsRelativeAccuracy) {
    for (const double metres : {0.003, 0.0}) {
        ForgetProcess();
        AdjustedSession staged(ScenarioOf(7, 0, 0, 0, 1));
        MakeZeroBaseline(staged, metres);
        SolveResultFixed fix = staged.TrueFix(1);
        for (AmbRstInfo& track : fix.ambiguities) {
            track.value1 = 0.0;
        }
        ASSERT_EQ(staged.solver->FixedSolveMulEq(1, fix), 1);
        ASSERT_EQ(fix.dX, 0.0);
        ASSERT_EQ(fix.dY, 0.0);
        ASSERT_EQ(fix.dZ, 0.0);
        EXPECT_EQ(fix.length, 1e-12);
        EXPECT_EQ(fix.sigmaLength, 0.0);
        if (metres > 0.0) {
            EXPECT_GT(fix.sigma3, 0.0);
            EXPECT_NEAR(fix.relativeAccuracy, fix.sigma3 / 1e-12 * 1e6,
                        1e-9 * fix.relativeAccuracy);
        } else {
            EXPECT_EQ(fix.relativeAccuracy, 0.0);
        }
    }
}

TEST_F(FixedSolution, RejectionGoesByTheResidualsOfThePassBefore) {
    // Noise of 4 mm: the outlier of 25 mm goes, that of 10 mm stays.
    Scenario scenario = ScenarioOf(7, 0, 7, 0, 1);
    scenario.phaseNoise = 0.002;
    AdjustedSession staged(scenario);
    const int far = staged.Satellite(kGps, 1), near = staged.Satellite(kGps, 2);
    staged.JumpAt(far, 11, 0.030 / 0.19029367, 0.0);
    staged.JumpAt(near, 12, 0.006 / 0.19029367, 0.0);
    const SolveResultFixed& result = Solve(staged, 1);
    const auto hasPoint = [&](int sat, int e) {
        const Epoch time = staged.Epoch(e).epoch;
        const auto& points = result.residuals.Find(sat).firstBlock;
        return std::any_of(points.begin(), points.end(),
                           [&](const ResidualPoint& point) { return point.time == time; });
    };
    EXPECT_FALSE(hasPoint(far, 11));
    EXPECT_TRUE(hasPoint(far, 12));
    EXPECT_TRUE(hasPoint(near, 12));
    EXPECT_LT(simulation::ErrorOf(result, staged.session), 4.0 * result.sigma3);
}

TEST_F(FixedSolution, EpochsThatHoldNoReferencePlayNoPart) {
    // Their phases would spoil the vector if they were used.
    AdjustedSession staged(ScenarioOf(7, 0, 0, 0, 1));
    SolveResultFixed fix = staged.TrueFix(1);
    for (const int e : {0, 20, 39}) {
        for (const int sat : staged.session.satellites) {
            staged.JumpAt(sat, e, 0.01 * sat, 0.0);
        }
    }
    StaticPeriod lost = staged.solver->periods[0];
    staged.solver->periods[0].startIndex = 1;
    staged.solver->periods[0].endIndex = 38;
    lost.startIndex = 39;
    lost.refSatGps = -1;
    staged.solver->periods.push_back(lost);
    staged.DropOut(staged.ReferenceOf(kGps), 20, 20);
    ASSERT_EQ(staged.solver->FixedSolveMulEq(1, fix), 1);
    for (const AmbRstInfo& track : fix.ambiguities) {
        EXPECT_EQ(track.rows1, 37);
        EXPECT_EQ(track.rejected1, 0);
    }
    EXPECT_LT(simulation::ErrorOf(fix, staged.session), 1e-4);
}

TEST_F(FixedSolution, ABiasThatWasGivenUpBeforeIsNoParameter) {
    AdjustedSession staged(ScenarioOf(6, 5, 0, 0, 1));
    staged.solver->hasGlonass = 0;
    SolveResultFixed fix = staged.TrueFix(1);
    ASSERT_EQ(staged.solver->FixedSolveMulEq(1, fix), 1);
    EXPECT_EQ(fix.dof, 40 * 9 - 3);
    for (const AmbRstInfo& track : fix.ambiguities) {
        EXPECT_EQ(track.rows1, 40);
    }
    EXPECT_LT(simulation::ErrorOf(fix, staged.session), 1e-4);
}

TEST_F(FixedSolution, PassesThatNeverSettleEndWithAResult) {
    // Few satellites with errors of long tails: the weights wander.
    for (std::uint64_t seed = 1; seed <= 12; ++seed) {
        ForgetProcess();
        AdjustedSession staged(QuietScenario(5, 0, 0, 0, 1));
        SolveResultFixed fix = staged.TrueFix(1);
        for (const int sat : staged.session.satellites) {
            for (int e = 0; e < 40; ++e) {
                const auto satellite = static_cast<std::uint64_t>(sat);
                const auto epoch = static_cast<std::uint64_t>(e);
                const double g = simulation::Gaussian(seed, 99, satellite, epoch);
                staged.JumpAt(sat, e, (0.01 * g + 0.02 * g * g * g) / 0.19, 0.0);
            }
        }
        ASSERT_EQ(staged.solver->FixedSolveMulEq(1, fix), 1);
        int rows = 0, rejected = 0;
        for (const AmbRstInfo& track : fix.ambiguities) {
            rows += track.rows1;
            rejected += track.rejected1;
        }
        EXPECT_EQ(rows + rejected, 4 * 40);
        EXPECT_EQ(fix.dof, rows - 3);
        EXPECT_EQ(staged.Fixed().dof, fix.dof);
        EXPECT_LT(simulation::ErrorOf(fix, staged.session), 0.5);
    }
}

}  // namespace
}  // namespace vornel::test
