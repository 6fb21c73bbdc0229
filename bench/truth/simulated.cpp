#include "simulated.h"

#include <algorithm>
#include <cmath>

#include "session/text.h"
#include "simulator/calendar.h"
#include "simulator/random.h"
#include "simulator/simulate.h"

namespace vornel::truth {
namespace {

using rough::Random;

template <typename Value>
const Value& AnyOf(const std::vector<Value>& list, Random& random) {
    return list[static_cast<std::size_t>(random.Integer(0, static_cast<int>(list.size()) - 1))];
}

std::array<bool, io::kSystemCount> Systems(const std::string& letters) {
    std::array<bool, io::kSystemCount> on{};
    for (std::size_t s = 0; s < io::kSystemCount; ++s) {
        on[s] = letters.find(io::kSystemLetters[s]) != std::string::npos;
    }
    return on;
}

rough::Receiver ReceiverOf(const Kind& kind, Random& random) {
    rough::Receiver receiver;
    receiver.signals =
        kind.frequencies == 1 ? rough::SingleFrequencySignals() : rough::GeodeticSignals();
    const std::vector<rough::ClockStyle> styles = {
        rough::ClockStyle::kSteered, rough::ClockStyle::kJumping, rough::ClockStyle::kTagged};
    receiver.clock = styles[random.Choose({0.6, 0.3, 0.1})];
    const double most = receiver.clock == rough::ClockStyle::kTagged ? 5e-3 : 5e-4;  // s
    receiver.clockOffset = random.Uniform(-most, most);
    receiver.clockDrift = random.Normal(0.0, 1e-8);
    return receiver;
}

// A multiple of 30 s within some years, on any day of the week.
io::GpsTime AnyTime(const std::array<int, 2>& years, Random& random) {
    constexpr double kStep = 30.0;  // s
    const io::GpsTime first = rough::TimeOf({years[0], 1, 1});
    const io::GpsTime end = rough::TimeOf({years[1] + 1, 1, 1});
    const double steps = std::floor(io::SecondsBetween(first, end) / kStep);
    return io::Shifted(first, kStep * std::floor(random.Uniform(0.0, steps)));
}

}  // namespace

Scene SimulatedScene(const Kind& kind, std::uint64_t seed) {
    Random random(seed, kind.name);
    rough::Scenario scenario;
    scenario.seed = random.Bits();
    scenario.start = AnyTime(kind.years, random);
    scenario.duration = AnyOf(kind.durations, random);
    scenario.interval = kind.interval;
    const std::string systems = AnyOf(kind.systems, random);
    scenario.systems = Systems(systems);
    if (kind.orbits != OrbitChoice::kBroadcast) {
        scenario.preciseInterval = 300.0;
    }

    rough::Geodetic base;
    base.latitude = rough::kDegree * random.Uniform(kind.latitude[0], kind.latitude[1]) *
                    (random.Chance(0.5) ? 1.0 : -1.0);
    base.longitude = random.Uniform(-rough::kPi, rough::kPi);
    base.height = random.LogUniform(10.0, 1500.0);
    const double length = random.LogUniform(kind.length[0], kind.length[1]);
    // Steep on short vectors, flat on long ones.
    const double steepest = std::min(kind.heightDifference, 0.3 * length);
    const double height = base.height + random.Uniform(-steepest, steepest);
    const rough::Geodetic rover =
        rough::PlaceAt(base, length, random.Uniform(0.0, 2.0 * rough::kPi), height);
    scenario.sites = {{"BASE", rough::ToCartesian(base), {}},
                      {"ROVR", rough::ToCartesian(rover), {}}};
    for (std::size_t site = 0; site < 2; ++site) {
        rough::Occupation occupation;
        occupation.site = site;
        occupation.receiver = ReceiverOf(kind, random);
        occupation.duration = scenario.duration;
        occupation.antennaHeight = random.Uniform(0.0, 2.0);
        const double sigma = kind.headerSigma;
        occupation.headerOffset = Vector3{random.Normal(0.0, sigma), random.Normal(0.0, sigma),
                                          random.Normal(0.0, 1.5 * sigma)};
        scenario.occupations.push_back(occupation);
    }

    rough::SimulatedSession simulated = rough::Simulate(scenario);
    Scene scene;
    scene.source = "simulated";
    scene.set = kind.name;
    scene.block =
        session::Format("%s:%llu", kind.name.c_str(), static_cast<unsigned long long>(seed));
    scene.cut = scene.block;
    scene.duration = scenario.duration;
    scene.systems = systems;
    scene.frequencies = kind.frequencies;
    scene.orbits = kind.orbits;
    scene.headerOffset = 0.0;
    scene.inputs.base = std::move(simulated.stations[0].observations);
    scene.inputs.rover = std::move(simulated.stations[1].observations);
    if (kind.orbits != OrbitChoice::kSp3Alone) {
        scene.inputs.navigation.push_back(std::move(simulated.navigation));
    }
    if (simulated.preciseOrbits) {
        scene.inputs.orbits.push_back(std::move(*simulated.preciseOrbits));
    }
    scene.known.base = simulated.stations[0].marker;
    scene.known.vector = simulated.TrueVector(0, 1);
    return scene;
}

}  // namespace vornel::truth
