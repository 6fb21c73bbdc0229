#include "simulate.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

#include "calendar.h"
#include "random.h"
#include "receiver_clock.h"
#include "signals.h"
#include "sky.h"

namespace vornel::rough {
namespace {

constexpr double kNoValue = std::numeric_limits<double>::quiet_NaN();

double ToThousandths(double value) {
    return std::round(value * 1000.0) / 1000.0;
}

// The straight way of a signal from a satellite to an antenna.
struct Ray {
    double range = 0.0;         // m
    double transmission = 0.0;  // s, GPS time since the origin
    Vector3 satellite{};        // m, in the earth-fixed axes of reception
    Vector3 toSatellite{};      // unit vector
    double azimuth = 0.0;       // rad
    double elevation = 0.0;     // rad
};

Ray RayTo(const Sky& sky, std::size_t satellite, const Vector3& antenna, const Horizon& horizon,
          double reception) {
    double flight = 0.077;  // s, a first guess
    Ray ray;
    for (int pass = 0; pass < 3; ++pass) {
        ray.transmission = reception - flight;
        ray.satellite =
            InAxesTurnedAboutZ(sky.PositionAt(satellite, ray.transmission), kEarthRate * flight);
        ray.toSatellite = Minus(ray.satellite, antenna);
        ray.range = Length(ray.toSatellite);
        flight = ray.range / kSpeedOfLight;
    }
    ray.toSatellite = Scaled(ray.toSatellite, 1.0 / ray.range);
    const Vector3 neu = horizon.ToNeu(ray.toSatellite);
    ray.azimuth = std::atan2(neu[1], neu[0]);
    ray.elevation = std::asin(std::clamp(neu[2], -1.0, 1.0));
    return ray;
}

// Makes the observations of one occupation.
class Observer {
  public:
    Observer(const Scenario& scenario, const Sky& sky, std::size_t index)
        : scenario_(scenario),
          sky_(sky),
          index_(index),
          occupation_(scenario.occupations[index]),
          site_(scenario.sites[occupation_.site]) {
        const Geodetic place = ToGeodetic(site_.marker);
        horizon_ = Horizon(place);
        antenna_ =
            Plus(site_.marker, horizon_.FromNeu({occupation_.centring[0], occupation_.centring[1],
                                                 occupation_.antennaHeight}));
    }

    SimulatedStation Observe() {
        SimulatedStation station;
        station.marker = site_.marker;
        PrepareSignals();
        DescribeFile();
        const double step = scenario_.interval;
        const auto count = static_cast<long>(std::floor(occupation_.duration / step + 1e-9));
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
        ambiguities_.resize(sky_.satellites().size() * columns_.size());
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
        // Whole seconds and fraction apart, as a file has them.
        const double whole = std::floor(t);
        io::GpsTime time = Normalised(sky_.origin().week, sky_.origin().seconds + whole);
        constexpr double kDigit = 1e7;
        const double minute = std::floor(time.seconds / 60.0) * 60.0;
        const double second = std::round((time.seconds - minute + (t - whole)) * kDigit) / kDigit;
        return Normalised(time.week, minute + second);
    }

    void ObserveEpoch(double sinceStart) {
        const EpochTime time =
            EpochTimeOf(occupation_.receiver, sky_.startTime() + sinceStart, sinceStart);
        io::ObservationEpoch epoch;
        epoch.time = TagOf(time.tag);
        epoch.receiverClockOffset = kNoValue;
        epoch.firstSatellite = static_cast<std::uint32_t>(data_.satellites.size());
        for (std::size_t s = 0; s < sky_.satellites().size(); ++s) {
            ObserveSatellite(s, time);
        }
        epoch.satelliteCount =
            static_cast<std::uint32_t>(data_.satellites.size()) - epoch.firstSatellite;
        if (epoch.satelliteCount > 0) {
            data_.epochs.push_back(epoch);
        }
    }

    void ObserveSatellite(std::size_t s, const EpochTime& time) {
        const Satellite& satellite = sky_.satellites()[s];
        const auto& table = data_.signalTables[0][static_cast<std::size_t>(satellite.id.system)];
        if (table.empty()) {
            return;
        }
        const Ray ray = RayTo(sky_, s, antenna_, horizon_, time.moment);
        if (ray.elevation <= 0.0) {
            return;
        }
        const double common =
            ray.range + kSpeedOfLight * (time.offset - sky_.ClockAt(s, ray.transmission));
        const std::size_t first = data_.values.size();
        data_.values.resize(first + table.size(), kNoValue);
        data_.lossOfLock.resize(first + table.size(), 0);
        data_.signalStrength.resize(first + table.size(), 0);
        for (std::size_t c = 0; c < columns_.size(); ++c) {
            const Column& column = columns_[c];
            if (!Sends(satellite, column.tracking)) {
                continue;
            }
            const double wavelength =
                kSpeedOfLight / FrequencyOf(column.tracking, satellite.channel);
            std::optional<double>& ambiguity = ambiguities_[s * columns_.size() + c];
            if (!ambiguity) {
                Random random(scenario_.seed, "ambiguity", index_, s, c);
                ambiguity = random.Integer(-20000, 20000);
            }
            data_.values[first + column.code] = ToThousandths(common);
            data_.values[first + column.phase] = ToThousandths(common / wavelength + *ambiguity);
        }
        data_.satellites.push_back({satellite.id, 0, static_cast<std::uint32_t>(first)});
    }

    const Scenario& scenario_;
    const Sky& sky_;
    std::size_t index_;
    const Occupation& occupation_;
    const Site& site_;
    Horizon horizon_;
    Vector3 antenna_{};
    io::Observations data_;
    std::vector<Column> columns_;
    std::vector<std::optional<double>> ambiguities_;  // cycles, by satellite and column
};

}  // namespace

SimulatedSession Simulate(const Scenario& scenario) {
    const Sky sky(scenario);
    SimulatedSession session;
    for (std::size_t i = 0; i < scenario.occupations.size(); ++i) {
        session.stations.push_back(Observer(scenario, sky, i).Observe());
    }
    session.navigation = sky.Messages();
    if (scenario.preciseInterval) {
        session.preciseOrbits = sky.PreciseTables(*scenario.preciseInterval);
    }
    return session;
}

}  // namespace vornel::rough
