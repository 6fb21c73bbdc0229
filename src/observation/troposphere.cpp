// Slant tropospheric delays without estimation.
#include "observation/troposphere.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vornel {

namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kHalfPi = 1.5707963267948966;

constexpr int kHopfieldModel = 0;
constexpr int kSaastamoinenModel = 1;
constexpr int kNoModel = -1;

SurfaceWeather surfaceWeather;

double InsideOr(double value, double low, double high, double otherwise) {
    return value > low && value < high ? value : otherwise;
}

// Integral of the refractivity of one layer along the ray, m: the profile N (1 - h/H)^4 with the
// height h along the ray expanded in the distance, integrated term by term up to the layer's top.
// refractivity: at the station; top: of the layer above the station, km; r: of the station from the
// centre of the earth, km.
double LayerDelay(double refractivity, double top, double r, double elevation) {
    const double sinE = std::sin(elevation);
    const double cosE = std::cos(elevation);
    const double apex = r + top;
    const double horizontal = r * cosE;
    const double ray = std::sqrt(apex * apex - horizontal * horizontal) - r * sinE;
    const double a = -sinE / top;
    const double b = -(cosE * cosE) / (2.0 * top * r);
    const double a2 = a * a;
    const double b2 = b * b;
    const double coefficients[8] = {
        4.0 * a,
        6.0 * a2 + 4.0 * b,
        4.0 * a * (a2 + 3.0 * b),
        a2 * a2 + 12.0 * a2 * b + 6.0 * b2,
        4.0 * a * b * (a2 + 3.0 * b),
        (6.0 * a2 + 4.0 * b) * b2,
        4.0 * a * (b * b * b),
        b2 * b2,
    };
    double length = ray;  // km
    double power = ray;
    for (int k = 0; k < 8; ++k) {
        power *= ray;
        length += coefficients[k] * power / (k + 2);
    }
    return length * 1000.0 * refractivity;
}

// Parameters of the MOPS model: pressure (hPa), temperature (K), water vapour pressure (hPa),
// temperature lapse rate (K/m), water vapour lapse rate.
struct MopsValues {
    double pressure, temperature, vapour, beta, lambda;
};

struct MopsBand {
    MopsValues mean;
    MopsValues seasonal;  // amplitude
};

// RTCA DO-229, tables A-2: latitudes 15, 30, 45, 60 and 75 degrees.
constexpr int kBandCount = 5;
constexpr double kBandWidth = 15.0;  // degrees
constexpr MopsBand kMopsBands[kBandCount] = {
    {{1013.25, 299.65, 26.31, 0.0063, 2.77}, {0.0, 0.0, 0.0, 0.0, 0.0}},
    {{1017.25, 294.15, 21.79, 0.00605, 3.15}, {-3.75, 7.0, 8.85, 0.00025, 0.33}},
    {{1015.75, 283.15, 11.66, 0.00558, 2.57}, {-2.25, 11.0, 7.24, 0.00032, 0.46}},
    {{1011.75, 272.15, 6.78, 0.00539, 1.81}, {-1.75, 15.0, 5.36, 0.00081, 0.74}},
    {{1013.0, 263.65, 4.11, 0.00453, 1.55}, {-0.5, 14.5, 3.39, 0.00062, 0.3}},
};

// first + weight * (second - first) of every value.
MopsValues Blend(const MopsValues& first, const MopsValues& second, double weight) {
    const auto mix = [weight](double a, double b) { return a + (b - a) * weight; };
    return {mix(first.pressure, second.pressure), mix(first.temperature, second.temperature),
            mix(first.vapour, second.vapour), mix(first.beta, second.beta),
            mix(first.lambda, second.lambda)};
}

// By the absolute latitude in degrees; one that is not a number takes the last band.
MopsBand BandAt(double latitude) {
    if (latitude <= kBandWidth) {
        return kMopsBands[0];
    }
    if (!(latitude < kBandWidth * kBandCount)) {
        return kMopsBands[kBandCount - 1];
    }
    const int i = std::min(static_cast<int>(latitude / kBandWidth), kBandCount - 1);
    const double weight = (latitude - kBandWidth * i) / kBandWidth;
    const MopsBand& lower = kMopsBands[i - 1];
    const MopsBand& upper = kMopsBands[i];
    return {Blend(lower.mean, upper.mean, weight), Blend(lower.seasonal, upper.seasonal, weight)};
}

// The values of a day of the year at a latitude (radians).
MopsValues ValuesAt(double latitude, int dayOfYear) {
    const MopsBand band = BandAt(std::fabs(latitude) * 180.0 / kPi);
    const double coldestDay = latitude >= 0.0 ? 28.0 : 211.0;
    const double season = std::cos(2.0 * kPi * (dayOfYear - coldestDay) / 365.25);
    return {band.mean.pressure - band.seasonal.pressure * season,
            band.mean.temperature - band.seasonal.temperature * season,
            band.mean.vapour - band.seasonal.vapour * season,
            band.mean.beta - band.seasonal.beta * season,
            band.mean.lambda - band.seasonal.lambda * season};
}

// Zenith delay at a height (m).
double MopsZenithDelay(const MopsValues& values, double height) {
    constexpr double kGravity = 9.80665;                 // m/s^2
    constexpr double kMeanGravity = 9.784;               // m/s^2
    constexpr double kDryAirGas = 287.054;               // J/(kg K)
    constexpr double kDryFactor = 0.022276538615999996;  // 1e-6 * 77.604 K/hPa * kDryAirGas
    constexpr double kWetFactor = 109.65462799999999;    // 1e-6 * 382000 K^2/hPa * kDryAirGas
    const double beta = values.beta;
    const double vapourExponent = values.lambda + 1.0;
    const double x = 1.0 - beta * height / values.temperature;
    const double dry =
        kDryFactor * values.pressure / kMeanGravity * std::pow(x, kGravity / (kDryAirGas * beta));
    const double wet = kWetFactor / (vapourExponent * kMeanGravity - beta * kDryAirGas) *
                       values.vapour / values.temperature *
                       std::pow(x, vapourExponent * kGravity / (kDryAirGas * beta) - 1.0);
    return dry + wet;
}

}  // namespace

const SurfaceWeather& CurrentSurfaceWeather() {
    return surfaceWeather;
}

void SetSurfaceWeather(double temperature, double pressure, double humidity) {
    surfaceWeather.temperature = InsideOr(temperature, -50.0, 100.0, 18.0);
    surfaceWeather.pressure = InsideOr(pressure, 500.0, 2000.0, 1013.25);
    surfaceWeather.humidity = InsideOr(humidity, 0.0, 100.0, 50.0);
}

StationTroposphere::StationTroposphere(int model, const BLHPosition& geodetic) : model_(model) {
    const double height = geodetic.H;
    if (model_ == kHopfieldModel) {
        const double temperature = surfaceWeather.temperature - 0.0065 * height + 273.15;
        const double pressure = surfaceWeather.pressure * std::pow(1.0 - 2.26e-05 * height, 5.225);
        const double saturation =
            std::exp(0.213166 * temperature - 37.2465 - 0.000256908 * (temperature * temperature));
        const double vapour =
            std::exp(-0.0006396 * height) * surfaceWeather.humidity / 100.0 * saturation;
        dry_ = {7.76e-05 * pressure / temperature, (temperature - 273.16) * 0.14872 + 40.136};
        wet_ = {0.373 * vapour / temperature / temperature, 11.0};
        radius_ = height / 1000.0 + 6378.0;
    } else if (model_ == kSaastamoinenModel) {
        const double temperature = surfaceWeather.temperature - 0.0065 * height + 273.16;
        const double pressure =
            surfaceWeather.pressure * std::pow(1.0 - 2.2557e-05 * height, 5.2568);
        const double vapour = surfaceWeather.humidity * 6.108 / 100.0 *
                              std::exp((17.15 * temperature - 4684.0) / (temperature - 38.45));
        dryFactor_ = 0.002277 * pressure /
                     (1.0 - 0.00266 * std::cos(2.0 * geodetic.B) - 0.00028 * height / 1000.0);
        wetFactor_ = vapour * (1255.0 / temperature + 0.05) * 0.002277;
    }
}

double StationTroposphere::Delay(double elevation) const {
    switch (model_) {
        case kHopfieldModel:
            return HopfieldDelay(elevation);
        case kSaastamoinenModel:
            return SaastamoinenDelay(elevation);
        default:
            return 0.0;
    }
}

double StationTroposphere::HopfieldDelay(double elevation) const {
    if (elevation < 0.0) {
        return 0.0;
    }
    double sum = 0.0;
    sum += LayerDelay(dry_.refractivity, dry_.top, radius_, elevation);
    sum += LayerDelay(wet_.refractivity, wet_.top, radius_, elevation);
    return sum;
}

double StationTroposphere::SaastamoinenDelay(double elevation) const {
    if (elevation < 0.0) {
        return 0.0;
    }
    const double cosZenith = std::cos(kHalfPi - elevation);
    return dryFactor_ / cosZenith + wetFactor_ / cosZenith;
}

double StationMopsTroposphere::Delay(const Epoch& time, double elevation, double& variance) {
    if (geodetic_.H < -100.0 || geodetic_.H > 10000.0 || elevation <= 0.0) {
        variance = 0.0;
        return 0.0;
    }
    if (!hasZenith_ || zenithDay_ != time.day) {
        zenith_ = MopsZenithDelay(ValuesAt(geodetic_.B, time.DayOfYear()), geodetic_.H);
        zenithDay_ = time.day;
        hasZenith_ = true;
    }
    const double sinE = std::sin(elevation);
    const double mapping = 1.001 / std::sqrt(sinE * sinE + 0.002001);
    variance = 0.0144 * (mapping * mapping);
    return mapping * zenith_;
}

StationTroposphere TroposphereAt(int model, const BLHPosition& geodetic) {
    return StationTroposphere(std::fabs(geodetic.H) > 10000.0 ? kNoModel : model, geodetic);
}

double TropoDelay(int model, XYZPosition station, double elevation) {
    return TroposphereAt(model, station.ToBLH()).Delay(elevation);
}

double ModifiedHopfield(double height, double elevation) {
    return StationTroposphere(kHopfieldModel, BLHPosition(0.0, 0.0, height)).Delay(elevation);
}

double Saastamoinen(double latitude, double height, double elevation) {
    return StationTroposphere(kSaastamoinenModel, BLHPosition(latitude, 0.0, height))
        .Delay(elevation);
}

double MopsTroposphere(Epoch time, BLHPosition position, const double azel[2], double& variance) {
    return StationMopsTroposphere(position).Delay(time, azel[1], variance);
}

}  // namespace vornel
