// Several runs of the engine on one session, each at the least cost.
//
// What the engine reads when a run starts (model, thresholds, systems, spans left out) needs no more
// than another start. Another elevation mask makes the epochs be handed over again, since the engine
// applies it then. Orbits and ionosphere coefficients stay in the engine until its process ends, so
// a series never changes them.
#pragma once

#include <optional>

#include "engine/engine.h"
#include "session/session.h"
#include "solve/feed.h"
#include "solve/outcome.h"
#include "solve/run_spec.h"

namespace vornel::solve {

class RunSeries {
  public:
    // Both must outlive the series. The session needs its observations until the last run with
    // another mask.
    RunSeries(const session::Session& session, engine::Engine& engine, FeedOptions options);

    // Hands the session over, if that was not done yet. Throws engine::Failure.
    const FeedSummary& HandOver();

    // Hands over what the engine does not have yet, and runs. Throws engine::Failure.
    RunOutcome Make(const RunSpec& spec);

    // What was handed over for the first run.
    const FeedSummary& Fed() const { return *fed_; }

  private:
    void HandOver(double elevationMask);
    engine::Config ConfigFor(const RunSpec& spec) const;

    const session::Session& session_;
    engine::Engine& engine_;
    FeedOptions options_;
    std::optional<FeedSummary> fed_;
    double maskInEngine_ = -1.0;
};

}  // namespace vornel::solve
