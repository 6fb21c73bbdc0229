#include "network/least_squares.h"

#include <Eigen/Cholesky>
#include <algorithm>
#include <array>
#include <utility>

#include "network/records.h"

namespace vornel::network {
namespace {

using Eigen::Index;

// A pivot smaller than this part of its diagonal is what rounding left of nothing.
constexpr double kSmallestPivot = 1e-13;

}  // namespace

LeastSquares::LeastSquares(const std::vector<bool>& isHeld, std::vector<Difference> differences)
    : rows_(isHeld.size()), differences_(std::move(differences)), undetermined_(kNone) {
    for (std::size_t node = 0; node < isHeld.size(); ++node) {
        rows_[node] = isHeld[node] ? -1 : count_;
        count_ += isHeld[node] ? 0 : 3;
    }
    for (Difference& difference : differences_) {
        difference.weight = difference.covariance.llt().solve(Eigen::Matrix3d::Identity());
        difference.weight = 0.5 * (difference.weight + difference.weight.transpose()).eval();
    }
    Assemble();
    if (count_ > 0) {
        factor_.compute(normal_);
        const Eigen::VectorXd pivots = factor_.vectorD();
        const auto& order = factor_.permutationPinv().indices();
        for (Index k = 0; k < count_; ++k) {
            const Index row = order(k);
            if (!(pivots(k) > kSmallestPivot * normal_.coeff(row, row))) {
                const auto node = std::find(rows_.begin(), rows_.end(), row - row % 3);
                undetermined_ = static_cast<std::size_t>(node - rows_.begin());
                return;
            }
        }
    }
    Solve();
    InvertSelected();
}

void LeastSquares::Assemble() {
    std::vector<Eigen::Triplet<double>> entries;
    const auto add = [&](Index row, Index column, const Eigen::Matrix3d& block) {
        for (Index i = 0; i < 3; ++i) {
            for (Index j = 0; j < (row == column ? i + 1 : 3); ++j) {
                entries.emplace_back(static_cast<int>(row + i), static_cast<int>(column + j),
                                     block(i, j));
            }
        }
    };
    for (const Difference& difference : differences_) {
        const Index to = RowOf(difference.to);
        const Index from = difference.from == kNone ? -1 : RowOf(difference.from);
        if (to >= 0) {
            add(to, to, difference.weight);
        }
        if (from >= 0) {
            add(from, from, difference.weight);
        }
        if (to >= 0 && from >= 0) {
            add(std::max(to, from), std::min(to, from), -difference.weight);
        }
    }
    normal_.resize(count_, count_);
    normal_.setFromTriplets(entries.begin(), entries.end());
}

// Twice: the second time from the residuals of the first, which takes the rounding of large
// corrections away.
void LeastSquares::Solve() {
    corrections_ = Eigen::VectorXd::Zero(count_);
    residuals_.resize(differences_.size());
    const auto residuals = [&] {
        for (std::size_t d = 0; d < differences_.size(); ++d) {
            const Difference& difference = differences_[d];
            residuals_[d] = difference.value - Correction(difference.to);
            if (difference.from != kNone) {
                residuals_[d] += Correction(difference.from);
            }
        }
    };
    residuals();
    for (int pass = 0; pass < 2 && count_ > 0; ++pass) {
        Eigen::VectorXd right = Eigen::VectorXd::Zero(count_);
        for (std::size_t d = 0; d < differences_.size(); ++d) {
            const Difference& difference = differences_[d];
            const Eigen::Vector3d force = difference.weight * residuals_[d];
            if (RowOf(difference.to) >= 0) {
                right.segment<3>(RowOf(difference.to)) += force;
            }
            if (difference.from != kNone && RowOf(difference.from) >= 0) {
                right.segment<3>(RowOf(difference.from)) -= force;
            }
        }
        corrections_ += factor_.solve(right);
        residuals();
    }
}

Eigen::Vector3d LeastSquares::Correction(std::size_t node) const {
    if (RowOf(node) < 0) {
        return Eigen::Vector3d::Zero();
    }
    return corrections_.segment<3>(RowOf(node));
}

double LeastSquares::SumOfSquares(std::size_t difference) const {
    const Eigen::Vector3d& residual = residuals_[difference];
    return residual.dot(differences_[difference].weight * residual);
}

Block LeastSquares::Solve(const Block& columns) const {
    return count_ > 0 ? Block(factor_.solve(columns)) : columns;
}

Eigen::Matrix3d LeastSquares::Covariance(std::size_t a, std::size_t b) const {
    if (RowOf(a) < 0 || RowOf(b) < 0) {
        return Eigen::Matrix3d::Zero();
    }
    Block unit = Block::Zero(count_, 3);
    unit.middleRows<3>(RowOf(b)).setIdentity();
    return Solve(unit).middleRows<3>(RowOf(a));
}

// With N = L D L' the inverse Z obeys Z = D^-1 L^-1 + (I - L') Z. Read from the last column to the
// first, each entry of Z on the pattern of L follows from later ones on that pattern (Takahashi,
// Fagan and Chin 1973; Erisman and Tinney 1975).
void LeastSquares::InvertSelected() {
    if (count_ == 0) {
        return;
    }
    const Eigen::SparseMatrix<double>& lower = factor_.matrixL().nestedExpression();
    const int* const begin = lower.outerIndexPtr();
    const int* const row = lower.innerIndexPtr();
    const double* const value = lower.valuePtr();
    const Eigen::VectorXd pivots = factor_.vectorD();
    const auto at = [](auto i) { return static_cast<std::size_t>(i); };
    inverse_.assign(at(lower.nonZeros()), 0.0);
    inverseDiagonal_.assign(at(count_), 0.0);
    std::vector<int> place(at(count_), -1);  // of a row in the column that is being worked on
    std::vector<double> sum;
    for (Index j = count_ - 1; j >= 0; --j) {
        const int first = begin[j], last = begin[j + 1];
        sum.assign(at(last - first), 0.0);
        for (int e = first; e < last; ++e) {
            place[at(row[e])] = e - first;
        }
        for (int e = first; e < last; ++e) {
            const int k = row[e];
            const std::size_t own = at(e - first);
            double mine = inverseDiagonal_[at(k)] * value[e];
            for (int f = begin[k]; f < begin[k + 1]; ++f) {
                const int other = place[at(row[f])];
                if (other >= 0) {
                    sum[at(other)] += inverse_[at(f)] * value[e];
                    mine += inverse_[at(f)] * value[first + other];
                }
            }
            sum[own] += mine;
        }
        double diagonal = 1.0 / pivots(j);
        for (int e = first; e < last; ++e) {
            inverse_[at(e)] = -sum[at(e - first)];
            diagonal += value[e] * sum[at(e - first)];
            place[at(row[e])] = -1;
        }
        inverseDiagonal_[at(j)] = diagonal;
    }
}

double LeastSquares::Selected(Index row, Index column) const {
    const auto& order = factor_.permutationP().indices();
    const auto [low, high] = std::minmax(order(row), order(column));
    if (low == high) {
        return inverseDiagonal_[static_cast<std::size_t>(low)];
    }
    const Eigen::SparseMatrix<double>& lower = factor_.matrixL().nestedExpression();
    const int* const first = lower.innerIndexPtr() + lower.outerIndexPtr()[low];
    const int* const last = lower.innerIndexPtr() + lower.outerIndexPtr()[low + 1];
    const int* const found = std::lower_bound(first, last, high);
    return inverse_[static_cast<std::size_t>(found - lower.innerIndexPtr())];
}

Eigen::Matrix3d LeastSquares::JoinedCovariance(std::size_t a, std::size_t b) const {
    Eigen::Matrix3d block = Eigen::Matrix3d::Zero();
    if (RowOf(a) >= 0 && RowOf(b) >= 0) {
        for (Index i = 0; i < 3; ++i) {
            for (Index j = 0; j < 3; ++j) {
                block(i, j) = Selected(RowOf(a) + i, RowOf(b) + j);
            }
        }
    }
    return block;
}

}  // namespace vornel::network
