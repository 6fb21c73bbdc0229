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
using solve::Acceptance;
using solve::SolveResult;

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

// Ratios go from 1 to the greatest; in logarithms, so that the threshold does not stick to the edge.
double OnRatioScale(double ratio) {
    return std::log(std::clamp(ratio, 1.0, VORNEL_GREATEST_RATIO)) /
           std::log(VORNEL_GREATEST_RATIO);
}

std::string FixedGauges(const SolveResult& result) {
    const double threshold = result.session.config.ratioThreshold;
    std::string text = "<div class=\"gauges\">\n";
    for (const Solution& fixed : result.outcome.results.fixeds) {
        const Solution* floating = FloatOf(result, fixed.mode);
        const std::size_t whole = floating == nullptr ? 0 : floating->ambiguities.size();
        std::size_t rows = 0, rejected = 0;
        for (const engine::Ambiguity& a : fixed.ambiguities) {
            rows += static_cast<std::size_t>(std::max(0, a.rows1 + a.rows2));
            rejected += static_cast<std::size_t>(std::max(0, a.rejected1 + a.rejected2));
        }
        const std::string model = engine::SolveModelName(fixed.mode);
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

std::string ReferenceText(const std::vector<engine::Satellite>& candidates) {
    if (candidates.empty()) {
        return kNone;
    }
    std::string text;
    for (const engine::Satellite& satellite : candidates) {
        text += (text.empty() ? "" : ", ") + engine::ToString(satellite);
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
            for (const engine::Ambiguity& a : solution->ambiguities) {
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
        for (const engine::System system : engine::kSystems) {
            row.push_back(ReferenceText(period.references[engine::IndexOf(system)]));
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

}  // namespace

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

}  // namespace vornel::report
