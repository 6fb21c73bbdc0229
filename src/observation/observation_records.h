// The observations of an epoch: records with one slot for each of the 135 satellite numbers. A
// missing value is 0.0. Copies of a record share its tables until one of them is accessed for
// writing.
//
// Index [s] is satellite number minus 1, index [f] 0 for the first and 1 for the second signal.
#pragma once

#include <cstdint>
#include <vector>

#include "foundation/epoch.h"
#include "foundation/position.h"
#include "foundation/satellite.h"
#include "observation/slot_table.h"

namespace vornel {

// What receiver records and differences have in common.
class RWObsData {
  public:
    Epoch epoch;
    std::vector<int> satList;                        // observed, ascending, without repeats
    std::vector<int> satListF1;                      // usable on the first signal, ascending
    std::vector<int> satListF2;                      // on the second
    std::vector<int> satListDual;                    // on both
    SlotTable<2> code;                               // metres
    SlotTable<2> phase;                              // cycles
    std::int16_t glonassChannel[kGlonassSlotCount];  // by slot - 1; -1 until set

    RWObsData();
    RWObsData(const RWObsData&) = default;
    RWObsData(RWObsData&&) = default;
    RWObsData& operator=(const RWObsData&) = default;
    RWObsData& operator=(RWObsData&&) = default;
    virtual ~RWObsData() = default;
};

// The moment at which a signal left its satellite, and the satellite then.
struct Transmission {
    Epoch time;
    XYZPosition position;  // in the axes of that moment, metres
    double clock = 0.0;    // seconds
    double range = 0.0;    // from the receiver to that position, metres
};

// One receiver at one epoch, with its satellites' positions and clocks.
class ZDObsData : public RWObsData {
  public:
    int ephemerisSource;  // 0 broadcast, else precise
    int useGps, useGlonass, useBds, useGalileo;
    int tropoModel;         // carried along
    SlotTable<2> azel;      // azimuth, elevation at this receiver, radians
    SlotTable<3> satPos;    // at transmission, in the frame of reception, metres
    SlotTable<3> satVel;    // m/s, in the frame of the ephemeris
    SlotTable<1> range;     // metres
    SlotTable<1> corrA;     // zero
    SlotTable<1> corrB;     // zero
    SlotTable<1> satClock;  // seconds

    ZDObsData(int ephemerisSource, int useGps, int useGlonass, int useBds, int useGalileo,
              int tropoModel);

    // Makes this the record of one receiver's 64 slots, and nothing else: satellite numbers (others than 1 to 135 are skipped),
    // codes (m) and phases (cycles) on both signals.
    void Fill(int week, double seconds, const int* satellites, const double* code1,
              const double* code2, const double* phase1, const double* phase2);

    // Solves transmission time, position, velocity, clock and direction of every satellite seen
    // from `station` and sorts the satellites at or above the mask (radians) into the three derived
    // lists. dualFlag becomes 1 when one of them has both signals.
    void Correct(XYZPosition station, double elevationMask, int& dualFlag);
    void Correct(const Station& station, double elevationMask, int& dualFlag);

  private:
    // Position and clock of a satellite from the orbits in use; channel is written by GLONASS
    // broadcast orbits alone.
    bool SatelliteAt(const Epoch& time, int number, XYZPosition& position, double& clock,
                     int& channel) const;
    bool UsesSystem(int system) const;
    void Clear();
    void ReserveSlots(std::size_t satellites);
    bool FindTransmission(int number, const XYZPosition& station, Transmission& found) const;
    bool LocateSatellite(int number, const XYZPosition& station);
    void SetDirection(int number, const Station& station);
    void ListUsable(int number, double elevationMask, int& dualFlag);
};

// Rover minus base at one epoch.
class SDObsData : public RWObsData {
  public:
    int tropoModel;
    std::vector<int>
        activeSats;          // satellites in use; written by data preparation, then only shrunk
    SlotTable<2> azelA;      // azimuth, elevation at the rover; refreshed by the model
    SlotTable<2> azelB;      // at the base
    SlotTable<3> satPosA;    // satellite as the rover saw it, metres
    SlotTable<3> satPosB;    // as the base saw it
    SlotTable<1> satClockA;  // seconds
    SlotTable<1> satClockB;
    SlotTable<1> sdRange;  // modelled differences, metres
    SlotTable<1> sdIono;   // on the first signal of GPS
    SlotTable<1> sdTrop;
    SlotTable<1> sdSpare;     // zero
    SlotTable<1> sdObserved;  // zero; read by the preliminary baseline alone

    explicit SDObsData(int tropoModel);

    // Intersects and differences two receivers' records. The epoch is their mean, a whole second.
    void Form(const ZDObsData& rover, const ZDObsData& base);

    // The computed rover-minus-base value of a satellite, metres, with positions in ECEF metres:
    // range with satellite clocks, troposphere, minus ionoFactor times the ionosphere of the first
    // GPS frequency. unit: from the satellite to the rover. Refreshes sdRange, sdIono, sdTrop and
    // azelA of the satellite.
    void Model(double ionoFactor, int satNumber, XYZPosition rover, XYZPosition base,
               double unit[3], double& value);
    // The same with the MOPS troposphere, for the fixed solution.
    void ModelFixed(double ionoFactor, int satNumber, XYZPosition rover, XYZPosition base,
                    double unit[3], double& value);

    bool IsActive(int satNumber) const;
    void RemoveActive(int satNumber);

  private:
    void ReserveSlots(std::size_t satellites);
};

}  // namespace vornel
