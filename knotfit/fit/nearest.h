// SPDX-License-Identifier: MIT
// Nearest points on curves and surfaces.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "fit/box_tree.h"
#include "model/bezier.h"
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
  /// Appends the distances of many points, one behind the other, from their nearest places: faster
  /// where neighbours lie together.
  /// @param guesses  a parameter near the foot of each.
  void appendNearest(const double* points, std::size_t count, const double* guesses,
                     std::vector<double>& distances) const;
  /// @return the nearest place between two parameters that lies downhill from `start`.
  Foot nearestWithin(const double* point, double start, double from, double to) const;
  /// @return the place of a parameter.
  Foot at(const double* point, double u) const;

 private:
  // A place with what is known there; parameters are those of the curve.
  struct Place {
    double u, squared;
    std::size_t span;
    CurveJet jet;
    bool isLow = false;  // the slope is zero to rounding
  };
  // Bounds on a span: it lies in the box, and seen from within `reach` of its centre it has one
  // nearest place at most.
  struct Bound {
    Box box;
    Vec3 centre;
    double reach;
  };
  // Part of a span.
  struct Piece {
    std::vector<Vec3> controls;
    double from, to;
  };
  Place placeAt(const Vec3& point, double u, std::size_t span) const;
  Place descended(const Vec3& point, double start, double from, double to,
                  std::optional<std::size_t> only = {}, std::size_t near = 0) const;
  void improve(const Vec3& point, std::size_t span, Place& best) const;
  void search(const Vec3& point, const Piece& piece, std::size_t span, int depth,
              Place& best) const;
  Foot footAt(const double* point, const Place& place) const;

  int exponent_;  // coordinates are scaled by 2^-exponent_
  int dim_;
  CurvePieces pieces_;
  std::vector<Bound> bounds_;
  BoxTree tree_;
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
  /// Appends the distances of many points, one behind the other, from their nearest places: faster
  /// where neighbours lie together.
  /// @param guesses  a place near the foot of each.
  void appendNearest(const double* points, std::size_t count, const Place* guesses,
                     std::vector<double>& distances) const;

 private:
  using Patch = std::array<std::size_t, 2>;  // spans of u and v
  struct Range {
    Place from, to;
  };
  struct Found {
    Place place;
    double squared;
    Patch span;
    PatchJet jet;
    bool isLow = false;  // the slope is zero to rounding
  };
  struct Bound {
    Box box;
    Vec3 centre;
    double reach;
  };
  // Part of a patch.
  struct Piece {
    std::vector<Vec3> controls;
    Range range;
  };
  Found placeAt(const Vec3& point, Place place, const Patch& patch) const;
  Found descended(const Vec3& point, Place start, const Range& range,
                  std::optional<Patch> only = {}, Patch near = {}) const;
  void improve(const Vec3& point, std::size_t patch, Found& best) const;
  void search(const Vec3& point, const Piece& piece, const Patch& patch, int depth,
              Found& best) const;
  double distanceOf(const double* point, const Found& found) const;

  int exponent_;
  SurfacePieces pieces_;
  Range domain_;
  std::vector<Bound> bounds_;
  BoxTree tree_;
};

}  // namespace knotfit
