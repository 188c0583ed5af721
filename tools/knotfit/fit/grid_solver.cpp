// SPDX-License-Identifier: MIT
// The two linear systems of a surface fit.
#include "fit/grid_solver.h"

#include <algorithm>
#include <cmath>

#include "base/fault.h"
#include "fit/basis.h"

namespace knotfit {
namespace {

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

void check(int code) {
  if (code != 0) {
    throw Fault(kNoSolution,
                "no unique solution: a direction of the grid is rank deficient; "
                "fewer --controls, or add --smooth 1e-6");
  }
}

// Solves for the scaled data, then for the rest that is left; `x` comes with prescribed values.
template <class Solve>
TtupleMatrix refined(const Direction& u, const Direction& v, const TtupleMatrix& b, TtupleMatrix x,
                     TtupleMatrix step, Solve solve) {
  const double scale = scaleOf(b);
  TtupleMatrix rhs = b.copy();
  rhs *= scale;
  x *= scale;
  check(solve(rhs, x));
  TtupleMatrix rest = residual(u, v, rhs, x);
  const double again = scaleOf(rest);
  rest *= again;
  check(solve(rest, step));
  step *= 1.0 / again;
  x += step;
  x *= 1.0 / scale;
  return x;
}

}  // namespace

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

GridSolver::GridSolver(const Direction& u, const Direction& v, const SolverOptions& options)
    : u_(u),
      v_(v),
      solverU_(newSolver(options)),
      solverV_(newSolver(options)),
      tensor_(*solverU_, *solverV_) {}

TtupleMatrix GridSolver::zeros() const {
  return TtupleMatrix(3, static_cast<int>(u_.system.unknowns), static_cast<int>(v_.system.unknowns),
                      0.0);
}

TtupleMatrix GridSolver::solve(const TtupleMatrix& b) {
  check(tensor_.setMatrix(
      denseMatrix(u_.system), denseMatrix(v_.system), static_cast<int>(u_.system.constraints),
      static_cast<int>(v_.system.constraints), false, false, false, false, false, false));
  return refined(u_, v_, b, zeros(), zeros(),
                 [&](const TtupleMatrix& rhs, TtupleMatrix& x) { return tensor_.solve(rhs, &x); });
}

TtupleMatrix GridSolver::solveWithCorners(const TtupleMatrix& b, const TtupleMatrix& corners) {
  IntGenMat fixed(static_cast<unsigned>(u_.system.unknowns),
                  static_cast<unsigned>(v_.system.unknowns), 0);
  const int n = static_cast<int>(fixed.rows()) - 1, m = static_cast<int>(fixed.cols()) - 1;
  for (const int i : {0, n}) {
    for (const int j : {0, m}) fixed.set(i, j, 1);
  }
  const DoubleGenMat u = denseMatrix(u_.system), v = denseMatrix(v_.system);
  const auto solve = [&](const TtupleMatrix& rhs, TtupleMatrix& x) {
    return tensor_.solveFixed(u, v, fixed, rhs, &x);
  };
  return refined(u_, v_, b, corners.copy(), zeros(), solve);
}

}  // namespace knotfit
