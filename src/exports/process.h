// The two process-wide objects behind the exports.
#pragma once

#include <memory>

#include "exports/ctrl_solve.h"
#include "run/static_solve.h"

namespace vornel {

// The solver refers to lists of the control object: it goes first, always.
struct Process {
    std::unique_ptr<CTRLSolve> control;
    std::unique_ptr<StaticSolve> solver;

    void Delete() {
        solver.reset();
        control.reset();
    }
};

Process& CurrentProcess();

}  // namespace vornel
