// SPDX-License-Identifier: MIT
// The table of level-1 routines in use. KNOTWORK_BLAS=builtin in the environment leaves the
// system's out, for tests.
#include <cstdlib>
#include <cstring>

#include "platform/blas1.h"

namespace knotwork::blas1 {

constinit Table active = kBuiltin;

namespace {

[[maybe_unused]] const bool chosen = [] {
  const char* wanted = std::getenv("KNOTWORK_BLAS");
  if (wanted != nullptr && std::strcmp(wanted, "builtin") == 0) return false;
  const Table* system = systemTable();
  if (system != nullptr) active = withReferenceBits(*system);
  return system != nullptr;
}();

}  // namespace
}  // namespace knotwork::blas1
