/*
 * VornelBlCore: static GNSS baselines by carrier-phase double differencing.
 *
 * This header is the whole contract between the engine and a host. It is C99 and C++.
 *
 * One run handles one baseline: two receivers, the base and the rover, that stood still at the same
 * time. The host hands over plain numbers, calls StartProcess, and reads the solutions.
 *
 * Order of calls
 *   1. CreateBLProcess or CreateBLProcessWithTrace
 *   2. InputSolveConfig, InputAntCorrData          before the first epoch
 *   3. InputIonCorrData, InputOneSatNav..., InputOneSatPreEphValue   before the first epoch
 *   4. InputEpochObsData                           once for each common epoch, in time order
 *   5. MarkDelSatList, AddOneDelSat, CleanSatTrackList, AddOneSatTrackInfo   before StartProcess
 *   6. StartProcess
 *   7. the Get... queries, as often and in any order
 *   8. DiposeProcess                               (the name is spelt so)
 * Satellite positions and clocks, the elevation mask, the list of systems and the troposphere
 * model are applied when an epoch is handed over, and not worked out anew for the epochs that came
 * before. All else is read at StartProcess, and the list of systems once more. StartProcess may be
 * called again: it discards the earlier results and runs on all that has been handed over.
 *
 * Process-wide state. There is one process at a time. Ephemerides, ionosphere coefficients and the
 * surface weather outlive DiposeProcess and CreateBLProcess; they go when the library is unloaded.
 * A second baseline in one process therefore still sees the ephemerides of the first. The trace
 * outlives CreateBLProcess; DiposeProcess closes it.
 *
 * Threads. The engine starts none and locks nothing but the trace's change of file: one call at a
 * time. StartProcess runs to its
 * end on the caller's thread.
 *
 * Arguments are trusted. Nothing tests a pointer or that a process exists; the ranges below
 * are the host's duty. Where a bound is given, a value outside it gives a useless result at
 * best and no return at worst (the orbit iterations have no limit of their own). Every double is
 * finite. docs/limits.md tells what happens beyond the bounds.
 *
 * Memory. Every pointer is to a variable or an array of the host, which owns it; it is read or
 * written during the call only. Arrays are dense, index 0 first.
 *
 * Return values. The 17 set-up and run functions return 1, or 0 when an exception (out of memory, a
 * matrix failure) ended the call; what the call had stored by then stays. The queries return a
 * count or 1, and 0 with nothing written when the thing asked for does not exist; they need a
 * solver object, so they are valid only after a StartProcess, not after one that returned 0 with
 * status 10, and an exception inside one reaches the host.
 *
 * Units: metres, seconds, radians, carrier cycles; GLONASS states in kilometres; residuals in whole
 * millimetres. Frame: earth-centred earth-fixed (ECEF), the frame of the ephemerides (WGS 84).
 *
 * Time: GPS week (not modulo 1024) and seconds of that week, in GPS time unless said otherwise.
 * All times lie between 1980 and 2100: weeks 0 to 6260, seconds 0 to below 604800. That holds for
 * times that are kept without effect, too.
 *
 * Satellites go by system code and number in the system, or by one number across the systems:
 *
 *   system    code   number in the system   number across the systems
 *   GPS         1        1 to 35                1 to 35
 *   GLONASS     2        1 to 32               36 to 67    (slot + 35)
 *   BDS         4        1 to 36               68 to 103   (number + 67)
 *   Galileo     8        1 to 32              104 to 135   (number + 103)
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

/* ---- process --------------------------------------------------------------------------------- */

/* Starts over: deletes an earlier process with its epochs and results, and makes an empty one with
 * the default configuration. The trace, the ephemerides, the ionosphere and the surface
 * weather stay as they are. */
VORNEL_API int CreateBLProcess(VORNEL_NO_ARGUMENTS);

/* The same, with a trace log. An open trace is closed first.
 * tracePath   path of the log, overwritten if it exists; at most 1023 characters after expansion.
 *             Keywords are replaced by the time of opening (GPS time): %Y %y %m %d %h %M %S, %n day
 *             of year, %W GPS week, %D day of week, %H hour letter, %ha %hb %hc hour down to 3, 6,
 *             12 hours, %t minute down to 15; with such a keyword a new file is begun each day.
 *             An empty path, or one that can't be opened, logs to the standard error stream.
 * traceLevel  0 to 5; lines above it are left out. Lines of level 1 go to the standard error
 *             stream as well, with or without a trace. */
VORNEL_API int CreateBLProcessWithTrace(const char* tracePath, int traceLevel);

/* Deletes the process and its results and closes the trace. A create call must come before anything
 * else; without a process it only writes its line to the trace and closes that. */
VORNEL_API int DiposeProcess(VORNEL_NO_ARGUMENTS);

/* Runs the whole chain on what has been handed over.
 * status  out: where the run ended. 1 as the function's result only says that no exception escaped.
 *     10      no epochs, or no solver        11      no period
 *     12      (passing) periods cut          13      no reference satellite in any period
 *     14      (passing) references chosen    20      no triple-difference solution
 *     21      (passing) triple difference done
 *     Then, for each solve model (see slvmode), a number for
 *               float failed, done   fixing failed, ratio low, passed   fixed failed, done
 *     model 1       40, 41                60, 61, 62                       80, 81
 *     model 2       42, 43                63, 64, 65                       82, 83
 *     model 3       44, 45                66, 67, 68                       84, 85
 *     model 4       34, 35                56, 57, 58                       74, 75
 *     model 5       30, 31                50, 51, 52                       70, 71
 *     model 6       32, 33                53, 54, 55                       72, 73   (after 71)
 * A run ends with a failed or a done number. 41 or 43 is final when the baseline is too long for a
 * single-frequency fix; 71 in model 6 when the wide lane's ratio did not pass. "done" says nothing
 * of the ratio: read it with GetFixedSolAmbListData. After an exception the last number reached is
 * given, and the function's result is 0. */
VORNEL_API int StartProcess(int* status);

/* ---- configuration and stations: before the first epoch -------------------------------------- */

/* slvmode            0 automatic, or a solve model: 1 first frequency, 2 second frequency, 3 both
 *                    as separate observations, 4 their sum, 5 wide lane (difference), 6 wide lane,
 *                    then ionosphere-free. Automatic takes 1 on short baselines or when a receiver
 *                    has one frequency, else 6. Any value but 1 falls back on automatic when a
 *                    receiver has one frequency; otherwise one outside 0 to 6 has no combination,
 *                    and the run ends with status 40 at the latest.
 * elevationMask      radians, 0 to pi/2 (default 0.2618)
 * samplingInterval   seconds between epochs, above 0 (30)
 * minEpochs          fewest epochs of a period and of a usable satellite arc, 1 or more (10)
 * shortBaselineLimit metres (10000): below it automatic takes model 1; cut to 6000 below 23.5
 *                    degrees of latitude and to 5000 below 20
 * maxFixBaseline     metres (30000): from here on models 1 and 2 end with the float solution
 * ephemerisSource    0 broadcast, other: precise (InputOneSatPreEphValue)
 * systems            4 ints, GPS, GLONASS, BDS, Galileo: 1 on, 0 off
 * outlierFactor      a residual beyond this many standard deviations is an outlier, above 3 (3.5)
 * slipTestCap        cycles: upper bound of the tolerance of the slip test (0.25)
 * ratioThreshold     acceptance ratio of ambiguity fixing (1.8)
 * reservedLimitA, reservedLimitB   kept, no effect (25, 10)
 * codeStd            metres (10); no effect on a run
 * phaseStd           cycles of GPS L1 (0.01)
 * periodLength       seconds: the session is cut into periods of at least this length (7200)
 * tropoModel         0 modified Hopfield, 1 Saastamoinen (1), other: none. The fixed solution
 *                    always uses the MOPS model.
 * pressure, temperature, humidity
 *                    at the surface: hPa (1013.25), degrees Celsius (15), percent (50). Outside
 *                    500 to 2000, -50 to 100, 0 to 100 (bounds excluded) the values 1013.25, 18
 *                    and 50 are used; without this call, those too, or what the last call of
 *                    the process's life gave.
 * reservedMode       no effect on a run (1)
 * sessionStartWeek .. sessionEndSeconds   kept, no effect
 * galFreq1, galFreq2 Galileo signals: 1 E1, 2 E5a, 3 E5b, 4 E5, 5 E6. galFreq1 outside 1 to 5
 *                    becomes 1; galFreq2 outside 1 to 5, or equal to galFreq1 as passed, becomes
 *                    2. Two equal bands leave Galileo without a second frequency. */
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

/* Approximate positions and antennas. Without this call both stations stand at the earth's centre.
 * xyzPosR, xyzPosB    3 doubles, ECEF metres of the marker of rover and base, approximate for the
 *                     rover (tens of metres do), exact for the base: the vector starts there.
 *                     1,000 to 100,000 km from the earth's centre
 * l1PcoR .. l2PcoB    3 doubles each, metres: phase centre offset of the antenna on the first and
 *                     the second frequency from its reference point. Only the third, up, is used.
 * trueHgtR, trueHgtB  metres: vertical height of the antenna reference point above the marker */
VORNEL_API int InputAntCorrData(double* xyzPosR, double* l1PcoR, double* l2PcoR, double trueHgtR,
                                double* xyzPosB, double* l1PcoB, double* l2PcoB, double trueHgtB);

/* ---- ionosphere and ephemerides: before the first epoch -------------------------------------- */

/* The 8 coefficients of the GPS broadcast ionosphere model: alpha 4 doubles in seconds and seconds
 * per semicircle to the powers 1 to 3, beta likewise. Without this call a fixed diurnal model
 * serves. Process-wide: once given, in force until the library is unloaded or another set comes. */
VORNEL_API int InputIonCorrData(double* alpha, double* beta);

/* One broadcast ephemeris of GPS, BDS or Galileo. A record of the same satellite and reference time
 * is replaced. Only records with health 0 are used, at most 14400 s from toe.
 *
 * Bounds: af0 within +-1 s, af1 +-1e-3 s/s, af2 +-1e-6 s/s^2; e 0 to 0.5; sqrtA 1000 to 10000 (root of metres); angles (i0,
 * omega0, omega, m0, cuc, cus, cic, cis) within +-7 rad; deltaN, omegaDot, idot within +-1e-3
 * rad/s. Beyond these the orbit iteration may never end.
 *
 * satId         number in the system, 1 to 35, 36, 32 (GPS, BDS, Galileo)
 * tocWeek, tocSeconds   clock reference time, seconds of the week
 * af0, af1, af2 clock polynomial, s, s/s, s/s^2
 * sqrtA .. cis  orbit elements in radians and metres: root of the semi-major axis, eccentricity,
 *               inclination, node longitude at the week's start, argument of perigee, mean anomaly,
 *               mean motion difference, rates of node and inclination, harmonic corrections
 * iode, iodc    issues of data; kept
 * toe, toeWeek  reference time of the orbit: seconds of the week, and the week
 * transmitTime, l2Codes, accuracy, l2PFlag, tgd, fitInterval   kept, no effect (tgd in seconds)
 * health        0 when usable
 *
 * Time scale and week: GPS in GPS time. Galileo in Galileo system time, taken as GPS time, weeks
 * counted from the GPS origin. BDS: seconds in BDS time as broadcast (BDT = GPS time - 14 s), weeks
 * counted from the GPS origin (BDT week + 1356). */
VORNEL_API int InputOneSatNavGPS(int satId, int tocWeek, double tocSeconds, double af0, double af1,
                                 double af2, double sqrtA, double e, double i0, double omega0,
                                 double omega, double m0, double deltaN, double omegaDot,
                                 double idot, double crc, double crs, double cuc, double cus,
                                 double cic, double cis, int iode, double iodc, double toe,
                                 int toeWeek, double transmitTime, int l2Codes, int health,
                                 double accuracy, int l2PFlag, double tgd, int fitInterval);

/* BDS: as GPS, with a second group delay. Satellites 1 to 5 are taken as geostationary. */
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

/* One GLONASS broadcast ephemeris. A record of the same slot and reference time is replaced. Used
 * at most 14400 s from the reference time; health is not tested, so the host leaves out what is
 * unusable.
 *
 * slot          1 to 32
 * week, seconds reference time as UTC date and time of day, counted in weeks and seconds from the
 *               GPS origin, so that GPS time - (week, seconds) - leapSeconds is the time since the
 *               reference. 2000-01-01 00:00:00 (week 1042, 518400.0 s) means "no date": tbSeconds
 *               then serves
 * tbSeconds     reference time, seconds of the day
 * clockBias     s, satellite clock minus system time (-tauN, as RINEX files hold it), within +-1
 * clockDrift    s/s, of the same sign, within +-1e-3
 * x .. az       state in the earth-fixed frame: km, km/s, km/s^2 (acceleration of moon and sun);
 *               15,000 to 40,000 km from the centre
 * channel       frequency channel, -7 to 13
 * health, age, spare1, spare2   kept, no effect
 * leapSeconds   GPS time minus UTC on the day of the reference time, 0 to 100 */
VORNEL_API int InputOneSatNavGLO(int slot, int week, double seconds, double spare2,
                                 double tbSeconds, double spare1, double clockBias,
                                 double clockDrift, double x, double y, double z, double vx,
                                 double vy, double vz, double ax, double ay, double az, int health,
                                 int channel, int age, int leapSeconds);

/* Tabulated precise values of one component of one satellite.
 * component  0 X, 1 Y, 2 Z (metres, ECEF), 3 clock (seconds); any other stores nothing
 * system, prn   code and number; an invalid pair stores nothing
 * count      entries of the three arrays; below 1 stores nothing
 * weeks, seconds   GPS time, ascending, also over several calls
 * values     0.999999999999 for a missing value; else positions within +-1e8, clocks within +-1.
 *            Where no value is missing, the steps from entry to entry differ by no more than half
 *            of the shorter one: an entry of missing values parts what lies further apart
 * A position is interpolated between 11 entries, five before and six from the first entry after the
 * time on; nearer to the ends of the table than that the satellite has no orbit. */
VORNEL_API int InputOneSatPreEphValue(int component, int system, int prn, int count, int* weeks,
                                      double* seconds, double* values);

/* ---- observations ---------------------------------------------------------------------------- */

/* One common epoch, rover then base, in time order.
 * week.., seconds..   time tag of each receiver, GPS time; the two at most 0.1 s apart
 * satNumbers..        64 ints: number across the systems; any value outside 1 to 135 for an empty
 *                     slot
 * p1.. p2.. l1.. l2.. 64 doubles each, by slot: code in metres and carrier phase in cycles on the
 *                     first and the second signal; 0.0 where missing
 * Signals: GPS L1, L2; GLONASS G1, G2; BDS B1I (1561.098 MHz) and 1207.14 MHz; Galileo by galFreq1,
 * galFreq2. Code values lie between 1e6 and 1e9 m, phases within +-1e12 cycles. The epoch of the difference is the mean of the
 * two seconds of the week, rounded to a whole second, with the week of the base: both tags lie in
 * one week. */
VORNEL_API int InputEpochObsData(int weekR, double secondsR, int* satNumbersR, double* p1R,
                                 double* p2R, double* l1R, double* l2R, int weekB, double secondsB,
                                 int* satNumbersB, double* p1B, double* p2B, double* l1B,
                                 double* l2B);

/* ---- leaving satellites out: any time before StartProcess ------------------------------------ */

/* Replaces the list of satellites to ignore by count pairs; a count below 1 empties it. */
VORNEL_API int MarkDelSatList(int count, int* systems, int* prns);

/* Adds one satellite to that list, unless it stands there. */
VORNEL_API int AddOneDelSat(int system, int prn);

/* Empties the three track lists. */
VORNEL_API int CleanSatTrackList(VORNEL_NO_ARGUMENTS);

/* Adds a track: spans of time in which a satellite is left out. The three lists mean the same.
 * Adding a satellite to a list that holds it removes its entry and every entry added after that
 * one.
 * listIndex  0 to 2, any other stores nothing
 * system, prn   an invalid pair stores nothing
 * isActive   other than 0: the satellite is left out at every epoch
 * startWeek .. endSeconds, value   kept, no effect
 * gapCount   entries of the four arrays, below 1: none; both ends of a gap count as inside */
VORNEL_API int AddOneSatTrackInfo(int listIndex, int system, int prn, int isActive, int startWeek,
                                  double startSeconds, int endWeek, double endSeconds, double value,
                                  int gapCount, int* gapStartWeeks, double* gapStartSeconds,
                                  int* gapEndWeeks, double* gapEndSeconds);

/* ---- results: after StartProcess ------------------------------------------------------------- */

/* solveModel  out: the solve model that the run took
 * flagA .. code, value0 .. value9   out: reserved; false, 2 and 0.0
 * unusedA, unusedB   not touched, may be null */
VORNEL_API void GetSolveResultsBaseData(int* solveModel, bool* flagA, bool* flagB, bool* flagC,
                                        int* code, void* unusedA, void* unusedB, double* value0,
                                        double* value1, double* value2, double* value3,
                                        double* value4, double* value5, double* value6,
                                        double* value7, double* value8, double* value9);

/* The outputs that describe one solution:
 * mode               solve model (triple difference: 1, 2, or 3 for any other); 0: nothing filed
 * dX, dY, dZ         baseline vector, rover minus base, ECEF metres
 * length             metres
 * horizontalDistance the same, but 0 in the triple difference
 * heightDifference   0.0 always
 * dof                degrees of freedom
 * varianceFactor     squared ratio of the standard deviation of unit weight found to the one
 *                    assumed
 * xyz00 .. xyz22     covariance of the vector, m^2, by rows
 * neu00 .. neu22     the same in north, east, up at the rover
 * sigma3             root of the trace of the covariance, metres
 * sigmaLength        standard deviation of the length, metres
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
 *                               frequency block; -99.99 in a fixed solution for a track with no
 *                               rows
 * rows1, rows2                  rows used
 * rejected1, rejected2          rows rejected as outliers
 * values1, values2              ambiguity, cycles: real in a float solution, integer in a fixed
 *                               one */
#define VORNEL_AMBIGUITY_ARRAYS                                                                \
    int *systems, int *prns, int *firstEpochs, int *lastEpochs, int *firstWeeks,               \
        double *firstSeconds, int *lastWeeks, double *lastSeconds, double *rms1, double *rms2, \
        int *rows1, int *rows2, int *rejected1, int *rejected2, double *values1, double *values2

/* The triple-difference solution; zeros and 1 as the result when there is none. */
VORNEL_API int GetTripDiffSol(VORNEL_BASE_DATA_BLOCK);

/* Solutions by position: index from 0, in the order in which they were filed. An index outside the
 * list gives 0 and writes nothing. */
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

/* Number of residuals of a satellite. kind 0 first frequency block, 1 second (model 3); else 0. */
VORNEL_API int GetFloatSolResListSize(int index, int system, int prn, int kind);
VORNEL_API int GetFixedSolResListSize(int index, int system, int prn, int kind);

/* weeks, seconds, valuesMm: out, time and double-difference residual in millimetres cut toward
 * zero, at most maxCount; returns how many were written. */
VORNEL_API int GetFloatSolResList(int index, int system, int prn, int kind, int maxCount,
                                  int* weeks, double* seconds, int* valuesMm);
VORNEL_API int GetFixedSolResList(int index, int system, int prn, int kind, int maxCount,
                                  int* weeks, double* seconds, int* valuesMm);

VORNEL_API int GetFloatSolBaseData(int index, VORNEL_BASE_DATA_BLOCK);
VORNEL_API int GetFixedSolBaseData(int index, VORNEL_BASE_DATA_BLOCK);

/* Number of ambiguities; in model 3 one stands for both frequencies of a track. */
VORNEL_API int GetFloatSolAmbNum(int index);
VORNEL_API int GetFixedSolAmbNum(int index);

/* At most maxCount ambiguities; returns how many were written.
 * ratio  out: acceptance ratio of the fixing, 1 to 99, written also when there are no ambiguities
 */
VORNEL_API int GetFloatSolAmbListData(int index, int maxCount, VORNEL_AMBIGUITY_ARRAYS);
VORNEL_API int GetFixedSolAmbListData(int index, int maxCount, double* ratio,
                                      VORNEL_AMBIGUITY_ARRAYS);

/* variances: out, maxCount doubles set to 0.0, then the variances of the float ambiguities in
 * cycles squared, in list order (model 3: twice as many, in an order of their own); returns how
 * many were written. */
VORNEL_API int GetFloatAmbCov(int index, int maxCount, double* variances);

/* The same by solve model, 1 to 6: the first solution of that model; none gives 0, nothing written.
 */
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
