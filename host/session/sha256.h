// SHA-256 of input files, so that a report names exactly what it was made from.
#pragma once

#include <string>

namespace vornel::session {

// Of a file as it lies on disk, in 64 hexadecimal digits; empty when it cannot be read.
std::string FileSha256(const std::string& path);

}  // namespace vornel::session
