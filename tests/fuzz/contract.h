// The ranges that VornelBlCore.h asks of the arguments of the exports, as numbers: what one target
// draws from, and another holds the host to.
#pragma once

#include <cmath>
#include <initializer_list>

namespace vornel::fuzz::contract {

// Times: between 1980 and 2100.
inline constexpr int kMostWeek = 6260;
inline constexpr double kWeekSeconds = 604800.0;  // not itself

// Keplerian elements.
inline constexpr double kMostEccentricity = 0.5;
inline constexpr double kLeastSqrtA = 1000.0, kMostSqrtA = 10000.0;  // m^0.5
inline constexpr double kMostAngle = 7.0;                            // rad
inline constexpr double kMostRate = 1e-3;                            // rad/s
// Clocks of every system.
inline constexpr double kMostClock = 1.0;        // s
inline constexpr double kMostClockDrift = 1e-3;  // s/s
inline constexpr double kMostClockAging = 1e-6;  // s/s^2
// GLONASS.
inline constexpr double kLeastGlonassRadius = 15000.0, kMostGlonassRadius = 40000.0;  // km
inline constexpr int kLeastChannel = -7, kMostChannel = 13;
inline constexpr int kMostLeapSeconds = 100;
// Precise orbits.
inline constexpr double kMissing = 0.999999999999;
inline constexpr double kLeastOrbitRadius = 6.0e6, kMostOrbitRadius = 1.0e8;  // m
inline constexpr double kMostStepRatio = 1.5;  // of neighbouring steps without a missing value
// Observations.
inline constexpr double kPairing = 0.1;                       // s between the two receivers
inline constexpr double kLeastCode = 1.0e6, kMostCode = 1e9;  // m
inline constexpr double kMostPhase = 1e12;                    // cycles
// Stations.
inline constexpr double kLeastStation = 1.0e6, kMostStation = 1.0e8;  // m from the centre
// Configuration.
inline constexpr double kMostMask = 1.5707963267948966;  // rad
inline constexpr double kOutlierAbove = 3.0;

inline bool IsTime(int week, double seconds) {
    return week >= 0 && week <= kMostWeek && seconds >= 0.0 && seconds < kWeekSeconds;
}

inline bool AreFinite(std::initializer_list<double> values) {
    for (const double value : values) {
        if (!std::isfinite(value)) {
            return false;
        }
    }
    return true;
}

inline bool IsWithin(double value, double bound) {
    return std::fabs(value) <= bound;
}

inline int SatellitesOf(int system) {
    switch (system) {
        case 1:
            return 35;
        case 2:
            return 32;
        case 4:
            return 36;
        case 8:
            return 32;
        default:
            return 0;
    }
}

inline bool IsSatellite(int system, int prn) {
    return prn >= 1 && prn <= SatellitesOf(system);
}

}  // namespace vornel::fuzz::contract
