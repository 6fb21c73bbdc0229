#include "troposphere.h"

#include <algorithm>
#include <array>

#include "calendar.h"
#include "cosine.h"
#include "random.h"

namespace vornel::rough {
namespace {

constexpr double kSlab = 1000.0;          // m, thickness of the wet layer that counts
constexpr double kMiddleOfSlab = 1000.0;  // m above a station where a ray is asked for its place
constexpr double kFarthest = 20000.0;     // m from the station, for rays near the horizon
constexpr double kPer100Km = 1e-5;        // 1/m

// Niell (1996), tables 3 and 4: latitudes 15, 30, 45, 60 and 75 degrees.
constexpr std::size_t kBands = 5;
using Row = std::array<double, kBands>;
constexpr std::array<Row, 3> kHydrostaticMean = {{
    {1.2769934e-3, 1.2683230e-3, 1.2465397e-3, 1.2196049e-3, 1.2045996e-3},
    {2.9153695e-3, 2.9152299e-3, 2.9288445e-3, 2.9022565e-3, 2.9024912e-3},
    {62.610505e-3, 62.837393e-3, 63.721774e-3, 63.824265e-3, 64.258455e-3},
}};
constexpr std::array<Row, 3> kHydrostaticSeason = {{
    {0.0, 1.2709626e-5, 2.6523662e-5, 3.4000452e-5, 4.1202191e-5},
    {0.0, 2.1414979e-5, 3.0160779e-5, 7.2562722e-5, 11.723375e-5},
    {0.0, 9.0128400e-5, 4.3497037e-5, 84.795348e-5, 170.37206e-5},
}};
constexpr std::array<Row, 3> kWet = {{
    {5.8021897e-4, 5.6794847e-4, 5.8118019e-4, 5.9727542e-4, 6.1641693e-4},
    {1.4275268e-3, 1.5138625e-3, 1.4572752e-3, 1.5007428e-3, 1.7599082e-3},
    {4.3472961e-2, 4.6729510e-2, 4.3908931e-2, 4.4626982e-2, 5.4736038e-2},
}};

double AtLatitude(const Row& row, double latitude) {
    const double bands = std::clamp(std::abs(latitude) / (15.0 * kDegree) - 1.0, 0.0, 4.0);
    const auto i = std::min(static_cast<std::size_t>(bands), kBands - 2);
    return row[i] + (row[i + 1] - row[i]) * (bands - static_cast<double>(i));
}

}  // namespace

Troposphere::Troposphere(const Scenario& scenario, const io::GpsTime& origin)
    : weather_(scenario.weather),
      effects_(scenario.effects),
      dayOfYear_(DayOfYear(origin)),
      reference_(ToGeodetic(scenario.sites.front().marker)) {
    constexpr int kWaves = 44;
    constexpr double kLongest = 3.0e6, kShortest = 100.0;  // m
    // The integral of u^(-5/3) (1 - J0(u)) over u is Gamma(2/3) / (2^(2/3) 2/3 Gamma(4/3)).
    constexpr double kIntegral = 1.4329;
    Random random(scenario.seed, "turbulence");
    const double step = std::log(kLongest / kShortest) / kWaves;
    const double c = weather_.turbulence * effects_.turbulence;
    for (int j = 0; j < kWaves; ++j) {
        const double length = kLongest * std::exp(-step * (j + random.Uniform()));
        const double k = 2.0 * kPi / length;
        const double direction = random.Uniform(0.0, 2.0 * kPi);
        // Where waves are short against the slab's thickness, half the exponent of the structure
        // function grows from 1/3 to 5/6.
        const double power = c * c * kSlab * kSlab / kIntegral * std::pow(k, -2.0 / 3.0) /
                             (1.0 + 0.268 * k * kSlab) * step;
        Wave wave;
        wave.kNorth = k * std::cos(direction);
        wave.kEast = k * std::sin(direction);
        wave.rate = -weather_.windSpeed * (wave.kNorth * std::cos(weather_.windDirection) +
                                           wave.kEast * std::sin(weather_.windDirection));
        wave.phase = random.Uniform(0.0, 2.0 * kPi);
        wave.amplitude = std::sqrt(power);
        if (c > 0.0) {
            waves_.push_back(wave);
        }
    }
}

double Troposphere::TurbulenceAt(double north, double east, double t) const {
    double sum = 0.0;
    for (const Wave& wave : waves_) {
        sum += wave.amplitude *
               Cosine(wave.kNorth * north + wave.kEast * east + wave.rate * t + wave.phase);
    }
    return sum;
}

double StationTroposphere::Mapping::At(double s) const {
    return (1.0 + a / (1.0 + b / (1.0 + c))) / (s + a / (s + b / (s + c)));
}

StationTroposphere::StationTroposphere(const Troposphere& region, const Geodetic& place)
    : region_(region) {
    const Weather& w = region.weather_;
    const Geodetic& reference = region.reference_;
    const double turn = std::remainder(place.longitude - reference.longitude, 2.0 * kPi);
    north_ = (place.latitude - reference.latitude) * kEarthRadius;
    east_ = turn * kEarthRadius * std::cos(place.latitude);
    height_ = place.height;
    constexpr double kLapse = 0.0065, kExponent = 5.25588;
    const double seaLevel = w.seaLevelPressure + kPer100Km * (w.pressureGradient[0] * north_ +
                                                              w.pressureGradient[1] * east_);
    const double pressure =
        seaLevel * std::pow(1.0 - kLapse * place.height / w.temperature, kExponent);
    hydrostatic_ = region.effects_.hydrostatic * 0.0022768 * pressure /
                   (1.0 - 0.00266 * std::cos(2.0 * place.latitude) - 0.28e-6 * place.height);
    wetShare_ = region.effects_.wet * std::exp(-place.height / w.wetScaleHeight);
    const double season =
        std::cos(2.0 * kPi *
                 (region.dayOfYear_ - 28.0 - (place.latitude < 0.0 ? 365.25 / 2.0 : 0.0)) / 365.25);
    const auto hydrostatic = [&](std::size_t i) {
        return AtLatitude(kHydrostaticMean[i], place.latitude) -
               season * AtLatitude(kHydrostaticSeason[i], place.latitude);
    };
    hydrostaticMapping_ = {hydrostatic(0), hydrostatic(1), hydrostatic(2)};
    heightMapping_ = {2.53e-5, 5.49e-3, 1.14e-3};
    wetMapping_ = {AtLatitude(kWet[0], place.latitude), AtLatitude(kWet[1], place.latitude),
                   AtLatitude(kWet[2], place.latitude)};
}

double StationTroposphere::ZenithWet(double t) const {
    const Weather& w = region_.weather_;
    return wetShare_ * (w.wetZenith + w.wetDrift * t / 3600.0 +
                        kPer100Km * (w.wetGradient[0] * north_ + w.wetGradient[1] * east_));
}

double StationTroposphere::Delay(double azimuth, double elevation, double t) const {
    const double s = std::sin(elevation);
    const double hydrostaticMap =
        hydrostaticMapping_.At(s) + (1.0 / s - heightMapping_.At(s)) * height_ / 1000.0;
    double delay = hydrostatic_ * hydrostaticMap;
    if (wetShare_ > 0.0) {
        const double away = std::min(kFarthest, kMiddleOfSlab * std::cos(elevation) / s);
        const Weather& w = region_.weather_;
        const double north = away * std::cos(azimuth), east = away * std::sin(azimuth);
        const double local = kPer100Km * (w.wetGradient[0] * north + w.wetGradient[1] * east) +
                             region_.TurbulenceAt(north_ + north, east_ + east, t);
        delay += wetMapping_.At(s) * (ZenithWet(t) + wetShare_ * local);
    }
    return delay;
}

}  // namespace vornel::rough
