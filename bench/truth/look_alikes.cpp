// look_alikes CUTS RUNS --seeds N --out FILE: simulated sessions that resemble the real data sets, cut
// and solved as truth_runs does with those: one line of CSV per engine run. compare_residuals.py lays
// the two tables side by side.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "app/heap.h"
#include "engine_runs.h"
#include "plan.h"
#include "scene.h"
#include "simulator/scenarios.h"
#include "simulator/simulate.h"
#include "workers.h"

namespace {

using namespace vornel;
using namespace vornel::truth;

LoadedSet Simulated(const std::string& name, std::uint64_t seed) {
    rough::SimulatedSession session = rough::Simulate(rough::DrawLookAlike(seed, name));
    LoadedSet set;
    set.description.name = name;
    set.description.known.vector = session.TrueVector(0, 1);
    set.description.known.base = session.stations[0].marker;
    set.inputs.base = std::move(session.stations[0].observations);
    set.inputs.rover = std::move(session.stations[1].observations);
    set.inputs.navigation = {std::move(session.navigation)};
    if (session.antennas) {
        set.inputs.antennas = {*session.antennas};
    }
    set.first = std::max(set.inputs.base.epochs.front().time, set.inputs.rover.epochs.front().time);
    set.last = std::min(set.inputs.base.epochs.back().time, set.inputs.rover.epochs.back().time);
    set.interval = *set.inputs.base.station().interval;
    return set;
}

int Measure(const std::vector<std::string>& plans, int seeds, int firstSeed,
            const std::vector<std::string>& wanted, const std::string& out, int processes) {
    Plan plan;
    for (const std::string& path : plans) {
        const Plan part = ParsePlan(ReadText(path));
        plan.cuts.insert(plan.cuts.end(), part.cuts.begin(), part.cuts.end());
        plan.runs.insert(plan.runs.end(), part.runs.begin(), part.runs.end());
    }
    std::vector<std::pair<std::string, int>> jobs;
    for (const std::string& name : rough::LookAlikes()) {
        if (!wanted.empty() && std::find(wanted.begin(), wanted.end(), name) == wanted.end()) {
            continue;
        }
        for (int i = 0; i < seeds; ++i) {
            jobs.emplace_back(name, firstSeed + i);
        }
    }
    std::ofstream file(out, std::ios::binary);
    file << RowHeader() << '\n';
    InProcesses(
        jobs.size(), processes,
        [&](std::size_t job) {
            const auto& [name, seed] = jobs[job];
            std::vector<LoadedSet> sets;
            sets.push_back(Simulated(name, static_cast<std::uint64_t>(seed)));
            std::string lines;
            for (const Cut& cut : AllCuts(plan.cuts, sets)) {
                Scene scene = MakeScene(sets[0], cut);
                scene.source = "simulated";
                scene.cut = "seed " + std::to_string(seed) + " " + scene.cut;
                scene.block = "seed " + std::to_string(seed) + " " + scene.block;
                lines += RunScene(scene, plan.runs);
            }
            return lines;
        },
        [&](std::size_t, const std::string& lines) { file << lines << std::flush; });
    return file ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    app::PrepareHeap();
    std::vector<std::string> plans, sets;
    std::string out = "look_alikes.csv";
    int seeds = 3, firstSeed = 1, processes = 3;
    CLI::App program("Simulated look-alikes of the real data sets, solved");
    program.add_option("plans", plans, "cuts and runs")->required();
    program.add_option("--seeds", seeds, "sessions of each set");
    program.add_option("--first-seed", firstSeed, "the first of them");
    program.add_option("--sets", sets, "names of sets; all if none is given");
    program.add_option("--out", out, "the table");
    program.add_option("-j", processes, "processes");
    CLI11_PARSE(program, argc, argv);
    try {
        return Measure(plans, seeds, firstSeed, sets, out, processes);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "look_alikes: %s\n", error.what());
        return 1;
    }
}
