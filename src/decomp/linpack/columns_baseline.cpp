// SPDX-License-Identifier: MIT
// The column kernels for every processor of the target.
#include "decomp/linpack/columns_generic.h"

const ColumnKernels knotwork::linpack::baselineColumnKernels = kThisSet;
