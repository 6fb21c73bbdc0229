// What has been modelled in a run, so that nothing is worked out twice for the same pair of
// positions.
//
// For each satellite and epoch the cache keeps the line of sight of the last evaluation, whose
// other values stand in the record itself (sdRange, sdIono, sdTrop, azelA), and the delays at the
// base, which does not move. An entry is stale when the rover, the base or the form of the
// troposphere differs from those of the evaluation; the satellite positions and the atmosphere's
// parameters are taken not to change during a run, and nothing else to evaluate the model on its
// records.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "observation/between_station_model.h"

namespace vornel {

class ModelCache {
  public:
    // Brings the modelled fields of a satellite in `record`, the epoch of that index, to the two
    // positions.
    ModelledSatellite Refreshed(ModelForm form, SDObsData& record, int epochIndex, int satNumber,
                                const XYZPosition& rover, const XYZPosition& base);

  private:
    struct Entry {
        int evaluation = 0;  // number of the pair of positions the values belong to; 0: none
        ModelledSatellite modelled{};
        bool hasBase[2] = {false, false};  // by form
        StationDelays base[2] = {};
    };
    // The entries of an epoch, by satellite at first need.
    struct EpochEntries {
        std::uint8_t place[kSatelliteCount] = {};  // position in `entries` plus 1; 0: none
        std::vector<Entry> entries;
    };

    void SetStations(ModelForm form, int tropoModel, const XYZPosition& rover,
                     const XYZPosition& base);
    Entry& EntryOf(int epochIndex, int satNumber);

    std::vector<EpochEntries> epochs_;
    // The stations and the form of the present evaluation.
    std::optional<ModelStation> rover_, base_;
    ModelForm form_ = ModelForm::kConfigured;
    int tropoModel_ = 0;
    int evaluation_ = 0;
};

}  // namespace vornel
