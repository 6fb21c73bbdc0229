// The runs behind one answer: the main one, the next best where that one gives no integers, and the
// checks, made one after another until enough of them agree or none can help any more.
#pragma once

#include <string>
#include <vector>

#include "solve/contradictions.h"
#include "solve/run_series.h"

namespace vornel::solve {

struct CheckedOutcome {
    FeedSummary fed;
    RunOutcome outcome;  // of the run that stands for the answer
    RunSpec spec;        // its configuration
    AnswerKind kind = AnswerKind::kShort;
    Grade grade = Grade::kNone;
    std::vector<Doubt> doubts;      // why it is not trusted; empty when it is
    std::vector<RunRecord> tried;   // the main run, and the next best where it was tried
    std::vector<RunRecord> checks;  // in the order made
    ResidualStatistics residuals;   // of the answer
};

// `checks` false: the main run and the next best alone; the grade is doubtful at most. The session's
// observations are freed once no run needs them any more.
// Throws engine::Failure.
CheckedOutcome RunChecked(session::Session& session, engine::Engine& engine,
                          const FeedOptions& options, bool checks);

// Frees the observations of both receivers; their epochs stay, without satellites.
void ForgetObservations(session::Session& session);

}  // namespace vornel::solve
