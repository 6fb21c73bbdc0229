#include "session/single_point.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "session/broadcast_orbit.h"

namespace vornel::session {
namespace {

constexpr double kSpeedOfLight = 299792458.0;   // m/s
constexpr double kRotationRate = 7.2921151e-5;  // rad/s
constexpr std::size_t kUnknowns = 3 + engine::kSystemCount;

// Carrier frequencies in Hz (interface documents of the systems); of GLONASS their ratio alone.
double Frequency(engine::System system, std::size_t f, GalileoSignals galileo) {
    constexpr std::array<double, 6> kGalileo = {0.0,       1575.42e6,  1176.45e6,
                                                1207.14e6, 1191.795e6, 1278.75e6};
    switch (system) {
        case engine::System::kGps:
            return f == 0 ? 1575.42e6 : 1227.60e6;
        case engine::System::kBds:
            return f == 0 ? 1561.098e6 : 1207.14e6;
        case engine::System::kGalileo:
            return kGalileo[static_cast<std::size_t>(f == 0 ? galileo.first : galileo.second)];
        case engine::System::kGlonass:
            return f == 0 ? 9.0 : 7.0;  // their ratio is that of every channel
    }
    return 0.0;
}

// Code free of the first-order ionosphere where both frequencies are there.
double CombinedCode(const SignalValues& values, GalileoSignals galileo) {
    const double f1 = Frequency(values.satellite.system, 0, galileo);
    const double f2 = Frequency(values.satellite.system, 1, galileo);
    if (values.code[1] == 0.0 || f1 == f2) {
        return values.code[0];
    }
    return (f1 * f1 * values.code[0] - f2 * f2 * values.code[1]) / (f1 * f1 - f2 * f2);
}

// Delay of a standard atmosphere in metres; a satellite low down counts as at 3 degrees.
double StandardTroposphere(double sineOfElevation, double height) {
    constexpr double kZenith = 2.4;       // m at sea level
    constexpr double kScale = 8000.0;     // m
    constexpr double kLeastSine = 0.052;  // 3 degrees
    return kZenith * std::exp(-std::clamp(height, -500.0, 20000.0) / kScale) /
           std::max(sineOfElevation, kLeastSine);
}

struct Ray {
    SatelliteState satellite;
    double code = 0.0;
    std::size_t system = 0;  // index
};

// Solves the normal equations by Gauss elimination with pivots; unknowns without any observation
// (a zero diagonal) become zero. False when they are singular otherwise.
using Normal = std::array<std::array<double, kUnknowns + 1>, kUnknowns>;
bool Solve(Normal n, std::array<double, kUnknowns>& x) {
    for (std::size_t i = 0; i < kUnknowns; ++i) {
        if (n[i][i] == 0.0) {
            n[i][i] = 1.0;
        }
    }
    for (std::size_t i = 0; i < kUnknowns; ++i) {
        std::size_t pivot = i;
        for (std::size_t k = i + 1; k < kUnknowns; ++k) {
            if (std::abs(n[k][i]) > std::abs(n[pivot][i])) {
                pivot = k;
            }
        }
        std::swap(n[i], n[pivot]);
        if (std::abs(n[i][i]) < 1e-9) {
            return false;
        }
        for (std::size_t k = 0; k < kUnknowns; ++k) {
            if (k == i) {
                continue;
            }
            const double factor = n[k][i] / n[i][i];
            for (std::size_t j = i; j <= kUnknowns; ++j) {
                n[k][j] -= factor * n[i][j];
            }
        }
    }
    for (std::size_t i = 0; i < kUnknowns; ++i) {
        x[i] = n[i][kUnknowns] / n[i][i];
    }
    return true;
}

Vector3 RotatedDuringFlight(const Vector3& position, double seconds) {
    const double angle = kRotationRate * seconds;
    return {position[0] * std::cos(angle) + position[1] * std::sin(angle),
            position[1] * std::cos(angle) - position[0] * std::sin(angle), position[2]};
}

double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

std::vector<Ray> RaysOf(const std::vector<SignalValues>& values, const io::GpsTime& time,
                        const Ephemerides& ephemerides, GalileoSignals galileo) {
    std::vector<Ray> rays;
    for (const SignalValues& value : values) {
        const double code = CombinedCode(value, galileo);
        io::GpsTime sent = io::Shifted(time, -code / kSpeedOfLight);
        auto state = BroadcastState(ephemerides, value.satellite, sent);
        if (!state) {
            continue;
        }
        sent = io::Shifted(sent, -state->clock);
        state = BroadcastState(ephemerides, value.satellite, sent);
        if (state) {
            rays.push_back({*state, code, IndexOf(value.satellite.system)});
        }
    }
    return rays;
}

}  // namespace

std::optional<Vector3> FixOneEpoch(const std::vector<SignalValues>& values, const io::GpsTime& time,
                                   const Ephemerides& ephemerides, GalileoSignals galileo) {
    const std::vector<Ray> rays = RaysOf(values, time, ephemerides, galileo);
    std::array<bool, engine::kSystemCount> present{};
    for (const Ray& ray : rays) {
        present[ray.system] = true;
    }
    const auto systems = static_cast<std::size_t>(std::count(present.begin(), present.end(), true));
    if (rays.size() < 3 + systems) {
        return std::nullopt;
    }
    Vector3 position{};
    std::array<double, engine::kSystemCount> clocks{};  // m
    constexpr int kPasses = 12;
    for (int pass = 0; pass < kPasses; ++pass) {
        const bool nearSurface = Length(position) > 6.0e6;
        const Geodetic place = nearSurface ? ToGeodetic(position) : Geodetic{};
        Normal normal{};
        for (const Ray& ray : rays) {
            const double flight = Length(Minus(ray.satellite.position, position)) / kSpeedOfLight;
            const Vector3 satellite = RotatedDuringFlight(ray.satellite.position, flight);
            const Vector3 line = Minus(satellite, position);
            const double range = Length(line);
            const double up = nearSurface ? ToNeu(place, line)[2] / range : 1.0;
            const double delay = nearSurface ? StandardTroposphere(up, place.height) : 0.0;
            const double weight = nearSurface ? std::max(up * up, 0.01) : 1.0;
            std::array<double, kUnknowns + 1> row{};
            for (std::size_t i = 0; i < 3; ++i) {
                row[i] = -line[i] / range;
            }
            row[3 + ray.system] = 1.0;
            row[kUnknowns] =
                ray.code + kSpeedOfLight * ray.satellite.clock - range - delay - clocks[ray.system];
            for (std::size_t i = 0; i < kUnknowns; ++i) {
                for (std::size_t j = 0; j <= kUnknowns; ++j) {
                    normal[i][j] += weight * row[i] * row[j];
                }
            }
        }
        std::array<double, kUnknowns> change{};
        if (!Solve(normal, change)) {
            return std::nullopt;
        }
        for (std::size_t i = 0; i < 3; ++i) {
            position[i] += change[i];
        }
        for (std::size_t i = 0; i < engine::kSystemCount; ++i) {
            clocks[i] += change[3 + i];
        }
        if (std::hypot(change[0], change[1], change[2]) < 1e-3) {
            const double height = ToGeodetic(position).height;
            const bool onEarth = height > -2000.0 && height < 100000.0;
            return onEarth ? std::optional(position) : std::nullopt;
        }
    }
    return std::nullopt;
}

std::optional<CodeFix> FixFromCode(const io::Observations& observations,
                                   const std::vector<std::size_t>& epochs,
                                   const SignalReader& reader, const Ephemerides& ephemerides,
                                   GalileoSignals galileo) {
    constexpr std::size_t kMostEpochs = 40;
    const std::size_t step = std::max<std::size_t>(1, epochs.size() / kMostEpochs);
    std::vector<Vector3> fixes;
    ValueLosses losses;
    for (std::size_t i = 0; i < epochs.size(); i += step) {
        const io::ObservationEpoch& epoch = observations.epochs[epochs[i]];
        if (const auto fix =
                FixOneEpoch(reader.Read(epoch, losses), epoch.time, ephemerides, galileo)) {
            fixes.push_back(*fix);
        }
    }
    if (fixes.empty()) {
        return std::nullopt;
    }
    CodeFix result;
    result.epochs = fixes.size();
    for (std::size_t c = 0; c < 3; ++c) {
        std::vector<double> values;
        for (const Vector3& fix : fixes) {
            values.push_back(fix[c]);
        }
        result.position[c] = Median(values);
    }
    std::vector<double> distances;
    for (const Vector3& fix : fixes) {
        distances.push_back(Length(Minus(fix, result.position)));
    }
    result.spread = Median(distances);
    return result;
}

}  // namespace vornel::session
