// SPDX-License-Identifier: MIT
// The table of level-1 routines in use. KNOTWORK_BLAS=builtin in the environment leaves the
// system's out, for tests. Of a word that cannot be followed, whoever measures is told, as of an
// unknown set of kernels; it never stops a host.
#include "kernels/blas1.h"

#include <cstdio>
#include <cstdlib>

#include "kernels/kernels.h"

namespace knotwork::blas1 {

constinit std::atomic<const Table*> chosen = nullptr;

namespace {

Table tryRoutines() {
  const Table& builtin = detail::activeKernels->level1;
  const SourceChoice choice = chooseSource(std::getenv("KNOTWORK_BLAS"));
  if (!choice.complaint.empty()) std::fprintf(stderr, "%s\n", choice.complaint.c_str());
  return choice.system ? withReferenceBits(*systemTable(), builtin) : builtin;
}

}  // namespace

SourceChoice chooseSource(const char* wanted) {
  const std::string name = wanted == nullptr ? "" : wanted;
  const bool hasSystem = systemTable() != nullptr;
  if (name == "builtin") return {false, ""};
  if (name.empty() || (name == "system" && hasSystem)) return {hasSystem, ""};
  return {hasSystem,
          "knotwork: KNOTWORK_BLAS: there is no \"" + name + "\", using " +
              (hasSystem ? "system; there are system, builtin" : "builtin; there is builtin")};
}

const Table& choose() {
  static const Table table = tryRoutines();
  chosen.store(&table, std::memory_order_release);
  return table;
}

}  // namespace knotwork::blas1
