// The computed rover-minus-base value of satellites for one pair of station positions: what the
// stations alone determine is worked out once for all satellites and epochs.
#pragma once

#include "observation/ionosphere.h"
#include "observation/observation_records.h"
#include "observation/troposphere.h"

namespace vornel {

// The troposphere of the model: that of the configuration, or MOPS, which the fixed solution takes.
enum class ModelForm { kConfigured, kMops };

// What a station sees of a satellite at an epoch.
struct StationDelays {
    double sinElevation;
    double troposphere;  // metres
    double ionosphere;   // metres, on the first GPS frequency
};

// What stands beside the record's own fields when a satellite has been modelled.
struct ModelledSatellite {
    double unit[3];  // from the satellite to the rover
    double sinElevationRover;
    double sinElevationBase;
};

// One station of the pair.
class ModelStation {
  public:
    ModelStation(int tropoModel, const XYZPosition& position);

    const XYZPosition& position() const { return station_.position; }
    NEUPosition Local(const XYZPosition& point) const { return station_.Local(point); }
    // azel: azimuth and elevation of the satellite there, radians.
    StationDelays Delays(ModelForm form, const Epoch& time, const double azel[2]);

  private:
    Station station_;
    StationTroposphere configured_;
    StationMopsTroposphere mops_;
    StationIonosphere ionosphere_;
};

// Refreshes sdRange, sdIono, sdTrop and azelA of a satellite and gives the line of sight. base:
// what the base sees of the satellite at that epoch.
ModelledSatellite RefreshModel(ModelForm form, SDObsData& record, int satNumber,
                               ModelStation& rover, const XYZPosition& basePosition,
                               const StationDelays& base);

// The computed value from the refreshed fields, metres.
double ModelValue(const SDObsData& record, int satNumber, double ionoFactor);

}  // namespace vornel
