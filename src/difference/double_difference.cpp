#include "difference/double_difference.h"

#include <algorithm>

namespace vornel {

RowFinder::RowFinder(const StaticSolve& solver, const std::vector<AmbRstInfo>& ambiguities,
                     const std::vector<AmbRstInfo>* wideLane)
    : solver_(solver), ambiguities_(ambiguities), paras_(solver.ambiguityParas) {
    if (wideLane != nullptr) {
        wideLane_.emplace(*wideLane);
    }
}

std::vector<Row> RowFinder::RowsOfEpoch(int epochIndex, const StaticPeriod& period) const {
    std::vector<Row> rows;
    const std::vector<int>& sats = solver_.epochs[static_cast<std::size_t>(epochIndex)].activeSats;
    rows.reserve(sats.size());
    for (const int sat : sats) {
        if (period.IsReference(sat)) {
            continue;
        }
        const int system = SplitSatNumber(sat);
        const int ambiguity = ambiguities_.Find(sat, epochIndex);
        const int wide = wideLane_ ? wideLane_->Find(sat, epochIndex) : -1;
        const int para = system == kGlonass ? paras_.Find(sat, epochIndex) : -1;
        if (ambiguity == -1 || (wideLane_ && wide == -1) || (system == kGlonass && para == -1)) {
            continue;
        }
        rows.push_back({sat, system, ambiguity, wide, para});
    }
    std::sort(rows.begin(), rows.end(),
              [](const Row& left, const Row& right) { return left.sat < right.sat; });
    return rows;
}

DoubleDifferencer::DoubleDifferencer(StaticSolve& solver, int mode, int block, ModelForm form)
    : solver_(solver),
      mode_(mode),
      block_(block),
      model_(solver, form),
      constants_(kSatelliteCount + 1) {}

bool DoubleDifferencer::TakeUpEpoch(int epochIndex, const StaticPeriod& period) {
    epochIndex_ = epochIndex;
    const SDObsData& epoch = solver_.epochs[static_cast<std::size_t>(epochIndex)];
    bool any = false;
    for (const int system : {kGps, kGlonass, kBds, kGalileo}) {
        SystemReference& reference = references_[system];
        reference = SystemReference();
        const int sat = period.ReferenceOf(system);
        if (sat == -1 || !epoch.IsActive(sat)) {
            continue;
        }
        const Observed observed = Observe(sat, system);
        reference.present = true;
        reference.combination = observed.combination;
        reference.observed = observed.value;
        reference.sinElevation = observed.sinElevation;
        std::copy(observed.computed.unit, observed.computed.unit + 3, reference.unit);
        any = true;
    }
    return any;
}

DoubleDifference DoubleDifferencer::Form(const Row& row) {
    const SystemReference& reference = references_[row.system];
    const Observed observed = Observe(row.sat, row.system);
    DoubleDifference difference;
    difference.combination = observed.combination;
    difference.sinElevation = observed.sinElevation;
    difference.v = observed.value - reference.observed;
    difference.biasFactor = 0.0;
    for (int k = 0; k < 3; ++k) {
        difference.direction[k] = observed.computed.unit[k] - reference.unit[k];
    }
    if (row.system == kGlonass) {
        const double wavelength = observed.combination.wavelength;
        const double wavelengthRef = reference.combination.wavelength;
        const AmbiguityPara& para = solver_.ambiguityParas[static_cast<std::size_t>(row.para)];
        difference.v -=
            (reference.combination.a * para.refAmbF1 + reference.combination.b * para.refAmbF2) *
            (wavelength - wavelengthRef);
        difference.biasFactor =
            (kSpeedOfLight / wavelength - kSpeedOfLight / wavelengthRef) / 1000000.0;
    }
    return difference;
}

const DoubleDifferencer::SatelliteConstants& DoubleDifferencer::ConstantsOf(const SDObsData& epoch,
                                                                            int sat, int system) {
    SatelliteConstants& constants = constants_[static_cast<std::size_t>(sat)];
    const int channel = model_.ChannelOf(epoch, sat);
    if (constants.channel != channel) {
        constants.channel = channel;
        constants.carriers = model_.carrierTable().Of(system, channel);
        constants.combination = CombinationOf(mode_, block_, system, constants.carriers);
    }
    return constants;
}

DoubleDifferencer::Observed DoubleDifferencer::Observe(int sat, int system) {
    const SDObsData& epoch = solver_.epochs[static_cast<std::size_t>(epochIndex_)];
    const SatelliteConstants& constants = ConstantsOf(epoch, sat, system);
    Observed observed;
    observed.combination = constants.combination;
    observed.computed = model_.Compute(epochIndex_, sat, constants.carriers, observed.combination,
                                       solver_.roverPosition);
    observed.value =
        observed.combination.wavelength * (observed.combination.a * epoch.phase[sat - 1][0] +
                                           observed.combination.b * epoch.phase[sat - 1][1]) -
        observed.computed.WithAntenna();
    observed.sinElevation = observed.computed.sinElevation;
    return observed;
}

}  // namespace vornel
