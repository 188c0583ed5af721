// SPDX-License-Identifier: MIT
// The kernels for x86 processors with AVX2.
#include "kernels/generic/this_set.h"

namespace knotwork::detail {
extern constexpr KernelSet avx2Kernels = thisSet("avx2");
}
