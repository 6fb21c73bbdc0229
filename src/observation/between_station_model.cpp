// The computed rover-minus-base value of one satellite, with its line of sight.
#include <cmath>

#include "observation/ionosphere.h"
#include "observation/observation_records.h"
#include "observation/troposphere.h"

namespace vornel {

namespace {

constexpr double kElevationAtZenith = 3.141592653589793;

// What both forms share. troposphereDifference(s), called once azelA[s] is fresh, gives the rover's minus the
// base's slant delay in metres.
template <typename TroposphereDifference>
void Evaluate(SDObsData& record, double ionoFactor, int satNumber, const XYZPosition& rover,
              const XYZPosition& base, double unit[3], double& value,
              TroposphereDifference troposphereDifference) {
    const int s = satNumber - 1;
    const XYZPosition satelliteA(record.satPosA[s]);
    const XYZPosition satelliteB(record.satPosB[s]);
    const double a = Distance(rover, satelliteA) - kSpeedOfLight * record.satClockA[s];
    const double b = Distance(base, satelliteB) - kSpeedOfLight * record.satClockB[s];
    record.sdRange[s] = a - b;

    const NEUPosition local = satelliteA.ToNEU(rover);
    double* const azelA = record.azelA[s];
    const double* const azelB = record.azelB[s];
    azelA[0] = Azimuth(local.N, local.E);
    azelA[1] = Elevation(local, kElevationAtZenith);

    record.sdTrop[s] = troposphereDifference(s);

    const double secondsOfWeek = record.epoch.SecondsOfWeek();
    record.sdIono[s] = IonoDelay(rover, secondsOfWeek, azelA[1], azelA[0]) -
                       IonoDelay(base, secondsOfWeek, azelB[1], azelB[0]);

    // By a, clock included, not by the distance: the length differs from 1 by the clock's share.
    unit[0] = (rover.X - satelliteA.X) / a;
    unit[1] = (rover.Y - satelliteA.Y) / a;
    unit[2] = (rover.Z - satelliteA.Z) / a;
    value = record.sdTrop[s] + record.sdRange[s] - record.sdIono[s] * ionoFactor;
}

}  // namespace

void SDObsData::Model(double ionoFactor, int satNumber, XYZPosition rover, XYZPosition base,
                      double unit[3], double& value) {
    Evaluate(*this, ionoFactor, satNumber, rover, base, unit, value, [&](int s) {
        return TropoDelay(tropoModel, rover, azelA[s][1]) -
               TropoDelay(tropoModel, base, azelB[s][1]);
    });
}

void SDObsData::ModelFixed(double ionoFactor, int satNumber, XYZPosition rover, XYZPosition base,
                           double unit[3], double& value) {
    Evaluate(*this, ionoFactor, satNumber, rover, base, unit, value, [&](int s) {
        double variance = 0.0;
        return MopsTroposphere(epoch, rover.ToBLH(), azelA[s], variance) -
               MopsTroposphere(epoch, base.ToBLH(), azelB[s], variance);
    });
}

}  // namespace vornel
