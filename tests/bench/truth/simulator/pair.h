// Pairs of stations for the tests.
#pragma once

#include "simulator/calendar.h"
#include "simulator/scenario.h"

namespace vornel::rough {

// Two geodetic receivers in a world without errors, an hour at 30 s.
inline Scenario SilentPair(double length, const Date& date, double latitude = 47.0) {
    Scenario scenario;
    scenario.seed = 1;
    scenario.effects = Effects::None();
    scenario.start = TimeOf(date);
    scenario.duration = 3600.0;
    scenario.interval = 30.0;
    const Geodetic base{latitude * kDegree, 11.0 * kDegree, 600.0};
    scenario.sites = {{"BASE", ToCartesian(base), {}},
                      {"ROVR", ToCartesian(PlaceAt(base, length, 0.7, 600.0)), {}}};
    scenario.ionosphere.broadcast = false;
    for (std::size_t i = 0; i < 2; ++i) {
        Occupation occupation;
        occupation.site = i;
        occupation.receiver.signals = GeodeticSignals();
        occupation.duration = scenario.duration;
        scenario.occupations.push_back(occupation);
    }
    return scenario;
}

}  // namespace vornel::rough
