// A stretch of epochs with reference satellites and ambiguities of its own.
#pragma once

#include "foundation/epoch.h"

namespace vornel {

class StaticPeriod {
  public:
    Epoch startTime;
    Epoch endTime;        // of its last epoch
    int startIndex = -1;  // into the epochs of the run
    int endIndex = -1;    // inclusive
    int epochCount = 0;
    int refSatGps = -1;  // satellite numbers, -1 for none
    int refSatGlo = -1;
    int refSatBds = -1;
    int refSatGal = -1;

    StaticPeriod() = default;
    StaticPeriod(const StaticPeriod&) = default;
    StaticPeriod& operator=(const StaticPeriod&) = default;
    virtual ~StaticPeriod() = default;

    bool Holds(int epochIndex) const { return startIndex <= epochIndex && epochIndex <= endIndex; }
    bool HasReference() const {
        return refSatGps != -1 || refSatGlo != -1 || refSatBds != -1 || refSatGal != -1;
    }
    bool IsReference(int sat) const {
        return sat == refSatGps || sat == refSatGlo || sat == refSatBds || sat == refSatGal;
    }
    // Reference satellite of a system code, -1 for none.
    int ReferenceOf(int system) const;
};

}  // namespace vornel
