// A stand-in for the engine that writes down what it is called with.
#pragma once

#include <string>
#include <vector>

#include "engine/engine.h"

namespace vornel::test {

struct Call {
    std::string name;            // of the function, as VornelBlCore.h has it
    std::vector<double> values;  // all arguments in order; arrays are laid out in place
    std::string text;            // of a string argument
};

// The calls since the last Clear. There is one list, as the functions have no object to go by.
std::vector<Call>& Calls();

// What StartProcess stores and answers.
struct RecordedRun {
    int status = 10;
    int answer = 1;
};
RecordedRun& NextRun();

// Clears the calls and answers the table of recording functions. Queries answer 0 and write nothing.
engine::Api RecordingEngine();

}  // namespace vornel::test
