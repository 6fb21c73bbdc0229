// Precise ephemerides: tabulated X, Y, Z and clock, interpolated over 11 entries.
#pragma once

#include <utility>
#include <vector>

#include "foundation/epoch.h"
#include "foundation/position.h"

namespace vornel {

// The values of one satellite, in order of input (ascending time is the host's duty).
class OneSatSP3ValList {
  public:
    int satNumber = 0;  // across the systems
    std::vector<std::pair<Epoch, double>> values;
    std::size_t ascending = 0;  // values that AddValue has seen stand in ascending order

    OneSatSP3ValList() = default;
    OneSatSP3ValList(const OneSatSP3ValList&) = default;
    OneSatSP3ValList& operator=(const OneSatSP3ValList&) = default;
    virtual ~OneSatSP3ValList() = default;

    bool IsAscending() const { return ascending == values.size(); }
};

// One component of all satellites.
class SP3ValList {
  public:
    std::vector<OneSatSP3ValList> satellites;

    SP3ValList() = default;
    SP3ValList(const SP3ValList&) = default;
    SP3ValList& operator=(const SP3ValList&) = default;
    virtual ~SP3ValList() = default;

    const OneSatSP3ValList* Find(int satNumber) const;
};

// The process-wide stores, by VornelPrecise: positions in metres, clocks in seconds.
SP3ValList& PreciseStore(int component);

// Adds a value at the end of the satellite's list; an earlier value of the same epoch goes.
void AddValue(SP3ValList& store, int satNumber, const Epoch& epoch, double value);

// Interpolates between the five entries before and the six from the first entry after `time` on.
// False near the ends of the list and when one of the 11 values is missing.
bool InterpolateOne(const OneSatSP3ValList& list, const Epoch& time, double& out);

// Lagrange interpolation of n points at t, through at most 11 of them around t.
double Lagrange(int n, const double* x, const double* y, double t);

// Position (m) and clock (s) of a satellite number at GPS time `time`, false when not to be
// had: what was interpolated by then stays, the rest is zero.
bool GetPrecisePosition(Epoch time, int satNumber, XYZPosition& position, double& clock);

}  // namespace vornel
