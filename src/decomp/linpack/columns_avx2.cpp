// SPDX-License-Identifier: MIT
// The column kernels for x86 processors with AVX2; compiled for it.
#include "decomp/linpack/columns_generic.h"

const ColumnKernels knotwork::linpack::avx2ColumnKernels = kThisSet;
