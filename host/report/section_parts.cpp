#include "report/section_parts.h"

#include "report/html.h"

namespace vornel::report {

using engine::Solution;
using solve::SolveResult;

std::string Section(const char* id, const char* heading, const std::string& content) {
    return std::string("<section id=\"") + id + "\" aria-labelledby=\"" + id + "-h\">\n<h2 id=\"" +
           id + "-h\">" + heading + "</h2>\n" + content + "</section>\n";
}

std::string Heading(std::string_view text) {
    return "<h3>" + Escaped(text) + "</h3>\n";
}

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

std::string Pairs(const std::vector<std::pair<std::string, std::string>>& entries) {
    std::string text = "<dl class=\"pairs\">\n";
    for (const auto& [name, value] : entries) {
        if (!value.empty()) {
            text += "<dt>" + Escaped(name) + "</dt><dd>" + Escaped(value) + "</dd>\n";
        }
    }
    return text + "</dl>\n";
}

const Solution* FloatOf(const SolveResult& result, int mode) {
    for (const Solution& s : result.outcome.results.floats) {
        if (s.mode == mode) {
            return &s;
        }
    }
    return nullptr;
}

}  // namespace vornel::report
