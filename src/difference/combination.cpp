#include "difference/combination.h"

#include <cmath>

#include "foundation/satellite.h"

namespace vornel {

namespace {

struct Coefficients {
    double a, b;
};

// Ionosphere-free coefficients of the phases in cycles. For Galileo b has f2 squared where the
// other systems have f1 f2; it stands so. A Galileo without both bands has no combination.
Coefficients IonosphereFree(int system, const Carriers& carriers) {
    const double f1 = carriers.frequency1;
    const double f2 = carriers.frequency2;
    const double squares = f1 * f1 - f2 * f2;
    switch (system) {
        case kBds:
            return {kBdsIonoFreeA, kBdsIonoFreeB};
        case kGlonass:
            return {f1 * f1 / squares, -f1 * f2 / squares};
        case kGalileo:
            if (carriers.wavelength1 < kNoWavelength || carriers.wavelength2 < kNoWavelength) {
                return {0.0, 0.0};
            }
            return {f1 * f1 / squares, -f2 * f2 / squares};
        default:
            return {kGpsIonoFreeA, kGpsIonoFreeB};
    }
}

Coefficients CoefficientsOf(int mode, int block, int system, const Carriers& carriers) {
    switch (mode) {
        case VORNEL_MODEL_SECOND:
            return {0.0, 1.0};
        case VORNEL_MODEL_BOTH:
            return block == kFirstBlock ? Coefficients{1.0, 0.0} : Coefficients{0.0, 1.0};
        case VORNEL_MODEL_SUM:
            return {1.0, 1.0};
        case VORNEL_MODEL_WIDE_LANE:
            return {1.0, -1.0};
        case VORNEL_MODEL_IONO_FREE:
            return IonosphereFree(system, carriers);
        default:
            return {1.0, 0.0};
    }
}

double NarrowLane(int system, const Carriers& carriers) {
    switch (system) {
        case kGps:
            return kGpsNarrowLaneFactor;
        case kBds:
            return kBdsNarrowLaneFactor;
        default:
            return carriers.frequency1 / (carriers.frequency1 + carriers.frequency2);
    }
}

double WideLane(int system, const Carriers& carriers) {
    const double f1 = carriers.frequency1;
    const double f2 = carriers.frequency2;
    switch (system) {
        case kGps:
            return -kGpsIonoFreeB;
        case kBds:
            return -kBdsIonoFreeB;
        default:
            return f1 * f2 / (f1 * f1 - f2 * f2);
    }
}

}  // namespace

LaneCombination CombinationOf(int mode, int block, int system, const Carriers& carriers) {
    const Coefficients coefficients = CoefficientsOf(mode, block, system, carriers);
    LaneCombination combination;
    combination.a = coefficients.a;
    combination.b = coefficients.b;
    combination.narrowLane = NarrowLane(system, carriers);
    combination.wideLane = WideLane(system, carriers);
    const double a = coefficients.a;
    const double b = coefficients.b;
    const double f1 = carriers.frequency1;
    const double f2 = carriers.frequency2;
    if (a == 0.0 && b == 0.0) {
        combination.wavelength = 0.0;
        combination.ionoFactor = 0.0;
        return combination;
    }
    // The second block takes the second frequency's own wavelength, 0 for a Galileo band that does
    // not exist.
    combination.wavelength =
        block == kSecondBlock ? carriers.wavelength2 : kSpeedOfLight / (a * f1 + b * f2);
    if (block == kSecondBlock && (system == kGps || system == kBds)) {
        combination.ionoFactor = carriers.ionoScale2;
        return combination;
    }
    combination.ionoFactor = (a * carriers.ionoScale1 * f1 + b * carriers.ionoScale2 * f2) /
                             kSpeedOfLight * combination.wavelength;
    return combination;
}

double DoubleDifferenceSigma(int mode, double phaseStd) {
    const CarrierTable table(1, 2);
    const LaneCombination gps = CombinationOf(mode, kFirstBlock, kGps, table.Of(kGps, 0));
    return 2 * phaseStd * gps.wavelength * std::sqrt(gps.a * gps.a + gps.b * gps.b);
}

}  // namespace vornel
