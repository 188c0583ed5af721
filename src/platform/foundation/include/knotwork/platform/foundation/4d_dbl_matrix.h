// SPDX-License-Identifier: MIT
// Foundation stand-in: a 4 by 4 matrix of doubles for homogeneous points.
#pragma once

#include "knotwork/platform/foundation/export.h"

/// 4 by 4 transformation of homogeneous row points, p' = p M: the translation stands in row 3.
class KNOTWORK_FOUNDATION_API T4dDblMatrix {
 public:
  /// The identity.
  T4dDblMatrix();

  /// @param i, j  row and column, each in [0, 3], not checked. @return the element, writable.
  double& operator()(int i, int j);

  /// @param i, j  row and column, each in [0, 3], not checked. @return the element.
  double operator()(int i, int j) const;

 private:
  double element_[4][4];
};
