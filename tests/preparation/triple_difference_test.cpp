// The triple-difference solution: truth recovered, every number against an independent adjustment,
// and which rows there are.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

#include "exports/process_fixture.h"
#include "preparation/reference_adjustment.h"
#include "run/synthetic_session.h"

namespace vornel {
namespace {

using reference::CoordinateAdjustment;
using reference::PositionConstraint;
using reference::TripleDifferenceAdjustment;
using reference::Wide;

class TripleDifference : public test::ProcessTest {
  protected:
    test::SyntheticSession session_;
    CTRLSolve control_;

    // A solver up to its reference satellites.
    std::unique_ptr<StaticSolve> Prepared(int model) {
        auto solver = test::MakeSolver(control_);
        solver->solveModel = model;
        EXPECT_EQ(solver->CutPeriods(), 12);
        EXPECT_EQ(solver->SelectRefSats(), 14);
        return solver;
    }
    void HandOver() { test::HandOver(control_, session_); }

    SDObsData& EpochOf(int index) { return control_.epochs[static_cast<std::size_t>(index)]; }

    void Remove(int sat, int epochIndex) {
        SDObsData& epoch = EpochOf(epochIndex);
        for (auto* list : {&epoch.satListF1, &epoch.satListF2, &epoch.satListDual}) {
            list->erase(std::remove(list->begin(), list->end(), sat), list->end());
        }
    }

    static int RowCount(const StaticSolve& solver) {
        return solver.resultManage.tripleDiff.dof + 3;
    }

    void ExpectTruth(const StaticSolve& solver, double tolerance) const {
        EXPECT_NEAR(solver.roverPosition.X, session_.rover.X, tolerance);
        EXPECT_NEAR(solver.roverPosition.Y, session_.rover.Y, tolerance);
        EXPECT_NEAR(solver.roverPosition.Z, session_.rover.Z, tolerance);
    }
};

// All four systems, with antennas.
void MakeMixed(test::SyntheticSession& session) {
    session.AddSky(kGps, 6, 3);
    session.AddSky(kGlonass, 5, 2, 31.0);
    session.AddSky(kBds, 5, 6, 77.0);
    session.AddSky(kGalileo, 4, 1, 103.0);
    session.pcoRover[0] = 0.09;
    session.pcoRover[1] = 0.12;
    session.pcoBase[0] = 0.06;
    session.pcoBase[1] = 0.05;
    session.heightRover = 1.7;
    session.heightBase = 0.2;
}

// Every number of the record against the adjustment.
void ExpectRecord(const StaticSolve& solver, const CoordinateAdjustment& expected) {
    SolveResultTD record = solver.resultManage.tripleDiff;
    const Wide base[3] = {solver.basePosition.X, solver.basePosition.Y, solver.basePosition.Z};
    Wide vector[3], length = 0.0L, trace = 0.0L, along = 0.0L;
    for (int k = 0; k < 3; ++k) {
        vector[k] = expected.x[k] - base[k];
        length += vector[k] * vector[k];
    }
    length = std::sqrt(length);
    EXPECT_NEAR(record.dX, static_cast<double>(vector[0]), 2e-7);
    EXPECT_NEAR(record.dY, static_cast<double>(vector[1]), 2e-7);
    EXPECT_NEAR(record.dZ, static_cast<double>(vector[2]), 2e-7);
    EXPECT_NEAR(record.length, static_cast<double>(length), 2e-7);
    ASSERT_EQ(record.dof, expected.rows - 3);
    const auto near = [](double value, Wide wanted) {
        EXPECT_NEAR(value / static_cast<double>(wanted), 1.0, 2e-6);
    };
    const Wide variance = expected.sigmaW * expected.sigmaW;
    ASSERT_EQ(record.covXYZ.RowCount(), 3U);
    for (std::uint32_t i = 0; i < 3; ++i) {
        for (std::uint32_t j = 0; j < 3; ++j) {
            near(record.covXYZ(i, j), expected.cofactor[i][j] * variance);
        }
        trace += expected.cofactor[i][i] * variance;
        along += vector[i] / length * (vector[i] / length) * expected.cofactor[i][i] * variance;
    }
    near(record.sigma3, std::sqrt(trace));
    near(record.relativeAccuracy, std::sqrt(trace) / length * 1e6L);
    near(record.sigmaLength, std::sqrt(along));
    near(record.rms, expected.rms);
    const Wide assumed =
        2.0L * solver.config.phaseStd * 299792458.0L / 1575.42e6L * std::sqrt(2.0L);
    near(record.varianceFactor, variance / (assumed * assumed));
    EXPECT_EQ(record.horizontalDistance, 0.0);
    EXPECT_EQ(record.heightDifference, 0.0);
    // The rotation into north, east, up keeps the trace, and its up element is the height's
    // variance.
    const BLHPosition blh = solver.roverPosition.ToBLH();
    const double up[3] = {std::cos(blh.B) * std::cos(blh.L), std::cos(blh.B) * std::sin(blh.L),
                          std::sin(blh.B)};
    Wide height = 0.0L;
    for (std::uint32_t i = 0; i < 3; ++i) {
        for (std::uint32_t j = 0; j < 3; ++j) {
            height += up[i] * expected.cofactor[i][j] * variance * up[j];
        }
    }
    near(record.covNEU(2, 2), height);
    near(record.covNEU(0, 0) + record.covNEU(1, 1) + record.covNEU(2, 2), trace);
    EXPECT_EQ(solver.roverPosition.X, solver.basePosition.X + record.dX);
    EXPECT_EQ(solver.roverPosition.Y, solver.basePosition.Y + record.dY);
    EXPECT_EQ(solver.roverPosition.Z, solver.basePosition.Z + record.dZ);
}

// --- the truth and the numbers

TEST_F(TripleDifference, TheSigmaOfTheLengthIsThatOfTheDirectionCosinesToTheBit) {
    // The float and the fixed solution divide the squares by the length twice instead; the sessions
    // must hold one that tells the two apart.
    int apart = 0;
    for (int seed = 0; seed < 8; ++seed) {
        test::SyntheticSession session;
        MakeMixed(session);
        session.phaseNoise = 1e-3 * (1 + seed);
        CTRLSolve control;
        test::HandOver(control, session);
        const auto solver = test::MakeSolver(control);
        solver->solveModel = 1;
        ASSERT_EQ(solver->CutPeriods(), 12);
        ASSERT_EQ(solver->SelectRefSats(), 14);
        ASSERT_EQ(solver->SolveTripleDifference(), 21);
        SolveResultTD record = solver->resultManage.tripleDiff;
        const double vector[3] = {record.dX, record.dY, record.dZ};
        const double L = record.length;
        double cosines = 0.0, squares = 0.0;
        for (std::uint32_t k = 0; k < 3; ++k) {
            cosines += vector[k] / L * (vector[k] / L) * record.covXYZ(k, k);
            squares += vector[k] * vector[k] / L / L * record.covXYZ(k, k);
        }
        EXPECT_EQ(record.sigmaLength, std::sqrt(cosines)) << seed;
        apart += std::sqrt(cosines) != std::sqrt(squares);
    }
    EXPECT_GT(apart, 0);
}

TEST_F(TripleDifference, RecoversTheTrueVectorInEveryModel) {
    MakeMixed(session_);
    session_.phaseNoise = 1e-5;
    HandOver();
    for (int model = 1; model <= 6; ++model) {
        const auto solver = Prepared(model);
        EXPECT_EQ(solver->SolveTripleDifference(), 21);
        ExpectTruth(*solver, 2e-3);
        EXPECT_EQ(solver->resultManage.tripleDiff.mode, model > 2 ? 3 : model);
    }
}

TEST_F(TripleDifference, RecoversTheTrueVectorFromAFarStart) {
    session_.AddSky(kGps, 7);
    session_.phaseNoise = 1e-5;
    HandOver();
    control_.roverPosition = test::Shifted(session_.rover, 30.0, -45.0, 25.0);
    const auto solver = Prepared(1);
    EXPECT_EQ(solver->SolveTripleDifference(), 21);
    ExpectTruth(*solver, 2e-3);
}

TEST_F(TripleDifference, EveryNumberAgreesWithAnIndependentAdjustment) {
    MakeMixed(session_);
    session_.phaseNoise = 0.002;
    HandOver();
    for (int model = 1; model <= 6; ++model) {
        SCOPED_TRACE(model);
        const auto solver = Prepared(model);
        const CoordinateAdjustment expected = TripleDifferenceAdjustment(*solver);
        ASSERT_EQ(solver->SolveTripleDifference(), 21);
        ExpectRecord(*solver, expected);
    }
}

TEST_F(TripleDifference, TroubledDataOfSeveralPeriodsAgreeWithAnIndependentAdjustment) {
    MakeMixed(session_);
    session_.phaseNoise = 0.003;
    HandOver();
    control_.config.periodLength = 500.0;
    control_.config.minEpochs = 5;
    const auto slip = [&](int sat, int first, int signal, double cycles) {
        for (int i = first; i < session_.epochCount; ++i) {
            EpochOf(i).phase[sat - 1][signal] += cycles;
        }
    };
    slip(4, 10, 0, 4.0);
    slip(5, 12, 1, -1.0);
    slip(40, 20, 0, 50.0);
    slip(104, 30, 1, 0.05);  // in the band of falling weights
    Remove(6, 8);
    Remove(6, 9);
    Remove(75, 25);
    const auto solver = Prepared(3);
    ASSERT_EQ(solver->periods.size(), 2U);
    const CoordinateAdjustment expected = TripleDifferenceAdjustment(*solver);
    ASSERT_EQ(solver->SolveTripleDifference(), 21);
    ExpectRecord(*solver, expected);
    EXPECT_LT(RowCount(*solver), 2 * 16 * 38);
}

TEST_F(TripleDifference, AWanderingSolutionEndsAfterTenPasses) {
    // Phases whose errors spread over many orders of magnitude: every pass sees the scatter that the
    // one before left over, throws out the worst rows and moves on. The reference does ten passes
    // at most.
    constexpr int kNeverSettled = 11;
    int wandered = 0;
    for (std::uint32_t seed = 1; seed <= 4; ++seed) {
        SCOPED_TRACE(seed);
        session_ = test::SyntheticSession();
        session_.AddSky(kGps, 7);
        HandOver();
        std::mt19937 random(seed);
        const auto uniform = [&random] { return static_cast<double>(random()) / 4294967296.0; };
        for (int i = 0; i < session_.epochCount; ++i) {
            for (int s = 0; s < 7; ++s) {
                const double cycles = std::pow(10.0, 5.0 * uniform() - 3.0);
                EpochOf(i).phase[s][0] += uniform() < 0.5 ? cycles : -cycles;
            }
        }
        const auto solver = Prepared(1);
        const CoordinateAdjustment expected = TripleDifferenceAdjustment(*solver);
        wandered += expected.iterations == kNeverSettled;
        ASSERT_EQ(solver->SolveTripleDifference(), 21);
        ExpectRecord(*solver, expected);
    }
    EXPECT_GT(wandered, 0);
}

TEST_F(TripleDifference, OtherGalileoBandsTakeTheirOwnWavelengths) {
    session_.AddSky(kGalileo, 6);
    session_.galFreq1 = 5;
    session_.galFreq2 = 3;
    session_.phaseNoise = 1e-5;
    HandOver();
    for (const int model : {1, 2, 3}) {
        const auto solver = Prepared(model);
        const CoordinateAdjustment expected = TripleDifferenceAdjustment(*solver);
        ASSERT_EQ(solver->SolveTripleDifference(), 21);
        ExpectTruth(*solver, 3e-3);
        EXPECT_EQ(solver->resultManage.tripleDiff.dof, expected.rows - 3);
    }
}

TEST_F(TripleDifference, ObservationsAndListsAreLeftAlone) {
    session_.AddSky(kGps, 6);
    HandOver();
    EpochOf(20).phase[2][0] += 7.0;
    const auto solver = Prepared(3);
    const std::vector<SDObsData> before = solver->epochs;
    ASSERT_EQ(solver->SolveTripleDifference(), 21);
    for (std::size_t i = 0; i < before.size(); ++i) {
        EXPECT_EQ(solver->epochs[i].activeSats, before[i].activeSats);
        for (int s = 0; s < 6; ++s) {
            for (std::size_t f = 0; f < 2; ++f) {
                EXPECT_EQ(solver->epochs[i].phase[s][f], before[i].phase[s][f]);
                EXPECT_EQ(solver->epochs[i].code[s][f], before[i].code[s][f]);
            }
        }
    }
}

// --- rows

TEST_F(TripleDifference, EachSatelliteGivesARowAnEpochAfterThePeriodsFirst) {
    session_.AddSky(kGps, 6);
    HandOver();
    const auto one = Prepared(1);
    ASSERT_EQ(one->SolveTripleDifference(), 21);
    EXPECT_EQ(RowCount(*one), 5 * 39);
    const auto both = Prepared(3);
    ASSERT_EQ(both->SolveTripleDifference(), 21);
    EXPECT_EQ(RowCount(*both), 2 * 5 * 39);
    control_.config.periodLength = 290.0;  // eleven epochs; the last, of seven, stays apart
    control_.config.minEpochs = 1;
    const auto cut = Prepared(1);
    ASSERT_EQ(cut->periods.size(), 4U);
    ASSERT_EQ(cut->SolveTripleDifference(), 21);
    EXPECT_EQ(RowCount(*cut), 5 * 36);
}

TEST_F(TripleDifference, ADropOutCostsTheEpochAndItsReturn) {
    session_.AddSky(kGps, 6);
    HandOver();
    const int reference = Prepared(1)->periods[0].refSatGps;
    const int other = reference == 2 ? 3 : 2;
    Remove(other, 17);
    const auto solver = Prepared(1);
    ASSERT_EQ(solver->periods[0].refSatGps, reference);
    ASSERT_EQ(solver->SolveTripleDifference(), 21);
    EXPECT_EQ(RowCount(*solver), 5 * 39 - 2);
    ExpectTruth(*solver, 0.1);
}

TEST_F(TripleDifference, ADropOutOfTheReferenceCostsAllItsSystem) {
    session_.AddSky(kGps, 6);
    session_.AddSky(kBds, 4, 6, 50.0);
    HandOver();
    const auto solver = Prepared(1);
    const int reference = solver->periods[0].refSatGps;
    SDObsData& epoch = solver->epochs[17];
    epoch.RemoveActive(reference);
    ASSERT_EQ(solver->SolveTripleDifference(), 21);
    EXPECT_EQ(RowCount(*solver), (5 + 3) * 39 - 2 * 5);
}

TEST_F(TripleDifference, ASystemWithItsReferenceAloneGivesNoRows) {
    session_.AddSky(kGps, 6);
    session_.AddSky(kBds, 1, 6, 50.0);
    HandOver();
    const auto solver = Prepared(1);
    ASSERT_EQ(solver->periods[0].refSatBds, 73);
    ASSERT_EQ(solver->SolveTripleDifference(), 21);
    EXPECT_EQ(RowCount(*solver), 5 * 39);
}

TEST_F(TripleDifference, APeriodWithoutAnyReferenceIsPassedOver) {
    session_.AddSky(kGps, 6);
    HandOver();
    const auto solver = Prepared(1);
    StaticPeriod later = solver->periods[0];
    solver->periods[0].endIndex = 19;
    later.startIndex = 20;
    later.refSatGps = -1;
    solver->periods.push_back(later);
    ASSERT_EQ(solver->SolveTripleDifference(), 21);
    EXPECT_EQ(RowCount(*solver), 5 * 19);
}

TEST_F(TripleDifference, EpochsOutsideAllPeriodsGiveNoRows) {
    session_.AddSky(kGps, 6);
    HandOver();
    const auto solver = Prepared(1);
    solver->periods[0].startIndex = 3;
    solver->periods[0].endIndex = 29;
    ASSERT_EQ(solver->SolveTripleDifference(), 21);
    EXPECT_EQ(RowCount(*solver), 5 * 26);
}

TEST_F(TripleDifference, ASlipIsOneRowThatGoesOut) {
    session_.AddSky(kGps, 6);
    HandOver();
    const int reference = Prepared(1)->periods[0].refSatGps;
    const int other = reference == 2 ? 3 : 2;
    const auto clean = Prepared(1);
    ASSERT_EQ(clean->SolveTripleDifference(), 21);
    for (int i = 22; i < session_.epochCount; ++i) {
        EpochOf(i).phase[other - 1][0] += 5.0;
    }
    const auto slipped = Prepared(1);
    ASSERT_EQ(slipped->SolveTripleDifference(), 21);
    EXPECT_EQ(RowCount(*slipped), RowCount(*clean) - 1);
    ExpectTruth(*slipped, 0.1);
    EXPECT_LT(slipped->resultManage.tripleDiff.rms, 0.001);
}

TEST_F(TripleDifference, ASlipOfTheReferenceTakesARowFromEachSatellite) {
    session_.AddSky(kGps, 6);
    HandOver();
    const int reference = Prepared(1)->periods[0].refSatGps;
    for (int i = 22; i < session_.epochCount; ++i) {
        EpochOf(i).phase[reference - 1][0] += 5.0;
    }
    const auto solver = Prepared(1);
    ASSERT_EQ(solver->SolveTripleDifference(), 21);
    EXPECT_EQ(RowCount(*solver), 5 * 38);
    ExpectTruth(*solver, 0.1);
}

TEST_F(TripleDifference, EqualGalileoBandsLeaveNoSecondRowsOfGalileo) {
    session_.AddSky(kGps, 6);
    session_.AddSky(kGalileo, 5, 1, 40.0);
    HandOver();
    control_.config.galFreq1 = control_.config.galFreq2 = 1;
    const auto solver = Prepared(3);
    const CoordinateAdjustment expected = TripleDifferenceAdjustment(*solver);
    ASSERT_EQ(solver->SolveTripleDifference(), 21);
    EXPECT_EQ(RowCount(*solver), (5 + 5 + 4) * 39);
    ExpectRecord(*solver, expected);
}

TEST_F(TripleDifference, GalileoAloneWithoutASecondBandHasNoSolutionOnIt) {
    session_.AddSky(kGalileo, 6);
    HandOver();
    control_.config.galFreq1 = control_.config.galFreq2 = 1;
    EXPECT_EQ(Prepared(2)->SolveTripleDifference(), 20);
    EXPECT_EQ(Prepared(1)->SolveTripleDifference(), 21);
}

// --- little data

TEST_F(TripleDifference, TwoEpochsOfFiveSatellitesAreFourRowsAndAResult) {
    session_.AddSky(kGps, 5);
    session_.epochCount = 2;
    session_.interval = 300.0;
    HandOver();
    control_.config.minEpochs = 1;
    const auto solver = Prepared(1);
    const CoordinateAdjustment expected = TripleDifferenceAdjustment(*solver);
    ASSERT_EQ(solver->SolveTripleDifference(), 21);
    EXPECT_EQ(RowCount(*solver), 4);
    EXPECT_EQ(solver->resultManage.tripleDiff.dof, 1);
    EXPECT_EQ(expected.rows, 4);
    ExpectTruth(*solver, 1.0);
}

TEST_F(TripleDifference, ThreeRowsLeaveNoFiniteVariance) {
    session_.AddSky(kGps, 4);
    session_.epochCount = 2;
    session_.interval = 300.0;
    session_.phaseNoise = 1e-7;
    HandOver();
    control_.roverPosition = session_.rover;  // so that the first step is the last
    control_.config.minEpochs = 1;
    const auto solver = Prepared(1);
    ASSERT_EQ(solver->SolveTripleDifference(), 21);
    EXPECT_EQ(solver->resultManage.tripleDiff.dof, 0);
    EXPECT_FALSE(std::isfinite(solver->resultManage.tripleDiff.varianceFactor));
    ExpectTruth(*solver, 0.01);
}

void ExpectNothingStored(const StaticSolve& solver, const XYZPosition& rover) {
    EXPECT_EQ(solver.roverPosition.X, rover.X);
    EXPECT_EQ(solver.roverPosition.Y, rover.Y);
    EXPECT_EQ(solver.roverPosition.Z, rover.Z);
    EXPECT_EQ(solver.resultManage.tripleDiff.mode, 0);
    EXPECT_EQ(solver.resultManage.tripleDiff.length, 0.0);
    EXPECT_EQ(solver.resultManage.tripleDiff.dof, 0);
}

TEST_F(TripleDifference, NoTwoConsecutiveEpochsIs20WithNothingStored) {
    session_.AddSky(kGps, 6);
    HandOver();
    control_.config.minEpochs = 1;
    for (int i = 1; i < session_.epochCount; i += 2) {
        EpochOf(i).satListF1.clear();
    }
    const auto solver = Prepared(1);
    EXPECT_EQ(solver->SolveTripleDifference(), 20);
    ExpectNothingStored(*solver, control_.roverPosition);
}

TEST_F(TripleDifference, OneEpochIs20) {
    session_.AddSky(kGps, 6);
    session_.epochCount = 1;
    HandOver();
    control_.config.minEpochs = 1;
    const auto solver = Prepared(1);
    EXPECT_EQ(solver->SolveTripleDifference(), 20);
    ExpectNothingStored(*solver, control_.roverPosition);
}

TEST_F(TripleDifference, AReferenceWithoutCompanyIs20) {
    session_.AddSky(kGps, 1);
    HandOver();
    const auto solver = Prepared(1);
    EXPECT_EQ(solver->SolveTripleDifference(), 20);
    ExpectNothingStored(*solver, control_.roverPosition);
}

// --- a vector of no length

TEST_F(TripleDifference, AZeroBaselineHasNoAccuracies) {
    session_.rover = session_.base;
    session_.AddSky(kGps, 7);
    session_.phaseNoise = 1e-8;
    HandOver();
    control_.roverPosition = session_.rover;
    const auto solver = Prepared(1);
    ASSERT_EQ(solver->SolveTripleDifference(), 21);
    const SolveResultTD& record = solver->resultManage.tripleDiff;
    ASSERT_LT(record.length, 0.0001);
    ASSERT_LT(record.rms, 0.0001);
    EXPECT_GT(record.rms, 0.0);
    EXPECT_EQ(record.sigma3, 0.0);
    EXPECT_EQ(record.relativeAccuracy, 0.0);
    EXPECT_EQ(record.sigmaLength, 0.0);
}

TEST_F(TripleDifference, AZeroBaselineWithNoiseKeepsItsAccuracies) {
    session_.rover = session_.base;
    session_.AddSky(kGps, 7);
    session_.phaseNoise = 5e-4;
    HandOver();
    control_.roverPosition = session_.rover;
    const auto solver = Prepared(1);
    ASSERT_EQ(solver->SolveTripleDifference(), 21);
    EXPECT_GT(solver->resultManage.tripleDiff.sigma3, 0.0);
    EXPECT_GT(solver->resultManage.tripleDiff.relativeAccuracy, 0.0);
}

// --- the constraint of the preliminary baseline

PositionConstraint ConstraintOf(const StaticSolve& solver) {
    gult::matrixT covariance = solver.priorBaselineCov;
    Wide values[3][3];
    for (std::uint32_t i = 0; i < 3; ++i) {
        for (std::uint32_t j = 0; j < 3; ++j) {
            values[i][j] = covariance(i, j);
        }
    }
    PositionConstraint constraint{};
    reference::Invert3(values, constraint.weight);
    const Wide scale = 2.0L * solver.config.phaseStd * 299792458.0L / 1575.42e6L * std::sqrt(2.0L);
    for (auto& row : constraint.weight) {
        for (Wide& value : row) {
            value *= scale;
        }
    }
    constraint.target[0] = solver.priorBaseline.X;
    constraint.target[1] = solver.priorBaseline.Y;
    constraint.target[2] = solver.priorBaseline.Z;
    return constraint;
}

gult::matrixT PriorCovariance(double scale) {
    const double values[3][3] = {{2.0, 0.3, -0.2}, {0.3, 1.5, 0.4}, {-0.2, 0.4, 1.0}};
    gult::matrixT covariance(3, 3);
    for (std::uint32_t i = 0; i < 3; ++i) {
        for (std::uint32_t j = 0; j < 3; ++j) {
            covariance(i, j) = scale * values[i][j];
        }
    }
    return covariance;
}

TEST_F(TripleDifference, APriorPositionEntersWithTheFlag) {
    session_.AddSky(kGps, 6);
    session_.phaseNoise = 0.002;
    HandOver();
    for (const double scale : {1e-4, 1.0}) {
        SCOPED_TRACE(scale);
        const auto solver = Prepared(1);
        solver->reservedProcessFlag = 1;
        solver->priorBaselineCov = PriorCovariance(scale);
        solver->priorBaseline = test::Shifted(session_.rover, 0.02, -0.03, 0.05);
        const PositionConstraint constraint = ConstraintOf(*solver);
        const CoordinateAdjustment expected = TripleDifferenceAdjustment(*solver, &constraint);
        const auto free = Prepared(1);
        ASSERT_EQ(free->SolveTripleDifference(), 21);
        ASSERT_EQ(solver->SolveTripleDifference(), 21);
        ExpectRecord(*solver, expected);
        EXPECT_GT(Distance(solver->roverPosition, free->roverPosition), 1e-6);
    }
}

TEST_F(TripleDifference, ATightPriorHoldsThePosition) {
    session_.AddSky(kGps, 6);
    HandOver();
    const auto solver = Prepared(1);
    solver->reservedProcessFlag = 1;
    solver->priorBaselineCov = PriorCovariance(1e-12);
    solver->priorBaseline = test::Shifted(session_.rover, 0.02, -0.03, 0.05);
    ASSERT_EQ(solver->SolveTripleDifference(), 21);
    EXPECT_LT(Distance(solver->roverPosition, solver->priorBaseline), 1e-4);
}

TEST_F(TripleDifference, APriorIsNotUsedWithoutTheFlagOrAFilledCovariance) {
    session_.AddSky(kGps, 6);
    HandOver();
    const auto free = Prepared(1);
    ASSERT_EQ(free->SolveTripleDifference(), 21);
    const auto flagOff = Prepared(1);
    flagOff->priorBaselineCov = PriorCovariance(1e-12);
    ASSERT_EQ(flagOff->SolveTripleDifference(), 21);
    const auto notFilled = Prepared(1);
    notFilled->reservedProcessFlag = 1;
    ASSERT_EQ(notFilled->SolveTripleDifference(), 21);
    for (const auto* solver : {flagOff.get(), notFilled.get()}) {
        EXPECT_EQ(solver->roverPosition.X, free->roverPosition.X);
        EXPECT_EQ(solver->roverPosition.Y, free->roverPosition.Y);
        EXPECT_EQ(solver->roverPosition.Z, free->roverPosition.Z);
    }
}

TEST_F(TripleDifference, ASingularPriorIsNotCaught) {
    session_.AddSky(kGps, 6);
    HandOver();
    const auto solver = Prepared(1);
    solver->reservedProcessFlag = 1;
    solver->priorBaselineCov = gult::matrixT(3, 3);
    EXPECT_THROW(solver->SolveTripleDifference(), gult::matrix_error);
    ExpectNothingStored(*solver, control_.roverPosition);
}

TEST_F(TripleDifference, ACovarianceOfAnotherShapeIsNoPrior) {
    session_.AddSky(kGps, 6);
    HandOver();
    const auto free = Prepared(1);
    ASSERT_EQ(free->SolveTripleDifference(), 21);
    for (const auto& [rows, columns] :
         {std::pair<std::uint32_t, std::uint32_t>{3, 2}, {2, 3}, {6, 6}}) {
        const auto solver = Prepared(1);
        solver->reservedProcessFlag = 1;
        solver->priorBaselineCov = gult::matrixT(rows, columns);
        solver->priorBaseline = test::Shifted(session_.rover, 5.0, 5.0, 5.0);
        ASSERT_EQ(solver->SolveTripleDifference(), 21);
        EXPECT_EQ(solver->roverPosition.X, free->roverPosition.X);
        EXPECT_EQ(solver->roverPosition.Z, free->roverPosition.Z);
    }
}

}  // namespace
}  // namespace vornel
