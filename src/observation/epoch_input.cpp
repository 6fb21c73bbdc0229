// From raw observations to corrected epochs: one receiver's satellites with their positions and
// clocks, then the difference of two receivers.
#include <algorithm>
#include <cmath>

#include "VornelBlCore.h"
#include "foundation/statistics.h"
#include "observation/observation_records.h"
#include "orbit/broadcast_ephemeris.h"
#include "orbit/glonass_orbit.h"
#include "orbit/limits.h"
#include "orbit/precise_ephemeris.h"

namespace vornel {

namespace {

constexpr int kMaxPasses = 10;
constexpr double kTimeTolerance = 1e-8;     // s, of the transmission time
constexpr double kVelocityInterval = 0.01;  // s
constexpr double kElevationAtZenith = 1.5707963267948966;

double EarthRate(int system, bool broadcast) {
    return system == kBds || (system == kGlonass && broadcast) ? kEarthRateBds : kEarthRateGps;
}

// A position in the axes of transmission, seen in the earth-fixed axes `travelTime` seconds later.
XYZPosition RotateToReception(const XYZPosition& position, double travelTime, double earthRate) {
    const double theta = travelTime * earthRate;
    const double cosTheta = std::cos(theta);
    const double sinTheta = std::sin(theta);
    return {position.X * cosTheta + position.Y * sinTheta,
            position.Y * cosTheta - position.X * sinTheta, position.Z};
}

// From the frame of GLONASS broadcast orbits to that of all others: a shift, metres. Precise orbits
// of GLONASS are in the common frame already.
XYZPosition ShiftFromPz90(const XYZPosition& position) {
    return {position.X - 0.36, position.Y + 0.08, position.Z + 0.18};
}

void Store(double target[3], const XYZPosition& position) {
    target[0] = position.X;
    target[1] = position.Y;
    target[2] = position.Z;
}

bool IsSatelliteNumber(int number) {
    return number >= 1 && number <= kSatelliteCount;
}

// The numbers of `left` that `right` holds too, in the order of `left`.
std::vector<int> Intersection(const std::vector<int>& left, const std::vector<int>& right) {
    std::vector<int> common;
    for (const int number : left) {
        if (std::find(right.begin(), right.end(), number) != right.end()) {
            common.push_back(number);
        }
    }
    return common;
}

// Channel of a slot when precise orbits are in use: broadcast records tell it, or else the fixed
// table.
std::int16_t ChannelOfPreciseOrbit(int slot) {
    const GlonassEphemeris* record = GlonassEphemerides().FirstOfSlot(slot);
    return static_cast<std::int16_t>(record != nullptr ? record->channel
                                                       : GlonassChannelOfSlot(slot));
}

}  // namespace

// Back to what construction gives, in the room that the tables have.
void ZDObsData::Clear() {
    for (std::vector<int>* list : {&satList, &satListF1, &satListF2, &satListDual}) {
        list->clear();
    }
    std::fill(std::begin(glonassChannel), std::end(glonassChannel), std::int16_t{-1});
    for (SlotTable<2>* table : {&code, &phase, &azel}) {
        table->Clear();
    }
    for (SlotTable<3>* table : {&satPos, &satVel}) {
        table->Clear();
    }
    for (SlotTable<1>* table : {&range, &corrA, &corrB, &satClock}) {
        table->Clear();
    }
}

void ZDObsData::ReserveSlots(std::size_t satellites) {
    for (SlotTable<2>* table : {&code, &phase, &azel}) {
        table->Reserve(satellites);
    }
    for (SlotTable<3>* table : {&satPos, &satVel}) {
        table->Reserve(satellites);
    }
    for (SlotTable<1>* table : {&range, &satClock}) {
        table->Reserve(satellites);
    }
}

void ZDObsData::Fill(int week, double seconds, const int* satellites, const double* code1,
                     const double* code2, const double* phase1, const double* phase2) {
    Clear();
    epoch = Epoch(week, seconds);
    ReserveSlots(static_cast<std::size_t>(
        std::count_if(satellites, satellites + VORNEL_EPOCH_SLOTS, IsSatelliteNumber)));
    for (int slot = 0; slot < VORNEL_EPOCH_SLOTS; ++slot) {
        const int number = satellites[slot];
        if (!IsSatelliteNumber(number)) {
            continue;
        }
        const int s = number - 1;
        code[s][0] = code1[slot];
        code[s][1] = code2[slot];
        phase[s][0] = phase1[slot];
        phase[s][1] = phase2[slot];
        if (code[s][0] > 0.0 || code[s][1] > 0.0) {
            satList.push_back(number);
        }
    }
    std::sort(satList.begin(), satList.end());
    satList.erase(std::unique(satList.begin(), satList.end()), satList.end());
}

bool ZDObsData::UsesSystem(int system) const {
    switch (system) {
        case kGps:
            return useGps != 0;
        case kGlonass:
            return useGlonass != 0;
        case kBds:
            return useBds != 0;
        case kGalileo:
            return useGalileo != 0;
        default:
            return false;
    }
}

bool ZDObsData::SatelliteAt(const Epoch& time, int number, XYZPosition& position, double& clock,
                            int& channel) const {
    if (ephemerisSource != 0) {
        return GetPrecisePosition(time, number, position, clock);
    }
    int id = 0;
    switch (SplitSatNumber(number, &id)) {
        case kGps:
            return GetGpsPosition(time, id, position, clock);
        case kGlonass:
            return GetGlonassPosition(time, id, position, clock, channel);
        case kBds:
            return GetBdsPosition(time, id, position, clock);
        case kGalileo:
            return GetGalPosition(time, id, position, clock);
        default:
            return false;
    }
}

// Iterates the signal's travel time from the code of the first signal: code minus range is the
// receiver's clock error, which with the satellite's own separates transmission from the epoch's
// tag. A satellite without that code starts, and is solved, from a code of 0.0. Time, position and
// clock found are those of the last orbit asked for. False without an orbit, or when ten passes
// don't settle the time.
bool ZDObsData::FindTransmission(int number, const XYZPosition& station,
                                 Transmission& found) const {
    const double firstCode = code[number - 1][0];
    double tau = firstCode / kSpeedOfLight;
    int channel = 0;
    found.clock = 0.0;
    found.time = epoch - tau;
    for (int pass = 0; pass < kMaxPasses; ++pass) {
        if (!SatelliteAt(found.time, number, found.position, found.clock, channel)) {
            return false;
        }
        found.range = Distance(station, found.position);
        tau = (firstCode - found.range) / kSpeedOfLight + found.clock + found.range / kSpeedOfLight;
        const Epoch next = epoch - tau;
        if (std::fabs(next - found.time) < kTimeTolerance) {
            return true;
        }
        found.time = next;
    }
    return false;
}

// Fills position, velocity, clock and channel of a satellite. False when the satellite is to be
// left out: it has no orbit at transmission or, but for GLONASS broadcast orbits, none a moment
// earlier. A GLONASS satellite that fails only there goes on with a position of zero.
bool ZDObsData::LocateSatellite(int number, const XYZPosition& station) {
    const int s = number - 1;
    int id = 0;
    const int system = SplitSatNumber(number, &id);
    const bool broadcast = ephemerisSource == 0;
    Transmission transmission;
    if (!FindTransmission(number, station, transmission)) {
        return false;
    }
    XYZPosition earlier;
    double earlierClock = 0.0;
    int channel = 0;
    if (!SatelliteAt(transmission.time - kVelocityInterval, number, earlier, earlierClock,
                     channel)) {
        Store(satPos[s], XYZPosition());
        return system == kGlonass && broadcast;
    }
    const XYZPosition& position = transmission.position;
    Store(satVel[s], XYZPosition((position.X - earlier.X) / kVelocityInterval,
                                 (position.Y - earlier.Y) / kVelocityInterval,
                                 (position.Z - earlier.Z) / kVelocityInterval));
    const XYZPosition rotated = RotateToReception(position, transmission.range / kSpeedOfLight,
                                                  EarthRate(system, broadcast));
    Store(satPos[s], system == kGlonass && broadcast ? ShiftFromPz90(rotated) : rotated);
    satClock[s] = transmission.clock;
    if (system == kGlonass) {
        glonassChannel[id - 1] =
            broadcast ? static_cast<std::int16_t>(channel) : ChannelOfPreciseOrbit(id);
    }
    return true;
}

void ZDObsData::SetDirection(int number, const Station& station) {
    const int s = number - 1;
    const XYZPosition satellite(satPos[s]);
    const NEUPosition local = station.Local(satellite);
    azel[s][0] = Azimuth(local.N, local.E);
    azel[s][1] = Elevation(local, kElevationAtZenith);
    range[s] = Distance(station.position, satellite);
}

void ZDObsData::ListUsable(int number, double elevationMask, int& dualFlag) {
    const int s = number - 1;
    if (!(azel[s][1] >= elevationMask)) {
        return;
    }
    const bool hasFirst = std::fabs(code[s][0]) > 0.0 && phase[s][0] != 0.0;
    const bool hasSecond = std::fabs(code[s][1]) > 0.0 && phase[s][1] != 0.0;
    if (hasFirst) {
        satListF1.push_back(number);
    }
    if (hasFirst && hasSecond) {
        satListDual.push_back(number);
        dualFlag = 1;
    }
    if (hasSecond) {
        satListF2.push_back(number);
    }
}

void ZDObsData::Correct(XYZPosition station, double elevationMask, int& dualFlag) {
    Correct(Station(station), elevationMask, dualFlag);
}

void ZDObsData::Correct(const Station& station, double elevationMask, int& dualFlag) {
    satListF1.clear();
    satListF2.clear();
    satListDual.clear();
    for (const int number : satList) {
        if (!UsesSystem(SplitSatNumber(number)) || !LocateSatellite(number, station.position)) {
            continue;
        }
        SetDirection(number, station);
        ListUsable(number, elevationMask, dualFlag);
    }
    std::sort(satListF1.begin(), satListF1.end());
    std::sort(satListF2.begin(), satListF2.end());
    std::sort(satListDual.begin(), satListDual.end());
}

namespace {

// Rover minus base of a code or phase, 0.0 when either is missing.
double DifferenceOfPresent(double rover, double base) {
    return rover == 0.0 || base == 0.0 ? 0.0 : rover - base;
}

// The mean of two epochs' seconds of the week, rounded to a whole second, in the week of the base.
Epoch MeanEpoch(const Epoch& rover, const Epoch& base) {
    int week = 0;
    double baseSeconds = 0.0;
    base.ToWeekSeconds(week, baseSeconds);
    return Epoch(week, RoundHalfAway((rover.SecondsOfWeek() + baseSeconds) / 2.0));
}

}  // namespace

void SDObsData::ReserveSlots(std::size_t satellites) {
    for (SlotTable<2>* table : {&code, &phase, &azelA, &azelB}) {
        table->Reserve(satellites);
    }
    for (SlotTable<3>* table : {&satPosA, &satPosB}) {
        table->Reserve(satellites);
    }
    for (SlotTable<1>* table : {&satClockA, &satClockB, &sdRange, &sdIono, &sdTrop}) {
        table->Reserve(satellites);
    }
}

void SDObsData::Form(const ZDObsData& rover, const ZDObsData& base) {
    epoch = MeanEpoch(rover.epoch, base.epoch);
    satList = Intersection(rover.satList, base.satList);
    satListF1 = Intersection(rover.satListF1, base.satListF1);
    satListF2 = Intersection(rover.satListF2, base.satListF2);
    satListDual = Intersection(rover.satListDual, base.satListDual);
    ReserveSlots(satList.size());
    for (const int number : satList) {
        const int s = number - 1;
        for (int f = 0; f < 2; ++f) {
            const bool hasCodes = rover.code[s][f] != 0.0 && base.code[s][f] != 0.0;
            code[s][f] = DifferenceOfPresent(rover.code[s][f], base.code[s][f]);
            phase[s][f] = hasCodes ? DifferenceOfPresent(rover.phase[s][f], base.phase[s][f]) : 0.0;
        }
        int id = 0;
        if (SplitSatNumber(number, &id) == kGlonass) {
            glonassChannel[id - 1] = rover.glonassChannel[id - 1];
        }
        std::copy_n(rover.azel[s], 2, azelA[s]);
        std::copy_n(base.azel[s], 2, azelB[s]);
        std::copy_n(rover.satPos[s], 3, satPosA[s]);
        std::copy_n(base.satPos[s], 3, satPosB[s]);
        satClockA[s] = rover.satClock[s];
        satClockB[s] = base.satClock[s];
        sdRange[s] = rover.range[s] - base.range[s];
        sdIono[s] = rover.corrA[s] - base.corrA[s];
        sdTrop[s] = rover.corrB[s] - base.corrB[s];
    }
}

}  // namespace vornel
