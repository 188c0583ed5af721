// SPDX-License-Identifier: MIT
// Vectors in space. Points of the plane are vectors whose third coordinate is 0.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>

namespace knotfit {

using Vec3 = std::array<double, 3>;

/// @return the point of `dim` coordinates with zeros for the missing ones.
inline Vec3 vec3(const double* p, int dim) {
  Vec3 out{};
  std::copy_n(p, dim, out.begin());
  return out;
}

inline Vec3 minus(const Vec3& a, const Vec3& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }

inline Vec3 times(double s, const Vec3& a) { return {s * a[0], s * a[1], s * a[2]}; }

/// @return a + share (b - a).
inline Vec3 between(const Vec3& a, const Vec3& b, double share) {
  const auto mixed = [&](std::size_t c) { return a[c] + (b[c] - a[c]) * share; };
  return {mixed(0), mixed(1), mixed(2)};
}

inline double dot(const Vec3& a, const Vec3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

inline Vec3 cross(const Vec3& a, const Vec3& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// @return the length, also where the squares of the coordinates leave the range of numbers.
inline double norm(const Vec3& a) {
  const double squares = dot(a, a);
  if (squares > 1e-280 && squares < 1e300) return std::sqrt(squares);
  const double most = std::max({std::abs(a[0]), std::abs(a[1]), std::abs(a[2])});
  if (!(most > 0) || !std::isfinite(most)) return most;
  const int e = std::ilogb(most);
  const Vec3 b = {std::ldexp(a[0], -e), std::ldexp(a[1], -e), std::ldexp(a[2], -e)};
  return std::ldexp(std::sqrt(dot(b, b)), e);
}

/// @return the distance of two points of `dim` coordinates.
inline double distance(const double* a, const double* b, int dim) {
  return norm(minus(vec3(a, dim), vec3(b, dim)));
}

}  // namespace knotfit
