// What is in a file, in words.
#pragma once

#include <string>

namespace vornel::app {

// All members of the file. Throws io::InputError.
std::string InfoReport(const std::string& path);

}  // namespace vornel::app
