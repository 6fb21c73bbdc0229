// Reflected signals: what they add to code, phase and strength. Everything follows from where the
// satellite stands, so that the errors have the memory of minutes that the geometry gives them, and
// return when the satellite does, after a sidereal day.
#pragma once

#include "geodesy.h"
#include "scenario.h"

namespace vornel::rough {

struct MultipathError {
    double phase = 0.0;     // m
    double code = 0.0;      // m
    double strength = 0.0;  // dB
};

// The sum of the direct signal and its reflections is one carrier to the receiver: with complex
// amplitudes a e^(i psi), psi = 2 pi delay / wavelength, the phase is off by the argument of
// 1 + sum a e^(i psi), and the code by the real part of (sum a d e^(i psi)) / (1 + sum a e^(i psi))
// while the delays d are short against a chip (Braasch 1996; Georgiadou and Kleusberg 1988, Manuscr.
// Geod. 13, 172-179: up to a quarter of a wavelength).
class Multipath {
  public:
    // `gain` is the antenna's, of reflected signals; `correlator` the receiver's limit of delays.
    Multipath(const Surroundings& around, double gain, double correlator);

    // For a satellite in a direction (unit vector in north, east, up) on a wavelength (m).
    MultipathError At(const Vector3& direction, double wavelength) const;

  private:
    struct Echo {
        Vector3 place{};
        double distance = 0.0;
        double amplitude = 0.0;
        double phase = 0.0;
        double reach = 0.0;
    };

    double groundHeight_;
    double groundAmplitude_;
    double correlator_;
    std::vector<Echo> echoes_;
};

// The horizon of a site, rad, in a direction.
double HorizonAt(const Surroundings& around, double azimuth);

}  // namespace vornel::rough
