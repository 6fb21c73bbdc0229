// The dense matrix: shared representations, arithmetic on rows, Gauss-Jordan inversion.
#include "foundation/matrix.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <new>

namespace gult {

namespace {

constexpr const char* kIndexMessage = "matrixT::operator(): Index out of range!";

}  // namespace

// A representation of zeros with one reference: header, row pointers and elements in one block.
matrixT::Representation* matrixT::Allocate(std::uint32_t rowCount, std::uint32_t colCount) {
    static_assert(sizeof(Representation) % alignof(double) == 0);
    const std::size_t elements = std::size_t{rowCount} * colCount;
    std::size_t head = sizeof(Representation) + rowCount * sizeof(double*);
    head = (head + alignof(double) - 1) / alignof(double) * alignof(double);
    if (elements > (std::numeric_limits<std::size_t>::max() - head) / sizeof(double)) {
        throw std::bad_alloc();
    }
    auto* block = static_cast<std::byte*>(::operator new(head + elements * sizeof(double)));
    auto* rows = reinterpret_cast<double**>(block + sizeof(Representation));
    auto* values = reinterpret_cast<double*>(block + head);
    std::fill_n(values, elements, 0.0);
    for (std::uint32_t i = 0; i < rowCount; ++i) {
        rows[i] = values + std::size_t{i} * colCount;
    }
    return new (block) Representation{rows, rowCount, colCount, rowCount, colCount, 1};
}

// Gives one reference back; the last frees the block, what lies beyond the logical shape included.
void matrixT::Release(Representation* rep) noexcept {
    if (--rep->refCount == 0) {
        ::operator delete(rep);
    }
}

matrixT::matrixT() : matrixT(6, 6) {}

matrixT::matrixT(std::uint32_t rowCount, std::uint32_t colCount)
    : rep_(Allocate(rowCount, colCount)) {}

matrixT::matrixT(std::uint32_t rowCount, std::uint32_t colCount, const double* const* source)
    : rep_(Allocate(rowCount, colCount)) {
    for (std::uint32_t i = 0; i < rowCount; ++i) {
        std::copy_n(source[i], colCount, rep_->rows[i]);
    }
}

matrixT::matrixT(const matrixT& other) noexcept : rep_(other.rep_) {
    ++rep_->refCount;
}

matrixT& matrixT::operator=(const matrixT& other) noexcept {
    ++other.rep_->refCount;  // before the release: the two may be one
    Release(rep_);
    rep_ = other.rep_;
    return *this;
}

matrixT::~matrixT() {
    Release(rep_);
}

double& matrixT::operator()(std::uint32_t row, std::uint32_t column) {
    if (row >= rep_->rowCount || column >= rep_->colCount) {
        throw matrix_error(kIndexMessage);
    }
    UnshareIfShared();
    return rep_->rows[row][column];
}

const double* matrixT::RowValues(std::uint32_t row) const {
    if (row >= rep_->rowCount) {
        throw matrix_error(kIndexMessage);
    }
    return rep_->rows[row];
}

double* matrixT::MutableRow(std::uint32_t row) {
    if (row >= rep_->rowCount) {
        throw matrix_error(kIndexMessage);
    }
    UnshareIfShared();
    return rep_->rows[row];
}

matrixT matrixT::DeepCopy() const {
    return matrixT(rep_->rowCount, rep_->colCount, rep_->rows);
}

void matrixT::Unshare() {
    *this = DeepCopy();
}

matrixT& matrixT::operator+=(const matrixT& other) {
    if (rep_->rowCount != other.rep_->rowCount || rep_->colCount != other.rep_->colCount) {
        throw matrix_error("matrixT::operator+= : Inconsistent matrix sizes in addition!");
    }
    UnshareIfShared();
    for (std::uint32_t i = 0; i < rep_->rowCount; ++i) {
        double* target = rep_->rows[i];
        const double* summand = other.rep_->rows[i];
        for (std::uint32_t j = 0; j < rep_->colCount; ++j) {
            target[j] += summand[j];
        }
    }
    return *this;
}

matrixT& matrixT::operator-=(const matrixT& other) {
    if (rep_->rowCount != other.rep_->rowCount || rep_->colCount != other.rep_->colCount) {
        throw matrix_error("matrixT::operator-= : Inconsistent matrix sizes in subtraction!");
    }
    UnshareIfShared();
    for (std::uint32_t i = 0; i < rep_->rowCount; ++i) {
        double* target = rep_->rows[i];
        const double* subtrahend = other.rep_->rows[i];
        for (std::uint32_t j = 0; j < rep_->colCount; ++j) {
            target[j] -= subtrahend[j];
        }
    }
    return *this;
}

// The loops run row by row of the right operand, which visits memory in order; every element still
// accumulates from 0.0 over the inner index in ascending order.
matrixT& matrixT::operator*=(const matrixT& other) {
    if (rep_->colCount != other.rep_->rowCount) {
        throw matrix_error("matrixT::operator*= : Inconsistent matrix sizes in multiplication!");
    }
    matrixT product(rep_->rowCount, other.rep_->colCount);
    const std::uint32_t colCount = product.rep_->colCount;
    for (std::uint32_t i = 0; i < rep_->rowCount; ++i) {
        double* target = product.rep_->rows[i];
        for (std::uint32_t k = 0; k < rep_->colCount; ++k) {
            const double factor = rep_->rows[i][k];
            const double* right = other.rep_->rows[k];
            for (std::uint32_t j = 0; j < colCount; ++j) {
                target[j] += factor * right[j];
            }
        }
    }
    return *this = product;
}

matrixT& matrixT::operator*=(double factor) {
    UnshareIfShared();
    for (std::uint32_t i = 0; i < rep_->rowCount; ++i) {
        for (std::uint32_t j = 0; j < rep_->colCount; ++j) {
            rep_->rows[i][j] *= factor;
        }
    }
    return *this;
}

matrixT matrixT::Transpose() const {
    matrixT result(rep_->colCount, rep_->rowCount);
    for (std::uint32_t i = 0; i < rep_->rowCount; ++i) {
        for (std::uint32_t j = 0; j < rep_->colCount; ++j) {
            result.rep_->rows[j][i] = rep_->rows[i][j];
        }
    }
    return result;
}

void matrixT::SetIdentity() {
    UnshareIfShared();
    const std::uint32_t n = std::min(rep_->rowCount, rep_->colCount);
    rep_->rowCount = n;
    rep_->colCount = n;
    for (std::uint32_t i = 0; i < n; ++i) {
        std::fill_n(rep_->rows[i], n, 0.0);
        rep_->rows[i][i] = 1.0;
    }
}

namespace {

// The first of the rows from k on with the largest absolute value in column k; k itself when there
// is nothing but zeros.
std::uint32_t PivotRow(const double* const* rows, std::uint32_t n, std::uint32_t k) {
    std::uint32_t pivot = k;
    double largest = -1.0;
    for (std::uint32_t i = k; i < n; ++i) {
        const double magnitude = std::fabs(rows[i][k]);
        if (magnitude > largest && magnitude != 0.0) {
            largest = magnitude;
            pivot = i;
        }
    }
    return pivot;
}

void DivideRow(double* row, std::uint32_t n, double divisor) {
    for (std::uint32_t j = 0; j < n; ++j) {
        row[j] /= divisor;
    }
}

bool IsFinite(const double* row, std::uint32_t n) {
    return std::all_of(row, row + n, [](double x) { return std::isfinite(x); });
}

void SubtractMultiple(double* row, const double* other, std::uint32_t n, double factor) {
    for (std::uint32_t j = 0; j < n; ++j) {
        row[j] -= factor * other[j];
    }
}

}  // namespace

// There is no tolerance: a matrix that is singular but for rounding is inverted and yields large
// numbers.
matrixT matrixT::operator!() const {
    if (rep_->rowCount != rep_->colCount) {
        throw matrix_error("matrixT::operator!: Inversion of a non-square matrix");
    }
    const std::uint32_t n = rep_->rowCount;
    matrixT work = DeepCopy();
    matrixT result(n, n);
    result.SetIdentity();
    double** const left = work.rep_->rows;
    double** const right = result.rep_->rows;
    for (std::uint32_t k = 0; k < n; ++k) {
        const std::uint32_t pivotRow = PivotRow(left, n, k);
        const double pivot = left[pivotRow][k];
        if (pivot == 0.0) {
            throw matrix_error("matrixT::operator!: Inversion of a singular matrix");
        }
        std::swap(left[k], left[pivotRow]);
        std::swap(right[k], right[pivotRow]);
        // What stands left of the pivot is done with.
        DivideRow(left[k] + k, n - k, pivot);
        DivideRow(right[k], n, pivot);
        const bool finite = IsFinite(left[k] + k, n - k) && IsFinite(right[k], n);
        for (std::uint32_t i = 0; i < n; ++i) {
            const double factor = left[i][k];
            // Nothing times a finite row leaves the others as they are, but for the sign of a zero.
            if (i == k || (factor == 0.0 && finite)) {
                continue;
            }
            SubtractMultiple(left[i] + k, left[k] + k, n - k, factor);
            SubtractMultiple(right[i], right[k], n, factor);
        }
    }
    return result;
}

matrixT operator+(const matrixT& left, const matrixT& right) {
    matrixT result(left);
    result += right;
    return result;
}

matrixT operator-(const matrixT& left, const matrixT& right) {
    matrixT result(left);
    result -= right;
    return result;
}

matrixT operator*(const matrixT& left, const matrixT& right) {
    matrixT result(left);
    result *= right;
    return result;
}

matrixT operator*(const matrixT& left, double factor) {
    matrixT result(left);
    result *= factor;
    return result;
}

matrixT SubBlock(matrixT source, std::uint32_t firstRow, std::uint32_t firstColumn,
                 std::uint32_t rowCount, std::uint32_t colCount) {
    matrixT block(rowCount, colCount);
    if (rowCount == 0 || colCount == 0) {
        return block;
    }
    if (std::uint64_t{firstRow} + rowCount > source.RowCount() ||
        std::uint64_t{firstColumn} + colCount > source.ColCount()) {
        throw matrix_error(kIndexMessage);
    }
    for (std::uint32_t i = 0; i < rowCount; ++i) {
        std::copy_n(source.RowValues(firstRow + i) + firstColumn, colCount, &block(i, 0));
    }
    return block;
}

std::pair<matrixT, matrixT> SelectionPair(int n, int m, const int* mask) {
    const auto columns = static_cast<std::uint32_t>(n);
    matrixT chosen(static_cast<std::uint32_t>(m), columns);
    matrixT others(static_cast<std::uint32_t>(n - m), columns);
    std::uint32_t chosenRow = 0;
    std::uint32_t othersRow = 0;
    for (std::uint32_t j = 0; j < columns; ++j) {
        if (mask[j] != 0) {
            chosen(chosenRow++, j) = 1.0;
        } else {
            others(othersRow++, j) = 1.0;
        }
    }
    return {chosen, others};
}

namespace {

// Indices of the non-zero elements of a mask, ascending.
std::vector<std::uint32_t> MaskedIndices(const int* mask, int count) {
    std::vector<std::uint32_t> indices;
    for (int i = 0; i < count; ++i) {
        if (mask[i] != 0) {
            indices.push_back(static_cast<std::uint32_t>(i));
        }
    }
    return indices;
}

}  // namespace

std::pair<matrixT, matrixT> MaskedBlocks(int nx, int nb, const int* mask, matrixT cross,
                                         matrixT square) {
    const std::vector<std::uint32_t> kept = MaskedIndices(mask, nb);
    const auto keptCount = static_cast<std::uint32_t>(kept.size());
    const auto crossRows = static_cast<std::uint32_t>(nx);
    matrixT keptCross(crossRows, keptCount);
    matrixT keptSquare(keptCount, keptCount);
    for (std::uint32_t j = 0; j < keptCount; ++j) {
        for (std::uint32_t i = 0; i < crossRows; ++i) {
            keptCross(i, j) = cross(i, kept[j]);
        }
        for (std::uint32_t i = 0; i < keptCount; ++i) {
            keptSquare(i, j) = square(kept[i], kept[j]);
        }
    }
    return {keptCross, keptSquare};
}

bool InvertFlat(double* values, int n) {
    const auto size = static_cast<std::uint32_t>(n);
    std::vector<const double*> rows(size);
    for (std::uint32_t i = 0; i < size; ++i) {
        rows[i] = values + std::size_t{i} * size;
    }
    const matrixT inverse = !matrixT(size, size, rows.data());
    for (std::uint32_t i = 0; i < size; ++i) {
        std::copy_n(inverse.RowValues(i), size, values + std::size_t{i} * size);
    }
    return true;
}

}  // namespace gult
