#include "network/blunder_search.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "network/held_network.h"

namespace vornel::network {
namespace {

using Indices = std::vector<std::size_t>;

struct Candidate {
    Suspect suspect;
    BlunderTest test;
    double excess = 0.0;
};

// All that can be tested, the most suspect first; of equals, vectors first.
std::vector<Candidate> Candidates(const HeldNetwork& held, const State& state) {
    std::vector<Candidate> candidates;
    const auto add = [&](const Suspect& suspect, const BlunderTest& test) {
        if (test.dof > 0) {
            candidates.push_back({suspect, test, held.tester().Excess(test)});
        }
    };
    for (std::size_t v = 0; v < state.isUsed.size(); ++v) {
        if (state.isUsed[v]) {
            add({v, kNone, {}}, held.TestVector(v));
        }
    }
    for (const Occupation& occupation : held.Shared()) {
        add({kNone, occupation.station, occupation.session}, held.TestOccupation(occupation));
    }
    // Those that only rounding tells apart keep their order.
    for (Candidate& candidate : candidates) {
        candidate.excess = std::round(candidate.excess * 1e6) * 1e-6;
    }
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const Candidate& a, const Candidate& b) { return a.excess > b.excess; });
    return candidates;
}

class Search {
  public:
    Search(SearchResult& result, const State& before) : result_(result), before_(before) {}

    // One round. False when nothing is left to do.
    bool Step(const HeldNetwork& held, double largestShare) {
        if (!RemoveOne(held)) {
            return PutBackOne(held);
        }
        const auto count = std::count(before_.isUsed.begin(), before_.isUsed.end(), true);
        const auto most =
            static_cast<std::size_t>(std::ceil(largestShare * static_cast<double>(count)));
        if (removed_.size() + result_.state.apart.size() > most) {
            result_.end = SearchEnd::kGivenUp;
            result_.state = before_;
            return false;
        }
        return true;
    }

  private:
    bool RemoveOne(const HeldNetwork& held) {
        const std::vector<Candidate> candidates = Candidates(held, result_.state);
        if (candidates.empty() || !candidates.front().test.isSuspect) {
            return false;
        }
        const Candidate& first = candidates.front();
        Round round;
        round.suspect = first.suspect;
        round.test = first.test;
        round.global = held.global();
        constexpr double kNotTold = 4.0;
        for (std::size_t i = 1; i < candidates.size(); ++i) {
            if (first.test.statistic - candidates[i].test.statistic < kNotTold) {
                round.alternatives.push_back(candidates[i].suspect);
            }
        }
        if (first.suspect.vector != kNone) {
            round.action = RoundAction::kVectorRemoved;
            result_.state.isUsed[first.suspect.vector] = false;
            removed_.push_back(first.suspect.vector);
        } else {
            round.action = RoundAction::kOccupationSetApart;
            result_.state.apart.insert({first.suspect.station, first.suspect.session});
        }
        result_.rounds.push_back(std::move(round));
        return true;
    }

    // The removed vector that fits best, when it is no longer suspect.
    bool PutBackOne(const HeldNetwork& held) {
        Round round;
        for (const std::size_t v : removed_) {
            if (std::find(putBack_.begin(), putBack_.end(), v) != putBack_.end()) {
                continue;
            }
            const BlunderTest test = held.TestMisfit(v, held.MisfitOf(v));
            if (test.dof > 0 && !test.isSuspect &&
                (round.suspect.vector == kNone || test.statistic < round.test.statistic)) {
                round.suspect.vector = v;
                round.test = test;
            }
        }
        const std::size_t best = round.suspect.vector;
        if (best == kNone) {
            return false;
        }
        round.action = RoundAction::kVectorPutBack;
        round.global = held.global();
        result_.rounds.push_back(round);
        result_.state.isUsed[best] = true;
        putBack_.push_back(best);
        std::erase(removed_, best);
        return true;
    }

    SearchResult& result_;
    const State& before_;
    Indices removed_, putBack_;
};

}  // namespace

SearchResult SearchBlunders(const Network& network, const Graph& graph,
                            const AdjustmentOptions& options, const State& state,
                            std::size_t heldStation) {
    SearchResult result;
    result.state = state;
    Search search(result, state);
    for (bool isFirst = true;; isFirst = false) {
        const HeldNetwork held(network, graph, options, result.state, Datum::kMinimal, heldStation);
        if (isFirst) {
            result.all = held.global();
            result.end = options.removeBlunders ? SearchEnd::kNothingLeft : SearchEnd::kNotAsked;
        }
        if (!options.removeBlunders || !search.Step(held, options.largestShareRemoved)) {
            return result;
        }
    }
}

}  // namespace vornel::network
