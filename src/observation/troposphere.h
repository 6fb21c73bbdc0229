// Slant tropospheric delay, metres: modified Hopfield and Saastamoinen, driven by the surface weather, and the
// climatological model of RTCA MOPS (DO-229).
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

// Degrees Celsius, hPa, percent. A value not strictly inside -50 to 100, 500 to 2000, 0 to 100 is replaced by
// 18, 1013.25, 50.
void SetSurfaceWeather(double temperature, double pressure, double humidity);

// Model 0 modified Hopfield, 1 Saastamoinen, any other 0.0; 0.0 for a station higher than 10 km.
// Elevation in radians.
double TropoDelay(int model, XYZPosition station, double elevation);

// Height in metres, elevation and latitude in radians; 0.0 below the horizon.
double ModifiedHopfield(double height, double elevation);
double Saastamoinen(double latitude, double height, double elevation);

// azel: azimuth and elevation, radians. variance: m^2.
double MopsTroposphere(Epoch time, BLHPosition position, const double azel[2], double& variance);

}  // namespace vornel
