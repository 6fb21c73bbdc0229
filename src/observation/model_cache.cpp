#include "observation/model_cache.h"

#include <utility>

namespace vornel {

namespace {

bool SamePosition(const XYZPosition& left, const XYZPosition& right) {
    return left.X == right.X && left.Y == right.Y && left.Z == right.Z;
}

}  // namespace

ModelledSatellite ModelCache::Refreshed(ModelForm form, SDObsData& record, int epochIndex,
                                        int satNumber, const XYZPosition& rover,
                                        const XYZPosition& base) {
    SetStations(form, record.tropoModel, rover, base);
    Entry& entry = EntryOf(epochIndex, satNumber);
    if (entry.evaluation == evaluation_) {
        return entry.modelled;
    }
    const auto f = static_cast<std::size_t>(form);
    if (!entry.hasBase[f]) {
        entry.base[f] =
            base_->Delays(form, record.epoch, std::as_const(record).azelB[satNumber - 1]);
        entry.hasBase[f] = true;
    }
    entry.modelled = RefreshModel(form, record, satNumber, *rover_, base, entry.base[f]);
    entry.evaluation = evaluation_;
    return entry.modelled;
}

void ModelCache::SetStations(ModelForm form, int tropoModel, const XYZPosition& rover,
                             const XYZPosition& base) {
    if (!base_ || tropoModel != tropoModel_ || !SamePosition(base_->position(), base)) {
        epochs_.clear();
        rover_.reset();
        base_.emplace(tropoModel, base);
        tropoModel_ = tropoModel;
    }
    const bool sameRover = rover_ && SamePosition(rover_->position(), rover);
    if (!sameRover) {
        rover_.emplace(tropoModel, rover);
    }
    if (!sameRover || form != form_) {
        form_ = form;
        ++evaluation_;
    }
}

ModelCache::Entry& ModelCache::EntryOf(int epochIndex, int satNumber) {
    const auto e = static_cast<std::size_t>(epochIndex);
    if (e >= epochs_.size()) {
        epochs_.resize(e + 1);
    }
    EpochEntries& epoch = epochs_[e];
    std::uint8_t& place = epoch.place[satNumber - 1];
    if (place == 0) {
        epoch.entries.emplace_back();
        place = static_cast<std::uint8_t>(epoch.entries.size());
    }
    return epoch.entries[place - 1U];
}

}  // namespace vornel
