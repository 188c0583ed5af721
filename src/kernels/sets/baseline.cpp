// SPDX-License-Identifier: MIT
// The kernels for every processor of the target.
#include "kernels/generic/this_set.h"

namespace knotwork::detail {
extern constexpr KernelSet baselineKernels = thisSet("baseline");
}
