#include "simulation/simulator.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "observation/troposphere.h"
#include "simulation/noise.h"

namespace vornel::simulation {

namespace {

using reference::kLightSpeed;
using reference::Station;

constexpr int kSlots = 64;

// Uses of random numbers.
constexpr std::uint64_t kCodeNoise = 0;       // + 2 receiver + signal
constexpr std::uint64_t kPhaseNoise = 10;     // + 2 receiver + signal
constexpr std::uint64_t kAmbiguityDraw = 20;  // + receiver

// From the frame of GLONASS broadcast orbits to that of the others, as the engine has it.
const Vector kGlonassShift{-0.36L, 0.08L, 0.18L};

Vector ToVector(const XYZPosition& p) {
    return {p.X, p.Y, p.Z};
}
XYZPosition ToPosition(const Vector& v) {
    return {static_cast<double>(v.x), static_cast<double>(v.y), static_cast<double>(v.z)};
}

Vector Offset(const Station& station, const double neu[3]) {
    return neu[0] * station.North() + neu[1] * station.East() + neu[2] * station.Up();
}

// A receiver with what its signals depend on, computed once.
struct Site {
    Receiver receiver;
    XYZPosition marker;
    Station station;
    Vector phaseCentre[2];  // by signal
    BLHPosition geodetic;   // for the engine's troposphere
    ReceiverClock clock;
};

Site SiteOf(Receiver receiver, const XYZPosition& marker, const Antenna& antenna,
            const ReceiverClock& clock) {
    Site site{receiver, marker, StationAt(marker), {}, marker.ToBLH(), clock};
    const double up[2] = {antenna.l1Up + antenna.height, antenna.l2Up + antenna.height};
    for (int f = 0; f < 2; ++f) {
        site.phaseCentre[f] = ToVector(marker) + up[f] * site.station.Up();
    }
    return site;
}

// What lies between a satellite and a receiver.
struct Path {
    Real range[2];     // metres, to the phase centre of each signal
    Real clock;        // s, of the satellite
    Real elevation;    // rad, at the marker
    Real troposphere;  // metres
    Real ionosphere;   // metres, on GPS L1
};

class Observer {
  public:
    Observer(const Scenario& scenario, const MadeUpSky& sky) : scenario_(scenario), sky_(sky) {}

    // At an epoch of the receiver's clock.
    Path Trace(const Site& site, int satellite, int epoch) const {
        const Real tag = scenario_.interval * epoch;
        const Real reception = tag - ClockError(site, epoch);
        // A second round settles the travel time to 1e-12 s: a satellite moves 0.003 range for a
        // second.
        Real travel = 0.075L;
        Path path{};
        for (int round = 0; round < 3; ++round) {
            path = PathFor(site, satellite, epoch, reception - travel, travel);
            if (path.elevation < scenario_.horizon - 0.01) {
                break;
            }
            travel = (path.range[0] + path.troposphere + path.ionosphere * Scale(satellite, 0)) /
                     kLightSpeed;
        }
        return path;
    }

    Real ClockError(const Site& site, int epoch) const {
        return site.clock.offset + static_cast<Real>(site.clock.drift) * scenario_.interval * epoch;
    }

    // Ionospheric delay of a signal over that of GPS L1.
    Real Scale(int satellite, int signal) const {
        const Real ratio = 1575.42e6L / CarrierFrequency(scenario_.config, satellite, signal);
        return ratio * ratio;
    }

  private:
    Path PathFor(const Site& site, int satellite, int epoch, Real transmission, Real travel) const {
        const SatelliteState state = sky_.At(satellite, transmission);
        Vector position =
            reference::TurnAxesZ(MadeUpSky::EarthRate(satellite) * travel, state.position);
        if (SplitSatNumber(satellite) == kGlonass) {
            position = position + kGlonassShift;
        }
        Path path{};
        for (int f = 0; f < 2; ++f) {
            path.range[f] = reference::Norm(position - site.phaseCentre[f]);
        }
        path.clock = state.clock;
        const reference::Direction direction = reference::DirectionOf(site.station, position);
        path.elevation = direction.elevation;
        if (path.elevation > 0.0L) {
            AddAtmosphere(path, site, direction, epoch);
        }
        return path;
    }

    void AddAtmosphere(Path& path, const Site& site, const reference::Direction& direction,
                       int epoch) const {
        const auto elevation = static_cast<double>(direction.elevation);
        const auto azimuth = static_cast<double>(direction.azimuth);
        const Epoch time =
            Epoch(scenario_.week, scenario_.startSeconds) + scenario_.interval * epoch;
        const double azel[2] = {azimuth, elevation};
        double variance = 0.0;
        switch (scenario_.troposphere) {
            case Troposphere::kNone:
                break;
            case Troposphere::kOfFloat:
                path.troposphere = TropoDelay(scenario_.config.tropoModel, site.marker, elevation);
                break;
            case Troposphere::kOfFixed:
                path.troposphere = MopsTroposphere(time, site.geodetic, azel, variance);
                break;
        }
        path.ionosphere =
            scenario_.ionosphere * IonoDelay(site.marker, time.SecondsOfWeek(), elevation, azimuth);
    }

    const Scenario& scenario_;
    const MadeUpSky& sky_;
};

double AmbiguityOf(const Scenario& scenario, Receiver receiver, int satellite, int signal,
                   int epoch) {
    double cycles =
        WholeNumber(scenario.seed, kAmbiguityDraw + static_cast<std::uint64_t>(receiver),
                    static_cast<std::uint64_t>(satellite), static_cast<std::uint64_t>(signal),
                    scenario.ambiguityLimit);
    for (const Slip& slip : scenario.slips) {
        if (slip.receiver == receiver && slip.satellite == satellite && epoch >= slip.epoch) {
            cycles += slip.cycles[signal];
        }
    }
    return cycles;
}

bool IsReceived(const Scenario& scenario, Receiver receiver, int satellite, int signal, int epoch) {
    return std::none_of(scenario.gaps.begin(), scenario.gaps.end(), [&](const Gap& gap) {
        return gap.receiver == receiver && gap.satellite == satellite && gap.first <= epoch &&
               epoch <= gap.last && (gap.signal == -1 || gap.signal == signal);
    });
}

// Of the rover's phases against the base's, metres.
double GlonassBiasOf(const Scenario& scenario, Receiver receiver, int satellite, int signal) {
    if (receiver != kRover || SplitSatNumber(satellite) != kGlonass) {
        return 0.0;
    }
    const double nominal = signal == 0 ? 1602e6 : 1246e6;
    const double off = CarrierFrequency(scenario.config, satellite, signal) - nominal;
    return scenario.glonassBias * off / 1e6;
}

struct Measurement {
    double code = 0.0;   // metres
    double phase = 0.0;  // cycles
};

Measurement Measure(const Scenario& scenario, const Observer& observer, const Site& site,
                    const Path& path, int satellite, int signal, int epoch) {
    const auto noise = [&](std::uint64_t use) {
        const auto kind = use + 2 * static_cast<std::uint64_t>(site.receiver) +
                          static_cast<std::uint64_t>(signal);
        return Gaussian(scenario.seed, kind, static_cast<std::uint64_t>(satellite),
                        static_cast<std::uint64_t>(epoch));
    };
    const Real clocks = kLightSpeed * (observer.ClockError(site, epoch) - path.clock);
    const Real neutral = path.range[signal] + clocks + path.troposphere;
    const Real ionosphere = path.ionosphere * observer.Scale(satellite, signal);
    const Real wavelength = kLightSpeed / CarrierFrequency(scenario.config, satellite, signal);
    Measurement measured;
    measured.code =
        static_cast<double>(neutral + ionosphere + scenario.codeNoise * noise(kCodeNoise));
    measured.phase = static_cast<double>(
        (neutral - ionosphere + GlonassBiasOf(scenario, site.receiver, satellite, signal) +
         scenario.phaseNoise * noise(kPhaseNoise)) /
            wavelength +
        AmbiguityOf(scenario, site.receiver, satellite, signal, epoch));
    return measured;
}

void Record(ReceiverRecord& record, const Scenario& scenario, const Observer& observer,
            const Site& site, const std::vector<int>& satellites, int epoch) {
    const Epoch tag = Epoch(scenario.week, scenario.startSeconds) + scenario.interval * epoch;
    tag.ToWeekSeconds(record.week, record.seconds);
    std::size_t slot = 0;
    for (const int satellite : satellites) {
        const Path path = observer.Trace(site, satellite, epoch);
        if (path.elevation < scenario.horizon) {
            continue;
        }
        if (slot == kSlots) {
            throw std::length_error("more satellites above the horizon than an epoch holds");
        }
        Measurement measured[2];
        for (int f = 0; f < 2; ++f) {
            if (IsReceived(scenario, site.receiver, satellite, f, epoch)) {
                measured[f] = Measure(scenario, observer, site, path, satellite, f, epoch);
            }
        }
        record.satellites[slot] = satellite;
        record.code1[slot] = measured[0].code;
        record.code2[slot] = measured[1].code;
        record.phase1[slot] = measured[0].phase;
        record.phase2[slot] = measured[1].phase;
        ++slot;
    }
}

// The lowest elevation at the base over the session.
Real LowestElevation(const Observer& observer, const Site& base, int satellite, int epochCount) {
    Real lowest = 2.0L;
    const int step = std::max(1, epochCount / 12);
    for (int epoch = 0; epoch < epochCount + step - 1; epoch += step) {
        const int within = std::min(epoch, epochCount - 1);
        lowest = std::min(lowest, observer.Trace(base, satellite, within).elevation);
    }
    return lowest;
}

std::vector<int> ChooseSatellites(const Scenario& scenario, const MadeUpSky& sky,
                                  const Observer& observer, const Site& base) {
    std::vector<int> chosen;
    const int systems[4] = {kGps, kGlonass, kBds, kGalileo};
    for (int i = 0; i < 4; ++i) {
        std::vector<std::pair<Real, int>> byElevation;
        for (const int satellite : sky.satellites()) {
            if (SplitSatNumber(satellite) != systems[i]) {
                continue;
            }
            if (scenario.satellites[i] < 0) {
                chosen.push_back(satellite);
            } else {
                byElevation.emplace_back(
                    -LowestElevation(observer, base, satellite, scenario.epochCount), satellite);
            }
        }
        std::sort(byElevation.begin(), byElevation.end());
        const auto count = std::min(static_cast<std::size_t>(std::max(scenario.satellites[i], 0)),
                                    byElevation.size());
        for (std::size_t k = 0; k < count; ++k) {
            chosen.push_back(byElevation[k].second);
        }
    }
    std::sort(chosen.begin(), chosen.end());
    return chosen;
}

}  // namespace

double CarrierFrequency(const SolveConfig& config, int satellite, int signal) {
    static constexpr double galileo[6] = {0.0,       1575.42e6,  1176.45e6,
                                          1207.14e6, 1191.795e6, 1278.75e6};
    switch (SplitSatNumber(satellite)) {
        case kGps:
            return signal == 0 ? 1575.42e6 : 1227.6e6;
        case kGlonass: {
            const int channel = MadeUpSky::GlonassChannel(satellite);
            return signal == 0 ? 1602e6 + 562.5e3 * channel : 1246e6 + 437.5e3 * channel;
        }
        case kBds:
            return signal == 0 ? 1561.098e6 : 1207.14e6;
        default:
            return galileo[signal == 0 ? config.galFreq1 : config.galFreq2];
    }
}

Station StationAt(const XYZPosition& position) {
    const Real e2 = 0.00669437999014L;
    const Real a = 6378137.0L;
    const Vector v = ToVector(position);
    const Real p = std::sqrt(v.x * v.x + v.y * v.y);
    Station station;
    station.longitude = std::atan2(v.y, v.x);
    station.latitude = std::atan2(v.z, p * (1.0L - e2));
    // Each round leaves a hundredth of the error, at any height near the ground.
    for (int round = 0; round < 12; ++round) {
        const Real s = std::sin(station.latitude);
        const Real n = a / std::sqrt(1.0L - e2 * s * s);
        station.height = p / std::cos(station.latitude) - n;
        station.latitude = std::atan2(v.z + e2 * n * s, p);
    }
    return station;
}

double Session::SingleDifferenceAmbiguity(int satellite, int signal, int epoch) const {
    return AmbiguityOf(scenario, kRover, satellite, signal, epoch) -
           AmbiguityOf(scenario, kBase, satellite, signal, epoch);
}

Session Simulate(const Scenario& given) {
    Session session{
        given, MadeUpSky(given.week, given.startSeconds, given.interval * given.epochCount),
        {},    {},
        {},    {},
        {}};
    Scenario& scenario = session.scenario;
    scenario.config.samplingInterval = scenario.interval;
    CurrentIonosphere() = scenario.broadcastIonosphere.value_or(IonosphereParameters{});
    SetSurfaceWeather(scenario.config.temperature, scenario.config.pressure,
                      scenario.config.humidity);

    session.base = ToPosition(scenario.base.Cartesian());
    const Station base = StationAt(session.base);
    session.rover = ToPosition(ToVector(session.base) + Offset(base, scenario.baseline));
    session.roverApproximate =
        ToPosition(ToVector(session.rover) + Offset(base, scenario.roverError));

    const Observer observer(scenario, session.sky);
    const Site sites[2] = {
        SiteOf(kRover, session.rover, scenario.roverAntenna, scenario.roverClock),
        SiteOf(kBase, session.base, scenario.baseAntenna, scenario.baseClock)};
    session.satellites = ChooseSatellites(scenario, session.sky, observer, sites[kBase]);
    session.epochs.resize(static_cast<std::size_t>(scenario.epochCount));
    for (int epoch = 0; epoch < scenario.epochCount; ++epoch) {
        SessionEpoch& target = session.epochs[static_cast<std::size_t>(epoch)];
        Record(target.rover, scenario, observer, sites[kRover], session.satellites, epoch);
        Record(target.base, scenario, observer, sites[kBase], session.satellites, epoch);
    }
    return session;
}

}  // namespace vornel::simulation
