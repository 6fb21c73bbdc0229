// The preliminary baseline: a robust double-difference solution from the values of sdObserved, for
// GPS, GLONASS and BDS. Its result constrains the triple-difference solution.
//
// Of the run, SolvePreliminaryBaseline
//   reads   epochs (activeSats, sdObserved), periods, config (outlierFactor, codeStd, galFreq1,
//           galFreq2), roverPosition, basePosition, antennas
//   writes  priorBaseline, priorBaselineCov, roverPosition, modelCache
#include <cmath>
#include <exception>

#include "difference/single_difference.h"
#include "foundation/satellite.h"
#include "foundation/statistics.h"
#include "preparation/normal_equations.h"
#include "run/static_solve.h"

namespace vornel {

namespace {

constexpr int kMaxIterations = 10;
constexpr double kStartSigma = 35.0;  // metres
constexpr double kConverged = 0.001;  // metres
constexpr double kMaxVarianceRatio = 10.0;

// Observed minus computed single difference and the line of sight.
struct Observed {
    double residual = 0.0;  // metres
    double unit[3] = {};
};

Observed Observe(const StaticSolve& solver, const SingleDifferenceModel& model, int e, int sat,
                 const XYZPosition& rover) {
    const SDObsData& epoch = solver.epochs[static_cast<std::size_t>(e)];
    const Carriers carriers = model.CarriersOf(epoch, sat);
    PhaseCombination signal = SingleFrequency(carriers, 1);
    signal.ionoFactor = 0.0;
    const ComputedDifference computed = model.Compute(e, sat, carriers, signal, rover);
    Observed observed;
    observed.residual = epoch.sdObserved[sat - 1] - computed.WithAntenna();
    for (int k = 0; k < 3; ++k) {
        observed.unit[k] = computed.unit[k];
    }
    return observed;
}

bool IsFirstThreeReference(const StaticPeriod& period, int sat) {
    return sat == period.refSatGps || sat == period.refSatGlo || sat == period.refSatBds;
}

void AccumulateEpoch(const StaticSolve& solver, const SingleDifferenceModel& model, int e,
                     const StaticPeriod& period, const XYZPosition& rover, double sigma,
                     CoordinateEquations& equations) {
    const SDObsData& epoch = solver.epochs[static_cast<std::size_t>(e)];
    for (const int system : {kGps, kGlonass, kBds}) {
        const int referenceSat = period.ReferenceOf(system);
        if (referenceSat == -1 || !epoch.IsActive(referenceSat)) {
            continue;
        }
        const Observed reference = Observe(solver, model, e, referenceSat, rover);
        for (const int sat : epoch.activeSats) {
            if (SplitSatNumber(sat) != system || IsFirstThreeReference(period, sat)) {
                continue;
            }
            const Observed observed = Observe(solver, model, e, sat, rover);
            const double v = observed.residual - reference.residual;
            const double w = IggWeight(v / sigma, 3.0, solver.config.outlierFactor);
            if (w == 0.0) {
                continue;
            }
            double h[3];
            for (int k = 0; k < 3; ++k) {
                h[k] = observed.unit[k] - reference.unit[k];
            }
            equations.Add(h, v, w);
        }
    }
}

}  // namespace

int StaticSolve::SolvePreliminaryBaseline() {
    priorBaseline = XYZPosition();
    priorBaselineCov = gult::matrixT();
    const SingleDifferenceModel model(*this);
    XYZPosition x = roverPosition;
    double sigma = kStartSigma;
    CoordinateStep step;
    for (int iteration = 0; iteration < kMaxIterations; ++iteration) {
        CoordinateEquations equations;
        for (int e = 0; e < static_cast<int>(epochs.size()); ++e) {
            const StaticPeriod* period = PeriodOf(e);
            if (period != nullptr &&
                (period->refSatGps != -1 || period->refSatGlo != -1 || period->refSatBds != -1)) {
                AccumulateEpoch(*this, model, e, *period, x, sigma, equations);
            }
        }
        try {
            step = SolveStep(equations, x);
        } catch (const std::exception&) {
            return 0;
        }
        sigma = step.rms;
        if (step.norm < kConverged) {
            break;
        }
    }
    const double assumed = 2 * config.codeStd;
    const double F = step.sigmaW * step.sigmaW / (assumed * assumed);
    if (F > kMaxVarianceRatio) {
        return 0;
    }
    priorBaseline = x;
    roverPosition = x;
    priorBaselineCov = step.Q * (1.0 / F);
    return 1;
}

}  // namespace vornel
