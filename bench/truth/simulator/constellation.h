// The satellites of the four systems as they stand in the sky of a year: planes, slots, numbers,
// frequency channels and the signals they send.
#pragma once

#include <vector>

#include "geodesy.h"
#include "io/gnss_time.h"
#include "io/satellite.h"

namespace vornel::rough {

enum class OrbitClass { kMedium, kInclinedSynchronous, kGeostationary };

// A satellite with its mean elements at the start of a world.
struct Satellite {
    io::SatelliteId id;
    OrbitClass orbitClass = OrbitClass::kMedium;
    bool modern = false;       // GPS: sends L2C and L5; BeiDou: third generation, which has no B2I
    int channel = 0;           // GLONASS
    double revolutions = 0.0;  // in one turn of the earth against the orbital plane
    double eccentricity = 0.0;
    double inclination = 0.0;    // rad
    double nodeLongitude = 0.0;  // rad, of the ascending node against Greenwich
    double nodeRate = 0.0;       // rad/s against the stars
    double perigee = 0.0;        // rad, argument
    double meanAnomaly = 0.0;    // rad
};

// The satellites in orbit at a date: numbers grow with the years as the systems were built (GPS 28
// in 2002, 31 from 2010 on; GLONASS 8 in 2002, 24 from 2012; Galileo from 2013, 26 from 2022;
// BeiDou-2 from 2012, BeiDou-3 from 2018 to 2020).
std::vector<Satellite> SatellitesAt(const io::GpsTime& date);

}  // namespace vornel::rough
