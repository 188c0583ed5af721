// SPDX-License-Identifier: MIT
// A view of a surface from the side.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>

#include "draw/axes.h"
#include "model/spline.h"
#include "model/vec3.h"

namespace knotfit {

/// The box of everything that is shown, heights drawn out or pressed where they would not show.
struct Box {
  std::array<Range, 3> range;
  double stretch = 1;  // of z
};

/// @return the box of the control points.
Box boxOf(const Spline& spline);

/// A parallel view from the front right, above.
class View {
 public:
  View(const Spline& s, const Box& box, Place topLeft, double width, double most) : box_(box) {
    const Vec3 start = turned({box.range[0].low, box.range[1].low, box.range[2].high});
    Range x{start[0], start[0]}, y{start[1], start[1]};
    const auto take = [&](const Vec3& p) {
      x.take(turned(p)[0]);
      y.take(turned(p)[1]);
    };
    for (const double a : {box.range[0].low, box.range[0].high}) {
      for (const double b : {box.range[1].low, box.range[1].high}) take({a, b, box.range[2].low});
    }
    for (std::size_t i = 0; i < s.controls.size(); i += 3) {
      take({s.controls[i], s.controls[i + 1], s.controls[i + 2]});
    }
    scale_ = std::min(width / x.size(), most / y.size());
    origin_ = {topLeft.x + width / 2 - scale_ * (x.low + x.high) / 2, topLeft.y + scale_ * y.high};
    bottom_ = topLeft.y + scale_ * y.size();
  }

  double bottom() const { return bottom_; }

  Place at(const Vec3& p) const {
    const Vec3 t = turned(p);
    return {origin_.x + scale_ * t[0], origin_.y - scale_ * t[1]};
  }
  /// Nearness to the viewer.
  double depth(const Vec3& p) const { return turned(p)[2]; }
  /// Brightness of a facet with this normal in model units, the light being up on the left.
  double light(Vec3 normal) const {
    normal[2] /= box_.stretch;
    const double length = norm(normal);
    const Vec3 lamp = {-0.35, -0.45, 0.82};
    return length > 0 ? std::abs(dot(normal, lamp)) / length : 1;
  }
  double extent() const {
    return std::max(
        {box_.range[0].size(), box_.range[1].size(), box_.stretch * box_.range[2].size()});
  }

 private:
  Vec3 turned(const Vec3& p) const {
    constexpr double kCosA = 0.5, kSinA = -0.8660254037844386;  // 60 degrees to the right
    constexpr double kCosE = 0.8191520442889918, kSinE = 0.573576436351046;  // 35 degrees above
    const Vec3 q = {p[0] - box_.range[0].low, p[1] - box_.range[1].low,
                    box_.stretch * (p[2] - box_.range[2].low)};
    return {-kSinA * q[0] + kCosA * q[1], -kSinE * (kCosA * q[0] + kSinA * q[1]) + kCosE * q[2],
            kCosE * (kCosA * q[0] + kSinA * q[1]) + kSinE * q[2]};
  }

  Box box_;
  double scale_ = 1, bottom_ = 0;
  Place origin_;
};

}  // namespace knotfit
