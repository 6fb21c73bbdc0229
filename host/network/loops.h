// Closures of a network: what vectors that return to their start miss it by.
#pragma once

#include <vector>

#include "network/records.h"

namespace vornel::network {

enum class LoopKind {
    kRepeated,  // two vectors between the same stations
    kTriangle,
    kCycle  // of four or more vectors: one that is not in the spanning tree, and the way back in it
};

struct LoopSide {
    std::size_t vector = kNone;  // index into Network::vectors
    bool forward = true;         // from its base to its rover
};

struct Loop {
    LoopKind kind = LoopKind::kTriangle;
    std::vector<LoopSide> sides;
    std::vector<std::size_t> stations;  // where each side begins
    Vector3 misclosure{};               // m, ECEF, sum of the sides
    Vector3 misclosureNeu{};            // m, at the first station
    Matrix3 covariance{};               // m^2, ECEF, of the misclosure
    Vector3 sigmaNeu{};                 // m
    double size = 0.0;                  // m, length of the misclosure
    double length = 0.0;                // m, of all sides
    double ppm = 0.0;                   // size to length
    double statistic = 0.0;             // w' C^-1 w: chi-square with 3 degrees of freedom
    double probability = 1.0;           // of a larger one by chance
    bool isBad = false;                 // less probable than the level
    // All sides from one session: antenna heights and centring cancel, so that this checks the
    // solutions alone and not how the antennas stood.
    bool isOfOneSession = false;
};

struct LoopCount {
    std::size_t found = 0;
    std::size_t bad = 0;
    std::size_t listed = 0;
    bool isComplete = true;  // false: the search was ended at LoopOptions::largestNumber
};

// How often a vector stands in loops. Of all that were found, listed or not.
struct VectorInLoops {
    std::size_t vector = kNone;
    std::size_t loops = 0;
    std::size_t badLoops = 0;
};

// The vector that explains most of the bad loops not yet explained: the first of all, the second of
// those without the first, and so on.
struct NamedByLoops {
    std::size_t vector = kNone;
    std::size_t badLoops = 0;         // of these loops, those with the vector in them
    std::size_t remaining = 0;        // bad loops that were not yet explained
    std::size_t loops = 0;            // all with the vector in them
    std::vector<std::size_t> equals;  // other vectors of which the loops say the same
};

struct LoopReport {
    std::vector<Loop> loops;  // repeated, triangles, cycles; each kind from the least probable on
    LoopCount repeated, triangles, cycles;
    double level = 0.0;                  // significance at which one loop is bad
    std::vector<VectorInLoops> vectors;  // those in bad loops, from the most often named on
    std::vector<NamedByLoops> named;
};

struct LoopOptions {
    AddedErrors added;
    // A loop is bad below `level`; in large networks below what makes any loop of a sound network
    // bad with probability `familyLevel`, where that is less (Sidak 1967).
    double level = 0.001;
    double familyLevel = 0.05;
    std::size_t largestList = 1000;      // of each kind; the least probable ones are kept
    std::size_t largestNumber = 500000;  // of triangles looked at
};

// Repeated baselines: in the order of their epochs, each vector with the next, and the last with the
// first where there are more than two. Triangles: each three stations that are joined; where more
// than one vector joins two of them, those of one session are taken together, and each vector stands
// in at least one triangle. Cycles: those of four and more sides that a spanning tree by breadth,
// rooted at the station with the most neighbours, has with each pair of stations joined outside it; of
// several vectors that join two stations, the most accurate one is taken. The three kinds together
// span all closures of the network.
// A covariance is the sum of those of the sides; of `added`, centring enters where a loop meets a
// station in two sessions, and cancels where in one.
// Vectors that MakeGraph refuses are left out. Throws NetworkError.
LoopReport FindLoops(const Network& network, const LoopOptions& options = {});

}  // namespace vornel::network
