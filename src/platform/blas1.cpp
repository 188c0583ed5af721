// SPDX-License-Identifier: MIT
// The table of level-1 routines in use.
#include "platform/blas1.h"

namespace knotwork::blas1 {

constinit Table active = kBuiltin;

namespace {

[[maybe_unused]] const bool chosen = [] {
  if (const Table* system = systemTable()) active = withReferenceBits(*system);
  return true;
}();

}  // namespace
}  // namespace knotwork::blas1
