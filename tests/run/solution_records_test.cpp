// Solution records: what an unfilled one reads as, look-up by model, independence of copies.
#include "run/solution_records.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace vornel {
namespace {

void ExpectZeros(gult::matrixT matrix, std::uint32_t size) {
    ASSERT_EQ(matrix.RowCount(), size);
    ASSERT_EQ(matrix.ColCount(), size);
    for (std::uint32_t i = 0; i < size; ++i) {
        for (std::uint32_t j = 0; j < size; ++j) {
            EXPECT_EQ(matrix(i, j), 0.0);
        }
    }
}

void ExpectUnfilled(const SolveResult& record) {
    EXPECT_EQ(record.mode, 0);
    EXPECT_EQ(record.dX, 0.0);
    EXPECT_EQ(record.dY, 0.0);
    EXPECT_EQ(record.dZ, 0.0);
    EXPECT_EQ(record.length, 0.0);
    EXPECT_EQ(record.horizontalDistance, 0.0);
    EXPECT_EQ(record.heightDifference, 0.0);
    EXPECT_EQ(record.dof, 0);
    EXPECT_EQ(record.varianceFactor, 0.0);
    EXPECT_EQ(record.sigma3, 0.0);
    EXPECT_EQ(record.sigmaLength, 0.0);
    EXPECT_EQ(record.relativeAccuracy, 0.0);
    EXPECT_EQ(record.rms, 0.0);
    ExpectZeros(record.covXYZ, 6);
    ExpectZeros(record.covNEU, 6);
}

TEST(SolveResultTest, AnUnfilledRecordReadsAsZeros) {
    ExpectUnfilled(SolveResult());
    ExpectUnfilled(SolveResultTD());
    ExpectUnfilled(SolveResultFloat());
    ExpectUnfilled(SolveResultFixed());
    EXPECT_TRUE(SolveResultFloat().ambiguities.empty());
    EXPECT_EQ(SolveResultFloat().residuals.Size(), 0);
    ExpectZeros(SolveResultFloat().ambCov, 6);
    EXPECT_EQ(SolveResultFixed().ratio, 0.0);
    EXPECT_TRUE(SolveResultFixed().ambiguities.empty());
    EXPECT_EQ(SolveResultFixed().residuals.Size(), 0);
}

TEST(SolveResultTest, AllKindsDeriveFromOneBase) {
    EXPECT_TRUE((std::is_base_of_v<SolveResult, SolveResultTD>));
    EXPECT_TRUE((std::is_base_of_v<SolveResult, SolveResultFloat>));
    EXPECT_TRUE((std::is_base_of_v<SolveResult, SolveResultFixed>));
    EXPECT_TRUE(std::has_virtual_destructor_v<SolveResult>);
    EXPECT_TRUE(std::has_virtual_destructor_v<ResultManage>);
}

TEST(ResultManageTest, StartsWithoutSolutionsAndWithItsReportFields) {
    const ResultManage results;
    EXPECT_EQ(results.solveModel, 0);
    EXPECT_FALSE(results.summaryFlagA);
    EXPECT_FALSE(results.summaryFlagB);
    EXPECT_FALSE(results.summaryFlagC);
    EXPECT_EQ(results.summaryCode, 2);
    ASSERT_EQ(std::extent_v<decltype(results.summaryValues)>, 12U);
    for (double value : results.summaryValues) {
        EXPECT_EQ(value, 0.0);
    }
    ExpectUnfilled(results.tripleDiff);
    EXPECT_TRUE(results.floatResults.empty());
    EXPECT_TRUE(results.fixedResults.empty());
}

TEST(ResultManageTest, AModelWithoutRecordGivesAnEmptyOne) {
    ResultManage results;
    SolveResultFixed fixed;
    fixed.mode = 5;
    fixed.ratio = 3.0;
    results.fixedResults.push_back(fixed);
    SolveResultFloat floating;
    floating.mode = 5;
    results.floatResults.push_back(floating);

    ExpectUnfilled(results.FindFixed(6));
    EXPECT_EQ(results.FindFixed(6).ratio, 0.0);
    EXPECT_TRUE(results.FindFixed(6).ambiguities.empty());
    ExpectUnfilled(results.FindFloat(6));
    EXPECT_TRUE(results.FindFloat(6).ambiguities.empty());
}

TEST(ResultManageTest, FindsTheFirstRecordOfAModel) {
    ResultManage results;
    const int modes[] = {5, 6, 6};
    for (int i = 0; i < 3; ++i) {
        SolveResultFloat floating;
        floating.mode = modes[i];
        floating.rms = 0.001 * (i + 1);
        results.floatResults.push_back(floating);
        SolveResultFixed fixed;
        fixed.mode = modes[i];
        fixed.ratio = i + 1.0;
        results.fixedResults.push_back(fixed);
    }
    EXPECT_EQ(results.FindFloat(5).rms, 0.001);
    EXPECT_EQ(results.FindFloat(6).rms, 0.002);
    EXPECT_EQ(results.FindFixed(5).ratio, 1.0);
    EXPECT_EQ(results.FindFixed(6).ratio, 2.0);
}

TEST(ResultManageTest, AFoundRecordIsACopyWithEveryField) {
    ResultManage results;
    SolveResultFixed fixed;
    fixed.mode = 1;
    fixed.dX = 1.0;
    fixed.dY = 2.0;
    fixed.dZ = 3.0;
    fixed.length = 4.0;
    fixed.horizontalDistance = 5.0;
    fixed.dof = 6;
    fixed.varianceFactor = 7.0;
    fixed.covXYZ = gult::matrixT(3, 3);
    fixed.covXYZ(0, 1) = 8.0;
    fixed.covNEU = gult::matrixT(3, 3);
    fixed.covNEU(2, 2) = 9.0;
    fixed.sigma3 = 10.0;
    fixed.sigmaLength = 11.0;
    fixed.relativeAccuracy = 12.0;
    fixed.rms = 13.0;
    fixed.ratio = 14.0;
    fixed.ambiguities.resize(2);
    fixed.ambiguities[1].value1 = 15.0;
    fixed.residuals.Add(0, 3, Epoch(), 0.016);
    results.fixedResults.push_back(fixed);

    SolveResultFixed found = results.FindFixed(1);
    EXPECT_EQ(found.mode, 1);
    EXPECT_EQ(found.dX, 1.0);
    EXPECT_EQ(found.dY, 2.0);
    EXPECT_EQ(found.dZ, 3.0);
    EXPECT_EQ(found.length, 4.0);
    EXPECT_EQ(found.horizontalDistance, 5.0);
    EXPECT_EQ(found.dof, 6);
    EXPECT_EQ(found.varianceFactor, 7.0);
    EXPECT_EQ(found.covXYZ(0, 1), 8.0);
    EXPECT_EQ(found.covNEU(2, 2), 9.0);
    EXPECT_EQ(found.sigma3, 10.0);
    EXPECT_EQ(found.sigmaLength, 11.0);
    EXPECT_EQ(found.relativeAccuracy, 12.0);
    EXPECT_EQ(found.rms, 13.0);
    EXPECT_EQ(found.ratio, 14.0);
    ASSERT_EQ(found.ambiguities.size(), 2U);
    EXPECT_EQ(found.ambiguities[1].value1, 15.0);
    ASSERT_EQ(found.residuals.Find(3).firstBlock.size(), 1U);
    EXPECT_EQ(found.residuals.Find(3).firstBlock[0].valueMm, 16);

    found.ambiguities[1].value1 = -1.0;
    found.covXYZ(0, 1) = -1.0;
    EXPECT_EQ(results.fixedResults[0].ambiguities[1].value1, 15.0);
    EXPECT_EQ(results.fixedResults[0].covXYZ(0, 1), 8.0);
}

TEST(SolveResultTest, CopiesShareTheirMatricesUntilOneIsWritten) {
    SolveResult record;
    const SolveResult copy = record;
    EXPECT_EQ(record.covXYZ.RefCount(), 2);
    record.covXYZ(0, 0) = 1.0;
    EXPECT_EQ(record.covXYZ.RefCount(), 1);
    ExpectZeros(copy.covXYZ, 6);
}

TEST(SolveResultTest, AmbiguityCovarianceIsIndependentOfTheMatrixItCameFrom) {
    gult::matrixT working(2, 2);
    working(0, 0) = 4.0;
    SolveResultFloat record;
    record.ambCov = working;
    ResultManage results;
    record.mode = 1;
    results.floatResults.push_back(record);
    working(0, 0) = 99.0;
    working *= 2.0;
    EXPECT_EQ(results.FindFloat(1).ambCov(0, 0), 4.0);
    EXPECT_EQ(record.ambCov(0, 0), 4.0);
}

}  // namespace
}  // namespace vornel
