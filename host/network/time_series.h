// Positions of one station over several days: how well they repeat, and what does not.
#pragma once

#include <vector>

#include "network/adjustment.h"
#include "network/records.h"

namespace vornel::network {

struct EpochPosition {
    io::GpsTime epoch;
    Vector3 position{};    // m, ECEF
    Matrix3 covariance{};  // m^2, ECEF
};

enum class Motion {
    kStill,  // a mean position
    kLine    // a position and a velocity
};

struct SeriesOptions {
    Motion motion = Motion::kStill;
    // Estimated where the series leaves at least six degrees of freedom; known otherwise.
    VarianceFactor varianceFactor = VarianceFactor::kEstimated;
    // Probability that anything is pointed out in a series of independent days where nothing is.
    double level = 0.01;
    std::size_t largestFindings = 50;
};

struct SeriesPoint {
    std::size_t given = 0;  // index into the positions that were handed in
    io::GpsTime epoch;
    Vector3 neu{};       // m, from SeriesReport::position
    Vector3 sigmaNeu{};  // m, as handed in
    // m, from what the other findings, mean and velocity say; of an outlier too.
    Vector3 residualNeu{};
    bool isOutlier = false;
};

struct SeriesFinding {
    enum class Kind {
        kOutlier,  // of one epoch
        kOffset    // from one epoch on
    };
    Kind kind = Kind::kOutlier;
    std::size_t point = 0;  // the outlier, or the first point after the offset
    // An outlier at the first or last epoch: an offset there would look the same.
    bool isAtEnd = false;
    Vector3 sizeNeu{};   // m
    Vector3 sigmaNeu{};  // m
    // Of three components, in the presence of all other findings; chi-square, or with an estimated
    // variance factor three times an F with 3 and SeriesReport::dof degrees of freedom.
    double statistic = 0.0;
    double probability = 1.0;  // of such a one at any epoch by chance (Sidak 1967)
};

struct SeriesReport {
    std::vector<SeriesPoint> points;  // in time order
    io::GpsTime start;                // epoch of `position`
    Vector3 position{};               // m, ECEF, adjusted, at the start
    Matrix3 covariance{};             // m^2
    Motion motion = Motion::kStill;   // none where the epochs do not tell a velocity
    Vector3 velocityNeu{};            // m a year (365.25 days)
    Vector3 sigmaVelocityNeu{};
    // Standard deviation (m) of one epoch round mean or line and offsets, without outliers; 0 where
    // there are no more epochs than unknowns.
    Vector3 repeatabilityNeu{};
    VarianceFactor varianceFactor = VarianceFactor::kKnown;  // which one the tests took
    double sumOfSquares = 0.0;                               // weighted, of the residuals
    int dof = 0;                                             // of it
    double scale = 1.0;                                      // by which covariances were multiplied
    int candidates = 0;  // epochs at which outliers and offsets were looked for, in all
    std::vector<SeriesFinding> findings;  // in time order
};

// Looks for outliers and offsets one after the other. Each time the one that explains most of the
// residuals enters, as three more unknowns, if it is significant; places of offsets found before are
// then looked for again, and those that later ones make insignificant leave (detection,
// identification and adaptation: Teunissen 1990). An offset has at least two epochs on either side.
// Epochs count as independent of each other. Noise of years is not, and shows more offsets than there
// are.
// Throws NetworkError for a position or covariance that cannot be used.
SeriesReport AnalyseSeries(const std::vector<EpochPosition>& positions,
                           const SeriesOptions& options = {});

}  // namespace vornel::network
