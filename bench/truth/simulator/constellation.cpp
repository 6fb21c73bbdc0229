#include "constellation.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "calendar.h"
#include "random.h"
#include "sun_moon.h"

namespace vornel::rough {
namespace {

// The sky is one and the same for every seed of a simulation; only the date and the place differ.
constexpr std::uint64_t kSkySeed = 20000101;

double YearOf(const io::GpsTime& date) {
    return 2000.0 + DaysSince2000(date) / 365.25;
}

// A count that grows linearly from one year to another.
int Grown(double year, double from, int countThen, double to, int countLater) {
    const double share = std::clamp((year - from) / (to - from), 0.0, 1.0);
    return countThen + static_cast<int>(std::lround(share * (countLater - countThen)));
}

// Fills in what the mean motion and the drift of the node make of angles given at 2000-01-01.
class Placer {
  public:
    explicit Placer(const io::GpsTime& date)
        : seconds_(DaysSince2000(date) * kDay), siderealAngle_(SiderealAngle(date)) {}

    // `node` and `latitudeArgument` at 2000-01-01 12:00, the node against the stars.
    void Place(Satellite& s, double node, double latitudeArgument) const {
        const double motion = s.revolutions * (kEarthRate - s.nodeRate);
        s.nodeLongitude = std::remainder(node + s.nodeRate * seconds_ - siderealAngle_, 2.0 * kPi);
        s.meanAnomaly = std::remainder(latitudeArgument - s.perigee + motion * seconds_, 2.0 * kPi);
    }

    // A synchronous satellite by the longitude at which it crosses the equator.
    void PlaceSynchronous(Satellite& s, double node, double crossing) const {
        s.nodeLongitude = std::remainder(node + s.nodeRate * seconds_ - siderealAngle_, 2.0 * kPi);
        s.meanAnomaly = std::remainder(crossing - s.nodeLongitude - s.perigee, 2.0 * kPi);
    }

  private:
    double seconds_;
    double siderealAngle_;
};

// Slots of the 24-slot constellation by plane (GPS SPS performance standard, table of the reference
// orbit): ascending node and arguments of latitude, degrees; the further ones stand where the
// expanded slots and spares are.
struct GpsPlane {
    double node;
    std::array<double, 6> slots;
};
constexpr std::array<GpsPlane, 6> kGpsPlanes = {{
    {272.847, {268.126, 161.786, 11.676, 41.806, 220.0, 100.0}},
    {332.847, {80.956, 173.336, 309.976, 204.376, 110.0, 262.0}},
    {32.847, {111.876, 11.796, 339.666, 241.556, 290.0, 190.0}},
    {92.847, {135.226, 265.446, 35.156, 167.356, 300.0, 85.0}},
    {152.847, {197.046, 302.596, 66.066, 333.686, 255.0, 15.0}},
    {212.847, {238.886, 345.226, 105.206, 135.346, 45.0, 285.0}},
}};

void AddGps(const io::GpsTime& date, std::vector<Satellite>& list) {
    const Placer placer(date);
    const double year = YearOf(date);
    const int count = Grown(year, 2002.0, 28, 2010.0, 31);
    // Numbers do not follow the planes: a stride through the 32 numbers.
    const int modernCount = Grown(year, 2010.0, 0, 2025.0, 20);
    for (int k = 0; k < count; ++k) {
        const GpsPlane& plane = kGpsPlanes[static_cast<std::size_t>(k % 6)];
        Satellite s;
        s.id = {io::GnssSystem::kGps, static_cast<std::uint8_t>(1 + (k * 13) % 32)};
        Random random(kSkySeed, "GPS", s.id.number);
        s.modern = k % 31 < modernCount;
        s.revolutions = 2.0;
        s.eccentricity = random.Uniform(0.001, 0.018);
        s.inclination = random.Normal(55.3, 0.8) * kDegree;
        s.nodeRate = -8.0e-9;
        s.perigee = random.Uniform(-kPi, kPi);
        placer.Place(s, plane.node * kDegree + random.Normal(0.0, 2.0 * kDegree),
                     plane.slots[static_cast<std::size_t>(k / 6)] * kDegree +
                         random.Normal(0.0, 2.0 * kDegree));
        list.push_back(s);
    }
}

// Slots and channels of 24 satellites; satellites opposite to each other share a channel.
void AddGlonass(const io::GpsTime& date, std::vector<Satellite>& list) {
    constexpr std::array<int, 24> kChannels = {1,  -4, 5, 6,  1, -4, 5, 6, -2, -7, 0, -1,
                                               -2, -7, 0, -1, 4, -3, 3, 2, 4,  -3, 3, 2};
    const Placer placer(date);
    const int count = Grown(YearOf(date), 2002.0, 8, 2012.0, 24);
    for (int k = 0; k < 24; ++k) {
        // Built up evenly over the planes.
        if ((k * 7) % 24 >= count) {
            continue;
        }
        Satellite s;
        s.id = {io::GnssSystem::kGlonass, static_cast<std::uint8_t>(k + 1)};
        Random random(kSkySeed, "GLONASS", s.id.number);
        s.channel = kChannels[static_cast<std::size_t>(k)];
        s.revolutions = 17.0 / 8.0;
        s.eccentricity = random.Uniform(0.0002, 0.002);
        s.inclination = random.Normal(64.8, 0.4) * kDegree;
        s.nodeRate = -6.7e-9;
        s.perigee = random.Uniform(-kPi, kPi);
        const int plane = k / 8;
        placer.Place(s, (251.0 + 120.0 * plane) * kDegree,
                     (146.0 - 45.0 * (k % 8) + 15.0 * plane) * kDegree);
        list.push_back(s);
    }
}

void AddGalileo(const io::GpsTime& date, std::vector<Satellite>& list) {
    constexpr std::array<std::uint8_t, 24> kNumbers = {
        11, 12, 19, 24, 26, 22, 8, 9, 30, 1, 2, 7, 3, 4, 5, 21, 25, 27, 31, 36, 13, 15, 33, 10};
    const double year = YearOf(date);
    const Placer placer(date);
    const int count = year < 2013.0 ? 0 : Grown(year, 2013.0, 4, 2022.0, 24);
    for (int k = 0; k < count; ++k) {
        Satellite s;
        s.id = {io::GnssSystem::kGalileo, kNumbers[static_cast<std::size_t>(k)]};
        Random random(kSkySeed, "Galileo", s.id.number);
        s.revolutions = 1.7;
        s.eccentricity = random.Uniform(0.0001, 0.0006);
        s.inclination = random.Normal(55.8, 0.9) * kDegree;
        s.nodeRate = -5.4e-9;
        s.perigee = random.Uniform(-kPi, kPi);
        const int plane = k % 3;
        placer.Place(s, (317.0 + 120.0 * plane) * kDegree,
                     (45.0 * (k / 3) + 15.0 * plane) * kDegree);
        list.push_back(s);
    }
    // Two satellites that were left in an eccentric orbit (37 revolutions in 20 days).
    for (int k = 0; k < 2 && year >= 2016.0; ++k) {
        Satellite s;
        s.id = {io::GnssSystem::kGalileo, static_cast<std::uint8_t>(k == 0 ? 14 : 18)};
        s.revolutions = 37.0 / 20.0;
        s.eccentricity = 0.162;
        s.inclination = 50.3 * kDegree;
        s.nodeRate = -8.5e-9;
        s.perigee = 1.2;
        placer.Place(s, 50.0 * kDegree, 180.0 * k * kDegree);
        list.push_back(s);
    }
}

struct Synchronous {
    std::uint8_t number;
    double longitude;    // degrees: of the satellite, or where the track crosses the equator
    double inclination;  // degrees
    double node;         // degrees at 2000-01-01, inclined ones
    double firstYear;
};
constexpr std::array<Synchronous, 18> kSynchronous = {{
    {1, 140.0, 1.6, 0.0, 2012.0},
    {2, 80.0, 2.0, 60.0, 2012.0},
    {3, 110.5, 1.3, 120.0, 2012.0},
    {4, 160.0, 1.0, 200.0, 2012.0},
    {5, 58.75, 1.9, 300.0, 2012.0},
    {59, 140.0, 0.8, 40.0, 2019.0},
    {60, 80.0, 0.9, 90.0, 2020.3},
    {61, 110.5, 0.7, 150.0, 2020.5},
    {6, 118.0, 54.5, 205.0, 2012.0},
    {7, 118.0, 52.0, 325.0, 2012.0},
    {8, 118.0, 57.0, 85.0, 2012.0},
    {9, 95.0, 55.0, 200.0, 2012.0},
    {10, 95.0, 52.0, 320.0, 2012.0},
    {13, 95.0, 57.5, 80.0, 2016.3},
    {16, 112.0, 55.0, 210.0, 2018.5},
    {38, 110.0, 55.5, 140.0, 2019.3},
    {39, 110.0, 55.0, 260.0, 2019.5},
    {40, 110.0, 55.0, 20.0, 2019.8},
}};

constexpr double kLeastInclined = 10.0;  // degrees; below it a satellite counts as geostationary

void AddBeiDou(const io::GpsTime& date, std::vector<Satellite>& list) {
    const double year = YearOf(date);
    const Placer placer(date);
    for (const Synchronous& entry : kSynchronous) {
        if (year < entry.firstYear) {
            continue;
        }
        Satellite s;
        s.id = {io::GnssSystem::kBeiDou, entry.number};
        s.orbitClass = entry.inclination < kLeastInclined ? OrbitClass::kGeostationary
                                                          : OrbitClass::kInclinedSynchronous;
        s.modern = entry.number > 18;
        Random random(kSkySeed, "BeiDou", s.id.number);
        s.revolutions = 1.0;
        s.eccentricity = random.Uniform(0.0003, 0.004);
        s.inclination = entry.inclination * kDegree;
        // The inertial axes of a geostationary orbit are those of its broadcast, without a drift.
        s.nodeRate = s.orbitClass == OrbitClass::kGeostationary ? 0.0 : -2.5e-9;
        s.perigee = random.Uniform(-kPi, kPi);
        placer.PlaceSynchronous(s, entry.node * kDegree, entry.longitude * kDegree);
        list.push_back(s);
    }
    // Medium orbits: three of the second generation, 24 of the third.
    constexpr std::array<std::uint8_t, 24> kNumbers = {19, 20, 21, 22, 23, 24, 25, 26,
                                                       27, 28, 29, 30, 32, 33, 34, 35,
                                                       36, 37, 41, 42, 43, 44, 45, 46};
    const int third = year < 2018.0 ? 0 : Grown(year, 2018.0, 4, 2020.5, 24);
    const int second = year < 2012.3 ? 0 : 3;
    for (int k = 0; k < second + third; ++k) {
        Satellite s;
        s.modern = k >= second;
        const auto slot = static_cast<std::size_t>(s.modern ? k - second : k);
        s.id = {io::GnssSystem::kBeiDou,
                s.modern ? kNumbers[slot] : std::array<std::uint8_t, 3>{11, 12, 14}[slot]};
        Random random(kSkySeed, "BeiDou", s.id.number);
        s.revolutions = 13.0 / 7.0;
        s.eccentricity = random.Uniform(0.0003, 0.003);
        s.inclination = random.Normal(55.2, 0.5) * kDegree;
        s.nodeRate = -6.8e-9;
        s.perigee = random.Uniform(-kPi, kPi);
        const auto plane = static_cast<double>(slot % 3);
        const auto place = static_cast<double>(slot / 3) + (s.modern ? 0.0 : 0.5);
        placer.Place(s, (35.0 + 120.0 * plane) * kDegree, (45.0 * place + 15.0 * plane) * kDegree);
        list.push_back(s);
    }
}

}  // namespace

std::vector<Satellite> SatellitesAt(const io::GpsTime& date) {
    std::vector<Satellite> list;
    AddGps(date, list);
    AddGlonass(date, list);
    AddGalileo(date, list);
    AddBeiDou(date, list);
    std::sort(list.begin(), list.end(),
              [](const Satellite& a, const Satellite& b) { return a.id < b.id; });
    return list;
}

}  // namespace vornel::rough
