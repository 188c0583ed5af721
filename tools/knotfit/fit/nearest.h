// SPDX-License-Identifier: MIT
// Nearest points on curves and surfaces.
#pragma once

#include <array>
#include <vector>

#include "fit/shape.h"
#include "fit/spline.h"

namespace knotfit {

/// The place of a shape nearest to a point.
struct Foot {
  double u = 0, v = 0;
  double distance = 0;
};

/// Finds nearest points of a curve. Spans whose control points are all further away than a place
/// already found are passed over; in the others samples are sharpened by Newton's method.
class CurveProjector {
 public:
  explicit CurveProjector(const Spline& spline);
  /// @param guess  a parameter near the foot, which speeds the search up; NaN for none.
  Foot nearest(const double* point, double guess) const;
  /// The nearest place between two parameters, from `start` downhill.
  Foot downhill(const double* point, double start, double from, double to) const;
  const CurveShape& shape() const { return shape_; }

 private:
  struct Span {
    double from, to;
    std::array<double, 3> low, high;
    std::vector<std::array<double, 3>> samples;
  };
  double squared(const double* point, double u) const;

  CurveShape shape_;
  int dim_;
  std::vector<Span> spans_;
};

/// Finds nearest points of a surface, in the same way over its patches.
class SurfaceProjector {
 public:
  explicit SurfaceProjector(const Spline& spline);
  Foot nearest(const double* point, double uGuess, double vGuess) const;
  const SurfaceShape& shape() const { return shape_; }

 private:
  struct Patch {
    double u0, u1, v0, v1;
    std::array<double, 3> low, high;
  };
  Foot downhill(const double* point, double u, double v) const;
  std::vector<Foot> valleys(const double* point, const Patch& patch) const;

  SurfaceShape shape_;
  std::array<double, 4> domain_;
  std::vector<Patch> patches_;
};

}  // namespace knotfit
