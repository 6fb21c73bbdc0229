// Delay of the neutral atmosphere: hydrostatic by pressure and height, wet by a field that differs
// from place to place and moves with the wind.
#pragma once

#include <vector>

#include "geodesy.h"
#include "io/gnss_time.h"
#include "scenario.h"

namespace vornel::rough {

class StationTroposphere;

// The weather over a region. Metres; times are seconds since the origin of the world.
//
// Zenith hydrostatic delay after Saastamoinen (1972) as in Davis et al. (1985), from the pressure at
// the station: that of sea level, with a gradient, carried up through a standard lapse rate from the
// temperature at sea level. Zenith wet delay: one value at sea level, falling exponentially with the
// height, a gradient, and turbulence.
//
// Turbulence after Treuhaft and Lanyi (1987, Radio Science 22, 251-265): Kolmogorov's structure
// function D = C^2 r^(2/3) of the wet refractivity in a slab of h = 1 km that the wind carries along,
// C = 2.4e-7 m^(-1/3) in the mean. Two zenith delays a distance r apart then differ by
// C h r^(1/3) (11 mm rms over 100 km) where r is much larger than h, and by sqrt(2.91 C^2 h r^(5/3))
// where it is much smaller. The field is a sum of waves whose amplitudes follow that spectrum.
class Troposphere {
  public:
    Troposphere(const Scenario& scenario, const io::GpsTime& origin);

    // Of the zenith wet delay at sea level against its mean, m, at a place `north` and `east` of
    // the reference (m).
    double TurbulenceAt(double north, double east, double t) const;

  private:
    friend class StationTroposphere;
    struct Wave {
        double kNorth = 0.0, kEast = 0.0;  // rad/m
        double rate = 0.0;                 // rad/s, by the wind
        double phase = 0.0, amplitude = 0.0;
    };

    Weather weather_;
    Effects effects_;
    double dayOfYear_ = 0.0;
    Geodetic reference_;
    std::vector<Wave> waves_;
};

// The same as one station sees it.
class StationTroposphere {
  public:
    StationTroposphere(const Troposphere& region, const Geodetic& place);

    double ZenithHydrostatic() const { return hydrostatic_; }
    // Without turbulence.
    double ZenithWet(double t) const;

    // Delay of a ray, m. Hydrostatic and wet parts are mapped as by Niell (1996, JGR 101, 3227-3246);
    // the wet part is that of the place where the ray passes through the middle of the wet slab.
    double Delay(double azimuth, double elevation, double t) const;

  private:
    struct Mapping {
        double a = 0.0, b = 0.0, c = 0.0;
        double At(double sinElevation) const;
    };

    const Troposphere& region_;
    double north_ = 0.0, east_ = 0.0;  // m from the reference
    double hydrostatic_ = 0.0;         // m, zenith
    double wetShare_ = 0.0;            // of the delay at sea level that is left at the height
    double height_ = 0.0;              // m
    Mapping hydrostaticMapping_, heightMapping_, wetMapping_;
};

}  // namespace vornel::rough
