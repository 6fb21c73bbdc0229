// Ionospheric delay on the first GPS frequency, metres.
#pragma once

#include "foundation/position.h"

namespace vornel {

// Process-wide broadcast coefficients, and whether they have been given.
struct IonosphereParameters {
    double alpha[4] = {0.0, 0.0, 0.0, 0.0};
    double beta[4] = {0.0, 0.0, 0.0, 0.0};
    unsigned char ionoValid = 0;
};
IonosphereParameters& CurrentIonosphere();

// The delays at one station. Refers to the process-wide coefficients as they are when asked.
class StationIonosphere {
  public:
    explicit StationIonosphere(const BLHPosition& geodetic);

    // As IonoDelay.
    double Delay(double secondsOfWeek, double elevation, double azimuth) const;

  private:
    double ShellDelay(double secondsOfWeek, double elevation) const;
    double BroadcastDelay(const IonosphereParameters& parameters, double secondsOfWeek,
                          double elevation, double azimuth) const;

    BLHPosition geodetic_;
    double scaledLatitude_;  // radians over 2 pi
    double scaledLongitude_;
};

// The broadcast model when its coefficients are known, a fixed diurnal shell model otherwise.
// Angles in radians; 0.0 for a station higher than 100 km.
double IonoDelay(XYZPosition station, double secondsOfWeek, double elevation, double azimuth);

}  // namespace vornel
