// Observation types of the files as codes of RINEX 3, the one naming of the model.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "io/observations.h"

namespace vornel::io {

// A two-character type of RINEX 2 ("C1", "P2", "L1", also "CA" to "SD" of 2.12) as the code of
// RINEX 3 that comes nearest. RINEX 2 does not name the tracking mode of phases, so it follows the
// code that `fileTypes`, all types of the file, has on the same band:
//   GPS, QZSS  C1 -> C1C, P1 -> C1W, P2 -> C2W, C2 -> C2X, C5 -> C5X; L1 is L1C, but L1W when the
//              file has P1 alone; L2 is L2W, but L2X when the file has C2 alone
//   GLONASS    C1 -> C1C, P1 -> C1P, C2 -> C2C, P2 -> C2P; L1 is L1C (L1P with P1 alone), L2 is L2P
//              (L2C without P2)
//   Galileo    C1 -> C1X and so on for the bands 1, 5, 6, 7, 8
//   BeiDou     the bands 1 and 2 are both B1I, as writers used either: C2I; C6I, C7I
//   SBAS       C1 -> C1C, C5 -> C5X
// P codes are W (tracked under encryption), which is what receivers have done since 1994.
// Empty for a type that is not of RINEX 2.
std::optional<ObservationCode> CodeOfRinex2(std::string_view type, GnssSystem system,
                                            std::span<const std::string> fileTypes);

// A code of RINEX 3 and 4. B1I of BeiDou, which 3.02 calls band 1, becomes band 2 as in all other
// versions. Empty when the text is no code.
std::optional<ObservationCode> CodeOfRinex3(std::string_view type, GnssSystem system,
                                            double version);

}  // namespace vornel::io
