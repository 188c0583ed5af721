// SPDX-License-Identifier: MIT
// Nearest points on curves and surfaces.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "model/shape.h"
#include "model/spline.h"
#include "model/vec3.h"

namespace knotfit {

/// A place of a shape and its distance from a point.
struct Foot {
  double u = 0, v = 0;
  double distance = 0;
};

/// Finds nearest points of a curve.
class CurveProjector {
 public:
  explicit CurveProjector(const Spline& spline);

  /// @param guess  a parameter near the foot, which speeds the search up.
  /// @return the nearest place of the whole curve.
  Foot nearest(const double* point, std::optional<double> guess = {}) const;
  /// @return the nearest place between two parameters that lies downhill from `start`.
  Foot nearestWithin(const double* point, double start, double from, double to) const;
  /// @return the place of a parameter.
  Foot at(const double* point, double u) const;

 private:
  struct Span {
    double from, to;
    Vec3 low, high;  // of the control points, which hold the span between them
    std::vector<Vec3> samples;
  };
  // A place and half-way work on it: the square of the distance in scaled coordinates.
  struct Place {
    double u, squared;
  };
  Place descended(const Vec3& point, double start, double from, double to) const;
  void improve(const Vec3& point, const Span& span, Place& best) const;
  double squared(const Vec3& point, double u) const;

  int exponent_;  // coordinates are scaled by 2^-exponent_
  int dim_;
  CurveShape shape_;
  std::vector<Span> spans_;
};

/// Finds nearest points of a surface.
class SurfaceProjector {
 public:
  /// A pair of parameters.
  struct Place {
    double u = 0, v = 0;
  };

  explicit SurfaceProjector(const Spline& spline);

  /// @param guess  a place near the foot, which speeds the search up.
  /// @return the nearest place of the whole surface.
  Foot nearest(const double* point, std::optional<Place> guess = {}) const;

 private:
  struct Patch {
    Place from, to;
    Vec3 low, high;  // of the control points, which hold the patch between them
  };
  struct Found {
    Place place;
    double squared;
  };
  Found descended(const Vec3& point, Place start) const;
  std::vector<Place> valleys(const Vec3& point, const Patch& patch) const;
  double squared(const Vec3& point, Place place) const;
  Place within(Place place) const;

  int exponent_;
  SurfaceShape shape_;
  Place first_, last_;  // the domain
  std::vector<Patch> patches_;
};

}  // namespace knotfit
