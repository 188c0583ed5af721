// SPDX-License-Identifier: MIT
// The box of a shape.
#pragma once

#include "model/spline.h"
#include "model/vec3.h"

namespace knotfit {

struct Bounds {
  Vec3 low{}, high{};
};

/// @return the box of the curve or surface itself, to 1e-9 of its size; its control points' box may
/// be much wider.
Bounds boundsOf(const Spline& spline);

}  // namespace knotfit
