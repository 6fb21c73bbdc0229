// GLONASS cycle slips, found at single-difference level.
//
// No reference is differenced out, since GLONASS satellites differ in wavelength. The
// epoch-to-epoch change of a satellite's single-difference residual holds a term common to all
// satellites; the majority's mean is taken for it, and a satellite that deviates has slipped by the
// nearest whole number of cycles.
//
// Of the run, RepairGlonassSlips
//   reads   epochs (activeSats, phase), periods, solveModel, config (minEpochs, galFreq1,
//           galFreq2), roverPosition, basePosition, antennas, ambiguityParas
//   writes  epochs (activeSats, phase), ambiguityParas, modelCache
#include <algorithm>
#include <cmath>

#include "difference/single_difference.h"
#include "foundation/satellite.h"
#include "foundation/statistics.h"
#include "preparation/segment.h"
#include "run/static_solve.h"

namespace vornel {

namespace {

bool Holds(const std::vector<int>& sats, int sat) {
    return std::find(sats.begin(), sats.end(), sat) != sats.end();
}

// What ClusterDeltas found on one frequency at an epoch.
struct Verdict {
    int result = 1;
    double mean = 0.0;          // of the majority, metres
    std::vector<int> outliers;  // kept through the epoch
};

struct SatelliteState {
    double cumulated[2] = {0.0, 0.0};  // cycles removed so far, by frequency
    int goodCount = 0;                 // epochs since the last discontinuity that passed
    int badCount = 0;                  // epochs since the last good one that did not
    Segment segment;
    Remembered previous[2];  // last repaired residual, metres

    // This epoch:
    double residual[2] = {0.0, 0.0};  // metres
    double slip[2] = {0.0, 0.0};      // cycles
};

class GlonassSlipRepair {
  public:
    explicit GlonassSlipRepair(StaticSolve& solver)
        : solver_(solver),
          model_(solver),
          minEpochs_(std::max(solver.config.minEpochs, 1)),
          state_(kSatelliteCount) {
        const bool twoFrequencies =
            solver.solveModel != VORNEL_MODEL_FIRST && solver.solveModel != VORNEL_MODEL_SECOND;
        inUse_[0] = twoFrequencies || solver.solveModel == VORNEL_MODEL_FIRST;
        inUse_[1] = twoFrequencies || solver.solveModel == VORNEL_MODEL_SECOND;
    }

    void Run() {
        const StaticPeriod* lastPeriod = nullptr;
        for (e_ = 0; e_ < static_cast<int>(solver_.epochs.size()); ++e_) {
            const StaticPeriod* period = solver_.PeriodOf(e_);
            if (period == nullptr) {
                continue;
            }
            if (period != lastPeriod) {
                CloseSegments();
                lastPeriod = period;
            }
            TakeUpEpoch();
            JudgeContinuous();
            JudgeGapped();
            AcceptEpoch();
        }
        CloseSegments();
        SortAmbiguities(solver_.ambiguityParas);
    }

  private:
    SDObsData& EpochAt(int index) { return solver_.epochs[static_cast<std::size_t>(index)]; }
    SatelliteState& StateOf(int sat) { return state_[static_cast<std::size_t>(sat - 1)]; }
    static bool IsGlonass(int sat) { return SplitSatNumber(sat) == kGlonass; }

    void CloseSegments() {
        for (int sat = 1; sat <= kSatelliteCount; ++sat) {
            if (!IsGlonass(sat)) {
                continue;
            }
            SatelliteState& state = StateOf(sat);
            state.segment.Close(sat, state.segment.arcEnd, minEpochs_, solver_.ambiguityParas);
            state.segment = Segment();
            state.previous[0].epochIndex = state.previous[1].epochIndex = -1.0;
        }
    }

    double Wavelength(int sat, int f) {
        const Carriers carriers = model_.CarriersOf(EpochAt(e_), sat);
        return f == 0 ? carriers.wavelength1 : carriers.wavelength2;
    }

    // Single-difference residual at the current rover position, metres; clock and ambiguity stay in
    // it.
    double ResidualOf(int index, int sat, int f) {
        const SDObsData& epoch = EpochAt(index);
        const Carriers carriers = model_.CarriersOf(epoch, sat);
        const PhaseCombination signal = SingleFrequency(carriers, f + 1);
        const ComputedDifference computed =
            model_.Compute(index, sat, carriers, signal, solver_.roverPosition);
        return epoch.phase[sat - 1][f] * signal.wavelength - computed.model + computed.antenna;
    }

    // Applies what has been repaired so far, and forms residuals, changes, and the lists of
    // satellites to judge.
    void TakeUpEpoch() {
        continuous_.clear();
        gapped_.clear();
        for (Verdict& verdict : verdicts_) {
            verdict = Verdict();
        }
        SDObsData& epoch = EpochAt(e_);
        for (const int sat : epoch.activeSats) {
            SatelliteState& state = StateOf(sat);
            for (int f = 0; f < 2; ++f) {
                state.slip[f] = 0.0;
                epoch.phase[sat - 1][f] -= state.cumulated[f];
            }
            if (!IsGlonass(sat)) {
                continue;
            }
            for (int f = 0; f < 2; ++f) {
                if (!inUse_[f]) {
                    continue;
                }
                state.residual[f] = ResidualOf(e_, sat, f);
                if (state.previous[f].epochIndex != -1.0) {
                    deltas_[f][sat - 1] = state.residual[f] - state.previous[f].value;
                }
            }
            // The first frequency alone tells who is judged.
            if (inUse_[0] && state.previous[0].epochIndex != -1.0) {
                const int gap = static_cast<int>(e_ - state.previous[0].epochIndex);
                if (gap == 1) {
                    continuous_.push_back(sat);
                } else {
                    gapped_.emplace_back(sat, gap);
                    state.badCount += gap;
                    state.goodCount = 0;
                }
            }
        }
    }

    void Cluster(const std::vector<int>& sats, const double (&deltas)[2][kSatelliteCount]) {
        for (int f = 0; f < 2; ++f) {
            verdicts_[f].result =
                inUse_[f] ? solver_.ClusterDeltas(sats, deltas[f], f + 1, verdicts_[f].mean,
                                                  verdicts_[f].outliers)
                          : 1;
        }
    }
    bool AllAgree() const { return verdicts_[0].result == 1 && verdicts_[1].result == 1; }
    bool Undecided() const { return verdicts_[0].result == -1 || verdicts_[1].result == -1; }

    // Satellites that were there at the previous epoch.
    void JudgeContinuous() {
        Cluster(continuous_, deltas_);
        if (AllAgree()) {
            for (const int sat : continuous_) {
                CountGood(sat);
            }
        } else if (Undecided()) {
            for (const int sat : continuous_) {
                RestartUndecided(sat);
            }
        } else {
            std::vector<int> outliers = verdicts_[0].outliers;
            for (const int sat : verdicts_[1].outliers) {
                if (!Holds(outliers, sat)) {
                    outliers.push_back(sat);
                }
            }
            for (const int sat : outliers) {
                TreatOutlier(sat);
            }
        }
    }

    void CountGood(int sat) {
        ++StateOf(sat).goodCount;
        StateOf(sat).badCount = 0;
    }

    void CountBad(int sat) {
        ++StateOf(sat).badCount;
        StateOf(sat).goodCount = 0;
    }

    bool CameBackTooBriefly(int sat) {
        return StateOf(sat).goodCount > 0 && StateOf(sat).goodCount < minEpochs_;
    }
    bool HasFailedTooLong(int sat) { return StateOf(sat).badCount >= minEpochs_; }

    void RestartUndecided(int sat) {
        const SatelliteState& state = StateOf(sat);
        if (CameBackTooBriefly(sat)) {
            RestartArc(sat, state.goodCount, e_ - state.goodCount - 1);
        } else if (HasFailedTooLong(sat)) {
            // The old segment ends at e - 1, although its last epochs lose the satellite.
            RestartArc(sat, state.badCount, e_ - 1);
        } else {
            RestartArc(sat, 0, e_ - 1);
        }
    }

    void TreatOutlier(int sat) {
        const SatelliteState& state = StateOf(sat);
        if (CameBackTooBriefly(sat)) {
            RestartArc(sat, state.goodCount, e_ - state.goodCount - 1);
        } else if (HasFailedTooLong(sat)) {
            RestartArc(sat, state.badCount, e_ - state.badCount - 1);
        } else {
            CountBad(sat);
            RepairOrDrop(sat);
        }
    }

    // Whole cycles by which the satellite left the majority.
    double SlipOf(int sat, int f) {
        return RoundHalfAway((deltas_[f][sat - 1] - verdicts_[f].mean) / Wavelength(sat, f));
    }

    // A deviation of no whole cycle costs the satellite this epoch.
    void RepairOrDrop(int sat) {
        SDObsData& epoch = EpochAt(e_);
        SatelliteState& state = StateOf(sat);
        if (Holds(verdicts_[0].outliers, sat)) {
            const double n = SlipOf(sat, 0);
            if (n != 0) {
                state.slip[0] = n;
            } else {
                epoch.RemoveActive(sat);
            }
        }
        if (Holds(verdicts_[1].outliers, sat)) {
            const double n = SlipOf(sat, 1);
            if (n != 0) {
                state.slip[1] = n;
            } else if (epoch.IsActive(sat)) {
                epoch.RemoveActive(sat);
                state.slip[0] = 0.0;
            }
        }
    }

    // Satellites that come back after a gap, each tested across it against those that were there on
    // both sides.
    void JudgeGapped() {
        for (const auto& [sat, gap] : gapped_) {
            const int before = e_ - gap;
            std::vector<int> others;
            for (const int other : EpochAt(before).activeSats) {
                if (IsGlonass(other) && EpochAt(e_).IsActive(other)) {
                    others.push_back(other);
                }
            }
            double changes[2][kSatelliteCount] = {};
            for (int f = 0; f < 2; ++f) {
                changes[f][sat - 1] = deltas_[f][sat - 1];
                for (const int other : others) {
                    if (other != sat && inUse_[f]) {
                        changes[f][other - 1] =
                            StateOf(other).residual[f] - ResidualOf(before, other, f);
                    }
                }
            }
            Cluster(others, changes);
            JudgeAcrossGap(sat);
        }
    }

    void JudgeAcrossGap(int sat) {
        SatelliteState& state = StateOf(sat);
        const bool outlier[2] = {Holds(verdicts_[0].outliers, sat),
                                 Holds(verdicts_[1].outliers, sat)};
        if (Undecided()) {
            RestartArc(sat, 0, e_ - state.badCount - 1);
        } else if (AllAgree() || (!outlier[0] && !outlier[1])) {
            CountGood(sat);
        } else if (!HasFailedTooLong(sat)) {
            CountBad(sat);
            for (int f = 0; f < 2; ++f) {
                if (outlier[f]) {
                    state.slip[f] = SlipOf(sat, f);
                }
            }
        } else {
            RestartArc(sat, state.badCount, e_ - state.badCount - 1);
        }
    }

    // Every discontinuity: takes the satellite out of the k epochs before this one, files the
    // segment up to `end` and begins a new one here.
    void RestartArc(int sat, int k, int end) {
        SatelliteState& state = StateOf(sat);
        RemoveFromEpochsBefore(solver_, sat, e_, k);
        state.goodCount = 1;
        state.badCount = 0;
        state.segment.Close(sat, end, minEpochs_, solver_.ambiguityParas);
        state.segment.arcEnd = end;
        state.segment.arcStart = e_;
    }

    void AcceptEpoch() {
        SDObsData& epoch = EpochAt(e_);
        for (const int sat : epoch.activeSats) {
            if (!IsGlonass(sat)) {
                continue;
            }
            SatelliteState& state = StateOf(sat);
            if (e_ == 0) {
                ++state.goodCount;
                ++state.badCount;
            }
            state.segment.Extend(e_);
            for (int f = 0; f < 2; ++f) {
                state.previous[f] = {static_cast<double>(e_),
                                     state.residual[f] - Wavelength(sat, f) * state.slip[f]};
                epoch.phase[sat - 1][f] -= state.slip[f];
                state.cumulated[f] += state.slip[f];
            }
        }
    }

    StaticSolve& solver_;
    SingleDifferenceModel model_;
    int minEpochs_;
    bool inUse_[2];
    std::vector<SatelliteState> state_;  // by satellite number - 1

    // This epoch:
    int e_ = 0;
    double deltas_[2][kSatelliteCount] = {};   // change since the last residual, metres
    std::vector<int> continuous_;              // tracked at the previous epoch
    std::vector<std::pair<int, int>> gapped_;  // satellite, epochs since it was last there
    Verdict verdicts_[2];
};

}  // namespace

int StaticSolve::ClusterDeltas(std::vector<int> sats, const double* deltas, int frequency,
                               double& mean, std::vector<int>& outliers) const {
    const double tolerance = frequency == 1 ? 0.07 : 0.08;  // metres
    if (sats.empty()) {
        return 1;
    }
    if (sats.size() <= 2) {
        return -1;
    }
    struct Cluster {
        std::vector<int> sats;
        double sum = 0.0;
        double Mean() const { return sum / static_cast<double>(sats.size()); }
    };
    std::vector<Cluster> clusters;
    while (!sats.empty()) {
        Cluster cluster;
        std::vector<int> rest;
        for (const int sat : sats) {
            const double delta = deltas[sat - 1];
            if (cluster.sats.empty() || std::fabs(delta - cluster.Mean()) < tolerance) {
                cluster.sats.push_back(sat);
                cluster.sum += delta;
            } else {
                rest.push_back(sat);
            }
        }
        clusters.push_back(cluster);
        sats = rest;
    }
    if (clusters.size() == 1) {
        return 1;
    }
    const auto smaller = [](const Cluster& left, const Cluster& right) {
        return left.sats.size() < right.sats.size();
    };
    const auto largest = std::max_element(clusters.begin(), clusters.end(), smaller);
    const auto ofItsSize = std::count_if(
        clusters.begin(), clusters.end(),
        [&largest](const Cluster& cluster) { return cluster.sats.size() == largest->sats.size(); });
    if (ofItsSize > 1 || largest->sats.size() < 2) {
        return -1;
    }
    mean = largest->Mean();
    for (auto cluster = clusters.begin(); cluster != clusters.end(); ++cluster) {
        if (cluster != largest) {
            outliers.insert(outliers.end(), cluster->sats.begin(), cluster->sats.end());
        }
    }
    return 0;
}

void StaticSolve::RepairGlonassSlips() {
    GlonassSlipRepair(*this).Run();
}

}  // namespace vornel
