// SPDX-License-Identifier: MIT
// What a user may ask of a fit.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "base/stage.h"
#include "fit/parameters.h"
#include "fit/solver.h"
#include "model/spline.h"

namespace knotfit {

enum class KnotChoice { kAverage, kUniform, kGiven };
enum class Edges { kFree, kExact, kCorners };

/// A direction that the curve has at a point; its length is of no account.
struct Tangent {
  std::size_t point = 0;  ///< index from 0
  std::array<double, 3> direction{};
};

struct FitOptions {
  std::array<int, 2> degree{3, 3};
  std::array<std::size_t, 2> controls{0, 0};  ///< 0: the default for the number of points
  double tolerance = 0;                       ///< 0: none asked
  Spacing spacing = Spacing::kChord;
  std::vector<double> parameters;  ///< given ones; empty: by spacing
  KnotChoice knots = KnotChoice::kAverage;
  std::vector<double> knotValues;  ///< given ones, long form
  bool knotsAsked = false;         ///< the choice of knots was made by the user
  int refine = 0;
  bool endsExact = true;
  std::vector<std::size_t> pass;  ///< indices from 0
  std::vector<Tangent> tangents;
  bool closed = false;
  std::vector<std::size_t> corners;  ///< indices from 0, ascending
  double smooth = 0;
  Edges edges = Edges::kFree;
  bool bestPlane = false;  ///< scattered points are heights over their best plane, not over x and y
  SolverOptions solver;
  Watcher* watcher = nullptr;  ///< null: nobody
  std::string units = "mm";
};

/// @return the number of control points for `points` data along a direction: what was asked, or
/// min(points, max(degree + 1, points / 4)). Faults (exit code 4) when there are too few points;
/// with `smoothed` there may be fewer points than control points.
std::size_t controlCount(std::size_t asked, int degree, std::size_t points, bool smoothed,
                         const char* what);

/// What a constraint may be missed by and count as met, next to the points' largest coordinate: the
/// rounding of a solution with a condition of up to about a million.
inline constexpr double kMissRounding = 1e-10;

/// Faults (exit code 4) where smoothing has taken the place of the data: beside it they count as
/// rounding, and what they would determine is left to chance.
void checkSmoothing(double smooth, const std::optional<Spectrum>& spectrum, std::size_t unknowns);

/// Faults (exit code 4) where a control point or a distance left the range of numbers.
void checkRange(const Spline& spline, const std::vector<double>& distances);

}  // namespace knotfit
