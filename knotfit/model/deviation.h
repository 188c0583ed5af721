// SPDX-License-Identifier: MIT
// How far a fit is from its data.
#pragma once

#include <cstddef>
#include <vector>

namespace knotfit {

/// Summary of distances: root of the mean square, largest, and where that is.
struct Deviation {
  double rms = 0, max = 0;
  std::size_t worst = 0;  ///< index from 0
};

Deviation summaryOf(const std::vector<double>& distances);

}  // namespace knotfit
