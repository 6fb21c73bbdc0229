#include "report/text_report.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "session/status.h"
#include "session/text.h"

namespace vornel::report {
namespace {

using session::Acceptance;
using session::EngineSystem;
using session::Solution;
using session::SolveResult;
using session::Vector3;

using session::FileName;
using session::Format;
using session::Joined;
using session::Plural;

double Deviation(double variance) {
    return variance > 0.0 ? std::sqrt(variance) : 0.0;
}

// A text wrapped at 80 columns; lines after the first begin with `indent`.
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
    text += Format("  Covariance (mm^2)  XX %.3f  YY %.3f  ZZ %.3f  XY %.3f  XZ %.3f  YZ %.3f\n",
                   c[0] * 1e6, c[4] * 1e6, c[8] * 1e6, c[1] * 1e6, c[2] * 1e6, c[5] * 1e6);
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

std::string AllSolutions(const session::EngineResults& results) {
    if (results.tripleDifference.mode == 0) {
        return {};
    }
    std::string text = Format("Solutions %30s %13s %13s\n", "dX", "dY", "dZ");
    text += SolutionLine("triple difference", results.tripleDifference);
    for (std::size_t i = 0; i < std::max(results.floats.size(), results.fixeds.size()); ++i) {
        if (i < results.floats.size()) {
            const Solution& s = results.floats[i];
            text +=
                SolutionLine((std::string("float, ") + session::SolveModelName(s.mode)).c_str(), s);
        }
        if (i < results.fixeds.size()) {
            const Solution& s = results.fixeds[i];
            text +=
                SolutionLine((std::string("fixed, ") + session::SolveModelName(s.mode)).c_str(), s);
        }
    }
    return text;
}

std::string SystemTable(const SolveResult& result) {
    const Solution* best = result.outcome.Best();
    std::string text = "  System    epochs  satellites  with residuals  base codes  rover codes\n";
    for (const EngineSystem system : session::kEngineSystems) {
        const auto& fed = result.fed.systems[session::IndexOf(system)];
        if (!result.session.settings.values.systems[session::IndexOf(system)]) {
            text += Format("  %-9s switched off\n", session::NameOf(system));
            continue;
        }
        if (fed.satellites == 0) {
            text += Format("  %-9s not observed by both\n", session::NameOf(system));
            continue;
        }
        const std::size_t used = best == nullptr ? 0 : SatellitesWithResiduals(*best, system);
        text += Format("  %-9s %6zu  %10zu  %14zu  %-10s  %s\n", session::NameOf(system),
                       fed.epochs, fed.satellites, used,
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
    const session::EngineConfig engine;
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

std::string FixedReason(const SolveResult& result) {
    const Solution& fixed = result.outcome.results.fixeds.back();
    const std::string fact =
        Format("%zu integer ambiguities, ratio %.1f against a threshold of %.1f: ",
               fixed.ambiguities.size(), fixed.ratio, result.session.config.ratioThreshold);
    return fact + (result.outcome.warnings.empty()
                       ? "the vector can be trusted (its standard deviations are formal ones)."
                       : "but check it, " + result.outcome.warnings.front() + ".");
}

std::string FloatReason(const SolveResult& result) {
    const session::EngineResults& r = result.outcome.results;
    const session::EngineConfig& config = result.session.config;
    const session::StatusEntry& end = session::DescribeStatus(r.status);
    std::string fact = std::string("No integers: ") + end.text + ". ";
    if (!r.fixeds.empty() && r.fixeds.back().ratio <= config.ratioThreshold) {
        fact = Format("The integers are not certain: ratio %.2f against a threshold of %.1f. ",
                      r.fixeds.back().ratio, config.ratioThreshold);
    } else if (end.kind == session::StatusKind::kFloatDone) {
        fact = Format("Too long to fix on one frequency (limit %.0f m). ", config.maxFixBaseline);
    }
    return fact +
           "Expect decimetres rather than millimetres. A longer session, precise orbits, or "
           "leaving "
           "out bad satellites (--exclude) may help.";
}

std::string AdviceWithoutSolution(session::StatusKind kind) {
    if (kind == session::StatusKind::kNoReference) {
        return "No satellite was seen by both receivers long enough above the elevation mask on "
               "the frequencies of the model; try a lower --elevation-mask or --min-epochs, or a "
               "longer session.";
    }
    if (kind == session::StatusKind::kTripleDifferenceFailed) {
        return "Too few satellites or epochs in common; a longer session or more systems may "
               "help.";
    }
    return "See `vornel info` for what the files hold.";
}

// Systems that were wanted and observed, and are not in the solution.
std::vector<std::string> SystemsWithoutPart(const SolveResult& result) {
    const Solution* best = result.outcome.Best();
    std::vector<std::string> notes;
    for (const EngineSystem system : session::kEngineSystems) {
        const std::size_t observed = result.fed.systems[session::IndexOf(system)].satellites;
        if (best != nullptr && observed > 0 && SatellitesWithResiduals(*best, system) == 0) {
            notes.push_back(std::string(session::NameOf(system)) + ": " +
                            Plural(observed, "satellite") +
                            " observed by both, but no two of them long enough above the elevation "
                            "mask with the signals of the model");
        }
    }
    return notes;
}

}  // namespace

Vector3 NeuDeviations(const Solution& solution, const session::Geodetic& place) {
    Vector3 deviations{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        Vector3 unit{};
        unit[axis] = 1.0;
        const Vector3 row = session::FromNeu(place, unit);
        double variance = 0.0;
        for (std::size_t i = 0; i < 3; ++i) {
            for (std::size_t j = 0; j < 3; ++j) {
                variance += row[i] * solution.covarianceXyz[3 * i + j] * row[j];
            }
        }
        deviations[axis] = Deviation(variance);
    }
    return deviations;
}

std::string OrbitText(const session::Session& session) {
    if (session.precise) {
        std::string text = Format("precise, %zu satellites, %zu epochs (",
                                  session.orbits.satellites.size(), session.orbits.times.size());
        for (const io::PreciseOrbits& file : session.inputs.orbits) {
            text += (&file == &session.inputs.orbits.front() ? "" : ", ") + FileName(file.file);
        }
        return text + ")";
    }
    std::string text = "broadcast:";
    for (const EngineSystem system : session::kEngineSystems) {
        const std::size_t count = session.ephemerides.taken[session::IndexOf(system)];
        if (count > 0) {
            text += Format(" %zu %s", count, session::NameOf(system));
        }
    }
    return text + " records";
}

std::string DroppedText(const session::Session& session) {
    std::string text;
    for (const auto& [reason, count] : session.ephemerides.dropped) {
        text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + reason;
    }
    return text;
}

std::string IonosphereText(const session::Session& session) {
    if (session.ionosphere) {
        return "GPS coefficients of " + FileName(session.ionosphere->file);
    }
    return session.settings.values.noIonosphere
               ? "no coefficients, as asked for; the engine's diurnal model"
               : "no GPS coefficients in the files; the engine's diurnal model";
}

std::vector<std::string> LeftOut(const SolveResult& result) {
    const session::Session& s = result.session;
    std::vector<std::string> lines;
    const auto line = [&lines](const std::string& what) { lines.push_back(what); };
    const auto engineName = [](const session::EngineSatellite& sat) {
        return session::ToString(sat);
    };
    if (!s.leftOut.unnumbered.empty()) {
        line("no place in the engine's numbering: " +
             Joined(s.leftOut.unnumbered, [](const std::string& name) { return name; }));
    }
    for (const auto& [satellite, reason] : s.leftOut.unknownChannel) {
        line(session::ToString(satellite) + ": " + reason);
    }
    if (!result.fed.noSlot.empty()) {
        line("more than 64 satellites at an epoch, left out there: " +
             Joined(result.fed.noSlot, engineName));
    }
    if (!s.settings.values.exclusions.empty()) {
        line("excluded: " + Joined(s.settings.values.exclusions,
                                   [](const session::Exclusion& e) { return e.text; }));
    }
    const auto losses = [&line](const char* role, const session::ValueLosses& lost) {
        if (lost.outOfBounds > 0) {
            line(std::string(role) + ": " + Plural(lost.outOfBounds, "value") +
                 " that cannot be measured ranges or phases");
        }
        if (lost.noFirstCode > 0) {
            line(std::string(role) + ": " + std::to_string(lost.noFirstCode) +
                 " satellite-epochs without code on the first signal");
        }
    };
    losses("base", result.fed.baseLosses);
    losses("rover", result.fed.roverLosses);
    return lines;
}

std::string ModelText(const SolveResult& result) {
    const session::EngineResults& r = result.outcome.results;
    if (r.solveModel == 0) {
        return {};
    }
    const int asked = result.session.config.slvmode;
    std::string reason = "as asked for";
    if (asked == 0) {
        reason = r.solveModel == 1 ? "automatic: a short baseline, or one frequency"
                                   : "automatic: a long baseline, two frequencies";
    } else if (asked != r.solveModel) {
        reason = Format("model %d was asked for: a receiver has one frequency", asked);
    }
    return Format("Model %d, %s (", r.solveModel, session::SolveModelName(r.solveModel)) + reason +
           ")";
}

std::string ChainText(const session::RunOutcome& outcome) {
    std::string text;
    for (const int status : outcome.chain) {
        text += (text.empty() ? "" : " > ") + std::to_string(status);
    }
    return text;
}

std::string TrackingCodes(const session::SignalChoice& signals, EngineSystem system, bool rover) {
    std::string text;
    for (const session::SignalPair& pair : signals[session::IndexOf(system)]) {
        const auto& signal = rover ? pair.rover : pair.base;
        text += text.empty() ? "" : " ";
        text += pair.Usable() ? signal->Tracking() : "-";
    }
    return text;
}

std::size_t SatellitesWithResiduals(const Solution& solution, EngineSystem system) {
    std::set<int> satellites;
    for (const session::ResidualSeries& series : solution.residuals) {
        if (series.system == static_cast<int>(system) && !series.points.empty()) {
            satellites.insert(series.prn);
        }
    }
    return satellites.size();
}

std::string Verdict(const session::RunOutcome& outcome) {
    switch (outcome.acceptance) {
        case Acceptance::kFixed:
            return "FIXED";
        case Acceptance::kFloat:
            return "FLOAT";
        case Acceptance::kTripleDifference:
            return "TRIPLE DIFFERENCE ONLY";
        case Acceptance::kNone:
            return "NO SOLUTION";
    }
    return "NO SOLUTION";
}

std::string VerdictReason(const SolveResult& result) {
    const session::StatusEntry& end = session::DescribeStatus(result.outcome.results.status);
    switch (result.outcome.acceptance) {
        case Acceptance::kFixed:
            return FixedReason(result);
        case Acceptance::kFloat:
            return FloatReason(result);
        case Acceptance::kTripleDifference:
            return std::string(end.text) +
                   ". The triple difference is good to decimetres at best. A longer session or "
                   "other signals may help.";
        case Acceptance::kNone:
            break;
    }
    return std::string(end.text) + ". " + AdviceWithoutSolution(end.kind);
}

std::vector<std::string> NotesOfRun(const SolveResult& result) {
    std::vector<std::string> notes = result.session.notes;
    const std::vector<std::string> more = SystemsWithoutPart(result);
    notes.insert(notes.end(), more.begin(), more.end());
    return notes;
}

std::vector<std::string> AllNotes(const SolveResult& result) {
    constexpr std::size_t kShown = 5;
    std::vector<std::string> notes = NotesOfRun(result);
    const auto ofReaders = session::NotesOfReaders(result.session.inputs);
    for (std::size_t i = 0; i < std::min(kShown, ofReaders.size()); ++i) {
        const session::FileNote& note = ofReaders[i];
        const std::string line = note.line > 0 ? Format(":%zu", note.line) : std::string();
        notes.push_back(FileName(note.file) + line + ": " + note.text);
    }
    if (ofReaders.size() > kShown) {
        notes.push_back(
            Format("and %zu more notes on the files, see --json", ofReaders.size() - kShown));
    }
    return notes;
}

std::vector<std::string> AllWarnings(const SolveResult& result) {
    std::vector<std::string> warnings = result.session.warnings;
    warnings.insert(warnings.end(), result.outcome.warnings.begin(), result.outcome.warnings.end());
    return warnings;
}

std::string TextReport(const SolveResult& result) {
    const session::Session& s = result.session;
    std::string text =
        s.base.name + " (base) to " + s.rover.name + " (rover): " + Verdict(result.outcome) + "\n";
    text += Wrapped("  ", VerdictReason(result), "  ");
    const std::string model = ModelText(result);
    text += model.empty() ? model : Wrapped("", model, "  ");
    const int status = result.outcome.results.status;
    text += Wrapped(
        "",
        Format("Status %d: ", status) + session::DescribeStatus(status).text +
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
    list("Notes", AllNotes(result));
    list("Warnings", AllWarnings(result));
    return text;
}

}  // namespace vornel::report
