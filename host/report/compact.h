// Series of integers as short text, for the data in the page.
//
// An integer is written in base 64, five bits a character, the lowest first; a sixth bit tells that
// more follow. The sign is the lowest bit of the first character. (This is the variable-length
// quantity of JavaScript source maps, in an alphabet without characters that mean something in
// HTML.) Residuals of a good baseline so take one character each.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "report/tracks.h"

namespace vornel::report {

void AppendInteger(std::string& text, std::int64_t value);

// Pairs: epochs left out before the stretch (since the end of the last one), length of it.
std::string EncodedEpochs(const std::vector<std::uint32_t>& epochs);

// Pairs: distance to the next time in seconds, how often it comes in a row.
std::string EncodedTimes(const std::vector<io::GpsTime>& times);

// The object of JSON that report.js draws from. Residuals are thinned to every n-th epoch when all
// of it would take more than `limit` bytes; `thinning` tells n.
struct EncodedData {
    std::string json;
    std::uint32_t thinning = 1;
};
EncodedData EncodeData(const solve::SolveResult& result, const Timeline& timeline,
                       std::size_t limit);

}  // namespace vornel::report
