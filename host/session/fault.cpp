#include "session/fault.h"

namespace vornel::session {

const char* FaultName(Fault fault) {
    switch (fault) {
        case Fault::kDifferentDays:
            return "different days";
        case Fault::kNoCommonEpochs:
            return "no common epochs";
        case Fault::kNoNavigation:
            return "no navigation";
        case Fault::kNoPosition:
            return "station without position";
        case Fault::kNoOrbitCoverage:
            return "orbits do not cover the session";
        case Fault::kNoCommonSignals:
            return "no common signals";
        case Fault::kBaseContradicted:
            return "base position contradicted";
        case Fault::kWrongRole:
            return "file in the wrong place";
        case Fault::kUnassignedObservations:
            return "observations of another station";
    }
    return "unknown";
}

}  // namespace vornel::session
