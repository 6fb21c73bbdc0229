// Plain linear algebra for checks, kept apart from the engine's matrix library: nested vectors of
// long double, straightforward loops.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <utility>
#include <vector>

#include "foundation/matrix.h"

namespace vornel::reference {

using Vector = std::vector<long double>;
using Dense = std::vector<Vector>;

inline Dense Zeros(std::size_t rows, std::size_t columns) {
    return Dense(rows, Vector(columns, 0.0L));
}

inline Dense Diagonal(const std::vector<double>& values) {
    Dense result = Zeros(values.size(), values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        result[i][i] = values[i];
    }
    return result;
}

inline Dense Multiply(const Dense& left, const Dense& right) {
    Dense result = Zeros(left.size(), right.empty() ? 0 : right.front().size());
    for (std::size_t i = 0; i < left.size(); ++i) {
        for (std::size_t j = 0; j < result[i].size(); ++j) {
            for (std::size_t k = 0; k < right.size(); ++k) {
                result[i][j] += left[i][k] * right[k][j];
            }
        }
    }
    return result;
}

inline Vector Multiply(const Dense& left, const Vector& right) {
    Vector result(left.size(), 0.0L);
    for (std::size_t i = 0; i < left.size(); ++i) {
        for (std::size_t k = 0; k < right.size(); ++k) {
            result[i] += left[i][k] * right[k];
        }
    }
    return result;
}

inline Dense Transposed(const Dense& matrix, std::size_t columns) {
    Dense result = Zeros(columns, matrix.size());
    for (std::size_t i = 0; i < matrix.size(); ++i) {
        for (std::size_t j = 0; j < columns; ++j) {
            result[j][i] = matrix[i][j];
        }
    }
    return result;
}

inline Dense Sum(Dense left, const Dense& right, long double factor = 1.0L) {
    for (std::size_t i = 0; i < left.size(); ++i) {
        for (std::size_t j = 0; j < left[i].size(); ++j) {
            left[i][j] += factor * right[i][j];
        }
    }
    return left;
}

// The rows and columns of the given indices.
inline Dense Pick(const Dense& matrix, const std::vector<std::size_t>& rows,
                  const std::vector<std::size_t>& columns) {
    Dense result = Zeros(rows.size(), columns.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        for (std::size_t j = 0; j < columns.size(); ++j) {
            result[i][j] = matrix[rows[i]][columns[j]];
        }
    }
    return result;
}

// Inverse of a symmetric positive definite matrix by its Cholesky factor, column by column.
inline Dense InverseOfPositive(const Dense& matrix) {
    const std::size_t n = matrix.size();
    Dense factor = Zeros(n, n);  // lower
    for (std::size_t j = 0; j < n; ++j) {
        for (std::size_t i = j; i < n; ++i) {
            long double sum = matrix[i][j];
            for (std::size_t k = 0; k < j; ++k) {
                sum -= factor[i][k] * factor[j][k];
            }
            if (i == j) {
                EXPECT_GT(sum, 0.0L) << "the test's own matrix is not positive definite";
                factor[j][j] = std::sqrt(sum);
            } else {
                factor[i][j] = sum / factor[j][j];
            }
        }
    }
    Dense inverse = Zeros(n, n);
    for (std::size_t c = 0; c < n; ++c) {
        Vector y(n, 0.0L);
        for (std::size_t i = 0; i < n; ++i) {
            long double sum = i == c ? 1.0L : 0.0L;
            for (std::size_t k = 0; k < i; ++k) {
                sum -= factor[i][k] * y[k];
            }
            y[i] = sum / factor[i][i];
        }
        for (std::size_t i = n; i-- > 0;) {
            long double sum = y[i];
            for (std::size_t k = i + 1; k < n; ++k) {
                sum -= factor[k][i] * inverse[k][c];
            }
            inverse[i][c] = sum / factor[i][i];
        }
    }
    return inverse;
}

inline gult::matrixT ToMatrix(const Dense& matrix) {
    const std::size_t columns = matrix.empty() ? 0 : matrix.front().size();
    gult::matrixT result(static_cast<std::uint32_t>(matrix.size()),
                         static_cast<std::uint32_t>(columns));
    for (std::uint32_t i = 0; i < result.RowCount(); ++i) {
        for (std::uint32_t j = 0; j < result.ColCount(); ++j) {
            result(i, j) = static_cast<double>(matrix[i][j]);
        }
    }
    return result;
}

inline gult::matrixT ToColumn(const Vector& values) {
    gult::matrixT result(static_cast<std::uint32_t>(values.size()), 1);
    for (std::uint32_t i = 0; i < result.RowCount(); ++i) {
        result(i, 0) = static_cast<double>(values[i]);
    }
    return result;
}

inline gult::matrixT ToColumn(const std::vector<double>& values) {
    return ToColumn(Vector(values.begin(), values.end()));
}

inline Dense FromMatrix(const gult::matrixT& matrix) {
    gult::matrixT copy = matrix;
    Dense result = Zeros(copy.RowCount(), copy.ColCount());
    for (std::uint32_t i = 0; i < copy.RowCount(); ++i) {
        for (std::uint32_t j = 0; j < copy.ColCount(); ++j) {
            result[i][j] = copy(i, j);
        }
    }
    return result;
}

inline std::vector<double> FromColumn(const gult::matrixT& matrix) {
    std::vector<double> result;
    for (const Vector& row : FromMatrix(matrix)) {
        result.push_back(static_cast<double>(row.at(0)));
    }
    return result;
}

// Same shape, and every element within a tolerance relative to the largest expected magnitude.
inline void ExpectNear(const gult::matrixT& got, const Dense& expected, double relative) {
    const Dense values = FromMatrix(got);
    ASSERT_EQ(values.size(), expected.size());
    long double largest = 0.0L;
    for (const Vector& row : expected) {
        for (long double value : row) {
            largest = std::max(largest, std::fabs(value));
        }
    }
    for (std::size_t i = 0; i < expected.size(); ++i) {
        ASSERT_EQ(values[i].size(), expected[i].size());
        for (std::size_t j = 0; j < expected[i].size(); ++j) {
            EXPECT_NEAR(static_cast<double>(values[i][j]), static_cast<double>(expected[i][j]),
                        relative * static_cast<double>(largest))
                << "element " << i << ", " << j;
        }
    }
}

inline void ExpectNear(const gult::matrixT& got, const Vector& expected, double relative) {
    Dense column;
    for (long double value : expected) {
        column.push_back({value});
    }
    ExpectNear(got, column, relative);
}

}  // namespace vornel::reference
