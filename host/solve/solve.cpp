#include "solve/solve.h"

#include <chrono>
#include <utility>

#include "solve/answer_bytes.h"
#include "solve/preparation.h"

namespace vornel::solve {
namespace {

// What the engine's process sends first: whether an answer follows, or why the engine gave up.
constexpr char kAnswered = 'A', kGaveUp = 'G';

std::string AnswerInChild(session::Session& session, const SolveRequest& request,
                          const process::Progress& progress) {
    FeedOptions options;
    options.tracePath = request.tracePath;
    options.traceLevel = request.traceLevel;
    options.progress = [&](const char* what, std::size_t done, std::size_t total) {
        progress(what, done, total);
    };
    try {
        engine::Engine engine(request.engine);
        return kAnswered + ToBytes(RunChecked(session, engine, options, request.checks));
    } catch (const engine::Failure& failure) {
        return std::string(1, kGaveUp) + failure.what();
    }
}

void StopIfCancelled(const SolveRequest& request) {
    if (request.cancelled && request.cancelled()) {
        throw process::Cancelled("the solve was cancelled");
    }
}

}  // namespace

SolveResult Solve(SolveRequest request) {
    const auto begin = std::chrono::steady_clock::now();
    const auto tell = [&](const char* what) {
        if (request.progress) {
            request.progress(what, 0, 0);
        }
    };
    SolveResult result;
    StopIfCancelled(request);
    tell("reading files");
    session::Inputs inputs =
        request.inputs ? std::move(*request.inputs)
                       : session::ReadInputs(request.paths, SelectionFor(request.settings.values));
    StopIfCancelled(request);
    result.session = PrepareSession(std::move(inputs), std::move(request.settings));
    StopIfCancelled(request);

    process::ChildOptions options;
    options.progress = request.progress;
    options.cancelled = request.cancelled;
    options.timeLimit = request.timeLimit;
    // The child has its own from then on.
    options.started = [&] { ForgetObservations(result.session); };
    process::ChildAnswer answer = process::RunInChild(
        [&](const process::Progress& progress) {
            return AnswerInChild(result.session, request, progress);
        },
        options);
    if (answer.bytes.empty() || answer.bytes.front() != kAnswered) {
        throw engine::Failure(answer.bytes.empty() ? "no answer" : answer.bytes.substr(1));
    }
    static_cast<CheckedOutcome&>(result) = FromBytes(answer.bytes.substr(1));
    result.engineLines = std::move(answer.errorStream);
    result.secondsInAll =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    return result;
}

}  // namespace vornel::solve
