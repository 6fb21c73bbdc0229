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

std::string HtmlReport(const solve::SolveResult& result) {
    const Timeline timeline = MakeTimeline(result);
    const session::Session& s = result.session;
    const std::string before = SummarySection(result) + VectorSection(result) +
                               StationSection(result) + SatelliteSection(result, timeline);
    const std::string after = FixingSection(result, timeline) + DataSection(result) +
                              SettingSection(result) + InputSection(result) + OriginSection(result);
    std::map<std::string_view, std::string> values = {
        {"title", Escaped("Baseline " + s.base.name + " \xE2\x80\x93 " + s.rover.name)},
        {"base", Escaped(s.base.name)},
        {"rover", Escaped(s.rover.name)},
        {"made", Escaped(result.startedUtc)},
        {"version", Escaped(result.version)},
        {"style", std::string(StyleAsset())},
        {"chart-style", std::string(ChartStyleAsset())},
        {"chart-script", std::string(ChartScriptAsset())},
        {"chart-licence", std::string(ChartLicenceAsset())},
        {"script", std::string(ScriptAsset())}};
    // The data take what the rest leaves.
    constexpr std::size_t kResidualText = 2'000, kLeast = 50'000;
    std::size_t rest = PageAsset().size() + before.size() + after.size() + kResidualText;
    for (const auto& [name, value] : values) {
        rest += value.size();
    }
    const std::size_t room = kPageLimit > rest + kLeast ? kPageLimit - rest : kLeast;
    const EncodedData data = EncodeData(result, timeline, room);
    values["body"] = before + ResidualSection(result, timeline, data.thinning) + after;
    values["data"] = data.json;
    return Filled(PageAsset(), values);
}

}  // namespace vornel::report
