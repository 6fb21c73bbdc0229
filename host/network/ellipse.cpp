#include "network/ellipse.h"

#include <algorithm>
#include <cmath>

#include "network/dense.h"
#include "network/statistics.h"

namespace vornel::network {
namespace {

// The square of the factor from one standard deviation to the limit of the region.
double FactorSquared(int dimension, double confidence, int dof) {
    return dof > 0 ? dimension * FisherCritical(1.0 - confidence, dimension, dof)
                   : ChiSquareCritical(1.0 - confidence, dimension);
}

}  // namespace

ErrorEllipse HorizontalEllipse(const Vector3& place, const Matrix3& covariance, double confidence,
                               int dof) {
    const Eigen::Matrix3d axes = NeuAxes(place);
    const Eigen::Matrix3d neu = axes * ToEigen(covariance) * axes.transpose();
    const double north = neu(0, 0), east = neu(1, 1), both = neu(0, 1);
    const double middle = 0.5 * (north + east);
    const double radius = std::hypot(0.5 * (north - east), both);
    const double factor = FactorSquared(2, confidence, dof);
    ErrorEllipse ellipse;
    ellipse.semiMajor = std::sqrt(factor * std::max(0.0, middle + radius));
    ellipse.semiMinor = std::sqrt(factor * std::max(0.0, middle - radius));
    ellipse.azimuth = 0.5 * std::atan2(2.0 * both, north - east);
    if (ellipse.azimuth < 0.0) {
        ellipse.azimuth += M_PI;
    }
    return ellipse;
}

double HeightInterval(const Vector3& place, const Matrix3& covariance, double confidence, int dof) {
    return SigmaNeu(place, covariance)[2] * std::sqrt(FactorSquared(1, confidence, dof));
}

}  // namespace vornel::network
