#include <algorithm>
#include <cmath>

#include "engine/status.h"
#include "report/drawings.h"
#include "report/html.h"
#include "report/section_parts.h"
#include "report/sections.h"
#include "session/text.h"

namespace vornel::report {
namespace {

using engine::Solution;
using engine::System;
using session::Format;
using session::Plural;
using solve::Acceptance;
using solve::SolveResult;

struct Statistics {
    std::size_t count = 0;
    double sum = 0.0, squares = 0.0;  // mm
    int largest = 0;
};

std::map<engine::Satellite, Statistics> StatisticsOf(const Timeline& timeline) {
    std::map<engine::Satellite, Statistics> all;
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

std::string ElevationRange(const Sky& sky, engine::Satellite satellite) {
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

std::string ReferencePeriods(const Timeline& timeline, engine::Satellite satellite) {
    std::string text;
    std::size_t count = 0;
    for (std::size_t i = 0; i < timeline.periods.size(); ++i) {
        const auto& candidates = timeline.periods[i].references[engine::IndexOf(satellite.system)];
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
                          engine::Satellite satellite, bool hasResiduals) {
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
        std::vector<std::string> row = {engine::ToString(satellite),
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
    const bool two = result.outcome.Best()->mode == VORNEL_MODEL_BOTH;
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
        const engine::Ambiguity& a = track.ambiguity;
        std::vector<std::string> row = {
            engine::ToString(track.satellite), std::to_string(track.period + 1),
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
    for (const engine::System system : engine::kSystems) {
        const bool any = std::any_of(sky.begin(), sky.end(), [&](const auto& track) {
            return track.first.system == system;
        });
        if (any) {
            entry(Format("<path class=\"path s%c\" d=\"M1 6H33\"/>", engine::LetterOf(system)),
                  engine::NameOf(system));
        }
    }
    entry("<circle class=\"end sG\" cx=\"17\" cy=\"6\" r=\"3.5\"/>", "last position");
    entry("<path class=\"mask\" d=\"M1 6H33\"/>", "elevation mask; fainter below it");
    return text + "</ul>\n";
}

}  // namespace

std::string ResidualSection(const SolveResult& result, const Timeline& timeline,
                            std::uint32_t thinning) {
    if (timeline.residuals.empty()) {
        return Section("residuals", "Residuals", Paragraph("The solution has no residuals."));
    }
    const Solution& best = *result.outcome.Best();
    std::string text = Paragraph(
        std::string("Double-difference residuals of the solution used (") +
        solve::AcceptanceName(result.outcome.acceptance) + ", " +
        engine::SolveModelName(best.mode) +
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

}  // namespace vornel::report
