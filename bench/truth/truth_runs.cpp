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
#include "simulated.h"
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
    std::uint64_t firstSeed = 1;
    std::uint64_t seeds = 100;
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
            Append(plan.kinds, part.kinds);
            Append(plan.runs, part.runs);
        } catch (const PlanError& error) {
            throw PlanError(path + ": " + error.what());
        }
    }
    std::erase_if(plan.sets, [&](const DataSet& set) { return !Among(options.sets, set.name); });
    std::erase_if(plan.kinds,
                  [&](const Kind& kind) { return !Among(options.sets, kind.bounds.name); });
    std::erase_if(plan.runs, [&](const RunSpec& run) { return !Among(options.runs, run.label); });
    return plan;
}

// All sessions of a plan: those cut out of the sets, then those of each kind and seed.
class Sessions {
  public:
    Sessions(const Plan& plan, const Options& options) : plan_(plan), options_(options) {
        for (const DataSet& set : plan.sets) {
            sets_.push_back(Load(set, options.data));
        }
        cuts_ = AllCuts(plan.cuts, sets_);
        const std::size_t all = cuts_.size() + plan.kinds.size() * options.seeds;
        for (std::size_t i = 0; i < all; i += options.every) {
            chosen_.push_back(i);
        }
    }

    std::size_t Count() const { return chosen_.size(); }

    Scene Make(std::size_t number) const {
        const std::size_t i = chosen_[number];
        if (i < cuts_.size()) {
            return MakeScene(sets_[cuts_[i].set], cuts_[i]);
        }
        const std::size_t drawn = i - cuts_.size();
        return SimulatedScene(plan_.kinds[drawn / options_.seeds],
                              options_.firstSeed + drawn % options_.seeds);
    }

  private:
    const Plan& plan_;
    const Options& options_;
    std::vector<LoadedSet> sets_;
    std::vector<Cut> cuts_;
    std::vector<std::size_t> chosen_;
};

int Measure(const Options& options) {
    const Plan plan = ReadPlans(options);
    const Sessions sessions(plan, options);
    if (options.list) {
        for (std::size_t i = 0; i < sessions.Count(); ++i) {
            std::printf("%s\n", sessions.Make(i).cut.c_str());
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
        sessions.Count(), options.processes,
        [&](std::size_t i) { return RunScene(sessions.Make(i), plan.runs); },
        [&](std::size_t i, const std::string& text) {
            out << text;
            rows += static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
            if (seconds() - told > 10.0) {
                told = seconds();
                std::fprintf(stderr, "%zu of %zu sessions, %zu runs, %.0f s\n", i + 1,
                             sessions.Count(), rows, told);
            }
        });
    out.flush();
    if (!out) {
        throw std::runtime_error(options.out + ": cannot be written");
    }
    std::fprintf(stderr, "%zu sessions, %zu runs in %.1f s: %.1f sessions and %.1f runs a second\n",
                 sessions.Count(), rows, seconds(),
                 static_cast<double>(sessions.Count()) / seconds(),
                 static_cast<double>(rows) / seconds());
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Solves sessions with known answers and writes one line of CSV per engine run.");
    Options options;
    app.add_option("plans", options.plans, "JSON files with sets, cuts, kinds and runs")
        ->required();
    app.add_option("--data", options.data, "folder of the data sets");
    app.add_option("--out", options.out, "CSV file that is written");
    app.add_option("-j,--processes", options.processes, "sessions at a time")
        ->check(CLI::Range(1, 64));
    app.add_option("--sets", options.sets, "names of the sets and kinds that are used")
        ->delimiter(',');
    app.add_option("--runs", options.runs, "labels of the runs that are made")->delimiter(',');
    app.add_option("--every", options.every, "every so manyth session only")
        ->check(CLI::PositiveNumber);
    app.add_option("--first-seed", options.firstSeed, "of the simulated sessions");
    app.add_option("--seeds", options.seeds, "simulated sessions of each kind")
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
