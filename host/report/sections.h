// The sections of the page, in the order in which they stand there. Each is HTML.
#pragma once

#include <string>

#include "report/tracks.h"

namespace vornel::report {

std::string SummarySection(const app::SolveResult& result);
std::string VectorSection(const app::SolveResult& result);
std::string StationSection(const app::SolveResult& result);
std::string ResidualSection(const app::SolveResult& result, const Timeline& timeline,
                            std::uint32_t thinning);
std::string SatelliteSection(const app::SolveResult& result, const Timeline& timeline);
std::string FixingSection(const app::SolveResult& result, const Timeline& timeline);
std::string DataSection(const app::SolveResult& result);
std::string SettingSection(const app::SolveResult& result);
std::string InputSection(const app::SolveResult& result);
std::string OriginSection(const app::SolveResult& result);

}  // namespace vornel::report
