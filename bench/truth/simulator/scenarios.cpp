#include "scenarios.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>

#include "calendar.h"

namespace vornel::rough {
namespace {

constexpr double kHour = 3600.0;

double Sign(Random& random) {
    return random.Chance(0.5) ? 1.0 : -1.0;
}

void AddScatterers(Random& random, Surroundings& around, int count, double nearest, double farthest,
                   double amplitude, bool allRound) {
    for (int i = 0; i < count; ++i) {
        Scatterer s;
        const double distance = random.LogUniform(nearest, farthest);
        const double azimuth = random.Uniform(0.0, 2.0 * kPi);
        const double elevation = std::asin(random.Uniform(-0.7, 0.35));
        s.place = {distance * std::cos(elevation) * std::cos(azimuth),
                   distance * std::cos(elevation) * std::sin(azimuth),
                   distance * std::sin(elevation)};
        s.amplitude = amplitude * random.LogUniform(0.5, 2.0);
        s.phase = random.Uniform(0.0, 2.0 * kPi);
        // Walls and edges send satellites of a part of the sky into the antenna.
        s.reach = allRound ? -1.0 : random.Uniform(-0.9, 0.6);
        around.scatterers.push_back(s);
    }
}

// A horizon of hills and of a few things that stand near.
void AddHorizon(Random& random, Surroundings& around, double everywhere, int things,
                double highest) {
    around.horizon.assign(kHorizonDirections, 0.0);
    const double phase = random.Uniform(0.0, 2.0 * kPi);
    for (std::size_t i = 0; i < kHorizonDirections; ++i) {
        const double azimuth = 2.0 * kPi * static_cast<double>(i) / kHorizonDirections;
        around.horizon[i] = everywhere * (1.0 + 0.7 * std::cos(azimuth + phase)) * kDegree;
    }
    for (int t = 0; t < things; ++t) {
        const int centre = random.Integer(0, static_cast<int>(kHorizonDirections) - 1);
        const int half = random.Integer(1, 6);
        const double height = random.Uniform(0.3, 1.0) * highest * kDegree;
        for (int k = centre - half; k <= centre + half; ++k) {
            const auto n = static_cast<int>(kHorizonDirections);
            double& horizon = around.horizon[static_cast<std::size_t>((k % n + n) % n)];
            horizon = std::max(horizon, height);
        }
    }
}

io::GnssSystem SystemOf(char letter) {
    switch (letter) {
        case 'R':
            return io::GnssSystem::kGlonass;
        case 'E':
            return io::GnssSystem::kGalileo;
        case 'C':
            return io::GnssSystem::kBeiDou;
        default:
            return io::GnssSystem::kGps;
    }
}

std::array<bool, io::kSystemCount> SystemsOf(const std::string& letters) {
    std::array<bool, io::kSystemCount> systems{};
    for (const char letter : letters) {
        systems[static_cast<std::size_t>(SystemOf(letter))] = true;
    }
    return systems;
}

std::vector<Tracking> WithinSystems(std::vector<Tracking> signals, const std::string& letters) {
    const auto wanted = SystemsOf(letters);
    std::erase_if(signals, [&](const Tracking& signal) {
        return !wanted[static_cast<std::size_t>(signal.system)];
    });
    return signals;
}

Scenario Begin(std::uint64_t seed, const std::string& kind) {
    Scenario scenario;
    scenario.seed = seed;
    scenario.kind = kind;
    return scenario;
}

// Adds both stations with their equipment. The second site is `length` from the first.
void AddSites(Random& random, Scenario& scenario, const Geodetic& base, double length,
              double heightDifference) {
    const Geodetic rover =
        PlaceAt(base, length, random.Uniform(0.0, 2.0 * kPi), base.height + heightDifference);
    scenario.sites = {{"BASE", ToCartesian(base), {}}, {"ROVR", ToCartesian(rover), {}}};
}

// Headers are off by as much as surveyors and converters make it: known to centimetres, from a
// single position, from an averaged one, rarely by tens of metres, or missing.
std::optional<Vector3> DrawHeaderOffset(Random& random, bool isBase) {
    const std::size_t choice = random.Choose(isBase ? std::vector<double>{0.55, 0.30, 0.12, 0.03}
                                                    : std::vector<double>{0.25, 0.50, 0.20, 0.05});
    if (choice == 3 && !isBase) {
        return std::nullopt;
    }
    constexpr std::array<double, 4> kSigma = {0.02, 1.5, 6.0, 20.0};  // m
    const double sigma = kSigma[choice];
    return Vector3{sigma * random.Normal(), sigma * random.Normal(), 1.5 * sigma * random.Normal()};
}

void AddOccupation(Random& random, Scenario& scenario, std::size_t site, const Receiver& receiver,
                   std::optional<std::size_t> antenna, bool permanent) {
    Occupation occupation;
    occupation.site = site;
    occupation.receiver = receiver;
    occupation.antenna = antenna;
    occupation.antennaSerial = std::to_string(1000 + site);
    occupation.duration = scenario.duration;
    occupation.antennaHeight = permanent ? (random.Chance(0.6) ? 0.0 : random.Uniform(0.03, 0.3))
                                         : random.Uniform(1.0, 2.0);
    if (!permanent) {
        // Heights are read to a millimetre or two and tripods stand centred as well.
        occupation.headerHeight =
            std::round((occupation.antennaHeight + 0.001 * random.Normal()) * 1e4) / 1e4;
        occupation.centring = {0.0007 * random.Normal(), 0.0007 * random.Normal()};
    }
    occupation.antennaHeight = std::round(occupation.antennaHeight * 1e4) / 1e4;
    occupation.headerOffset = DrawHeaderOffset(random, site == 0);
    scenario.occupations.push_back(occupation);
}

}  // namespace

double SolarLevelOf(const io::GpsTime& time) {
    // Maxima of the cycles 23 to 25: 2001.9, 2014.3, 2024.8; a minimum lies about 6 years later.
    const double year = 2000.0 + DaysSince2000(time) / 365.25;
    const double cycle = 11.1;
    const double after = std::remainder(year - (year < 2008.5   ? 2001.9
                                                : year < 2019.8 ? 2014.3
                                                                : 2024.8),
                                        cycle);
    return 0.5 + 0.5 * std::cos(2.0 * kPi * after / cycle);
}

Weather DrawWeather(Random& random, const Geodetic& place, const io::GpsTime& start) {
    const double latitude = std::abs(place.latitude) / kDegree;
    const double season =
        -std::cos(2.0 * kPi * (DayOfYear(start) - 28.0 - (place.latitude < 0.0 ? 182.6 : 0.0)) /
                  365.25) *
        std::min(1.0, latitude / 45.0);  // 1 in summer
    Weather w;
    w.seaLevelPressure = random.Normal(1014.0, 8.0);
    w.temperature =
        300.0 - 0.45 * std::max(0.0, latitude - 15.0) + 10.0 * season + random.Normal(0.0, 5.0);
    w.pressureGradient = {random.Normal(0.0, 0.8), random.Normal(0.0, 0.8)};
    // Zenith wet delays of the world: 0.3 m in the tropics, 0.1 m at 50 degrees, twice as much in
    // summer as in winter (Mendes 1999).
    const double mean = 0.32 * std::exp(-std::pow(latitude / 42.0, 2.0)) + 0.03;
    w.wetZenith = mean * (1.0 + 0.4 * season) * random.LogUniform(0.6, 1.6);
    w.wetScaleHeight = random.Uniform(1500.0, 2600.0);
    const double wetness = w.wetZenith / 0.12;
    w.wetGradient = {0.006 * wetness * random.Normal(), 0.006 * wetness * random.Normal()};
    w.wetDrift = 0.002 * wetness * random.Normal();
    w.turbulence = 2.4e-7 * std::clamp(wetness, 0.3, 3.0) * random.LogUniform(0.6, 1.6);
    w.windSpeed = random.LogUniform(4.0, 16.0);
    w.windDirection = random.Uniform(0.0, 2.0 * kPi);
    return w;
}

IonosphereState DrawIonosphere(Random& random, const Geodetic& place, double solar,
                               double duration) {
    IonosphereState state;
    state.dayPeak = (22.0 + 95.0 * solar) * random.LogUniform(0.75, 1.33);
    state.night = random.Uniform(0.10, 0.22);
    state.anomaly = random.Uniform(0.5, 1.3);
    state.roughness = random.LogUniform(0.008, 0.03);
    const double activity = std::sqrt(state.dayPeak / 30.0);
    const int tries = 1 + static_cast<int>(std::ceil(duration / (2.0 * kHour)));
    for (int i = 0; i < tries; ++i) {
        if (!random.Chance(0.5)) {
            continue;
        }
        TravellingWave wave;
        wave.amplitude = activity * random.LogUniform(0.02, 0.3);
        wave.length = random.Uniform(100e3, 300e3);
        wave.period = random.Uniform(600.0, 1800.0);
        wave.azimuth = random.Uniform(0.0, 2.0 * kPi);
        wave.phase = random.Uniform(0.0, 2.0 * kPi);
        wave.time = random.Uniform(-kHour, duration + kHour);
        wave.duration = random.Uniform(1.0, 3.0) * kHour;
        state.waves.push_back(wave);
    }
    const bool low = std::abs(place.latitude) < 25.0 * kDegree;
    if (solar > 0.4 && random.Chance(low ? 0.5 : 0.1)) {
        state.scintillation = random.Uniform(0.1, 1.0);
    }
    if (low && solar > 0.4 && random.Chance(0.3)) {
        for (int i = 0; i < 3; ++i) {
            Depletion d;
            d.depth = random.LogUniform(3.0, 25.0);
            d.longitude = place.longitude + random.Uniform(-0.1, 0.1);
            d.width = random.Uniform(40e3, 150e3);
            d.drift = random.Uniform(60.0, 150.0);
            d.time = random.Uniform(0.0, std::max(duration, kHour));
            d.duration = random.Uniform(1.0, 3.0) * kHour;
            state.depletions.push_back(d);
        }
    }
    state.broadcast = random.Chance(0.85);
    // The broadcast model removes half of the delay (Klobuchar 1987).
    state.broadcastFactor = random.LogUniform(0.5, 1.7);
    return state;
}

Surroundings DrawSurroundings(Random& random, Environment environment) {
    Surroundings around;
    switch (environment) {
        case Environment::kPillar:
            around.groundHeight = random.Uniform(0.8, 4.0);
            around.groundAmplitude = random.LogUniform(0.04, 0.15);
            AddScatterers(random, around, 4, 0.2, 2.0, 0.045, true);
            AddScatterers(random, around, 4, 4.0, 30.0, 0.020, false);
            AddHorizon(random, around, 2.0, 1, 8.0);
            break;
        case Environment::kRoof:
            around.groundHeight = random.Uniform(0.5, 3.0);
            around.groundAmplitude = random.LogUniform(0.06, 0.25);
            AddScatterers(random, around, 4, 0.2, 3.0, 0.060, true);
            AddScatterers(random, around, 6, 2.0, 20.0, 0.035, false);
            AddHorizon(random, around, 2.0, 2, 15.0);
            break;
        case Environment::kField:
            around.groundHeight = random.Uniform(1.1, 2.0);
            around.groundAmplitude = random.LogUniform(0.06, 0.20);
            AddScatterers(random, around, 4, 0.2, 2.0, 0.050, true);
            AddScatterers(random, around, 3, 5.0, 40.0, 0.020, false);
            AddHorizon(random, around, 3.0, 2, 15.0);
            break;
        case Environment::kYard:
            around.groundHeight = random.Uniform(1.1, 2.0);
            around.groundAmplitude = random.LogUniform(0.08, 0.25);
            AddScatterers(random, around, 4, 0.2, 3.0, 0.060, true);
            AddScatterers(random, around, 8, 2.0, 25.0, 0.070, false);
            AddHorizon(random, around, 5.0, 5, 35.0);
            break;
        case Environment::kStreet:
            around.groundHeight = random.Uniform(1.1, 2.0);
            around.groundAmplitude = random.LogUniform(0.1, 0.3);
            AddScatterers(random, around, 4, 0.2, 3.0, 0.060, true);
            AddScatterers(random, around, 12, 2.0, 40.0, 0.110, false);
            AddHorizon(random, around, 8.0, 8, 50.0);
            break;
        case Environment::kCanopy:
            around.groundHeight = random.Uniform(1.1, 2.0);
            around.groundAmplitude = random.LogUniform(0.06, 0.2);
            AddScatterers(random, around, 4, 0.2, 3.0, 0.060, true);
            AddScatterers(random, around, 14, 0.7, 8.0, 0.280, true);
            AddHorizon(random, around, 4.0, 2, 20.0);
            around.canopyLoss = random.Uniform(2.0, 5.0);
            around.canopyScatter = random.Uniform(0.002, 0.005);
            around.canopyFlutter = random.Uniform(3.0, 5.0);
            break;
    }
    return around;
}

Receiver DrawReceiver(Random& random, Equipment equipment, const std::string& systems,
                      double interval) {
    Receiver r;
    const auto add = [&](const std::vector<Tracking>& signals) {
        for (const Tracking& signal : WithinSystems(signals, systems)) {
            r.signals.push_back(signal);
        }
    };
    // By make, m per channel (Wanninger 2012: -0.7 to 4.9 cm). Most receivers of today correct it to
    // millimetres.
    constexpr std::array<double, 6> kSlopes = {0.0, 0.001, -0.0015, 0.003, 0.024, 0.049};
    r.make = 1 + random.Choose({3.0, 3.0, 3.0, 2.0, 0.6, 0.4});
    r.glonassSlope = kSlopes[r.make - 1];
    r.type = "ROUGH MAKE " + std::to_string(r.make);
    r.serial = std::to_string(random.Integer(10000, 99999));
    const bool geodetic = equipment == Equipment::kGeodetic;
    if (geodetic) {
        add(GeodeticSignals());
        r.strengthAtZenith = random.Uniform(49.0, 53.0);
        r.strengthDrop = random.Uniform(12.0, 18.0);
        r.codelessLoss = random.Uniform(2.0, 8.0);
        r.codeNoise = random.LogUniform(0.10, 0.30);
        r.phaseNoise = random.LogUniform(0.8e-3, 1.8e-3);
        r.correlator = random.LogUniform(3.0, 15.0);
        r.elevationCutoff = 5.0 * random.Integer(0, 2) * kDegree;
        r.slipRate = random.LogUniform(0.01, 0.4);
        r.dropouts = random.LogUniform(0.05, 2.0);
        r.missedEpochs = random.Chance(0.7) ? 0.0 : random.LogUniform(1e-4, 5e-3);
        r.gapRate = random.Chance(0.85) ? 0.0 : random.LogUniform(0.02, 0.3);
    } else {
        add(SingleFrequencySignals());
        if (equipment == Equipment::kLowCostDual) {
            add({{io::GnssSystem::kGps, '5', 'X'}, {io::GnssSystem::kGalileo, '5', 'X'}});
        }
        r.strengthAtZenith = random.Uniform(45.0, 49.0);
        r.strengthDrop = random.Uniform(12.0, 18.0);
        r.codeNoise = random.LogUniform(0.4, 1.2);
        r.smoothing = random.Chance(0.5) ? 0.0 : random.Uniform(20.0, 100.0);
        r.phaseNoise = random.LogUniform(1.3e-3, 3.0e-3);
        r.correlator = random.LogUniform(20.0, 80.0);
        r.elevationCutoff = 5.0 * random.Integer(0, 2) * kDegree;
        r.slipRate = random.LogUniform(0.1, 2.0);
        r.dropouts = random.LogUniform(0.2, 4.0);
        r.acquisition = 30.0;
        r.loss = 26.0;
        r.phaseMargin = random.Uniform(0.0, 5.0);
        r.missedEpochs = random.LogUniform(1e-4, 1e-2);
        r.gapRate = random.Chance(0.7) ? 0.0 : random.LogUniform(0.05, 0.5);
        r.channels = systems.size() == 1 ? static_cast<std::size_t>(random.Integer(8, 12))
                                         : static_cast<std::size_t>(random.Integer(12, 24));
        r.halfCycles = random.Chance(0.2) ? random.Uniform(0.02, 0.3) : 0.0;
    }
    r.highestBeiDou = static_cast<std::uint8_t>(
        std::array<int, 4>{18, 30, 37, 63}[random.Choose({0.1, 0.1, 0.3, 0.5})]);
    r.settling = geodetic ? random.LogUniform(0.005, 0.05) : random.LogUniform(0.02, 0.15);
    r.slipsReported = random.Uniform(0.1, 1.0);
    r.gapLength = random.LogUniform(60.0, 900.0);
    r.acquisitionDelay = std::max(interval, random.LogUniform(10.0, 90.0));
    const std::size_t style = random.Choose(geodetic ? std::vector<double>{0.5, 0.3, 0.1, 0.1}
                                                     : std::vector<double>{0.1, 0.3, 0.1, 0.5});
    r.clock = static_cast<ClockStyle>(style);
    switch (r.clock) {
        case ClockStyle::kSteered:
            r.clockOffset = random.LogUniform(1e-9, 5e-8);
            break;
        case ClockStyle::kJumping:
            r.clockOffset = random.Uniform(-4e-4, 4e-4);
            r.clockDrift = Sign(random) * random.LogUniform(1e-9, 5e-7);
            break;
        case ClockStyle::kFree:
            r.clockOffset = Sign(random) * random.LogUniform(1e-6, 2e-3);
            r.clockDrift = Sign(random) * random.LogUniform(1e-9, 1e-7);
            break;
        case ClockStyle::kTagged:
            r.clockOffset = Sign(random) * random.LogUniform(1e-4, 5e-3);
            r.clockDrift = Sign(random) * random.LogUniform(1e-9, 1e-7);
            break;
    }
    return r;
}

AntennaType DrawAntennaType(Random& random, Equipment equipment, std::size_t number) {
    AntennaType a;
    const bool geodetic = equipment == Equipment::kGeodetic;
    a.type = (geodetic ? "ROUGH-G" : "ROUGH-P") + std::to_string(number);
    a.calibrated = geodetic && random.Chance(0.85);
    const double up = geodetic ? random.Uniform(0.04, 0.16) : random.Uniform(0.005, 0.05);
    for (std::size_t g = 0; g < kBandGroups; ++g) {
        const double scale = geodetic ? 1.0 : 1.5;
        a.offset[g] = {scale * 0.0007 * random.Normal(), scale * 0.0007 * random.Normal(),
                       up + (g == 0 ? 0.0 : random.Normal(0.0, 0.010))};
        // Half of the pattern is that of the housing, whatever the frequency.
        const auto both = [&](const std::array<double, kBandGroups>& of, double sigma) {
            return (g == 0 ? 0.0 : 0.7 * of[0]) + scale * sigma * random.Normal();
        };
        a.horizonVariation[g] = both(a.horizonVariation, 0.005);
        a.middleVariation[g] = both(a.middleVariation, 0.0015);
        a.azimuthVariation[g] = both(a.azimuthVariation, 0.0005);
    }
    a.individual = geodetic ? 0.0007 : 0.002;
    a.multipathGain = geodetic ? random.LogUniform(0.6, 1.6) : random.LogUniform(2.2, 4.0);
    return a;
}

namespace {

template <typename Value>
const Value& AnyOf(const std::vector<Value>& list, Random& random) {
    return list.at(static_cast<std::size_t>(random.Integer(0, static_cast<int>(list.size()) - 1)));
}

// Whole minutes.
io::GpsTime DrawStart(const std::array<int, 2>& years, Random& random) {
    const int month = random.Integer(1, 12), day = random.Integer(1, 28);
    return TimeOf({random.Integer(years[0], years[1]), month, day, random.Integer(0, 23),
                   random.Integer(0, 59), 0.0});
}

double DrawInterval(double duration, Random& random) {
    constexpr std::array<double, 5> kIntervals = {1.0, 5.0, 10.0, 15.0, 30.0};
    std::vector<double> weights = {0.08, 0.27, 0.20, 0.30, 0.15};
    if (duration > 4.0 * kHour) {
        weights = {0.0, 0.0, 0.0, 0.1, 0.9};
    } else if (duration > kHour) {
        weights = {0.0, 0.0, 0.05, 0.25, 0.7};
    } else if (duration > 0.3 * kHour) {
        weights = {0.02, 0.10, 0.10, 0.30, 0.48};
    }
    return kIntervals[random.Choose(weights)];
}

Geodetic DrawBase(const Kind& kind, Random& random) {
    const double sine =
        random.Uniform(std::sin(kind.latitude[0] * kDegree), std::sin(kind.latitude[1] * kDegree));
    constexpr double kUsual = 600.0;  // m
    const double low = kind.height[0], high = kind.height[1];
    const double height = low < kUsual && (high <= kUsual || random.Chance(0.8))
                              ? random.Uniform(low, std::min(kUsual, high))
                              : random.Uniform(std::max(kUsual, low), high);
    return {std::asin(sine), random.Uniform(kind.longitude[0], kind.longitude[1]) * kDegree,
            height};
}

// Broadcast orbits have become better: user range errors of 1.5 m in 2002 (Warren and Raquet 2003,
// GPS Solutions 7, 1-8) against 0.5 m.
double BroadcastQualityOf(const io::GpsTime& time) {
    const double year = 2000.0 + DaysSince2000(time) / 365.25;
    return 1.0 + std::max(0.0, 2012.0 - year) / 8.0;
}

}  // namespace

Scenario DrawScenario(std::uint64_t seed, const Kind& kind) {
    Random random(seed, "scenario " + kind.name);
    // Kinds with the same seed share no world.
    Scenario scenario = Begin(random.Bits(), kind.name);
    scenario.start = DrawStart(kind.years, random);
    scenario.duration = AnyOf(kind.durations, random);
    const double drawnInterval = DrawInterval(scenario.duration, random);
    scenario.interval = kind.interval > 0.0 ? kind.interval : drawnInterval;
    const std::string systems = AnyOf(kind.systems, random);
    scenario.systems = SystemsOf(systems);
    scenario.preciseInterval = kind.preciseInterval;
    scenario.broadcastQuality = BroadcastQualityOf(scenario.start);

    const Geodetic base = DrawBase(kind, random);
    const double length = random.LogUniform(kind.length[0], kind.length[1]);
    const double most = std::min(kind.heightDifference, kind.steepest * length);
    const double difference = random.Uniform(-most, most);
    // Not below the lowest land of the kind.
    const bool tooLow = base.height + difference < kind.height[0];
    AddSites(random, scenario, base, length, tooLow ? -difference : difference);
    scenario.weather = DrawWeather(random, base, scenario.start);
    scenario.ionosphere = DrawIonosphere(
        random, base, kind.solar.value_or(SolarLevelOf(scenario.start)), scenario.duration);

    const bool alike = random.Chance(kind.baseLikeRover);
    const Equipment baseEquipment = alike ? kind.rover : Equipment::kGeodetic;
    scenario.sites[0].around = DrawSurroundings(
        random, static_cast<Environment>(random.Choose({1.0, 1.0, 0.7, 0.1, 0.0, 0.0})));
    scenario.sites[1].around = DrawSurroundings(random, AnyOf(kind.around, random));
    scenario.antennas = {DrawAntennaType(random, baseEquipment, 1)};
    const bool sameAntenna = alike && random.Chance(0.5);
    if (!sameAntenna) {
        scenario.antennas.push_back(DrawAntennaType(random, kind.rover, 2));
    }
    scenario.antennaTable = random.Chance(0.7);
    Receiver first = DrawReceiver(random, baseEquipment, systems, scenario.interval);
    Receiver second = DrawReceiver(random, kind.rover, systems, scenario.interval);
    if (alike && random.Chance(0.5)) {
        second.make = first.make;
        second.glonassSlope = first.glonassSlope;
        second.type = first.type;
    }
    if (kind.frequencies == 1) {
        first.signals = second.signals = WithinSystems(SingleFrequencySignals(), systems);
    }
    // Stations far apart stand for good, and receivers of surveyors on tripods.
    constexpr double kSurvey = 50000.0;  // m
    AddOccupation(random, scenario, 0, first, 0, random.Chance(0.6));
    AddOccupation(random, scenario, 1, second, sameAntenna ? 0 : 1,
                  length > kSurvey || random.Chance(0.3));
    for (std::size_t i = 0; i < 2; ++i) {
        const bool named = (i == 0 ? baseEquipment : kind.rover) == Equipment::kGeodetic;
        Occupation& occupation = scenario.occupations[i];
        occupation.antennaNamed = named;
        if (!named && random.Chance(0.5)) {
            occupation.headerOffset.reset();
        }
        if (kind.headerSigma) {
            const double sigma = *kind.headerSigma;
            occupation.headerOffset = Vector3{sigma * random.Normal(), sigma * random.Normal(),
                                              1.5 * sigma * random.Normal()};
        }
    }
    return scenario;
}

const std::vector<std::string>& LookAlikes() {
    static const std::vector<std::string> names = {"wettzell", "ciboure-pasaia", "ebre-bell",
                                                   "rosalia",  "milano",         "bds-monitor"};
    return names;
}

namespace {

// What a look-alike shares with its model.
struct Model {
    const char* name;
    double latitude, longitude, height;  // degrees, m
    double length, heightDifference;     // m
    Date start;
    double duration, interval;  // s
    const char* systems;
    Environment base, rover;
    bool sameMake, sameAntenna, antennasNamed;
};

constexpr std::array<Model, 6> kModels = {{
    {"wettzell",
     49.1442,
     12.8789,
     666.0,
     1.6,
     -0.1,
     {2020, 6, 25, 0, 0, 0.0},
     3600.0,
     30.0,
     "GREC",
     Environment::kPillar,
     Environment::kPillar,
     false,
     true,
     true},
    {"ciboure-pasaia",
     43.3952,
     -1.6817,
     59.0,
     21800.0,
     0.0,
     {2026, 4, 30, 10, 0, 0.0},
     7200.0,
     30.0,
     "GREC",
     Environment::kRoof,
     Environment::kRoof,
     true,
     false,
     true},
    {"ebre-bell",
     40.8209,
     0.4924,
     107.0,
     115000.0,
     745.0,
     {2002, 1, 30, 0, 0, 0.0},
     86400.0,
     30.0,
     "G",
     Environment::kPillar,
     Environment::kPillar,
     true,
     true,
     true},
    {"rosalia",
     47.7000,
     16.3000,
     650.0,
     553.0,
     -87.0,
     {2025, 1, 1, 0, 0, 0.0},
     86400.0,
     30.0,
     "GREC",
     Environment::kField,
     Environment::kCanopy,
     true,
     true,
     false},
    {"milano",
     45.4780,
     9.2290,
     187.0,
     63.5,
     0.0,
     {2013, 4, 5, 11, 35, 0.0},
     44640.0,
     15.0,
     "G",
     Environment::kRoof,
     Environment::kRoof,
     false,
     false,
     true},
    {"bds-monitor",
     28.93,
     101.18,
     2800.0,
     217.0,
     0.0,
     {2026, 7, 3, 16, 0, 0.0},
     86400.0,
     15.0,
     "C",
     Environment::kYard,
     Environment::kYard,
     true,
     true,
     false},
}};

}  // namespace

Scenario DrawLookAlike(std::uint64_t seed, const std::string& set) {
    const auto found = std::find_if(kModels.begin(), kModels.end(),
                                    [&](const Model& model) { return model.name == set; });
    if (found == kModels.end()) {
        throw std::out_of_range("no look-alike of " + set);
    }
    const Model& model = *found;
    Random random(seed, "look-alike " + set);
    Scenario scenario = Begin(seed, set);
    scenario.start = TimeOf(model.start);
    scenario.duration = model.duration;
    scenario.interval = model.interval;
    scenario.systems = SystemsOf(model.systems);
    const Geodetic base{model.latitude * kDegree, model.longitude * kDegree, model.height};
    AddSites(random, scenario, base, model.length, model.heightDifference);
    scenario.weather = DrawWeather(random, base, scenario.start);
    scenario.ionosphere =
        DrawIonosphere(random, base, SolarLevelOf(scenario.start), scenario.duration);
    scenario.sites[0].around = DrawSurroundings(random, model.base);
    scenario.sites[1].around = DrawSurroundings(random, model.rover);
    scenario.antennas = {DrawAntennaType(random, Equipment::kGeodetic, 1)};
    const bool lowCost = set == "milano";
    if (!model.sameAntenna) {
        scenario.antennas.push_back(
            DrawAntennaType(random, lowCost ? Equipment::kLowCost : Equipment::kGeodetic, 2));
    }
    for (AntennaType& type : scenario.antennas) {
        type.calibrated = true;
        if (!model.antennasNamed || lowCost) {
            // The known vector of such a set is that of the phase centres.
            type.offset = {};
        }
    }
    Receiver first = DrawReceiver(random, Equipment::kGeodetic, model.systems, model.interval);
    Receiver second = DrawReceiver(random, lowCost ? Equipment::kLowCost : Equipment::kGeodetic,
                                   model.systems, model.interval);
    second.make = model.sameMake ? first.make : first.make + 1;
    second.glonassSlope = first.glonassSlope + (model.sameMake ? 0.0 : random.Normal(0.0, 0.003));
    AddOccupation(random, scenario, 0, first, 0, true);
    AddOccupation(random, scenario, 1, second, model.sameAntenna ? 0 : 1, true);
    for (Occupation& occupation : scenario.occupations) {
        occupation.antennaNamed = model.antennasNamed;
        occupation.headerOffset = Vector3{random.Normal(), random.Normal(), 1.5 * random.Normal()};
    }
    if (lowCost) {
        scenario.occupations[1].antennaNamed = false;
        scenario.occupations[1].headerOffset.reset();
    }
    if (set == "ebre-bell") {
        scenario.broadcastQuality = 2.0;
        for (Occupation& occupation : scenario.occupations) {
            occupation.receiver.clock = ClockStyle::kTagged;
            occupation.receiver.clockOffset = random.Uniform(-2e-3, 2e-3);
            occupation.receiver.channels = 12;
            occupation.receiver.codelessLoss = random.Uniform(6.0, 10.0);
            occupation.receiver.slipRate *= 5.0;
            occupation.headerOffset = Vector3{0.3 * random.Normal(), 0.3 * random.Normal(), 0.2};
        }
    }
    if (set == "bds-monitor") {
        scenario.ionosphere.broadcast = false;
        for (AntennaType& type : scenario.antennas) {
            type.multipathGain = random.Uniform(0.7, 1.1);
        }
        for (Occupation& occupation : scenario.occupations) {
            occupation.receiver.missedEpochs = 0.01;
        }
    }
    return scenario;
}

Scenario DrawCampaign(std::uint64_t seed, std::size_t stations, int days,
                      const CampaignFlaws& flaws) {
    Random random(seed, "campaign");
    Scenario scenario = Begin(seed, "campaign");
    scenario.start = TimeOf(
        {random.Integer(2020, 2027), random.Integer(1, 12), random.Integer(1, 25), 6, 0, 0.0});
    scenario.interval = 15.0;
    scenario.duration = (days - 1) * kDay + 10.0 * kHour;
    const Geodetic centre{random.Uniform(35.0, 55.0) * kDegree,
                          random.Uniform(-5.0, 25.0) * kDegree, random.Uniform(50.0, 500.0)};
    scenario.weather = DrawWeather(random, centre, scenario.start);
    scenario.ionosphere =
        DrawIonosphere(random, centre, SolarLevelOf(scenario.start), scenario.duration);
    scenario.antennas = {DrawAntennaType(random, Equipment::kGeodetic, 1),
                         DrawAntennaType(random, Equipment::kGeodetic, 2)};
    for (AntennaType& type : scenario.antennas) {
        type.calibrated = true;
    }
    for (std::size_t i = 0; i < stations; ++i) {
        const Geodetic place =
            PlaceAt(centre, 10000.0 * std::sqrt(random.Uniform()), random.Uniform(0.0, 2.0 * kPi),
                    centre.height + random.Uniform(-80.0, 80.0));
        // P001, P002, ...
        std::string name = "P000";
        for (std::size_t digit = 3, rest = i + 1; digit > 0; --digit, rest /= 10) {
            name[digit] = static_cast<char>('0' + rest % 10);
        }
        scenario.sites.push_back(
            {name, ToCartesian(place),
             DrawSurroundings(random, i < 2 ? Environment::kPillar : Environment::kField)});
    }
    constexpr std::size_t kReceivers = 4;  // that go from site to site
    std::vector<Receiver> receivers;
    for (std::size_t k = 0; k < kReceivers + 2; ++k) {
        receivers.push_back(DrawReceiver(random, Equipment::kGeodetic, "GREC", scenario.interval));
    }
    const auto add = [&](std::size_t site, const Receiver& receiver, std::size_t antenna,
                         bool permanent, double start, double duration) {
        AddOccupation(random, scenario, site, receiver, antenna, permanent);
        Occupation& occupation = scenario.occupations.back();
        occupation.start = start;
        occupation.duration = duration;
        occupation.antennaSerial = receiver.serial;
        occupation.headerOffset =
            Vector3{2.0 * random.Normal(), 2.0 * random.Normal(), 3.0 * random.Normal()};
    };
    for (std::size_t site = 0; site < std::min<std::size_t>(2, stations); ++site) {
        add(site, receivers[kReceivers + site], 0, true, 0.0, scenario.duration);
    }
    constexpr double kSession = 3.0 * kHour, kSecondStart = 5.0 * kHour;
    std::size_t next = 2;
    std::vector<bool> flawed(stations, false);
    for (int day = 0; day < days && stations > 2; ++day) {
        for (const double start : {0.0, kSecondStart}) {
            for (std::size_t k = 0; k < std::min(kReceivers, stations - 2); ++k) {
                add(next, receivers[k], k % 2, false, day * kDay + start, kSession);
                Occupation& occupation = scenario.occupations.back();
                if (!flawed[next]) {
                    flawed[next] = true;
                    if (next == 2) {
                        *occupation.headerHeight += flaws.wrongHeight;
                    } else if (next == 3) {
                        occupation.centring[0] += flaws.wrongCentring * 0.6;
                        occupation.centring[1] += flaws.wrongCentring * 0.8;
                    } else if (next == 4 && flaws.wrongHeader != 0.0) {
                        occupation.headerOffset =
                            Vector3{flaws.wrongHeader * 0.6, -flaws.wrongHeader * 0.8, 0.0};
                    }
                }
                next = next + 1 < stations ? next + 1 : 2;
            }
        }
    }
    return scenario;
}

}  // namespace vornel::rough
