// The sections of the page, in the order in which they stand there. Each is HTML.
#pragma once

#include <string>

#include "report/tracks.h"

namespace vornel::report {

std::string SummarySection(const session::SolveResult& result);
std::string VectorSection(const session::SolveResult& result);
std::string StationSection(const session::SolveResult& result);
std::string ResidualSection(const session::SolveResult& result, const Timeline& timeline,
                            std::uint32_t thinning);
std::string SatelliteSection(const session::SolveResult& result, const Timeline& timeline);
std::string FixingSection(const session::SolveResult& result, const Timeline& timeline);
std::string DataSection(const session::SolveResult& result);
std::string SettingSection(const session::SolveResult& result);
std::string InputSection(const session::SolveResult& result);
std::string OriginSection(const session::SolveResult& result);

}  // namespace vornel::report
