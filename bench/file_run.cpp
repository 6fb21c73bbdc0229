// file_run BASE ROVER FILE...: one solve from files, phase by phase, as a line of JSON: processor
// seconds of reading, of input (session and hand-over), of the run and of the reports, peak memory.
#include <cstdio>
#include <string>
#include <utility>

#include "app/heap.h"
#include "measure.h"
#include "report/json_report.h"
#include "report/text_report.h"
#include "solve/feed.h"
#include "solve/outcome.h"
#include "solve/preparation.h"
#include "solve/preparation.h"
#include "solve/solve_result.h"

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: file_run BASE ROVER FILE...\n");
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
    session::Inputs inputs = session::ReadInputs(paths, solve::SelectionFor(settings.values));
    const double read = bench::ProcessorSeconds();
    solve::SolveResult result;
    result.session = solve::PrepareSession(std::move(inputs), std::move(settings));
    double handedOver = 0.0;
    {
        engine::Engine engine;
        result.fed = solve::Feed(result.session, engine, {});
        result.session.inputs.rover.ForgetSatellites();
        result.session.inputs.base.ForgetSatellites();
        handedOver = bench::ProcessorSeconds();
        result.outcome = solve::Run(result.session, engine);
    }
    const double done = bench::ProcessorSeconds();
    const std::string text = report::TextReport(result);
    const std::string json = report::JsonText(report::JsonReport(result));
    const double reported = bench::ProcessorSeconds();
    std::printf(
        "{\"epochs\": %zu, \"read_s\": %.4f, \"input_s\": %.4f, \"run_s\": %.4f, \"report_s\": "
        "%.4f, "
        "\"peak_kb\": %ld, \"status\": %d, \"bytes_reported\": %zu}\n",
        result.fed.epochs, read - start, handedOver - read, done - handedOver, reported - done,
        bench::MemoryKb("VmHWM"), result.outcome.results.status, text.size() + json.size());
    return result.outcome.completed ? 0 : 1;
}
