// The whole-session strategy behind its flag: LAMBDA on a shrinking set, then the search in the
// position domain.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "exports/process_fixture.h"
#include "foundation/trace_capture.h"
#include "run/adjusted_session.h"

namespace vornel::test {
namespace {

using simulation::Scenario;

// A float ambiguity: cycles, and its variance.
struct Real {
    double value;
    double variance;
};

// Seven to nine whole cycles, near enough to be sure of.
constexpr Real kGood{7.02, 0.001};

class FixingStrategy : public ProcessTest {
  protected:
    void SetUp() override {
        ProcessTest::SetUp();
        const double none[3] = {};
        solver = std::make_unique<StaticSolve>(0, 0, SolveConfig(), std::vector<SDObsData>(),
                                               nullptr, nullptr, nullptr, nullptr, 1, XYZPosition(),
                                               none, none, 0.0, 1, XYZPosition(), none, none, 0.0);
    }

    // Files a float solution of independent ambiguities: satellites 1, 2, ... over ten epochs each.
    // For model 3 the second half of the list is of the second frequency.
    void FileFloat(int mode, const std::vector<Real>& reals) {
        SolveResultFloat result;
        result.mode = mode;
        const std::size_t tracks = mode == 3 ? reals.size() / 2 : reals.size();
        result.ambCov = gult::matrixT(static_cast<std::uint32_t>(reals.size()),
                                      static_cast<std::uint32_t>(reals.size()));
        for (std::size_t i = 0; i < reals.size(); ++i) {
            const auto at = static_cast<std::uint32_t>(i);
            result.ambCov(at, at) = reals[i].variance;
            if (i < tracks) {
                AmbRstInfo track;
                track.sat = static_cast<int>(i) + 1;
                track.firstEpoch = static_cast<int>(i);
                track.lastEpoch = static_cast<int>(i) + 9;
                track.firstTime = Epoch(2200, 30.0 * static_cast<double>(i));
                track.lastTime = Epoch(2200, 30.0 * static_cast<double>(i) + 270.0);
                track.rms1 = 0.003;
                track.rows1 = 10;
                track.rejected1 = 2;
                result.ambiguities.push_back(track);
            }
            AmbRstInfo& track = result.ambiguities[i % tracks];
            (i < tracks ? track.value1 : track.value2) = reals[i].value;
        }
        solver->resultManage.floatResults.push_back(result);
    }
    gult::matrixT& Covariance() { return solver->resultManage.floatResults[0].ambCov; }

    // Runs the first method; its result and how many searches it took.
    int FixByLambda(int mode) {
        reference::TraceCapture trace(4);
        answer = solver->FixByLambda(mode, out);
        const std::string text = trace.Text();
        int rounds = 0;
        for (std::size_t at = text.find("afloat:"); at != std::string::npos;
             at = text.find("afloat:", at + 1)) {
            ++rounds;
        }
        return rounds;
    }
    std::vector<int> Satellites() const {
        std::vector<int> satellites;
        for (const AmbRstInfo& track : out.ambiguities) {
            satellites.push_back(track.sat);
        }
        return satellites;
    }
    // `out` as it stood before.
    void ExpectUntouched() const {
        EXPECT_EQ(out.mode, 42);
        EXPECT_EQ(out.ratio, -3.0);
        EXPECT_TRUE(out.ambiguities.empty());
    }
    void MarkOut() {
        out = SolveResultFixed();
        out.mode = 42;
        out.ratio = -3.0;
    }

    std::unique_ptr<StaticSolve> solver;
    SolveResultFixed out;
    int answer = -1;
};

// For independent ambiguities the best vector is the rounded one, with the sum of f^2 / variance, f
// being the fractions; the second flips the one with the least (1 - 2 f) / variance.

TEST_F(FixingStrategy, ARatioThatPassesEndsTheFirstRound) {
    FileFloat(1, {{3.05, 0.01}, {-4.05, 0.01}, {12.04, 0.01}});
    EXPECT_EQ(FixByLambda(1), 1);
    EXPECT_EQ(answer, 1);
    EXPECT_EQ(out.mode, 1);
    EXPECT_NEAR(out.ratio, (0.66 + 90.0) / 0.66, 50.0);
    EXPECT_EQ(out.ratio, 99.0);  // 137, capped
    ASSERT_EQ(out.ambiguities.size(), 3u);
    EXPECT_EQ(out.ambiguities[0].value1, 3.0);
    EXPECT_EQ(out.ambiguities[1].value1, -4.0);
    EXPECT_EQ(out.ambiguities[2].value1, 12.0);
}

TEST_F(FixingStrategy, TheRatioIsThatOfTheTwoBestSums) {
    FileFloat(1, {{3.1, 0.01}, {-4.2, 0.02}, {12.04, 0.01}});
    FixByLambda(1);
    const double best = 1.0 + 2.0 + 0.16;
    EXPECT_NEAR(out.ratio, (best + 0.6 / 0.02) / best, 1e-9);
}

TEST_F(FixingStrategy, ResultsCarryTheTrackAndTheIntegerAlone) {
    FileFloat(1, {{3.05, 0.01}, {-4.05, 0.01}});
    FixByLambda(1);
    const AmbRstInfo& track = out.ambiguities[1];
    EXPECT_EQ(track.sat, 2);
    EXPECT_EQ(track.firstEpoch, 1);
    EXPECT_EQ(track.lastEpoch, 10);
    EXPECT_EQ(track.firstTime, Epoch(2200, 30.0));
    EXPECT_EQ(track.lastTime, Epoch(2200, 300.0));
    EXPECT_EQ(track.rms1, 0.0);
    EXPECT_EQ(track.rows1, 0);
    EXPECT_EQ(track.rejected1, 0);
    EXPECT_EQ(track.value2, 0.0);
}

TEST_F(FixingStrategy, OutIsResetBeforeItIsFilled) {
    FileFloat(1, {{3.05, 0.01}, {-4.05, 0.01}});
    MarkOut();
    out.dX = 5.0;
    out.ambiguities.resize(7);
    FixByLambda(1);
    EXPECT_EQ(out.dX, 0.0);
    EXPECT_EQ(out.mode, 1);
    EXPECT_EQ(out.ambiguities.size(), 2u);
}

TEST_F(FixingStrategy, TheTrackThatSpoilsTheRatioGoes) {
    std::vector<Real> reals(8, kGood);
    reals[3] = {5.48, 0.01};
    FileFloat(1, reals);
    EXPECT_EQ(FixByLambda(1), 2);
    EXPECT_EQ(Satellites(), (std::vector<int>{1, 2, 3, 5, 6, 7, 8}));
    EXPECT_GT(out.ratio, 1.8);
    for (const AmbRstInfo& track : out.ambiguities) {
        EXPECT_EQ(track.value1, 7.0);
    }
}

TEST_F(FixingStrategy, TracksFarFromAnIntegerGoBesideTheOneThatDiffers) {
    // The second vector flips satellite 1. Satellite 2 goes with it at 0.36, a round later at 0.34.
    for (const auto& [fraction, rounds] : {std::pair{0.36, 2}, {0.34, 3}}) {
        SetUp();
        std::vector<Real> reals(9, kGood);
        reals[0] = {5.45, 1.0};
        reals[1] = {5.0 + fraction, 0.5};
        FileFloat(1, reals);
        EXPECT_EQ(FixByLambda(1), rounds);
        EXPECT_EQ(Satellites(), (std::vector<int>{3, 4, 5, 6, 7, 8, 9}));
    }
}

TEST_F(FixingStrategy, SixTracksOrFewerGetOneRound) {
    FileFloat(1, std::vector<Real>(6, {4.3, 1.0}));
    EXPECT_EQ(FixByLambda(1), 1);
    EXPECT_EQ(answer, 1);
    EXPECT_EQ(out.ambiguities.size(), 6u);
    EXPECT_NEAR(out.ratio, (0.54 + 0.4) / 0.54, 1e-9);  // below the threshold, and no failure
}

TEST_F(FixingStrategy, ShrinkingStopsAtSixTracks) {
    FileFloat(1, std::vector<Real>(8, {4.3, 1.0}));
    EXPECT_EQ(FixByLambda(1), 2);
}

TEST_F(FixingStrategy, ShrinkingStopsAtHalfTheTracksWhenThatIsMore) {
    // 15 tracks, of which one goes in each round: 15 down to 8.
    FileFloat(1, std::vector<Real>(15, {4.3, 3.0}));
    EXPECT_EQ(FixByLambda(1), 8);
}

TEST_F(FixingStrategy, WhenEveryShrinkingFailsTheFullSetComesBackWithTheFirstRatio) {
    FileFloat(1, std::vector<Real>(12, {4.3, 1.0}));
    EXPECT_EQ(FixByLambda(1), 6);  // 12 tracks down to 7
    EXPECT_EQ(answer, 1);
    EXPECT_EQ(out.ambiguities.size(), 12u);
    EXPECT_NEAR(out.ratio, (1.08 + 0.4) / 1.08, 1e-9);
}

TEST_F(FixingStrategy, ReservedMode0StopsAfterTheFirstRound) {
    std::vector<Real> reals(8, kGood);
    reals[3] = {5.48, 0.01};
    FileFloat(1, reals);
    solver->config.reservedMode = 0;
    EXPECT_EQ(FixByLambda(1), 1);
    EXPECT_EQ(answer, 1);
    EXPECT_EQ(out.ambiguities.size(), 8u);
    EXPECT_LT(out.ratio, 1.8);
}

TEST_F(FixingStrategy, ARatioAtTheThresholdDoesNotPass) {
    std::vector<Real> reals(8, kGood);
    reals[3] = {5.3, 0.2};
    FileFloat(1, reals);
    FixByLambda(1);
    solver->config.ratioThreshold = 0.1;
    EXPECT_EQ(FixByLambda(1), 1);
    const double ratio = out.ratio;
    ASSERT_LT(ratio, 99.0);
    solver->config.ratioThreshold = ratio;
    EXPECT_EQ(FixByLambda(1), 2);
    solver->config.ratioThreshold = std::nextafter(ratio, 0.0);
    EXPECT_EQ(FixByLambda(1), 1);
}

TEST_F(FixingStrategy, AThresholdOfTheCapIsNeverPassed) {
    FileFloat(1, std::vector<Real>(8, {7.001, 0.0001}));
    solver->config.ratioThreshold = 99.0;
    EXPECT_GT(FixByLambda(1), 1);
    EXPECT_EQ(out.ratio, 99.0);
    EXPECT_EQ(out.ambiguities.size(), 8u);  // the first result
}

// Nine tracks: two that hang together in the ratio 5 to 1, so that their best integers may lie
// cycles away, one that the second vector flips, and six good ones.
std::vector<Real> WithAHangingPair(double along) {
    std::vector<Real> reals(9, kGood);
    reals[0] = {5.0 * along + 0.001, 0.0};
    reals[1] = {along - 0.001, 0.0};
    reals[2] = {4.34, 1e4};
    return reals;
}
void HangTogether(gult::matrixT& covariance) {
    const double u[2] = {5.0 / std::sqrt(26.0), 1.0 / std::sqrt(26.0)};
    const double w[2] = {u[1], -u[0]};
    for (std::uint32_t i = 0; i < 2; ++i) {
        for (std::uint32_t j = 0; j < 2; ++j) {
            covariance(i, j) = 2500.0 * u[i] * u[j] + 0.0004 * w[i] * w[j];
        }
    }
}

TEST_F(FixingStrategy, ADeviationOfMoreThanTwoAndAThirdCyclesGoesWithoutTheFlippedOnes) {
    // Both of the pair are over 0.35 anyway. Up to 2.35 cycles the flipped track goes with them,
    // and six are left after one round; above it stays for another.
    for (const auto& [along, rounds] : {std::pair{0.46, 1}, {0.48, 2}}) {
        SetUp();
        FileFloat(1, WithAHangingPair(along));
        HangTogether(Covariance());
        EXPECT_EQ(FixByLambda(1), rounds) << along;
        EXPECT_EQ(out.ambiguities.size(), 9u);
        EXPECT_EQ(out.ambiguities[0].value1, 0.0);
        EXPECT_EQ(out.ambiguities[1].value1, 0.0);
    }
}

TEST_F(FixingStrategy, EqualBestAndSecondLeaveNothingToShrinkBy) {
    // A value that is whole to the last bit is met again as its own neighbour, so that best and
    // second are the same: none differs, none is far from its integer, and the ratio stays at 1.
    FileFloat(1, {{5.0, 0.01}, kGood, kGood, kGood, kGood, kGood, kGood, kGood});
    EXPECT_EQ(FixByLambda(1), 1);
    EXPECT_EQ(answer, 1);
    EXPECT_EQ(out.ratio, 1.0);
    ASSERT_EQ(out.ambiguities.size(), 8u);
    EXPECT_EQ(out.ambiguities[0].value1, 5.0);
    EXPECT_EQ(out.ambiguities[7].value1, 7.0);
}

TEST_F(FixingStrategy, NothingToSearchNeedsNoSearch) {
    for (const bool lambda : {true, false}) {
        SetUp();
        FileFloat(1, std::vector<Real>(4, {0.0, 0.0}));
        if (lambda) {
            EXPECT_EQ(FixByLambda(1), 0);
        } else {
            answer = solver->FixBySearch(1, out);
        }
        EXPECT_EQ(answer, 1);
        EXPECT_EQ(out.ratio, 99.0);
        ASSERT_EQ(out.ambiguities.size(), 4u);
        EXPECT_EQ(out.ambiguities[2].value1, 0.0);
    }
}

TEST_F(FixingStrategy, ASingleAmbiguityIsSearched) {
    FileFloat(1, {{3.3, 0.01}});
    EXPECT_EQ(FixByLambda(1), 1);
    EXPECT_EQ(answer, 1);
    ASSERT_EQ(out.ambiguities.size(), 1u);
    EXPECT_EQ(out.ambiguities[0].value1, 3.0);
    EXPECT_NEAR(out.ratio, (0.7 * 0.7) / (0.3 * 0.3), 1e-9);  // 3 against 4
}

TEST_F(FixingStrategy, WithoutFloatAmbiguitiesBothMethodsFailAndTouchNothing) {
    for (const bool empty : {true, false}) {
        SetUp();
        if (empty) {
            FileFloat(1, {});
        }
        MarkOut();
        EXPECT_EQ(solver->FixByLambda(1, out), 0);
        EXPECT_EQ(solver->FixBySearch(1, out), 0);
        EXPECT_EQ(solver->FixAmbiguity(1, 1, out), 0);
        ExpectUntouched();
    }
}

TEST_F(FixingStrategy, ABestSumOfZeroFails) {
    FileFloat(1, {{3.0, 0.01}, {4.0, 0.01}});
    MarkOut();
    FixByLambda(1);
    EXPECT_EQ(answer, 0);
    ExpectUntouched();
}

TEST_F(FixingStrategy, ACovarianceThatIsNoneFails) {
    FileFloat(1, {{3.1, 0.01}, {4.2, -0.01}});
    MarkOut();
    FixByLambda(1);
    EXPECT_EQ(answer, 0);
    ExpectUntouched();
}

TEST_F(FixingStrategy, Model3HasTheFirstFrequenciesOfAllTracksAheadOfTheSecond) {
    FileFloat(3, {{3.05, 0.01},
                  {-4.05, 0.01},
                  {12.04, 0.01},
                  {103.05, 0.01},
                  {-104.05, 0.01},
                  {112.04, 0.01}});
    FixByLambda(3);
    ASSERT_EQ(out.ambiguities.size(), 3u);
    EXPECT_EQ(out.mode, 3);
    EXPECT_EQ(out.ambiguities[1].value1, -4.0);
    EXPECT_EQ(out.ambiguities[1].value2, -104.0);
    EXPECT_EQ(out.ambiguities[2].value1, 12.0);
    EXPECT_EQ(out.ambiguities[2].value2, 112.0);
}

TEST_F(FixingStrategy, InModel3ATrackGoesWithBothFrequencies) {
    std::vector<Real> reals(16, kGood);
    for (std::size_t i = 0; i < 8; ++i) {
        reals[8 + i].value = 50.02 + static_cast<double>(i);
    }
    reals[8 + 2] = {5.48, 0.01};  // the second frequency of satellite 3
    FileFloat(3, reals);
    EXPECT_EQ(FixByLambda(3), 2);
    EXPECT_EQ(Satellites(), (std::vector<int>{1, 2, 4, 5, 6, 7, 8}));
    EXPECT_EQ(out.ambiguities[2].value2, 53.0);
    EXPECT_EQ(out.ambiguities[6].value2, 57.0);
}

TEST_F(FixingStrategy, TheTraceShowsTheFloatAndBothIntegerVectors) {
    FileFloat(1, {{3.125, 0.01}, {-4.25, 0.0625}});
    reference::TraceCapture trace(4);
    solver->FixByLambda(1, out);
    // The second vector flips satellite 2.
    EXPECT_EQ(trace.Text(),
              "4 afloat:\n         3.125        -4.250\n"
              "4 afixed:\n         3.000        -4.000\n"
              "4 afixed:\n         3.000        -5.000\n");
}

// --- the dispatcher

TEST_F(FixingStrategy, AFiledRatioThatPassesNeedsNoSearch) {
    // Without degrees of freedom the search fails at once.
    FileFloat(1, {{3.05, 0.01}, {-4.05, 0.01}});
    SolveResultFixed filed;
    filed.mode = 1;
    filed.ratio = 1.8;  // at the threshold is enough
    solver->resultManage.fixedResults.push_back(filed);
    EXPECT_EQ(solver->FixAmbiguity(1, 1, out), 1);
    EXPECT_EQ(out.ambiguities.size(), 2u);
    solver->resultManage.fixedResults[0].ratio = 1.79;
    EXPECT_EQ(solver->FixAmbiguity(1, 1, out), 0);
    EXPECT_EQ(out.ambiguities.size(), 2u);  // the first method's, all the same
}

TEST_F(FixingStrategy, WithoutAFiledRatioAFailedSearchFailsTheFixing) {
    FileFloat(1, {{3.05, 0.01}, {-4.05, 0.01}});
    EXPECT_EQ(solver->FixAmbiguity(1, 1, out), 0);
    EXPECT_EQ(out.ratio, 99.0);
    EXPECT_EQ(out.ambiguities.size(), 2u);
}

TEST_F(FixingStrategy, AnyFlagButOneFixesPeriodByPeriod) {
    for (const int flag : {0, 2, -1}) {
        // No equations, no period: the per-period strategy finds nothing, and says so in the
        // record.
        FileFloat(1, {{3.05, 0.01}, {-4.05, 0.01}});
        out = SolveResultFixed();
        EXPECT_EQ(solver->FixAmbiguity(flag, 1, out), 0);
        EXPECT_EQ(out.mode, 1);
        EXPECT_EQ(out.ratio, 1.0);
        EXPECT_TRUE(out.ambiguities.empty());
    }
}

// --- on a session

class WholeSessionFixing : public ProcessTest, public ::testing::WithParamInterface<int> {
  protected:
    // A session after its float solution of the mode.
    static std::unique_ptr<AdjustedSession> AfterFloat(const Scenario& scenario, int mode) {
        auto staged = std::make_unique<AdjustedSession>(scenario);
        if (mode == 6) {
            staged->FileWideLane();
        }
        EXPECT_EQ(staged->solver->FloatSolveMulEq(mode), 1);
        return staged;
    }
    static void ExpectTrue(const AdjustedSession& staged, const SolveResultFixed& result, int mode,
                           std::size_t tracks) {
        EXPECT_EQ(result.mode, mode);
        EXPECT_EQ(result.ambiguities.size(), tracks);
        // LAMBDA's come back from its transformation to the last digits; the fixed solution rounds
        // them.
        for (const AmbRstInfo& track : result.ambiguities) {
            EXPECT_NEAR(track.value1, staged.TrueAmbiguity(mode, 0, track.sat, track.firstEpoch),
                        1e-6)
                << track.sat;
            if (mode == 3) {
                EXPECT_NEAR(track.value2, staged.TrueAmbiguity(3, 1, track.sat, track.firstEpoch),
                            1e-6);
            }
        }
    }
};
INSTANTIATE_TEST_SUITE_P(Models, WholeSessionFixing, ::testing::Range(1, 7),
                         [](const auto& model) { return "Model" + std::to_string(model.param); });

TEST_P(WholeSessionFixing, ByLambdaFindsTheTrueIntegersOfFourSystems) {
    const int mode = GetParam();
    Scenario scenario = QuietScenario(6, 5, 6, mode == 6 ? 0 : 5, mode);
    scenario.phaseNoise = 0.0005;
    const auto staged = AfterFloat(scenario, mode);
    SolveResultFixed out;
    EXPECT_EQ(staged->solver->FixByLambda(mode, out), 1);
    EXPECT_GT(out.ratio, 1.8);
    ExpectTrue(*staged, out, mode, staged->Float().ambiguities.size());
}

TEST_P(WholeSessionFixing, BySearchFindsTheTrueIntegers) {
    const int mode = GetParam();
    Scenario scenario =
        mode == 3 ? QuietScenario(5, 0, 0, 0, mode) : QuietScenario(4, 3, 3, 0, mode);
    scenario.phaseNoise = 0.0005;
    scenario.epochCount = 60;
    const auto staged = AfterFloat(scenario, mode);
    SolveResultFixed out;
    EXPECT_EQ(staged->solver->FixBySearch(mode, out), 1);
    EXPECT_GT(out.ratio, 1.8);
    ExpectTrue(*staged, out, mode, staged->Float().ambiguities.size());
}

TEST_P(WholeSessionFixing, BothMethodsTogetherEndInTheTrueVector) {
    const int mode = GetParam();
    Scenario scenario =
        mode == 3 ? QuietScenario(5, 0, 0, 0, mode) : QuietScenario(5, 0, 3, 0, mode);
    scenario.troposphere = simulation::Troposphere::kOfFixed;
    scenario.epochCount = 60;
    const auto staged = AfterFloat(scenario, mode);
    SolveResultFixed out;
    ASSERT_EQ(staged->solver->FixAmbiguity(1, mode, out), 1);
    ASSERT_EQ(staged->solver->FixedSolveMulEq(mode, out), 1);
    EXPECT_LT(simulation::ErrorOf(out, staged->session), 3e-4);
}

class WholeSessionSearch : public WholeSessionFixing {};

TEST_F(WholeSessionSearch, GalileoHasNoRowsAndDropsOutOfASetThatMayShrinkBelowSix) {
    // Every integer of a Galileo track scores the same, so the ratio is 1 until the last of them is
    // gone. Independent ambiguities let the search try them.
    Scenario scenario = QuietScenario(6, 0, 0, 3, 1);
    scenario.epochCount = 60;
    const auto staged = AfterFloat(scenario, 1);
    ASSERT_EQ(staged->Float().ambiguities.size(), 7u);
    gult::matrixT& covariance = staged->solver->resultManage.floatResults[0].ambCov;
    covariance.SetIdentity();
    covariance *= 0.01;
    SolveResultFixed out;
    EXPECT_EQ(staged->solver->FixBySearch(1, out), 1);
    EXPECT_GT(out.ratio, 1.8);
    ExpectTrue(*staged, out, 1, 5);  // half of seven is the least here, not six
    for (const AmbRstInfo& track : out.ambiguities) {
        EXPECT_EQ(SplitSatNumber(track.sat), kGps);
    }
}

TEST_F(WholeSessionSearch, AFiledRatioAboveThatOfTheSearchFailsTheFixing) {
    Scenario scenario = QuietScenario(6, 0, 0, 0, 1);
    scenario.epochCount = 60;
    scenario.phaseNoise = 0.01;
    const auto staged = AfterFloat(scenario, 1);
    staged->solver->config.ratioThreshold = 0.5;
    SolveResultFixed searched, out;
    ASSERT_EQ(staged->solver->FixBySearch(1, searched), 1);
    ASSERT_LT(searched.ratio, 90.0);
    staged->solver->config.ratioThreshold = 98.0;
    staged->solver->config.reservedMode = 0;
    SolveResultFixed filed;
    filed.mode = 1;
    filed.ratio = searched.ratio + 0.1;
    staged->solver->resultManage.fixedResults.push_back(filed);
    EXPECT_EQ(staged->solver->FixAmbiguity(1, 1, out), 0);
    staged->solver->resultManage.fixedResults[0].ratio = searched.ratio;
    EXPECT_EQ(staged->solver->FixAmbiguity(1, 1, out), 1);
}

TEST_F(WholeSessionSearch, WhenLambdaFailsTheSearchsResultIsTaken) {
    Scenario scenario = QuietScenario(6, 0, 0, 0, 1);
    scenario.epochCount = 60;
    const auto staged = AfterFloat(scenario, 1);
    gult::matrixT& covariance = staged->solver->resultManage.floatResults[0].ambCov;
    covariance(4, 4) = -covariance(4, 4) - 1e-6;  // no covariance; the search takes its magnitude
    SolveResultFixed byLambda, out;
    ASSERT_EQ(staged->solver->FixByLambda(1, byLambda), 0);
    EXPECT_EQ(staged->solver->FixAmbiguity(1, 1, out), 1);
    ExpectTrue(*staged, out, 1, 5);
}

TEST_F(WholeSessionSearch, EpochsThatHoldNoDoubleDifferencePlayNoPart) {
    // Each kind of such an epoch holds phases that would spoil the search if they were used: before
    // the first period; in a period that lost its references; without the reference; with nothing
    // but the reference.
    Scenario scenario = QuietScenario(6, 0, 0, 0, 1);
    scenario.epochCount = 60;
    scenario.phaseNoise = 0.0005;
    const auto staged = AfterFloat(scenario, 1);
    StaticSolve& solver = *staged->solver;
    const SolveResultFixed truth = staged->TrueFix(1);
    const int reference = staged->ReferenceOf(kGps);
    for (const int e : {0, 1, 20, 30, 58, 59}) {
        for (const int sat : staged->session.satellites) {
            staged->JumpAt(sat, e, 37.3 * sat, 0.0);
        }
    }
    StaticPeriod lost = solver.periods[0];
    solver.periods[0].startIndex = 2;
    solver.periods[0].endIndex = 57;
    lost.startIndex = 58;
    lost.refSatGps = -1;
    solver.periods.push_back(lost);
    staged->DropOut(reference, 20, 20);
    staged->Epoch(30).activeSats = {reference};
    SolveResultFixed out;
    EXPECT_EQ(solver.FixBySearch(1, out), 1);
    EXPECT_GT(out.ratio, 1.8);
    ASSERT_EQ(out.ambiguities.size(), 5u);
    for (const AmbRstInfo& track : out.ambiguities) {
        EXPECT_EQ(track.value1, AdjustedSession::TrackOf(truth.ambiguities, track.sat).value1);
    }
}

TEST_F(WholeSessionSearch, ASystemWithoutItsReferencePlaysNoPartInThatEpoch) {
    // Its phases there would spoil the search; the other system's count on.
    Scenario scenario = QuietScenario(5, 0, 3, 0, 1);
    scenario.epochCount = 60;
    scenario.phaseNoise = 0.0005;
    const auto staged = AfterFloat(scenario, 1);
    const int reference = staged->ReferenceOf(kBds);
    for (const int e : {20, 21, 40}) {
        staged->DropOut(reference, e, e);
        for (const int sat : staged->session.satellites) {
            if (SplitSatNumber(sat) == kBds) {
                staged->JumpAt(sat, e, 37.3 * sat, 0.0);
            }
        }
    }
    SolveResultFixed out;
    EXPECT_EQ(staged->solver->FixBySearch(1, out), 1);
    EXPECT_GT(out.ratio, 1.8);
    ExpectTrue(*staged, out, 1, 6);
}

}  // namespace
}  // namespace vornel::test
