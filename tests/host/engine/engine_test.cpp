// The thin class over the public header: each argument at its place.
#include "engine/engine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "recording_engine.h"

namespace vornel::engine {
namespace {

using test::Calls;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

TEST(Engine, ConfigurationGoesInTheOrderOfTheHeader) {
    Engine engine(test::RecordingEngine());
    Config c;
    c.slvmode = 6;
    c.elevationMask = 0.2;
    c.samplingInterval = 15.0;
    c.minEpochs = 11;
    c.shortBaselineLimit = 9000.0;
    c.maxFixBaseline = 29000.0;
    c.ephemerisSource = 1;
    c.systems = {1, 0, 1, 0};
    c.outlierFactor = 3.6;
    c.slipTestCap = 0.26;
    c.ratioThreshold = 1.9;
    c.reservedLimitA = 26;
    c.reservedLimitB = 11;
    c.codeStd = 9.0;
    c.phaseStd = 0.02;
    c.periodLength = 7100.0;
    c.tropoModel = 0;
    c.pressure = 1000.0;
    c.temperature = 16.0;
    c.humidity = 51.0;
    c.reservedMode = 2;
    c.sessionStartWeek = 3;
    c.sessionStartSeconds = 4.0;
    c.sessionEndWeek = 5;
    c.sessionEndSeconds = 6.0;
    c.galFreq1 = 4;
    c.galFreq2 = 5;
    engine.Configure(c);
    ASSERT_EQ(Calls().size(), 1U);
    EXPECT_EQ(Calls()[0].name, "InputSolveConfig");
    EXPECT_THAT(Calls()[0].values,
                ElementsAre(6, 0.2, 15.0, 11, 9000.0, 29000.0, 1, 1, 0, 1, 0, 3.6, 0.26, 1.9, 26,
                            11, 9.0, 0.02, 7100.0, 0, 1000.0, 16.0, 51.0, 2, 3, 4.0, 5, 6.0, 4, 5));
}

TEST(Engine, TheRoverComesBeforeTheBase) {
    Engine engine(test::RecordingEngine());
    engine.SetStations({{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, 10},
                       {{11, 12, 13}, {14, 15, 16}, {17, 18, 19}, 20});
    std::vector<double> expected;
    for (int i = 1; i <= 20; ++i) {
        expected.push_back(i);
    }
    EXPECT_THAT(Calls().at(0).values, ElementsAreArray(expected));
}

Kepler CountedKepler(System system) {
    Kepler r;
    r.system = system;
    r.satId = 1;
    r.tocWeek = 2;
    r.tocSeconds = 3;
    r.af0 = 4;
    r.af1 = 5;
    r.af2 = 6;
    r.sqrtA = 7;
    r.e = 8;
    r.i0 = 9;
    r.omega0 = 10;
    r.omega = 11;
    r.m0 = 12;
    r.deltaN = 13;
    r.omegaDot = 14;
    r.idot = 15;
    r.crc = 16;
    r.crs = 17;
    r.cuc = 18;
    r.cus = 19;
    r.cic = 20;
    r.cis = 21;
    r.iode = 22;
    r.iodc = 23;
    r.toe = 24;
    r.toeWeek = 25;
    r.transmitTime = 26;
    r.l2Codes = 27;
    r.health = 28;
    r.accuracy = 29;
    r.l2PFlag = 30;
    r.tgd = 31;
    r.tgd2 = 32;
    r.fitInterval = 33;
    return r;
}

TEST(Engine, EphemeridesGoInTheOrderOfTheHeader) {
    Engine engine(test::RecordingEngine());
    engine.AddKepler(CountedKepler(System::kBds));
    engine.AddKepler(CountedKepler(System::kGalileo));
    engine.AddKepler(CountedKepler(System::kGps));
    std::vector<double> expected;
    for (int i = 1; i <= 33; ++i) {
        expected.push_back(i);
    }
    EXPECT_EQ(Calls().at(0).name, "InputOneSatNavBDS");
    EXPECT_THAT(Calls().at(0).values, ElementsAreArray(expected));
    EXPECT_EQ(Calls().at(1).name, "InputOneSatNavGAL");
    EXPECT_THAT(Calls().at(1).values, ElementsAreArray(expected));
    expected.erase(expected.begin() + 31);  // GPS has one group delay
    EXPECT_EQ(Calls().at(2).name, "InputOneSatNavGPS");
    EXPECT_THAT(Calls().at(2).values, ElementsAreArray(expected));
}

TEST(Engine, GlonassGoesInTheOrderOfTheHeader) {
    Engine engine(test::RecordingEngine());
    Glonass r;
    r.slot = 1;
    r.week = 2;
    r.seconds = 3;
    r.tbSeconds = 5;
    r.clockBias = 7;
    r.clockDrift = 8;
    r.position = {9, 10, 11};
    r.velocity = {12, 13, 14};
    r.acceleration = {15, 16, 17};
    r.health = 18;
    r.channel = 19;
    r.age = 20;
    r.leapSeconds = 21;
    engine.AddGlonass(r);
    EXPECT_THAT(Calls().at(0).values, ElementsAre(1, 2, 3, 0, 5, 0, 7, 8, 9, 10, 11, 12, 13, 14, 15,
                                                  16, 17, 18, 19, 20, 21));
}

TEST(Engine, ExclusionsNameSystemAndSpan) {
    Engine engine(test::RecordingEngine());
    engine.ExcludeSatellites({{System::kGps, 5}, {System::kGalileo, 30}});
    engine.ExcludeSpans({System::kGlonass, 3}, {{2111, 1, 2111, 2}, {2111, 7, 2112, 8}});
    engine.ExcludeSpans({System::kGlonass, 4}, {});
    ASSERT_EQ(Calls().size(), 2U);
    EXPECT_THAT(Calls()[0].values, ElementsAre(2, 1, 8, 5, 30));
    EXPECT_THAT(Calls()[1].values, ElementsAre(0, 2, 3, 0, 2111, 1, 2112, 8, 0, 2, 2111, 2111, 1, 7,
                                               2111, 2112, 2, 8));
}

TEST(Engine, AProcessIsDisposedOfOnceItWasCreated) {
    const Api api = test::RecordingEngine();
    { Engine unused(api); }
    EXPECT_TRUE(Calls().empty());
    {
        Engine engine(api);
        engine.CreateWithTrace("trace.log", 3);
    }
    ASSERT_EQ(Calls().size(), 2U);
    EXPECT_EQ(Calls()[0].text, "trace.log");
    EXPECT_THAT(Calls()[0].values, ElementsAre(3));
    EXPECT_EQ(Calls()[1].name, "DiposeProcess");
}

TEST(Engine, AnAnswerOfZeroIsAFailure) {
    Api api = test::RecordingEngine();
    api.inputIonCorrData = [](double*, double*) { return 0; };
    Engine engine(api);
    EXPECT_THROW(engine.SetIonosphere({}, {}), Failure);
}

// A small engine with one float and one fixed solution.
int OneSolution() {
    return 1;
}
int g_solveModel = 3;
int BaseData(int index, VORNEL_BASE_DATA_BLOCK) {
    if (index != 0) {
        return 0;
    }
    *mode = g_solveModel;
    double* const outputs[] = {dX,
                               dY,
                               dZ,
                               length,
                               horizontalDistance,
                               heightDifference,
                               xyz00,
                               xyz01,
                               xyz02,
                               xyz10,
                               xyz11,
                               xyz12,
                               xyz20,
                               xyz21,
                               xyz22,
                               neu00,
                               neu01,
                               neu02,
                               neu10,
                               neu11,
                               neu12,
                               neu20,
                               neu21,
                               neu22};
    double next = 1.0;
    for (double* output : outputs) {
        *output = next++;
    }
    *dof = 77;
    *varianceFactor = 0.5;
    *sigma3 = 0.1;
    *sigmaLength = 0.2;
    *relativeAccuracy = 0.3;
    *rms = 0.4;
    return 1;
}
int TwoAmbiguities(int) {
    return 2;
}
int FillAmbiguities(int count, VORNEL_AMBIGUITY_ARRAYS) {
    for (int i = 0; i < count; ++i) {
        systems[i] = 2;
        prns[i] = i + 1;
        firstEpochs[i] = 3;
        lastEpochs[i] = 4;
        firstWeeks[i] = 5;
        firstSeconds[i] = 6;
        lastWeeks[i] = 7;
        lastSeconds[i] = 8;
        rms1[i] = 9;
        rms2[i] = 10;
        rows1[i] = 11;
        rows2[i] = 12;
        rejected1[i] = 13;
        rejected2[i] = 14;
        values1[i] = 15;
        values2[i] = 16;
    }
    return count;
}
int FloatAmbiguities(int, int maxCount, VORNEL_AMBIGUITY_ARRAYS) {
    return FillAmbiguities(maxCount, systems, prns, firstEpochs, lastEpochs, firstWeeks,
                           firstSeconds, lastWeeks, lastSeconds, rms1, rms2, rows1, rows2,
                           rejected1, rejected2, values1, values2);
}
int FixedAmbiguities(int, int maxCount, double* ratio, VORNEL_AMBIGUITY_ARRAYS) {
    *ratio = 12.5;
    return FillAmbiguities(maxCount, systems, prns, firstEpochs, lastEpochs, firstWeeks,
                           firstSeconds, lastWeeks, lastSeconds, rms1, rms2, rows1, rows2,
                           rejected1, rejected2, values1, values2);
}
int Variances(int, int maxCount, double* variances) {
    for (int i = 0; i < maxCount; ++i) {
        variances[i] = 100 + i;
    }
    return maxCount;
}
int OneSatellite(int) {
    return 1;
}
int NameSatellite(int, int, int* systems, int* prns) {
    *systems = 8;
    *prns = 30;
    return 1;
}
int SizeOfKind(int, int, int, int kind) {
    return kind == 0 ? 2 : 1;
}
int Residuals(int, int, int, int kind, int maxCount, int* weeks, double* seconds, int* values) {
    for (int i = 0; i < maxCount; ++i) {
        weeks[i] = 2111;
        seconds[i] = 30.0 * i;
        values[i] = 10 * kind + i;
    }
    return maxCount;
}

TEST(Engine, QueriesAreGatheredWhole) {
    g_solveModel = 3;
    Api api = test::RecordingEngine();
    api.getFloatSolNum = &OneSolution;
    api.getFixedSolNum = &OneSolution;
    api.getFloatSolBaseData = &BaseData;
    api.getFixedSolBaseData = &BaseData;
    api.getFloatSolAmbNum = &TwoAmbiguities;
    api.getFixedSolAmbNum = &TwoAmbiguities;
    api.getFloatSolAmbListData = &FloatAmbiguities;
    api.getFixedSolAmbListData = &FixedAmbiguities;
    api.getFloatAmbCov = &Variances;
    api.getFloatSolSatNum = &OneSatellite;
    api.getFixedSolSatNum = &OneSatellite;
    api.getFloatSolSatList = &NameSatellite;
    api.getFixedSolSatList = &NameSatellite;
    api.getFloatSolResListSize = &SizeOfKind;
    api.getFixedSolResListSize = &SizeOfKind;
    api.getFloatSolResList = &Residuals;
    api.getFixedSolResList = &Residuals;
    const Results results = Engine(api).ReadResults(85);
    EXPECT_EQ(results.status, 85);
    EXPECT_EQ(results.tripleDifference.mode, 0);
    ASSERT_EQ(results.floats.size(), 1U);
    ASSERT_EQ(results.fixeds.size(), 1U);
    const Solution& s = results.floats[0];
    EXPECT_EQ(s.mode, 3);
    EXPECT_THAT(s.vector, ElementsAre(1, 2, 3));
    EXPECT_EQ(s.length, 4);
    EXPECT_EQ(s.dof, 77);
    EXPECT_EQ(s.varianceFactor, 0.5);
    EXPECT_THAT(s.covarianceXyz, ElementsAre(7, 8, 9, 10, 11, 12, 13, 14, 15));
    EXPECT_THAT(s.covarianceNeu, ElementsAre(16, 17, 18, 19, 20, 21, 22, 23, 24));
    EXPECT_EQ(s.sigma3, 0.1);
    EXPECT_EQ(s.sigmaLength, 0.2);
    EXPECT_EQ(s.relativeAccuracy, 0.3);
    EXPECT_EQ(s.rms, 0.4);
    ASSERT_EQ(s.ambiguities.size(), 2U);
    const Ambiguity& a = s.ambiguities[1];
    EXPECT_EQ(a.system, 2);
    EXPECT_EQ(a.prn, 2);
    EXPECT_EQ(a.lastEpoch, 4);
    EXPECT_EQ(a.firstSeconds, 6);
    EXPECT_EQ(a.lastWeek, 7);
    EXPECT_EQ(a.rms2, 10);
    EXPECT_EQ(a.rows2, 12);
    EXPECT_EQ(a.rejected1, 13);
    EXPECT_EQ(a.value2, 16);
    EXPECT_TRUE(std::isnan(a.variance));  // in model 3 it is not told whose they are
    ASSERT_EQ(s.residuals.size(), 2U);
    EXPECT_EQ(s.residuals[0].system, 8);
    EXPECT_EQ(s.residuals[0].prn, 30);
    EXPECT_EQ(s.residuals[0].points.size(), 2U);
    EXPECT_EQ(s.residuals[1].kind, 1);
    EXPECT_EQ(s.residuals[1].points[0].millimetres, 10);
    EXPECT_EQ(results.fixeds[0].ratio, 12.5);
    EXPECT_TRUE(std::isnan(results.fixeds[0].ambiguities[0].variance));
    g_solveModel = 1;
    const Results first = Engine(api).ReadResults(81);
    EXPECT_EQ(first.floats[0].ambiguities[0].variance, 100);
    EXPECT_EQ(first.floats[0].ambiguities[1].variance, 101);
}

}  // namespace
}  // namespace vornel::engine
