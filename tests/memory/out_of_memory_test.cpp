// What the exports do when memory is refused: no exception leaves them, they answer 0, and once
// there is memory again they serve as if nothing had been.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <new>
#include <string>

#include "VornelBlCore.h"
#include "simulation/all_answers.h"
#include "simulation/hand_over.h"
#include "simulation/known_scenarios.h"

namespace {

long allowed = -1;     // allocations until one is refused, and all after it; below 0: no end
bool refused = false;  // whether one was

}  // namespace

void* operator new(std::size_t size) {
    void* memory = nullptr;
    if (allowed != 0) {
        allowed -= allowed > 0 ? 1 : 0;
        memory = std::malloc(size > 0 ? size : 1);
    }
    if (memory == nullptr) {
        refused = true;
        throw std::bad_alloc();
    }
    return memory;
}

// The library's own would do the same, but a sanitizer has one that bypasses the counting.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}

namespace vornel::test {
namespace {

// Calls with that many allocations at most.
template <class Call>
int WithMemoryFor(long allocations, const Call& call) {
    refused = false;
    allowed = allocations;
    const int result = call();
    allowed = -1;
    return result;
}

simulation::Session SmallSession() {
    return simulation::Simulate(simulation::FourSystems(20, 30.0, 6));
}

class OutOfMemory : public ::testing::Test {
  protected:
    void TearDown() override { DiposeProcess(); }

    // Gives the call no allocation, then one, and so on until it needs no more. How many it was
    // refused.
    template <class Call>
    int Refusals(const Call& call) {
        for (int allocations = 0; allocations < 1000; ++allocations) {
            const int result = WithMemoryFor(allocations, call);
            EXPECT_EQ(result, refused ? 0 : 1);
            if (!refused) {
                return allocations;
            }
        }
        ADD_FAILURE() << "a call without an end";
        return 0;
    }
};

TEST_F(OutOfMemory, ANewProcessIsRefusedAndThenGiven) {
    EXPECT_GT(Refusals([] { return CreateBLProcess(); }), 0);
    EXPECT_GT(Refusals([] { return CreateBLProcessWithTrace("", 0); }), 0);
}

TEST_F(OutOfMemory, EphemeridesAreRefusedAndThenTaken) {
    CreateBLProcess();
    const double s = 300000.0;
    EXPECT_GT(Refusals([=] {
                  return InputOneSatNavGPS(7, 2200, s, 0.0, 0.0, 0.0, 5153.7, 0.01, 0.9, 0.1, 0.2,
                                           0.3, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1, 1.0,
                                           s, 2200, s, 0, 0, 2.0, 0, 0.0, 4);
              }),
              0);
    EXPECT_GT(Refusals([=] {
                  return InputOneSatNavBDS(7, 2200, s, 0.0, 0.0, 0.0, 6493.0, 0.01, 0.9, 0.1, 0.2,
                                           0.3, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1, 1.0,
                                           s, 2200, s, 0, 0, 2.0, 0, 0.0, 0.0, 4);
              }),
              0);
    EXPECT_GT(Refusals([=] {
                  return InputOneSatNavGAL(7, 2200, s, 0.0, 0.0, 0.0, 5440.6, 0.01, 0.9, 0.1, 0.2,
                                           0.3, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1, 1.0,
                                           s, 2200, s, 0, 0, 2.0, 0, 0.0, 0.0, 4);
              }),
              0);
    EXPECT_GT(Refusals([=] {
                  return InputOneSatNavGLO(3, 2200, s, 0.0, 0.0, 0.0, 0.0, 0.0, 25000.0, 0.0, 0.0,
                                           0.0, 3.0, 1.0, 0.0, 0.0, 0.0, 0, 1, 0, 18);
              }),
              0);
    int week = 2200;
    double seconds = s, value = 2.0e7;
    EXPECT_GT(Refusals([&] { return InputOneSatPreEphValue(0, 1, 7, 1, &week, &seconds, &value); }),
              0);
}

TEST_F(OutOfMemory, SatellitesToLeaveOutAreRefusedAndThenTaken) {
    CreateBLProcess();
    int systems[2] = {1, 2}, numbers[2] = {5, 6};
    EXPECT_GT(Refusals([&] { return MarkDelSatList(2, systems, numbers); }), 0);
    EXPECT_GT(Refusals([] { return AddOneDelSat(8, 11); }), 0);
    int weeks[1] = {2200};
    double from[1] = {0.0}, to[1] = {60.0};
    EXPECT_GT(Refusals([&] {
                  return AddOneSatTrackInfo(0, 1, 5, 0, 2200, 0.0, 2200, 900.0, 0.0, 1, weeks, from,
                                            weeks, to);
              }),
              0);
}

TEST_F(OutOfMemory, AnEpochIsRefusedAndThenTaken) {
    const simulation::Session session = SmallSession();
    simulation::HandOverSettings(session);
    for (const auto& call : simulation::EphemerisCalls(session.sky)) {
        call();
    }
    simulation::SessionEpoch epoch = session.epochs.front();
    simulation::ReceiverRecord& rover = epoch.rover;
    simulation::ReceiverRecord& base = epoch.base;
    EXPECT_GT(Refusals([&] {
                  return InputEpochObsData(
                      rover.week, rover.seconds, rover.satellites.data(), rover.code1.data(),
                      rover.code2.data(), rover.phase1.data(), rover.phase2.data(), base.week,
                      base.seconds, base.satellites.data(), base.code1.data(), base.code2.data(),
                      base.phase1.data(), base.phase2.data());
              }),
              0);
}

TEST_F(OutOfMemory, ARunThatWasRefusedLeavesNoTraceInTheNext) {
    const simulation::Session session = SmallSession();
    simulation::HandOver(session);
    int status = 0;
    ASSERT_EQ(StartProcess(&status), 1);
    ASSERT_EQ(status, 73);
    const std::string whole = simulation::AllAnswers(status);

    int ended = 0;
    bool complete = false;
    for (long allocations = 0; !complete; allocations += 1 + allocations / 8) {
        status = -1;
        const int result = WithMemoryFor(allocations, [&status] { return StartProcess(&status); });
        complete = !refused;
        if (result == 0) {
            // As far as it came; without a solver there is nothing to ask.
            EXPECT_TRUE(status == 10 || status == 1 || (status >= 12 && status < 100)) << status;
            ++ended;
            if (status != 10) {
                EXPECT_FALSE(simulation::AllAnswers(status).empty());
            }
        } else if (status != 20) {  // a triple-difference solution without memory has failed
            EXPECT_EQ(simulation::AllAnswers(status), whole) << allocations;
        }
    }
    EXPECT_GT(ended, 20);

    ASSERT_EQ(StartProcess(&status), 1);
    EXPECT_EQ(simulation::AllAnswers(status), whole);
}

}  // namespace
}  // namespace vornel::test
