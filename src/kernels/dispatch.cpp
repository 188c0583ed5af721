// SPDX-License-Identifier: MIT
// Chooses the kernel set at load; the only file that asks what the processor can do.
//
// A request that cannot be met gets the best set and a line on the standard error stream. The bits
// are the same, so a host must not die of it; but whoever measures, or looks for a fault, must not
// believe that the request was followed.
#include "kernels/dispatch.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "kernels/kernels.h"

namespace knotwork::detail {

// Valid before any static constructor has run.
constinit const KernelSet* activeKernels = &baselineKernels;

#if defined(__x86_64__) || defined(__i386__)
extern const KernelSet avx2Kernels;
#endif

std::vector<const KernelSet*> kernelSetsHere() {
  std::vector<const KernelSet*> sets;
#if defined(__x86_64__) || defined(__i386__)
  __builtin_cpu_init();  // needed before static constructors
  if (__builtin_cpu_supports("avx2")) sets.push_back(&avx2Kernels);
#endif
  sets.push_back(&baselineKernels);
  return sets;
}

KernelChoice chooseKernels(const char* wanted) {
  const std::string name = wanted == nullptr ? "" : wanted;
  const std::vector<const KernelSet*> sets = kernelSetsHere();
  if (name.empty() || name == "best") return {sets.front(), ""};
  const auto named = std::find_if(sets.begin(), sets.end(),
                                  [&](const KernelSet* set) { return name == set->name; });
  if (named != sets.end()) return {*named, ""};
  std::string complaint = "knotwork: KNOTWORK_KERNELS: this processor runs no set \"" + name +
                          "\", using " + sets.front()->name + "; there are best";
  for (const KernelSet* set : sets) complaint.append(", ").append(set->name);
  return {sets.front(), complaint};
}

namespace {

[[maybe_unused]] const bool chosen = [] {
  const KernelChoice choice = chooseKernels(std::getenv("KNOTWORK_KERNELS"));
  if (!choice.complaint.empty()) std::fprintf(stderr, "%s\n", choice.complaint.c_str());
  activeKernels = choice.set;
  return true;
}();

}  // namespace
}  // namespace knotwork::detail
