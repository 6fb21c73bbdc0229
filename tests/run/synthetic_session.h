// A made-up session whose truth is known: satellites on circles, and phases that are what the
// between-station model gives for the true rover, plus ambiguities and noise. The epochs are filled
// directly, as if they had been handed over.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "exports/ctrl_solve.h"
#include "foundation/position.h"
#include "foundation/satellite.h"
#include "observation/ionosphere.h"
#include "observation/observation_records.h"
#include "observation/troposphere.h"
#include "run/static_solve.h"

namespace vornel::test {

inline constexpr double kTestPi = 3.14159265358979323846;
inline constexpr double kTestLight = 299792458.0;

inline double ToRadians(double degrees) {
    return degrees * kTestPi / 180.0;
}

inline XYZPosition GeodeticPoint(double latitudeDegrees, double longitudeDegrees, double height) {
    const double b = ToRadians(latitudeDegrees);
    const double l = ToRadians(longitudeDegrees);
    const double e2 = 0.00669437999014;
    const double n = 6378137.0 / std::sqrt(1.0 - e2 * std::sin(b) * std::sin(b));
    return {(n + height) * std::cos(b) * std::cos(l), (n + height) * std::cos(b) * std::sin(l),
            (n * (1.0 - e2) + height) * std::sin(b)};
}

// The point `north`, `east`, `up` metres from another.
inline XYZPosition Shifted(const XYZPosition& from, double north, double east, double up) {
    const BLHPosition blh = from.ToBLH();
    const double sb = std::sin(blh.B), cb = std::cos(blh.B);
    const double sl = std::sin(blh.L), cl = std::cos(blh.L);
    return {from.X - sb * cl * north - sl * east + cb * cl * up,
            from.Y - sb * sl * north + cl * east + cb * sl * up, from.Z + cb * north + sb * up};
}

// Carrier frequency in Hz, by the interface documents of the systems.
inline double CarrierFrequency(int system, int signal, int channel, int galileoBand) {
    static constexpr double galileo[6] = {0.0,       1575.42e6,  1176.45e6,
                                          1207.14e6, 1191.795e6, 1278.75e6};
    switch (system) {
        case kGps:
            return signal == 0 ? 1575.42e6 : 1227.6e6;
        case kGlonass:
            return signal == 0 ? 1602e6 + 562.5e3 * channel : 1246e6 + 437.5e3 * channel;
        case kBds:
            return signal == 0 ? 1561.098e6 : 1207.14e6;
        default:
            return galileo[galileoBand];
    }
}

struct SyntheticSatellite {
    int number;
    double azimuth;    // degrees, of the first epoch, as the base sees it
    double elevation;  // degrees
    double heading;    // degrees, of its way across the sky
    int channel = 0;   // GLONASS
    double ambiguity[2] = {0.0, 0.0};
};

class SyntheticSession {
  public:
    XYZPosition base = GeodeticPoint(47.0, 11.0, 600.0);
    XYZPosition rover = Shifted(base, 1900.0, -1300.0, 40.0);
    double pcoRover[2] = {0.0, 0.0};  // up, by frequency
    double pcoBase[2] = {0.0, 0.0};
    double heightRover = 0.0;
    double heightBase = 0.0;
    int tropoModel = 1;
    int galFreq1 = 1;
    int galFreq2 = 2;
    int week = 2200;
    double startSeconds = 100800.0;
    double interval = 30.0;
    int epochCount = 40;
    double angularRate = 1.2e-4;  // rad/s
    double phaseNoise = 2e-4;     // metres, of a between-station phase
    std::uint32_t seed = 1;
    std::vector<SyntheticSatellite> satellites;

    // `count` satellites of a system spread over the sky, from `firstId` on, with whole
    // ambiguities.
    void AddSky(int system, int count, int firstId = 1, double turn = 0.0) {
        for (int i = 0; i < count; ++i) {
            SyntheticSatellite satellite{};
            satellite.number = MakeSatNumber(system, firstId + i);
            satellite.azimuth = turn + 137.5 * i;
            satellite.elevation = 32.0 + std::fmod(23.0 * i + turn, 48.0);
            satellite.heading = 61.0 * i + turn;
            satellite.channel = system == kGlonass ? (5 * i) % 14 - 7 : 0;
            satellite.ambiguity[0] = 11.0 * i - 20.0;
            satellite.ambiguity[1] = 17.0 - 7.0 * i;
            satellites.push_back(satellite);
        }
    }

    Epoch TimeOf(int epochIndex) const {
        return {week, startSeconds + interval * static_cast<double>(epochIndex)};
    }

    double Wavelength(const SyntheticSatellite& satellite, int signal) const {
        const int system = SplitSatNumber(satellite.number);
        return kTestLight / CarrierFrequency(system, signal, satellite.channel,
                                             signal == 0 ? galFreq1 : galFreq2);
    }

    std::vector<SDObsData> Epochs() const {
        std::mt19937 random(seed);
        std::vector<SDObsData> epochs;
        for (int i = 0; i < epochCount; ++i) {
            epochs.push_back(EpochAt(i, random));
        }
        return epochs;
    }

    SolveConfig Config() const {
        SolveConfig config;
        config.samplingInterval = interval;
        config.galFreq1 = galFreq1;
        config.galFreq2 = galFreq2;
        config.tropoModel = tropoModel;
        return config;
    }

    int HasGlonass() const {
        for (const SyntheticSatellite& satellite : satellites) {
            if (SplitSatNumber(satellite.number) == kGlonass) {
                return 1;
            }
        }
        return 0;
    }

  private:
    static double Normal(std::mt19937& random) {
        double sum = -6.0;
        for (int i = 0; i < 12; ++i) {
            sum += static_cast<double>(random()) / 4294967296.0;
        }
        return sum;
    }

    // On a circle of 26,600 km about the earth's centre.
    XYZPosition SatelliteAt(const SyntheticSatellite& satellite, double seconds) const {
        const double radius = 26600000.0;
        const double az = ToRadians(satellite.azimuth), el = ToRadians(satellite.elevation);
        const XYZPosition towards =
            Shifted(base, std::cos(el) * std::cos(az), std::cos(el) * std::sin(az), std::sin(el));
        const double d[3] = {towards.X - base.X, towards.Y - base.Y, towards.Z - base.Z};
        const double along = base.X * d[0] + base.Y * d[1] + base.Z * d[2];
        const double r2 = base.X * base.X + base.Y * base.Y + base.Z * base.Z;
        const double range = -along + std::sqrt(along * along - r2 + radius * radius);
        const double u[3] = {(base.X + range * d[0]) / radius, (base.Y + range * d[1]) / radius,
                             (base.Z + range * d[2]) / radius};
        const double flat = std::hypot(u[0], u[1]);
        const double east[3] = {-u[1] / flat, u[0] / flat, 0.0};
        const double north[3] = {-u[2] * u[0] / flat, -u[2] * u[1] / flat, flat};
        const double h = ToRadians(satellite.heading);
        const double turned = angularRate * seconds;
        double position[3];
        for (int k = 0; k < 3; ++k) {
            const double v = std::cos(h) * north[k] + std::sin(h) * east[k];
            position[k] = radius * (std::cos(turned) * u[k] + std::sin(turned) * v);
        }
        return XYZPosition(position);
    }

    static void SetDirection(double azel[2], const XYZPosition& satellite,
                             const XYZPosition& station) {
        const NEUPosition local = XYZPosition(satellite).ToNEU(station);
        azel[0] = std::atan2(local.E, local.N);
        azel[0] += azel[0] < 0.0 ? 2.0 * kTestPi : 0.0;
        azel[1] = std::atan2(local.U, std::hypot(local.N, local.E));
    }

    SDObsData EpochAt(int index, std::mt19937& random) const {
        SDObsData epoch(tropoModel);
        epoch.epoch = TimeOf(index);
        for (const SyntheticSatellite& satellite : satellites) {
            Observe(epoch, satellite, interval * static_cast<double>(index), random);
        }
        return epoch;
    }

    void Observe(SDObsData& epoch, const SyntheticSatellite& satellite, double seconds,
                 std::mt19937& random) const {
        const int s = satellite.number - 1;
        for (auto* list :
             {&epoch.satList, &epoch.satListF1, &epoch.satListF2, &epoch.satListDual}) {
            list->push_back(satellite.number);
        }
        int id = 0;
        if (SplitSatNumber(satellite.number, &id) == kGlonass) {
            epoch.glonassChannel[id - 1] = static_cast<std::int16_t>(satellite.channel);
        }
        const XYZPosition position = SatelliteAt(satellite, seconds);
        const double xyz[3] = {position.X, position.Y, position.Z};
        for (int k = 0; k < 3; ++k) {
            epoch.satPosA[s][k] = epoch.satPosB[s][k] = xyz[k];
        }
        SetDirection(epoch.azelA[s], position, rover);
        SetDirection(epoch.azelB[s], position, base);
        for (int f = 0; f < 2; ++f) {
            const double wavelength = Wavelength(satellite, f);
            const double toL1 = wavelength * 1575.42e6 / kTestLight;
            double unit[3];
            double value = 0.0;
            epoch.Model(-toL1 * toL1, satellite.number, rover, base, unit, value);
            epoch.code[s][f] = value + 0.2 * Normal(random);
            epoch.Model(toL1 * toL1, satellite.number, rover, base, unit, value);
            const double antenna = (pcoRover[f] + heightRover) * std::sin(epoch.azelA[s][1]) -
                                   (pcoBase[f] + heightBase) * std::sin(epoch.azelB[s][1]);
            epoch.phase[s][f] = (value - antenna + phaseNoise * Normal(random)) / wavelength +
                                satellite.ambiguity[f];
        }
        double unit[3];
        epoch.Model(0.0, satellite.number, rover, base, unit, epoch.sdObserved[s]);
        epoch.sdObserved[s] -= (pcoRover[0] + heightRover) * std::sin(epoch.azelA[s][1]) -
                               (pcoBase[0] + heightBase) * std::sin(epoch.azelB[s][1]);
    }
};

// What a control object holds when a session has been handed over, its rover off the truth by some
// metres.
inline void HandOver(CTRLSolve& control, const SyntheticSession& session) {
    control.config = session.Config();
    control.basePosition = session.base;
    control.roverPosition = Shifted(session.rover, 1.5, -0.8, 2.1);
    control.l1PcoRover[2] = session.pcoRover[0];
    control.l2PcoRover[2] = session.pcoRover[1];
    control.trueHeightRover = session.heightRover;
    control.l1PcoBase[2] = session.pcoBase[0];
    control.l2PcoBase[2] = session.pcoBase[1];
    control.trueHeightBase = session.heightBase;
    control.roverDualFreq = control.baseDualFreq = 1;
    control.hasGlonass = session.HasGlonass();
    control.epochs = session.Epochs();
}

// A solver as StartProcess makes it.
inline std::unique_ptr<StaticSolve> MakeSolver(const CTRLSolve& control) {
    return std::make_unique<StaticSolve>(
        control.hasGlonass, control.reservedProcessFlag, control.config, control.epochs,
        &control.delSatList, &control.trackList0, &control.trackList1, &control.trackList2,
        control.roverDualFreq, control.roverPosition, control.l1PcoRover, control.l2PcoRover,
        control.trueHeightRover, control.baseDualFreq, control.basePosition, control.l1PcoBase,
        control.l2PcoBase, control.trueHeightBase);
}

}  // namespace vornel::test
