#include "antenna.h"

#include <cmath>

#include "random.h"

namespace vornel::rough {

std::size_t BandGroupOf(double frequency) {
    constexpr double kUpper = 1.4e9, kMiddle = 1.2e9;  // Hz
    return frequency > kUpper ? 0 : frequency > kMiddle ? 1 : 2;
}

Antenna::Antenna(const Scenario& scenario, const Occupation& occupation)
    : scale_(scenario.effects.phaseCentre) {
    if (!occupation.antenna) {
        scale_ = 0.0;
        return;
    }
    type_ = scenario.antennas.at(*occupation.antenna);
    // By its serial number: one antenna is the same at every occupation.
    std::uint64_t serial = *occupation.antenna;
    for (const char c : occupation.antennaSerial) {
        serial = serial * 131 + static_cast<unsigned char>(c);
    }
    Random random(scenario.seed, "antenna", serial);
    phase_ = random.Uniform(0.0, 2.0 * kPi);
    for (Vector3& offset : type_.offset) {
        for (double& component : offset) {
            component += random.Normal(0.0, type_.individual);
        }
    }
}

double Antenna::Advance(std::size_t group, const Vector3& direction) const {
    if (scale_ == 0.0) {
        return 0.0;
    }
    const double sinElevation = direction[2];
    const double cosSquared = 1.0 - sinElevation * sinElevation;
    const double sinAzimuth = direction[1], cosAzimuth = direction[0];  // times cos of elevation
    const double variation =
        type_.horizonVariation[group] * cosSquared * cosSquared +
        type_.middleVariation[group] * 4.0 * cosSquared * (1.0 - cosSquared) +
        type_.azimuthVariation[group] *
            ((cosAzimuth * cosAzimuth - sinAzimuth * sinAzimuth) * std::cos(phase_) +
             2.0 * sinAzimuth * cosAzimuth * std::sin(phase_));
    return scale_ * (Dot(type_.offset[group], direction) + variation);
}

io::AntennaFile CalibrationsOf(const Scenario& scenario) {
    io::AntennaFile table;
    table.file = "rough world antennas";
    table.version = 1.4;
    const auto rounded = [](double metres) { return std::round(metres * 1e5) / 100.0 * 1e-3; };
    for (const AntennaType& type : scenario.antennas) {
        if (!type.calibrated) {
            continue;
        }
        io::AntennaCalibration calibration;
        calibration.type = type.type;
        calibration.radome = type.radome;
        calibration.method = "ROBOT";
        constexpr std::array<std::pair<const char*, std::size_t>, 9> kFrequencies = {{{"G01", 0},
                                                                                      {"G02", 1},
                                                                                      {"G05", 2},
                                                                                      {"R01", 0},
                                                                                      {"R02", 1},
                                                                                      {"E01", 0},
                                                                                      {"E05", 2},
                                                                                      {"C02", 0},
                                                                                      {"C07", 1}}};
        for (const auto& [name, group] : kFrequencies) {
            const Vector3& offset = type.offset[group];
            calibration.offsets.push_back(
                {name, rounded(offset[0]), rounded(offset[1]), rounded(offset[2])});
        }
        table.antennas.push_back(calibration);
    }
    return table;
}

}  // namespace vornel::rough
