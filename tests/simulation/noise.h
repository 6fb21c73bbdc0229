// Random numbers that depend on what they are for and on nothing else: leaving a satellite out, or
// an epoch, changes no other value, and every compiler draws the same.
#pragma once

#include <cmath>
#include <cstdint>
#include <initializer_list>

namespace vornel::simulation {

// A hash of the key (SplitMix64, Steele et al. 2014, step by step over its parts).
inline std::uint64_t HashOf(std::initializer_list<std::uint64_t> key) {
    std::uint64_t state = 0;
    for (const std::uint64_t part : key) {
        state += part + 0x9E3779B97F4A7C15ULL;
        state = (state ^ (state >> 30)) * 0xBF58476D1CE4E5B9ULL;
        state = (state ^ (state >> 27)) * 0x94D049BB133111EBULL;
        state ^= state >> 31;
    }
    return state;
}

// Above 0, at most 1.
inline double Uniform(std::initializer_list<std::uint64_t> key) {
    return (static_cast<double>(HashOf(key) >> 11) + 1.0) / 9007199254740992.0;
}

// Mean 0, standard deviation 1 (Box and Muller 1958).
inline double Gaussian(std::uint64_t seed, std::uint64_t use, std::uint64_t satellite,
                       std::uint64_t epoch) {
    const double radius = std::sqrt(-2.0 * std::log(Uniform({seed, use, satellite, epoch, 0})));
    return radius * std::cos(6.283185307179586 * Uniform({seed, use, satellite, epoch, 1}));
}

// A whole number from -limit to limit.
inline double WholeNumber(std::uint64_t seed, std::uint64_t use, std::uint64_t satellite,
                          std::uint64_t signal, int limit) {
    const auto count = static_cast<std::uint64_t>(2 * limit + 1);
    return static_cast<double>(HashOf({seed, use, satellite, signal, 2}) % count) -
           static_cast<double>(limit);
}

}  // namespace vornel::simulation
