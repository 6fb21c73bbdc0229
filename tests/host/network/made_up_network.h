// Networks of known truth: stations on the earth, vectors with errors drawn from their covariances.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "network/records.h"

namespace vornel::test {

using network::Matrix3;
using network::Network;
using network::NetworkVector;
using network::Vector3;

// Runs of an experiment by chance: fewer where a sanitizer makes each take a hundred times as long.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr int kShareOfRuns = 10;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
inline constexpr int kShareOfRuns = 10;
#else
inline constexpr int kShareOfRuns = 1;
#endif
#else
inline constexpr int kShareOfRuns = 1;
#endif

// Whether `count` of `runs` is what a probability gives, within three standard deviations.
inline void ExpectShare(int count, int runs, double probability) {
    EXPECT_NEAR(static_cast<double>(count) / runs, probability,
                3.0 * std::sqrt(probability * (1.0 - probability) / runs));
}

// Lower Cholesky factor of a 3x3 matrix, row by row.
inline Matrix3 Root(const Matrix3& m) {
    Matrix3 l{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j <= i; ++j) {
            double sum = m[3 * i + j];
            for (std::size_t k = 0; k < j; ++k) {
                sum -= l[3 * i + k] * l[3 * j + k];
            }
            l[3 * i + j] = i == j ? std::sqrt(sum) : sum / l[3 * j + j];
        }
    }
    return l;
}

class MadeUpNetwork {
  public:
    explicit MadeUpNetwork(unsigned seed) : random_(seed) {}

    // A station `north` and `east` metres (on the sphere's tangent) from the middle of the network.
    void AddStation(const std::string& name, double north, double east, double up = 0.0) {
        const double latitude = 0.85, longitude = 0.22, radius = 6.37e6 + up;
        const double phi = latitude + north / 6.37e6;
        const double lambda = longitude + east / (6.37e6 * std::cos(latitude));
        truth.push_back({radius * std::cos(phi) * std::cos(lambda),
                         radius * std::cos(phi) * std::sin(lambda), radius * std::sin(phi)});
        Vector3 approximate = truth.back();
        for (double& value : approximate) {
            value += 10.0 * Normal();
        }
        network.stations.push_back({name, approximate, {}});
    }

    // `count` stations in a square of `side` metres.
    void AddStations(std::size_t count, double side) {
        std::uniform_real_distribution<double> place(-0.5 * side, 0.5 * side);
        for (std::size_t i = 0; i < count; ++i) {
            const double north = place(random_), east = place(random_);
            AddStation("S" + std::to_string(i), north, east);
        }
    }

    // A vector without error, with a full covariance of standard deviations of a few millimetres.
    void AddVector(std::size_t base, std::size_t rover, const std::string& session = "1") {
        NetworkVector vector;
        vector.id = "V" + std::to_string(network.vectors.size());
        vector.session = session;
        vector.base = network.stations[base].name;
        vector.rover = network.stations[rover].name;
        vector.covariance = DrawCovariance(0.003);
        ends.emplace_back(base, rover);
        network.vectors.push_back(vector);
        Observe(network.vectors.size() - 1, false);
    }

    // Of standard deviations round `sigma` (m), correlated.
    Matrix3 DrawCovariance(double sigma) {
        std::uniform_real_distribution<double> entry(-1.0, 1.0);
        Matrix3 root{};
        for (double& value : root) {
            value = sigma * entry(random_);
        }
        Matrix3 m{};
        for (std::size_t i = 0; i < 3; ++i) {
            for (std::size_t j = 0; j < 3; ++j) {
                for (std::size_t k = 0; k < 3; ++k) {
                    m[3 * i + j] += root[3 * i + k] * root[3 * j + k];
                }
                m[3 * i + j] += i == j ? 0.1 * sigma * sigma : 0.0;
            }
        }
        return m;
    }

    // New errors for all vectors.
    void Observe() {
        for (std::size_t v = 0; v < network.vectors.size(); ++v) {
            Observe(v, true);
        }
    }

    void Observe(std::size_t v, bool withErrors) {
        const Matrix3 root = Root(network.vectors[v].covariance);
        const Vector3 noise{Normal(), Normal(), Normal()};
        for (std::size_t i = 0; i < 3; ++i) {
            double error = 0.0;
            for (std::size_t k = 0; k <= i && withErrors; ++k) {
                error += root[3 * i + k] * noise[k];
            }
            network.vectors[v].vector[i] =
                truth[ends[v].second][i] - truth[ends[v].first][i] + error;
        }
    }

    double Normal() { return normal_(random_); }
    std::mt19937& random() { return random_; }

    Network network;
    std::vector<Vector3> truth;  // m, ECEF
    std::vector<std::pair<std::size_t, std::size_t>> ends;

  private:
    std::mt19937 random_;
    std::normal_distribution<double> normal_;
};

// Largest distance between the distribution of `values` and the uniform one on 0 to 1, times the root
// of their number: above 1.36 in 5 % and above 1.95 in 0.1 % of samples that are uniform
// (Kolmogorov-Smirnov).
inline double DistanceToUniform(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const double n = static_cast<double>(values.size());
    double distance = 0.0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        distance = std::max({distance, values[i] - static_cast<double>(i) / n,
                             static_cast<double>(i + 1) / n - values[i]});
    }
    return distance * std::sqrt(n);
}

}  // namespace vornel::test
