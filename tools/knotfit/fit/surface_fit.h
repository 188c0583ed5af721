// SPDX-License-Identifier: MIT
// Fits of surfaces to grids, one direction after the other: the Kronecker system is never formed.
#pragma once

#include <array>
#include <vector>

#include "fit/deviation.h"
#include "fit/options.h"
#include "fit/spline.h"

namespace knotfit {

/// A fitted surface and what the report tells about it.
struct SurfaceFit {
  Spline spline;
  std::array<std::vector<double>, 2> parameters;  ///< of the grid's rows and columns
  std::array<std::size_t, 2> rows{0, 0};          ///< of the two systems
  double condition = -1;  ///< product of the two directions' conditions; negative: not known
  double miss = 0;        ///< largest distance from a corner that is to be met
  bool reached = true;    ///< the asked tolerance holds
};

/// Fits a surface. With a tolerance, both numbers of control points grow in proportion to the grid
/// until the largest nearest distance keeps it.
SurfaceFit fitSurface(const PointGrid& grid, const FitOptions& options);

/// @return distance of every grid point from the surface at its parameters, grid row after row.
std::vector<double> distancesAt(const SurfaceFit& fit, const PointGrid& grid);

/// @return distance of every grid point from the nearest place of the surface.
std::vector<double> nearestDistances(const SurfaceFit& fit, const PointGrid& grid);

}  // namespace knotfit
