// SPDX-License-Identifier: MIT
// Foundation stand-in: home of the transformation's virtual table.
#include "knotwork/platform/foundation/xform_matrix.h"

TxformMatrix::~TxformMatrix() = default;
