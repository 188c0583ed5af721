// SPDX-License-Identifier: MIT
// Transformations for the tests of points.
#pragma once

#include "knotwork/platform/foundation/xform_matrix.h"

// An affine map with a shear and a translation that scales w.
struct ShearAndShift : TxformMatrix {
  ShearAndShift() {
    for (int j = 0; j < 3; ++j) m(3, j) = 10.0 * (j + 1);
    m(0, 1) = 0.5;
    m(3, 3) = 4.0;
  }
  const T4dDblMatrix& matrix() const override { return m; }
  T4dDblMatrix m;
};
