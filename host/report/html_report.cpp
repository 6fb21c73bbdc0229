#include "report/html_report.h"

#include <map>

#include "report/assets.h"
#include "report/compact.h"
#include "report/html.h"
#include "report/sections.h"
#include "report/tracks.h"

namespace vornel::report {
namespace {

// {{name}} in the template replaced by the value of that name. Values are not looked into.
std::string Filled(std::string_view page, const std::map<std::string_view, std::string>& values) {
    std::string text;
    std::size_t at = 0;
    while (true) {
        const std::size_t open = page.find("{{", at);
        if (open == std::string_view::npos) {
            return text + std::string(page.substr(at));
        }
        const std::size_t close = page.find("}}", open);
        text += page.substr(at, open - at);
        text += values.at(page.substr(open + 2, close - open - 2));
        at = close + 2;
    }
}

}  // namespace

std::string HtmlReport(const app::SolveResult& result) {
    // What the residuals may take: the rest of the page of a day with four systems stays below the
    // remainder.
    constexpr std::size_t kResidualRoom = 400'000;
    const Timeline timeline = MakeTimeline(result);
    const EncodedData data = EncodeData(result, timeline, kResidualRoom);
    const session::Session& s = result.session;
    const std::string body = SummarySection(result) + VectorSection(result) +
                             StationSection(result) + SatelliteSection(result, timeline) +
                             ResidualSection(result, timeline, data.thinning) +
                             FixingSection(result, timeline) + DataSection(result) +
                             SettingSection(result) + InputSection(result) + OriginSection(result);
    return Filled(PageAsset(),
                  {{"title", Escaped("Baseline " + s.base.name + " \xE2\x80\x93 " + s.rover.name)},
                   {"base", Escaped(s.base.name)},
                   {"rover", Escaped(s.rover.name)},
                   {"made", Escaped(result.startedUtc)},
                   {"version", Escaped(result.version)},
                   {"style", std::string(StyleAsset())},
                   {"chart-style", std::string(ChartStyleAsset())},
                   {"chart-script", std::string(ChartScriptAsset())},
                   {"chart-licence", std::string(ChartLicenceAsset())},
                   {"script", std::string(ScriptAsset())},
                   {"data", data.json},
                   {"body", body}});
}

}  // namespace vornel::report
