// One session with a known answer, ready to be solved, and the cutting of such sessions out of long
// data sets.
#pragma once

#include <string>
#include <vector>

#include "plan.h"
#include "session/inputs.h"
#include "session/settings.h"

namespace vornel::truth {

// A session and what is known about it beforehand. A simulator fills the same.
struct Scene {
    std::string source;     // "real" or "simulated"
    std::string set;        // data set, or kind of simulated session
    std::string cut;        // names the session within everything that is measured
    std::string block;      // sessions of one block and duration share their observations
    double duration = 0.0;  // s
    std::string systems;    // letters of the systems the receivers have
    int frequencies = 2;    //
    OrbitChoice orbits = OrbitChoice::kBroadcast;
    bool swapped = false;        // base and rover exchanged
    double headerOffset = 0.0;   // m
    session::Inputs inputs;      // observations of the session alone
    session::Settings settings;  // as the user gives them
    KnownVector known;           // of this session: exchanged with the stations
};

// A data set as read.
struct LoadedSet {
    DataSet description;
    session::Inputs inputs;  // the SP3 files too
    io::GpsTime first;       // first epoch that both stations may share
    io::GpsTime last;
    double interval = 0.0;  // s, of the base
};

// Reads the files of a set. Throws io::InputError and session::SessionFault.
LoadedSet Load(const DataSet& set, const std::string& dataFolder);

// One session to be cut.
struct Cut {
    std::size_t set = 0;    // index among the loaded sets
    double start = 0.0;     // s after the set's first epoch
    double duration = 0.0;  // s
    std::string systems;
    int frequencies = 2;
    OrbitChoice orbits = OrbitChoice::kBroadcast;
    bool swapped = false;
    double headerOffset = 0.0;  // m
};

// All sessions that the rules ask for and the sets hold, in the order of rules, sets, durations and
// starts; one that an earlier rule gave is not given again. A session may miss 2 % of its duration
// at the end of the set. Systems that a set does not have are left out, and rules that then give the
// same session give it once; "precise" and "sp3" are given for sets with SP3 files only.
std::vector<Cut> AllCuts(const std::vector<CutRule>& rules, const std::vector<LoadedSet>& sets);

Scene MakeScene(const LoadedSet& set, const Cut& cut);

// ---- the parts of it ----------------------------------------------------------------------------

// The epochs from `start` on, before `end`, with the satellites of the systems whose letters are
// given. With one frequency, the signals of all bands but the first (GPS, GLONASS, Galileo 1, BeiDou
// 2) lose their meaning. Receivers' tags may be 0.1 s early.
io::Observations CutObservations(const io::Observations& whole, const io::GpsTime& start,
                                 const io::GpsTime& end, const std::string& systems,
                                 int frequencies);

// Records that can serve between two times; ionosphere coefficients all stay.
io::Navigation CutNavigation(const io::Navigation& whole, const io::GpsTime& start,
                             const io::GpsTime& end);

// Epochs of the table from three hours before `start` to three hours after `end`.
io::PreciseOrbits CutOrbits(const io::PreciseOrbits& whole, const io::GpsTime& start,
                            const io::GpsTime& end);

// A unit vector in a direction drawn from a text: the same text, the same direction.
Vector3 DirectionOf(const std::string& text);

// Letters of the systems that both stations observed, in the order GREC.
std::string SystemsOf(const session::Inputs& inputs);

}  // namespace vornel::truth
