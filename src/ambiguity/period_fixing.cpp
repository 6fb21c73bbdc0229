#include "ambiguity/period_fixing.h"

#include <algorithm>
#include <cstdint>

#include "foundation/index.h"
#include "foundation/trace.h"

namespace vornel {

using gult::matrixT;

namespace {

// A heading "name(number):" and the matrix under it.
void TraceNamed(const char* name, int number, const matrixT& matrix) {
    TraceWrite(5, "%s(%d):\n", name, number);
    TraceMatrix(5, matrix, 13, 4);
}

}  // namespace

bool PeriodFixing::Resolve() {
    bool anySearchSucceeded = false;
    std::vector<int> fixedPeriods;
    for (int p = 0; p < equations.periodCount; ++p) {
        int nx = 0, nb = 0;
        matrixT x, Q;
        std::vector<AmbRstInfo> list;
        equations.ExtractPeriod(p, nx, nb, x, Q, list);
        PeriodFixRecord record(p, LambdaAR(ratioThreshold, nx, nb, x, Q, list));
        if (record.lambda.Resolve() == 0) {
            anySearchSucceeded = true;
        }
        ratio = std::max(ratio, record.lambda.ratio);
        if (record.lambda.fixQuality > 0) {
            fixedPeriods.push_back(p);
        }
        records.push_back(record);
    }
    if (!fixedPeriods.empty()) {
        for (int p = 0; p < equations.periodCount; ++p) {
            if (records[Slot(p)].lambda.fixQuality < 1) {
                GetPeriodXbIWithSubXaIConstraint(static_cast<int>(fixedPeriods.size()),
                                                 fixedPeriods.data(), p);
            }
        }
    }
    Collect();
    return anySearchSucceeded;
}

const PeriodFixRecord& PeriodFixing::RecordOf(int period) const {
    for (const PeriodFixRecord& record : records) {
        if (record.CoversOnly(period)) {
            return record;
        }
    }
    throw gult::matrix_error("PeriodFixing: no record of the period");
}

void PeriodFixing::GetPeriodXbIWithSubXaIConstraint(int fixedCount, const int* fixedPeriods,
                                                    int b) {
    TraceWrite(1, "GetPeriodXbIWithSubXaIConstraint: %d.\n", b);
    const int nc = equations.commonCount;
    const int size = equations.tables.periodSize[Slot(b)];
    matrixT xc0 = SubBlock(equations.x0, 0, 0, Index(nc), 1);
    matrixT xf0(Index(size), 1);
    for (int k = 0; k < size; ++k) {
        xf0(Index(k), 0) = equations.x0(Index(equations.GlobalIndexOf(b, k)), 0);
    }
    matrixT eqN = equations.normal[Slot(b)];
    matrixT eqW = equations.rhs[Slot(b)];
    // Each fixed period adds a prior of its own.
    for (int i = 0; i < fixedCount; ++i) {
        const PeriodFixRecord& fixedRecord = RecordOf(fixedPeriods[i]);
        matrixT xaI = fixedRecord.lambda.xFixed;
        matrixT QaI = fixedRecord.lambda.QxxFixed;
        TraceNamed("xaI", i, xaI);
        TraceNamed("QaI", i, QaI);
        matrixT eqNa = !QaI;
        matrixT eqWa = eqNa * (xaI - xc0);
        TraceNamed("eq_Na", i, eqNa);
        TraceNamed("eq_Wa", i, eqWa);
        for (int row = 0; row < nc; ++row) {
            eqW(Index(row), 0) += eqWa(Index(row), 0);
            for (int column = 0; column < nc; ++column) {
                eqN(Index(row), Index(column)) += eqNa(Index(row), Index(column));
            }
        }
        TraceNamed("eq_N", i, eqN);
        TraceNamed("eq_W", i, eqW);
    }
    const matrixT Qf = !eqN;
    const matrixT dxf = Qf * eqW;
    const matrixT xf = xf0 + dxf;
    TraceNamed("xf0", b, xf0);
    TraceNamed("dxf", b, dxf);
    TraceNamed("xf ", b, xf);
    TraceNamed("Qf ", b, Qf);

    LambdaAR lambda(ratioThreshold, nc, equations.tables.ambCount[Slot(b)], xf, Qf,
                    RecordOf(b).lambda.ambRecords);
    lambda.Resolve();
    if (lambda.fixQuality >= 1) {
        records.emplace_back(b, lambda);
    }
}

// The integers of every record with a result. In model 3 a track needs both of its frequencies.
void PeriodFixing::Collect() {
    for (PeriodFixRecord& record : records) {
        LambdaAR& lambda = record.lambda;
        if (lambda.fixQuality < 0) {
            continue;
        }
        const int tracks = model == VORNEL_MODEL_BOTH ? lambda.nb / 2 : lambda.nb;
        for (int i = 0; i < tracks; ++i) {
            const int second = i + tracks;
            if (lambda.fixMask[Slot(i)] == 0 ||
                (model == VORNEL_MODEL_BOTH && lambda.fixMask[Slot(second)] == 0)) {
                continue;
            }
            const AmbRstInfo& source = lambda.ambRecords.at(Slot(i));
            AmbRstInfo fixed = TrackOf(source);
            fixed.value1 = lambda.ambFixed(Index(i), 0);
            if (model == VORNEL_MODEL_BOTH) {
                fixed.value2 = lambda.ambFixed(Index(second), 0);
            }
            ambiguities.push_back(fixed);
        }
    }
    SortAmbiguities(ambiguities);
    // Of two records of one track the one collected first stays.
    for (std::size_t i = ambiguities.size(); i-- > 1;) {
        if (SameTrack(ambiguities[i], ambiguities[i - 1])) {
            ambiguities.erase(ambiguities.begin() + static_cast<std::ptrdiff_t>(i));
        }
    }
}

}  // namespace vornel
