// The control object: what the host has handed over, from its creation to its disposal.
#pragma once

#include <optional>
#include <vector>

#include "foundation/position.h"
#include "observation/observation_records.h"
#include "run/sat_track.h"
#include "run/solve_config.h"

namespace vornel {

class CTRLSolve {
  public:
    int roverDualFreq = 0;  // 1 once a rover satellite above the mask has both frequencies
    int baseDualFreq = 0;
    int hasGlonass = 0;           // 1 once a GLONASS satellite is usable
    int reservedProcessFlag = 0;  // nothing sets it
    XYZPosition basePosition;     // approximate, ECEF metres
    XYZPosition roverPosition;
    double l1PcoRover[3] = {};  // metres
    double l2PcoRover[3] = {};
    double trueHeightRover = 0.0;
    double l1PcoBase[3] = {};
    double l2PcoBase[3] = {};
    double trueHeightBase = 0.0;
    std::vector<SDObsData> epochs;
    SolveConfig config;
    std::vector<int> delSatList;
    SatTrackList trackList0, trackList1, trackList2;

    CTRLSolve() = default;
    CTRLSolve(const CTRLSolve&) = delete;
    CTRLSolve& operator=(const CTRLSolve&) = delete;
    virtual ~CTRLSolve() = default;

    // One receiver's side of an epoch, 64 slots.
    struct ReceiverEpoch {
        int week;
        double seconds;
        const int* satellites;
        const double *code1, *code2, *phase1, *phase2;
    };

    // Corrects both sides, differences them and appends the epoch.
    void AddEpoch(const ReceiverEpoch& rover, const ReceiverEpoch& base);

  private:
    ZDObsData baseRecord_{0, 0, 0, 0, 0, 0};  // of the last epoch, whose room the next one takes
    ZDObsData roverRecord_{0, 0, 0, 0, 0, 0};
    std::optional<Station> baseStation_, roverStation_;  // where the last epoch was corrected
};

}  // namespace vornel
