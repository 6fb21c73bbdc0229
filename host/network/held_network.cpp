#include "network/held_network.h"

#include <Eigen/LU>
#include <algorithm>
#include <limits>
#include <string>

#include "network/dense.h"
#include "network/statistics.h"

namespace vornel::network {
namespace {

using Indices = std::vector<std::size_t>;

}  // namespace

// An observed difference in a group, and with which sign the group's shift enters it.
struct HeldNetwork::Member {
    std::size_t difference = kNone;
    double sign = 1.0;
};

BlunderTest Untested() {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    BlunderTest test;
    test.sigmaNeu = test.detectableNeu = {kInfinity, kInfinity, kInfinity};
    test.detectable = kInfinity;
    return test;
}

HeldNetwork::HeldNetwork(const Network& network, const Graph& graph,
                         const AdjustmentOptions& options, const State& state, Datum datum,
                         std::size_t heldStation)
    : network_(network),
      graph_(graph),
      options_(options),
      state_(state),
      heldStation_(heldStation),
      model_(MakeModel(network, graph, options.added, state)) {
    ListParts();
    Solve(datum);
    SumUp();
}

// Parts whose known positions turn out too weak are held by a station in the next pass.
void HeldNetwork::Solve(Datum datum) {
    const std::vector<Difference> observations = model_.differences;
    std::set<std::size_t> weak;
    do {
        model_.differences = observations;
        PlaceDatum(datum, weak);
        equations_ = std::make_shared<LeastSquares>(isHeld_, model_.differences);
    } while (equations_->undetermined() != kNone && SetWeak(weak));
}

bool HeldNetwork::SetWeak(std::set<std::size_t>& weak) const {
    const std::size_t node = equations_->undetermined();
    const std::size_t component = model_.component[node];
    if (parts_[component].datum == PartDatum::kKnownPositions && weak.insert(component).second) {
        return true;
    }
    throw NetworkError("the position of station " + network_.stations[model_.stationOf[node]].name +
                       " is lost in rounding: the standard deviations of the vectors differ "
                       "too much");
}

void HeldNetwork::ListParts() {
    parts_.clear();
    for (std::size_t s = 0; s < network_.stations.size(); ++s) {
        parts_.resize(std::max(parts_.size(), model_.component[s] + 1));
        parts_[model_.component[s]].stations.push_back(s);
    }
    for (std::size_t v = 0; v < network_.vectors.size(); ++v) {
        if (state_.isUsed[v]) {
            ++parts_[model_.component[graph_.ends[v].base]].vectors;
        }
    }
}

void HeldNetwork::PlaceDatum(Datum datum, const std::set<std::size_t>& weak) {
    isHeld_.assign(model_.stationOf.size(), false);
    model_.ofKnown.assign(network_.stations.size(), kNone);
    for (std::size_t c = 0; c < parts_.size(); ++c) {
        ComponentResult& part = parts_[c];
        part.heldStation = kNone;
        part.note.clear();
        const std::string& first = network_.stations[part.stations.front()].name;
        const bool isWeak = weak.count(c) > 0;
        if (part.vectors > 0 && datum == Datum::kKnown && !isWeak && HoldToKnown(part.stations)) {
            part.datum = PartDatum::kKnownPositions;
            continue;
        }
        part.heldStation = StationToHold(part.stations);
        isHeld_[part.heldStation] = true;
        if (part.vectors == 0) {
            part.datum = PartDatum::kNoVector;
            part.note = "station " + first + ": no vector leads to it";
        } else if (datum != Datum::kKnown) {
            part.datum =
                datum == Datum::kFree ? PartDatum::kInnerConstraints : PartDatum::kHeldStation;
        } else {
            part.datum = isWeak ? PartDatum::kKnownPositionsTooWeak : PartDatum::kNoKnownPosition;
            part.note = "the " + std::to_string(part.stations.size()) + " stations joined to " +
                        first +
                        (isWeak ? ": the known positions are too inaccurate to hold them; "
                                : ": no station with a known position; ") +
                        network_.stations[part.heldStation].name + " is held";
        }
    }
}

// False where none of the stations has a known position.
bool HeldNetwork::HoldToKnown(const Indices& stations) {
    bool isAny = false;
    for (const std::size_t s : stations) {
        const auto& known = network_.stations[s].known;
        if (!known) {
            continue;
        }
        isAny = true;
        if (known->isFixed) {
            isHeld_[s] = true;
            continue;
        }
        Difference difference;
        difference.from = kNone;
        difference.to = s;
        difference.covariance = ToEigen(known->covariance);
        model_.ofKnown[s] = model_.differences.size();
        model_.differences.push_back(difference);
    }
    return isAny;
}

// The one that was asked for; one whose position is known; the first.
std::size_t HeldNetwork::StationToHold(const Indices& stations) const {
    if (std::find(stations.begin(), stations.end(), heldStation_) != stations.end()) {
        return heldStation_;
    }
    const auto first = [&](auto isGood) {
        return std::find_if(stations.begin(), stations.end(), [&](std::size_t s) {
            return network_.stations[s].known && isGood(*network_.stations[s].known);
        });
    };
    auto found = first([](const KnownPosition& known) { return known.isFixed; });
    if (found == stations.end()) {
        found = first([](const KnownPosition&) { return true; });
    }
    return found == stations.end() ? stations.front() : *found;
}

void HeldNetwork::SumUp() {
    std::vector<double> sum(parts_.size());
    std::vector<int> dof(parts_.size());
    for (std::size_t d = 0; d < model_.differences.size(); ++d) {
        const std::size_t c = model_.component[model_.differences[d].to];
        sum[c] += equations_->SumOfSquares(d);
        dof[c] += 3;
    }
    for (std::size_t node = 0; node < isHeld_.size(); ++node) {
        dof[model_.component[node]] -= isHeld_[node] ? 0 : 3;
    }
    double sumOfAll = 0.0;
    int dofOfAll = 0;
    for (std::size_t c = 0; c < parts_.size(); ++c) {
        parts_[c].global = TestSum(sum[c], dof[c], options_.globalLevel);
        sumOfAll += sum[c];
        dofOfAll += dof[c];
    }
    global_ = TestSum(sumOfAll, dofOfAll, options_.globalLevel);
    const auto count = std::count(state_.isUsed.begin(), state_.isUsed.end(), true);
    const auto tests = static_cast<int>(count) + static_cast<int>(Shared().size());
    level_ = std::min(options_.blunderLevel,
                      LevelOfEach(options_.blunderFamilyLevel, std::max(1, tests)));
    tester_.emplace(options_, level_, global_);
}

std::vector<Occupation> HeldNetwork::Shared() const {
    std::vector<Occupation> shared;
    for (const auto& [occupation, vectors] : model_.occupations) {
        if (vectors.size() > 1 && state_.apart.count(occupation) == 0) {
            shared.push_back(occupation);
        }
    }
    return shared;
}

BlunderTest HeldNetwork::TestVector(std::size_t v) const {
    const std::size_t d = model_.ofVector[v];
    const Difference& difference = model_.differences[d];
    return tester_->Test(ProbeOfOne(d), model_.given[model_.stationOf[difference.from]]);
}

Probe HeldNetwork::ProbeOfOne(std::size_t d) const {
    const Difference& difference = equations_->differences()[d];
    Probe probe;
    probe.weight = difference.weight;
    probe.force = probe.weight * equations_->Residual(d);
    probe.information = probe.weight - probe.weight * AdjustedCovariance(difference) * probe.weight;
    return probe;
}

// Of the adjusted difference (m^2).
Eigen::Matrix3d HeldNetwork::AdjustedCovariance(const Difference& difference) const {
    Eigen::Matrix3d covariance = equations_->JoinedCovariance(difference.to, difference.to);
    if (difference.from != kNone) {
        const Eigen::Matrix3d both = equations_->JoinedCovariance(difference.from, difference.to);
        covariance += equations_->JoinedCovariance(difference.from, difference.from) - both -
                      both.transpose();
    }
    return covariance;
}

Probe HeldNetwork::ProbeOfGroup(const std::vector<Member>& members) const {
    Probe probe;
    Block columns = Block::Zero(static_cast<Eigen::Index>(equations_->unknowns()), 3);
    for (const Member& member : members) {
        const Difference& difference = equations_->differences()[member.difference];
        probe.weight += difference.weight;
        probe.force += member.sign * (difference.weight * equations_->Residual(member.difference));
        const auto add = [&](std::size_t node, double sign) {
            if (node != kNone && equations_->RowOf(node) >= 0) {
                columns.middleRows<3>(equations_->RowOf(node)) += sign * difference.weight;
            }
        };
        add(difference.to, member.sign);
        add(difference.from, -member.sign);
    }
    probe.information = probe.weight - columns.transpose() * equations_->Solve(columns);
    return probe;
}

BlunderTest HeldNetwork::TestOccupation(const Occupation& occupation) const {
    std::vector<Member> members;
    for (const std::size_t v : model_.occupations.at(occupation)) {
        const bool isRover = graph_.ends[v].rover == occupation.station;
        members.push_back({model_.ofVector[v], isRover ? 1.0 : -1.0});
    }
    return tester_->Test(ProbeOfGroup(members), model_.given[occupation.station]);
}

// A fixed position is tested by what leads to it: all that would move with it.
BlunderTest HeldNetwork::TestKnown(std::size_t station) const {
    const Vector3& place = model_.given[station];
    if (model_.ofKnown[station] != kNone) {
        return tester_->Test(ProbeOfOne(model_.ofKnown[station]), place);
    }
    std::vector<Member> members;
    for (std::size_t d = 0; d < model_.differences.size(); ++d) {
        if (model_.differences[d].to == station) {
            members.push_back({d, -1.0});
        } else if (model_.differences[d].from == station) {
            members.push_back({d, 1.0});
        }
    }
    return members.empty() ? Untested() : tester_->Test(ProbeOfGroup(members), place);
}

Misfit HeldNetwork::MisfitOf(std::size_t v) const {
    const NetworkVector& vector = network_.vectors[v];
    const Ends& ends = graph_.ends[v];
    const std::size_t from = model_.NodeOf(ends.base, vector.session);
    const std::size_t to = model_.NodeOf(ends.rover, vector.session);
    Misfit misfit;
    misfit.isJoined = model_.component[from] == model_.component[to];
    if (!misfit.isJoined) {
        return misfit;
    }
    misfit.value = ToEigen(vector.vector) -
                   ToEigen(session::Minus(model_.given[ends.rover], model_.given[ends.base])) -
                   equations_->Correction(to) + equations_->Correction(from);
    misfit.ofVector = CovarianceWithLength(vector, options_.added);
    for (const std::size_t station : {ends.base, ends.rover}) {
        if (model_.NodeOf(station, vector.session) == station) {
            misfit.ofVector += CentringAt(model_.given[station], options_.added);
        }
    }
    Block columns = Block::Zero(static_cast<Eigen::Index>(equations_->unknowns()), 3);
    const auto set = [&](std::size_t node, double sign) {
        if (equations_->RowOf(node) >= 0) {
            columns.middleRows<3>(equations_->RowOf(node)) = sign * Eigen::Matrix3d::Identity();
        }
    };
    set(to, 1.0);
    set(from, -1.0);
    misfit.covariance = misfit.ofVector + columns.transpose() * equations_->Solve(columns);
    return misfit;
}

BlunderTest HeldNetwork::TestMisfit(std::size_t v, const Misfit& misfit) const {
    if (!misfit.isJoined) {
        return Untested();
    }
    const Eigen::Matrix3d weight = misfit.ofVector.inverse();
    return tester_->Test(ProbeOfMisfit(misfit.value, misfit.covariance, weight),
                         model_.given[graph_.ends[v].base], false);
}

Eigen::Matrix3d HeldNetwork::ResidualCovariance(std::size_t v) const {
    const Difference& difference = model_.differences[model_.ofVector[v]];
    return difference.covariance - AdjustedCovariance(difference);
}

}  // namespace vornel::network
