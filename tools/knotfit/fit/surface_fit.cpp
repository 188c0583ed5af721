// SPDX-License-Identifier: MIT
// Fits of surfaces to grids.
#include "fit/surface_fit.h"

#include <algorithm>
#include <cmath>

#include "base/fault.h"
#include "fit/grid_solver.h"
#include "fit/nearest.h"

namespace knotfit {
namespace {

std::vector<double> spread(const PointGrid& grid, bool alongU, Spacing spacing) {
  const std::size_t n = alongU ? grid.rows : grid.columns;
  if (spacing != Spacing::kUniform) return gridParameters(grid, alongU, spacing);
  std::vector<double> u;
  for (std::size_t i = 0; i < n; ++i) {
    u.push_back(static_cast<double>(i) / static_cast<double>(n - 1));
  }
  return u;
}

double cornerMiss(const SurfaceFit& fit, const PointGrid& grid) {
  const Spline& s = fit.spline;
  double most = 0;
  for (const int iEnd : {0, 1}) {
    for (const int jEnd : {0, 1}) {
      const double* p = grid.at(iEnd ? grid.rows - 1 : 0, jEnd ? grid.columns - 1 : 0);
      const double* q = s.control(iEnd ? s.size[0] - 1 : 0, jEnd ? s.size[1] - 1 : 0);
      most = std::max(most, std::hypot(p[0] - q[0], p[1] - q[1], p[2] - q[2]));
    }
  }
  return most;
}

std::vector<double> knotsAlong(const FitOptions& o, const std::vector<double>& u, int degree,
                               std::size_t n) {
  if (o.knots == KnotChoice::kUniform || n > u.size()) return uniformKnots(degree, n);
  return averagedKnots(u, degree, n);
}

// The grid's corners as control points, zeros elsewhere.
TtupleMatrix cornersOf(const PointGrid& grid, const std::array<std::size_t, 2>& size) {
  TtupleMatrix corners(3, static_cast<int>(size[0]), static_cast<int>(size[1]), 0.0);
  for (const std::size_t i : {std::size_t{0}, size[0] - 1}) {
    for (const std::size_t j : {std::size_t{0}, size[1] - 1}) {
      DoubleVec p = corners.point(static_cast<int>(i), static_cast<int>(j));
      const double* datum = grid.at(i ? grid.rows - 1 : 0, j ? grid.columns - 1 : 0);
      for (int c = 0; c < 3; ++c) p(c) = datum[c];
    }
  }
  return corners;
}

SurfaceFit fitWith(const PointGrid& grid, const FitOptions& options,
                   const std::array<std::size_t, 2>& controls) {
  SurfaceFit fit;
  Spline& s = fit.spline;
  s.directions = 2;
  s.degree = options.degree;
  s.size = controls;
  s.units = options.units;
  std::array<Direction, 2> d;
  for (std::size_t k = 0; k < 2; ++k) {
    fit.parameters[k] = spread(grid, k == 0, options.spacing);
    s.knots[k] = knotsAlong(options, fit.parameters[k], options.degree[k], controls[k]);
    d[k] = directionOf(fit.parameters[k], s.knots[k], options.degree[k], options);
    fit.rows[k] = d[k].system.rows.size();
  }
  const TtupleMatrix b = gridTuples(d[0], d[1], grid.coords, grid.columns);
  GridSolver solver(d[0], d[1], options.solver);
  const TtupleMatrix x = options.edges == Edges::kCorners
                             ? solver.solveWithCorners(b, cornersOf(grid, controls))
                             : solver.solve(b);
  s.controls.resize(3 * s.count());
  for (std::size_t i = 0; i < s.size[0]; ++i) {
    for (std::size_t j = 0; j < s.size[1]; ++j) {
      TagRw::dvToV(x.point(static_cast<int>(i), static_cast<int>(j)),
                   s.controls.data() + 3 * (i * s.size[1] + j), 3);
    }
  }
  if (options.edges != Edges::kFree) fit.miss = cornerMiss(fit, grid);
  const double cu = conditionOf(d[0].system), cv = conditionOf(d[1].system);
  fit.condition = cu < 0 || cv < 0 ? -1 : cu * cv;
  return fit;
}

bool within(const SurfaceFit& fit, const PointGrid& grid, double tolerance) {
  const std::vector<double> at = distancesAt(fit, grid);
  if (*std::max_element(at.begin(), at.end()) <= tolerance) return true;
  const SurfaceProjector projector(fit.spline);
  for (std::size_t i = 0; i < at.size(); ++i) {
    if (at[i] <= tolerance) continue;
    const double u = fit.parameters[0][i / grid.columns], v = fit.parameters[1][i % grid.columns];
    if (projector.nearest(&grid.coords[3 * i], u, v).distance > tolerance) return false;
  }
  return true;
}

// Doubles the finer direction's control points until the tolerance holds, then halves the range.
SurfaceFit fitWithin(const PointGrid& grid, const FitOptions& options) {
  const std::array<std::size_t, 2> least = {static_cast<std::size_t>(options.degree[0]) + 1,
                                            static_cast<std::size_t>(options.degree[1]) + 1};
  const std::array<std::size_t, 2> room = {grid.rows - least[0], grid.columns - least[1]};
  const std::size_t most = std::max(room[0], room[1]);
  const auto sized = [&](std::size_t step) {
    std::array<std::size_t, 2> n = least;
    for (std::size_t k = 0; k < 2; ++k) n[k] += most ? room[k] * step / most : 0;
    return fitWith(grid, options, n);
  };
  std::size_t failed = 0, step = 0;
  for (;;) {
    SurfaceFit fit = sized(step);
    if (within(fit, grid, options.tolerance)) break;
    if (step == most) {
      fit.reached = false;
      return fit;
    }
    failed = step + 1;
    step = std::min(most, std::max<std::size_t>(1, 2 * step));
  }
  while (failed < step) {
    const std::size_t middle = failed + (step - failed) / 2;
    if (within(sized(middle), grid, options.tolerance)) {
      step = middle;
    } else {
      failed = middle + 1;
    }
  }
  return sized(step);
}

}  // namespace

SurfaceFit fitSurface(const PointGrid& grid, const FitOptions& options) {
  const bool smoothed = options.smooth > 0;
  const std::array<std::size_t, 2> n = {controlCount(options.controls[0], options.degree[0],
                                                     grid.rows, smoothed, "grid's u direction"),
                                        controlCount(options.controls[1], options.degree[1],
                                                     grid.columns, smoothed, "grid's v direction")};
  return options.tolerance > 0 ? fitWithin(grid, options) : fitWith(grid, options, n);
}

std::vector<double> distancesAt(const SurfaceFit& fit, const PointGrid& grid) {
  const SurfaceShape shape(fit.spline);
  std::vector<double> out;
  for (std::size_t i = 0; i < grid.rows; ++i) {
    for (std::size_t j = 0; j < grid.columns; ++j) {
      const auto at = shape.point(fit.parameters[0][i], fit.parameters[1][j]);
      const double* p = grid.at(i, j);
      out.push_back(std::hypot(at[0] - p[0], at[1] - p[1], at[2] - p[2]));
    }
  }
  return out;
}

std::vector<double> nearestDistances(const SurfaceFit& fit, const PointGrid& grid) {
  const SurfaceProjector projector(fit.spline);
  std::vector<double> out;
  for (std::size_t i = 0; i < grid.rows; ++i) {
    for (std::size_t j = 0; j < grid.columns; ++j) {
      out.push_back(
          projector.nearest(grid.at(i, j), fit.parameters[0][i], fit.parameters[1][j]).distance);
    }
  }
  return out;
}

}  // namespace knotfit
