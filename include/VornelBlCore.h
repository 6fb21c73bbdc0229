/*
 * VornelBlCore: static GNSS baselines by carrier-phase double differencing.
 *
 * This header is the whole contract between the engine and a host. It is valid C99 and C++.
 *
 * One run solves one baseline: two receivers, the base and the rover, that did not move while both
 * observed. The host hands over plain numbers, calls StartProcess, and reads the solutions.
 * docs/method.md describes how they are computed.
 *
 * Order of calls
 *   1. CreateBLProcess or CreateBLProcessWithTrace
 *   2. InputSolveConfig, InputAntCorrData          before the first epoch
 *   3. InputIonCorrData, InputOneSatNav..., InputOneSatPreEphValue   before the first epoch
 *   4. InputEpochObsData                           once for each common epoch, in time order
 *   5. MarkDelSatList, AddOneDelSat, CleanSatTrackList, AddOneSatTrackInfo   before StartProcess
 *   6. StartProcess
 *   7. the Get... queries, in any order, any number of times
 *   8. DiposeProcess                               (published under this spelling)
 * InputEpochObsData applies the satellite positions and clocks, the elevation mask, the list of
 * systems and the troposphere model. Changing them later has no effect on epochs already handed
 * over. StartProcess reads everything else, and the list of systems again. StartProcess may be
 * called again: it discards the earlier results and runs on all epochs handed over so far.
 *
 * Process-wide state. There is one process at a time. Ephemerides, ionosphere coefficients and the
 * surface weather remain after DiposeProcess and CreateBLProcess, until the library is unloaded. A
 * second baseline therefore still uses the ephemerides of the first. The trace remains open after
 * CreateBLProcess; DiposeProcess closes it.
 *
 * Threads. The engine starts no thread. Its one lock guards the trace's change of file, so the host
 * makes one call at a time. StartProcess returns when the run has ended.
 *
 * Arguments are trusted. No function checks a pointer, a range, or that a process exists: the host
 * keeps to the ranges below. A value outside them gives a useless result at best, and a call that
 * does not return at worst (the orbit iterations have no limit). Every double is finite.
 * docs/limits.md describes what happens outside the ranges.
 *
 * Memory. Every pointer points to a variable or an array that the host owns. The engine reads or
 * writes it during the call only. Arrays are dense and begin at index 0.
 *
 * Return values. The 17 set-up and run functions return 1, or 0 when an exception (out of memory, a
 * matrix failure) ended the call; data stored before the exception remain. The queries return a
 * count or 1; they return 0 and write nothing when the requested item does not exist. They need a
 * solver object: call them only after StartProcess, and not after one that returned 0 with status
 * 10. An exception inside a query reaches the host.
 *
 * Units: metres, seconds, radians, carrier cycles; GLONASS states in kilometres; residuals in whole
 * millimetres. Frame: earth-centred earth-fixed (ECEF), the frame of the ephemerides (WGS 84).
 *
 * Time: GPS week (not modulo 1024) and seconds of that week, in GPS time unless noted otherwise.
 * All times lie between 1980 and 2100: weeks 0 to 6260, seconds from 0 to below 604800. This also
 * applies to times that have no effect.
 *
 * A satellite is given by system code (VornelSystem) and number in the system, or by one number for
 * all systems (VornelNumbering).
 *
 * A missing observation is 0.0.
 */
#ifndef VORNELBLCORE_H
#define VORNELBLCORE_H

#include <stdbool.h>

#if defined(_WIN32)
#if defined(VORNEL_BUILDING_LIBRARY)
#define VORNEL_API __declspec(dllexport)
#else
#define VORNEL_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define VORNEL_API __attribute__((visibility("default")))
#else
#define VORNEL_API
#endif

#ifdef __cplusplus
extern "C" {
#define VORNEL_NO_ARGUMENTS
#else
#define VORNEL_NO_ARGUMENTS void
#endif

/* ---- numbers that the engine and its hosts share ------------------------------------------------
 * The functions take and give plain int and double; these name the values. */

/* System codes: one bit each. */
enum VornelSystem { VORNEL_GPS = 1, VORNEL_GLONASS = 2, VORNEL_BDS = 4, VORNEL_GALILEO = 8 };

/* Satellites. The number in a system (GPS PRN, GLONASS slot) runs from 1 to the system's count.
 * Plus the system's offset it is the number across the systems: GPS 1 to 35, GLONASS 36 to 67, BDS
 * 68 to 103, Galileo 104 to VORNEL_SATELLITES. */
enum VornelNumbering {
    VORNEL_GPS_COUNT = 35,
    VORNEL_GLONASS_COUNT = 32, /* slots */
    VORNEL_BDS_COUNT = 36,
    VORNEL_GALILEO_COUNT = 32,
    VORNEL_GPS_OFFSET = 0,
    VORNEL_GLONASS_OFFSET = 35,
    VORNEL_BDS_OFFSET = 67,
    VORNEL_GALILEO_OFFSET = 103,
    VORNEL_SATELLITES = 135,
    VORNEL_BDS_GEOSTATIONARY = 5 /* BDS numbers 1 to 5 have geostationary orbits */
};

/* Slots of one receiver in one epoch: the length of the arrays of InputEpochObsData. */
enum VornelEpoch { VORNEL_EPOCH_SLOTS = 64 };

/* Solve models: the phase combination that a run works on. */
enum VornelModel {
    VORNEL_MODEL_AUTOMATIC = 0, /* to be asked for only: the engine chooses */
    VORNEL_MODEL_FIRST = 1,     /* first frequency */
    VORNEL_MODEL_SECOND = 2,    /* second frequency */
    VORNEL_MODEL_BOTH = 3,      /* both, as separate observations */
    VORNEL_MODEL_SUM = 4,       /* sum of the phases in cycles */
    VORNEL_MODEL_WIDE_LANE = 5, /* their difference */
    VORNEL_MODEL_IONO_FREE = 6  /* ionosphere-free, after a run of model 5 */
};

/* Where a run stands, or ended: see StartProcess. For each solve model the float solution, the
 * fixing and the fixed solution have their numbers. */
enum VornelStatus {
    VORNEL_STATUS_CONSTRUCTED = 0,
    VORNEL_STATUS_STARTED = 10, /* at the end: no epochs, or no solver */
    VORNEL_STATUS_NO_PERIOD = 11,
    VORNEL_STATUS_PERIODS_CUT = 12,
    VORNEL_STATUS_NO_REFERENCE = 13, /* no reference satellite in any period */
    VORNEL_STATUS_REFERENCES_CHOSEN = 14,
    VORNEL_STATUS_TRIPLE_FAILED = 20, /* triple-difference solution */
    VORNEL_STATUS_TRIPLE_DONE = 21,

    VORNEL_STATUS_WIDE_LANE_FLOAT_FAILED = 30,
    VORNEL_STATUS_WIDE_LANE_FLOAT_DONE = 31,
    VORNEL_STATUS_IONO_FREE_FLOAT_FAILED = 32,
    VORNEL_STATUS_IONO_FREE_FLOAT_DONE = 33,
    VORNEL_STATUS_SUM_FLOAT_FAILED = 34,
    VORNEL_STATUS_SUM_FLOAT_DONE = 35,
    VORNEL_STATUS_FIRST_FLOAT_FAILED = 40,
    VORNEL_STATUS_FIRST_FLOAT_DONE = 41,
    VORNEL_STATUS_SECOND_FLOAT_FAILED = 42,
    VORNEL_STATUS_SECOND_FLOAT_DONE = 43,
    VORNEL_STATUS_BOTH_FLOAT_FAILED = 44,
    VORNEL_STATUS_BOTH_FLOAT_DONE = 45,

    VORNEL_STATUS_WIDE_LANE_FIXING_FAILED = 50,
    VORNEL_STATUS_WIDE_LANE_RATIO_LOW = 51,
    VORNEL_STATUS_WIDE_LANE_RATIO_PASSED = 52,
    VORNEL_STATUS_IONO_FREE_FIXING_FAILED = 53,
    VORNEL_STATUS_IONO_FREE_RATIO_LOW = 54,
    VORNEL_STATUS_IONO_FREE_RATIO_PASSED = 55,
    VORNEL_STATUS_SUM_FIXING_FAILED = 56,
    VORNEL_STATUS_SUM_RATIO_LOW = 57,
    VORNEL_STATUS_SUM_RATIO_PASSED = 58,
    VORNEL_STATUS_FIRST_FIXING_FAILED = 60,
    VORNEL_STATUS_FIRST_RATIO_LOW = 61,
    VORNEL_STATUS_FIRST_RATIO_PASSED = 62,
    VORNEL_STATUS_SECOND_FIXING_FAILED = 63,
    VORNEL_STATUS_SECOND_RATIO_LOW = 64,
    VORNEL_STATUS_SECOND_RATIO_PASSED = 65,
    VORNEL_STATUS_BOTH_FIXING_FAILED = 66,
    VORNEL_STATUS_BOTH_RATIO_LOW = 67,
    VORNEL_STATUS_BOTH_RATIO_PASSED = 68,

    VORNEL_STATUS_WIDE_LANE_FIXED_FAILED = 70,
    VORNEL_STATUS_WIDE_LANE_FIXED_DONE = 71,
    VORNEL_STATUS_IONO_FREE_FIXED_FAILED = 72,
    VORNEL_STATUS_IONO_FREE_FIXED_DONE = 73,
    VORNEL_STATUS_SUM_FIXED_FAILED = 74,
    VORNEL_STATUS_SUM_FIXED_DONE = 75,
    VORNEL_STATUS_FIRST_FIXED_FAILED = 80,
    VORNEL_STATUS_FIRST_FIXED_DONE = 81,
    VORNEL_STATUS_SECOND_FIXED_FAILED = 82,
    VORNEL_STATUS_SECOND_FIXED_DONE = 83,
    VORNEL_STATUS_BOTH_FIXED_FAILED = 84,
    VORNEL_STATUS_BOTH_FIXED_DONE = 85
};

/* Galileo signals, for galFreq1 and galFreq2. */
enum VornelGalileoSignal {
    VORNEL_GALILEO_E1 = 1,
    VORNEL_GALILEO_E5A = 2,
    VORNEL_GALILEO_E5B = 3,
    VORNEL_GALILEO_E5 = 4,
    VORNEL_GALILEO_E6 = 5
};

/* GLONASS frequency channels. Where the engine has no broadcast ephemeris, as with precise orbits,
 * it takes the channel of a slot from a table: VORNEL_CHANNELS_OF_SLOTS, for slots 1 to
 * VORNEL_CHANNEL_SLOTS, and 0 for those above. */
enum VornelChannel {
    VORNEL_LOWEST_CHANNEL = -7,
    VORNEL_HIGHEST_CHANNEL = 13,
    VORNEL_CHANNEL_SLOTS = 24
};
#define VORNEL_CHANNELS_OF_SLOTS \
    { 1, -4, 5, 6, 1, -4, 5, 6, -2, -7, 0, -1, -2, -7, 0, -1, -6, -3, 3, 2, 4, -3, 3, 2 }

/* Components of the precise tables; how many entries an interpolation takes before the time and
 * from the first entry after it on; the value that stands for a missing one. */
enum VornelPrecise {
    VORNEL_PRECISE_X = 0,
    VORNEL_PRECISE_Y = 1,
    VORNEL_PRECISE_Z = 2,
    VORNEL_PRECISE_CLOCK = 3,
    VORNEL_PRECISE_BEFORE = 5,
    VORNEL_PRECISE_AFTER = 6
};
#define VORNEL_MISSING_PRECISE_VALUE 0.999999999999

/* Broadcast ephemerides: farthest use from the reference time, seconds, bound included. A position
 * of GPS or GLONASS outside the two radii, metres from the earth's centre, bounds excluded, is no
 * orbit. */
#define VORNEL_EPHEMERIS_REACH 14400.0
#define VORNEL_LEAST_ORBIT_RADIUS 15000000.0
#define VORNEL_GREATEST_ORBIT_RADIUS 40000000.0

/* BDS time behind GPS time, seconds. */
#define VORNEL_BDT_OFFSET 14.0

/* Greatest acceptance ratio that a fixed solution reports. */
#define VORNEL_GREATEST_RATIO 99.0

/* The configuration before InputSolveConfig is called, in its units. */
#define VORNEL_DEFAULT_SLVMODE VORNEL_MODEL_AUTOMATIC
#define VORNEL_DEFAULT_ELEVATION_MASK 0.2617993877991494 /* 15 degrees */
#define VORNEL_DEFAULT_SAMPLING_INTERVAL 30.0
#define VORNEL_DEFAULT_MIN_EPOCHS 10
#define VORNEL_DEFAULT_SHORT_BASELINE_LIMIT 10000.0
#define VORNEL_DEFAULT_MAX_FIX_BASELINE 30000.0
#define VORNEL_DEFAULT_EPHEMERIS_SOURCE 0
#define VORNEL_DEFAULT_SYSTEM 1 /* of each system */
#define VORNEL_DEFAULT_OUTLIER_FACTOR 3.5
#define VORNEL_DEFAULT_SLIP_TEST_CAP 0.25
#define VORNEL_DEFAULT_RATIO_THRESHOLD 1.8
#define VORNEL_DEFAULT_RESERVED_LIMIT_A 25.0
#define VORNEL_DEFAULT_RESERVED_LIMIT_B 10.0
#define VORNEL_DEFAULT_CODE_STD 10.0
#define VORNEL_DEFAULT_PHASE_STD 0.01
#define VORNEL_DEFAULT_PERIOD_LENGTH 7200.0
#define VORNEL_DEFAULT_TROPO_MODEL 1
#define VORNEL_DEFAULT_PRESSURE 1013.25
#define VORNEL_DEFAULT_TEMPERATURE 15.0
#define VORNEL_DEFAULT_HUMIDITY 50.0
#define VORNEL_DEFAULT_RESERVED_MODE 1
#define VORNEL_DEFAULT_GAL_FREQ1 VORNEL_GALILEO_E1
#define VORNEL_DEFAULT_GAL_FREQ2 VORNEL_GALILEO_E5A

/* ---- process --------------------------------------------------------------------------------- */

/* Deletes an earlier process with its epochs and results, and creates an empty one with the default
 * configuration. The trace, the ephemerides, the ionosphere coefficients and the surface weather
 * remain. */
VORNEL_API int CreateBLProcess(VORNEL_NO_ARGUMENTS);

/* The same, with a trace log. An open trace is closed first.
 * tracePath   path of the log, overwritten if it exists; at most 1023 characters after expansion.
 *             Keywords are replaced by the time of opening (GPS time): %Y %y %m %d %h %M %S, %n day
 *             of year, %W GPS week, %D day of week, %H hour letter, %ha %hb %hc hour down to 3, 6,
 *             12 hours, %t minute down to 15. With a keyword, each day begins a new file. With an
 *             empty path, or one that cannot be opened, the log goes to the standard error stream.
 * traceLevel  0 to 5; lines of a higher level are not written. Lines of level 1 also go to the
 *             standard error stream, with or without a trace. */
VORNEL_API int CreateBLProcessWithTrace(const char* tracePath, int traceLevel);

/* Deletes the process and its results and closes the trace. Afterwards the first call is a create
 * call again. Without a process it only writes its line to the trace and closes the trace. */
VORNEL_API int DiposeProcess(VORNEL_NO_ARGUMENTS);

/* Runs all stages on the data handed over.
 * status  out: where the run ended, a VornelStatus. The result 1 only means that no exception left
 *         the run.
 * A run ends with 10, 11, 13 or 20, or with a "failed" or a "done" number of its solve model; 12,
 * 14, 21 and the ratio numbers are passed on the way. Model 6 solves the wide lane first, up to 71.
 * 41 and 43 are final when the baseline is too long for fixing one frequency; 71 is final in model
 * 6 when the ratio of the wide lane did not pass. "done" does not depend on the ratio;
 * GetFixedSolAmbListData returns it. After an exception status is the last number reached, and the
 * function returns 0. */
VORNEL_API int StartProcess(int* status);

/* ---- configuration and stations: before the first epoch -------------------------------------- */

/* The defaults are VORNEL_DEFAULT_SLVMODE and its like.
 * slvmode            a VornelModel. Automatic takes 1 on short baselines or when a receiver has one
 *                    frequency, else 6. When a receiver has one frequency, any value but 1 becomes
 *                    automatic. A value outside 0 to 6 has no combination: the run ends with status
 *                    40 at the latest.
 * elevationMask      radians, 0 to pi/2
 * samplingInterval   seconds between epochs, above 0
 * minEpochs          fewest epochs of a period and of a usable satellite arc, 1 or more
 * shortBaselineLimit metres: shorter baselines get model 1 in automatic mode; at most 6000 below
 *                    23.5 degrees of latitude, 5000 below 20 degrees
 * maxFixBaseline     metres: on baselines of this length or longer, models 1 and 2 end with the
 *                    float solution
 * ephemerisSource    0 broadcast, other: precise (InputOneSatPreEphValue)
 * systems            4 ints, GPS, GLONASS, BDS, Galileo: 1 on, 0 off
 * outlierFactor      above 3: residuals of more than this many standard deviations are outliers
 * slipTestCap        cycles: upper bound of the tolerance of the slip test
 * ratioThreshold     acceptance ratio of ambiguity fixing
 * reservedLimitA, reservedLimitB   no effect
 * codeStd            metres; no effect
 * phaseStd           cycles of GPS L1
 * periodLength       seconds: the session is cut into periods of at least this length
 * tropoModel         0 modified Hopfield, 1 Saastamoinen, other: none. The fixed solution always
 *                    uses the MOPS model.
 * pressure, temperature, humidity
 *                    at height 0: hPa, degrees Celsius, percent. Outside 500 to 2000, -50 to 100, 0
 *                    to 100 (bounds excluded) the values 1013.25, 18 and 50 are used. They are also
 *                    used before the first call of this function since the library was loaded;
 *                    later processes keep the values of the last call.
 * reservedMode       no effect
 * sessionStartWeek .. sessionEndSeconds   no effect
 * galFreq1, galFreq2 VornelGalileoSignal. galFreq1 outside it becomes E1; galFreq2 outside it, or
 *                    equal to galFreq1 as passed, becomes E5a. With two equal bands Galileo has no
 *                    second frequency. */
VORNEL_API int InputSolveConfig(int slvmode, double elevationMask, double samplingInterval,
                                int minEpochs, double shortBaselineLimit, double maxFixBaseline,
                                int ephemerisSource, int* systems, double outlierFactor,
                                double slipTestCap, double ratioThreshold, double reservedLimitA,
                                double reservedLimitB, double codeStd, double phaseStd,
                                double periodLength, int tropoModel, double pressure,
                                double temperature, double humidity, int reservedMode,
                                int sessionStartWeek, double sessionStartSeconds,
                                int sessionEndWeek, double sessionEndSeconds, int galFreq1,
                                int galFreq2);

/* Positions and antennas. Without this call both stations are at the earth's centre.
 * xyzPosR, xyzPosB    3 doubles each, ECEF metres: markers of rover and base. Approximate for the
 *                     rover, within tens of metres; exact for the base, where the vector begins.
 *                     1,000 to 100,000 km from the earth's centre
 * l1PcoR .. l2PcoB    3 doubles each, metres: phase centre offset of the antenna from its reference
 *                     point on the first and the second frequency. Only the third value, up, is
 *                     used.
 * trueHgtR, trueHgtB  metres: vertical height of the antenna reference point above the marker */
VORNEL_API int InputAntCorrData(double* xyzPosR, double* l1PcoR, double* l2PcoR, double trueHgtR,
                                double* xyzPosB, double* l1PcoB, double* l2PcoB, double trueHgtB);

/* ---- ionosphere and ephemerides: before the first epoch -------------------------------------- */

/* The 8 coefficients of the GPS broadcast ionosphere model: alpha 4 doubles in seconds and seconds
 * per semicircle to the powers 1 to 3, beta likewise. Without this call a fixed diurnal model is
 * used. Process-wide: the coefficients remain until the library is unloaded or others are given. */
VORNEL_API int InputIonCorrData(double* alpha, double* beta);

/* One broadcast ephemeris of GPS, BDS or Galileo. It replaces a record of the same satellite and
 * reference time. Records with a health other than 0 are not used, nor any record further than
 * VORNEL_EPHEMERIS_REACH from its toe.
 *
 * Bounds: af0 within +-1 s, af1 +-1e-3 s/s, af2 +-1e-6 s/s^2; e 0 to 0.5; sqrtA 1000 to 10000 (root
 * of metres); angles (i0, omega0, omega, m0, cuc, cus, cic, cis) within +-7 rad; deltaN, omegaDot,
 * idot within +-1e-3 rad/s. Outside these bounds the orbit iteration may not end.
 *
 * satId         number in the system
 * tocWeek, tocSeconds   clock reference time, seconds of the week
 * af0, af1, af2 clock polynomial, s, s/s, s/s^2
 * sqrtA .. cis  orbit elements in radians and metres: root of the semi-major axis, eccentricity,
 *               inclination, node longitude at the week's start, argument of perigee, mean anomaly,
 *               mean motion difference, rates of node and inclination, harmonic corrections
 * iode, iodc    issues of data; no effect
 * toe, toeWeek  reference time of the orbit: seconds of the week, and the week
 * transmitTime, l2Codes, accuracy, l2PFlag, tgd, fitInterval   no effect (tgd in seconds)
 * health        0 when usable
 *
 * Time scale and week: GPS in GPS time. Galileo in Galileo system time, taken as GPS time, weeks
 * counted from the GPS origin. BDS: seconds in BDS time as broadcast (VORNEL_BDT_OFFSET behind GPS
 * time), weeks counted from the GPS origin (BDT week + 1356). */
VORNEL_API int InputOneSatNavGPS(int satId, int tocWeek, double tocSeconds, double af0, double af1,
                                 double af2, double sqrtA, double e, double i0, double omega0,
                                 double omega, double m0, double deltaN, double omegaDot,
                                 double idot, double crc, double crs, double cuc, double cus,
                                 double cic, double cis, int iode, double iodc, double toe,
                                 int toeWeek, double transmitTime, int l2Codes, int health,
                                 double accuracy, int l2PFlag, double tgd, int fitInterval);

/* BDS: as GPS, with a second group delay. Satellites 1 to VORNEL_BDS_GEOSTATIONARY are treated as
 * geostationary. */
VORNEL_API int InputOneSatNavBDS(int satId, int tocWeek, double tocSeconds, double af0, double af1,
                                 double af2, double sqrtA, double e, double i0, double omega0,
                                 double omega, double m0, double deltaN, double omegaDot,
                                 double idot, double crc, double crs, double cuc, double cus,
                                 double cic, double cis, int iode, double iodc, double toe,
                                 int toeWeek, double transmitTime, int l2Codes, int health,
                                 double accuracy, int l2PFlag, double tgd, double tgd2,
                                 int fitInterval);

/* Galileo: as BDS (tgd, tgd2: the two broadcast group delays). */
VORNEL_API int InputOneSatNavGAL(int satId, int tocWeek, double tocSeconds, double af0, double af1,
                                 double af2, double sqrtA, double e, double i0, double omega0,
                                 double omega, double m0, double deltaN, double omegaDot,
                                 double idot, double crc, double crs, double cuc, double cus,
                                 double cic, double cis, int iode, double iodc, double toe,
                                 int toeWeek, double transmitTime, int l2Codes, int health,
                                 double accuracy, int l2PFlag, double tgd, double tgd2,
                                 int fitInterval);

/* One GLONASS broadcast ephemeris. It replaces a record of the same slot and reference time. It is
 * used up to VORNEL_EPHEMERIS_REACH from its reference time. Health is not tested: the host leaves
 * out unhealthy records.
 *
 * slot          1 to VORNEL_GLONASS_COUNT
 * week, seconds reference time as UTC date and time of day, counted in weeks and seconds from the
 *               GPS origin, so that GPS time - (week, seconds) - leapSeconds is the time since the
 *               reference. 2000-01-01 00:00:00 (week 1042, 518400.0 s) means "no date", and
 *               tbSeconds is used
 * tbSeconds     reference time, seconds of the day
 * clockBias     s, satellite clock minus system time (-tauN, as RINEX files hold it), within +-1
 * clockDrift    s/s, of the same sign, within +-1e-3
 * x .. az       state in the earth-fixed frame: km, km/s, km/s^2 (acceleration of moon and sun);
 *               15,000 to 40,000 km from the centre
 * channel       frequency channel, VORNEL_LOWEST_CHANNEL to VORNEL_HIGHEST_CHANNEL
 * health, age, spare1, spare2   no effect
 * leapSeconds   GPS time minus UTC on the day of the reference time, 0 to 100 */
VORNEL_API int InputOneSatNavGLO(int slot, int week, double seconds, double spare2,
                                 double tbSeconds, double spare1, double clockBias,
                                 double clockDrift, double x, double y, double z, double vx,
                                 double vy, double vz, double ax, double ay, double az, int health,
                                 int channel, int age, int leapSeconds);

/* Tabulated precise values of one component of one satellite.
 * component  VORNEL_PRECISE_X, Y, Z (metres, ECEF) or CLOCK (seconds); with any other nothing is
 *            stored
 * system, prn   code and number; with an invalid pair nothing is stored
 * count      entries of each of the three arrays; below 1 nothing is stored
 * weeks, seconds   GPS time, ascending, also from call to call
 * values     positions within +-1e8, clocks within +-1, VORNEL_MISSING_PRECISE_VALUE where missing.
 *            Two neighbouring steps between entries differ by at most half of the shorter one; put
 *            an entry of missing values into a longer gap
 * A position is interpolated from VORNEL_PRECISE_BEFORE entries up to the time, and
 * VORNEL_PRECISE_AFTER after it. Closer to an end of the table the satellite has no orbit. */
VORNEL_API int InputOneSatPreEphValue(int component, int system, int prn, int count, int* weeks,
                                      double* seconds, double* values);

/* ---- observations ---------------------------------------------------------------------------- */

/* One common epoch, rover then base, in time order.
 * week.., seconds..   time tag of each receiver, GPS time; the two at most 0.1 s apart
 * satNumbers..        VORNEL_EPOCH_SLOTS ints: satellite number for all systems; any value that is
 *                     none marks an empty slot
 * p1.. p2.. l1.. l2.. VORNEL_EPOCH_SLOTS doubles each, by slot: code in metres and carrier phase in
 *                     cycles on the first and the second signal; 0.0 where missing
 * Signals: GPS L1, L2; GLONASS G1, G2; BDS B1I (1561.098 MHz) and 1207.14 MHz; Galileo by galFreq1,
 * galFreq2. Codes lie between 1e6 and 1e9 m, phases within +-1e12 cycles. A phase without its code
 * is not used. The epoch of the difference is the mean of the two seconds of the week, rounded to a
 * whole second, in the week of the base: both tags lie in the same week. */
VORNEL_API int InputEpochObsData(int weekR, double secondsR, int* satNumbersR, double* p1R,
                                 double* p2R, double* l1R, double* l2R, int weekB, double secondsB,
                                 int* satNumbersB, double* p1B, double* p2B, double* l1B,
                                 double* l2B);

/* ---- leaving satellites out: any time before StartProcess ------------------------------------ */

/* Replaces the list of satellites to leave out by count pairs; a count below 1 empties the list. */
VORNEL_API int MarkDelSatList(int count, int* systems, int* prns);

/* Adds a satellite to that list, unless the list has it. */
VORNEL_API int AddOneDelSat(int system, int prn);

/* Empties the three track lists. */
VORNEL_API int CleanSatTrackList(VORNEL_NO_ARGUMENTS);

/* Adds a track: spans of time in which a satellite is left out. All three lists have this meaning.
 * If the list has the satellite, its entry and every entry added after it are removed first.
 * listIndex  0 to 2; with any other nothing is stored
 * system, prn   with an invalid pair nothing is stored
 * isActive   other than 0: the satellite is left out at every epoch
 * startWeek .. endSeconds, value   no effect
 * gapCount   entries of each of the four arrays; below 1: none. Both ends belong to the gap */
VORNEL_API int AddOneSatTrackInfo(int listIndex, int system, int prn, int isActive, int startWeek,
                                  double startSeconds, int endWeek, double endSeconds, double value,
                                  int gapCount, int* gapStartWeeks, double* gapStartSeconds,
                                  int* gapEndWeeks, double* gapEndSeconds);

/* ---- results: after StartProcess ------------------------------------------------------------- */

/* solveModel  out: the solve model that the run took
 * flagA .. code, value0 .. value9   out: reserved; false, 2 and 0.0
 * unusedA, unusedB   not used, may be null */
VORNEL_API void GetSolveResultsBaseData(int* solveModel, bool* flagA, bool* flagB, bool* flagC,
                                        int* code, void* unusedA, void* unusedB, double* value0,
                                        double* value1, double* value2, double* value3,
                                        double* value4, double* value5, double* value6,
                                        double* value7, double* value8, double* value9);

/* The outputs that describe one solution:
 * mode               solve model (triple difference: 1, 2, or 3 for any other); 0: nothing filed
 * dX, dY, dZ         baseline vector, rover minus base, ECEF metres
 * length             metres
 * horizontalDistance the same value as length; 0 in the triple difference
 * heightDifference   always 0.0
 * dof                degrees of freedom
 * varianceFactor     squared ratio of the standard deviations of unit weight, estimated to assumed
 * xyz00 .. xyz22     covariance of the vector, m^2, by rows; formal, as are all qualities below
 * neu00 .. neu22     the same in north, east, up at the rover
 * sigma3             root of the trace of the covariance, metres
 * sigmaLength        standard deviation of the length, metres, from the variances alone
 * relativeAccuracy   sigma3 / length, parts per million
 * rms                of the residuals, metres */
#define VORNEL_BASE_DATA_BLOCK                                                                    \
    int *mode, double *dX, double *dY, double *dZ, double *length, double *horizontalDistance,    \
        double *heightDifference, int *dof, double *varianceFactor, double *xyz00, double *xyz01, \
        double *xyz02, double *xyz10, double *xyz11, double *xyz12, double *xyz20, double *xyz21, \
        double *xyz22, double *neu00, double *neu01, double *neu02, double *neu10, double *neu11, \
        double *neu12, double *neu20, double *neu21, double *neu22, double *sigma3,               \
        double *sigmaLength, double *relativeAccuracy, double *rms

/* The output arrays that describe the ambiguities of a solution, one slot each, maxCount long:
 * systems, prns                 satellite
 * firstEpochs, lastEpochs       indices of the first and last epoch handed over, from 0, inclusive
 * firstWeeks .. lastSeconds     their times
 * rms1, rms2                    of the residuals, metres, in the first and (model 3) second
 *                               frequency block; -99.99 in a fixed solution for a track without
 *                               rows
 * rows1, rows2                  rows used
 * rejected1, rejected2          rows rejected as outliers
 * values1, values2              ambiguity, cycles: real in a float solution, integer in a fixed
 *                               one */
#define VORNEL_AMBIGUITY_ARRAYS                                                                \
    int *systems, int *prns, int *firstEpochs, int *lastEpochs, int *firstWeeks,               \
        double *firstSeconds, int *lastWeeks, double *lastSeconds, double *rms1, double *rms2, \
        int *rows1, int *rows2, int *rejected1, int *rejected2, double *values1, double *values2

/* The triple-difference solution. Without one all outputs are zero; the result is 1 in any case. */
VORNEL_API int GetTripDiffSol(VORNEL_BASE_DATA_BLOCK);

/* Solutions by index, from 0, in the order in which the run stored them. An index outside the list
 * returns 0 and writes nothing. */
VORNEL_API int GetFloatSolNum(VORNEL_NO_ARGUMENTS);
VORNEL_API int GetFixedSolNum(VORNEL_NO_ARGUMENTS);

/* modes: out, solve models of the solutions in list order, at most maxCount */
VORNEL_API void GetFloatSolNumAndMode(int maxCount, int* modes);
VORNEL_API void GetFixedSolNumAndMode(int maxCount, int* modes);

/* Number of satellites that have residuals. */
VORNEL_API int GetFloatSolSatNum(int index);
VORNEL_API int GetFixedSolSatNum(int index);

/* systems, prns: out, these satellites, at most maxCount; returns how many were written. */
VORNEL_API int GetFloatSolSatList(int index, int maxCount, int* systems, int* prns);
VORNEL_API int GetFixedSolSatList(int index, int maxCount, int* systems, int* prns);

/* Number of residuals of a satellite. kind 0: first frequency block, 1: second (model 3); 0 for any
 * other kind. */
VORNEL_API int GetFloatSolResListSize(int index, int system, int prn, int kind);
VORNEL_API int GetFixedSolResListSize(int index, int system, int prn, int kind);

/* weeks, seconds, valuesMm: out, time and double-difference residual, truncated to whole
 * millimetres, at most maxCount; returns how many were written. */
VORNEL_API int GetFloatSolResList(int index, int system, int prn, int kind, int maxCount,
                                  int* weeks, double* seconds, int* valuesMm);
VORNEL_API int GetFixedSolResList(int index, int system, int prn, int kind, int maxCount,
                                  int* weeks, double* seconds, int* valuesMm);

VORNEL_API int GetFloatSolBaseData(int index, VORNEL_BASE_DATA_BLOCK);
VORNEL_API int GetFixedSolBaseData(int index, VORNEL_BASE_DATA_BLOCK);

/* Number of ambiguities; in model 3 one entry holds both frequencies of a track. */
VORNEL_API int GetFloatSolAmbNum(int index);
VORNEL_API int GetFixedSolAmbNum(int index);

/* At most maxCount ambiguities; returns how many were written.
 * ratio  out: acceptance ratio of the fixing, 1 to VORNEL_GREATEST_RATIO; also written when
 *        maxCount is 0 or when there are no ambiguities */
VORNEL_API int GetFloatSolAmbListData(int index, int maxCount, VORNEL_AMBIGUITY_ARRAYS);
VORNEL_API int GetFixedSolAmbListData(int index, int maxCount, double* ratio,
                                      VORNEL_AMBIGUITY_ARRAYS);

/* variances: out, maxCount doubles. The first ones become the variances of the float ambiguities,
 * cycles squared, in list order, the others 0.0. In model 3 there are twice as many, in another
 * order. Returns the number of variances written. */
VORNEL_API int GetFloatAmbCov(int index, int maxCount, double* variances);

/* The same by solve model, 1 to 6: the first solution of that model. Without one the result is 0,
 * and nothing is written. */
VORNEL_API int GetModeFloatSolSatNum(int mode);
VORNEL_API int GetModeFixedSolSatNum(int mode);
VORNEL_API int GetModeFixedSolSatList(int mode, int maxCount, int* systems, int* prns);
VORNEL_API int GetModeFloatSolResListSize(int mode, int system, int prn, int kind);
VORNEL_API int GetModeFixedSolResListSize(int mode, int system, int prn, int kind);
VORNEL_API int GetModeFloatSolResList(int mode, int system, int prn, int kind, int maxCount,
                                      int* weeks, double* seconds, int* valuesMm);
VORNEL_API int GetModeFixedSolResList(int mode, int system, int prn, int kind, int maxCount,
                                      int* weeks, double* seconds, int* valuesMm);
/* mode: in, the solve model asked for; out, the mode of the record. */
VORNEL_API int GetModeFloatSolBaseData(VORNEL_BASE_DATA_BLOCK);
VORNEL_API int GetModeFixedSolBaseData(VORNEL_BASE_DATA_BLOCK);

#ifdef __cplusplus
}
#endif

#endif /* VORNELBLCORE_H */
