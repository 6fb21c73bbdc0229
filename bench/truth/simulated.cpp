#include "simulated.h"

#include "session/text.h"
#include "simulator/simulate.h"

namespace vornel::truth {
namespace {

std::string LettersOf(const rough::Scenario& scenario) {
    std::string letters;
    for (const io::GnssSystem system : {io::GnssSystem::kGps, io::GnssSystem::kGlonass,
                                        io::GnssSystem::kGalileo, io::GnssSystem::kBeiDou}) {
        if (scenario.systems[static_cast<std::size_t>(system)]) {
            letters += io::SystemLetter(system);
        }
    }
    return letters;
}

}  // namespace

Scene SimulatedScene(const Kind& kind, std::uint64_t seed) {
    const rough::Scenario scenario = rough::DrawScenario(seed, kind.bounds);
    rough::SimulatedSession simulated = rough::Simulate(scenario);
    Scene scene;
    scene.source = "simulated";
    scene.set = kind.bounds.name;
    scene.block =
        session::Format("%s:%llu", scene.set.c_str(), static_cast<unsigned long long>(seed));
    scene.cut = scene.block;
    scene.duration = scenario.duration;
    scene.systems = LettersOf(scenario);
    scene.frequencies = kind.bounds.frequencies;
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
    if (simulated.antennas) {
        scene.inputs.antennas.push_back(std::move(*simulated.antennas));
    }
    scene.known.base = simulated.stations[0].marker;
    scene.known.vector = simulated.TrueVector(0, 1);
    return scene;
}

}  // namespace vornel::truth
