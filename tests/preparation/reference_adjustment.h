// The robust coordinate adjustments a second time, in extended precision and another way round: all
// rows are listed first, then adjusted. Only the between-station value of a satellite comes from
// the engine.
#pragma once

#include <cmath>
#include <cstddef>
#include <map>
#include <utility>
#include <vector>

#include "foundation/satellite.h"
#include "run/static_solve.h"

namespace vornel::reference {

using Wide = long double;

struct WideRow {
    Wide h[3];
    Wide v;
};

struct CoordinateAdjustment {
    Wide x[3];
    Wide cofactor[3][3];  // inverse of the normal matrix
    Wide sigmaW = 0.0L;
    Wide rms = 0.0L;
    int rows = 0;
    int iterations = 0;
};

inline Wide RobustWeight(Wide u, Wide k0, Wide k1) {
    const Wide a = std::fabs(u);
    if (a <= k0) {
        return 1.0L;
    }
    return a <= k1 ? k0 / a * ((k1 - a) / (k1 - k0)) * ((k1 - a) / (k1 - k0)) : 0.0L;
}

// Inverse by cofactors.
inline void Invert3(const Wide (&m)[3][3], Wide (&out)[3][3]) {
    Wide determinant = 0.0L;
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            const int a = (i + 1) % 3, b = (i + 2) % 3, c = (j + 1) % 3, d = (j + 2) % 3;
            out[j][i] = m[a][c] * m[b][d] - m[a][d] * m[b][c];
        }
        determinant += m[0][i] * out[i][0];
    }
    for (auto& row : out) {
        for (Wide& value : row) {
            value /= determinant;
        }
    }
}

// A constraint on the position: weight matrix and where it pulls to.
struct PositionConstraint {
    Wide weight[3][3];
    Wide target[3];
};

// Iterates over rows that `rowsAt` lists for a position, from the solver's rover on.
template <typename RowsAt>
CoordinateAdjustment Adjust(const StaticSolve& solver, Wide k0, RowsAt rowsAt,
                            const PositionConstraint* constraint) {
    CoordinateAdjustment result;
    result.x[0] = solver.roverPosition.X;
    result.x[1] = solver.roverPosition.Y;
    result.x[2] = solver.roverPosition.Z;
    Wide sigma = 35.0L;
    for (result.iterations = 1; result.iterations <= 10; ++result.iterations) {
        Wide n[3][3] = {}, u[3] = {}, plainU[3] = {}, weighted = 0.0L, plain = 0.0L;
        result.rows = 0;
        const XYZPosition position(static_cast<double>(result.x[0]),
                                   static_cast<double>(result.x[1]),
                                   static_cast<double>(result.x[2]));
        for (const WideRow& row : rowsAt(position)) {
            const Wide w = RobustWeight(row.v / sigma, k0, solver.config.outlierFactor);
            if (w == 0.0L) {
                continue;
            }
            ++result.rows;
            weighted += w * row.v * row.v;
            plain += row.v * row.v;
            for (int i = 0; i < 3; ++i) {
                u[i] += row.h[i] * w * row.v;
                plainU[i] += row.h[i] * row.v;
                for (int j = 0; j < 3; ++j) {
                    n[i][j] += row.h[i] * w * row.h[j];
                }
            }
        }
        for (int i = 0; constraint != nullptr && i < 3; ++i) {
            for (int j = 0; j < 3; ++j) {
                n[i][j] += constraint->weight[i][j];
                u[i] += constraint->weight[i][j] * (constraint->target[j] - result.x[j]);
            }
        }
        Invert3(n, result.cofactor);
        Wide norm = 0.0L;
        for (int i = 0; i < 3; ++i) {
            Wide dx = 0.0L;
            for (int j = 0; j < 3; ++j) {
                dx += result.cofactor[i][j] * u[j];
            }
            result.x[i] += dx;
            norm += dx * dx;
            weighted -= u[i] * dx;
            plain -= plainU[i] * dx;
        }
        result.sigmaW = std::sqrt(weighted / (result.rows - 3));
        result.rms = sigma = std::sqrt(plain / result.rows);
        if (std::sqrt(norm) < 0.001L) {
            break;
        }
    }
    return result;
}

struct FormedDifference {
    Wide direction[3];
    Wide value;
};

// Rover-minus-base value of a satellite without the antennas, and the direction to it.
struct Evaluated {
    Wide model;
    Wide direction[3];
};

inline Evaluated Evaluate(const StaticSolve& solver, std::size_t epochIndex, int sat,
                          double ionoFactor, int signal, const XYZPosition& rover) {
    SDObsData epoch = solver.epochs[epochIndex];
    double unit[3];
    double value = 0.0;
    epoch.Model(ionoFactor, sat, rover, solver.basePosition, unit, value);
    const double* pcoRover = signal == 0 ? solver.l1PcoRover : solver.l2PcoRover;
    const double* pcoBase = signal == 0 ? solver.l1PcoBase : solver.l2PcoBase;
    Evaluated result{};
    result.model = static_cast<Wide>(value) -
                   (static_cast<Wide>(pcoRover[2]) + solver.trueHeightRover) *
                       std::sin(static_cast<Wide>(epoch.azelA[sat - 1][1])) +
                   (static_cast<Wide>(pcoBase[2]) + solver.trueHeightBase) *
                       std::sin(static_cast<Wide>(epoch.azelB[sat - 1][1]));
    for (int k = 0; k < 3; ++k) {
        result.direction[k] = unit[k];
    }
    return result;
}

// Hz; 0.0 for a Galileo band that is not there.
inline double FrequencyOf(const StaticSolve& solver, std::size_t epochIndex, int sat, int signal) {
    static constexpr double bands[6] = {0.0,       1575.42e6,  1176.45e6,
                                        1207.14e6, 1191.795e6, 1278.75e6};
    int id = 0;
    switch (SplitSatNumber(sat, &id)) {
        case kGps:
            return signal == 0 ? 1575.42e6 : 1227.6e6;
        case kBds:
            return signal == 0 ? 1561.098e6 : 1207.14e6;
        case kGlonass: {
            const int channel = solver.epochs[epochIndex].glonassChannel[id - 1];
            return signal == 0 ? 1602e6 + 562.5e3 * channel : 1246e6 + 437.5e3 * channel;
        }
        default:
            if (signal == 1 && solver.config.galFreq1 == solver.config.galFreq2) {
                return 0.0;
            }
            return bands[signal == 0 ? solver.config.galFreq1 : solver.config.galFreq2];
    }
}

inline int ReferenceIn(const StaticPeriod& period, int system) {
    return system == kGps       ? period.refSatGps
           : system == kGlonass ? period.refSatGlo
           : system == kBds     ? period.refSatBds
                                : period.refSatGal;
}

// Double differences of the epochs of one period on one signal, by satellite and epoch.
using Series = std::map<int, std::map<int, FormedDifference>>;

inline Series DoubleDifferences(const StaticSolve& solver, const StaticPeriod& period, int signal,
                                const XYZPosition& rover) {
    Series series;
    for (int e = period.startIndex; e <= period.endIndex; ++e) {
        const auto index = static_cast<std::size_t>(e);
        const SDObsData& epoch = solver.epochs[index];
        for (const int sat : epoch.activeSats) {
            const int ref = ReferenceIn(period, SplitSatNumber(sat));
            const double f = FrequencyOf(solver, index, sat, signal);
            if (sat == ref || ref == -1 || !epoch.IsActive(ref) || f == 0.0) {
                continue;
            }
            const auto observed = [&](int number, Wide direction[3]) {
                const double frequency = FrequencyOf(solver, index, number, signal);
                const double scale = 1575.42e6 / frequency;
                const Evaluated at = Evaluate(solver, index, number, scale * scale, signal, rover);
                for (int k = 0; k < 3; ++k) {
                    direction[k] = at.direction[k];
                }
                return static_cast<Wide>(epoch.phase[number - 1][signal]) * 299792458.0L /
                           frequency -
                       at.model;
            };
            FormedDifference formed{};
            Wide refDirection[3];
            formed.value = observed(sat, formed.direction) - observed(ref, refDirection);
            for (int k = 0; k < 3; ++k) {
                formed.direction[k] -= refDirection[k];
            }
            series[sat][e] = formed;
        }
    }
    return series;
}

// Changes of double differences between consecutive epochs, all periods and signals of the solve
// model.
inline std::vector<WideRow> TripleDifferenceRows(const StaticSolve& solver,
                                                 const XYZPosition& rover) {
    std::vector<WideRow> rows;
    for (int signal = 0; signal < 2; ++signal) {
        if (solver.solveModel == 2 - signal) {
            continue;
        }
        for (const StaticPeriod& period : solver.periods) {
            for (const auto& [sat, values] : DoubleDifferences(solver, period, signal, rover)) {
                for (const auto& [e, now] : values) {
                    const auto before = values.find(e - 1);
                    if (before == values.end()) {
                        continue;
                    }
                    WideRow row{};
                    row.v = now.value - before->second.value;
                    for (int k = 0; k < 3; ++k) {
                        row.h[k] = now.direction[k] - before->second.direction[k];
                    }
                    rows.push_back(row);
                }
            }
        }
    }
    return rows;
}

inline CoordinateAdjustment TripleDifferenceAdjustment(
    const StaticSolve& solver, const PositionConstraint* constraint = nullptr) {
    return Adjust(
        solver, 2.5L, [&](const XYZPosition& rover) { return TripleDifferenceRows(solver, rover); },
        constraint);
}

// Double differences of the observed values, GPS, GLONASS and BDS.
inline std::vector<WideRow> PreliminaryRows(const StaticSolve& solver, const XYZPosition& rover) {
    std::vector<WideRow> rows;
    for (const StaticPeriod& period : solver.periods) {
        for (int e = period.startIndex; e <= period.endIndex; ++e) {
            const auto index = static_cast<std::size_t>(e);
            const SDObsData& epoch = solver.epochs[index];
            for (const int sat : epoch.activeSats) {
                const int system = SplitSatNumber(sat);
                const int ref = ReferenceIn(period, system);
                if (system == kGalileo || sat == ref || ref == -1 || !epoch.IsActive(ref)) {
                    continue;
                }
                const Evaluated own = Evaluate(solver, index, sat, 0.0, 0, rover);
                const Evaluated other = Evaluate(solver, index, ref, 0.0, 0, rover);
                WideRow row{};
                row.v = epoch.sdObserved[sat - 1] - own.model -
                        (epoch.sdObserved[ref - 1] - other.model);
                for (int k = 0; k < 3; ++k) {
                    row.h[k] = own.direction[k] - other.direction[k];
                }
                rows.push_back(row);
            }
        }
    }
    return rows;
}

inline CoordinateAdjustment PreliminaryAdjustment(const StaticSolve& solver) {
    return Adjust(
        solver, 3.0L, [&](const XYZPosition& rover) { return PreliminaryRows(solver, rover); },
        nullptr);
}

}  // namespace vornel::reference
