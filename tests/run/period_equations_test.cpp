// Period equations against one inverse of the whole system that they stand for.
#include "run/period_equations.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <numeric>
#include <string>
#include <vector>

#include "foundation/dense_reference.h"
#include "run/period_session.h"

namespace vornel {
namespace {

using reference::Dense;
using reference::ExpectNear;
using reference::Session;
using reference::SessionShape;
using reference::Vector;

SessionShape ShapeOf(std::size_t periods, int model = 1, std::size_t commonCount = 3) {
    const std::size_t tracks[] = {5, 3, 7, 4};
    const std::size_t rows[] = {12, 20, 9, 15};
    SessionShape shape;
    shape.model = model;
    shape.commonCount = commonCount;
    shape.tracks.assign(tracks, tracks + periods);
    shape.rowsPerTrack.assign(rows, rows + periods);
    shape.drift.assign(periods, 2.0);
    shape.noise = 0.02;
    shape.seed = 100 * periods + commonCount;
    return shape;
}

std::vector<std::size_t> Range(std::size_t first, std::size_t count) {
    std::vector<std::size_t> result(count);
    std::iota(result.begin(), result.end(), first);
    return result;
}

std::vector<std::size_t> AmbiguityPlaces(const Session& session, std::size_t p) {
    return {session.stacked[p].begin() + static_cast<std::ptrdiff_t>(session.shape.commonCount),
            session.stacked[p].end()};
}

// The full inverse with the coupling between the blocks of the diagonal set to zero.
Dense BlockDiagonal(const Session& session, const Dense& inverse) {
    Dense result = reference::Zeros(session.total, session.total);
    std::vector<std::vector<std::size_t>> blocks = {Range(0, session.shape.commonCount)};
    for (std::size_t p = 0; p < session.stacked.size(); ++p) {
        blocks.push_back(AmbiguityPlaces(session, p));
    }
    for (const std::vector<std::size_t>& block : blocks) {
        for (std::size_t i : block) {
            for (std::size_t j : block) {
                result[i][j] = inverse[i][j];
            }
        }
    }
    return result;
}

void ExpectAgreesWithFullInverse(const Session& session) {
    const Dense inverse = reference::InverseOfPositive(session.whole);
    const Vector corrections = reference::Multiply(inverse, session.wholeRhs);
    const std::size_t nc = session.shape.commonCount;
    PeriodEquations equations = session.Equations();
    gult::matrixT cofactors;
    equations.Solve(cofactors);

    // Corrections are added to the start vector place by place.
    Vector expected = session.start;
    for (std::size_t k = 0; k < session.total; ++k) {
        expected[k] += corrections[k];
    }
    ExpectNear(equations.x, expected, 1e-9);
    ExpectNear(cofactors, BlockDiagonal(session, inverse), 1e-9);
    ExpectNear(equations.qCommon, reference::Pick(inverse, Range(0, nc), Range(0, nc)), 1e-9);

    for (std::size_t p = 0; p < session.stacked.size(); ++p) {
        SCOPED_TRACE("period " + std::to_string(p));
        int nx = 0;
        int nb = 0;
        gult::matrixT values;
        gult::matrixT periodCofactors;
        std::vector<AmbRstInfo> list;
        equations.ExtractPeriod(static_cast<int>(p), nx, nb, values, periodCofactors, list);
        EXPECT_EQ(nx, static_cast<int>(nc));
        EXPECT_EQ(nb, static_cast<int>(session.AmbiguityCount(p)));
        Vector periodValues;
        for (std::size_t place : session.stacked[p]) {
            periodValues.push_back(expected[place]);
        }
        ExpectNear(values, periodValues, 1e-9);
        ExpectNear(periodCofactors,
                   reference::Pick(inverse, session.stacked[p], session.stacked[p]), 1e-9);
        ASSERT_EQ(list.size(), session.shape.tracks[p]);
        for (std::size_t i = 0; i < list.size(); ++i) {
            EXPECT_EQ(list[i].sat, static_cast<int>(i) + 1);
            EXPECT_EQ(list[i].firstEpoch, static_cast<int>(100 * p));
            EXPECT_EQ(list[i].lastEpoch, static_cast<int>(100 * p + 99));
        }
    }
}

TEST(PeriodEquationsTest, ASinglePeriodEqualsTheDirectSolution) {
    ExpectAgreesWithFullInverse(Session(ShapeOf(1)));
}

TEST(PeriodEquationsTest, TwoToFourPeriodsEqualTheFullInverse) {
    for (std::size_t periods : {2U, 3U, 4U}) {
        SCOPED_TRACE(periods);
        ExpectAgreesWithFullInverse(Session(ShapeOf(periods)));
    }
}

TEST(PeriodEquationsTest, OneOrTwoBiasesJoinTheCommonParameters) {
    for (std::size_t periods : {1U, 2U, 3U, 4U}) {
        for (std::size_t commonCount : {4U, 5U}) {
            SCOPED_TRACE(periods);
            ExpectAgreesWithFullInverse(Session(ShapeOf(periods, 1, commonCount)));
        }
    }
}

TEST(PeriodEquationsTest, TwoFrequenciesShareTheRecordsOfTheirTracks) {
    for (std::size_t periods : {1U, 2U, 3U, 4U}) {
        SCOPED_TRACE(periods);
        ExpectAgreesWithFullInverse(Session(ShapeOf(periods, 3)));
        ExpectAgreesWithFullInverse(Session(ShapeOf(periods, 3, 5)));
    }
}

TEST(PeriodEquationsTest, APeriodWithoutAmbiguitiesPassesThrough) {
    for (std::size_t empty : {0U, 1U, 2U}) {
        SCOPED_TRACE(empty);
        SessionShape shape = ShapeOf(3);
        shape.tracks[empty] = 0;
        Session session(shape);
        ExpectAgreesWithFullInverse(session);
        PeriodEquations equations = session.Equations();
        gult::matrixT cofactors;
        equations.Solve(cofactors);
        EXPECT_TRUE(equations.AmbiguitiesOfPeriod(static_cast<int>(empty)).empty());
    }
}

TEST(PeriodEquationsTest, StackedAndGlobalPlacesAgreeForAListInPeriodOrder) {
    const Session session(ShapeOf(4));
    PeriodEquations equations = session.Equations();
    for (std::size_t p = 0; p < 4; ++p) {
        for (std::size_t k = 0; k < session.stacked[p].size(); ++k) {
            EXPECT_EQ(equations.GlobalIndexOf(static_cast<int>(p), static_cast<int>(k)),
                      static_cast<int>(session.stacked[p][k]));
        }
    }
}

// The list runs against the periods: start values lie at other places than the corrections that are
// added.
TEST(PeriodEquationsTest, AListOutOfPeriodOrderStillAddsCorrectionsPlaceByPlace) {
    SessionShape shape = ShapeOf(2);
    shape.listPosition = {7, 6, 5, 4, 3, 2, 1, 0};
    const Session session(shape);
    EXPECT_EQ(session.Equations().GlobalIndexOf(0, 3), 3 + 7);
    ExpectAgreesWithFullInverse(session);
}

TEST(PeriodEquationsTest, GlobalIndicesEndAtThePeriodsAndTheirSizes) {
    const Session session(ShapeOf(2));
    PeriodEquations equations = session.Equations();
    EXPECT_EQ(equations.GlobalIndexOf(-1, 0), -1);
    EXPECT_EQ(equations.GlobalIndexOf(2, 0), -1);
    EXPECT_EQ(equations.GlobalIndexOf(0, -1), -1);
    EXPECT_EQ(equations.GlobalIndexOf(0, 9), -1);  // the first period has 8 parameters
    EXPECT_EQ(equations.GlobalIndexOf(1, 7), -1);  // the second 6
    EXPECT_EQ(equations.GlobalIndexOf(0, 7), 7);
    EXPECT_EQ(equations.GlobalIndexOf(1, 3), 8);
}

// Only indices above the size of the period are refused: the next place of its row is read as it
// stands.
TEST(PeriodEquationsTest, TheIndexBehindTheLastParameterReadsTheTable) {
    Session session(ShapeOf(2));
    const std::size_t stride = 5 + 5;
    session.tables.globalIndex[stride + 6] = 4242;
    EXPECT_EQ(session.Equations().GlobalIndexOf(1, 6), 4242);
}

// The row of the widest period is full with five common parameters; nothing behind it may be read.
TEST(PeriodEquationsTest, TheIndexBehindTheLastParameterIsSafeToAskFor) {
    const Session session(ShapeOf(1, 1, 5));
    PeriodEquations equations = session.Equations();
    EXPECT_EQ(equations.rowStride, 10);
    EXPECT_EQ(equations.GlobalIndexOf(0, 9), 9);
    EXPECT_EQ(equations.GlobalIndexOf(0, 10), -1);
    EXPECT_EQ(equations.GlobalIndexOf(0, 11), -1);
}

TEST(PeriodEquationsTest, TheSecondFrequencyFollowsByThePeriodsOwnTrackCount) {
    const Session session(ShapeOf(2, 3));
    PeriodEquations equations = session.Equations();
    // The second period has 3 tracks, at positions 5 to 7 of the list.
    EXPECT_EQ(equations.GlobalIndexOf(1, 3), 3 + 5);
    EXPECT_EQ(equations.GlobalIndexOf(1, 6), 3 + 5 + 3);
    EXPECT_EQ(equations.GlobalIndexOf(1, 8), 3 + 7 + 3);
}

// After the adjustment the weighted squares of the residuals are those of the misclosures less W'
// dx.
TEST(PeriodEquationsTest, TheReducedSumIsThatOfTheResiduals) {
    for (std::size_t periods : {1U, 2U, 3U, 4U}) {
        SCOPED_TRACE(periods);
        const Session session(ShapeOf(periods));
        PeriodEquations equations = session.Equations();
        gult::matrixT cofactors;
        equations.Solve(cofactors);
        const Vector dx =
            reference::Multiply(reference::InverseOfPositive(session.whole), session.wholeRhs);
        long double expected = session.squares;
        for (std::size_t k = 0; k < dx.size(); ++k) {
            expected -= dx[k] * session.wholeRhs[k];
        }
        // Noise of 0.02 and weights of 1 to 1.5: far below the squares that it is the small rest
        // of.
        ASSERT_LT(expected, 0.1 * session.squares);
        std::vector<gult::matrixT> rhs;
        for (const Vector& w : session.rhs) {
            rhs.push_back(reference::ToColumn(w));
        }
        EXPECT_NEAR(equations.ReducedSum(static_cast<double>(session.squares), rhs),
                    static_cast<double>(expected), 1e-9 * static_cast<double>(session.squares));
    }
}

TEST(PeriodEquationsTest, TheReducedSumTakesItsDifferencesAtGlobalIndices) {
    for (int model : {1, 3}) {
        SCOPED_TRACE(model);
        SessionShape shape = ShapeOf(2, model);
        if (model == 1) {
            shape.listPosition = {7, 6, 5, 4, 3, 2, 1, 0};
        }
        const Session session(shape);
        PeriodEquations equations = session.Equations();
        gult::matrixT cofactors;
        equations.Solve(cofactors);
        std::vector<gult::matrixT> factors;
        double expected = 10.0;
        for (std::size_t p = 0; p < 2; ++p) {
            const std::size_t size = session.stacked[p].size();
            gult::matrixT column(static_cast<std::uint32_t>(size), 1);
            for (std::uint32_t k = 0; k < size; ++k) {
                column(k, 0) = 0.5 + 0.25 * k + static_cast<double>(p);
                const auto g = static_cast<std::uint32_t>(session.GlobalIndex(p, k));
                expected -= column(k, 0) * (equations.x(g, 0) - equations.x0(g, 0));
            }
            factors.push_back(column);
        }
        EXPECT_NEAR(equations.ReducedSum(10.0, factors), expected, 1e-9);
    }
}

TEST(PeriodEquationsTest, StartsWithZeroMatricesAndItsFlags) {
    PeriodEquations equations(5, 3, 7, 0);
    EXPECT_EQ(equations.model, 5);
    EXPECT_EQ(equations.periodCount, 3);
    EXPECT_EQ(equations.maxAmbiguities, 7);
    EXPECT_EQ(equations.rowStride, 12);
    EXPECT_EQ(equations.thirdFlag, 1);
    for (gult::matrixT* matrix :
         {&equations.x0, &equations.x, &equations.spareA, &equations.qCommon, &equations.spareB}) {
        ExpectNear(*matrix, reference::Zeros(6, 6), 0.0);
    }
    EXPECT_EQ(PeriodEquations(5, 3, 7, 1).rowStride, 15);
}

TEST(PeriodEquationsTest, SetKeepsTheTablesAndSharesTheMatrices) {
    const Session session(ShapeOf(2, 1, 4));
    std::vector<gult::matrixT> normals;
    std::vector<gult::matrixT> rhs;
    for (std::size_t p = 0; p < 2; ++p) {
        normals.push_back(reference::ToMatrix(session.normals[p]));
        rhs.push_back(reference::ToColumn(session.rhs[p]));
    }
    const gult::matrixT start = reference::ToColumn(session.start);
    PeriodEquations equations(1, 2, session.Widest(), 0);
    equations.Set(1, 0, 4, static_cast<int>(session.total), session.tables, normals, rhs, start);
    EXPECT_EQ(equations.biasFlag, 1);
    EXPECT_EQ(equations.periodFlag, 0);
    EXPECT_EQ(equations.commonCount, 4);
    EXPECT_EQ(equations.totalCount, static_cast<int>(session.total));
    EXPECT_EQ(equations.tables.globalTypes, session.tables.globalTypes);
    EXPECT_EQ(equations.tables.periodSize, session.tables.periodSize);
    EXPECT_EQ(equations.tables.periodTypes, session.tables.periodTypes);
    EXPECT_EQ(equations.tables.globalIndex, session.tables.globalIndex);
    EXPECT_EQ(equations.tables.ambCount, session.tables.ambCount);
    EXPECT_EQ(equations.tables.ambSat, session.tables.ambSat);
    EXPECT_EQ(equations.tables.ambList, session.tables.ambList);
    EXPECT_EQ(normals[0].RefCount(), 2);
    EXPECT_EQ(rhs[1].RefCount(), 2);
    EXPECT_EQ(start.RefCount(), 2);
    equations.Set(1, 7, 4, static_cast<int>(session.total), session.tables, normals, rhs, start);
    EXPECT_EQ(equations.periodFlag, 7);
}

TEST(PeriodEquationsTest, SolvingLeavesTheEquationsAsTheyWere) {
    const Session session(ShapeOf(3));
    PeriodEquations equations = session.Equations();
    gult::matrixT cofactors;
    equations.Solve(cofactors);
    equations.Solve(cofactors);
    for (std::size_t p = 0; p < 3; ++p) {
        ExpectNear(equations.normal[p], session.normals[p], 0.0);
        ExpectNear(equations.rhs[p], session.rhs[p], 0.0);
    }
    ExpectNear(equations.x0, session.start, 0.0);
}

TEST(PeriodEquationsTest, AssignmentReplacesEverythingAndStandsByItself) {
    const Session three(ShapeOf(3));
    const Session one(ShapeOf(1));
    PeriodEquations solved = one.Equations();
    gult::matrixT cofactors;
    solved.Solve(cofactors);
    PeriodEquations target = three.Equations();
    target.Solve(cofactors);
    target = solved;
    EXPECT_EQ(target.periodCount, 1);
    EXPECT_EQ(target.normal.size(), 1U);
    EXPECT_EQ(target.qPeriod.size(), 1U);
    EXPECT_EQ(target.mapToPeriod.size(), 1U);
    EXPECT_EQ(target.ambiguities.size(), 5U);
    const Dense before = reference::FromMatrix(target.normal[0]);
    solved.normal[0](0, 0) += 1.0;
    solved.rhs[0](0, 0) += 1.0;
    solved.x(0, 0) += 1.0;
    ExpectNear(target.normal[0], before, 0.0);
    ExpectNear(target.rhs[0], one.rhs[0], 0.0);
    EXPECT_NE(target.x(0, 0), solved.x(0, 0));
}

TEST(PeriodEquationsTest, TheListOfAmbiguitiesIsReplaced) {
    const Session session(ShapeOf(2));
    PeriodEquations equations = session.Equations();
    std::vector<AmbRstInfo> list = session.ambiguities;
    for (AmbRstInfo& record : list) {
        record.value1 = record.sat + 1000.0 * record.firstEpoch;
    }
    equations.SetAmbiguities(list);
    ASSERT_EQ(equations.ambiguities.size(), 8U);
    const std::vector<AmbRstInfo> second = equations.AmbiguitiesOfPeriod(1);
    ASSERT_EQ(second.size(), 3U);
    EXPECT_EQ(second[0].value1, 1 + 100000.0);
    EXPECT_EQ(second[2].value1, 3 + 100000.0);
}

TEST(PeriodEquationsTest, ASingularBlockOfAmbiguitiesIsAnError) {
    const Session session(ShapeOf(2));
    PeriodEquations equations = session.Equations();
    for (std::uint32_t k = 0; k < 8; ++k) {
        equations.normal[0](k, 4) = 0.0;
        equations.normal[0](4, k) = 0.0;
    }
    gult::matrixT cofactors;
    EXPECT_THROW(equations.Solve(cofactors), gult::matrix_error);
}

TEST(PeriodEquationsTest, CommonParametersThatNothingDeterminesAreAnError) {
    PeriodTables tables;
    tables.globalTypes = {1, 1, 1};
    tables.periodSize = {3};
    tables.periodTypes = {1, 1, 1, 0, 0};
    tables.globalIndex = {0, 1, 2, 0, 0};
    tables.ambCount = {0};
    PeriodEquations equations(1, 1, 0, 0);
    equations.Set(0, 0, 3, 3, tables, {gult::matrixT(3, 3)}, {gult::matrixT(3, 1)},
                  gult::matrixT(3, 1));
    gult::matrixT cofactors;
    EXPECT_THROW(equations.Solve(cofactors), gult::matrix_error);
}

TEST(PeriodEquationsTest, ATrackWithoutARecordIsAnError) {
    // The list must be the one that the tables index.
    for (const int model : {1, 3}) {
        SessionShape shape;
        shape.model = model;
        shape.tracks = {4, 3};
        shape.rowsPerTrack = {20, 20};
        shape.drift = {1.0, 1.0};
        const Session session(shape);
        PeriodEquations equations = session.Equations();
        EXPECT_EQ(equations.AmbiguitiesOfPeriod(1).size(), 3u);
        std::vector<AmbRstInfo> erased = session.ambiguities;
        erased.pop_back();
        equations.SetAmbiguities(erased);
        EXPECT_EQ(equations.AmbiguitiesOfPeriod(0).size(), 4u);
        EXPECT_THROW(equations.AmbiguitiesOfPeriod(1), gult::matrix_error);
    }
}

}  // namespace
}  // namespace vornel
