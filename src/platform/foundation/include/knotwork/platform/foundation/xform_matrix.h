// SPDX-License-Identifier: MIT
// Foundation stand-in: the host's transformation object, of which only the matrix is asked.
#pragma once

#include "knotwork/platform/foundation/4d_dbl_matrix.h"
#include "knotwork/platform/foundation/export.h"

/// A transformation that the host defines; it yields a matrix for row points.
class KNOTWORK_FOUNDATION_API TxformMatrix {
 public:
  virtual ~TxformMatrix();

  /// @return the matrix M of p' = p M; valid while the transformation lives.
  virtual const T4dDblMatrix& matrix() const = 0;
};
