#include "simulate.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "antenna.h"
#include "calendar.h"
#include "ionosphere.h"
#include "multipath.h"
#include "random.h"
#include "receiver_clock.h"
#include "signals.h"
#include "sky.h"
#include "sun_moon.h"
#include "tracking.h"
#include "troposphere.h"

namespace vornel::rough {
namespace {

constexpr double kL1 = 1575.42e6;  // Hz
constexpr double kNoValue = std::numeric_limits<double>::quiet_NaN();

double ToThousandths(double value) {
    return std::round(value * 1000.0) / 1000.0;
}

// What all stations share.
struct World {
    explicit World(const Scenario& s)
        : scenario(s), sky(s), troposphere(s, sky.origin()), ionosphere(s, sky.origin()) {}

    const Scenario& scenario;
    Sky sky;
    Troposphere troposphere;
    Ionosphere ionosphere;
};

// The straight way of a signal from a satellite to an antenna.
struct Ray {
    double range = 0.0;         // m
    double transmission = 0.0;  // s, GPS time since the origin
    Vector3 satellite{};        // m, in the earth-fixed axes of reception
    Vector3 toSatellite{};      // unit vector
    Vector3 direction{};        // the same in north, east, up
    double azimuth = 0.0;       // rad
    double elevation = 0.0;     // rad
};

// Components in axes turned about the third one by some microradians: terms of the third order and
// beyond are lost in the last digit.
Vector3 TurnedALittle(const Vector3& v, double angle) {
    const double c = 1.0 - 0.5 * angle * angle;
    return {c * v[0] + angle * v[1], c * v[1] - angle * v[0], v[2]};
}

Ray RayTo(const Sky& sky, std::size_t satellite, const Vector3& antenna, const Horizon& horizon,
          double reception) {
    double flight = 0.077;  // s, a first guess
    Ray ray;
    for (int pass = 0; pass < 3; ++pass) {
        ray.transmission = reception - flight;
        ray.satellite =
            TurnedALittle(sky.PositionAt(satellite, ray.transmission), kEarthRate * flight);
        ray.toSatellite = Minus(ray.satellite, antenna);
        ray.range = Length(ray.toSatellite);
        if (pass == 0 && Dot(ray.toSatellite, horizon.up) < 0.0) {
            ray.elevation = -1.0;
            return ray;
        }
        flight = ray.range / kSpeedOfLight;
    }
    ray.toSatellite = Scaled(ray.toSatellite, 1.0 / ray.range);
    ray.direction = horizon.ToNeu(ray.toSatellite);
    ray.azimuth = std::atan2(ray.direction[1], ray.direction[0]);
    ray.elevation = std::asin(std::clamp(ray.direction[2], -1.0, 1.0));
    return ray;
}

// Delay of a signal that the earth's mass bends (Holdridge 1967): up to 19 mm.
double BendingDelay(const Vector3& satellite, const Vector3& station, double range) {
    constexpr double kTwiceGm = 2.0 * 3.986004418e14 / (kSpeedOfLight * kSpeedOfLight);  // m
    const double sum = Length(satellite) + Length(station);
    return kTwiceGm * std::log((sum + range) / (sum - range));
}

// Turn of the received phase by the orientation of both antennas, cycles, to a whole number (Wu et
// al. 1993, Manuscr. Geod. 18, 91-98). The satellite keeps its panels towards the sun.
double WindUp(const Ray& ray, const Horizon& horizon, const Vector3& sun) {
    const Vector3 z = Scaled(Unit(ray.satellite), -1.0);
    const Vector3 y = Unit(Cross(z, Unit(Minus(sun, ray.satellite))));
    const Vector3 x = Cross(y, z);
    const Vector3 k = Scaled(ray.toSatellite, -1.0);  // the way the signal goes
    const Vector3 sent = Minus(Minus(x, Scaled(k, Dot(k, x))), Cross(k, y));
    const Vector3 westwards = Scaled(horizon.east, -1.0);
    const Vector3 seen =
        Plus(Minus(horizon.north, Scaled(k, Dot(k, horizon.north))), Cross(k, westwards));
    const double cosine = Dot(sent, seen) / (Length(sent) * Length(seen));
    const double turn = std::acos(std::clamp(cosine, -1.0, 1.0)) / (2.0 * kPi);
    return Dot(k, Cross(sent, seen)) < 0.0 ? -turn : turn;
}

// Constants of the hardware, m. Receivers of one make share theirs to a tenth (code biases between
// signals are 0.3 to 3 m: Haakansson et al. 2017, GPS Solutions 21, 849-860; of GLONASS codes by
// channel a metre or two, of its phases a line over the channels of up to 5 cm per channel between
// makes: Wanninger 2012, J. Geod. 86, 139-148).
class HardwareBiases {
  public:
    HardwareBiases(const Scenario& scenario, std::size_t occupation)
        : seed_(scenario.seed),
          scale_(scenario.effects.hardwareBiases),
          make_(scenario.occupations[occupation].receiver.make),
          occupation_(occupation),
          glonassSlope_(scenario.occupations[occupation].receiver.glonassSlope) {}

    double Code(const Satellite& satellite, const Tracking& signal) const {
        const auto system = static_cast<std::uint64_t>(signal.system);
        const auto band = static_cast<std::uint64_t>(signal.band);
        const auto mode = static_cast<std::uint64_t>(signal.attribute);
        const auto number = system * 100 + satellite.id.number;
        // Like a delay of the ionosphere: clocks of messages are those of its free combination.
        const double ratio = kL1 / FrequencyOf(signal, satellite.channel);
        double bias = kSpeedOfLight * GroupDelayOf(seed_, satellite) * ratio * ratio +
                      0.2 * Draw("satellite mode", number * 128 + band, mode);
        bias += Own("receiver band", system, band, 8.0);
        if (satellite.id.system == io::GnssSystem::kGlonass) {
            bias += Own("receiver channel", static_cast<std::uint64_t>(satellite.channel + 8), band,
                        1.0);
        }
        return scale_ * bias;
    }

    double Phase(const Satellite& satellite, const Tracking& signal) const {
        const auto system = static_cast<std::uint64_t>(signal.system);
        double bias = Own("receiver phase", system, static_cast<std::uint64_t>(signal.band), 1.0);
        if (satellite.id.system == io::GnssSystem::kGlonass) {
            bias += glonassSlope_ * satellite.channel;
        }
        return scale_ * bias;
    }

  private:
    double Draw(const char* what, std::uint64_t a, std::uint64_t b, std::uint64_t c = 0) const {
        return Random(seed_, what, a, b, c).Normal();
    }
    double Own(const char* what, std::uint64_t a, std::uint64_t b, double sigma) const {
        return sigma * (Draw(what, a, b, make_) +
                        0.1 * Random(seed_ + 1, what, a, b, 1000 + occupation_).Normal());
    }

    std::uint64_t seed_;
    double scale_;
    std::uint64_t make_;
    std::size_t occupation_;
    double glonassSlope_;
};

// Makes the observations of one occupation.
class Observer {
  public:
    Observer(const World& world, std::size_t index)
        : world_(world),
          scenario_(world.scenario),
          sky_(world.sky),
          occupation_(scenario_.occupations[index]),
          site_(scenario_.sites[occupation_.site]),
          place_(ToGeodetic(site_.marker)),
          horizon_(place_),
          troposphere_(world.troposphere, PlaceOfAntenna()),
          antennaPattern_(scenario_, occupation_),
          multipath_(site_.around, scenario_.effects.multipath * antennaPattern_.multipathGain(),
                     occupation_.receiver.correlator),
          tracker_(scenario_, index, sky_.satellites().size()),
          biases_(scenario_, index) {}

    SimulatedStation Observe() {
        SimulatedStation station;
        station.marker = site_.marker;
        PrepareSignals();
        DescribeFile();
        const double step = scenario_.interval;
        const auto count = static_cast<long>(std::floor(occupation_.duration / step + 1e-9));
        Reserve(static_cast<std::size_t>(count));
        for (long k = 0; k < count; ++k) {
            ObserveEpoch(occupation_.start + static_cast<double>(k) * step);
        }
        FinishHeader();
        station.observations = std::move(data_);
        return station;
    }

  private:
    struct Column {
        Tracking tracking;
        std::size_t code = 0, phase = 0;  // columns of the system's table
    };
    // A satellite and one of the columns that it fills.
    struct Link {
        std::size_t signal = 0;                  // of the receiver
        double wavelength = 0.0;                 // m
        double frequency = 0.0;                  // Hz
        std::size_t group = 0;                   // of the antenna
        double codeBias = 0.0, phaseBias = 0.0;  // m
    };

    Geodetic PlaceOfAntenna() const {
        Geodetic place = place_;
        place.height += occupation_.antennaHeight;
        return place;
    }

    void PrepareSignals() {
        data_.signalTables.resize(1);
        for (const Tracking& tracking : occupation_.receiver.signals) {
            auto& table = data_.signalTables[0][static_cast<std::size_t>(tracking.system)];
            const auto add = [&](char type) {
                io::Signal signal;
                signal.code = {type, tracking.band, tracking.attribute};
                signal.fileName = std::string({type, tracking.band, tracking.attribute});
                table.push_back(signal);
                return table.size() - 1;
            };
            const std::size_t code = add('C');
            columns_.push_back({tracking, code, add('L')});
        }
        windUp_.resize(sky_.satellites().size(), kNoValue);
        for (const Satellite& satellite : sky_.satellites()) {
            std::vector<Link> links;
            for (std::size_t c = 0; c < columns_.size(); ++c) {
                const Tracking& tracking = columns_[c].tracking;
                if (Sends(satellite, tracking) && Knows(satellite)) {
                    const double frequency = FrequencyOf(tracking, satellite.channel);
                    links.push_back({c, kSpeedOfLight / frequency, frequency,
                                     BandGroupOf(frequency), biases_.Code(satellite, tracking),
                                     biases_.Phase(satellite, tracking)});
                }
            }
            links_.push_back(std::move(links));
        }
    }

    bool Knows(const Satellite& satellite) const {
        return satellite.id.system != io::GnssSystem::kBeiDou ||
               satellite.id.number <= occupation_.receiver.highestBeiDou;
    }

    void Reserve(std::size_t epochs) {
        const std::size_t rows = epochs * sky_.satellites().size() / 3;
        data_.epochs.reserve(epochs);
        data_.satellites.reserve(rows);
        data_.values.reserve(4 * rows);
        data_.lossOfLock.reserve(4 * rows);
        data_.signalStrength.reserve(4 * rows);
    }

    void DescribeFile() {
        data_.file = site_.name;
        data_.version = 3.04;
        io::StationHeader header;
        header.markerName = site_.name;
        header.markerType = "GEODETIC";
        header.observer = "SIMULATED";
        header.agency = "NONE";
        header.receiverSerial = occupation_.receiver.serial;
        header.receiverType = occupation_.receiver.type;
        header.receiverVersion = "1.00";
        header.programName = "rough world";
        if (occupation_.antenna && occupation_.antennaNamed) {
            const AntennaType& type = scenario_.antennas.at(*occupation_.antenna);
            header.antennaSerial = occupation_.antennaSerial;
            header.antennaType = type.type;
            header.antennaRadome = type.radome;
        }
        header.antennaHeight = occupation_.headerHeight.value_or(occupation_.antennaHeight);
        if (occupation_.headerOffset) {
            Vector3 position = Plus(site_.marker, horizon_.FromNeu(*occupation_.headerOffset));
            for (double& component : position) {
                component = std::round(component * 1e4) / 1e4;
            }
            header.approximatePosition = position;
        }
        header.interval = scenario_.interval;
        for (const Satellite& satellite : sky_.satellites()) {
            if (satellite.id.system == io::GnssSystem::kGlonass) {
                header.glonassChannels.emplace_back(satellite.id.number, satellite.channel);
            }
        }
        data_.stations.push_back(header);
    }

    void FinishHeader() {
        if (!data_.epochs.empty()) {
            data_.stations[0].firstEpoch = data_.epochs.front().time;
            data_.stations[0].lastEpoch = data_.epochs.back().time;
        }
    }

    io::GpsTime TagOf(double t) const {
        // Whole minutes and seconds apart, as a file has them.
        const double whole = std::floor(t);
        const io::GpsTime time = Normalised(sky_.origin().week, sky_.origin().seconds + whole);
        constexpr double kDigit = 1e7;
        const double minute = std::floor(time.seconds / 60.0) * 60.0;
        const double second = std::round((time.seconds - minute + (t - whole)) * kDigit) / kDigit;
        return Normalised(time.week, minute + second);
    }

    // The antenna's reference point and the sun, which change slowly.
    void PlaceAntenna(double t) {
        constexpr double kRenewal = 30.0;  // s
        if (std::abs(t - placedAt_) < kRenewal) {
            return;
        }
        placedAt_ = t;
        antenna_ =
            Plus(site_.marker, horizon_.FromNeu({occupation_.centring[0], occupation_.centring[1],
                                                 occupation_.antennaHeight}));
        bodies_ = SunMoonAt(Normalised(sky_.origin().week, sky_.origin().seconds + t));
        if (scenario_.effects.tide != 0.0) {
            antenna_ =
                Plus(antenna_, Scaled(TideAt(bodies_, site_.marker), scenario_.effects.tide));
        }
    }

    void ObserveEpoch(double sinceStart) {
        if (tracker_.MissesEpoch(sinceStart)) {
            return;
        }
        const EpochTime time =
            EpochTimeOf(occupation_.receiver, sky_.startTime() + sinceStart, sinceStart);
        PlaceAntenna(time.moment);
        io::ObservationEpoch epoch;
        epoch.time = TagOf(time.tag);
        epoch.receiverClockOffset = kNoValue;
        epoch.firstSatellite = static_cast<std::uint32_t>(data_.satellites.size());
        inView_.clear();
        for (std::size_t s = 0; s < sky_.satellites().size(); ++s) {
            if (!links_[s].empty()) {
                const Ray ray = RayTo(sky_, s, antenna_, horizon_, time.moment);
                if (ray.elevation > 0.0) {
                    inView_.emplace_back(s, ray);
                }
            }
        }
        KeepHighest();
        for (const auto& [s, ray] : inView_) {
            ObserveSatellite(s, ray, time, sinceStart);
        }
        epoch.satelliteCount =
            static_cast<std::uint32_t>(data_.satellites.size()) - epoch.firstSatellite;
        if (epoch.satelliteCount > 0) {
            data_.epochs.push_back(epoch);
        }
    }

    // A receiver with few channels follows the highest satellites.
    void KeepHighest() {
        const std::size_t most = occupation_.receiver.channels;
        if (most == 0 || inView_.size() <= most) {
            return;
        }
        std::nth_element(
            inView_.begin(), inView_.begin() + static_cast<std::ptrdiff_t>(most), inView_.end(),
            [](const auto& a, const auto& b) { return a.second.elevation > b.second.elevation; });
        inView_.resize(most);
        std::sort(inView_.begin(), inView_.end(),
                  [](const auto& a, const auto& b) { return a.first < b.first; });
    }

    double WindUpOf(std::size_t s, const Ray& ray) {
        if (scenario_.effects.windUp == 0.0) {
            return 0.0;
        }
        double turn = WindUp(ray, horizon_, bodies_.sun);
        double& last = windUp_[s];
        if (!std::isnan(last)) {
            turn += std::round(last - turn);
        }
        last = turn;
        return scenario_.effects.windUp * turn;
    }

    void ObserveSatellite(std::size_t s, const Ray& ray, const EpochTime& time, double sinceStart) {
        const Satellite& satellite = sky_.satellites()[s];
        const Effects& effects = scenario_.effects;
        double common =
            ray.range + kSpeedOfLight * (time.offset - sky_.ClockAt(s, ray.transmission));
        if (effects.relativisticPath != 0.0) {
            common += effects.relativisticPath * BendingDelay(ray.satellite, antenna_, ray.range);
        }
        // The lowest ray that an atmosphere without turbulence of the ground lets pass.
        constexpr double kLowest = 2.0 * kDegree;
        common += troposphere_.Delay(ray.azimuth, std::max(kLowest, ray.elevation), time.moment);
        const Ionosphere::AlongRay electrons =
            world_.ionosphere.Seen(antenna_, ray.toSatellite, time.moment);
        const double windUp = WindUpOf(s, ray);

        const auto& table = data_.signalTables[0][static_cast<std::size_t>(satellite.id.system)];
        const std::size_t first = data_.values.size();
        bool any = false;
        for (const Link& link : links_[s]) {
            const MultipathError echo = multipath_.At(ray.direction, link.wavelength);
            const Reception got = tracker_.Receive(
                s, link.signal, link.wavelength,
                {ray.azimuth, ray.elevation, ray.direction, echo.strength, electrons.scintillation},
                sinceStart);
            if (!got.code) {
                continue;
            }
            if (!any) {
                any = true;
                data_.values.resize(first + table.size(), kNoValue);
                data_.lossOfLock.resize(first + table.size(), 0);
                data_.signalStrength.resize(first + table.size(), 0);
            }
            const double ionosphere = IonosphereDelay(electrons.content, link.frequency);
            const double antenna = antennaPattern_.Advance(link.group, ray.direction);
            const double code =
                common - antenna + ionosphere + echo.code + got.codeError + link.codeBias;
            const double phase = common - antenna - ionosphere + echo.phase + got.phaseError +
                                 link.phaseBias + windUp * link.wavelength;
            const Column& column = columns_[link.signal];
            data_.values[first + column.code] = ToThousandths(code);
            const double strength = std::clamp(std::floor(got.strength / 6.0), 1.0, 9.0);
            data_.signalStrength[first + column.code] = static_cast<std::uint8_t>(strength);
            if (got.phase) {
                data_.values[first + column.phase] =
                    ToThousandths(phase / link.wavelength + got.ambiguity);
                data_.lossOfLock[first + column.phase] = got.lossOfLock;
                data_.signalStrength[first + column.phase] = static_cast<std::uint8_t>(strength);
            }
        }
        if (any) {
            data_.satellites.push_back({satellite.id, 0, static_cast<std::uint32_t>(first)});
        }
    }

    const World& world_;
    const Scenario& scenario_;
    const Sky& sky_;
    const Occupation& occupation_;
    const Site& site_;
    Geodetic place_;
    Horizon horizon_;
    StationTroposphere troposphere_;
    Antenna antennaPattern_;
    Multipath multipath_;
    Tracker tracker_;
    HardwareBiases biases_;
    double placedAt_ = -1e9;  // s
    Vector3 antenna_{};       // m, reference point
    SunMoon bodies_;
    io::Observations data_;
    std::vector<Column> columns_;
    std::vector<std::vector<Link>> links_;  // by satellite
    std::vector<double> windUp_;            // cycles, by satellite
    std::vector<std::pair<std::size_t, Ray>> inView_;
};

}  // namespace

SimulatedSession Simulate(const Scenario& scenario) {
    const World world(scenario);
    SimulatedSession session;
    for (std::size_t i = 0; i < scenario.occupations.size(); ++i) {
        session.stations.push_back(Observer(world, i).Observe());
    }
    session.navigation = world.sky.Messages();
    if (scenario.ionosphere.broadcast) {
        session.navigation.ionosphere.push_back(
            world.ionosphere.BroadcastCoefficients(ToGeodetic(scenario.sites.front().marker)));
    }
    if (scenario.preciseInterval) {
        session.preciseOrbits = world.sky.PreciseTables(*scenario.preciseInterval);
    }
    if (scenario.antennaTable && !scenario.antennas.empty()) {
        session.antennas = CalibrationsOf(scenario);
    }
    return session;
}

}  // namespace vornel::rough
