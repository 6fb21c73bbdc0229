#include "run/period_equations.h"

#include "foundation/index.h"

namespace vornel {

using gult::matrixT;

namespace {

// Copies `block` into `target` with its first element at (row, column).
void PutBlock(matrixT& target, matrixT block, std::uint32_t row, std::uint32_t column) {
    for (std::uint32_t i = 0; i < block.RowCount(); ++i) {
        for (std::uint32_t j = 0; j < block.ColCount(); ++j) {
            target(row + i, column + j) = block(i, j);
        }
    }
}

// N and W of a period, split at the common parameters.
struct SplitEquations {
    matrixT Ncc, Ncb, Nbc, Nbb, Wc, Wb;

    SplitEquations(const matrixT& N, const matrixT& W, std::uint32_t nc)
        : Ncc(SubBlock(N, 0, 0, nc, nc)),
          Ncb(SubBlock(N, 0, nc, nc, N.ColCount() - nc)),
          Nbc(SubBlock(N, nc, 0, N.RowCount() - nc, nc)),
          Nbb(SubBlock(N, nc, nc, N.RowCount() - nc, N.ColCount() - nc)),
          Wc(SubBlock(W, 0, 0, nc, 1)),
          Wb(SubBlock(W, nc, 0, W.RowCount() - nc, 1)) {}
};

}  // namespace

PeriodEquations::PeriodEquations(int solveModel, int periods, int widest, unsigned char flag)
    : periodCount(periods),
      maxAmbiguities(widest),
      rowStride(widest + 5 + (flag != 0 ? periods : 0)),
      model(solveModel) {
    tables.periodSize.assign(Slot(periods), 0);
    tables.ambCount.assign(Slot(periods), 0);
    tables.periodTypes.assign(Slot(periods) * Slot(rowStride), 0);
    tables.globalIndex.assign(Slot(periods) * Slot(rowStride), 0);
    tables.ambSat.assign(Slot(periods) * Slot(maxAmbiguities), 0);
    tables.ambList.assign(Slot(periods) * Slot(maxAmbiguities), 0);
}

void PeriodEquations::Set(unsigned char hasBias, unsigned char periodFlagValue,
                          int commonParameters, int allParameters, const PeriodTables& newTables,
                          const std::vector<matrixT>& normals, const std::vector<matrixT>& rhsides,
                          const matrixT& startVector) {
    biasFlag = hasBias;
    periodFlag = periodFlagValue;
    commonCount = commonParameters;
    totalCount = allParameters;
    tables = newTables;
    normal = normals;
    rhs = rhsides;
    x0 = startVector;
}

void PeriodEquations::Solve(matrixT& q) {
    const std::uint32_t nc = Index(commonCount);
    matrixT Sc(nc, nc), Sw(nc, 1);
    std::vector<SplitEquations> split;
    qPeriod.clear();
    mapToPeriod.clear();
    for (int p = 0; p < periodCount; ++p) {
        split.emplace_back(normal[Slot(p)], rhs[Slot(p)], nc);
        const SplitEquations& equations = split.back();
        qPeriod.push_back(!equations.Nbb);
        const matrixT T = equations.Ncb * qPeriod.back();
        Sc += equations.Ncc - T * equations.Nbc;
        Sw += equations.Wc - T * equations.Wb;
    }
    qCommon = !Sc;
    const matrixT xc = qCommon * Sw;

    std::uint32_t stackedSize = nc;
    for (const SplitEquations& equations : split) {
        stackedSize += equations.Nbb.RowCount();
    }
    matrixT corrections(stackedSize, 1);
    q = matrixT(stackedSize, stackedSize);
    PutBlock(corrections, xc, 0, 0);
    PutBlock(q, qCommon, 0, 0);
    std::uint32_t offset = nc;
    for (std::size_t p = 0; p < split.size(); ++p) {
        const matrixT& inverse = qPeriod[p];
        const matrixT G = inverse * split[p].Nbc;
        const matrixT xb = inverse * split[p].Wb - G * xc;
        PutBlock(corrections, xb, offset, 0);
        PutBlock(q, inverse + G * qCommon * G.Transpose(), offset, offset);
        mapToPeriod.push_back(G * -1.0);
        offset += xb.RowCount();
    }
    x = x0 + corrections;
}

int PeriodEquations::GlobalIndexOf(int period, int local) const {
    if (period < 0 || period >= periodCount || local < 0 ||
        local > tables.periodSize[Slot(period)]) {
        return -1;
    }
    const std::size_t position = Slot(period) * Slot(rowStride) + Slot(local);
    // One past the last parameter is let through by the test above, and may stand past the table.
    return position < tables.globalIndex.size() ? tables.globalIndex[position] : -1;
}

double PeriodEquations::ReducedSum(double sum, std::vector<matrixT>& rhsArray) {
    for (int p = 0; p < periodCount; ++p) {
        const int size = tables.periodSize[Slot(p)];
        matrixT dx(Index(size), 1);
        for (int k = 0; k < size; ++k) {
            const std::uint32_t g = Index(GlobalIndexOf(p, k));
            dx(Index(k), 0) = x(g, 0) - x0(g, 0);
        }
        sum -= (rhsArray[Slot(p)].Transpose() * dx)(0, 0);
    }
    return sum;
}

void PeriodEquations::ExtractPeriod(int p, int& nx, int& nb, matrixT& values, matrixT& cofactors,
                                    std::vector<AmbRstInfo>& list) {
    nx = commonCount;
    nb = tables.periodSize[Slot(p)] - commonCount;
    int offset = 0;
    for (int earlier = 0; earlier < p; ++earlier) {
        offset += tables.periodSize[Slot(earlier)] - commonCount;
    }
    const std::uint32_t size = Index(nx + nb);
    values = matrixT(size, 1);
    for (int k = 0; k < nx + nb; ++k) {
        values(Index(k), 0) = x(Index(k < nx ? k : k + offset), 0);
    }
    const matrixT& map = mapToPeriod[Slot(p)];
    const matrixT cross = map * qCommon;
    cofactors = matrixT(size, size);
    PutBlock(cofactors, qCommon, 0, 0);
    PutBlock(cofactors, cross, Index(nx), 0);
    PutBlock(cofactors, cross.Transpose(), 0, Index(nx));
    PutBlock(cofactors, qPeriod[Slot(p)] + map * qCommon * map.Transpose(), Index(nx), Index(nx));
    list = AmbiguitiesOfPeriod(p);
}

std::vector<AmbRstInfo> PeriodEquations::AmbiguitiesOfPeriod(int p) const {
    const int count =
        model == VORNEL_MODEL_BOTH ? tables.ambCount[Slot(p)] / 2 : tables.ambCount[Slot(p)];
    std::vector<AmbRstInfo> list;
    for (int i = 0; i < count; ++i) {
        const int position = tables.ambList[Slot(p) * Slot(maxAmbiguities) + Slot(i)];
        if (position >= static_cast<int>(ambiguities.size())) {
            throw gult::matrix_error("PeriodEquations: no record of an ambiguity");
        }
        list.push_back(ambiguities[Slot(position)]);
    }
    return list;
}

}  // namespace vornel
