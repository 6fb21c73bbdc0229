#include "engine/status.h"
#include "report/exit_codes.h"
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
using solve::SolveResult;

std::string SystemTable(const SolveResult& result) {
    Table table("Systems", {"System", "Epochs#", "Satellites#", "With residuals#",
                            "Signals of the base", "Signals of the rover"});
    const Solution* best = result.outcome.Best();
    for (const engine::System system : engine::kSystems) {
        const std::size_t i = engine::IndexOf(system);
        const solve::SystemFeed& fed = result.fed.systems[i];
        if (!result.session.settings.values.systems[i]) {
            table.Row({engine::NameOf(system), "off", "", "", "", ""}, "unused");
            continue;
        }
        const std::size_t used = best == nullptr ? 0 : SatellitesWithResiduals(*best, system);
        const bool any = fed.satellites > 0;
        table.Row({engine::NameOf(system), std::to_string(fed.epochs),
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

}  // namespace

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
    const engine::StatusEntry& end = engine::DescribeStatus(result.outcome.results.status);
    const auto code = CodeOf(result.grade, result.outcome.results.status);
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
