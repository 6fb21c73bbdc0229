// The observations of a network, for the state that the search for blunders is in.
#pragma once

#include <compare>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "network/graph.h"
#include "network/least_squares.h"
#include "network/records.h"

namespace vornel::network {

struct Occupation {
    std::size_t station = kNone;
    std::string session;
    auto operator<=>(const Occupation&) const = default;
};

// What has weight.
struct State {
    std::vector<bool> isUsed;    // by vector
    std::set<Occupation> apart;  // occupations without tie to their stations
};

struct Model {
    // Nodes: first the stations in their order, then occupations that stand on places of their own.
    std::vector<std::size_t> stationOf;                          // by node
    std::map<Occupation, std::size_t> ownNodes;                  // of occupations
    std::map<Occupation, std::vector<std::size_t>> occupations;  // vectors in use that meet there
    std::vector<Difference> differences;
    std::vector<std::size_t> ofVector;   // by vector: its difference; kNone without weight
    std::vector<std::size_t> ofKnown;    // by station: that of its known position; kNone without
    std::vector<std::size_t> component;  // by node; those of the stations come first
    std::vector<Vector3> given;          // m, ECEF, by station: positions to correct

    std::size_t NodeOf(std::size_t station, const std::string& session) const;
};

// Given positions are the known ones, else the approximate ones.
Model MakeModel(const Network& network, const Graph& graph, const AddedErrors& added,
                const State& state);

// Covariance (m^2, ECEF) of the errors at one occupation.
Eigen::Matrix3d CentringAt(const Vector3& place, const AddedErrors& added);

// Covariance (m^2) of a vector with the part that grows with its length.
Eigen::Matrix3d CovarianceWithLength(const NetworkVector& vector, const AddedErrors& added);

}  // namespace vornel::network
