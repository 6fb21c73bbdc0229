#include "network/loops.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <limits>

#include "network/made_up_network.h"
#include "network/statistics.h"

namespace vornel::network {
namespace {

using test::MadeUpNetwork;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

// All vectors between `count` stations.
MadeUpNetwork Complete(std::size_t count, unsigned seed) {
    MadeUpNetwork made(seed);
    made.AddStations(count, 20e3);
    for (std::size_t a = 0; a < count; ++a) {
        for (std::size_t b = a + 1; b < count; ++b) {
            // Alternate directions.
            made.AddVector((a + b) % 2 ? a : b, (a + b) % 2 ? b : a);
        }
    }
    return made;
}

std::string MessageOf(const Network& network) {
    try {
        FindLoops(network);
    } catch (const NetworkError& error) {
        return error.what();
    }
    return "";
}

TEST(Loops, ATriangleMisclosesByTheErrorOfItsVectors) {
    MadeUpNetwork made = Complete(3, 1);
    NetworkVector& wrong = made.network.vectors[1];
    const Vector3 error{0.03, -0.02, 0.05};
    wrong.vector = session::Plus(wrong.vector, error);
    const LoopReport report = FindLoops(made.network);
    ASSERT_EQ(report.loops.size(), 1u);
    const Loop& loop = report.loops[0];
    EXPECT_EQ(loop.kind, LoopKind::kTriangle);
    const auto side = std::find_if(loop.sides.begin(), loop.sides.end(),
                                   [](const LoopSide& s) { return s.vector == 1; });
    const double sign = side->forward ? 1.0 : -1.0;
    double length = 0.0;
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(loop.misclosure[i], sign * error[i], 1e-8);
        length += session::Length(made.network.vectors[i].vector);
        for (std::size_t k = 0; k < 3; ++k) {
            const double sum = made.network.vectors[0].covariance[3 * i + k] +
                               made.network.vectors[1].covariance[3 * i + k] +
                               made.network.vectors[2].covariance[3 * i + k];
            EXPECT_NEAR(loop.covariance[3 * i + k], sum, 1e-15);
        }
    }
    EXPECT_NEAR(loop.size, std::sqrt(0.0038), 1e-8);
    EXPECT_NEAR(loop.length, length, 1e-6);
    EXPECT_NEAR(loop.ppm, loop.size / length * 1e6, 1e-9);
    EXPECT_TRUE(loop.isBad);
    // The same vector in north, east, up is as long, and at the first station.
    EXPECT_NEAR(session::Length(loop.misclosureNeu), loop.size, 1e-12);
    const session::Geodetic place =
        session::ToGeodetic(made.network.stations[loop.stations[0]].approximate);
    const Vector3 back = session::FromNeu(place, loop.misclosureNeu);
    EXPECT_NEAR(back[2], loop.misclosure[2], 1e-12);
}

TEST(Loops, ProbabilitiesAreUniformWhereTheCovariancesAreTrue) {
    // The second set of each vector is of another session: loops of every kind.
    MadeUpNetwork made(2);
    made.AddStations(6, 30e3);
    for (std::size_t a = 0; a < 6; ++a) {
        made.AddVector(a, (a + 1) % 6, "1");
        made.AddVector((a + 1) % 6, a, "2");
    }
    made.AddVector(0, 2, "1");
    std::vector<double> repeated, triangles, cycles;
    constexpr int kRuns = 1000 / test::kShareOfRuns;
    for (int run = 0; run < kRuns; ++run) {
        made.Observe();
        for (const Loop& loop : FindLoops(made.network).loops) {
            // One of each kind and run, so that what is compared is independent.
            auto& list = loop.kind == LoopKind::kRepeated   ? repeated
                         : loop.kind == LoopKind::kTriangle ? triangles
                                                            : cycles;
            if (loop.sides[0].vector == (loop.kind == LoopKind::kCycle ? 7u : 0u)) {
                list.push_back(loop.probability);
            }
        }
    }
    const auto runs = static_cast<std::size_t>(kRuns);
    ASSERT_GE(repeated.size(), runs);
    ASSERT_GE(triangles.size(), runs);
    ASSERT_GE(cycles.size(), runs);
    EXPECT_LT(test::DistanceToUniform(repeated), 1.95);
    EXPECT_LT(test::DistanceToUniform(triangles), 1.95);
    EXPECT_LT(test::DistanceToUniform(cycles), 1.95);
}

TEST(Loops, FindsEveryTriangleOfACompleteNetwork) {
    const LoopReport report = FindLoops(Complete(9, 3).network);
    EXPECT_EQ(report.triangles.found, 84u);  // 9 choose 3
    EXPECT_EQ(report.triangles.listed, 84u);
    EXPECT_EQ(report.triangles.bad, 0u);
    EXPECT_EQ(report.cycles.found, 0u);
    EXPECT_EQ(report.repeated.found, 0u);
    EXPECT_TRUE(report.triangles.isComplete);
    EXPECT_THAT(report.named, IsEmpty());
}

TEST(Loops, ARingIsOneCycleAndEveryLoopClosesExactlyWithoutErrors) {
    MadeUpNetwork made(4);
    made.AddStations(12, 30e3);
    for (std::size_t a = 0; a < 12; ++a) {
        made.AddVector(a, (a + 1) % 12);
        if (a >= 6) {
            made.AddVector((a + 1) % 12, a, "2");
        }
    }
    const LoopReport report = FindLoops(made.network);
    EXPECT_EQ(report.repeated.found, 6u);
    EXPECT_EQ(report.cycles.found, 1u);
    EXPECT_EQ(report.loops.back().sides.size(), 12u);
    for (const Loop& loop : report.loops) {
        EXPECT_LT(loop.size, 1e-8);
        EXPECT_NEAR(loop.probability, 1.0, 1e-9);
    }
}

TEST(Loops, NamesTheVectorThatIsInAllBadLoops) {
    MadeUpNetwork made = Complete(5, 5);
    made.Observe();
    made.network.vectors[7].vector[0] += 0.2;
    const LoopReport report = FindLoops(made.network);
    EXPECT_EQ(report.triangles.bad, 3u);  // with each of the three other stations
    ASSERT_EQ(report.named.size(), 1u);
    EXPECT_EQ(report.named[0].vector, 7u);
    EXPECT_EQ(report.named[0].badLoops, 3u);
    EXPECT_EQ(report.named[0].remaining, 3u);
    EXPECT_EQ(report.named[0].loops, 3u);
    EXPECT_THAT(report.named[0].equals, IsEmpty());
    EXPECT_EQ(report.vectors.front().vector, 7u);
    EXPECT_EQ(report.vectors.size(), 7u);
    EXPECT_EQ(report.vectors[1].badLoops, 1u);
}

TEST(Loops, NamesASecondVectorFromTheLoopsThatTheFirstDoesNotExplain) {
    MadeUpNetwork made = Complete(6, 6);
    made.Observe();
    made.network.vectors[0].vector[0] += 0.2;   // S0 S1
    made.network.vectors[14].vector[1] += 0.3;  // S4 S5
    const LoopReport report = FindLoops(made.network);
    EXPECT_EQ(report.triangles.bad, 8u);
    ASSERT_EQ(report.named.size(), 2u);
    EXPECT_THAT((std::vector{report.named[0].vector, report.named[1].vector}),
                UnorderedElementsAre(0u, 14u));
    EXPECT_EQ(report.named[0].remaining, 8u);
    EXPECT_EQ(report.named[1].remaining, 4u);
}

TEST(Loops, SaysWhenOneLoopCannotTellItsVectorsApart) {
    MadeUpNetwork made = Complete(3, 7);
    made.network.vectors[2].vector[1] += 0.2;
    const LoopReport report = FindLoops(made.network);
    ASSERT_EQ(report.named.size(), 1u);
    EXPECT_EQ(report.named[0].vector, 0u);
    EXPECT_THAT(report.named[0].equals, ElementsAre(1u, 2u));
}

TEST(Loops, RepeatedBaselinesAreComparedRoundInTheOrderOfTime) {
    MadeUpNetwork made(8);
    made.AddStations(2, 5e3);
    for (int day = 0; day < 4; ++day) {
        made.AddVector(day % 2 ? 1 : 0, day % 2 ? 0 : 1, std::to_string(day));
        made.network.vectors.back().epoch = {2100, 86400.0 * (4 - day)};
    }
    made.network.vectors[1].vector[2] += 0.1;
    const LoopReport report = FindLoops(made.network);
    EXPECT_EQ(report.repeated.found, 4u);
    EXPECT_EQ(report.repeated.bad, 2u);
    ASSERT_EQ(report.named.size(), 1u);
    EXPECT_EQ(report.named[0].vector, 1u);
    EXPECT_EQ(report.named[0].loops, 2u);
    for (const Loop& loop : report.loops) {
        const std::size_t a = loop.sides[0].vector, b = loop.sides[1].vector;
        EXPECT_TRUE(a == b + 1 || (a == 0 && b == 3)) << a << " " << b;
    }
}

TEST(Loops, EveryRepeatedVectorStandsInATriangleFirstInThatOfItsSession) {
    MadeUpNetwork made(9);
    made.AddStations(3, 5e3);
    made.AddVector(0, 1, "a");
    made.AddVector(0, 1, "b");
    made.AddVector(1, 2, "b");
    made.AddVector(2, 0, "c");
    made.AddVector(2, 0, "b");
    const LoopReport report = FindLoops(made.network);
    std::set<std::size_t> seen;
    int ofOneSession = 0;
    for (const Loop& loop : report.loops) {
        if (loop.kind == LoopKind::kTriangle) {
            for (const LoopSide& side : loop.sides) {
                seen.insert(side.vector);
            }
            ofOneSession += loop.isOfOneSession ? 1 : 0;
        }
    }
    EXPECT_THAT(seen, ElementsAre(0u, 1u, 2u, 3u, 4u));
    EXPECT_EQ(ofOneSession, 1);
}

TEST(Loops, CentringEntersWhereSessionsMeetAndCancelsWithinOne) {
    MadeUpNetwork made = Complete(3, 10);
    LoopOptions options;
    options.added.centringHorizontal = 0.005;
    options.added.centringVertical = 0.003;
    const LoopReport without = FindLoops(made.network);
    const LoopReport within = FindLoops(made.network, options);
    EXPECT_EQ(within.loops[0].covariance, without.loops[0].covariance);
    EXPECT_TRUE(within.loops[0].isOfOneSession);

    for (NetworkVector& vector : made.network.vectors) {
        vector.session = vector.id;
    }
    const LoopReport between = FindLoops(made.network, options);
    EXPECT_FALSE(between.loops[0].isOfOneSession);
    const Vector3& place = made.network.stations[0].approximate;
    const Vector3 before = SigmaNeu(place, without.loops[0].covariance);
    const Vector3 after = SigmaNeu(place, between.loops[0].covariance);
    // Six occupations of stations so near to each other that their local axes are the same.
    EXPECT_NEAR(after[0] * after[0] - before[0] * before[0], 6.0 * 25e-6, 1e-7);
    EXPECT_NEAR(after[1] * after[1] - before[1] * before[1], 6.0 * 25e-6, 1e-7);
    EXPECT_NEAR(after[2] * after[2] - before[2] * before[2], 6.0 * 9e-6, 1e-7);
}

TEST(Loops, PartsPerMillionWidenByTheLengthOfEachSide) {
    MadeUpNetwork made = Complete(3, 11);
    LoopOptions options;
    options.added.ppm = 2.0;
    const LoopReport without = FindLoops(made.network);
    const LoopReport with = FindLoops(made.network, options);
    double squares = 0.0;
    for (const NetworkVector& vector : made.network.vectors) {
        const double length = session::Length(vector.vector);
        squares += 4e-12 * length * length;
    }
    EXPECT_NEAR(with.loops[0].covariance[4] - without.loops[0].covariance[4], squares, 1e-12);
    EXPECT_NEAR(with.loops[0].covariance[1] - without.loops[0].covariance[1], 0.0, 1e-15);
}

TEST(Loops, ALoopIsBadAtALevelThatKnowsHowManyThereAre) {
    const LoopReport few = FindLoops(Complete(4, 12).network);
    EXPECT_EQ(few.level, 0.001);
    const LoopReport many = FindLoops(Complete(20, 12).network);  // 1140 triangles
    EXPECT_DOUBLE_EQ(many.level, LevelOfEach(0.05, 1140));
}

TEST(Loops, AThousandVectorsAreQuickAndWhatIsNotListedIsCounted) {
    MadeUpNetwork made = Complete(45, 13);
    made.Observe();
    made.network.vectors[500].vector[0] += 1.0;
    const auto begin = std::chrono::steady_clock::now();
    LoopOptions options;
    options.largestList = 200;
    const LoopReport report = FindLoops(made.network, options);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
    RecordProperty("milliseconds", static_cast<int>(1e3 * seconds.count()));
    EXPECT_EQ(report.triangles.found, 14190u);
    EXPECT_EQ(report.triangles.listed, 200u);
    EXPECT_EQ(report.triangles.bad, 43u);
    EXPECT_EQ(report.loops.size(), 200u);
    EXPECT_TRUE(report.loops[42].isBad);
    EXPECT_FALSE(report.loops[43].isBad);
    EXPECT_EQ(report.named.front().vector, 500u);
    EXPECT_EQ(report.named.front().loops, 43u);

    options.largestNumber = 1000;
    const LoopReport bounded = FindLoops(made.network, options);
    EXPECT_FALSE(bounded.triangles.isComplete);
    EXPECT_EQ(bounded.triangles.found, 1000u);
}

TEST(Loops, UnusableVectorsCloseNothing) {
    MadeUpNetwork made = Complete(4, 14);
    made.network.vectors[0].covariance[0] = -1e-6;
    made.network.vectors[1].rover = "nowhere";
    EXPECT_EQ(FindLoops(made.network).triangles.found, 1u);
}

TEST(Loops, RecordsThatContradictEachOtherAreNamed) {
    MadeUpNetwork made = Complete(3, 15);
    Network twoOfOneName = made.network;
    twoOfOneName.stations[2].name = "S0";
    EXPECT_THAT(MessageOf(twoOfOneName), HasSubstr("two stations are called S0"));
    Network twoOfOneId = made.network;
    twoOfOneId.vectors[2].id = "V1";
    EXPECT_THAT(MessageOf(twoOfOneId), HasSubstr("two vectors have the id V1"));
    Network nowhere = made.network;
    nowhere.stations[1].approximate = {0.0, 0.0, 0.0};
    EXPECT_THAT(MessageOf(nowhere), HasSubstr("station S1 has no position"));
    nowhere.stations[1].approximate = {std::numeric_limits<double>::quiet_NaN(), 0.0, 6.4e6};
    EXPECT_THAT(MessageOf(nowhere), HasSubstr("station S1 has no position"));
    EXPECT_EQ(FindLoops(Network{}).loops.size(), 0u);
}

}  // namespace
}  // namespace vornel::network
