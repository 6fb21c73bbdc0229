#include "observation/model_cache.h"

#include <cmath>

namespace vornel {

ModelledSatellite ModelCache::Evaluate(ModelForm form, double ionoFactor, const SDObsData& record,
                                       int epochIndex, int satNumber, const XYZPosition& rover,
                                       const XYZPosition& base) {
    if (!IsPresent(form, record.tropoModel, rover, base)) {
        SetStations(form, record.tropoModel, rover, base);
    }
    const auto e = static_cast<std::size_t>(epochIndex);
    if (e >= epochs_.size()) {
        epochs_.resize(e + 1);
    }
    EpochEntries& epoch = epochs_[e];
    const std::uint8_t place = epoch.place[satNumber - 1];
    Entry& entry = place != 0 ? epoch.entries[place - 1U] : AddEntry(epoch, record, satNumber);
    if (entry.evaluation != evaluation_) {
        Refresh(entry, record, satNumber);
    }
    const double value =
        entry.rangeAndTroposphere - Ionosphere(entry, record, satNumber) * ionoFactor;
    const RoverSide& side = entry.rover;
    return {value,
            {side.unit[0], side.unit[1], side.unit[2]},
            side.sinElevation,
            entry.sinElevationBase};
}

void ModelCache::Refresh(Entry& entry, const SDObsData& record, int satNumber) {
    entry.evaluation = evaluation_;
    entry.rover = SeenFrom(*rover_, entry.seenByRover);
    std::optional<double>& base = entry.troposphereBase[static_cast<std::size_t>(form_)];
    if (!base) {
        base = base_->Troposphere(form_, record.epoch, record.azelB[satNumber - 1][1]);
    }
    const double troposphere =
        rover_->Troposphere(form_, record.epoch, entry.rover.elevation) - *base;
    entry.rangeAndTroposphere = troposphere + (entry.rover.range - entry.rangeBase);
    entry.ionosphere.reset();
}

double ModelCache::Ionosphere(Entry& entry, const SDObsData& record, int satNumber) const {
    if (!entry.ionosphere) {
        if (!entry.ionosphereBase) {
            const double* const azel = record.azelB[satNumber - 1];
            entry.ionosphereBase = base_->Ionosphere(record.epoch, azel[1], azel[0]);
        }
        entry.ionosphere =
            rover_->Ionosphere(record.epoch, entry.rover.elevation, entry.rover.local) -
            *entry.ionosphereBase;
    }
    return *entry.ionosphere;
}

void ModelCache::SetStations(ModelForm form, int tropoModel, const XYZPosition& rover,
                             const XYZPosition& base) {
    if (!base_ || tropoModel != tropoModel_ || !SamePosition(base_->position(), base)) {
        epochs_.clear();
        base_.emplace(tropoModel, base);
        rover_.reset();
        tropoModel_ = tropoModel;
    }
    if (!rover_ || !SamePosition(rover_->position(), rover)) {
        rover_.emplace(tropoModel, rover);
    }
    form_ = form;
    ++evaluation_;
}

ModelCache::Entry& ModelCache::AddEntry(EpochEntries& epoch, const SDObsData& record,
                                        int satNumber) {
    epoch.entries.reserve(record.satList.size());
    Entry& entry = epoch.entries.emplace_back();
    entry.seenByRover = SeenByRover(record, satNumber);
    entry.rangeBase = ClockedRange(base_->position(), SeenByBase(record, satNumber));
    entry.sinElevationBase = std::sin(record.azelB[satNumber - 1][1]);
    epoch.place[satNumber - 1] = static_cast<std::uint8_t>(epoch.entries.size());
    return entry;
}

}  // namespace vornel
