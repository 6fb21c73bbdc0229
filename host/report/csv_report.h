// The residuals as a table for spreadsheets.
#pragma once

#include <string>

#include "solve/solve_result.h"

namespace vornel::report {

// One line for each double-difference residual of each float and fixed solution, under the heading
//   solution,model,block,satellite,gps_week,gps_seconds,gps_time,residual_mm
// `block` is 1, or 2 for the second frequency of model 3.
std::string CsvReport(const solve::SolveResult& result);

}  // namespace vornel::report
