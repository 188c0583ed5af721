// SPDX-License-Identifier: MIT
// Splines as the library's own objects, which evaluate them and insert knots.
#pragma once

#include <array>
#include <memory>
#include <optional>

#include <knotwork/knotwork.h>

#include "model/spline.h"

namespace knotfit {

/// A curve in a kernel record and the object that evaluates it.
class CurveShape {
 public:
  explicit CurveShape(const Spline& spline);
  ~CurveShape();
  CurveShape(const CurveShape&) = delete;
  CurveShape& operator=(const CurveShape&) = delete;

  /// Point and derivatives 0 .. order at u: derivative k at `out[3 k]`, missing coordinates 0.
  void eval(double u, int order, double* out) const;
  std::array<double, 3> point(double u) const;
  /// Inserts a knot `times` times; the shape stays.
  void insert(double u, int times);
  /// @return `like` with this shape's control points and knots.
  Spline spline(const Spline& like) const;

 private:
  std::unique_ptr<AP_SPLINE> object_;
  mutable std::vector<double> work_;
  int dim_;
};

/// A surface in a kernel record and the object that evaluates it.
class SurfaceShape {
 public:
  explicit SurfaceShape(const Spline& spline);
  ~SurfaceShape();
  SurfaceShape(const SurfaceShape&) = delete;
  SurfaceShape& operator=(const SurfaceShape&) = delete;

  /// Partial derivative of order i in u and j in v, i and j up to `order`, at
  /// `out[3 ((order + 1) j + i)]`.
  void eval(double u, double v, int order, double* out) const;
  std::array<double, 3> point(double u, double v) const;
  /// @return unit normal, zero where there is none.
  std::array<double, 3> normal(double u, double v) const;
  /// Inserts a knot along u (direction 0) or v (1).
  void insert(int direction, double at, int times);
  Spline spline(const Spline& like) const;

 private:
  void tellPlaces(double u, double v, std::size_t order, double* out) const;

  std::unique_ptr<AP_SURFACE> object_;
  mutable std::vector<double> work_;
  std::optional<HeightPlaces> heights_;
};

}  // namespace knotfit
