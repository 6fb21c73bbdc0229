// The result as one page of HTML to keep: everything inside it, nothing fetched from anywhere.
#pragma once

#include <string>

#include "solve/solve_result.h"

namespace vornel::report {

// The whole page has this room in bytes; a session of a day takes less without being thinned.
inline constexpr std::size_t kPageLimit = 1'000'000;

std::string HtmlReport(const solve::SolveResult& result);

}  // namespace vornel::report
