#include "preparation/single_difference.h"

#include "foundation/satellite.h"

namespace vornel {

PhaseCombination SingleFrequency(const Carriers& carriers, int frequency) {
    if (frequency == 1) {
        return {1.0, 0.0, carriers.wavelength1, carriers.ionoScale1};
    }
    return {0.0, 1.0, carriers.wavelength2, carriers.ionoScale2};
}

Carriers SingleDifferenceModel::CarriersOf(const SDObsData& epoch, int sat) const {
    int id = 0;
    const int system = SplitSatNumber(sat, &id);
    const int channel = system == kGlonass ? epoch.glonassChannel[id - 1] : 0;
    return carrierTable_.Of(system, channel);
}

ComputedDifference SingleDifferenceModel::Compute(SDObsData& epoch, int sat,
                                                  const Carriers& carriers,
                                                  const PhaseCombination& combination,
                                                  const XYZPosition& rover) const {
    ComputedDifference computed;
    (epoch.*evaluation_)(combination.ionoFactor, sat, rover, solver_.basePosition, computed.unit,
                         computed.model);
    computed.antenna = solver_.AntennaSdCorrection(
        combination.a, combination.b, carriers.antennaWavelength1, carriers.antennaWavelength2,
        epoch.azelA[sat - 1][1], epoch.azelB[sat - 1][1]);
    return computed;
}

}  // namespace vornel
