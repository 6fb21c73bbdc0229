// The fixed solution: the rover position once more, with the ambiguities held at their integers.
// Only the common parameters remain; each epoch's double differences get their full covariance, and
// their residuals a second, median-based robust weight.
//
// Background. The rows are those of the float solution with the ambiguity moved to the left,
//
//     l = v - lambda N = (e_s - e_r) dx + (f_s - f_r) B + noise,
//
// so that dx and B alone are unknown. Only tracks in the list of integers take part. A value may be
// half an integer, since the search works on half cycles where a float value lies far from an
// integer; it is held as it is and rounded only in the record. The troposphere is that of MOPS (RTCA
// DO-229), whatever the configuration says.
//
// Rows of one system at one epoch share the reference: their covariance is
//
//     C_ij = q_r + delta_ij q_s,    P = sigma^2 C^-1,    P_ij sqrt(w_i w_j)
//
// with sigma the a-priori deviation of a double difference. q is the variance of a satellite's part
// (PhaseVariance): (a^2 + b^2) (2 (1 mm)^2 + (2 mm)^2 / sin^2 E + (0.05 ppm L)^2), the first two
// deviations times 1.5 for GLONASS, E the elevation at the rover and L the length of the baseline.
// The last factor reweighs correlated rows (bifactor weights: Yang, Song and Xu 2002). w_i is the
// product of two: IGG III on the residual over the rms of the last pass, times 0.25 for GLONASS; and
// a weight against the median of the epoch, with scale 1.483 median |u|, u = l / sqrt(q_r + q_s)
// (Hampel 1974), 1 below 2 or below 1.5 scales, 0 from 3 scales on; an epoch of fewer than four rows
// has none. Rows that the first weight rejects stay in C with weight 0, so that the matrix keeps its
// shape.
//
// The passes end when the rover moves by less than 1 mm, at the earliest after the second, at the
// latest after the tenth. The degrees of freedom are rows - 3, also where B is a parameter.
//
// How it fails. 0 when the list is empty, when it is of another model, or in model 6 without wide
// lanes: nothing is filed. Singular equations throw and end the run. Wrong integers do not show
// here as a failure: the residuals of their tracks grow and lose weight, and the vector may be off
// by a good part of a wavelength. The ratio of the fixing is what tells.
//
// Of the run, FixedSolveMulEq
//   reads   epochs (epoch, activeSats, phase, glonassChannel), periods, ambiguityParas, config
//           (phaseStd, outlierFactor, galFreq1, galFreq2), roverPosition, basePosition, antennas,
//           hasGlonass, resultManage (model 6: fixedResults)
//   writes  roverPosition, hasGlonass, resultManage (fixedResults), modelCache
#include "estimation/fixed_solution.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "difference/double_difference.h"
#include "estimation/adjustment.h"
#include "estimation/sparse_equations.h"
#include "foundation/index.h"
#include "foundation/statistics.h"
#include "run/static_solve.h"

namespace vornel {

using gult::matrixT;

namespace {

constexpr double kConverged = 0.001;  // metres
constexpr double kStartScale = 5.0;   // metres
constexpr double kGlonassWeight = 0.25;
constexpr double kNoRows = -99.99;  // rms of a track without rows

class FixedSolution {
  public:
    FixedSolution(StaticSolve& solver, int mode, SolveResultFixed& fix)
        : solver_(solver),
          mode_(mode),
          fix_(fix),
          sigmaDd_(DoubleDifferenceSigma(mode, solver.config.phaseStd)),
          baselineLength_(Distance(solver.basePosition, solver.roverPosition)) {
        for (int block = 0; block < BlockCount(mode); ++block) {
            differencers_.emplace_back(solver, mode, block, ModelForm::kMops);
        }
    }

    int Solve() {
        if (fix_.mode != mode_) {
            return 0;
        }
        if (mode_ == VORNEL_MODEL_IONO_FREE) {
            wideLane_ = solver_.resultManage.FindFixed(VORNEL_MODEL_WIDE_LANE).ambiguities;
            if (wideLane_.empty()) {
                return 0;
            }
        }
        rowFinder_.emplace(solver_, fix_.ambiguities,
                           mode_ == VORNEL_MODEL_IONO_FREE ? &wideLane_ : nullptr);
        for (int pass = 0; pass < kMaxPasses; ++pass) {
            if (fix_.ambiguities.empty()) {
                return 0;
            }
            BeginPass();
            for (int e = 0; e < static_cast<int>(solver_.epochs.size()); ++e) {
                AccumulateEpoch(e);
            }
            SumsToRms();
            if (DropUnusedBias(solver_, biasRows_, bias_)) {
                continue;
            }
            AddConstraints();
            // The first scale lets everything pass, so the first pass never ends the loop.
            if (SolveAndUpdate() < kConverged && pass >= 1) {
                break;
            }
        }
        Store();
        return 1;
    }

  private:
    void BeginPass() {
        for (AmbRstInfo& ambiguity : fix_.ambiguities) {
            ambiguity.ResetStatistics();
        }
        fix_.residuals.Clear();
        biasRows_ = 0;
        rows_ = 0;
        sumSquares_ = 0.0;
        weightedSumSquares_ = 0.0;
        commonCount_ = CommonParameterCount(mode_, solver_.hasGlonass);
        const std::uint32_t nc = Index(commonCount_);
        N_ = matrixT(nc, nc);
        W_ = matrixT(nc, 1);
        Wu_ = matrixT(nc, 1);
    }

    void AccumulateEpoch(int e) {
        const StaticPeriod* period = solver_.PeriodOf(e);
        if (period == nullptr || !period->HasReference()) {
            return;
        }
        for (int block = 0; block < BlockCount(mode_); ++block) {
            AccumulateBlock(e, *period, block);
        }
    }

    // A row of one frequency block of an epoch. A rejected one has weight 0 and no design.
    struct FixedRow {
        double design[kMaxCommonParameters] = {};
        double misclosure = 0.0;  // metres
        double weight = 0.0;
    };

    void AccumulateBlock(int e, const StaticPeriod& period, int block) {
        DoubleDifferencer& differencer = differencers_[Slot(block)];
        if (!differencer.TakeUpEpoch(e, period)) {
            return;
        }
        const std::vector<Row> rows = rowFinder_->RowsOfEpoch(e, period);
        rowsOfBlock_.assign(rows.size(), FixedRow());
        qr_.assign(rows.size(), kUnknownVariance);
        qs_.assign(rows.size(), kUnknownVariance);
        for (std::size_t i = 0; i < rows.size(); ++i) {
            const Row& row = rows[i];
            const SystemReference& reference = differencer.ReferenceOf(row.system);
            if (reference.present) {
                qr_[i] = VarianceOf(row.system, reference.sinElevation, reference.combination);
                FillRow(e, block, row, differencer.Form(row), i);
            }
        }
        AddBlock(rows);
    }

    double VarianceOf(int system, double sinElevation, const LaneCombination& combination) const {
        return PhaseVarianceOfSine(system, sinElevation, baselineLength_, combination.a,
                                   combination.b);
    }

    void FillRow(int e, int block, const Row& row, const DoubleDifference& difference,
                 std::size_t i) {
        BlockOfTrack track = BlockOf(fix_.ambiguities[Slot(row.ambiguity)], block);
        const LaneCombination& combination = difference.combination;
        double v = difference.v - AmbiguityPart(combination, row, track.value);
        if (row.system == kGlonass) {
            v -= difference.biasFactor * bias_[block];
        }
        qs_[i] = VarianceOf(row.system, difference.sinElevation, combination);
        if (row.system == kGalileo && !HasGalileoBands()) {
            qs_[i] = kUnknownVariance;
            v = kUnusableRow;
        }
        const double weight =
            IggWeight(v / scale_, kFullWeightLimit, solver_.config.outlierFactor) *
            (row.system == kGlonass ? kGlonassWeight : 1.0);
        if (weight == 0.0) {
            ++track.rejected;
            return;
        }
        FixedRow& equation = rowsOfBlock_[i];
        equation.weight = weight;
        std::copy(difference.direction, difference.direction + 3, equation.design);
        if (row.system == kGlonass && solver_.hasGlonass == 1) {
            equation.design[BiasColumn(block)] = difference.biasFactor;
            ++biasRows_;
        }
        equation.misclosure = v;
        sumSquares_ += v * v;
        ++rows_;
        ++track.rows;
        track.sumSquares += v * v;
        fix_.residuals.Add(block, row.sat, solver_.epochs[Slot(e)].epoch, v);
    }

    // Metres of the held ambiguity.
    double AmbiguityPart(const LaneCombination& combination, const Row& row, double value) const {
        if (mode_ != VORNEL_MODEL_IONO_FREE) {
            return value * combination.wavelength;
        }
        const double wide = wideLane_[Slot(row.wideLane)].value1;
        return (combination.narrowLane * value + combination.wideLane * wide) *
               combination.wavelength;
    }

    bool HasGalileoBands() const {
        const CarrierTable& carriers = differencers_.front().carrierTable();
        return carriers.HasFirstGalileoBand() && carriers.HasSecondGalileoBand();
    }

    // Weighs the block by the covariance of its rows and adds it to the normal equations. Rows of
    // different systems are not correlated, so each system's rows are weighed by themselves.
    void AddBlock(const std::vector<Row>& rows) {
        misclosures_.clear();
        for (const FixedRow& row : rowsOfBlock_) {
            misclosures_.push_back(row.misclosure);
        }
        const std::vector<double> medianWeights = MedianWeights(qr_, qs_, misclosures_);
        BlockSums sums;
        for (std::size_t first = 0, end = 0; first < rows.size(); first = end) {
            while (end < rows.size() && rows[end].system == rows[first].system) {
                ++end;
            }
            AddSystem(first, end, medianWeights, sums);
        }
        AddSums(sums);
    }

    // A'PA, A'PL, A'L and L'PL of one block, summed by themselves before they are added.
    struct BlockSums {
        double N[kMaxCommonParameters][kMaxCommonParameters] = {};
        double W[kMaxCommonParameters] = {};
        double Wu[kMaxCommonParameters] = {};
        double LPL = 0.0;
    };

    // The rows of one system, [first, end).
    void AddSystem(std::size_t first, std::size_t end, const std::vector<double>& medianWeights,
                   BlockSums& sums) const {
        const int m = static_cast<int>(end - first);
        const auto part = [first, end](const std::vector<double>& all) {
            return std::vector<double>(all.begin() + static_cast<std::ptrdiff_t>(first),
                                       all.begin() + static_cast<std::ptrdiff_t>(end));
        };
        matrixT D(Index(m), Index(m));
        for (std::size_t i = first; i < end; ++i) {
            const std::uint32_t diagonal = static_cast<std::uint32_t>(i - first);
            D(diagonal, diagonal) = rowsOfBlock_[i].weight;
        }
        ApplyWeights(m, part(medianWeights), D);
        const matrixT P = WeightFromCovariance(
            sigmaDd_, CovOfDoubleDifferences(&m, 1, part(qr_), part(qs_), m), D);
        for (std::uint32_t j = 0; j < Index(m); ++j) {
            const FixedRow& row = rowsOfBlock_[first + j];
            double LP = 0.0;
            double AtP[kMaxCommonParameters] = {};
            for (std::uint32_t i = 0; i < Index(m); ++i) {
                const FixedRow& other = rowsOfBlock_[first + i];
                const double weight = P.RowValues(i)[j];
                LP += other.misclosure * weight;
                for (int k = 0; k < commonCount_; ++k) {
                    AtP[k] += other.design[k] * weight;
                }
            }
            sums.LPL += LP * row.misclosure;
            for (int k = 0; k < commonCount_; ++k) {
                for (int l = 0; l < commonCount_; ++l) {
                    sums.N[k][l] += AtP[k] * row.design[l];
                }
                sums.W[k] += AtP[k] * row.misclosure;
                sums.Wu[k] += row.design[k] * row.misclosure;
            }
        }
    }

    void AddSums(const BlockSums& sums) {
        weightedSumSquares_ += sums.LPL;
        for (std::uint32_t k = 0; k < Index(commonCount_); ++k) {
            for (std::uint32_t l = 0; l < Index(commonCount_); ++l) {
                N_(k, l) += sums.N[k][l];
            }
            W_(k, 0) += sums.W[k];
            Wu_(k, 0) += sums.Wu[k];
        }
    }

    void SumsToRms() {
        for (AmbRstInfo& ambiguity : fix_.ambiguities) {
            for (int block = 0; block < BlockCount(mode_); ++block) {
                BlockOfTrack track = BlockOf(ambiguity, block);
                track.sumSquares =
                    track.rows >= 1 ? std::sqrt(track.sumSquares / track.rows) : kNoRows;
            }
        }
    }

    void AddConstraints() {
        if (solver_.hasGlonass == 1) {
            for (int block = 0; block < BlockCount(mode_); ++block) {
                AddBiasConstraint(N_, W_, Wu_, block, bias_[block], sigmaDd_);
            }
        }
    }

    // The length of the coordinate correction.
    double SolveAndUpdate() {
        const matrixT cofactors = !N_;
        matrixT dx = cofactors * W_;
        solver_.roverPosition =
            XYZPosition(solver_.roverPosition.X + dx(0, 0), solver_.roverPosition.Y + dx(1, 0),
                        solver_.roverPosition.Z + dx(2, 0));
        for (int k = 3; k < commonCount_; ++k) {
            bias_[k - 3] += dx(Index(k), 0);
        }
        const matrixT dxT = dx.Transpose();
        double vPv = weightedSumSquares_ - (dxT * W_)(0, 0);
        if (std::fabs(vPv) < 1e-14) {
            vPv = 1e-14;
        }
        const double vv = sumSquares_ - (dxT * Wu_)(0, 0);
        quality_ = QualityOf(vPv, vv, rows_ - 3, rows_);
        covariance_ = cofactors * (quality_.sigma0 * quality_.sigma0);
        scale_ = ResidualScale(quality_.rms);
        return CoordinateCorrection(dx);
    }

    void Store() {
        CloseSolution(fix_, solver_, covariance_, quality_, rows_ - 3, sigmaDd_, 1e-12);
        for (AmbRstInfo& ambiguity : fix_.ambiguities) {
            ambiguity.value1 = RoundHalfAway(ambiguity.value1);
            ambiguity.value2 = RoundHalfAway(ambiguity.value2);
        }
        solver_.resultManage.fixedResults.push_back(fix_);
    }

    StaticSolve& solver_;
    int mode_;
    SolveResultFixed& fix_;
    double sigmaDd_;         // a-priori standard deviation of a double difference, metres
    double baselineLength_;  // at the start, metres
    std::vector<DoubleDifferencer> differencers_;  // by block
    std::vector<AmbRstInfo> wideLane_;             // held in model 6
    std::optional<RowFinder> rowFinder_;           // the list of ambiguities stays as it is
    double bias_[2] = {0.0, 0.0};                  // by block
    double scale_ = kStartScale;                   // of residuals, metres

    // Of this pass:
    int commonCount_ = 0;
    matrixT N_, W_, Wu_;
    std::vector<FixedRow> rowsOfBlock_;  // of one block of one epoch
    std::vector<double> qr_, qs_;        // their variances of reference and satellite, m^2
    std::vector<double> misclosures_;    // metres
    int rows_ = 0;
    int biasRows_ = 0;
    double sumSquares_ = 0.0;
    double weightedSumSquares_ = 0.0;

    // Of the last solve:
    AdjustmentQuality quality_;
    matrixT covariance_;
};

}  // namespace

double PhaseVariance(int system, double elevation, double baselineLength, double coefA,
                     double coefB) {
    return PhaseVarianceOfSine(system, std::sin(elevation), baselineLength, coefA, coefB);
}

double PhaseVarianceOfSine(int system, double sine, double baselineLength, double coefA,
                           double coefB) {
    if (std::fabs(coefA) < 0.001 && std::fabs(coefB) < 0.001) {
        coefA = 1.0;
    }
    const double u = system == kGlonass ? 1.5 : 1.0;
    const double constantPart = 0.001 * u;
    const double elevationPart = 0.002 * u;
    const double lengthPart = baselineLength * 5e-5 / 1000;
    return (coefA * coefA + coefB * coefB) *
           (2 * (constantPart * constantPart) + elevationPart * elevationPart / (sine * sine) +
            lengthPart * lengthPart);
}

matrixT CovOfDoubleDifferences(const int* counts, int systemCount, const std::vector<double>& qr,
                               const std::vector<double>& qs, int size) {
    matrixT C(Index(size), Index(size));
    int first = 0;
    for (int system = 0; system < systemCount; ++system) {
        const int end = first + counts[system];
        for (int i = first; i < end; ++i) {
            double* row = C.MutableRow(Index(i));
            std::fill(row + first, row + end, qr[Slot(i)]);
            row[i] = qr[Slot(i)] + qs[Slot(i)];
        }
        first = end;
    }
    return C;
}

std::vector<double> MedianWeights(const std::vector<double>& qr, const std::vector<double>& qs,
                                  matrixT L, int size) {
    std::vector<double> misclosures(Slot(size));
    for (std::size_t i = 0; i < misclosures.size(); ++i) {
        misclosures[i] = L(static_cast<std::uint32_t>(i), 0);
    }
    return MedianWeights(qr, qs, misclosures);
}

std::vector<double> MedianWeights(const std::vector<double>& qr, const std::vector<double>& qs,
                                  const std::vector<double>& misclosures) {
    const std::size_t size = misclosures.size();
    std::vector<double> weights(size, 1.0);
    if (size < 4) {
        return weights;
    }
    std::vector<double> u(size);
    for (std::size_t i = 0; i < size; ++i) {
        u[i] = misclosures[i] / std::sqrt(qr[i] + qs[i] + 1e-12);
    }
    // An exchange sort: unlike the library's, it stays within its bounds whatever the values are.
    std::vector<double> sorted(u.size());
    std::transform(u.begin(), u.end(), sorted.begin(), [](double x) { return std::fabs(x); });
    for (std::size_t i = 0; i + 1 < sorted.size(); ++i) {
        for (std::size_t j = i + 1; j < sorted.size(); ++j) {
            if (sorted[j] < sorted[i]) {
                std::swap(sorted[i], sorted[j]);
            }
        }
    }
    const std::size_t middle = sorted.size() / 2;
    double median = size % 2 == 0 ? (sorted[middle - 1] + sorted[middle]) / 2 : sorted[middle];
    median = std::min(std::max(median, 0.008), 8.0);
    const double scale = median * 1.483;
    for (std::size_t i = 0; i < u.size(); ++i) {
        if (std::fabs(u[i]) < 2.0) {
            continue;
        }
        const double T = std::fabs(u[i] / scale);
        if (T < 1.5) {
            weights[i] = 1.0;
        } else if (T < 3.0) {
            const double fall = (3.0 - T) / 1.5;
            weights[i] = 1.5 * (fall * fall) / (T + 1e-12);
        } else {
            weights[i] = 0.0;
        }
    }
    return weights;
}

void ApplyWeights(int size, const std::vector<double>& weights, matrixT& D) {
    for (int i = 0; i < size; ++i) {
        D(Index(i), Index(i)) *= weights[Slot(i)];
    }
}

matrixT WeightFromCovariance(double sigma, const matrixT& C, matrixT D) {
    matrixT P = !C * (sigma * sigma);
    for (std::uint32_t i = 0; i < P.RowCount(); ++i) {
        double* row = P.MutableRow(i);
        const double weight = D.RowValues(i)[i];
        for (std::uint32_t j = 0; j < P.ColCount(); ++j) {
            row[j] *= std::sqrt(weight * D.RowValues(j)[j]);
        }
    }
    return P;
}

int StaticSolve::FixedSolveMulEq(int mode, SolveResultFixed& fix) {
    return FixedSolution(*this, mode, fix).Solve();
}

}  // namespace vornel
