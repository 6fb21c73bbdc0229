#include "difference/single_difference.h"

#include "foundation/satellite.h"

namespace vornel {

PhaseCombination SingleFrequency(const Carriers& carriers, int frequency) {
    if (frequency == 1) {
        return {1.0, 0.0, carriers.wavelength1, carriers.ionoScale1};
    }
    return {0.0, 1.0, carriers.wavelength2, carriers.ionoScale2};
}

int SingleDifferenceModel::ChannelOf(const SDObsData& epoch, int sat) {
    int id = 0;
    return SplitSatNumber(sat, &id) == kGlonass ? epoch.glonassChannel[id - 1] : 0;
}

Carriers SingleDifferenceModel::CarriersOf(const SDObsData& epoch, int sat) const {
    return carrierTable_.Of(SplitSatNumber(sat), ChannelOf(epoch, sat));
}

ComputedDifference SingleDifferenceModel::Compute(int epochIndex, int sat, const Carriers& carriers,
                                                  const PhaseCombination& combination,
                                                  const XYZPosition& rover) const {
    const SDObsData& epoch = solver_.epochs[static_cast<std::size_t>(epochIndex)];
    const ModelledSatellite modelled = solver_.modelCache.Evaluate(
        form_, combination.ionoFactor, epoch, epochIndex, sat, rover, solver_.basePosition);
    ComputedDifference computed;
    computed.model = modelled.value;
    for (int k = 0; k < 3; ++k) {
        computed.unit[k] = modelled.unit[k];
    }
    computed.sinElevation = modelled.sinElevationRover;
    computed.antenna = solver_.AntennaTerm(combination.a, combination.b,
                                           carriers.antennaWavelength1, carriers.antennaWavelength2,
                                           modelled.sinElevationRover, modelled.sinElevationBase);
    return computed;
}

}  // namespace vornel
