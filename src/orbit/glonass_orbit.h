// GLONASS broadcast ephemerides: state vectors, integrated to the time asked for.
#pragma once

#include <array>
#include <map>
#include <vector>

#include "foundation/epoch.h"
#include "foundation/position.h"

namespace vornel {

struct GlonassEphemeris {
    int slot = 0;
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

// x, y, z in km, vx, vy, vz in km/s.
using GlonassState = std::array<double, 6>;

// States of one record after 1, 2, ... full integration steps away from its reference time, as far
// as they were needed. Goes with the record.
struct GlonassStateChain {
    std::vector<GlonassState> forward, backward;
};

class GlonassStore {
  public:
    // Replaces the record of the same slot and reference time in its place, or appends.
    void AddGlonassEphemeris(const GlonassEphemeris& record);
    const std::vector<GlonassEphemeris>& records() const { return records_; }
    // The first record of `slot`, nullptr when there is none.
    const GlonassEphemeris* FirstOfSlot(int slot) const;
    // Position of the record of `slot` closest to GPS time `time`, the earliest stored of equals;
    // -1 when none is near enough.
    int Select(const Epoch& time, int slot) const;
    // The states worked out so far of the record at a position.
    GlonassStateChain& ChainOf(int position) { return chains_[static_cast<std::size_t>(position)]; }
    void Clear() {
        records_.clear();
        chains_.clear();
        bySlot_.clear();
    }

  private:
    // A record of a slot. Its reference time in GPS time as seconds since 2000, good to a
    // millisecond.
    struct Reference {
        bool hasDate;
        double seconds;
        int position;  // in records_
    };

    std::vector<GlonassEphemeris> records_;
    std::vector<GlonassStateChain> chains_;         // by position
    std::map<int, std::vector<Reference>> bySlot_;  // in the order of records_
};

// The process-wide store.
GlonassStore& GlonassEphemerides();

// Earth-fixed position (m, PZ-90) and clock offset (s) of `slot` at GPS time `time`; channel is
// that of the record chosen, -99 when there is none. False without a usable record or with a radius
// outside 15,000 to 40,000 km.
bool GetGlonassPosition(Epoch time, int slot, XYZPosition& position, double& clock, int& channel);

// Frequency channel of a slot from the table of the public header, for when no broadcast record is
// at hand; 0 for a slot outside it.
int GlonassChannelOfSlot(int slot);

}  // namespace vornel
