// Computed rover-minus-base values of one satellite, with the antennas: what every stage sets
// against the observed phase.
//
// Of the run, SingleDifferenceModel
//   reads   config (galFreq1, galFreq2)
//   writes  nothing
// Of the run, Compute
//   reads   epochs, basePosition, antennas
//   writes  modelCache
#pragma once

#include "observation/carriers.h"
#include "run/static_solve.h"

namespace vornel {

// One phase combination of a satellite: a, b multiply its two phases in cycles.
struct PhaseCombination {
    double a, b;
    double wavelength;  // of the combination, metres
    double ionoFactor;  // its ionospheric delay over that on GPS L1
};

// The first (1) or second (2) frequency alone.
PhaseCombination SingleFrequency(const Carriers& carriers, int frequency);

struct ComputedDifference {
    double model;         // metres
    double antenna;       // metres
    double unit[3];       // from the satellite to the rover
    double sinElevation;  // at the rover

    double WithAntenna() const { return model - antenna; }
};

class SingleDifferenceModel {
  public:
    // Refers to the solver: its base, antennas and configuration, and what it has modelled so far.
    explicit SingleDifferenceModel(StaticSolve& solver, ModelForm form = ModelForm::kConfigured)
        : solver_(solver),
          form_(form),
          carrierTable_(solver.config.galFreq1, solver.config.galFreq2) {}

    const CarrierTable& carrierTable() const { return carrierTable_; }

    // Frequency channel of a satellite in the record of an epoch; 0 outside GLONASS.
    static int ChannelOf(const SDObsData& epoch, int sat);
    // Of a satellite at an epoch, GLONASS by its channel.
    Carriers CarriersOf(const SDObsData& epoch, int sat) const;

    // The computed value at an epoch of the run for a rover position.
    ComputedDifference Compute(int epochIndex, int sat, const Carriers& carriers,
                               const PhaseCombination& combination, const XYZPosition& rover) const;

  private:
    StaticSolve& solver_;
    ModelForm form_;
    CarrierTable carrierTable_;
};

}  // namespace vornel
