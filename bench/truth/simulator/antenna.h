// Phase centres of receiver antennas, and the table of calibrations.
#pragma once

#include "geodesy.h"
#include "io/antennas.h"
#include "scenario.h"

namespace vornel::rough {

// Group of frequencies that share a phase centre.
std::size_t BandGroupOf(double frequency);

// The antenna of one occupation: that of its type, with deviations of its own of a millimetre or so
// that no calibration tells (Schmitz, Wuebbena and Propp 2008: 1 to 2 mm between antennas of a type).
class Antenna {
  public:
    Antenna(const Scenario& scenario, const Occupation& occupation);

    // How much further from the satellite the signal is received than at the reference point, m, in
    // a direction given by a unit vector in north, east, up.
    double Advance(std::size_t group, const Vector3& direction) const;

    double multipathGain() const { return type_.multipathGain; }

  private:
    AntennaType type_;
    double phase_ = 0.0;  // rad, of the variation by azimuth
    double scale_ = 1.0;
};

// The offsets of the calibrated types, rounded as in a file, on G01, G02, G05 and the corresponding
// frequencies of the other systems.
io::AntennaFile CalibrationsOf(const Scenario& scenario);

}  // namespace vornel::rough
