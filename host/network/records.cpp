#include "network/records.h"

#include <cmath>

#include "network/dense.h"

namespace vornel::network {

Eigen::Matrix3d NeuAxes(const Vector3& place) {
    const session::Geodetic geodetic = session::ToGeodetic(place);
    Eigen::Matrix3d axes;
    axes.col(0) = ToEigen(session::ToNeu(geodetic, {1.0, 0.0, 0.0}));
    axes.col(1) = ToEigen(session::ToNeu(geodetic, {0.0, 1.0, 0.0}));
    axes.col(2) = ToEigen(session::ToNeu(geodetic, {0.0, 0.0, 1.0}));
    return axes;
}

Matrix3 CovarianceFromNeu(const Vector3& place, const Vector3& sigmaNeu) {
    const Eigen::Matrix3d axes = NeuAxes(place);
    return ToSymmetric(axes.transpose() * ToEigen(sigmaNeu).cwiseAbs2().asDiagonal() * axes);
}

Vector3 SigmaNeu(const Vector3& place, const Matrix3& covariance) {
    const Eigen::Matrix3d axes = NeuAxes(place);
    const Eigen::Matrix3d neu = axes * ToEigen(covariance) * axes.transpose();
    return ToVector3(neu.diagonal().cwiseMax(0.0).cwiseSqrt());
}

}  // namespace vornel::network
