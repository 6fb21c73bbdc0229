// A simulated session at the door of the adjustments: every satellite with one segment for each
// period that it is received in, the true ambiguities of the GLONASS references, and the rover
// where it truly is, so that the first pass has nothing to correct and its numbers can be looked
// at.
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "run/staged_session.h"

namespace vornel::test {

class AdjustedSession : public StagedSession {
  public:
    explicit AdjustedSession(const simulation::Scenario& scenario) : StagedSession(scenario) {
        for (const StaticPeriod& period : solver->periods) {
            for (const int sat : session.satellites) {
                AddSegmentOf(sat, period);
            }
        }
        SortAmbiguities(solver->ambiguityParas);
    }

    // Takes the segments of a satellite off the list.
    void Forget(int sat) {
        std::erase_if(solver->ambiguityParas,
                      [&](const AmbiguityPara& para) { return para.sat == sat; });
    }
    void ForgetSystem(int system) {
        std::erase_if(solver->ambiguityParas, [&](const AmbiguityPara& para) {
            return SplitSatNumber(para.sat) == system;
        });
    }
    // Gives a satellite one segment over these epochs.
    void Shorten(int sat, int first, int last) {
        for (AmbiguityPara& para : solver->ambiguityParas) {
            if (para.sat == sat) {
                para.firstEpoch = first;
                para.lastEpoch = last;
            }
        }
        SortAmbiguities(solver->ambiguityParas);
    }

    int ReferenceOf(int system) const { return solver->periods[0].ReferenceOf(system); }
    int Segments() const { return static_cast<int>(solver->ambiguityParas.size()); }

    // Runs a float solution. Its last pass, as it tells on the standard error stream; -1 when it
    // did not converge.
    int FloatPass(int mode) {
        ::testing::internal::CaptureStderr();
        const int done = solver->FloatSolveMulEq(mode);
        const std::string text = ::testing::internal::GetCapturedStderr();
        EXPECT_EQ(done, 1);
        const std::size_t at = text.find("step=");
        return at == std::string::npos ? -1 : std::stoi(text.substr(at + 5));
    }
    const SolveResultFloat& Float() const { return solver->resultManage.floatResults.back(); }
    const SolveResultFixed& Fixed() const { return solver->resultManage.fixedResults.back(); }

    // The record of a satellite in a solution; one without a satellite if there is none.
    static AmbRstInfo TrackOf(const std::vector<AmbRstInfo>& list, int sat) {
        for (const AmbRstInfo& track : list) {
            if (track.sat == sat) {
                return track;
            }
        }
        return {};
    }

    // Ambiguity of one signal against the reference of its system, cycles.
    double TrueAmbiguity(int sat, int signal, int epoch) const {
        const int reference = solver->PeriodOf(epoch)->ReferenceOf(SplitSatNumber(sat));
        return session.SingleDifferenceAmbiguity(sat, signal, epoch) -
               session.SingleDifferenceAmbiguity(reference, signal, epoch);
    }
    // Of the combination of a mode and block.
    double TrueAmbiguity(int mode, int block, int sat, int epoch) const {
        const double n1 = TrueAmbiguity(sat, 0, epoch), n2 = TrueAmbiguity(sat, 1, epoch);
        return mode == 2 || block == 1 ? n2 : mode == 4 ? n1 + n2 : mode == 5 ? n1 - n2 : n1;
    }

    // A record of the true integers for every segment, as the fixing hands it on.
    SolveResultFixed TrueFix(int mode) const {
        SolveResultFixed fix;
        fix.mode = mode;
        fix.ratio = 9.0;
        for (const AmbiguityPara& para : solver->ambiguityParas) {
            AmbRstInfo track;
            track.sat = para.sat;
            track.firstEpoch = para.firstEpoch;
            track.lastEpoch = para.lastEpoch;
            track.value1 = TrueAmbiguity(mode, 0, para.sat, para.firstEpoch);
            track.value2 = mode == 3 ? TrueAmbiguity(mode, 1, para.sat, para.firstEpoch) : 0.0;
            fix.ambiguities.push_back(track);
        }
        return fix;
    }
    // What model 6 asks for.
    void FileWideLane() { solver->resultManage.fixedResults.push_back(TrueFix(5)); }

  private:
    void AddSegmentOf(int sat, const StaticPeriod& period) {
        if (period.IsReference(sat) || period.ReferenceOf(SplitSatNumber(sat)) == -1) {
            return;
        }
        int first = -1, last = -1;
        for (int e = period.startIndex; e <= period.endIndex; ++e) {
            if (Epoch(e).IsActive(sat)) {
                first = first == -1 ? e : first;
                last = e;
            }
        }
        if (first == -1) {
            return;
        }
        AmbiguityPara para(sat, first, last);
        if (SplitSatNumber(sat) == kGlonass) {
            para.refAmbF1 = session.SingleDifferenceAmbiguity(period.refSatGlo, 0, first);
            para.refAmbF2 = session.SingleDifferenceAmbiguity(period.refSatGlo, 1, first);
        }
        solver->ambiguityParas.push_back(para);
    }
};

// Systems by code, 40 epochs at rest, received by every satellite all the time.
inline simulation::Scenario QuietScenario(int gps, int glonass, int bds, int galileo, int model) {
    simulation::Scenario scenario;
    const int counts[4] = {gps, glonass, bds, galileo};
    std::copy(counts, counts + 4, scenario.satellites);
    scenario.troposphere = simulation::Troposphere::kOfFloat;
    scenario.epochCount = 40;
    scenario.config.slvmode = model;
    return scenario;
}

// Both stations at one place, with phases that differ by the same amount up and down in epochs of
// one sky: every sum cancels to the last bit.
inline void MakeZeroBaseline(AdjustedSession& staged, double metres) {
    StaticSolve& solver = *staged.solver;
    solver.roverPosition = solver.basePosition;
    for (std::size_t e = 0; e < solver.epochs.size(); ++e) {
        SDObsData& epoch = solver.epochs[e];
        const SDObsData& even = solver.epochs[e - e % 2];
        for (const int sat : staged.session.satellites) {
            const int s = sat - 1;
            for (int k = 0; k < 3; ++k) {
                const double position = even.satPosB[s][k];
                epoch.satPosA[s][k] = epoch.satPosB[s][k] = position;
            }
            epoch.satClockA[s] = epoch.satClockB[s] = 0.0;
            const double elevation = even.azelB[s][1], azimuth = even.azelB[s][0];
            epoch.azelB[s][0] = azimuth;
            epoch.azelB[s][1] = elevation;
            const double sign = e % 2 == 0 ? 1.0 : -1.0;
            epoch.phase[s][0] = sign * metres * (sat % 3 - 1) / 0.19029367279836487;
        }
    }
}

}  // namespace vornel::test
