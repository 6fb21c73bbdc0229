// Least squares of a small network in dense extended precision, straight from the definitions: one
// covariance matrix of all components, one design matrix, the normal equations inverted whole.
#pragma once

#include <cmath>
#include <stdexcept>
#include <utility>
#include <vector>

#include "network/records.h"

namespace vornel::test {

using Real = long double;
using Dense = std::vector<std::vector<Real>>;

inline Dense Zeros(std::size_t rows, std::size_t columns) {
    return Dense(rows, std::vector<Real>(columns, 0.0L));
}

inline Dense Times(const Dense& a, const Dense& b) {
    Dense product = Zeros(a.size(), b.front().size());
    for (std::size_t i = 0; i < a.size(); ++i) {
        for (std::size_t k = 0; k < b.size(); ++k) {
            for (std::size_t j = 0; j < b.front().size(); ++j) {
                product[i][j] += a[i][k] * b[k][j];
            }
        }
    }
    return product;
}

inline Dense Transposed(const Dense& a) {
    Dense result = Zeros(a.front().size(), a.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
        for (std::size_t j = 0; j < a.front().size(); ++j) {
            result[j][i] = a[i][j];
        }
    }
    return result;
}

// By elimination with the largest pivot of each column.
inline Dense Inverse(Dense a) {
    const std::size_t n = a.size();
    Dense inverse = Zeros(n, n);
    for (std::size_t i = 0; i < n; ++i) {
        inverse[i][i] = 1.0L;
    }
    for (std::size_t k = 0; k < n; ++k) {
        std::size_t pivot = k;
        for (std::size_t i = k; i < n; ++i) {
            pivot = std::fabs(a[i][k]) > std::fabs(a[pivot][k]) ? i : pivot;
        }
        std::swap(a[k], a[pivot]);
        std::swap(inverse[k], inverse[pivot]);
        if (a[k][k] == 0.0L) {
            throw std::runtime_error("singular");
        }
        const Real scale = 1.0L / a[k][k];
        for (std::size_t j = 0; j < n; ++j) {
            a[k][j] *= scale;
            inverse[k][j] *= scale;
        }
        for (std::size_t i = 0; i < n; ++i) {
            const Real factor = a[i][k];
            if (i == k || factor == 0.0L) {
                continue;
            }
            for (std::size_t j = 0; j < n; ++j) {
                a[i][j] -= factor * a[k][j];
                inverse[i][j] -= factor * inverse[k][j];
            }
        }
    }
    return inverse;
}

// Observations l = A x + e of the positions x of stations (three rows each) and of further unknowns.
class DenseNetwork {
  public:
    explicit DenseNetwork(std::size_t stations) : stations_(stations), columns_(3 * stations) {}

    // A difference (m), or with `from` < 0 a position. Covariances are independent until Correlate.
    void Observe(int from, int to, const network::Vector3& value, const network::Matrix3& cov) {
        const std::size_t first = l_.size();
        for (std::size_t i = 0; i < 3; ++i) {
            std::vector<Real> row(columns_, 0.0L);
            row[3 * static_cast<std::size_t>(to) + i] = 1.0L;
            if (from >= 0) {
                row[3 * static_cast<std::size_t>(from) + i] = -1.0L;
            }
            a_.push_back(row);
            l_.push_back({static_cast<Real>(value[i])});
            for (auto& covariances : c_) {
                covariances.push_back(0.0L);
            }
            c_.emplace_back(first + i + 1, 0.0L);
        }
        for (auto& covariances : c_) {
            covariances.resize(l_.size(), 0.0L);
        }
        AddCovariance(first / 3, first / 3, 1.0, cov);
    }

    // Adds `factor` times a block to the covariance of the observations `i` and `j`.
    void AddCovariance(std::size_t i, std::size_t j, double factor, const network::Matrix3& cov) {
        for (std::size_t a = 0; a < 3; ++a) {
            for (std::size_t b = 0; b < 3; ++b) {
                c_[3 * i + a][3 * j + b] += static_cast<Real>(factor) * cov[3 * a + b];
            }
        }
    }

    // Three further unknowns that enter the given observations (index, sign) as they stand.
    void AddShift(const std::vector<std::pair<std::size_t, double>>& observations) {
        for (auto& row : a_) {
            row.resize(columns_ + 3, 0.0L);
        }
        for (const auto& [observation, sign] : observations) {
            for (std::size_t i = 0; i < 3; ++i) {
                a_[3 * observation + i][columns_ + i] = static_cast<Real>(sign);
            }
        }
        columns_ += 3;
    }

    // One further unknown, which moves one observation along `direction`.
    void AddShiftAlong(std::size_t observation, const network::Vector3& direction) {
        for (std::size_t r = 0; r < a_.size(); ++r) {
            a_[r].resize(columns_ + 1, 0.0L);
            if (r / 3 == observation) {
                a_[r][columns_] = static_cast<Real>(direction[r % 3]);
            }
        }
        columns_ += 1;
    }

    // With the position of a station held at a value; of several, if need be.
    void Hold(std::size_t station, const network::Vector3& value) {
        held_.emplace_back(station, value);
    }

    // With the sum of all stations' positions held at a value.
    void HoldSum(const network::Vector3& value) {
        isSumHeld_ = true;
        sum_ = value;
    }

    void Solve() {
        const std::size_t constraints = 3 * held_.size() + (isSumHeld_ ? 3 : 0);
        const Dense weight = Inverse(c_);
        const Dense pa = Times(weight, a_);
        const Dense normal = Times(Transposed(a_), pa);
        const Dense right = Times(Transposed(pa), l_);
        Dense bordered = Zeros(columns_ + constraints, columns_ + constraints);
        Dense all = Zeros(columns_ + constraints, 1);
        for (std::size_t i = 0; i < columns_; ++i) {
            all[i][0] = right[i][0];
            for (std::size_t j = 0; j < columns_; ++j) {
                bordered[i][j] = normal[i][j];
            }
        }
        std::size_t row = columns_;
        const auto constrain = [&](std::size_t column, std::size_t at, Real factor) {
            bordered[at][column] = bordered[column][at] = factor;
        };
        // Scaled to the size of the weights, for the sake of the pivots.
        const Real scale = normal[0][0];
        for (const auto& [station, value] : held_) {
            for (std::size_t i = 0; i < 3; ++i, ++row) {
                constrain(3 * station + i, row, scale);
                all[row][0] = scale * static_cast<Real>(value[i]);
            }
        }
        for (std::size_t i = 0; i < 3 && isSumHeld_; ++i, ++row) {
            for (std::size_t s = 0; s < stations_; ++s) {
                constrain(3 * s + i, row, scale);
            }
            all[row][0] = scale * static_cast<Real>(sum_[i]);
        }
        q_ = Inverse(bordered);
        x_ = Times(q_, all);
        Dense unknowns(x_.begin(), x_.begin() + static_cast<std::ptrdiff_t>(columns_));
        e_ = Times(a_, unknowns);
        for (std::size_t i = 0; i < l_.size(); ++i) {
            e_[i][0] = l_[i][0] - e_[i][0];
        }
        sumOfSquares = static_cast<double>(Times(Transposed(e_), Times(weight, e_))[0][0]);
        dof = static_cast<int>(l_.size()) - static_cast<int>(columns_) +
              static_cast<int>(constraints);
    }

    double Value(std::size_t column) const { return static_cast<double>(x_[column][0]); }
    double Covariance(std::size_t i, std::size_t j) const { return static_cast<double>(q_[i][j]); }
    double Residual(std::size_t i) const { return static_cast<double>(e_[i][0]); }
    std::size_t columns() const { return columns_; }

    double sumOfSquares = 0.0;
    int dof = 0;

  private:
    std::size_t stations_, columns_;
    Dense a_, l_, c_, q_, x_, e_;
    std::vector<std::pair<std::size_t, network::Vector3>> held_;
    bool isSumHeld_ = false;
    network::Vector3 sum_{};
};

}  // namespace vornel::test
