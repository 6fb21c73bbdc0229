#include "report/csv_report.h"

#include <cstdio>

namespace vornel::report {
namespace {

using solve::SolveResult;

void Append(std::string& text, const char* kind, const engine::Solution& solution) {
    for (const engine::ResidualSeries& series : solution.residuals) {
        const std::string satellite = engine::SatelliteName(series.system, series.prn);
        for (const engine::ResidualPoint& point : series.points) {
            char line[128];
            std::snprintf(line, sizeof line, "%s,%d,%d,%s,%d,%.3f,%s,%d\n", kind, solution.mode,
                          series.kind + 1, satellite.c_str(), point.week, point.seconds,
                          io::FormatTime({point.week, point.seconds}, 3).c_str(),
                          point.millimetres);
            text += line;
        }
    }
}

}  // namespace

std::string CsvReport(const SolveResult& result) {
    std::string text = "solution,model,block,satellite,gps_week,gps_seconds,gps_time,residual_mm\n";
    for (const engine::Solution& solution : result.outcome.results.floats) {
        Append(text, "float", solution);
    }
    for (const engine::Solution& solution : result.outcome.results.fixeds) {
        Append(text, "fixed", solution);
    }
    return text;
}

}  // namespace vornel::report
