#include "network/adjustment.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <limits>

#include "network/dense_reference.h"
#include "network/made_up_network.h"
#include "network/statistics.h"

namespace vornel::network {
namespace {

using test::DenseNetwork;
using test::MadeUpNetwork;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Two squares with diagonals and a bridge of two vectors; sessions of trees and of more.
MadeUpNetwork Sample(unsigned seed) {
    MadeUpNetwork made(seed);
    made.AddStations(7, 30e3);
    for (const auto& [a, b] : std::vector<std::pair<std::size_t, std::size_t>>{{0, 1},
                                                                               {2, 1},
                                                                               {2, 3},
                                                                               {0, 3},
                                                                               {0, 2},
                                                                               {3, 4},
                                                                               {5, 4},
                                                                               {5, 6},
                                                                               {6, 3},
                                                                               {3, 5},
                                                                               {0, 1}}) {
        made.AddVector(a, b, made.network.vectors.size() < 6 ? "1" : "2");
    }
    made.Observe();
    return made;
}

// The same in extended precision. Positions count from the stations' given ones, so that no digits
// are lost.
DenseNetwork Reference(const MadeUpNetwork& made) {
    DenseNetwork dense(made.network.stations.size());
    for (std::size_t v = 0; v < made.ends.size(); ++v) {
        const auto& [base, rover] = made.ends[v];
        const auto given = [&](std::size_t s) {
            const NetworkStation& station = made.network.stations[s];
            return station.known ? station.known->position : station.approximate;
        };
        dense.Observe(static_cast<int>(base), static_cast<int>(rover),
                      session::Minus(made.network.vectors[v].vector,
                                     session::Minus(given(rover), given(base))),
                      made.network.vectors[v].covariance);
    }
    return dense;
}

void ExpectSame(const Adjustment& result, const MadeUpNetwork& made, const DenseNetwork& dense) {
    for (std::size_t s = 0; s < made.network.stations.size(); ++s) {
        const NetworkStation& station = made.network.stations[s];
        const Vector3 given = station.known ? station.known->position : station.approximate;
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_NEAR(result.stations[s].position[i] - given[i], dense.Value(3 * s + i), 2e-9);
            for (std::size_t t = 0; t < made.network.stations.size(); ++t) {
                for (std::size_t k = 0; k < 3; ++k) {
                    EXPECT_NEAR(result.covariance.Between(s, t)[3 * i + k],
                                dense.Covariance(3 * s + i, 3 * t + k), 1e-16)
                        << s << " " << t;
                }
            }
            EXPECT_NEAR(result.stations[s].covariance[3 * i + i],
                        dense.Covariance(3 * s + i, 3 * s + i), 1e-16);
        }
    }
    EXPECT_NEAR(result.global.sumOfSquares, dense.sumOfSquares, 1e-6);
    EXPECT_EQ(result.global.dof, dense.dof);
}

Adjustment WithoutSearch(const Network& network, AdjustmentOptions options = {}) {
    options.removeBlunders = false;
    return Adjust(network, options);
}

std::string MessageOf(const Network& network, const AdjustmentOptions& options = {}) {
    try {
        Adjust(network, options);
    } catch (const NetworkError& error) {
        return error.what();
    }
    return "";
}

// --- against closed forms and the dense reference

TEST(Adjustment, TwoVectorsOfEqualWeightMeetInTheMiddle) {
    MadeUpNetwork made(1);
    made.AddStations(2, 5e3);
    made.AddVector(0, 1, "1");
    made.AddVector(1, 0, "2");
    const Matrix3 covariance{4e-6, 0, 0, 0, 4e-6, 0, 0, 0, 4e-6};
    for (NetworkVector& vector : made.network.vectors) {
        vector.covariance = covariance;
    }
    made.network.vectors[0].vector[0] += 0.004;
    const Adjustment result = Adjust(made.network);
    EXPECT_NEAR(result.vectors[0].residual[0], 0.002, 1e-9);
    EXPECT_NEAR(result.vectors[1].residual[0], 0.002, 1e-9);  // it leads the other way
    EXPECT_NEAR(result.global.sumOfSquares, 2.0, 1e-6);       // 0.004^2 / (2 * 4e-6)
    EXPECT_EQ(result.global.dof, 3);
    EXPECT_NEAR(result.global.probability, ChiSquareTail(2.0, 3), 1e-7);
    EXPECT_NEAR(result.stations[1].covariance[0], 2e-6, 1e-15);
    EXPECT_NEAR(result.stations[1].sigmaNeu[2], std::sqrt(2e-6), 1e-12);
    EXPECT_NEAR(result.vectors[0].test.redundancy, 1.5, 1e-9);  // half of three components
    EXPECT_NEAR(result.vectors[0].test.statistic, 2.0, 1e-6);
    // 95 % of a circular distribution lie within 2.4477 standard deviations, of a line 1.9600.
    EXPECT_NEAR(result.stations[1].ellipse.semiMajor, 2.4477 * std::sqrt(2e-6), 1e-7);
    EXPECT_NEAR(result.stations[1].ellipse.semiMinor, 2.4477 * std::sqrt(2e-6), 1e-7);
    EXPECT_NEAR(result.stations[1].heightInterval, 1.9600 * std::sqrt(2e-6), 1e-7);
    EXPECT_TRUE(result.stations[0].isHeld);
    EXPECT_EQ(result.stations[0].position, made.network.stations[0].approximate);
}

TEST(Adjustment, HeldAtOneStationItIsTheDenseSolution) {
    const MadeUpNetwork made = Sample(2);
    AdjustmentOptions options;
    options.heldStation = "S4";
    const Adjustment result = WithoutSearch(made.network, options);
    DenseNetwork dense = Reference(made);
    dense.Hold(4, {0.0, 0.0, 0.0});
    dense.Solve();
    ExpectSame(result, made, dense);
    EXPECT_EQ(result.components[0].heldStation, 4u);
    EXPECT_TRUE(result.stations[4].isHeld);
    for (std::size_t v = 0; v < made.ends.size(); ++v) {
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_NEAR(result.vectors[v].residual[i], dense.Residual(3 * v + i), 2e-9);
        }
    }
}

TEST(Adjustment, WithInnerConstraintsTheMeanOfTheStationsStays) {
    const MadeUpNetwork made = Sample(3);
    AdjustmentOptions options;
    options.datum = Datum::kFree;
    const Adjustment result = WithoutSearch(made.network, options);
    DenseNetwork dense = Reference(made);
    dense.HoldSum({0.0, 0.0, 0.0});
    dense.Solve();
    ExpectSame(result, made, dense);
    EXPECT_EQ(result.components[0].datum, PartDatum::kInnerConstraints);
    for (const StationResult& station : result.stations) {
        EXPECT_FALSE(station.isHeld);
    }
}

TEST(Adjustment, HeldToKnownPositionsFixedAndWeighted) {
    MadeUpNetwork made = Sample(4);
    KnownPosition fixed{session::Plus(made.truth[1], {0.002, -0.001, 0.001}), true, {}};
    KnownPosition weighted{session::Plus(made.truth[6], {0.004, 0.003, -0.005}), false,
                           made.DrawCovariance(0.01)};
    KnownPosition other{made.truth[3], true, {}};
    made.network.stations[1].known = fixed;
    made.network.stations[6].known = weighted;
    made.network.stations[3].known = other;
    AdjustmentOptions options;
    options.datum = Datum::kKnown;
    const Adjustment result = WithoutSearch(made.network, options);
    DenseNetwork dense = Reference(made);
    dense.Observe(-1, 6, {0.0, 0.0, 0.0}, weighted.covariance);
    dense.Hold(1, {0.0, 0.0, 0.0});
    dense.Hold(3, {0.0, 0.0, 0.0});
    dense.Solve();
    ExpectSame(result, made, dense);
    EXPECT_EQ(result.stations[1].position, fixed.position);
    EXPECT_EQ(result.components[0].datum, PartDatum::kKnownPositions);
    EXPECT_THAT(result.known, SizeIs(3));
}

TEST(Adjustment, HeldByTheCovariancesOfKnownPositionsAlone) {
    MadeUpNetwork made = Sample(5);
    DenseNetwork dense = [&] {
        for (const std::size_t s : {0u, 5u}) {
            made.network.stations[s].known =
                KnownPosition{made.truth[s], false, made.DrawCovariance(0.5)};
        }
        DenseNetwork reference = Reference(made);
        for (const int s : {0, 5}) {
            reference.Observe(-1, s, {0.0, 0.0, 0.0},
                              made.network.stations[static_cast<std::size_t>(s)].known->covariance);
        }
        return reference;
    }();
    dense.Solve();
    AdjustmentOptions options;
    options.datum = Datum::kKnown;
    const Adjustment result = WithoutSearch(made.network, options);
    EXPECT_EQ(result.global.dof, dense.dof);
    EXPECT_NEAR(result.global.sumOfSquares, dense.sumOfSquares, 1e-6);
    for (std::size_t i = 0; i < 21; ++i) {
        EXPECT_NEAR(result.stations[i / 3].position[i % 3] -
                        (made.network.stations[i / 3].known
                             ? made.network.stations[i / 3].known->position
                             : made.network.stations[i / 3].approximate)[i % 3],
                    dense.Value(i), 2e-9);
        EXPECT_NEAR(result.stations[i / 3].covariance[4 * (i % 3)] / dense.Covariance(i, i), 1.0,
                    1e-8);
    }
}

TEST(Adjustment, DifferencesHaveTheCovarianceThatTheirStationsHaveTogether) {
    const MadeUpNetwork made = Sample(6);
    AdjustmentOptions options;
    for (const Datum datum : {Datum::kMinimal, Datum::kFree}) {
        options.datum = datum;
        const Adjustment result = WithoutSearch(made.network, options);
        DenseNetwork dense = Reference(made);
        dense.Hold(2, {0.0, 0.0, 0.0});
        dense.Solve();
        const Matrix3 difference = result.covariance.OfDifference(6, 1);
        for (std::size_t i = 0; i < 9; ++i) {
            const std::size_t r = i / 3, c = i % 3;
            EXPECT_NEAR(difference[i],
                        dense.Covariance(18 + r, 18 + c) + dense.Covariance(3 + r, 3 + c) -
                            dense.Covariance(18 + r, 3 + c) - dense.Covariance(3 + r, 18 + c),
                        1e-16);
        }
        const std::vector<Matrix3> column = result.covariance.WithAll(5);
        ASSERT_EQ(column.size(), 7u);
        for (std::size_t s = 0; s < 7; ++s) {
            for (std::size_t i = 0; i < 9; ++i) {
                EXPECT_NEAR(column[s][i], result.covariance.Between(s, 5)[i], 1e-17);
            }
        }
    }
}

TEST(Adjustment, CentringIsCommonToTheVectorsOfAnOccupation) {
    const MadeUpNetwork made = Sample(7);
    AdjustmentOptions options;
    options.added.centringHorizontal = 0.003;
    options.added.centringVertical = 0.002;
    options.added.ppm = 0.1;
    const Adjustment result = WithoutSearch(made.network, options);
    // Correlations written out: vectors of one session that meet at a station share its error.
    DenseNetwork dense = Reference(made);
    const auto& vectors = made.network.vectors;
    for (std::size_t i = 0; i < vectors.size(); ++i) {
        const double sigma = 0.1e-6 * session::Length(vectors[i].vector);
        const double square = sigma * sigma;
        dense.AddCovariance(i, i, square, {1, 0, 0, 0, 1, 0, 0, 0, 1});
        for (std::size_t j = 0; j < vectors.size(); ++j) {
            if (vectors[i].session != vectors[j].session) {
                continue;
            }
            for (const auto& [si, signI] :
                 {std::pair{made.ends[i].first, -1.0}, std::pair{made.ends[i].second, 1.0}}) {
                for (const auto& [sj, signJ] :
                     {std::pair{made.ends[j].first, -1.0}, std::pair{made.ends[j].second, 1.0}}) {
                    if (si == sj) {
                        const Vector3& place = made.network.stations[si].approximate;
                        dense.AddCovariance(i, j, signI * signJ,
                                            CovarianceFromNeu(place, {0.003, 0.003, 0.002}));
                    }
                }
            }
        }
    }
    dense.Hold(0, {0.0, 0.0, 0.0});
    dense.Solve();
    ExpectSame(result, made, dense);
}

// --- tests of vectors, occupations and known positions

TEST(Adjustment, TheTestOfAVectorIsWhatThreeMoreUnknownsTakeFromTheSumOfSquares) {
    MadeUpNetwork made = Sample(8);
    const Adjustment result = WithoutSearch(made.network);
    double redundancy = 0.0;
    for (std::size_t v = 0; v < made.ends.size(); ++v) {
        DenseNetwork dense = Reference(made);
        dense.AddShift({{v, 1.0}});
        dense.Hold(0, {0.0, 0.0, 0.0});
        dense.Solve();
        const BlunderTest& test = result.vectors[v].test;
        EXPECT_EQ(test.dof, 3);
        EXPECT_NEAR(test.statistic, result.global.sumOfSquares - dense.sumOfSquares, 1e-6);
        EXPECT_NEAR(test.probability, ChiSquareTail(test.statistic, 3), 1e-12);
        const session::Geodetic place =
            session::ToGeodetic(made.network.stations[made.ends[v].first].approximate);
        const std::size_t at = dense.columns() - 3;
        const Vector3 offset =
            session::ToNeu(place, {dense.Value(at), dense.Value(at + 1), dense.Value(at + 2)});
        Matrix3 covariance{};
        for (std::size_t i = 0; i < 9; ++i) {
            covariance[i] = dense.Covariance(at + i / 3, at + i % 3);
        }
        const Vector3 sigma =
            SigmaNeu(made.network.stations[made.ends[v].first].approximate, covariance);
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_NEAR(test.offsetNeu[i], offset[i], 1e-8);
            EXPECT_NEAR(test.sigmaNeu[i] / sigma[i], 1.0, 1e-7);
        }
        redundancy += test.redundancy;
    }
    EXPECT_NEAR(redundancy, result.global.dof, 1e-9);
}

TEST(Adjustment, TheSmallestDetectableBlunderHasTheNoncentralityOfThePower) {
    const MadeUpNetwork made = Sample(9);
    const Adjustment result = WithoutSearch(made.network);
    EXPECT_DOUBLE_EQ(result.levelOfEach, 0.001);
    EXPECT_NEAR(result.noncentrality, Noncentrality(3, 0.001, 0.8), 1e-12);
    for (const std::size_t v : {0u, 5u, 9u}) {
        const session::Geodetic place =
            session::ToGeodetic(made.network.stations[made.ends[v].first].approximate);
        for (std::size_t i = 0; i < 3; ++i) {
            Vector3 neu{};
            neu[i] = 1.0;
            DenseNetwork dense = Reference(made);
            dense.AddShiftAlong(v, session::FromNeu(place, neu));
            dense.Hold(0, {0.0, 0.0, 0.0});
            dense.Solve();
            const std::size_t at = dense.columns() - 1;
            const double size = result.vectors[v].test.detectableNeu[i];
            EXPECT_NEAR(size * size / dense.Covariance(at, at) / result.noncentrality, 1.0, 1e-7);
            EXPECT_GE(result.vectors[v].test.detectable, size * (1.0 - 1e-9));
        }
    }
}

TEST(Adjustment, TheTestOfAnOccupationIsWhatItsCommonShiftTakes) {
    const MadeUpNetwork made = Sample(10);
    for (const double centring : {0.0, 0.004}) {
        AdjustmentOptions options;
        options.added.centringHorizontal = centring;
        const Adjustment result = WithoutSearch(made.network, options);
        // Stations 0 to 3 in the first session, 3 to 6 in the second (0 and 1 meet there once).
        ASSERT_THAT(result.occupations, SizeIs(7));
        const auto at3 = std::find_if(
            result.occupations.begin(), result.occupations.end(),
            [](const OccupationResult& o) { return o.station == 3 && o.session == "2"; });
        ASSERT_NE(at3, result.occupations.end());
        EXPECT_THAT(at3->vectors, ElementsAre(8u, 9u));
        EXPECT_FALSE(at3->isApart);
        if (centring == 0.0) {
            DenseNetwork dense = Reference(made);
            dense.AddShift({{8, 1.0}, {9, -1.0}});  // 6 to 3, and 3 to 5
            dense.Hold(0, {0.0, 0.0, 0.0});
            dense.Solve();
            EXPECT_NEAR(at3->test.statistic, result.global.sumOfSquares - dense.sumOfSquares, 1e-6);
            const std::size_t at = dense.columns() - 3;
            const Vector3 offset =
                session::ToNeu(session::ToGeodetic(made.network.stations[3].approximate),
                               {dense.Value(at), dense.Value(at + 1), dense.Value(at + 2)});
            for (std::size_t i = 0; i < 3; ++i) {
                EXPECT_NEAR(at3->offsetNeu[i], offset[i], 1e-8);
            }
        }
        // All that leads to station 5 is of the second session: nothing controls it there.
        const auto at5 = std::find_if(result.occupations.begin(), result.occupations.end(),
                                      [](const OccupationResult& o) { return o.station == 5; });
        EXPECT_EQ(at5->test.dof, 0);
    }
}

TEST(Adjustment, AKnownPositionThatDoesNotFitIsNamedWithItsOffset) {
    MadeUpNetwork made = Sample(11);
    for (const std::size_t s : {0u, 2u, 4u, 6u}) {
        made.network.stations[s].known = KnownPosition{made.truth[s], true, {}};
    }
    const Vector3 wrong = session::FromNeu(session::ToGeodetic(made.truth[4]), {0.05, 0.0, -0.1});
    made.network.stations[4].known->position = session::Plus(made.truth[4], wrong);
    AdjustmentOptions options;
    options.datum = Datum::kKnown;
    for (const bool isFixed : {true, false}) {
        for (NetworkStation& station : made.network.stations) {
            if (station.known) {
                station.known->isFixed = isFixed;
                station.known->covariance =
                    CovarianceFromNeu(station.known->position, {0.001, 0.001, 0.001});
            }
        }
        const Adjustment result = Adjust(made.network, options);
        EXPECT_THAT(result.rounds, IsEmpty());  // no vector is blamed for it
        ASSERT_THAT(result.known, SizeIs(4));
        const KnownResult& named = *std::max_element(
            result.known.begin(), result.known.end(),
            [](const auto& a, const auto& b) { return a.test.statistic < b.test.statistic; });
        EXPECT_EQ(named.station, 4u);
        EXPECT_TRUE(named.test.isSuspect);
        EXPECT_EQ(named.isFixed, isFixed);
        EXPECT_NEAR(named.test.offsetNeu[0], 0.05, 4.0 * named.test.sigmaNeu[0]);
        EXPECT_NEAR(named.test.offsetNeu[2], -0.10, 4.0 * named.test.sigmaNeu[2]);
        EXPECT_LT(named.test.sigmaNeu[2], 0.01);
    }
}

TEST(Adjustment, TheTestOfAKnownPositionIsWhatFreeingItTakes) {
    MadeUpNetwork made = Sample(12);
    for (const std::size_t s : {0u, 3u, 5u}) {
        made.network.stations[s].known =
            KnownPosition{session::Plus(made.truth[s], {0.001, 0.002, -0.001}), s != 5,
                          made.DrawCovariance(0.01)};
    }
    AdjustmentOptions options;
    options.datum = Datum::kKnown;
    const Adjustment result = WithoutSearch(made.network, options);
    for (const KnownResult& known : result.known) {
        DenseNetwork dense = Reference(made);
        for (const std::size_t s : {0u, 3u}) {
            if (s != known.station) {
                dense.Hold(s, {0.0, 0.0, 0.0});
            }
        }
        if (known.station != 5) {
            dense.Observe(-1, 5, {0.0, 0.0, 0.0}, made.network.stations[5].known->covariance);
        }
        dense.Solve();
        EXPECT_NEAR(known.test.statistic, result.global.sumOfSquares - dense.sumOfSquares, 1e-6);
        // Known minus what the rest says.
        const Vector3 offset = session::ToNeu(
            session::ToGeodetic(made.network.stations[known.station].known->position),
            {-dense.Value(3 * known.station), -dense.Value(3 * known.station + 1),
             -dense.Value(3 * known.station + 2)});
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_NEAR(known.test.offsetNeu[i], offset[i], 1e-8) << known.station;
        }
    }
}

// --- by chance

TEST(Adjustment, IsRightAsOftenAsItSays) {
    MadeUpNetwork made = Sample(13);
    AdjustmentOptions options;
    options.removeBlunders = false;
    constexpr int kRuns = 2000 / test::kShareOfRuns;
    int inEllipse = 0, inInterval = 0, alarms = 0;
    std::vector<double> vectorTests, globalTests;
    for (int run = 0; run < kRuns; ++run) {
        made.Observe();
        made.network.stations[0].approximate = made.truth[0];
        const Adjustment result = Adjust(made.network, options);
        const StationResult& station = result.stations[5];
        const Vector3 error = session::ToNeu(session::ToGeodetic(made.truth[5]),
                                             session::Minus(station.position, made.truth[5]));
        const double cosine = std::cos(station.ellipse.azimuth);
        const double sine = std::sin(station.ellipse.azimuth);
        const double along = (error[0] * cosine + error[1] * sine) / station.ellipse.semiMajor;
        const double across = (error[1] * cosine - error[0] * sine) / station.ellipse.semiMinor;
        inEllipse += along * along + across * across <= 1.0 ? 1 : 0;
        inInterval += std::abs(error[2]) <= station.heightInterval ? 1 : 0;
        alarms += result.global.isPassed ? 0 : 1;
        vectorTests.push_back(result.vectors[6].test.probability);
        globalTests.push_back(result.global.probability);
    }
    test::ExpectShare(inEllipse, kRuns, 0.95);
    test::ExpectShare(inInterval, kRuns, 0.95);
    test::ExpectShare(alarms, kRuns, 0.05);
    EXPECT_LT(test::DistanceToUniform(vectorTests), 1.95);
    EXPECT_LT(test::DistanceToUniform(globalTests), 1.95);
}

TEST(Adjustment, FindsABlunderOfTheSmallestDetectableSizeAsOftenAsItSays) {
    MadeUpNetwork made = Sample(14);
    AdjustmentOptions options;
    options.removeBlunders = false;
    const Adjustment sound = Adjust(made.network, options);
    const std::size_t v = 7;
    const session::Geodetic place =
        session::ToGeodetic(made.network.stations[made.ends[v].first].approximate);
    constexpr int kRuns = 1500 / test::kShareOfRuns;
    for (const std::size_t axis : {0u, 2u}) {
        Vector3 neu{};
        neu[axis] = sound.vectors[v].test.detectableNeu[axis];
        const Vector3 blunder = session::FromNeu(place, neu);
        int found = 0;
        for (int run = 0; run < kRuns; ++run) {
            made.Observe();
            made.network.vectors[v].vector = session::Plus(made.network.vectors[v].vector, blunder);
            found += Adjust(made.network, options).vectors[v].test.isSuspect ? 1 : 0;
        }
        test::ExpectShare(found, kRuns, 0.8);
    }
}

TEST(Adjustment, WithAnUnknownVarianceFactorItIsRightAsOftenAsItSays) {
    MadeUpNetwork made = Sample(15);
    AdjustmentOptions options;
    options.removeBlunders = false;
    options.varianceFactor = VarianceFactor::kEstimated;
    constexpr int kRuns = 1500 / test::kShareOfRuns;
    int inEllipse = 0, inInterval = 0;
    std::vector<double> vectorTests;
    double scale = 0.0;
    for (int run = 0; run < kRuns; ++run) {
        made.Observe();
        made.network.stations[0].approximate = made.truth[0];
        // The covariances claim too much by a factor of 9.
        Network claimed = made.network;
        for (NetworkVector& vector : claimed.vectors) {
            for (double& value : vector.covariance) {
                value /= 9.0;
            }
        }
        const Adjustment result = Adjust(claimed, options);
        const StationResult& station = result.stations[5];
        const Vector3 error = session::ToNeu(session::ToGeodetic(made.truth[5]),
                                             session::Minus(station.position, made.truth[5]));
        const double cosine = std::cos(station.ellipse.azimuth);
        const double sine = std::sin(station.ellipse.azimuth);
        const double along = (error[0] * cosine + error[1] * sine) / station.ellipse.semiMajor;
        const double across = (error[1] * cosine - error[0] * sine) / station.ellipse.semiMinor;
        inEllipse += along * along + across * across <= 1.0 ? 1 : 0;
        inInterval += std::abs(error[2]) <= station.heightInterval ? 1 : 0;
        vectorTests.push_back(result.vectors[6].test.probability);
        scale += result.scale / kRuns;
    }
    EXPECT_NEAR(scale, 9.0, 9.0 * 3.0 * std::sqrt(2.0 / 15.0 / kRuns));
    test::ExpectShare(inEllipse, kRuns, 0.95);
    test::ExpectShare(inInterval, kRuns, 0.95);
    EXPECT_LT(test::DistanceToUniform(vectorTests), 1.95);
}

// --- the search

TEST(Adjustment, RemovesOneBlunderARoundAndListsIt) {
    MadeUpNetwork made = Sample(16);
    const Adjustment sound = Adjust(made.network);
    EXPECT_THAT(sound.rounds, IsEmpty());
    EXPECT_EQ(sound.end, SearchEnd::kNothingLeft);

    const session::Geodetic place = session::ToGeodetic(made.network.stations[0].approximate);
    made.network.vectors[4].vector =
        session::Plus(made.network.vectors[4].vector, session::FromNeu(place, {0.0, 0.06, 0.0}));
    made.network.vectors[9].vector[1] += 0.4;
    const Adjustment result = Adjust(made.network);
    ASSERT_THAT(result.rounds, SizeIs(2));
    EXPECT_EQ(result.rounds[0].action, RoundAction::kVectorRemoved);
    EXPECT_EQ(result.rounds[0].suspect.vector, 9u);
    EXPECT_EQ(result.rounds[1].suspect.vector, 4u);
    EXPECT_NEAR(result.rounds[1].test.offsetNeu[1], 0.06, 4 * result.rounds[1].test.sigmaNeu[1]);
    EXPECT_FALSE(result.all.isPassed);
    EXPECT_GT(result.rounds[0].global.sumOfSquares, result.rounds[1].global.sumOfSquares);
    EXPECT_TRUE(result.global.isPassed);
    EXPECT_EQ(result.global.dof, sound.global.dof - 6);
    EXPECT_EQ(result.vectors[4].use, VectorUse::kRemoved);
    // What it misses the network by is the blunder, as the test estimated it.
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(result.vectors[4].residualNeu[i], result.rounds[1].test.offsetNeu[i], 1e-8);
        EXPECT_NEAR(result.vectors[4].sigmaNeu[i], result.rounds[1].test.sigmaNeu[i], 1e-8);
    }
    EXPECT_NEAR(result.vectors[4].test.statistic, result.rounds[1].test.statistic, 1e-5);

    AdjustmentOptions keep;
    keep.removeBlunders = false;
    const Adjustment kept = Adjust(made.network, keep);
    EXPECT_THAT(kept.rounds, IsEmpty());
    EXPECT_EQ(kept.end, SearchEnd::kNotAsked);
    EXPECT_TRUE(kept.vectors[9].test.isSuspect);
}

TEST(Adjustment, SaysWhichOthersItCouldNotTellFromTheBlunder) {
    MadeUpNetwork made(17);
    made.AddStations(3, 10e3);
    made.AddVector(0, 1, "1");
    made.AddVector(1, 2, "2");
    made.AddVector(0, 2, "3");
    made.network.vectors[1].vector[0] += 0.3;
    AdjustmentOptions options;
    options.largestShareRemoved = 0.5;
    const Adjustment result = Adjust(made.network, options);
    ASSERT_THAT(result.rounds, SizeIs(1));
    EXPECT_EQ(result.rounds[0].suspect.vector, 0u);
    ASSERT_THAT(result.rounds[0].alternatives, SizeIs(2));
    EXPECT_EQ(result.rounds[0].alternatives[0].vector, 1u);
    EXPECT_EQ(result.rounds[0].alternatives[1].vector, 2u);
    // What is left has no control.
    for (const StationResult& station : result.stations) {
        EXPECT_FALSE(station.isControlled);
    }
    EXPECT_EQ(result.vectors[1].test.dof, 0);
    EXPECT_EQ(result.vectors[1].test.detectable, kInfinity);
}

TEST(Adjustment, AWrongAntennaHeightIsOneBlunderOfItsOccupation) {
    // Four days; on the third the antenna of the station in the middle of all vectors stood 0.1 m
    // above what was written down, and 0.02 m to the east of the mark.
    MadeUpNetwork made(18);
    made.AddStations(5, 20e3);
    for (int day = 1; day <= 4; ++day) {
        for (std::size_t s = 1; s < 5; ++s) {
            made.AddVector(s % 2 ? 0 : s, s % 2 ? s : 0, std::to_string(day));
        }
    }
    made.Observe();
    const session::Geodetic place = session::ToGeodetic(made.truth[0]);
    const Vector3 up = session::FromNeu(place, {0.0, 0.02, 0.1});
    for (std::size_t v = 8; v < 12; ++v) {
        Vector3& vector = made.network.vectors[v].vector;
        vector = made.ends[v].second == 0 ? session::Plus(vector, up) : session::Minus(vector, up);
    }
    for (const double centring : {0.0, 0.001}) {
        AdjustmentOptions options;
        options.added.centringHorizontal = centring;
        const Adjustment result = Adjust(made.network, options);
        ASSERT_THAT(result.rounds, SizeIs(1));
        EXPECT_EQ(result.rounds[0].action, RoundAction::kOccupationSetApart);
        EXPECT_EQ(result.rounds[0].suspect.station, 0u);
        EXPECT_EQ(result.rounds[0].suspect.session, "3");
        EXPECT_THAT(result.rounds[0].alternatives, IsEmpty());
        EXPECT_TRUE(result.global.isPassed);
        const auto apart = std::find_if(result.occupations.begin(), result.occupations.end(),
                                        [](const OccupationResult& o) { return o.isApart; });
        ASSERT_NE(apart, result.occupations.end());
        EXPECT_EQ(apart->session, "3");
        EXPECT_NEAR(apart->offsetNeu[1], 0.02, 4.0 * apart->sigmaNeu[1]);
        EXPECT_NEAR(apart->offsetNeu[2], 0.1, 4.0 * apart->sigmaNeu[2]);
        EXPECT_LT(apart->sigmaNeu[2], 0.005);
        for (std::size_t i = 0; i < 3; ++i) {
            if (centring == 0.0) {
                EXPECT_NEAR(apart->offsetNeu[i], result.rounds[0].test.offsetNeu[i], 1e-8);
                EXPECT_NEAR(apart->sigmaNeu[i], result.rounds[0].test.sigmaNeu[i], 1e-8);
            }
        }
        // The vectors of that day keep their weight: the shape they tell is sound.
        EXPECT_EQ(result.vectors[9].use, VectorUse::kUsed);
    }
}

TEST(Adjustment, AVectorThatLaterRoundsClearIsPutBack) {
    // Three blunders that together look most like one of a vector that has none.
    MadeUpNetwork made(19);
    made.AddStations(4, 10e3);
    for (const auto& [a, b] : std::vector<std::pair<std::size_t, std::size_t>>{
             {0, 1}, {1, 2}, {2, 0}, {0, 3}, {3, 1}, {3, 2}, {0, 1}, {0, 3}, {3, 2}, {1, 2}}) {
        made.AddVector(a, b, std::to_string(made.ends.size()));
        made.network.vectors.back().covariance = {1e-6, 0, 0, 0, 1e-6, 0, 0, 0, 1e-6};
    }
    made.network.vectors[1].vector[0] -= 0.060;
    made.network.vectors[2].vector[0] += 0.040;
    made.network.vectors[4].vector[0] += 0.040;
    AdjustmentOptions options;
    options.largestShareRemoved = 0.5;
    const Adjustment result = Adjust(made.network, options);
    std::vector<std::size_t> removed;
    for (std::size_t v = 0; v < result.vectors.size(); ++v) {
        if (result.vectors[v].use == VectorUse::kRemoved) {
            removed.push_back(v);
        }
    }
    EXPECT_THAT(removed, ElementsAre(1u, 2u, 4u));
    EXPECT_EQ(result.end, SearchEnd::kNothingLeft);
    ASSERT_THAT(result.rounds, SizeIs(5));
    EXPECT_EQ(result.rounds[0].action, RoundAction::kVectorRemoved);
    EXPECT_EQ(result.rounds[0].suspect.vector, 9u);
    EXPECT_EQ(result.rounds[4].action, RoundAction::kVectorPutBack);
    EXPECT_EQ(result.rounds[4].suspect.vector, 9u);
    EXPECT_EQ(result.vectors[9].use, VectorUse::kUsed);
    EXPECT_NEAR(result.global.sumOfSquares, 0.0, 1e-6);
}

TEST(Adjustment, GivesUpAndPutsAllBackWhenTooManyWouldHaveToGo) {
    MadeUpNetwork made = Sample(20);
    for (NetworkVector& vector : made.network.vectors) {
        for (double& value : vector.covariance) {
            value /= 400.0;
        }
    }
    const Adjustment result = Adjust(made.network);
    EXPECT_EQ(result.end, SearchEnd::kGivenUp);
    EXPECT_THAT(result.rounds, SizeIs(4));  // a fifth of 11 is 3 at most
    for (const VectorResult& vector : result.vectors) {
        EXPECT_EQ(vector.use, VectorUse::kUsed);
    }
    EXPECT_FALSE(result.global.isPassed);
    EXPECT_NEAR(result.global.sumOfSquares, result.all.sumOfSquares, 1e-6);
    // With the factor estimated nothing is wrong.
    AdjustmentOptions options;
    options.varianceFactor = VarianceFactor::kEstimated;
    const Adjustment scaled = Adjust(made.network, options);
    EXPECT_THAT(scaled.rounds, IsEmpty());
    EXPECT_NEAR(scaled.scale, 400.0, 300.0);
}

TEST(Adjustment, ABlunderIsFoundWhereTheVarianceFactorIsEstimated) {
    MadeUpNetwork made = Sample(21);
    for (NetworkVector& vector : made.network.vectors) {
        for (double& value : vector.covariance) {
            value /= 100.0;
        }
    }
    made.network.vectors[4].vector[2] += 0.5;
    AdjustmentOptions options;
    options.varianceFactor = VarianceFactor::kEstimated;
    const Adjustment result = Adjust(made.network, options);
    ASSERT_THAT(result.rounds, SizeIs(1));
    EXPECT_EQ(result.rounds[0].suspect.vector, 4u);
}

TEST(Adjustment, KnownPositionsDoNotBendTheSearch) {
    MadeUpNetwork made = Sample(22);
    made.network.vectors[9].vector[2] += 0.3;
    for (const std::size_t s : {0u, 4u}) {
        made.network.stations[s].known = KnownPosition{made.truth[s], true, {}};
    }
    made.network.stations[4].known->position[0] += 1.0;
    AdjustmentOptions options;
    options.datum = Datum::kKnown;
    const Adjustment result = Adjust(made.network, options);
    ASSERT_THAT(result.rounds, SizeIs(1));
    EXPECT_EQ(result.rounds[0].suspect.vector, 9u);
    EXPECT_TRUE(result.known[0].test.isSuspect);
    EXPECT_TRUE(result.known[1].test.isSuspect);
    EXPECT_FALSE(result.global.isPassed);
}

// --- what cannot be adjusted as asked for

TEST(Adjustment, PartsThatAreNotJoinedAreAdjustedEachByItself) {
    MadeUpNetwork made = Sample(23);
    const std::size_t first = made.network.stations.size();
    made.AddStation("far", 90e3, 0.0);
    made.AddStation("farther", 91e3, 500.0);
    made.AddStation("alone", 0.0, 70e3);
    made.AddVector(first, first + 1, "9");
    made.AddVector(first + 1, first, "8");
    made.network.stations[2].known = KnownPosition{made.truth[2], true, {}};
    for (const Datum datum : {Datum::kMinimal, Datum::kFree, Datum::kKnown}) {
        AdjustmentOptions options;
        options.datum = datum;
        const Adjustment result = WithoutSearch(made.network, options);
        const Adjustment whole = WithoutSearch(Sample(23).network);
        ASSERT_THAT(result.components, SizeIs(3));
        EXPECT_THAT(result.components[0].stations, SizeIs(7));
        EXPECT_THAT(result.components[1].stations, ElementsAre(first, first + 1));
        EXPECT_THAT(result.components[2].stations, ElementsAre(first + 2));
        EXPECT_EQ(result.components[1].vectors, 2u);
        EXPECT_EQ(result.components[0].global.dof, whole.global.dof);
        EXPECT_NEAR(result.components[0].global.sumOfSquares, whole.global.sumOfSquares, 1e-6);
        EXPECT_EQ(result.components[1].global.dof, 3);
        EXPECT_EQ(result.global.dof, whole.global.dof + 3);
        EXPECT_EQ(result.components[2].datum, PartDatum::kNoVector);
        EXPECT_THAT(result.components[2].note, HasSubstr("station alone: no vector"));
        EXPECT_FALSE(result.stations[first + 2].isDetermined);
        EXPECT_EQ(result.stations[first + 2].position,
                  made.network.stations[first + 2].approximate);
        EXPECT_EQ(result.covariance.Between(1, first), Matrix3{});
        if (datum == Datum::kKnown) {
            EXPECT_EQ(result.components[0].datum, PartDatum::kKnownPositions);
            EXPECT_EQ(result.components[1].datum, PartDatum::kNoKnownPosition);
            EXPECT_THAT(result.components[1].note,
                        HasSubstr("no station with a known position; far is held"));
            EXPECT_TRUE(result.components[0].note.empty());
        }
        if (datum == Datum::kMinimal) {
            EXPECT_EQ(result.components[0].heldStation, 2u);
        }
    }
}

TEST(Adjustment, KnownPositionsTooWeakToHoldAreSaidSo) {
    MadeUpNetwork made = Sample(24);
    for (NetworkVector& vector : made.network.vectors) {
        vector.covariance = {1e-12, 0, 0, 0, 1e-12, 0, 0, 0, 1e-12};
    }
    made.network.stations[3].known =
        KnownPosition{made.truth[3], false, CovarianceFromNeu(made.truth[3], {9.0, 9.0, 9.0})};
    AdjustmentOptions options;
    options.datum = Datum::kKnown;
    const Adjustment result = WithoutSearch(made.network, options);
    EXPECT_EQ(result.components[0].datum, PartDatum::kKnownPositionsTooWeak);
    EXPECT_THAT(result.components[0].note, HasSubstr("too inaccurate to hold them; S3 is held"));
    EXPECT_THAT(result.known, IsEmpty());
}

TEST(Adjustment, ChecksHaveNoWeightAndAreComparedWithTheNetwork) {
    MadeUpNetwork made = Sample(25);
    const Adjustment without = WithoutSearch(made.network);
    made.AddVector(1, 6, "check");
    made.network.vectors.back().isCheck = true;
    made.network.vectors.back().vector[0] += 0.5;
    const Adjustment result = Adjust(made.network);
    EXPECT_EQ(result.global.dof, without.global.dof);
    EXPECT_THAT(result.rounds, IsEmpty());
    const VectorResult& check = result.vectors.back();
    EXPECT_EQ(check.use, VectorUse::kCheck);
    EXPECT_TRUE(check.test.isSuspect);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(check.residual[i],
                    made.network.vectors.back().vector[i] -
                        (result.stations[6].position[i] - result.stations[1].position[i]),
                    1e-8);
    }
    Matrix3 sum = result.covariance.OfDifference(6, 1);
    for (std::size_t i = 0; i < 9; ++i) {
        sum[i] += made.network.vectors.back().covariance[i];
    }
    const Vector3 sigma = SigmaNeu(made.network.stations[1].approximate, sum);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(check.sigmaNeu[i], sigma[i], 1e-9);
    }
}

TEST(Adjustment, AVectorThatNothingControlsIsSaidSo) {
    MadeUpNetwork made = Sample(26);
    made.AddStation("leaf", 3e3, 40e3);
    made.AddVector(4, 7, "9");
    const Adjustment result = Adjust(made.network);
    EXPECT_EQ(result.vectors.back().test.dof, 0);
    EXPECT_EQ(result.vectors.back().test.redundancy, 0.0);
    EXPECT_EQ(result.vectors.back().test.detectable, kInfinity);
    EXPECT_EQ(result.vectors.back().test.detectableNeu[1], kInfinity);
    EXPECT_FALSE(result.stations[7].isControlled);
    EXPECT_EQ(result.stations[7].vectors, 1u);
    for (std::size_t s = 0; s < 7; ++s) {
        EXPECT_TRUE(result.stations[s].isControlled);
    }
    // A known position controls it.
    for (const std::size_t s : {1u, 7u}) {
        made.network.stations[s].known = KnownPosition{made.truth[s], true, {}};
    }
    AdjustmentOptions options;
    options.datum = Datum::kKnown;
    const Adjustment known = Adjust(made.network, options);
    EXPECT_EQ(known.vectors.back().test.dof, 3);
    EXPECT_TRUE(known.stations[7].isControlled);
}

TEST(Adjustment, VectorsThatCannotBeUsedAreRefusedByTheirReason) {
    MadeUpNetwork made = Sample(27);
    made.network.vectors[0].covariance[0] = -1e-6;
    made.network.vectors[1].vector[1] = std::numeric_limits<double>::quiet_NaN();
    made.network.vectors[2].rover = "nowhere";
    made.network.vectors[10].covariance[1] += 1e-6;
    made.AddVector(3, 4);
    made.network.vectors.back().rover = "S3";
    made.AddVector(3, 4);
    made.network.vectors.back().covariance = {1e-16, 0, 0, 0, 1e-16, 0, 0, 0, 1e-16};
    const Adjustment result = Adjust(made.network);
    EXPECT_EQ(result.vectors[0].reason, "its covariance is not positive definite");
    EXPECT_EQ(result.vectors[1].reason, "its components are not finite");
    EXPECT_EQ(result.vectors[2].reason, "its station nowhere is not in the network");
    EXPECT_EQ(result.vectors[10].reason, "its covariance is not symmetric");
    EXPECT_EQ(result.vectors[11].reason, "it leads from S3 to itself");
    EXPECT_EQ(result.vectors[12].reason, "its standard deviation is below 0.1 micrometre");
    EXPECT_EQ(result.vectors[0].use, VectorUse::kRefused);
    EXPECT_EQ(result.vectors[3].use, VectorUse::kUsed);
    EXPECT_EQ(Adjust(Network{}).global.dof, 0);
}

TEST(Adjustment, RecordsThatContradictEachOtherAreNamed) {
    MadeUpNetwork made = Sample(28);
    AdjustmentOptions options;
    options.heldStation = "nobody";
    EXPECT_THAT(MessageOf(made.network, options), HasSubstr("nobody, is not in the network"));
    made.network.stations[2].known =
        KnownPosition{made.truth[2], false, CovarianceFromNeu(made.truth[2], {1.0, 1.0, 50.0})};
    EXPECT_THAT(MessageOf(made.network), HasSubstr("known position of station S2 has a standard"));
    made.network.stations[2].known->covariance = {};
    EXPECT_THAT(MessageOf(made.network), HasSubstr("known position of station S2 cannot be used"));
}

// --- size

TEST(Adjustment, AThousandVectorsOfFourHundredStationsAreQuick) {
    MadeUpNetwork made(29);
    made.AddStations(400, 200e3);
    // Each station to an earlier near one, then near pairs; a session of about ten vectors each.
    const auto distance = [&](std::size_t a, std::size_t b) {
        return session::Length(session::Minus(made.truth[a], made.truth[b]));
    };
    for (std::size_t s = 1; s < 400; ++s) {
        std::size_t nearest = 0;
        for (std::size_t t = 1; t < s; ++t) {
            nearest = distance(t, s) < distance(nearest, s) ? t : nearest;
        }
        made.AddVector(nearest, s, std::to_string(s / 10));
    }
    std::uniform_int_distribution<std::size_t> any(0, 399);
    while (made.ends.size() < 1000) {
        const std::size_t a = any(made.random()), b = any(made.random());
        if (a != b && distance(a, b) < 40e3) {
            made.AddVector(a, b, std::to_string(made.ends.size() / 10));
        }
    }
    made.Observe();
    made.network.vectors[700].vector[0] += 1.0;
    AdjustmentOptions options;
    options.datum = Datum::kFree;
    const auto begin = std::chrono::steady_clock::now();
    const Adjustment result = Adjust(made.network, options);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
    RecordProperty("milliseconds", static_cast<int>(1e3 * seconds.count()));
    ASSERT_THAT(result.rounds, SizeIs(1));
    EXPECT_EQ(result.rounds[0].suspect.vector, 700u);
    EXPECT_EQ(result.global.dof, 3 * (999 - 399));
    EXPECT_TRUE(result.global.isPassed);
    EXPECT_LT(result.levelOfEach, 0.0001);
    double redundancy = 0.0;
    for (const VectorResult& vector : result.vectors) {
        redundancy += vector.use == VectorUse::kUsed ? vector.test.redundancy : 0.0;
    }
    EXPECT_NEAR(redundancy, result.global.dof, 0.01);
}

}  // namespace
}  // namespace vornel::network
