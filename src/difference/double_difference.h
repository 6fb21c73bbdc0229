// Double differences of one frequency block of one epoch: the observed minus computed values that
// the float solution, the fixed solution and the integer search start from.
//
// Of the run, RowFinder
//   reads   epochs (activeSats), ambiguityParas
//   writes  nothing
// Of the run, DoubleDifferencer
//   reads   epochs (activeSats, phase, glonassChannel), roverPosition, basePosition, antennas,
//           ambiguityParas, config (galFreq1, galFreq2)
//   writes  modelCache
#pragma once

#include <optional>
#include <vector>

#include "difference/combination.h"
#include "foundation/satellite.h"
#include "run/ambiguity_records.h"

namespace vornel {

// A satellite of an epoch that has what a row needs.
struct Row {
    int sat;
    int system;
    int ambiguity;  // position in the list of ambiguities
    int wideLane;   // position in the wide-lane list; -1 outside model 6
    int para;       // GLONASS: position in the run's segments; else -1
};

// The rows of an epoch, by satellite number: satellites in use, other than the references, for
// which `ambiguities` holds a track at that epoch; in model 6 the wide-lane list (null otherwise)
// as well, and for GLONASS the run's segments.
class RowFinder {
  public:
    // The lists are taken as they are now.
    RowFinder(const StaticSolve& solver, const std::vector<AmbRstInfo>& ambiguities,
              const std::vector<AmbRstInfo>* wideLane);

    std::vector<Row> RowsOfEpoch(int epochIndex, const StaticPeriod& period) const;

  private:
    const StaticSolve& solver_;
    AmbiguityIndex ambiguities_, paras_;
    std::optional<AmbiguityIndex> wideLane_;
};

struct SystemReference {
    bool present = false;
    LaneCombination combination{};
    double observed = 0.0;      // combined phase minus computed value, metres
    double unit[3] = {};        // from the satellite to the rover
    double sinElevation = 0.0;  // at the rover
};

struct DoubleDifference {
    LaneCombination combination;
    double v;             // observed minus computed, metres, ambiguity still in it
    double direction[3];  // of the row in the rover's coordinates
    double biasFactor;    // of the GLONASS bias; 0 for other systems
    double sinElevation;  // at the rover
};

class DoubleDifferencer {
  public:
    DoubleDifferencer(StaticSolve& solver, int mode, int block, ModelForm form);

    // Evaluates the references that the epoch holds, at the solver's rover position. False when
    // there is none.
    bool TakeUpEpoch(int epochIndex, const StaticPeriod& period);
    const SystemReference& ReferenceOf(int system) const { return references_[system]; }

    // The double difference of a row of that epoch, whose system has its reference there. For
    // GLONASS the reference's ambiguity is taken out as far as it is known.
    DoubleDifference Form(const Row& row);

    const CarrierTable& carrierTable() const { return model_.carrierTable(); }

  private:
    struct Observed {
        LaneCombination combination;
        ComputedDifference computed;
        double value;
        double sinElevation;
    };
    Observed Observe(int sat, int system);
    // A satellite's carriers and combination, worked out anew when its channel changes.
    struct SatelliteConstants {
        int channel = kNoChannel;
        Carriers carriers{};
        LaneCombination combination{};
    };
    static constexpr int kNoChannel = 1 << 20;
    const SatelliteConstants& ConstantsOf(const SDObsData& epoch, int sat, int system);

    StaticSolve& solver_;
    int mode_;
    int block_;
    SingleDifferenceModel model_;
    int epochIndex_ = -1;
    std::vector<SatelliteConstants> constants_;  // by satellite number
    SystemReference references_[kGalileo + 1];   // by system code
};

}  // namespace vornel
