#include "exports/ctrl_solve.h"

#include <utility>

namespace vornel {

namespace {

// Makes `record` that of a receiver's epoch.
void Correct(ZDObsData& record, const SolveConfig& config, const CTRLSolve::ReceiverEpoch& receiver,
             const Station& station, int& dualFlag) {
    record.ephemerisSource = config.ephemerisSource;
    record.useGps = config.useGps;
    record.useGlonass = config.useGlonass;
    record.useBds = config.useBds;
    record.useGalileo = config.useGalileo;
    record.tropoModel = config.tropoModel;
    record.Fill(receiver.week, receiver.seconds, receiver.satellites, receiver.code1,
                receiver.code2, receiver.phase1, receiver.phase2);
    record.Correct(station, config.elevationMask, dualFlag);
}

// The station at a position; `known` is kept when it is there.
const Station& StationAt(const XYZPosition& position, std::optional<Station>& known) {
    if (!known || known->position.X != position.X || known->position.Y != position.Y ||
        known->position.Z != position.Z) {
        known.emplace(position);
    }
    return *known;
}

bool HoldsGlonass(const std::vector<int>& satellites) {
    for (const int satellite : satellites) {
        if (SplitSatNumber(satellite) == kGlonass) {
            return true;
        }
    }
    return false;
}

}  // namespace

void CTRLSolve::AddEpoch(const ReceiverEpoch& rover, const ReceiverEpoch& base) {
    Correct(baseRecord_, config, base, StationAt(basePosition, baseStation_), baseDualFreq);
    Correct(roverRecord_, config, rover, StationAt(roverPosition, roverStation_), roverDualFreq);
    SDObsData difference(config.tropoModel);
    difference.Form(roverRecord_, baseRecord_);
    if (HoldsGlonass(difference.satListF1) || HoldsGlonass(difference.satListF2)) {
        hasGlonass = 1;
    }
    epochs.push_back(std::move(difference));
}

}  // namespace vornel
