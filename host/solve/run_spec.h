// One run of the engine on a session, as what differs from the configuration that was prepared.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "engine/satellites.h"

namespace vornel::solve {

struct RunSpec {
    std::string name = "main";  // "main", "first two thirds", ...: unique within a solve
    std::string why;            // a clause for people: what the run is for

    // Read by the engine when the run starts. Absent: as prepared.
    std::optional<int> model;                          // solve mode, 1 to 6
    std::optional<double> ratioThreshold;              //
    std::optional<double> periodLength;                // s
    std::array<bool, engine::kSystemCount> without{};  // systems left out, by IndexOf
    // The part of the epochs that is kept, as shares of their number: [from, to).
    double from = 0.0;
    double to = 1.0;

    // Read while epochs are handed over: another one hands them over again. Radians.
    std::optional<double> elevationMask;

    // The integers of this run are not to be taken: its answer is at most a float one.
    bool floatOnly = false;

    bool WholeTime() const { return from <= 0.0 && to >= 1.0; }
};

}  // namespace vornel::solve
