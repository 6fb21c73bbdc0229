// The computed rover-minus-base value of one satellite, with its line of sight.
#include "observation/between_station_model.h"

#include <cmath>

namespace vornel {

namespace {

constexpr double kElevationAtZenith = 3.141592653589793;

}  // namespace

ModelStation::ModelStation(int tropoModel, const XYZPosition& position)
    : station_(position),
      configured_(TroposphereAt(tropoModel, station_.geodetic)),
      mops_(station_.geodetic),
      ionosphere_(station_.geodetic) {}

StationDelays ModelStation::Delays(ModelForm form, const Epoch& time, const double azel[2]) {
    StationDelays delays;
    delays.sinElevation = std::sin(azel[1]);
    double variance = 0.0;
    delays.troposphere = form == ModelForm::kConfigured ? configured_.Delay(azel[1])
                                                        : mops_.Delay(time, azel[1], variance);
    delays.ionosphere = ionosphere_.Delay(time.SecondsOfWeek(), azel[1], azel[0]);
    return delays;
}

ModelledSatellite RefreshModel(ModelForm form, SDObsData& record, int satNumber,
                               ModelStation& rover, const XYZPosition& basePosition,
                               const StationDelays& base) {
    const int s = satNumber - 1;
    // What is read through this stays shared with the records that this one was copied from.
    const SDObsData& given = record;
    const XYZPosition& roverPosition = rover.position();
    const XYZPosition satelliteA(given.satPosA[s]);
    const XYZPosition satelliteB(given.satPosB[s]);
    const double a = Distance(roverPosition, satelliteA) - kSpeedOfLight * given.satClockA[s];
    const double b = Distance(basePosition, satelliteB) - kSpeedOfLight * given.satClockB[s];
    record.sdRange[s] = a - b;

    const NEUPosition local = rover.Local(satelliteA);
    double* const azelA = record.azelA[s];
    azelA[0] = Azimuth(local.N, local.E);
    azelA[1] = Elevation(local, kElevationAtZenith);

    const StationDelays delays = rover.Delays(form, record.epoch, azelA);
    record.sdTrop[s] = delays.troposphere - base.troposphere;
    record.sdIono[s] = delays.ionosphere - base.ionosphere;

    // By a, clock included, not by the distance: the length differs from 1 by the clock's share.
    return {{(roverPosition.X - satelliteA.X) / a, (roverPosition.Y - satelliteA.Y) / a,
             (roverPosition.Z - satelliteA.Z) / a},
            delays.sinElevation,
            base.sinElevation};
}

double ModelValue(const SDObsData& record, int satNumber, double ionoFactor) {
    const int s = satNumber - 1;
    return record.sdTrop[s] + record.sdRange[s] - record.sdIono[s] * ionoFactor;
}

namespace {

void EvaluateOnce(ModelForm form, SDObsData& record, double ionoFactor, int satNumber,
                  const XYZPosition& rover, const XYZPosition& base, double unit[3],
                  double& value) {
    ModelStation roverStation(record.tropoModel, rover);
    ModelStation baseStation(record.tropoModel, base);
    const StationDelays baseDelays =
        baseStation.Delays(form, record.epoch, record.azelB[satNumber - 1]);
    const ModelledSatellite modelled =
        RefreshModel(form, record, satNumber, roverStation, base, baseDelays);
    for (int k = 0; k < 3; ++k) {
        unit[k] = modelled.unit[k];
    }
    value = ModelValue(record, satNumber, ionoFactor);
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
