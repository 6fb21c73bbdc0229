#include "solve/contradictions.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <string>

#include "session/text.h"

namespace vornel::solve {
namespace {

using session::Format;

// An antenna stands on a tripod, a pillar or a mast: reference points higher above the marker than
// this, or below it, are slips of the pen.
constexpr double kTallest = 3.0, kLowest = -0.5;  // m
constexpr double kMostOffset = 1.0;               // m, of a phase centre from the reference point
// Below this the engine's fixed solution has no troposphere.
constexpr double kLowStation = -100.0;  // m, ellipsoidal height
constexpr double kMostLost = 0.2;       // of the common epochs

// Of the answer. The fixed vector lies within these of the solutions before it, on all but one in
// two hundred of the sessions with known coordinates.
constexpr double kFromTripleDifference = 4.0, kFromTripleDifferencePerLength = 20e-6;  // m, m/m
constexpr double kFromFloat = 1.5, kFromFloatPerLength = 5e-6;
constexpr double kMostVarianceFactor = 100.0;
constexpr double kMostRejected = 0.3;  // of the rows
constexpr double kMostMeanSigmas = 6.0;

// Files of equal content, or epochs of equal values: two receivers never measure the same phase to
// the last digit, not to speak of every satellite's.
bool SameObservations(const session::Session& session) {
    std::set<std::string> base;
    for (const session::InputFile& file : session.inputs.files) {
        if (file.role == session::FileRole::kBase && !file.sha256.empty()) {
            base.insert(file.sha256);
        }
    }
    for (const session::InputFile& file : session.inputs.files) {
        if (file.role == session::FileRole::kRover && base.contains(file.sha256)) {
            return true;
        }
    }
    const io::Observations &one = session.inputs.base, &other = session.inputs.rover;
    constexpr std::size_t kEnough = 20;
    const std::size_t values = std::min({one.values.size(), other.values.size(), std::size_t{500}});
    std::size_t finite = 0;
    for (std::size_t i = 0; i < values; ++i) {
        if (std::isnan(one.values[i]) && std::isnan(other.values[i])) {
            continue;
        }
        if (one.values[i] != other.values[i]) {
            return false;
        }
        ++finite;
    }
    return finite >= kEnough;
}

void AddStation(const session::Station& station, const char* role, bool antennas,
                std::vector<Doubt>& doubts) {
    const std::string who = std::string(role) + " (" + station.name + ")";
    if (station.antennaHeight > kTallest || station.antennaHeight < kLowest) {
        doubts.push_back({who + ": no tripod gives an antenna height of " +
                              Format("%.4f", station.antennaHeight) + " m",
                          std::string("check it, or give --") + role + "-height"});
    }
    const double offset = std::max(session::Length(station.antenna.offset1),
                                   session::Length(station.antenna.offset2));
    if (antennas && offset > kMostOffset) {
        doubts.push_back({who + ": the calibration has a phase centre " + Format("%.3f", offset) +
                              " m off the reference point",
                          "check the ANTEX file"});
    }
    const double height = session::ToGeodetic(station.position).height;
    if (height < kLowStation) {
        doubts.push_back({who + " lies " + Format("%.0f", -height) +
                              " m below the ellipsoid, where the fixed solution has no troposphere",
                          "the float solution has one"});
    }
}

double Distance(const engine::Solution& one, const engine::Solution& other) {
    return session::Length(session::Minus(one.vector, other.vector));
}

}  // namespace

std::vector<Doubt> SessionContradictions(const session::Session& session, const FeedSummary& fed) {
    std::vector<Doubt> doubts;
    if (SameObservations(session)) {
        doubts.push_back({"base and rover are the same observations", "give two receivers"});
    }
    AddStation(session.base, "base", session.antennasApplied, doubts);
    AddStation(session.rover, "rover", session.antennasApplied, doubts);
    const double lost = static_cast<double>(session.lostAtTableEnds + session.pairing.outOfOrder +
                                            session.pairing.acrossWeeks);
    const double all = lost + static_cast<double>(fed.epochs);
    if (lost > kMostLost * all) {
        doubts.push_back(
            {Format("%.0f", 100.0 * lost / all) + " % of the common epochs could not be used",
             "see what was left out"});
    }
    return doubts;
}

std::vector<Doubt> AnswerContradictions(const SessionFacts& facts, const RunOutcome& outcome,
                                        const ResidualStatistics& residuals) {
    std::vector<Doubt> doubts;
    if (outcome.acceptance != Acceptance::kFixed) {
        return doubts;
    }
    const engine::Results& results = outcome.results;
    const engine::Solution& fixed = results.fixeds.back();
    const double fromTriple = Distance(fixed, results.tripleDifference);
    if (results.tripleDifference.mode != 0 &&
        fromTriple > kFromTripleDifference + kFromTripleDifferencePerLength * facts.length) {
        doubts.push_back({"the fixed vector lies " + Format("%.1f", fromTriple) +
                              " m from the triple difference",
                          "observe longer"});
    }
    const auto ofMode = std::find_if(results.floats.rbegin(), results.floats.rend(),
                                     [&](const auto& s) { return s.mode == fixed.mode; });
    if (ofMode != results.floats.rend()) {
        const double fromFloat = Distance(fixed, *ofMode);
        if (fromFloat > kFromFloat + kFromFloatPerLength * facts.length) {
            doubts.push_back(
                {"the fixed vector lies " + Format("%.2f", fromFloat) + " m from the float one",
                 "observe longer"});
        }
    }
    if (fixed.varianceFactor > kMostVarianceFactor) {
        doubts.push_back({"the variance factor is " + Format("%.0f", fixed.varianceFactor) +
                              ": the residuals are far larger than the phases allow",
                          ""});
    }
    if (residuals.rejectedShare > kMostRejected) {
        doubts.push_back({Format("%.0f", 100.0 * residuals.rejectedShare) +
                              " % of the double differences were thrown out as outliers",
                          ""});
    }
    if (residuals.worstMeanSigmas > kMostMeanSigmas) {
        doubts.push_back({"the residuals of " + residuals.worstSatellite + " have a mean of " +
                              Format("%.0f", residuals.worstMean) + " mm, " +
                              Format("%.0f", residuals.worstMeanSigmas) + " standard deviations",
                          "leave it out with --exclude " + residuals.worstSatellite});
    }
    return doubts;
}

}  // namespace vornel::solve
