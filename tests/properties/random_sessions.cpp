#include "properties/random_sessions.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <stdexcept>

#include "VornelBlCore.h"
#include "exports/process.h"
#include "simulation/all_answers.h"
#include "simulation/noise.h"

namespace vornel::properties {

namespace {

using simulation::Antenna;
using simulation::Receiver;
using simulation::ReceiverClock;

Antenna DrawAntenna(Draw& draw) {
    return {draw.Real(0.0, 0.15), draw.Real(0.0, 0.15), draw.Real(0.0, 2.0)};
}

ReceiverClock DrawClock(Draw& draw) {
    return {draw.Real(-9e-4, 9e-4), draw.Real(-4e-9, 4e-9)};
}

// At least one system that stands alone; in model 6 no Galileo, whose equations there do not lead
// to whole numbers.
void DrawSatellites(Scenario& scenario, int model, Draw& draw) {
    const int alone = model == 6 ? (draw.Chance(0.5) ? 0 : 2) : draw.Whole(0, 3);
    const bool all = draw.Chance(0.4);
    for (int i = 0; i < 4; ++i) {
        const bool taken = i == alone || draw.Chance(0.5);
        const int count = i == alone ? draw.Whole(7, 9) : draw.Whole(5, 8);
        scenario.satellites[i] = !taken || (model == 6 && i == 3) ? 0 : all ? -1 : count;
    }
}

// What the rover receives in the middle of the session.
std::vector<int> SatellitesOf(Scenario scenario) {
    scenario.interval *= scenario.epochCount / 2;
    scenario.epochCount = 2;
    const auto record = simulation::Simulate(scenario).epochs.back().rover.satellites;
    return {record.begin(), std::find(record.begin(), record.end(), 0)};
}

}  // namespace

double Draw::Real(double low, double high) {
    return low + (high - low) * simulation::Uniform({seed_, 77, count_++});
}

double Draw::Logarithmic(double low, double high) {
    return std::exp(Real(std::log(low), std::log(high)));
}

int Draw::Whole(int low, int high) {
    if (high < low) {
        throw std::invalid_argument("nothing to draw from");
    }
    const auto count = static_cast<std::uint64_t>(high - low + 1);
    return low + static_cast<int>(simulation::HashOf({seed_, 78, count_++}) % count);
}

Scenario RandomScenario(int model, std::uint64_t seed) {
    Draw draw(seed);
    Scenario scenario;
    scenario.seed = seed;
    scenario.config.slvmode = model;
    scenario.week = draw.Whole(2000, 2300);
    scenario.startSeconds = draw.Whole(0, 604799);
    const int intervals[3] = {15, 20, 30};
    scenario.interval = intervals[draw.Whole(0, 2)];
    scenario.epochCount = static_cast<int>(draw.Real(1200.0, 2000.0) / scenario.interval);
    scenario.base = {reference::Radians(draw.Real(-60.0, 60.0)),
                     reference::Radians(draw.Real(-180.0, 180.0)), draw.Real(0.0, 1200.0)};
    const double length = draw.Logarithmic(5.0, 8000.0);
    const double heading = draw.Real(0.0, 6.28);
    scenario.baseline[0] = length * std::cos(heading);
    scenario.baseline[1] = length * std::sin(heading);
    scenario.baseline[2] = length * draw.Real(-0.005, 0.005);
    for (double& error : scenario.roverError) {
        error = draw.Real(-4.0, 4.0);
    }
    scenario.roverAntenna = DrawAntenna(draw);
    scenario.baseAntenna = DrawAntenna(draw);
    scenario.roverClock = DrawClock(draw);
    scenario.baseClock = DrawClock(draw);
    DrawSatellites(scenario, model, draw);
    scenario.phaseNoise = draw.Real(0.0005, 0.002);
    scenario.codeNoise = draw.Real(0.1, 0.5);
    scenario.glonassBias = draw.Real(-0.001, 0.001);
    return scenario;
}

Scenario TroubledScenario(int model, std::uint64_t seed) {
    Scenario scenario = RandomScenario(model, seed);
    Draw draw(seed + 500);
    const std::vector<int> satellites = SatellitesOf(scenario);
    for (int i = 0; i < 6; ++i) {
        const int sat = draw.OneOf(satellites);
        const Receiver receiver = draw.Chance(0.5) ? simulation::kRover : simulation::kBase;
        const int epoch = draw.Whole(1, scenario.epochCount - 8);
        if (draw.Chance(0.6)) {
            // A half cycle now and then is no slip that could be repaired.
            scenario.slips.push_back({receiver,
                                      sat,
                                      epoch,
                                      {static_cast<double>(draw.Whole(-9, 9)),
                                       draw.Whole(-30, 30) + (draw.Chance(0.3) ? 0.5 : 0.0)}});
        } else {
            scenario.gaps.push_back(
                {receiver, sat, epoch, epoch + draw.Whole(0, 20), draw.Whole(-1, 1)});
        }
    }
    return scenario;
}

const SolveResult& FinalSolution() {
    const ResultManage& results = CurrentProcess().solver->resultManage;
    return results.fixedResults.empty() ? LastFloatSolution() : results.fixedResults.back();
}

const SolveResult& LastFloatSolution() {
    const ResultManage& results = CurrentProcess().solver->resultManage;
    if (results.floatResults.empty()) {
        throw std::runtime_error("the run has no float solution");
    }
    return results.floatResults.back();
}

double Difference(const SolveResult& a, const SolveResult& b) {
    return std::hypot(a.dX - b.dX, a.dY - b.dY, a.dZ - b.dZ);
}

std::string FirstDifference(const std::string& a, const std::string& b) {
    std::istringstream linesA(a), linesB(b);
    std::string lineA, lineB;
    for (int number = 1;; ++number) {
        lineA = lineB = "(the end)";
        const bool moreA = static_cast<bool>(std::getline(linesA, lineA));
        const bool moreB = static_cast<bool>(std::getline(linesB, lineB));
        if (!moreA && !moreB) {
            return "";
        }
        if (lineA != lineB) {
            return "line " + std::to_string(number) + ":\n" + lineA + "\n" + lineB;
        }
    }
}

std::string AnswersOf(const Session& session) {
    return simulation::AllAnswers(simulation::RunSession(session));
}

std::string AnswersOfRun() {
    int status = -1;
    const int answer = StartProcess(&status);
    return answer == 1 ? simulation::AllAnswers(status) : "an exception left the run";
}

}  // namespace vornel::properties
