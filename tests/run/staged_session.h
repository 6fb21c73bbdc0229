// A simulated session brought to the stage of the slip tests, to spoil on purpose: phases that
// jump, satellites that drop out, and a look at what the stages made of it.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "foundation/satellite.h"
#include "run/static_solve.h"
#include "simulation/session_run.h"

namespace vornel::test {

using Span = std::pair<int, int>;  // first and last epoch

class StagedSession {
  public:
    // Takes the session to periods and references, with the rover where it truly is.
    explicit StagedSession(const simulation::Scenario& scenario)
        : session(simulation::Simulate(scenario)), solver(simulation::PreparedSolverOf(session)) {
        for (const SDObsData& epoch : solver->epochs) {
            clean_.push_back(PhasesOf(epoch));
        }
    }

    simulation::Session session;
    std::unique_ptr<StaticSolve> solver;

    SDObsData& Epoch(int e) { return solver->epochs[static_cast<std::size_t>(e)]; }
    int EpochCount() const { return static_cast<int>(solver->epochs.size()); }

    // The n-th satellite of a system that is received at all epochs and is no reference.
    int Satellite(int system, int n) const {
        for (const int sat : session.satellites) {
            if (SplitSatNumber(sat) == system && !solver->periods[0].IsReference(sat) &&
                ActiveCount(sat) == EpochCount() && n-- == 0) {
                return sat;
            }
        }
        ADD_FAILURE() << "the session has too few satellites of system " << system;
        return 0;
    }

    // --- spoiling: cycles on the first and second signal

    void JumpFrom(int sat, int epoch, double first, double second) {
        for (int e = epoch; e < EpochCount(); ++e) {
            JumpAt(sat, e, first, second);
        }
    }
    void JumpAt(int sat, int epoch, double first, double second) {
        Epoch(epoch).phase[sat - 1][0] += first;
        Epoch(epoch).phase[sat - 1][1] += second;
    }
    // Adds the cycles at every other epoch, from the first: each change is then of one size, up and
    // down in turn.
    void Alternate(int sat, double first, double second) {
        for (int e = 0; e < EpochCount(); e += 2) {
            JumpAt(sat, e, first, second);
        }
    }
    void DropOut(int sat, int first, int last) {
        for (int e = first; e <= last; ++e) {
            Epoch(e).RemoveActive(sat);
        }
    }
    // Remembers the phases as they are as those to be found again.
    void TakeAsClean() {
        clean_.clear();
        for (const SDObsData& epoch : solver->epochs) {
            clean_.push_back(PhasesOf(epoch));
        }
    }

    // --- what is left

    int ActiveCount(int sat) const {
        return static_cast<int>(
            std::count_if(solver->epochs.begin(), solver->epochs.end(),
                          [&](const SDObsData& epoch) { return epoch.IsActive(sat); }));
    }
    std::vector<int> EpochsWithout(int sat) const {
        std::vector<int> missing;
        for (std::size_t e = 0; e < solver->epochs.size(); ++e) {
            if (!solver->epochs[e].IsActive(sat)) {
                missing.push_back(static_cast<int>(e));
            }
        }
        return missing;
    }
    std::vector<Span> Segments(int sat) const {
        std::vector<Span> spans;
        for (const AmbiguityPara& para : solver->ambiguityParas) {
            if (para.sat == sat) {
                spans.emplace_back(para.firstEpoch, para.lastEpoch);
            }
        }
        return spans;
    }
    // How far a phase stands off the clean one, cycles.
    double Off(int sat, int signal, int epoch) const {
        const auto e = static_cast<std::size_t>(epoch);
        const auto f = static_cast<std::size_t>(signal);
        return solver->epochs[e].phase[sat - 1][signal] -
               clean_[e][static_cast<std::size_t>(sat - 1)][f];
    }
    // Expects an offset over a span of epochs.
    void ExpectOff(int sat, int signal, int first, int last, double cycles) const {
        for (int e = first; e <= last; ++e) {
            EXPECT_NEAR(Off(sat, signal, e), cycles, 1e-7)
                << "satellite " << sat << ", signal " << signal << ", epoch " << e;
        }
    }
    void ExpectClean(int sat) const {
        for (int f = 0; f < 2; ++f) {
            ExpectOff(sat, f, 0, EpochCount() - 1, 0.0);
        }
    }
    // Every satellite but one as it was, to the bit, with one segment over the whole session.
    void ExpectOthersUntouched(int system, int spoiltSat) const {
        for (const int sat : session.satellites) {
            if (SplitSatNumber(sat) != system || sat == spoiltSat ||
                solver->periods[0].ReferenceOf(system) == sat || ActiveCount(sat) == 0) {
                continue;
            }
            EXPECT_EQ(ActiveCount(sat), EpochCount()) << sat;
            EXPECT_EQ(Segments(sat), (std::vector<Span>{{0, EpochCount() - 1}})) << sat;
            for (int e = 0; e < EpochCount(); ++e) {
                EXPECT_EQ(Off(sat, 0, e), 0.0) << sat;
                EXPECT_EQ(Off(sat, 1, e), 0.0) << sat;
            }
        }
    }

  private:
    using Phases = std::array<std::array<double, 2>, kSatelliteCount>;
    static Phases PhasesOf(const SDObsData& epoch) {
        Phases phases;
        for (int s = 0; s < kSatelliteCount; ++s) {
            phases[static_cast<std::size_t>(s)] = {epoch.phase[s][0], epoch.phase[s][1]};
        }
        return phases;
    }

    std::vector<Phases> clean_;
};

inline std::vector<int> Range(int first, int last) {
    std::vector<int> range;
    for (int e = first; e <= last; ++e) {
        range.push_back(e);
    }
    return range;
}

// Sixty epochs of one system at rest, received by every satellite all the time.
inline simulation::Scenario SingleSystem(int system, int count, int model) {
    simulation::Scenario scenario;
    const int systems[4] = {kGps, kGlonass, kBds, kGalileo};
    for (int i = 0; i < 4; ++i) {
        scenario.satellites[i] = systems[i] == system ? count : 0;
    }
    scenario.epochCount = 60;
    scenario.interval = 10.0;
    scenario.troposphere = simulation::Troposphere::kOfFloat;
    scenario.phaseNoise = 0.0;
    scenario.config.slvmode = model;
    return scenario;
}

}  // namespace vornel::test
