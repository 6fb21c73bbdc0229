#include "run/static_period.h"

#include "foundation/satellite.h"

namespace vornel {

int StaticPeriod::ReferenceOf(int system) const {
    switch (system) {
        case kGps:
            return refSatGps;
        case kGlonass:
            return refSatGlo;
        case kBds:
            return refSatBds;
        case kGalileo:
            return refSatGal;
        default:
            return -1;
    }
}

}  // namespace vornel
