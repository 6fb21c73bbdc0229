// Records that no file could hold: any numbers, not-a-number and infinity among them, wherever a
// record has a number. Only values inside the ranges of VornelBlCore.h may reach the exports, and
// the host itself must bear the rest.
//
// An input is a list of changes to the records of a session that solves. What a reader makes sure of
// by building its records stays: every index leads somewhere, each enumeration has one of its
// values.
#include <cstdio>
#include <string>

#include "byte_source.h"
#include "checking_engine.h"
#include "made_up_session.h"
#include "require.h"
#include "session/fault.h"
#include "solve/feed.h"
#include "solve/outcome.h"
#include "solve/preparation.h"
#include "solve/sky.h"

namespace vornel::fuzz {
namespace {

double io::KeplerRecord::*const kKeplerReals[] = {
    &io::KeplerRecord::tocSeconds,  &io::KeplerRecord::af0,
    &io::KeplerRecord::af1,         &io::KeplerRecord::af2,
    &io::KeplerRecord::sqrtA,       &io::KeplerRecord::eccentricity,
    &io::KeplerRecord::i0,          &io::KeplerRecord::omega0,
    &io::KeplerRecord::omega,       &io::KeplerRecord::m0,
    &io::KeplerRecord::deltaN,      &io::KeplerRecord::omegaDot,
    &io::KeplerRecord::idot,        &io::KeplerRecord::crc,
    &io::KeplerRecord::crs,         &io::KeplerRecord::cuc,
    &io::KeplerRecord::cus,         &io::KeplerRecord::cic,
    &io::KeplerRecord::cis,         &io::KeplerRecord::toeSeconds,
    &io::KeplerRecord::aDot,        &io::KeplerRecord::deltaNDot,
    &io::KeplerRecord::iode,        &io::KeplerRecord::iodc,
    &io::KeplerRecord::accuracy,    &io::KeplerRecord::groupDelay1,
    &io::KeplerRecord::groupDelay2, &io::KeplerRecord::transmitTime,
    &io::KeplerRecord::fitInterval};

std::int32_t io::KeplerRecord::*const kKeplerInts[] = {
    &io::KeplerRecord::tocWeek,   &io::KeplerRecord::toeWeek,     &io::KeplerRecord::health,
    &io::KeplerRecord::codesOnL2, &io::KeplerRecord::dataSources, &io::KeplerRecord::l2PFlag};

double io::GlonassRecord::*const kGlonassReals[] = {
    &io::GlonassRecord::referenceSeconds, &io::GlonassRecord::clockBias,
    &io::GlonassRecord::clockDrift, &io::GlonassRecord::messageFrameTime, &io::GlonassRecord::age};

std::int32_t io::GlonassRecord::*const kGlonassInts[] = {
    &io::GlonassRecord::referenceWeek, &io::GlonassRecord::leapSeconds, &io::GlonassRecord::health,
    &io::GlonassRecord::channel};

class Damage {
  public:
    explicit Damage(ByteSource& bytes) : bytes_(bytes), inputs(MadeUpInputs()) {
        const std::uint8_t kept = bytes_.Byte();
        solve = (kept & 1U) != 0;
        if ((kept & 2U) == 0) {
            inputs.orbits.clear();
        }
        if ((kept & 4U) == 0) {
            inputs.antennas.clear();
        }
        settings.values.minEpochs = 4;
        while (!bytes_.Empty()) {
            One();
        }
    }

  private:
    template <typename T>
    T* OneOf(std::vector<T>& list) {
        return list.empty() ? nullptr : &list[bytes_.Index(list.size())];
    }

    template <typename T>
    void Drop(std::vector<T>& list) {
        if (!list.empty()) {
            list.erase(list.begin() + static_cast<std::ptrdiff_t>(bytes_.Index(list.size())));
        }
    }

    // Any, or another than it was by little.
    double Real(double value) {
        switch (bytes_.Byte() % 4) {
            case 0:
                return value * (1.0 + 1e-6 * bytes_.Int(-1000000, 1000000));
            case 1:
                return value + bytes_.Int(-1000, 1000);
            default:
                return bytes_.AnyDouble();
        }
    }

    void ChangeTime(io::GpsTime& time) {
        if (bytes_.Flag()) {
            time.seconds = Real(time.seconds);
        } else {
            time.week = bytes_.Flag() ? bytes_.AnyInt() : bytes_.Int(2198, 2202);
        }
    }

    io::Observations& Receiver() { return bytes_.Flag() ? inputs.rover : inputs.base; }

    void One() {
        switch (bytes_.Byte() % 12) {
            case 0:
                ChangeHeader(Receiver().stations.front());
                break;
            case 1:
                ChangeEpoch(Receiver());
                break;
            case 2:
                ChangeSatellite(Receiver());
                break;
            case 3:
                ChangeSignal(Receiver());
                break;
            case 4:
            case 5:
                if (double* value = OneOf(Receiver().values)) {
                    *value = Real(*value);
                }
                break;
            case 6:
            case 7:
                ChangeKepler();
                break;
            case 8:
                ChangeGlonass();
                break;
            case 9:
                ChangeOrbits();
                break;
            case 10:
                ChangeRest();
                break;
            default:
                ChangeSetting();
        }
    }

    void ChangeHeader(io::StationHeader& header) {
        switch (bytes_.Byte() % 8) {
            case 0:
                header.approximatePosition.reset();
                break;
            case 1:
            case 2:
                if (header.approximatePosition) {
                    double& value = (*header.approximatePosition)[bytes_.Index(3)];
                    value = Real(value);
                }
                break;
            case 3:
                header.antennaHeight = Real(header.antennaHeight);
                break;
            case 4:
                (bytes_.Flag() ? header.antennaEast : header.antennaNorth) = bytes_.AnyDouble();
                break;
            case 5:
                header.glonassChannels.emplace_back(bytes_.AnyInt(), bytes_.AnyInt());
                break;
            case 6:
                header.interval = bytes_.AnyDouble();
                header.leapSeconds = bytes_.AnyInt();
                break;
            default:
                header.antennaType = bytes_.Flag() ? "" : "OTHER";
                header.markerName = "";
        }
    }

    void ChangeEpoch(io::Observations& observations) {
        if (observations.epochs.empty()) {
            return;
        }
        const std::size_t i = bytes_.Index(observations.epochs.size());
        io::ObservationEpoch& epoch = observations.epochs[i];
        switch (bytes_.Byte() % 8) {
            case 0:
                epoch.moving = !epoch.moving;
                break;
            case 1:
                epoch.receiverClockOffset = bytes_.AnyDouble();
                break;
            case 2:
                epoch.satelliteCount = bytes_.Byte() % (epoch.satelliteCount + 1);
                break;
            case 3:
                Drop(observations.epochs);
                break;
            case 4:
                std::swap(epoch, observations.epochs[bytes_.Index(observations.epochs.size())]);
                break;
            case 5:
                for (std::size_t k = i; k < observations.epochs.size(); ++k) {
                    // Without a sign: another change may have left the least of all weeks.
                    int& week = observations.epochs[k].time.week;
                    week = static_cast<int>(static_cast<unsigned>(week) +
                                            static_cast<unsigned>(bytes_.Int(-10, 10)));
                }
                break;
            default:
                ChangeTime(epoch.time);
        }
    }

    void ChangeSatellite(io::Observations& observations) {
        if (io::SatelliteRow* row = OneOf(observations.satellites)) {
            // The columns of another system may be fewer; all have four here.
            if (bytes_.Byte() % 4 == 0) {
                row->satellite.system = static_cast<io::GnssSystem>(bytes_.Index(4));
            }
            row->satellite.number = bytes_.Byte();
        }
    }

    void ChangeSignal(io::Observations& observations) {
        auto& signals = observations.signalTables.front()[bytes_.Index(4)];
        io::Signal& signal = signals[bytes_.Index(signals.size())];
        switch (bytes_.Byte() % 4) {
            case 0:
                signal.code.type = static_cast<char>(bytes_.Byte());
                break;
            case 1:
                signal.code.band = static_cast<char>(bytes_.Byte());
                break;
            case 2:
                signal.code.attribute = static_cast<char>(bytes_.Byte());
                break;
            default:
                observations.version = bytes_.Flag() ? 2.11 : bytes_.AnyDouble();
        }
    }

    void ChangeKepler() {
        auto& records = inputs.navigation.front().kepler;
        io::KeplerRecord* record = OneOf(records);
        if (record == nullptr) {
            return;
        }
        const std::size_t which = bytes_.Index(48);
        if (which < std::size(kKeplerReals)) {
            double& value = record->*kKeplerReals[which];
            value = Real(value);
        } else if (which < 35) {
            record->*kKeplerInts[which - 29] = bytes_.AnyInt();
        } else if (which < 37) {
            record->satellite = {static_cast<io::GnssSystem>(bytes_.Index(io::kSystemCount)),
                                 bytes_.Byte()};
        } else if (which < 40) {
            record->message = static_cast<io::NavigationMessage>(bytes_.Index(10));
        } else if (which < 44) {
            record->hasRates = true;
        } else if (which < 46) {
            Drop(records);
        } else {
            records.push_back(io::KeplerRecord(*record));
        }
    }

    void ChangeGlonass() {
        auto& records = inputs.navigation.front().glonass;
        io::GlonassRecord* record = OneOf(records);
        if (record == nullptr) {
            return;
        }
        const std::size_t which = bytes_.Index(16);
        if (which < std::size(kGlonassReals)) {
            double& value = record->*kGlonassReals[which];
            value = Real(value);
        } else if (which < 9) {
            record->*kGlonassInts[which - 5] =
                bytes_.Flag() ? bytes_.AnyInt() : bytes_.Int(-20, 40);
        } else if (which == 9) {
            record->slot = bytes_.Byte();
        } else if (which == 10) {
            Drop(records);
        } else {
            auto& vector = which == 11   ? record->acceleration
                           : which == 12 ? record->velocity
                                         : record->position;
            double& value = vector[bytes_.Index(3)];
            value = Real(value);
        }
    }

    void ChangeOrbits() {
        if (inputs.orbits.empty()) {
            return;
        }
        io::PreciseOrbits& orbits = inputs.orbits.front();
        if (bytes_.Byte() % 3 == 0) {
            ChangeTime(orbits.epochs[bytes_.Index(orbits.epochs.size())]);
            return;
        }
        io::OrbitSeries* series = OneOf(orbits.satellites);
        if (series == nullptr) {
            return;
        }
        io::OrbitPoint* point = OneOf(series->points);
        switch (bytes_.Byte() % 5) {
            case 0:
                series->satellite = {static_cast<io::GnssSystem>(bytes_.Index(io::kSystemCount)),
                                     bytes_.Byte()};
                break;
            case 1:
                if (point != nullptr) {
                    point->clock = Real(point->clock);
                }
                break;
            case 2:
                if (point != nullptr) {
                    point->epoch = static_cast<std::uint32_t>(bytes_.Index(orbits.epochs.size()));
                }
                break;
            case 3:
                Drop(series->points);
                break;
            default:
                if (point != nullptr) {
                    double& value = point->position[bytes_.Index(3)];
                    value = Real(value);
                }
        }
    }

    // Ionosphere and antennas.
    void ChangeRest() {
        if (bytes_.Flag()) {
            io::IonosphereSet& set = inputs.navigation.front().ionosphere.front();
            (bytes_.Flag() ? set.alpha : set.beta)[bytes_.Index(4)] = bytes_.AnyDouble();
            return;
        }
        if (inputs.antennas.empty()) {
            return;
        }
        io::AntennaCalibration& antenna = inputs.antennas.front().antennas.front();
        io::PhaseCentreOffset& offset = antenna.offsets[bytes_.Index(antenna.offsets.size())];
        switch (bytes_.Byte() % 6) {
            case 0:
                offset.north = bytes_.AnyDouble();
                break;
            case 1:
                offset.east = bytes_.AnyDouble();
                break;
            case 2:
                offset.frequency = "E05";
                break;
            case 3:
                (bytes_.Flag() ? antenna.validFrom : antenna.validUntil) =
                    io::GpsTime{bytes_.AnyInt(), bytes_.AnyDouble()};
                break;
            default:
                offset.up = bytes_.AnyDouble();
        }
    }

    // Settings come as words, and any word may come.
    void ChangeSetting() {
        const auto& all = session::AllSettings();
        const session::SettingSpec& spec = all[bytes_.Index(all.size())];
        std::vector<std::string> words;
        for (int i = 0; i < std::max(1, spec.words); ++i) {
            words.push_back(Word());
        }
        try {
            spec.set(settings.values, words);
        } catch (const session::SettingError&) {
        }
    }

    std::string Word() {
        char text[64];
        switch (bytes_.Byte() % 6) {
            case 0:
                std::snprintf(text, sizeof text, "%.17g", bytes_.AnyDouble());
                return text;
            case 1:
                std::snprintf(text, sizeof text, "%d", bytes_.AnyInt());
                return text;
            case 2:
                std::snprintf(text, sizeof text, "%d", bytes_.Int(0, 9));
                return text;
            case 3:
                std::snprintf(text, sizeof text, "%d:%d", bytes_.Int(0, 7000),
                              bytes_.Int(-10, 700000));
                return text;
            case 4:
                std::snprintf(text, sizeof text, "%c%02d@%d:%d/%d:%.6g", "GRCEX"[bytes_.Index(5)],
                              bytes_.Int(0, 40), bytes_.Int(2199, 2201), bytes_.Int(0, 604800),
                              bytes_.Int(2199, 2201), bytes_.AnyDouble());
                return text;
            default:
                return Choice();
        }
    }

    std::string Choice() {
        constexpr const char* kWords[] = {"true",    "false", "G",   "GRCE", "auto", "broadcast",
                                          "precise", "G05",   "E11", "",     "1e3",  "4e6"};
        return kWords[bytes_.Index(std::size(kWords))];
    }

    ByteSource& bytes_;

  public:
    session::Inputs inputs;
    session::ConfiguredSettings settings;
    bool solve = false;
};

}  // namespace
}  // namespace vornel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vornel;
    fuzz::ForgetEverything();
    fuzz::ByteSource bytes(data, size);
    fuzz::Damage damage(bytes);
    try {
        const session::Session session =
            solve::PrepareSession(std::move(damage.inputs), std::move(damage.settings));
        engine::Engine engine(fuzz::CheckingEngine(damage.solve));
        const solve::FeedSummary fed = solve::Feed(session, engine, {});
        FUZZ_REQUIRE(fed.epochs == fuzz::CallsSoFar().epochs && fed.epochs > 0);
        const solve::RunOutcome outcome = solve::Run(session, engine);
        FUZZ_REQUIRE(size > 0 || fed.epochs == fuzz::kMadeUpEpochs);
        FUZZ_REQUIRE((outcome.Best() == nullptr) ==
                     (outcome.acceptance == solve::Acceptance::kNone));
        solve::SkyTracks(session, fed, 60.0);
    } catch (const session::SessionFault&) {
        FUZZ_REQUIRE(size > 0);
    }
    fuzz::ForgetEverything();
    return 0;
}
