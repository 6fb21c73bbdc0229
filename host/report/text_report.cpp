#include "report/text_report.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "engine/status.h"
#include "report/phrases.h"
#include "session/text.h"

namespace vornel::report {
namespace {

using engine::Solution;
using engine::System;
using session::Vector3;
using solve::SolveResult;

using session::FileName;
using session::Format;

std::string Wrapped(const std::string& first, const std::string& text, const std::string& indent) {
    constexpr std::size_t kWidth = 80;
    std::string result, line = first;
    std::size_t at = 0;
    while (at < text.size()) {
        std::size_t end = text.find(' ', at);
        end = end == std::string::npos ? text.size() : end;
        const std::string word = text.substr(at, end - at);
        const bool fresh = line == first || line == indent;
        if (!fresh && line.size() + 1 + word.size() > kWidth) {
            result += line + "\n";
            line = indent + word;
        } else {
            line += (fresh ? "" : " ") + word;
        }
        at = end + 1;
    }
    return result + line + "\n";
}

std::string VectorBlock(const SolveResult& result, const Solution& s) {
    const session::Station& base = result.session.base;
    const session::Geodetic place = session::ToGeodetic(base.position);
    const Vector3 neu = session::ToNeu(place, s.vector);
    const Vector3 neuDeviations = NeuDeviations(s, place);
    const auto& c = s.covarianceXyz;
    const char* xyzNames[] = {"X", "Y", "Z"};
    const char* neuNames[] = {"North", "East", "Up"};
    std::string text = "Vector, base to rover, marker to marker (metres; NEU at the base)\n";
    for (std::size_t i = 0; i < 3; ++i) {
        text += Format("  %-7s%14.4f +- %.4f     %-6s%14.4f +- %.4f\n", xyzNames[i], s.vector[i],
                       Deviation(c[4 * i]), neuNames[i], neu[i], neuDeviations[i]);
    }
    text += Format("  %-7s%14.4f +- %.4f\n", "Length", session::Length(s.vector), s.sigmaLength);
    text += Wrapped("  Covariance (mm^2)  ",
                    Format("XX %.3f YY %.3f ZZ %.3f XY %.3f XZ %.3f YZ %.3f", c[0] * 1e6,
                           c[4] * 1e6, c[8] * 1e6, c[1] * 1e6, c[2] * 1e6, c[5] * 1e6),
                    "    ");
    text += Format("  Residuals  rms %.4f m, variance factor %.3f, %d degrees of freedom\n", s.rms,
                   s.varianceFactor, s.dof);
    const Vector3 rover = session::Plus(base.position, s.vector);
    text += Format("  Rover marker  X %.4f  Y %.4f  Z %.4f\n", rover[0], rover[1], rover[2]);
    return text;
}

std::string SolutionLine(const char* name, const Solution& s) {
    std::string text =
        Format("  %-23s %14.4f %13.4f %13.4f", name, s.vector[0], s.vector[1], s.vector[2]);
    return text + (s.ratio > 0.0 ? Format("  ratio %.1f", s.ratio) : "") + "\n";
}

std::string AllSolutions(const engine::Results& results) {
    if (results.tripleDifference.mode == 0) {
        return {};
    }
    std::string text = Format("Solutions %30s %13s %13s\n", "dX", "dY", "dZ");
    text += SolutionLine("triple difference", results.tripleDifference);
    for (std::size_t i = 0; i < std::max(results.floats.size(), results.fixeds.size()); ++i) {
        if (i < results.floats.size()) {
            const Solution& s = results.floats[i];
            text +=
                SolutionLine((std::string("float, ") + engine::SolveModelName(s.mode)).c_str(), s);
        }
        if (i < results.fixeds.size()) {
            const Solution& s = results.fixeds[i];
            text +=
                SolutionLine((std::string("fixed, ") + engine::SolveModelName(s.mode)).c_str(), s);
        }
    }
    return text;
}

std::string SystemTable(const SolveResult& result) {
    const Solution* best = result.outcome.Best();
    std::string text = "  System    epochs  satellites  with residuals  base codes  rover codes\n";
    for (const engine::System system : engine::kSystems) {
        const auto& fed = result.fed.systems[engine::IndexOf(system)];
        if (!result.session.settings.values.systems[engine::IndexOf(system)]) {
            text += Format("  %-9s switched off\n", engine::NameOf(system));
            continue;
        }
        if (fed.satellites == 0) {
            text += Format("  %-9s not observed by both\n", engine::NameOf(system));
            continue;
        }
        const std::size_t used = best == nullptr ? 0 : SatellitesWithResiduals(*best, system);
        text += Format("  %-9s %6zu  %10zu  %14zu  %-10s  %s\n", engine::NameOf(system), fed.epochs,
                       fed.satellites, used,
                       TrackingCodes(result.session.signals, system, false).c_str(),
                       TrackingCodes(result.session.signals, system, true).c_str());
    }
    return text;
}

// Stations take lines of one form: the role, then what is said of it, further lines under that.
constexpr const char* kUnderRole = "        ";

std::string AntennaLine(const SolveResult& result, const session::Station& station) {
    const session::AntennaChoice& a = station.antenna;
    std::string text = Format(
        "%s %s, height %.4f m (%s), ", a.type.empty() ? "unnamed antenna" : a.type.c_str(),
        a.radome.c_str(), station.antennaHeight, station.heightFromOption ? "option" : "header");
    if (result.session.antennasApplied) {
        text += Format("L1 %.4f L2 %.4f m up (%s%s)", a.offset1[2], a.offset2[2],
                       FileName(a.file).c_str(),
                       a.usedRadome == a.radome ? "" : (", radome " + a.usedRadome).c_str());
    } else {
        text += "no phase centre offset";
    }
    return Wrapped(kUnderRole, text, kUnderRole);
}

std::string PositionLine(const session::Station& station, const char* role) {
    std::string text = Format("%s: %.3f %.3f %.3f (%s", station.name.c_str(), station.position[0],
                              station.position[1], station.position[2],
                              session::PositionSourceName(station.positionSource));
    if (station.offFromCode) {
        const bool replaced = station.positionSource == session::PositionSource::kCode;
        text += Format(replaced ? "; the header is %.1f m off" : ", %.1f m from code",
                       *station.offFromCode);
    }
    return Wrapped(Format("  %-6s", role), text + ")", kUnderRole);
}

std::string EpochLine(const SolveResult& result) {
    const session::Session& s = result.session;
    const std::string first = io::FormatTime(s.FirstTime(), 0);
    std::string last = io::FormatTime(s.LastTime(), 0);
    constexpr std::size_t kDate = 11;  // "2020-06-25 "
    if (first.compare(0, kDate, last, 0, kDate) == 0) {
        last.erase(0, kDate);
    }
    return Format("  Epochs      %zu common, %s to %s GPS time, every %g s\n", result.fed.epochs,
                  first.c_str(), last.c_str(), s.interval);
}

std::string DataBlock(const SolveResult& result) {
    const session::Session& s = result.session;
    std::string text = "Data\n" + EpochLine(result);
    if (s.pairing.baseOnly + s.pairing.roverOnly > 0) {
        text += Format("              without partner: %zu of the base, %zu of the rover\n",
                       s.pairing.baseOnly, s.pairing.roverOnly);
    }
    text += SystemTable(result);
    constexpr const char* kUnderName = "              ";
    text += Wrapped("  Orbits      ", OrbitText(s), kUnderName);
    const std::string dropped = DroppedText(s);
    if (!dropped.empty()) {
        text += Wrapped(kUnderName, "records dropped: " + dropped, kUnderName);
    }
    text += Wrapped("  Ionosphere  ", IonosphereText(s), kUnderName);
    text += "Stations\n" + PositionLine(s.base, "base") + AntennaLine(result, s.base) +
            PositionLine(s.rover, "rover") + AntennaLine(result, s.rover);
    return text;
}

std::string LeftOutBlock(const SolveResult& result) {
    std::string text;
    for (const std::string& line : LeftOut(result)) {
        text += Wrapped("  ", line, "    ");
    }
    return text.empty() ? text : "Left out\n" + text;
}

// What the data settle unless they ask for something else; not worth a line.
session::Settings OrdinarySettings() {
    session::Settings ordinary;
    const engine::Config engine;
    ordinary.samplingInterval = engine.samplingInterval;
    ordinary.galFreq1 = engine.galFreq1;
    ordinary.galFreq2 = engine.galFreq2;
    ordinary.ephemerisSource = session::EphemerisChoice::kBroadcast;
    return ordinary;
}

// What differs from what was asked for, and why.
std::string ForcedBlock(const session::Session& session) {
    const session::Settings ordinary = OrdinarySettings();
    std::string text;
    for (const session::SettingSpec& spec : session::AllSettings()) {
        const auto origin = session.settings.origins.find(spec.name);
        const bool settled =
            origin != session.settings.origins.end() && origin->second.kind == "data";
        if (settled && spec.toml(session.settings.values) != spec.toml(ordinary)) {
            text += Wrapped("  ",
                            std::string(spec.name) + " = " + spec.toml(session.settings.values) +
                                ": " + origin->second.detail,
                            "    ");
        }
    }
    return text.empty() ? text : "Settled by the data\n" + text;
}

}  // namespace

std::string TextReport(const SolveResult& result) {
    const session::Session& s = result.session;
    std::string text =
        s.base.name + " (base) to " + s.rover.name + " (rover): " + Verdict(result) + "\n";
    text += Wrapped("  ", VerdictReason(result), "  ");
    const std::string model = ModelText(result);
    text += model.empty() ? model : Wrapped("", model, "  ");
    const int status = result.outcome.results.status;
    text += Wrapped(
        "",
        Format("Status %d: ", status) + engine::DescribeStatus(status).text +
            (result.outcome.completed ? "" : "; an error inside the engine ended the run there") +
            " (" + ChainText(result.outcome) + ")",
        "  ");
    if (const Solution* best = result.outcome.Best()) {
        text += "\n";
        text += VectorBlock(result, *best);
    }
    text += AllSolutions(result.outcome.results);
    text += "\n";
    text += DataBlock(result);
    text += LeftOutBlock(result);
    text += ForcedBlock(s);
    const auto list = [&text](const char* heading, const std::vector<std::string>& entries) {
        if (!entries.empty()) {
            text += std::string(heading) + "\n";
            for (const std::string& entry : entries) {
                text += Wrapped("  - ", entry, "    ");
            }
        }
    };
    list("Runs", RunLines(result));
    if (result.grade != solve::Grade::kTrusted) {
        list("Doubts", DoubtLines(result));
    }
    list("Notes", AllNotes(result));
    list("Warnings", AllWarnings(result));
    return text;
}

}  // namespace vornel::report
