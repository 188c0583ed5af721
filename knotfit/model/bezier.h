// SPDX-License-Identifier: MIT
// The polynomial pieces of a spline as Bezier curves and patches: fast to evaluate, within the hull
// of their control points, and easy to halve.
//
// Source: G. Farin, Curves and Surfaces for CAGD (5th ed., 2002), chs. 4, 5, 8 and 14 (blossoms).
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

#include "model/heights.h"
#include "model/spline.h"
#include "model/vec3.h"

namespace knotfit {

/// Value and derivatives of a piece by its local parameter, 0 to 1.
struct CurveJet {
  Vec3 at, first, second;
};
struct PatchJet {
  Vec3 at, u, v, uu, uv, vv;
};

/// @return jet of the Bezier curve of count >= 2 control points at t.
CurveJet bezierJet(const Vec3* controls, std::size_t count, double t);
/// @return point of the Bezier curve at t.
Vec3 bezierPoint(const Vec3* controls, std::size_t count, double t);
/// Splits at 1/2: `controls`, `stride` apart, become those of the first half, `second` takes those
/// of the other one.
void halveBezier(Vec3* controls, Vec3* second, std::size_t count, std::size_t stride = 1);
/// @return jet of the patch with control point (i, j) at `controls[i * columns + j]`, at least 2
/// x 2.
PatchJet patchJet(const Vec3* controls, std::size_t rows, std::size_t columns, double u, double v);

/// The spans of a direction that are not empty.
class Spans {
 public:
  explicit Spans(const std::vector<double>& knots, int degree);

  std::size_t count() const { return bounds_.size() - 1; }
  double from(std::size_t span) const { return bounds_[span]; }
  double to(std::size_t span) const { return bounds_[span + 1]; }
  /// Index of the knot at which the span starts.
  std::size_t knot(std::size_t span) const { return knots_[span]; }
  /// @return the span that holds u; at a knot the one behind it, outside the domain the nearest.
  /// @param near  a span to look at first.
  std::size_t find(double u, std::size_t near = 0) const;

 private:
  std::vector<double> bounds_;
  std::vector<std::size_t> knots_;
};

/// A curve's pieces, missing coordinates 0.
class CurvePieces {
 public:
  explicit CurvePieces(const Spline& curve);

  const Spans& spans() const { return spans_; }
  /// Control points in a piece: degree + 1.
  std::size_t order() const { return order_; }
  const Vec3* piece(std::size_t span) const { return controls_.data() + span * order_; }
  /// @param span  where to look for u first; takes the span of u.
  Vec3 point(double u, std::size_t& span) const;

 private:
  Spans spans_;
  std::size_t order_;
  std::vector<Vec3> controls_;
};

/// A surface's pieces.
class SurfacePieces {
 public:
  explicit SurfacePieces(const Spline& surface);

  const Spans& spans(std::size_t direction) const { return spans_[direction]; }
  std::size_t order(std::size_t direction) const { return order_[direction]; }
  const Vec3* piece(std::size_t a, std::size_t b) const {
    return controls_.data() + (a * spans_[1].count() + b) * order_[0] * order_[1];
  }
  /// @param span  where to look for u and v first; takes their spans.
  Vec3 point(double u, double v, std::array<std::size_t, 2>& span) const;
  /// Gives a point of a surface over even places its x and y exactly.
  void tellPlaces(double u, double v, Vec3& at) const;

 private:
  std::array<Spans, 2> spans_;
  std::array<std::size_t, 2> order_;
  std::vector<Vec3> controls_;
  std::optional<HeightPlaces> heights_;
};

}  // namespace knotfit
