#include "network/time_series.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "network/dense_reference.h"
#include "network/made_up_network.h"
#include "network/statistics.h"

namespace vornel::network {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Kind = SeriesFinding::Kind;

// Daily positions of one station with errors drawn from their covariances.
class MadeUpSeries {
  public:
    MadeUpSeries(unsigned seed, std::size_t days) : made_(seed) {
        made_.AddStation("S", 0.0, 0.0);
        for (std::size_t day = 0; day < days; ++day) {
            EpochPosition position;
            position.epoch = io::Shifted({2100, 43200.0}, 86400.0 * static_cast<double>(day));
            position.covariance = made_.DrawCovariance(0.003);
            positions.push_back(position);
        }
        Observe();
    }

    void Observe() {
        for (EpochPosition& position : positions) {
            const Matrix3 root = test::Root(position.covariance);
            const Vector3 noise{made_.Normal(), made_.Normal(), made_.Normal()};
            position.position = truth();
            for (std::size_t i = 0; i < 3; ++i) {
                for (std::size_t k = 0; k <= i; ++k) {
                    position.position[i] += root[3 * i + k] * noise[k];
                }
            }
        }
    }

    // Moves the positions from the day `first` to before `last`.
    void Move(std::size_t first, std::size_t last, const Vector3& neu) {
        const Vector3 shift = session::FromNeu(session::ToGeodetic(truth()), neu);
        for (std::size_t day = first; day < last; ++day) {
            positions[day].position = session::Plus(positions[day].position, shift);
        }
    }

    const Vector3& truth() const { return made_.truth[0]; }

    std::vector<EpochPosition> positions;

  private:
    test::MadeUpNetwork made_;
};

double SampleDeviation(const std::vector<double>& values) {
    double mean = 0.0, squares = 0.0;
    for (const double value : values) {
        mean += value / static_cast<double>(values.size());
    }
    for (const double value : values) {
        squares += (value - mean) * (value - mean);
    }
    return std::sqrt(squares / static_cast<double>(values.size() - 1));
}

TEST(TimeSeries, OfEqualWeightHasTheMeanAndTheDeviationOfASample) {
    MadeUpSeries series(1, 8);
    for (EpochPosition& position : series.positions) {
        position.covariance = {4e-6, 0, 0, 0, 4e-6, 0, 0, 0, 4e-6};
    }
    const SeriesReport report = AnalyseSeries(series.positions);
    EXPECT_THAT(report.findings, IsEmpty());
    Vector3 mean{};
    std::vector<double> up;
    const session::Geodetic place = session::ToGeodetic(series.truth());
    for (const EpochPosition& position : series.positions) {
        const Vector3 error = session::Minus(position.position, series.truth());
        mean = session::Plus(mean, {error[0] / 8.0, error[1] / 8.0, error[2] / 8.0});
        up.push_back(session::ToNeu(place, error)[2]);
    }
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(report.position[i] - series.truth()[i], mean[i], 2e-9);
        EXPECT_NEAR(report.covariance[4 * i], report.scale * 4e-6 / 8.0, 1e-15);
    }
    EXPECT_NEAR(report.repeatabilityNeu[2], SampleDeviation(up), 1e-9);
    EXPECT_EQ(report.dof, 21);
    EXPECT_EQ(report.varianceFactor, VarianceFactor::kEstimated);
    EXPECT_NEAR(report.scale, report.sumOfSquares / 21.0, 1e-12);
    EXPECT_NEAR(report.points[3].neu[2] - report.points[3].residualNeu[2], 0.0, 1e-12);
}

TEST(TimeSeries, ALineHasTheVelocityItWasMadeWith) {
    MadeUpSeries series(2, 400);
    const double years = 1.0 / 365.25;
    for (std::size_t day = 0; day < 400; ++day) {
        const double t = static_cast<double>(day) * years;
        series.Move(day, day + 1, {0.020 * t, -0.010 * t, 0.005 * t});
    }
    series.Move(250, 400, {0.0, 0.008, 0.0});
    std::reverse(series.positions.begin(), series.positions.end());  // any order will do
    SeriesOptions options;
    options.motion = Motion::kLine;
    const SeriesReport report = AnalyseSeries(series.positions, options);
    EXPECT_EQ(report.motion, Motion::kLine);
    for (const auto& [axis, velocity] : {std::pair{0, 0.020}, {1, -0.010}, {2, 0.005}}) {
        const auto i = static_cast<std::size_t>(axis);
        EXPECT_NEAR(report.velocityNeu[i], velocity, 4.0 * report.sigmaVelocityNeu[i]);
        EXPECT_LT(report.sigmaVelocityNeu[i], 0.002);
    }
    ASSERT_THAT(report.findings, SizeIs(1));
    EXPECT_EQ(report.findings[0].kind, Kind::kOffset);
    EXPECT_NEAR(static_cast<double>(report.findings[0].point), 250.0, 1.0);
    EXPECT_NEAR(report.findings[0].sizeNeu[1], 0.008, 4.0 * report.findings[0].sigmaNeu[1]);
    EXPECT_EQ(report.points[0].given, 399u);
    EXPECT_EQ(report.start, series.positions[399].epoch);
    EXPECT_NEAR(report.scale, 1.0, 0.15);
}

TEST(TimeSeries, PointsOutOutliersAndOffsetsWithTheirSizes) {
    MadeUpSeries series(3, 60);
    series.Move(10, 11, {0.03, 0.0, 0.0});
    series.Move(25, 60, {0.0, 0.010, -0.02});
    series.Move(40, 60, {0.0, -0.012, 0.0});
    series.Move(59, 60, {0.0, 0.0, 0.1});
    const SeriesReport report = AnalyseSeries(series.positions);
    ASSERT_THAT(report.findings, SizeIs(4));
    EXPECT_EQ(report.findings[0].kind, Kind::kOutlier);
    EXPECT_EQ(report.findings[0].point, 10u);
    EXPECT_FALSE(report.findings[0].isAtEnd);
    EXPECT_EQ(report.findings[1].kind, Kind::kOffset);
    EXPECT_EQ(report.findings[1].point, 25u);
    EXPECT_EQ(report.findings[2].point, 40u);
    EXPECT_EQ(report.findings[3].kind, Kind::kOutlier);
    EXPECT_EQ(report.findings[3].point, 59u);
    EXPECT_TRUE(report.findings[3].isAtEnd);
    const std::vector<Vector3> sizes{
        {0.03, 0.0, 0.0}, {0.0, 0.010, -0.02}, {0.0, -0.012, 0.0}, {0.0, 0.0, 0.1}};
    for (std::size_t k = 0; k < 4; ++k) {
        EXPECT_LT(report.findings[k].probability, 0.01);
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_NEAR(report.findings[k].sizeNeu[i], sizes[k][i],
                        4.0 * report.findings[k].sigmaNeu[i]);
        }
    }
    EXPECT_TRUE(report.points[10].isOutlier);
    EXPECT_NEAR(report.points[10].residualNeu[0], 0.03, 0.01);
    EXPECT_LT(report.repeatabilityNeu[0], 0.004);  // as they were drawn, and not as they were moved
}

TEST(TimeSeries, AFindingHasTheStatisticOfThreeMoreUnknowns) {
    MadeUpSeries series(4, 20);
    series.Move(12, 20, {0.02, 0.0, 0.0});
    series.Move(5, 6, {0.0, 0.0, 0.05});
    SeriesOptions options;
    options.varianceFactor = VarianceFactor::kKnown;
    const SeriesReport report = AnalyseSeries(series.positions, options);
    ASSERT_THAT(report.findings, SizeIs(2));
    const auto sum = [&](bool withOutlier, bool withOffset) {
        test::DenseNetwork dense(1);
        std::vector<std::pair<std::size_t, double>> after;
        for (std::size_t day = 0; day < 20; ++day) {
            dense.Observe(-1, 0, session::Minus(series.positions[day].position, series.truth()),
                          series.positions[day].covariance);
            if (day >= 12) {
                after.emplace_back(day, 1.0);
            }
        }
        if (withOutlier) {
            dense.AddShift({{5, 1.0}});
        }
        if (withOffset) {
            dense.AddShift(after);
        }
        dense.Solve();
        return dense.sumOfSquares;
    };
    EXPECT_NEAR(report.sumOfSquares, sum(true, true), 1e-6);
    EXPECT_NEAR(report.findings[0].statistic, sum(false, true) - sum(true, true), 1e-5);
    EXPECT_NEAR(report.findings[1].statistic, sum(true, false) - sum(true, true), 1e-5);
    EXPECT_EQ(report.dof, 3 * 20 - 9);
    EXPECT_EQ(report.scale, 1.0);
    // 20 epochs, and offsets from the third to the last but one.
    EXPECT_EQ(report.candidates, 20 + 17);
    const double one = ChiSquareTail(report.findings[1].statistic, 3);
    EXPECT_NEAR(report.findings[1].probability, 37.0 * one, 1e-3 * report.findings[1].probability);
}

TEST(TimeSeries, ASoundSeriesIsLeftAloneAsOftenAsSaid) {
    MadeUpSeries series(5, 30);
    constexpr int kRuns = 1000 / test::kShareOfRuns;
    for (const VarianceFactor factor : {VarianceFactor::kKnown, VarianceFactor::kEstimated}) {
        SeriesOptions options;
        options.level = 0.1;
        options.varianceFactor = factor;
        int alarms = 0;
        for (int run = 0; run < kRuns; ++run) {
            series.Observe();
            alarms += AnalyseSeries(series.positions, options).findings.empty() ? 0 : 1;
        }
        // Offsets at neighbouring epochs are nearly the same: together they are wrong less often.
        const double share = static_cast<double>(alarms) / kRuns;
        EXPECT_LT(share, 0.1 + 3.0 * std::sqrt(0.09 / kRuns));
        EXPECT_GT(share, 0.02);
    }
}

TEST(TimeSeries, NoiseAboveItsCovariancesIsNotTakenForOffsets) {
    MadeUpSeries series(6, 40);
    for (EpochPosition& position : series.positions) {
        for (double& value : position.covariance) {
            value /= 25.0;
        }
    }
    EXPECT_THAT(AnalyseSeries(series.positions).findings, IsEmpty());
    SeriesOptions options;
    options.varianceFactor = VarianceFactor::kKnown;
    EXPECT_FALSE(AnalyseSeries(series.positions, options).findings.empty());
}

TEST(TimeSeries, ThreeDaysTellAnOutlierOfTenCentimetres) {
    MadeUpSeries series(7, 3);
    for (EpochPosition& position : series.positions) {
        position.covariance = {1e-6, 0, 0, 0, 1e-6, 0, 0, 0, 1e-6};
    }
    series.Observe();
    EXPECT_THAT(AnalyseSeries(series.positions).findings, IsEmpty());
    series.Move(1, 2, {0.0, 0.10, 0.0});
    const SeriesReport report = AnalyseSeries(series.positions);
    ASSERT_THAT(report.findings, SizeIs(1));
    EXPECT_EQ(report.findings[0].kind, Kind::kOutlier);
    EXPECT_EQ(report.findings[0].point, 1u);
}

TEST(TimeSeries, TooFewEpochsAreAdjustedWithoutFindings) {
    EXPECT_THAT(AnalyseSeries({}).points, IsEmpty());
    MadeUpSeries one(8, 1);
    SeriesOptions options;
    options.motion = Motion::kLine;
    const SeriesReport report = AnalyseSeries(one.positions, options);
    EXPECT_EQ(report.position, one.positions[0].position);
    EXPECT_EQ(report.dof, 0);
    EXPECT_EQ(report.motion, Motion::kStill);
    EXPECT_EQ(report.repeatabilityNeu, Vector3{});
    MadeUpSeries two(9, 2);
    two.Move(1, 2, {1.0, 0.0, 0.0});
    const SeriesReport apart = AnalyseSeries(two.positions);
    // A metre is no chance, but which of the two is wrong is not known: the first is named, at an end.
    EXPECT_EQ(apart.varianceFactor, VarianceFactor::kKnown);
    ASSERT_THAT(apart.findings, SizeIs(1));
    EXPECT_TRUE(apart.findings[0].isAtEnd);
}

TEST(TimeSeries, RefusesWhatCannotBeWeighted) {
    MadeUpSeries series(10, 4);
    series.positions[2].covariance[4] = -1.0;
    try {
        AnalyseSeries(series.positions);
        FAIL();
    } catch (const NetworkError& error) {
        EXPECT_THAT(error.what(), HasSubstr("not positive definite"));
        EXPECT_THAT(error.what(), HasSubstr(io::FormatTime(series.positions[2].epoch, 0)));
    }
    MadeUpSeries other(11, 4);
    other.positions[1].position[0] = std::numeric_limits<double>::infinity();
    EXPECT_THROW(AnalyseSeries(other.positions), NetworkError);
}

}  // namespace
}  // namespace vornel::network
