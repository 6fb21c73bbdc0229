// Partial ambiguity resolution.
//
// Background. The float problem gives parameters x and real ambiguities a with their cofactors. The
// integers that fit best minimise (a - z)' Qaa^-1 (a - z); LAMBDA finds the m best of them (Teunissen
// 1995; Chang, Yang and Zhou 2005; here ambiguity/lambda.h). Whether the best is to be believed is
// asked by the ratio of the second squared norm to the first, s2 / s1, against a fixed threshold
// (Euler and Schaffrin 1991; for its limits Teunissen and Verhagen 2009). One bad ambiguity spoils
// the ratio of all, so subsets are tried where the whole set does not pass (partial fixing:
// Teunissen, Joosten and Tiberius 1999). In order:
//
//   1. The whole set, with 5 candidates, 10 for more than 12 ambiguities. It stands at once when its
//      ratio is above the threshold and above 2.
//   2. By agreement. For each ambiguity: in how many pairs of successive candidates it stays the
//      same. An ambiguity that changes from candidate to candidate is the uncertain one. Level by
//      level those with the lowest counts are dropped, with four at least kept. The first subset
//      whose ratio beats both the threshold and the whole set is taken.
//   3. By elimination, when nothing has passed: from the ambiguities that agree most, those with the
//      fewest rows are dropped one by one, under the same test, down to four. A subset that does not
//      pass but has a ratio above 1.8 replaces what there was.
//
// The integers are always those of the search on the whole set. A subset is searched for its ratio
// only. A dropped ambiguity whose float value lies within 0.15 cycle of the best candidate's comes
// back in. With the kept ones the other parameters are conditioned,
//
//     x* = x - Qxa Qaa^-1 (a - z),    Q* = Qxx - Qxa Qaa^-1 Qax,
//
// and these serve the periods that could not be fixed (ambiguity/period_fixing.h).
//
// An ambiguity more than 0.3 cycle from an integer is searched on half cycles, for the whole set and
// anew for each subset. Its result may then be half an integer, and its nearest neighbours lie
// closer, so that the ratio of such a set comes out lower than on whole cycles.
//
// How it fails. -1 when Qaa is not positive definite or the search takes more than 10000 steps; the
// period then gives no integers. A ratio below the threshold is no failure: the result is there with
// grade 0, its integers are used, and the status says "ratio low". What the stochastic model does not
// know, such as the ionosphere over a long baseline, can give a wrong set a high ratio.
#include "ambiguity/lambda_ar.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <tuple>
#include <utility>

#include "ambiguity/lambda.h"
#include "foundation/index.h"
#include "foundation/statistics.h"
#include "foundation/trace.h"

namespace vornel {

using gult::matrixT;

namespace {

// A whole set that passes a lower threshold by less than this still competes with its subsets.
constexpr double kSurePass = 2.0;
// An elimination trial above this ratio is kept even where it does not pass.
constexpr double kWorthKeeping = 1.8;
constexpr int kSmallestSubset = 4;

double RatioOf(matrixT& s) {
    return s(0, 1) / (s(0, 0) + 1e-12);
}

// What PAR gives: the kept set and its ratio. The values are always those of the whole search.
struct Selection {
    int nFixed;
    double ratio;
    std::vector<int> mask;

    void Take(int count, double newRatio, const std::vector<int>& newMask) {
        nFixed = count;
        ratio = newRatio;
        mask = newMask;
    }
};

// In how many pairs of successive candidates each ambiguity stays the same.
std::vector<int> AgreementCounts(matrixT& candidates, int nb, int candidateCount) {
    std::vector<int> counts(static_cast<std::size_t>(nb), 0);
    for (int j = 0; j < candidateCount - 1; ++j) {
        for (int i = 0; i < nb; ++i) {
            const double change =
                candidates(Index(i), Index(j)) - candidates(Index(i), Index(j + 1));
            if (std::fabs(change) < 0.1) {
                ++counts[static_cast<std::size_t>(i)];
            }
        }
    }
    return counts;
}

// Ambiguities in the order in which the elimination drops them: fewest rows first. A record that
// serves two frequencies lends its rows to both; an ambiguity without a record counts 0.
std::vector<int> DropOrder(int nb, const std::vector<AmbRstInfo>& records) {
    const int recordCount = static_cast<int>(records.size());
    std::vector<int> keys(static_cast<std::size_t>(nb), 0);
    for (int i = 0; i < std::min(nb, recordCount); ++i) {
        const int rows = records[static_cast<std::size_t>(i)].rows1;
        keys[static_cast<std::size_t>(i)] = rows;
        if (recordCount < nb && recordCount + i < nb) {
            keys[static_cast<std::size_t>(recordCount + i)] = rows;
        }
    }
    std::vector<int> sorted(keys.size()), order(keys.size());
    SortByMagnitude(nb, keys.data(), sorted.data(), order.data());
    return order;
}

// The trials on subsets of one float problem.
class SubsetTrials {
  public:
    SubsetTrials(LambdaAR& resolver, int nb, const matrixT& a, const matrixT& Q, double wholeRatio,
                 std::vector<int> counts, std::vector<int> dropOrder, int levels)
        : resolver_(resolver),
          nb_(nb),
          a_(a),
          Q_(Q),
          wholeRatio_(wholeRatio),
          counts_(std::move(counts)),
          dropOrder_(std::move(dropOrder)),
          levels_(levels) {
        std::vector<int> sorted(counts_.size());
        SortByMagnitude(nb, counts_.data(), sorted.data(), nullptr);
        maxCount_ = sorted.back();
    }

    // Drops the ambiguities that agree in at most `level` pairs, level by level, never below four
    // kept. True when a set passed and was taken.
    bool ByAgreement(Selection& best) {
        std::vector<int> histogram(static_cast<std::size_t>(levels_), 0);
        for (const int count : counts_) {
            ++histogram[static_cast<std::size_t>(count)];
        }
        for (int level = 0; level < maxCount_; ++level) {
            if (histogram[static_cast<std::size_t>(level)] < 1) {
                continue;
            }
            std::vector<int> mask(static_cast<std::size_t>(nb_), 1);
            int m = nb_;
            for (int i = 0; i < nb_ && m >= kSmallestSubset + 1; ++i) {
                if (!(CountOf(i) > level)) {
                    mask[static_cast<std::size_t>(i)] = 0;
                    --m;
                }
            }
            const double ratio = Try(m, mask);
            if (Passes(ratio)) {
                best.Take(m, ratio, mask);
                return true;
            }
        }
        return false;
    }

    // Starts from the ambiguities that agree most, and drops one after the other. True when a set
    // passed and was taken; a set that only came close is taken as well, the last of these
    // standing.
    bool ByElimination(Selection& best) {
        std::vector<int> mask(static_cast<std::size_t>(nb_), 1);
        if (maxCount_ > 0) {
            for (int i = 0; i < nb_; ++i) {
                if (CountOf(i) < maxCount_) {
                    mask[static_cast<std::size_t>(i)] = 0;
                }
            }
        }
        int m = static_cast<int>(std::count(mask.begin(), mask.end(), 1));
        for (const int i : dropOrder_) {
            if (CountOf(i) != maxCount_) {
                continue;
            }
            mask[static_cast<std::size_t>(i)] = 0;
            --m;
            if (m < kSmallestSubset) {
                return false;
            }
            const double ratio = Try(m, mask);
            if (Passes(ratio)) {
                best.Take(m, ratio, mask);
                return true;
            }
            if (ratio > kWorthKeeping) {
                best.Take(m, ratio, mask);
            }
        }
        return false;
    }

  private:
    int CountOf(int i) const { return counts_[static_cast<std::size_t>(i)]; }

    bool Passes(double ratio) const {
        return ratio > resolver_.ratioThreshold && ratio > wholeRatio_;
    }

    double Try(int m, const std::vector<int>& mask) {
        const auto [S, T] = gult::SelectionPair(nb_, m, mask.data());
        double ratio = 0.0;
        matrixT unusedCandidates;
        resolver_.TrySubset(nb_, a_, Q_, m, S, T, unusedCandidates, ratio);
        return ratio;
    }

    LambdaAR& resolver_;
    int nb_;
    matrixT a_, Q_;
    double wholeRatio_;
    std::vector<int> counts_;
    std::vector<int> dropOrder_;
    int levels_;
    int maxCount_ = 0;
};

}  // namespace

int GradeOfFix(double ratio, double ratioThreshold, int nFixed, int nb) {
    if (!(ratioThreshold <= ratio)) {
        return 0;
    }
    const int grade = ratio <= 3.0 ? 1 : (ratio <= 5.0 ? 2 : 3);
    if (grade == 1 && nFixed >= 6 && nFixed > 0.8 * nb) {
        return 2;
    }
    if (grade == 2 && nFixed >= 6 && nFixed > 0.6 * nb) {
        return 3;
    }
    return grade;
}

LambdaAR::LambdaAR(double threshold, int parameterCount, int ambiguityCount, const matrixT& values,
                   const matrixT& cofactors, const std::vector<AmbRstInfo>& records)
    : ratioThreshold(threshold <= 0.0 ? VORNEL_DEFAULT_RATIO_THRESHOLD : threshold),
      n(parameterCount + ambiguityCount),
      nx(parameterCount),
      nb(ambiguityCount),
      x(values.DeepCopy()),
      Q(cofactors.DeepCopy()),
      fixMask(static_cast<std::size_t>(ambiguityCount), 0),
      ambRecords(records) {}

int LambdaAR::Resolve() {
    const matrixT xc = SubBlock(x, 0, 0, Index(nx), 1);
    matrixT a = SubBlock(x, Index(nx), 0, Index(nb), 1);
    const matrixT Qxx = SubBlock(Q, 0, 0, Index(nx), Index(nx));
    matrixT Qaa = SubBlock(Q, Index(nx), Index(nx), Index(nb), Index(nb));

    double parRatio = 1.0;
    int kept = 0;
    std::vector<int> mask(static_cast<std::size_t>(nb), 0);
    matrixT fixed(Index(nb), 1);
    if (PAR(nb, a, Qaa, ambRecords, kept, mask.data(), fixed, parRatio) == -1) {
        fixQuality = -1;
        return -1;
    }
    // The grade counts the set that passed the test, not what comes back below.
    fixQuality = GradeOfFix(parRatio, ratioThreshold, kept, nb);

    matrixT Qxa = SubBlock(Q, 0, Index(nx), Index(nx), Index(nb));
    // An ambiguity that was dropped but lies near its best candidate is let back in.
    for (int i = 0; i < nb && kept < nb; ++i) {
        int& keeps = mask[static_cast<std::size_t>(i)];
        if (keeps == 0 && std::fabs(a(Index(i), 0) - RoundHalfAway(fixed(Index(i), 0))) < 0.15) {
            keeps = 1;
            ++kept;
        }
    }

    matrixT da(Index(kept), 1);
    std::uint32_t row = 0;
    for (int i = 0; i < nb; ++i) {
        if (mask[static_cast<std::size_t>(i)] != 0) {
            da(row++, 0) = a(Index(i), 0) - fixed(Index(i), 0);
        }
    }
    if (kept < nb) {
        std::tie(Qxa, Qaa) = gult::MaskedBlocks(nx, nb, mask.data(), Qxa, Qaa);
    }
    ConditionalUpdate(Qxx, Qxa, Qaa, da, xc, xFixed, QxxFixed);

    ratio = std::min(parRatio, VORNEL_GREATEST_RATIO);
    nFixed = kept;
    fixMask = mask;
    ambFixed = fixed;
    return 0;
}

int LambdaAR::PAR(int ambiguityCount, matrixT a, matrixT Qa, std::vector<AmbRstInfo> records,
                  int& keptCount, int* mask, matrixT& fixed, double& resultRatio) {
    TraceWrite(3, " LambdaAR::PAR : nb=%d.\n", ambiguityCount);
    const int candidateCount = ambiguityCount > 12 ? 10 : 5;
    matrixT candidates(Index(ambiguityCount), Index(candidateCount));
    matrixT s(1, Index(candidateCount));
    if (!ScaledLambda(ambiguityCount, candidateCount, a, Qa, candidates, s)) {
        return -1;
    }
    const double wholeRatio = RatioOf(s);
    Selection best{ambiguityCount, wholeRatio,
                   std::vector<int>(static_cast<std::size_t>(ambiguityCount), 1)};
    for (int i = 0; i < ambiguityCount; ++i) {
        fixed(Index(i), 0) = candidates(Index(i), 0);
    }
    bool passed = wholeRatio > ratioThreshold;
    if (!(passed && wholeRatio > kSurePass)) {
        SubsetTrials trials(*this, ambiguityCount, a, Qa, wholeRatio,
                            AgreementCounts(candidates, ambiguityCount, candidateCount),
                            DropOrder(ambiguityCount, records), candidateCount);
        if (trials.ByAgreement(best)) {
            passed = true;
        } else if (!passed) {
            passed = trials.ByElimination(best);
        }
    }
    keptCount = best.nFixed;
    resultRatio = best.ratio;
    std::copy(best.mask.begin(), best.mask.end(), mask);
    return passed ? 1 : 0;
}

bool LambdaAR::TrySubset(int /*ambiguityCount*/, matrixT a, matrixT Qa, int m, matrixT S,
                         matrixT /*T*/, matrixT& /*candidates*/, double& resultRatio) {
    const matrixT subset = S * a;
    const matrixT subsetQ = S * Qa * S.Transpose();
    resultRatio = 0.0;
    matrixT F(Index(m), 2);
    matrixT s(1, 2);
    if (!ScaledLambdaRaw(m, 2, subset, subsetQ, F, s)) {
        return false;
    }
    resultRatio = RatioOf(s);
    return resultRatio > ratioThreshold;
}

void LambdaAR::ConditionalUpdate(const matrixT& Qxx, const matrixT& Qxa, const matrixT& Qaa,
                                 const matrixT& da, matrixT x, matrixT& xOut, matrixT& QOut) {
    const matrixT M = Qxa * !Qaa;
    xOut = x - M * da;
    QOut = Qxx - M * Qxa.Transpose();
}

}  // namespace vornel
