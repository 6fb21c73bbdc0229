// The stages of the engine, each by itself, on a simulated hour of four systems.
#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <vector>

#include "ambiguity/lambda.h"
#include "exports/process.h"
#include "observation/between_station_model.h"
#include "orbit/broadcast_ephemeris.h"
#include "orbit/glonass_orbit.h"
#include "simulation/known_scenarios.h"
#include "simulation/session_run.h"

namespace {

using namespace vornel;

const simulation::Session& Hour() {
    static const simulation::Session session =
        simulation::Simulate(simulation::FourSystems(120, 30.0, 3));
    return session;
}

// The process after hand-over.
CTRLSolve& HandedOver() {
    static const bool once = [] {
        simulation::HandOver(Hour());
        return true;
    }();
    benchmark::DoNotOptimize(once);
    return *CurrentProcess().control;
}

// A solver whose stages up to `stages` have run: 1 periods, 2 references, 3 triple difference, 4 slips, 5 float,
// 6 fixing.
std::unique_ptr<StaticSolve> SolverAfter(int stages, SolveResultFixed* fix = nullptr) {
    HandedOver();
    std::unique_ptr<StaticSolve> solver = simulation::SolverOf(Hour());
    solver->SelectSolveMode();
    solver->CutPeriods();
    solver->SelectRefSats();
    if (stages >= 3) {
        solver->SolveTripleDifference();
    }
    if (stages >= 4) {
        solver->RepairGlonassSlips();
        solver->RepairDoubleDifferenceSlips();
        solver->AlignGlonassReference();
    }
    if (stages >= 5) {
        solver->FloatSolveMulEq(3);
    }
    if (stages >= 6) {
        solver->FixAmbiguity(0, 3, *fix);
    }
    return solver;
}

void InputOfAnEpoch(benchmark::State& state) {
    CTRLSolve& control = HandedOver();
    const simulation::SessionEpoch& epoch = Hour().epochs[60];
    const auto side = [](const simulation::ReceiverRecord& r) {
        return CTRLSolve::ReceiverEpoch{r.week,         r.seconds,      r.satellites.data(),
                                        r.code1.data(), r.code2.data(), r.phase1.data(),
                                        r.phase2.data()};
    };
    for (auto _ : state) {
        control.AddEpoch(side(epoch.rover), side(epoch.base));
        state.PauseTiming();
        control.epochs.pop_back();
        state.ResumeTiming();
    }
}
BENCHMARK(InputOfAnEpoch);

template <bool (*Position)(Epoch, int, XYZPosition&, double&)>
void KeplerOrbit(benchmark::State& state) {
    HandedOver();
    const Epoch time = HandedOver().epochs[60].epoch;
    XYZPosition position;
    double clock = 0.0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(Position(time, 7, position, clock));
    }
}
BENCHMARK(KeplerOrbit<GetGpsPosition>)->Name("OrbitGps");
BENCHMARK(KeplerOrbit<GetBdsPosition>)->Name("OrbitBds");
BENCHMARK(KeplerOrbit<GetGalPosition>)->Name("OrbitGalileo");

void OrbitGlonass(benchmark::State& state) {
    const Epoch time = HandedOver().epochs[60].epoch;
    XYZPosition position;
    double clock = 0.0;
    int channel = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(GetGlonassPosition(time, 7, position, clock, channel));
    }
}
BENCHMARK(OrbitGlonass);

void ModelOfASatellite(benchmark::State& state) {
    SDObsData record = HandedOver().epochs[60];
    const int sat = record.satListDual.front();
    double unit[3], value = 0.0;
    for (auto _ : state) {
        record.Model(1.0, sat, Hour().rover, Hour().base, unit, value);
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(ModelOfASatellite);

// Runs one stage on a solver that stands before it.
template <class Stage>
void RunStage(benchmark::State& state, int before, Stage stage) {
    for (auto _ : state) {
        state.PauseTiming();
        SolveResultFixed fix;
        std::unique_ptr<StaticSolve> solver = SolverAfter(before, &fix);
        state.ResumeTiming();
        stage(*solver, fix);
        state.PauseTiming();
        solver.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(Hour().epochs.size()));
}

void TripleDifference(benchmark::State& state) {
    RunStage(state, 2, [](StaticSolve& s, SolveResultFixed&) { s.SolveTripleDifference(); });
}
BENCHMARK(TripleDifference);

void SlipRepair(benchmark::State& state) {
    RunStage(state, 3, [](StaticSolve& s, SolveResultFixed&) {
        s.RepairGlonassSlips();
        s.RepairDoubleDifferenceSlips();
        s.AlignGlonassReference();
    });
}
BENCHMARK(SlipRepair);

void FloatSolution(benchmark::State& state) {
    RunStage(state, 4, [](StaticSolve& s, SolveResultFixed&) { s.FloatSolveMulEq(3); });
}
BENCHMARK(FloatSolution);

void Fixing(benchmark::State& state) {
    RunStage(state, 5, [](StaticSolve& s, SolveResultFixed& fix) { s.FixAmbiguity(0, 3, fix); });
}
BENCHMARK(Fixing);

void FixedSolution(benchmark::State& state) {
    RunStage(state, 6, [](StaticSolve& s, SolveResultFixed& fix) { s.FixedSolveMulEq(3, fix); });
}
BENCHMARK(FixedSolution);

// Ambiguities with the correlation of a short session: a common part far above their own.
void Lambda(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    std::vector<double> a, Q;
    for (int i = 0; i < n; ++i) {
        a.push_back(1000.0 * std::sin(7.0 * i) + 0.05 * std::cos(3.0 * i));
        for (int j = 0; j < n; ++j) {
            Q.push_back((i == j ? 0.002 : 0.0) + 0.3 * std::cos(0.4 * i) * std::cos(0.4 * j));
        }
    }
    std::vector<double> F(static_cast<std::size_t>(2 * n)), s(2);
    for (auto _ : state) {
        benchmark::DoNotOptimize(LambdaSearch(n, 2, a.data(), Q.data(), F.data(), s.data()));
    }
}
BENCHMARK(Lambda)->Arg(5)->Arg(12)->Arg(30);

}  // namespace

BENCHMARK_MAIN();
