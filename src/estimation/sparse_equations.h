// Normal equations accumulated from rows that touch few parameters: the common ones and one
// ambiguity each.
#pragma once

#include <vector>

#include "foundation/matrix.h"

namespace vornel {

inline constexpr int kMaxCommonParameters = 5;  // coordinates, and a bias for each of two blocks

// One double difference: its design, misclosure (metres) and weight.
struct EquationRow {
    double common[kMaxCommonParameters] = {};
    int ambiguityColumn = 0;
    double ambiguityFactor = 0.0;
    double misclosure = 0.0;
    double weight = 0.0;
};

// N = sum A'PA, W = sum A'PL, Wu = sum A'L over blocks of rows. Each block is summed by itself
// before it is added, as its products would be.
class SparseEquations {
  public:
    // size: common parameters and ambiguities.
    SparseEquations(int commonCount, int size);

    // A block of rows, no two of which have one ambiguity.
    void Add(const std::vector<EquationRow>& rows);

    gult::matrixT N() const;
    gult::matrixT W() const { return Column(W_); }
    gult::matrixT Wu() const { return Column(Wu_); }

  private:
    static gult::matrixT Column(const std::vector<double>& values);
    double& At(std::size_t row, std::size_t column) { return N_[row * size_ + column]; }

    std::size_t commonCount_, size_;
    std::vector<double> N_;  // row by row
    std::vector<double> W_, Wu_;
};

}  // namespace vornel
