// SPDX-License-Identifier: MIT
// Fits of surfaces to grids, one direction after the other: the Kronecker system is never formed.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "fit/options.h"
#include "fit/system.h"
#include "model/points.h"
#include "model/spline.h"

namespace knotfit {

/// A fitted surface and what the report tells about it.
struct SurfaceFit {
  Spline spline;
  std::array<std::vector<double>, 2> parameters;  ///< of the grid's rows and columns
  std::vector<double> distances;                  ///< at the parameters, grid row after row
  std::array<RowMatrix, 2> matrices;              ///< that were solved, of u and of v
  std::array<std::optional<Spectrum>, 2> spectra;
  Method method = Method::kHouseholder;  ///< that solved them
  double miss = 0;                       ///< largest distance from a corner that is to be met
  bool met = true;                       ///< the miss is no more than rounding
  bool reached = true;                   ///< the asked tolerance holds
};

/// Fits a surface. With a tolerance, both numbers of control points grow in proportion to the grid
/// until the largest nearest distance keeps it. Faults as fitCurve.
SurfaceFit fitSurface(const PointGrid& grid, const FitOptions& options);

/// @return distance of every grid point from the nearest place of the surface.
std::vector<double> nearestDistances(const SurfaceFit& fit, const PointGrid& grid,
                                     Watcher* watcher = nullptr);

}  // namespace knotfit
