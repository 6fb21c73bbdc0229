#include <algorithm>
#include <cmath>

#include "engine/status.h"
#include "report/drawings.h"
#include "report/html.h"
#include "report/phrases.h"
#include "report/section_parts.h"
#include "report/sections.h"
#include "session/text.h"

namespace vornel::report {
namespace {

using engine::Solution;
using engine::System;
using session::Format;
using session::Plural;
using session::Vector3;
using solve::Acceptance;
using solve::SolveResult;

std::size_t ResidualCount(const Solution& solution) {
    std::size_t count = 0;
    for (const engine::ResidualSeries& series : solution.residuals) {
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
    switch (result.grade) {
        case solve::Grade::kTrusted:
            return AllWarnings(result).empty() ? Flag{"pass", "Pass", "\xE2\x9C\x93"}
                                               : Flag{"flag", "Check", "!"};
        case solve::Grade::kDoubtful:
        case solve::Grade::kFloat:
        case solve::Grade::kApproximate:
            return {"flag", "Check", "!"};
        case solve::Grade::kNone:
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
    for (const engine::System system : engine::kSystems) {
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
        std::string(kind) + (triple ? "" : std::string(", ") + engine::SolveModelName(s.mode)),
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
    const engine::Results& r = result.outcome.results;
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

}  // namespace

std::string SummarySection(const SolveResult& result) {
    const Flag flag = FlagOf(result);
    const Solution* best = result.outcome.Best();
    std::string text = std::string("<div class=\"verdict ") + flag.className +
                       "\"><p class=\"badge\"><span class=\"sign\" aria-hidden=\"true\">" +
                       flag.sign + "</span> <strong>" + flag.word +
                       "</strong> <span class=\"kind\">" + Escaped(Verdict(result)) +
                       "</span></p>\n" + Paragraph(VerdictReason(result)) + "</div>\n";
    if (best != nullptr) {
        text += Figures(result, *best);
    }
    text += Paragraph(SpanText(result), "span");
    text += Heading("The runs behind it") + List(RunLines(result));
    if (!result.doubts.empty()) {
        text += Heading("Why it is not trusted") + List(DoubtLines(result));
    }
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

}  // namespace vornel::report
