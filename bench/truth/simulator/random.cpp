#include "random.h"

#include <cmath>
#include <numbers>

namespace vornel::rough {
namespace {

std::uint64_t SplitMix(std::uint64_t& x) {
    x += 0x9e3779b97f4a7c15ULL;
    std::uint64_t z = x;
    z = (z ^ (z >> 30U)) * 0xbf58476d1ce4e5b9ULL;
    z = (z ^ (z >> 27U)) * 0x94d049bb133111ebULL;
    return z ^ (z >> 31U);
}

std::uint64_t RotatedLeft(std::uint64_t x, unsigned k) {
    return (x << k) | (x >> (64U - k));
}

// FNV-1a.
std::uint64_t HashOf(std::string_view text) {
    std::uint64_t hash = 0xcbf29ce484222325ULL;
    for (const char c : text) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3ULL;
    }
    return hash;
}

}  // namespace

Random::Random(std::uint64_t seed, std::string_view effect, std::uint64_t a, std::uint64_t b,
               std::uint64_t c) {
    std::uint64_t x = seed;
    for (const std::uint64_t part : {HashOf(effect), a, b, c}) {
        x = SplitMix(x) ^ part;
    }
    for (std::uint64_t& word : state_) {
        word = SplitMix(x);
    }
}

std::uint64_t Random::Bits() {
    const std::uint64_t result = RotatedLeft(state_[0] + state_[3], 23) + state_[0];
    const std::uint64_t t = state_[1] << 17U;
    state_[2] ^= state_[0];
    state_[3] ^= state_[1];
    state_[1] ^= state_[2];
    state_[0] ^= state_[3];
    state_[2] ^= t;
    state_[3] = RotatedLeft(state_[3], 45);
    return result;
}

double Random::Uniform() {
    return static_cast<double>(Bits() >> 11U) * 0x1.0p-53;
}

double Random::Uniform(double low, double high) {
    return low + (high - low) * Uniform();
}

double Random::LogUniform(double low, double high) {
    return low * std::exp(std::log(high / low) * Uniform());
}

// Polar method of Marsaglia.
double Random::Normal() {
    if (hasSpare_) {
        hasSpare_ = false;
        return spare_;
    }
    double u = 0.0, v = 0.0, s = 0.0;
    do {
        u = 2.0 * Uniform() - 1.0;
        v = 2.0 * Uniform() - 1.0;
        s = u * u + v * v;
    } while (s >= 1.0 || s == 0.0);
    const double factor = std::sqrt(-2.0 * std::log(s) / s);
    spare_ = v * factor;
    hasSpare_ = true;
    return u * factor;
}

double Random::Exponential(double mean) {
    return -mean * std::log(1.0 - Uniform());
}

int Random::Integer(int low, int high) {
    const auto count = static_cast<double>(high) - static_cast<double>(low) + 1.0;
    return low + static_cast<int>(std::floor(count * Uniform()));
}

std::size_t Random::Choose(const std::vector<double>& weights) {
    double sum = 0.0;
    for (const double weight : weights) {
        sum += weight;
    }
    double left = sum * Uniform();
    for (std::size_t i = 0; i + 1 < weights.size(); ++i) {
        left -= weights[i];
        if (left < 0.0) {
            return i;
        }
    }
    return weights.size() - 1;
}

double GaussMarkov::After(double seconds, Random& random) {
    const double kept = std::exp(-seconds / correlationTime_);
    value_ = kept * value_ + sigma_ * std::sqrt(1.0 - kept * kept) * random.Normal();
    return value_;
}

}  // namespace vornel::rough
