// A sky of four systems that never was: satellites on regular constellations, the broadcast
// ephemerides that describe them, and their positions and clocks in extended precision, evaluated
// apart from the engine.
//
// The ephemerides are the definition, the positions follow from them by the formulas of the
// interface documents, with the conventions that the engine documents for its orbits: BDS records
// count in BDT (GPS time - 14 s), BDS 1 to 5 are geostationary, clocks hold the relativistic term,
// GLONASS states are integrated in their own frame. Of several records of a satellite the one
// closest in time serves, the earlier of two.
#pragma once

#include <vector>

#include "foundation/satellite.h"
#include "orbit/broadcast_ephemeris.h"
#include "orbit/glonass_orbit.h"
#include "orbit/reference_orbits.h"

namespace vornel::simulation {

using reference::Real;
using reference::SatelliteState;
using reference::Vector;

class MadeUpSky {
  public:
    // For a session of `duration` seconds from a GPS week and seconds of the week on.
    MadeUpSky(int week, double startSeconds, double duration);

    // All there are, by number: 30 GPS, 24 GLONASS, 34 BDS (5 geostationary, 5 inclined, 24
    // others), 24 Galileo.
    const std::vector<int>& satellites() const { return satellites_; }

    // Position (m, earth-fixed axes of that moment; GLONASS in its own frame) and clock (s), `time`
    // seconds of GPS time after the start of the session.
    SatelliteState At(int satellite, Real time) const;

    static int GlonassChannel(int satellite);
    // Of the earth as the satellite's system has it, rad/s.
    static Real EarthRate(int satellite);

    // In order of satellites, then of time.
    const std::vector<KeplerEphemeris>& keplerRecords(int system) const;
    const std::vector<GlonassEphemeris>& glonassRecords() const { return glonass_; }

  private:
    struct Records {
        std::vector<KeplerEphemeris> all;
        std::vector<int> first;  // by id in the system: index of the satellite's first record
    };
    void AddKepler(int system, int id, KeplerEphemeris elements, bool geostationary);
    void AddGlonass(int slot);
    Real SinceStart(int week, double seconds) const;
    SatelliteState KeplerAt(int system, int id, Real time) const;
    SatelliteState GlonassAt(int slot, Real time) const;

    int week_;
    double startSeconds_;
    double duration_;
    std::vector<int> satellites_;
    Records kepler_[kGalileo + 1];  // by system code
    std::vector<GlonassEphemeris> glonass_;
    // By slot: the motion every kGlonassStep seconds from kGlonassLead before the start on.
    std::vector<std::vector<reference::Motion>> glonassMotion_;
};

}  // namespace vornel::simulation
