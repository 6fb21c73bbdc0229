// Which epochs of two receivers belong together, and what of an epoch is handed to the engine.
#pragma once

#include <cstddef>
#include <set>
#include <vector>

#include "engine/engine.h"
#include "io/observations.h"
#include "session/signals.h"

namespace vornel::session {

inline constexpr double kPairingTolerance = 0.1;  // s between the tags of the two receivers

struct EpochPair {
    std::size_t rover = 0;  // index in the epochs of each receiver
    std::size_t base = 0;
};

struct EpochPairs {
    std::vector<EpochPair> pairs;  // in time order
    std::size_t roverOnly = 0;     // epochs without a partner
    std::size_t baseOnly = 0;
    std::size_t moving = 0;       // of either receiver, while the antenna was being moved
    std::size_t outOfOrder = 0;   // not after the epoch before them
    std::size_t sameSecond = 0;   // pairs that share a whole second with the one before
    std::size_t acrossWeeks = 0;  // pairs whose tags lie in two weeks
};

// Takes out the epochs whose time no calendar has; answers how many.
std::size_t DropUntimed(io::Observations& observations);

// Pairs the epochs whose tags differ by at most kPairingTolerance, each with its nearest. An epoch
// whose antenna was moving, and one that does not come after the one before it, is left out. The
// engine keeps time in whole seconds and takes the week of the base, so of several pairs in one
// second the first stands, and a pair whose tags lie on two sides of a week's end is left out.
EpochPairs PairEpochs(const io::Observations& rover, const io::Observations& base);

// The time the engine gives a pair: the mean of the tags, rounded to the second.
io::GpsTime EngineTime(const io::GpsTime& rover, const io::GpsTime& base);

// One receiver's slots, of at most VORNEL_EPOCH_SLOTS satellites. Those in `common` come first. Names of satellites
// that found no place are put into `leftOut`.
engine::ReceiverEpoch FillSlots(const io::GpsTime& time, const std::vector<SignalValues>& values,
                                const std::vector<engine::Satellite>& common,
                                std::set<engine::Satellite>& leftOut);

// The satellites in both lists. These and what is given are in the order of satellites.
std::vector<engine::Satellite> CommonSatellites(const std::vector<SignalValues>& rover,
                                                const std::vector<SignalValues>& base);

// The most frequent distance of consecutive pairs in seconds, to 0.1 s; 0 with fewer than two.
double IntervalOf(const io::Observations& rover, const std::vector<EpochPair>& pairs);

}  // namespace vornel::session
