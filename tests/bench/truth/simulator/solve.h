// Simulated sessions through the host and the engine.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <utility>

#include "session/session.h"
#include "simulator/simulate.h"
#include "solve/feed.h"
#include "solve/outcome.h"
#include "solve/preparation.h"

namespace vornel::rough {

// What a run gave. Without a solution `any` is false.
struct Answer {
    bool completed = false;
    bool any = false;
    solve::Acceptance acceptance{};
    Vector3 vector{};  // m, earth-fixed
};

inline session::Inputs InputsOf(const SimulatedSession& simulated, std::size_t base,
                                std::size_t rover) {
    session::Inputs inputs;
    inputs.base = simulated.stations[base].observations;
    inputs.rover = simulated.stations[rover].observations;
    inputs.navigation = {simulated.navigation};
    if (simulated.preciseOrbits) {
        inputs.orbits = {*simulated.preciseOrbits};
    }
    if (simulated.antennas) {
        inputs.antennas = {*simulated.antennas};
    }
    return inputs;
}

// In a process of its own: the engine keeps the orbits of earlier sessions as long as a process lives.
inline Answer Solve(session::Inputs inputs, session::ConfiguredSettings settings = {}) {
    int ends[2];
    if (pipe(ends) != 0) {
        return {};
    }
    const pid_t child = fork();
    if (child == 0) {
        Answer answer;
        try {
            const session::Session prepared =
                solve::PrepareSession(std::move(inputs), std::move(settings));
            engine::Engine engine;
            solve::Feed(prepared, engine, {});
            const solve::RunOutcome outcome = solve::Run(prepared, engine);
            answer.completed = outcome.completed;
            answer.acceptance = outcome.acceptance;
            if (const auto* best = outcome.Best()) {
                answer.any = true;
                answer.vector = best->vector;
            }
        } catch (const std::exception&) {
            answer = {};
        }
        const bool written = write(ends[1], &answer, sizeof answer) == sizeof answer;
        _exit(written ? 0 : 1);
    }
    close(ends[1]);
    Answer answer;
    if (read(ends[0], &answer, sizeof answer) != sizeof answer) {
        answer = {};
    }
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return answer;
}

}  // namespace vornel::rough
