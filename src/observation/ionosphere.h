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
    // The same for a satellite towards `local`, whose azimuth is worked out only if it matters.
    double Delay(double secondsOfWeek, double elevation, const NEUPosition& local) const;

  private:
    template <class AzimuthOf>
    double DelayWith(double secondsOfWeek, double elevation, const AzimuthOf& azimuthOf) const;
    double ShellDelay(double secondsOfWeek, double elevation) const;
    // Whether the daily course is over wherever the satellite is. psi: the earth angle of
    // IS-GPS-200, in units of 2 pi.
    bool IsSurelyNight(const IonosphereParameters& parameters, double secondsOfWeek,
                       double psi) const;
    // The share of the daily course in the zenith delay, seconds.
    double DailyCourse(const IonosphereParameters& parameters, double secondsOfWeek, double psi,
                       double azimuth) const;

    BLHPosition geodetic_;
    double scaledLatitude_;  // radians over 2 pi
    double scaledLongitude_;
};

// The broadcast model when its coefficients are known, a fixed diurnal shell model otherwise.
// Angles in radians; 0.0 for a station higher than 100 km.
double IonoDelay(XYZPosition station, double secondsOfWeek, double elevation, double azimuth);

}  // namespace vornel
