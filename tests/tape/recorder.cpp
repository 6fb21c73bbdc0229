#include "tape/recorder.h"

#include <VornelBlCore.h>

#include <charconv>

namespace vornel::tape {

namespace {

std::FILE* destination = nullptr;

void Put(int value) {
    std::fprintf(destination, " %d", value);
}

// The shortest decimal that stands for this double and no other.
void Put(double value) {
    char text[40] = " ";
    const auto end = std::to_chars(text + 1, text + sizeof text, value).ptr;
    std::fwrite(text, 1, static_cast<std::size_t>(end - text), destination);
}

template <class... Values>
void Line(const char* start, Values... values) {
    std::fputs(start, destination);
    (Put(values), ...);
    std::fputc('\n', destination);
}

template <class Value>
void PutAll(const Value* values, int count) {
    for (int i = 0; i < count; ++i) {
        Put(values[i]);
    }
}

// A function whose arguments are plain numbers.
template <class... Values>
int Call(const char* name, Values... values) {
    Line(name, values...);
    return 1;
}

void Side(int week, double seconds, const int* satellites, const double* p1, const double* p2,
          const double* l1, const double* l2) {
    constexpr int kSlots = 64, kSatellites = 135;
    const auto isFilled = [=](int slot) {
        return satellites[slot] >= 1 && satellites[slot] <= kSatellites;
    };
    int count = 0;
    for (int slot = 0; slot < kSlots; ++slot) {
        count += isFilled(slot) ? 1 : 0;
    }
    Line(" ", week, seconds, count);
    for (int slot = 0; slot < kSlots; ++slot) {
        if (isFilled(slot)) {
            Line(" ", satellites[slot], p1[slot], p2[slot], l1[slot], l2[slot]);
        }
    }
}

}  // namespace

void RecordTo(std::FILE* tape) {
    destination = tape;
    std::fputs(
        "# The calls that hand a session to VornelBlCore: names of functions and their arguments.\n"
        "# VornelBlCore.h tells what they mean, examples/tape.h how they are written.\n",
        tape);
}

}  // namespace vornel::tape

using namespace vornel::tape;

extern "C" {

int CreateBLProcess() {
    return Call("CreateBLProcess");
}

int DiposeProcess() {
    return 1;  // a tape ends with its last call
}

int InputSolveConfig(int slvmode, double elevationMask, double samplingInterval, int minEpochs,
                     double shortBaselineLimit, double maxFixBaseline, int ephemerisSource,
                     int* systems, double outlierFactor, double slipTestCap, double ratioThreshold,
                     double reservedLimitA, double reservedLimitB, double codeStd, double phaseStd,
                     double periodLength, int tropoModel, double pressure, double temperature,
                     double humidity, int reservedMode, int sessionStartWeek,
                     double sessionStartSeconds, int sessionEndWeek, double sessionEndSeconds,
                     int galFreq1, int galFreq2) {
    return Call("InputSolveConfig", slvmode, elevationMask, samplingInterval, minEpochs,
                shortBaselineLimit, maxFixBaseline, ephemerisSource, systems[0], systems[1],
                systems[2], systems[3], outlierFactor, slipTestCap, ratioThreshold, reservedLimitA,
                reservedLimitB, codeStd, phaseStd, periodLength, tropoModel, pressure, temperature,
                humidity, reservedMode, sessionStartWeek, sessionStartSeconds, sessionEndWeek,
                sessionEndSeconds, galFreq1, galFreq2);
}

int InputAntCorrData(double* xyzPosR, double* l1PcoR, double* l2PcoR, double trueHgtR,
                     double* xyzPosB, double* l1PcoB, double* l2PcoB, double trueHgtB) {
    std::fputs("InputAntCorrData", destination);
    PutAll(xyzPosR, 3);
    PutAll(l1PcoR, 3);
    PutAll(l2PcoR, 3);
    Line("", trueHgtR);
    PutAll(xyzPosB, 3);
    PutAll(l1PcoB, 3);
    PutAll(l2PcoB, 3);
    Line("", trueHgtB);
    return 1;
}

int InputIonCorrData(double* alpha, double* beta) {
    return Call("InputIonCorrData", alpha[0], alpha[1], alpha[2], alpha[3], beta[0], beta[1],
                beta[2], beta[3]);
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

int InputOneSatNavGPS(KEPLER_ARGUMENTS, int fitInterval) {
    return Call("InputOneSatNavGPS", KEPLER_VALUES, fitInterval);
}

int InputOneSatNavBDS(KEPLER_ARGUMENTS, double tgd2, int fitInterval) {
    return Call("InputOneSatNavBDS", KEPLER_VALUES, tgd2, fitInterval);
}

int InputOneSatNavGAL(KEPLER_ARGUMENTS, double tgd2, int fitInterval) {
    return Call("InputOneSatNavGAL", KEPLER_VALUES, tgd2, fitInterval);
}

int InputOneSatNavGLO(int slot, int week, double seconds, double spare2, double tbSeconds,
                      double spare1, double clockBias, double clockDrift, double x, double y,
                      double z, double vx, double vy, double vz, double ax, double ay, double az,
                      int health, int channel, int age, int leapSeconds) {
    return Call("InputOneSatNavGLO", slot, week, seconds, spare2, tbSeconds, spare1, clockBias,
                clockDrift, x, y, z, vx, vy, vz, ax, ay, az, health, channel, age, leapSeconds);
}

int InputOneSatPreEphValue(int component, int system, int prn, int count, int* weeks,
                           double* seconds, double* values) {
    Line("InputOneSatPreEphValue", component, system, prn, count);
    for (int i = 0; i < count; ++i) {
        Line(" ", weeks[i], seconds[i], values[i]);
    }
    return 1;
}

int InputEpochObsData(int weekR, double secondsR, int* satNumbersR, double* p1R, double* p2R,
                      double* l1R, double* l2R, int weekB, double secondsB, int* satNumbersB,
                      double* p1B, double* p2B, double* l1B, double* l2B) {
    Line("InputEpochObsData");
    Side(weekR, secondsR, satNumbersR, p1R, p2R, l1R, l2R);
    Side(weekB, secondsB, satNumbersB, p1B, p2B, l1B, l2B);
    return 1;
}

int MarkDelSatList(int count, int* systems, int* prns) {
    Line("MarkDelSatList", count);
    for (int i = 0; i < count; ++i) {
        Line(" ", systems[i], prns[i]);
    }
    return 1;
}

int AddOneDelSat(int system, int prn) {
    return Call("AddOneDelSat", system, prn);
}

int CleanSatTrackList() {
    return Call("CleanSatTrackList");
}

int AddOneSatTrackInfo(int listIndex, int system, int prn, int isActive, int startWeek,
                       double startSeconds, int endWeek, double endSeconds, double value,
                       int gapCount, int* gapStartWeeks, double* gapStartSeconds, int* gapEndWeeks,
                       double* gapEndSeconds) {
    Line("AddOneSatTrackInfo", listIndex, system, prn, isActive, startWeek, startSeconds, endWeek,
         endSeconds, value, gapCount);
    for (int i = 0; i < gapCount; ++i) {
        Line(" ", gapStartWeeks[i], gapStartSeconds[i], gapEndWeeks[i], gapEndSeconds[i]);
    }
    return 1;
}

}  // extern "C"
