// Electrons above the stations: a thin shell whose vertical content follows the sun, with waves,
// depletions and scintillation.
#pragma once

#include <vector>

#include "geodesy.h"
#include "io/gnss_time.h"
#include "io/navigation.h"
#include "scenario.h"

namespace vornel::rough {

// Content in TECU (1e16 electrons per square metre; 0.162 m on GPS L1).
//
// The daily course has its maximum at 14 h local time, rising within some hours and falling more
// slowly, over a level of the night. By magnetic latitude there are the crests of the equatorial
// anomaly at 14 degrees on either side (Appleton 1946), which stand on the day side, and the fall
// towards the poles; maps of the IGS show 20 to 40 TECU at the crests in a solar minimum and 100 to
// 180 in a maximum (Hernandez-Pajares et al. 2009, J. Geod. 83, 263-275). Fluctuations of 300 to
// 3000 km multiply that.
//
// Medium-scale travelling disturbances are plane waves of 100 to 300 km and 10 to 30 minutes with
// 0.1 to 1 TECU, more in a solar maximum (Hernandez-Pajares et al. 2006, JGR 111, A07S11). A
// depletion is a trough of the night at low latitudes, some 100 km wide, that drifts eastwards with
// some 100 m/s (Kil and Heelis 1998).
class Ionosphere {
  public:
    Ionosphere(const Scenario& scenario, const io::GpsTime& origin);

    // Vertical content above a point of the shell.
    double VerticalAt(double latitude, double longitude, double t) const;

    struct AlongRay {
        double content = 0.0;        // TECU along the ray
        double scintillation = 0.0;  // 0 to 1 and more: how much the signal trembles
    };
    // For a ray from a station (m, earth-fixed) in a direction (unit vector).
    AlongRay Seen(const Vector3& station, const Vector3& toSatellite, double t) const;

    // Coefficients as broadcast, which fit this ionosphere around a place to within a factor that
    // the scenario tells. Rounded as in a file.
    io::IonosphereSet BroadcastCoefficients(const Geodetic& place) const;

  private:
    struct Fluctuation {
        double weight = 0.0;
        double kNorth = 0.0, kEast = 0.0;  // rad/rad of arc
        double rate = 0.0, phase = 0.0;
    };

    double LocalHour(double longitude, double t) const;

    IonosphereState state_;
    Effects effects_;
    double secondsOfDay_ = 0.0;  // of the origin
    std::vector<Fluctuation> fluctuations_;
};

// Delay of a code on a frequency (Hz), m; the phase is advanced by as much.
double IonosphereDelay(double content, double frequency);

}  // namespace vornel::rough
