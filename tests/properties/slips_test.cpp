// A slip that is repaired leaves no trace in the vector.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <vector>

#include "exports/process.h"
#include "foundation/satellite.h"
#include "properties/random_sessions.h"

namespace vornel::properties {
namespace {

using simulation::kBase;
using simulation::kRover;
using simulation::Slip;

// Repair asks that the satellite, and with a reference satellite all of its system, have passed the
// test for `minEpochs` since they appeared; sooner, those epochs are given up. So only satellites
// received throughout are kept, and slips stand that far apart.
Session WithSteadySatellites(Session session) {
    const auto isSteady = [&](int satellite) {
        return std::all_of(session.epochs.begin(), session.epochs.end(), [=](const auto& epoch) {
            const auto& list = epoch.rover.satellites;
            return std::find(list.begin(), list.end(), satellite) != list.end();
        });
    };
    auto& all = session.satellites;
    std::vector<int> steady;
    std::copy_if(all.begin(), all.end(), std::back_inserter(steady), isSteady);
    all = steady;
    for (simulation::SessionEpoch& epoch : session.epochs) {
        for (int& satellite : epoch.rover.satellites) {
            satellite = std::count(steady.begin(), steady.end(), satellite) != 0 ? satellite : 0;
        }
    }
    return session;
}

// Of either sign, 1 to a million cycles, every order of magnitude alike.
double DrawCycles(Draw& draw) {
    return std::floor(draw.Logarithmic(1.0, 1e6)) * (draw.Chance(0.5) ? 1.0 : -1.0);
}

// On one signal or both, of either receiver.
Slip DrawSlip(Draw& draw, int satellite, int epoch) {
    const int signals = draw.Whole(0, 2);
    return {draw.Chance(0.5) ? kRover : kBase,
            satellite,
            epoch,
            {signals == 1 ? 0.0 : DrawCycles(draw), signals == 0 ? 0.0 : DrawCycles(draw)}};
}

// The tracks of the last float solution: satellite, first and last epoch of each.
std::vector<std::array<int, 3>> Tracks() {
    std::vector<std::array<int, 3>> tracks;
    for (const auto& track :
         CurrentProcess().solver->resultManage.floatResults.back().ambiguities) {
        tracks.push_back({track.sat, track.firstEpoch, track.lastEpoch});
    }
    return tracks;
}

class Slips : public Law {
  protected:
    // Slips of one or two satellites at a time, all through the session. On their second signal
    // alone, GLONASS satellites have no test: in model 2 they are left out.
    std::vector<Slip> DrawSlips(const Session& session, Draw& draw) const {
        std::vector<int> satellites = session.satellites;
        if (model() == 2) {
            satellites.erase(std::remove_if(satellites.begin(), satellites.end(),
                                            [](int s) { return SplitSatNumber(s) == kGlonass; }),
                             satellites.end());
        }
        std::vector<Slip> slips;
        const int apart = session.scenario.config.minEpochs + 2;
        for (int epoch = apart; epoch + apart < session.scenario.epochCount; epoch += apart) {
            const int first = draw.OneOf(satellites);
            const int second = draw.OneOf(satellites);
            slips.push_back(DrawSlip(draw, first, epoch));
            if (SplitSatNumber(first) != SplitSatNumber(second)) {
                slips.push_back(DrawSlip(draw, second, epoch));
            }
        }
        return slips;
    }
};
INSTANTIATE_TEST_SUITE_P(Models, Slips, ::testing::Range(1, 7), NameOfModel);

// In its first pass the float solution rounds each ambiguity by the first row of its track, at the
// rover of the triple difference. What is left can be half a cycle, which is beyond the limit of
// that pass on the longer wavelengths: such a track is given up. Rows with a slip do not count in
// the triple difference, which moves by centimetres, so that now and then (3 of 480 sessions) a
// track is kept with slips and given up without, or the other way round. Then the vectors agree
// only as two estimates from different data do.
TEST_P(Slips, OfAnySizeLeaveTheFinalVectorWithinATenthOfAMillimetre) {
    int sameTracks = 0;
    for (std::uint64_t number = 0; number < 2 * kSeeds; ++number) {
        SCOPED_TRACE(number);
        test::ForgetProcess();
        Scenario scenario = RandomScenario(model(), SeedOf(number));
        scenario.config.elevationMask = scenario.horizon - 0.05;
        if (model() == 2 && scenario.satellites[0] == 0) {
            scenario.satellites[0] = 8;
        }
        const Session clean = WithSteadySatellites(simulation::Simulate(scenario));
        simulation::RunSession(clean);
        const SolveResult before = FinalSolution();
        const auto tracks = Tracks();
        Draw draw(SeedOf(number));
        scenario.slips = DrawSlips(clean, draw);
        ASSERT_GE(scenario.slips.size(), 2u);
        simulation::RunSession(WithSteadySatellites(simulation::Simulate(scenario)));
        EXPECT_EQ(FinalSolution().mode, before.mode);
        const bool same = Tracks() == tracks;
        sameTracks += same ? 1 : 0;
        EXPECT_LT(Difference(FinalSolution(), before), same ? 1e-4 : before.sigma3);
    }
    EXPECT_GE(sameTracks, static_cast<int>(2 * kSeeds) - 1);
}

}  // namespace
}  // namespace vornel::properties
