// SPDX-License-Identifier: MIT
// Chooses the kernel set at load; the only file that asks what the processor can do.
#include <cstdlib>
#include <cstring>

#include "vector/kernels/kernels.h"

namespace knotwork::detail {

// Valid before any static constructor has run.
constinit const KernelSet* activeKernels = &baselineKernels;

namespace {

const KernelSet* bestKernels() {
  const char* wanted = std::getenv("KNOTWORK_KERNELS");
  if (wanted != nullptr && std::strcmp(wanted, "baseline") == 0) return &baselineKernels;
#if defined(KNOTWORK_HAVE_AVX2)
  __builtin_cpu_init();
  if (__builtin_cpu_supports("avx2")) return &avx2Kernels;
#endif
  return &baselineKernels;
}

[[maybe_unused]] const bool chosen = (activeKernels = bestKernels(), true);

}  // namespace
}  // namespace knotwork::detail
