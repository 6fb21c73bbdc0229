// Simulated sessions through the host and the engine.
#pragma once

#include <utility>

#include "session/session.h"
#include "simulator/simulate.h"

namespace vornel::rough {

struct Solved {
    session::Session session;
    session::RunOutcome outcome;
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
    return inputs;
}

inline Solved Solve(session::Inputs inputs, session::ConfiguredSettings settings = {}) {
    Solved solved;
    solved.session = session::PrepareSession(std::move(inputs), std::move(settings));
    session::Engine engine;
    session::Feed(solved.session, engine, {});
    solved.outcome = session::Run(solved.session, engine);
    return solved;
}

}  // namespace vornel::rough
