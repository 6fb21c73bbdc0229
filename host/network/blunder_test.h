// The test of a blunder of three components in a group of observations.
#pragma once

#include <Eigen/Core>
#include <array>

#include "network/adjustment.h"

namespace vornel::network {

// A shift d common to a group of observed differences, each with its sign. Eliminating all other
// unknowns from the normal equations leaves information * d = force.
struct Probe {
    Eigen::Vector3d force = Eigen::Vector3d::Zero();        // 1/m
    Eigen::Matrix3d information = Eigen::Matrix3d::Zero();  // 1/m^2
    Eigen::Matrix3d weight = Eigen::Matrix3d::Zero();       // 1/m^2, before the elimination
};

// The probe of a misfit (m) of covariance `covariance` (m^2) to what was adjusted without it;
// `weight` (1/m^2) is that of the misfit's observation alone.
Probe ProbeOfMisfit(const Eigen::Vector3d& misfit, const Eigen::Matrix3d& covariance,
                    const Eigen::Matrix3d& weight);

GlobalTest TestSum(double sumOfSquares, int dof, double level);

// Tests within one adjustment, whose global test is `global`.
class Tester {
  public:
    // `level`: significance of one test.
    Tester(const AdjustmentOptions& options, double level, const GlobalTest& global);

    // `isIncluded`: the group has part in the global test. `place` says what is north, east and up.
    BlunderTest Test(const Probe& probe, const Vector3& place, bool isIncluded = true) const;

    // By which the test of a probe exceeds what is critical; ranks suspects.
    double Excess(const BlunderTest& test) const;

    double scale() const { return scale_; }  // of covariances
    double noncentrality() const { return noncentrality_[3]; }

  private:
    void Judge(BlunderTest& test, bool isIncluded) const;

    const AdjustmentOptions& options_;
    GlobalTest global_;
    double scale_ = 1.0;
    // By the number of components; the first of those that are included, the second of others.
    std::array<double, 4> critical_{}, criticalOutside_{}, noncentrality_{};
};

}  // namespace vornel::network
