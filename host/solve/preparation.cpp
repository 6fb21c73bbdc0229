#include "solve/preparation.h"

#include <algorithm>
#include <cmath>

#include "session/fault.h"
#include "session/text.h"

namespace vornel::solve {
namespace {

using session::AntennaChoice;
using session::ChooseSignals;
using session::CodeFix;
using session::CommonSatellites;
using session::ConfiguredSettings;
using session::DropUntimed;
using session::EngineTime;
using session::EphemerisChoice;
using session::EpochPair;
using session::Fault;
using session::FileName;
using session::FindAntenna;
using session::FirstGpsIonosphere;
using session::FixFromCode;
using session::Format;
using session::FromNeu;
using session::GalileoSignalName;
using session::Geodetic;
using session::HasOrbit;
using session::Inputs;
using session::InsideTable;
using session::IntervalOf;
using session::Joined;
using session::JoinOrbits;
using session::kFrequencies;
using session::Length;
using session::Minus;
using session::PairEpochs;
using session::Plural;
using session::PositionSource;
using session::PositionSourceName;
using session::SecondGalileoSignal;
using session::SelectEphemerides;
using session::Session;
using session::SessionFault;
using session::Settings;
using session::SignalPair;
using session::SignalReader;
using session::Station;
using session::TimedGlonass;
using session::ToGeodetic;
using session::ValueLosses;
using session::Vector3;

constexpr double kContradiction = 100.0;  // m between a position and the code fix
constexpr double kLeastRadius = 6.3e6, kMostRadius = 6.5e6;  // m, of a station

std::string NamesOf(const std::set<engine::Satellite>& satellites) {
    return Joined(satellites, [](const engine::Satellite& s) { return ToString(s); });
}

// Everything PrepareSession does, one step after the other.
class Preparation {
  public:
    Preparation(Inputs inputs, ConfiguredSettings settings) {
        s_.inputs = std::move(inputs);
        s_.settings = std::move(settings);
    }

    Session Done() {
        DropUntimedEpochs();
        DescribeStation(s_.rover, s_.inputs.rover, s_.settings.values.roverHeight, "rover");
        DescribeStation(s_.base, s_.inputs.base, s_.settings.values.baseHeight, "base");
        RequireEpochs();
        ChooseAllSignals();
        PairAll();
        TakeEphemerides();
        TakeOrbits();
        TakeIonosphere();
        PlaceStation(s_.rover, s_.settings.values.roverXyz, "rover");
        PlaceStation(s_.base, s_.settings.values.baseXyz, "base");
        TakeAntennas();
        FillConfig();
        NameSatellitesLeftOut();
        return std::move(s_);
    }

  private:
    void Note(std::string text) { s_.notes.push_back(std::move(text)); }
    void Warn(std::string text) { s_.warnings.push_back(std::move(text)); }
    void Force(const char* setting, std::string reason) {
        s_.settings.origins[setting] = {"data", std::move(reason)};
    }

    void DropUntimedEpochs() {
        const std::size_t count = DropUntimed(s_.inputs.base) + DropUntimed(s_.inputs.rover);
        if (count > 0) {
            Warn(Plural(count, "epoch") + " without a date between 1980 and 2100 were left out");
        }
    }

    // A length of the header in metres; 0 for one that no antenna has.
    double SoundLength(double metres, const char* what, const char* role) {
        constexpr double kMost = 1000.0;
        if (std::abs(metres) <= kMost) {
            return metres;
        }
        Warn(std::string(role) + ": the " + what + " of the header, " + Format("%g", metres) +
             " m, is none that an antenna has; 0 is used");
        return 0.0;
    }

    void DescribeStation(Station& station, const io::Observations& observations,
                         const std::optional<double>& height, const char* role) {
        station.header = observations.station();
        io::StationHeader& header = station.header;
        header.antennaHeight = SoundLength(header.antennaHeight, "antenna height", role);
        header.antennaNorth = SoundLength(header.antennaNorth, "antenna's offset north", role);
        header.antennaEast = SoundLength(header.antennaEast, "antenna's offset east", role);
        station.name = header.markerName.empty() ? FileName(observations.file) : header.markerName;
        station.epochs = observations.epochs.size();
        if (!observations.epochs.empty()) {
            station.firstEpoch = observations.epochs.front().time;
            station.lastEpoch = observations.epochs.back().time;
        }
        station.heightFromOption = height.has_value();
        station.antennaHeight = height.value_or(header.antennaHeight);
        for (const io::StationHeader& other : observations.stations) {
            const bool used = std::any_of(observations.epochs.begin(), observations.epochs.end(),
                                          [&](const io::ObservationEpoch& e) {
                                              return &observations.stations[e.station] == &other;
                                          });
            if (used && other.antennaHeight != header.antennaHeight && !height) {
                Warn(std::string(role) + ": the antenna height changes within the files from " +
                     Format("%.4f", header.antennaHeight) + " to " +
                     Format("%.4f", other.antennaHeight) + " m; the first is used for all epochs");
            }
            if (used && other.antennaType != header.antennaType) {
                Warn(std::string(role) + ": the antenna changes within the files from " +
                     header.antennaType + " to " + other.antennaType);
            }
        }
    }

    void RequireEpochs() const {
        const auto require = [](const Station& station, const io::Observations& observations) {
            if (station.epochs == 0) {
                throw SessionFault(Fault::kNoCommonEpochs,
                                   observations.file + ": no epoch of it can be used",
                                   "see --start, --end and --interval, or give the whole file");
            }
        };
        require(s_.base, s_.inputs.base);
        require(s_.rover, s_.inputs.rover);
    }

    void ChooseAllSignals() {
        Settings& values = s_.settings.values;
        s_.galileo.first = values.galFreq1.value_or(VORNEL_DEFAULT_GAL_FREQ1);
        s_.galileo.second = values.galFreq2.value_or(
            SecondGalileoSignal(s_.inputs.rover, s_.inputs.base, s_.galileo.first));
        if (!values.galFreq2) {
            Force("gal-freq2", std::string("the first of E5a, E5b, E5, E6, E1 that both receivers "
                                           "have: ") +
                                   GalileoSignalName(s_.galileo.second));
        }
        values.galFreq1 = s_.galileo.first;
        values.galFreq2 = s_.galileo.second;
        s_.signals = ChooseSignals(s_.inputs.rover, s_.inputs.base, s_.galileo);
        bool any = false;
        for (const engine::System system : engine::kSystems) {
            auto& pair = s_.signals[IndexOf(system)];
            if (!values.systems[IndexOf(system)]) {
                pair = {};
                continue;
            }
            any = any || pair[0].Usable();
            NoteDifferentTracking(system, pair);
        }
        if (!any) {
            throw SessionFault(Fault::kNoCommonSignals,
                               "no system whose first signal both receivers observed with code and "
                               "phase",
                               "see `vornel info` for what the files hold, and --systems");
        }
    }

    void NoteDifferentTracking(engine::System system,
                               const std::array<SignalPair, kFrequencies>& pairs) {
        std::string codes;
        for (const SignalPair& pair : pairs) {
            if (pair.Usable() && !pair.SameTracking()) {
                codes += codes.empty() ? "" : ", ";
                codes += pair.base->Tracking() + " and " + pair.rover->Tracking();
            }
        }
        if (!codes.empty()) {
            Note(std::string(NameOf(system)) + ": no tracking code in common; base and rover use " +
                 codes);
        }
    }

    void PairAll() {
        s_.pairing = PairEpochs(s_.inputs.rover, s_.inputs.base);
        s_.pairs = std::move(s_.pairing.pairs);
        s_.pairing.pairs.clear();
        if (s_.pairs.empty()) {
            ThrowNoCommonEpochs();
        }
        s_.interval = IntervalOf(s_.inputs.rover, s_.pairs);
        if (s_.pairing.moving > 0) {
            Warn(Plural(s_.pairing.moving, "epoch") +
                 " taken while an antenna was being moved were left out");
        }
        if (s_.pairing.outOfOrder > 0) {
            Warn(Plural(s_.pairing.outOfOrder, "epoch") +
                 " not later than the one before were left out");
        }
        if (s_.pairing.sameSecond > 0) {
            Note(Plural(s_.pairing.sameSecond, "common epoch") +
                 " left out, as the engine takes one a second");
        }
        if (s_.pairing.acrossWeeks > 0) {
            Note(Plural(s_.pairing.acrossWeeks, "common epoch") +
                 " left out, as the tags of the receivers lie on two sides of a week's end");
        }
    }

    [[noreturn]] void ThrowNoCommonEpochs() const {
        const auto day = [](const io::GpsTime& time) {
            return io::FormatTime(time, 0).substr(0, 10);
        };
        const Station &b = s_.base, &r = s_.rover;
        const bool apart = b.lastEpoch < r.firstEpoch || r.lastEpoch < b.firstEpoch;
        const bool days = day(b.lastEpoch) != day(r.firstEpoch) &&
                          day(r.lastEpoch) != day(b.firstEpoch) &&
                          day(b.firstEpoch) != day(r.firstEpoch);
        if (apart && days) {
            throw SessionFault(Fault::kDifferentDays,
                               "the stations were observed on different days: base " +
                                   day(b.firstEpoch) + ", rover " + day(r.firstEpoch),
                               "give observation files of the same day");
        }
        throw SessionFault(Fault::kNoCommonEpochs,
                           "no common epoch within 0.1 s: base " + io::FormatTime(b.firstEpoch, 0) +
                               " to " + io::FormatTime(b.lastEpoch, 0) + ", rover " +
                               io::FormatTime(r.firstEpoch, 0) + " to " +
                               io::FormatTime(r.lastEpoch, 0) + " GPS time",
                           "give observation files of the same hours and the same full seconds");
    }

    void TakeEphemerides() {
        s_.ephemerides = SelectEphemerides(s_.inputs.navigation, s_.FirstTime(), s_.LastTime());
        const EphemerisChoice choice = s_.settings.values.ephemerisSource;
        s_.precise = choice == EphemerisChoice::kPrecise ||
                     (choice == EphemerisChoice::kAutomatic && !s_.inputs.orbits.empty());
        if (choice == EphemerisChoice::kAutomatic) {
            Force("ephemeris-source",
                  s_.precise ? "precise orbits are given" : "no precise orbits are given");
        }
        if (s_.precise) {
            return;
        }
        if (s_.inputs.navigation.empty()) {
            throw SessionFault(Fault::kNoNavigation, "no navigation file is given",
                               "add the broadcast navigation of " +
                                   io::FormatTime(s_.FirstTime(), 0).substr(0, 10) +
                                   ", or precise orbits");
        }
        if (s_.ephemerides.Empty()) {
            throw SessionFault(Fault::kNoNavigation,
                               "no usable record of the navigation files is within 4 hours of the "
                               "session (" +
                                   io::FormatTime(s_.FirstTime(), 0) + " to " +
                                   io::FormatTime(s_.LastTime(), 0) + " GPS time)",
                               "add the broadcast navigation of that day");
        }
    }

    void TakeOrbits() {
        if (!s_.precise) {
            return;
        }
        if (s_.inputs.orbits.empty()) {
            throw SessionFault(Fault::kNoOrbitCoverage, "precise orbits are asked for, none given",
                               "add an SP3 file, or leave --ephemeris-source out");
        }
        s_.orbits = JoinOrbits(s_.inputs.orbits);
        const std::size_t before = s_.pairs.size();
        const io::GpsTime first = s_.FirstTime(), last = s_.LastTime();
        std::erase_if(s_.pairs, [&](const EpochPair& pair) {
            return !InsideTable(s_.orbits, EngineTime(s_.inputs.rover.epochs[pair.rover].time,
                                                      s_.inputs.base.epochs[pair.base].time));
        });
        s_.lostAtTableEnds = before - s_.pairs.size();
        if (s_.pairs.empty()) {
            throw SessionFault(Fault::kNoOrbitCoverage,
                               "the precise orbits do not cover the session (" +
                                   io::FormatTime(first, 0) + " to " + io::FormatTime(last, 0) +
                                   " GPS time), five entries on each side included",
                               "add the orbit files of that day and the neighbouring one, or use "
                               "--ephemeris-source broadcast");
        }
        if (s_.lostAtTableEnds > 0) {
            Warn(Plural(s_.lostAtTableEnds, "epoch") +
                 " lost near the ends of the precise orbits, which need five entries on each side; "
                 "add the orbit file of the neighbouring day");
        }
    }

    void TakeIonosphere() {
        if (!s_.settings.values.noIonosphere) {
            s_.ionosphere = FirstGpsIonosphere(s_.inputs.navigation);
        }
    }

    // Own position from code; nothing when the data do not give one.
    std::optional<CodeFix> CodeFixOf(bool rover) const {
        const io::Observations& observations = rover ? s_.inputs.rover : s_.inputs.base;
        std::vector<std::size_t> epochs;
        for (const EpochPair& pair : s_.pairs) {
            epochs.push_back(rover ? pair.rover : pair.base);
        }
        return FixFromCode(observations, epochs, SignalReader(observations, s_.signals, rover),
                           s_.ephemerides, s_.galileo);
    }

    static bool OnEarth(const Vector3& xyz) {
        const double radius = Length(xyz);
        return radius > kLeastRadius && radius < kMostRadius;
    }

    void PlaceStation(Station& station, const std::optional<Vector3>& option, const char* role) {
        const bool isRover = &station == &s_.rover;
        station.codeFix = CodeFixOf(isRover);
        const std::optional<Vector3>& header = station.header.approximatePosition;
        if (option) {
            station.position = *option;
            station.positionSource = PositionSource::kOption;
        } else if (header && OnEarth(*header)) {
            station.position = *header;
            station.positionSource = PositionSource::kHeader;
        } else if (station.codeFix) {
            TakeCodePosition(station);
            Note(std::string(role) + ": the header has no usable position; it was found from the " +
                 "code observations, good to some metres");
        } else {
            throw SessionFault(Fault::kNoPosition,
                               std::string(role) + " (" + station.name +
                                   "): no position in the header, and " +
                                   "none could be found from its code observations",
                               std::string("give --") + role + "-xyz X Y Z");
        }
        if (station.codeFix && station.positionSource != PositionSource::kCode) {
            station.offFromCode = Length(Minus(station.position, station.codeFix->position));
            if (*station.offFromCode > kContradiction) {
                SettleContradiction(station, role, isRover);
            }
        }
        const Geodetic place = ToGeodetic(station.position);
        station.eccentricity =
            FromNeu(place, {station.header.antennaNorth, station.header.antennaEast, 0.0});
        if (Length(station.eccentricity) > 0.0) {
            Note(std::string(role) + ": the antenna stands " +
                 Format("%.4f", station.header.antennaNorth) + " m north and " +
                 Format("%.4f", station.header.antennaEast) +
                 " m east of the marker; the vector is reduced to the markers");
        }
    }

    static void TakeCodePosition(Station& station) {
        station.position = station.codeFix->position;
        station.positionSource = PositionSource::kCode;
        // The fix is that of the antenna.
        const Geodetic place = ToGeodetic(station.position);
        station.position = Minus(
            station.position, FromNeu(place, {station.header.antennaNorth,
                                              station.header.antennaEast, station.antennaHeight}));
    }

    void SettleContradiction(Station& station, const char* role, bool isRover) {
        const std::string fact = std::string(role) + " (" + station.name + "): the " +
                                 PositionSourceName(station.positionSource) + " position lies " +
                                 Format("%.0f", *station.offFromCode) +
                                 " m from where the code observations put it";
        if (station.positionSource == PositionSource::kOption) {
            Warn(fact + "; it is used as given");
        } else if (isRover || s_.settings.values.trustCode) {
            TakeCodePosition(station);
            Warn(fact + "; the code position is used instead");
        } else {
            throw SessionFault(Fault::kBaseContradicted, fact,
                               "give --base-xyz X Y Z, or --trust-code to take the code position");
        }
    }

    void TakeAntennas() {
        s_.rover.antenna = FindAntenna(s_.inputs.antennas, s_.rover.header, s_.FirstTime());
        s_.base.antenna = FindAntenna(s_.inputs.antennas, s_.base.header, s_.FirstTime());
        const AntennaChoice &r = s_.rover.antenna, &b = s_.base.antenna;
        const bool same = r.type == b.type && r.radome == b.radome;
        s_.antennasApplied = r.found && b.found;
        const std::string names = b.type + " " + b.radome + " and " + r.type + " " + r.radome;
        if (s_.inputs.antennas.empty()) {
            if (!same) {
                Warn(
                    "no ANTEX file is given, so no phase centre offset is applied, although the "
                    "antennas differ (" +
                    names + "); heights may be off by centimetres");
            }
            return;
        }
        for (const Station* station : {&s_.base, &s_.rover}) {
            const AntennaChoice& a = station->antenna;
            const std::string who = station == &s_.base ? "base" : "rover";
            if (!a.found) {
                const std::string what = a.type.empty() ? "the header names no antenna"
                                                        : "no calibration of " + a.type + " " +
                                                              a.radome + " in the ANTEX files";
                Warn(who + ": " + what + "; no phase centre offset is applied at either station");
            } else if (a.usedRadome != a.radome) {
                Warn(who + ": no calibration of " + a.type + " with radome " + a.radome +
                     "; that with radome " + a.usedRadome + " is used");
            }
        }
        if (s_.antennasApplied && (r.relative || b.relative)) {
            if (r.relative != b.relative) {
                Warn(
                    "one antenna calibration is relative and the other absolute; they do not fit "
                    "together");
            }
        }
    }

    void FillConfig() {
        Settings& v = s_.settings.values;
        engine::Config& c = s_.config;
        c.slvmode = v.solveMode;
        c.elevationMask = v.elevationMask * M_PI / 180.0;
        if (!v.samplingInterval) {
            v.samplingInterval = s_.interval > 0.0 ? s_.interval : c.samplingInterval;
            Force("sampling-interval", "interval of the common epochs");
        }
        c.samplingInterval = *v.samplingInterval;
        c.minEpochs = v.minEpochs;
        c.shortBaselineLimit = v.shortBaselineLimit;
        c.maxFixBaseline = v.maxFixBaseline;
        c.ephemerisSource = s_.precise ? 1 : 0;
        v.ephemerisSource = s_.precise ? EphemerisChoice::kPrecise : EphemerisChoice::kBroadcast;
        for (std::size_t i = 0; i < engine::kSystemCount; ++i) {
            c.systems[i] = v.systems[i] ? 1 : 0;
        }
        c.outlierFactor = v.outlierFactor;
        c.slipTestCap = v.slipTestCap;
        c.ratioThreshold = v.ratioThreshold;
        c.phaseStd = v.phaseStd;
        c.periodLength = v.periodLength;
        c.tropoModel = v.tropoModel;
        c.pressure = v.pressure;
        c.temperature = v.temperature;
        c.humidity = v.humidity;
        c.galFreq1 = s_.galileo.first;
        c.galFreq2 = s_.galileo.second;
    }

    // Satellites observed by both receivers at a common epoch.
    std::set<engine::Satellite> CommonOfSession() const {
        const SignalReader roverReader(s_.inputs.rover, s_.signals, true);
        const SignalReader baseReader(s_.inputs.base, s_.signals, false);
        std::set<engine::Satellite> common;
        ValueLosses losses;
        for (const EpochPair& pair : s_.pairs) {
            for (const engine::Satellite& satellite :
                 CommonSatellites(roverReader.Read(s_.inputs.rover.epochs[pair.rover], losses),
                                  baseReader.Read(s_.inputs.base.epochs[pair.base], losses))) {
                common.insert(satellite);
            }
        }
        return common;
    }

    std::vector<io::GpsTime> TimesOfPairs() const {
        std::vector<io::GpsTime> times;
        for (const EpochPair& pair : s_.pairs) {
            times.push_back(EngineTime(s_.inputs.rover.epochs[pair.rover].time,
                                       s_.inputs.base.epochs[pair.base].time));
        }
        return times;
    }

    bool OrbitAtAnyEpoch(engine::Satellite satellite, const std::vector<io::GpsTime>& times) const {
        if (s_.precise) {
            return s_.orbits.satellites.contains(satellite);
        }
        return HasOrbit(s_.ephemerides, satellite, times);
    }

    void NameSatellitesLeftOut() {
        for (const io::Observations* observations : {&s_.inputs.rover, &s_.inputs.base}) {
            for (const io::SatelliteRow& row : observations->satellites) {
                if (!engine::ToEngine(row.satellite)) {
                    s_.leftOut.unnumbered.insert(io::ToString(row.satellite));
                }
            }
        }
        const auto common = CommonOfSession();
        if (common.empty()) {
            throw SessionFault(Fault::kNoCommonSignals,
                               "no satellite was observed by both receivers at a common epoch",
                               "see `vornel info` for what the files hold");
        }
        const auto times = TimesOfPairs();
        bool anyOrbit = false;
        for (const engine::Satellite& satellite : common) {
            if (!OrbitAtAnyEpoch(satellite, times)) {
                s_.leftOut.withoutOrbit.insert(satellite);
                continue;
            }
            anyOrbit = true;
            if (s_.precise && satellite.system == engine::System::kGlonass) {
                CheckChannel(satellite);
            }
        }
        if (!anyOrbit) {
            throw SessionFault(s_.precise ? Fault::kNoOrbitCoverage : Fault::kNoNavigation,
                               std::string("no ") + (s_.precise ? "precise" : "broadcast") +
                                   " orbit of any satellite that both receivers observed",
                               "add the files of the day and the systems observed");
        }
        if (!s_.leftOut.withoutOrbit.empty()) {
            Note("no orbit: " + NamesOf(s_.leftOut.withoutOrbit));
        }
    }

    // With precise orbits the engine takes the channel of a GLONASS satellite without broadcast
    // record from a table, which knows its slots as they were. A wrong channel spoils
    // the solution, so a satellite whose header tells otherwise is left out.
    void CheckChannel(engine::Satellite satellite) {
        for (const TimedGlonass& timed : s_.ephemerides.glonass) {
            if (timed.record.slot == satellite.prn) {
                return;
            }
        }
        constexpr std::array<int, VORNEL_CHANNEL_SLOTS> kTable = VORNEL_CHANNELS_OF_SLOTS;
        const auto slot = static_cast<std::size_t>(satellite.prn);
        const std::optional<int> assumed =
            slot <= kTable.size() ? std::optional(kTable[slot - 1]) : std::nullopt;
        for (const Station* station : {&s_.base, &s_.rover}) {
            for (const auto& [headerSlot, channel] : station->header.glonassChannels) {
                if (headerSlot == satellite.prn && (!assumed || *assumed != channel)) {
                    s_.leftOut.unknownChannel[satellite] =
                        "its channel " + std::to_string(channel) +
                        " stands in the header, but no broadcast record tells it to the engine";
                    return;
                }
            }
        }
        if (!assumed) {
            s_.leftOut.unknownChannel[satellite] = "its frequency channel is not known";
        }
    }

    Session s_;
};

}  // namespace

io::ObservationSelection SelectionFor(const Settings& settings) {
    io::ObservationSelection selection;
    selection.start = settings.start;
    selection.end = settings.end;
    selection.interval = settings.interval;
    selection.types = "CL";
    selection.strict = settings.strict;
    return selection;
}

std::uint64_t UnpackLimitOf(const Settings& settings) {
    constexpr double kGibibyte = 1073741824.0;
    return static_cast<std::uint64_t>(settings.unpackLimit * kGibibyte);
}

Session PrepareSession(Inputs inputs, ConfiguredSettings settings) {
    return Preparation(std::move(inputs), std::move(settings)).Done();
}

}  // namespace vornel::solve
