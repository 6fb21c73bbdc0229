#include "network/time_series.h"

#include <Eigen/Cholesky>
#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>

#include "network/blunder_test.h"
#include "network/dense.h"
#include "network/graph.h"
#include "network/least_squares.h"
#include "network/statistics.h"

namespace vornel::network {
namespace {

using Index = Eigen::Index;
using Kind = SeriesFinding::Kind;

constexpr double kSecondsPerYear = 365.25 * io::kSecondsPerDay;
constexpr std::size_t kSmallestSegment = 2;  // points on either side of an offset
constexpr int kSmallestDof = 6;              // to estimate a variance factor with

struct Entry {
    double years = 0.0;                                // from the start
    Eigen::Vector3d value = Eigen::Vector3d::Zero();   // m, from the first position
    Eigen::Matrix3d weight = Eigen::Matrix3d::Zero();  // 1/m^2
};

struct Finding {
    Kind kind = Kind::kOutlier;
    std::size_t point = 0;
    BlunderTest test;
};

// A mean or a line and offsets, fitted to all points but the outliers.
class Fit {
  public:
    Fit(const std::vector<Entry>& entries, Motion motion, std::vector<std::size_t> offsets,
        std::vector<bool> isOutlier)
        : entries_(entries),
          hasVelocity_(motion == Motion::kLine),
          offsets_(std::move(offsets)),
          isOutlier_(std::move(isOutlier)) {
        const Index size = 3 * Columns();
        Eigen::MatrixXd normal = Eigen::MatrixXd::Zero(size, size);
        Eigen::VectorXd right = Eigen::VectorXd::Zero(size);
        std::size_t count = 0;
        for (std::size_t i = 0; i < entries_.size(); ++i) {
            if (isOutlier_[i]) {
                continue;
            }
            ++count;
            const Eigen::VectorXd row = Row(i);
            for (Index a = 0; a < Columns(); ++a) {
                right.segment<3>(3 * a) += row(a) * (entries_[i].weight * entries_[i].value);
                for (Index b = 0; b < Columns(); ++b) {
                    normal.block<3, 3>(3 * a, 3 * b) += row(a) * row(b) * entries_[i].weight;
                }
            }
        }
        factor_.compute(normal);
        unknowns_ = factor_.solve(right);
        dof_ = 3 * static_cast<int>(count) - static_cast<int>(size);
        for (std::size_t i = 0; i < entries_.size(); ++i) {
            residuals_.push_back(entries_[i].value - At(i));
            if (!isOutlier_[i]) {
                sumOfSquares_ += residuals_[i].dot(entries_[i].weight * residuals_[i]);
            }
        }
    }

    Index Columns() const {
        return 1 + (hasVelocity_ ? 1 : 0) + static_cast<Index>(offsets_.size());
    }
    const std::vector<std::size_t>& offsets() const { return offsets_; }
    const std::vector<bool>& isOutlier() const { return isOutlier_; }
    const Eigen::Vector3d& Residual(std::size_t point) const { return residuals_[point]; }
    double sumOfSquares() const { return sumOfSquares_; }
    int dof() const { return dof_; }
    Eigen::Vector3d Unknown(Index column) const { return unknowns_.segment<3>(3 * column); }
    Index ColumnOfOffset(std::size_t k) const {
        return 1 + (hasVelocity_ ? 1 : 0) + static_cast<Index>(k);
    }

    Eigen::Matrix3d Covariance(Index column) const {
        Block unit = Block::Zero(3 * Columns(), 3);
        unit.middleRows<3>(3 * column).setIdentity();
        return factor_.solve(unit).middleRows<3>(3 * column);
    }

    // A point as a blunder of its own: within the fit, or of an outlier against it.
    Probe ProbeOfPoint(std::size_t point) const {
        const Eigen::Matrix3d& weight = entries_[point].weight;
        const Eigen::VectorXd row = Row(point);
        Block columns(3 * Columns(), 3);
        for (Index a = 0; a < Columns(); ++a) {
            columns.middleRows<3>(3 * a) = row(a) * Eigen::Matrix3d::Identity();
        }
        const Eigen::Matrix3d adjusted = columns.transpose() * factor_.solve(columns);
        if (isOutlier_[point]) {
            return ProbeOfMisfit(residuals_[point],
                                 weight.llt().solve(Eigen::Matrix3d::Identity()) + adjusted,
                                 weight);
        }
        Probe probe;
        probe.weight = weight;
        probe.force = weight * residuals_[point];
        probe.information = weight - weight * adjusted * weight;
        return probe;
    }

    // By point: an offset from it on; empty where it has too few points on a side.
    std::vector<std::optional<Probe>> ProbesOfOffsets() const {
        std::vector<std::optional<Probe>> probes(entries_.size());
        std::vector<std::size_t> used, before(entries_.size());
        for (std::size_t i = 0; i < entries_.size(); ++i) {
            before[i] = used.size();
            if (!isOutlier_[i]) {
                used.push_back(i);
            }
        }
        Probe sum;
        Block columns = Block::Zero(3 * Columns(), 3);
        for (std::size_t u = used.size(); u-- > 0;) {
            const std::size_t i = used[u];
            const Eigen::VectorXd row = Row(i);
            sum.weight += entries_[i].weight;
            sum.force += entries_[i].weight * residuals_[i];
            for (Index a = 0; a < Columns(); ++a) {
                columns.middleRows<3>(3 * a) += row(a) * entries_[i].weight;
            }
            std::size_t first = 0, last = used.size();
            for (const std::size_t offset : offsets_) {
                first = offset <= i ? std::max(first, before[offset]) : first;
                last = offset > i ? std::min(last, before[offset]) : last;
            }
            if (u >= first + kSmallestSegment && u + kSmallestSegment <= last) {
                Probe probe = sum;
                probe.information = sum.weight - columns.transpose() * factor_.solve(columns);
                probes[i] = probe;
            }
        }
        return probes;
    }

  private:
    Eigen::VectorXd Row(std::size_t point) const {
        Eigen::VectorXd row = Eigen::VectorXd::Zero(Columns());
        row(0) = 1.0;
        if (hasVelocity_) {
            row(1) = entries_[point].years;
        }
        for (std::size_t k = 0; k < offsets_.size(); ++k) {
            row(ColumnOfOffset(k)) = point >= offsets_[k] ? 1.0 : 0.0;
        }
        return row;
    }

    Eigen::Vector3d At(std::size_t point) const {
        const Eigen::VectorXd row = Row(point);
        Eigen::Vector3d value = Eigen::Vector3d::Zero();
        for (Index a = 0; a < Columns(); ++a) {
            value += row(a) * Unknown(a);
        }
        return value;
    }

    const std::vector<Entry>& entries_;
    bool hasVelocity_;
    std::vector<std::size_t> offsets_;  // first points after them, in time order
    std::vector<bool> isOutlier_;
    Eigen::LDLT<Eigen::MatrixXd> factor_;
    Eigen::VectorXd unknowns_;
    std::vector<Eigen::Vector3d> residuals_;
    double sumOfSquares_ = 0.0;
    int dof_ = 0;
};

class Analysis {
  public:
    Analysis(const std::vector<EpochPosition>& positions, const SeriesOptions& options)
        : positions_(positions), options_(options), order_(positions.size()) {
        std::iota(order_.begin(), order_.end(), std::size_t{0});
        std::stable_sort(order_.begin(), order_.end(), [&](std::size_t a, std::size_t b) {
            return positions[a].epoch < positions[b].epoch;
        });
        const EpochPosition& first = positions[order_.front()];
        for (const std::size_t i : order_) {
            entries_.push_back(EntryOf(positions[i], first));
        }
        const bool isLong = entries_.size() > 2 && entries_.back().years * 365.25 >= 1.0;
        motion_ = isLong ? options.motion : Motion::kStill;
        fit_.emplace(entries_, motion_, std::vector<std::size_t>{},
                     std::vector<bool>(entries_.size()));
        ChooseTests();
    }

    SeriesReport Run() {
        while (fit_->offsets().size() + Outliers() < options_.largestFindings && AddOne()) {
            MoveOffsets();
        }
        while (DropOne()) {
        }
        return Report();
    }

  private:
    static Entry EntryOf(const EpochPosition& position, const EpochPosition& first) {
        const std::string fault = FaultOfCovariance(position.covariance);
        if (!fault.empty() || !std::isfinite(session::Length(position.position))) {
            throw NetworkError("the position of " + io::FormatTime(position.epoch, 0) +
                               " cannot be used: " + (fault.empty() ? "it is not finite" : fault));
        }
        Entry entry;
        entry.years = io::SecondsBetween(first.epoch, position.epoch) / kSecondsPerYear;
        entry.value = ToEigen(session::Minus(position.position, first.position));
        entry.weight = ToEigen(position.covariance).llt().solve(Eigen::Matrix3d::Identity());
        return entry;
    }

    // What is looked for, and by which distribution.
    void ChooseTests() {
        const auto count = static_cast<int>(entries_.size());
        candidates_ = count < 2 ? 0 : count;
        for (const auto& probe : fit_->ProbesOfOffsets()) {
            candidates_ += probe ? 1 : 0;
        }
        tests_.varianceFactor =
            fit_->dof() >= kSmallestDof ? options_.varianceFactor : VarianceFactor::kKnown;
    }

    Tester TesterOf(const Fit& fit) const {
        return {tests_, LevelOfEach(options_.level, std::max(1, candidates_)),
                TestSum(fit.sumOfSquares(), fit.dof(), options_.level)};
    }

    const Vector3& place() const { return positions_[order_.front()].position; }

    std::size_t Outliers() const {
        return static_cast<std::size_t>(
            std::count(fit_->isOutlier().begin(), fit_->isOutlier().end(), true));
    }

    // The offset from one of the points `first` to `last` that explains most.
    std::optional<Finding> BestOffset(const Fit& fit, std::size_t first, std::size_t last) const {
        const Tester tester = TesterOf(fit);
        const auto probes = fit.ProbesOfOffsets();
        std::optional<Finding> best;
        for (std::size_t i = first; i < last; ++i) {
            if (probes[i]) {
                Keep(best, {Kind::kOffset, i, tester.Test(*probes[i], place())});
            }
        }
        return best;
    }

    static void Keep(std::optional<Finding>& best, const Finding& finding) {
        if (finding.test.dof == 3 && (!best || finding.test.statistic > best->test.statistic)) {
            best = finding;
        }
    }

    bool AddOne() {
        std::optional<Finding> best = BestOffset(*fit_, 0, entries_.size());
        const Tester tester = TesterOf(*fit_);
        for (std::size_t i = 0; i < entries_.size(); ++i) {
            if (!fit_->isOutlier()[i]) {
                Keep(best, {Kind::kOutlier, i, tester.Test(fit_->ProbeOfPoint(i), place())});
            }
        }
        if (!best || !best->test.isSuspect) {
            return false;
        }
        std::vector<std::size_t> offsets = fit_->offsets();
        std::vector<bool> isOutlier = fit_->isOutlier();
        if (best->kind == Kind::kOutlier) {
            isOutlier[best->point] = true;
        } else {
            offsets.insert(std::lower_bound(offsets.begin(), offsets.end(), best->point),
                           best->point);
        }
        fit_.emplace(entries_, motion_, offsets, isOutlier);
        return true;
    }

    // Each offset to where it explains most, now that others are there.
    void MoveOffsets() {
        constexpr int kPasses = 10;
        for (int pass = 0; pass < kPasses; ++pass) {
            bool isMoved = false;
            for (std::size_t k = 0; k < fit_->offsets().size(); ++k) {
                std::vector<std::size_t> offsets = fit_->offsets();
                const std::vector<bool> isOutlier = fit_->isOutlier();
                const std::size_t at = offsets[k];
                const std::size_t first = k > 0 ? offsets[k - 1] : 0;
                const std::size_t last = k + 1 < offsets.size() ? offsets[k + 1] : entries_.size();
                offsets.erase(offsets.begin() + static_cast<std::ptrdiff_t>(k));
                const Fit without(entries_, motion_, offsets, isOutlier);
                const auto best = BestOffset(without, first, last);
                if (best && best->point != at) {
                    offsets.insert(offsets.begin() + static_cast<std::ptrdiff_t>(k), best->point);
                    fit_.emplace(entries_, motion_, offsets, isOutlier);
                    isMoved = true;
                }
            }
            if (!isMoved) {
                return;
            }
        }
    }

    // All findings, each in the presence of the others.
    std::vector<Finding> Findings() const {
        std::vector<Finding> findings;
        const Tester tester = TesterOf(*fit_);
        for (std::size_t i = 0; i < entries_.size(); ++i) {
            if (fit_->isOutlier()[i]) {
                findings.push_back(
                    {Kind::kOutlier, i, tester.Test(fit_->ProbeOfPoint(i), place(), false)});
            }
        }
        for (std::size_t k = 0; k < fit_->offsets().size(); ++k) {
            const Index column = fit_->ColumnOfOffset(k);
            const Eigen::Matrix3d covariance = fit_->Covariance(column);
            const Eigen::Matrix3d weight = covariance.llt().solve(Eigen::Matrix3d::Identity());
            findings.push_back(
                {Kind::kOffset, fit_->offsets()[k],
                 tester.Test(ProbeOfMisfit(fit_->Unknown(column), covariance, weight), place(),
                             false)});
        }
        std::stable_sort(findings.begin(), findings.end(),
                         [](const Finding& a, const Finding& b) { return a.point < b.point; });
        return findings;
    }

    // The weakest finding that others have made insignificant.
    bool DropOne() {
        const std::vector<Finding> findings = Findings();
        const auto weakest = std::min_element(
            findings.begin(), findings.end(),
            [](const Finding& a, const Finding& b) { return a.test.statistic < b.test.statistic; });
        if (weakest == findings.end() || weakest->test.isSuspect) {
            return false;
        }
        std::vector<std::size_t> offsets = fit_->offsets();
        std::vector<bool> isOutlier = fit_->isOutlier();
        if (weakest->kind == Kind::kOutlier) {
            isOutlier[weakest->point] = false;
        } else {
            std::erase(offsets, weakest->point);
        }
        fit_.emplace(entries_, motion_, offsets, isOutlier);
        return true;
    }

    SeriesReport Report() const {
        SeriesReport report;
        const Tester tester = TesterOf(*fit_);
        const session::Geodetic at = session::ToGeodetic(place());
        const auto neu = [&](const Eigen::Vector3d& v) { return session::ToNeu(at, ToVector3(v)); };
        report.start = positions_[order_.front()].epoch;
        report.position = session::Plus(place(), ToVector3(fit_->Unknown(0)));
        report.covariance = ToSymmetric(tester.scale() * fit_->Covariance(0));
        report.motion = motion_;
        if (motion_ == Motion::kLine) {
            report.velocityNeu = neu(fit_->Unknown(1));
            report.sigmaVelocityNeu =
                SigmaNeu(place(), ToSymmetric(tester.scale() * fit_->Covariance(1)));
        }
        report.varianceFactor = tests_.varianceFactor;
        report.sumOfSquares = fit_->sumOfSquares();
        report.dof = fit_->dof();
        report.scale = tester.scale();
        report.candidates = candidates_;
        Eigen::Vector3d squares = Eigen::Vector3d::Zero();
        for (std::size_t i = 0; i < entries_.size(); ++i) {
            const EpochPosition& position = positions_[order_[i]];
            SeriesPoint point;
            point.given = order_[i];
            point.epoch = position.epoch;
            point.neu = neu(entries_[i].value - fit_->Unknown(0));
            point.sigmaNeu = SigmaNeu(place(), position.covariance);
            point.residualNeu = neu(fit_->Residual(i));
            point.isOutlier = fit_->isOutlier()[i];
            if (!point.isOutlier) {
                squares += ToEigen(point.residualNeu).cwiseAbs2();
            }
            report.points.push_back(point);
        }
        if (fit_->dof() > 0) {
            report.repeatabilityNeu =
                ToVector3((squares * 3.0 / static_cast<double>(fit_->dof())).cwiseSqrt());
        }
        for (const Finding& finding : Findings()) {
            SeriesFinding told;
            told.kind = finding.kind;
            told.point = finding.point;
            told.isAtEnd = finding.kind == Kind::kOutlier &&
                           (finding.point == 0 || finding.point + 1 == entries_.size());
            told.sizeNeu = finding.test.offsetNeu;
            told.sigmaNeu = finding.test.sigmaNeu;
            told.statistic = finding.test.statistic;
            told.probability =
                -std::expm1(candidates_ * std::log1p(-std::min(finding.test.probability, 1.0)));
            report.findings.push_back(told);
        }
        return report;
    }

    const std::vector<EpochPosition>& positions_;
    const SeriesOptions& options_;
    std::vector<std::size_t> order_;
    std::vector<Entry> entries_;
    Motion motion_ = Motion::kStill;
    int candidates_ = 0;
    AdjustmentOptions tests_;
    std::optional<Fit> fit_;
};

}  // namespace

SeriesReport AnalyseSeries(const std::vector<EpochPosition>& positions,
                           const SeriesOptions& options) {
    return positions.empty() ? SeriesReport{} : Analysis(positions, options).Run();
}

}  // namespace vornel::network
