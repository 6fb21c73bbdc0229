#include "multipath.h"

#include <algorithm>
#include <cmath>
#include <complex>

#include "cosine.h"

namespace vornel::rough {

Multipath::Multipath(const Surroundings& around, double gain, double correlator)
    : groundHeight_(around.groundHeight),
      groundAmplitude_(gain * around.groundAmplitude),
      correlator_(correlator) {
    for (const Scatterer& s : around.scatterers) {
        echoes_.push_back({s.place, Length(s.place), gain * s.amplitude, s.phase, s.reach});
    }
}

MultipathError Multipath::At(const Vector3& direction, double wavelength) const {
    if (groundAmplitude_ == 0.0 && echoes_.empty()) {
        return {};
    }
    const double wave = 2.0 * kPi / wavelength;
    double sumRe = 0.0, sumIm = 0.0, delayedRe = 0.0, delayedIm = 0.0;
    const auto add = [&](double amplitude, double delay, double phase) {
        const double psi = wave * delay + phase;
        const double re = amplitude * Cosine(psi), im = amplitude * Sine(psi);
        const double seen = std::min(delay, correlator_);
        sumRe += re;
        sumIm += im;
        delayedRe += seen * re;
        delayedIm += seen * im;
    };
    // From the ground: weaker for high satellites, whose reflection comes in from far below.
    const double sinElevation = std::max(0.0, direction[2]);
    constexpr double kFall = 0.25;  // of the sine
    add(groundAmplitude_ * (0.15 + 0.85 * std::exp(-sinElevation / kFall)),
        2.0 * groundHeight_ * sinElevation, kPi);
    for (const Echo& echo : echoes_) {
        const double cosine = Dot(echo.place, direction) / echo.distance;
        const double inside = cosine - echo.reach;
        if (inside <= 0.0) {
            continue;
        }
        // Fades in over the edge of the reach, and with the elevation as the antenna's gain for
        // what comes from the side does against the direct signal's.
        const double edge = std::min(1.0, inside / (0.25 * (1.0 - echo.reach) + 1e-9));
        add(echo.amplitude * edge * (1.0 - 0.6 * sinElevation), echo.distance * (1.0 - cosine),
            echo.phase);
    }
    const std::complex<double> whole(1.0 + sumRe, sumIm);
    const std::complex<double> delayed(delayedRe, delayedIm);
    return {std::arg(whole) / wave, (delayed / whole).real(), 20.0 * std::log10(std::abs(whole))};
}

double HorizonAt(const Surroundings& around, double azimuth) {
    if (around.horizon.empty()) {
        return 0.0;
    }
    const double turn = azimuth / (2.0 * kPi);
    const auto direction = static_cast<std::size_t>((turn - std::floor(turn)) * kHorizonDirections);
    return around.horizon[direction % around.horizon.size()];
}

}  // namespace vornel::rough
