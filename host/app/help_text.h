// What --help prints. Options that are settings come from their table.
#pragma once

#include <string>

namespace vornel::app {

std::string GeneralHelp();

// `all`: the fine tuning too.
std::string CommandHelp(const std::string& command, bool all);

}  // namespace vornel::app
