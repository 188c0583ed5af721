// SPDX-License-Identifier: MIT
// The rules that a stored spline keeps.
#include "model/spline.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"

namespace knotfit {
namespace {

constexpr int kHighestDegree = 25;

bool allFinite(const std::vector<double>& v) {
  return std::all_of(v.begin(), v.end(), [](double x) { return std::isfinite(x); });
}

}  // namespace

std::string knotFault(const std::vector<double>& t, int degree, std::size_t size) {
  const auto p = static_cast<std::size_t>(degree);
  if (degree < 1 || degree > kHighestDegree) return cat("degree ", degree, " is not in 1 to 25");
  if (size < p + 1) return cat(size, " control points are too few for degree ", degree);
  if (t.size() != size + p + 1) {
    return cat(t.size(), " knots where ", size, " control points of degree ", degree, " take ",
               size + p + 1);
  }
  if (!allFinite(t)) return "a knot is not finite";
  if (!std::is_sorted(t.begin(), t.end())) return "knots do not ascend";
  if (t.front() != t[p] || t[size] != t.back()) return "knots are not clamped at the ends";
  for (std::size_t i = 1; i + p + 1 < t.size() - 1; ++i) {
    if (t[i] == t[i + p]) return cat("a knot within is repeated more than ", degree, " times");
  }
  if (!(t[p] < t[size])) return "the knots span no range";
  return {};
}

std::string faultOf(const Spline& s) {
  if (s.dim < (s.isCurve() ? 2 : 3) || s.dim > 3)
    return cat("dimension ", s.dim, " cannot be used");
  for (std::size_t d = 0; d < static_cast<std::size_t>(s.directions); ++d) {
    std::string fault = knotFault(s.knots[d], s.degree[d], s.size[d]);
    if (!fault.empty()) return fault;
  }
  if (s.controls.size() != s.count() * static_cast<std::size_t>(s.dim)) {
    return cat("the control points hold ", s.controls.size(), " numbers, not ",
               s.count() * static_cast<std::size_t>(s.dim));
  }
  if (!allFinite(s.controls)) return "a control point is not finite";
  return {};
}

}  // namespace knotfit
