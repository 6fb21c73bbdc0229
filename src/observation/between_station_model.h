// The computed rover-minus-base value of satellites for one pair of station positions: what the
// stations alone determine is worked out once for all satellites and epochs.
#pragma once

#include "observation/ionosphere.h"
#include "observation/observation_records.h"
#include "observation/troposphere.h"

namespace vornel {

// The troposphere of the model: that of the configuration, or MOPS, which the fixed solution takes.
enum class ModelForm { kConfigured, kMops };

// One station of the pair.
class ModelStation {
  public:
    ModelStation(int tropoModel, const XYZPosition& position);

    const XYZPosition& position() const { return station_.position; }
    NEUPosition Local(const XYZPosition& point) const { return station_.Local(point); }
    // Metres; the elevation of the satellite there, radians.
    double Troposphere(ModelForm form, const Epoch& time, double elevation);
    // Metres on the first GPS frequency, for a satellite at that elevation (radians) whose direction
    // is an azimuth (radians) or a vector.
    template <class Direction>
    double Ionosphere(const Epoch& time, double elevation, const Direction& direction) const {
        return ionosphere_.Delay(time.SecondsOfWeek(), elevation, direction);
    }

  private:
    Station station_;
    StationTroposphere configured_;
    StationMopsTroposphere mops_;
    StationIonosphere ionosphere_;
};

// A satellite as a station has it: where it was, and its clock as a distance.
struct SatelliteSeen {
    XYZPosition position;  // ECEF, metres
    double clock;          // metres
};
SatelliteSeen SeenByRover(const SDObsData& record, int satNumber);
SatelliteSeen SeenByBase(const SDObsData& record, int satNumber);

// From a station to the satellite, metres, the satellite's clock taken off.
double ClockedRange(const XYZPosition& station, const SatelliteSeen& satellite);

// What the rover's side of the computed value takes from the geometry.
struct RoverSide {
    double range;       // ClockedRange
    NEUPosition local;  // the satellite from the station
    double elevation;   // radians
    double sinElevation;
    double unit[3];  // from the satellite to the rover
};
RoverSide SeenFrom(const ModelStation& rover, const SatelliteSeen& satellite);

}  // namespace vornel
