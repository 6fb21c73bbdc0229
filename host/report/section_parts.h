// Pieces that the sections of the page are made of. Not for other use.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "solve/solve_result.h"

namespace vornel::report {

inline constexpr double kToMm = 1000.0;
inline constexpr const char* kNone = "\xE2\x80\x93";  // a dash where a table has nothing to say

std::string Section(const char* id, const char* heading, const std::string& content);
std::string Heading(std::string_view text);

// "0.0012", in metres to a tenth of a millimetre.
std::string Metres(double value);
// "1.2" of 0.0012 m.
std::string Millimetres(double metres);
// "50 %"; a dash of nothing.
std::string Percent(std::size_t part, std::size_t whole);

// Names and values side by side; those without value are left out.
std::string Pairs(const std::vector<std::pair<std::string, std::string>>& entries);

// The float solution of a model; null for none.
const engine::Solution* FloatOf(const solve::SolveResult& result, int mode);

}  // namespace vornel::report
