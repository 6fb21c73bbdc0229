// Broadcast ephemerides of GPS, BDS and Galileo: process-wide stores, and positions from them.
#pragma once

#include <map>
#include <vector>

#include "foundation/epoch.h"
#include "foundation/position.h"

namespace vornel {

struct KeplerEphemeris {
    Epoch toeEpoch;           // reference time of the orbit
    double tocSeconds = 0.0;  // clock reference, seconds of the week
    int tocWeek = 0;
    int satId = 0;                           // in the system
    double af0 = 0.0, af1 = 0.0, af2 = 0.0;  // s, s/s, s/s^2
    int iode = 0;
    double crs = 0.0, deltaN = 0.0, m0 = 0.0, cuc = 0.0, e = 0.0, cus = 0.0, sqrtA = 0.0, toe = 0.0,
           cic = 0.0, omega0 = 0.0, cis = 0.0, i0 = 0.0, crc = 0.0, omega = 0.0, omegaDot = 0.0,
           idot = 0.0;  // radians, metres, root of metres; toe in seconds of the week
    int l2Codes = 0;
    int toeWeek = 0;
    int l2PFlag = 0;
    double accuracy = 0.0;
    int health = 0;     // 0 when usable
    double tgd = 0.0;   // kept, not applied
    double tgd2 = 0.0;  // second group delay of BDS and Galileo; kept
    double iodc = 0.0;
    double transmitTime = 0.0;
    int fitInterval = 0;
};

// One system's records in the order of their first input.
class KeplerStore {
  public:
    // Replaces the record of the same satellite and toeEpoch in its place, or appends.
    void AddEphemeris(const KeplerEphemeris& record);
    // The healthy record of `satId` whose toeEpoch is closest to `time`, the earliest stored of
    // equals; nullptr when none is closer than `startBound` seconds or the closest is over 14400 s
    // away.
    const KeplerEphemeris* Select(const Epoch& time, int satId, double startBound) const;
    const std::vector<KeplerEphemeris>& records() const { return records_; }
    void Clear() {
        records_.clear();
        bySatellite_.clear();
    }

  private:
    // A record of a satellite, with its toeEpoch as seconds since 2000, good to a millisecond.
    struct Reference {
        double toeSeconds;
        bool healthy;
        std::size_t position;  // in records_
    };

    // The record that is closest at every time between two, seconds since 2000, with all others
    // clearly further away. Stale as soon as a record is added; then no time is between the two.
    struct ClosestBetween {
        double from = 0.0, to = 0.0;
        std::size_t position = 0;  // in records_
    };
    struct RecordsOfSatellite {
        std::vector<Reference> references;  // in the order of records_
        mutable ClosestBetween lastChoice;
    };
    static ClosestBetween AroundChoice(const std::vector<Reference>& references,
                                       const Reference& chosen);

    std::vector<KeplerEphemeris> records_;
    std::map<int, RecordsOfSatellite> bySatellite_;
};

// The process-wide stores.
KeplerStore& GpsStore();
KeplerStore& BdsStore();
KeplerStore& GalileoStore();

// Earth-fixed position (m) and clock offset (s, relativity included) of satellite `satId` at GPS
// time `time`, zeros and false when there is no usable ephemeris. For GPS false
// as well with a radius outside 15,000 to 40,000 km, with the two as computed.
bool GetGpsPosition(Epoch time, int satId, XYZPosition& position, double& clock);
bool GetBdsPosition(Epoch time, int satId, XYZPosition& position, double& clock);
bool GetGalPosition(Epoch time, int satId, XYZPosition& position, double& clock);

}  // namespace vornel
