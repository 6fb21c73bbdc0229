#include "solve/answer_bytes.h"

#include <cereal/archives/binary.hpp>
#include <cereal/types/array.hpp>
#include <cereal/types/map.hpp>
#include <cereal/types/optional.hpp>
#include <cereal/types/set.hpp>
#include <cereal/types/string.hpp>
#include <cereal/types/vector.hpp>
#include <sstream>

// Each function names every field of its structure; the tests compare a structure with all fields
// set, and the sizes, so that a new field is not forgotten here.

namespace vornel::io {

template <class Archive>
void serialize(Archive& a, GpsTime& x) {
    a(x.week, x.seconds);
}

}  // namespace vornel::io

namespace vornel::session {

template <class Archive>
void serialize(Archive& a, ValueLosses& x) {
    a(x.outOfBounds, x.noFirstCode);
}

}  // namespace vornel::session

namespace vornel::engine {

template <class Archive>
void serialize(Archive& a, Satellite& x) {
    a(x.system, x.prn);
}

template <class Archive>
void serialize(Archive& a, Ambiguity& x) {
    a(x.system, x.prn, x.firstEpoch, x.lastEpoch, x.firstWeek, x.lastWeek, x.firstSeconds,
      x.lastSeconds, x.rms1, x.rms2, x.rows1, x.rows2, x.rejected1, x.rejected2, x.value1, x.value2,
      x.variance);
}

template <class Archive>
void serialize(Archive& a, ResidualPoint& x) {
    a(x.week, x.seconds, x.millimetres);
}

template <class Archive>
void serialize(Archive& a, ResidualSeries& x) {
    a(x.system, x.prn, x.kind, x.points);
}

template <class Archive>
void serialize(Archive& a, Solution& x) {
    a(x.mode, x.vector, x.length, x.horizontalDistance, x.heightDifference, x.dof, x.varianceFactor,
      x.covarianceXyz, x.covarianceNeu, x.sigma3, x.sigmaLength, x.relativeAccuracy, x.rms, x.ratio,
      x.ambiguities, x.residuals);
}

template <class Archive>
void serialize(Archive& a, Results& x) {
    a(x.status, x.solveModel, x.tripleDifference, x.floats, x.fixeds);
}

}  // namespace vornel::engine

namespace vornel::solve {

template <class Archive>
void serialize(Archive& a, SystemFeed& x) {
    a(x.epochs, x.satellites);
}

template <class Archive>
void serialize(Archive& a, FeedSummary& x) {
    a(x.epochs, x.times, x.systems, x.common, x.noSlot, x.roverLosses, x.baseLosses);
}

template <class Archive>
void serialize(Archive& a, RunOutcome& x) {
    a(x.results, x.completed, x.chain, x.acceptance, x.seconds, x.warnings);
}

template <class Archive>
void serialize(Archive& a, RunSpec& x) {
    a(x.name, x.why, x.model, x.ratioThreshold, x.periodLength, x.without, x.from, x.to,
      x.elevationMask, x.floatOnly);
}

template <class Archive>
void serialize(Archive& a, RunRecord& x) {
    a(x.spec, x.status, x.solveModel, x.completed, x.acceptance, x.ratio, x.integers, x.seconds,
      x.relation, x.horizontal, x.up);
}

template <class Archive>
void serialize(Archive& a, Doubt& x) {
    a(x.text, x.advice);
}

template <class Archive>
void serialize(Archive& a, ResidualStatistics& x) {
    a(x.residuals, x.rms, x.nextEpoch, x.atLag, x.correlationTime, x.rmsByElevation, x.worstMean,
      x.worstMeanSigmas, x.worstSatellite, x.rejectedShare);
}

template <class Archive>
void serialize(Archive& a, CheckedOutcome& x) {
    a(x.fed, x.outcome, x.spec, x.kind, x.grade, x.doubts, x.tried, x.checks, x.residuals);
}

std::string ToBytes(const CheckedOutcome& answer) {
    std::ostringstream stream;
    {
        cereal::BinaryOutputArchive archive(stream);
        archive(answer);
    }
    return std::move(stream).str();
}

CheckedOutcome FromBytes(const std::string& bytes) {
    std::istringstream stream(bytes);
    cereal::BinaryInputArchive archive(stream);
    CheckedOutcome answer;
    archive(answer);
    return answer;
}

}  // namespace vornel::solve
