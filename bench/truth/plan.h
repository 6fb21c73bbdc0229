// What is measured: data sets with known vectors, the ways of cutting sessions out of them, kinds of
// simulated sessions, and the engine runs made of each session. Read from a JSON file; README.md describes its fields.
#pragma once

#include <array>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "session/geodesy.h"
#include "simulator/scenarios.h"

namespace vornel::truth {

using session::Vector3;

// The known answer of a data set.
struct KnownVector {
    Vector3 vector{};              // m, ECEF, marker of the base to marker of the rover
    std::optional<Vector3> base;   // m, ECEF, marker; absent where only the vector is known
    double sigmaHorizontal = 0.0;  // m, one standard deviation of a horizontal component
    double sigmaUp = 0.0;          // m
};

// One data set: two stations whose files are read once.
struct DataSet {
    std::string name;
    std::vector<std::string> base;    // paths below the data folder
    std::vector<std::string> rover;   //
    std::vector<std::string> others;  // navigation, antennas
    std::vector<std::string> orbits;  // SP3 files
    KnownVector known;
};

enum class OrbitChoice {
    kBroadcast,  // navigation files alone
    kPrecise,    // navigation and SP3 files
    kSp3Alone    // SP3 files, no navigation file, so no ionosphere coefficients either
};

// "broadcast", "precise", "sp3". Throws PlanError on any other name.
OrbitChoice OrbitChoiceOf(const std::string& name);
const char* NameOf(OrbitChoice choice);

// A family of sessions: every combination of the lists.
struct CutRule {
    std::vector<std::string> sets;  // empty: all
    std::vector<double> durations;  // s
    double step = 0.0;              // s between starts; 0: the duration, so that none overlap
    std::vector<std::string> systems = {"GREC"};  // letters of the systems the receivers have
    std::vector<int> frequencies = {2};           // 1: the second frequency is taken away
    std::vector<OrbitChoice> orbits = {OrbitChoice::kBroadcast};
    std::vector<bool> swapped = {false};        // base and rover exchanged
    std::vector<double> headerOffsets = {0.0};  // m: header positions moved in a random direction
};

// A kind of simulated session. Each is drawn by chance within these bounds.
struct Kind {
    rough::Kind bounds;
    OrbitChoice orbits = OrbitChoice::kBroadcast;
};

// One engine run on a session: what differs from the run that the command makes. Fields that are
// absent stay as they are.
struct RunSpec {
    std::string label;
    // m: sessions whose vector is shorter or longer do without this run.
    double leastLength = 0.0;
    double mostLength = 1e9;
    // Read by the engine when the run starts.
    std::optional<int> model;                     // solve mode, 0 to 6
    std::optional<double> ratioThreshold;         //
    std::optional<double> periodLength;           // s
    std::optional<double> outlierFactor;          //
    std::optional<double> slipTestCap;            // cycles
    std::optional<double> phaseStd;               // cycles
    std::optional<int> minEpochs;                 //
    std::optional<double> maxFixBaseline;         // m
    std::string systems;                          // letters that are left; empty: all
    std::string without;                          // letters that are taken out
    std::vector<std::pair<double, double>> keep;  // shares of the session, 0 to 1; empty: all of it
    int everyNth = 0;  // of the satellites by number: those with number % everyNth == nthRest go
    int nthRest = 0;   //
    // What the command answers: its own choice of runs, with their checks. "checked" or "unchecked";
    // empty: the plain run.
    std::string answer;
    // Read when an epoch is handed over, or before: these make the epochs be handed over again.
    std::optional<double> mask;      // degrees
    std::optional<int> tropoModel;   //
    std::optional<double> interval;  // s, a multiple of the session's
    std::string ionosphere;          // "none", "zeros"; empty: as the files tell
    std::optional<bool> antennas;    // false: no phase centre offsets
    std::string basePosition;        // "truth", "code"; empty: as the command chooses
    double roverOffset = 0.0;        // m: rover's approximate position moved, random direction

    // Equal for runs that can share one engine and its epochs.
    std::string FeedKey() const;
};

struct Plan {
    std::vector<DataSet> sets;
    std::vector<CutRule> cuts;
    std::vector<Kind> kinds;
    std::vector<RunSpec> runs;
};

// A plan that makes no sense; the text names the field.
class PlanError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Throws PlanError: not JSON, a field that is missing, unknown or of another type.
Plan ParsePlan(const std::string& text);

// Reads a file whole. Throws PlanError.
std::string ReadText(const std::string& path);

}  // namespace vornel::truth
