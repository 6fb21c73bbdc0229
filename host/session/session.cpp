#include "session/session.h"

#include <algorithm>
#include <chrono>
#include <cmath>

#include "session/fault.h"
#include "session/status.h"
#include "session/text.h"

namespace vornel::session {
namespace {

constexpr double kContradiction = 100.0;  // m between a position and the code fix
constexpr double kLeastRadius = 6.3e6, kMostRadius = 6.5e6;  // m, of a station

std::string NamesOf(const std::set<EngineSatellite>& satellites) {
    return Joined(satellites, [](const EngineSatellite& s) { return ToString(s); });
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
        s_.galileo.first = values.galFreq1.value_or(1);
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
        for (const EngineSystem system : kEngineSystems) {
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

    void NoteDifferentTracking(EngineSystem system,
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
        EngineConfig& c = s_.config;
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
        for (std::size_t i = 0; i < kEngineSystemCount; ++i) {
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
    std::set<EngineSatellite> CommonOfSession() const {
        const SignalReader roverReader(s_.inputs.rover, s_.signals, true);
        const SignalReader baseReader(s_.inputs.base, s_.signals, false);
        std::set<EngineSatellite> common;
        ValueLosses losses;
        for (const EpochPair& pair : s_.pairs) {
            for (const EngineSatellite& satellite :
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

    bool OrbitAtAnyEpoch(EngineSatellite satellite, const std::vector<io::GpsTime>& times) const {
        if (s_.precise) {
            return s_.orbits.satellites.contains(satellite);
        }
        return HasOrbit(s_.ephemerides, satellite, times);
    }

    void NameSatellitesLeftOut() {
        for (const io::Observations* observations : {&s_.inputs.rover, &s_.inputs.base}) {
            for (const io::SatelliteRow& row : observations->satellites) {
                if (!ToEngine(row.satellite)) {
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
        for (const EngineSatellite& satellite : common) {
            if (!OrbitAtAnyEpoch(satellite, times)) {
                s_.leftOut.withoutOrbit.insert(satellite);
                continue;
            }
            anyOrbit = true;
            if (s_.precise && satellite.system == EngineSystem::kGlonass) {
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
    // record from a table of its own, which knows slots 1 to 24 as they were. A wrong channel spoils
    // the solution, so a satellite whose header tells otherwise is left out.
    void CheckChannel(EngineSatellite satellite) {
        for (const TimedGlonass& timed : s_.ephemerides.glonass) {
            if (timed.record.slot == satellite.prn) {
                return;
            }
        }
        constexpr std::array<int, 24> kTable = {1,  -4, 5, 6,  1,  -4, 5, 6, -2, -7, 0, -1,
                                                -2, -7, 0, -1, -6, -3, 3, 2, 4,  -3, 3, 2};
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

void AddOrbits(const OrbitTables& orbits, Engine& engine) {
    std::vector<int> weeks;
    std::vector<double> seconds;
    for (const io::GpsTime& time : orbits.times) {
        weeks.push_back(time.week);
        seconds.push_back(time.seconds);
    }
    for (const auto& [satellite, components] : orbits.satellites) {
        for (std::size_t c = 0; c < kOrbitComponents; ++c) {
            engine.AddPrecise(static_cast<int>(c), satellite, weeks, seconds, components[c]);
        }
    }
}

EngineStation ToEngine(const Station& station, bool antennas) {
    EngineStation result;
    result.xyz = Plus(station.position, station.eccentricity);
    result.height = station.antennaHeight;
    if (antennas) {
        result.offset1 = station.antenna.offset1;
        result.offset2 = station.antenna.offset2;
    }
    return result;
}

// Whole satellites into one call, spans of a satellite into one track: the engine's lists forget
// what stands behind a satellite that is added twice.
void AddExclusions(const Session& session, Engine& engine) {
    std::set<EngineSatellite> whole;
    std::map<EngineSatellite, std::vector<EngineSpan>> spans;
    for (const auto& [satellite, reason] : session.leftOut.unknownChannel) {
        whole.insert(satellite);
    }
    constexpr double kADay = 86400.0;
    const auto withinCalendar = [](const io::GpsTime& time, const io::GpsTime& otherwise) {
        return io::IsInCalendar(time) ? time : otherwise;
    };
    const io::GpsTime before =
        withinCalendar(io::Shifted(session.FirstTime(), -kADay), session.FirstTime());
    const io::GpsTime after =
        withinCalendar(io::Shifted(session.LastTime(), kADay), session.LastTime());
    for (const Exclusion& exclusion : session.settings.values.exclusions) {
        if (!exclusion.start && !exclusion.end) {
            whole.insert(exclusion.satellite);
            continue;
        }
        const io::GpsTime start = exclusion.start.value_or(before);
        const io::GpsTime end = exclusion.end.value_or(after);
        spans[exclusion.satellite].push_back({start.week, start.seconds, end.week, end.seconds});
    }
    if (!whole.empty()) {
        engine.ExcludeSatellites({whole.begin(), whole.end()});
    }
    for (auto& [satellite, list] : spans) {
        std::sort(list.begin(), list.end(), [](const EngineSpan& a, const EngineSpan& b) {
            return std::pair(a.startWeek, a.startSeconds) < std::pair(b.startWeek, b.startSeconds);
        });
        engine.ExcludeSpans(satellite, list);
    }
}

FeedSummary AddEpochs(const Session& session, Engine& engine, const Progress& progress) {
    FeedSummary fed;
    const io::Observations &rover = session.inputs.rover, &base = session.inputs.base;
    const SignalReader roverReader(rover, session.signals, true);
    const SignalReader baseReader(base, session.signals, false);
    for (const EpochPair& pair : session.pairs) {
        const io::ObservationEpoch& roverEpoch = rover.epochs[pair.rover];
        const io::ObservationEpoch& baseEpoch = base.epochs[pair.base];
        const auto ofRover = roverReader.Read(roverEpoch, fed.roverLosses);
        const auto ofBase = baseReader.Read(baseEpoch, fed.baseLosses);
        const auto common = CommonSatellites(ofRover, ofBase);
        engine.AddEpoch(FillSlots(roverEpoch.time, ofRover, common, fed.noSlot),
                        FillSlots(baseEpoch.time, ofBase, common, fed.noSlot));
        std::array<bool, kEngineSystemCount> seen{};
        for (const EngineSatellite& satellite : common) {
            fed.common[satellite].push_back(static_cast<std::uint32_t>(fed.epochs));
            seen[IndexOf(satellite.system)] = true;
        }
        for (std::size_t i = 0; i < kEngineSystemCount; ++i) {
            fed.systems[i].epochs += seen[i] ? 1 : 0;
        }
        fed.times.push_back(EngineTime(roverEpoch.time, baseEpoch.time));
        ++fed.epochs;
        if (progress) {
            progress("handing epochs over", fed.epochs, session.pairs.size());
        }
    }
    for (const auto& [satellite, epochs] : fed.common) {
        ++fed.systems[IndexOf(satellite.system)].satellites;
    }
    return fed;
}

// From antenna to antenna on the verticals, to marker to marker.
void ReduceToMarkers(const Session& session, Solution& solution) {
    const Vector3 shift = Minus(session.base.eccentricity, session.rover.eccentricity);
    if (solution.mode == 0 || Length(shift) == 0.0) {
        return;
    }
    solution.vector = Plus(solution.vector, shift);
    solution.length = Length(solution.vector);
    solution.horizontalDistance = solution.horizontalDistance == 0.0 ? 0.0 : solution.length;
}

bool RatioPassed(const EngineResults& results, int mode, double threshold) {
    return std::any_of(results.fixeds.begin(), results.fixeds.end(),
                       [&](const Solution& s) { return s.mode == mode && s.ratio > threshold; });
}

}  // namespace

const char* PositionSourceName(PositionSource source) {
    switch (source) {
        case PositionSource::kOption:
            return "given";
        case PositionSource::kHeader:
            return "header";
        case PositionSource::kCode:
            return "code";
    }
    return "header";
}

const char* AcceptanceName(Acceptance acceptance) {
    switch (acceptance) {
        case Acceptance::kFixed:
            return "fixed";
        case Acceptance::kFloat:
            return "float";
        case Acceptance::kTripleDifference:
            return "triple difference";
        case Acceptance::kNone:
            return "none";
    }
    return "none";
}

io::GpsTime Session::FirstTime() const {
    return EngineTime(inputs.rover.epochs[pairs.front().rover].time,
                      inputs.base.epochs[pairs.front().base].time);
}

io::GpsTime Session::LastTime() const {
    return EngineTime(inputs.rover.epochs[pairs.back().rover].time,
                      inputs.base.epochs[pairs.back().base].time);
}

io::ObservationSelection SelectionFor(const Settings& settings) {
    io::ObservationSelection selection;
    selection.start = settings.start;
    selection.end = settings.end;
    selection.interval = settings.interval;
    selection.types = "CL";
    return selection;
}

Session PrepareSession(Inputs inputs, ConfiguredSettings settings) {
    return Preparation(std::move(inputs), std::move(settings)).Done();
}

FeedSummary Feed(const Session& session, Engine& engine, const FeedOptions& options) {
    if (options.tracePath.empty()) {
        engine.Create();
    } else {
        engine.CreateWithTrace(options.tracePath, options.traceLevel);
    }
    engine.Configure(session.config);
    engine.SetStations(ToEngine(session.rover, session.antennasApplied),
                       ToEngine(session.base, session.antennasApplied));
    if (session.ionosphere) {
        engine.SetIonosphere(session.ionosphere->alpha, session.ionosphere->beta);
    }
    for (const TimedKepler& timed : session.ephemerides.kepler) {
        engine.AddKepler(timed.record);
    }
    for (const TimedGlonass& timed : session.ephemerides.glonass) {
        engine.AddGlonass(timed.record);
    }
    if (session.precise) {
        AddOrbits(session.orbits, engine);
    }
    FeedSummary fed = AddEpochs(session, engine, options.progress);
    AddExclusions(session, engine);
    return fed;
}

Acceptance Judge(const EngineResults& results, double ratioThreshold) {
    const StatusEntry& end = DescribeStatus(results.status);
    const bool fixed = end.kind == StatusKind::kFixedDone && !results.fixeds.empty() &&
                       results.fixeds.back().mode == end.solveModel &&
                       results.fixeds.back().ratio > ratioThreshold;
    if (fixed) {
        return Acceptance::kFixed;
    }
    if (!results.floats.empty()) {
        return Acceptance::kFloat;
    }
    return results.tripleDifference.mode != 0 ? Acceptance::kTripleDifference : Acceptance::kNone;
}

std::vector<std::string> Doubts(const EngineResults& results, Acceptance acceptance) {
    if (acceptance != Acceptance::kFixed) {
        return {};
    }
    // Beside the reference satellites. With fewer the integers have next to no redundancy, and the
    // ratio says little.
    constexpr std::size_t kFew = 4;
    std::set<std::pair<int, int>> satellites;
    for (const ResidualSeries& series : results.fixeds.back().residuals) {
        if (!series.points.empty()) {
            satellites.emplace(series.system, series.prn);
        }
    }
    if (satellites.size() >= kFew) {
        return {};
    }
    return {"the fixed solution rests on " + Plural(satellites.size(), "satellite") +
            " beside the reference; with so few a wrong fix can pass the ratio test"};
}

const Solution* RunOutcome::Best() const {
    switch (acceptance) {
        case Acceptance::kFixed:
            return &results.fixeds.back();
        case Acceptance::kFloat:
            return &results.floats.back();
        case Acceptance::kTripleDifference:
            return &results.tripleDifference;
        case Acceptance::kNone:
            return nullptr;
    }
    return nullptr;
}

RunOutcome Run(const Session& session, Engine& engine) {
    RunOutcome outcome;
    const auto begin = std::chrono::steady_clock::now();
    const int status = engine.Run(outcome.completed);
    outcome.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    constexpr int kStarted = 10;
    if (!outcome.completed && status == kStarted) {
        outcome.results.status = status;  // there is no solver to ask
        outcome.chain = {status};
        return outcome;
    }
    outcome.results = engine.Results(status);
    EngineResults& results = outcome.results;
    ReduceToMarkers(session, results.tripleDifference);
    for (Solution& solution : results.floats) {
        ReduceToMarkers(session, solution);
    }
    for (Solution& solution : results.fixeds) {
        ReduceToMarkers(session, solution);
    }
    const double threshold = session.config.ratioThreshold;
    constexpr int kWideLane = 5;
    outcome.chain =
        StatusChain(status, results.solveModel, RatioPassed(results, kWideLane, threshold),
                    RatioPassed(results, results.solveModel, threshold));
    outcome.acceptance = Judge(results, threshold);
    outcome.warnings = Doubts(results, outcome.acceptance);
    return outcome;
}

}  // namespace vornel::session
