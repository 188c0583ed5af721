// SPDX-License-Identifier: MIT
// Foundation stand-in: the homogeneous point.
#include "knotwork/platform/foundation/4d_dbl_point.h"

T4dDblPoint::T4dDblPoint() : T4dDblPoint(0.0, 0.0, 0.0) {}

T4dDblPoint::T4dDblPoint(double px, double py, double pz, double pw) : x(px), y(py), z(pz), w(pw) {}

T4dDblPoint& T4dDblPoint::postmultBy(const T4dDblMatrix& m) {
  const auto column = [&](int j) { return x * m(0, j) + y * m(1, j) + z * m(2, j) + w * m(3, j); };
  return *this = T4dDblPoint(column(0), column(1), column(2), column(3));
}
