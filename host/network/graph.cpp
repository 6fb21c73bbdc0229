#include "network/graph.h"

#include <Eigen/Eigenvalues>
#include <algorithm>
#include <cmath>
#include <numeric>
#include <unordered_map>

#include "network/dense.h"

namespace vornel::network {
namespace {

// An ECEF position nearer to the earth's centre than this (m) is none.
constexpr double kSmallestRadius = 6.0e6;

bool IsFinite(const double* first, std::size_t count) {
    return std::all_of(first, first + count, [](double value) { return std::isfinite(value); });
}

std::string FaultOfVector(const NetworkVector& vector, const Ends& ends) {
    if (ends.base == kNone || ends.rover == kNone) {
        const std::string& missing = ends.base == kNone ? vector.base : vector.rover;
        return "its station " + missing + " is not in the network";
    }
    if (ends.base == ends.rover) {
        return "it leads from " + vector.base + " to itself";
    }
    if (!IsFinite(vector.vector.data(), 3)) {
        return "its components are not finite";
    }
    return FaultOfCovariance(vector.covariance);
}

void CheckStation(const NetworkStation& station) {
    const Vector3& place = station.known ? station.known->position : station.approximate;
    for (const Vector3& position : {place, station.approximate}) {
        if (!IsFinite(position.data(), 3) || session::Length(position) < kSmallestRadius) {
            throw NetworkError("station " + station.name + " has no position on the earth");
        }
    }
    if (station.known && !station.known->isFixed) {
        const std::string fault = FaultOfCovariance(station.known->covariance);
        if (!fault.empty()) {
            throw NetworkError("the known position of station " + station.name +
                               " cannot be used: " + fault);
        }
    }
}

}  // namespace

std::string FaultOfCovariance(const Matrix3& covariance) {
    if (!IsFinite(covariance.data(), covariance.size())) {
        return "its covariance is not finite";
    }
    const Eigen::Matrix3d m = ToEigen(covariance);
    if ((m - m.transpose()).cwiseAbs().maxCoeff() > 1e-6 * m.cwiseAbs().maxCoeff()) {
        return "its covariance is not symmetric";
    }
    const Eigen::Vector3d eigenvalues =
        Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d>(m, Eigen::EigenvaluesOnly).eigenvalues();
    if (eigenvalues(0) <= 1e-12 * std::abs(eigenvalues(2))) {
        return "its covariance is not positive definite";
    }
    constexpr double kSmallestVariance = 1e-14;
    return eigenvalues(0) < kSmallestVariance ? "its standard deviation is below 0.1 micrometre"
                                              : "";
}

Graph MakeGraph(const Network& network) {
    std::unordered_map<std::string, std::size_t> stations;
    for (const NetworkStation& station : network.stations) {
        if (!stations.emplace(station.name, stations.size()).second) {
            throw NetworkError("two stations are called " + station.name);
        }
        CheckStation(station);
    }
    const auto indexOf = [&](const std::string& name) {
        const auto found = stations.find(name);
        return found == stations.end() ? kNone : found->second;
    };
    Graph graph;
    std::unordered_map<std::string, std::size_t> ids;
    for (const NetworkVector& vector : network.vectors) {
        if (!ids.emplace(vector.id, ids.size()).second) {
            throw NetworkError("two vectors have the id " + vector.id);
        }
        const Ends ends{indexOf(vector.base), indexOf(vector.rover)};
        graph.refused.push_back(FaultOfVector(vector, ends));
        graph.ends.push_back(graph.refused.back().empty() ? ends : Ends{});
    }
    return graph;
}

std::vector<std::size_t> Components(std::size_t nodes, const std::vector<Ends>& edges) {
    std::vector<std::size_t> parent(nodes);
    std::iota(parent.begin(), parent.end(), std::size_t{0});
    const auto root = [&](std::size_t node) {
        while (parent[node] != node) {
            parent[node] = parent[parent[node]];
            node = parent[node];
        }
        return node;
    };
    for (const Ends& edge : edges) {
        if (edge.base != kNone && edge.rover != kNone) {
            parent[root(edge.base)] = root(edge.rover);
        }
    }
    std::vector<std::size_t> numberOf(nodes, kNone);
    std::vector<std::size_t> component(nodes);
    std::size_t count = 0;
    for (std::size_t node = 0; node < nodes; ++node) {
        std::size_t& number = numberOf[root(node)];
        if (number == kNone) {
            number = count++;
        }
        component[node] = number;
    }
    return component;
}

}  // namespace vornel::network
