// Normal equations of all periods side by side.
//
// Background. The periods share the common parameters c (rover coordinates, GLONASS bias) and have
// ambiguities b of their own, because each period has its own reference satellites. With the rows of
// period p summed into
//
//     | Ncc Ncb | | dc |   | Wc |
//     | Nbc Nbb | | db | = | Wb |        (cycles for b, metres for the coordinates)
//
// no element couples the ambiguities of two periods, and the ambiguities are eliminated period by
// period (Helmert 1880; Wolf 1978, "The Helmert block method"):
//
//     S  = sum_p (Ncc - Ncb Nbb^-1 Nbc)        w  = sum_p (Wc - Ncb Nbb^-1 Wb)
//     dc = S^-1 w                              Qcc = S^-1
//     db = Nbb^-1 Wb + M dc                    M   = -Nbb^-1 Nbc
//     Qbb = Nbb^-1 + M Qcc M'                  Qbc = M Qcc
//
// The largest matrix to invert is that of the widest period. Solve gives all corrections, and the
// blocks Qcc, Qbb as cofactors; what couples two blocks is not formed. ExtractPeriod gives one
// period whole, Qbc included: the float problem that the integer search of that period needs. The
// ambiguities of two periods are correlated through c, and this correlation is not used: each
// period is fixed by itself.
//
// How it fails. Nbb is singular when a period has an ambiguity without a row, S when the satellites
// of all periods together do not determine the coordinates; matrixT throws, and the run ends. In
// model 3 with more than one period the float solution gives two ambiguities the same global index
// (see GlobalIndexOf there): x0 has one value for both, and the period that comes later sets it.
//
// Three ways to count parameters stand here:
//   local    in a period: common first, then its ambiguities
//   global   in x0: common first, then by position in the list of ambiguities
//   stacked  in x: common first, then period by period the ambiguities in local order
// Global and stacked agree when the list is in period order and the model is not 3.
#pragma once

#include <cstdint>
#include <vector>

#include "foundation/matrix.h"
#include "run/ambiguity_records.h"

namespace vornel {

// Type codes of parameters.
inline constexpr int kCoordinateParameter = 1;
inline constexpr int kBiasParameter = 2;
inline constexpr int kUnusedBiasParameter = 6;
inline constexpr int kAmbiguityParameter = 4;

// Which parameters and ambiguities each period has.
struct PeriodTables {
    std::vector<int> globalTypes;  // type code of each global parameter
    std::vector<int> periodSize;   // by period: parameters
    std::vector<int> periodTypes;  // rowStride entries a period: type code of each local parameter
    std::vector<int>
        globalIndex;            // rowStride entries a period: global index of each local parameter
    std::vector<int> ambCount;  // by period; in model 3 twice its tracks
    std::vector<int> ambSat;    // maxAmbiguities entries a period: satellite
    std::vector<int>
        ambList;  // maxAmbiguities entries a period: position in the list of ambiguities
};

class PeriodEquations {
  public:
    int periodCount = 0;
    int maxAmbiguities = 0;  // of the widest period
    int rowStride = 0;
    unsigned char biasFlag = 0;    // 1 when a bias is estimated; kept
    unsigned char periodFlag = 0;  // kept
    unsigned char thirdFlag = 1;   // kept
    int model = 0;
    int commonCount = 0;
    int totalCount = 0;  // parameters of the run
    PeriodTables tables;
    std::vector<gult::matrixT> normal;       // by period: N
    std::vector<gult::matrixT> rhs;          // by period: W
    gult::matrixT x0;                        // start vector, global
    gult::matrixT x;                         // solution, stacked
    gult::matrixT spareA;                    // carried, read by nothing
    gult::matrixT qCommon;                   // cofactors of the common parameters
    gult::matrixT spareB;                    // carried, read by nothing
    std::vector<gult::matrixT> mapToPeriod;  // by period: -Nbb^-1 Nbc
    std::vector<gult::matrixT> qPeriod;      // by period: Nbb^-1
    std::vector<AmbRstInfo> ambiguities;     // of the last solve; the tables index it

    PeriodEquations() = default;
    // flag other than 0 widens the rows of the tables by the number of periods.
    PeriodEquations(int model, int periodCount, int maxAmbiguities, unsigned char flag);

    void Set(unsigned char hasBias, unsigned char periodFlagValue, int commonParameters,
             int allParameters, const PeriodTables& newTables,
             const std::vector<gult::matrixT>& normals, const std::vector<gult::matrixT>& rhsides,
             const gult::matrixT& startVector);

    // Solves for x; q: the stacked cofactors, blocks on the diagonal alone: the coupling between
    // blocks is dropped.
    void Solve(gult::matrixT& q);

    void SetAmbiguities(const std::vector<AmbRstInfo>& list) { ambiguities = list; }

    // -1 for a period out of range, a negative local index, or one above the period's size.
    int GlobalIndexOf(int period, int local) const;

    // sum - sum over the periods of rhsArray' dx, dx being the period's solution minus its start.
    double ReducedSum(double sum, std::vector<gult::matrixT>& rhsArray);

    // Period p as a float problem: nx common parameters and nb ambiguities, their values, cofactors
    // with the full coupling, and the records of its tracks.
    void ExtractPeriod(int p, int& nx, int& nb, gult::matrixT& values, gult::matrixT& cofactors,
                       std::vector<AmbRstInfo>& list);

    // Records that stand behind the ambiguities of period p: in model 3 one for two.
    std::vector<AmbRstInfo> AmbiguitiesOfPeriod(int p) const;
};

}  // namespace vornel
