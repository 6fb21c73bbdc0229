// Scenarios drawn by chance from what the world and its surveyors are like.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "random.h"
#include "scenario.h"

namespace vornel::rough {

// What stands round an antenna.
enum class Environment { kPillar, kRoof, kField, kYard, kStreet, kCanopy };

enum class Equipment {
    kGeodetic,    // two frequencies, all signals
    kLowCost,     // first frequency, a patch antenna
    kLowCostDual  // first and fifth band, a patch antenna
};

// A class of sessions.
struct Kind {
    std::string name;
    double shortest = 1.0, longest = 1000.0;   // m; the logarithm is drawn evenly
    double mostHeight = 0.05;                  // height difference over length, and at most
    double highest = 300.0;                    // m
    std::vector<double> durations = {3600.0};  // s, each as likely
    Equipment rover = Equipment::kGeodetic;
    double roverLikeBase = 1.0;  // probability that the base is of that kind too
    std::vector<double> environments = {1,   1, 1,
                                        0.5, 0, 0};         // weights for the rover, by Environment
    bool precise = false;                                   // precise orbits
    double lowestLatitude = -65.0, highestLatitude = 70.0;  // degrees
    double solar = -1.0;  // 0 minimum to 1 maximum; below 0: as the year has it
    std::string systems;  // letters; empty: drawn
};

// The classes that the bench draws from. docs of each stand beside its numbers.
const std::vector<Kind>& AllKinds();
// Throws std::out_of_range when there is none of the name.
const Kind& KindOf(const std::string& name);

// A pair of stations, occupation 0 the base, 1 the rover. The same seed gives the same scenario.
Scenario DrawScenario(std::uint64_t seed, const Kind& kind);

// A pair that resembles one of the real data sets: wettzell, ciboure-pasaia, ebre-bell, rosalia,
// milano, bds-monitor. Place, length, date, duration, interval, systems and sort of receivers are
// those of the set; all else is drawn. Throws std::out_of_range for another name.
Scenario DrawLookAlike(std::uint64_t seed, const std::string& set);
const std::vector<std::string>& LookAlikes();

// What goes wrong in a campaign.
struct CampaignFlaws {
    double wrongHeight = 0.0;    // m, of one antenna in its header
    double wrongCentring = 0.0;  // m, of one antenna
    double wrongHeader = 0.0;    // m, of one header position
};

// A network: `stations` sites over some 20 km, two of them observed all the time and the others in
// turn by four receivers, sessions of three hours, two a day, on consecutive days. The flaws fall on
// the first occupations of three different sites that are observed in turn: sites 2, 3 and 4.
Scenario DrawCampaign(std::uint64_t seed, std::size_t stations, int days,
                      const CampaignFlaws& flaws);

// ---- the parts of it ----------------------------------------------------------------------------

Weather DrawWeather(Random& random, const Geodetic& place, const io::GpsTime& start);
// `solar` from 0 (minimum) to 1 (maximum). Times of waves are those of the scenario's start.
IonosphereState DrawIonosphere(Random& random, const Geodetic& place, double solar,
                               double duration);
double SolarLevelOf(const io::GpsTime& time);
Surroundings DrawSurroundings(Random& random, Environment environment);
Receiver DrawReceiver(Random& random, Equipment equipment, const std::string& systems,
                      double interval);
AntennaType DrawAntennaType(Random& random, Equipment equipment, std::size_t number);

}  // namespace vornel::rough
