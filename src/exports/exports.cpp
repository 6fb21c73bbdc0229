// The set-up and run exports: each hands its arguments to the object they are meant for.
#include <algorithm>

#include "VornelBlCore.h"
#include "exports/process.h"
#include "foundation/satellite.h"
#include "foundation/trace.h"
#include "observation/ionosphere.h"
#include "observation/troposphere.h"
#include "orbit/broadcast_ephemeris.h"
#include "orbit/glonass_orbit.h"
#include "orbit/precise_ephemeris.h"

namespace vornel {

Process& CurrentProcess() {
    static Process process;
    return process;
}

namespace {

// Nothing crosses the boundary but a 0.
template <class Body>
int Guarded(Body body) {
    try {
        body();
        return 1;
    } catch (...) {
        return 0;
    }
}

CTRLSolve& Control() {
    return *CurrentProcess().control;
}

void StartOver() {
    CurrentProcess().Delete();
    CurrentProcess().control = std::make_unique<CTRLSolve>();
}

void CopyOffset(const double* from, double* to) {
    std::copy(from, from + 3, to);
}

void TraceOffset(const char* name, const double* offset) {
    TraceWrite(4, "%s  : %13.3lf %13.3lf %13.3lf.\n", name, offset[0], offset[1], offset[2]);
}

void TraceStations(const CTRLSolve& control) {
    const XYZPosition& rover = control.roverPosition;
    const XYZPosition& base = control.basePosition;
    TraceWrite(4, "xyzPosR : %13.4lf %13.4lf %13.4lf.\n", rover.X, rover.Y, rover.Z);
    TraceWrite(4, "xyzPosB : %13.4lf %13.4lf %13.4lf.\n", base.X, base.Y, base.Z);
    TraceOffset("L1PCOR", control.l1PcoRover);
    TraceOffset("L2PCOR", control.l2PcoRover);
    TraceOffset("L1PCOB", control.l1PcoBase);
    TraceOffset("L2PCOB", control.l2PcoBase);
    TraceWrite(4, "TrueHgtR: %13.3lf, TrueHgtB: %13.3lf.\n", control.trueHeightRover,
               control.trueHeightBase);
}

void TraceConfig(const SolveConfig& config) {
    TraceWrite(4,
               "solveConfig: slvmode=%d, EpochGap=%13.3lf, ratio=%8.3lf, "
               "Pstd=%13.3lf,PhaseStd=%13.3lf,sys=%d %d %d %d.\n",
               config.slvmode, config.samplingInterval, config.ratioThreshold, config.codeStd,
               config.phaseStd, config.useGps, config.useGlonass, config.useBds, config.useGalileo);
}

SatTrackList* TrackList(CTRLSolve& control, int listIndex) {
    switch (listIndex) {
        case 0:
            return &control.trackList0;
        case 1:
            return &control.trackList1;
        case 2:
            return &control.trackList2;
        default:
            return nullptr;
    }
}

// A band of the configuration: `standIn` for one that does not exist.
int GalileoBand(int band, int standIn) {
    return band < VORNEL_GALILEO_E1 || band > VORNEL_GALILEO_E6 ? standIn : band;
}

std::unique_ptr<StaticSolve> NewSolver(const CTRLSolve& control) {
    return std::make_unique<StaticSolve>(
        control.hasGlonass, control.reservedProcessFlag, control.config, control.epochs,
        &control.delSatList, &control.trackList0, &control.trackList1, &control.trackList2,
        control.roverDualFreq, control.roverPosition, control.l1PcoRover, control.l2PcoRover,
        control.trueHeightRover, control.baseDualFreq, control.basePosition, control.l1PcoBase,
        control.l2PcoBase, control.trueHeightBase);
}

}  // namespace

}  // namespace vornel

using namespace vornel;

extern "C" {

int CreateBLProcess() {
    return Guarded(StartOver);
}

int CreateBLProcessWithTrace(const char* tracePath, int traceLevel) {
    return Guarded([=] {
        TraceClose();
        TraceOpen(tracePath);
        TraceSetLevel(traceLevel);
        StartOver();
    });
}

int DiposeProcess() {
    return Guarded([] {
        CurrentProcess().Delete();
        TraceWrite(1, "CTRLSolve::Dispose suc.\n");
        TraceClose();
    });
}

int StartProcess(int* status) {
    Process& process = CurrentProcess();
    try {
        *status = VORNEL_STATUS_CONSTRUCTED;
        process.solver.reset();
        process.solver = NewSolver(Control());
        *status = process.solver->Run();
        return 1;
    } catch (...) {
        *status = process.solver ? process.solver->status : VORNEL_STATUS_STARTED;
        return 0;
    }
}

int InputSolveConfig(int slvmode, double elevationMask, double samplingInterval, int minEpochs,
                     double shortBaselineLimit, double maxFixBaseline, int ephemerisSource,
                     int* systems, double outlierFactor, double slipTestCap, double ratioThreshold,
                     double reservedLimitA, double reservedLimitB, double codeStd, double phaseStd,
                     double periodLength, int tropoModel, double pressure, double temperature,
                     double humidity, int reservedMode, int sessionStartWeek,
                     double sessionStartSeconds, int sessionEndWeek, double sessionEndSeconds,
                     int galFreq1, int galFreq2) {
    return Guarded([=] {
        SolveConfig& config = Control().config;
        config.slvmode = slvmode;
        config.elevationMask = elevationMask;
        config.samplingInterval = samplingInterval;
        config.minEpochs = minEpochs;
        config.shortBaselineLimit = shortBaselineLimit;
        config.maxFixBaseline = maxFixBaseline;
        config.ephemerisSource = ephemerisSource;
        config.useGps = systems[0];
        config.useGlonass = systems[1];
        config.useBds = systems[2];
        config.useGalileo = systems[3];
        config.systemListEnd = -1;
        config.outlierFactor = outlierFactor;
        config.slipTestCap = slipTestCap;
        config.ratioThreshold = ratioThreshold;
        config.reservedLimitA = reservedLimitA;
        config.reservedLimitB = reservedLimitB;
        config.codeStd = codeStd;
        config.phaseStd = phaseStd;
        config.periodLength = periodLength;
        config.tropoModel = tropoModel;
        config.pressure = pressure;
        config.temperature = temperature;
        config.humidity = humidity;
        SetSurfaceWeather(temperature, pressure, humidity);
        config.reservedMode = reservedMode;
        config.sessionStart = Epoch(sessionStartWeek, sessionStartSeconds);
        config.sessionEnd = Epoch(sessionEndWeek, sessionEndSeconds);
        config.galFreq1 = GalileoBand(galFreq1, VORNEL_GALILEO_E1);
        // Against the first band as it was passed, not as it was mended.
        config.galFreq2 =
            galFreq2 == galFreq1 ? VORNEL_GALILEO_E5A : GalileoBand(galFreq2, VORNEL_GALILEO_E5A);
        TraceConfig(config);
    });
}

int InputAntCorrData(double* xyzPosR, double* l1PcoR, double* l2PcoR, double trueHgtR,
                     double* xyzPosB, double* l1PcoB, double* l2PcoB, double trueHgtB) {
    return Guarded([=] {
        CTRLSolve& control = Control();
        control.roverPosition = XYZPosition(xyzPosR);
        CopyOffset(l1PcoR, control.l1PcoRover);
        CopyOffset(l2PcoR, control.l2PcoRover);
        control.trueHeightRover = trueHgtR;
        control.basePosition = XYZPosition(xyzPosB);
        CopyOffset(l1PcoB, control.l1PcoBase);
        CopyOffset(l2PcoB, control.l2PcoBase);
        control.trueHeightBase = trueHgtB;
        TraceStations(control);
    });
}

int InputIonCorrData(double* alpha, double* beta) {
    return Guarded([=] {
        IonosphereParameters& parameters = CurrentIonosphere();
        std::copy(alpha, alpha + 4, parameters.alpha);
        std::copy(beta, beta + 4, parameters.beta);
        parameters.ionoValid = 1;
    });
}

// The arguments that the three Keplerian exports share, and the record made of them.
#define VORNEL_KEPLER_ARGUMENTS                                                                   \
    int satId, int tocWeek, double tocSeconds, double af0, double af1, double af2, double sqrtA,  \
        double e, double i0, double omega0, double omega, double m0, double deltaN,               \
        double omegaDot, double idot, double crc, double crs, double cuc, double cus, double cic, \
        double cis, int iode, double iodc, double toe, int toeWeek, double transmitTime,          \
        int l2Codes, int health, double accuracy, int l2PFlag, double tgd
#define VORNEL_KEPLER_RECORD               \
    KeplerEphemeris record;                \
    record.toeEpoch = Epoch(toeWeek, toe); \
    record.tocSeconds = tocSeconds;        \
    record.tocWeek = tocWeek;              \
    record.satId = satId;                  \
    record.af0 = af0;                      \
    record.af1 = af1;                      \
    record.af2 = af2;                      \
    record.iode = iode;                    \
    record.crs = crs;                      \
    record.deltaN = deltaN;                \
    record.m0 = m0;                        \
    record.cuc = cuc;                      \
    record.e = e;                          \
    record.cus = cus;                      \
    record.sqrtA = sqrtA;                  \
    record.toe = toe;                      \
    record.cic = cic;                      \
    record.omega0 = omega0;                \
    record.cis = cis;                      \
    record.i0 = i0;                        \
    record.crc = crc;                      \
    record.omega = omega;                  \
    record.omegaDot = omegaDot;            \
    record.idot = idot;                    \
    record.l2Codes = l2Codes;              \
    record.toeWeek = toeWeek;              \
    record.l2PFlag = l2PFlag;              \
    record.accuracy = accuracy;            \
    record.health = health;                \
    record.tgd = tgd;                      \
    record.iodc = iodc;                    \
    record.transmitTime = transmitTime;    \
    record.fitInterval = fitInterval

int InputOneSatNavGPS(VORNEL_KEPLER_ARGUMENTS, int fitInterval) {
    return Guarded([=] {
        VORNEL_KEPLER_RECORD;
        GpsStore().AddEphemeris(record);
    });
}

int InputOneSatNavBDS(VORNEL_KEPLER_ARGUMENTS, double tgd2, int fitInterval) {
    return Guarded([=] {
        VORNEL_KEPLER_RECORD;
        record.tgd2 = tgd2;
        BdsStore().AddEphemeris(record);
    });
}

int InputOneSatNavGAL(VORNEL_KEPLER_ARGUMENTS, double tgd2, int fitInterval) {
    return Guarded([=] {
        VORNEL_KEPLER_RECORD;
        record.tgd2 = tgd2;
        GalileoStore().AddEphemeris(record);
    });
}

#undef VORNEL_KEPLER_ARGUMENTS
#undef VORNEL_KEPLER_RECORD

int InputOneSatNavGLO(int slot, int week, double seconds, double spare2, double tbSeconds,
                      double spare1, double clockBias, double clockDrift, double x, double y,
                      double z, double vx, double vy, double vz, double ax, double ay, double az,
                      int health, int channel, int age, int leapSeconds) {
    return Guarded([=] {
        GlonassEphemeris record;
        record.slot = slot;
        record.refEpoch = Epoch(week, seconds);
        record.tbSeconds = tbSeconds;
        record.spare1 = spare1;
        record.clockBias = clockBias;
        record.clockDrift = clockDrift;
        record.spare2 = spare2;
        record.leapSeconds = leapSeconds;
        record.x = x;
        record.vx = vx;
        record.ax = ax;
        record.health = health;
        record.y = y;
        record.vy = vy;
        record.ay = ay;
        record.channel = channel;
        record.z = z;
        record.vz = vz;
        record.az = az;
        record.age = age;
        GlonassEphemerides().AddGlonassEphemeris(record);
    });
}

int InputOneSatPreEphValue(int component, int system, int prn, int count, int* weeks,
                           double* seconds, double* values) {
    return Guarded([=] {
        const int satNumber = MakeSatNumber(system, prn);
        if (component < VORNEL_PRECISE_X || component > VORNEL_PRECISE_CLOCK || satNumber == 0) {
            return;
        }
        for (int i = 0; i < count; ++i) {
            AddValue(PreciseStore(component), satNumber, Epoch(weeks[i], seconds[i]), values[i]);
        }
    });
}

int InputEpochObsData(int weekR, double secondsR, int* satNumbersR, double* p1R, double* p2R,
                      double* l1R, double* l2R, int weekB, double secondsB, int* satNumbersB,
                      double* p1B, double* p2B, double* l1B, double* l2B) {
    return Guarded([=] {
        Control().AddEpoch({weekR, secondsR, satNumbersR, p1R, p2R, l1R, l2R},
                           {weekB, secondsB, satNumbersB, p1B, p2B, l1B, l2B});
    });
}

int MarkDelSatList(int count, int* systems, int* prns) {
    return Guarded([=] {
        std::vector<int>& list = Control().delSatList;
        list.clear();
        for (int i = 0; i < count; ++i) {
            list.push_back(MakeSatNumber(systems[i], prns[i]));
        }
    });
}

int AddOneDelSat(int system, int prn) {
    return Guarded([=] {
        std::vector<int>& list = Control().delSatList;
        const int satNumber = MakeSatNumber(system, prn);
        if (std::find(list.begin(), list.end(), satNumber) == list.end()) {
            list.push_back(satNumber);
        }
    });
}

int CleanSatTrackList() {
    return Guarded([] {
        CTRLSolve& control = Control();
        control.trackList0.tracks.clear();
        control.trackList1.tracks.clear();
        control.trackList2.tracks.clear();
    });
}

int AddOneSatTrackInfo(int listIndex, int system, int prn, int isActive, int startWeek,
                       double startSeconds, int endWeek, double endSeconds, double value,
                       int gapCount, int* gapStartWeeks, double* gapStartSeconds, int* gapEndWeeks,
                       double* gapEndSeconds) {
    return Guarded([=] {
        SatTrackList* list = TrackList(Control(), listIndex);
        const int satNumber = MakeSatNumber(system, prn);
        if (list == nullptr || satNumber == 0) {
            return;
        }
        SatTrack track;
        track.sat = satNumber;
        track.isActive = isActive != 0;
        track.value = value;
        track.span = TimePeriod(Epoch(startWeek, startSeconds), Epoch(endWeek, endSeconds));
        for (int i = 0; i < gapCount; ++i) {
            track.gaps.emplace_back(Epoch(gapStartWeeks[i], gapStartSeconds[i]),
                                    Epoch(gapEndWeeks[i], gapEndSeconds[i]));
        }
        list->Add(track);
    });
}

}  // extern "C"
