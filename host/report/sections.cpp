#include "report/sections.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "report/drawings.h"
#include "report/exit_codes.h"
#include "report/html.h"
#include "report/text_report.h"
#include "session/status.h"
#include "session/text.h"

namespace vornel::report {
namespace {

using session::Acceptance;
using session::EngineSystem;
using session::Format;
using session::Plural;
using session::Solution;
using session::SolveResult;
using session::Vector3;

constexpr double kToMm = 1000.0;
constexpr const char* kNone = "\xE2\x80\x93";

std::string Section(const char* id, const char* heading, const std::string& content) {
    return std::string("<section id=\"") + id + "\" aria-labelledby=\"" + id + "-h\">\n<h2 id=\"" +
           id + "-h\">" + heading + "</h2>\n" + content + "</section>\n";
}

std::string Heading(std::string_view text) {
    return "<h3>" + Escaped(text) + "</h3>\n";
}

double Deviation(double variance) {
    return variance > 0.0 ? std::sqrt(variance) : 0.0;
}

// "0.0012", in metres to a tenth of a millimetre.
std::string Metres(double value) {
    return Decimal(value, 4);
}

std::string Millimetres(double metres) {
    return Decimal(metres * kToMm, 1);
}

std::string Percent(std::size_t part, std::size_t whole) {
    return whole == 0
               ? kNone
               : Decimal(100.0 * static_cast<double>(part) / static_cast<double>(whole), 0) + " %";
}

const Solution* FloatOf(const SolveResult& result, int mode) {
    for (const Solution& s : result.outcome.results.floats) {
        if (s.mode == mode) {
            return &s;
        }
    }
    return nullptr;
}

std::size_t ResidualCount(const Solution& solution) {
    std::size_t count = 0;
    for (const session::ResidualSeries& series : solution.residuals) {
        count += series.points.size();
    }
    return count;
}

// ---- summary ------------------------------------------------------------------------------------

struct Flag {
    const char* className;
    const char* word;
    const char* sign;  // its shape tells the same as the colour
};

Flag FlagOf(const SolveResult& result) {
    switch (result.outcome.acceptance) {
        case Acceptance::kFixed:
            return AllWarnings(result).empty() ? Flag{"pass", "Pass", "\xE2\x9C\x93"}
                                               : Flag{"flag", "Check", "!"};
        case Acceptance::kFloat:
        case Acceptance::kTripleDifference:
            return {"flag", "Check", "!"};
        case Acceptance::kNone:
            break;
    }
    return {"fail", "Fail", "\xE2\x9C\x95"};
}

std::string Figure(std::string_view name, std::string_view value, std::string_view more = {}) {
    return "<div><dt>" + Escaped(name) + "</dt><dd>" + Escaped(value) +
           (more.empty() ? "" : "<small>" + Escaped(more) + "</small>") + "</dd></div>\n";
}

std::string Duration(double seconds) {
    const auto minutes = static_cast<long>(std::lround(seconds / 60.0));
    return minutes < 60 ? Format("%ld min", minutes)
                        : Format("%ld h %02ld min", minutes / 60, minutes % 60);
}

std::string Figures(const SolveResult& result, const Solution& best) {
    const session::Geodetic place = session::ToGeodetic(result.session.base.position);
    const Vector3 neu = session::ToNeu(place, best.vector);
    const Vector3 deviations = NeuDeviations(best, place);
    std::string text = "<dl class=\"figures\">\n";
    text += Figure("Length", Metres(session::Length(best.vector)) + " m",
                   "\xC2\xB1 " + Millimetres(best.sigmaLength) + " mm");
    const char* names[] = {"North", "East", "Up"};
    for (std::size_t i = 0; i < 3; ++i) {
        text += Figure(names[i], Metres(neu[i]) + " m",
                       "\xC2\xB1 " + Millimetres(deviations[i]) + " mm");
    }
    if (result.outcome.acceptance == Acceptance::kFixed) {
        text += Figure("Ratio", Decimal(best.ratio, 1),
                       "threshold " + Decimal(result.session.config.ratioThreshold, 1));
        if (const Solution* floating = FloatOf(result, best.mode)) {
            text += Figure(
                "Tracks fixed", Percent(best.ambiguities.size(), floating->ambiguities.size()),
                Format("%zu of %zu", best.ambiguities.size(), floating->ambiguities.size()));
        }
    }
    text += Figure("Residuals RMS", Millimetres(best.rms) + " mm",
                   Plural(ResidualCount(best), "residual"));
    std::size_t satellites = 0;
    for (const EngineSystem system : session::kEngineSystems) {
        satellites += SatellitesWithResiduals(best, system);
    }
    text += Figure("Satellites", std::to_string(satellites), "beside the references");
    return text + "</dl>\n";
}

std::string SpanText(const SolveResult& result) {
    const session::Session& s = result.session;
    if (result.fed.times.empty()) {
        return "no common epochs";
    }
    const auto last = static_cast<std::uint32_t>(result.fed.times.size() - 1);
    constexpr std::size_t kDate = 10;
    const std::string first = io::FormatTime(s.FirstTime(), 0);
    const std::string end = ClockTime(result, last);
    return first.substr(0, kDate) + ", " + first.substr(kDate + 1) + " to " + end + " GPS time, " +
           Duration(io::SecondsBetween(s.FirstTime(), s.LastTime())) + ", " +
           Plural(result.fed.epochs, "common epoch") + " every " + Format("%g s", s.interval);
}

std::string Warnings(const SolveResult& result) {
    const auto warnings = AllWarnings(result);
    if (warnings.empty()) {
        return {};
    }
    return "<div class=\"warnings\" role=\"note\">" + Heading(Plural(warnings.size(), "warning")) +
           List(warnings) + "</div>\n";
}

// ---- vector -------------------------------------------------------------------------------------

std::string CovarianceTable(const char* caption, const std::array<const char*, 3>& axes,
                            const std::array<double, 9>& m) {
    Table table(caption, {"", std::string(axes[0]) + "#", std::string(axes[1]) + "#",
                          std::string(axes[2]) + "#"});
    constexpr double kToMm2 = 1e6;
    for (std::size_t i = 0; i < 3; ++i) {
        table.Row({axes[i], Decimal(m[3 * i] * kToMm2, 3), Decimal(m[3 * i + 1] * kToMm2, 3),
                   Decimal(m[3 * i + 2] * kToMm2, 3)});
    }
    return table.Html();
}

std::string VectorTable(const SolveResult& result, const Solution& best) {
    const session::Geodetic place = session::ToGeodetic(result.session.base.position);
    const Vector3 neu = session::ToNeu(place, best.vector);
    const Vector3 deviations = NeuDeviations(best, place);
    Table table("Vector, marker to marker", {"Component", "Value (m)#", "Std. dev. (mm)#"});
    const char* geocentric[] = {"\xCE\x94X", "\xCE\x94Y", "\xCE\x94Z"};
    for (std::size_t i = 0; i < 3; ++i) {
        table.Row({geocentric[i], Metres(best.vector[i]),
                   Millimetres(Deviation(best.covarianceXyz[4 * i]))});
    }
    const char* local[] = {"North", "East", "Up"};
    for (std::size_t i = 0; i < 3; ++i) {
        table.Row({local[i], Metres(neu[i]), Millimetres(deviations[i])});
    }
    table.Row({"Length", Metres(session::Length(best.vector)), Millimetres(best.sigmaLength)});
    return table.Html();
}

void AddSolution(Table& table, const SolveResult& result, const char* kind, const Solution& s,
                 const Solution& best) {
    const session::Geodetic place = session::ToGeodetic(result.session.base.position);
    const Vector3 off = session::ToNeu(place, session::Minus(s.vector, best.vector));
    const bool used = &s == &best;
    const bool triple = &s == &result.outcome.results.tripleDifference;
    std::vector<std::string> row = {
        std::string(kind) + (triple ? "" : std::string(", ") + session::SolveModelName(s.mode)),
        used ? "yes" : ""};
    for (const double component : off) {
        row.push_back(used ? kNone : Decimal(component * kToMm, 1));
    }
    row.push_back(Millimetres(s.rms));
    row.push_back(Decimal(std::sqrt(std::max(0.0, s.varianceFactor)), 2));
    row.push_back(std::to_string(s.dof));
    table.Row(row, used ? "used" : "");
}

std::string SolutionTable(const SolveResult& result, const Solution& best) {
    Table table("Every solution of the run against the one used",
                {"Solution", "Used", "North (mm)#", "East (mm)#", "Up (mm)#", "RMS (mm)#",
                 "Unit weight#", "Degrees of freedom#"});
    const session::EngineResults& r = result.outcome.results;
    AddSolution(table, result, "Triple difference", r.tripleDifference, best);
    for (std::size_t i = 0; i < std::max(r.floats.size(), r.fixeds.size()); ++i) {
        if (i < r.floats.size()) {
            AddSolution(table, result, "Float", r.floats[i], best);
        }
        if (i < r.fixeds.size()) {
            AddSolution(table, result, "Fixed", r.fixeds[i], best);
        }
    }
    return table.Html();
}

// ---- stations -----------------------------------------------------------------------------------

std::string PositionText(const Vector3& xyz) {
    return Metres(xyz[0]) + "  " + Metres(xyz[1]) + "  " + Metres(xyz[2]);
}

std::string GeodeticText(const Vector3& xyz) {
    const session::Geodetic place = session::ToGeodetic(xyz);
    constexpr double kDegrees = 180.0 / M_PI;
    return Decimal(place.latitude * kDegrees, 8) + "\xC2\xB0  " +
           Decimal(place.longitude * kDegrees, 8) + "\xC2\xB0  " + Decimal(place.height, 4) + " m";
}

std::string OffsetText(const SolveResult& result, const session::AntennaChoice& a,
                       const Vector3& offset) {
    if (!a.found) {
        return kNone;
    }
    return Decimal(offset[0] * kToMm, 2) + "  " + Decimal(offset[1] * kToMm, 2) + "  " +
           Decimal(offset[2] * kToMm, 2) + (result.session.antennasApplied ? "" : " (not applied)");
}

std::string CalibrationText(const session::AntennaChoice& a) {
    if (!a.found) {
        return "none found";
    }
    std::string text = session::FileName(a.file) + ", radome " + a.usedRadome;
    text += a.serial.empty() ? ", mean of the type" : ", serial " + a.serial;
    text += a.method.empty() ? "" : ", " + a.method;
    return text + (a.relative ? ", relative" : "") +
           (a.firstForBoth ? ", the first frequency's offset for both" : "");
}

std::string PositionSource(const session::Station& station) {
    std::string text = session::PositionSourceName(station.positionSource);
    if (station.offFromCode) {
        text += ", " + Decimal(*station.offFromCode, 1) + " m from the code position";
    }
    return text;
}

// ---- satellites ---------------------------------------------------------------------------------

struct Statistics {
    std::size_t count = 0;
    double sum = 0.0, squares = 0.0;  // mm
    int largest = 0;
};

std::map<EngineSatellite, Statistics> StatisticsOf(const Timeline& timeline) {
    std::map<EngineSatellite, Statistics> all;
    for (const Residuals& series : timeline.residuals) {
        Statistics& s = all[series.satellite];
        for (const int value : series.millimetres) {
            ++s.count;
            s.sum += value;
            s.squares += static_cast<double>(value) * value;
            s.largest = std::max(s.largest, std::abs(value));
        }
    }
    return all;
}

std::string ElevationRange(const Sky& sky, EngineSatellite satellite) {
    const auto found = sky.find(satellite);
    if (found == sky.end()) {
        return kNone;
    }
    const auto [low, high] =
        std::minmax_element(found->second.begin(), found->second.end(),
                            [](const auto& a, const auto& b) { return a.elevation < b.elevation; });
    constexpr double kDegrees = 180.0 / M_PI;
    const std::string from = Decimal(low->elevation * kDegrees, 0);
    const std::string to = Decimal(high->elevation * kDegrees, 0);
    return from == to ? from : from + " to " + to;
}

std::string ReferencePeriods(const Timeline& timeline, EngineSatellite satellite) {
    std::string text;
    std::size_t count = 0;
    for (std::size_t i = 0; i < timeline.periods.size(); ++i) {
        const auto& candidates = timeline.periods[i].references[session::IndexOf(satellite.system)];
        if (!candidates.empty() && candidates.front() == satellite) {
            text += (text.empty() ? "" : ", ") + std::to_string(i + 1) +
                    (candidates.size() == 1 ? "" : "?");
            ++count;
        }
    }
    if (text.empty()) {
        return text;
    }
    return timeline.periods.size() == 1
               ? "reference"
               : std::string("reference in period") + (count == 1 ? " " : "s ") + text;
}

std::string SatelliteNote(const SolveResult& result, const Timeline& timeline,
                          EngineSatellite satellite, bool hasResiduals) {
    std::string text = ReferencePeriods(timeline, satellite);
    const auto add = [&text](const std::string& more) {
        text += (text.empty() ? "" : "; ") + more;
    };
    const session::Session& s = result.session;
    for (const session::Exclusion& exclusion : s.settings.values.exclusions) {
        if (exclusion.satellite == satellite) {
            add(exclusion.start || exclusion.end ? "excluded for a span" : "excluded");
        }
    }
    if (s.leftOut.withoutOrbit.contains(satellite)) {
        add("no orbit");
    }
    if (s.leftOut.unknownChannel.contains(satellite)) {
        add("channel not known");
    }
    if (text.empty() && !hasResiduals) {
        add("not used");
    }
    return text;
}

std::string SatelliteTable(const SolveResult& result, const Timeline& timeline) {
    Table table("Satellites that both receivers observed",
                {"Satellite", "Epochs#", "Elevation (\xC2\xB0)#", "Tracks#", "Slips#", "Gaps#",
                 "Residuals#", "RMS (mm)#", "Mean (mm)#", "Largest (mm)#", "Rejected#", "Note"});
    const auto statistics = StatisticsOf(timeline);
    for (const auto& [satellite, epochs] : result.fed.common) {
        std::size_t tracks = 0, slips = 0, gaps = 0;
        int rejected = 0;
        for (const Track& track : timeline.tracks) {
            if (track.satellite == satellite) {
                ++tracks;
                slips += track.start == TrackStart::kSlip ? 1 : 0;
                gaps += track.start == TrackStart::kGap ? 1 : 0;
                rejected += track.ambiguity.rejected1 + track.ambiguity.rejected2;
            }
        }
        const auto found = statistics.find(satellite);
        const bool has = found != statistics.end();
        std::vector<std::string> row = {session::ToString(satellite),
                                        std::to_string(epochs.size()),
                                        ElevationRange(timeline.sky, satellite),
                                        std::to_string(tracks),
                                        std::to_string(slips),
                                        std::to_string(gaps)};
        if (has) {
            const Statistics& s = found->second;
            const auto count = static_cast<double>(s.count);
            row.insert(
                row.end(),
                {std::to_string(s.count), Decimal(std::sqrt(s.squares / count), 1),
                 Decimal(s.sum / count, 1), std::to_string(s.largest), std::to_string(rejected)});
        } else {
            row.resize(3);
            row.insert(row.end(), 8, kNone);
        }
        row.push_back(SatelliteNote(result, timeline, satellite, has));
        const bool reference = row.back().find("reference") != std::string::npos;
        table.Row(row, has || reference ? "" : "unused");
    }
    return table.Html();
}

std::string TrackTable(const SolveResult& result, const Timeline& timeline) {
    // So that the page keeps its bound whatever the data; the JSON output has no such limit.
    constexpr std::size_t kMost = 1500;
    const bool fixed = result.outcome.acceptance == Acceptance::kFixed;
    const bool two = result.outcome.Best()->mode == 3;
    std::vector<std::string> columns = {"Satellite", "Period#",      "From",
                                        "To",        "Begins after", "Float (cycles)#"};
    if (fixed) {
        columns.insert(columns.end(), {"Integer (cycles)#", "Float \xE2\x88\x92 integer#"});
    }
    columns.insert(columns.end(), {"Rows#", "Rejected#", "RMS (mm)#"});
    Table table(two ? "Ambiguity tracks, values of the first frequency" : "Ambiguity tracks",
                columns);
    const char* after[] = {"", "a gap", "a slip"};
    for (std::size_t i = 0; i < std::min(kMost, timeline.tracks.size()); ++i) {
        const Track& track = timeline.tracks[i];
        const session::Ambiguity& a = track.ambiguity;
        std::vector<std::string> row = {
            session::ToString(track.satellite), std::to_string(track.period + 1),
            ClockTime(result, track.epochs.first), ClockTime(result, track.epochs.last),
            after[static_cast<int>(track.start)]};
        if (fixed) {
            row.push_back(track.floating ? Decimal(track.floating->value1, 3) : kNone);
            row.push_back(Decimal(a.value1, 0));
            row.push_back(track.floating ? Decimal(track.floating->value1 - a.value1, 3) : kNone);
        } else {
            row.push_back(Decimal(a.value1, 3));
        }
        row.insert(row.end(),
                   {std::to_string(a.rows1 + a.rows2), std::to_string(a.rejected1 + a.rejected2),
                    a.rows1 > 0 ? Millimetres(a.rms1) : kNone});
        table.Row(row, track.start == TrackStart::kFirst ? "" : "broken");
    }
    std::string text = table.Html();
    if (timeline.tracks.size() > kMost) {
        text += Paragraph(Format("%zu further tracks are left out here; --json has them all.",
                                 timeline.tracks.size() - kMost));
    }
    return text;
}

constexpr const char* kTrackLegend = R"(<ul class="legend">
<li><svg viewBox="0 0 26 12" aria-hidden="true"><path class="observed sG" d="M1 6H25"/></svg> observed by both receivers</li>
<li><svg viewBox="0 0 26 12" aria-hidden="true"><rect class="track sG" x="1" y="1.5" width="24" height="9"/></svg> ambiguity track in the solution</li>
<li><svg viewBox="0 0 26 12" aria-hidden="true"><rect class="reference sG" x="1" y="1.5" width="24" height="9"/></svg> reference satellite (derived)</li>
<li><svg viewBox="0 0 26 12" aria-hidden="true"><path class="slip" d="M13 9l-4.5 -7h9z"/></svg> new track after a slip</li>
<li><svg viewBox="0 0 26 12" aria-hidden="true"><path class="gap" d="M13 0v12"/></svg> new track after a gap</li>
<li><svg viewBox="0 0 26 12" aria-hidden="true"><path class="period" d="M13 0v12"/></svg> new period</li>
</ul>
)";

std::string SkyLegend(const Sky& sky) {
    std::string text = "<ul class=\"legend\">\n";
    const auto entry = [&text](const std::string& drawing, const char* name) {
        text += "<li><svg viewBox=\"0 0 34 12\" aria-hidden=\"true\">" + drawing + "</svg> " +
                name + "</li>\n";
    };
    for (const EngineSystem system : session::kEngineSystems) {
        const bool any = std::any_of(sky.begin(), sky.end(), [&](const auto& track) {
            return track.first.system == system;
        });
        if (any) {
            entry(Format("<path class=\"path s%c\" d=\"M1 6H33\"/>", session::LetterOf(system)),
                  session::NameOf(system));
        }
    }
    entry("<circle class=\"end sG\" cx=\"17\" cy=\"6\" r=\"3.5\"/>", "last position");
    entry("<path class=\"mask\" d=\"M1 6H33\"/>", "elevation mask; fainter below it");
    return text + "</ul>\n";
}

// ---- fixing -------------------------------------------------------------------------------------

// A bar from 0 to 1 with a mark; the numbers stand beside it as text.
std::string Gauge(double part, double mark, std::string_view label) {
    const auto percent = [](double value) { return 100.0 * std::clamp(value, 0.0, 1.0); };
    std::string text =
        "<svg class=\"gauge\" viewBox=\"0 0 100 10\" preserveAspectRatio=\"none\" "
        "role=\"img\"><title>" +
        Escaped(label) + "</title><rect class=\"ground\" width=\"100\" height=\"10\"/>" +
        Format("<rect class=\"value\" width=\"%.1f\" height=\"10\"/>", percent(part));
    if (mark >= 0.0) {
        text +=
            Format("<rect class=\"mark\" x=\"%.1f\" width=\"0.8\" height=\"10\"/>", percent(mark));
    }
    return text + "</svg>";
}

// Ratios go from 1 to 99; in logarithms, so that the threshold does not stick to the edge.
double OnRatioScale(double ratio) {
    constexpr double kMost = 99.0;
    return std::log(std::clamp(ratio, 1.0, kMost)) / std::log(kMost);
}

std::string FixedGauges(const SolveResult& result) {
    const double threshold = result.session.config.ratioThreshold;
    std::string text = "<div class=\"gauges\">\n";
    for (const Solution& fixed : result.outcome.results.fixeds) {
        const Solution* floating = FloatOf(result, fixed.mode);
        const std::size_t whole = floating == nullptr ? 0 : floating->ambiguities.size();
        std::size_t rows = 0, rejected = 0;
        for (const session::Ambiguity& a : fixed.ambiguities) {
            rows += static_cast<std::size_t>(std::max(0, a.rows1 + a.rows2));
            rejected += static_cast<std::size_t>(std::max(0, a.rejected1 + a.rejected2));
        }
        const std::string model = session::SolveModelName(fixed.mode);
        const std::string ratio = Decimal(fixed.ratio, 1) + " against a threshold of " +
                                  Decimal(threshold, 1) +
                                  (fixed.ratio > threshold ? ": passed" : ": not passed");
        const std::string tracks =
            Format("%zu of %zu float tracks", fixed.ambiguities.size(), whole);
        const std::string used = Format("%zu of %zu on these tracks", rows, rows + rejected);
        const auto share = [](std::size_t part, std::size_t of) {
            return of == 0 ? 0.0 : static_cast<double>(part) / static_cast<double>(of);
        };
        text += "<div><h3>Fixed, " + Escaped(model) + "</h3>\n<dl>\n<dt>Ratio</dt><dd>" +
                Gauge(OnRatioScale(fixed.ratio), OnRatioScale(threshold),
                      "Ratio, from 1 to 99 in a logarithmic scale") +
                "<span>" + Escaped(ratio) + "</span></dd>\n<dt>Tracks with an integer</dt><dd>" +
                Gauge(share(fixed.ambiguities.size(), whole), -1.0, "Share of tracks") + "<span>" +
                Escaped(Percent(fixed.ambiguities.size(), whole) + ", " + tracks) +
                "</span></dd>\n<dt>Observations kept</dt><dd>" +
                Gauge(share(rows, rows + rejected), -1.0,
                      "Share of observations not rejected as outliers") +
                "<span>" + Escaped(Percent(rows, rows + rejected) + ", " + used) +
                "</span></dd>\n</dl></div>\n";
    }
    return text + "</div>\n";
}

std::string ReferenceText(const std::vector<EngineSatellite>& candidates) {
    if (candidates.empty()) {
        return kNone;
    }
    std::string text;
    for (const EngineSatellite& satellite : candidates) {
        text += (text.empty() ? "" : ", ") + session::ToString(satellite);
    }
    return candidates.size() == 1 ? text : "probably " + text.replace(3, 2, " (or ") + ")";
}

std::string PeriodTable(const SolveResult& result, const Timeline& timeline) {
    const bool fixed = result.outcome.acceptance == Acceptance::kFixed;
    std::vector<std::string> columns = {"Period",  "From",   "To",      "GPS",
                                        "GLONASS", "BeiDou", "Galileo", "Float tracks#"};
    if (fixed) {
        columns.insert(columns.end(), {"With an integer#", "Share#"});
    }
    Table table("Periods and their reference satellites (derived)", columns);
    const Solution* best = result.outcome.Best();
    const Solution* floating = FloatOf(result, best->mode);
    const auto count = [](const Solution* solution, const Span& span) {
        std::size_t number = 0;
        if (solution != nullptr) {
            for (const session::Ambiguity& a : solution->ambiguities) {
                number += span.Holds(static_cast<std::uint32_t>(std::max(0, a.firstEpoch))) ? 1 : 0;
            }
        }
        return number;
    };
    for (std::size_t i = 0; i < timeline.periods.size(); ++i) {
        const Period& period = timeline.periods[i];
        std::vector<std::string> row = {std::to_string(i + 1),
                                        ClockTime(result, period.epochs.first),
                                        ClockTime(result, period.epochs.last)};
        for (const EngineSystem system : session::kEngineSystems) {
            row.push_back(ReferenceText(period.references[session::IndexOf(system)]));
        }
        const std::size_t whole = count(floating, period.epochs);
        row.push_back(std::to_string(whole));
        if (fixed) {
            const std::size_t part = count(best, period.epochs);
            row.insert(row.end(), {std::to_string(part), Percent(part, whole)});
        }
        table.Row(row);
    }
    return table.Html();
}

// ---- data ---------------------------------------------------------------------------------------

std::string SystemTable(const SolveResult& result) {
    Table table("Systems", {"System", "Epochs#", "Satellites#", "With residuals#",
                            "Signals of the base", "Signals of the rover"});
    const Solution* best = result.outcome.Best();
    for (const EngineSystem system : session::kEngineSystems) {
        const std::size_t i = session::IndexOf(system);
        const session::SystemFeed& fed = result.fed.systems[i];
        if (!result.session.settings.values.systems[i]) {
            table.Row({session::NameOf(system), "off", "", "", "", ""}, "unused");
            continue;
        }
        const std::size_t used = best == nullptr ? 0 : SatellitesWithResiduals(*best, system);
        const bool any = fed.satellites > 0;
        table.Row({session::NameOf(system), std::to_string(fed.epochs),
                   std::to_string(fed.satellites), std::to_string(used),
                   any ? TrackingCodes(result.session.signals, system, false) : kNone,
                   any ? TrackingCodes(result.session.signals, system, true) : kNone},
                  any ? "" : "unused");
    }
    return table.Html();
}

std::string EpochLosses(const session::Session& s) {
    std::string text;
    const auto add = [&text](std::size_t count, const char* what) {
        if (count > 0) {
            text += (text.empty() ? "" : "; ") + std::to_string(count) + " " + what;
        }
    };
    add(s.pairing.baseOnly, "of the base without partner");
    add(s.pairing.roverOnly, "of the rover without partner");
    add(s.pairing.moving, "while the antenna was moved");
    add(s.pairing.outOfOrder, "out of order");
    add(s.pairing.sameSecond, "in the same second as another");
    add(s.pairing.acrossWeeks, "across the end of a week");
    add(s.lostAtTableEnds, "at the ends of the orbit tables");
    return text.empty() ? "none" : text;
}

std::string Pairs(const std::vector<std::pair<std::string, std::string>>& entries) {
    std::string text = "<dl class=\"pairs\">\n";
    for (const auto& [name, value] : entries) {
        if (!value.empty()) {
            text += "<dt>" + Escaped(name) + "</dt><dd>" + Escaped(value) + "</dd>\n";
        }
    }
    return text + "</dl>\n";
}

}  // namespace

std::string SummarySection(const SolveResult& result) {
    const Flag flag = FlagOf(result);
    const Solution* best = result.outcome.Best();
    std::string text = std::string("<div class=\"verdict ") + flag.className +
                       "\"><p class=\"badge\"><span class=\"sign\" aria-hidden=\"true\">" +
                       flag.sign + "</span> <strong>" + flag.word +
                       "</strong> <span class=\"kind\">" + Escaped(Verdict(result.outcome)) +
                       "</span></p>\n" + Paragraph(VerdictReason(result)) + "</div>\n";
    if (best != nullptr) {
        text += Figures(result, *best);
    }
    text += Paragraph(SpanText(result), "span");
    return Section("result", "Result", text + Warnings(result));
}

std::string VectorSection(const SolveResult& result) {
    const Solution* best = result.outcome.Best();
    if (best == nullptr) {
        return Section("vector", "Vector and covariance",
                       Paragraph("There is no solution, hence no vector."));
    }
    std::string text =
        "<div class=\"columns\">\n" + VectorTable(result, *best) +
        CovarianceTable("Covariance, X Y Z (mm\xC2\xB2)", {"X", "Y", "Z"}, best->covarianceXyz) +
        CovarianceTable("Covariance at the rover (mm\xC2\xB2)", {"North", "East", "Up"},
                        best->covarianceNeu) +
        "</div>\n";
    text += Paragraph(
        "Standard deviations and covariances are formal: they follow from the scatter of the "
        "residuals and know nothing of a wrong antenna height or a wrong position of the base. "
        "North, east and up of the vector are those at the base.",
        "note");
    return Section("vector", "Vector and covariance", text + SolutionTable(result, *best));
}

std::string StationSection(const SolveResult& result) {
    const session::Session& s = result.session;
    Table table("As used", {"", "Base", "Rover"});
    const auto row = [&](const char* name, const auto& give) {
        table.Row({name, give(s.base), give(s.rover)});
    };
    using session::Station;
    row("Marker", [](const Station& t) { return t.name; });
    row("Marker number", [](const Station& t) { return t.header.markerNumber; });
    row("Receiver", [](const Station& t) {
        return t.header.receiverType + "  " + t.header.receiverVersion +
               (t.header.receiverSerial.empty() ? "" : "  no. " + t.header.receiverSerial);
    });
    row("Antenna and radome", [](const Station& t) {
        return (t.antenna.type.empty() ? "not named" : t.antenna.type) + "  " + t.antenna.radome;
    });
    row("Antenna serial number", [](const Station& t) { return t.header.antennaSerial; });
    row("Antenna height (m)", [](const Station& t) {
        return Metres(t.antennaHeight) + (t.heightFromOption ? " (option)" : " (header)");
    });
    row("Antenna off the vertical, N E (m)", [](const Station& t) {
        return Metres(t.header.antennaNorth) + "  " + Metres(t.header.antennaEast);
    });
    row("Calibration", [](const Station& t) { return CalibrationText(t.antenna); });
    row("Phase centre L1, N E U (mm)",
        [&](const Station& t) { return OffsetText(result, t.antenna, t.antenna.offset1); });
    row("Phase centre L2, N E U (mm)",
        [&](const Station& t) { return OffsetText(result, t.antenna, t.antenna.offset2); });
    row("Marker used, X Y Z (m)", [](const Station& t) { return PositionText(t.position); });
    row("Position from", [](const Station& t) { return PositionSource(t); });
    row("Epochs in the files", [](const Station& t) {
        return std::to_string(t.epochs) + ", " + io::FormatTime(t.firstEpoch, 0) + " to " +
               io::FormatTime(t.lastEpoch, 0);
    });
    if (const Solution* best = result.outcome.Best()) {
        const Vector3 rover = session::Plus(s.base.position, best->vector);
        table.Row({"Marker by this solution, X Y Z (m)", kNone, PositionText(rover)}, "used");
        table.Row({"Latitude, longitude, height (WGS 84)", GeodeticText(s.base.position),
                   GeodeticText(rover)});
    }
    return Section(
        "stations", "Stations and antennas",
        table.Html() + (s.antennasApplied
                            ? Paragraph("Of the phase centre offsets the engine applies the third, "
                                        "up, of both frequencies, to all systems alike.",
                                        "note")
                            : Paragraph("No phase centre offsets were applied.", "note")));
}

std::string ResidualSection(const SolveResult& result, const Timeline& timeline,
                            std::uint32_t thinning) {
    if (timeline.residuals.empty()) {
        return Section("residuals", "Residuals", Paragraph("The solution has no residuals."));
    }
    const Solution& best = *result.outcome.Best();
    std::string text = Paragraph(
        std::string("Double-difference residuals of the solution used (") +
        session::AcceptanceName(result.outcome.acceptance) + ", " +
        session::SolveModelName(best.mode) +
        "), in millimetres, each of a satellite against the reference of its system. Reference "
        "satellites have none. The table of satellites holds the figures of each.");
    if (thinning > 1) {
        text += Paragraph(Format("To keep the page small, every %uth epoch is shown; --csv writes "
                                 "all of them.",
                                 thinning),
                          "note");
    }
    if (timeline.unplaced > 0) {
        text += Paragraph(
            Plural(timeline.unplaced, "residual") + " could not be given to an epoch.", "note");
    }
    text +=
        "<noscript><p class=\"note\">The two charts need JavaScript.</p></noscript>\n"
        "<div id=\"charts\" hidden=\"hidden\"></div>\n";
    return Section("residuals", "Residuals", text);
}

std::string SatelliteSection(const SolveResult& result, const Timeline& timeline) {
    if (result.fed.times.empty()) {
        return Section("satellites", "Satellites", Paragraph("There are no common epochs."));
    }
    std::string text = "<div class=\"sky-block\">\n";
    if (timeline.sky.empty()) {
        text += Paragraph("The sky plot needs broadcast orbits, and there are none.", "note");
    } else {
        text += "<figure>" + SkyPlot(result, timeline.sky) + SkyLegend(timeline.sky) +
                "<figcaption>The sky over the base. Satellites that both receivers observed, where "
                "they did.</figcaption></figure>\n";
    }
    text +=
        "</div>\n<figure><div class=\"scroll\" role=\"region\" tabindex=\"0\" "
        "aria-label=\"Satellites and ambiguity tracks\">" +
        TrackPlot(result, timeline) + "</div>" + kTrackLegend +
        "<figcaption>Satellites and ambiguity tracks over GPS time.</figcaption></figure>\n";
    text += SatelliteTable(result, timeline);
    if (!timeline.tracks.empty()) {
        text += "<details><summary>Table of all " +
                Escaped(Plural(timeline.tracks.size(), "ambiguity track")) + "</summary>\n" +
                TrackTable(result, timeline) + "</details>\n";
    }
    return Section("satellites", "Satellites and tracks", text);
}

std::string FixingSection(const SolveResult& result, const Timeline& timeline) {
    std::string text;
    if (result.outcome.results.fixeds.empty()) {
        text += Paragraph("No fixed solution was made.");
    } else {
        text += FixedGauges(result);
    }
    if (!timeline.periods.empty()) {
        text += PeriodTable(result, timeline);
        text += Paragraph(
            "The engine reports neither periods nor reference satellites nor slips; they are "
            "derived "
            "from its results. A period lasts at least the period length, and no track crosses its "
            "end. A reference satellite has no residuals in its period but was observed at every "
            "epoch at which its system has some; where several are like that, the highest is the "
            "likeliest, and a question mark says so. A slip is assumed where a satellite begins a "
            "second "
            "track in a period although the observations go on; slips that were repaired leave no "
            "trace.",
            "note");
    }
    return Section("fixing", "Ambiguity fixing", text);
}

std::string DataSection(const SolveResult& result) {
    const session::Session& s = result.session;
    std::string text = SystemTable(result) + Pairs({{"Orbits", OrbitText(s)},
                                                    {"Records dropped", DroppedText(s)},
                                                    {"Ionosphere", IonosphereText(s)},
                                                    {"Epochs left out", EpochLosses(s)}});
    const auto leftOut = LeftOut(result);
    if (!leftOut.empty()) {
        text += Heading("Left out") + List(leftOut);
    }
    const auto notes = AllNotes(result);
    if (!notes.empty()) {
        text += Heading("Notes") + List(notes);
    }
    return Section("data", "Data used", text);
}

std::string SettingSection(const SolveResult& result) {
    const session::ConfiguredSettings& settings = result.session.settings;
    Table table("Every setting with its origin", {"Setting", "Value", "From", "Meaning"});
    for (const session::SettingSpec& spec : session::AllSettings()) {
        const std::string value = spec.toml(settings.values);
        const auto found = settings.origins.find(spec.name);
        std::string from = "default";
        if (found != settings.origins.end()) {
            const session::SettingOrigin& origin = found->second;
            from = origin.kind + (origin.detail.empty() ? "" : ": " + origin.detail);
        }
        table.Row({spec.name, value.empty() ? kNone : value, from, spec.help},
                  from == "default" ? "unused" : "");
    }
    return Section("settings", "Settings", table.Html());
}

std::string InputSection(const SolveResult& result) {
    Table table("Files read", {"File", "Role", "Kind", "Packing", "Bytes#", "SHA-256"});
    for (const session::InputFile& file : result.session.inputs.files) {
        table.Row({session::FileName(file.name), session::RoleName(file.role),
                   io::KindName(file.kind), file.packing, std::to_string(file.size), file.sha256});
    }
    return Section("inputs", "Input files", table.Html());
}

std::string OriginSection(const SolveResult& result) {
    const session::StatusEntry& end = session::DescribeStatus(result.outcome.results.status);
    const auto code = CodeOf(result.outcome.acceptance, result.outcome.results.status);
    std::string text = Pairs(
        {{"Model", ModelText(result)},
         {"Status",
          Format("%d: ", result.outcome.results.status) + end.text +
              (result.outcome.completed ? "" : "; an error inside the engine ended the run there")},
         {"Way there", ChainText(result.outcome)},
         {"Exit code", std::to_string(static_cast<int>(code))},
         {"Program", "vornel " + result.version},
         {"Started", result.startedUtc},
         {"Took", Format("%.1f s, the engine %.1f s", result.secondsInAll, result.outcome.seconds)},
         {"Command", result.commandLine}});
    return Section("run", "This run", text);
}

}  // namespace vornel::report
