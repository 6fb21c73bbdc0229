// Makes Compact RINEX of RINEX observations, so that the readers can be given twins of any file.
#pragma once

#include <string>

namespace vornel::test {

// The text of RINEX 2, 3 or 4 observations in Compact RINEX 1 or 3 (Hatanaka, 2008), with differences
// of the third order. Throws std::runtime_error for a text that it doesn't take: one with lines out
// of place.
std::string ToCompactRinex(const std::string& plain);

}  // namespace vornel::test
