// Dense matrices of double with copy-on-write sharing.
//
// A matrixT is a handle on a shared representation: copies are cheap and may be passed by value;
// the first access to an element through a handle that shares its representation gives that handle
// a private copy. A vector is a matrix of one column.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <utility>
#include <vector>

namespace gult {

// Thrown by every failing operation: inconsistent shapes, an index out of range, a singular matrix.
class matrix_error : public std::logic_error {
  public:
    using std::logic_error::logic_error;
};

class matrixT {
  public:
    // 6 by 6, zeros: a member of this type starts so and is replaced before use.
    matrixT();
    // rowCount by colCount, zeros.
    matrixT(std::uint32_t rowCount, std::uint32_t colCount);
    // Takes colCount values from each of the rowCount rows of `source`.
    matrixT(std::uint32_t rowCount, std::uint32_t colCount, const double* const* source);
    matrixT(const matrixT& other) noexcept;
    matrixT& operator=(const matrixT& other) noexcept;
    ~matrixT();

    // The element, after a check of both indices; unshares the handle first, reads included.
    double& operator()(std::uint32_t row, std::uint32_t column);
    // The ColCount() values of a row, for reading alone: the handle stays shared. Good until the
    // matrix is next written to. Throws like operator().
    const double* RowValues(std::uint32_t row) const;
    // The same for writing: unshares the handle.
    double* MutableRow(std::uint32_t row);

    std::uint32_t RowCount() const { return rep_->rowCount; }
    std::uint32_t ColCount() const { return rep_->colCount; }
    // Handles on this representation, 1 when it is private.
    std::int32_t RefCount() const { return rep_->refCount; }

    matrixT& operator+=(const matrixT& other);
    matrixT& operator-=(const matrixT& other);
    matrixT& operator*=(const matrixT& other);
    matrixT& operator*=(double factor);

    matrixT Transpose() const;
    // Inverse by Gauss-Jordan elimination with partial pivoting.
    matrixT operator!() const;
    // The same elements in a representation of their own.
    matrixT DeepCopy() const;
    // Makes this the identity; a rectangular matrix shrinks to a square one.
    void SetIdentity();
    // Gives the handle a representation of its own.
    void Unshare();

  private:
    // Stands at the head of one block of memory, before the row pointers and the elements.
    struct Representation {
        double** rows;           // rows swap by pointer
        std::uint32_t rowCount;  // logical shape ...
        std::uint32_t colCount;
        std::uint32_t allocRows;  // ... and what was allocated: SetIdentity may shrink the former
        std::uint32_t allocCols;
        std::int32_t refCount;
    };

    static Representation* Allocate(std::uint32_t rowCount, std::uint32_t colCount);
    static void Release(Representation* rep) noexcept;
    void UnshareIfShared() {
        if (rep_->refCount > 1) {
            Unshare();
        }
    }

    Representation* rep_;
};

matrixT operator+(const matrixT& left, const matrixT& right);
matrixT operator-(const matrixT& left, const matrixT& right);
matrixT operator*(const matrixT& left, const matrixT& right);
matrixT operator*(const matrixT& left, double factor);

// The rowCount by colCount block whose first element is (firstRow, firstColumn).
matrixT SubBlock(matrixT source, std::uint32_t firstRow, std::uint32_t firstColumn,
                 std::uint32_t rowCount, std::uint32_t colCount);

// Selection matrices of a mask of n integers, m of them non-zero: the first, m by n, picks the
// masked elements of an n-vector, the second, n-m by n, the others; both in ascending order.
std::pair<matrixT, matrixT> SelectionPair(int n, int m, const int* mask);

// Masked columns of `cross` (nx by nb), and masked rows and columns of `square` (nb by nb), for a
// mask of nb integers.
std::pair<matrixT, matrixT> MaskedBlocks(int nx, int nb, const int* mask, matrixT cross,
                                         matrixT square);

// Inverts a row-major n by n array in place. True on success; throws matrix_error when singular.
bool InvertFlat(double* values, int n);

}  // namespace gult
