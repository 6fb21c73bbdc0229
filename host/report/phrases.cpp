#include "report/phrases.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "engine/status.h"
#include "session/text.h"

namespace vornel::report {
namespace {

using engine::Solution;
using engine::System;
using session::Vector3;
using solve::Acceptance;
using solve::SolveResult;

using session::FileName;
using session::Format;
using session::Joined;
using session::Plural;

std::string FixedReason(const SolveResult& result) {
    const Solution& fixed = result.outcome.results.fixeds.back();
    const std::string fact =
        Format("%zu integer ambiguities, ratio %.1f against a threshold of %.1f: ",
               fixed.ambiguities.size(), fixed.ratio, result.session.config.ratioThreshold);
    if (result.grade == solve::Grade::kTrusted) {
        std::size_t agreeing = 0;
        for (const solve::RunRecord& check : result.checks) {
            agreeing += check.relation == solve::Relation::kAgrees ? 1 : 0;
        }
        return fact + "confirmed by " + Plural(agreeing, "check run") +
               " (the standard deviations are formal ones).";
    }
    const solve::Doubt doubt =
        result.doubts.empty() ? solve::Doubt{"no check was made", ""} : result.doubts.front();
    return fact + "but " + doubt.text + (doubt.advice.empty() ? "." : "; " + doubt.advice + ".");
}

std::string FloatReason(const SolveResult& result) {
    const engine::Results& r = result.outcome.results;
    const engine::Config& config = result.session.config;
    const engine::StatusEntry& end = engine::DescribeStatus(r.status);
    std::string fact = std::string("No integers: ") + end.text + ". ";
    if (!r.fixeds.empty() && r.fixeds.back().ratio <= config.ratioThreshold) {
        fact = Format("The integers are not certain: ratio %.2f against a threshold of %.1f. ",
                      r.fixeds.back().ratio, config.ratioThreshold);
    } else if (end.kind == engine::StatusKind::kFloatDone) {
        fact = Format("Too long to fix on one frequency (limit %.0f m). ", config.maxFixBaseline);
    }
    return fact +
           "Expect decimetres rather than millimetres. A longer session, precise orbits, or "
           "leaving "
           "out bad satellites (--exclude) may help.";
}

std::string AdviceWithoutSolution(engine::StatusKind kind) {
    if (kind == engine::StatusKind::kNoReference) {
        return "No satellite was seen by both receivers long enough above the elevation mask on "
               "the frequencies of the model; try a lower --elevation-mask or --min-epochs, or a "
               "longer session.";
    }
    if (kind == engine::StatusKind::kTripleDifferenceFailed) {
        return "Too few satellites or epochs in common; a longer session or more systems may "
               "help.";
    }
    return "See `vornel info` for what the files hold.";
}

// Systems that were wanted and observed, and are not in the solution.
std::vector<std::string> SystemsWithoutPart(const SolveResult& result) {
    const Solution* best = result.outcome.Best();
    std::vector<std::string> notes;
    for (const engine::System system : engine::kSystems) {
        const std::size_t observed = result.fed.systems[engine::IndexOf(system)].satellites;
        const bool leftOut = result.spec.without[engine::IndexOf(system)];
        if (best != nullptr && observed > 0 && !leftOut &&
            SatellitesWithResiduals(*best, system) == 0) {
            notes.push_back(std::string(engine::NameOf(system)) + ": " +
                            Plural(observed, "satellite") +
                            " observed by both, but no two of them long enough above the elevation "
                            "mask with the signals of the model");
        }
    }
    return notes;
}

}  // namespace

double Deviation(double variance) {
    return variance > 0.0 ? std::sqrt(variance) : 0.0;
}

// A text wrapped at 80 columns; lines after the first begin with `indent`.
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
    for (const engine::System system : engine::kSystems) {
        const std::size_t count = session.ephemerides.taken[engine::IndexOf(system)];
        if (count > 0) {
            text += Format(" %zu %s", count, engine::NameOf(system));
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
    const auto engineName = [](const engine::Satellite& sat) { return engine::ToString(sat); };
    if (!s.leftOut.unnumbered.empty()) {
        line("no place in the engine's numbering: " +
             Joined(s.leftOut.unnumbered, [](const std::string& name) { return name; }));
    }
    for (const auto& [satellite, reason] : s.leftOut.unknownChannel) {
        line(engine::ToString(satellite) + ": " + reason);
    }
    if (!result.fed.noSlot.empty()) {
        line("more than " + std::to_string(VORNEL_EPOCH_SLOTS) +
             " satellites at an epoch, left out there: " + Joined(result.fed.noSlot, engineName));
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
    const engine::Results& r = result.outcome.results;
    if (r.solveModel == 0) {
        return {};
    }
    const int asked = result.session.config.slvmode;
    std::string reason = "as asked for";
    if (asked == 0) {
        reason = "automatic: " + result.spec.why;
    } else if (asked != r.solveModel) {
        reason = Format("model %d was asked for: a receiver has one frequency", asked);
    }
    return Format("Model %d, %s (", r.solveModel, engine::SolveModelName(r.solveModel)) + reason +
           ")";
}

std::string ChainText(const solve::RunOutcome& outcome) {
    std::string text;
    for (const int status : outcome.chain) {
        text += (text.empty() ? "" : " > ") + std::to_string(status);
    }
    return text;
}

std::string TrackingCodes(const session::SignalChoice& signals, engine::System system, bool rover) {
    std::string text;
    for (const session::SignalPair& pair : signals[engine::IndexOf(system)]) {
        const auto& signal = rover ? pair.rover : pair.base;
        text += text.empty() ? "" : " ";
        text += pair.Usable() ? signal->Tracking() : "-";
    }
    return text;
}

std::size_t SatellitesWithResiduals(const Solution& solution, engine::System system) {
    std::set<int> satellites;
    for (const engine::ResidualSeries& series : solution.residuals) {
        if (series.system == static_cast<int>(system) && !series.points.empty()) {
            satellites.insert(series.prn);
        }
    }
    return satellites.size();
}

std::string Verdict(const SolveResult& result) {
    switch (result.grade) {
        case solve::Grade::kTrusted:
            return "TRUSTED";
        case solve::Grade::kDoubtful:
            return "DOUBTFUL";
        case solve::Grade::kFloat:
            return "FLOAT";
        case solve::Grade::kApproximate:
            return "APPROXIMATE";
        case solve::Grade::kNone:
            return "NO SOLUTION";
    }
    return "NO SOLUTION";
}

std::vector<std::string> RunLines(const SolveResult& result) {
    std::vector<std::string> lines;
    for (const solve::RunRecord& run : result.tried) {
        lines.push_back(run.spec.name + ": " + solve::AcceptanceName(run.acceptance) +
                        (run.ratio > 0.0 ? Format(", ratio %.1f", run.ratio) : std::string()) +
                        (run.spec.name == result.spec.name ? ", the answer" : ""));
    }
    for (const solve::RunRecord& run : result.checks) {
        std::string line = "check, " + run.spec.name + ": " + solve::NameOf(*run.relation);
        if (run.relation != solve::Relation::kNoIntegers) {
            line += Format(", %.4f m off horizontally, %.4f m in height", run.horizontal, run.up);
        }
        lines.push_back(line);
    }
    return lines;
}

std::vector<std::string> DoubtLines(const SolveResult& result) {
    std::vector<std::string> lines;
    for (const solve::Doubt& doubt : result.doubts) {
        lines.push_back(doubt.text + (doubt.advice.empty() ? "" : "; " + doubt.advice));
    }
    return lines;
}

std::string VerdictReason(const SolveResult& result) {
    const engine::StatusEntry& end = engine::DescribeStatus(result.outcome.results.status);
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

}  // namespace vornel::report
