// The float solution: rover position, GLONASS bias and one real-valued ambiguity a track, by least
// squares on double differences of one phase combination (two in model 3), in passes that weigh
// down outliers.
//
// Background. For a satellite s against the reference r of its system, rover minus base, in metres,
//
//     v = lambda_s (a phi1 + b phi2)_s - lambda_r (a phi1 + b phi2)_r - model
//       = (e_s - e_r) dx + lambda_s N + (f_s - f_r) B + noise
//
// with the combination a, b of the solve model and its wavelength lambda (difference/combination.h),
// the unit vectors e from satellite to rover, the ambiguity N in cycles, and for GLONASS the
// inter-frequency bias B in metres per megahertz. (Bossler, Goad and Bender 1980; for B: Wanninger
// 2012.) The model holds range, satellite clocks, troposphere, ionosphere and antennas of both
// stations; receiver clocks and delays drop out. GLONASS leaves (lambda_s - lambda_r) N_r, which
// AlignGlonassReference made small and difference/double_difference.h takes off. In model 6 the
// held wide lane Nw makes N an integer again: a N1 + b N2 = k N + w Nw, and the design of N is
// lambda k.
//
// Unknowns are dx, B and one N a track: a stretch of epochs of one satellite without a slip, inside
// one period. Rows have weights without correlations, p = w(v / s), times 0.6 for GLONASS. w is the
// three-segment weight IGG III (Yang 1999): 1 up to 3, falling to 0 at outlierFactor. s starts at
// five times the rms of the triple difference and then is the rms of the last pass, kept between 3
// and 600 mm. N starts at the rounded v / lambda of the track's first row. The normal equations are
// kept period by period and solved by elimination (run/period_equations.h). B is held near zero by
// one pseudo-observation, and is no parameter any more once no row carries it.
//
// A track leaves the list for good, in the pass where it is seen, when it has fewer rows than
// minEpochs (at least 6), or when the rms of its rows is above 0.5 m. Such a pass is not solved. The
// passes end when the rover moves by less than 3 mm, at the latest after ten, and then the state of
// the last solve counts. In the tenth pass rejected rows stay in, with weight 0, and count as rows.
//
// How it fails. No track is left: the result is 0 and nothing is filed. Equations that do not
// determine the parameters are singular, and the exception ends the run. Where the start is off by
// metres, good rows look like blunders, and their tracks may leave for good before the rover has
// moved to its place.
//
// One pass: reset -> index tables -> every epoch's rows into its period's normal equations ->
// screening of the tracks -> constraints -> solve -> update of the parameters -> quality, which
// scales the next pass.
//
// Of the run, FloatSolveMulEq
//   reads   epochs (epoch, activeSats, phase, glonassChannel), periods, ambiguityParas, config
//           (phaseStd, minEpochs, outlierFactor, galFreq1, galFreq2), roverPosition, basePosition,
//           antennas, hasGlonass, resultManage (tripleDiff; model 6: fixedResults),
//           reservedProcessFlag, priorBaseline, priorBaselineCov, periodFlag
//   writes  roverPosition, hasGlonass, resultManage (floatResults), equationBlock, modelCache
#include <algorithm>
#include <cmath>
#include <optional>

#include "difference/double_difference.h"
#include "estimation/adjustment.h"
#include "estimation/sparse_equations.h"
#include "foundation/index.h"
#include "foundation/statistics.h"
#include "foundation/trace.h"
#include "run/static_solve.h"

namespace vornel {

using gult::matrixT;

namespace {

constexpr double kConverged = 0.003;  // metres
constexpr double kGlonassWeight = 0.6;
constexpr int kFewestRows = 6;             // of a track, whatever minEpochs says
constexpr double kMaxTrackRms = 0.5;       // metres
constexpr double kStartScaleFactor = 5.0;  // times the rms of the triple-difference solution
constexpr double kMinStartRms = 0.006;     // metres

// Where a track's parameters stand in its period.
struct LocalPlace {
    int period = -1;
    int position = -1;  // among the period's tracks
};

class FloatSolution {
  public:
    FloatSolution(StaticSolve& solver, int mode)
        : solver_(solver),
          mode_(mode),
          sigmaDd_(DoubleDifferenceSigma(mode, solver.config.phaseStd)) {
        for (int block = 0; block < BlockCount(mode); ++block) {
            differencers_.emplace_back(solver, mode, block, ModelForm::kConfigured);
        }
    }

    int Solve() {
        BuildAmbiguityList();
        if (mode_ == VORNEL_MODEL_IONO_FREE) {
            wideLane_ = solver_.resultManage.FindFixed(VORNEL_MODEL_WIDE_LANE).ambiguities;
            if (wideLane_.empty()) {
                return 0;
            }
        }
        const double tdRms = solver_.resultManage.tripleDiff.rms;
        scale_ = kStartScaleFactor * (tdRms > kMinStartRms ? tdRms : kMinStartRms);
        const int widestPeriod = WidestPeriod();

        for (pass_ = 0; pass_ < kMaxPasses; ++pass_) {
            if (ambiguities_.empty()) {
                return 0;
            }
            BeginPass();
            for (int e = 0; e < static_cast<int>(solver_.epochs.size()); ++e) {
                AccumulateEpoch(e);
            }
            if (ScreenTracks() || DropUnusedBias(solver_, biasRows_, bias_)) {
                continue;
            }
            TakeUpEquations();
            AddConstraints();
            if (SolveAndUpdate(widestPeriod) < kConverged) {
                TraceWrite(1, "solveModel=%d,step=%d.\n", mode_, pass_);
                break;
            }
        }
        Store();
        return 1;
    }

  private:
    std::size_t PeriodCount() const { return solver_.periods.size(); }
    int TracksOf(std::size_t p) const { return static_cast<int>(tracksOfPeriod_[p].size()); }
    int AmbiguityCountOf(std::size_t p) const { return TracksOf(p) * BlockCount(mode_); }
    int SizeOf(std::size_t p) const { return commonCount_ + AmbiguityCountOf(p); }
    int TotalCount() const {
        return commonCount_ + static_cast<int>(ambiguities_.size()) * BlockCount(mode_);
    }
    // Global index of a track's ambiguity. In model 3 the second one stands behind the first by the
    // number of its period's own tracks, also when there are several periods.
    int GlobalIndexOf(std::size_t p, int listPosition, int block) const {
        return commonCount_ + listPosition + block * TracksOf(p);
    }

    void BuildAmbiguityList() {
        for (const AmbiguityPara& para : solver_.ambiguityParas) {
            AmbRstInfo& ambiguity = ambiguities_.emplace_back();
            ambiguity.sat = para.sat;
            ambiguity.firstEpoch = para.firstEpoch;
            ambiguity.lastEpoch = para.lastEpoch;
            ambiguity.firstTime = solver_.epochs[Slot(para.firstEpoch)].epoch;
            ambiguity.lastTime = solver_.epochs[Slot(para.lastEpoch)].epoch;
        }
    }

    // Which tracks lie in which period: positions in the list, in list order.
    void AssignTracksToPeriods() {
        tracksOfPeriod_.assign(PeriodCount(), {});
        places_.assign(ambiguities_.size(), LocalPlace());
        for (std::size_t p = 0; p < PeriodCount(); ++p) {
            const StaticPeriod& period = solver_.periods[p];
            for (std::size_t i = 0; i < ambiguities_.size(); ++i) {
                if (ambiguities_[i].firstEpoch >= period.startIndex &&
                    ambiguities_[i].lastEpoch <= period.endIndex) {
                    places_[i] = {static_cast<int>(p), TracksOf(p)};
                    tracksOfPeriod_[p].push_back(static_cast<int>(i));
                }
            }
        }
    }

    int WidestPeriod() {
        AssignTracksToPeriods();
        int widest = 0;
        for (std::size_t p = 0; p < PeriodCount(); ++p) {
            widest = std::max(widest, AmbiguityCountOf(p));
        }
        return widest;
    }

    void BeginPass() {
        for (AmbRstInfo& ambiguity : ambiguities_) {
            ambiguity.ResetStatistics();
        }
        residuals_.Clear();
        biasRows_ = 0;
        rows_ = 0;
        sumSquares_ = 0.0;
        weightedSumSquares_ = 0.0;
        commonCount_ = CommonParameterCount(mode_, solver_.hasGlonass);
        AssignTracksToPeriods();
        rowFinder_.emplace(solver_, ambiguities_,
                           mode_ == VORNEL_MODEL_IONO_FREE ? &wideLane_ : nullptr);
        equationsOfPeriod_.clear();
        for (std::size_t p = 0; p < PeriodCount(); ++p) {
            equationsOfPeriod_.emplace_back(commonCount_, SizeOf(p));
        }
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

    // The rows of one frequency block of an epoch, into the equations of its period.
    void AccumulateBlock(int e, const StaticPeriod& period, int block) {
        DoubleDifferencer& differencer = differencers_[Slot(block)];
        if (!differencer.TakeUpEpoch(e, period)) {
            return;
        }
        const std::size_t p = static_cast<std::size_t>(&period - solver_.periods.data());
        rowsOfBlock_.clear();
        for (const Row& row : rowFinder_->RowsOfEpoch(e, period)) {
            if (differencer.ReferenceOf(row.system).present &&
                places_[Slot(row.ambiguity)].period == static_cast<int>(p)) {
                AddRow(e, p, block, row, differencer.Form(row));
            }
        }
        equationsOfPeriod_[p].Add(rowsOfBlock_);
    }

    // Weighs a row and, unless it is rejected, adds it to the rows of the block.
    void AddRow(int e, std::size_t p, int block, const Row& row,
                const DoubleDifference& difference) {
        BlockOfTrack track = BlockOf(ambiguities_[Slot(row.ambiguity)], block);
        const LaneCombination& combination = difference.combination;
        double v = RemoveAmbiguity(difference, row, track.value);
        if (row.system == kGlonass) {
            v -= difference.biasFactor * bias_[block];
        }
        if (row.system == kGalileo && !HasGalileoBand(block)) {
            v = kUnusableRow;
        }
        const double weight =
            IggWeight(v / scale_, kFullWeightLimit, solver_.config.outlierFactor) *
            (row.system == kGlonass ? kGlonassWeight : 1.0);
        if (weight == 0.0 && pass_ < kMaxPasses - 1) {
            ++track.rejected;
            return;
        }
        EquationRow& equation = rowsOfBlock_.emplace_back();
        std::copy(difference.direction, difference.direction + 3, equation.common);
        if (row.system == kGlonass && solver_.hasGlonass == 1) {
            equation.common[BiasColumn(block)] = difference.biasFactor;
            ++biasRows_;
        }
        equation.ambiguityColumn =
            commonCount_ + places_[Slot(row.ambiguity)].position + block * TracksOf(p);
        equation.ambiguityFactor = mode_ == VORNEL_MODEL_IONO_FREE
                                       ? combination.wavelength * combination.narrowLane
                                       : combination.wavelength;
        equation.misclosure = v;
        equation.weight = weight;
        sumSquares_ += v * v;
        weightedSumSquares_ += v * weight * v;
        ++rows_;
        ++track.rows;
        track.sumSquares += v * v;
        residuals_.Add(block, row.sat, solver_.epochs[Slot(e)].epoch, v);
    }

    // The misclosure without the ambiguity, which gets its first value here.
    double RemoveAmbiguity(const DoubleDifference& difference, const Row& row,
                           double& value) const {
        const LaneCombination& combination = difference.combination;
        const double wavelength = combination.wavelength;
        const double v = difference.v;
        if (mode_ != VORNEL_MODEL_IONO_FREE) {
            if (value == 0.0) {
                value = RoundHalfAway(v / wavelength);
            }
            return v - value * wavelength;
        }
        const double wide = wideLane_[Slot(row.wideLane)].value1;
        const double k = combination.narrowLane;
        const double w = combination.wideLane;
        if (value == 0.0) {
            value = RoundHalfAway(((v - wide * w * wavelength) / wavelength) / k);
        }
        return v - (w * wide + k * value) * wavelength;
    }

    bool HasGalileoBand(int block) const {
        const CarrierTable& carriers = differencers_.front().carrierTable();
        return block == kFirstBlock ? carriers.HasFirstGalileoBand()
                                    : carriers.HasSecondGalileoBand();
    }

    // Erases tracks with too few rows, turns sums of squares into rms, and erases tracks that fit
    // too badly. True when one was erased.
    bool ScreenTracks() {
        const std::size_t before = ambiguities_.size();
        const int fewest = std::max(solver_.config.minEpochs, kFewestRows);
        const bool twoBlocks = BlockCount(mode_) == 2;
        std::erase_if(ambiguities_, [=](const AmbRstInfo& track) {
            return track.rows1 < fewest || (twoBlocks && track.rows2 < fewest);
        });
        for (AmbRstInfo& track : ambiguities_) {
            for (int block = 0; block < BlockCount(mode_); ++block) {
                BlockOfTrack fields = BlockOf(track, block);
                fields.sumSquares = std::sqrt(fields.sumSquares / fields.rows);
            }
        }
        std::erase_if(ambiguities_, [](const AmbRstInfo& track) {
            return track.rms1 > kMaxTrackRms || track.rms2 > kMaxTrackRms;
        });
        return ambiguities_.size() != before;
    }

    // The accumulated equations as matrices.
    void TakeUpEquations() {
        normals_.clear();
        rhs_.clear();
        plainRhs_.clear();
        for (const SparseEquations& equations : equationsOfPeriod_) {
            normals_.push_back(equations.N());
            rhs_.push_back(equations.W());
            plainRhs_.push_back(equations.Wu());
        }
    }

    // The common parameters are shared, so the first period's equations stand for all.
    void AddConstraints() {
        const matrixT& priorCov = solver_.priorBaselineCov;
        if (solver_.reservedProcessFlag != 0 && priorCov.RowCount() == 3 &&
            priorCov.ColCount() == 3) {
            AddPositionConstraint(!priorCov * sigmaDd_);
        }
        if (solver_.hasGlonass == 1) {
            for (int block = 0; block < BlockCount(mode_); ++block) {
                AddBiasConstraint(normals_.front(), rhs_.front(), plainRhs_.front(), block,
                                  bias_[block], sigmaDd_);
            }
        }
    }

    void AddPositionConstraint(matrixT weight) {
        matrixT misclosure(3, 1);
        misclosure(0, 0) = solver_.priorBaseline.X - solver_.roverPosition.X;
        misclosure(1, 0) = solver_.priorBaseline.Y - solver_.roverPosition.Y;
        misclosure(2, 0) = solver_.priorBaseline.Z - solver_.roverPosition.Z;
        matrixT weighted = weight * misclosure;
        for (std::uint32_t i = 0; i < 3; ++i) {
            rhs_.front()(i, 0) += weighted(i, 0);
            plainRhs_.front()(i, 0) += misclosure(i, 0);
            for (std::uint32_t j = 0; j < 3; ++j) {
                normals_.front()(i, j) += weight(i, j);
            }
        }
    }

    // The index tables of this pass.
    PeriodTables Tables(const PeriodEquations& shape) const {
        PeriodTables tables = shape.tables;
        const auto biasType = [](bool used) {
            return used ? kBiasParameter : kUnusedBiasParameter;
        };
        bool anyGlonass = false;
        for (std::size_t p = 0; p < PeriodCount(); ++p) {
            bool periodHasGlonass = false;
            for (const int position : tracksOfPeriod_[p]) {
                if (SplitSatNumber(ambiguities_[Slot(position)].sat) == kGlonass) {
                    periodHasGlonass = true;
                }
            }
            anyGlonass = anyGlonass || periodHasGlonass;
            tables.periodSize[p] = SizeOf(p);
            tables.ambCount[p] = AmbiguityCountOf(p);
            int* types = tables.periodTypes.data() + p * Slot(shape.rowStride);
            int* global = tables.globalIndex.data() + p * Slot(shape.rowStride);
            int* sats = tables.ambSat.data() + p * Slot(shape.maxAmbiguities);
            int* list = tables.ambList.data() + p * Slot(shape.maxAmbiguities);
            for (int k = 0; k < commonCount_; ++k) {
                types[k] = k < 3 ? kCoordinateParameter : biasType(periodHasGlonass);
                global[k] = k;
            }
            for (int block = 0; block < BlockCount(mode_); ++block) {
                for (int i = 0; i < TracksOf(p); ++i) {
                    const int position = tracksOfPeriod_[p][Slot(i)];
                    const int local = block * TracksOf(p) + i;
                    types[commonCount_ + local] = kAmbiguityParameter;
                    global[commonCount_ + local] = GlobalIndexOf(p, position, block);
                    sats[local] = ambiguities_[Slot(position)].sat;
                    list[local] = position;
                }
            }
        }
        tables.globalTypes.assign(Slot(TotalCount()), kAmbiguityParameter);
        for (int k = 0; k < commonCount_; ++k) {
            tables.globalTypes[Slot(k)] = k < 3 ? kCoordinateParameter : biasType(anyGlonass);
        }
        return tables;
    }

    // Period by period in local order, so that in model 3 a later period's value stands where two
    // indices meet.
    matrixT StartVector() {
        matrixT x0(Index(TotalCount()), 1);
        x0(0, 0) = solver_.roverPosition.X;
        x0(1, 0) = solver_.roverPosition.Y;
        x0(2, 0) = solver_.roverPosition.Z;
        for (int k = 3; k < commonCount_; ++k) {
            x0(Index(k), 0) = bias_[k - 3];
        }
        ForEachAmbiguity([&x0](int global, double& value) { x0(Index(global), 0) = value; });
        return x0;
    }

    // Calls with the global index and the value of each ambiguity, period by period in local order.
    template <class Action>
    void ForEachAmbiguity(Action action) {
        for (std::size_t p = 0; p < PeriodCount(); ++p) {
            for (int block = 0; block < BlockCount(mode_); ++block) {
                for (const int position : tracksOfPeriod_[p]) {
                    action(GlobalIndexOf(p, position, block),
                           BlockOf(ambiguities_[Slot(position)], block).value);
                }
            }
        }
    }

    // Solves the equations, moves all parameters, and sets the quality. The length of the
    // coordinate correction.
    double SolveAndUpdate(int widestPeriod) {
        equations_ = PeriodEquations(mode_, static_cast<int>(PeriodCount()), widestPeriod, 0);
        equations_.Set(solver_.hasGlonass == 1 ? 1 : 0, solver_.periodFlag, commonCount_,
                       TotalCount(), Tables(equations_), normals_, rhs_, StartVector());
        matrixT cofactors;
        equations_.Solve(cofactors);

        matrixT dx = equations_.x - equations_.x0;
        solver_.roverPosition =
            XYZPosition(solver_.roverPosition.X + dx(0, 0), solver_.roverPosition.Y + dx(1, 0),
                        solver_.roverPosition.Z + dx(2, 0));
        for (int k = 3; k < commonCount_; ++k) {
            bias_[k - 3] += dx(Index(k), 0);
        }
        ForEachAmbiguity([&dx](int global, double& value) { value += dx(Index(global), 0); });
        // A later pass may give up tracks and solve no more; the tables index the list of this one.
        equations_.SetAmbiguities(ambiguities_);

        double vPv = equations_.ReducedSum(weightedSumSquares_, rhs_);
        if (std::fabs(vPv) < 1e-11) {
            vPv = 1e-12;
        }
        const double vv = equations_.ReducedSum(sumSquares_, plainRhs_);
        dof_ = rows_ - TotalCount();
        solvedCommonCount_ = commonCount_;
        quality_ = QualityOf(vPv, vv, dof_, rows_);
        covariance_ = cofactors * (quality_.sigma0 * quality_.sigma0);
        scale_ = ResidualScale(quality_.rms);
        return CoordinateCorrection(dx);
    }

    // The ambiguities' block of the covariance. In model 3 it is put into an order of its own.
    matrixT AmbiguityCovariance() {
        const std::uint32_t nc = Index(solvedCommonCount_);
        const std::uint32_t size = covariance_.RowCount() - nc;
        matrixT block = SubBlock(covariance_, nc, nc, size, size).DeepCopy();
        if (mode_ != VORNEL_MODEL_BOTH) {
            return block;
        }
        const std::uint32_t half = size / 2;
        const auto source = [half](std::uint32_t i) {
            return i < half ? 2 * i : 2 * (i - half) + 1;
        };
        matrixT ordered(size, size);
        for (std::uint32_t i = 0; i < size; ++i) {
            for (std::uint32_t j = 0; j < size; ++j) {
                ordered(i, j) = block(source(i), source(j));
            }
        }
        return ordered;
    }

    void Store() {
        SolveResultFloat result;
        result.mode = mode_;
        CloseSolution(result, solver_, covariance_, quality_, dof_, sigmaDd_, 1e-08);
        result.ambCov = AmbiguityCovariance();
        result.ambiguities = ambiguities_;
        result.residuals = residuals_;
        solver_.resultManage.floatResults.push_back(result);
        solver_.equationBlock = equations_;
    }

    StaticSolve& solver_;
    int mode_;
    double sigmaDd_;  // a-priori standard deviation of a double difference, metres
    std::vector<DoubleDifferencer> differencers_;  // by block
    std::vector<AmbRstInfo> wideLane_;             // held in model 6
    std::vector<AmbRstInfo> ambiguities_;
    double bias_[2] = {0.0, 0.0};  // by block
    double scale_ = 0.0;           // of residuals, metres

    // Of this pass:
    int pass_ = 0;
    int commonCount_ = 0;
    std::vector<std::vector<int>> tracksOfPeriod_;
    std::vector<LocalPlace> places_;  // by position in the list
    std::optional<RowFinder> rowFinder_;
    std::vector<EquationRow> rowsOfBlock_;            // of one block of one epoch
    std::vector<SparseEquations> equationsOfPeriod_;  // while they are accumulated
    std::vector<matrixT> normals_, rhs_, plainRhs_;   // by period
    ResidualList residuals_;
    int rows_ = 0;
    int biasRows_ = 0;  // GLONASS rows with a bias coefficient
    double sumSquares_ = 0.0;
    double weightedSumSquares_ = 0.0;

    // Of the last solve:
    PeriodEquations equations_;
    int solvedCommonCount_ = 0;
    int dof_ = 0;
    AdjustmentQuality quality_;
    matrixT covariance_;
};

}  // namespace

int StaticSolve::FloatSolveMulEq(int mode) {
    TraceWrite(3, "FloatSolveMulEq : mode=%d.\n", mode);
    if (mode < VORNEL_MODEL_FIRST || mode > VORNEL_MODEL_IONO_FREE) {
        return 0;  // no combination
    }
    return FloatSolution(*this, mode).Solve();
}

}  // namespace vornel
