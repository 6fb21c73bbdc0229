// The query exports: each finds its record and copies plain numbers out of it. They test nothing
// but the request itself; without a solver object they must not be called.
#include <algorithm>

#include "VornelBlCore.h"
#include "exports/process.h"
#include "foundation/satellite.h"
#include "run/solution_records.h"

namespace vornel {

namespace {

ResultManage& Results() {
    return CurrentProcess().solver->resultManage;
}

// nullptr for an index outside the list.
template <class Record>
Record* ByIndex(std::vector<Record>& records, int index) {
    return index >= 0 && index < static_cast<int>(records.size())
               ? &records[static_cast<std::size_t>(index)]
               : nullptr;
}

// The first record of a solve model; nullptr for a model outside 1 to 6, or without a record.
template <class Record>
Record* ByMode(std::vector<Record>& records, int mode) {
    if (mode < VORNEL_MODEL_FIRST || mode > VORNEL_MODEL_IONO_FREE) {
        return nullptr;
    }
    const auto record = std::find_if(records.begin(), records.end(),
                                     [mode](const Record& other) { return other.mode == mode; });
    return record == records.end() ? nullptr : &*record;
}

// The points of a satellite and kind; nullptr for a request that names none.
template <class Record>
const std::vector<ResidualPoint>* Points(const Record* record, int system, int prn, int kind) {
    const int satNumber = MakeSatNumber(system, prn);
    if (record == nullptr || satNumber == 0 || (kind != 0 && kind != 1)) {
        return nullptr;
    }
    const Residual& residual = record->residuals.Find(satNumber);
    return kind == 0 ? &residual.firstBlock : &residual.secondBlock;
}

int SizeOf(const std::vector<ResidualPoint>* points) {
    return points == nullptr ? 0 : static_cast<int>(points->size());
}

int CopyPoints(const std::vector<ResidualPoint>* points, int maxCount, int* weeks, double* seconds,
               int* valuesMm) {
    const int count = std::min(SizeOf(points), std::max(maxCount, 0));
    for (int i = 0; i < count; ++i) {
        const ResidualPoint& point = (*points)[static_cast<std::size_t>(i)];
        point.time.ToWeekSeconds(weeks[i], seconds[i]);
        valuesMm[i] = point.valueMm;
    }
    return count;
}

template <class Record>
int SatelliteCount(const Record* record) {
    return record == nullptr ? 0 : record->residuals.Size();
}

template <class Record>
int CopySatellites(const Record* record, int maxCount, int* systems, int* prns) {
    const int count = std::min(SatelliteCount(record), std::max(maxCount, 0));
    for (int i = 0; i < count; ++i) {
        const int satNumber = record->residuals.entries[static_cast<std::size_t>(i)].first;
        systems[i] = SplitSatNumber(satNumber, &prns[i]);
    }
    return count;
}

template <class Record>
void CopyModes(const std::vector<Record>& records, int maxCount, int* modes) {
    for (int i = 0; i < maxCount && i < static_cast<int>(records.size()); ++i) {
        modes[i] = records[static_cast<std::size_t>(i)].mode;
    }
}

// The outputs of the base data, in their order, as one value to hand on.
struct BaseDataOutputs {
    int* mode;
    double* vector[3];
    double *length, *horizontalDistance, *heightDifference;
    int* dof;
    double* varianceFactor;
    double* xyz[9];
    double* neu[9];
    double *sigma3, *sigmaLength, *relativeAccuracy, *rms;
};

// A matrix smaller than 3 by 3 throws; what stands before it is written by then.
void CopyMatrix(gult::matrixT matrix, double* const* out) {
    for (std::uint32_t row = 0; row < 3; ++row) {
        for (std::uint32_t column = 0; column < 3; ++column) {
            *out[row * 3 + column] = matrix(row, column);
        }
    }
}

int CopyBaseData(const SolveResult* record, const BaseDataOutputs& out) {
    if (record == nullptr) {
        return 0;
    }
    *out.mode = record->mode;
    *out.vector[0] = record->dX;
    *out.vector[1] = record->dY;
    *out.vector[2] = record->dZ;
    *out.length = record->length;
    *out.horizontalDistance = record->horizontalDistance;
    *out.heightDifference = record->heightDifference;
    *out.dof = record->dof;
    *out.varianceFactor = record->varianceFactor;
    CopyMatrix(record->covXYZ, out.xyz);
    CopyMatrix(record->covNEU, out.neu);
    *out.sigma3 = record->sigma3;
    *out.sigmaLength = record->sigmaLength;
    *out.relativeAccuracy = record->relativeAccuracy;
    *out.rms = record->rms;
    return 1;
}

template <class Record>
int AmbiguityCount(const Record* record) {
    return record == nullptr ? 0 : static_cast<int>(record->ambiguities.size());
}

// The ambiguity arrays, in their order.
struct AmbiguityOutputs {
    int *systems, *prns, *firstEpochs, *lastEpochs, *firstWeeks;
    double* firstSeconds;
    int* lastWeeks;
    double *lastSeconds, *rms1, *rms2;
    int *rows1, *rows2, *rejected1, *rejected2;
    double *values1, *values2;
};

template <class Record>
int CopyAmbiguities(const Record* record, int maxCount, const AmbiguityOutputs& out) {
    const int count = std::min(AmbiguityCount(record), std::max(maxCount, 0));
    for (int i = 0; i < count; ++i) {
        const AmbRstInfo& ambiguity = record->ambiguities[static_cast<std::size_t>(i)];
        out.systems[i] = SplitSatNumber(ambiguity.sat, &out.prns[i]);
        out.firstEpochs[i] = ambiguity.firstEpoch;
        out.lastEpochs[i] = ambiguity.lastEpoch;
        ambiguity.firstTime.ToWeekSeconds(out.firstWeeks[i], out.firstSeconds[i]);
        ambiguity.lastTime.ToWeekSeconds(out.lastWeeks[i], out.lastSeconds[i]);
        out.rms1[i] = ambiguity.rms1;
        out.rms2[i] = ambiguity.rms2;
        out.rows1[i] = ambiguity.rows1;
        out.rows2[i] = ambiguity.rows2;
        out.rejected1[i] = ambiguity.rejected1;
        out.rejected2[i] = ambiguity.rejected2;
        out.values1[i] = ambiguity.value1;
        out.values2[i] = ambiguity.value2;
    }
    return count;
}

}  // namespace

}  // namespace vornel

using namespace vornel;

// The arguments of the header's two blocks, gathered.
#define BASE_DATA_OUTPUTS                                                                         \
    BaseDataOutputs {                                                                             \
        mode, {dX, dY, dZ}, length, horizontalDistance, heightDifference, dof, varianceFactor,    \
            {xyz00, xyz01, xyz02, xyz10, xyz11, xyz12, xyz20, xyz21, xyz22},                      \
            {neu00, neu01, neu02, neu10, neu11, neu12, neu20, neu21, neu22}, sigma3, sigmaLength, \
            relativeAccuracy, rms                                                                 \
    }
#define AMBIGUITY_OUTPUTS                                                                         \
    AmbiguityOutputs {                                                                            \
        systems, prns, firstEpochs, lastEpochs, firstWeeks, firstSeconds, lastWeeks, lastSeconds, \
            rms1, rms2, rows1, rows2, rejected1, rejected2, values1, values2                      \
    }

extern "C" {

void GetSolveResultsBaseData(int* solveModel, bool* flagA, bool* flagB, bool* flagC, int* code,
                             void* /*unusedA*/, void* /*unusedB*/, double* value0, double* value1,
                             double* value2, double* value3, double* value4, double* value5,
                             double* value6, double* value7, double* value8, double* value9) {
    const ResultManage& results = Results();
    *solveModel = results.solveModel;
    *flagA = results.summaryFlagA;
    *flagB = results.summaryFlagB;
    *flagC = results.summaryFlagC;
    *code = results.summaryCode;
    double* const values[] = {value0, value1, value2, value3, value4,
                              value5, value6, value7, value8, value9};
    for (std::size_t i = 0; i < 10; ++i) {
        *values[i] = results.summaryValues[2 + i];
    }
}

int GetTripDiffSol(VORNEL_BASE_DATA_BLOCK) {
    return CopyBaseData(&Results().tripleDiff, BASE_DATA_OUTPUTS);
}

int GetFloatSolNum() {
    return static_cast<int>(Results().floatResults.size());
}
int GetFixedSolNum() {
    return static_cast<int>(Results().fixedResults.size());
}

void GetFloatSolNumAndMode(int maxCount, int* modes) {
    CopyModes(Results().floatResults, maxCount, modes);
}
void GetFixedSolNumAndMode(int maxCount, int* modes) {
    CopyModes(Results().fixedResults, maxCount, modes);
}

int GetFloatSolSatNum(int index) {
    return SatelliteCount(ByIndex(Results().floatResults, index));
}
int GetFixedSolSatNum(int index) {
    return SatelliteCount(ByIndex(Results().fixedResults, index));
}
int GetModeFloatSolSatNum(int mode) {
    return SatelliteCount(ByMode(Results().floatResults, mode));
}
int GetModeFixedSolSatNum(int mode) {
    return SatelliteCount(ByMode(Results().fixedResults, mode));
}

int GetFloatSolSatList(int index, int maxCount, int* systems, int* prns) {
    return CopySatellites(ByIndex(Results().floatResults, index), maxCount, systems, prns);
}
int GetFixedSolSatList(int index, int maxCount, int* systems, int* prns) {
    return CopySatellites(ByIndex(Results().fixedResults, index), maxCount, systems, prns);
}
int GetModeFixedSolSatList(int mode, int maxCount, int* systems, int* prns) {
    return CopySatellites(ByMode(Results().fixedResults, mode), maxCount, systems, prns);
}

int GetFloatSolResListSize(int index, int system, int prn, int kind) {
    return SizeOf(Points(ByIndex(Results().floatResults, index), system, prn, kind));
}
int GetFixedSolResListSize(int index, int system, int prn, int kind) {
    return SizeOf(Points(ByIndex(Results().fixedResults, index), system, prn, kind));
}
int GetModeFloatSolResListSize(int mode, int system, int prn, int kind) {
    return SizeOf(Points(ByMode(Results().floatResults, mode), system, prn, kind));
}
int GetModeFixedSolResListSize(int mode, int system, int prn, int kind) {
    return SizeOf(Points(ByMode(Results().fixedResults, mode), system, prn, kind));
}

int GetFloatSolResList(int index, int system, int prn, int kind, int maxCount, int* weeks,
                       double* seconds, int* valuesMm) {
    return CopyPoints(Points(ByIndex(Results().floatResults, index), system, prn, kind), maxCount,
                      weeks, seconds, valuesMm);
}
int GetFixedSolResList(int index, int system, int prn, int kind, int maxCount, int* weeks,
                       double* seconds, int* valuesMm) {
    return CopyPoints(Points(ByIndex(Results().fixedResults, index), system, prn, kind), maxCount,
                      weeks, seconds, valuesMm);
}
int GetModeFloatSolResList(int mode, int system, int prn, int kind, int maxCount, int* weeks,
                           double* seconds, int* valuesMm) {
    return CopyPoints(Points(ByMode(Results().floatResults, mode), system, prn, kind), maxCount,
                      weeks, seconds, valuesMm);
}
int GetModeFixedSolResList(int mode, int system, int prn, int kind, int maxCount, int* weeks,
                           double* seconds, int* valuesMm) {
    return CopyPoints(Points(ByMode(Results().fixedResults, mode), system, prn, kind), maxCount,
                      weeks, seconds, valuesMm);
}

int GetFloatSolBaseData(int index, VORNEL_BASE_DATA_BLOCK) {
    return CopyBaseData(ByIndex(Results().floatResults, index), BASE_DATA_OUTPUTS);
}
int GetFixedSolBaseData(int index, VORNEL_BASE_DATA_BLOCK) {
    return CopyBaseData(ByIndex(Results().fixedResults, index), BASE_DATA_OUTPUTS);
}
int GetModeFloatSolBaseData(VORNEL_BASE_DATA_BLOCK) {
    return CopyBaseData(ByMode(Results().floatResults, *mode), BASE_DATA_OUTPUTS);
}
int GetModeFixedSolBaseData(VORNEL_BASE_DATA_BLOCK) {
    return CopyBaseData(ByMode(Results().fixedResults, *mode), BASE_DATA_OUTPUTS);
}

int GetFloatSolAmbNum(int index) {
    return AmbiguityCount(ByIndex(Results().floatResults, index));
}
int GetFixedSolAmbNum(int index) {
    return AmbiguityCount(ByIndex(Results().fixedResults, index));
}

int GetFloatSolAmbListData(int index, int maxCount, VORNEL_AMBIGUITY_ARRAYS) {
    return CopyAmbiguities(ByIndex(Results().floatResults, index), maxCount, AMBIGUITY_OUTPUTS);
}
int GetFixedSolAmbListData(int index, int maxCount, double* ratio, VORNEL_AMBIGUITY_ARRAYS) {
    const SolveResultFixed* record = ByIndex(Results().fixedResults, index);
    if (record == nullptr) {
        return 0;
    }
    *ratio = record->ratio;
    return CopyAmbiguities(record, maxCount, AMBIGUITY_OUTPUTS);
}

int GetFloatAmbCov(int index, int maxCount, double* variances) {
    SolveResultFloat* record = ByIndex(Results().floatResults, index);
    if (record == nullptr) {
        return 0;
    }
    std::fill(variances, variances + std::max(maxCount, 0), 0.0);
    const int count = std::min(static_cast<int>(record->ambCov.ColCount()), std::max(maxCount, 0));
    for (int i = 0; i < count; ++i) {
        const auto diagonal = static_cast<std::uint32_t>(i);
        variances[i] = record->ambCov(diagonal, diagonal);
    }
    return count;
}

}  // extern "C"

#undef BASE_DATA_OUTPUTS
#undef AMBIGUITY_OUTPUTS
