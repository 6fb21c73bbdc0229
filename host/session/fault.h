// What is wrong with a session whose files could all be read.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace vornel::session {

enum class Fault {
    kDifferentDays,          // the observation files of the two stations lie on different days
    kNoCommonEpochs,         // same day, but no epoch of one is within 0.1 s of one of the other
    kNoNavigation,           // no navigation file, or none with a record for the session
    kNoPosition,             // a station without usable position, and no way to find one
    kNoOrbitCoverage,        // precise orbits that do not cover the session
    kNoCommonSignals,        // no system that both receivers observed on its first signal
    kBaseContradicted,       // the base position is refuted by the data
    kWrongRole,              // a readable file of a kind that does not belong where it was given
    kUnassignedObservations  // an observation file of neither station
};

class SessionFault : public std::runtime_error {
  public:
    // `what` is the fact; `hint` tells what to do.
    SessionFault(Fault fault, const std::string& what, std::string hint)
        : std::runtime_error(what), fault_(fault), hint_(std::move(hint)) {}

    Fault fault() const { return fault_; }
    const std::string& hint() const { return hint_; }

  private:
    Fault fault_;
    std::string hint_;
};

}  // namespace vornel::session
