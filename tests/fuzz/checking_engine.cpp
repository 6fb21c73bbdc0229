#include "checking_engine.h"

#include <cstring>
#include <map>
#include <utility>

#include "contract.h"
#include "require.h"

namespace vornel::fuzz {
namespace {

using namespace contract;

// Where the host is in the order of calls.
enum class Stage { kNothing, kCreated, kEpochs, kRun };

struct Table {
    std::size_t count = 0;
    int lastWeek = -1;
    double lastSeconds = 0.0;
    double lastStep = 0.0;  // s; 0 after a missing value
    bool lastMissing = true;
};

struct State {
    bool solve = false;
    Stage stage = Stage::kNothing;
    HandedOver handed;
    int lastWeek = -1;
    double lastSeconds = 0.0;
    std::map<std::pair<int, int>, Table> tables;  // of precise values, by satellite, component
};

State state;

void RequireBeforeEpochs() {
    FUZZ_REQUIRE(state.stage == Stage::kCreated);
}

int Create() {
    state.stage = Stage::kCreated;
    return state.solve ? ::CreateBLProcess() : 1;
}

int CreateWithTrace(const char* path, int level) {
    FUZZ_REQUIRE(path != nullptr && std::strlen(path) <= 1023);
    FUZZ_REQUIRE(level >= 0 && level <= 5);
    state.stage = Stage::kCreated;
    return state.solve ? ::CreateBLProcessWithTrace(path, level) : 1;
}

int Dispose() {
    state.stage = Stage::kNothing;
    return state.solve ? ::DiposeProcess() : 1;
}

int Start(int* status) {
    FUZZ_REQUIRE(status != nullptr);
    FUZZ_REQUIRE(state.stage != Stage::kNothing);
    state.stage = Stage::kRun;
    if (state.solve) {
        return ::StartProcess(status);
    }
    *status = 10;
    return 1;
}

int SolveConfig(int slvmode, double mask, double interval, int minEpochs, double shortLimit,
                double maxFix, int source, int* systems, double outlier, double slip, double ratio,
                double limitA, double limitB, double codeStd, double phaseStd, double period,
                int tropo, double pressure, double temperature, double humidity, int mode,
                int startWeek, double startSeconds, int endWeek, double endSeconds, int gal1,
                int gal2) {
    RequireBeforeEpochs();
    FUZZ_REQUIRE(slvmode >= 0 && slvmode <= 6);
    FUZZ_REQUIRE(mask >= 0.0 && mask <= kMostMask);
    FUZZ_REQUIRE(std::isfinite(interval) && interval > 0.0);
    FUZZ_REQUIRE(minEpochs >= 1);
    FUZZ_REQUIRE(AreFinite({shortLimit, maxFix, slip, ratio, limitA, limitB, codeStd, phaseStd,
                            period, pressure, temperature, humidity}));
    FUZZ_REQUIRE(std::isfinite(outlier) && outlier > kOutlierAbove);
    FUZZ_REQUIRE(IsTime(startWeek, startSeconds) && IsTime(endWeek, endSeconds));
    for (int i = 0; i < 4; ++i) {
        FUZZ_REQUIRE(systems[i] == 0 || systems[i] == 1);
    }
    return state.solve
               ? ::InputSolveConfig(slvmode, mask, interval, minEpochs, shortLimit, maxFix, source,
                                    systems, outlier, slip, ratio, limitA, limitB, codeStd,
                                    phaseStd, period, tropo, pressure, temperature, humidity, mode,
                                    startWeek, startSeconds, endWeek, endSeconds, gal1, gal2)
               : 1;
}

void CheckStation(const double* xyz, const double* offset1, const double* offset2, double height) {
    const double radius = std::hypot(xyz[0], xyz[1], xyz[2]);
    FUZZ_REQUIRE(radius >= kLeastStation && radius <= kMostStation);
    FUZZ_REQUIRE(std::isfinite(height));
    for (int i = 0; i < 3; ++i) {
        FUZZ_REQUIRE(std::isfinite(offset1[i]) && std::isfinite(offset2[i]));
    }
}

int AntCorr(double* xyzR, double* l1R, double* l2R, double heightR, double* xyzB, double* l1B,
            double* l2B, double heightB) {
    RequireBeforeEpochs();
    CheckStation(xyzR, l1R, l2R, heightR);
    CheckStation(xyzB, l1B, l2B, heightB);
    return state.solve ? ::InputAntCorrData(xyzR, l1R, l2R, heightR, xyzB, l1B, l2B, heightB) : 1;
}

int IonCorr(double* alpha, double* beta) {
    RequireBeforeEpochs();
    for (int i = 0; i < 4; ++i) {
        FUZZ_REQUIRE(std::isfinite(alpha[i]) && std::isfinite(beta[i]));
    }
    return state.solve ? ::InputIonCorrData(alpha, beta) : 1;
}

#define KEPLER_ARGUMENTS                                                                          \
    int satId, int tocWeek, double tocSeconds, double af0, double af1, double af2, double sqrtA,  \
        double e, double i0, double omega0, double omega, double m0, double deltaN,               \
        double omegaDot, double idot, double crc, double crs, double cuc, double cus, double cic, \
        double cis, int iode, double iodc, double toe, int toeWeek, double transmitTime,          \
        int l2Codes, int health, double accuracy, int l2PFlag, double tgd
#define KEPLER_VALUES                                                                             \
    satId, tocWeek, tocSeconds, af0, af1, af2, sqrtA, e, i0, omega0, omega, m0, deltaN, omegaDot, \
        idot, crc, crs, cuc, cus, cic, cis, iode, iodc, toe, toeWeek, transmitTime, l2Codes,      \
        health, accuracy, l2PFlag, tgd
#define CHECK_KEPLER(system)                                                        \
    do {                                                                            \
        RequireBeforeEpochs();                                                      \
        ++state.handed.orbits;                                                      \
        FUZZ_REQUIRE(IsSatellite(system, satId));                                   \
        FUZZ_REQUIRE(IsTime(tocWeek, tocSeconds) && IsTime(toeWeek, toe));          \
        FUZZ_REQUIRE(IsWithin(af0, kMostClock) && IsWithin(af1, kMostClockDrift) && \
                     IsWithin(af2, kMostClockAging));                               \
        FUZZ_REQUIRE(sqrtA >= kLeastSqrtA && sqrtA <= kMostSqrtA);                  \
        FUZZ_REQUIRE(e >= 0.0 && e <= kMostEccentricity);                           \
        for (const double angle : {i0, omega0, omega, m0, cuc, cus, cic, cis}) {    \
            FUZZ_REQUIRE(IsWithin(angle, kMostAngle));                              \
        }                                                                           \
        for (const double rate : {deltaN, omegaDot, idot}) {                        \
            FUZZ_REQUIRE(IsWithin(rate, kMostRate));                                \
        }                                                                           \
        FUZZ_REQUIRE(AreFinite({crc, crs, iodc, transmitTime, accuracy, tgd}));     \
    } while (false)

int NavGps(KEPLER_ARGUMENTS, int fitInterval) {
    CHECK_KEPLER(1);
    return state.solve ? ::InputOneSatNavGPS(KEPLER_VALUES, fitInterval) : 1;
}

int NavBds(KEPLER_ARGUMENTS, double tgd2, int fitInterval) {
    CHECK_KEPLER(4);
    FUZZ_REQUIRE(std::isfinite(tgd2));
    return state.solve ? ::InputOneSatNavBDS(KEPLER_VALUES, tgd2, fitInterval) : 1;
}

int NavGal(KEPLER_ARGUMENTS, double tgd2, int fitInterval) {
    CHECK_KEPLER(8);
    FUZZ_REQUIRE(std::isfinite(tgd2));
    return state.solve ? ::InputOneSatNavGAL(KEPLER_VALUES, tgd2, fitInterval) : 1;
}

#undef KEPLER_ARGUMENTS
#undef KEPLER_VALUES
#undef CHECK_KEPLER

int NavGlo(int slot, int week, double seconds, double spare2, double tbSeconds, double spare1,
           double clockBias, double clockDrift, double x, double y, double z, double vx, double vy,
           double vz, double ax, double ay, double az, int health, int channel, int age,
           int leapSeconds) {
    RequireBeforeEpochs();
    ++state.handed.orbits;
    FUZZ_REQUIRE(IsSatellite(2, slot));
    FUZZ_REQUIRE(IsTime(week, seconds));
    FUZZ_REQUIRE(AreFinite({spare1, spare2, tbSeconds, vx, vy, vz, ax, ay, az}));
    FUZZ_REQUIRE(IsWithin(clockBias, kMostClock) && IsWithin(clockDrift, kMostClockDrift));
    const double radius = std::hypot(x, y, z);
    FUZZ_REQUIRE(radius >= kLeastGlonassRadius && radius <= kMostGlonassRadius);
    FUZZ_REQUIRE(channel >= kLeastChannel && channel <= kMostChannel);
    FUZZ_REQUIRE(leapSeconds >= 0 && leapSeconds <= kMostLeapSeconds);
    return state.solve ? ::InputOneSatNavGLO(slot, week, seconds, spare2, tbSeconds, spare1,
                                             clockBias, clockDrift, x, y, z, vx, vy, vz, ax, ay, az,
                                             health, channel, age, leapSeconds)
                       : 1;
}

// The next entry of a table of precise values.
void CheckPreciseEntry(Table& table, int component, int week, double seconds, double value) {
    FUZZ_REQUIRE(IsTime(week, seconds));
    const bool missing = value == kMissing;
    FUZZ_REQUIRE(missing || IsWithin(value, component == 3 ? kMostClock : kMostOrbitRadius));
    if (table.count > 0) {
        const double step = (week - table.lastWeek) * kWeekSeconds + (seconds - table.lastSeconds);
        FUZZ_REQUIRE(step > 0.0);
        const bool even = !missing && !table.lastMissing && table.lastStep > 0.0;
        // A margin for the rounding of the seconds.
        constexpr double kMargin = 1e-6;
        FUZZ_REQUIRE(!even || (step <= kMostStepRatio * table.lastStep + kMargin &&
                               table.lastStep <= kMostStepRatio * step + kMargin));
        table.lastStep = missing || table.lastMissing ? 0.0 : step;
    }
    table.lastMissing = missing;
    table.lastWeek = week;
    table.lastSeconds = seconds;
    ++table.count;
}

int PreEph(int component, int system, int prn, int count, int* weeks, double* seconds,
           double* values) {
    RequireBeforeEpochs();
    FUZZ_REQUIRE(component >= 0 && component <= 3);
    FUZZ_REQUIRE(IsSatellite(system, prn));
    FUZZ_REQUIRE(count >= 0);
    Table& table = state.tables[{system * 100 + prn, component}];
    for (int i = 0; i < count; ++i) {
        CheckPreciseEntry(table, component, weeks[i], seconds[i], values[i]);
    }
    ++state.handed.orbits;
    return state.solve
               ? ::InputOneSatPreEphValue(component, system, prn, count, weeks, seconds, values)
               : 1;
}

void CheckReceiver(int week, double seconds, const int* satellites, const double* p1,
                   const double* p2, const double* l1, const double* l2) {
    FUZZ_REQUIRE(IsTime(week, seconds));
    bool seen[136] = {};
    for (int slot = 0; slot < 64; ++slot) {
        const int number = satellites[slot];
        if (number < 1 || number > 135) {
            continue;
        }
        FUZZ_REQUIRE(!seen[number]);
        seen[number] = true;
        for (const double code : {p1[slot], p2[slot]}) {
            FUZZ_REQUIRE(code == 0.0 || (code >= kLeastCode && code <= kMostCode));
        }
        FUZZ_REQUIRE(IsWithin(l1[slot], kMostPhase) && IsWithin(l2[slot], kMostPhase));
    }
}

int EpochObs(int weekR, double secondsR, int* satsR, double* p1R, double* p2R, double* l1R,
             double* l2R, int weekB, double secondsB, int* satsB, double* p1B, double* p2B,
             double* l1B, double* l2B) {
    FUZZ_REQUIRE(state.stage == Stage::kCreated || state.stage == Stage::kEpochs);
    state.stage = Stage::kEpochs;
    CheckReceiver(weekR, secondsR, satsR, p1R, p2R, l1R, l2R);
    CheckReceiver(weekB, secondsB, satsB, p1B, p2B, l1B, l2B);
    FUZZ_REQUIRE(weekR == weekB);
    constexpr double kMargin = 1e-6;  // tags of the tolerance to the last digit of a file
    FUZZ_REQUIRE(std::fabs(secondsR - secondsB) <= kPairing + kMargin);
    if (state.handed.epochs > 0) {
        FUZZ_REQUIRE(state.lastWeek < weekB ||
                     (state.lastWeek == weekB && state.lastSeconds < secondsB));
    }
    state.lastWeek = weekB;
    state.lastSeconds = secondsB;
    ++state.handed.epochs;
    return state.solve ? ::InputEpochObsData(weekR, secondsR, satsR, p1R, p2R, l1R, l2R, weekB,
                                             secondsB, satsB, p1B, p2B, l1B, l2B)
                       : 1;
}

void RequireBeforeRun() {
    FUZZ_REQUIRE(state.stage == Stage::kCreated || state.stage == Stage::kEpochs);
}

int MarkDel(int count, int* systems, int* prns) {
    RequireBeforeRun();
    for (int i = 0; i < count; ++i) {
        FUZZ_REQUIRE(IsSatellite(systems[i], prns[i]));
    }
    return state.solve ? ::MarkDelSatList(count, systems, prns) : 1;
}

int AddTrack(int list, int system, int prn, int active, int startWeek, double startSeconds,
             int endWeek, double endSeconds, double value, int count, int* startWeeks,
             double* startSecondsList, int* endWeeks, double* endSecondsList) {
    RequireBeforeRun();
    FUZZ_REQUIRE(list >= 0 && list <= 2 && IsSatellite(system, prn));
    FUZZ_REQUIRE(IsTime(startWeek, startSeconds) && IsTime(endWeek, endSeconds));
    FUZZ_REQUIRE(std::isfinite(value));
    for (int i = 0; i < count; ++i) {
        FUZZ_REQUIRE(IsTime(startWeeks[i], startSecondsList[i]));
        FUZZ_REQUIRE(IsTime(endWeeks[i], endSecondsList[i]));
    }
    return state.solve ? ::AddOneSatTrackInfo(list, system, prn, active, startWeek, startSeconds,
                                              endWeek, endSeconds, value, count, startWeeks,
                                              startSecondsList, endWeeks, endSecondsList)
                       : 1;
}

// A query that must follow a run. Without the engine it answers 0 and writes nothing.
template <auto kQuery, typename Result, typename... Arguments>
Result Query(Arguments... arguments) {
    FUZZ_REQUIRE(state.stage == Stage::kRun);
    if (state.solve) {
        return kQuery(arguments...);
    }
    if constexpr (!std::is_void_v<Result>) {
        return Result{0};
    }
}

template <auto kQuery, typename Result, typename... Arguments>
void SetQuery(Result (*&field)(Arguments...)) {
    field = &Query<kQuery, Result, Arguments...>;
}

void SetQueries(engine::Api& api) {
    SetQuery<&::GetSolveResultsBaseData>(api.getSolveResultsBaseData);
    SetQuery<&::GetTripDiffSol>(api.getTripDiffSol);
    SetQuery<&::GetFloatSolNum>(api.getFloatSolNum);
    SetQuery<&::GetFixedSolNum>(api.getFixedSolNum);
    SetQuery<&::GetFloatSolSatNum>(api.getFloatSolSatNum);
    SetQuery<&::GetFixedSolSatNum>(api.getFixedSolSatNum);
    SetQuery<&::GetFloatSolSatList>(api.getFloatSolSatList);
    SetQuery<&::GetFixedSolSatList>(api.getFixedSolSatList);
    SetQuery<&::GetFloatSolResListSize>(api.getFloatSolResListSize);
    SetQuery<&::GetFixedSolResListSize>(api.getFixedSolResListSize);
    SetQuery<&::GetFloatSolResList>(api.getFloatSolResList);
    SetQuery<&::GetFixedSolResList>(api.getFixedSolResList);
    SetQuery<&::GetFloatSolBaseData>(api.getFloatSolBaseData);
    SetQuery<&::GetFixedSolBaseData>(api.getFixedSolBaseData);
    SetQuery<&::GetFloatSolAmbNum>(api.getFloatSolAmbNum);
    SetQuery<&::GetFixedSolAmbNum>(api.getFixedSolAmbNum);
    SetQuery<&::GetFloatSolAmbListData>(api.getFloatSolAmbListData);
    SetQuery<&::GetFixedSolAmbListData>(api.getFixedSolAmbListData);
    SetQuery<&::GetFloatAmbCov>(api.getFloatAmbCov);
}

// What the host has no use for: a call is a finding, until somebody checks it here.
template <typename Result, typename... Arguments>
Result NeverCalled(Arguments...) {
    Fail("the host does not call this function", __FILE__, __LINE__);
}

template <typename Result, typename... Arguments>
void Forbid(Result (*&field)(Arguments...)) {
    field = &NeverCalled<Result, Arguments...>;
}

}  // namespace

engine::Api CheckingEngine(bool solve) {
    state = State();
    state.solve = solve;
    engine::Api api;
    api.createBLProcess = &Create;
    api.createBLProcessWithTrace = &CreateWithTrace;
    api.diposeProcess = &Dispose;
    api.startProcess = &Start;
    api.inputSolveConfig = &SolveConfig;
    api.inputAntCorrData = &AntCorr;
    api.inputIonCorrData = &IonCorr;
    api.inputOneSatNavGPS = &NavGps;
    api.inputOneSatNavBDS = &NavBds;
    api.inputOneSatNavGAL = &NavGal;
    api.inputOneSatNavGLO = &NavGlo;
    api.inputOneSatPreEphValue = &PreEph;
    api.inputEpochObsData = &EpochObs;
    api.markDelSatList = &MarkDel;
    api.addOneSatTrackInfo = &AddTrack;
    SetQueries(api);
    Forbid(api.addOneDelSat);
    Forbid(api.cleanSatTrackList);
    Forbid(api.getFloatSolNumAndMode);
    Forbid(api.getFixedSolNumAndMode);
    Forbid(api.getModeFloatSolSatNum);
    Forbid(api.getModeFixedSolSatNum);
    Forbid(api.getModeFixedSolSatList);
    Forbid(api.getModeFloatSolResListSize);
    Forbid(api.getModeFixedSolResListSize);
    Forbid(api.getModeFloatSolResList);
    Forbid(api.getModeFixedSolResList);
    Forbid(api.getModeFloatSolBaseData);
    Forbid(api.getModeFixedSolBaseData);
    return api;
}

const HandedOver& CallsSoFar() {
    return state.handed;
}

}  // namespace vornel::fuzz
