#include "ambiguity/lambda.h"

#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

#include "foundation/conversion.h"
#include "foundation/statistics.h"

namespace vornel {

namespace {

constexpr int kMaxSearchPasses = 10000;

// A flat n by n array, element (i, j) at i + j n.
class SquareArray {
  public:
    explicit SquareArray(int n) : n_(static_cast<std::size_t>(n)), values_(n_ * n_, 0.0) {}
    SquareArray(int n, const double* source)
        : n_(static_cast<std::size_t>(n)), values_(source, source + n_ * n_) {}

    double& operator()(int row, int column) {
        return values_[static_cast<std::size_t>(row) + static_cast<std::size_t>(column) * n_];
    }
    double* data() { return values_.data(); }

  private:
    std::size_t n_;
    std::vector<double> values_;
};

double Sign(double x) {
    return x > 0.0 ? 1.0 : (x < 0.0 ? -1.0 : 0.0);
}

double& At(std::vector<double>& values, int i) {
    return values[static_cast<std::size_t>(i)];
}

// The problem in the space in which it is searched: Q = L' D L, and z = Z' a.
struct Decorrelation {
    int n;
    SquareArray L;
    std::vector<double> D;
    SquareArray Z;

    explicit Decorrelation(int size)
        : n(size), L(size), D(static_cast<std::size_t>(size), 0.0), Z(size) {
        for (int i = 0; i < n; ++i) {
            Z(i, i) = 1.0;
        }
    }

    // A = L' D L with a unit diagonal of L; false unless A is positive definite.
    bool LDFactor(const double* Q) {
        SquareArray A(n, Q);
        for (int i = n - 1; i >= 0; --i) {
            At(D, i) = A(i, i);
            if (!(At(D, i) > 0.0)) {
                return false;
            }
            const double root = std::sqrt(At(D, i));
            for (int j = 0; j <= i; ++j) {
                L(i, j) = A(i, j) / root;
            }
            for (int j = 0; j <= i - 1; ++j) {
                for (int k = 0; k <= j; ++k) {
                    A(j, k) -= L(i, k) * L(i, j);
                }
            }
            const double diagonal = L(i, i);
            for (int j = 0; j <= i; ++j) {
                L(i, j) /= diagonal;
            }
        }
        return true;
    }

    void IntegerGauss(int i, int j) {
        const int mu = TruncateToInt(RoundHalfAway(L(i, j)));
        if (mu == 0) {
            return;
        }
        for (int k = i; k < n; ++k) {
            L(k, j) -= static_cast<double>(mu) * L(k, i);
        }
        for (int k = 0; k < n; ++k) {
            Z(k, j) -= static_cast<double>(mu) * Z(k, i);
        }
    }

    void Permute(int j, double del) {
        const double eta = At(D, j) / del;
        const double lam = At(D, j + 1) * L(j + 1, j) / del;
        At(D, j) = eta * At(D, j + 1);
        At(D, j + 1) = del;
        for (int k = 0; k <= j - 1; ++k) {
            const double a0 = L(j, k);
            const double a1 = L(j + 1, k);
            L(j, k) = a1 - L(j + 1, j) * a0;
            L(j + 1, k) = eta * a0 + lam * a1;
        }
        L(j + 1, j) = lam;
        for (int k = j + 2; k < n; ++k) {
            std::swap(L(k, j), L(k, j + 1));
        }
        for (int k = 0; k < n; ++k) {
            std::swap(Z(k, j), Z(k, j + 1));
        }
    }

    // Integer Gauss transforms and permutations until the conditional variances are in order.
    void Reduction() {
        int j = n - 2;
        int k = n - 2;
        while (j >= 0) {
            if (j <= k) {
                for (int i = j + 1; i < n; ++i) {
                    IntegerGauss(i, j);
                }
            }
            const double del = At(D, j) + L(j + 1, j) * L(j + 1, j) * At(D, j + 1);
            // The tolerance ends the loop where the variances tie.
            if (del + 1e-6 < At(D, j + 1)) {
                Permute(j, del);
                k = j;
                j = n - 2;
            } else {
                --j;
            }
        }
    }

    std::vector<double> Transform(const double* a) {
        std::vector<double> z(static_cast<std::size_t>(n), 0.0);
        for (int k = 0; k < n; ++k) {
            for (int i = 0; i < n; ++i) {
                At(z, k) += a[i] * Z(i, k);
            }
        }
        return z;
    }
};

// The candidates found so far, and the bound that they set.
struct Candidates {
    int n, m;
    std::vector<double> E;  // m blocks of n
    double* s;              // their squared distances
    int count = 0;
    int worst = 0;
    double bound = 1e99;

    Candidates(int size, int wanted, double* distances)
        : n(size),
          m(wanted),
          E(static_cast<std::size_t>(size) * static_cast<std::size_t>(wanted), 0.0),
          s(distances) {
        for (int c = 0; c < m; ++c) {
            s[c] = 0.0;
        }
    }

    double* Block(int c) { return E.data() + static_cast<std::ptrdiff_t>(c) * n; }

    void Store(int c, const std::vector<double>& z, double distance) {
        for (int i = 0; i < n; ++i) {
            Block(c)[i] = z[static_cast<std::size_t>(i)];
        }
        s[c] = distance;
    }

    // The bound shrinks only once m candidates stand.
    void Offer(const std::vector<double>& z, double distance) {
        if (count < m) {
            if (count == 0 || s[worst] < distance) {
                worst = count;
            }
            Store(count, z, distance);
            ++count;
            return;
        }
        if (distance < s[worst]) {
            Store(worst, z, distance);
            worst = 0;
            for (int c = 1; c < m; ++c) {
                if (s[worst] < s[c]) {
                    worst = c;
                }
            }
        }
        bound = s[worst];
    }

    // Ascending by distance; ties are exchanged.
    void Sort() {
        for (int i = 0; i < m - 1; ++i) {
            for (int j = i + 1; j < m; ++j) {
                if (s[j] <= s[i]) {
                    std::swap(s[i], s[j]);
                    for (int k = 0; k < n; ++k) {
                        std::swap(Block(i)[k], Block(j)[k]);
                    }
                }
            }
        }
    }
};

// Depth-first walk of the integers round z, from level n-1 down to 0. False when all passes were
// used.
bool IntegerSearch(Decorrelation& problem, std::vector<double>& z, Candidates& found) {
    const int n = problem.n;
    SquareArray S(n);
    std::vector<double> distance(static_cast<std::size_t>(n), 0.0);
    std::vector<double> conditional(static_cast<std::size_t>(n), 0.0);
    std::vector<double> current(static_cast<std::size_t>(n), 0.0);
    std::vector<double> step(static_cast<std::size_t>(n), 0.0);

    int k = n - 1;
    double y = 0.0;
    const auto enterLevel = [&] {
        At(current, k) = RoundHalfAway(At(conditional, k));
        y = At(conditional, k) - At(current, k);
        At(step, k) = Sign(y);
    };
    // The siblings of a level alternate round the conditional value. A step of 0 stays 0.
    const auto nextSibling = [&] {
        At(current, k) += At(step, k);
        y = At(conditional, k) - At(current, k);
        At(step, k) = -At(step, k) - Sign(At(step, k));
    };

    At(conditional, k) = At(z, k);
    enterLevel();
    bool ended = false;
    for (int pass = 0; pass < kMaxSearchPasses; ++pass) {
        const double newDistance = At(distance, k) + y * y / At(problem.D, k);
        if (!(newDistance < found.bound)) {
            if (k == n - 1) {
                ended = true;
                break;
            }
            ++k;
            nextSibling();
        } else if (k != 0) {
            const int below = k - 1;
            At(distance, below) = newDistance;
            for (int i = 0; i <= below; ++i) {
                S(below, i) = S(k, i) + (At(current, k) - At(conditional, k)) * problem.L(k, i);
            }
            k = below;
            At(conditional, k) = At(z, k) + S(k, k);
            enterLevel();
        } else {
            found.Offer(current, newDistance);
            nextSibling();
        }
    }
    found.Sort();
    return ended;
}

// Values and covariance with the half-cycle scale applied, the search, and the candidates as a
// matrix with the scale undone or kept.
bool SearchScaled(int n, int m, gult::matrixT& a, gult::matrixT& Q, gult::matrixT& F,
                  gult::matrixT& s, bool undoScale) {
    const std::size_t size = static_cast<std::size_t>(n > 0 ? n : 0);
    const std::size_t wanted = static_cast<std::size_t>(m > 0 ? m : 0);
    const auto index = [](std::size_t i) { return static_cast<std::uint32_t>(i); };
    std::vector<double> scale(size), scaledA(size), scaledQ(size * size);
    std::vector<double> candidates(size * wanted, 0.0), distances(wanted, 0.0);
    for (std::size_t i = 0; i < size; ++i) {
        const double value = a(index(i), 0);
        const double fraction = std::fabs(value - RoundHalfAway(value));
        scale[i] = fraction <= 0.3 ? 1.0 : 2.0;
        scaledA[i] = scale[i] * value;
    }
    for (std::size_t i = 0; i < size; ++i) {
        for (std::size_t j = 0; j < size; ++j) {
            scaledQ[i + j * size] = scale[i] * Q(index(i), index(j)) * scale[j];
        }
    }
    const bool found =
        LambdaSearch(n, m, scaledA.data(), scaledQ.data(), candidates.data(), distances.data());
    for (std::size_t c = 0; c < wanted; ++c) {
        s(0, index(c)) = distances[c];
        for (std::size_t i = 0; i < size; ++i) {
            const double value = candidates[c * size + i];
            F(index(i), index(c)) = undoScale ? value / scale[i] : value;
        }
    }
    return found;
}

}  // namespace

bool LambdaSearch(int n, int m, const double* a, const double* Q, double* F, double* s) {
    if (n < 1 || m < 1) {
        return false;
    }
    Decorrelation problem(n);
    if (!problem.LDFactor(Q)) {
        return false;
    }
    problem.Reduction();
    std::vector<double> z = problem.Transform(a);
    Candidates found(n, m, s);
    if (!IntegerSearch(problem, z, found)) {
        return false;
    }
    // Read row by row, the flat Z is Z', so that its inverse leads from z back to a.
    if (!gult::InvertFlat(problem.Z.data(), n)) {
        return false;
    }
    for (int c = 0; c < m; ++c) {
        for (int r = 0; r < n; ++r) {
            double value = 0.0;
            for (int k = 0; k < n; ++k) {
                value += problem.Z.data()[r * n + k] * found.Block(c)[k];
            }
            F[c * n + r] = value;
        }
    }
    return true;
}

bool ScaledLambda(int n, int m, gult::matrixT a, gult::matrixT Q, gult::matrixT& F,
                  gult::matrixT& s) {
    return SearchScaled(n, m, a, Q, F, s, true);
}

bool ScaledLambdaRaw(int n, int m, gult::matrixT a, gult::matrixT Q, gult::matrixT& F,
                     gult::matrixT& s) {
    return SearchScaled(n, m, a, Q, F, s, false);
}

void SortByMagnitude(int n, const int* values, int* sorted, int* index) {
    std::vector<int> order(static_cast<std::size_t>(n > 0 ? n : 0));
    for (int i = 0; i < n; ++i) {
        sorted[i] = values[i];
        order[static_cast<std::size_t>(i)] = i;
    }
    for (int i = 0; i < n - 1; ++i) {
        for (int j = i + 1; j < n; ++j) {
            if (std::abs(sorted[j]) < std::abs(sorted[i])) {
                std::swap(sorted[i], sorted[j]);
                std::swap(order[static_cast<std::size_t>(i)], order[static_cast<std::size_t>(j)]);
            }
        }
    }
    if (index != nullptr) {
        for (int i = 0; i < n; ++i) {
            index[i] = order[static_cast<std::size_t>(i)];
        }
    }
}

}  // namespace vornel
