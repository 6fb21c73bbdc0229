// What has been modelled in a run, so that nothing is worked out twice for the same pair of
// positions.
//
// For each satellite and epoch the cache keeps what the last evaluation gave, and what does not
// move with the rover: the satellite itself and the base's side. An entry is stale when the rover,
// the base or the form of the troposphere differs from those of the evaluation; the satellite
// positions and the atmosphere's parameters are taken not to change during a run.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "observation/between_station_model.h"

namespace vornel {

// The computed rover-minus-base value of a satellite, with its line of sight.
struct ModelledSatellite {
    double value;    // metres
    double unit[3];  // from the satellite to the rover
    double sinElevationRover;
    double sinElevationBase;
};

class ModelCache {
  public:
    // What SDObsData::Model (or ModelFixed) gives for a satellite of `record`, the epoch of that
    // index, whose own fields stay as they are.
    ModelledSatellite Evaluate(ModelForm form, double ionoFactor, const SDObsData& record,
                               int epochIndex, int satNumber, const XYZPosition& rover,
                               const XYZPosition& base);

  private:
    struct Entry {
        // Of the satellite and the base:
        SatelliteSeen seenByRover;
        double rangeBase;  // metres
        double sinElevationBase;
        std::optional<double> troposphereBase[2];  // metres, by form
        std::optional<double> ionosphereBase;      // metres
        // Of the evaluation of that number, 0 for none:
        int evaluation = 0;
        RoverSide rover{};
        double rangeAndTroposphere = 0.0;  // rover minus base, metres
        std::optional<double> ionosphere;  // rover minus base, metres; at first need
    };
    // The entries of an epoch, by satellite at first need.
    struct EpochEntries {
        std::uint8_t place[kSatelliteCount] = {};  // position in `entries` plus 1; 0: none
        std::vector<Entry> entries;
    };

    static bool SamePosition(const XYZPosition& left, const XYZPosition& right) {
        return left.X == right.X && left.Y == right.Y && left.Z == right.Z;
    }
    // Whether these are the stations and the form of the present evaluation.
    bool IsPresent(ModelForm form, int tropoModel, const XYZPosition& rover,
                   const XYZPosition& base) const {
        return base_ && form == form_ && tropoModel == tropoModel_ &&
               SamePosition(rover_->position(), rover) && SamePosition(base_->position(), base);
    }
    // Begins an evaluation.
    void SetStations(ModelForm form, int tropoModel, const XYZPosition& rover,
                     const XYZPosition& base);
    Entry& AddEntry(EpochEntries& epoch, const SDObsData& record, int satNumber);
    void Refresh(Entry& entry, const SDObsData& record, int satNumber);
    double Ionosphere(Entry& entry, const SDObsData& record, int satNumber) const;

    std::vector<EpochEntries> epochs_;
    // The stations and the form of the present evaluation.
    std::optional<ModelStation> rover_, base_;
    ModelForm form_ = ModelForm::kConfigured;
    int tropoModel_ = 0;
    int evaluation_ = 0;
};

}  // namespace vornel
