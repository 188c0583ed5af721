// SPDX-License-Identifier: MIT
// Fits of surfaces to grids: the tensor product, one direction after the other.
//
// As for curves, a grid of extreme size is brought to a size near 1 by a power of two and the fit
// scaled back.
#include "fit/surface_fit.h"

#include <algorithm>
#include <cmath>

#include "base/fault.h"
#include "fit/grid_solver.h"
#include "fit/nearest.h"
#include "fit/search.h"
#include "model/bezier.h"
#include "model/scale.h"
#include "model/vec3.h"

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

std::vector<double> distancesAt(const SurfaceFit& fit, const PointGrid& grid) {
  const SurfacePieces pieces(fit.spline);
  std::vector<double> out;
  out.reserve(grid.rows * grid.columns);
  std::array<std::size_t, 2> span{};
  for (std::size_t i = 0; i < grid.rows; ++i) {
    for (std::size_t j = 0; j < grid.columns; ++j) {
      const Vec3 at = pieces.point(fit.parameters[0][i], fit.parameters[1][j], span);
      out.push_back(norm(minus(at, vec3(grid.at(i, j), 3))));
    }
  }
  return out;
}

// The clamped knots make the corner control points the corners of the surface.
double cornerMiss(const SurfaceFit& fit, const PointGrid& grid) {
  const Spline& s = fit.spline;
  double most = 0;
  for (const bool lastRow : {false, true}) {
    for (const bool lastColumn : {false, true}) {
      const double* datum = grid.at(lastRow ? grid.rows - 1 : 0, lastColumn ? grid.columns - 1 : 0);
      const double* met = s.control(lastRow ? s.size[0] - 1 : 0, lastColumn ? s.size[1] - 1 : 0);
      most = std::max(most, distance(datum, met, 3));
    }
  }
  return most;
}

// Smoothed fits may have more control points than data, which averages cannot place.
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
  if (options.solver.method == Method::kQr) fit.method = Method::kQr;
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
  if (options.spacing == Spacing::kUniform) s.heights = grid.heights;
  placeHeights(s);
  if (options.edges != Edges::kFree) fit.miss = cornerMiss(fit, grid);
  fit.distances = distancesAt(fit, grid);
  fit.matrices = {std::move(d[0].matrix), std::move(d[1].matrix)};
  return fit;
}

// A distance at the parameters is never below the nearest one, which is dear: it is asked for only
// where the former misses the tolerance.
bool within(const SurfaceFit& fit, const PointGrid& grid, double tolerance) {
  const std::vector<double>& at = fit.distances;
  if (*std::max_element(at.begin(), at.end()) <= tolerance) return true;
  const SurfaceProjector projector(fit.spline);
  for (std::size_t i = 0; i < at.size(); ++i) {
    if (at[i] <= tolerance) continue;
    const double u = fit.parameters[0][i / grid.columns], v = fit.parameters[1][i % grid.columns];
    if (projector.nearest(&grid.coords[3 * i], {{u, v}}).distance > tolerance) return false;
  }
  return true;
}

// Both numbers of control points grow in proportion to the grid.
SurfaceFit fitWithin(const PointGrid& grid, const FitOptions& options) {
  const std::array<std::size_t, 2> least = {static_cast<std::size_t>(options.degree[0]) + 1,
                                            static_cast<std::size_t>(options.degree[1]) + 1};
  const std::array<std::size_t, 2> room = {grid.rows - least[0], grid.columns - least[1]};
  const std::size_t most = std::max(room[0], room[1]);
  const auto sized = [&](std::size_t step) -> std::optional<SurfaceFit> {
    std::array<std::size_t, 2> n = least;
    for (std::size_t k = 0; k < 2; ++k) n[k] += most ? room[k] * step / most : 0;
    return fitWith(grid, options, n);
  };
  const auto keeps = [&](const SurfaceFit& fit) { return within(fit, grid, options.tolerance); };
  return *smallestFit<SurfaceFit>(most, sized, keeps);
}

}  // namespace

SurfaceFit fitSurface(const PointGrid& grid, const FitOptions& options) {
  if (options.solver.method == Method::kQr && options.edges == Edges::kExact) {
    throw Fault(kUsage,
                "--solver qr cannot meet --edges exact; use --solver householder, or leave it out");
  }
  const bool smoothed = options.smooth > 0;
  const std::array<std::size_t, 2> n = {controlCount(options.controls[0], options.degree[0],
                                                     grid.rows, smoothed, "grid's u direction"),
                                        controlCount(options.controls[1], options.degree[1],
                                                     grid.columns, smoothed, "grid's v direction")};
  const auto fitted = [&](const PointGrid& g, const FitOptions& o) {
    return o.tolerance > 0 ? fitWithin(g, o) : fitWith(g, o, n);
  };
  const int exponent = rangeExponent(grid.coords);
  SurfaceFit fit;
  if (exponent == 0) {
    fit = fitted(grid, options);
  } else {
    PointGrid scaled = grid;
    scaleBy(scaled, -exponent);
    FitOptions scaledOptions = options;
    scaledOptions.tolerance = std::ldexp(options.tolerance, -exponent);
    fit = fitted(scaled, scaledOptions);
  }
  fit.met = std::ldexp(fit.miss, exponent - evenExponent(grid.coords)) <= kMissRounding;
  for (std::size_t k = 0; k < 2; ++k) {
    fit.spectra[k] = spectrumOf(fit.matrices[k]);
    checkSmoothing(options.smooth, fit.spectra[k], fit.spline.size[k]);
  }
  scaleBy(fit.spline, exponent);
  if (fit.spline.heights) fit.spline.heights = grid.heights;  // what had become too small to scale
  placeHeights(fit.spline);
  scaleBy(fit.distances, exponent);
  fit.miss = std::ldexp(fit.miss, exponent);
  checkRange(fit.spline, fit.distances);
  return fit;
}

std::vector<double> nearestDistances(const SurfaceFit& fit, const PointGrid& grid,
                                     Watcher* watcher) {
  const SurfaceProjector projector(fit.spline);
  const Stage stage(watcher, "nearest distances, rows", grid.rows);
  std::vector<double> out;
  out.reserve(grid.rows * grid.columns);
  std::vector<SurfaceProjector::Place> guesses(grid.columns);
  for (std::size_t i = 0; i < grid.rows; ++i) {
    stage.now(i);
    for (std::size_t j = 0; j < grid.columns; ++j) {
      guesses[j] = {fit.parameters[0][i], fit.parameters[1][j]};
    }
    projector.appendNearest(grid.at(i, 0), grid.columns, guesses.data(), out);
  }
  return out;
}

}  // namespace knotfit
