// SPDX-License-Identifier: MIT
// Foundation stand-in: the 4 by 4 matrix.
#include "knotwork/platform/foundation/4d_dbl_matrix.h"

T4dDblMatrix::T4dDblMatrix()
    : element_{
          {1.0, 0.0, 0.0, 0.0}, {0.0, 1.0, 0.0, 0.0}, {0.0, 0.0, 1.0, 0.0}, {0.0, 0.0, 0.0, 1.0}} {}

double& T4dDblMatrix::operator()(int i, int j) { return element_[i][j]; }

double T4dDblMatrix::operator()(int i, int j) const { return element_[i][j]; }
