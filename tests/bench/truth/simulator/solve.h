// Simulated sessions through the host and the engine.
#pragma once

#include <utility>

#include "session/session.h"
#include "simulator/simulate.h"
#include "solve/feed.h"
#include "solve/outcome.h"
#include "solve/preparation.h"

namespace vornel::rough {

struct Solved {
    session::Session session;
    solve::RunOutcome outcome;
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

inline Solved Solve(session::Inputs inputs, session::ConfiguredSettings settings = {}) {
    Solved solved;
    solved.session = solve::PrepareSession(std::move(inputs), std::move(settings));
    engine::Engine engine;
    solve::Feed(solved.session, engine, {});
    solved.outcome = solve::Run(solved.session, engine);
    return solved;
}

}  // namespace vornel::rough
