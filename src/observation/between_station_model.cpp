// The computed rover-minus-base value of one satellite, with its line of sight.
#include "observation/between_station_model.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vornel {

namespace {

constexpr double kElevationAtZenith = 3.141592653589793;

}  // namespace

ModelStation::ModelStation(int tropoModel, const XYZPosition& position)
    : station_(position),
      configured_(TroposphereAt(tropoModel, station_.geodetic)),
      mops_(station_.geodetic),
      ionosphere_(station_.geodetic) {}

double ModelStation::Troposphere(ModelForm form, const Epoch& time, double elevation) {
    double variance = 0.0;
    return form == ModelForm::kConfigured ? configured_.Delay(elevation)
                                          : mops_.Delay(time, elevation, variance);
}

SatelliteSeen SeenByRover(const SDObsData& record, int satNumber) {
    const int s = satNumber - 1;
    return {XYZPosition(record.satPosA[s]), kSpeedOfLight * record.satClockA[s]};
}

SatelliteSeen SeenByBase(const SDObsData& record, int satNumber) {
    const int s = satNumber - 1;
    return {XYZPosition(record.satPosB[s]), kSpeedOfLight * record.satClockB[s]};
}

double ClockedRange(const XYZPosition& station, const SatelliteSeen& satellite) {
    return Distance(station, satellite.position) - satellite.clock;
}

RoverSide SeenFrom(const ModelStation& rover, const SatelliteSeen& satellite) {
    const XYZPosition& station = rover.position();
    RoverSide side;
    side.range = ClockedRange(station, satellite);
    side.local = rover.Local(satellite.position);
    side.elevation = Elevation(side.local, kElevationAtZenith);
    side.sinElevation = std::sin(side.elevation);
    // By the range with the clock, not by the distance: the length differs from 1 by its share.
    side.unit[0] = (station.X - satellite.position.X) / side.range;
    side.unit[1] = (station.Y - satellite.position.Y) / side.range;
    side.unit[2] = (station.Z - satellite.position.Z) / side.range;
    return side;
}

namespace {

void EvaluateOnce(ModelForm form, SDObsData& record, double ionoFactor, int satNumber,
                  const XYZPosition& rover, const XYZPosition& base, double unit[3],
                  double& value) {
    const int s = satNumber - 1;
    ModelStation roverStation(record.tropoModel, rover);
    ModelStation baseStation(record.tropoModel, base);
    const RoverSide side = SeenFrom(roverStation, SeenByRover(record, satNumber));
    const double* const azelB = std::as_const(record).azelB[s];
    record.azelA[s][0] = Azimuth(side.local.N, side.local.E);
    record.azelA[s][1] = side.elevation;
    record.sdRange[s] = side.range - ClockedRange(base, SeenByBase(record, satNumber));
    record.sdTrop[s] = roverStation.Troposphere(form, record.epoch, side.elevation) -
                       baseStation.Troposphere(form, record.epoch, azelB[1]);
    record.sdIono[s] = roverStation.Ionosphere(record.epoch, side.elevation, side.local) -
                       baseStation.Ionosphere(record.epoch, azelB[1], azelB[0]);
    std::copy_n(side.unit, 3, unit);
    value = record.sdTrop[s] + record.sdRange[s] - record.sdIono[s] * ionoFactor;
}

}  // namespace

void SDObsData::Model(double ionoFactor, int satNumber, XYZPosition rover, XYZPosition base,
                      double unit[3], double& value) {
    EvaluateOnce(ModelForm::kConfigured, *this, ionoFactor, satNumber, rover, base, unit, value);
}

void SDObsData::ModelFixed(double ionoFactor, int satNumber, XYZPosition rover, XYZPosition base,
                           double unit[3], double& value) {
    EvaluateOnce(ModelForm::kMops, *this, ionoFactor, satNumber, rover, base, unit, value);
}

}  // namespace vornel
