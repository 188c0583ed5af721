// SPDX-License-Identifier: MIT
// The kernels for x86 processors with AVX2; this one file is compiled for it.
#include "vector/kernels/kernels_generic.h"

const KernelSet knotwork::detail::avx2Kernels = kThisSet;
