#include "run/static_solve.h"

#include <algorithm>
#include <cmath>

#include "foundation/trace.h"
#include "run/run_status.h"

namespace vornel {

namespace {

constexpr double kDegreesPerRadian = 57.29577951308232;

}  // namespace

StaticSolve::StaticSolve(int glonass, int processFlag, const SolveConfig& settings,
                         const std::vector<SDObsData>& observations,
                         const std::vector<int>* deletedSats, const SatTrackList* tracks0,
                         const SatTrackList* tracks1, const SatTrackList* tracks2, int roverDual,
                         XYZPosition rover, const double* l1Rover, const double* l2Rover,
                         double heightRover, int baseDual, XYZPosition base, const double* l1Base,
                         const double* l2Base, double heightBase)
    : roverDualFreq(roverDual),
      baseDualFreq(baseDual),
      hasGlonass(glonass),
      reservedProcessFlag(processFlag),
      config(settings),
      roverPosition(rover),
      basePosition(base),
      trueHeightRover(heightRover),
      trueHeightBase(heightBase),
      epochs(observations),
      delSatList(deletedSats),
      trackList0(tracks0),
      trackList1(tracks1),
      trackList2(tracks2) {
    std::copy(l1Rover, l1Rover + 3, l1PcoRover);
    std::copy(l2Rover, l2Rover + 3, l2PcoRover);
    std::copy(l1Base, l1Base + 3, l1PcoBase);
    std::copy(l2Base, l2Base + 3, l2PcoBase);
    TraceWrite(3, "StaticSolve : \n");
}

int StaticSolve::Run() {
    status = VORNEL_STATUS_STARTED;
    SelectSolveMode();
    status = CutPeriods();
    if (status != VORNEL_STATUS_PERIODS_CUT) {
        return status;
    }
    status = SelectRefSats();
    if (status != VORNEL_STATUS_REFERENCES_CHOSEN) {
        return status;
    }
    if (reservedProcessFlag == 1 && SolvePreliminaryBaseline() != 1) {
        return status;
    }
    status = SolveTripleDifference();
    if (status != VORNEL_STATUS_TRIPLE_DONE) {
        return status;
    }
    RepairGlonassSlips();
    RepairDoubleDifferenceSlips();
    AlignGlonassReference();
    periodValues.assign(periods.size(), 0.0);
    if (solveModel == VORNEL_MODEL_IONO_FREE) {
        RunWideLaneThenIonoFree();
    } else {
        RunSingleModel();
    }
    return status;
}

void StaticSolve::RunSingleModel() {
    const ModelStatus& numbers = StatusOfModel(solveModel);
    if (FloatSolveMulEq(solveModel) != 1) {
        status = numbers.floatFailed;
        return;
    }
    status = numbers.floatDone;
    // Single-frequency ambiguities are not attempted on long baselines: the float solution is
    // final.
    const bool singleFrequency =
        solveModel == VORNEL_MODEL_FIRST || solveModel == VORNEL_MODEL_SECOND;
    if (singleFrequency && Distance(roverPosition, basePosition) >= config.maxFixBaseline) {
        return;
    }
    SolveResultFixed fix;
    if (FixAmbiguity(reservedProcessFlag, solveModel, fix) == 0) {
        status = numbers.fixFailed;
        return;
    }
    status = fix.ratio > config.ratioThreshold ? numbers.ratioPassed : numbers.ratioLow;
    status = FixedSolveMulEq(solveModel, fix) == 0 ? numbers.fixedFailed : numbers.fixedDone;
}

void StaticSolve::RunWideLaneThenIonoFree() {
    const ModelStatus& wideLane = StatusOfModel(VORNEL_MODEL_WIDE_LANE);
    if (FloatSolveMulEq(VORNEL_MODEL_WIDE_LANE) != 1) {
        status = wideLane.floatFailed;
        return;
    }
    status = wideLane.floatDone;
    SolveResultFixed wideLaneFix;
    if (FixAmbiguity(reservedProcessFlag, VORNEL_MODEL_WIDE_LANE, wideLaneFix) == 0) {
        status = wideLane.fixFailed;
        return;
    }
    status = wideLaneFix.ratio > config.ratioThreshold ? wideLane.ratioPassed : wideLane.ratioLow;
    if (FixedSolveMulEq(VORNEL_MODEL_WIDE_LANE, wideLaneFix) == 0) {
        status = wideLane.fixedFailed;
        return;
    }
    status = wideLane.fixedDone;
    if (!(wideLaneFix.ratio > config.ratioThreshold)) {
        return;
    }

    const ModelStatus& ionoFree = StatusOfModel(VORNEL_MODEL_IONO_FREE);
    if (FloatSolveMulEq(VORNEL_MODEL_IONO_FREE) != 1) {
        status = ionoFree.floatFailed;
        return;
    }
    status = ionoFree.floatDone;
    SolveResultFixed ionoFreeFix;
    if (FixAmbiguity(reservedProcessFlag, VORNEL_MODEL_IONO_FREE, ionoFreeFix) == 0) {
        status = ionoFree.fixFailed;
        return;
    }
    status = ionoFreeFix.ratio > config.ratioThreshold ? ionoFree.ratioPassed : ionoFree.ratioLow;
    status = FixedSolveMulEq(VORNEL_MODEL_IONO_FREE, ionoFreeFix) == 0 ? ionoFree.fixedFailed
                                                                       : ionoFree.fixedDone;
}

void StaticSolve::SelectSolveMode() {
    const double distance = Distance(roverPosition, basePosition);
    const double latitude = std::fabs(roverPosition.ToBLH().B * kDegreesPerRadian);
    // The ionosphere near the magnetic equator spoils single-frequency work sooner.
    double limit = config.shortBaselineLimit;
    if (latitude < 20.0) {
        limit = std::min(limit, 5000.0);
    } else if (latitude < 23.5) {
        limit = std::min(limit, 6000.0);
    }
    const bool singleFrequency = roverDualFreq == 0 || baseDualFreq == 0;
    if (config.slvmode != VORNEL_MODEL_FIRST && singleFrequency) {
        config.slvmode = 0;
    }
    if (config.slvmode == VORNEL_MODEL_AUTOMATIC) {
        solveModel =
            distance < limit || singleFrequency ? VORNEL_MODEL_FIRST : VORNEL_MODEL_IONO_FREE;
    } else {
        solveModel = config.slvmode;
    }
    resultManage.solveModel = solveModel;
    TraceWrite(3, "StaticSolve::SelectSolveMode: %d.\n", solveModel);
}

double StaticSolve::AntennaSdCorrection(double c1, double c2, double lambda1, double lambda2,
                                        double elevR, double elevB) const {
    return AntennaTerm(c1, c2, lambda1, lambda2, std::sin(elevR), std::sin(elevB));
}

double StaticSolve::AntennaTerm(double c1, double c2, double lambda1, double lambda2,
                                double sinElevR, double sinElevB) const {
    const double d1 =
        (l1PcoRover[2] + trueHeightRover) * sinElevR - (l1PcoBase[2] + trueHeightBase) * sinElevB;
    const double d2 =
        (l2PcoRover[2] + trueHeightRover) * sinElevR - (l2PcoBase[2] + trueHeightBase) * sinElevB;
    return (c1 / lambda1 * d1 + c2 / lambda2 * d2) * lambda1 * lambda2 /
           (lambda2 * c1 + lambda1 * c2 + 1e-12);
}

const StaticPeriod* StaticSolve::PeriodOf(int epochIndex) const {
    for (const StaticPeriod& period : periods) {
        if (period.Holds(epochIndex)) {
            return &period;
        }
    }
    return nullptr;
}

}  // namespace vornel
