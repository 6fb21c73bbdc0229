// The solver of one baseline: the inputs of a run, the stages that work on them, and the solutions.
//
// The stages are members and work on the fields. Each is defined in the folder of its stage:
//   run/           SelectSolveMode, Run
//   preparation/   CutPeriods, SelectRefSats, SolvePreliminaryBaseline, SolveTripleDifference,
//                  RepairGlonassSlips, RepairDoubleDifferenceSlips, AlignGlonassReference
//   estimation/    FloatSolveMulEq, FixedSolveMulEq
//   ambiguity/     FixAmbiguity and its strategies
//
// Each stage says at the head of its file what it reads of the run and what it writes; a test
// (tests/layers/) holds the words to the code. "antennas" are l1PcoRover to trueHeightRover and
// l1PcoBase to trueHeightBase.
//
// Of the run, SelectSolveMode
//   reads   config (slvmode, shortBaselineLimit), roverPosition, basePosition, roverDualFreq,
//           baseDualFreq
//   writes  config (slvmode), solveModel, resultManage (solveModel)
// Of the run, StaticSolve::Run, beside its stages,
//   reads   solveModel, config (maxFixBaseline, ratioThreshold), roverPosition, basePosition,
//           reservedProcessFlag, periods
//   writes  status, periodValues
// Of the run, PeriodOf
//   reads   periods
//   writes  nothing
// Of the run, AntennaTerm
//   reads   antennas
//   writes  nothing
#pragma once

#include <vector>

#include "foundation/position.h"
#include "observation/model_cache.h"
#include "observation/observation_records.h"
#include "run/ambiguity_records.h"
#include "run/period_equations.h"
#include "run/run_status.h"
#include "run/sat_track.h"
#include "run/solution_records.h"
#include "run/solve_config.h"
#include "run/static_period.h"

namespace vornel {

class StaticSolve {
  public:
    int roverDualFreq;
    int baseDualFreq;
    int hasGlonass;           // 1: a GLONASS inter-frequency bias is estimated
    int reservedProcessFlag;  // 0 in every run of the library
    int solveModel = 0;
    SolveConfig config;
    XYZPosition roverPosition;  // moved by each solution
    XYZPosition basePosition;
    double l1PcoRover[3];  // metres; the third, up, is used
    double l2PcoRover[3];
    double trueHeightRover;
    double l1PcoBase[3];
    double l2PcoBase[3];
    double trueHeightBase;
    std::vector<SDObsData> epochs;  // a copy: preparation changes them in place
    std::vector<StaticPeriod> periods;
    std::vector<AmbiguityPara> ambiguityParas;
    ResultManage resultManage;
    XYZPosition priorBaseline;           // result of the preliminary baseline
    gult::matrixT priorBaselineCov;      // its covariance, 3 by 3 once it ran
    const std::vector<int>* delSatList;  // of the control object; null: absent
    const SatTrackList* trackList0;
    const SatTrackList* trackList1;
    const SatTrackList* trackList2;
    std::vector<double> periodValues;  // one zero a period; nothing writes them
    unsigned char periodFlag = 0;
    int status = VORNEL_STATUS_CONSTRUCTED;
    PeriodEquations equationBlock;  // of the last float solution
    ModelCache modelCache;          // of the epochs above

    // Copies all but the lists, which must outlive the solver.
    StaticSolve(int hasGlonass, int reservedProcessFlag, const SolveConfig& config,
                const std::vector<SDObsData>& epochs, const std::vector<int>* delSatList,
                const SatTrackList* trackList0, const SatTrackList* trackList1,
                const SatTrackList* trackList2, int roverDualFreq, XYZPosition roverPosition,
                const double* l1PcoRover, const double* l2PcoRover, double trueHeightRover,
                int baseDualFreq, XYZPosition basePosition, const double* l1PcoBase,
                const double* l2PcoBase, double trueHeightBase);
    StaticSolve(const StaticSolve&) = delete;
    StaticSolve& operator=(const StaticSolve&) = delete;
    virtual ~StaticSolve() = default;

    // Works through the whole chain; returns the final status.
    int Run();

    // Chooses the solve model from the mode asked for, the baseline and the receivers.
    void SelectSolveMode();

    // Filters satellites and cuts the epochs into periods. 10, 11 or 12.
    int CutPeriods();
    // Chooses each period's reference satellites and thins its epochs to what can be differenced.
    // 13 or 14.
    int SelectRefSats();
    // Robust double-difference baseline from sdObserved; 1 when accepted. Only with
    // reservedProcessFlag 1.
    int SolvePreliminaryBaseline();
    // The first robust baseline, free of ambiguities; moves roverPosition. 20 or 21.
    int SolveTripleDifference();
    // Repair phases in place, thin activeSats, build ambiguityParas: GLONASS at single-difference
    // level, the other systems at double-difference level.
    void RepairGlonassSlips();
    void RepairDoubleDifferenceSlips();
    // Gives GLONASS segments the reference satellite's ambiguities and cuts them by its arcs.
    void AlignGlonassReference();

    // Least squares with real ambiguities in a solve model 1 to 6. 1 when a result was filed, 0
    // otherwise.
    int FloatSolveMulEq(int mode);
    // Makes the float ambiguities of a model integers. 1 when `out` holds a result.
    int FixAmbiguity(int useStrategy, int model, SolveResultFixed& out);
    // Least squares with the integers held; completes `fix` and files a copy. 1 when done.
    int FixedSolveMulEq(int mode, SolveResultFixed& fix);

    // The strategies behind FixAmbiguity.
    int FixPerPeriod(int model, SolveResultFixed& out);
    int FixByLambda(int model, SolveResultFixed& out);
    int FixBySearch(int model, SolveResultFixed& out);

    // 1 when the epoch-to-epoch changes `deltas` (metres, by satellite number - 1) of the
    // satellites agree, 0 when a majority, whose mean is given, stands against outliers, which are
    // appended; -1 when undecided.
    int ClusterDeltas(std::vector<int> sats, const double* deltas, int frequency, double& mean,
                      std::vector<int>& outliers) const;

    // The antenna term of the between-station value, metres. c1, c2: the phase combination;
    // lambda1, lambda2: metres; elevR, elevB: elevations at rover and base, radians.
    double AntennaSdCorrection(double c1, double c2, double lambda1, double lambda2, double elevR,
                               double elevB) const;
    // The same from the sines of the elevations.
    double AntennaTerm(double c1, double c2, double lambda1, double lambda2, double sinElevR,
                       double sinElevB) const;

    // The first period that holds the epoch, nullptr when there is none.
    const StaticPeriod* PeriodOf(int epochIndex) const;

  private:
    void RunSingleModel();
    void RunWideLaneThenIonoFree();
};

}  // namespace vornel
