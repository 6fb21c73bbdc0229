// In which order things are handed over makes no difference.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "properties/random_sessions.h"
#include "simulation/hand_over.h"

namespace vornel::properties {
namespace {

// The slots of a record in the given order.
simulation::ReceiverRecord Reordered(const simulation::ReceiverRecord& record,
                                     const std::array<std::size_t, 64>& order) {
    simulation::ReceiverRecord result = record;
    for (std::size_t slot = 0; slot < order.size(); ++slot) {
        result.satellites[slot] = record.satellites[order[slot]];
        result.code1[slot] = record.code1[order[slot]];
        result.code2[slot] = record.code2[order[slot]];
        result.phase1[slot] = record.phase1[order[slot]];
        result.phase2[slot] = record.phase2[order[slot]];
    }
    return result;
}

// Every record of both receivers in an order of its own, empty slots in between.
Session Shuffled(Session session, Draw& draw) {
    std::array<std::size_t, 64> order;
    for (std::size_t slot = 0; slot < order.size(); ++slot) {
        order[slot] = slot;
    }
    for (simulation::SessionEpoch& epoch : session.epochs) {
        draw.Shuffle(order);
        epoch.rover = Reordered(epoch.rover, order);
        draw.Shuffle(order);
        epoch.base = Reordered(epoch.base, order);
    }
    return session;
}

class Order : public Law {};
INSTANTIATE_TEST_SUITE_P(Models, Order, ::testing::Range(1, 7), NameOfModel);

TEST_P(Order, OfSatellitesInTheEpochsChangesNoBitOfAnyAnswer) {
    for (std::uint64_t number = 0; number < kSeeds; ++number) {
        SCOPED_TRACE(number);
        test::ForgetProcess();
        const Session session = simulation::Simulate(TroubledScenario(model(), SeedOf(number)));
        const std::string straight = AnswersOf(session);
        Draw draw(SeedOf(number));
        EXPECT_EQ(FirstDifference(AnswersOf(Shuffled(session, draw)), straight), "");
    }
}

TEST_P(Order, OfEphemeridesChangesNoBitOfAnyAnswer) {
    for (std::uint64_t number = 0; number < kSeeds; ++number) {
        SCOPED_TRACE(number);
        test::ForgetProcess();
        const Session session = simulation::Simulate(TroubledScenario(model(), SeedOf(number)));
        const std::string straight = AnswersOf(session);
        test::ForgetProcess();
        simulation::HandOverSettings(session);
        auto calls = simulation::EphemerisCalls(session.sky);
        Draw draw(SeedOf(number));
        draw.Shuffle(calls);
        for (const auto& call : calls) {
            call();
        }
        simulation::HandOverEpochs(session);
        EXPECT_EQ(FirstDifference(AnswersOfRun(), straight), "");
    }
}

}  // namespace
}  // namespace vornel::properties
