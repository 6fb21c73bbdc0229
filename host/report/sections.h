// The sections of the page, in the order in which they stand there. Each is HTML.
#pragma once

#include <string>

#include "report/tracks.h"

namespace vornel::report {

std::string SummarySection(const solve::SolveResult& result);
std::string VectorSection(const solve::SolveResult& result);
std::string StationSection(const solve::SolveResult& result);
std::string ResidualSection(const solve::SolveResult& result, const Timeline& timeline,
                            std::uint32_t thinning);
std::string SatelliteSection(const solve::SolveResult& result, const Timeline& timeline);
std::string FixingSection(const solve::SolveResult& result, const Timeline& timeline);
std::string DataSection(const solve::SolveResult& result);
std::string SettingSection(const solve::SolveResult& result);
std::string InputSection(const solve::SolveResult& result);
std::string OriginSection(const solve::SolveResult& result);

}  // namespace vornel::report
