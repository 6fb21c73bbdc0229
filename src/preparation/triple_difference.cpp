// The triple-difference solution: double differences of phase, differenced between consecutive
// epochs, so that no ambiguity remains and a slip shows up as one outlier, which the robust weight
// takes out.
//
// Of the run, SolveTripleDifference
//   reads   epochs (activeSats, phase), periods, solveModel, config (phaseStd, outlierFactor,
//           galFreq1, galFreq2), roverPosition, basePosition, antennas, reservedProcessFlag,
//           priorBaseline, priorBaselineCov
//   writes  roverPosition, resultManage (tripleDiff), modelCache
#include <cmath>
#include <exception>

#include "difference/single_difference.h"
#include "foundation/satellite.h"
#include "foundation/statistics.h"
#include "preparation/normal_equations.h"
#include "run/solution_closing.h"
#include "run/static_solve.h"

namespace vornel {

namespace {

constexpr int kMaxIterations = 10;
constexpr double kStartSigma = 35.0;        // metres: lets everything pass at first
constexpr double kConverged = 0.001;        // metres
constexpr double kFullWeightLimit = 2.5;    // standard deviations
constexpr double kUnusableValue = 99999.0;  // a row that must not count

// The last double difference of a satellite on one frequency.
struct PreviousDifference {
    double epochIndex = -1.0;
    double design[3] = {};
    double value = 0.0;  // metres
};

// The reference of a system in a pass.
struct PassReference {
    bool usable = false;
    double residual = 0.0;  // observed minus computed, metres
    double unit[3] = {};
};

int SystemSlot(int system) {
    switch (system) {
        case kGlonass:
            return 1;
        case kBds:
            return 2;
        case kGalileo:
            return 3;
        default:
            return 0;
    }
}

class TripleDifference {
  public:
    explicit TripleDifference(StaticSolve& solver)
        : solver_(solver), model_(solver), x_(solver.roverPosition) {}

    int Solve() {
        CoordinateStep step;
        for (int iteration = 0; iteration < kMaxIterations; ++iteration) {
            AccumulateEpochs();
            if (solver_.reservedProcessFlag != 0) {
                AddPriorConstraint();
            }
            try {
                step = SolveStep(equations_, x_);
            } catch (const std::exception&) {
                return VORNEL_STATUS_TRIPLE_FAILED;
            }
            sigma_ = step.rms;
            if (step.norm < kConverged) {
                break;
            }
        }
        try {
            Store(step);
        } catch (const std::exception&) {
            return VORNEL_STATUS_TRIPLE_FAILED;
        }
        return VORNEL_STATUS_TRIPLE_DONE;
    }

  private:
    // Expected standard deviation of a triple difference, metres.
    double SigmaScale() const {
        return 2 * solver_.config.phaseStd * kGpsL1Wavelength * std::sqrt(2.0);
    }

    void AccumulateEpochs() {
        equations_ = CoordinateEquations();
        const StaticPeriod* lastPeriod = nullptr;
        for (int e = 0; e < static_cast<int>(solver_.epochs.size()); ++e) {
            const StaticPeriod* period = solver_.PeriodOf(e);
            if (period == nullptr || !period->HasReference()) {
                continue;
            }
            if (period != lastPeriod) {
                ForgetPrevious();
                lastPeriod = period;
            }
            const bool firstUsed = solver_.solveModel != VORNEL_MODEL_SECOND;
            if (firstUsed && !AccumulatePass(e, *period, 1)) {
                continue;
            }
            if (solver_.solveModel != VORNEL_MODEL_FIRST) {
                AccumulatePass(e, *period, 2);
            }
        }
    }

    // No triple difference crosses the limit of a period.
    void ForgetPrevious() {
        for (auto& table : previous_) {
            for (PreviousDifference& entry : table) {
                entry.epochIndex = -1.0;
            }
        }
    }

    // One frequency of one epoch. False when no system has its reference there.
    bool AccumulatePass(int e, const StaticPeriod& period, int frequency) {
        const SDObsData& epoch = solver_.epochs[static_cast<std::size_t>(e)];
        PassReference references[4];
        bool anyUsable = false;
        for (const int system : {kGps, kGlonass, kBds, kGalileo}) {
            const int sat = period.ReferenceOf(system);
            if (sat != -1 && epoch.IsActive(sat)) {
                PassReference& reference = references[SystemSlot(system)];
                reference.residual = Residual(e, sat, frequency, reference.unit);
                reference.usable = true;
                anyUsable = true;
            }
        }
        if (!anyUsable) {
            return false;
        }
        for (const int sat : epoch.activeSats) {
            const int system = SplitSatNumber(sat);
            const PassReference& reference = references[SystemSlot(system)];
            if (!period.IsReference(sat) && reference.usable) {
                AddSatellite(e, sat, system, frequency, reference);
            }
        }
        return true;
    }

    // Observed minus computed single difference, metres.
    double Residual(int e, int sat, int frequency, double unit[3]) {
        const SDObsData& epoch = solver_.epochs[static_cast<std::size_t>(e)];
        const Carriers carriers = model_.CarriersOf(epoch, sat);
        const PhaseCombination signal = SingleFrequency(carriers, frequency);
        const ComputedDifference computed = model_.Compute(e, sat, carriers, signal, x_);
        for (int k = 0; k < 3; ++k) {
            unit[k] = computed.unit[k];
        }
        return epoch.phase[sat - 1][frequency - 1] * signal.wavelength - computed.WithAntenna();
    }

    void AddSatellite(int e, int sat, int system, int frequency, const PassReference& reference) {
        PreviousDifference now;
        now.epochIndex = e;
        double unit[3];
        now.value = Residual(e, sat, frequency, unit) - reference.residual;
        for (int k = 0; k < 3; ++k) {
            now.design[k] = unit[k] - reference.unit[k];
        }
        const bool hasBand = frequency == 1 ? model_.carrierTable().HasFirstGalileoBand()
                                            : model_.carrierTable().HasSecondGalileoBand();
        if (system == kGalileo && !hasBand) {
            now.value = kUnusableValue;
        }
        PreviousDifference& before = previous_[frequency - 1][sat - 1];
        if (IsConsecutive(before, now)) {
            AddRow(before, now);
        }
        before = now;
    }

    static bool IsConsecutive(const PreviousDifference& before, const PreviousDifference& now) {
        return before.epochIndex != -1.0 && now.epochIndex - before.epochIndex == 1.0 &&
               before.value != kUnusableValue && now.value != kUnusableValue;
    }

    void AddRow(const PreviousDifference& before, const PreviousDifference& now) {
        const double v = now.value - before.value;
        const double w = IggWeight(v / sigma_, kFullWeightLimit, solver_.config.outlierFactor);
        if (w == 0.0) {
            return;
        }
        double h[3];
        for (int k = 0; k < 3; ++k) {
            h[k] = now.design[k] - before.design[k];
        }
        equations_.Add(h, v, w);
    }

    void AddPriorConstraint() {
        const gult::matrixT& cov = solver_.priorBaselineCov;
        if (cov.RowCount() != 3 || cov.ColCount() != 3) {
            return;
        }
        const gult::matrixT weight = !cov * SigmaScale();
        gult::matrixT misclosure(3, 1);
        misclosure(0, 0) = solver_.priorBaseline.X - x_.X;
        misclosure(1, 0) = solver_.priorBaseline.Y - x_.Y;
        misclosure(2, 0) = solver_.priorBaseline.Z - x_.Z;
        equations_.AddConstraint(weight, misclosure);
    }

    void Store(const CoordinateStep& step) {
        SolveResultTD result;
        const int model = solver_.solveModel;
        result.mode =
            model == VORNEL_MODEL_FIRST || model == VORNEL_MODEL_SECOND ? model : VORNEL_MODEL_BOTH;
        SetBaseline(result, x_, solver_.basePosition);
        SetCovariance(result, step.Q, x_);
        SetAccuracy(result, result.length);
        result.sigmaLength = SigmaLength(result);
        result.rms = step.rms;
        if (IsZeroBaseline(result)) {
            result.sigma3 = 0.0;
            result.relativeAccuracy = 0.0;
            result.sigmaLength = 0.0;
        }
        result.dof = equations_.n - 3;
        result.varianceFactor = step.sigmaW * step.sigmaW / (SigmaScale() * SigmaScale());
        solver_.resultManage.tripleDiff = result;
        const XYZPosition& base = solver_.basePosition;
        solver_.roverPosition =
            XYZPosition(base.X + result.dX, base.Y + result.dY, base.Z + result.dZ);
    }

    // As SetAccuracy has it but for the last bits: here each direction cosine is formed first.
    static double SigmaLength(const SolveResultTD& result) {
        gult::matrixT Q = result.covXYZ;
        const auto part = [&](double component, double variance) {
            const double cosine = component / result.length;
            return cosine * cosine * variance;
        };
        return std::sqrt(part(result.dX, Q(0, 0)) + part(result.dY, Q(1, 1)) +
                         part(result.dZ, Q(2, 2)));
    }

    StaticSolve& solver_;
    SingleDifferenceModel model_;
    XYZPosition x_;  // rover
    double sigma_ = kStartSigma;
    CoordinateEquations equations_;
    PreviousDifference previous_[2][kSatelliteCount];
};

}  // namespace

int StaticSolve::SolveTripleDifference() {
    return TripleDifference(*this).Solve();
}

}  // namespace vornel
