// Least squares of the vectors of a network, with the search for blunders.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "network/ellipse.h"
#include "network/records.h"

namespace vornel::network {

class LeastSquares;

// What holds the network: vectors alone leave its place open.
enum class Datum {
    kMinimal,  // one station of each part is held
    kFree,     // inner constraints: the corrections of each part's stations sum up to zero
    kKnown     // held to the known positions, fixed or by their covariances
};

enum class VarianceFactor {
    kKnown,     // 1: covariances are what they say; tests are chi-square tests
    kEstimated  // covariances are known up to a factor; tests are F tests
};

struct AdjustmentOptions {
    Datum datum = Datum::kMinimal;
    std::string heldStation;  // with kMinimal, in its part; empty: chosen
    AddedErrors added;
    VarianceFactor varianceFactor = VarianceFactor::kKnown;
    double globalLevel = 0.05;  // significance of the global test
    // Significance of the test of one vector: `blunderLevel`, or in large networks what takes a vector
    // from a sound network with probability `blunderFamilyLevel`, where that is less (Sidak 1967).
    double blunderLevel = 0.001;
    double blunderFamilyLevel = 0.05;
    double power = 0.8;        // with which the smallest detectable blunder is found
    double confidence = 0.95;  // of ellipses and intervals
    bool removeBlunders = true;
    double largestShareRemoved = 0.2;  // of the vectors; if more were to go, none goes
};

struct GlobalTest {
    double sumOfSquares = 0.0;    // of the residuals, weighted
    int dof = 0;                  // degrees of freedom; 0: nothing to test
    double varianceFactor = 1.0;  // their quotient
    double critical = 0.0;        // of the sum of squares
    double probability = 1.0;     // of a larger sum by chance
    bool isPassed = true;
};

// A blunder of three components, tested (Baarda 1968; Teunissen 2006, generalised to groups).
struct BlunderTest {
    // Components that other observations control: 3, seldom fewer, 0 for no control at all.
    int dof = 0;
    double statistic = 0.0;  // chi-square; with kEstimated `dof` times an F
    double probability = 1.0;
    bool isSuspect = false;  // less probable than the level
    // The blunder that explains the residuals best, and its standard deviations.
    Vector3 offsetNeu{};      // m
    Vector3 sigmaNeu{};       // m; infinite where not all is controlled
    double redundancy = 0.0;  // 0 to 3: sum of the three redundancy numbers
    // Smallest blunder that the test finds with AdjustmentOptions::power; infinite without control.
    Vector3 detectableNeu{};  // m, in north, in east, in up alone
    double detectable = 0.0;  // m, in the worst direction
};

enum class VectorUse {
    kUsed,
    kCheck,    // as it was asked for
    kRemoved,  // a blunder
    kRefused   // its record cannot be used
};

struct VectorResult {
    VectorUse use = VectorUse::kUsed;
    std::string reason;  // of a refusal
    bool isJoined =
        true;            // false: without it its ends lie in different parts, and it misses nothing
    Vector3 residual{};  // m, ECEF, observed - adjusted
    Vector3 residualNeu{};  // m, at the base
    Vector3 sigmaNeu{};     // m, of the residual
    // Of a vector in use, the test within the network. Of one without weight, the test of its misfit
    // to the network without it; that of a check has correlations with vectors of its own session
    // against it, which are not known.
    BlunderTest test;
};

struct StationResult {
    std::size_t component = 0;
    bool isDetermined = true;  // false: no vector in use leads here; as it was given
    bool isHeld = false;       // without correction and covariance
    std::size_t vectors = 0;   // in use
    // The vectors that lead here control each other. False for one that hangs on a single vector, or
    // on vectors that nothing checks: a blunder in them goes into its position unseen.
    bool isControlled = false;
    Vector3 position{};       // m, ECEF
    Vector3 correctionNeu{};  // m, from the given position: the known one, else the approximate one
    Matrix3 covariance{};     // m^2, ECEF
    Vector3 sigmaNeu{};       // m
    ErrorEllipse ellipse;
    double heightInterval = 0.0;  // m, half
};

// All vectors of a session that meet at a station, two or more: a wrong antenna height or centring is
// theirs together.
struct OccupationResult {
    std::size_t station = kNone;
    std::string session;
    std::vector<std::size_t> vectors;
    // Set apart: the vectors lead to a place of their own, and tell nothing of the station.
    bool isApart = false;
    BlunderTest test;  // while it is not set apart
    // How far the antenna stood from where its record has it, by the test or set apart as it came out.
    Vector3 offsetNeu{};  // m
    Vector3 sigmaNeu{};   // m
};

// With Datum::kKnown: whether a known position fits. Nothing is changed where it does not.
struct KnownResult {
    std::size_t station = kNone;
    bool isFixed = true;
    BlunderTest test;  // its offset: known position - what the network says without it
};

enum class PartDatum {
    kHeldStation,
    kInnerConstraints,
    kKnownPositions,
    kNoKnownPosition,        // asked for known positions, and it has none: one station is held
    kKnownPositionsTooWeak,  // their standard deviations are too large to hold it: one station is held
    kNoVector                // a station on its own
};

// A connected part of the network.
struct ComponentResult {
    std::vector<std::size_t> stations;
    std::size_t vectors = 0;  // in use
    PartDatum datum = PartDatum::kHeldStation;
    std::size_t heldStation = kNone;  // where one is held
    GlobalTest global;
    std::string note;  // one line where it is not held as asked for; otherwise empty
};

// What a round of the search was about: a vector, or an occupation.
struct Suspect {
    std::size_t vector = kNone;
    std::size_t station = kNone;  // of the occupation
    std::string session;
};

enum class RoundAction { kVectorRemoved, kOccupationSetApart, kVectorPutBack };

struct Round {
    RoundAction action = RoundAction::kVectorRemoved;
    Suspect suspect;
    BlunderTest test;
    GlobalTest global;  // before the action
    // Others whose removal instead would have left a sum of squares larger by less than 4 (a
    // likelihood of at least 1 to 7): this round cannot tell them from the one it chose.
    std::vector<Suspect> alternatives;
};

enum class SearchEnd {
    kNotAsked,
    kNothingLeft,  // no further suspect
    // More than the largest share would have had to go: the covariances, rather than single vectors,
    // do not fit. All vectors were put back; the rounds stand as they were.
    kGivenUp
};

// Covariances (m^2, ECEF) of the adjusted positions. Cheap to copy; safe to outlive the adjustment.
// Between stations of different parts of the network they are zero.
class PositionCovariance {
  public:
    PositionCovariance() = default;
    Matrix3 OfStation(std::size_t station) const { return Between(station, station); }
    // Rows: components of `a`; columns: of `b`.
    Matrix3 Between(std::size_t a, std::size_t b) const;
    Matrix3 OfDifference(std::size_t a, std::size_t b) const;  // of a - b
    // Of every station (rows) with this one, in one go: for whole matrices.
    std::vector<Matrix3> WithAll(std::size_t station) const;

  private:
    friend class Adjuster;
    struct Data;
    std::shared_ptr<const Data> data_;
};

struct Adjustment {
    Datum datum = Datum::kMinimal;
    std::vector<StationResult> stations;  // as Network::stations
    std::vector<VectorResult> vectors;    // as Network::vectors
    std::vector<OccupationResult> occupations;
    std::vector<KnownResult> known;
    std::vector<ComponentResult> components;
    GlobalTest all;     // of all vectors, with one station held and before anything was removed
    GlobalTest global;  // of what is handed out
    std::vector<Round> rounds;
    SearchEnd end = SearchEnd::kNotAsked;
    double levelOfEach = 0.0;    // significance of one vector's test
    double noncentrality = 0.0;  // of the smallest detectable blunder, with 3 components
    double scale = 1.0;  // by which covariances were multiplied: 1 with VarianceFactor::kKnown
    PositionCovariance covariance;
};

// The model: vector = position of rover - position of base + error. It is linear, so that approximate
// positions need only tell what is north, east and up.
//
// Blunders are looked for with one station of each part held, whatever the datum: known positions
// must not bend the search (Leick, GPS Satellite Surveying). Each round tests every vector, and every
// occupation with two and more vectors, for an error of three components. The one that explains most
// goes: the vector loses its weight, the occupation its tie to the station. A vector that later rounds
// clear is put back, once.
//
// Centring errors: an occupation of one vector adds them to that vector's covariance; one of several
// stands on a place of its own, tied to the station by the centring errors, so that what its vectors
// have in common is known.
//
// Throws NetworkError where the records contradict each other (MakeGraph), a known position has a
// standard deviation above 10 m, `heldStation` is not in the network, or the accuracies of vectors
// differ so much that positions are lost in rounding.
Adjustment Adjust(const Network& network, const AdjustmentOptions& options = {});

}  // namespace vornel::network
