// Every setting of a run, with the defaults of the public header.
#pragma once

#include "VornelBlCore.h"
#include "foundation/epoch.h"

namespace vornel {

class SolveConfig {
  public:
    double elevationMask = VORNEL_DEFAULT_ELEVATION_MASK;        // radians
    double samplingInterval = VORNEL_DEFAULT_SAMPLING_INTERVAL;  // seconds
    int minEpochs = VORNEL_DEFAULT_MIN_EPOCHS;                   // of a period and of a usable arc
    int slvmode = VORNEL_DEFAULT_SLVMODE;                        // VornelModel
    // Metres: below it automatic takes model 1.
    double shortBaselineLimit = VORNEL_DEFAULT_SHORT_BASELINE_LIMIT;
    // Metres: from here models 1 and 2 stay float.
    double maxFixBaseline = VORNEL_DEFAULT_MAX_FIX_BASELINE;
    int ephemerisSource = VORNEL_DEFAULT_EPHEMERIS_SOURCE;  // 0 broadcast, else precise
    int useGps = VORNEL_DEFAULT_SYSTEM;
    int useGlonass = VORNEL_DEFAULT_SYSTEM;
    int useBds = VORNEL_DEFAULT_SYSTEM;
    int useGalileo = VORNEL_DEFAULT_SYSTEM;
    int systemListEnd = 0;  // -1 once configured: closes the four switches
    double outlierFactor = VORNEL_DEFAULT_OUTLIER_FACTOR;  // standard deviations
    double slipTestCap = VORNEL_DEFAULT_SLIP_TEST_CAP;     // cycles
    double ratioThreshold = VORNEL_DEFAULT_RATIO_THRESHOLD;
    double reservedLimitA = VORNEL_DEFAULT_RESERVED_LIMIT_A;  // kept, read by nothing
    double reservedLimitB = VORNEL_DEFAULT_RESERVED_LIMIT_B;  // kept, read by nothing
    double codeStd = VORNEL_DEFAULT_CODE_STD;                 // metres
    double phaseStd = VORNEL_DEFAULT_PHASE_STD;               // cycles of GPS L1
    double periodLength = VORNEL_DEFAULT_PERIOD_LENGTH;       // seconds
    int tropoModel = VORNEL_DEFAULT_TROPO_MODEL;  // 0 modified Hopfield, 1 Saastamoinen, else none
    double pressure = VORNEL_DEFAULT_PRESSURE;    // hPa
    double temperature = VORNEL_DEFAULT_TEMPERATURE;  // degrees Celsius
    double humidity = VORNEL_DEFAULT_HUMIDITY;        // percent
    // Whole-session fixing: 0 stops after the first round.
    int reservedMode = VORNEL_DEFAULT_RESERVED_MODE;
    Epoch sessionStart;                       // kept, read by nothing
    Epoch sessionEnd;                         // kept, read by nothing
    int galFreq1 = VORNEL_DEFAULT_GAL_FREQ1;  // VornelGalileoSignal
    int galFreq2 = VORNEL_DEFAULT_GAL_FREQ2;

    SolveConfig() = default;
    SolveConfig(const SolveConfig&) = default;
    SolveConfig& operator=(const SolveConfig&) = default;
    virtual ~SolveConfig() = default;
};

}  // namespace vornel
