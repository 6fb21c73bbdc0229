/* Plays the calls of a tape. C99, and C++ as well. */
#include "tape.h"

#include <VornelBlCore.h>
#include <ctype.h>
#include <stdlib.h>
#include <string.h>

enum { kSlots = VORNEL_EPOCH_SLOTS, kNameLength = 63 };

static void Stop(const char* what, const char* name) {
    fprintf(stderr, "tape: %s %s\n", what, name);
    exit(EXIT_FAILURE);
}

/* ---- words ----------------------------------------------------------------------------------- */

static void SkipComments(FILE* tape) {
    int c;
    do {
        c = getc(tape);
        if (c == '#') {
            while (c != '\n' && c != EOF) {
                c = getc(tape);
            }
        }
    } while (isspace(c));
    if (c != EOF) {
        ungetc(c, tape);
    }
}

static double Real(FILE* tape) {
    double value;
    SkipComments(tape);
    if (fscanf(tape, "%lf", &value) != 1) {
        Stop("a number is missing", "");
    }
    return value;
}

static int Whole(FILE* tape) {
    int value;
    SkipComments(tape);
    if (fscanf(tape, "%d", &value) != 1) {
        Stop("a whole number is missing", "");
    }
    return value;
}

static void Reals(FILE* tape, double* values, int count) {
    int i;
    for (i = 0; i < count; ++i) {
        values[i] = Real(tape);
    }
}

static void Wholes(FILE* tape, int* values, int count) {
    int i;
    for (i = 0; i < count; ++i) {
        values[i] = Whole(tape);
    }
}

static int Count(FILE* tape, int most) {
    const int count = Whole(tape);
    if (count < 0 || count > most) {
        Stop("a count is out of range", "");
    }
    return count;
}

/* Room for a list of numbers; the caller frees it. */
static void* Room(int count, size_t size) {
    void* room = calloc((size_t)count + 1, size);
    if (room == NULL) {
        Stop("out of memory", "");
    }
    return room;
}

/* ---- one function for each call: reads the arguments, makes the call ------------------------- */

enum { kMostEntries = 1000000 };

static int Create(FILE* tape) {
    (void)tape;
    return CreateBLProcess();
}

static int Config(FILE* tape) {
    const int slvmode = Whole(tape);
    const double elevationMask = Real(tape), samplingInterval = Real(tape);
    const int minEpochs = Whole(tape);
    const double shortBaselineLimit = Real(tape), maxFixBaseline = Real(tape);
    const int ephemerisSource = Whole(tape);
    int systems[4], tropoModel, reservedMode, startWeek, endWeek, galFreq1, galFreq2;
    double limits[5], codeStd, phaseStd, periodLength, weather[3], startSeconds, endSeconds;
    Wholes(tape, systems, 4);
    Reals(tape, limits, 5); /* outlierFactor, slipTestCap, ratioThreshold, two reserved ones */
    codeStd = Real(tape);
    phaseStd = Real(tape);
    periodLength = Real(tape);
    tropoModel = Whole(tape);
    Reals(tape, weather, 3); /* pressure, temperature, humidity */
    reservedMode = Whole(tape);
    startWeek = Whole(tape);
    startSeconds = Real(tape);
    endWeek = Whole(tape);
    endSeconds = Real(tape);
    galFreq1 = Whole(tape);
    galFreq2 = Whole(tape);
    return InputSolveConfig(slvmode, elevationMask, samplingInterval, minEpochs, shortBaselineLimit,
                            maxFixBaseline, ephemerisSource, systems, limits[0], limits[1],
                            limits[2], limits[3], limits[4], codeStd, phaseStd, periodLength,
                            tropoModel, weather[0], weather[1], weather[2], reservedMode, startWeek,
                            startSeconds, endWeek, endSeconds, galFreq1, galFreq2);
}

static int Stations(FILE* tape) {
    double xyzR[3], l1R[3], l2R[3], heightR, xyzB[3], l1B[3], l2B[3], heightB;
    Reals(tape, xyzR, 3);
    Reals(tape, l1R, 3);
    Reals(tape, l2R, 3);
    heightR = Real(tape);
    Reals(tape, xyzB, 3);
    Reals(tape, l1B, 3);
    Reals(tape, l2B, 3);
    heightB = Real(tape);
    return InputAntCorrData(xyzR, l1R, l2R, heightR, xyzB, l1B, l2B, heightB);
}

static int Ionosphere(FILE* tape) {
    double alpha[4], beta[4];
    Reals(tape, alpha, 4);
    Reals(tape, beta, 4);
    return InputIonCorrData(alpha, beta);
}

/* What the ephemerides of GPS, BDS and Galileo hold in common. */
struct Kepler {
    int satId, tocWeek;
    double tocSeconds;
    double d[18]; /* af0 to cis */
    int iode;
    double iodc, toe;
    int toeWeek;
    double transmitTime;
    int l2Codes, health;
    double accuracy;
    int l2PFlag;
    double tgd;
};

static struct Kepler ReadKepler(FILE* tape) {
    struct Kepler k;
    k.satId = Whole(tape);
    k.tocWeek = Whole(tape);
    k.tocSeconds = Real(tape);
    Reals(tape, k.d, 18);
    k.iode = Whole(tape);
    k.iodc = Real(tape);
    k.toe = Real(tape);
    k.toeWeek = Whole(tape);
    k.transmitTime = Real(tape);
    k.l2Codes = Whole(tape);
    k.health = Whole(tape);
    k.accuracy = Real(tape);
    k.l2PFlag = Whole(tape);
    k.tgd = Real(tape);
    return k;
}

/* The members of a struct Kepler as arguments. */
#define KEPLER(k)                                                                             \
    (k).satId, (k).tocWeek, (k).tocSeconds, (k).d[0], (k).d[1], (k).d[2], (k).d[3], (k).d[4], \
        (k).d[5], (k).d[6], (k).d[7], (k).d[8], (k).d[9], (k).d[10], (k).d[11], (k).d[12],    \
        (k).d[13], (k).d[14], (k).d[15], (k).d[16], (k).d[17], (k).iode, (k).iodc, (k).toe,   \
        (k).toeWeek, (k).transmitTime, (k).l2Codes, (k).health, (k).accuracy, (k).l2PFlag, (k).tgd

static int Gps(FILE* tape) {
    const struct Kepler k = ReadKepler(tape);
    const int fitInterval = Whole(tape);
    return InputOneSatNavGPS(KEPLER(k), fitInterval);
}

static int Bds(FILE* tape) {
    const struct Kepler k = ReadKepler(tape);
    const double tgd2 = Real(tape);
    const int fitInterval = Whole(tape);
    return InputOneSatNavBDS(KEPLER(k), tgd2, fitInterval);
}

static int Galileo(FILE* tape) {
    const struct Kepler k = ReadKepler(tape);
    const double tgd2 = Real(tape);
    const int fitInterval = Whole(tape);
    return InputOneSatNavGAL(KEPLER(k), tgd2, fitInterval);
}

static int Glonass(FILE* tape) {
    const int slot = Whole(tape), week = Whole(tape);
    double d[15]; /* seconds to az */
    int health, channel, age, leapSeconds;
    Reals(tape, d, 15);
    health = Whole(tape);
    channel = Whole(tape);
    age = Whole(tape);
    leapSeconds = Whole(tape);
    return InputOneSatNavGLO(slot, week, d[0], d[1], d[2], d[3], d[4], d[5], d[6], d[7], d[8], d[9],
                             d[10], d[11], d[12], d[13], d[14], health, channel, age, leapSeconds);
}

static int PreciseOrbit(FILE* tape) {
    const int component = Whole(tape), system = Whole(tape), prn = Whole(tape);
    const int count = Count(tape, kMostEntries);
    int* weeks = (int*)Room(count, sizeof *weeks);
    double* seconds = (double*)Room(count, sizeof *seconds);
    double* values = (double*)Room(count, sizeof *values);
    int i, answer;
    for (i = 0; i < count; ++i) {
        weeks[i] = Whole(tape);
        seconds[i] = Real(tape);
        values[i] = Real(tape);
    }
    answer = InputOneSatPreEphValue(component, system, prn, count, weeks, seconds, values);
    free(weeks);
    free(seconds);
    free(values);
    return answer;
}

/* One receiver's side of an epoch. */
struct Side {
    int week;
    double seconds;
    int satellites[kSlots];
    double p1[kSlots], p2[kSlots], l1[kSlots], l2[kSlots];
};

static void ReadSide(FILE* tape, struct Side* side) {
    int count, i;
    memset(side, 0, sizeof *side);
    side->week = Whole(tape);
    side->seconds = Real(tape);
    count = Count(tape, kSlots);
    for (i = 0; i < count; ++i) {
        side->satellites[i] = Whole(tape);
        side->p1[i] = Real(tape);
        side->p2[i] = Real(tape);
        side->l1[i] = Real(tape);
        side->l2[i] = Real(tape);
    }
}

static int Epoch(FILE* tape) {
    struct Side r, b;
    ReadSide(tape, &r);
    ReadSide(tape, &b);
    return InputEpochObsData(r.week, r.seconds, r.satellites, r.p1, r.p2, r.l1, r.l2, b.week,
                             b.seconds, b.satellites, b.p1, b.p2, b.l1, b.l2);
}

static int DeleteList(FILE* tape) {
    const int count = Count(tape, kMostEntries);
    int* systems = (int*)Room(count, sizeof *systems);
    int* prns = (int*)Room(count, sizeof *prns);
    int i, answer;
    for (i = 0; i < count; ++i) {
        systems[i] = Whole(tape);
        prns[i] = Whole(tape);
    }
    answer = MarkDelSatList(count, systems, prns);
    free(systems);
    free(prns);
    return answer;
}

static int Delete(FILE* tape) {
    const int system = Whole(tape), prn = Whole(tape);
    return AddOneDelSat(system, prn);
}

static int CleanTracks(FILE* tape) {
    (void)tape;
    return CleanSatTrackList();
}

static int Track(FILE* tape) {
    const int listIndex = Whole(tape), system = Whole(tape), prn = Whole(tape);
    const int isActive = Whole(tape), startWeek = Whole(tape);
    const double startSeconds = Real(tape);
    const int endWeek = Whole(tape);
    const double endSeconds = Real(tape), value = Real(tape);
    const int count = Count(tape, kMostEntries);
    int* weeks = (int*)Room(2 * count, sizeof *weeks); /* all starts, then all ends */
    double* seconds = (double*)Room(2 * count, sizeof *seconds);
    int i, answer;
    for (i = 0; i < count; ++i) {
        weeks[i] = Whole(tape);
        seconds[i] = Real(tape);
        weeks[count + i] = Whole(tape);
        seconds[count + i] = Real(tape);
    }
    answer = AddOneSatTrackInfo(listIndex, system, prn, isActive, startWeek, startSeconds, endWeek,
                                endSeconds, value, count, weeks, seconds, weeks + count,
                                seconds + count);
    free(weeks);
    free(seconds);
    return answer;
}

/* ---- the tape -------------------------------------------------------------------------------- */

static const struct Entry {
    const char* name;
    int (*play)(FILE*);
} kEntries[] = {{"CreateBLProcess", Create},
                {"InputSolveConfig", Config},
                {"InputAntCorrData", Stations},
                {"InputIonCorrData", Ionosphere},
                {"InputOneSatNavGPS", Gps},
                {"InputOneSatNavBDS", Bds},
                {"InputOneSatNavGAL", Galileo},
                {"InputOneSatNavGLO", Glonass},
                {"InputOneSatPreEphValue", PreciseOrbit},
                {"InputEpochObsData", Epoch},
                {"MarkDelSatList", DeleteList},
                {"AddOneDelSat", Delete},
                {"CleanSatTrackList", CleanTracks},
                {"AddOneSatTrackInfo", Track}};

void PlayTape(FILE* tape) {
    const size_t count = sizeof kEntries / sizeof kEntries[0];
    char name[kNameLength + 1];
    size_t i;
    for (SkipComments(tape); fscanf(tape, "%63s", name) == 1; SkipComments(tape)) {
        for (i = 0; i < count && strcmp(kEntries[i].name, name) != 0; ++i) {
        }
        if (i == count) {
            Stop("this is no call of a tape:", name);
        }
        if (kEntries[i].play(tape) == 0) {
            Stop("the engine answered 0 to", name);
        }
    }
}
