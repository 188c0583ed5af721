// SPDX-License-Identifier: MIT
// The plane through the mean of the points, along the two largest axes of their scatter matrix,
// which is as exact as a choice of coordinates needs to be.
#include "model/frame.h"

#include <algorithm>
#include <cmath>

#include <knotwork/knotwork.h>

#include "model/scale.h"

namespace knotfit {
namespace {

// Towards growing z, or else y, or else x.
Vec3 upward(const Vec3& a) {
  constexpr double kLevel = 1e-9;
  for (const std::size_t c : {2, 1, 0}) {
    if (std::abs(a[c]) > kLevel) return a[c] > 0 ? a : times(-1, a);
  }
  return a;
}

}  // namespace

Vec3 Frame::local(const double* point) const {
  const Vec3 p = vec3(point, 3);
  if (isUsual) return p;
  const Vec3 from = minus(p, origin);
  return {dot(from, axes[0]), dot(from, axes[1]), dot(from, axes[2])};
}

Vec3 Frame::global(const Vec3& local) const {
  if (isUsual) return local;
  Vec3 out = origin;
  for (std::size_t c = 0; c < 3; ++c) {
    out[c] += local[0] * axes[0][c] + local[1] * axes[1][c] + local[2] * axes[2][c];
  }
  return out;
}

Frame bestPlane(const PointSet& points) {
  Frame frame;
  frame.isUsual = false;
  const double n = static_cast<double>(points.count());
  for (std::size_t i = 0; i < points.count(); ++i) {
    for (std::size_t c = 0; c < 3; ++c) frame.origin[c] += points[i][c] / n;
  }
  const int exponent = evenExponent(points.coords);
  DoubleGenMat scatter(3, 3, 0.0);
  for (std::size_t i = 0; i < points.count(); ++i) {
    const Vec3 from = minus(vec3(points[i], 3), frame.origin);
    for (int a = 0; a < 3; ++a) {
      for (int b = 0; b < 3; ++b) {
        scatter(a, b) += std::ldexp(from[static_cast<std::size_t>(a)], -exponent) *
                         std::ldexp(from[static_cast<std::size_t>(b)], -exponent);
      }
    }
  }
  const DoubleGenMat axes = DoubleSVDecomp(scatter).leftVecs();
  const auto axis = [&](int k) -> Vec3 { return {axes(0, k), axes(1, k), axes(2, k)}; };
  frame.axes[0] = upward(axis(0));
  frame.axes[2] = upward(cross(axis(0), axis(1)));
  frame.axes[1] = cross(frame.axes[2], frame.axes[0]);
  return frame;
}

}  // namespace knotfit
