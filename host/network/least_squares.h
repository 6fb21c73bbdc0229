// Sparse least squares of differences between the positions of nodes.
#pragma once

#include <Eigen/Core>
#include <Eigen/SparseCholesky>
#include <Eigen/SparseCore>
#include <cstddef>
#include <vector>

namespace vornel::network {

// An observed difference of two nodes, or the observed position of one.
struct Difference {
    std::size_t from = 0;  // node; kNone: the position of `to` is observed
    std::size_t to = 0;
    Eigen::Vector3d value = Eigen::Vector3d::Zero();           // m, observed - from given positions
    Eigen::Matrix3d covariance = Eigen::Matrix3d::Identity();  // m^2
    Eigen::Matrix3d weight = Eigen::Matrix3d::Identity();      // its inverse
};

using Block = Eigen::Matrix<double, Eigen::Dynamic, 3>;

// Solves min sum e' P e for corrections to the given positions of all nodes that are not held.
// Every node must hang on a held or observed one.
class LeastSquares {
  public:
    LeastSquares(const std::vector<bool>& isHeld, std::vector<Difference> differences);

    // A node whose position the differences hardly determine (its pivot is lost in rounding); kNone
    // where there is none. The results below need that.
    std::size_t undetermined() const { return undetermined_; }

    const std::vector<Difference>& differences() const { return differences_; }
    std::size_t unknowns() const { return static_cast<std::size_t>(count_); }  // 3 for each node
    Eigen::Vector3d Correction(std::size_t node) const;                        // m; 0 where held
    const Eigen::Vector3d& Residual(std::size_t difference) const {
        return residuals_[difference];  // m, observed - adjusted
    }
    double SumOfSquares(std::size_t difference) const;

    // The covariance (m^2) of two nodes that a difference joins, or of a node with itself.
    Eigen::Matrix3d JoinedCovariance(std::size_t a, std::size_t b) const;

    // The same for any two nodes: one solution of the equations for each three columns.
    Eigen::Matrix3d Covariance(std::size_t a, std::size_t b) const;

    // Columns of the covariance (m^2): of all nodes with the combination of nodes that `columns` is,
    // three rows for each node that is not held. RowOf tells where; -1 where held.
    Block Solve(const Block& columns) const;
    Eigen::Index RowOf(std::size_t node) const { return rows_[node]; }

  private:
    void Assemble();
    void Solve();
    void InvertSelected();
    double Selected(Eigen::Index row, Eigen::Index column) const;

    std::vector<Eigen::Index> rows_;  // by node
    Eigen::Index count_ = 0;
    std::vector<Difference> differences_;
    std::vector<Eigen::Vector3d> residuals_;
    Eigen::SparseMatrix<double> normal_;  // lower triangle
    Eigen::SimplicialLDLT<Eigen::SparseMatrix<double>, Eigen::Lower> factor_;
    Eigen::VectorXd corrections_;
    std::size_t undetermined_;
    // The inverse on the pattern of the factor, in the factor's order.
    std::vector<double> inverse_, inverseDiagonal_;
};

}  // namespace vornel::network
