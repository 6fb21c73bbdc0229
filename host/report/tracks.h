// What can be told of the engine's periods, reference satellites and breaks of ambiguity tracks.
//
// The engine's queries name none of them. They follow from what it does tell:
//   - a period is a stretch of at least the configured length, and no ambiguity track crosses its
//     end;
//   - the reference satellite of a system has neither residuals nor ambiguities in its period, but
//     was observed at every epoch at which the system has residuals. Where several satellites are
//     like that (the engine may have dropped one), the highest is the likeliest;
//   - a second track of a satellite in a period begins where its phase was not continuous.
// All of it is labelled in the page as derived.
#pragma once

#include <array>
#include <map>
#include <vector>

#include "solve/sky.h"
#include "solve/solve_result.h"

namespace vornel::report {

using engine::Satellite;

// Indices of epochs handed over, both inside.
struct Span {
    std::uint32_t first = 0;
    std::uint32_t last = 0;

    bool Holds(std::uint32_t epoch) const { return first <= epoch && epoch <= last; }
    friend bool operator==(const Span&, const Span&) = default;
};

// Ascending epochs as stretches; two stretches with at most `bridge` missing epochs between them
// are one.
std::vector<Span> Stretches(const std::vector<std::uint32_t>& epochs, std::uint32_t bridge);

enum class TrackStart {
    kFirst,  // the first of the satellite in its period
    kGap,    // follows one, and the observations between the two are interrupted
    kSlip    // follows one without an interruption
};

struct Track {
    engine::Satellite satellite;
    Span epochs;
    TrackStart start = TrackStart::kFirst;
    std::size_t period = 0;
    engine::Ambiguity ambiguity;
    // Of the same track in the float solution of the same model; absent where it has none.
    std::optional<engine::Ambiguity> floating;
};

struct Period {
    Span epochs;
    // Satellites that can be the reference, by system, the likeliest first. One: it is the one.
    // None: no residuals, or not known.
    std::array<std::vector<engine::Satellite>, engine::kSystemCount> references;
};

// Of one satellite and frequency block, by epoch.
struct Residuals {
    engine::Satellite satellite;
    int block = 0;
    std::vector<std::uint32_t> epochs;  // ascending
    std::vector<int> millimetres;
};

using Sky = std::map<engine::Satellite, std::vector<solve::SkyPoint>>;

struct Timeline {
    std::vector<Period> periods;
    std::vector<Track> tracks;         // by satellite, then epoch
    std::vector<Residuals> residuals;  // by satellite, then block
    std::size_t unplaced = 0;          // residuals whose time is that of no epoch
    Sky sky;
};

// Of the accepted solution. Empty but for the sky when there is none with ambiguities.
Timeline MakeTimeline(const solve::SolveResult& result);

// The parts of it.
std::vector<Span> DerivedPeriods(const std::vector<io::GpsTime>& times, double length,
                                 std::size_t minEpochs,
                                 const std::vector<engine::Ambiguity>& ambiguities);

}  // namespace vornel::report
