// GLONASS broadcast ephemerides: state vectors, integrated to the time asked for.
#pragma once

#include <vector>

#include "foundation/epoch.h"
#include "foundation/position.h"

namespace vornel {

struct GlonassEphemeris {
    int slot = 0;    // 1 to 32
    Epoch refEpoch;  // reference time with a date, or zero when only the time of day is known
    double tbSeconds = 0.0;  // reference time, seconds of the day
    double spare1 = 0.0;
    double clockBias = 0.0;   // s
    double clockDrift = 0.0;  // s/s
    double spare2 = 0.0;
    int leapSeconds = 0;                 // GPS time minus the time scale of refEpoch
    double x = 0.0, vx = 0.0, ax = 0.0;  // km, km/s, km/s^2
    int health = 0;                      // kept, not tested
    double y = 0.0, vy = 0.0, ay = 0.0;
    int channel = 0;
    double z = 0.0, vz = 0.0, az = 0.0;
    int age = 0;
};

class GlonassStore {
  public:
    // Replaces the record of the same slot and reference time in its place, or appends.
    void AddGlonassEphemeris(const GlonassEphemeris& record);
    const std::vector<GlonassEphemeris>& records() const { return records_; }
    // The first record of `slot`, nullptr when there is none.
    const GlonassEphemeris* FirstOfSlot(int slot) const;
    void Clear() { records_.clear(); }

  private:
    std::vector<GlonassEphemeris> records_;
};

// The process-wide store.
GlonassStore& GlonassEphemerides();

// Earth-fixed position (m, PZ-90) and clock offset (s) of `slot` at GPS time `time`; channel is that of the
// record chosen, -99 when there is none. False without a usable record or with a radius outside
// 15,000 to 40,000 km.
bool GetGlonassPosition(Epoch time, int slot, XYZPosition& position, double& clock, int& channel);

// Frequency channel of a slot from a fixed table, for when no broadcast record is at hand; 0 outside 1 to 24.
int GlonassChannelOfSlot(int slot);

}  // namespace vornel
