#include "broadcast_errors.h"

#include <cmath>

namespace vornel::rough {
namespace {

std::uint64_t KeyOf(const Satellite& satellite) {
    return static_cast<std::uint64_t>(satellite.id.system) * 100 + satellite.id.number;
}

}  // namespace

BroadcastSigma BroadcastSigmaOf(const Satellite& satellite) {
    switch (satellite.id.system) {
        case io::GnssSystem::kGlonass:
            return {0.40, 1.80, 1.30, 1.50};
        case io::GnssSystem::kGalileo:
            return {0.12, 0.30, 0.22, 0.12};
        case io::GnssSystem::kBeiDou:
            if (satellite.orbitClass == OrbitClass::kGeostationary) {
                return {0.60, satellite.modern ? 4.0 : 6.0, 2.5, 0.70};
            }
            if (satellite.modern) {
                return satellite.orbitClass == OrbitClass::kMedium
                           ? BroadcastSigma{0.08, 0.35, 0.30, 0.45}
                           : BroadcastSigma{0.25, 0.90, 0.80, 0.60};
            }
            return {0.50, 1.60, 1.20, 0.70};
        default:
            return {0.15, 0.75, 0.45, 0.40};
    }
}

MessageErrors::MessageErrors(std::uint64_t seed, const Satellite& satellite, double scale)
    : random_(seed, "broadcast error", KeyOf(satellite)),
      sigma_(BroadcastSigmaOf(satellite)),
      scale_(scale) {}

double MessageErrors::Part(std::size_t i, double sigma, double seconds) {
    constexpr double kMemory = 8.0 * 3600.0;  // s
    constexpr double kSlowShare = 0.95, kJumpShare = 0.31;
    const double kept = begun_ ? std::exp(-seconds / kMemory) : 0.0;
    slow_[i] = kept * slow_[i] + std::sqrt(1.0 - kept * kept) * random_.Normal();
    return scale_ * sigma * (kSlowShare * slow_[i] + kJumpShare * random_.Normal());
}

MessageError MessageErrors::Next(double seconds) {
    MessageError e;
    e.radial = Part(0, sigma_.radial * 0.8, seconds);
    e.along = Part(1, sigma_.along * 0.9, seconds);
    e.alongRate = Part(2, sigma_.along * 0.15 / 3600.0, seconds);
    e.across = {Part(3, sigma_.across, seconds), Part(4, sigma_.across, seconds)};
    e.eccentricity = {Part(5, sigma_.radial * 0.6, seconds), Part(6, sigma_.radial * 0.6, seconds)};
    e.clock = Part(7, sigma_.clock, seconds);
    e.clockRate = Part(8, sigma_.clock * 0.2 / 3600.0, seconds);
    begun_ = true;
    return e;
}

TableError::TableError(std::uint64_t seed, const Satellite& satellite, double scale) {
    constexpr std::array<double, 3> kSigma = {0.015, 0.025, 0.020};  // m
    constexpr double kClockSigma = 5e-11;                            // s
    Random random(seed, "table error", KeyOf(satellite));
    const auto draw = [&](double sigma) {
        return Component{scale * sigma * 0.7 * random.Normal(),
                         scale * sigma * std::abs(random.Normal()), random.Uniform(0.0, 2.0 * kPi)};
    };
    for (std::size_t i = 0; i < 3; ++i) {
        components_[i] = draw(kSigma[i]);
    }
    clock_ = draw(kClockSigma);
    rate_ = satellite.revolutions * kEarthRate;
}

Vector3 TableError::At(double t) const {
    Vector3 error;
    for (std::size_t i = 0; i < 3; ++i) {
        error[i] = components_[i].constant +
                   components_[i].amplitude * std::cos(rate_ * t + components_[i].phase);
    }
    return error;
}

double TableError::ClockAt(double t) const {
    return clock_.constant + clock_.amplitude * std::cos(rate_ * t + clock_.phase);
}

double AntennaBelowMass(const Satellite& satellite) {
    Random random(20000103, "satellite antenna", KeyOf(satellite));
    switch (satellite.id.system) {
        case io::GnssSystem::kGlonass:
            return random.Uniform(1.9, 2.5);
        case io::GnssSystem::kGalileo:
            return random.Uniform(0.6, 1.0);
        case io::GnssSystem::kBeiDou:
            return random.Uniform(1.0, 2.8);
        default:
            return random.Uniform(0.7, 2.7);
    }
}

}  // namespace vornel::rough
