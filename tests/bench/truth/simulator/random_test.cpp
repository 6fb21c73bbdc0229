#include "simulator/random.h"

#include <gtest/gtest.h>

#include <cmath>

#include "effect.h"
#include "simulator/cosine.h"

namespace vornel::rough {
namespace {

TEST(Random, StreamsRepeatAndDifferByEverySeedAndName) {
    Random a(1, "noise", 2, 3), b(1, "noise", 2, 3);
    EXPECT_EQ(a.Bits(), b.Bits());
    const std::uint64_t first = Random(1, "noise", 2, 3).Bits();
    EXPECT_NE(first, Random(2, "noise", 2, 3).Bits());
    EXPECT_NE(first, Random(1, "clock", 2, 3).Bits());
    EXPECT_NE(first, Random(1, "noise", 3, 2).Bits());
    EXPECT_NE(first, Random(1, "noise", 2, 3, 1).Bits());
}

TEST(Random, DistributionsHaveTheirMoments) {
    Random random(7, "moments");
    constexpr int kCount = 200000;
    double normal = 0.0, square = 0.0, fourth = 0.0, uniform = 0.0, exponential = 0.0;
    std::array<int, 3> chosen{};
    for (int i = 0; i < kCount; ++i) {
        const double x = random.Normal();
        normal += x / kCount;
        square += x * x / kCount;
        fourth += x * x * x * x / kCount;
        uniform += random.Uniform() / kCount;
        exponential += random.Exponential(5.0) / kCount;
        ++chosen[random.Choose({1.0, 2.0, 1.0})];
    }
    EXPECT_NEAR(normal, 0.0, 0.01);
    EXPECT_NEAR(square, 1.0, 0.01);
    EXPECT_NEAR(fourth, 3.0, 0.1);
    EXPECT_NEAR(uniform, 0.5, 0.003);
    EXPECT_NEAR(exponential, 5.0, 0.05);
    EXPECT_NEAR(chosen[1], kCount / 2, 1000);
}

TEST(GaussMarkov, KeepsItsDeviationAndCorrelatesOverItsTime) {
    Random random(8, "process");
    GaussMarkov process(3.0, 100.0, random);
    std::vector<double> values;
    for (int i = 0; i < 100000; ++i) {
        values.push_back(process.After(50.0, random));
    }
    EXPECT_NEAR(Rms(values), 3.0, 0.1);
    EXPECT_NEAR(LagCorrelation(values, 1), std::exp(-0.5), 0.02);
    EXPECT_NEAR(LagCorrelation(values, 4), std::exp(-2.0), 0.03);
}

TEST(Cosine, IsThatOfTheLibrary) {
    for (double x = -20000.0; x < 20000.0; x += 0.37) {
        ASSERT_NEAR(Cosine(x), std::cos(x), 2e-11) << x;
        ASSERT_NEAR(Sine(x), std::sin(x), 2e-11) << x;
    }
}

}  // namespace
}  // namespace vornel::rough
