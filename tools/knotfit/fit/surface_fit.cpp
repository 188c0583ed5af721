// SPDX-License-Identifier: MIT
// Fits of surfaces to grids.
#include "fit/surface_fit.h"

#include <algorithm>
#include <cmath>

#include "base/fault.h"
#include "base/text.h"
#include "fit/nearest.h"

namespace knotfit {
namespace {

// One direction of the tensor product: its matrix and which line of the grid each row stands for.
struct Direction {
  FitSystem system;
  std::vector<std::ptrdiff_t> lines;  // -1: a row of smoothing, its data are zero
};

Direction directionOf(const std::vector<double>& u, const std::vector<double>& knots, int degree,
                      const FitOptions& options) {
  Direction d;
  d.system.unknowns = knots.size() - static_cast<std::size_t>(degree) - 1;
  d.system.dim = 0;
  const bool ends = options.edges == Edges::kExact;
  const auto add = [&](std::size_t i) {
    d.system.add(SparseRow(basisRow(knots, degree, u[i])), nullptr);
    d.lines.push_back(static_cast<std::ptrdiff_t>(i));
  };
  for (std::size_t i = ends; i + ends < u.size(); ++i) add(i);
  addSmoothing(d.system, knots, degree, options.smooth);
  d.lines.resize(d.system.rows.size(), -1);
  if (ends) {
    add(0);
    add(u.size() - 1);
    d.system.constraints = 2;
  }
  if (options.smooth == 0) checkDetermined(knots, degree, u);
  checkSize(d.system.rows.size(), d.system.unknowns, options.solver.method);
  return d;
}

TtupleMatrix gridTuples(const Direction& u, const Direction& v, const std::vector<double>& values,
                        std::size_t columns) {
  TtupleMatrix b(3, static_cast<int>(u.lines.size()), static_cast<int>(v.lines.size()), 0.0);
  for (std::size_t i = 0; i < u.lines.size(); ++i) {
    for (std::size_t j = 0; j < v.lines.size(); ++j) {
      if (u.lines[i] < 0 || v.lines[j] < 0) continue;
      const std::size_t at =
          static_cast<std::size_t>(u.lines[i]) * columns + static_cast<std::size_t>(v.lines[j]);
      DoubleVec point = b.point(static_cast<int>(i), static_cast<int>(j));
      for (int c = 0; c < 3; ++c) point(c) = values[3 * at + static_cast<std::size_t>(c)];
    }
  }
  return b;
}

// Data on the grid, and the smoothing rows' share of the residual beside them, all as one grid of
// lines: U x V' subtracted from b.
TtupleMatrix residual(const Direction& u, const Direction& v, const TtupleMatrix& b,
                      const TtupleMatrix& x) {
  const auto nu = u.system.rows.size(), nv = v.system.rows.size();
  const auto xv = static_cast<std::size_t>(x.cols());
  std::vector<double> half(3 * nu * xv, 0.0);  // U x
  for (std::size_t i = 0; i < nu; ++i) {
    const SparseRow& row = u.system.rows[i];
    for (std::size_t k = 0; k < row.columns.size(); ++k) {
      for (std::size_t j = 0; j < xv; ++j) {
        const DoubleVec p = x.point(static_cast<int>(row.columns[k]), static_cast<int>(j));
        for (int c = 0; c < 3; ++c) {
          half[3 * (i * xv + j) + static_cast<std::size_t>(c)] += row.values[k] * p(c);
        }
      }
    }
  }
  TtupleMatrix r = b.copy();
  for (std::size_t i = 0; i < nu; ++i) {
    for (std::size_t j = 0; j < nv; ++j) {
      DoubleVec p = r.point(static_cast<int>(i), static_cast<int>(j));
      const SparseRow& row = v.system.rows[j];
      for (std::size_t k = 0; k < row.columns.size(); ++k) {
        for (int c = 0; c < 3; ++c) {
          p(c) -= row.values[k] * half[3 * (i * xv + row.columns[k]) + static_cast<std::size_t>(c)];
        }
      }
    }
  }
  return r;
}

double scaleOf(const TtupleMatrix& b) {
  double most = 0;
  const DoubleVec flat = b.data();
  for (unsigned i = 0; i < flat.length(); ++i)
    most = std::max(most, std::abs(flat(static_cast<int>(i))));
  return most > 0 ? std::ldexp(1.0, 40 - std::ilogb(most)) : 1.0;
}

// As FactoredSystem does for curves: data scaled by a power of two, one step of refinement.
class GridSolver {
 public:
  GridSolver(const Direction& u, const Direction& v, const SolverOptions& options)
      : u_(u),
        v_(v),
        solverU_(newSolver(options)),
        solverV_(newSolver(options)),
        tensor_(*solverU_, *solverV_) {}

  TtupleMatrix solve(const TtupleMatrix& b) {
    check(tensor_.setMatrix(
        denseMatrix(u_.system), denseMatrix(v_.system), static_cast<int>(u_.system.constraints),
        static_cast<int>(v_.system.constraints), false, false, false, false, false, false));
    return refined(b, zeros(), [&](const TtupleMatrix& rhs, TtupleMatrix& x) {
      return tensor_.solve(rhs, &x);
    });
  }

  // The four corner control points are prescribed: they are the grid's corners.
  TtupleMatrix solveWithCorners(const TtupleMatrix& b, const TtupleMatrix& corners) {
    IntGenMat fixed(static_cast<unsigned>(u_.system.unknowns),
                    static_cast<unsigned>(v_.system.unknowns), 0);
    const int n = static_cast<int>(fixed.rows()) - 1, m = static_cast<int>(fixed.cols()) - 1;
    for (const int i : {0, n}) {
      for (const int j : {0, m}) fixed.set(i, j, 1);
    }
    const DoubleGenMat u = denseMatrix(u_.system), v = denseMatrix(v_.system);
    return refined(b, corners, [&](const TtupleMatrix& rhs, TtupleMatrix& x) {
      return tensor_.solveFixed(u, v, fixed, rhs, &x);
    });
  }

 private:
  TtupleMatrix zeros() const {
    return TtupleMatrix(3, static_cast<int>(u_.system.unknowns),
                        static_cast<int>(v_.system.unknowns), 0.0);
  }

  // `prescribed` holds the values of fixed unknowns, zero elsewhere.
  template <class Solve>
  TtupleMatrix refined(const TtupleMatrix& b, const TtupleMatrix& prescribed, Solve solve) const {
    const double scale = scaleOf(b);
    TtupleMatrix rhs = b.copy(), x = prescribed.copy();
    rhs *= scale;
    x *= scale;
    check(solve(rhs, x));
    TtupleMatrix rest = residual(u_, v_, rhs, x), step = zeros();
    const double again = scaleOf(rest);
    rest *= again;
    check(solve(rest, step));
    step *= 1.0 / again;
    x += step;
    x *= 1.0 / scale;
    return x;
  }

  static void check(int code) {
    if (code != 0) {
      throw Fault(kNoSolution,
                  "no unique solution: a direction of the grid is rank deficient; "
                  "fewer --controls, or add --smooth 1e-6");
    }
  }

  const Direction& u_;
  const Direction& v_;
  std::unique_ptr<TsolveConstrainedLsq> solverU_, solverV_;
  TsolveTensorProductLsq tensor_;
};

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
  TtupleMatrix x;
  TtupleMatrix corners(3, static_cast<int>(controls[0]), static_cast<int>(controls[1]), 0.0);
  if (options.edges == Edges::kCorners) {
    for (const std::size_t i : {std::size_t{0}, controls[0] - 1}) {
      for (const std::size_t j : {std::size_t{0}, controls[1] - 1}) {
        DoubleVec p = corners.point(static_cast<int>(i), static_cast<int>(j));
        const double* datum = grid.at(i ? grid.rows - 1 : 0, j ? grid.columns - 1 : 0);
        for (int c = 0; c < 3; ++c) p(c) = datum[c];
      }
    }
    TtupleMatrix solved = solver.solveWithCorners(b, corners);
    x.reference(solved);
  } else {
    TtupleMatrix solved = solver.solve(b);
    x.reference(solved);
  }
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
