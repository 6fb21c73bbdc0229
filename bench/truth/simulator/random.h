// Random numbers that depend on a seed and a name alone: every effect draws from streams of its own,
// so that switching one off leaves all others as they were, and a session can be made again in part.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace vornel::rough {

// xoshiro256++ (Blackman and Vigna 2021, "Scrambled linear pseudorandom number generators"),
// seeded by splitmix64. The distributions are written out here: those of the standard library
// differ from one implementation to the next.
class Random {
  public:
    // The stream of an effect, told apart further by up to three numbers (satellite, station, ...).
    Random(std::uint64_t seed, std::string_view effect, std::uint64_t a = 0, std::uint64_t b = 0,
           std::uint64_t c = 0);

    std::uint64_t Bits();
    double Uniform();                            // in [0, 1)
    double Uniform(double low, double high);     // in [low, high)
    double LogUniform(double low, double high);  // the logarithm is uniform; both positive
    double Normal();                             // mean 0, standard deviation 1
    double Normal(double mean, double sigma) { return mean + sigma * Normal(); }
    double Exponential(double mean);
    int Integer(int low, int high);  // both ends inside
    bool Chance(double probability) { return Uniform() < probability; }
    // An index, each with the probability of its weight. The weights have a positive sum.
    std::size_t Choose(const std::vector<double>& weights);

  private:
    std::array<std::uint64_t, 4> state_{};
    double spare_ = 0.0;
    bool hasSpare_ = false;
};

// A stationary Gauss-Markov process of first order at the times it is asked for, in ascending order.
class GaussMarkov {
  public:
    GaussMarkov(double sigma, double correlationTime, Random& random)
        : sigma_(sigma), correlationTime_(correlationTime), value_(sigma * random.Normal()) {}

    // The value at `seconds` after the last one asked for.
    double After(double seconds, Random& random);

  private:
    double sigma_;
    double correlationTime_;  // s
    double value_;
};

}  // namespace vornel::rough
