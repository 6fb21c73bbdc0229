// Slant tropospheric delay, metres: modified Hopfield and Saastamoinen, driven by the surface
// weather, and the climatological model of RTCA MOPS (DO-229).
#pragma once

#include "foundation/epoch.h"
#include "foundation/position.h"

namespace vornel {

// Process-wide surface weather.
struct SurfaceWeather {
    double temperature = 18.0;  // degrees Celsius
    double pressure = 1013.25;  // hPa
    double humidity = 50.0;     // percent
};
const SurfaceWeather& CurrentSurfaceWeather();

// Degrees Celsius, hPa, percent. A value not strictly inside -50 to 100, 500 to 2000, 0 to 100 is
// replaced by 18, 1013.25, 50.
void SetSurfaceWeather(double temperature, double pressure, double humidity);

// Model 0 modified Hopfield, 1 Saastamoinen, any other 0.0; 0.0 for a station more than 10 km
// above or below the ellipsoid.
// Elevation in radians.
double TropoDelay(int model, XYZPosition station, double elevation);

// The slant delays at one station in one weather: what does not depend on the satellite is worked
// out once. Stale when the weather changes.
class StationTroposphere {
  public:
    // Model as in TropoDelay, at any height; geodetic: of the station.
    StationTroposphere(int model, const BLHPosition& geodetic);

    // Elevation in radians.
    double Delay(double elevation) const;

  private:
    struct Layer {
        double refractivity;  // at the station
        double top;           // above the station, km
    };
    double HopfieldDelay(double elevation) const;
    double SaastamoinenDelay(double elevation) const;

    int model_;
    double radius_ = 0.0;     // of the station from the earth's centre, km
    Layer dry_{}, wet_{};     // modified Hopfield
    double dryFactor_ = 0.0;  // Saastamoinen: delays over the cosine of the zenith angle, m
    double wetFactor_ = 0.0;
};

// The model of a station; none when it lies more than 10 km above or below the ellipsoid.
StationTroposphere TroposphereAt(int model, const BLHPosition& geodetic);

// The MOPS delay at one station: its zenith part is worked out once for a day.
class StationMopsTroposphere {
  public:
    explicit StationMopsTroposphere(const BLHPosition& geodetic) : geodetic_(geodetic) {}

    // Elevation in radians; variance in m^2.
    double Delay(const Epoch& time, double elevation, double& variance);

  private:
    BLHPosition geodetic_;
    bool hasZenith_ = false;
    int zenithDay_ = 0;  // Epoch::day of zenith_
    double zenith_ = 0.0;
};

// Height in metres, elevation and latitude in radians; 0.0 below the horizon.
double ModifiedHopfield(double height, double elevation);
double Saastamoinen(double latitude, double height, double elevation);

// azel: azimuth and elevation, radians. variance: m^2. Both 0.0 for a height outside -100 to
// 10000 m and an elevation of 0 or less.
double MopsTroposphere(Epoch time, BLHPosition position, const double azel[2], double& variance);

}  // namespace vornel
