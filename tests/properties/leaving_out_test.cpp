// A satellite that is left out, by whichever way, might as well not be there.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <vector>

#include "VornelBlCore.h"
#include "exports/process.h"
#include "foundation/satellite.h"
#include "properties/random_sessions.h"
#include "simulation/hand_over.h"

namespace vornel::properties {
namespace {

void Remove(simulation::ReceiverRecord& record, const std::set<int>& satellites) {
    for (int& satellite : record.satellites) {
        if (satellites.count(satellite) != 0) {
            satellite = 0;
        }
    }
}

Session Without(Session session, const std::set<int>& satellites) {
    for (simulation::SessionEpoch& epoch : session.epochs) {
        Remove(epoch.rover, satellites);
        Remove(epoch.base, satellites);
    }
    return session;
}

// One to four of the satellites; or, now and then, all of a system. One of them at least had a part
// in the last run, and one that had a part stays: the choice of the solve model looks at the
// frequencies of all satellites that were handed over, so without any the two sessions would differ
// in the model that both fail to solve.
std::set<int> DrawSome(const Session& session, Draw& draw) {
    std::set<int> chosen;
    const std::vector<int>& all = session.satellites;
    const std::vector<int>& used =
        CurrentProcess().solver->epochs[session.epochs.size() / 2].activeSats;
    chosen.insert(draw.OneOf(used));
    if (draw.Chance(0.3)) {
        const int system = SplitSatNumber(*chosen.begin());
        for (const int satellite : all) {
            if (SplitSatNumber(satellite) == system) {
                chosen.insert(satellite);
            }
        }
    }
    for (int count = draw.Whole(0, 3); count > 0; --count) {
        chosen.insert(draw.OneOf(all));
    }
    const bool oneStays = std::any_of(used.begin(), used.end(),
                                      [&](int satellite) { return chosen.count(satellite) == 0; });
    return oneStays ? chosen : std::set<int>{used.front()};
}

class LeavingOut : public Law {};
INSTANTIATE_TEST_SUITE_P(Models, LeavingOut, ::testing::Range(1, 7), NameOfModel);

TEST_P(LeavingOut, ByTheDeleteListGivesTheAnswersOfASessionWithoutTheSatellites) {
    for (std::uint64_t number = 0; number < kSeeds; ++number) {
        SCOPED_TRACE(number);
        test::ForgetProcess();
        const Session session = simulation::Simulate(TroubledScenario(model(), SeedOf(number)));
        const std::string with = AnswersOf(session);
        Draw draw(SeedOf(number));
        const std::set<int> satellites = DrawSome(session, draw);
        const std::string without = AnswersOf(Without(session, satellites));
        EXPECT_NE(with, without);

        test::ForgetProcess();
        simulation::HandOver(session);
        for (const int satellite : satellites) {
            int id = 0;
            const int system = SplitSatNumber(satellite, &id);
            AddOneDelSat(system, id);
        }
        EXPECT_EQ(FirstDifference(AnswersOfRun(), without), "");

        // An active track in any of the lists is the same.
        MarkDelSatList(0, nullptr, nullptr);
        int list = 0;
        for (const int satellite : satellites) {
            int id = 0;
            const int system = SplitSatNumber(satellite, &id);
            AddOneSatTrackInfo(list++ % 3, system, id, 1, 0, 0.0, 0, 0.0, 0.0, 0, nullptr, nullptr,
                               nullptr, nullptr);
        }
        EXPECT_EQ(FirstDifference(AnswersOfRun(), without), "");
        CleanSatTrackList();
        EXPECT_EQ(FirstDifference(AnswersOfRun(), with), "");
    }
}

TEST_P(LeavingOut, OfASystemByTheListOfSystemsGivesTheAnswersOfASessionWithoutIt) {
    for (std::uint64_t number = 0; number < kSeeds; ++number) {
        SCOPED_TRACE(number);
        test::ForgetProcess();
        Session session = simulation::Simulate(TroubledScenario(model(), SeedOf(number)));
        Draw draw(SeedOf(number));
        const int system = SplitSatNumber(draw.OneOf(session.satellites));
        std::set<int> satellites;
        for (const int satellite : session.satellites) {
            if (SplitSatNumber(satellite) == system) {
                satellites.insert(satellite);
            }
        }
        const std::string without = AnswersOf(Without(session, satellites));
        SolveConfig& config = session.scenario.config;
        (system == kGps       ? config.useGps
         : system == kGlonass ? config.useGlonass
         : system == kBds     ? config.useBds
                              : config.useGalileo) = 0;
        EXPECT_EQ(FirstDifference(AnswersOf(session), without), "");
    }
}

TEST_P(LeavingOut, SatellitesBelowTheMaskMakeNoDifference) {
    for (std::uint64_t number = 0; number < kSeeds; ++number) {
        SCOPED_TRACE(number);
        test::ForgetProcess();
        Scenario scenario = RandomScenario(model(), SeedOf(number));
        for (int& count : scenario.satellites) {
            count = count == 0 ? 0 : -1;
        }
        scenario.config.elevationMask = 0.4;
        scenario.horizon = 0.15;
        const Session session = simulation::Simulate(scenario);
        const std::string all = AnswersOf(session);
        // What the engine itself found below the mask at both stations, all the time.
        std::set<int> below(session.satellites.begin(), session.satellites.end());
        for (const SDObsData& epoch : CurrentProcess().control->epochs) {
            for (const int satellite : epoch.satList) {
                if (epoch.azelA[satellite - 1][1] >= 0.4 || epoch.azelB[satellite - 1][1] >= 0.4) {
                    below.erase(satellite);
                }
            }
        }
        ASSERT_FALSE(below.empty());
        EXPECT_EQ(FirstDifference(AnswersOf(Without(session, below)), all), "");
    }
}

TEST_P(LeavingOut, AnEpochAtTheEndInWhichNothingWasReceivedMakesNoDifference) {
    for (std::uint64_t number = 0; number < kSeeds; ++number) {
        SCOPED_TRACE(number);
        test::ForgetProcess();
        Session session = simulation::Simulate(TroubledScenario(model(), SeedOf(number)));
        const std::string answers = AnswersOf(session);
        simulation::SessionEpoch last = session.epochs.back();
        last.rover.satellites.fill(0);
        last.base.satellites.fill(0);
        last.rover.seconds += session.scenario.interval;
        last.base.seconds += session.scenario.interval;
        session.epochs.push_back(last);
        EXPECT_EQ(FirstDifference(AnswersOf(session), answers), "");
    }
}

}  // namespace
}  // namespace vornel::properties
