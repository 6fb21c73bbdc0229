// simulated_files FOLDER: a session, or a campaign of many, of the simulated world as files: RINEX
// observations and navigation, SP3, ANTEX, and truth.json with what nobody knows of real ones.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>

#include "plan.h"
#include "simulator/files.h"
#include "simulator/scenarios.h"
#include "simulator/simulate.h"

namespace {

using namespace vornel;

struct Options {
    std::string folder;
    std::string kinds, kind, like;
    std::size_t stations = 0;
    int days = 3;
    rough::CampaignFlaws flaws;
    std::uint64_t seed = 1;
};

rough::Scenario ScenarioOf(const Options& options) {
    if (options.stations > 0) {
        return rough::DrawCampaign(options.seed, options.stations, options.days, options.flaws);
    }
    if (!options.like.empty()) {
        return rough::DrawLookAlike(options.seed, options.like);
    }
    for (const truth::Kind& kind : truth::ParsePlan(truth::ReadText(options.kinds)).kinds) {
        if (kind.bounds.name == options.kind) {
            return rough::DrawScenario(options.seed, kind.bounds);
        }
    }
    throw std::runtime_error(options.kinds + " has no kind \"" + options.kind + "\"");
}

nlohmann::json TruthOf(const rough::Scenario& scenario, const std::vector<std::string>& files) {
    nlohmann::json truth;
    truth["kind"] = scenario.kind;
    truth["seed"] = scenario.seed;
    truth["start"] = {{"week", scenario.start.week}, {"seconds", scenario.start.seconds}};
    for (const rough::Site& site : scenario.sites) {
        truth["sites"].push_back({{"name", site.name}, {"marker", site.marker}});
    }
    for (std::size_t i = 0; i < scenario.occupations.size(); ++i) {
        const rough::Occupation& o = scenario.occupations[i];
        truth["occupations"].push_back(
            {{"file", files[i]},
             {"site", scenario.sites[o.site].name},
             {"start", o.start},
             {"duration", o.duration},
             {"antennaHeight", o.antennaHeight},
             {"antennaHeightOfHeader", o.headerHeight.value_or(o.antennaHeight)},
             {"centringNorthEast", o.centring},
             {"headerOffMarkerNeu",
              o.headerOffset ? nlohmann::json(*o.headerOffset) : nlohmann::json()}});
    }
    return truth;
}

int Write(const Options& options) {
    const rough::Scenario scenario = ScenarioOf(options);
    const std::vector<std::string> files =
        rough::WriteSession(rough::Simulate(scenario), options.folder);
    std::ofstream out(std::filesystem::path(options.folder) / "truth.json");
    out << TruthOf(scenario, files).dump(1) << '\n';
    std::printf("%zu observation files of %zu sites in %s\n", files.size(), scenario.sites.size(),
                options.folder.c_str());
    return out ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Writes simulated sessions as files, with their truth.");
    Options options;
    app.add_option("folder", options.folder, "made where it is missing")->required();
    app.add_option("--kinds", options.kinds, "plan with kinds");
    app.add_option("--kind", options.kind, "name of one of them");
    app.add_option("--like", options.like, "a look-alike of this real data set");
    app.add_option("--campaign", options.stations, "a network of so many stations");
    app.add_option("--days", options.days, "of the campaign")->check(CLI::Range(1, 14));
    app.add_option("--wrong-height", options.flaws.wrongHeight, "m, of one antenna's header");
    app.add_option("--wrong-centring", options.flaws.wrongCentring, "m, of one antenna");
    app.add_option("--wrong-header", options.flaws.wrongHeader, "m, of one header position");
    app.add_option("--seed", options.seed, "another seed, another world");
    CLI11_PARSE(app, argc, argv);
    try {
        return Write(options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "simulated_files: %s\n", error.what());
        return 1;
    }
}
