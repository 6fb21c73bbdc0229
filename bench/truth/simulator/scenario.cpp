#include "scenario.h"

namespace vornel::rough {

Effects Effects::None() {
    return {0.0, 0.0, 0.0, 0.0};
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
