// SPDX-License-Identifier: MIT
// Parameters at which a shape is sampled.
#include "model/sampling.h"

namespace knotfit {

std::vector<double> sampledParameters(const std::vector<double>& knots, int degree, int perSpan) {
  const auto p = static_cast<std::size_t>(degree);
  std::vector<double> out;
  for (std::size_t k = p; k + p + 1 < knots.size(); ++k) {
    if (!(knots[k] < knots[k + 1])) continue;
    for (int i = 0; i < perSpan; ++i) {
      out.push_back(knots[k] + (knots[k + 1] - knots[k]) * i / perSpan);
    }
  }
  out.push_back(knots.back());
  return out;
}

std::vector<double> evenParameters(double from, double to, std::size_t n) {
  std::vector<double> out;
  for (std::size_t i = 0; i + 1 < n; ++i) {
    out.push_back(from + (to - from) * static_cast<double>(i) / static_cast<double>(n - 1));
  }
  out.push_back(n > 1 ? to : from);
  return out;
}

}  // namespace knotfit
