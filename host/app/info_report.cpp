#include "app/info_report.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include "io/antennas.h"
#include "io/file_bytes.h"
#include "io/file_kind.h"
#include "io/navigation.h"
#include "io/observation_reader.h"
#include "io/precise_orbits.h"
#include "io/station_coordinates.h"
#include "session/text.h"

namespace vornel::app {
namespace {

using session::Format;

std::string OrNone(const std::string& text) {
    return text.empty() ? "not given" : text;
}

std::string Span(const io::GpsTime& first, const io::GpsTime& last) {
    return io::FormatTime(first, 0) + " to " + io::FormatTime(last, 0) + " GPS time";
}

// The most frequent step of the epochs in seconds, to 0.1 s; 0 with fewer than two epochs.
double IntervalOf(const io::Observations& observations) {
    std::map<long long, std::size_t> counts;
    for (std::size_t i = 1; i < observations.epochs.size(); ++i) {
        const double step =
            io::SecondsBetween(observations.epochs[i - 1].time, observations.epochs[i].time);
        ++counts[std::llround(step * 10.0)];
    }
    const auto most =
        std::max_element(counts.begin(), counts.end(),
                         [](const auto& a, const auto& b) { return a.second < b.second; });
    return most == counts.end() ? 0.0 : static_cast<double>(most->first) / 10.0;
}

std::string Gaps(const io::Observations& observations, double interval) {
    constexpr std::size_t kShown = 10;
    constexpr double kGap = 1.5;  // intervals
    std::string text;
    std::size_t count = 0;
    for (std::size_t i = 1; interval > 0.0 && i < observations.epochs.size(); ++i) {
        const io::GpsTime &before = observations.epochs[i - 1].time,
                          &after = observations.epochs[i].time;
        const double step = io::SecondsBetween(before, after);
        if (step > kGap * interval && ++count <= kShown) {
            text += Format("    %s to %s (%.0f s)\n", io::FormatTime(before, 0).c_str(),
                           io::FormatTime(after, 0).c_str(), step);
        }
    }
    if (count > kShown) {
        text += Format("    and %zu more\n", count - kShown);
    }
    return count == 0 ? "  Gaps        none\n" : Format("  Gaps        %zu\n", count) + text;
}

struct SystemContent {
    std::set<io::SatelliteId> satellites;
    std::map<std::string, std::size_t> signals;  // satellite-epochs by the file's name
};

std::map<io::GnssSystem, SystemContent> ContentsOf(const io::Observations& observations) {
    std::map<io::GnssSystem, SystemContent> contents;
    for (const io::SatelliteRow& row : observations.satellites) {
        SystemContent& content = contents[row.satellite.system];
        content.satellites.insert(row.satellite);
        const auto& signals = observations.SignalsOf(row);
        for (std::size_t i = 0; i < signals.size(); ++i) {
            if (!std::isnan(observations.Value(row, i))) {
                ++content.signals[signals[i].fileName];
            }
        }
    }
    return contents;
}

std::string StationInfo(const io::StationHeader& s) {
    std::string text = "  Station     " + OrNone(s.markerName) +
                       (s.markerNumber.empty() ? "" : " (" + s.markerNumber + ")") + "\n";
    text += "  Receiver    " + OrNone(s.receiverType) +
            (s.receiverVersion.empty() ? "" : ", firmware " + s.receiverVersion) +
            (s.receiverSerial.empty() ? "" : ", serial " + s.receiverSerial) + "\n";
    text += "  Antenna     " + OrNone(s.antennaType) + " " +
            (s.antennaRadome.empty() ? "NONE" : s.antennaRadome) +
            (s.antennaSerial.empty() ? "" : ", serial " + s.antennaSerial) + "\n";
    text += Format("  Height      %.4f m above the marker (east %.4f, north %.4f)\n",
                   s.antennaHeight, s.antennaEast, s.antennaNorth);
    if (s.approximatePosition) {
        const auto& p = *s.approximatePosition;
        text += Format("  Position    %.4f %.4f %.4f m\n", p[0], p[1], p[2]);
    } else {
        text += "  Position    not given\n";
    }
    return text;
}

std::string ObservationInfo(const io::Observations& o) {
    std::string text = StationInfo(o.station());
    const double interval = IntervalOf(o);
    if (o.epochs.empty()) {
        return text + "  Epochs      none\n";
    }
    text += Format("  Epochs      %zu, every %g s\n  Times       %s\n", o.epochs.size(), interval,
                   Span(o.epochs.front().time, o.epochs.back().time).c_str());
    for (const auto& [system, content] : ContentsOf(o)) {
        text +=
            Format("  %-10s  %zu satellites:", io::SystemName(system), content.satellites.size());
        for (const io::SatelliteId& satellite : content.satellites) {
            text += ' ';
            text += io::ToString(satellite);
        }
        text += "\n             ";
        for (const auto& [name, count] : content.signals) {
            text += Format(" %s %zu", name.c_str(), count);
        }
        text += "\n";
    }
    return text + Gaps(o, interval);
}

struct Coverage {
    std::set<io::SatelliteId> satellites;
    std::size_t records = 0;
    std::size_t unhealthy = 0;
    io::GpsTime first;
    io::GpsTime last;

    void Take(io::SatelliteId satellite, const io::GpsTime& time, int health) {
        first = records == 0 ? time : std::min(first, time);
        last = records == 0 ? time : std::max(last, time);
        satellites.insert(satellite);
        ++records;
        unhealthy += health != 0 ? 1 : 0;
    }
};

std::string NavigationInfo(const io::Navigation& n) {
    std::map<std::string, Coverage> coverage;
    for (const io::KeplerRecord& record : n.kepler) {
        const bool bds = record.satellite.system == io::GnssSystem::kBeiDou;
        coverage[std::string(io::SystemName(record.satellite.system)) + " " +
                 io::MessageName(record.message)]
            .Take(record.satellite,
                  io::ToGpsTime({record.toeWeek, record.toeSeconds},
                                bds ? io::TimeSystem::kBeiDou : io::TimeSystem::kGps),
                  record.health);
    }
    for (const io::GlonassRecord& record : n.glonass) {
        coverage["GLONASS FDMA"].Take(
            {io::GnssSystem::kGlonass, record.slot},
            io::Shifted({record.referenceWeek, record.referenceSeconds}, record.leapSeconds),
            record.health);
    }
    std::string text;
    for (const auto& [name, c] : coverage) {
        text += Format("  %-14s%zu records of %zu satellites, %zu not healthy\n", name.c_str(),
                       c.records, c.satellites.size(), c.unhealthy);
        text += "                " + Span(c.first, c.last) + "\n";
    }
    for (const auto& [name, count] : n.leftAside) {
        text += Format("  %-14s%zu records, not used\n", name.c_str(), count);
    }
    if (n.droppedCount > 0) {
        text += Format("  Unreadable    %zu records", n.droppedCount);
        if (!n.dropped.empty()) {
            text += Format(", the first at line %zu: %s", n.dropped.front().line,
                           n.dropped.front().text.c_str());
        }
        text += "\n";
    }
    std::set<std::string> models;
    for (const io::IonosphereSet& set : n.ionosphere) {
        models.insert(io::SystemName(set.system));
    }
    text += "  Ionosphere    ";
    for (const std::string& name : models) {
        text += name + " ";
    }
    text += models.empty() ? "no coefficients\n" : "coefficients\n";
    if (n.leapSeconds) {
        text += Format("  Leap seconds  %d\n", *n.leapSeconds);
    }
    return text;
}

std::string OrbitInfo(const io::PreciseOrbits& o) {
    std::string text = Format("  Version       %c, %s, frame %s\n", o.version,
                              OrNone(o.agency).c_str(), OrNone(o.coordinateSystem).c_str());
    if (!o.epochs.empty()) {
        text += Format("  Epochs        %zu, every %g s\n  Times         %s\n", o.epochs.size(),
                       o.interval, Span(o.epochs.front(), o.epochs.back()).c_str());
    }
    std::map<io::GnssSystem, std::size_t> counts;
    for (const io::OrbitSeries& series : o.satellites) {
        ++counts[series.satellite.system];
    }
    for (const auto& [system, count] : counts) {
        text += Format("  %-12s  %zu satellites\n", io::SystemName(system), count);
    }
    return text;
}

std::string AntennaInfo(const io::AntennaFile& a) {
    std::size_t satellites = 0;
    std::string receivers;
    std::size_t shown = 0;
    constexpr std::size_t kShown = 20;
    for (const io::AntennaCalibration& antenna : a.antennas) {
        if (antenna.satellite) {
            ++satellites;
        } else if (++shown <= kShown) {
            receivers += "    " + antenna.type + " " + antenna.radome +
                         (antenna.serial.empty() ? "" : ", serial " + antenna.serial);
            for (const char* frequency : {"G01", "G02"}) {
                if (const auto* offset = io::FindOffset(antenna, frequency)) {
                    receivers += Format(", %s up %.4f m", frequency, offset->up);
                }
            }
            receivers += "\n";
        }
    }
    std::string text = Format("  Version     %.1f, %s\n", a.version,
                              a.relative ? "relative phase centres" : "absolute phase centres");
    text += Format("  Antennas    %zu of receivers, %zu of satellites\n", shown, satellites);
    text += receivers;
    return shown > kShown ? text + Format("    and %zu more\n", shown - kShown) : text;
}

std::string CoordinatesInfo(const io::StationCoordinates& c) {
    std::set<std::pair<std::string, std::string>> points;
    io::GpsTime first = c.solutions.front().reference, last = first;
    for (const io::SiteSolution& solution : c.solutions) {
        points.insert({solution.site, solution.point});
        first = std::min(first, solution.reference);
        last = std::max(last, solution.reference);
    }
    std::string text =
        Format("  Agency      %s\n  Stations    %zu, in %zu solutions, %zu with velocity\n",
               OrNone(c.agency).c_str(), points.size(), c.solutions.size(),
               static_cast<std::size_t>(
                   std::count_if(c.solutions.begin(), c.solutions.end(),
                                 [](const auto& solution) { return solution.velocity; })));
    text += "  Epochs      " + Span(first, last) + "\n";
    constexpr std::size_t kShown = 20;
    std::size_t shown = 0;
    for (const auto& [site, point] : points) {
        text += shown++ < kShown ? "    " + site + " " + point + "\n" : "";
    }
    return shown > kShown ? text + Format("    and %zu more\n", shown - kShown) : text;
}

std::string Notes(const std::vector<io::InputNote>& notes) {
    constexpr std::size_t kShown = 10;
    std::string text;
    for (std::size_t i = 0; i < std::min(kShown, notes.size()); ++i) {
        text += notes[i].line > 0 ? Format("  Note (line %zu): ", notes[i].line) : "  Note: ";
        text += notes[i].text + "\n";
    }
    return notes.size() > kShown ? text + Format("  and %zu more notes\n", notes.size() - kShown)
                                 : text;
}

std::string MemberInfo(const io::FileMember& file) {
    io::LineCursor lines(file.bytes, file.name);
    const io::FileKind kind = io::RecogniseFile(lines.Head(), file.name);
    std::string text = file.name + ": " + io::KindName(kind);
    const auto version = [](double number) { return Format(" %.2f", number); };
    const std::string packing = file.packing == "plain" ? "\n" : " (" + file.packing + ")\n";
    switch (kind) {
        case io::FileKind::kObservation:
        case io::FileKind::kCompactObservation: {
            const io::Observations o = io::ReadObservations(lines);
            return text + version(o.version) + packing + ObservationInfo(o) + Notes(o.notes);
        }
        case io::FileKind::kNavigation: {
            const io::Navigation n = io::ReadNavigation(lines);
            return text + version(n.version) + packing + NavigationInfo(n) + Notes(n.notes);
        }
        case io::FileKind::kPreciseOrbit: {
            const io::PreciseOrbits o = io::ReadPreciseOrbits(lines);
            return text + packing + OrbitInfo(o) + Notes(o.notes);
        }
        case io::FileKind::kAntenna: {
            const io::AntennaFile a = io::ReadAntennas(lines);
            return text + packing + AntennaInfo(a) + Notes(a.notes);
        }
        case io::FileKind::kStationCoordinates: {
            const io::StationCoordinates c = io::ReadStationCoordinates(lines);
            return text + version(c.version) + packing + CoordinatesInfo(c) + Notes(c.notes);
        }
    }
    return text;
}

}  // namespace

std::string InfoReport(const std::string& path) {
    std::string text;
    io::UnpackingLimit limit;
    io::ReadMembers(path, limit, [&](io::FileMember& file) { text += MemberInfo(file); });
    return text;
}

}  // namespace vornel::app
