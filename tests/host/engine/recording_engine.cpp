#include "recording_engine.h"

#include <type_traits>

namespace vornel::test {
namespace {

void Lay(std::vector<double>& values, int value) {
    values.push_back(value);
}
void Lay(std::vector<double>& values, double value) {
    values.push_back(value);
}
template <typename T>
void Lay(std::vector<double>& values, T* array, int count) {
    for (int i = 0; i < count; ++i) {
        values.push_back(static_cast<double>(array[i]));
    }
}

// A function that records its numbers and answers 1; pointers are passed over.
template <const char* kName, typename Result, typename... Arguments>
Result Plain(Arguments... arguments) {
    Call call{kName, {}, {}};
    [[maybe_unused]] const auto lay = [&call](auto value) {
        if constexpr (std::is_arithmetic_v<decltype(value)>) {
            call.values.push_back(static_cast<double>(value));
        }
    };
    (lay(arguments), ...);
    Calls().push_back(call);
    if constexpr (!std::is_void_v<Result>) {
        return Result{1};
    }
}

// A query that answers 0 and writes nothing.
template <typename Result, typename... Arguments>
Result Silent(Arguments...) {
    if constexpr (!std::is_void_v<Result>) {
        return Result{0};
    }
}

template <const char* kName, typename Result, typename... Arguments>
void SetPlain(Result (*&field)(Arguments...)) {
    field = &Plain<kName, Result, Arguments...>;
}
template <typename Result, typename... Arguments>
void SetSilent(Result (*&field)(Arguments...)) {
    field = &Silent<Result, Arguments...>;
}

constexpr char kCreate[] = "CreateBLProcess";
constexpr char kDispose[] = "DiposeProcess";
constexpr char kGps[] = "InputOneSatNavGPS";
constexpr char kBds[] = "InputOneSatNavBDS";
constexpr char kGal[] = "InputOneSatNavGAL";
constexpr char kGlo[] = "InputOneSatNavGLO";
constexpr char kAddDel[] = "AddOneDelSat";
constexpr char kClean[] = "CleanSatTrackList";

int CreateWithTrace(const char* path, int level) {
    Calls().push_back({"CreateBLProcessWithTrace", {static_cast<double>(level)}, path});
    return 1;
}

int SolveConfig(int slvmode, double mask, double interval, int minEpochs, double shortLimit,
                double maxFix, int source, int* systems, double outlier, double slip, double ratio,
                double limitA, double limitB, double codeStd, double phaseStd, double period,
                int tropo, double pressure, double temperature, double humidity, int mode,
                int startWeek, double startSeconds, int endWeek, double endSeconds, int gal1,
                int gal2) {
    Call call{"InputSolveConfig", {}, {}};
    auto& v = call.values;
    for (const double value :
         {static_cast<double>(slvmode), mask, interval, static_cast<double>(minEpochs), shortLimit,
          maxFix, static_cast<double>(source)}) {
        v.push_back(value);
    }
    Lay(v, systems, 4);
    for (const double value :
         {outlier, slip, ratio, limitA, limitB, codeStd, phaseStd, period,
          static_cast<double>(tropo), pressure, temperature, humidity, static_cast<double>(mode),
          static_cast<double>(startWeek), startSeconds, static_cast<double>(endWeek), endSeconds,
          static_cast<double>(gal1), static_cast<double>(gal2)}) {
        v.push_back(value);
    }
    Calls().push_back(call);
    return 1;
}

int AntCorr(double* xyzR, double* l1R, double* l2R, double heightR, double* xyzB, double* l1B,
            double* l2B, double heightB) {
    Call call{"InputAntCorrData", {}, {}};
    for (double* array : {xyzR, l1R, l2R}) {
        Lay(call.values, array, 3);
    }
    Lay(call.values, heightR);
    for (double* array : {xyzB, l1B, l2B}) {
        Lay(call.values, array, 3);
    }
    Lay(call.values, heightB);
    Calls().push_back(call);
    return 1;
}

int IonCorr(double* alpha, double* beta) {
    Call call{"InputIonCorrData", {}, {}};
    Lay(call.values, alpha, 4);
    Lay(call.values, beta, 4);
    Calls().push_back(call);
    return 1;
}

int PreEph(int component, int system, int prn, int count, int* weeks, double* seconds,
           double* values) {
    Call call{"InputOneSatPreEphValue", {}, {}};
    for (const int value : {component, system, prn, count}) {
        Lay(call.values, value);
    }
    Lay(call.values, weeks, count);
    Lay(call.values, seconds, count);
    Lay(call.values, values, count);
    Calls().push_back(call);
    return 1;
}

void LayReceiver(Call& call, int week, double seconds, int* sats, double* p1, double* p2,
                 double* l1, double* l2) {
    Lay(call.values, week);
    Lay(call.values, seconds);
    Lay(call.values, sats, 64);
    for (double* array : {p1, p2, l1, l2}) {
        Lay(call.values, array, 64);
    }
}

int EpochObs(int weekR, double secondsR, int* satsR, double* p1R, double* p2R, double* l1R,
             double* l2R, int weekB, double secondsB, int* satsB, double* p1B, double* p2B,
             double* l1B, double* l2B) {
    Call call{"InputEpochObsData", {}, {}};
    LayReceiver(call, weekR, secondsR, satsR, p1R, p2R, l1R, l2R);
    LayReceiver(call, weekB, secondsB, satsB, p1B, p2B, l1B, l2B);
    Calls().push_back(call);
    return 1;
}

int MarkDel(int count, int* systems, int* prns) {
    Call call{"MarkDelSatList", {static_cast<double>(count)}, {}};
    Lay(call.values, systems, count);
    Lay(call.values, prns, count);
    Calls().push_back(call);
    return 1;
}

int AddTrack(int list, int system, int prn, int active, int startWeek, double startSeconds,
             int endWeek, double endSeconds, double value, int count, int* startWeeks,
             double* startSecondsList, int* endWeeks, double* endSecondsList) {
    Call call{"AddOneSatTrackInfo", {}, {}};
    for (const int number : {list, system, prn, active, startWeek}) {
        Lay(call.values, number);
    }
    Lay(call.values, startSeconds);
    Lay(call.values, endWeek);
    Lay(call.values, endSeconds);
    Lay(call.values, value);
    Lay(call.values, count);
    Lay(call.values, startWeeks, count);
    Lay(call.values, startSecondsList, count);
    Lay(call.values, endWeeks, count);
    Lay(call.values, endSecondsList, count);
    Calls().push_back(call);
    return 1;
}

int Start(int* status) {
    Calls().push_back({"StartProcess", {}, {}});
    *status = NextRun().status;
    return NextRun().answer;
}

}  // namespace

std::vector<Call>& Calls() {
    static std::vector<Call> calls;
    return calls;
}

RecordedRun& NextRun() {
    static RecordedRun run;
    return run;
}

engine::Api RecordingEngine() {
    Calls().clear();
    NextRun() = {};
    engine::Api api;
    SetPlain<kCreate>(api.createBLProcess);
    api.createBLProcessWithTrace = &CreateWithTrace;
    SetPlain<kDispose>(api.diposeProcess);
    api.startProcess = &Start;
    api.inputSolveConfig = &SolveConfig;
    api.inputAntCorrData = &AntCorr;
    api.inputIonCorrData = &IonCorr;
    SetPlain<kGps>(api.inputOneSatNavGPS);
    SetPlain<kBds>(api.inputOneSatNavBDS);
    SetPlain<kGal>(api.inputOneSatNavGAL);
    SetPlain<kGlo>(api.inputOneSatNavGLO);
    api.inputOneSatPreEphValue = &PreEph;
    api.inputEpochObsData = &EpochObs;
    api.markDelSatList = &MarkDel;
    SetPlain<kAddDel>(api.addOneDelSat);
    SetPlain<kClean>(api.cleanSatTrackList);
    api.addOneSatTrackInfo = &AddTrack;
    SetSilent(api.getSolveResultsBaseData);
    SetSilent(api.getTripDiffSol);
    SetSilent(api.getFloatSolNum);
    SetSilent(api.getFixedSolNum);
    SetSilent(api.getFloatSolNumAndMode);
    SetSilent(api.getFixedSolNumAndMode);
    SetSilent(api.getFloatSolSatNum);
    SetSilent(api.getFixedSolSatNum);
    SetSilent(api.getFloatSolSatList);
    SetSilent(api.getFixedSolSatList);
    SetSilent(api.getFloatSolResListSize);
    SetSilent(api.getFixedSolResListSize);
    SetSilent(api.getFloatSolResList);
    SetSilent(api.getFixedSolResList);
    SetSilent(api.getFloatSolBaseData);
    SetSilent(api.getFixedSolBaseData);
    SetSilent(api.getFloatSolAmbNum);
    SetSilent(api.getFixedSolAmbNum);
    SetSilent(api.getFloatSolAmbListData);
    SetSilent(api.getFixedSolAmbListData);
    SetSilent(api.getFloatAmbCov);
    SetSilent(api.getModeFloatSolSatNum);
    SetSilent(api.getModeFixedSolSatNum);
    SetSilent(api.getModeFixedSolSatList);
    SetSilent(api.getModeFloatSolResListSize);
    SetSilent(api.getModeFixedSolResListSize);
    SetSilent(api.getModeFloatSolResList);
    SetSilent(api.getModeFixedSolResList);
    SetSilent(api.getModeFloatSolBaseData);
    SetSilent(api.getModeFixedSolBaseData);
    return api;
}

}  // namespace vornel::test
