#include "estimation/sparse_equations.h"

#include <cstdint>

namespace vornel {

SparseEquations::SparseEquations(int commonCount, int size)
    : commonCount_(static_cast<std::size_t>(commonCount)),
      size_(static_cast<std::size_t>(size)),
      N_(size_ * size_, 0.0),
      W_(size_, 0.0),
      Wu_(size_, 0.0) {}

void SparseEquations::Add(const std::vector<EquationRow>& rows) {
    double commonN[kMaxCommonParameters][kMaxCommonParameters] = {};
    double commonW[kMaxCommonParameters] = {};
    double commonWu[kMaxCommonParameters] = {};
    for (const EquationRow& row : rows) {
        const auto amb = static_cast<std::size_t>(row.ambiguityColumn);
        const double weightedFactor = row.ambiguityFactor * row.weight;
        for (std::size_t i = 0; i < commonCount_; ++i) {
            const double weighted = row.common[i] * row.weight;
            for (std::size_t j = 0; j < commonCount_; ++j) {
                commonN[i][j] += weighted * row.common[j];
            }
            commonW[i] += weighted * row.misclosure;
            commonWu[i] += row.common[i] * row.misclosure;
            At(i, amb) += weighted * row.ambiguityFactor;
            At(amb, i) += weightedFactor * row.common[i];
        }
        At(amb, amb) += weightedFactor * row.ambiguityFactor;
        W_[amb] += weightedFactor * row.misclosure;
        Wu_[amb] += row.ambiguityFactor * row.misclosure;
    }
    for (std::size_t i = 0; i < commonCount_; ++i) {
        for (std::size_t j = 0; j < commonCount_; ++j) {
            At(i, j) += commonN[i][j];
        }
        W_[i] += commonW[i];
        Wu_[i] += commonWu[i];
    }
}

gult::matrixT SparseEquations::N() const {
    std::vector<const double*> rows(size_);
    for (std::size_t i = 0; i < size_; ++i) {
        rows[i] = N_.data() + i * size_;
    }
    const auto size = static_cast<std::uint32_t>(size_);
    return gult::matrixT(size, size, rows.data());
}

gult::matrixT SparseEquations::Column(const std::vector<double>& values) {
    gult::matrixT column(static_cast<std::uint32_t>(values.size()), 1);
    for (std::uint32_t i = 0; i < column.RowCount(); ++i) {
        column(i, 0) = values[i];
    }
    return column;
}

}  // namespace vornel
