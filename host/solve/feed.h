// A session handed over to the engine.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "session/session.h"

namespace vornel::solve {

// Told while work goes on; `total` 0 when it is not known.
using Progress = std::function<void(const char* what, std::size_t done, std::size_t total)>;

struct FeedOptions {
    std::string tracePath;  // empty: no trace
    int traceLevel = 4;
    Progress progress;  // may be empty
    // False: the engine has the orbits and the ionosphere of this session from an earlier feed.
    bool orbits = true;
};

struct SystemFeed {
    std::size_t epochs = 0;  // with at least one common satellite
    std::size_t satellites = 0;
};

struct FeedSummary {
    std::size_t epochs = 0;
    std::vector<io::GpsTime> times;  // of the epochs, as the engine counts them
    std::array<SystemFeed, engine::kSystemCount> systems{};
    // Indices of the epochs at which both receivers observed a satellite.
    std::map<engine::Satellite, std::vector<std::uint32_t>> common;
    std::set<engine::Satellite> noSlot;  // left out somewhere because the epoch has no slot left
    session::ValueLosses roverLosses;
    session::ValueLosses baseLosses;
};

// Creates the process and hands everything over, in the order that VornelBlCore.h asks for:
// configuration, stations, ionosphere, broadcast and precise orbits, epochs, exclusions.
// `config` is the configuration that the epochs are handed over with; the session's, if not given.
FeedSummary Feed(const session::Session& session, const engine::Config& config,
                 engine::Engine& engine, const FeedOptions& options);
FeedSummary Feed(const session::Session& session, engine::Engine& engine,
                 const FeedOptions& options);

// Replaces what the engine leaves out of a run: what the session excludes, and `spans` of every
// satellite that was handed over.
void LeaveOut(const session::Session& session, const FeedSummary& fed,
              const std::vector<engine::Span>& spans, engine::Engine& engine);

}  // namespace vornel::solve
