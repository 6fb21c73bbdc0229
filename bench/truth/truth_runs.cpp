// truth_runs PLAN... --data DIR --out FILE: solves sessions with known answers under many
// configurations and writes one line of CSV per engine run. README.md tells more.
#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "app/heap.h"
#include "engine_runs.h"
#include "plan.h"
#include "scene.h"
#include "workers.h"

namespace {

using namespace vornel::truth;

struct Options {
    std::vector<std::string> plans;
    std::string data = ".";
    std::string out;
    int processes = 3;
    std::vector<std::string> sets;
    std::vector<std::string> runs;
    std::size_t every = 1;
    bool list = false;
};

template <typename Value>
void Append(std::vector<Value>& to, const std::vector<Value>& from) {
    to.insert(to.end(), from.begin(), from.end());
}

bool Among(const std::vector<std::string>& names, const std::string& name) {
    return names.empty() || std::find(names.begin(), names.end(), name) != names.end();
}

Plan ReadPlans(const Options& options) {
    Plan plan;
    for (const std::string& path : options.plans) {
        try {
            Plan part = ParsePlan(ReadText(path));
            Append(plan.sets, part.sets);
            Append(plan.cuts, part.cuts);
            Append(plan.runs, part.runs);
        } catch (const PlanError& error) {
            throw PlanError(path + ": " + error.what());
        }
    }
    std::erase_if(plan.sets, [&](const DataSet& set) { return !Among(options.sets, set.name); });
    std::erase_if(plan.runs, [&](const RunSpec& run) { return !Among(options.runs, run.label); });
    return plan;
}

int Measure(const Options& options) {
    const Plan plan = ReadPlans(options);
    std::vector<LoadedSet> sets;
    for (const DataSet& set : plan.sets) {
        sets.push_back(Load(set, options.data));
    }
    std::vector<Cut> cuts;
    const std::vector<Cut> all = AllCuts(plan.cuts, sets);
    for (std::size_t i = 0; i < all.size(); i += options.every) {
        cuts.push_back(all[i]);
    }
    if (options.list) {
        for (const Cut& cut : cuts) {
            std::printf("%s\n", MakeScene(sets[cut.set], cut).cut.c_str());
        }
        return 0;
    }
    std::ofstream out(options.out, std::ios::binary);
    out << RowHeader() << "\n";
    const auto begin = std::chrono::steady_clock::now();
    const auto seconds = [&] {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    };
    std::size_t rows = 0;
    double told = 0.0;
    InProcesses(
        cuts.size(), options.processes,
        [&](std::size_t i) { return RunScene(MakeScene(sets[cuts[i].set], cuts[i]), plan.runs); },
        [&](std::size_t i, const std::string& text) {
            out << text;
            rows += static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
            if (seconds() - told > 10.0) {
                told = seconds();
                std::fprintf(stderr, "%zu of %zu sessions, %zu runs, %.0f s\n", i + 1, cuts.size(),
                             rows, told);
            }
        });
    out.flush();
    if (!out) {
        throw std::runtime_error(options.out + ": cannot be written");
    }
    std::fprintf(stderr, "%zu sessions, %zu runs in %.1f s: %.1f sessions and %.1f runs a second\n",
                 cuts.size(), rows, seconds(), static_cast<double>(cuts.size()) / seconds(),
                 static_cast<double>(rows) / seconds());
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Solves sessions with known answers and writes one line of CSV per engine run.");
    Options options;
    app.add_option("plans", options.plans, "JSON files with sets, cuts and runs")->required();
    app.add_option("--data", options.data, "folder of the data sets");
    app.add_option("--out", options.out, "CSV file that is written");
    app.add_option("-j,--processes", options.processes, "sessions at a time")
        ->check(CLI::Range(1, 64));
    app.add_option("--sets", options.sets, "names of the sets that are used")->delimiter(',');
    app.add_option("--runs", options.runs, "labels of the runs that are made")->delimiter(',');
    app.add_option("--every", options.every, "every so manyth session only")
        ->check(CLI::PositiveNumber);
    app.add_flag("--list", options.list, "name the sessions and stop");
    CLI11_PARSE(app, argc, argv);
    if (options.out.empty() && !options.list) {
        std::fprintf(stderr, "truth_runs: --out FILE is missing\n");
        return 2;
    }
    vornel::app::PrepareHeap();
    try {
        return Measure(options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "truth_runs: %s\n", error.what());
        return 1;
    }
}
