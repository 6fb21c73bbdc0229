// The atmosphere models a second time, in extended precision, to hold the engine's against.
#pragma once

#include <cmath>

#include "observation/reference_geometry.h"

namespace vornel::reference {

struct Weather {
    Real temperature = 18.0L;  // degrees Celsius
    Real pressure = 1013.25L;  // hPa
    Real humidity = 50.0L;     // percent
};

// A layer of refractivity N (1 - height/H)^4 along the ray, its height taken to the second order of
// the way s as s sin E + s^2 cos^2 E / (2 r): the integral by Simpson's rule, not by the series.
inline Real QuarticLayer(Real refractivity, Real shell, Real stationRadius, Real elevation) {
    const Real sine = std::sin(elevation);
    const Real cosine = std::cos(elevation);
    const Real outer = stationRadius + shell;
    const Real length = std::sqrt(outer * outer - stationRadius * stationRadius * cosine * cosine) -
                        stationRadius * sine;
    const auto density = [&](Real s) {
        const Real height = s * sine + s * s * cosine * cosine / (2.0L * stationRadius);
        const Real left = 1.0L - height / shell;
        return left * left * left * left;
    };
    const int intervals = 4000;
    const Real step = length / intervals;
    Real sum = density(0.0L) + density(length);
    for (int i = 1; i < intervals; ++i) {
        sum += (i % 2 == 1 ? 4.0L : 2.0L) * density(step * static_cast<Real>(i));
    }
    return 1000.0L * refractivity * sum * step / 3.0L;
}

inline Real HopfieldDelay(const Weather& weather, Real height, Real elevation) {
    const Real kelvin = weather.temperature - 0.0065L * height + 273.15L;
    const Real pressure = weather.pressure * std::pow(1.0L - 2.26e-5L * height, 5.225L);
    const Real saturation =
        std::exp(-37.2465L + 0.213166L * kelvin - 0.000256908L * kelvin * kelvin);
    const Real vapour = weather.humidity / 100.0L * std::exp(-0.0006396L * height) * saturation;
    const Real radius = 6378.0L + height / 1000.0L;
    return QuarticLayer(77.6e-6L * pressure / kelvin, 40.136L + 0.14872L * (kelvin - 273.16L),
                        radius, elevation) +
           QuarticLayer(0.373L * vapour / (kelvin * kelvin), 11.0L, radius, elevation);
}

inline Real SaastamoinenDelay(const Weather& weather, Real latitude, Real height, Real elevation) {
    const Real kelvin = weather.temperature - 0.0065L * height + 273.16L;
    const Real pressure = weather.pressure * std::pow(1.0L - 2.2557e-5L * height, 5.2568L);
    const Real vapour = 6.108L * weather.humidity / 100.0L *
                        std::exp((17.15L * kelvin - 4684.0L) / (kelvin - 38.45L));
    const Real gravity = 1.0L - 0.00266L * std::cos(2.0L * latitude) - 0.00028L * height / 1000.0L;
    return 0.002277L * (pressure / gravity + (1255.0L / kelvin + 0.05L) * vapour) /
           std::sin(elevation);
}

// RTCA DO-229: tabled meteorology, zenith delays, and one mapping function. dayOfYear from 1.
inline Real MopsDelay(Real dayOfYear, Real latitude, Real height, Real elevation) {
    static constexpr Real means[5][5] = {{1013.25L, 299.65L, 26.31L, 6.30e-3L, 2.77L},
                                         {1017.25L, 294.15L, 21.79L, 6.05e-3L, 3.15L},
                                         {1015.75L, 283.15L, 11.66L, 5.58e-3L, 2.57L},
                                         {1011.75L, 272.15L, 6.78L, 5.39e-3L, 1.81L},
                                         {1013.00L, 263.65L, 4.11L, 4.53e-3L, 1.55L}};
    static constexpr Real seasons[5][5] = {{0.0L, 0.0L, 0.0L, 0.0L, 0.0L},
                                           {-3.75L, 7.0L, 8.85L, 0.25e-3L, 0.33L},
                                           {-2.25L, 11.0L, 7.24L, 0.32e-3L, 0.46L},
                                           {-1.75L, 15.0L, 5.36L, 0.81e-3L, 0.74L},
                                           {-0.50L, 14.5L, 3.39L, 0.62e-3L, 0.30L}};
    const Real degrees = std::fabs(latitude) * 180.0L / kPi;
    Real place = degrees / 15.0L - 1.0L;
    place = place < 0.0L ? 0.0L : place > 4.0L ? 4.0L : place;
    const int row = place >= 4.0L ? 3 : static_cast<int>(place);
    const Real weight = place - static_cast<Real>(row);
    const Real peak = latitude < 0.0L ? 211.0L : 28.0L;
    const Real season = std::cos(2.0L * kPi * (dayOfYear - peak) / 365.25L);
    Real value[5];
    for (int i = 0; i < 5; ++i) {
        const Real mean = means[row][i] * (1.0L - weight) + means[row + 1][i] * weight;
        const Real swing = seasons[row][i] * (1.0L - weight) + seasons[row + 1][i] * weight;
        value[i] = mean - swing * season;
    }
    const Real pressure = value[0], kelvin = value[1], vapour = value[2], lapse = value[3],
               lambda = value[4];
    const Real gas = 287.054L, gravity = 9.80665L, meanGravity = 9.784L;
    const Real shrink = 1.0L - lapse * height / kelvin;
    const Real dry =
        1e-6L * 77.604L * gas * pressure / meanGravity * std::pow(shrink, gravity / (gas * lapse));
    const Real wet = 1e-6L * 382000.0L * gas / ((lambda + 1.0L) * meanGravity - lapse * gas) *
                     vapour / kelvin *
                     std::pow(shrink, (lambda + 1.0L) * gravity / (gas * lapse) - 1.0L);
    const Real sine = std::sin(elevation);
    return (dry + wet) * 1.001L / std::sqrt(0.002001L + sine * sine);
}

// A constant night content of 10^17 electrons per square metre with a half cosine from 8 to 20 h
// local time, on a shell at 350 km.
inline Real ShellDelay(const Station& station, Real secondsOfDay, Real elevation) {
    const Real earth = 6377397.2L;
    const Real sine = (earth + station.height) / (earth + 350000.0L) * std::cos(elevation);
    Real hour = station.longitude * 12.0L / kPi + secondsOfDay / 3600.0L;
    hour -= hour > 24.0L ? 24.0L : hour < 0.0L ? -24.0L : 0.0L;
    Real content = 1e17L;
    if (hour > 8.0L && hour < 20.0L) {
        content += 3e17L * std::cos(kPi * (hour - 14.0L) / 12.0L);
    }
    return 40.3L / (1575.42e6L * 1575.42e6L) * content / std::sqrt(1.0L - sine * sine);
}

// The broadcast model of IS-GPS-200 with whole turns where it has half turns.
inline Real BroadcastIonoDelay(const double alpha[4], const double beta[4], const Station& station,
                               Real secondsOfWeek, Real elevation, Real azimuth) {
    const Real turn = 2.0L * kPi;
    const Real e = elevation / turn;
    const Real psi = 0.0137L / (e + 0.11L) - 0.022L;
    Real latitude = station.latitude / turn + psi * std::cos(azimuth);
    latitude = latitude > 0.416L ? 0.416L : latitude < -0.416L ? -0.416L : latitude;
    const Real longitude =
        station.longitude / turn + psi * std::sin(azimuth) / std::cos(turn * latitude);
    const Real magnetic = latitude + 0.064L * std::cos(turn * (longitude - 1.617L));
    Real amplitude = 0.0L;
    Real period = 0.0L;
    Real power = 1.0L;
    for (int n = 0; n < 4; ++n) {
        amplitude += alpha[n] * power;
        period += beta[n] * power;
        power *= magnetic;
    }
    amplitude = amplitude < 0.0L ? 0.0L : amplitude;
    period = period < 72000.0L ? 72000.0L : period;
    Real local = 43200.0L * longitude + secondsOfWeek;
    local += local >= 86400.0L ? -86400.0L : local < 0.0L ? 86400.0L : 0.0L;
    const Real x = turn * (local - 50400.0L) / period;
    const Real slant = 1.0L + 16.0L * std::pow(0.53L - e, 3.0L);
    Real seconds = 5e-9L;
    if (std::fabs(x) < 1.57L) {
        seconds += amplitude * (1.0L - x * x / 2.0L + x * x * x * x / 24.0L);
    }
    return kLightSpeed * slant * seconds;
}

}  // namespace vornel::reference
