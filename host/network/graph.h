// Which stations the vectors join.
#pragma once

#include <string>
#include <vector>

#include "network/records.h"

namespace vornel::network {

struct Ends {
    std::size_t base = kNone;  // indices of stations
    std::size_t rover = kNone;
};

struct Graph {
    std::vector<Ends> ends;            // by vector; both kNone where it is refused
    std::vector<std::string> refused;  // by vector: why it cannot be used; empty where it can
};

// Throws NetworkError when a name of a station or an id of a vector stands twice, or a station has
// no usable position. A vector that cannot be used is refused and does not stop the others: one of a
// station to itself or to an unknown one, or whose numbers are not finite or its covariance not
// that of three components (positive definite, no standard deviation below 0.1 micrometre).
Graph MakeGraph(const Network& network);

// Why a covariance cannot be weighted with; empty when it can.
std::string FaultOfCovariance(const Matrix3& covariance);

// The connected parts of `nodes` nodes under the given edges: by node the number of its component.
// Components are numbered by their first node.
std::vector<std::size_t> Components(std::size_t nodes, const std::vector<Ends>& edges);

}  // namespace vornel::network
