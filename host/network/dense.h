// The records' vectors and matrices as the linear algebra library has them.
#pragma once

#include <Eigen/Core>

#include "network/records.h"

namespace vornel::network {

inline Eigen::Vector3d ToEigen(const Vector3& v) {
    return {v[0], v[1], v[2]};
}

inline Eigen::Matrix3d ToEigen(const Matrix3& m) {
    return Eigen::Map<const Eigen::Matrix<double, 3, 3, Eigen::RowMajor>>(m.data());
}

inline Vector3 ToVector3(const Eigen::Vector3d& v) {
    return {v(0), v(1), v(2)};
}

// The mean of both triangles, so that what is handed out is symmetric to the last bit.
inline Matrix3 ToSymmetric(const Eigen::Matrix3d& m) {
    Matrix3 rows{};
    for (Eigen::Index i = 0; i < 3; ++i) {
        for (Eigen::Index j = 0; j < 3; ++j) {
            rows[static_cast<std::size_t>(3 * i + j)] = 0.5 * (m(i, j) + m(j, i));
        }
    }
    return rows;
}

// Turns ECEF into north, east, up at a place; its rows are the local axes.
Eigen::Matrix3d NeuAxes(const Vector3& place);

}  // namespace vornel::network
