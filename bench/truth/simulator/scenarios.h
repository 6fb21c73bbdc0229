// Scenarios drawn by chance from what the world and its surveyors are like.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
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

// A class of sessions: bounds within which a scenario is drawn.
struct Kind {
    std::string name;
    std::array<double, 2> length = {1.0, 10000.0};      // m; the logarithm is drawn evenly
    std::array<double, 2> latitude = {-65.0, 70.0};     // degrees; evenly over the sphere
    std::array<double, 2> longitude = {-180.0, 180.0};  // degrees
    std::array<double, 2> height = {0.0, 2500.0};       // m, of the base; most lie below 600
    double steepest = 0.05;                             // height difference over length, at most
    double heightDifference = 300.0;                    // m, at most
    std::array<int, 2> years = {2019, 2030};            // both inside
    std::optional<double> solar;                  // 0 minimum to 1 maximum; empty: of the year
    std::vector<double> durations = {3600.0};     // s, each as likely
    double interval = 0.0;                        // s; 0: drawn to suit the duration
    std::vector<std::string> systems = {"GREC"};  // letters, each as likely
    int frequencies = 2;                          // 1: the receivers have the first alone
    Equipment rover = Equipment::kGeodetic;
    double baseLikeRover = 1.0;  // probability; else the base is geodetic
    std::vector<Environment> around = {Environment::kPillar, Environment::kRoof,
                                       Environment::kField};  // of the rover, each as likely
    std::optional<double> preciseInterval;                    // s, of tables of precise orbits
    // m, of each horizontal component of the header positions; empty: drawn, from centimetres to
    // tens of metres.
    std::optional<double> headerSigma;
};

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
