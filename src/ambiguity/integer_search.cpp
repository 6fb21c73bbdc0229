#include "ambiguity/integer_search.h"

#include <algorithm>
#include <cmath>

#include "foundation/index.h"
#include "foundation/statistics.h"

namespace vornel {

using gult::matrixT;

namespace {

constexpr double kConfidence = 0.995;
constexpr double kMinHalfWidth = 1.2;  // cycles
constexpr double kNoScore = 100000000.0;

class Search {
  public:
    Search(matrixT& a, matrixT& Q, int dof, EpochEquations& equations)
        : a_(a),
          Q_(Q),
          equations_(equations),
          n_(static_cast<int>(a.RowCount())),
          t_(StudentQuantile(dof, kConfidence)),
          candidate_(Slot(n_), 0.0) {}

    IntegerPair Run() {
        SetRanges();
        matrixT S(3, 3);
        for (const matrixT& B : equations_.B) {
            S += B.Transpose() * B;
        }
        C_ = !S;
        result_.s1 = result_.s2 = kNoScore;
        result_.best.assign(Slot(n_), 0.0);
        result_.second = result_.best;
        Enter(n_ - 1);
        if (!evaluated_) {
            result_.s1 = result_.s2 = 0.0;
        }
        return result_;
    }

  private:
    void SetRanges() {
        for (int i = 0; i < n_; ++i) {
            double halfWidth = std::sqrt(std::fabs(Q_(Index(i), Index(i)))) * t_;
            if (halfWidth < kMinHalfWidth) {
                widening_ = std::max(widening_, kMinHalfWidth / halfWidth);
                halfWidth = kMinHalfWidth;
            }
            low_.push_back(std::ceil(a_(Index(i), 0) - halfWidth));
            high_.push_back(std::floor(a_(Index(i), 0) + halfWidth));
        }
    }

    // The candidates of a level, against those of the levels above; ambiguity 0 turns fastest.
    void Enter(int level) {
        for (double N = low_[Slot(level)]; N <= high_[Slot(level)]; N += 1.0) {
            candidate_[Slot(level)] = N;
            if (!FitsAbove(level)) {
                continue;
            }
            if (level == 0) {
                Evaluate();
            } else {
                Enter(level - 1);
            }
        }
    }

    bool FitsAbove(int i) {
        for (int j = i + 1; j < n_; ++j) {
            const double change =
                (candidate_[Slot(i)] - candidate_[Slot(j)]) - (a_(Index(i), 0) - a_(Index(j), 0));
            const double variance =
                Q_(Index(i), Index(i)) + Q_(Index(j), Index(j)) - 2.0 * Q_(Index(i), Index(j));
            if (std::fabs(change) > std::sqrt(std::fabs(variance)) * t_ * widening_) {
                return false;
            }
        }
        return true;
    }

    void Evaluate() {
        std::vector<matrixT> residuals;
        matrixT b(3, 1);
        for (std::size_t e = 0; e < equations_.y.size(); ++e) {
            matrixT r = equations_.y[e];
            for (std::uint32_t row = 0; row < r.RowCount(); ++row) {
                r(row, 0) -= candidate_[Slot(equations_.ambiguityIndex[e][row])] *
                             equations_.wavelength[e][row];
            }
            b += equations_.B[e].Transpose() * r;
            residuals.push_back(r);
        }
        const matrixT dx = C_ * b;
        double score = 0.0;
        for (std::size_t e = 0; e < residuals.size(); ++e) {
            const matrixT left = residuals[e] - equations_.B[e] * dx;
            score += (left.Transpose() * left)(0, 0);
        }
        Take(score);
    }

    void Take(double score) {
        evaluated_ = true;
        if (score < result_.s1) {
            result_.s2 = result_.s1;
            result_.second = result_.best;
            result_.s1 = score;
            result_.best = candidate_;
        } else if (score < result_.s2) {
            result_.s2 = score;
            result_.second = candidate_;
        }
    }

    matrixT& a_;
    matrixT& Q_;
    EpochEquations& equations_;
    int n_;
    double t_;  // Student's quantile
    double widening_ = 1.0;
    std::vector<double> low_, high_;  // candidates of each ambiguity
    std::vector<double> candidate_;
    matrixT C_;
    IntegerPair result_;
    bool evaluated_ = false;
};

}  // namespace

IntegerPair SearchIntegers(matrixT a, matrixT Q, int dof, EpochEquations& equations) {
    if (dof < 1 || a.RowCount() == 0) {
        return IntegerPair();
    }
    return Search(a, Q, dof, equations).Run();
}

}  // namespace vornel
