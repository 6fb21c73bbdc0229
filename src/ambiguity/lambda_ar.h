// Partial ambiguity resolution of one float problem: all ambiguities if the ratio test lets them
// pass, else a subset that does; a grade of the result; the other parameters conditioned on what
// was kept.
#pragma once

#include <vector>

#include "foundation/matrix.h"
#include "run/ambiguity_records.h"

namespace vornel {

class LambdaAR {
  public:
    double ratioThreshold = 0.0;
    double ratio = 1.0;    // of the result, at most 99
    int n = 0;             // nx + nb
    int nx = 0;            // parameters ahead of the ambiguities
    int nb = 0;            // ambiguities
    int nFixed = 0;        // ambiguities kept
    gult::matrixT x;       // n by 1: float solution
    gult::matrixT Q;       // n by n: its cofactors
    gult::matrixT xFixed;  // nx by 1: conditioned parameters
    gult::matrixT
        ambFixed;  // nb by 1, cycles: those not kept have the best candidate's value all the same
    gult::matrixT QxxFixed;    // nx by nx: conditioned cofactors
    std::vector<int> fixMask;  // nb entries: 1 kept, 0 not
    int fixQuality = 0;        // -1 no candidates, 0 ratio too low, 1 to 3 fixed
    std::vector<AmbRstInfo>
        ambRecords;  // one an ambiguity, or one for two where it serves two frequencies

    LambdaAR() = default;
    // A threshold at or below 0 becomes VORNEL_DEFAULT_RATIO_THRESHOLD.
    LambdaAR(double ratioThreshold, int nx, int nb, const gult::matrixT& x, const gult::matrixT& Q,
             const std::vector<AmbRstInfo>& records);
    LambdaAR(const LambdaAR&) = default;
    LambdaAR& operator=(const LambdaAR&) = default;
    virtual ~LambdaAR() = default;

    // 0 when a result exists, whatever its grade; -1 when the search failed, and the results stay
    // as they were.
    int Resolve();

    // Fixes all nb ambiguities a (covariance Q, cycles) or a subset. -1 when the search failed; 1
    // when a set that passed the ratio test stands, else 0. mask: 1 for the set kept; fixed: the
    // best candidate of the whole set, whatever the subset; rows1 of the records orders the
    // elimination.
    int PAR(int nb, gult::matrixT a, gult::matrixT Q, std::vector<AmbRstInfo> records, int& nFixed,
            int* mask, gult::matrixT& fixed, double& ratio);

    // Ratio of the subset of m ambiguities that S (m by nb) picks; T picks the others. 0.0 when the
    // search failed. candidates is not written. Whether the ratio is above the threshold.
    bool TrySubset(int nb, gult::matrixT a, gult::matrixT Q, int m, gult::matrixT S,
                   gult::matrixT T, gult::matrixT& candidates, double& ratio);

    // Parameters x with cofactors Qxx, conditioned on ambiguities that change by -da: xOut = x - M
    // da and QOut = Qxx - M Qxa', M = Qxa Qaa^-1.
    static void ConditionalUpdate(const gult::matrixT& Qxx, const gult::matrixT& Qxa,
                                  const gult::matrixT& Qaa, const gult::matrixT& da,
                                  gult::matrixT x, gult::matrixT& xOut, gult::matrixT& QOut);
};

// Grade of a set of nFixed out of nb ambiguities: 0 for a ratio below its threshold or not a
// number, else 1 to 3.
int GradeOfFix(double ratio, double ratioThreshold, int nFixed, int nb);

}  // namespace vornel
