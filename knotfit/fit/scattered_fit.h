// SPDX-License-Identifier: MIT
// Fits of surfaces to points in any arrangement, as heights over a plane.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "fit/options.h"
#include "model/points.h"
#include "model/spline.h"

namespace knotfit {

/// A surface fitted to scattered points and what the report tells about it.
struct ScatteredFit {
  Spline spline;
  std::vector<double> parameters;      ///< u and v of each point
  std::vector<double> distances;       ///< at the parameters, along the heights
  std::array<std::size_t, 2> cells{};  ///< spans along u and v
  std::vector<std::size_t> points;     ///< in each cell; (i, j) at place i * cells[1] + j
  bool reached = true;                 ///< the asked tolerance holds
};

/// Fits heights over the rectangle that the points span in x and y, or in their best plane
/// (`options.bestPlane`): x and y of the surface are linear in u and v, the heights are fitted by
/// knotwork::ScatteredLeastSquares on even knots, weighted where the points are. Smoothing draws
/// the net to a plane by its second differences, the mixed ones included, and determines control
/// points without data. With a tolerance, both numbers of control points grow in proportion until
/// the largest nearest distance keeps it.
///
/// Faults (exit code 4): points on a line; control points that the data leave undetermined.
ScatteredFit fitScattered(const PointSet& points, const FitOptions& options);

/// @return distance of every point from the nearest place of the surface.
std::vector<double> nearestDistances(const ScatteredFit& fit, const PointSet& points);

}  // namespace knotfit
