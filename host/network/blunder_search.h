// Looks for blunders, one a round.
#pragma once

#include <vector>

#include "network/adjustment.h"
#include "network/graph.h"
#include "network/model.h"

namespace vornel::network {

struct SearchResult {
    State state;  // what keeps its weight
    std::vector<Round> rounds;
    SearchEnd end = SearchEnd::kNotAsked;
    GlobalTest all;  // before the first round
};

// From `state` on, with one station of each part held. With AdjustmentOptions::removeBlunders false it
// only makes the global test.
SearchResult SearchBlunders(const Network& network, const Graph& graph,
                            const AdjustmentOptions& options, const State& state,
                            std::size_t heldStation);

}  // namespace vornel::network
