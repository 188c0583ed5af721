// SPDX-License-Identifier: MIT
// Foundation stand-in: a homogeneous point of space.
#pragma once

#include "knotwork/platform/foundation/4d_dbl_matrix.h"
#include "knotwork/platform/foundation/export.h"

/// Homogeneous point (x, y, z, w); the origin by default.
class KNOTWORK_FOUNDATION_API T4dDblPoint {
 public:
  /// (0, 0, 0, 1).
  T4dDblPoint();
  T4dDblPoint(double x, double y, double z, double w = 1.0);

  /// Takes the point as a row and transforms it, p' = p M, each sum in index order.
  /// @return this point.
  T4dDblPoint& postmultBy(const T4dDblMatrix& m);

  double x, y, z, w;
};
