// Sessions drawn by chance, reproducibly, for tests that check a law on many of them.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "exports/process_fixture.h"
#include "run/solution_records.h"
#include "simulation/session_run.h"
#include "simulation/simulator.h"

namespace vornel::properties {

using simulation::Scenario;
using simulation::Session;

// Numbers that depend on the seed and on how many were drawn before.
class Draw {
  public:
    explicit Draw(std::uint64_t seed) : seed_(seed) {}
    double Real(double low, double high);         // above low, at most high
    double Logarithmic(double low, double high);  // every decade alike
    int Whole(int low, int high);                 // both included
    bool Chance(double probability) { return Real(0.0, 1.0) <= probability; }

    int OneOf(const std::vector<int>& list) {
        return list.at(static_cast<std::size_t>(Whole(0, static_cast<int>(list.size()) - 1)));
    }
    template <class List>
    void Shuffle(List& list) {
        for (std::size_t i = list.size(); i > 1; --i) {
            std::swap(list[i - 1],
                      list[static_cast<std::size_t>(Whole(0, static_cast<int>(i) - 1))]);
        }
    }

  private:
    std::uint64_t seed_;
    std::uint64_t count_ = 0;
};

// A session for a solve model: any place, time, systems, satellites, length, interval, antennas,
// clocks and GLONASS bias; a baseline of 5 m to 8 km; the noise of real receivers. Without slips and
// gaps.
Scenario RandomScenario(int model, std::uint64_t seed);

// The same with slips and gaps in it, some of them beyond repair.
Scenario TroubledScenario(int model, std::uint64_t seed);

// The last fixed solution of the run, or the last float solution if there is none.
const SolveResult& FinalSolution();
const SolveResult& LastFloatSolution();

// Of two vectors, metres.
double Difference(const SolveResult& a, const SolveResult& b);

// Runs a session and gives all answers as text.
std::string AnswersOf(const Session& session);

// Runs what has been handed over.
std::string AnswersOfRun();

// The first line in which two answers differ, as either has it; empty when they are the same.
std::string FirstDifference(const std::string& a, const std::string& b);

// A test for each solve model.
class Law : public test::ProcessTest, public ::testing::WithParamInterface<int> {
  protected:
    static constexpr std::uint64_t kSeeds = VORNEL_SESSIONS_OF_A_LAW;

    int model() const { return GetParam(); }
    // Different sessions for each model.
    std::uint64_t SeedOf(std::uint64_t number) const {
        return 1000 * static_cast<std::uint64_t>(model()) + number;
    }
};

inline std::string NameOfModel(const ::testing::TestParamInfo<int>& info) {
    return "Model" + std::to_string(info.param);
}

}  // namespace vornel::properties
