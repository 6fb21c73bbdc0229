// What an answer contradicts, in itself or in the session it comes from. With any of these no answer
// is trusted, whatever its checks say.
#pragma once

#include <vector>

#include "session/session.h"
#include "solve/residual_statistics.h"
#include "solve/run_plan.h"
#include "solve/trust.h"

namespace vornel::solve {

// Facts of the session: known before any run.
std::vector<Doubt> SessionContradictions(const session::Session& session, const FeedSummary& fed);

// Facts of the answer. `residuals` are those of its solution.
std::vector<Doubt> AnswerContradictions(const SessionFacts& facts, const RunOutcome& outcome,
                                        const ResidualStatistics& residuals);

}  // namespace vornel::solve
