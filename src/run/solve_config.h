// Every setting of a run, with its default.
#pragma once

#include "foundation/epoch.h"

namespace vornel {

class SolveConfig {
  public:
    double elevationMask = 0.2617993877991494;  // radians
    double samplingInterval = 30.0;             // seconds
    int minEpochs = 10;                         // of a period and of a usable arc
    int slvmode = 0;                            // 0 automatic, 1 to 6 a solve model
    double shortBaselineLimit = 10000.0;        // metres: below it automatic takes model 1
    double maxFixBaseline = 30000.0;            // metres: from here models 1 and 2 stay float
    int ephemerisSource = 0;                    // 0 broadcast, else precise
    int useGps = 1;
    int useGlonass = 1;
    int useBds = 1;
    int useGalileo = 1;
    int systemListEnd = 0;       // -1 once configured: closes the four switches
    double outlierFactor = 3.5;  // standard deviations
    double slipTestCap = 0.25;   // cycles
    double ratioThreshold = 1.8;
    double reservedLimitA = 25.0;  // kept, read by nothing
    double reservedLimitB = 10.0;  // kept, read by nothing
    double codeStd = 10.0;         // metres
    double phaseStd = 0.01;        // cycles of GPS L1
    double periodLength = 7200.0;  // seconds
    int tropoModel = 1;            // 0 modified Hopfield, 1 Saastamoinen, else none
    double pressure = 1013.25;     // hPa
    double temperature = 15.0;     // degrees Celsius
    double humidity = 50.0;        // percent
    int reservedMode = 1;          // whole-session fixing: 0 stops after the first round
    Epoch sessionStart;            // kept, read by nothing
    Epoch sessionEnd;              // kept, read by nothing
    int galFreq1 = 1;              // Galileo bands, see BandFrequency
    int galFreq2 = 2;

    SolveConfig() = default;
    SolveConfig(const SolveConfig&) = default;
    SolveConfig& operator=(const SolveConfig&) = default;
    virtual ~SolveConfig() = default;
};

}  // namespace vornel
