// SPDX-License-Identifier: MIT
// B-spline basis functions.
#include "fit/basis.h"

#include <algorithm>

namespace knotfit {

std::size_t spanOf(const std::vector<double>& knots, int degree, double u) {
  const auto p = static_cast<std::size_t>(degree);
  const auto begin = knots.begin() + degree;
  const auto end = knots.end() - degree - 1;
  if (!(u < *end)) {  // the last span that is not empty
    return static_cast<std::size_t>(std::lower_bound(begin, end, *end) - knots.begin()) - 1;
  }
  if (u < *begin) u = *begin;
  const auto after = std::upper_bound(begin, end, u);
  return std::max(p, static_cast<std::size_t>(after - knots.begin()) - 1);
}

BasisRow basisRow(const std::vector<double>& t, int degree, double u, int order) {
  const auto p = static_cast<std::size_t>(degree);
  const std::size_t span = spanOf(t, degree, u);
  BasisRow row{span - p, std::vector<double>(p + 1, 0.0)};
  if (order > degree) return row;
  const std::size_t plain = p - static_cast<std::size_t>(order);
  std::vector<double>& b = row.values;
  // b[k] is basis function span - j + k of degree j; from degree `plain` on, derivatives are
  // raised: N'(i, j) = j (N(i, j-1) / (t(i+j) - t(i)) - N(i+1, j-1) / (t(i+j+1) - t(i+1))).
  b[0] = 1.0;
  for (std::size_t j = 1; j <= p; ++j) {
    double carried = 0.0;
    for (std::size_t k = 0; k < j; ++k) {
      const double left = t[span + 1 + k - j], right = t[span + 1 + k];
      const double width = right - left, degreeHere = static_cast<double>(j);
      const bool raise = j > plain;  // quotients first: they are exactly 1 at a clamped end
      const double down = b[k] * (raise ? -degreeHere / width : (right - u) / width);
      const double up = b[k] * (raise ? degreeHere / width : (u - left) / width);
      b[k] = carried + down;
      carried = up;
    }
    b[j] = carried;
  }
  return row;
}

double greville(const std::vector<double>& knots, int degree, std::size_t i) {
  double sum = 0;
  for (std::size_t k = 1; k <= static_cast<std::size_t>(degree); ++k) sum += knots[i + k];
  return sum / degree;
}

}  // namespace knotfit
