#include "simulation/session_run.h"

#include <cmath>
#include <stdexcept>

#include "VornelBlCore.h"
#include "exports/process.h"

namespace vornel::simulation {

int RunSession(const Session& session) {
    HandOver(session);
    int status = -1;
    if (StartProcess(&status) != 1) {
        throw std::runtime_error("an exception left the run");
    }
    return status;
}

std::unique_ptr<StaticSolve> SolverOf(const Session& session) {
    HandOver(session);
    const CTRLSolve& control = *CurrentProcess().control;
    return std::make_unique<StaticSolve>(
        control.hasGlonass, control.reservedProcessFlag, control.config, control.epochs,
        &control.delSatList, &control.trackList0, &control.trackList1, &control.trackList2,
        control.roverDualFreq, control.roverPosition, control.l1PcoRover, control.l2PcoRover,
        control.trueHeightRover, control.baseDualFreq, control.basePosition, control.l1PcoBase,
        control.l2PcoBase, control.trueHeightBase);
}

std::unique_ptr<StaticSolve> PreparedSolverOf(const Session& session) {
    std::unique_ptr<StaticSolve> solver = SolverOf(session);
    solver->SelectSolveMode();
    if (solver->CutPeriods() != VORNEL_STATUS_PERIODS_CUT ||
        solver->SelectRefSats() != VORNEL_STATUS_REFERENCES_CHOSEN) {
        throw std::runtime_error("the session has no period or no reference");
    }
    solver->roverPosition = session.rover;
    return solver;
}

double ErrorOf(const SolveResult& result, const Session& session) {
    const double x = result.dX - (session.rover.X - session.base.X);
    const double y = result.dY - (session.rover.Y - session.base.Y);
    const double z = result.dZ - (session.rover.Z - session.base.Z);
    return std::sqrt(x * x + y * y + z * z);
}

}  // namespace vornel::simulation
