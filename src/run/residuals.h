// Post-fit double-difference residuals of a solution, by satellite.
#pragma once

#include <utility>
#include <vector>

#include "foundation/epoch.h"

namespace vornel {

struct ResidualPoint {
    Epoch time;
    int valueMm = 0;  // millimetres, cut toward zero
};

class Residual {
  public:
    std::vector<ResidualPoint> firstBlock;   // kind 0
    std::vector<ResidualPoint> secondBlock;  // kind 1: second frequency of model 3
    bool ascends[2] = {true, true};          // by kind: every time lies behind the one before it

    Residual() = default;
    Residual(const Residual&) = default;
    Residual& operator=(const Residual&) = default;
    virtual ~Residual() = default;
};

class ResidualList {
  public:
    std::vector<std::pair<int, Residual>>
        entries;  // by satellite number, in order of first residual
    Residual emptyResidual;

    ResidualList() = default;
    ResidualList(const ResidualList&) = default;
    ResidualList& operator=(const ResidualList&) = default;
    virtual ~ResidualList() = default;

    // value in metres. A point of the same satellite, kind and time is replaced and moves to the
    // end.
    void Add(int kind, int sat, const Epoch& time, double value);
    // emptyResidual for a satellite without one.
    const Residual& Find(int sat) const;
    int Size() const { return static_cast<int>(entries.size()); }
    void Clear() { entries.clear(); }
};

}  // namespace vornel
