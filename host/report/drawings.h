// The drawings that need no script: the sky over the base, and satellites and ambiguity tracks over
// time, as SVG. Systems differ in colour and in line or label, so that either will do.
#pragma once

#include <string>

#include "report/tracks.h"

namespace vornel::report {

// North up, east right, zenith in the middle, the circles at 0, 30 and 60 degrees of elevation.
std::string SkyPlot(const solve::SolveResult& result, const Sky& sky);

// One row for each satellite that both receivers observed: a line where they did, a bar for each
// ambiguity track, a hatched bar where it is the reference, marks where a track broke.
std::string TrackPlot(const solve::SolveResult& result, const Timeline& timeline);

// "10:15:30", with the date in front when the session has several.
std::string ClockTime(const solve::SolveResult& result, std::uint32_t epoch);

}  // namespace vornel::report
