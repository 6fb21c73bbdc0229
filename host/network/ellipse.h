// Regions of confidence of positions.
#pragma once

#include "network/records.h"

namespace vornel::network {

struct ErrorEllipse {
    double semiMajor = 0.0;  // m
    double semiMinor = 0.0;  // m
    double azimuth = 0.0;    // rad, of the major axis from north to east, 0 to pi
};

// The horizontal ellipse round a position, or round the end of a vector, that holds the true one with
// probability `confidence`; `place` says what is horizontal. `dof`: degrees of freedom from which the
// covariance was scaled; 0 where its scale was known.
ErrorEllipse HorizontalEllipse(const Vector3& place, const Matrix3& covariance, double confidence,
                               int dof = 0);

// Half the interval (m) of the height that holds the true one with that probability.
double HeightInterval(const Vector3& place, const Matrix3& covariance, double confidence,
                      int dof = 0);

}  // namespace vornel::network
