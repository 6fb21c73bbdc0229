// Cycle slips of GPS, BDS and Galileo, found at double-difference level.
//
// Within a system the satellites share their wavelengths, so the epoch-to-epoch change of a double
// difference against the period's reference should be near zero cycles. A change above a tolerance
// is a slip: repaired when it lies close to a whole number, else the satellite loses the epoch.
// Each satellite's tolerance follows the scatter of its own changes, so the data are swept until
// the tolerances settle.
//
// Background. The double difference in cycles, observed minus computed at the rover position of the
// triple-difference solution, is an ambiguity plus what the model leaves. From one epoch to the next
// the ambiguity drops out (Remondi 1984), and
//
//     d = DD(e) - DD(last accepted epoch) = slip + drift of what the model leaves + noise.
//
// The test holds |d| on each frequency in use against the tolerance min(outlierFactor * scatter,
// slipTestCap), by satellite; the scatter is the root mean square of its accepted changes in the
// sweep before, 1 cycle at first. It assumes that the drift between two epochs is well below half a
// cycle: the baseline short enough or the sampling dense enough for the ionosphere.
//
//   |d| within tolerance              accepted
//   first frequency                   repaired by the nearest whole number n, unless n is 0 or d
//                                     lies 0.3 cycle or more from it
//   second frequency                  repaired by the nearest whole number, unless |d| is 0.7 or
//                                     less; its distance from that number is not asked
//   none of these                     the satellite loses the epoch, and the next one is compared
//                                     with the last accepted one again
//
// Before a repair is tried: a satellite that fails when fewer than minEpochs epochs have passed
// since its last failure loses these, and one that has failed for minEpochs epochs loses those. A
// new segment begins there: a new ambiguity.
//
// A repair is taken off all later phases of the satellite. A slip of the reference satellite shows
// in all satellites of its system at once, each repaired by the same number, which repairs the
// difference. Segments shorter than minEpochs are not filed: their rows have no ambiguity later and
// drop out. A tolerance has settled when a sweep moves it by less than 0.001 cycle. A satellite whose
// tolerance has not settled after ten sweeps is left without segments, and so out of all solutions.
//
// How it fails. Half-cycle slips are no whole number: they end in a new segment. A change at the
// noise's own size stays in as it is, and on the second frequency a drift above 0.7 cycle is taken
// for a slip. Without the reference at an epoch the system is not tested there, and its satellites
// count the epoch as good.
//
// Of the run, RepairDoubleDifferenceSlips
//   reads   epochs (activeSats, phase), periods, solveModel, config (minEpochs, outlierFactor,
//           slipTestCap, galFreq1, galFreq2), roverPosition, basePosition, antennas, ambiguityParas
//   writes  epochs (activeSats, phase), ambiguityParas, modelCache
#include <algorithm>
#include <cmath>

#include "difference/single_difference.h"
#include "foundation/conversion.h"
#include "foundation/satellite.h"
#include "foundation/statistics.h"
#include "preparation/segment.h"
#include "run/static_solve.h"

namespace vornel {

namespace {

constexpr int kMaxSweeps = 10;
constexpr double kSettled = 0.001;       // cycles
constexpr double kNearInteger = 0.3;     // cycles, first frequency
constexpr double kClearlySlipped = 0.7;  // cycles, second frequency

// Kept over the sweeps.
struct Tolerance {
    double scatter = 1.0;  // standard deviation of a change, cycles
    double tolerance = 0.0;
    int removedCount = 0;  // observations taken away; read by nothing
};

// Of one sweep.
struct SweepState {
    double cumulated[2] = {0.0, 0.0};  // cycles removed, by frequency
    int goodCount = 0;
    int badCount = 0;
    Segment segment;
    Remembered previous[2];  // last accepted double difference, cycles, before repair
    double sumSquares = 0.0;
    int usedCount = 0;
};

// A satellite at an epoch, under test.
struct Change {
    double doubleDifference[2] = {0.0, 0.0};  // cycles
    double change[2] = {0.0, 0.0};            // since the last accepted one, cycles
    double slip[2] = {0.0, 0.0};              // cycles
};

class DoubleDifferenceSlipRepair {
  public:
    explicit DoubleDifferenceSlipRepair(StaticSolve& solver)
        : solver_(solver),
          model_(solver),
          minEpochs_(solver.config.minEpochs),
          twoFrequencies_(solver.solveModel != VORNEL_MODEL_FIRST &&
                          solver.solveModel != VORNEL_MODEL_SECOND),
          tolerances_(kSatelliteCount) {
        inUse_[0] = twoFrequencies_ || solver.solveModel == VORNEL_MODEL_FIRST;
        inUse_[1] = twoFrequencies_ || solver.solveModel == VORNEL_MODEL_SECOND;
    }

    void Run() {
        for (int sweep = 0; sweep < kMaxSweeps; ++sweep) {
            BeginSweep();
            SweepEpochs();
            if (EndSweep()) {
                break;
            }
        }
    }

  private:
    SDObsData& EpochAt(int index) { return solver_.epochs[static_cast<std::size_t>(index)]; }
    SweepState& StateOf(int sat) { return state_[static_cast<std::size_t>(sat - 1)]; }
    Tolerance& ToleranceOf(int sat) { return tolerances_[static_cast<std::size_t>(sat - 1)]; }

    void BeginSweep() {
        state_.assign(kSatelliteCount, SweepState());
        for (Tolerance& entry : tolerances_) {
            entry.tolerance = solver_.config.outlierFactor * entry.scatter;
            entry.scatter = 0.0;
        }
    }

    void SweepEpochs() {
        const StaticPeriod* lastPeriod = nullptr;
        for (e_ = 0; e_ < static_cast<int>(solver_.epochs.size()); ++e_) {
            const StaticPeriod* period = solver_.PeriodOf(e_);
            if (period == nullptr || !period->HasReference()) {
                continue;
            }
            if (period != lastPeriod) {
                CloseSegments();
                lastPeriod = period;
            }
            if (!TakeUpReferences(*period)) {
                continue;
            }
            // Testing takes satellites out of the list, so the walk is on a copy.
            const std::vector<int> sats = EpochAt(e_).activeSats;
            for (const int sat : sats) {
                const int system = SplitSatNumber(sat);
                if (!period->IsReference(sat) && system != kGlonass && !IsDone(sat) &&
                    usable_[system]) {
                    Test(sat, system);
                }
            }
        }
    }

    void CloseSegments() {
        for (int sat = 1; sat <= kSatelliteCount; ++sat) {
            SweepState& state = StateOf(sat);
            state.segment.Close(sat, state.segment.arcEnd, minEpochs_, solver_.ambiguityParas);
            state.segment = Segment();
            state.previous[0].epochIndex = state.previous[1].epochIndex = -1.0;
        }
    }

    // Files the segments, and takes those of satellites whose tolerance has not settled away again:
    // the next sweep makes them anew. True when all have settled.
    bool EndSweep() {
        CloseSegments();
        SortAmbiguities(solver_.ambiguityParas);
        bool allSettled = true;
        const double factor = solver_.config.outlierFactor;
        for (int sat = 1; sat <= kSatelliteCount; ++sat) {
            const SweepState& state = StateOf(sat);
            Tolerance& entry = ToleranceOf(sat);
            entry.scatter = state.usedCount > 0 ? std::sqrt(state.sumSquares / state.usedCount)
                                                : entry.tolerance / factor;
            if (std::fabs(entry.tolerance - entry.scatter * factor) < kSettled) {
                if (state.usedCount > 0) {
                    doneSats_.push_back(sat);
                }
            } else {
                allSettled = false;
                std::erase_if(solver_.ambiguityParas,
                              [sat](const AmbiguityPara& para) { return para.sat == sat; });
            }
        }
        return allSettled;
    }

    bool IsDone(int sat) const {
        return std::find(doneSats_.begin(), doneSats_.end(), sat) != doneSats_.end();
    }

    // Phase minus computed value in cycles, at the current rover position.
    double CyclesOf(int sat, int f) {
        const SDObsData& epoch = EpochAt(e_);
        const Carriers carriers = model_.CarriersOf(epoch, sat);
        const PhaseCombination signal = SingleFrequency(carriers, f + 1);
        const ComputedDifference computed =
            model_.Compute(e_, sat, carriers, signal, solver_.roverPosition);
        return epoch.phase[sat - 1][f] - computed.WithAntenna() / signal.wavelength;
    }

    // Of a satellite against its system's reference at this epoch, cycles.
    double DoubleDiffCycles(int sat, int system, int f) {
        return CyclesOf(sat, f) - referenceCycles_[system][f];
    }

    // Evaluates the references that the epoch holds. A system without its reference gets no test,
    // and its satellites count the epoch as good. False when no system can be tested.
    bool TakeUpReferences(const StaticPeriod& period) {
        const SDObsData& epoch = EpochAt(e_);
        bool any = false;
        for (const int system : {kGps, kGlonass, kBds, kGalileo}) {
            const int reference = period.ReferenceOf(system);
            usable_[system] = reference != -1 && epoch.IsActive(reference);
            if (usable_[system]) {
                any = true;
                for (int f = 0; f < 2; ++f) {
                    if (inUse_[f]) {
                        referenceCycles_[system][f] = CyclesOf(reference, f);
                    }
                }
                continue;
            }
            for (const int sat : epoch.activeSats) {
                if (SplitSatNumber(sat) == system) {
                    ++StateOf(sat).goodCount;
                    StateOf(sat).badCount = 0;
                }
            }
        }
        return any;
    }

    void Test(int sat, int system) {
        SweepState& state = StateOf(sat);
        const double since = e_ - state.previous[0].epochIndex;
        if (since == 0.0) {
            return;
        }
        Change now;
        if (!FormChanges(sat, system, now)) {
            return;
        }
        int gap = 0;
        if (since > 1.0) {
            gap = TruncateToInt(since);
            state.badCount += gap;
            state.goodCount = 0;
        }
        const double limit = std::min(ToleranceOf(sat).tolerance, solver_.config.slipTestCap);
        if (std::fabs(now.change[0]) <= limit && std::fabs(now.change[1]) <= limit) {
            ++state.goodCount;
            state.badCount = 0;
            Accept(sat, now);
        } else if (state.goodCount > 0 && state.goodCount < minEpochs_) {
            // Failed soon after its return.
            Restart(sat, state.goodCount, now);
        } else if (state.badCount >= minEpochs_) {
            // Has been failing too long.
            Restart(sat, state.badCount, now);
        } else {
            ++state.badCount;
            state.goodCount = 0;
            if (FindSlips(now, limit)) {
                Accept(sat, now);
            } else {
                Drop(sat, gap);
            }
        }
    }

    // False for a satellite without the second frequency that the run uses.
    bool FormChanges(int sat, int system, Change& now) {
        const SweepState& state = StateOf(sat);
        const bool hasBand[2] = {
            system != kGalileo || model_.carrierTable().HasFirstGalileoBand(),
            system != kGalileo || model_.carrierTable().HasSecondGalileoBand()};
        if (inUse_[1] && !hasBand[1]) {
            return false;
        }
        for (int f = 0; f < 2; ++f) {
            if (!inUse_[f] || !hasBand[f]) {
                continue;
            }
            now.doubleDifference[f] = DoubleDiffCycles(sat, system, f);
            if (state.previous[f].epochIndex >= 0.0) {
                now.change[f] = now.doubleDifference[f] - state.previous[f].value;
            }
        }
        return true;
    }

    // Whole cycles to take away on each frequency; false when a change is no slip of whole cycles.
    // On the second frequency a large change is rounded without a test of nearness.
    static bool FindSlips(Change& now, double limit) {
        if (std::fabs(now.change[0]) > limit) {
            const double n = RoundHalfAway(now.change[0]);
            if (n == 0 || !(std::fabs(now.change[0] - n) < kNearInteger)) {
                return false;
            }
            now.slip[0] = n;
        }
        if (std::fabs(now.change[1]) > limit) {
            if (!(std::fabs(now.change[1]) > kClearlySlipped)) {
                now.slip[0] = 0.0;
                return false;
            }
            now.slip[1] = RoundHalfAway(now.change[1]);
        }
        return true;
    }

    int ObservationsPerEpoch() const { return twoFrequencies_ ? 2 : 1; }

    // The satellite loses the k epochs before this one, where a new segment begins.
    void Restart(int sat, int k, Change& now) {
        SweepState& state = StateOf(sat);
        ToleranceOf(sat).removedCount +=
            RemoveFromEpochsBefore(solver_, sat, e_, k) * ObservationsPerEpoch();
        state.goodCount = 1;
        state.badCount = 0;
        now.change[0] = now.change[1] = 0.0;
        state.segment.arcEnd = e_ - k - 1;
        state.segment.Close(sat, state.segment.arcEnd, minEpochs_, solver_.ambiguityParas);
        state.segment.arcStart = e_;
        Accept(sat, now);
    }

    // The satellite loses this epoch; the next one is tested against the last accepted one again,
    // so neither this epoch nor the gap before it counts as failed twice.
    void Drop(int sat, int gap) {
        EpochAt(e_).RemoveActive(sat);
        ToleranceOf(sat).removedCount += ObservationsPerEpoch();
        StateOf(sat).badCount -= gap + 1;
    }

    void Accept(int sat, const Change& now) {
        SweepState& state = StateOf(sat);
        state.segment.Extend(e_);
        double left[2];
        for (int f = 0; f < 2; ++f) {
            left[f] = now.change[f] - now.slip[f];
            // Before repair, since the next epoch's raw value holds the slip as well.
            state.previous[f] = {static_cast<double>(e_), now.doubleDifference[f]};
            state.cumulated[f] += now.slip[f];
            EpochAt(e_).phase[sat - 1][f] -= state.cumulated[f];
        }
        state.sumSquares += left[0] * left[0] + left[1] * left[1];
        if (left[0] != 0.0) {
            ++state.usedCount;
        }
        if (twoFrequencies_ && left[1] != 0.0) {
            ++state.usedCount;
        }
    }

    StaticSolve& solver_;
    SingleDifferenceModel model_;
    double minEpochs_;
    bool twoFrequencies_;
    bool inUse_[2];
    std::vector<Tolerance> tolerances_;  // by satellite number - 1
    std::vector<SweepState> state_;
    std::vector<int> doneSats_;  // tolerance settled

    // This epoch, by system code:
    int e_ = 0;
    bool usable_[kGalileo + 1] = {};
    double referenceCycles_[kGalileo + 1][2] = {};
};

}  // namespace

void StaticSolve::RepairDoubleDifferenceSlips() {
    DoubleDifferenceSlipRepair(*this).Run();
}

}  // namespace vornel
