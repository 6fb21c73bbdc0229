/*
 * A whole host of the engine in C: it hands over ephemerides and observations of two receivers, has
 * the baseline computed, and prints what came out.
 *
 * So that it needs no files, it makes up its observations: half an hour of GPS L1 and L2 of two
 * receivers 800 m apart, with noise, under 24 satellites on circular orbits. A real host has its
 * own source for them; the calls are the same.
 *
 * Exit code 0 if the fixed vector is within 5 mm of the one that the observations were made of.
 *
 * To build it with an installed library:
 *     cc -std=c99 embed.c -o embed $(pkg-config --cflags --libs VornelBlCore) -lm
 */
#include <VornelBlCore.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

enum { kSatellites = 24, kSlots = VORNEL_EPOCH_SLOTS, kEpochs = 60 };

static const double kPi = 3.14159265358979323846;
static const double kLightSpeed = 299792458.0;        /* m/s */
static const double kGravitation = 3.986005e14;       /* of the earth, m^3/s^2 (IS-GPS-200) */
static const double kEarthRotation = 7.2921151467e-5; /* rad/s (IS-GPS-200) */
static const double kL1 = 1575.42e6, kL2 = 1227.60e6; /* Hz */
static const double kInterval = 30.0;                 /* s between epochs */
static const int kWeek = 2111;                        /* GPS week of the session */
static const double kBegin = 345600.0;                /* its first second of the week */
static const double kOrbitTime = 345600.0 + 1800.0;   /* reference time of the orbits */
static const double kOrbitRadius = 26560.0e3;         /* m */
static const double kInclination = 55.0 / 180.0 * 3.14159265358979323846;

static const double kBase[3] = {4075580.3, 931854.1, 4801568.3}; /* marker, ECEF metres */

static void Stop(const char* what) {
    fprintf(stderr, "embed: %s\n", what);
    exit(EXIT_FAILURE);
}

/* A set-up function of the engine returns 0 when it could not do its work. */
static void Require(int answer, const char* function) {
    if (answer == 0) {
        Stop(function);
    }
}

/* ---- observations, made up ------------------------------------------------------------------- */

/* Six planes of four satellites. */
static double NodeLongitude(int satellite) {
    return satellite / 4 * kPi / 3.0;
}
static double MeanAnomaly(int satellite) {
    return satellite % 4 * kPi / 2.0 + satellite / 4 * kPi / 12.0;
}

/* Position at a second of the week, earth-fixed at that second, metres (IS-GPS-200, 20.3.3.4.3, for
 * a circular orbit). */
static void SatellitePosition(int satellite, double seconds, double position[3]) {
    const double sinceReference = seconds - kOrbitTime;
    const double motion = sqrt(kGravitation / pow(kOrbitRadius, 3.0));
    const double latitude = MeanAnomaly(satellite) + motion * sinceReference;
    const double node = NodeLongitude(satellite) - kEarthRotation * seconds;
    const double x = kOrbitRadius * cos(latitude), y = kOrbitRadius * sin(latitude);
    position[0] = x * cos(node) - y * cos(kInclination) * sin(node);
    position[1] = x * sin(node) + y * cos(kInclination) * cos(node);
    position[2] = y * sin(kInclination);
}

/* Distance from where the satellite was when it sent to where the receiver is, metres. The earth
 * turns while the signal travels. */
static double Range(int satellite, double seconds, const double receiver[3]) {
    double travel = 0.075, sent[3], d[3];
    int i;
    for (i = 0; i < 5; ++i) {
        const double turned = kEarthRotation * travel;
        SatellitePosition(satellite, seconds - travel, sent);
        d[0] = cos(turned) * sent[0] + sin(turned) * sent[1] - receiver[0];
        d[1] = -sin(turned) * sent[0] + cos(turned) * sent[1] - receiver[1];
        d[2] = sent[2] - receiver[2];
        travel = sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]) / kLightSpeed;
    }
    return travel * kLightSpeed;
}

/* Sine of the elevation over the plane that the receiver stands on. */
static double SineOfElevation(int satellite, double seconds, const double receiver[3]) {
    double position[3], up = 0.0, range = 0.0, radius = 0.0;
    int i;
    SatellitePosition(satellite, seconds, position);
    for (i = 0; i < 3; ++i) {
        up += (position[i] - receiver[i]) * receiver[i];
        range += (position[i] - receiver[i]) * (position[i] - receiver[i]);
        radius += receiver[i] * receiver[i];
    }
    return up / sqrt(range * radius);
}

/* Noise of standard deviation 1, the same on every machine: the sum of twelve uniform numbers. */
static double Noise(void) {
    static unsigned int state = 20200625U;
    double sum = -6.0;
    int i;
    for (i = 0; i < 12; ++i) {
        state = (state * 1664525U + 1013904223U) & 0xffffffffU;
        sum += state / 4294967296.0;
    }
    return sum;
}

/* What InputEpochObsData takes of one receiver. */
struct ReceiverEpoch {
    int satellites[kSlots];                /* numbers for all systems; 0 for an empty slot */
    double code1[kSlots], code2[kSlots];   /* metres */
    double phase1[kSlots], phase2[kSlots]; /* cycles */
};

/* The receiver's epoch at a second of the week. Each phase has an unknown count of whole cycles
 * in it, which stays the same: finding these is what the engine is for. */
static void Observe(const double receiver[3], double seconds, int firstCount,
                    struct ReceiverEpoch* epoch) {
    const struct ReceiverEpoch nothing = {{0}, {0.0}, {0.0}, {0.0}, {0.0}};
    const double codeNoise = 0.3, phaseNoise = 0.002; /* metres */
    int satellite, slot = 0;
    *epoch = nothing;
    for (satellite = 0; satellite < kSatellites; ++satellite) {
        const double range = Range(satellite, seconds, receiver);
        if (SineOfElevation(satellite, seconds, receiver) < 0.1) {
            continue;
        }
        epoch->satellites[slot] = satellite + 1; /* GPS has the numbers from 1 on */
        epoch->code1[slot] = range + codeNoise * Noise();
        epoch->code2[slot] = range + codeNoise * Noise();
        epoch->phase1[slot] =
            (range + phaseNoise * Noise()) * kL1 / kLightSpeed + firstCount + 17 * satellite;
        epoch->phase2[slot] =
            (range + phaseNoise * Noise()) * kL2 / kLightSpeed - firstCount + 29 * satellite;
        ++slot;
    }
}

/* ---- the calls, in their order --------------------------------------------------------------- */

/* Every value is that of the default configuration, but for the troposphere: these signals have
 * crossed none. */
static void Configure(void) {
    int systems[4] = {1, 0, 0, 0}; /* GPS, GLONASS, BDS, Galileo */
    const int noTroposphere = 2;
    Require(InputSolveConfig(VORNEL_DEFAULT_SLVMODE, VORNEL_DEFAULT_ELEVATION_MASK, kInterval,
                             VORNEL_DEFAULT_MIN_EPOCHS, VORNEL_DEFAULT_SHORT_BASELINE_LIMIT,
                             VORNEL_DEFAULT_MAX_FIX_BASELINE, VORNEL_DEFAULT_EPHEMERIS_SOURCE,
                             systems, VORNEL_DEFAULT_OUTLIER_FACTOR, VORNEL_DEFAULT_SLIP_TEST_CAP,
                             VORNEL_DEFAULT_RATIO_THRESHOLD, VORNEL_DEFAULT_RESERVED_LIMIT_A,
                             VORNEL_DEFAULT_RESERVED_LIMIT_B, VORNEL_DEFAULT_CODE_STD,
                             VORNEL_DEFAULT_PHASE_STD, VORNEL_DEFAULT_PERIOD_LENGTH, noTroposphere,
                             VORNEL_DEFAULT_PRESSURE, VORNEL_DEFAULT_TEMPERATURE,
                             VORNEL_DEFAULT_HUMIDITY, VORNEL_DEFAULT_RESERVED_MODE, 0, 0.0, 0, 0.0,
                             VORNEL_DEFAULT_GAL_FREQ1, VORNEL_DEFAULT_GAL_FREQ2),
            "InputSolveConfig");
}

/* The base is known; of the rover some tens of metres will do. The antennas stand on the markers
 * and have no offsets. */
static void GiveStations(const double rover[3]) {
    double base[3], roughRover[3], baseL1[3] = {0}, baseL2[3] = {0}, roverL1[3] = {0};
    double roverL2[3] = {0};
    int i;
    for (i = 0; i < 3; ++i) {
        base[i] = kBase[i];
        roughRover[i] = rover[i] + 15.0 * (i - 1);
    }
    Require(InputAntCorrData(roughRover, roverL1, roverL2, 0.0, base, baseL1, baseL2, 0.0),
            "InputAntCorrData");
}

static void GiveOrbits(void) {
    int satellite;
    for (satellite = 0; satellite < kSatellites; ++satellite) {
        const int satId = satellite + 1, healthy = 0;
        Require(
            InputOneSatNavGPS(satId, kWeek, kOrbitTime, 0.0, 0.0, 0.0, sqrt(kOrbitRadius), 0.0,
                              kInclination, NodeLongitude(satellite), 0.0, MeanAnomaly(satellite),
                              0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1, 1.0, kOrbitTime,
                              kWeek, kOrbitTime - 7200.0, 1, healthy, 2.0, 0, 0.0, 4),
            "InputOneSatNavGPS");
    }
}

static void GiveObservations(const double rover[3]) {
    struct ReceiverEpoch r, b;
    int i;
    for (i = 0; i < kEpochs; ++i) {
        const double seconds = kBegin + i * kInterval;
        Observe(rover, seconds, 1000, &r);
        Observe(kBase, seconds, -2000, &b);
        Require(
            InputEpochObsData(kWeek, seconds, r.satellites, r.code1, r.code2, r.phase1, r.phase2,
                              kWeek, seconds, b.satellites, b.code1, b.code2, b.phase1, b.phase2),
            "InputEpochObsData");
    }
}

/* ---- results --------------------------------------------------------------------------------- */

struct Solution {
    double vector[3];        /* rover minus base, ECEF metres */
    double covariance[3][3]; /* of it, m^2 */
    double rms;              /* of the residuals, metres */
    int dof;
};

/* The last fixed solution is the one that the run was after: model 6 files its wide lane before. */
static int GetFixed(int index, struct Solution* s) {
    int mode;
    double length, horizontal, height, factor, neu[9], sigma3, sigmaLength, ppm;
    double(*c)[3] = s->covariance;
    return GetFixedSolBaseData(index, &mode, &s->vector[0], &s->vector[1], &s->vector[2], &length,
                               &horizontal, &height, &s->dof, &factor, &c[0][0], &c[0][1], &c[0][2],
                               &c[1][0], &c[1][1], &c[1][2], &c[2][0], &c[2][1], &c[2][2], &neu[0],
                               &neu[1], &neu[2], &neu[3], &neu[4], &neu[5], &neu[6], &neu[7],
                               &neu[8], &sigma3, &sigmaLength, &ppm, &s->rms);
}

/* How clearly the integers stand out; the list of ambiguities comes with it, which is not wanted
 * here: with a count of 0 none is written. */
static double GetRatio(int index) {
    double ratio = 0.0;
    GetFixedSolAmbListData(index, 0, &ratio, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL,
                           NULL, NULL, NULL, NULL, NULL, NULL, NULL);
    return ratio;
}

static void PrintResiduals(int index) {
    int systems[kSatellites], prns[kSatellites], weeks[kEpochs], millimetres[kEpochs];
    double seconds[kEpochs];
    const int count = GetFixedSolSatList(index, kSatellites, systems, prns);
    int i, k;
    for (i = 0; i < count; ++i) {
        const int firstBlock = 0;
        const int points = GetFixedSolResList(index, systems[i], prns[i], firstBlock, kEpochs,
                                              weeks, seconds, millimetres);
        int largest = 0;
        for (k = 0; k < points; ++k) {
            largest = abs(millimetres[k]) > largest ? abs(millimetres[k]) : largest;
        }
        printf("  G%02d  %2d residuals, the largest %d mm\n", prns[i], points, largest);
    }
}

int main(void) {
    /* 800 m to the east of the base. */
    const double across = sqrt(kBase[0] * kBase[0] + kBase[1] * kBase[1]);
    const double truth[3] = {-800.0 * kBase[1] / across, 800.0 * kBase[0] / across, 0.0};
    double rover[3], error = 0.0, ratio;
    struct Solution solution;
    int status = 0, last, i;

    for (i = 0; i < 3; ++i) {
        rover[i] = kBase[i] + truth[i];
    }
    Require(CreateBLProcess(), "CreateBLProcess");
    Configure();
    GiveStations(rover);
    GiveOrbits();
    GiveObservations(rover);
    Require(StartProcess(&status), "StartProcess");
    printf("status %d, %d float and %d fixed solutions\n", status, GetFloatSolNum(),
           GetFixedSolNum());

    last = GetFixedSolNum() - 1;
    if (last < 0 || GetFixed(last, &solution) == 0) {
        DiposeProcess();
        Stop("no fixed solution");
    }
    ratio = GetRatio(last);
    printf("fixed, ratio %.1f%s, %d degrees of freedom, rms %.4f m\n", ratio,
           ratio > VORNEL_DEFAULT_RATIO_THRESHOLD ? "" : " (the integers are not certain)",
           solution.dof, solution.rms);
    for (i = 0; i < 3; ++i) {
        printf("  %c %12.4f +- %.4f m, made with %12.4f\n", "XYZ"[i], solution.vector[i],
               sqrt(solution.covariance[i][i]), truth[i]);
        error += pow(solution.vector[i] - truth[i], 2.0);
    }
    PrintResiduals(last);
    DiposeProcess();
    return ratio > VORNEL_DEFAULT_RATIO_THRESHOLD && sqrt(error) < 0.005 ? EXIT_SUCCESS
                                                                         : EXIT_FAILURE;
}
