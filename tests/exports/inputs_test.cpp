// What each set-up export leaves in the control object and in the process-wide stores.
#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cmath>
#include <vector>

#include "VornelBlCore.h"
#include "exports/process_fixture.h"
#include "foundation/satellite.h"
#include "run/synthetic_session.h"

namespace vornel {
namespace {

class Inputs : public test::ProcessTest {
  protected:
    void SetUp() override {
        ProcessTest::SetUp();
        ASSERT_EQ(CreateBLProcess(), 1);
    }
};

void ExpectDefaults(const SolveConfig& config) {
    EXPECT_EQ(config.elevationMask, 0.2617993877991494);
    EXPECT_EQ(config.samplingInterval, 30.0);
    EXPECT_EQ(config.minEpochs, 10);
    EXPECT_EQ(config.slvmode, 0);
    EXPECT_EQ(config.shortBaselineLimit, 10000.0);
    EXPECT_EQ(config.maxFixBaseline, 30000.0);
    EXPECT_EQ(config.ephemerisSource, 0);
    EXPECT_EQ(config.useGps, 1);
    EXPECT_EQ(config.useGlonass, 1);
    EXPECT_EQ(config.useBds, 1);
    EXPECT_EQ(config.useGalileo, 1);
    EXPECT_EQ(config.outlierFactor, 3.5);
    EXPECT_EQ(config.slipTestCap, 0.25);
    EXPECT_EQ(config.ratioThreshold, 1.8);
    EXPECT_EQ(config.reservedLimitA, 25.0);
    EXPECT_EQ(config.reservedLimitB, 10.0);
    EXPECT_EQ(config.codeStd, 10.0);
    EXPECT_EQ(config.phaseStd, 0.01);
    EXPECT_EQ(config.periodLength, 7200.0);
    EXPECT_EQ(config.tropoModel, 1);
    EXPECT_EQ(config.pressure, 1013.25);
    EXPECT_EQ(config.temperature, 15.0);
    EXPECT_EQ(config.humidity, 50.0);
    EXPECT_EQ(config.reservedMode, 1);
    EXPECT_TRUE(config.sessionStart.IsZero());
    EXPECT_TRUE(config.sessionEnd.IsZero());
    EXPECT_EQ(config.galFreq1, 1);
    EXPECT_EQ(config.galFreq2, 2);
}

TEST_F(Inputs, ANewControlObjectIsEmptyAndOnDefaults) {
    const CTRLSolve& control = Control();
    EXPECT_EQ(control.roverDualFreq, 0);
    EXPECT_EQ(control.baseDualFreq, 0);
    EXPECT_EQ(control.hasGlonass, 0);
    EXPECT_EQ(control.reservedProcessFlag, 0);
    for (const XYZPosition& position : {control.basePosition, control.roverPosition}) {
        EXPECT_EQ(position.X, 0.0);
        EXPECT_EQ(position.Y, 0.0);
        EXPECT_EQ(position.Z, 0.0);
    }
    for (std::size_t k = 0; k < 3; ++k) {
        EXPECT_EQ(control.l1PcoRover[k], 0.0);
        EXPECT_EQ(control.l2PcoRover[k], 0.0);
        EXPECT_EQ(control.l1PcoBase[k], 0.0);
        EXPECT_EQ(control.l2PcoBase[k], 0.0);
    }
    EXPECT_EQ(control.trueHeightRover, 0.0);
    EXPECT_EQ(control.trueHeightBase, 0.0);
    EXPECT_TRUE(control.epochs.empty());
    EXPECT_TRUE(control.delSatList.empty());
    EXPECT_TRUE(control.trackList0.tracks.empty());
    EXPECT_TRUE(control.trackList1.tracks.empty());
    EXPECT_TRUE(control.trackList2.tracks.empty());
    ExpectDefaults(control.config);
    EXPECT_EQ(CurrentProcess().solver, nullptr);
}

// --- the configuration

// InputSolveConfig with its last two arguments and the weather given, everything else fixed.
int Configure(int galFreq1, int galFreq2, double pressure = 900.0, double temperature = 20.0,
              double humidity = 60.0) {
    int systems[4] = {1, 1, 1, 1};
    return InputSolveConfig(0, 0.2, 30.0, 10, 10000.0, 30000.0, 0, systems, 3.5, 0.25, 1.8, 25.0,
                            10.0, 10.0, 0.01, 7200.0, 1, pressure, temperature, humidity, 1, 0, 0.0,
                            0, 0.0, galFreq1, galFreq2);
}

TEST_F(Inputs, EveryArgumentOfTheConfigurationGoesToItsField) {
    int systems[4] = {1, 0, 7, -3};
    EXPECT_EQ(InputSolveConfig(3, 0.11, 15.0, 21, 8000.0, 31000.0, 2, systems, 4.5, 0.35, 2.5, 26.0,
                               11.0, 9.0, 0.02, 3600.0, 5, 950.0, 25.0, 70.0, 4, 2201, 86400.5,
                               2202, 172800.25, 4, 5),
              1);
    const SolveConfig& config = Control().config;
    EXPECT_EQ(config.slvmode, 3);
    EXPECT_EQ(config.elevationMask, 0.11);
    EXPECT_EQ(config.samplingInterval, 15.0);
    EXPECT_EQ(config.minEpochs, 21);
    EXPECT_EQ(config.shortBaselineLimit, 8000.0);
    EXPECT_EQ(config.maxFixBaseline, 31000.0);
    EXPECT_EQ(config.ephemerisSource, 2);
    EXPECT_EQ(config.useGps, 1);
    EXPECT_EQ(config.useGlonass, 0);
    EXPECT_EQ(config.useBds, 7);
    EXPECT_EQ(config.useGalileo, -3);
    EXPECT_EQ(config.systemListEnd, -1);
    EXPECT_EQ(config.outlierFactor, 4.5);
    EXPECT_EQ(config.slipTestCap, 0.35);
    EXPECT_EQ(config.ratioThreshold, 2.5);
    EXPECT_EQ(config.reservedLimitA, 26.0);
    EXPECT_EQ(config.reservedLimitB, 11.0);
    EXPECT_EQ(config.codeStd, 9.0);
    EXPECT_EQ(config.phaseStd, 0.02);
    EXPECT_EQ(config.periodLength, 3600.0);
    EXPECT_EQ(config.tropoModel, 5);
    EXPECT_EQ(config.pressure, 950.0);
    EXPECT_EQ(config.temperature, 25.0);
    EXPECT_EQ(config.humidity, 70.0);
    EXPECT_EQ(config.reservedMode, 4);
    EXPECT_TRUE(config.sessionStart == Epoch(2201, 86400.5));
    EXPECT_TRUE(config.sessionEnd == Epoch(2202, 172800.25));
    EXPECT_EQ(config.galFreq1, 4);
    EXPECT_EQ(config.galFreq2, 5);
    const SurfaceWeather& weather = CurrentSurfaceWeather();
    EXPECT_EQ(weather.temperature, 25.0);
    EXPECT_EQ(weather.pressure, 950.0);
    EXPECT_EQ(weather.humidity, 70.0);
}

TEST_F(Inputs, FourZeroSystemSwitchesPassUnchanged) {
    int systems[4] = {0, 0, 0, 0};
    EXPECT_EQ(
        InputSolveConfig(0, 0.2, 30.0, 10, 10000.0, 30000.0, 0, systems, 3.5, 0.25, 1.8, 25.0, 10.0,
                         10.0, 0.01, 7200.0, 1, 900.0, 20.0, 60.0, 1, 0, 0.0, 0, 0.0, 1, 2),
        1);
    EXPECT_EQ(Control().config.useGps, 0);
    EXPECT_EQ(Control().config.useGlonass, 0);
    EXPECT_EQ(Control().config.useBds, 0);
    EXPECT_EQ(Control().config.useGalileo, 0);
}

TEST_F(Inputs, NoOtherSettingIsTested) {
    int systems[4] = {1, 1, 1, 1};
    EXPECT_EQ(
        InputSolveConfig(-7, 9.0, -1.0, -2, -3.0, -4.0, -5, systems, -6.0, -7.0, -8.0, -9.0, -10.0,
                         -11.0, -12.0, -13.0, -14, 900.0, 20.0, 60.0, -15, 0, 0.0, 0, 0.0, 1, 2),
        1);
    const SolveConfig& config = Control().config;
    EXPECT_EQ(config.slvmode, -7);
    EXPECT_EQ(config.elevationMask, 9.0);
    EXPECT_EQ(config.samplingInterval, -1.0);
    EXPECT_EQ(config.minEpochs, -2);
    EXPECT_EQ(config.ratioThreshold, -8.0);
    EXPECT_EQ(config.periodLength, -13.0);
}

TEST_F(Inputs, GalileoBandsAreBroughtIntoRange) {
    const int
        cases
            [][4] =
                {
                    {1, 2, 1, 2}, {5, 1, 5, 1}, {3, 3, 3, 2},       {0, 2, 1, 2},
                    {0, 0, 1, 2}, {6, 3, 1, 3}, {-1, 5, 1, 5},      {4, 6, 4, 2},
                    {4, 0, 4, 2}, {1, 1, 1, 2}, {5, INT_MAX, 5, 2}, {INT_MIN, 4, 1, 4},
                    {9, 1, 1, 1},  // the test for equality looks at the first band as passed: equal bands remain
                    {2, 2, 2, 2},
                };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c[0] << ", " << c[1]);
        ASSERT_EQ(Configure(c[0], c[1]), 1);
        EXPECT_EQ(Control().config.galFreq1, c[2]);
        EXPECT_EQ(Control().config.galFreq2, c[3]);
    }
}

TEST_F(Inputs, WeatherAtTheBoundsIsReplacedForTheModelsAndKeptInTheConfiguration) {
    const double cases[][6] = {
        // pressure, temperature, humidity; as the models take them
        {500.0, 100.0, 0.0, 1013.25, 18.0, 50.0}, {2000.0, -50.0, 100.0, 1013.25, 18.0, 50.0},
        {500.5, 99.5, 0.5, 500.5, 99.5, 0.5},     {1999.5, -49.5, 99.5, 1999.5, -49.5, 99.5},
        {0.0, 1000.0, -1.0, 1013.25, 18.0, 50.0},
    };
    for (const auto& c : cases) {
        ASSERT_EQ(Configure(1, 2, c[0], c[1], c[2]), 1);
        EXPECT_EQ(Control().config.pressure, c[0]);
        EXPECT_EQ(Control().config.temperature, c[1]);
        EXPECT_EQ(Control().config.humidity, c[2]);
        EXPECT_EQ(CurrentSurfaceWeather().pressure, c[3]);
        EXPECT_EQ(CurrentSurfaceWeather().temperature, c[4]);
        EXPECT_EQ(CurrentSurfaceWeather().humidity, c[5]);
    }
}

TEST_F(Inputs, ANewProcessStartsFromTheDefaultsAgainButKeepsTheWeather) {
    ASSERT_EQ(Configure(3, 4, 910.0, 11.0, 61.0), 1);
    ASSERT_EQ(CreateBLProcess(), 1);
    ExpectDefaults(Control().config);
    EXPECT_EQ(CurrentSurfaceWeather().pressure, 910.0);
    EXPECT_EQ(CurrentSurfaceWeather().temperature, 11.0);
    EXPECT_EQ(CurrentSurfaceWeather().humidity, 61.0);
}

TEST_F(Inputs, ConfigurationsAreCopiedWhole) {
    SolveConfig config;
    config.slvmode = 4;
    config.systemListEnd = -1;
    config.sessionEnd = Epoch(2200, 5.0);
    config.galFreq2 = 5;
    const SolveConfig copy(config);
    SolveConfig assigned;
    assigned = config;
    for (const SolveConfig* each : {&copy, static_cast<const SolveConfig*>(&assigned)}) {
        EXPECT_EQ(each->slvmode, 4);
        EXPECT_EQ(each->systemListEnd, -1);
        EXPECT_TRUE(each->sessionEnd == Epoch(2200, 5.0));
        EXPECT_EQ(each->galFreq2, 5);
    }
}

// --- the stations

TEST_F(Inputs, StationsAndAntennasAreCopied) {
    double values[6][3];
    for (int i = 0; i < 6; ++i) {
        for (int k = 0; k < 3; ++k) {
            values[i][k] = 100.0 * (i + 1) + k;
        }
    }
    EXPECT_EQ(InputAntCorrData(values[0], values[1], values[2], 1.25, values[3], values[4],
                               values[5], 2.5),
              1);
    double expected[6][3];
    for (int i = 0; i < 6; ++i) {
        for (int k = 0; k < 3; ++k) {
            expected[i][k] = 100.0 * (i + 1) + k;
            values[i][k] = -1.0;
        }
    }
    const CTRLSolve& control = Control();
    EXPECT_EQ(control.roverPosition.X, expected[0][0]);
    EXPECT_EQ(control.roverPosition.Y, expected[0][1]);
    EXPECT_EQ(control.roverPosition.Z, expected[0][2]);
    EXPECT_EQ(control.basePosition.X, expected[3][0]);
    EXPECT_EQ(control.basePosition.Y, expected[3][1]);
    EXPECT_EQ(control.basePosition.Z, expected[3][2]);
    for (int k = 0; k < 3; ++k) {
        EXPECT_EQ(control.l1PcoRover[k], expected[1][k]);
        EXPECT_EQ(control.l2PcoRover[k], expected[2][k]);
        EXPECT_EQ(control.l1PcoBase[k], expected[4][k]);
        EXPECT_EQ(control.l2PcoBase[k], expected[5][k]);
    }
    EXPECT_EQ(control.trueHeightRover, 1.25);
    EXPECT_EQ(control.trueHeightBase, 2.5);
}

// --- ionosphere and ephemerides

TEST_F(Inputs, IonosphereCoefficientsAreStoredAndMarkedPresent) {
    double alpha[4] = {1e-8, 2e-8, -3e-8, 4e-8};
    double beta[4] = {9e4, 8e4, -7e4, 6e4};
    EXPECT_EQ(CurrentIonosphere().ionoValid, 0);
    EXPECT_EQ(InputIonCorrData(alpha, beta), 1);
    EXPECT_EQ(CurrentIonosphere().ionoValid, 1);
    for (int k = 0; k < 4; ++k) {
        EXPECT_EQ(CurrentIonosphere().alpha[k], alpha[k]);
        EXPECT_EQ(CurrentIonosphere().beta[k], beta[k]);
    }
}

void ExpectKeplerFields(const KeplerEphemeris& record, double tgd2) {
    EXPECT_EQ(record.satId, 5);
    EXPECT_EQ(record.tocWeek, 2199);
    EXPECT_EQ(record.tocSeconds, 101.0);
    EXPECT_EQ(record.af0, 1.01);
    EXPECT_EQ(record.af1, 1.02);
    EXPECT_EQ(record.af2, 1.03);
    EXPECT_EQ(record.sqrtA, 5153.5);
    EXPECT_EQ(record.e, 0.01);
    EXPECT_EQ(record.i0, 0.95);
    EXPECT_EQ(record.omega0, 1.04);
    EXPECT_EQ(record.omega, 1.05);
    EXPECT_EQ(record.m0, 1.06);
    EXPECT_EQ(record.deltaN, 1.07);
    EXPECT_EQ(record.omegaDot, 1.08);
    EXPECT_EQ(record.idot, 1.09);
    EXPECT_EQ(record.crc, 1.11);
    EXPECT_EQ(record.crs, 1.12);
    EXPECT_EQ(record.cuc, 1.13);
    EXPECT_EQ(record.cus, 1.14);
    EXPECT_EQ(record.cic, 1.15);
    EXPECT_EQ(record.cis, 1.16);
    EXPECT_EQ(record.iode, 71);
    EXPECT_EQ(record.iodc, 72.5);
    EXPECT_EQ(record.toe, 7200.0);
    EXPECT_EQ(record.toeWeek, 2200);
    EXPECT_TRUE(record.toeEpoch == Epoch(2200, 7200.0));
    EXPECT_EQ(record.transmitTime, 7000.0);
    EXPECT_EQ(record.l2Codes, 73);
    EXPECT_EQ(record.health, 74);
    EXPECT_EQ(record.accuracy, 1.17);
    EXPECT_EQ(record.l2PFlag, 75);
    EXPECT_EQ(record.tgd, 1.18);
    EXPECT_EQ(record.tgd2, tgd2);
    EXPECT_EQ(record.fitInterval, 76);
}

TEST_F(Inputs, EveryArgumentOfAGpsEphemerisGoesToItsField) {
    EXPECT_EQ(InputOneSatNavGPS(5, 2199, 101.0, 1.01, 1.02, 1.03, 5153.5, 0.01, 0.95, 1.04, 1.05,
                                1.06, 1.07, 1.08, 1.09, 1.11, 1.12, 1.13, 1.14, 1.15, 1.16, 71,
                                72.5, 7200.0, 2200, 7000.0, 73, 74, 1.17, 75, 1.18, 76),
              1);
    ASSERT_EQ(GpsStore().records().size(), 1U);
    ExpectKeplerFields(GpsStore().records()[0], 0.0);
    EXPECT_TRUE(BdsStore().records().empty());
    EXPECT_TRUE(GalileoStore().records().empty());
}

TEST_F(Inputs, EveryArgumentOfABdsEphemerisGoesToItsField) {
    EXPECT_EQ(InputOneSatNavBDS(5, 2199, 101.0, 1.01, 1.02, 1.03, 5153.5, 0.01, 0.95, 1.04, 1.05,
                                1.06, 1.07, 1.08, 1.09, 1.11, 1.12, 1.13, 1.14, 1.15, 1.16, 71,
                                72.5, 7200.0, 2200, 7000.0, 73, 74, 1.17, 75, 1.18, 1.19, 76),
              1);
    ASSERT_EQ(BdsStore().records().size(), 1U);
    ExpectKeplerFields(BdsStore().records()[0], 1.19);
    EXPECT_TRUE(GpsStore().records().empty());
    EXPECT_TRUE(GalileoStore().records().empty());
}

TEST_F(Inputs, EveryArgumentOfAGalileoEphemerisGoesToItsField) {
    EXPECT_EQ(InputOneSatNavGAL(5, 2199, 101.0, 1.01, 1.02, 1.03, 5153.5, 0.01, 0.95, 1.04, 1.05,
                                1.06, 1.07, 1.08, 1.09, 1.11, 1.12, 1.13, 1.14, 1.15, 1.16, 71,
                                72.5, 7200.0, 2200, 7000.0, 73, 74, 1.17, 75, 1.18, 1.19, 76),
              1);
    ASSERT_EQ(GalileoStore().records().size(), 1U);
    ExpectKeplerFields(GalileoStore().records()[0], 1.19);
    EXPECT_TRUE(GpsStore().records().empty());
    EXPECT_TRUE(BdsStore().records().empty());
}

TEST_F(Inputs, EveryArgumentOfAGlonassEphemerisGoesToItsField) {
    EXPECT_EQ(InputOneSatNavGLO(7, 2200, 900.0, 2.01, 2.02, 2.03, 2.04, 2.05, 20000.0, 2.06, 2.07,
                                2.08, 2.09, 2.11, 2.12, 2.13, 2.14, 81, -4, 82, 18),
              1);
    ASSERT_EQ(GlonassEphemerides().records().size(), 1U);
    const GlonassEphemeris& record = GlonassEphemerides().records()[0];
    EXPECT_EQ(record.slot, 7);
    EXPECT_TRUE(record.refEpoch == Epoch(2200, 900.0));
    EXPECT_EQ(record.spare2, 2.01);
    EXPECT_EQ(record.tbSeconds, 2.02);
    EXPECT_EQ(record.spare1, 2.03);
    EXPECT_EQ(record.clockBias, 2.04);
    EXPECT_EQ(record.clockDrift, 2.05);
    EXPECT_EQ(record.x, 20000.0);
    EXPECT_EQ(record.y, 2.06);
    EXPECT_EQ(record.z, 2.07);
    EXPECT_EQ(record.vx, 2.08);
    EXPECT_EQ(record.vy, 2.09);
    EXPECT_EQ(record.vz, 2.11);
    EXPECT_EQ(record.ax, 2.12);
    EXPECT_EQ(record.ay, 2.13);
    EXPECT_EQ(record.az, 2.14);
    EXPECT_EQ(record.health, 81);
    EXPECT_EQ(record.channel, -4);
    EXPECT_EQ(record.age, 82);
    EXPECT_EQ(record.leapSeconds, 18);
}

TEST_F(Inputs, AnEphemerisOfTheSameSatelliteAndTimeIsReplaced) {
    for (const double af0 : {1.0, 2.0}) {
        InputOneSatNavGPS(5, 2200, 0.0, af0, 0.0, 0.0, 5153.5, 0.01, 0.95, 0.0, 0.0, 0.0, 0.0, 0.0,
                          0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0, 0.0, 7200.0, 2200, 0.0, 0, 0, 0.0,
                          0, 0.0, 0);
    }
    ASSERT_EQ(GpsStore().records().size(), 1U);
    EXPECT_EQ(GpsStore().records()[0].af0, 2.0);
}

TEST_F(Inputs, PreciseValuesGoToTheStoreOfTheirComponent) {
    int weeks[2] = {2200, 2200};
    double seconds[2] = {0.0, 900.0};
    for (int component = 0; component < 4; ++component) {
        double values[2] = {10.0 * component, 10.0 * component + 1.0};
        EXPECT_EQ(InputOneSatPreEphValue(component, kBds, 3, 2, weeks, seconds, values), 1);
    }
    for (int component = 0; component < 4; ++component) {
        ASSERT_EQ(PreciseStore(component).satellites.size(), 1U);
        const OneSatSP3ValList& list = PreciseStore(component).satellites[0];
        EXPECT_EQ(list.satNumber, 70);
        ASSERT_EQ(list.values.size(), 2U);
        EXPECT_TRUE(list.values[1].first == Epoch(2200, 900.0));
        EXPECT_EQ(list.values[0].second, 10.0 * component);
        EXPECT_EQ(list.values[1].second, 10.0 * component + 1.0);
    }
}

TEST_F(Inputs, PreciseValuesWithoutSatelliteCountOrComponentAreLeftOut) {
    int weeks[1] = {2200};
    double seconds[1] = {0.0};
    double values[1] = {1.0};
    EXPECT_EQ(InputOneSatPreEphValue(0, kGps, 1, 0, weeks, seconds, values), 1);
    EXPECT_EQ(InputOneSatPreEphValue(0, kGps, 1, -1, weeks, seconds, values), 1);
    EXPECT_EQ(InputOneSatPreEphValue(0, kGps, 36, 1, weeks, seconds, values), 1);
    EXPECT_EQ(InputOneSatPreEphValue(0, 3, 1, 1, weeks, seconds, values), 1);
    EXPECT_EQ(InputOneSatPreEphValue(4, kGps, 1, 1, weeks, seconds, values), 1);
    EXPECT_EQ(InputOneSatPreEphValue(-1, kGps, 1, 1, weeks, seconds, values), 1);
    for (int component = 0; component < 4; ++component) {
        EXPECT_TRUE(PreciseStore(component).satellites.empty());
    }
}

TEST_F(Inputs, EphemeridesAndIonosphereOutliveTheProcess) {
    double alpha[4] = {1e-8, 0.0, 0.0, 0.0};
    double beta[4] = {9e4, 0.0, 0.0, 0.0};
    InputIonCorrData(alpha, beta);
    InputOneSatNavGPS(5, 2200, 0.0, 0.5, 0.0, 0.0, 5153.5, 0.01, 0.95, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0,
                      0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0, 0.0, 7200.0, 2200, 0.0, 0, 0, 0.0, 0, 0.0,
                      0);
    InputOneSatNavGLO(7, 2200, 900.0, 0.0, 0.0, 0.0, 0.0, 0.0, 20000.0, 0.0, 0.0, 0.0, 0.0, 0.0,
                      0.0, 0.0, 0.0, 0, -4, 0, 18);
    int weeks[1] = {2200};
    double seconds[1] = {0.0};
    double values[1] = {1.0};
    InputOneSatPreEphValue(2, kGps, 1, 1, weeks, seconds, values);
    int status = -1;
    ASSERT_EQ(StartProcess(&status), 1);
    const auto expectAllThere = [] {
        EXPECT_EQ(CurrentIonosphere().ionoValid, 1);
        EXPECT_EQ(CurrentIonosphere().alpha[0], 1e-8);
        EXPECT_EQ(CurrentIonosphere().beta[0], 9e4);
        ASSERT_EQ(GpsStore().records().size(), 1U);
        EXPECT_EQ(GpsStore().records()[0].af0, 0.5);
        EXPECT_EQ(GlonassEphemerides().records().size(), 1U);
        EXPECT_EQ(PreciseStore(2).satellites.size(), 1U);
    };
    ASSERT_EQ(CreateBLProcess(), 1);
    expectAllThere();
    ASSERT_EQ(DiposeProcess(), 1);
    expectAllThere();
    ASSERT_EQ(CreateBLProcessWithTrace("", 0), 1);
    expectAllThere();
}

// --- satellites left out

TEST_F(Inputs, MarkedSatellitesReplaceTheListWithoutTests) {
    int systems[5] = {kGps, kGlonass, 3, kGps, kGalileo};
    int prns[5] = {7, 1, 4, 7, 33};
    EXPECT_EQ(MarkDelSatList(5, systems, prns), 1);
    EXPECT_EQ(Control().delSatList, (std::vector<int>{7, 36, 0, 7, 0}));
    EXPECT_EQ(MarkDelSatList(1, systems, prns), 1);
    EXPECT_EQ(Control().delSatList, std::vector<int>{7});
}

TEST_F(Inputs, MarkingNoSatellitesEmptiesTheList) {
    int systems[1] = {kGps};
    int prns[1] = {7};
    for (const int count : {0, -1, INT_MIN}) {
        MarkDelSatList(1, systems, prns);
        EXPECT_EQ(MarkDelSatList(count, systems, prns), 1);
        EXPECT_TRUE(Control().delSatList.empty());
    }
}

TEST_F(Inputs, ASatelliteIsAddedToTheListOnce) {
    EXPECT_EQ(AddOneDelSat(kBds, 2), 1);
    EXPECT_EQ(AddOneDelSat(kGps, 2), 1);
    EXPECT_EQ(AddOneDelSat(kBds, 2), 1);
    EXPECT_EQ(Control().delSatList, (std::vector<int>{69, 2}));
}

TEST_F(Inputs, AnInvalidSatelliteIsAddedToTheListAsZeroOnce) {
    EXPECT_EQ(AddOneDelSat(kGps, 36), 1);
    EXPECT_EQ(AddOneDelSat(5, 1), 1);
    EXPECT_EQ(Control().delSatList, std::vector<int>{0});
}

int AddTrack(int listIndex, int system, int prn, int isActive = 0, int gapCount = 0) {
    int startWeeks[2] = {2200, 2201};
    double startSeconds[2] = {10.0, 30.0};
    int endWeeks[2] = {2200, 2201};
    double endSeconds[2] = {20.0, 40.5};
    return AddOneSatTrackInfo(listIndex, system, prn, isActive, 2199, 1.5, 2202, 2.5, 6.25,
                              gapCount, startWeeks, startSeconds, endWeeks, endSeconds);
}

TEST_F(Inputs, ATrackGoesToItsListWithAllItHolds) {
    EXPECT_EQ(AddTrack(0, kGps, 5, 0, 2), 1);
    EXPECT_EQ(AddTrack(1, kGlonass, 2, 1), 1);
    EXPECT_EQ(AddTrack(2, kGalileo, 3, -4), 1);
    ASSERT_EQ(Control().trackList0.tracks.size(), 1U);
    ASSERT_EQ(Control().trackList1.tracks.size(), 1U);
    ASSERT_EQ(Control().trackList2.tracks.size(), 1U);
    const SatTrack& track = Control().trackList0.tracks[0];
    EXPECT_EQ(track.sat, 5);
    EXPECT_FALSE(track.isActive);
    EXPECT_EQ(track.value, 6.25);
    EXPECT_TRUE(track.span.start == Epoch(2199, 1.5));
    EXPECT_TRUE(track.span.end == Epoch(2202, 2.5));
    ASSERT_EQ(track.gaps.size(), 2U);
    EXPECT_TRUE(track.gaps[0].start == Epoch(2200, 10.0));
    EXPECT_TRUE(track.gaps[0].end == Epoch(2200, 20.0));
    EXPECT_TRUE(track.gaps[1].start == Epoch(2201, 30.0));
    EXPECT_TRUE(track.gaps[1].end == Epoch(2201, 40.5));
    EXPECT_EQ(Control().trackList1.tracks[0].sat, 37);
    EXPECT_TRUE(Control().trackList1.tracks[0].isActive);
    EXPECT_TRUE(Control().trackList1.tracks[0].gaps.empty());
    EXPECT_EQ(Control().trackList2.tracks[0].sat, 106);
    EXPECT_TRUE(Control().trackList2.tracks[0].isActive);
}

TEST_F(Inputs, ATrackOfNoListOrNoSatelliteIsLeftOut) {
    for (const int listIndex : {3, 4, INT_MAX, -1, INT_MIN}) {
        EXPECT_EQ(AddTrack(listIndex, kGps, 5), 1);
    }
    EXPECT_EQ(AddTrack(0, kGps, 0), 1);
    EXPECT_EQ(AddTrack(0, kGps, 36), 1);
    EXPECT_EQ(AddTrack(1, 6, 1), 1);
    EXPECT_TRUE(Control().trackList0.tracks.empty());
    EXPECT_TRUE(Control().trackList1.tracks.empty());
    EXPECT_TRUE(Control().trackList2.tracks.empty());
}

TEST_F(Inputs, ANegativeGapCountMeansNoGaps) {
    EXPECT_EQ(AddTrack(0, kGps, 5, 0, -1), 1);
    ASSERT_EQ(Control().trackList0.tracks.size(), 1U);
    EXPECT_TRUE(Control().trackList0.tracks[0].gaps.empty());
}

TEST_F(Inputs, ARepeatedTrackTakesTheLaterOnesWithIt) {
    AddTrack(1, kGps, 5);
    AddTrack(1, kGps, 7);
    AddTrack(1, kGps, 9);
    AddTrack(1, kGps, 7, 1);
    ASSERT_EQ(Control().trackList1.tracks.size(), 2U);
    EXPECT_EQ(Control().trackList1.tracks[0].sat, 5);
    EXPECT_EQ(Control().trackList1.tracks[1].sat, 7);
    EXPECT_TRUE(Control().trackList1.tracks[1].isActive);
}

TEST_F(Inputs, CleaningEmptiesAllThreeTrackLists) {
    for (int listIndex = 0; listIndex < 3; ++listIndex) {
        AddTrack(listIndex, kGps, 5);
    }
    EXPECT_EQ(CleanSatTrackList(), 1);
    EXPECT_TRUE(Control().trackList0.tracks.empty());
    EXPECT_TRUE(Control().trackList1.tracks.empty());
    EXPECT_TRUE(Control().trackList2.tracks.empty());
}

// --- epochs

// Satellites that hang still over the base, tabulated as precise orbits.
class EpochInput : public Inputs {
  protected:
    static constexpr int kWeek = 2200;
    static constexpr double kSeconds = 100800.0;
    const XYZPosition base_ = test::GeodeticPoint(47.0, 11.0, 600.0);
    const XYZPosition rover_ = test::Shifted(base_, 800.0, 500.0, 20.0);
    std::vector<std::pair<int, XYZPosition>> sky_;

    struct Side {
        std::array<int, 64> satellites{};
        std::array<double, 64> p1{}, p2{}, l1{}, l2{};
    };

    void SetUp() override {
        Inputs::SetUp();
        Configure(kSystemsAllOn);
        Place(kGps, 3, 0.0, 60.0);
        Place(kGps, 8, 120.0, 50.0);
        Place(kGlonass, 2, 240.0, 40.0);
        Place(kGps, 9, 300.0, 5.0);  // below the mask
    }

    static constexpr std::array<int, 4> kSystemsAllOn{1, 1, 1, 1};

    void Configure(std::array<int, 4> systems) {
        ASSERT_EQ(InputSolveConfig(0, 0.26, 30.0, 10, 10000.0, 30000.0, 1, systems.data(), 3.5,
                                   0.25, 1.8, 25.0, 10.0, 10.0, 0.01, 7200.0, 4, 900.0, 20.0, 60.0,
                                   1, 0, 0.0, 0, 0.0, 1, 2),
                  1);
        double rover[3] = {rover_.X, rover_.Y, rover_.Z};
        double base[3] = {base_.X, base_.Y, base_.Z};
        double none[3] = {0.0, 0.0, 0.0};
        ASSERT_EQ(InputAntCorrData(rover, none, none, 0.0, base, none, none, 0.0), 1);
    }

    void Place(int system, int prn, double azimuth, double elevation) {
        const double az = test::ToRadians(azimuth), el = test::ToRadians(elevation);
        const double d = 2.2e7;
        const XYZPosition at = test::Shifted(base_, d * std::cos(el) * std::cos(az),
                                             d * std::cos(el) * std::sin(az), d * std::sin(el));
        sky_.emplace_back(MakeSatNumber(system, prn), at);
        int weeks[13];
        double seconds[13];
        double values[13];
        const double components[4] = {at.X, at.Y, at.Z, 0.0};
        for (int component = 0; component < 4; ++component) {
            for (int i = 0; i < 13; ++i) {
                weeks[i] = kWeek;
                seconds[i] = kSeconds + 900.0 * (i - 6);
                values[i] = components[component];
            }
            InputOneSatPreEphValue(component, system, prn, 13, weeks, seconds, values);
        }
    }

    // Ranges as codes; phases of their own.
    Side Observe(const XYZPosition& station, bool secondSignal) const {
        Side side;
        for (std::size_t i = 0; i < sky_.size(); ++i) {
            side.satellites[i] = sky_[i].first;
            side.p1[i] = Distance(sky_[i].second, station);
            side.l1[i] = 1000.0 + static_cast<double>(i);
            if (secondSignal) {
                side.p2[i] = side.p1[i] + 1.0;
                side.l2[i] = 2000.0 + static_cast<double>(i);
            }
        }
        return side;
    }

    static int Hand(Side rover, double roverSeconds, Side base, double baseSeconds) {
        return InputEpochObsData(kWeek, roverSeconds, rover.satellites.data(), rover.p1.data(),
                                 rover.p2.data(), rover.l1.data(), rover.l2.data(), kWeek,
                                 baseSeconds, base.satellites.data(), base.p1.data(),
                                 base.p2.data(), base.l1.data(), base.l2.data());
    }
};

TEST_F(EpochInput, AppendsTheDifferenceOfTheTwoReceivers) {
    const Side rover = Observe(rover_, true);
    Side base = Observe(base_, true);
    base.l1[1] = 500.0;
    EXPECT_EQ(Hand(rover, kSeconds + 0.06, base, kSeconds), 1);
    EXPECT_EQ(Hand(rover, kSeconds + 30.0, base, kSeconds + 30.0), 1);
    ASSERT_EQ(Control().epochs.size(), 2U);
    const SDObsData& epoch = Control().epochs[0];
    EXPECT_TRUE(epoch.epoch == Epoch(kWeek, kSeconds));
    EXPECT_TRUE(Control().epochs[1].epoch == Epoch(kWeek, kSeconds + 30.0));
    EXPECT_EQ(epoch.tropoModel, 4);
    EXPECT_EQ(epoch.satList, (std::vector<int>{3, 8, 9, 37}));
    EXPECT_EQ(epoch.satListF1, (std::vector<int>{3, 8, 37}));
    EXPECT_EQ(epoch.satListF2, (std::vector<int>{3, 8, 37}));
    EXPECT_EQ(epoch.satListDual, (std::vector<int>{3, 8, 37}));
    EXPECT_EQ(epoch.code[7][0], rover.p1[1] - base.p1[1]);
    EXPECT_EQ(epoch.code[7][1], rover.p2[1] - base.p2[1]);
    EXPECT_EQ(epoch.phase[7][0], 501.0);
    EXPECT_EQ(epoch.phase[7][1], 0.0);
}

TEST_F(EpochInput, TheBaseIsCorrectedFromTheBaseAndTheRoverFromTheRover) {
    Hand(Observe(rover_, true), kSeconds, Observe(base_, true), kSeconds);
    const SDObsData& epoch = Control().epochs.at(0);
    for (const auto& [number, position] : sky_) {
        const int s = number - 1;
        // The earth turns by some 5 microradians while the signal travels; the stations are a
        // kilometre apart.
        const XYZPosition turnedRover(epoch.satPosA[s]), turnedBase(epoch.satPosB[s]);
        EXPECT_NEAR(epoch.sdRange[s], Distance(turnedRover, rover_) - Distance(turnedBase, base_),
                    1e-6);
        EXPECT_GT(std::fabs(epoch.sdRange[s]), 10.0);
    }
}

TEST_F(EpochInput, StationsMovedBetweenEpochsAreTakenAnew) {
    // Each of the coordinates by itself, and nothing but it.
    const double moves[4][3] = {{}, {9e3, 0.0, 0.0}, {9e3, -7e3, 0.0}, {9e3, -7e3, 8e3}};
    for (int i = 0; i < 4; ++i) {
        const double* move = moves[i];
        const XYZPosition rover(rover_.X + move[0], rover_.Y + move[1], rover_.Z + move[2]);
        const XYZPosition base(base_.X - move[0], base_.Y - move[1], base_.Z - move[2]);
        double roverAt[3] = {rover.X, rover.Y, rover.Z};
        double baseAt[3] = {base.X, base.Y, base.Z};
        double none[3] = {0.0, 0.0, 0.0};
        ASSERT_EQ(InputAntCorrData(roverAt, none, none, 0.0, baseAt, none, none, 0.0), 1);
        const double seconds = kSeconds + 30.0 * i;
        ASSERT_EQ(Hand(Observe(rover, true), seconds, Observe(base, true), seconds), 1);
        const SDObsData& epoch = Control().epochs.back();
        for (const auto& [number, position] : sky_) {
            const int s = number - 1;
            const XYZPosition seenByRover(epoch.satPosA[s]), seenByBase(epoch.satPosB[s]);
            EXPECT_NEAR(epoch.sdRange[s], Distance(seenByRover, rover) - Distance(seenByBase, base),
                        1e-6);
            EXPECT_NEAR(epoch.azelA[s][1], Elevation(seenByRover.ToNEU(rover), 0.0), 1e-12);
            EXPECT_NEAR(epoch.azelB[s][1], Elevation(seenByBase.ToNEU(base), 0.0), 1e-12);
        }
    }
}

TEST_F(EpochInput, ReceiversWithTwoFrequenciesAreMarkedEachForItself) {
    Hand(Observe(rover_, true), kSeconds, Observe(base_, false), kSeconds);
    EXPECT_EQ(Control().roverDualFreq, 1);
    EXPECT_EQ(Control().baseDualFreq, 0);
    Hand(Observe(rover_, false), kSeconds + 30.0, Observe(base_, false), kSeconds + 30.0);
    EXPECT_EQ(Control().roverDualFreq, 1);
    EXPECT_EQ(Control().baseDualFreq, 0);
    Hand(Observe(rover_, false), kSeconds + 60.0, Observe(base_, true), kSeconds + 60.0);
    EXPECT_EQ(Control().roverDualFreq, 1);
    EXPECT_EQ(Control().baseDualFreq, 1);
}

TEST_F(EpochInput, ASatelliteBelowTheMaskDoesNotMakeAReceiverDual) {
    Side rover = Observe(rover_, false);
    Side base = Observe(base_, false);
    rover.p2[3] = rover.p1[3];
    rover.l2[3] = 2000.0;
    Hand(rover, kSeconds, base, kSeconds);
    EXPECT_EQ(Control().roverDualFreq, 0);
    EXPECT_EQ(Control().baseDualFreq, 0);
}

TEST_F(EpochInput, GlonassIsNoticedOnceUsableOnEitherSignal) {
    Side rover = Observe(rover_, true);
    Side base = Observe(base_, true);
    rover.p1[2] = rover.p2[2] = 0.0;  // not in common
    Hand(rover, kSeconds, base, kSeconds);
    EXPECT_EQ(Control().hasGlonass, 0);
    rover = Observe(rover_, true);
    rover.l1[2] = 0.0;  // the second signal alone
    Hand(rover, kSeconds + 30.0, base, kSeconds + 30.0);
    EXPECT_EQ(Control().epochs.at(1).satListF1, (std::vector<int>{3, 8}));
    EXPECT_EQ(Control().hasGlonass, 1);
    rover.p2[2] = 0.0;
    Hand(rover, kSeconds + 60.0, base, kSeconds + 60.0);
    EXPECT_EQ(Control().hasGlonass, 1);
}

TEST_F(EpochInput, GlonassSwitchedOffIsNotNoticed) {
    Configure({1, 0, 1, 1});
    Hand(Observe(rover_, true), kSeconds, Observe(base_, true), kSeconds);
    EXPECT_EQ(Control().hasGlonass, 0);
    EXPECT_EQ(Control().epochs.at(0).satListF1, (std::vector<int>{3, 8}));
}

TEST_F(EpochInput, AnEpochWithoutSatellitesIsAppendedEmpty) {
    EXPECT_EQ(Hand(Side{}, kSeconds, Side{}, kSeconds), 1);
    ASSERT_EQ(Control().epochs.size(), 1U);
    EXPECT_TRUE(Control().epochs[0].satList.empty());
    EXPECT_EQ(Control().hasGlonass, 0);
    EXPECT_EQ(Control().roverDualFreq, 0);
}

}  // namespace
}  // namespace vornel
