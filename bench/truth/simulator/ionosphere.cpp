#include "ionosphere.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "calendar.h"
#include "cosine.h"
#include "random.h"

namespace vornel::rough {
namespace {

constexpr double kShell = 400000.0;     // m above the sphere
constexpr double kTecuDelay = 40.3e16;  // m Hz^2 per TECU

// Axis of the earth's magnetic dipole (IGRF, epoch 2020): geographic latitude and longitude of the
// pole in the north.
constexpr double kPoleLatitude = 80.65 * kDegree;
constexpr double kPoleLongitude = -72.68 * kDegree;

double MagneticLatitude(double latitude, double longitude) {
    return std::asin(std::sin(latitude) * std::sin(kPoleLatitude) +
                     std::cos(latitude) * std::cos(kPoleLatitude) *
                         std::cos(longitude - kPoleLongitude));
}

double Bell(double x) {
    return std::exp(-x * x);
}

// From 0 in the night to 1 at 14 h.
double DailyCourse(double hour) {
    const double after = std::remainder(hour - 14.0, 24.0);
    return Bell(after / (after < 0.0 ? 4.2 : 5.6));
}

}  // namespace

double IonosphereDelay(double content, double frequency) {
    return kTecuDelay * content / (frequency * frequency);
}

Ionosphere::Ionosphere(const Scenario& scenario, const io::GpsTime& origin)
    : state_(scenario.ionosphere),
      effects_(scenario.effects),
      secondsOfDay_(std::fmod(origin.seconds, kDay)) {
    Random random(scenario.seed, "ionosphere");
    constexpr int kCount = 12;
    for (int i = 0; i < kCount; ++i) {
        const double length = random.LogUniform(3e5, 3e6);
        const double k = 2.0 * kPi / length * kEarthRadius;
        const double direction = random.Uniform(0.0, 2.0 * kPi);
        // Longer ones are stronger, so that all have the same slopes.
        fluctuations_.push_back({length / 1.5e6, k * std::cos(direction), k * std::sin(direction),
                                 2.0 * kPi / random.LogUniform(2400.0, 18000.0),
                                 random.Uniform(0.0, 2.0 * kPi)});
    }
}

double Ionosphere::LocalHour(double longitude, double t) const {
    return std::fmod((secondsOfDay_ + t) / 3600.0 + longitude / (15.0 * kDegree) + 48.0, 24.0);
}

double Ionosphere::VerticalAt(double latitude, double longitude, double t) const {
    const double magnetic = MagneticLatitude(latitude, longitude) / kDegree;
    const double course = DailyCourse(LocalHour(longitude, t));
    const double profile = 0.30 + 0.45 * Bell(magnetic / 35.0) +
                           0.45 * state_.anomaly * course * Bell((std::abs(magnetic) - 14.0) / 8.0);
    double fluctuation = 0.0;
    for (const Fluctuation& f : fluctuations_) {
        fluctuation +=
            f.weight * Cosine(f.kNorth * latitude + f.kEast * longitude + f.rate * t + f.phase);
    }
    fluctuation *= std::sqrt(2.0 / static_cast<double>(fluctuations_.size()));
    const double level = state_.night + (1.0 - state_.night) * course;
    double content = effects_.ionosphere * state_.dayPeak * level * profile *
                     std::max(0.1, 1.0 + state_.roughness * fluctuation);
    if (effects_.ionosphere > 0.0) {
        for (const Depletion& d : state_.depletions) {
            const double centre = d.longitude + d.drift * (t - d.time) / kEarthRadius;
            const double away = std::remainder(longitude - centre, 2.0 * kPi) * kEarthRadius;
            content -=
                std::min(0.8 * content, effects_.ionosphere * d.depth * Bell(away / d.width) *
                                            Bell((t - d.time) / d.duration));
        }
    }
    for (const TravellingWave& w : state_.waves) {
        constexpr double kGone = 4.0;  // of its duration
        if (std::abs(t - w.time) > kGone * w.duration) {
            continue;
        }
        const double north = latitude * kEarthRadius;
        const double east = longitude * kEarthRadius * std::cos(latitude);
        const double along = north * std::cos(w.azimuth) + east * std::sin(w.azimuth);
        content += effects_.travellingWaves * w.amplitude * Bell((t - w.time) / w.duration) *
                   Cosine(2.0 * kPi * (along / w.length - t / w.period) + w.phase);
    }
    return content;
}

Ionosphere::AlongRay Ionosphere::Seen(const Vector3& station, const Vector3& toSatellite,
                                      double t) const {
    // Distance to the shell: |station + s direction| = radius.
    constexpr double kRadius = kEarthRadius + kShell;
    const double along = Dot(station, toSatellite);
    const double s = -along + std::sqrt(along * along + kRadius * kRadius - Dot(station, station));
    const Vector3 point = Plus(station, Scaled(toSatellite, s));
    const double latitude = std::asin(std::clamp(point[2] / kRadius, -1.0, 1.0));
    const double longitude = std::atan2(point[1], point[0]);
    const double cosine = Dot(point, toSatellite) / kRadius;
    AlongRay ray;
    ray.content = VerticalAt(latitude, longitude, t) / cosine;
    const double activity = effects_.scintillation * state_.scintillation;
    if (activity > 0.0) {
        // After sunset within 20 degrees of the magnetic equator (Basu et al. 2002), and weaker in
        // the auroral zones at all hours.
        const double magnetic = std::abs(MagneticLatitude(latitude, longitude)) / kDegree;
        const double evening = std::remainder(LocalHour(longitude, t) - 21.5, 24.0);
        ray.scintillation = activity * (Bell((magnetic - 8.0) / 12.0) * Bell(evening / 3.0) +
                                        0.3 * Bell((magnetic - 68.0) / 6.0));
    }
    return ray;
}

io::IonosphereSet Ionosphere::BroadcastCoefficients(const Geodetic& place) const {
    // The usual shape over the geomagnetic latitude, scaled by the content at noon and two.
    constexpr std::array<double, 4> kAlpha = {1.211e-8, 1.490e-8, -5.960e-8, -1.192e-7};
    constexpr std::array<double, 4> kBeta = {1.167e5, -2.294e5, -1.311e5, 1.049e6};
    const double semicircles = MagneticLatitude(place.latitude, place.longitude) / kPi;
    const double shape =
        kAlpha[0] + semicircles * (kAlpha[1] + semicircles * (kAlpha[2] + semicircles * kAlpha[3]));
    const double hourNow = LocalHour(place.longitude, 0.0);
    const double peak = VerticalAt(place.latitude, place.longitude, (14.0 - hourNow) * 3600.0);
    constexpr double kL1 = 1575.42e6;
    const double seconds = IonosphereDelay(std::max(1.0, peak), kL1) / kSpeedOfLight;
    const auto rounded = [](double value) {
        char text[32];
        std::snprintf(text, sizeof text, "%.4e", value);
        return std::strtod(text, nullptr);
    };
    io::IonosphereSet set;
    set.hasAlpha = set.hasBeta = true;
    for (std::size_t i = 0; i < 4; ++i) {
        set.alpha[i] =
            rounded(kAlpha[i] * state_.broadcastFactor * seconds / std::max(4e-9, shape));
        set.beta[i] = rounded(kBeta[i]);
    }
    return set;
}

}  // namespace vornel::rough
