#include "network/model.h"

#include <algorithm>
#include <cmath>

#include "network/dense.h"

namespace vornel::network {
namespace {

// An occupation with a place of its own is tied to its station no closer than this (m), which changes
// no result and keeps the equations regular where only the other component was asked for.
constexpr double kSmallestCentring = 1e-5;

bool HasCentring(const AddedErrors& added) {
    return added.centringHorizontal > 0.0 || added.centringVertical > 0.0;
}

}  // namespace

Eigen::Matrix3d CentringAt(const Vector3& place, const AddedErrors& added) {
    return ToEigen(CovarianceFromNeu(
        place, {added.centringHorizontal, added.centringHorizontal, added.centringVertical}));
}

Eigen::Matrix3d CovarianceWithLength(const NetworkVector& vector, const AddedErrors& added) {
    const double sigma = added.ppm * 1e-6 * session::Length(vector.vector);
    return ToEigen(vector.covariance) + sigma * sigma * Eigen::Matrix3d::Identity();
}

std::size_t Model::NodeOf(std::size_t station, const std::string& session) const {
    const auto own = ownNodes.find({station, session});
    return own == ownNodes.end() ? station : own->second;
}

Model MakeModel(const Network& network, const Graph& graph, const AddedErrors& added,
                const State& state) {
    Model model;
    for (const NetworkStation& station : network.stations) {
        model.stationOf.push_back(model.stationOf.size());
        model.given.push_back(station.known ? station.known->position : station.approximate);
    }
    for (std::size_t v = 0; v < network.vectors.size(); ++v) {
        if (state.isUsed[v]) {
            for (const std::size_t station : {graph.ends[v].base, graph.ends[v].rover}) {
                model.occupations[{station, network.vectors[v].session}].push_back(v);
            }
        }
    }
    AddedErrors tie = added;
    tie.centringHorizontal = std::max(tie.centringHorizontal, kSmallestCentring);
    tie.centringVertical = std::max(tie.centringVertical, kSmallestCentring);
    for (const auto& [occupation, vectors] : model.occupations) {
        const bool isApart = state.apart.count(occupation) > 0;
        if (!isApart && (vectors.size() < 2 || !HasCentring(added))) {
            continue;
        }
        const std::size_t node = model.stationOf.size();
        model.ownNodes[occupation] = node;
        model.stationOf.push_back(occupation.station);
        if (!isApart) {
            Difference difference;
            difference.from = occupation.station;
            difference.to = node;
            difference.covariance = CentringAt(model.given[occupation.station], tie);
            model.differences.push_back(difference);
        }
    }
    model.ofVector.assign(network.vectors.size(), kNone);
    model.ofKnown.assign(network.stations.size(), kNone);
    std::vector<Ends> edges;
    for (const Difference& difference : model.differences) {
        edges.push_back({difference.from, difference.to});
    }
    for (std::size_t v = 0; v < network.vectors.size(); ++v) {
        if (!state.isUsed[v]) {
            continue;
        }
        const NetworkVector& vector = network.vectors[v];
        const Ends& ends = graph.ends[v];
        Difference difference;
        difference.from = model.NodeOf(ends.base, vector.session);
        difference.to = model.NodeOf(ends.rover, vector.session);
        difference.value = ToEigen(vector.vector) -
                           ToEigen(session::Minus(model.given[ends.rover], model.given[ends.base]));
        difference.covariance = CovarianceWithLength(vector, added);
        for (const std::size_t station : {ends.base, ends.rover}) {
            if (HasCentring(added) && model.NodeOf(station, vector.session) == station) {
                difference.covariance += CentringAt(model.given[station], added);
            }
        }
        model.ofVector[v] = model.differences.size();
        model.differences.push_back(difference);
        edges.push_back({difference.from, difference.to});
    }
    model.component = Components(model.stationOf.size(), edges);
    return model;
}

}  // namespace vornel::network
