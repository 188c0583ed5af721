// SPDX-License-Identifier: MIT
// Which kernel sets there are, and which one is asked for.
#pragma once

#include <string>
#include <vector>

namespace knotwork::detail {

struct KernelSet;

/// The sets that this processor runs, the fastest first, `baseline` last.
std::vector<const KernelSet*> kernelSetsHere();

/// What a request for a set comes to.
struct KernelChoice {
  const KernelSet* set;
  std::string complaint;  ///< one line where the request could not be met, else empty
};

/// @param wanted  the name of a set, or "best", which is the fastest that runs here; null or empty
///                means "best" too. For any other name the choice is the best set, with a
///                complaint.
KernelChoice chooseKernels(const char* wanted);

}  // namespace knotwork::detail
