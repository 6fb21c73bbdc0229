// The fixed solution: the rover position once more, with the ambiguities held at their integers. Only the common
// parameters remain; each epoch's double differences get their full covariance, and their residuals a second,
// median-based robust weight.
#include "estimation/fixed_solution.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "estimation/adjustment.h"
#include "estimation/double_difference.h"
#include "foundation/statistics.h"
#include "frame/static_solve.h"

namespace vornel {

using gult::matrixT;

namespace {

constexpr double kConverged = 0.001;  // metres
constexpr double kStartScale = 5.0;   // metres
constexpr double kGlonassWeight = 0.25;
constexpr double kNoRows = -99.99;  // rms of a track without rows

std::uint32_t Index(int i) {
    return static_cast<std::uint32_t>(i);
}
std::size_t Slot(int i) {
    return static_cast<std::size_t>(i);
}

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
        if (mode_ == 6) {
            wideLane_ = solver_.resultManage.FindFixed(5).ambiguities;
            if (wideLane_.empty()) {
                return 0;
            }
        }
        rowFinder_.emplace(solver_, fix_.ambiguities, mode_ == 6 ? &wideLane_ : nullptr);
        for (int pass = 0; pass < kMaxPasses; ++pass) {
            if (fix_.ambiguities.empty()) {
                return 0;
            }
            BeginPass();
            for (int e = 0; e < static_cast<int>(solver_.epochs.size()); ++e) {
                AccumulateEpoch(e);
            }
            SumsToRms();
            if (DropUnusedBias()) {
                continue;
            }
            AddConstraints();
            // At least two solves: the first scale lets everything pass.
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

    // The rows of one frequency block of an epoch while they are gathered.
    struct BlockEquations {
        matrixT A, L, D;
        std::vector<double> qr, qs;  // variances of reference and satellite, m^2

        BlockEquations(std::uint32_t m, std::uint32_t nc)
            : A(m, nc), L(m, 1), D(m, m), qr(m, kUnknownVariance), qs(m, kUnknownVariance) {}
    };

    void AccumulateBlock(int e, const StaticPeriod& period, int block) {
        DoubleDifferencer& differencer = differencers_[Slot(block)];
        if (!differencer.TakeUpEpoch(e, period)) {
            return;
        }
        const std::vector<Row> rows = rowFinder_->RowsOfEpoch(e, period);
        const int m = static_cast<int>(rows.size());
        BlockEquations equations(Index(m), Index(commonCount_));
        for (int i = 0; i < m; ++i) {
            const Row& row = rows[Slot(i)];
            const SystemReference& reference = differencer.ReferenceOf(row.system);
            if (reference.present) {
                equations.qr[Slot(i)] =
                    VarianceOf(row.system, reference.elevation, reference.combination);
                FillRow(e, block, row, differencer.Form(row), i, equations);
            }
        }
        AddBlock(rows, equations);
    }

    double VarianceOf(int system, double elevation, const LaneCombination& combination) const {
        return PhaseVariance(system, elevation, baselineLength_, combination.a, combination.b);
    }

    void FillRow(int e, int block, const Row& row, const DoubleDifference& difference, int i,
                 BlockEquations& equations) {
        BlockOfTrack track = BlockOf(fix_.ambiguities[Slot(row.ambiguity)], block);
        const LaneCombination& combination = difference.combination;
        double v = difference.v - AmbiguityPart(combination, row, track.value);
        if (row.system == kGlonass) {
            v -= difference.biasFactor * bias_[block];
        }
        equations.qs[Slot(i)] = VarianceOf(row.system, difference.elevation, combination);
        if (row.system == kGalileo && !HasGalileoBands()) {
            equations.qs[Slot(i)] = kUnknownVariance;
            v = kUnusableRow;
        }
        const double weight =
            IggWeight(v / scale_, kFullWeightLimit, solver_.config.outlierFactor) *
            (row.system == kGlonass ? kGlonassWeight : 1.0);
        if (weight == 0.0) {
            ++track.rejected;
            return;
        }
        equations.D(Index(i), Index(i)) = weight;
        for (std::uint32_t k = 0; k < 3; ++k) {
            equations.A(Index(i), k) = difference.direction[k];
        }
        if (row.system == kGlonass && solver_.hasGlonass == 1) {
            equations.A(Index(i), BiasColumn(block)) = difference.biasFactor;
            ++biasRows_;
        }
        equations.L(Index(i), 0) = v;
        sumSquares_ += v * v;
        ++rows_;
        ++track.rows;
        track.sumSquares += v * v;
        fix_.residuals.Add(block, row.sat, solver_.epochs[Slot(e)].epoch, v);
    }

    // Metres of the held ambiguity.
    double AmbiguityPart(const LaneCombination& combination, const Row& row, double value) const {
        if (mode_ != 6) {
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

    // Weighs the block by the covariance of its rows and adds it to the normal equations.
    void AddBlock(const std::vector<Row>& rows, BlockEquations& block) {
        const int m = static_cast<int>(rows.size());
        constexpr int kSystems[] = {kGps, kGlonass, kBds, kGalileo};
        int counts[4];
        for (std::size_t s = 0; s < 4; ++s) {
            counts[s] = static_cast<int>(std::count_if(
                rows.begin(), rows.end(),
                [&kSystems, s](const Row& row) { return row.system == kSystems[s]; }));
        }
        const matrixT C = CovOfDoubleDifferences(counts, 4, block.qr, block.qs, m);
        ApplyWeights(m, MedianWeights(block.qr, block.qs, block.L, m), block.D);
        const matrixT P = WeightFromCovariance(sigmaDd_, C, block.D);
        const matrixT At = block.A.Transpose();
        const matrixT AtP = At * P;
        weightedSumSquares_ += (block.L.Transpose() * P * block.L)(0, 0);
        N_ += AtP * block.A;
        W_ += AtP * block.L;
        Wu_ += At * block.L;
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

    bool DropUnusedBias() {
        if (solver_.hasGlonass == 1 && biasRows_ == 0) {
            solver_.hasGlonass = 0;
            return true;
        }
        return false;
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
    if (std::fabs(coefA) < 0.001 && std::fabs(coefB) < 0.001) {
        coefA = 1.0;
    }
    const double u = system == kGlonass ? 1.5 : 1.0;
    const double constantPart = 0.001 * u;
    const double elevationPart = 0.002 * u;
    const double sine = std::sin(elevation);
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
            for (int j = first; j < end; ++j) {
                C(Index(i), Index(j)) = i == j ? qr[Slot(i)] + qs[Slot(i)] : qr[Slot(i)];
            }
        }
        first = end;
    }
    return C;
}

std::vector<double> MedianWeights(const std::vector<double>& qr, const std::vector<double>& qs,
                                  matrixT L, int size) {
    std::vector<double> weights(Slot(size), 1.0);
    if (size < 4) {
        return weights;
    }
    std::vector<double> u(Slot(size));
    for (std::size_t i = 0; i < u.size(); ++i) {
        u[i] = L(Index(static_cast<int>(i)), 0) / std::sqrt(qr[i] + qs[i] + 1e-12);
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
        for (std::uint32_t j = 0; j < P.ColCount(); ++j) {
            P(i, j) *= std::sqrt(D(i, i) * D(j, j));
        }
    }
    return P;
}

int StaticSolve::FixedSolveMulEq(int mode, SolveResultFixed& fix) {
    return FixedSolution(*this, mode, fix).Solve();
}

}  // namespace vornel
