// SPDX-License-Identifier: MIT
// The kernels for every processor of the target.
#include "vector/kernels/kernels_generic.h"

const KernelSet knotwork::detail::baselineKernels = kThisSet;
