// SPDX-License-Identifier: MIT
// How far a fit is from its data.
#include "model/deviation.h"

#include <algorithm>
#include <cmath>

namespace knotfit {

Deviation summaryOf(const std::vector<double>& distances) {
  Deviation d;
  if (distances.empty()) return d;
  const auto worst = std::max_element(distances.begin(), distances.end());
  d.worst = static_cast<std::size_t>(worst - distances.begin());
  d.max = *worst;
  if (d.max == 0) return d;
  double sum = 0;
  for (const double x : distances) sum += (x / d.max) * (x / d.max);
  d.rms = d.max * std::sqrt(sum / static_cast<double>(distances.size()));
  return d;
}

}  // namespace knotfit
