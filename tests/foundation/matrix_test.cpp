// The matrix library: shapes, sharing, arithmetic, failures with their texts, and the inverse.
#include "foundation/matrix.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <new>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using gult::matrixT;

using Rows = std::vector<std::vector<double>>;

// A matrix of these rows, all of one length.
matrixT FromRows(const Rows& rows) {
    const auto rowCount = static_cast<std::uint32_t>(rows.size());
    const auto colCount = static_cast<std::uint32_t>(rows.empty() ? 0 : rows[0].size());
    matrixT m(rowCount, colCount);
    for (std::uint32_t i = 0; i < rowCount; ++i) {
        for (std::uint32_t j = 0; j < colCount; ++j) {
            m(i, j) = rows[i][j];
        }
    }
    return m;
}

// The elements as nested vectors, so that a whole matrix compares and prints in one expectation.
Rows ToRows(matrixT m) {
    Rows rows(m.RowCount(), std::vector<double>(m.ColCount()));
    for (std::uint32_t i = 0; i < m.RowCount(); ++i) {
        for (std::uint32_t j = 0; j < m.ColCount(); ++j) {
            rows[i][j] = m(i, j);
        }
    }
    return rows;
}

Rows Zeros(std::size_t rowCount, std::size_t colCount) {
    return Rows(rowCount, std::vector<double>(colCount, 0.0));
}

// What matrix_error says when `operation` fails; empty when it does not fail.
template <typename Operation>
std::string FailureOf(Operation operation) {
    try {
        operation();
    } catch (const gult::matrix_error& error) {
        return error.what();
    }
    return "";
}

constexpr char kOutOfRange[] = "matrixT::operator(): Index out of range!";
constexpr char kAddition[] = "matrixT::operator+= : Inconsistent matrix sizes in addition!";
constexpr char kSubtraction[] = "matrixT::operator-= : Inconsistent matrix sizes in subtraction!";
constexpr char kMultiplication[] =
    "matrixT::operator*= : Inconsistent matrix sizes in multiplication!";
constexpr char kNonSquare[] = "matrixT::operator!: Inversion of a non-square matrix";
constexpr char kSingular[] = "matrixT::operator!: Inversion of a singular matrix";

static_assert(std::is_base_of_v<std::logic_error, gult::matrix_error>);
static_assert(sizeof(gult::matrix_error) == sizeof(std::logic_error), "the error adds no data");
static_assert(sizeof(matrixT) == sizeof(void*), "a handle is one pointer");

// --- construction --------------------------------------------------------------------------------

TEST(Matrix, DefaultIsSixBySixOfZeros) {
    const matrixT m;
    EXPECT_EQ(m.RowCount(), 6u);
    EXPECT_EQ(m.ColCount(), 6u);
    EXPECT_EQ(m.RefCount(), 1);
    EXPECT_EQ(ToRows(m), Zeros(6, 6));
}

TEST(Matrix, ShapeConstructionGivesZeros) {
    const matrixT m(2, 5);
    EXPECT_EQ(m.RowCount(), 2u);
    EXPECT_EQ(m.ColCount(), 5u);
    EXPECT_EQ(m.RefCount(), 1);
    EXPECT_EQ(ToRows(m), Zeros(2, 5));
}

TEST(Matrix, SourceRowsAreCopied) {
    double first[] = {1.0, 2.0, 3.0, 99.0};
    double second[] = {4.0, 5.0, 6.0};
    const double* const source[] = {first, second};
    const matrixT m(2, 3, source);
    first[0] = -1.0;
    EXPECT_EQ(m.RefCount(), 1);
    EXPECT_EQ(ToRows(m), (Rows{{1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}}));
}

TEST(Matrix, NoRowsAtAllIsAMatrix) {
    matrixT none(0, 4);
    EXPECT_EQ(none.RowCount(), 0u);
    EXPECT_EQ(none.ColCount(), 4u);
    matrixT copy = none;
    copy.Unshare();
    EXPECT_EQ(none.RefCount(), 1);
    EXPECT_EQ(copy.RefCount(), 1);
    EXPECT_EQ(none.Transpose().RowCount(), 4u);
    EXPECT_EQ(none.Transpose().ColCount(), 0u);
    EXPECT_EQ(FailureOf([&] { none(0, 0); }), kOutOfRange);
}

TEST(Matrix, NoColumnsAtAllIsAMatrix) {
    matrixT none(3, 0);
    EXPECT_EQ(none.RowCount(), 3u);
    EXPECT_EQ(none.ColCount(), 0u);
    EXPECT_EQ(FailureOf([&] { none(0, 0); }), kOutOfRange);
    EXPECT_EQ(ToRows(matrixT(2, 0) * matrixT(0, 3)), Zeros(2, 3));
}

// --- sharing -------------------------------------------------------------------------------------

TEST(Matrix, CopiesShareAndDropTheirReference) {
    const matrixT original(2, 2);
    EXPECT_EQ(original.RefCount(), 1);
    {
        const matrixT copy(original);
        const matrixT another = copy;
        EXPECT_EQ(original.RefCount(), 3);
        EXPECT_EQ(copy.RefCount(), 3);
        EXPECT_EQ(another.RefCount(), 3);
    }
    EXPECT_EQ(original.RefCount(), 1);
}

TEST(Matrix, AssignmentSharesTheNewAndDropsTheOld) {
    const matrixT old = FromRows({{7.0}});
    matrixT handle = old;
    const matrixT fresh = FromRows({{1.0, 2.0}});
    EXPECT_EQ(old.RefCount(), 2);
    handle = fresh;
    EXPECT_EQ(old.RefCount(), 1);
    EXPECT_EQ(fresh.RefCount(), 2);
    EXPECT_EQ(ToRows(handle), (Rows{{1.0, 2.0}}));
    EXPECT_EQ(ToRows(old), (Rows{{7.0}}));
}

TEST(Matrix, AssignmentToItselfIsHarmless) {
    matrixT m = FromRows({{1.0, 2.0}, {3.0, 4.0}});
    const matrixT& same = m;
    m = same;
    EXPECT_EQ(m.RefCount(), 1);
    EXPECT_EQ(ToRows(m), (Rows{{1.0, 2.0}, {3.0, 4.0}}));

    const matrixT sharer = m;
    m = sharer;  // already the same representation
    EXPECT_EQ(m.RefCount(), 2);
    EXPECT_EQ(ToRows(m), (Rows{{1.0, 2.0}, {3.0, 4.0}}));
}

TEST(Matrix, AssignmentGivesTheMatrixAssignedTo) {
    matrixT a;
    const matrixT b(1, 1);
    EXPECT_EQ(&(a = b), &a);
}

TEST(Matrix, ReadingThroughASharedHandleGivesItAPrivateCopy) {
    matrixT original = FromRows({{1.0, 2.0}, {3.0, 4.0}});
    matrixT copy = original;
    ASSERT_EQ(original.RefCount(), 2);

    EXPECT_EQ(copy(1, 0), 3.0);
    EXPECT_EQ(copy.RefCount(), 1);
    EXPECT_EQ(original.RefCount(), 1);

    copy(1, 0) = 30.0;
    original(0, 1) = 20.0;
    EXPECT_EQ(ToRows(original), (Rows{{1.0, 20.0}, {3.0, 4.0}}));
    EXPECT_EQ(ToRows(copy), (Rows{{1.0, 2.0}, {30.0, 4.0}}));
}

TEST(Matrix, ReadingThroughOneOfThreeHandlesLeavesTheOthersShared) {
    const matrixT first = FromRows({{5.0}});
    const matrixT second = first;
    matrixT third = first;
    EXPECT_EQ(third(0, 0), 5.0);
    EXPECT_EQ(first.RefCount(), 2);
    EXPECT_EQ(second.RefCount(), 2);
    EXPECT_EQ(third.RefCount(), 1);
}

TEST(Matrix, AccessThroughAPrivateHandleKeepsItsElementsInPlace) {
    matrixT m(2, 2);
    double* const element = &m(1, 1);
    *element = 8.0;
    EXPECT_EQ(&m(1, 1), element);
    EXPECT_EQ(m(1, 1), 8.0);
}

TEST(Matrix, TheIndexCheckComesBeforeUnsharing) {
    matrixT m(2, 2);
    const matrixT sharer = m;
    EXPECT_EQ(FailureOf([&] { m(2, 0); }), kOutOfRange);
    EXPECT_EQ(m.RefCount(), 2);
}

TEST(Matrix, UnshareGivesARepresentationOfItsOwn) {
    const matrixT original = FromRows({{1.0, 2.0, 3.0}});
    matrixT copy = original;
    copy.Unshare();
    EXPECT_EQ(original.RefCount(), 1);
    EXPECT_EQ(copy.RefCount(), 1);
    copy(0, 0) = 9.0;
    EXPECT_EQ(ToRows(original), (Rows{{1.0, 2.0, 3.0}}));
    EXPECT_EQ(ToRows(copy), (Rows{{9.0, 2.0, 3.0}}));
}

TEST(Matrix, UnshareOfAPrivateMatrixKeepsItsElements) {
    matrixT m = FromRows({{1.0, 2.0}, {3.0, 4.0}});
    m.Unshare();
    EXPECT_EQ(m.RefCount(), 1);
    EXPECT_EQ(ToRows(m), (Rows{{1.0, 2.0}, {3.0, 4.0}}));
}

TEST(Matrix, PassingByValueGivesTheReferenceBack) {
    const matrixT m(3, 3);
    const auto countInside = [](matrixT inner) { return inner.RefCount(); };
    EXPECT_EQ(countInside(m), 2);
    EXPECT_EQ(m.RefCount(), 1);
}

TEST(Matrix, DeepCopyIsNotLinkedToItsSource) {
    matrixT original = FromRows({{1.0, 2.0}, {3.0, 4.0}});
    matrixT copy = original.DeepCopy();
    EXPECT_EQ(original.RefCount(), 1);
    EXPECT_EQ(copy.RefCount(), 1);
    original(0, 0) = -1.0;
    EXPECT_EQ(ToRows(copy), (Rows{{1.0, 2.0}, {3.0, 4.0}}));
}

TEST(Matrix, DeepCopyOfASharedMatrixLeavesTheSharingAlone) {
    const matrixT original(2, 2);
    const matrixT sharer = original;
    const matrixT copy = original.DeepCopy();
    EXPECT_EQ(original.RefCount(), 2);
    EXPECT_EQ(copy.RefCount(), 1);
}

// --- element access ------------------------------------------------------------------------------

TEST(Matrix, RowOrColumnEqualToTheCountThrows) {
    matrixT m(2, 3);
    EXPECT_EQ(FailureOf([&] { m(2, 0); }), kOutOfRange);
    EXPECT_EQ(FailureOf([&] { m(0, 3); }), kOutOfRange);
    EXPECT_EQ(FailureOf([&] { m(1, 2); }), "");
}

TEST(Matrix, ANegativeSignedIndexThrows) {
    matrixT m(2, 3);
    const int signedIndex = -1;
    EXPECT_EQ(FailureOf([&] { m(static_cast<std::uint32_t>(signedIndex), 0); }), kOutOfRange);
    EXPECT_EQ(FailureOf([&] { m(0, static_cast<std::uint32_t>(signedIndex)); }), kOutOfRange);
}

TEST(Matrix, RowValuesReadWithoutUnsharing) {
    const matrixT m = FromRows({{1.0, 2.0}, {3.0, 4.0}});
    const matrixT sharer = m;
    const double* const row = m.RowValues(1);
    EXPECT_EQ(row[0], 3.0);
    EXPECT_EQ(row[1], 4.0);
    EXPECT_EQ(row, sharer.RowValues(1));
    EXPECT_EQ(m.RefCount(), 2);
    EXPECT_EQ(FailureOf([&] { m.RowValues(2); }), kOutOfRange);
    EXPECT_EQ(m.RefCount(), 2);
}

TEST(Matrix, AMutableRowIsPrivate) {
    matrixT m = FromRows({{1.0, 2.0}, {3.0, 4.0}});
    const matrixT sharer = m;
    EXPECT_EQ(FailureOf([&] { m.MutableRow(2); }), kOutOfRange);
    EXPECT_EQ(m.RefCount(), 2);
    double* const row = m.MutableRow(0);
    row[1] = 20.0;
    EXPECT_EQ(m.RefCount(), 1);
    EXPECT_EQ(sharer.RefCount(), 1);
    EXPECT_EQ(ToRows(m), (Rows{{1.0, 20.0}, {3.0, 4.0}}));
    EXPECT_EQ(ToRows(sharer), (Rows{{1.0, 2.0}, {3.0, 4.0}}));
    EXPECT_EQ(m.MutableRow(0), row);
}

TEST(Matrix, ShrunkRowsAreOutOfReach) {
    matrixT m(5, 3);
    m.SetIdentity();
    EXPECT_EQ(FailureOf([&] { m.RowValues(3); }), kOutOfRange);
    EXPECT_EQ(FailureOf([&] { m.MutableRow(3); }), kOutOfRange);
    EXPECT_EQ(m.RowValues(2)[2], 1.0);
}

// --- arithmetic ----------------------------------------------------------------------------------

TEST(Matrix, AddsAndSubtractsElementwise) {
    matrixT a = FromRows({{1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}});
    const matrixT b = FromRows({{10.0, 20.0, 30.0}, {40.0, 50.0, 60.0}});
    EXPECT_EQ(&(a += b), &a);
    EXPECT_EQ(ToRows(a), (Rows{{11.0, 22.0, 33.0}, {44.0, 55.0, 66.0}}));
    EXPECT_EQ(&(a -= b), &a);
    EXPECT_EQ(ToRows(a), (Rows{{1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}}));
    EXPECT_EQ(&(a *= -2.0), &a);
    EXPECT_EQ(ToRows(a), (Rows{{-2.0, -4.0, -6.0}, {-8.0, -10.0, -12.0}}));
}

TEST(Matrix, CompoundFormsOnASharedMatrixLeaveTheOtherHandleAlone) {
    const Rows before = {{1.0, 2.0}, {3.0, 4.0}};
    const matrixT original = FromRows(before);
    const matrixT other = FromRows({{1.0, 1.0}, {1.0, 1.0}});
    matrixT sum = original;
    matrixT difference = original;
    matrixT scaled = original;
    matrixT product = original;
    EXPECT_EQ(original.RefCount(), 5);
    sum += other;
    difference -= other;
    scaled *= 3.0;
    product *= other;
    EXPECT_EQ(original.RefCount(), 1);
    EXPECT_EQ(other.RefCount(), 1);
    EXPECT_EQ(ToRows(original), before);
    EXPECT_EQ(ToRows(sum), (Rows{{2.0, 3.0}, {4.0, 5.0}}));
    EXPECT_EQ(ToRows(difference), (Rows{{0.0, 1.0}, {2.0, 3.0}}));
    EXPECT_EQ(ToRows(scaled), (Rows{{3.0, 6.0}, {9.0, 12.0}}));
    EXPECT_EQ(ToRows(product), (Rows{{3.0, 3.0}, {7.0, 7.0}}));
    EXPECT_EQ(sum.RefCount(), 1);
    EXPECT_EQ(difference.RefCount(), 1);
    EXPECT_EQ(scaled.RefCount(), 1);
    EXPECT_EQ(product.RefCount(), 1);
}

TEST(Matrix, CompoundFormsAcceptTheMatrixItself) {
    matrixT sum = FromRows({{1.0, 2.0}, {3.0, 4.0}});
    const matrixT& sumItself = sum;
    sum += sumItself;
    EXPECT_EQ(ToRows(sum), (Rows{{2.0, 4.0}, {6.0, 8.0}}));
    matrixT difference = sum;
    const matrixT& differenceItself = difference;
    difference -= differenceItself;
    EXPECT_EQ(ToRows(difference), Zeros(2, 2));
    EXPECT_EQ(ToRows(sum), (Rows{{2.0, 4.0}, {6.0, 8.0}}));
    matrixT square = FromRows({{1.0, 2.0}, {3.0, 4.0}});
    const matrixT& squareItself = square;
    square *= squareItself;
    EXPECT_EQ(ToRows(square), (Rows{{7.0, 10.0}, {15.0, 22.0}}));
}

TEST(Matrix, AddingASharerOfTheSameRepresentationLeavesItAlone) {
    matrixT left = FromRows({{1.0, 2.0}});
    const matrixT right = left;
    left += right;
    EXPECT_EQ(ToRows(left), (Rows{{2.0, 4.0}}));
    EXPECT_EQ(ToRows(right), (Rows{{1.0, 2.0}}));
}

TEST(Matrix, TwoOperandFormsLeaveBothOperandsAlone) {
    const matrixT a = FromRows({{1.0, 2.0}, {3.0, 4.0}});
    const matrixT b = FromRows({{5.0, 6.0}, {7.0, 8.0}});
    const matrixT sum = a + b;
    const matrixT difference = a - b;
    const matrixT product = a * b;
    const matrixT scaled = a * 0.5;
    for (const matrixT* m : {&a, &b, &sum, &difference, &product, &scaled}) {
        EXPECT_EQ(m->RefCount(), 1);
    }
    EXPECT_EQ(ToRows(sum), (Rows{{6.0, 8.0}, {10.0, 12.0}}));
    EXPECT_EQ(ToRows(difference), (Rows{{-4.0, -4.0}, {-4.0, -4.0}}));
    EXPECT_EQ(ToRows(product), (Rows{{19.0, 22.0}, {43.0, 50.0}}));
    EXPECT_EQ(ToRows(scaled), (Rows{{0.5, 1.0}, {1.5, 2.0}}));
    EXPECT_EQ(ToRows(a), (Rows{{1.0, 2.0}, {3.0, 4.0}}));
    EXPECT_EQ(ToRows(b), (Rows{{5.0, 6.0}, {7.0, 8.0}}));
}

TEST(Matrix, ProductTakesRowsOfTheLeftAndColumnsOfTheRight) {
    matrixT left = FromRows({{1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}});
    const matrixT right = FromRows({{1.0}, {10.0}, {100.0}});
    EXPECT_EQ(&(left *= right), &left);
    EXPECT_EQ(left.RowCount(), 2u);
    EXPECT_EQ(left.ColCount(), 1u);
    EXPECT_EQ(ToRows(left), (Rows{{321.0}, {654.0}}));
}

TEST(Matrix, ProductOfAColumnAndARowIsTheirOuterProduct) {
    const matrixT column = FromRows({{1.0}, {2.0}});
    const matrixT row = FromRows({{3.0, 4.0, 5.0}});
    EXPECT_EQ(ToRows(column * row), (Rows{{3.0, 4.0, 5.0}, {6.0, 8.0, 10.0}}));
    EXPECT_EQ(ToRows(row * FromRows({{1.0}, {1.0}, {1.0}})), (Rows{{12.0}}));
}

TEST(Matrix, ProductAddsUpInAscendingInnerOrder) {
    // 1e16 swallows the first 1 and is taken off again, so only the last 1 is left; any other order
    // of these four terms gives another sum.
    const matrixT row = FromRows({{1e16, 1.0, -1e16, 1.0}});
    const matrixT ones = FromRows({{1.0}, {1.0}, {1.0}, {1.0}});
    EXPECT_EQ(ToRows(row * ones), (Rows{{1.0}}));
}

TEST(Matrix, ProductStartsEachElementAtPositiveZero) {
    matrixT product = FromRows({{-1.0}}) * FromRows({{0.0}});
    EXPECT_EQ(product(0, 0), 0.0);
    EXPECT_FALSE(std::signbit(product(0, 0)));  // the term itself is -0
}

TEST(Matrix, InconsistentShapesThrowTheirOwnMessages) {
    const matrixT a(2, 3);
    const matrixT moreRows(3, 3);
    const matrixT moreColumns(2, 4);
    matrixT target = a;
    EXPECT_EQ(FailureOf([&] { target += moreRows; }), kAddition);
    EXPECT_EQ(FailureOf([&] { target += moreColumns; }), kAddition);
    EXPECT_EQ(FailureOf([&] { target -= moreRows; }), kSubtraction);
    EXPECT_EQ(FailureOf([&] { target -= moreColumns; }), kSubtraction);
    EXPECT_EQ(FailureOf([&] { target *= moreColumns; }), kMultiplication);
    EXPECT_EQ(FailureOf([&] { target *= target; }), kMultiplication);
    EXPECT_EQ(FailureOf([&] { (void)(a + moreRows); }), kAddition);
    EXPECT_EQ(FailureOf([&] { (void)(a - moreColumns); }), kSubtraction);
    EXPECT_EQ(FailureOf([&] { (void)(a * moreColumns); }), kMultiplication);
    EXPECT_EQ(FailureOf([&] { (void)(a * moreRows); }), "");
    EXPECT_EQ(ToRows(target), Zeros(2, 3));
}

TEST(Matrix, SameElementCountInAnotherShapeDoesNotAdd) {
    matrixT wide(2, 3);
    const matrixT tall(3, 2);
    EXPECT_EQ(FailureOf([&] { wide += tall; }), kAddition);
    EXPECT_EQ(FailureOf([&] { wide -= tall; }), kSubtraction);
}

TEST(Matrix, TransposeExchangesRowsAndColumns) {
    const matrixT m = FromRows({{1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}});
    const matrixT t = m.Transpose();
    EXPECT_EQ(ToRows(t), (Rows{{1.0, 4.0}, {2.0, 5.0}, {3.0, 6.0}}));
    EXPECT_EQ(t.RefCount(), 1);
    EXPECT_EQ(m.RefCount(), 1);
    EXPECT_EQ(ToRows(t.Transpose()), ToRows(m));
}

// --- identity ------------------------------------------------------------------------------------

TEST(Matrix, IdentityOfASquareMatrix) {
    matrixT m = FromRows({{1.0, 2.0}, {3.0, 4.0}});
    m.SetIdentity();
    EXPECT_EQ(ToRows(m), (Rows{{1.0, 0.0}, {0.0, 1.0}}));
}

TEST(Matrix, IdentityShrinksARectangularMatrixToASquareOne) {
    const Rows identity = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};
    for (const auto& [rowCount, colCount] : {std::pair{3u, 5u}, std::pair{5u, 3u}}) {
        matrixT m(rowCount, colCount);
        for (std::uint32_t i = 0; i < rowCount; ++i) {
            for (std::uint32_t j = 0; j < colCount; ++j) {
                m(i, j) = 7.0;
            }
        }
        m.SetIdentity();
        EXPECT_EQ(m.RowCount(), 3u);
        EXPECT_EQ(m.ColCount(), 3u);
        EXPECT_EQ(ToRows(m), identity);
        EXPECT_EQ(FailureOf([&] { m(3, 0); }), kOutOfRange);
        EXPECT_EQ(FailureOf([&] { m(0, 3); }), kOutOfRange);

        // A shrunk matrix is as good as any other in what follows.
        matrixT copy = m;
        copy.Unshare();
        copy *= 2.0;
        EXPECT_EQ(ToRows(copy - m), identity);
        EXPECT_EQ(ToRows(!m), identity);
        EXPECT_EQ(ToRows(m * matrixT(3, 2)), Zeros(3, 2));
        EXPECT_EQ(ToRows(m.Transpose()), identity);
        EXPECT_EQ(ToRows(m.DeepCopy()), identity);
    }
}

TEST(Matrix, IdentityOfASharedMatrixLeavesTheOtherHandleAlone) {
    const matrixT original = FromRows({{1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}});
    matrixT m = original;
    m.SetIdentity();
    EXPECT_EQ(original.RefCount(), 1);
    EXPECT_EQ(m.RefCount(), 1);
    EXPECT_EQ(ToRows(m), (Rows{{1.0, 0.0}, {0.0, 1.0}}));
    EXPECT_EQ(ToRows(original), (Rows{{1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}}));
}

// --- inverse -------------------------------------------------------------------------------------

TEST(MatrixInverse, MatchesKnownInverses) {
    EXPECT_EQ(ToRows(!FromRows({{4.0}})), (Rows{{0.25}}));
    EXPECT_EQ(ToRows(!FromRows({{2.0, 0.0}, {0.0, -8.0}})), (Rows{{0.5, 0.0}, {0.0, -0.125}}));
    EXPECT_EQ(ToRows(!FromRows({{2.0, 4.0}, {1.0, 4.0}})), (Rows{{1.0, -1.0}, {-0.25, 0.5}}));

    // The 3 by 3 Hilbert matrix has an inverse of whole numbers; its condition number is 524.
    matrixT inverse = !FromRows(
        {{1.0, 1.0 / 2, 1.0 / 3}, {1.0 / 2, 1.0 / 3, 1.0 / 4}, {1.0 / 3, 1.0 / 4, 1.0 / 5}});
    const double expected[3][3] = {
        {9.0, -36.0, 30.0}, {-36.0, 192.0, -180.0}, {30.0, -180.0, 180.0}};
    for (std::uint32_t i = 0; i < 3; ++i) {
        for (std::uint32_t j = 0; j < 3; ++j) {
            EXPECT_NEAR(inverse(i, j), expected[i][j], 1e-10);
        }
    }
}

TEST(MatrixInverse, LeavesItsOperandUnchanged) {
    const Rows before = {{0.0, 2.0}, {4.0, 1.0}};
    const matrixT m = FromRows(before);
    const matrixT sharer = m;
    const matrixT inverse = !m;
    EXPECT_EQ(m.RefCount(), 2);
    EXPECT_EQ(inverse.RefCount(), 1);
    EXPECT_EQ(ToRows(m), before);
    EXPECT_EQ(ToRows(inverse), (Rows{{-0.125, 0.25}, {0.5, 0.0}}));
}

TEST(MatrixInverse, TakesTheLargestElementAsPivot) {
    // Without an exchange of rows the small pivot wipes out the second row and (0, 0) becomes 0.
    matrixT inverse = !FromRows({{1e-20, 1.0}, {1.0, 1.0}});
    EXPECT_NEAR(inverse(0, 0), -1.0, 1e-15);
    EXPECT_NEAR(inverse(0, 1), 1.0, 1e-15);
    EXPECT_NEAR(inverse(1, 0), 1.0, 1e-15);
    EXPECT_NEAR(inverse(1, 1), -1e-20, 1e-15);
}

TEST(MatrixInverse, ExchangesRowsWhereAZeroStandsOnTheDiagonal) {
    // A permutation is inverted by its transpose, without rounding.
    const matrixT cycle = FromRows({{0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}, {1.0, 0.0, 0.0}});
    EXPECT_EQ(ToRows(!cycle), ToRows(cycle.Transpose()));
}

TEST(MatrixInverse, NonSquareThrows) {
    const matrixT wide(2, 3);
    const matrixT tall(3, 2);
    EXPECT_EQ(FailureOf([&] { (void)!wide; }), kNonSquare);
    EXPECT_EQ(FailureOf([&] { (void)!tall; }), kNonSquare);
}

TEST(MatrixInverse, ExactlyZeroPivotThrows) {
    EXPECT_EQ(FailureOf([] { (void)!matrixT(1, 1); }), kSingular);
    EXPECT_EQ(FailureOf([] { (void)!matrixT(); }), kSingular);
    const matrixT zeroColumn = FromRows({{1.0, 0.0, 2.0}, {3.0, 0.0, 4.0}, {5.0, 0.0, 7.0}});
    EXPECT_EQ(FailureOf([&] { (void)!zeroColumn; }), kSingular);
    const matrixT equalRows = FromRows({{1.0, 2.0}, {1.0, 2.0}});
    EXPECT_EQ(FailureOf([&] { (void)!equalRows; }), kSingular);
    EXPECT_EQ(ToRows(equalRows), (Rows{{1.0, 2.0}, {1.0, 2.0}}));
}

TEST(MatrixInverse, ATinyPivotIsNoFailure) {
    matrixT inverse = !FromRows({{1e-300}});
    EXPECT_DOUBLE_EQ(inverse(0, 0), 1e300);
    matrixT diagonal = !FromRows({{2.0, 0.0}, {0.0, 1e-300}});
    EXPECT_EQ(diagonal(0, 0), 0.5);
    EXPECT_DOUBLE_EQ(diagonal(1, 1), 1e300);
}

TEST(MatrixInverse, NotANumberPassesThrough) {
    matrixT inverse = !FromRows({{std::numeric_limits<double>::quiet_NaN()}});
    EXPECT_TRUE(std::isnan(inverse(0, 0)));
}

TEST(MatrixInverse, NoRowsGiveNoRows) {
    const matrixT inverse = !matrixT(0, 0);
    EXPECT_EQ(inverse.RowCount(), 0u);
    EXPECT_EQ(inverse.ColCount(), 0u);
}

// Gauss-Jordan elimination in its plainest form on nested vectors: first largest pivot, division of
// the pivot row, then every other row. The inverse must make the same roundings, element for
// element, since integer searches further on compare nearly equal numbers.
Rows PlainInverse(Rows work) {
    const std::size_t n = work.size();
    Rows result = Zeros(n, n);
    for (std::size_t i = 0; i < n; ++i) {
        result[i][i] = 1.0;
    }
    for (std::size_t k = 0; k < n; ++k) {
        std::size_t chosen = k;
        for (std::size_t i = k + 1; i < n; ++i) {
            if (std::fabs(work[i][k]) > std::fabs(work[chosen][k])) {
                chosen = i;
            }
        }
        std::swap(work[k], work[chosen]);
        std::swap(result[k], result[chosen]);
        const double pivot = work[k][k];
        for (std::size_t j = 0; j < n; ++j) {
            work[k][j] /= pivot;
            result[k][j] /= pivot;
        }
        for (std::size_t i = 0; i < n; ++i) {
            if (i == k) {
                continue;
            }
            const double factor = work[i][k];
            for (std::size_t j = 0; j < n; ++j) {
                work[i][j] -= factor * work[k][j];
                result[i][j] -= factor * result[k][j];
            }
        }
    }
    return result;
}

TEST(MatrixInverse, RoundsAsPlainEliminationDoes) {
    std::mt19937 random(20240309);
    std::uniform_real_distribution<double> element(-1.0, 1.0);
    for (std::size_t n = 1; n <= 24; ++n) {
        Rows rows = Zeros(n, n);
        for (std::vector<double>& row : rows) {
            for (double& value : row) {
                value = element(random);
            }
        }
        EXPECT_EQ(ToRows(!FromRows(rows)), PlainInverse(rows)) << n << " rows";
    }
}

bool SameNumber(double left, double right) {
    return left == right || (std::isnan(left) && std::isnan(right));
}

TEST(MatrixInverse, InfinitiesSpreadAsInPlainElimination) {
    // A row divided by a pivot below the smallest reciprocal holds infinities, and nothing times
    // infinity is no number: rows that the pivot's column does not reach are touched all the same.
    // In the first it is the inverse alone that overflows, in the second the rest of the row.
    const double tiny = std::numeric_limits<double>::denorm_min();
    for (const Rows& rows : {Rows{{tiny, 0.0}, {0.0, 1.0}}, Rows{{tiny, 1.0}, {0.0, 1.0}},
                             Rows{{1.0, 2.0, 3.0}, {0.0, tiny, 1.0}, {0.0, 0.0, 4.0}}}) {
        const Rows inverse = ToRows(!FromRows(rows)), expected = PlainInverse(rows);
        int overflown = 0;
        for (std::size_t i = 0; i < rows.size(); ++i) {
            for (std::size_t j = 0; j < rows.size(); ++j) {
                EXPECT_TRUE(SameNumber(inverse[i][j], expected[i][j])) << i << ", " << j;
                overflown += std::isfinite(inverse[i][j]) ? 0 : 1;
            }
        }
        EXPECT_GE(overflown, 2);
    }
}

TEST(MatrixInverse, OfEqualCandidatesTheFirstRowIsThePivot) {
    // Small whole numbers give ties in most columns; which row is taken shows in the roundings.
    std::mt19937 random(7);
    std::uniform_int_distribution<int> element(-3, 3);
    int inverted = 0;
    for (int round = 0; round < 200; ++round) {
        Rows rows = Zeros(5, 5);
        for (std::vector<double>& row : rows) {
            for (double& value : row) {
                value = element(random);
            }
        }
        const Rows expected = PlainInverse(rows);
        if (!std::isfinite(expected[0][0])) {
            continue;
        }
        ++inverted;
        EXPECT_EQ(ToRows(!FromRows(rows)), expected) << "round " << round;
    }
    EXPECT_GT(inverted, 150);
}

TEST(MatrixInverse, TimesTheMatrixIsTheIdentity) {
    // Diagonally dominant, so that the product is good to some units in the last place.
    std::mt19937 random(99);
    std::uniform_real_distribution<double> element(-1.0, 1.0);
    const std::uint32_t n = 40;
    matrixT m(n, n);
    for (std::uint32_t i = 0; i < n; ++i) {
        for (std::uint32_t j = 0; j < n; ++j) {
            m(i, j) = element(random) + (i == j ? 60.0 : 0.0);
        }
    }
    matrixT product = m * !m;
    for (std::uint32_t i = 0; i < n; ++i) {
        for (std::uint32_t j = 0; j < n; ++j) {
            EXPECT_NEAR(product(i, j), i == j ? 1.0 : 0.0, 1e-13) << i << "," << j;
        }
    }
}

// --- blocks and selection ------------------------------------------------------------------------

TEST(MatrixBlocks, SubBlockTakesTheBlock) {
    const matrixT m = FromRows({{1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}, {7.0, 8.0, 9.0}});
    EXPECT_EQ(ToRows(gult::SubBlock(m, 1, 0, 2, 2)), (Rows{{4.0, 5.0}, {7.0, 8.0}}));
    EXPECT_EQ(ToRows(gult::SubBlock(m, 0, 2, 3, 1)), (Rows{{3.0}, {6.0}, {9.0}}));
    EXPECT_EQ(ToRows(gult::SubBlock(m, 0, 0, 3, 3)), ToRows(m));
    EXPECT_EQ(m.RefCount(), 1);
}

TEST(MatrixBlocks, SubBlockIsNotLinkedToItsSource) {
    matrixT m = FromRows({{1.0, 2.0}, {3.0, 4.0}});
    matrixT block = gult::SubBlock(m, 0, 0, 2, 2);
    EXPECT_EQ(block.RefCount(), 1);
    block(0, 0) = -1.0;
    EXPECT_EQ(m(0, 0), 1.0);
}

TEST(MatrixBlocks, SubBlockThatLeavesTheSourceThrows) {
    const matrixT m(3, 3);
    EXPECT_EQ(FailureOf([&] { (void)gult::SubBlock(m, 2, 0, 2, 1); }), kOutOfRange);
    EXPECT_EQ(FailureOf([&] { (void)gult::SubBlock(m, 0, 1, 1, 3); }), kOutOfRange);
    EXPECT_EQ(FailureOf([&] { (void)gult::SubBlock(m, 3, 3, 1, 1); }), kOutOfRange);
    EXPECT_EQ(m.RefCount(), 1);
}

TEST(MatrixBlocks, SelectionPairSplitsAVectorByItsMask) {
    const int mask[] = {0, 1, -2, 0, 7};
    auto [selected, others] = gult::SelectionPair(5, 3, mask);
    EXPECT_EQ(
        ToRows(selected),
        (Rows{{0.0, 1.0, 0.0, 0.0, 0.0}, {0.0, 0.0, 1.0, 0.0, 0.0}, {0.0, 0.0, 0.0, 0.0, 1.0}}));
    EXPECT_EQ(ToRows(others), (Rows{{1.0, 0.0, 0.0, 0.0, 0.0}, {0.0, 0.0, 0.0, 1.0, 0.0}}));
    const matrixT vector = FromRows({{10.0}, {20.0}, {30.0}, {40.0}, {50.0}});
    EXPECT_EQ(ToRows(selected * vector), (Rows{{20.0}, {30.0}, {50.0}}));
    EXPECT_EQ(ToRows(others * vector), (Rows{{10.0}, {40.0}}));
}

TEST(MatrixBlocks, SelectionOfAllLeavesNoOthers) {
    const int mask[] = {1, 1};
    auto [selected, others] = gult::SelectionPair(2, 2, mask);
    EXPECT_EQ(ToRows(selected), (Rows{{1.0, 0.0}, {0.0, 1.0}}));
    EXPECT_EQ(others.RowCount(), 0u);
    EXPECT_EQ(others.ColCount(), 2u);
}

TEST(MatrixBlocks, SelectionOfNoneLeavesAllAsOthers) {
    const int mask[] = {0, 0};
    auto [selected, others] = gult::SelectionPair(2, 0, mask);
    EXPECT_EQ(selected.RowCount(), 0u);
    EXPECT_EQ(selected.ColCount(), 2u);
    EXPECT_EQ(ToRows(others), (Rows{{1.0, 0.0}, {0.0, 1.0}}));
}

TEST(MatrixBlocks, MaskedBlocksKeepMaskedRowsAndColumns) {
    const int mask[] = {1, 0, 0, -1};
    const matrixT cross = FromRows({{1.0, 2.0, 3.0, 4.0}, {5.0, 6.0, 7.0, 8.0}});
    const matrixT square = FromRows({{11.0, 12.0, 13.0, 14.0},
                                     {21.0, 22.0, 23.0, 24.0},
                                     {31.0, 32.0, 33.0, 34.0},
                                     {41.0, 42.0, 43.0, 44.0}});
    const auto [maskedCross, maskedSquare] = gult::MaskedBlocks(2, 4, mask, cross, square);
    EXPECT_EQ(ToRows(maskedCross), (Rows{{1.0, 4.0}, {5.0, 8.0}}));
    EXPECT_EQ(ToRows(maskedSquare), (Rows{{11.0, 14.0}, {41.0, 44.0}}));
    EXPECT_EQ(cross.RefCount(), 1);
    EXPECT_EQ(square.RefCount(), 1);
}

TEST(MatrixBlocks, MaskedBlocksAgreeWithTheSelectionMatrices) {
    const int mask[] = {0, 1, 1};
    const matrixT cross = FromRows({{1.0, 2.0, 3.0}});
    const matrixT square = FromRows({{4.0, 5.0, 6.0}, {5.0, 7.0, 8.0}, {6.0, 8.0, 9.0}});
    const matrixT selection = gult::SelectionPair(3, 2, mask).first;
    const auto [maskedCross, maskedSquare] = gult::MaskedBlocks(1, 3, mask, cross, square);
    EXPECT_EQ(ToRows(maskedCross), ToRows(cross * selection.Transpose()));
    EXPECT_EQ(ToRows(maskedSquare), ToRows(selection * square * selection.Transpose()));
}

TEST(MatrixBlocks, FlatInversionReadsRowByRowAndWritesInPlace) {
    // Not symmetric, so that rows taken for columns would show.
    double values[] = {2.0, 1.0, 0.0, 4.0, 99.0};
    EXPECT_TRUE(gult::InvertFlat(values, 2));
    EXPECT_DOUBLE_EQ(values[0], 0.5);
    EXPECT_DOUBLE_EQ(values[1], -0.125);
    EXPECT_DOUBLE_EQ(values[2], 0.0);
    EXPECT_DOUBLE_EQ(values[3], 0.25);
    EXPECT_EQ(values[4], 99.0);  // beyond the n by n values nothing is touched
}

TEST(MatrixBlocks, FlatInversionOfASingularArrayThrows) {
    double values[] = {1.0, 2.0, 2.0, 4.0};
    EXPECT_EQ(FailureOf([&] { gult::InvertFlat(values, 2); }), kSingular);
}

TEST(MatrixStorage, MoreElementsThanThereCanBeIsOutOfMemory) {
    EXPECT_THROW(matrixT(0xFFFFFFFFU, 0xFFFFFFFFU), std::bad_alloc);
}

}  // namespace
