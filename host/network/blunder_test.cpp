#include "network/blunder_test.h"

#include <Eigen/Cholesky>
#include <Eigen/Eigenvalues>
#include <algorithm>
#include <cmath>
#include <limits>

#include "network/dense.h"
#include "network/statistics.h"

namespace vornel::network {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// A component with a smaller redundancy number than this has no control: its blunder would have to be
// hundreds of standard deviations to be found.
constexpr double kSmallestRedundancy = 1e-4;

}  // namespace

Probe ProbeOfMisfit(const Eigen::Vector3d& misfit, const Eigen::Matrix3d& covariance,
                    const Eigen::Matrix3d& weight) {
    Probe probe;
    probe.information = covariance.llt().solve(Eigen::Matrix3d::Identity());
    probe.force = probe.information * misfit;
    probe.weight = weight;
    return probe;
}

GlobalTest TestSum(double sumOfSquares, int dof, double level) {
    GlobalTest test;
    test.sumOfSquares = sumOfSquares;
    test.dof = dof;
    if (dof > 0) {
        test.varianceFactor = sumOfSquares / dof;
        test.critical = ChiSquareCritical(level, dof);
        test.probability = ChiSquareTail(sumOfSquares, dof);
        test.isPassed = sumOfSquares <= test.critical;
    }
    return test;
}

Tester::Tester(const AdjustmentOptions& options, double level, const GlobalTest& global)
    : options_(options), global_(global) {
    const bool isKnown = options.varianceFactor == VarianceFactor::kKnown;
    const auto critical = [&](int components, int others) {
        return isKnown      ? ChiSquareCritical(level, components)
               : others > 0 ? components * FisherCritical(level, components, others)
                            : kInfinity;
    };
    for (int dof = 1; dof <= 3; ++dof) {
        const auto at = static_cast<std::size_t>(dof);
        critical_[at] = critical(dof, global.dof - dof);
        criticalOutside_[at] = critical(dof, global.dof);
        noncentrality_[at] = Noncentrality(dof, level, options.power);
    }
    if (!isKnown && global.dof > 0) {
        scale_ = global.varianceFactor;
    }
}

BlunderTest Tester::Test(const Probe& probe, const Vector3& place, bool isIncluded) const {
    // In units in which the weight is one, the information is the matrix of redundancy numbers.
    const Eigen::Matrix3d root = probe.weight.llt().matrixL();
    const Eigen::Matrix3d unit = root.inverse();
    const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> eigen(unit * probe.information *
                                                               unit.transpose());
    const Eigen::Matrix3d back = unit.transpose() * eigen.eigenvectors();
    const Eigen::Vector3d force = back.transpose() * probe.force;

    BlunderTest test;
    Eigen::Vector3d offset = Eigen::Vector3d::Zero();
    Eigen::Matrix3d covariance = Eigen::Matrix3d::Zero();
    Eigen::Matrix3d information = Eigen::Matrix3d::Zero();
    for (Eigen::Index k = 0; k < 3; ++k) {
        const double redundancy = eigen.eigenvalues()(k);
        if (redundancy < kSmallestRedundancy) {
            continue;
        }
        ++test.dof;
        test.redundancy += redundancy;
        test.statistic += force(k) * force(k) / redundancy;
        offset += back.col(k) * (force(k) / redundancy);
        covariance += back.col(k) * back.col(k).transpose() / redundancy;
        const Eigen::Vector3d row = root * eigen.eigenvectors().col(k);
        information += row * row.transpose() * redundancy;
    }
    const double noncentrality = noncentrality_[static_cast<std::size_t>(test.dof)] * scale_;
    const Eigen::Matrix3d axes = NeuAxes(place);
    test.offsetNeu = ToVector3(axes * offset);
    for (std::size_t i = 0; i < 3; ++i) {
        const Eigen::Vector3d axis = axes.row(static_cast<Eigen::Index>(i));
        const double weight = axis.dot(probe.weight * axis);
        const double kept = axis.dot(information * axis);
        test.sigmaNeu[i] =
            test.dof == 3 ? std::sqrt(scale_ * axis.dot(covariance * axis)) : kInfinity;
        test.detectableNeu[i] =
            kept > kSmallestRedundancy * weight ? std::sqrt(noncentrality / kept) : kInfinity;
    }
    test.detectable = kInfinity;
    if (test.dof == 3) {
        const double least =
            Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d>(information, Eigen::EigenvaluesOnly)
                .eigenvalues()(0);
        test.detectable = std::sqrt(noncentrality / least);
    }
    Judge(test, isIncluded);
    return test;
}

// With an estimated variance factor, that of everything but the group.
void Tester::Judge(BlunderTest& test, bool isIncluded) const {
    if (test.dof == 0) {
        return;
    }
    if (options_.varianceFactor == VarianceFactor::kKnown) {
        test.probability = ChiSquareTail(test.statistic, test.dof);
    } else {
        const int dof = global_.dof - (isIncluded ? test.dof : 0);
        const double sum = global_.sumOfSquares - (isIncluded ? test.statistic : 0.0);
        if (dof < 1) {
            test.statistic = 0.0;
            return;
        }
        const double factor = std::max(sum, 1e-12 * global_.sumOfSquares) / dof;
        test.statistic = factor > 0.0 ? test.statistic / factor : 0.0;
        test.probability = FisherTail(test.statistic / test.dof, test.dof, dof);
    }
    const auto& critical = isIncluded ? critical_ : criticalOutside_;
    test.isSuspect = test.statistic > critical[static_cast<std::size_t>(test.dof)];
}

double Tester::Excess(const BlunderTest& test) const {
    return test.dof == 0 ? -kInfinity
                         : test.statistic - critical_[static_cast<std::size_t>(test.dof)];
}

}  // namespace vornel::network
