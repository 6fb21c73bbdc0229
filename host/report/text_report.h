// The answer on standard output: acceptance first, then the vector, its quality, the data, and what
// the user should know.
#pragma once

#include <string>

#include "solve/solve_result.h"

namespace vornel::report {

std::string TextReport(const solve::SolveResult& result);

}  // namespace vornel::report
