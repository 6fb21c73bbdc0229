// file_run [--checks] BASE ROVER FILE...: one solve from files, without check runs unless they are
// asked for, as a line of JSON: processor seconds of reading, of input (session and hand-over), of the
// runs and of the reports; peak memory of both processes.
#include <cstdio>
#include <string>
#include <utility>

#include "app/heap.h"
#include "measure.h"
#include "report/json_report.h"
#include "report/text_report.h"
#include "solve/preparation.h"
#include "solve/solve.h"

int main(int argc, char** argv) {
    const bool checks = argc > 1 && std::string(argv[1]) == "--checks";
    if (checks) {
        --argc;
        ++argv;
    }
    if (argc < 3) {
        std::fprintf(stderr, "usage: file_run [--checks] BASE ROVER FILE...\n");
        return 2;
    }
    using namespace vornel;
    app::PrepareHeap();
    session::InputPaths paths;
    paths.base = {argv[1]};
    paths.rover = {argv[2]};
    paths.others.assign(argv + 3, argv + argc);
    session::ConfiguredSettings settings;

    const double start = bench::ProcessorSeconds();
    solve::SolveRequest request;
    request.inputs = session::ReadInputs(paths, solve::SelectionFor(settings.values));
    request.settings = std::move(settings);
    request.checks = checks;
    const double read = bench::ProcessorSeconds();
    const solve::SolveResult result = solve::Solve(std::move(request));
    double run = 0.0;  // in the engine, of all runs
    for (const auto* records : {&result.tried, &result.checks}) {
        for (const solve::RunRecord& record : *records) {
            run += record.seconds;
        }
    }
    const double engine = bench::ProcessorSecondsOfChildren();
    const double done = bench::ProcessorSeconds();
    const std::string text = report::TextReport(result);
    const std::string json = report::JsonText(report::JsonReport(result));
    const double reported = bench::ProcessorSeconds();
    std::printf(
        "{\"epochs\": %zu, \"read_s\": %.4f, \"input_s\": %.4f, \"run_s\": %.4f, \"report_s\": "
        "%.4f, "
        "\"peak_kb\": %ld, \"status\": %d, \"bytes_reported\": %zu}\n",
        result.fed.epochs, read - start, done - read + engine - run, run, reported - done,
        bench::MemoryKb("VmHWM") + bench::PeakKbOfChildren(), result.outcome.results.status, text.size() + json.size());
    return result.outcome.completed ? 0 : 1;
}
