#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <string>
#include <vector>

#include "exports/process_fixture.h"
#include "run/adjusted_session.h"
#include "simulation/noise.h"

namespace vornel::test {
namespace {

using simulation::CarrierFrequency;
using simulation::Scenario;

constexpr double kLight = 299792458.0;

// Coefficients of the phases of a mode and block, from the frequencies.
struct Lane {
    double a, b, wavelength, ambiguityWavelength;
};

Lane LaneOf(const SolveConfig& config, int mode, int block, int sat) {
    const double f1 = CarrierFrequency(config, sat, 0), f2 = CarrierFrequency(config, sat, 1);
    const double squares = f1 * f1 - f2 * f2;
    Lane lane{};
    switch (block == 1 ? 2 : mode) {
        case 2:
            lane = {0.0, 1.0, 0.0, 0.0};
            break;
        case 4:
            lane = {1.0, 1.0, 0.0, 0.0};
            break;
        case 5:
            lane = {1.0, -1.0, 0.0, 0.0};
            break;
        case 6:
            lane = {f1 * f1 / squares, -f1 * f2 / squares, 0.0, 0.0};
            break;
        default:
            lane = {1.0, 0.0, 0.0, 0.0};
    }
    lane.wavelength = kLight / (lane.a * f1 + lane.b * f2);
    lane.ambiguityWavelength = lane.wavelength * (mode == 6 ? f1 / (f1 + f2) : 1.0);
    return lane;
}

double SigmaOfDoubleDifference(const SolveConfig& config, int mode) {
    const Lane gps = LaneOf(config, mode, 0, 1);
    return 2.0 * config.phaseStd * gps.wavelength * std::hypot(gps.a, gps.b);
}

// A start that the first pass has to correct.
XYZPosition ADecimetreOff(const XYZPosition& truth) {
    return {truth.X + 0.06, truth.Y - 0.07, truth.Z + 0.04};
}

class FloatSolution : public ProcessTest {};
class FloatSolutionOfModel : public ProcessTest, public ::testing::WithParamInterface<int> {};
INSTANTIATE_TEST_SUITE_P(Models, FloatSolutionOfModel, ::testing::Range(1, 7),
                         [](const auto& model) { return "Model" + std::to_string(model.param); });

// --- normal equations

// The change of the computed value of a satellite with the rover's coordinates, by differences of
// the model 100 m to either side.
void NumericalDirection(const SDObsData& epoch, int sat, const XYZPosition& rover,
                        const XYZPosition& base, double direction[3]) {
    for (int axis = 0; axis < 3; ++axis) {
        double value[2];
        for (const int side : {0, 1}) {
            SDObsData record = epoch;
            const double step = side == 0 ? -100.0 : 100.0;
            XYZPosition moved = rover;
            (axis == 0 ? moved.X : axis == 1 ? moved.Y : moved.Z) += step;
            double unit[3];
            record.Model(0.0, sat, moved, base, unit, value[side]);
        }
        direction[axis] = (value[1] - value[0]) / 200.0;
    }
}

TEST_P(FloatSolutionOfModel, HasTheNormalEquationsOfNumericalDifferentiation) {
    const int mode = GetParam();
    Scenario scenario = QuietScenario(5, 5, 5, mode == 6 ? 0 : 5, mode);
    scenario.troposphere = simulation::Troposphere::kNone;
    scenario.config.tropoModel = 2;
    AdjustedSession staged(scenario);
    StaticSolve& solver = *staged.solver;
    // The two receivers see the same satellite clock; without it the model's line of sight is of
    // unit length.
    for (SDObsData& epoch : solver.epochs) {
        for (const int sat : staged.session.satellites) {
            epoch.satClockA[sat - 1] = epoch.satClockB[sat - 1] = 0.0;
        }
    }
    if (mode == 6) {
        staged.FileWideLane();
    }
    const std::vector<SDObsData> epochs = solver.epochs;
    ASSERT_EQ(solver.hasGlonass, 1);
    ASSERT_EQ(staged.FloatPass(mode), 0);

    const int blocks = mode == 3 ? 2 : 1;
    const auto tracks = solver.ambiguityParas.size();
    const std::size_t nc = 3 + static_cast<std::size_t>(blocks);
    const std::size_t size = nc + tracks * static_cast<std::size_t>(blocks);
    std::vector<std::vector<double>> expected(size, std::vector<double>(size, 0.0));
    for (std::size_t e = 0; e < epochs.size(); ++e) {
        std::map<int, std::vector<double>> directions;
        for (const int sat : epochs[e].activeSats) {
            directions[sat].resize(3);
            NumericalDirection(epochs[e], sat, staged.session.rover, staged.session.base,
                               directions[sat].data());
        }
        for (int block = 0; block < blocks; ++block) {
            for (std::size_t i = 0; i < tracks; ++i) {
                const int sat = solver.ambiguityParas[i].sat;
                if (directions.count(sat) == 0) {
                    continue;
                }
                const int system = SplitSatNumber(sat);
                const int reference = staged.ReferenceOf(system);
                const Lane lane = LaneOf(solver.config, mode, block, sat);
                const Lane referenceLane = LaneOf(solver.config, mode, block, reference);
                std::vector<double> row(size, 0.0);
                for (std::size_t k = 0; k < 3; ++k) {
                    row[k] = directions[sat][k] - directions[reference][k];
                }
                if (system == kGlonass) {
                    row[3 + static_cast<std::size_t>(block)] =
                        (kLight / lane.wavelength - kLight / referenceLane.wavelength) / 1e6;
                }
                row[nc + static_cast<std::size_t>(block) * tracks + i] = lane.ambiguityWavelength;
                const double weight = system == kGlonass ? 0.6 : 1.0;
                for (std::size_t k = 0; k < size; ++k) {
                    for (std::size_t l = 0; l < size; ++l) {
                        expected[k][l] += weight * row[k] * row[l];
                    }
                }
            }
        }
    }
    for (std::size_t block = 0; block < static_cast<std::size_t>(blocks); ++block) {
        expected[3 + block][3 + block] += SigmaOfDoubleDifference(solver.config, mode) / 0.0025;
    }

    gult::matrixT normal = solver.equationBlock.normal[0];
    ASSERT_EQ(normal.RowCount(), size);
    for (std::size_t k = 0; k < size; ++k) {
        for (std::size_t l = 0; l < size; ++l) {
            const double scale = std::sqrt(expected[k][k] * expected[l][l]);
            EXPECT_NEAR(normal(static_cast<std::uint32_t>(k), static_cast<std::uint32_t>(l)),
                        expected[k][l], 1e-6 * scale)
                << k << ", " << l;
        }
    }
}

TEST_P(FloatSolutionOfModel, RecordsWhatItsEquationsSay) {
    const int mode = GetParam();
    Scenario scenario = QuietScenario(6, 5, 6, mode == 6 ? 0 : 5, mode);
    scenario.phaseNoise = 0.002;
    AdjustedSession staged(scenario);
    StaticSolve& solver = *staged.solver;
    if (mode == 6) {
        staged.FileWideLane();
    }
    ASSERT_EQ(solver.FloatSolveMulEq(mode), 1);
    const SolveResultFloat& result = staged.Float();
    PeriodEquations& equations = solver.equationBlock;

    EXPECT_EQ(result.mode, mode);
    EXPECT_EQ(solver.roverPosition.X, staged.session.base.X + result.dX);
    EXPECT_EQ(solver.roverPosition.Y, staged.session.base.Y + result.dY);
    EXPECT_EQ(solver.roverPosition.Z, staged.session.base.Z + result.dZ);
    EXPECT_NEAR(result.length, std::hypot(result.dX, result.dY, result.dZ), 1e-9);
    EXPECT_EQ(result.heightDifference, 0.0);
    EXPECT_NEAR(result.horizontalDistance, result.length, 1e-9);

    int rows = 0;
    for (const AmbRstInfo& track : result.ambiguities) {
        rows += track.rows1 + track.rows2;
        EXPECT_EQ(track.rows2 + track.rejected2, mode == 3 ? track.rows1 + track.rejected1 : 0);
        EXPECT_EQ(track.firstTime, solver.epochs[static_cast<std::size_t>(track.firstEpoch)].epoch);
        EXPECT_EQ(track.lastTime, solver.epochs[static_cast<std::size_t>(track.lastEpoch)].epoch);
    }
    EXPECT_EQ(result.dof, rows - equations.totalCount);

    // The residuals of the list are those of the last pass, whose correction was small.
    double squares = 0.0;
    int listed = 0;
    for (const auto& [sat, residual] : result.residuals.entries) {
        for (const auto* block : {&residual.firstBlock, &residual.secondBlock}) {
            for (const ResidualPoint& point : *block) {
                const double v = point.valueMm + (point.valueMm > 0   ? 0.5
                                                  : point.valueMm < 0 ? -0.5
                                                                      : 0.0);
                squares += v * v * 1e-6;
                ++listed;
            }
        }
    }
    EXPECT_EQ(listed, rows);
    EXPECT_NEAR(result.rms, std::sqrt(squares / rows), 0.15 * result.rms);

    // Covariance of the coordinates: the variance of unit weight times their cofactors.
    const double sigmaDd = SigmaOfDoubleDifference(solver.config, mode);
    const double unitVariance = result.varianceFactor * sigmaDd * sigmaDd;
    gult::matrixT xyz = result.covXYZ, neu = result.covNEU, rotation(3, 3);
    MakeRotationNEU(rotation, solver.roverPosition);
    double trace = 0.0, along = 0.0;
    const double vector[3] = {result.dX, result.dY, result.dZ};
    for (std::uint32_t i = 0; i < 3; ++i) {
        trace += xyz(i, i);
        along += vector[i] * vector[i] / (result.length * result.length) * xyz(i, i);
        for (std::uint32_t j = 0; j < 3; ++j) {
            EXPECT_NEAR(xyz(i, j), unitVariance * equations.qCommon(i, j), 1e-9 * trace);
            double rotated = 0.0;
            for (std::uint32_t k = 0; k < 3; ++k) {
                for (std::uint32_t l = 0; l < 3; ++l) {
                    rotated += rotation(i, k) * xyz(k, l) * rotation(j, l);
                }
            }
            EXPECT_NEAR(neu(i, j), rotated, 1e-9 * xyz(0, 0));
        }
    }
    EXPECT_NEAR(result.sigma3, std::sqrt(trace), 1e-12);
    EXPECT_NEAR(result.sigmaLength, std::sqrt(along), 1e-12);
    // To the bit: the squares are divided by the length twice.
    const double L = result.length;
    EXPECT_EQ(result.sigmaLength, std::sqrt(vector[0] * vector[0] / L / L * xyz(0, 0) +
                                            vector[1] * vector[1] / L / L * xyz(1, 1) +
                                            vector[2] * vector[2] / L / L * xyz(2, 2)));
    EXPECT_NEAR(result.relativeAccuracy, result.sigma3 / result.length * 1e6, 1e-9);

    // Covariance of the ambiguities: a single period's, with the two frequencies of a track of
    // model 3 drawn apart.
    int nx = 0, nb = 0;
    gult::matrixT values, cofactors;
    std::vector<AmbRstInfo> list;
    equations.ExtractPeriod(0, nx, nb, values, cofactors, list);
    gult::matrixT ambCov = result.ambCov;
    ASSERT_EQ(ambCov.RowCount(), static_cast<std::uint32_t>(nb));
    const auto place = [&](std::uint32_t i) {
        const auto half = static_cast<std::uint32_t>(nb) / 2;
        return mode != 3 ? i : i < half ? 2 * i : 2 * (i - half) + 1;
    };
    for (std::uint32_t i = 0; i < ambCov.RowCount(); ++i) {
        const auto row = static_cast<std::uint32_t>(nx) + place(i);
        for (std::uint32_t j = 0; j < ambCov.RowCount(); ++j) {
            const auto column = static_cast<std::uint32_t>(nx) + place(j);
            const double expected = unitVariance * cofactors(row, column);
            EXPECT_NEAR(
                ambCov(i, j), expected,
                1e-7 * unitVariance * std::sqrt(cofactors(row, row) * cofactors(column, column)));
        }
    }
}

TEST_F(FloatSolution, TheVarianceFactorIsThatOfTheWeightedResiduals) {
    // The second pass has little to correct, so that its misclosures are nearly the residuals.
    Scenario scenario = QuietScenario(7, 6, 0, 0, 1);
    scenario.phaseNoise = 0.0005;
    AdjustedSession staged(scenario);
    StaticSolve& solver = *staged.solver;
    solver.resultManage.tripleDiff.rms = 1.0;  // no outliers
    solver.roverPosition = ADecimetreOff(staged.session.rover);
    ASSERT_EQ(staged.FloatPass(1), 1);
    const SolveResultFloat& result = staged.Float();
    ASSERT_EQ(result.dof, (6 + 5) * 40 - 3 - 1 - (6 + 5));
    double squares = 0.0;
    for (const AmbRstInfo& track : result.ambiguities) {
        const double weight = SplitSatNumber(track.sat) == kGlonass ? 0.6 : 1.0;
        squares += weight * 40.0 * track.rms1 * track.rms1;
    }
    const double sigmaDd = SigmaOfDoubleDifference(solver.config, 1);
    const double variance = result.varianceFactor * sigmaDd * sigmaDd;
    EXPECT_NEAR(variance * result.dof, squares, 0.03 * squares);
    // Half a millimetre on each of the four phases of a double difference makes a millimetre.
    EXPECT_NEAR(std::sqrt(variance), 0.001, 0.0002);
}

TEST_F(FloatSolution, ANoiseBelowATenthOfAMillimetreLeavesNoCovariance) {
    AdjustedSession staged(QuietScenario(7, 0, 0, 0, 1));
    ASSERT_EQ(staged.solver->FloatSolveMulEq(1), 1);
    ASSERT_LT(staged.Float().rms, 1e-4);
    gult::matrixT xyz = staged.Float().covXYZ;
    ASSERT_EQ(xyz.RowCount(), 3u);
    EXPECT_EQ(xyz(0, 0), 0.0);
    EXPECT_EQ(xyz(1, 2), 0.0);
    EXPECT_EQ(staged.Float().sigma3, 0.0);
    EXPECT_EQ(staged.Float().sigmaLength, 0.0);
}

// --- tracks that go

TEST_F(FloatSolution, ATrackOfTooFewRowsIsErasedAndThePassRepeated) {
    struct Case {
        int fewest, rows;
        bool stays;
    };
    for (const Case& c : {Case{10, 9, false}, {10, 10, true}, {3, 5, false}, {3, 6, true}}) {
        ForgetProcess();
        AdjustedSession staged(QuietScenario(7, 0, 0, 0, 1));
        staged.solver->config.minEpochs = c.fewest;
        const int sat = staged.Satellite(kGps, 2);
        staged.Shorten(sat, 5, 5 + c.rows - 1);
        EXPECT_EQ(staged.FloatPass(1), c.stays ? 0 : 1);
        EXPECT_EQ(AdjustedSession::TrackOf(staged.Float().ambiguities, sat).sat,
                  c.stays ? sat : -1);
        EXPECT_EQ(staged.Float().ambiguities.size(), c.stays ? 6u : 5u);
        EXPECT_EQ(staged.solver->equationBlock.ambiguities.size(),
                  staged.Float().ambiguities.size());
    }
}

TEST_F(FloatSolution, ATrackOfTooFewRowsInTheSecondBlockIsErased) {
    for (const int good : {9, 10}) {
        ForgetProcess();
        AdjustedSession staged(QuietScenario(7, 0, 0, 0, 3));
        const int sat = staged.Satellite(kGps, 2);
        for (int e = good; e < 40; ++e) {
            staged.JumpAt(sat, e, 0.0, e % 2 == 0 ? 2.0 : -2.0);  // half a metre: rejected
        }
        staged.FloatPass(3);
        EXPECT_EQ(AdjustedSession::TrackOf(staged.Float().ambiguities, sat).sat,
                  good == 10 ? sat : -1);
    }
}

TEST_F(FloatSolution, ATrackWithResidualsAboveHalfAMetreIsErased) {
    // With the triple differences as bad as a metre nothing is rejected in the first pass.
    for (const auto& [metres, stays] : {std::pair{0.49, true}, {0.51, false}}) {
        ForgetProcess();
        AdjustedSession staged(QuietScenario(7, 0, 0, 0, 1));
        staged.solver->resultManage.tripleDiff.rms = 1.0;
        const int sat = staged.Satellite(kGps, 2);
        // The first epoch sets the ambiguity. Every other one stands off it by the root of two
        // times the rms.
        for (int e = 1; e < 40; e += 2) {
            staged.JumpAt(sat, e, metres * std::sqrt(2.0) / 0.19029367279836487, 0.0);
        }
        staged.FloatPass(1);
        const bool there = AdjustedSession::TrackOf(staged.Float().ambiguities, sat).sat == sat;
        EXPECT_EQ(there, stays) << metres;
    }
}

TEST_F(FloatSolution, ATrackIsErasedForTheResidualsOfItsSecondFrequencyToo) {
    // Erased at the end of the first pass, the track has no part in the second, which has nothing to
    // correct. Kept, it disturbs a solution first.
    for (const auto& [metres, erased] : {std::pair{0.49, false}, {0.51, true}}) {
        ForgetProcess();
        AdjustedSession staged(QuietScenario(7, 0, 0, 0, 3));
        staged.solver->resultManage.tripleDiff.rms = 1.0;
        const int sat = staged.Satellite(kGps, 2);
        for (int e = 1; e < 40; e += 2) {
            staged.JumpAt(sat, e, 0.0, metres * std::sqrt(2.0) / 0.24421021342456825);
        }
        EXPECT_EQ(staged.FloatPass(3) == 1, erased) << metres;
    }
}

TEST_F(FloatSolution, EpochsThatHoldNoReferencePlayNoPart) {
    // Their phases would spoil the vector if they were used.
    AdjustedSession staged(QuietScenario(7, 0, 0, 0, 1));
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
    for (AmbiguityPara& para : staged.solver->ambiguityParas) {
        para.firstEpoch = 1;
        para.lastEpoch = 38;
    }
    staged.FloatPass(1);
    EXPECT_EQ(staged.Float().ambiguities.size(), 6u);
    for (const AmbRstInfo& track : staged.Float().ambiguities) {
        EXPECT_EQ(track.rows1, 37);
        EXPECT_EQ(track.rejected1, 0);
    }
    EXPECT_LT(simulation::ErrorOf(staged.Float(), staged.session), 5e-4);
}

TEST_F(FloatSolution, ATrackThatReachesOverAPeriodsEndHasNoRows) {
    // Two periods of 20 epochs; one track lies in both and belongs to neither.
    AdjustedSession staged(QuietScenario(7, 0, 0, 0, 1));
    const int sat = staged.Satellite(kGps, 2);
    StaticPeriod later = staged.solver->periods[0];
    staged.solver->periods[0].endIndex = 19;
    later.startIndex = 20;
    staged.solver->periods.push_back(later);
    std::vector<AmbiguityPara> halves;
    for (const AmbiguityPara& para : staged.solver->ambiguityParas) {
        if (para.sat == sat) {
            halves.push_back(para);
        } else {
            halves.emplace_back(para.sat, 0, 19);
            halves.emplace_back(para.sat, 20, 39);
        }
    }
    SortAmbiguities(halves);
    staged.solver->ambiguityParas = halves;
    staged.FloatPass(1);
    EXPECT_EQ(staged.Float().ambiguities.size(), 10u);
    EXPECT_EQ(AdjustedSession::TrackOf(staged.Float().ambiguities, sat).sat, -1);
    EXPECT_LT(simulation::ErrorOf(staged.Float(), staged.session), 5e-4);
}

TEST_F(FloatSolution, ErasuresReachNoOtherSolution) {
    AdjustedSession staged(QuietScenario(7, 0, 0, 0, 3));
    const int sat = staged.Satellite(kGps, 2);
    for (int e = 9; e < 40; ++e) {
        staged.JumpAt(sat, e, 0.0, e % 2 == 0 ? 2.0 : -2.0);
    }
    ASSERT_EQ(staged.solver->FloatSolveMulEq(2), 1);
    EXPECT_EQ(staged.Float().ambiguities.size(), 5u);
    ASSERT_EQ(staged.solver->FloatSolveMulEq(1), 1);
    EXPECT_EQ(staged.Float().ambiguities.size(), 6u);
    EXPECT_EQ(staged.solver->resultManage.floatResults.size(), 2u);
}

TEST_F(FloatSolution, WithoutSegmentsThereIsNone) {
    AdjustedSession staged(QuietScenario(7, 0, 0, 0, 1));
    const XYZPosition before = staged.solver->roverPosition;
    staged.solver->ambiguityParas.clear();
    EXPECT_EQ(staged.solver->FloatSolveMulEq(1), 0);
    EXPECT_TRUE(staged.solver->resultManage.floatResults.empty());
    EXPECT_EQ(staged.solver->roverPosition.X, before.X);
}

TEST_F(FloatSolution, WhenTheLastTrackIsErasedThereIsNone) {
    AdjustedSession staged(QuietScenario(7, 0, 0, 0, 1));
    for (AmbiguityPara& para : staged.solver->ambiguityParas) {
        para.lastEpoch = 8;
    }
    EXPECT_EQ(staged.solver->FloatSolveMulEq(1), 0);
    EXPECT_TRUE(staged.solver->resultManage.floatResults.empty());
}

TEST_F(FloatSolution, TheIonosphereFreeOneNeedsIntegersOfTheWideLane) {
    AdjustedSession staged(QuietScenario(7, 0, 0, 0, 6));
    EXPECT_EQ(staged.solver->FloatSolveMulEq(6), 0);
    SolveResultFixed empty;
    empty.mode = 5;
    staged.solver->resultManage.fixedResults.push_back(empty);
    EXPECT_EQ(staged.solver->FloatSolveMulEq(6), 0);
    staged.solver->resultManage.fixedResults.clear();
    staged.FileWideLane();
    EXPECT_EQ(staged.solver->FloatSolveMulEq(6), 1);
    EXPECT_EQ(staged.Float().ambiguities.size(), 6u);
}

// --- rows

TEST_F(FloatSolution, RowsNeedASegmentAndTheReferenceOfTheirSystem) {
    AdjustedSession staged(QuietScenario(6, 0, 5, 0, 1));
    const int gps = staged.Satellite(kGps, 1), cut = staged.Satellite(kGps, 2);
    const int bds = staged.Satellite(kBds, 1);
    staged.Shorten(cut, 4, 20);
    staged.DropOut(gps, 30, 32);
    staged.DropOut(staged.ReferenceOf(kBds), 10, 14);
    ASSERT_EQ(staged.solver->FloatSolveMulEq(1), 1);
    const auto rowsOf = [&](int sat) {
        return AdjustedSession::TrackOf(staged.Float().ambiguities, sat).rows1;
    };
    EXPECT_EQ(rowsOf(gps), 37);
    EXPECT_EQ(rowsOf(cut), 17);
    EXPECT_EQ(rowsOf(bds), 35);
    EXPECT_EQ(rowsOf(staged.Satellite(kGps, 0)), 40);
}

TEST_F(FloatSolution, IonosphereFreeRowsNeedAWideLaneOfTheirSatelliteAndEpoch) {
    AdjustedSession staged(QuietScenario(7, 0, 0, 0, 6));
    staged.FileWideLane();
    std::vector<AmbRstInfo>& wideLane = staged.solver->resultManage.fixedResults.back().ambiguities;
    const int without = wideLane[0].sat, later = wideLane[1].sat;
    wideLane[1].firstEpoch = 15;
    wideLane.erase(wideLane.begin());
    EXPECT_EQ(staged.FloatPass(6), 1);  // the first pass erases the satellite without
    EXPECT_EQ(AdjustedSession::TrackOf(staged.Float().ambiguities, without).sat, -1);
    EXPECT_EQ(AdjustedSession::TrackOf(staged.Float().ambiguities, later).rows1, 25);
}

TEST_F(FloatSolution, AnOutlierIsRejectedBeyondTheScaleOfTheTripleDifferences) {
    // Five times the larger of 6 mm and the rms of the triple differences, and three and a half
    // times that.
    struct Case {
        double tripleDifferenceRms, outlier;
        int rejected;
    };
    for (const Case& c : {Case{0.0, 0.100, 0},
                          {0.0, 0.110, 1},
                          {0.004, 0.110, 1},
                          {0.007, 0.110, 0},
                          {0.007, 0.130, 1},
                          {std::nan(""), 0.100, 0},
                          {std::nan(""), 0.110, 1}}) {
        ForgetProcess();
        AdjustedSession staged(QuietScenario(7, 0, 6, 0, 1));
        staged.solver->resultManage.tripleDiff.rms = c.tripleDifferenceRms;
        const int sat = staged.Satellite(kGps, 2);
        staged.JumpAt(sat, 17, c.outlier / 0.19029367, 0.0);
        ASSERT_EQ(staged.FloatPass(1), 0);
        const AmbRstInfo track = AdjustedSession::TrackOf(staged.Float().ambiguities, sat);
        EXPECT_EQ(track.rejected1, c.rejected) << c.tripleDifferenceRms << ", " << c.outlier;
        EXPECT_EQ(track.rows1, 40 - c.rejected);
        EXPECT_EQ(staged.Float().residuals.Find(sat).firstBlock.size(),
                  static_cast<std::size_t>(40 - c.rejected));
    }
}

// The float ambiguity that a single pass, with the vector held at the truth, gives a satellite that
// stands at `first` cycles in its first epoch and at `later` in 99 more.
double AmbiguityOfOnePass(double first, double later) {
    ForgetProcess();
    Scenario scenario = QuietScenario(7, 0, 6, 0, 1);
    scenario.epochCount = 100;
    AdjustedSession staged(scenario);
    StaticSolve& solver = *staged.solver;
    solver.resultManage.tripleDiff.rms = 0.02;  // full weight for all
    solver.reservedProcessFlag = 1;
    solver.priorBaseline = staged.session.rover;
    solver.priorBaselineCov = gult::matrixT(3, 3);
    for (std::uint32_t i = 0; i < 3; ++i) {
        solver.priorBaselineCov(i, i) = 1e-12;
    }
    const int sat = staged.Satellite(kGps, 2);
    const double integer = staged.TrueAmbiguity(sat, 0, 0);
    staged.JumpFrom(sat, 0, first - integer, 0.0);
    staged.JumpFrom(sat, 1, later - first, 0.0);
    EXPECT_EQ(staged.FloatPass(1), 0);
    const AmbRstInfo track = AdjustedSession::TrackOf(staged.Float().ambiguities, sat);
    EXPECT_EQ(track.rows1, 100);
    return track.value1;
}

TEST_F(FloatSolution, AnAmbiguityThatRoundsToZeroIsRoundedAgainOnTheNextRow) {
    // 0.45 rounds to the 0 that means unset, 0.55 to 1. The first row keeps the 0 and so tells one
    // cycle too much: 1 + (0.45 - 99 * 0.45) / 100.
    EXPECT_NEAR(AmbiguityOfOnePass(0.45, 0.55), 0.559, 1e-3);
}

TEST_F(FloatSolution, TheFirstValueOfATrackIsKeptOnceItIsNotZero) {
    // One cycle up the first row sets 1, and all rows tell of it: 1 + (0.45 + 99 * 0.55) / 100.
    EXPECT_NEAR(AmbiguityOfOnePass(1.45, 1.55), 1.549, 1e-3);
}

TEST_F(FloatSolution, TheTenthPassRejectsNothingAndEndsTheSolutionEitherWay) {
    // Few satellites with errors of long tails: the weights wander for many passes. Where they
    // still do in the tenth, its outliers stay, with no weight, and are counted; an earlier end
    // leaves them out.
    int ended = 0, wandered = 0;
    for (std::uint64_t seed = 1; seed <= 12; ++seed) {
        ForgetProcess();
        AdjustedSession staged(QuietScenario(5, 0, 0, 0, 1));
        staged.solver->resultManage.tripleDiff.rms = 0.05;
        for (const int sat : staged.session.satellites) {
            for (int e = 0; e < 40; ++e) {
                const auto satellite = static_cast<std::uint64_t>(sat);
                const auto epoch = static_cast<std::uint64_t>(e);
                const double g = simulation::Gaussian(seed, 99, satellite, epoch);
                const bool tail = simulation::Uniform({seed, 98, satellite, epoch}) < 0.5;
                staged.JumpAt(sat, e, (0.01 * g + (tail ? 0.02 * g * g * g : 0.0)) / 0.19, 0.0);
            }
        }
        const int pass = staged.FloatPass(1);
        int rows = 0, rejected = 0;
        for (const AmbRstInfo& track : staged.Float().ambiguities) {
            rows += track.rows1;
            rejected += track.rejected1;
        }
        EXPECT_EQ(rows + rejected, 4 * 40);
        if (pass == 9 || pass == -1) {
            EXPECT_EQ(rejected, 0) << seed;
            ++wandered;
        } else {
            EXPECT_GT(rejected, 0) << seed;
            ++ended;
        }
        EXPECT_EQ(staged.Float().dof, rows - 7);
    }
    EXPECT_GT(ended, 0);
    EXPECT_GT(wandered, 0);
}

// --- GLONASS

TEST_F(FloatSolution, WithoutGlonassRowsTheBiasIsGivenUpForTheRestOfTheRun) {
    for (const int mode : {1, 3}) {
        ForgetProcess();
        AdjustedSession staged(QuietScenario(7, 5, 0, 0, mode));
        staged.ForgetSystem(kGlonass);
        ASSERT_EQ(staged.solver->hasGlonass, 1);
        EXPECT_EQ(staged.FloatPass(mode), 1);  // the first pass is spent
        EXPECT_EQ(staged.solver->hasGlonass, 0);
        EXPECT_EQ(staged.solver->equationBlock.commonCount, 3);
        EXPECT_EQ(staged.solver->equationBlock.biasFlag, 0);
        EXPECT_EQ(staged.FloatPass(mode), 0);
    }
}

TEST_F(FloatSolution, GlonassRowsThatAreAllRejectedTakeTheBiasWithThem) {
    AdjustedSession staged(QuietScenario(7, 5, 0, 0, 1));
    for (const int sat : staged.session.satellites) {
        if (SplitSatNumber(sat) == kGlonass && sat != staged.ReferenceOf(kGlonass)) {
            for (int e = 0; e < 40; ++e) {
                staged.JumpAt(sat, e, 2.5 * (e % 9) * (e % 7), 0.0);
            }
            staged.JumpAt(sat, 0, 1000.0, 0.0);
        }
    }
    // First the tracks go, then the bias.
    EXPECT_EQ(staged.FloatPass(1), 2);
    EXPECT_EQ(staged.solver->hasGlonass, 0);
    EXPECT_EQ(staged.Float().ambiguities.size(), 6u);
}

TEST_F(FloatSolution, EachFrequencyOfModel3HasABiasOfItsOwn) {
    for (const auto& [mode, common] : {std::pair{1, 4}, {2, 4}, {3, 5}, {4, 4}, {5, 4}}) {
        ForgetProcess();
        AdjustedSession staged(QuietScenario(6, 5, 0, 0, mode));
        staged.FloatPass(mode);
        const PeriodEquations& equations = staged.solver->equationBlock;
        EXPECT_EQ(equations.commonCount, common);
        EXPECT_EQ(equations.biasFlag, 1);
        for (int i = 0; i < equations.totalCount; ++i) {
            const int expected = i < 3        ? kCoordinateParameter
                                 : i < common ? kBiasParameter
                                              : kAmbiguityParameter;
            EXPECT_EQ(equations.tables.globalTypes[static_cast<std::size_t>(i)], expected);
        }
    }
}

TEST_F(FloatSolution, ThePassAfterAFullCorrectionFindsNothingLeftToCorrect) {
    // The first pass starts a decimetre off and corrects that. A satellite's part of the bias is the
    // same all the time and goes into its ambiguity, so the bias is what it is expected to be, 1 um
    // for each MHz, whatever the phases hold; the second pass must start from there. Where none is
    // estimated there is none.
    for (const auto& [mode, biases] : {std::pair{1, 1}, {3, 2}, {1, 0}}) {
        ForgetProcess();
        Scenario scenario = QuietScenario(7, 6, 0, 0, mode);
        scenario.glonassBias = 0.003;
        // Equations that are linear but for the curvature of the ranges: no delay that changes with
        // the height, no satellite clock in the length of the line of sight.
        scenario.troposphere = simulation::Troposphere::kNone;
        scenario.config.tropoModel = 2;
        AdjustedSession staged(scenario);
        StaticSolve& solver = *staged.solver;
        solver.hasGlonass = biases == 0 ? 0 : 1;
        for (SDObsData& epoch : solver.epochs) {
            for (const int sat : staged.session.satellites) {
                epoch.satClockA[sat - 1] = epoch.satClockB[sat - 1] = 0.0;
            }
        }
        solver.resultManage.tripleDiff.rms = 1.0;  // full weight for all
        solver.roverPosition = ADecimetreOff(staged.session.rover);
        ASSERT_EQ(staged.FloatPass(mode), 1);
        PeriodEquations& equations = solver.equationBlock;
        ASSERT_EQ(equations.commonCount, 3 + biases);
        for (std::uint32_t k = 3; k < 3U + static_cast<std::uint32_t>(biases); ++k) {
            EXPECT_NEAR(equations.x0(k, 0), 1e-6, 1e-9);
            EXPECT_NEAR(equations.x(k, 0), 1e-6, 1e-9);
        }
        EXPECT_NEAR(equations.x(0, 0), solver.roverPosition.X, 1e-6);
        EXPECT_NEAR(equations.x(1, 0), solver.roverPosition.Y, 1e-6);
        EXPECT_NEAR(equations.x(2, 0), solver.roverPosition.Z, 1e-6);
        // Metres and cycles. A bias wrong by that much is 1.7e-5 cycles of a satellite six channels
        // from the reference.
        for (std::uint32_t k = 0; k < equations.x.RowCount(); ++k) {
            EXPECT_NEAR(equations.x(k, 0), equations.x0(k, 0), 2e-6) << k;
        }
    }
}

TEST_F(FloatSolution, ABiasWithoutGlonassInItsPeriodIsMarkedUnusedThere) {
    Scenario scenario = QuietScenario(6, 5, 0, 0, 1);
    scenario.epochCount = 60;
    scenario.config.periodLength = 870.0;
    AdjustedSession staged(scenario);
    ASSERT_EQ(staged.solver->periods.size(), 2u);
    const int split = staged.solver->periods[1].startIndex;
    std::erase_if(staged.solver->ambiguityParas, [&](const AmbiguityPara& para) {
        return SplitSatNumber(para.sat) == kGlonass && para.firstEpoch >= split;
    });
    staged.FloatPass(1);
    const PeriodEquations& equations = staged.solver->equationBlock;
    const auto stride = static_cast<std::size_t>(equations.rowStride);
    EXPECT_EQ(equations.tables.periodTypes[3], kBiasParameter);
    EXPECT_EQ(equations.tables.periodTypes[stride + 3], kUnusedBiasParameter);
    EXPECT_EQ(equations.tables.periodTypes[stride + 4], kAmbiguityParameter);
    EXPECT_EQ(equations.tables.globalTypes[3], kBiasParameter);
}

TEST_F(FloatSolution, AnErrorOfTheReferencesAmbiguityGoesIntoTheOthersByTheirWavelengths) {
    AdjustedSession staged(QuietScenario(7, 6, 0, 0, 1));
    staged.solver->hasGlonass = 0;
    for (AmbiguityPara& para : staged.solver->ambiguityParas) {
        if (SplitSatNumber(para.sat) == kGlonass) {
            para.refAmbF1 += 100.0;
        }
    }
    ASSERT_EQ(staged.solver->FloatSolveMulEq(1), 1);
    const double reference =
        simulation::CarrierWavelength(staged.solver->config, staged.ReferenceOf(kGlonass), 0);
    for (const AmbRstInfo& track : staged.Float().ambiguities) {
        if (SplitSatNumber(track.sat) == kGlonass) {
            const double own = simulation::CarrierWavelength(staged.solver->config, track.sat, 0);
            EXPECT_NEAR(track.value1,
                        staged.TrueAmbiguity(track.sat, 0, 0) - 100.0 * (own - reference) / own,
                        0.01)
                << track.sat;
        }
    }
}

// --- Galileo

TEST_F(FloatSolution, GalileoWithoutItsFirstBandIsRejected) {
    for (const int mode : {1, 2}) {
        ForgetProcess();
        AdjustedSession staged(QuietScenario(6, 0, 0, 5, mode));
        staged.solver->config.galFreq1 = 0;
        EXPECT_EQ(staged.FloatPass(mode), 1);
        for (const AmbRstInfo& track : staged.Float().ambiguities) {
            EXPECT_EQ(SplitSatNumber(track.sat), kGps);
        }
        EXPECT_EQ(staged.Float().ambiguities.size(), 5u);
    }
}

TEST_F(FloatSolution, GalileoWithOneBandTwiceHasNoSecondBlock) {
    AdjustedSession staged(QuietScenario(6, 0, 0, 5, 3));
    staged.solver->config.galFreq2 = staged.solver->config.galFreq1 = 1;
    EXPECT_EQ(staged.FloatPass(3), 1);
    EXPECT_EQ(staged.Float().ambiguities.size(), 5u);
    // The first block alone serves.
    EXPECT_EQ(staged.FloatPass(1), 0);
    EXPECT_EQ(staged.Float().ambiguities.size(), 9u);
}

// --- several periods

TEST_F(FloatSolution, Model3CountsTheSecondFrequencyByThePeriodsOwnTracks) {
    Scenario scenario = QuietScenario(6, 0, 0, 0, 3);
    scenario.epochCount = 60;
    scenario.config.periodLength = 870.0;
    AdjustedSession staged(scenario);
    ASSERT_EQ(staged.solver->periods.size(), 2u);
    const int split = staged.solver->periods[1].startIndex;
    // One track less in the first period.
    const int sat = staged.Satellite(kGps, 1);
    std::erase_if(staged.solver->ambiguityParas, [&](const AmbiguityPara& para) {
        return para.sat == sat && para.firstEpoch < split;
    });
    ASSERT_EQ(staged.Segments(), 9);
    ASSERT_EQ(staged.solver->FloatSolveMulEq(3), 1);
    const PeriodEquations& equations = staged.solver->equationBlock;
    ASSERT_EQ(equations.ambiguities.size(), 9u);
    EXPECT_EQ(equations.tables.periodSize, (std::vector<int>{3 + 8, 3 + 10}));
    EXPECT_EQ(equations.rowStride, 5 + 10);  // as with both biases
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(equations.GlobalIndexOf(0, 3 + i), 3 + i);
        EXPECT_EQ(equations.GlobalIndexOf(0, 3 + 4 + i), 3 + i + 4);
    }
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(equations.GlobalIndexOf(1, 3 + i), 3 + 4 + i);
        EXPECT_EQ(equations.GlobalIndexOf(1, 3 + 5 + i), 3 + 4 + i + 5);
    }
}

TEST_F(FloatSolution, TracksOfAllPeriodsMeetInOneVector) {
    Scenario scenario = QuietScenario(7, 0, 0, 0, 1);
    scenario.epochCount = 90;
    scenario.config.periodLength = 870.0;
    AdjustedSession staged(scenario);
    ASSERT_EQ(staged.solver->periods.size(), 3u);
    ASSERT_EQ(staged.FloatPass(1), 0);
    EXPECT_LT(simulation::ErrorOf(staged.Float(), staged.session), 5e-4);
    for (const AmbRstInfo& track : staged.Float().ambiguities) {
        EXPECT_NEAR(track.value1, staged.TrueAmbiguity(track.sat, 0, track.firstEpoch), 0.02);
    }
}

// --- the constraint by the preliminary baseline

gult::matrixT PriorCovariance() {
    gult::matrixT cov(3, 3);
    const double values[3][3] = {{4e-4, 1e-4, -5e-5}, {1e-4, 9e-4, 2e-4}, {-5e-5, 2e-4, 6e-4}};
    for (std::uint32_t i = 0; i < 3; ++i) {
        for (std::uint32_t j = 0; j < 3; ++j) {
            cov(i, j) = values[i][j];
        }
    }
    return cov;
}

TEST_F(FloatSolution, ThePreliminaryBaselineIsWeighedIntoTheFirstPeriod) {
    Scenario scenario = QuietScenario(7, 0, 0, 0, 1);
    scenario.epochCount = 60;
    scenario.config.periodLength = 870.0;
    AdjustedSession staged(scenario);
    ASSERT_EQ(staged.FloatPass(1), 0);
    const PeriodEquations plain = staged.solver->equationBlock;

    staged.solver->reservedProcessFlag = 1;
    staged.solver->roverPosition = staged.session.rover;
    staged.solver->priorBaselineCov = PriorCovariance();
    staged.solver->priorBaseline =
        XYZPosition(staged.session.rover.X + 2e-4, staged.session.rover.Y - 1e-4,
                    staged.session.rover.Z + 3e-4);
    ASSERT_EQ(staged.FloatPass(1), 0);
    PeriodEquations constrained = staged.solver->equationBlock;

    const double sigma = SigmaOfDoubleDifference(staged.solver->config, 1);
    gult::matrixT weight = !PriorCovariance() * sigma;
    const double offset[3] = {2e-4, -1e-4, 3e-4};
    PeriodEquations before = plain;
    for (std::uint32_t i = 0; i < 3; ++i) {
        double push = 0.0;
        for (std::uint32_t j = 0; j < 3; ++j) {
            push += weight(i, j) * offset[j];
            EXPECT_NEAR(constrained.normal[0](i, j) - before.normal[0](i, j), weight(i, j), 1e-9);
            EXPECT_NEAR(constrained.normal[1](i, j), before.normal[1](i, j), 1e-9);
        }
        EXPECT_NEAR(constrained.rhs[0](i, 0) - before.rhs[0](i, 0), push, 1e-7);
        EXPECT_NEAR(constrained.rhs[1](i, 0), before.rhs[1](i, 0), 1e-9);
    }
}

TEST_F(FloatSolution, AFirmPreliminaryBaselineHoldsTheVector) {
    AdjustedSession staged(QuietScenario(7, 0, 0, 0, 1));
    staged.solver->reservedProcessFlag = 1;
    staged.solver->priorBaselineCov = PriorCovariance() * 1e-9;
    staged.solver->priorBaseline =
        XYZPosition(staged.session.rover.X + 0.02, staged.session.rover.Y, staged.session.rover.Z);
    ASSERT_EQ(staged.solver->FloatSolveMulEq(1), 1);
    EXPECT_NEAR(staged.solver->roverPosition.X - staged.session.rover.X, 0.02, 1e-4);
    EXPECT_NEAR(staged.solver->roverPosition.Y - staged.session.rover.Y, 0.0, 1e-4);
}

TEST_F(FloatSolution, WithoutTheFlagOrThePriorThereIsNoConstraint) {
    struct Case {
        int flag;
        gult::matrixT covariance;
    };
    for (const Case& withoutOne : {Case{0, PriorCovariance()}, Case{1, gult::matrixT()},
                                   Case{1, gult::matrixT(3, 2)}, Case{1, gult::matrixT(2, 3)}}) {
        ForgetProcess();
        AdjustedSession staged(QuietScenario(7, 0, 0, 0, 1));
        ASSERT_EQ(staged.FloatPass(1), 0);
        const PeriodEquations plain = staged.solver->equationBlock;
        staged.solver->roverPosition = staged.session.rover;
        staged.solver->reservedProcessFlag = withoutOne.flag;
        staged.solver->priorBaselineCov = withoutOne.covariance;
        ASSERT_EQ(staged.solver->FloatSolveMulEq(1), 1);
        PeriodEquations other = staged.solver->equationBlock, before = plain;
        EXPECT_EQ(other.normal[0](0, 0), before.normal[0](0, 0));
        EXPECT_EQ(other.rhs[0](1, 0), before.rhs[0](1, 0));
    }
}

// --- a vector of no length

TEST_F(FloatSolution, AVectorOfNoLengthIsHeldOffZeroInItsRelativeAccuracy) {
    AdjustedSession staged(QuietScenario(7, 0, 0, 0, 1));
    MakeZeroBaseline(staged, 0.003);
    ASSERT_EQ(staged.FloatPass(1), 0);
    const SolveResultFloat& result = staged.Float();
    ASSERT_EQ(result.dX, 0.0);
    ASSERT_EQ(result.dY, 0.0);
    ASSERT_EQ(result.dZ, 0.0);
    EXPECT_GT(result.rms, 1e-4);
    EXPECT_EQ(result.length, 1e-08);
    EXPECT_GT(result.sigma3, 0.0);
    EXPECT_NEAR(result.relativeAccuracy, result.sigma3 / 1e-08 * 1e6,
                1e-6 * result.relativeAccuracy);
    EXPECT_EQ(result.sigmaLength, 0.0);
}

TEST_F(FloatSolution, AVectorOfNoLengthAndNoNoiseHasNoAccuracies) {
    AdjustedSession staged(QuietScenario(7, 0, 0, 0, 1));
    MakeZeroBaseline(staged, 0.0);
    ASSERT_EQ(staged.FloatPass(1), 0);
    EXPECT_EQ(staged.Float().relativeAccuracy, 0.0);
    EXPECT_EQ(staged.Float().sigmaLength, 0.0);
    int rows = 0;
    for (const AmbRstInfo& track : staged.Float().ambiguities) {
        rows += track.rows1;
    }
    EXPECT_NEAR(staged.Float().rms, std::sqrt(1e-12 / rows), 1e-15);  // kept off zero
    const double sigmaDd = SigmaOfDoubleDifference(staged.solver->config, 1);
    const double variance = staged.Float().varianceFactor * sigmaDd * sigmaDd;
    EXPECT_NEAR(variance * staged.Float().dof, 1e-12, 1e-16);
}

}  // namespace
}  // namespace vornel::test
