// SPDX-License-Identifier: MIT
// A slow, independent model of B-splines: basis functions by the recursion of their definition.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

namespace knotwork::test {

/// Index of an element: the tests count with int throughout.
inline std::size_t at(int i) { return static_cast<std::size_t>(i); }

/// The functions of a degree on knots t, which may be in any type of numbers.
template <class Real>
struct BsplineModel {
  int degree;
  std::vector<Real> t;

  /// The span by definition: i where t[i] <= u < t[i + 1], else the nearest that is not empty.
  int span(double u) const {
    int before = -1, after = -1;
    for (int i = degree; i + degree + 1 < static_cast<int>(t.size()); ++i) {
      if (!(t[at(i)] < t[at(i + 1)])) continue;
      if (t[at(i)] <= u) before = i;
      if (t[at(i)] > u && after < 0) after = i;
    }
    return before < 0 ? after : before;
  }

  /// Derivative q of function i of degree p, in the polynomial of span s.
  Real value(int i, int p, int q, int s, Real u) const {
    if (p == 0) return i == s && q == 0 ? 1 : 0;
    const auto part = [&](int k, Real numerator) -> Real {
      if (k > s || k + p <= s) return 0;
      return numerator * value(k, p - 1, q > 0 ? q - 1 : 0, s, u) / (t[at(k + p)] - t[at(k)]);
    };
    if (q > 0) return p * (part(i, 1) - part(i + 1, 1));
    return part(i, u - t[at(i)]) + part(i + 1, t[at(i + 1 + p)] - u);
  }
};

}  // namespace knotwork::test
