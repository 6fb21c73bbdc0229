#include "frame/ctrl_solve.h"

#include <utility>

namespace vornel {

namespace {

ZDObsData CorrectedEpoch(const SolveConfig& config, const CTRLSolve::ReceiverEpoch& receiver,
                         const Station& station, int& dualFlag) {
    ZDObsData record(config.ephemerisSource, config.useGps, config.useGlonass, config.useBds,
                     config.useGalileo, config.tropoModel);
    record.Fill(receiver.week, receiver.seconds, receiver.satellites, receiver.code1,
                receiver.code2, receiver.phase1, receiver.phase2);
    record.Correct(station, config.elevationMask, dualFlag);
    return record;
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
    const ZDObsData baseRecord =
        CorrectedEpoch(config, base, StationAt(basePosition, baseStation_), baseDualFreq);
    const ZDObsData roverRecord =
        CorrectedEpoch(config, rover, StationAt(roverPosition, roverStation_), roverDualFreq);
    SDObsData difference(config.tropoModel);
    difference.Form(roverRecord, baseRecord);
    if (HoldsGlonass(difference.satListF1) || HoldsGlonass(difference.satListF2)) {
        hasGlonass = 1;
    }
    epochs.push_back(std::move(difference));
}

}  // namespace vornel
