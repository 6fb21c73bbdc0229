// The machine-readable answer. docs/json-schema.md tells every field.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "solve/solve_result.h"

namespace vornel::report {

// Raised in its first number when a field changes its meaning or goes, in its second when one is
// added.
inline constexpr const char* kJsonSchema = "vornel-solve/1.1";

nlohmann::ordered_json JsonReport(const solve::SolveResult& result);

// With a line break at the end.
std::string JsonText(const nlohmann::ordered_json& json);

}  // namespace vornel::report
