// A made-up session of several periods: a linear problem with known truth, as period equations and
// as the one large system that they stand for.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <random>
#include <vector>

#include "foundation/dense_reference.h"
#include "run/period_equations.h"

namespace vornel::reference {

struct SessionShape {
    int model = 1;
    std::size_t commonCount = 3;
    std::vector<std::size_t> tracks;        // by period
    std::vector<std::size_t> rowsPerTrack;  // by period
    std::vector<double> drift;  // by period: how far directions turn from first to last row
    double noise = 0.0;         // cycles
    std::uint64_t seed = 1;
    // Position in the list of ambiguities of each track, tracks counted period by period; empty: in
    // order.
    std::vector<int> listPosition;
};

class Session {
  public:
    SessionShape shape;
    PeriodTables tables;
    std::vector<AmbRstInfo> ambiguities;
    std::vector<std::vector<std::size_t>>
        stacked;                 // by period: stacked index of each local parameter
    std::vector<Dense> normals;  // by period, as wide as the period
    std::vector<Vector> rhs;
    Vector start;         // global
    Vector truth;         // stacked; ambiguities are integers
    Dense whole;          // stacked normal matrix
    Vector wholeRhs;      // stacked
    long double squares;  // weighted squares of the misclosures at the start
    std::size_t total;

    explicit Session(const SessionShape& sessionShape) : shape(sessionShape), random_(shape.seed) {
        FillTables();
        FillVectors();
        Observe();
    }

    std::size_t AmbiguityCount(std::size_t period) const {
        return shape.tracks[period] * (shape.model == 3 ? 2 : 1);
    }

    PeriodEquations Equations() const {
        std::vector<gult::matrixT> n;
        std::vector<gult::matrixT> w;
        for (std::size_t p = 0; p < normals.size(); ++p) {
            n.push_back(ToMatrix(normals[p]));
            w.push_back(ToColumn(rhs[p]));
        }
        PeriodEquations equations(shape.model, static_cast<int>(normals.size()), Widest(), 0);
        equations.Set(0, 0, static_cast<int>(shape.commonCount), static_cast<int>(total), tables, n,
                      w, ToColumn(start));
        equations.SetAmbiguities(ambiguities);
        return equations;
    }

    int Widest() const {
        std::size_t widest = 0;
        for (std::size_t p = 0; p < shape.tracks.size(); ++p) {
            widest = std::max(widest, AmbiguityCount(p));
        }
        return static_cast<int>(widest);
    }

    std::size_t GlobalIndex(std::size_t period, std::size_t local) const {
        const std::size_t nc = shape.commonCount;
        if (local < nc) {
            return local;
        }
        const std::size_t n = shape.tracks[period];
        const std::size_t i = local - nc;
        const std::size_t track = firstTrack_[period] + i % n;
        return nc + Position(track) + (i < n ? 0 : n);
    }

  private:
    std::size_t Position(std::size_t track) const {
        return shape.listPosition.empty() ? track
                                          : static_cast<std::size_t>(shape.listPosition[track]);
    }

    void FillTables() {
        const std::size_t nc = shape.commonCount;
        total = nc;
        std::size_t track = 0;
        for (std::size_t p = 0; p < shape.tracks.size(); ++p) {
            firstTrack_.push_back(track);
            track += shape.tracks[p];
            std::vector<std::size_t> places(nc);
            std::iota(places.begin(), places.end(), 0U);
            for (std::size_t i = 0; i < AmbiguityCount(p); ++i) {
                places.push_back(total++);
            }
            stacked.push_back(places);
        }
        ambiguities.resize(track);
        const auto stride = static_cast<std::size_t>(Widest()) + 5;
        tables.globalTypes.assign(total, kAmbiguityParameter);
        for (std::size_t k = 0; k < nc; ++k) {
            tables.globalTypes[k] = k < 3 ? kCoordinateParameter : kBiasParameter;
        }
        tables.periodTypes.assign(stride * stacked.size(), 0);
        tables.globalIndex.assign(stride * stacked.size(), 0);
        tables.ambSat.assign(static_cast<std::size_t>(Widest()) * stacked.size(), 0);
        tables.ambList = tables.ambSat;
        for (std::size_t p = 0; p < stacked.size(); ++p) {
            FillPeriod(p, stride);
        }
    }

    void FillPeriod(std::size_t p, std::size_t stride) {
        const std::size_t nc = shape.commonCount;
        tables.periodSize.push_back(static_cast<int>(stacked[p].size()));
        tables.ambCount.push_back(static_cast<int>(AmbiguityCount(p)));
        for (std::size_t k = 0; k < stacked[p].size(); ++k) {
            tables.periodTypes[p * stride + k] =
                k < nc ? tables.globalTypes[k] : kAmbiguityParameter;
            tables.globalIndex[p * stride + k] = static_cast<int>(GlobalIndex(p, k));
        }
        for (std::size_t i = 0; i < AmbiguityCount(p); ++i) {
            const std::size_t n = shape.tracks[p];
            const std::size_t position = Position(firstTrack_[p] + i % n);
            const std::size_t entry = p * static_cast<std::size_t>(Widest()) + i;
            tables.ambList[entry] = static_cast<int>(position);
            tables.ambSat[entry] = static_cast<int>(1 + i % n);
            AmbRstInfo& record = ambiguities[position];
            record.sat = static_cast<int>(1 + i % n);
            record.firstEpoch = static_cast<int>(100 * p);
            record.lastEpoch = static_cast<int>(100 * p + 99);
            record.firstTime.second = static_cast<int>(100 * p);
            record.lastTime.second = static_cast<int>(100 * p + 99);
            record.rows1 = static_cast<int>(shape.rowsPerTrack[p]) + static_cast<int>(i % n);
        }
    }

    void FillVectors() {
        std::uniform_real_distribution<double> unit(-1.0, 1.0);
        truth.assign(total, 0.0L);
        start.assign(total, 0.0L);
        for (std::size_t k = 0; k < total; ++k) {
            const bool common = k < shape.commonCount;
            truth[k] = common ? 2.0 * unit(random_) : std::round(40.0 * unit(random_));
            // Representable, so that what the engine starts from is what is compared.
            start[k] =
                std::round(1024.0 * (static_cast<double>(truth[k]) + unit(random_))) / 1024.0;
        }
    }

    // Rows of cycles: direction times common parameters plus an ambiguity, directions turning with
    // time.
    void Observe() {
        std::normal_distribution<double> normal;
        const std::size_t nc = shape.commonCount;
        whole = Zeros(total, total);
        wholeRhs.assign(total, 0.0L);
        squares = 0.0L;
        for (std::size_t p = 0; p < stacked.size(); ++p) {
            const std::size_t width = stacked[p].size();
            normals.push_back(Zeros(width, width));
            rhs.emplace_back(width, 0.0L);
            for (std::size_t i = 0; i < AmbiguityCount(p); ++i) {
                Vector from(nc);
                Vector turn(nc);
                for (std::size_t k = 0; k < nc; ++k) {
                    from[k] = 5.0 * normal(random_);
                    turn[k] = shape.drift[p] * normal(random_);
                }
                for (std::size_t r = 0; r < shape.rowsPerTrack[p]; ++r) {
                    const long double t = static_cast<long double>(r) /
                                          static_cast<long double>(shape.rowsPerTrack[p]);
                    Vector row(width, 0.0L);
                    for (std::size_t k = 0; k < nc; ++k) {
                        row[k] = from[k] + t * turn[k];
                    }
                    row[nc + i] = 1.0L;
                    AddRow(p, row, shape.noise * normal(random_),
                           1.0L + 0.25L * static_cast<long double>(r % 3));
                }
            }
            // Only doubles reach the engine.
            for (Vector& row : normals[p]) {
                for (long double& value : row) {
                    value = static_cast<double>(value);
                }
            }
            for (long double& value : rhs[p]) {
                value = static_cast<double>(value);
            }
            AddToWhole(p);
        }
    }

    void AddRow(std::size_t p, const Vector& row, long double noise, long double weight) {
        long double misclosure = noise;
        for (std::size_t k = 0; k < row.size(); ++k) {
            misclosure += row[k] * (truth[stacked[p][k]] - start[GlobalIndex(p, k)]);
        }
        squares += weight * misclosure * misclosure;
        for (std::size_t k = 0; k < row.size(); ++k) {
            rhs[p][k] += row[k] * weight * misclosure;
            for (std::size_t l = 0; l < row.size(); ++l) {
                normals[p][k][l] += row[k] * weight * row[l];
            }
        }
    }

    void AddToWhole(std::size_t p) {
        for (std::size_t k = 0; k < stacked[p].size(); ++k) {
            wholeRhs[stacked[p][k]] += rhs[p][k];
            for (std::size_t l = 0; l < stacked[p].size(); ++l) {
                whole[stacked[p][k]][stacked[p][l]] += normals[p][k][l];
            }
        }
    }

    std::mt19937_64 random_;
    std::vector<std::size_t> firstTrack_;
};

}  // namespace vornel::reference
