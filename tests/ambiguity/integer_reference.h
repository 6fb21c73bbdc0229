// Integer least squares by exhaustion: every integer vector inside an ellipsoid that is widened
// until it holds enough of them. No decorrelation, no shrinking bound, no order of the walk that
// matters.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "foundation/dense_reference.h"

namespace vornel::reference {

struct IntegerVector {
    double distance = 0.0;  // squared, in the metric of the covariance
    std::vector<double> values;
};

// Every integer vector z with (z - a)' Q^-1 (z - a) at or below a bound, by slices: with Q^-1 = R'
// R, R upper triangular, the values of the coordinates above i leave an interval for coordinate i.
class Ellipsoid {
  public:
    Ellipsoid(const Dense& covariance, const std::vector<double>& centre)
        : n_(centre.size()),
          centre_(centre),
          r_(n_, std::vector<double>(n_, 0.0)),
          current_(n_, 0.0) {
        Dense weight = InverseOfPositive(covariance);
        for (std::size_t i = 0; i < n_; ++i) {
            const long double pivot = std::sqrt(weight[i][i]);
            for (std::size_t j = i; j < n_; ++j) {
                r_[i][j] = static_cast<double>(weight[i][j] / pivot);
            }
            for (std::size_t j = i + 1; j < n_; ++j) {
                for (std::size_t k = j; k < n_; ++k) {
                    weight[j][k] -= weight[i][j] * weight[i][k] / weight[i][i];
                }
            }
        }
    }

    std::vector<IntegerVector> IntegersWithin(double bound) {
        found_.clear();
        Slice(n_, 0.0, bound);
        std::sort(found_.begin(), found_.end(),
                  [](const IntegerVector& left, const IntegerVector& right) {
                      return left.distance < right.distance;
                  });
        return found_;
    }

  private:
    void Slice(std::size_t level, double distance, double bound) {
        if (level == 0) {
            found_.push_back({distance, current_});
            return;
        }
        const std::size_t i = level - 1;
        double shift = 0.0;
        for (std::size_t j = level; j < n_; ++j) {
            shift += r_[i][j] * (current_[j] - centre_[j]);
        }
        const double middle = centre_[i] - shift / r_[i][i];
        const double half = std::sqrt(std::max(bound - distance, 0.0)) / r_[i][i] + 1e-9;
        for (double z = std::ceil(middle - half); z <= middle + half; z += 1.0) {
            const double term = r_[i][i] * (z - middle);
            if (distance + term * term <= bound) {
                current_[i] = z;
                Slice(i, distance + term * term, bound);
            }
        }
    }

    std::size_t n_;
    std::vector<double> centre_;
    std::vector<std::vector<double>> r_;
    std::vector<double> current_;
    std::vector<IntegerVector> found_;
};

// The m integer vectors nearest to `centre`, ascending by distance.
inline std::vector<IntegerVector> NearestIntegers(const Dense& covariance,
                                                  const std::vector<double>& centre,
                                                  std::size_t m) {
    Ellipsoid ellipsoid(covariance, centre);
    std::vector<IntegerVector> found;
    for (double bound = 1.0; found.size() < m; bound *= 2.0) {
        found = ellipsoid.IntegersWithin(bound);
    }
    found.resize(m);
    return found;
}

}  // namespace vornel::reference
