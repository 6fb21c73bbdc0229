// The engine as the host sees it: a table of the 47 functions of VornelBlCore.h, and one class that
// turns the host's records into calls of them and their answers into records. Nothing else in the
// host calls the engine. The table exists so that a test can put recording functions in place of
// the library.
#pragma once

#include <VornelBlCore.h>

#include <array>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "engine/satellites.h"

namespace vornel::engine {

struct Api {
    decltype(&::CreateBLProcess) createBLProcess = &::CreateBLProcess;
    decltype(&::CreateBLProcessWithTrace) createBLProcessWithTrace = &::CreateBLProcessWithTrace;
    decltype(&::DiposeProcess) diposeProcess = &::DiposeProcess;
    decltype(&::StartProcess) startProcess = &::StartProcess;
    decltype(&::InputSolveConfig) inputSolveConfig = &::InputSolveConfig;
    decltype(&::InputAntCorrData) inputAntCorrData = &::InputAntCorrData;
    decltype(&::InputIonCorrData) inputIonCorrData = &::InputIonCorrData;
    decltype(&::InputOneSatNavGPS) inputOneSatNavGPS = &::InputOneSatNavGPS;
    decltype(&::InputOneSatNavBDS) inputOneSatNavBDS = &::InputOneSatNavBDS;
    decltype(&::InputOneSatNavGAL) inputOneSatNavGAL = &::InputOneSatNavGAL;
    decltype(&::InputOneSatNavGLO) inputOneSatNavGLO = &::InputOneSatNavGLO;
    decltype(&::InputOneSatPreEphValue) inputOneSatPreEphValue = &::InputOneSatPreEphValue;
    decltype(&::InputEpochObsData) inputEpochObsData = &::InputEpochObsData;
    decltype(&::MarkDelSatList) markDelSatList = &::MarkDelSatList;
    decltype(&::AddOneDelSat) addOneDelSat = &::AddOneDelSat;
    decltype(&::CleanSatTrackList) cleanSatTrackList = &::CleanSatTrackList;
    decltype(&::AddOneSatTrackInfo) addOneSatTrackInfo = &::AddOneSatTrackInfo;
    decltype(&::GetSolveResultsBaseData) getSolveResultsBaseData = &::GetSolveResultsBaseData;
    decltype(&::GetTripDiffSol) getTripDiffSol = &::GetTripDiffSol;
    decltype(&::GetFloatSolNum) getFloatSolNum = &::GetFloatSolNum;
    decltype(&::GetFixedSolNum) getFixedSolNum = &::GetFixedSolNum;
    decltype(&::GetFloatSolNumAndMode) getFloatSolNumAndMode = &::GetFloatSolNumAndMode;
    decltype(&::GetFixedSolNumAndMode) getFixedSolNumAndMode = &::GetFixedSolNumAndMode;
    decltype(&::GetFloatSolSatNum) getFloatSolSatNum = &::GetFloatSolSatNum;
    decltype(&::GetFixedSolSatNum) getFixedSolSatNum = &::GetFixedSolSatNum;
    decltype(&::GetFloatSolSatList) getFloatSolSatList = &::GetFloatSolSatList;
    decltype(&::GetFixedSolSatList) getFixedSolSatList = &::GetFixedSolSatList;
    decltype(&::GetFloatSolResListSize) getFloatSolResListSize = &::GetFloatSolResListSize;
    decltype(&::GetFixedSolResListSize) getFixedSolResListSize = &::GetFixedSolResListSize;
    decltype(&::GetFloatSolResList) getFloatSolResList = &::GetFloatSolResList;
    decltype(&::GetFixedSolResList) getFixedSolResList = &::GetFixedSolResList;
    decltype(&::GetFloatSolBaseData) getFloatSolBaseData = &::GetFloatSolBaseData;
    decltype(&::GetFixedSolBaseData) getFixedSolBaseData = &::GetFixedSolBaseData;
    decltype(&::GetFloatSolAmbNum) getFloatSolAmbNum = &::GetFloatSolAmbNum;
    decltype(&::GetFixedSolAmbNum) getFixedSolAmbNum = &::GetFixedSolAmbNum;
    decltype(&::GetFloatSolAmbListData) getFloatSolAmbListData = &::GetFloatSolAmbListData;
    decltype(&::GetFixedSolAmbListData) getFixedSolAmbListData = &::GetFixedSolAmbListData;
    decltype(&::GetFloatAmbCov) getFloatAmbCov = &::GetFloatAmbCov;
    decltype(&::GetModeFloatSolSatNum) getModeFloatSolSatNum = &::GetModeFloatSolSatNum;
    decltype(&::GetModeFixedSolSatNum) getModeFixedSolSatNum = &::GetModeFixedSolSatNum;
    decltype(&::GetModeFixedSolSatList) getModeFixedSolSatList = &::GetModeFixedSolSatList;
    decltype(&::GetModeFloatSolResListSize) getModeFloatSolResListSize =
        &::GetModeFloatSolResListSize;
    decltype(&::GetModeFixedSolResListSize) getModeFixedSolResListSize =
        &::GetModeFixedSolResListSize;
    decltype(&::GetModeFloatSolResList) getModeFloatSolResList = &::GetModeFloatSolResList;
    decltype(&::GetModeFixedSolResList) getModeFixedSolResList = &::GetModeFixedSolResList;
    decltype(&::GetModeFloatSolBaseData) getModeFloatSolBaseData = &::GetModeFloatSolBaseData;
    decltype(&::GetModeFixedSolBaseData) getModeFixedSolBaseData = &::GetModeFixedSolBaseData;
};

// A set-up or run function of the engine answered 0.
class Failure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// ---- what goes in -------------------------------------------------------------------------------

// The 27 arguments of InputSolveConfig, in the engine's units (mask in radians); the defaults are
// the engine's own.
struct Config {
    int slvmode = VORNEL_DEFAULT_SLVMODE;
    double elevationMask = VORNEL_DEFAULT_ELEVATION_MASK;
    double samplingInterval = VORNEL_DEFAULT_SAMPLING_INTERVAL;
    int minEpochs = VORNEL_DEFAULT_MIN_EPOCHS;
    double shortBaselineLimit = VORNEL_DEFAULT_SHORT_BASELINE_LIMIT;
    double maxFixBaseline = VORNEL_DEFAULT_MAX_FIX_BASELINE;
    int ephemerisSource = VORNEL_DEFAULT_EPHEMERIS_SOURCE;
    // GPS, GLONASS, BDS, Galileo.
    std::array<int, kSystemCount> systems = {VORNEL_DEFAULT_SYSTEM, VORNEL_DEFAULT_SYSTEM,
                                             VORNEL_DEFAULT_SYSTEM, VORNEL_DEFAULT_SYSTEM};
    double outlierFactor = VORNEL_DEFAULT_OUTLIER_FACTOR;
    double slipTestCap = VORNEL_DEFAULT_SLIP_TEST_CAP;
    double ratioThreshold = VORNEL_DEFAULT_RATIO_THRESHOLD;
    double reservedLimitA = VORNEL_DEFAULT_RESERVED_LIMIT_A;
    double reservedLimitB = VORNEL_DEFAULT_RESERVED_LIMIT_B;
    double codeStd = VORNEL_DEFAULT_CODE_STD;
    double phaseStd = VORNEL_DEFAULT_PHASE_STD;
    double periodLength = VORNEL_DEFAULT_PERIOD_LENGTH;
    int tropoModel = VORNEL_DEFAULT_TROPO_MODEL;
    double pressure = VORNEL_DEFAULT_PRESSURE;
    double temperature = VORNEL_DEFAULT_TEMPERATURE;
    double humidity = VORNEL_DEFAULT_HUMIDITY;
    int reservedMode = VORNEL_DEFAULT_RESERVED_MODE;
    int sessionStartWeek = 0;
    double sessionStartSeconds = 0.0;
    int sessionEndWeek = 0;
    double sessionEndSeconds = 0.0;
    int galFreq1 = VORNEL_DEFAULT_GAL_FREQ1;
    int galFreq2 = VORNEL_DEFAULT_GAL_FREQ2;
};

// One station: marker (ECEF metres), phase centre offsets from the antenna reference point on the
// first and second frequency (north, east, up, metres), height of that point above the marker.
struct Station {
    std::array<double, 3> xyz{};
    std::array<double, 3> offset1{};
    std::array<double, 3> offset2{};
    double height = 0.0;
};

// One broadcast record of GPS, BDS or Galileo, fields as VornelBlCore.h tells.
struct Kepler {
    System system = System::kGps;
    int satId = 0;
    int tocWeek = 0;
    double tocSeconds = 0.0;
    double af0 = 0.0, af1 = 0.0, af2 = 0.0;
    double sqrtA = 0.0, e = 0.0, i0 = 0.0, omega0 = 0.0, omega = 0.0, m0 = 0.0;
    double deltaN = 0.0, omegaDot = 0.0, idot = 0.0;
    double crc = 0.0, crs = 0.0, cuc = 0.0, cus = 0.0, cic = 0.0, cis = 0.0;
    int iode = 0;
    double iodc = 0.0;
    double toe = 0.0;
    int toeWeek = 0;
    double transmitTime = 0.0;
    int l2Codes = 0;
    int health = 0;
    double accuracy = 0.0;
    int l2PFlag = 0;
    double tgd = 0.0;
    double tgd2 = 0.0;  // not GPS
    int fitInterval = 0;
};

struct Glonass {
    int slot = 0;
    int week = 0;          // UTC counted in weeks
    double seconds = 0.0;  // and seconds of the week
    double tbSeconds = 0.0;
    double clockBias = 0.0, clockDrift = 0.0;
    std::array<double, 3> position{}, velocity{}, acceleration{};  // km, km/s, km/s^2
    int health = 0;
    int channel = 0;
    int age = 0;
    int leapSeconds = 0;
};

inline constexpr std::size_t kSlots = VORNEL_EPOCH_SLOTS;

// The observations of one receiver at one epoch; 0 in `satellites` is an empty slot.
struct ReceiverEpoch {
    int week = 0;
    double seconds = 0.0;
    std::array<int, kSlots> satellites{};
    std::array<double, kSlots> code1{}, code2{}, phase1{}, phase2{};
};

// A span of GPS time, both ends inside.
struct Span {
    int startWeek = 0;
    double startSeconds = 0.0;
    int endWeek = 0;
    double endSeconds = 0.0;
};

// ---- what comes out -----------------------------------------------------------------------------

struct Ambiguity {
    int system = 0;  // engine's code
    int prn = 0;
    int firstEpoch = 0, lastEpoch = 0;  // indices of the epochs handed over
    int firstWeek = 0, lastWeek = 0;
    double firstSeconds = 0.0, lastSeconds = 0.0;
    double rms1 = 0.0, rms2 = 0.0;  // m
    int rows1 = 0, rows2 = 0;
    int rejected1 = 0, rejected2 = 0;
    double value1 = 0.0, value2 = 0.0;  // cycles
    // Cycles^2; NaN where the engine tells none for this ambiguity: in fixed solutions, and in those
    // of model 3, whose variances come in an order that does not lead to their tracks.
    double variance = std::numeric_limits<double>::quiet_NaN();
};

struct ResidualPoint {
    int week = 0;
    double seconds = 0.0;
    int millimetres = 0;
};

struct ResidualSeries {
    int system = 0;  // engine's code
    int prn = 0;
    int kind = 0;  // 0 first frequency block, 1 second
    std::vector<ResidualPoint> points;
};

// One solution, whole. `mode` 0: there is none.
struct Solution {
    int mode = 0;
    std::array<double, 3> vector{};  // m, ECEF, rover minus base
    double length = 0.0;
    double horizontalDistance = 0.0;
    double heightDifference = 0.0;
    int dof = 0;
    double varianceFactor = 0.0;
    std::array<double, 9> covarianceXyz{};  // m^2, by rows
    std::array<double, 9> covarianceNeu{};
    double sigma3 = 0.0;
    double sigmaLength = 0.0;
    double relativeAccuracy = 0.0;  // ppm
    double rms = 0.0;
    double ratio = 0.0;  // fixed solutions only
    std::vector<Ambiguity> ambiguities;
    std::vector<ResidualSeries> residuals;
};

struct Results {
    int status = 0;
    int solveModel = 0;
    Solution tripleDifference;
    std::vector<Solution> floats;  // in the order filed
    std::vector<Solution> fixeds;
};

// The calls, one method each. The order of calls is the caller's duty. Set-up and run methods throw
// EngineFailure when the engine answers 0.
class Engine {
  public:
    explicit Engine(const Api& api = Api{}) : api_(api) {}
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;
    ~Engine();  // disposes of the process, if one was created

    void Create();
    void CreateWithTrace(const std::string& path, int level);
    void Configure(Config config);
    void SetStations(Station rover, Station base);
    void SetIonosphere(std::array<double, 4> alpha, std::array<double, 4> beta);
    void AddKepler(const Kepler& record);
    void AddGlonass(const Glonass& record);
    // One component (0 X, 1 Y, 2 Z, 3 clock) of one satellite; the three lists have one length.
    void AddPrecise(int component, Satellite satellite, std::vector<int> weeks,
                    std::vector<double> seconds, std::vector<double> values);
    void AddEpoch(ReceiverEpoch rover, ReceiverEpoch base);
    // Takes back every satellite and span excluded so far.
    void ForgetExclusions();
    void ExcludeSatellites(const std::vector<Satellite>& satellites);
    void ExcludeSpans(Satellite satellite, const std::vector<Span>& spans);

    // Runs, and answers the status. An exception inside the engine is no failure here: the status
    // tells how far the run came; `completed` becomes false.
    int Run(bool& completed);

    Results ReadResults(int status) const;

  private:
    Solution FloatSolution(int index) const;
    Solution FixedSolution(int index) const;

    Api api_;
    bool created_ = false;
};

}  // namespace vornel::engine
