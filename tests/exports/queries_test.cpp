// The thirty queries: every field of made-up records, every bad request, and what stands when
// nothing was filed.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <functional>
#include <utility>
#include <vector>

#include "VornelBlCore.h"
#include "exports/process_fixture.h"
#include "foundation/satellite.h"
#include "foundation/trace_fixture.h"
#include "run/synthetic_session.h"

namespace vornel {
namespace {

constexpr double kUntouched = -7777.25;
constexpr int kUntouchedInt = -7777;

// The 31 outputs of a solution, marked before the call.
struct BaseData {
    int mode = kUntouchedInt;
    int dof = kUntouchedInt;
    std::array<double, 29> values{};

    BaseData() { values.fill(kUntouched); }

    // Calls a getter with the 31 pointers, after the arguments given.
    template <typename Getter, typename... Leading>
    auto Get(Getter getter, Leading... leading) {
        double* v = values.data();
        return getter(leading..., &mode, v, v + 1, v + 2, v + 3, v + 4, v + 5, &dof, v + 6, v + 7,
                      v + 8, v + 9, v + 10, v + 11, v + 12, v + 13, v + 14, v + 15, v + 16, v + 17,
                      v + 18, v + 19, v + 20, v + 21, v + 22, v + 23, v + 24, v + 25, v + 26,
                      v + 27, v + 28);
    }
    bool Untouched() const {
        return dof == kUntouchedInt &&
               std::all_of(values.begin(), values.end(), [](double v) { return v == kUntouched; });
    }
};

// The 16 outputs of a list of ambiguities, marked before the call.
struct AmbiguityData {
    static constexpr std::size_t kSlots = 6;
    using Ints = std::array<int, kSlots>;
    using Doubles = std::array<double, kSlots>;
    Ints systems, prns, firstEpochs, lastEpochs, firstWeeks, lastWeeks, rows1, rows2, rejected1,
        rejected2;
    Doubles firstSeconds, lastSeconds, rms1, rms2, values1, values2;

    AmbiguityData() {
        for (Ints* each : {&systems, &prns, &firstEpochs, &lastEpochs, &firstWeeks, &lastWeeks,
                           &rows1, &rows2, &rejected1, &rejected2}) {
            each->fill(kUntouchedInt);
        }
        for (Doubles* each : {&firstSeconds, &lastSeconds, &rms1, &rms2, &values1, &values2}) {
            each->fill(kUntouched);
        }
    }

    template <typename Getter, typename... Leading>
    int Get(Getter getter, Leading... leading) {
        return getter(leading..., systems.data(), prns.data(), firstEpochs.data(),
                      lastEpochs.data(), firstWeeks.data(), firstSeconds.data(), lastWeeks.data(),
                      lastSeconds.data(), rms1.data(), rms2.data(), rows1.data(), rows2.data(),
                      rejected1.data(), rejected2.data(), values1.data(), values2.data());
    }
    // Whether the slots from `first` on are as they were.
    bool UntouchedFrom(std::size_t first) const {
        for (std::size_t i = first; i < kSlots; ++i) {
            for (const Ints* each : {&systems, &prns, &firstEpochs, &lastEpochs, &firstWeeks,
                                     &lastWeeks, &rows1, &rows2, &rejected1, &rejected2}) {
                if ((*each)[i] != kUntouchedInt) {
                    return false;
                }
            }
            for (const Doubles* each :
                 {&firstSeconds, &lastSeconds, &rms1, &rms2, &values1, &values2}) {
                if ((*each)[i] != kUntouched) {
                    return false;
                }
            }
        }
        return true;
    }
};

gult::matrixT Numbered(std::uint32_t size, double first) {
    gult::matrixT matrix(size, size);
    for (std::uint32_t i = 0; i < size; ++i) {
        for (std::uint32_t j = 0; j < size; ++j) {
            matrix(i, j) = first + 10.0 * i + j;
        }
    }
    return matrix;
}

void FillBase(SolveResult& record, int mode, double seed) {
    record.mode = mode;
    record.dX = seed + 1.0;
    record.dY = seed + 2.0;
    record.dZ = seed + 3.0;
    record.length = seed + 4.0;
    record.horizontalDistance = seed + 5.0;
    record.heightDifference = seed + 6.0;
    record.dof = static_cast<int>(seed) + 7;
    record.varianceFactor = seed + 8.0;
    record.covXYZ = Numbered(3, seed + 100.0);
    record.covNEU = Numbered(3, seed + 200.0);
    record.sigma3 = seed + 9.0;
    record.sigmaLength = seed + 11.0;
    record.relativeAccuracy = seed + 12.0;
    record.rms = seed + 13.0;
}

void ExpectBase(const BaseData& data, int mode, double seed) {
    EXPECT_EQ(data.mode, mode);
    EXPECT_EQ(data.dof, static_cast<int>(seed) + 7);
    std::vector<double> expected;
    for (const double offset : {1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 8.0}) {
        expected.push_back(seed + offset);
    }
    for (const double first : {100.0, 200.0}) {
        for (const double offset : {0.0, 1.0, 2.0, 10.0, 11.0, 12.0, 20.0, 21.0, 22.0}) {
            expected.push_back(seed + first + offset);
        }
    }
    for (const double offset : {9.0, 11.0, 12.0, 13.0}) {
        expected.push_back(seed + offset);
    }
    EXPECT_EQ(std::vector<double>(data.values.begin(), data.values.end()), expected);
}

AmbRstInfo MakeAmbiguity(int sat, int seed) {
    AmbRstInfo info;
    info.sat = sat;
    info.firstEpoch = seed + 1;
    info.lastEpoch = seed + 2;
    info.firstTime = Epoch(2200, 1000.25 + seed);
    info.lastTime = Epoch(2201, 2000.5 + seed);
    info.rms1 = seed + 0.125;
    info.rms2 = seed + 0.25;
    info.rows1 = seed + 3;
    info.rows2 = seed + 4;
    info.rejected1 = seed + 5;
    info.rejected2 = seed + 6;
    info.value1 = seed + 0.5;
    info.value2 = seed + 0.75;
    return info;
}

void ExpectAmbiguity(const AmbiguityData& data, std::size_t slot, int system, int prn, int seed) {
    EXPECT_EQ(data.systems[slot], system);
    EXPECT_EQ(data.prns[slot], prn);
    EXPECT_EQ(data.firstEpochs[slot], seed + 1);
    EXPECT_EQ(data.lastEpochs[slot], seed + 2);
    EXPECT_EQ(data.firstWeeks[slot], 2200);
    EXPECT_EQ(data.firstSeconds[slot], 1000.25 + seed);
    EXPECT_EQ(data.lastWeeks[slot], 2201);
    EXPECT_EQ(data.lastSeconds[slot], 2000.5 + seed);
    EXPECT_EQ(data.rms1[slot], seed + 0.125);
    EXPECT_EQ(data.rms2[slot], seed + 0.25);
    EXPECT_EQ(data.rows1[slot], seed + 3);
    EXPECT_EQ(data.rows2[slot], seed + 4);
    EXPECT_EQ(data.rejected1[slot], seed + 5);
    EXPECT_EQ(data.rejected2[slot], seed + 6);
    EXPECT_EQ(data.values1[slot], seed + 0.5);
    EXPECT_EQ(data.values2[slot], seed + 0.75);
}

// Galileo 2, then GPS 4 with points of both kinds; BDS 1 of the second kind alone.
void FillResiduals(ResidualList& residuals) {
    residuals.Add(0, MakeSatNumber(kGalileo, 2), Epoch(2200, 60.0), 0.005);
    residuals.Add(0, 4, Epoch(2200, 30.5), 0.0123);
    residuals.Add(0, 4, Epoch(2200, 60.5), -0.0029);
    residuals.Add(1, 4, Epoch(2201, 5.0), 0.25);
    residuals.Add(0, 4, Epoch(2200, 90.5), 0.0);
    residuals.Add(1, MakeSatNumber(kBds, 1), Epoch(2200, 60.0), 1.0);
}

class Queries : public test::ProcessTest {
  protected:
    // A process whose run ended without a solution.
    void SetUp() override {
        ProcessTest::SetUp();
        ASSERT_EQ(CreateBLProcess(), 1);
        int status = 0;
        ASSERT_EQ(StartProcess(&status), 1);
        ASSERT_EQ(status, 10);
    }

    static ResultManage& Results() { return Solver().resultManage; }

    // Float records of models 5 and 6, fixed ones of 5, 6 and once more 5.
    static void FileRecords() {
        FillBase(Results().tripleDiff, 3, 5000.0);
        for (const int mode : {5, 6}) {
            SolveResultFloat record;
            FillBase(record, mode, 1000.0 * mode);
            record.ambiguities = {MakeAmbiguity(4, 10 * mode),
                                  MakeAmbiguity(MakeSatNumber(kGlonass, 32), 10 * mode + 100)};
            record.ambCov = Numbered(2, 50.0 * mode);
            if (mode == 6) {
                FillResiduals(record.residuals);
            }
            Results().floatResults.push_back(record);
        }
        for (const double seed : {15000.0, 16000.0, 17000.0}) {
            SolveResultFixed record;
            FillBase(record, seed == 16000.0 ? 6 : 5, seed);
            record.ratio = seed / 1000.0;
            record.ambiguities = {MakeAmbiguity(MakeSatNumber(kBds, 36), 20),
                                  MakeAmbiguity(MakeSatNumber(kGalileo, 1), 30),
                                  MakeAmbiguity(35, 40)};
            if (seed == 16000.0) {
                FillResiduals(record.residuals);
            }
            Results().fixedResults.push_back(record);
        }
    }
};

constexpr int kBadIndices[] = {-1, INT_MIN, 3, 4, INT_MAX};
constexpr int kBadModes[] = {0, -1, 7, 100, INT_MIN, INT_MAX};

// --- nothing filed

TEST_F(Queries, WithoutSolutionsTheNumbersAreZero) {
    EXPECT_EQ(GetFloatSolNum(), 0);
    EXPECT_EQ(GetFixedSolNum(), 0);
    int modes[2] = {kUntouchedInt, kUntouchedInt};
    GetFloatSolNumAndMode(2, modes);
    GetFixedSolNumAndMode(2, modes);
    EXPECT_EQ(modes[0], kUntouchedInt);
    EXPECT_EQ(modes[1], kUntouchedInt);
}

TEST_F(Queries, WithoutSolutionsEveryRequestByPositionGives0AndWritesNothing) {
    int a = kUntouchedInt, b = kUntouchedInt, c = kUntouchedInt;
    double d = kUntouched;
    for (const int index : {0, 1, -1}) {
        EXPECT_EQ(GetFloatSolSatNum(index), 0);
        EXPECT_EQ(GetFixedSolSatNum(index), 0);
        EXPECT_EQ(GetFloatSolSatList(index, 1, &a, &b), 0);
        EXPECT_EQ(GetFixedSolSatList(index, 1, &a, &b), 0);
        EXPECT_EQ(GetFloatSolResListSize(index, kGps, 4, 0), 0);
        EXPECT_EQ(GetFixedSolResListSize(index, kGps, 4, 0), 0);
        EXPECT_EQ(GetFloatSolResList(index, kGps, 4, 0, 1, &a, &d, &c), 0);
        EXPECT_EQ(GetFixedSolResList(index, kGps, 4, 0, 1, &a, &d, &c), 0);
        EXPECT_EQ(GetFloatSolAmbNum(index), 0);
        EXPECT_EQ(GetFixedSolAmbNum(index), 0);
        EXPECT_EQ(GetFloatAmbCov(index, 1, &d), 0);
        BaseData base;
        EXPECT_EQ(base.Get(GetFloatSolBaseData, index), 0);
        EXPECT_EQ(base.Get(GetFixedSolBaseData, index), 0);
        EXPECT_TRUE(base.Untouched());
        EXPECT_EQ(base.mode, kUntouchedInt);
        AmbiguityData ambiguities;
        EXPECT_EQ(ambiguities.Get(GetFloatSolAmbListData, index, 1), 0);
        EXPECT_EQ(ambiguities.Get(GetFixedSolAmbListData, index, 1, &d), 0);
        EXPECT_TRUE(ambiguities.UntouchedFrom(0));
    }
    EXPECT_EQ(a, kUntouchedInt);
    EXPECT_EQ(b, kUntouchedInt);
    EXPECT_EQ(c, kUntouchedInt);
    EXPECT_EQ(d, kUntouched);
}

TEST_F(Queries, WithoutSolutionsEveryRequestByModelGives0AndWritesNothing) {
    int a = kUntouchedInt, b = kUntouchedInt, c = kUntouchedInt;
    double d = kUntouched;
    for (int mode = -1; mode <= 8; ++mode) {
        EXPECT_EQ(GetModeFloatSolSatNum(mode), 0);
        EXPECT_EQ(GetModeFixedSolSatNum(mode), 0);
        EXPECT_EQ(GetModeFixedSolSatList(mode, 1, &a, &b), 0);
        EXPECT_EQ(GetModeFloatSolResListSize(mode, kGps, 4, 0), 0);
        EXPECT_EQ(GetModeFixedSolResListSize(mode, kGps, 4, 0), 0);
        EXPECT_EQ(GetModeFloatSolResList(mode, kGps, 4, 0, 1, &a, &d, &c), 0);
        EXPECT_EQ(GetModeFixedSolResList(mode, kGps, 4, 0, 1, &a, &d, &c), 0);
        BaseData base;
        base.mode = mode;
        EXPECT_EQ(base.Get(GetModeFloatSolBaseData), 0);
        EXPECT_EQ(base.Get(GetModeFixedSolBaseData), 0);
        EXPECT_TRUE(base.Untouched());
        EXPECT_EQ(base.mode, mode);
    }
    EXPECT_EQ(a, kUntouchedInt);
    EXPECT_EQ(b, kUntouchedInt);
    EXPECT_EQ(c, kUntouchedInt);
    EXPECT_EQ(d, kUntouched);
}

TEST_F(Queries, WithoutATripleDifferenceItsRecordReadsAsZeros) {
    BaseData base;
    EXPECT_EQ(base.Get(GetTripDiffSol), 1);
    EXPECT_EQ(base.mode, 0);
    EXPECT_EQ(base.dof, 0);
    for (const double value : base.values) {
        EXPECT_EQ(value, 0.0);
    }
}

struct Report {
    int solveModel = kUntouchedInt;
    bool flags[3] = {true, true, true};
    int code = kUntouchedInt;
    double values[10];

    Report() {
        std::fill(std::begin(values), std::end(values), kUntouched);
        double* v = values;
        GetSolveResultsBaseData(&solveModel, &flags[0], &flags[1], &flags[2], &code, nullptr,
                                nullptr, v, v + 1, v + 2, v + 3, v + 4, v + 5, v + 6, v + 7, v + 8,
                                v + 9);
    }
};

TEST_F(Queries, TheReportOfARunHoldsItsModelAndConstants) {
    const Report report;
    EXPECT_EQ(report.solveModel, 1);
    EXPECT_EQ(report.code, 2);
    for (const bool flag : report.flags) {
        EXPECT_FALSE(flag);
    }
    for (const double value : report.values) {
        EXPECT_EQ(value, 0.0);
    }
}

TEST_F(Queries, TheReportTakesTheLastTenOfTwelveValues) {
    Results().solveModel = 6;
    Results().summaryFlagB = true;
    Results().summaryCode = 9;
    for (int i = 0; i < 12; ++i) {
        Results().summaryValues[i] = 100.0 + i;
    }
    const Report report;
    EXPECT_EQ(report.solveModel, 6);
    EXPECT_FALSE(report.flags[0]);
    EXPECT_TRUE(report.flags[1]);
    EXPECT_FALSE(report.flags[2]);
    EXPECT_EQ(report.code, 9);
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(report.values[i], 102.0 + i);
    }
}

TEST_F(Queries, TheReportDoesNotTouchItsTwoUnusedArguments) {
    int model = 0, code = 0;
    bool flags[3];
    double v[10];
    int unused[2] = {kUntouchedInt, kUntouchedInt};
    GetSolveResultsBaseData(&model, &flags[0], &flags[1], &flags[2], &code, &unused[0], &unused[1],
                            v, v + 1, v + 2, v + 3, v + 4, v + 5, v + 6, v + 7, v + 8, v + 9);
    EXPECT_EQ(unused[0], kUntouchedInt);
    EXPECT_EQ(unused[1], kUntouchedInt);
}

// --- vectors and qualities

TEST_F(Queries, TheTripleDifferenceFillsAllOutputs) {
    FileRecords();
    BaseData base;
    EXPECT_EQ(base.Get(GetTripDiffSol), 1);
    ExpectBase(base, 3, 5000.0);
}

TEST_F(Queries, SolutionsByPositionFillAllOutputs) {
    FileRecords();
    for (int index = 0; index < 2; ++index) {
        BaseData base;
        EXPECT_EQ(base.Get(GetFloatSolBaseData, index), 1);
        ExpectBase(base, 5 + index, 5000.0 + 1000.0 * index);
    }
    const int modes[] = {5, 6, 5};
    for (int index = 0; index < 3; ++index) {
        BaseData base;
        EXPECT_EQ(base.Get(GetFixedSolBaseData, index), 1);
        ExpectBase(base, modes[index], 15000.0 + 1000.0 * index);
    }
    BaseData base;
    EXPECT_EQ(base.Get(GetFloatSolBaseData, 2), 0);
    for (const int index : kBadIndices) {
        EXPECT_EQ(base.Get(GetFloatSolBaseData, index), 0);
        EXPECT_EQ(base.Get(GetFixedSolBaseData, index), 0);
    }
    EXPECT_TRUE(base.Untouched());
    EXPECT_EQ(base.mode, kUntouchedInt);
}

TEST_F(Queries, SolutionsByModelFillAllOutputsFromTheFirstOfThatModel) {
    FileRecords();
    for (const int mode : {5, 6}) {
        BaseData floating;
        floating.mode = mode;
        EXPECT_EQ(floating.Get(GetModeFloatSolBaseData), 1);
        ExpectBase(floating, mode, 1000.0 * mode);
        BaseData fixed;
        fixed.mode = mode;
        EXPECT_EQ(fixed.Get(GetModeFixedSolBaseData), 1);
        ExpectBase(fixed, mode, 10000.0 + 1000.0 * mode);
    }
}

TEST_F(Queries, AModelOutOfRangeOrWithoutRecordIsLeftInItsVariable) {
    FileRecords();
    // A record with such a mode would not be found either.
    Results().floatResults[0].mode = 7;
    Results().fixedResults[0].mode = 0;
    Results().fixedResults[2].mode = -1;
    std::vector<int> modes(std::begin(kBadModes), std::end(kBadModes));
    modes.insert(modes.end(), {1, 2, 3, 4, 5});
    for (const int mode : modes) {
        BaseData base;
        base.mode = mode;
        EXPECT_EQ(base.Get(GetModeFloatSolBaseData), 0);
        EXPECT_EQ(base.Get(GetModeFixedSolBaseData), 0);
        EXPECT_EQ(base.mode, mode);
        EXPECT_TRUE(base.Untouched());
    }
}

TEST_F(Queries, NumbersAndModesOfTheSolutions) {
    FileRecords();
    EXPECT_EQ(GetFloatSolNum(), 2);
    EXPECT_EQ(GetFixedSolNum(), 3);
    const auto modesOf = [](void (*getter)(int, int*), int maxCount) {
        std::vector<int> modes(5, kUntouchedInt);
        getter(maxCount, modes.data());
        return modes;
    };
    const int u = kUntouchedInt;
    EXPECT_EQ(modesOf(GetFloatSolNumAndMode, 5), (std::vector<int>{5, 6, u, u, u}));
    EXPECT_EQ(modesOf(GetFloatSolNumAndMode, 1), (std::vector<int>{5, u, u, u, u}));
    EXPECT_EQ(modesOf(GetFixedSolNumAndMode, 5), (std::vector<int>{5, 6, 5, u, u}));
    EXPECT_EQ(modesOf(GetFixedSolNumAndMode, 2), (std::vector<int>{5, 6, u, u, u}));
    for (const int maxCount : {0, -1, INT_MIN}) {
        EXPECT_EQ(modesOf(GetFloatSolNumAndMode, maxCount), std::vector<int>(5, u));
        EXPECT_EQ(modesOf(GetFixedSolNumAndMode, maxCount), std::vector<int>(5, u));
    }
}

// Calls a getter of the base data; whether it threw what a matrix throws.
bool ThrowsIndexError(const std::function<void()>& call) {
    try {
        call();
    } catch (const gult::matrix_error& error) {
        EXPECT_STREQ(error.what(), "matrixT::operator(): Index out of range!");
        return true;
    }
    return false;
}

TEST_F(Queries, AMatrixSmallerThan3By3ThrowsAndLeavesWhatWasWritten) {
    FileRecords();
    Results().tripleDiff.covXYZ = Numbered(2, 40.0);
    Results().floatResults[0].covNEU = Numbered(1, 60.0);
    Results().fixedResults[1].covNEU = gult::matrixT(3, 2);
    BaseData triple;
    EXPECT_TRUE(ThrowsIndexError([&] { triple.Get(GetTripDiffSol); }));
    EXPECT_EQ(triple.mode, 3);
    EXPECT_EQ(triple.dof, 5007);
    EXPECT_EQ(triple.values[6], 5008.0);  // varianceFactor
    EXPECT_EQ(triple.values[7], 40.0);    // (0,0)
    EXPECT_EQ(triple.values[8], 41.0);    // (0,1)
    for (std::size_t i = 9; i < 29; ++i) {
        EXPECT_EQ(triple.values[i], kUntouched) << i;
    }
    BaseData floating;
    EXPECT_TRUE(ThrowsIndexError([&] { floating.Get(GetFloatSolBaseData, 0); }));
    EXPECT_EQ(floating.values[15], 5122.0);  // covXYZ (2,2)
    EXPECT_EQ(floating.values[16], 60.0);    // covNEU (0,0)
    for (std::size_t i = 17; i < 29; ++i) {
        EXPECT_EQ(floating.values[i], kUntouched) << i;
    }
    BaseData byModel;
    byModel.mode = 5;
    EXPECT_TRUE(ThrowsIndexError([&] { byModel.Get(GetModeFloatSolBaseData); }));
    EXPECT_EQ(byModel.values[16], 60.0);
    EXPECT_EQ(byModel.values[17], kUntouched);
    BaseData fixed;
    EXPECT_TRUE(ThrowsIndexError([&] { fixed.Get(GetFixedSolBaseData, 1); }));
    EXPECT_EQ(fixed.values[17], 0.0);
    EXPECT_EQ(fixed.values[18], kUntouched);
    BaseData fixedByModel;
    fixedByModel.mode = 6;
    EXPECT_TRUE(ThrowsIndexError([&] { fixedByModel.Get(GetModeFixedSolBaseData); }));
    EXPECT_EQ(fixedByModel.values[17], 0.0);
    EXPECT_EQ(fixedByModel.values[28], kUntouched);
}

TEST_F(Queries, ALargerMatrixGivesItsUpperLeftCorner) {
    FileRecords();
    Results().tripleDiff.covXYZ = Numbered(6, 40.0);
    BaseData base;
    EXPECT_EQ(base.Get(GetTripDiffSol), 1);
    EXPECT_EQ(base.values[9], 42.0);
    EXPECT_EQ(base.values[10], 50.0);
    EXPECT_EQ(base.values[15], 62.0);
}

// --- satellites and residuals

// The calls of one solution, by position or by model, float or fixed.
struct ResidualQueries {
    std::function<int()> satNum;
    std::function<int(int, int*, int*)> satList;  // empty: there is none
    std::function<int(int, int, int)> size;
    std::function<int(int, int, int, int, int*, double*, int*)> list;
};

using namespace std::placeholders;

ResidualQueries FloatAt(int index) {
    return {std::bind(GetFloatSolSatNum, index), std::bind(GetFloatSolSatList, index, _1, _2, _3),
            std::bind(GetFloatSolResListSize, index, _1, _2, _3),
            std::bind(GetFloatSolResList, index, _1, _2, _3, _4, _5, _6, _7)};
}
ResidualQueries FixedAt(int index) {
    return {std::bind(GetFixedSolSatNum, index), std::bind(GetFixedSolSatList, index, _1, _2, _3),
            std::bind(GetFixedSolResListSize, index, _1, _2, _3),
            std::bind(GetFixedSolResList, index, _1, _2, _3, _4, _5, _6, _7)};
}
ResidualQueries FloatOf(int mode) {
    return {std::bind(GetModeFloatSolSatNum, mode),
            {},
            std::bind(GetModeFloatSolResListSize, mode, _1, _2, _3),
            std::bind(GetModeFloatSolResList, mode, _1, _2, _3, _4, _5, _6, _7)};
}
ResidualQueries FixedOf(int mode) {
    return {std::bind(GetModeFixedSolSatNum, mode),
            std::bind(GetModeFixedSolSatList, mode, _1, _2, _3),
            std::bind(GetModeFixedSolResListSize, mode, _1, _2, _3),
            std::bind(GetModeFixedSolResList, mode, _1, _2, _3, _4, _5, _6, _7)};
}

// Every road to a record that FillResiduals filled.
std::vector<ResidualQueries> RoadsToResiduals() {
    return {FloatAt(1), FixedAt(1), FloatOf(6), FixedOf(6)};
}

TEST_F(Queries, SatellitesWithResidualsStandInTheOrderOfTheirFirst) {
    FileRecords();
    const int u = kUntouchedInt;
    for (const ResidualQueries& query : RoadsToResiduals()) {
        EXPECT_EQ(query.satNum(), 3);
        if (!query.satList) {
            continue;
        }
        std::vector<int> systems(4, u), prns(4, u);
        EXPECT_EQ(query.satList(4, systems.data(), prns.data()), 3);
        EXPECT_EQ(systems, (std::vector<int>{kGalileo, kGps, kBds, u}));
        EXPECT_EQ(prns, (std::vector<int>{2, 4, 1, u}));
        systems.assign(4, u);
        prns.assign(4, u);
        EXPECT_EQ(query.satList(2, systems.data(), prns.data()), 2);
        EXPECT_EQ(systems, (std::vector<int>{kGalileo, kGps, u, u}));
        EXPECT_EQ(prns, (std::vector<int>{2, 4, u, u}));
        systems.assign(4, u);
        for (const int maxCount : {0, -1, INT_MIN}) {
            EXPECT_EQ(query.satList(maxCount, systems.data(), prns.data()), 0);
        }
        EXPECT_EQ(systems, std::vector<int>(4, u));
    }
}

TEST_F(Queries, ResidualsGoOutByKindInTheirOrder) {
    FileRecords();
    for (const ResidualQueries& query : RoadsToResiduals()) {
        EXPECT_EQ(query.size(kGps, 4, 0), 3);
        EXPECT_EQ(query.size(kGps, 4, 1), 1);
        EXPECT_EQ(query.size(kGalileo, 2, 0), 1);
        EXPECT_EQ(query.size(kGalileo, 2, 1), 0);
        EXPECT_EQ(query.size(kBds, 1, 0), 0);
        EXPECT_EQ(query.size(kBds, 1, 1), 1);
        std::vector<int> weeks(4, kUntouchedInt), millimetres(4, kUntouchedInt);
        std::vector<double> seconds(4, kUntouched);
        EXPECT_EQ(query.list(kGps, 4, 0, 4, weeks.data(), seconds.data(), millimetres.data()), 3);
        EXPECT_EQ(weeks, (std::vector<int>{2200, 2200, 2200, kUntouchedInt}));
        EXPECT_EQ(seconds, (std::vector<double>{30.5, 60.5, 90.5, kUntouched}));
        EXPECT_EQ(millimetres, (std::vector<int>{12, -2, 0, kUntouchedInt}));
        EXPECT_EQ(query.list(kGps, 4, 1, 4, weeks.data(), seconds.data(), millimetres.data()), 1);
        EXPECT_EQ(weeks[0], 2201);
        EXPECT_EQ(seconds[0], 5.0);
        EXPECT_EQ(millimetres[0], 250);
    }
}

TEST_F(Queries, ResidualListsStopAtTheCount) {
    FileRecords();
    for (const ResidualQueries& query : RoadsToResiduals()) {
        std::vector<int> weeks(3, kUntouchedInt), millimetres(3, kUntouchedInt);
        std::vector<double> seconds(3, kUntouched);
        for (const int maxCount : {0, -1, INT_MIN}) {
            EXPECT_EQ(
                query.list(kGps, 4, 0, maxCount, weeks.data(), seconds.data(), millimetres.data()),
                0);
        }
        EXPECT_EQ(weeks, std::vector<int>(3, kUntouchedInt));
        EXPECT_EQ(query.list(kGps, 4, 0, 2, weeks.data(), seconds.data(), millimetres.data()), 2);
        EXPECT_EQ(millimetres, (std::vector<int>{12, -2, kUntouchedInt}));
        EXPECT_EQ(seconds, (std::vector<double>{30.5, 60.5, kUntouched}));
    }
}

TEST_F(Queries, UnknownSatellitesAndKindsHaveNoResiduals) {
    FileRecords();
    int week = kUntouchedInt, millimetres = kUntouchedInt;
    double seconds = kUntouched;
    const int bad[][3] = {
        {kGps, 5, 0},  {kGlonass, 4, 0},   {kGps, 0, 0},       {kGps, -1, 0},
        {kGps, 36, 0}, {3, 4, 0},          {0, 4, 0},          {16, 4, 0},
        {kGps, 4, 2},  {kGps, 4, -1},      {kGps, 4, INT_MAX}, {kGalileo, 33, 0},
        {-1, 4, 0},    {kGps, INT_MAX, 0}, {kGps, INT_MIN, 0}, {INT_MIN, INT_MIN, 0},
    };
    for (const ResidualQueries& query : RoadsToResiduals()) {
        for (const auto& [system, prn, kind] : bad) {
            EXPECT_EQ(query.size(system, prn, kind), 0) << system << ' ' << prn << ' ' << kind;
            EXPECT_EQ(query.list(system, prn, kind, 1, &week, &seconds, &millimetres), 0);
        }
    }
    EXPECT_EQ(week, kUntouchedInt);
    EXPECT_EQ(seconds, kUntouched);
    EXPECT_EQ(millimetres, kUntouchedInt);
}

TEST_F(Queries, RecordsThatDoNotExistHaveNoResiduals) {
    FileRecords();
    std::vector<ResidualQueries> roads{FloatAt(2), FloatAt(0), FixedAt(0), FloatOf(1),
                                       FixedOf(1), FloatOf(5), FixedOf(5)};
    for (const int index : kBadIndices) {
        roads.push_back(FloatAt(index));
        roads.push_back(FixedAt(index));
    }
    for (const int mode : kBadModes) {
        roads.push_back(FloatOf(mode));
        roads.push_back(FixedOf(mode));
    }
    int a = kUntouchedInt, b = kUntouchedInt;
    double d = kUntouched;
    for (const ResidualQueries& query : roads) {
        EXPECT_EQ(query.satNum(), 0);
        EXPECT_EQ(query.size(kGps, 4, 0), 0);
        EXPECT_EQ(query.list(kGps, 4, 0, 1, &a, &d, &b), 0);
        if (query.satList) {
            EXPECT_EQ(query.satList(1, &a, &b), 0);
        }
    }
    EXPECT_EQ(a, kUntouchedInt);
    EXPECT_EQ(b, kUntouchedInt);
    EXPECT_EQ(d, kUntouched);
}

// --- ambiguities

TEST_F(Queries, FloatAmbiguitiesFillAllSixteenArrays) {
    FileRecords();
    for (const int index : {0, 1}) {
        EXPECT_EQ(GetFloatSolAmbNum(index), 2);
        AmbiguityData data;
        EXPECT_EQ(data.Get(GetFloatSolAmbListData, index, 6), 2);
        ExpectAmbiguity(data, 0, kGps, 4, 50 + 10 * index);
        ExpectAmbiguity(data, 1, kGlonass, 32, 150 + 10 * index);
        EXPECT_TRUE(data.UntouchedFrom(2));
    }
}

TEST_F(Queries, FixedAmbiguitiesFillAllSixteenArraysAndTheRatio) {
    FileRecords();
    for (const int index : {0, 1, 2}) {
        EXPECT_EQ(GetFixedSolAmbNum(index), 3);
        AmbiguityData data;
        double ratio = kUntouched;
        EXPECT_EQ(data.Get(GetFixedSolAmbListData, index, 6, &ratio), 3);
        EXPECT_EQ(ratio, 15.0 + index);
        ExpectAmbiguity(data, 0, kBds, 36, 20);
        ExpectAmbiguity(data, 1, kGalileo, 1, 30);
        ExpectAmbiguity(data, 2, kGps, 35, 40);
        EXPECT_TRUE(data.UntouchedFrom(3));
    }
}

TEST_F(Queries, AmbiguityListsStopAtTheCount) {
    FileRecords();
    AmbiguityData floating;
    EXPECT_EQ(floating.Get(GetFloatSolAmbListData, 0, 1), 1);
    ExpectAmbiguity(floating, 0, kGps, 4, 50);
    EXPECT_TRUE(floating.UntouchedFrom(1));
    AmbiguityData fixed;
    double ratio = kUntouched;
    EXPECT_EQ(fixed.Get(GetFixedSolAmbListData, 0, 2, &ratio), 2);
    EXPECT_TRUE(fixed.UntouchedFrom(2));
}

TEST_F(Queries, NoRoomForAmbiguitiesStillGivesTheRatio) {
    FileRecords();
    for (const int maxCount : {0, -1, INT_MIN}) {
        AmbiguityData data;
        double ratio = kUntouched;
        EXPECT_EQ(data.Get(GetFixedSolAmbListData, 1, maxCount, &ratio), 0);
        EXPECT_EQ(ratio, 16.0);
        EXPECT_EQ(data.Get(GetFloatSolAmbListData, 1, maxCount), 0);
        EXPECT_TRUE(data.UntouchedFrom(0));
    }
}

TEST_F(Queries, TheRatioIsWrittenWithoutAmbiguitiesToo) {
    FileRecords();
    Results().fixedResults[0].ambiguities.clear();
    AmbiguityData data;
    double ratio = kUntouched;
    EXPECT_EQ(data.Get(GetFixedSolAmbListData, 0, 6, &ratio), 0);
    EXPECT_EQ(ratio, 15.0);
    EXPECT_TRUE(data.UntouchedFrom(0));
}

TEST_F(Queries, APositionOutsideTheListHasNoAmbiguities) {
    FileRecords();
    for (const int index : kBadIndices) {
        AmbiguityData data;
        double ratio = kUntouched;
        double variances[2] = {kUntouched, kUntouched};
        EXPECT_EQ(GetFloatSolAmbNum(index), 0);
        EXPECT_EQ(GetFixedSolAmbNum(index), 0);
        EXPECT_EQ(data.Get(GetFloatSolAmbListData, index, 6), 0);
        EXPECT_EQ(data.Get(GetFixedSolAmbListData, index, 6, &ratio), 0);
        EXPECT_EQ(GetFloatAmbCov(index, 2, variances), 0);
        EXPECT_TRUE(data.UntouchedFrom(0));
        EXPECT_EQ(ratio, kUntouched);
        EXPECT_EQ(variances[0], kUntouched);
    }
    EXPECT_EQ(GetFloatSolAmbNum(2), 0);
}

TEST_F(Queries, VariancesAreTheDiagonalWithZerosInTheSlotsLeft) {
    FileRecords();
    std::vector<double> variances(5, kUntouched);
    EXPECT_EQ(GetFloatAmbCov(1, 4, variances.data()), 2);
    EXPECT_EQ(variances, (std::vector<double>{300.0, 311.0, 0.0, 0.0, kUntouched}));
    variances.assign(5, kUntouched);
    EXPECT_EQ(GetFloatAmbCov(0, 1, variances.data()), 1);
    EXPECT_EQ(variances,
              (std::vector<double>{250.0, kUntouched, kUntouched, kUntouched, kUntouched}));
    variances.assign(5, kUntouched);
    for (const int maxCount : {0, -1, INT_MIN}) {
        EXPECT_EQ(GetFloatAmbCov(0, maxCount, variances.data()), 0);
    }
    EXPECT_EQ(variances, std::vector<double>(5, kUntouched));
}

// --- after runs

TEST_F(Queries, AfterAFloatRunThereIsNoFixedSolution) {
    test::SyntheticSession session;
    session.AddSky(kGps, 7);
    test::HandOver(Control(), session);
    Control().config.slvmode = 1;
    Control().config.maxFixBaseline = 1.0;
    int status = 0;
    test::StderrCapture quiet;
    ASSERT_EQ(StartProcess(&status), 1);
    ASSERT_EQ(status, 41);
    EXPECT_EQ(GetFloatSolNum(), 1);
    EXPECT_EQ(GetFixedSolNum(), 0);
    BaseData base;
    EXPECT_EQ(base.Get(GetFixedSolBaseData, 0), 0);
    EXPECT_TRUE(base.Untouched());
    EXPECT_EQ(base.Get(GetFloatSolBaseData, 0), 1);
    EXPECT_EQ(base.mode, 1);
    EXPECT_NEAR(base.values[0], session.rover.X - session.base.X, 0.05);
    EXPECT_EQ(base.values[4], base.values[3]);  // horizontal distance and length
    EXPECT_EQ(base.values[5], 0.0);
    // Six satellites against the reference, each with one point an epoch and no second block.
    EXPECT_EQ(GetFloatSolSatNum(0), 6);
    int systems[6], prns[6];
    ASSERT_EQ(GetFloatSolSatList(0, 6, systems, prns), 6);
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(GetFloatSolResListSize(0, systems[i], prns[i], 0), session.epochCount);
        EXPECT_EQ(GetFloatSolResListSize(0, systems[i], prns[i], 1), 0);
    }
    int week = 0, millimetres = 0;
    double seconds = 0.0;
    ASSERT_EQ(GetFloatSolResList(0, systems[0], prns[0], 0, 1, &week, &seconds, &millimetres), 1);
    EXPECT_EQ(week, session.week);
    EXPECT_EQ(seconds, session.startSeconds);
    EXPECT_EQ(GetFloatSolAmbNum(0), 6);
    double variances[8];
    EXPECT_EQ(GetFloatAmbCov(0, 8, variances), 6);
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(variances[i] > 0.0, i < 6);
    }
    const Report report;
    EXPECT_EQ(report.solveModel, 1);
    EXPECT_EQ(report.code, 2);
}

TEST_F(Queries, AfterModel6TheWideLaneStandsFirst) {
    test::SyntheticSession session;
    session.AddSky(kGps, 7);
    test::HandOver(Control(), session);
    Control().config.slvmode = 6;
    int status = 0;
    test::StderrCapture quiet;
    ASSERT_EQ(StartProcess(&status), 1);
    ASSERT_EQ(status, 73);
    int modes[3] = {kUntouchedInt, kUntouchedInt, kUntouchedInt};
    GetFixedSolNumAndMode(3, modes);
    EXPECT_EQ(modes[0], 5);
    EXPECT_EQ(modes[1], 6);
    EXPECT_EQ(modes[2], kUntouchedInt);
    const Report report;
    EXPECT_EQ(report.solveModel, 6);
    BaseData last, byModel;
    ASSERT_EQ(last.Get(GetFixedSolBaseData, 1), 1);
    byModel.mode = 6;
    ASSERT_EQ(byModel.Get(GetModeFixedSolBaseData), 1);
    EXPECT_EQ(last.values, byModel.values);
    byModel.mode = 3;
    EXPECT_EQ(byModel.Get(GetModeFixedSolBaseData), 0);
}

}  // namespace
}  // namespace vornel
