// SPDX-License-Identifier: MIT
// The plane that scattered points are taken for heights over.
#pragma once

#include <array>

#include "model/points.h"
#include "model/vec3.h"

namespace knotfit {

/// Right-handed axes of length 1: the plane's two, along which it is u and v, and the heights'.
struct Frame {
  Vec3 origin{};
  std::array<Vec3, 3> axes{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
  bool isUsual = true;  ///< x, y and z themselves, to the bit

  Vec3 local(const double* point) const;
  Vec3 global(const Vec3& local) const;
};

/// @return the plane of least squared distances from the points, through their mean: u along their
/// largest extent, heights to the side where z grows, or else y, or else x.
Frame bestPlane(const PointSet& points);

}  // namespace knotfit
