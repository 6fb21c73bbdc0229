#include "scenario.h"

namespace vornel::rough {

Effects Effects::None() {
    Effects none;
    for (double Effects::*effect : {&Effects::broadcastError,
                                    &Effects::preciseError,
                                    &Effects::satelliteAntenna,
                                    &Effects::lunisolar,
                                    &Effects::relativisticPath,
                                    &Effects::windUp,
                                    &Effects::tide,
                                    &Effects::hydrostatic,
                                    &Effects::wet,
                                    &Effects::turbulence,
                                    &Effects::ionosphere,
                                    &Effects::travellingWaves,
                                    &Effects::scintillation,
                                    &Effects::phaseCentre,
                                    &Effects::codeNoise,
                                    &Effects::phaseNoise,
                                    &Effects::multipath,
                                    &Effects::canopy,
                                    &Effects::slips,
                                    &Effects::gaps,
                                    &Effects::tracking,
                                    &Effects::hardwareBiases}) {
        none.*effect = 0.0;
    }
    return none;
}

std::vector<Tracking> GeodeticSignals() {
    using io::GnssSystem;
    return {{GnssSystem::kGps, '1', 'C'},     {GnssSystem::kGps, '2', 'W'},
            {GnssSystem::kGlonass, '1', 'C'}, {GnssSystem::kGlonass, '2', 'C'},
            {GnssSystem::kGalileo, '1', 'C'}, {GnssSystem::kGalileo, '5', 'Q'},
            {GnssSystem::kBeiDou, '2', 'I'},  {GnssSystem::kBeiDou, '7', 'I'}};
}

std::vector<Tracking> SingleFrequencySignals() {
    using io::GnssSystem;
    return {{GnssSystem::kGps, '1', 'C'},
            {GnssSystem::kGlonass, '1', 'C'},
            {GnssSystem::kGalileo, '1', 'C'},
            {GnssSystem::kBeiDou, '2', 'I'}};
}

}  // namespace vornel::rough
