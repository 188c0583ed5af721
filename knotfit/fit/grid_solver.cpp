// SPDX-License-Identifier: MIT
// The two linear systems of a surface fit.
//
// U X V' = B in the sense of least squares: U and V hold the basis functions of one direction each,
// so each is factored alone and the product of the two, which has as many entries as grid points
// times control points, is never formed. Smoothing rows are more lines of the grid with data zero.
#include "fit/grid_solver.h"

#include "base/fault.h"
#include "model/scale.h"
#include "model/vec3.h"

namespace knotfit {
namespace {

// B - U X V', computed as B - (U X) V': neither product is wider than the grid.
TtupleMatrix residual(const Direction& u, const Direction& v, const TtupleMatrix& b,
                      const TtupleMatrix& x) {
  const auto rows = u.matrix.rows.size(), columns = v.matrix.rows.size();
  const auto n = static_cast<std::size_t>(x.cols());
  std::vector<Vec3> half(rows * n, Vec3{});  // U X
  for (std::size_t i = 0; i < rows; ++i) {
    const SparseRow& row = u.matrix.rows[i];
    for (std::size_t k = 0; k < row.columns.size(); ++k) {
      for (std::size_t j = 0; j < n; ++j) {
        const DoubleVec p = x.point(static_cast<int>(row.columns[k]), static_cast<int>(j));
        for (std::size_t c = 0; c < 3; ++c) {
          half[i * n + j][c] += row.values[k] * p(static_cast<int>(c));
        }
      }
    }
  }
  TtupleMatrix r = b.copy();
  for (std::size_t i = 0; i < rows; ++i) {
    for (std::size_t j = 0; j < columns; ++j) {
      DoubleVec p = r.point(static_cast<int>(i), static_cast<int>(j));
      const SparseRow& row = v.matrix.rows[j];
      for (std::size_t k = 0; k < row.columns.size(); ++k) {
        const Vec3& h = half[i * n + row.columns[k]];
        for (std::size_t c = 0; c < 3; ++c) p(static_cast<int>(c)) -= row.values[k] * h[c];
      }
    }
  }
  return r;
}

ColumnScale scaleOf(const TtupleMatrix& b) {
  const DoubleVec flat = b.data();
  return ColumnScale(flat.data(), flat.length(), 3);
}

void enlarge(TtupleMatrix& m, const ColumnScale& scale) {
  DoubleVec flat = m.data();
  scale.enlarge(flat.data(), flat.length());
}

void restore(TtupleMatrix& m, const ColumnScale& scale) {
  DoubleVec flat = m.data();
  scale.restore(flat.data(), flat.length());
}

void check(int code) {
  if (code != 0) {
    throw Fault(kNoSolution,
                "no unique solution: a direction of the grid is rank deficient; "
                "fewer --controls, or a --smooth near 1e-6");
  }
}

// Solves for the scaled data, then for the rest that is left; `x` comes with prescribed values.
template <class Solve>
TtupleMatrix refined(const Direction& u, const Direction& v, const TtupleMatrix& b, TtupleMatrix x,
                     Solve solve) {
  const ColumnScale scale = scaleOf(b);
  TtupleMatrix rhs = b.copy();
  enlarge(rhs, scale);
  enlarge(x, scale);
  check(solve(rhs, x));
  TtupleMatrix rest = residual(u, v, rhs, x);
  const ColumnScale again = scaleOf(rest);
  enlarge(rest, again);
  TtupleMatrix step(3, x.rows(), x.cols(), 0.0);  // prescribed points stay
  check(solve(rest, step));
  restore(step, again);
  x += step;
  restore(x, scale);
  return x;
}

}  // namespace

Direction directionOf(const std::vector<double>& u, const std::vector<double>& knots, int degree,
                      const FitOptions& options) {
  const knotwork::BsplineBasis basis = basisOf(knots, degree);
  Direction d;
  d.matrix.unknowns = static_cast<std::size_t>(basis.count());
  const auto add = [&](std::size_t i) {
    d.matrix.add(SparseRow(basis, u[i]));
    d.lines.push_back(static_cast<std::ptrdiff_t>(i));
  };
  const bool ends = options.edges == Edges::kExact;
  for (std::size_t i = ends; i + ends < u.size(); ++i) add(i);
  addSmoothing(d.matrix, basis, options.smooth);
  d.lines.resize(d.matrix.rows.size(), -1);
  if (ends) {
    add(0);
    add(u.size() - 1);
    d.matrix.constraints = 2;
  }
  if (options.smooth == 0) checkDetermined(knots, degree, u);
  checkSize(d.matrix.rows.size(), d.matrix.unknowns, options.solver.method);
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
  return TtupleMatrix(3, static_cast<int>(u_.matrix.unknowns), static_cast<int>(v_.matrix.unknowns),
                      0.0);
}

TtupleMatrix GridSolver::solve(const TtupleMatrix& b) {
  check(tensor_.setMatrix(
      denseMatrix(u_.matrix), denseMatrix(v_.matrix), static_cast<int>(u_.matrix.constraints),
      static_cast<int>(v_.matrix.constraints), false, false, false, false, false, false));
  return refined(u_, v_, b, zeros(),
                 [&](const TtupleMatrix& rhs, TtupleMatrix& x) { return tensor_.solve(rhs, &x); });
}

// The corners are unknowns with values given, which the library takes to the right-hand side.
TtupleMatrix GridSolver::solveWithCorners(const TtupleMatrix& b, const TtupleMatrix& corners) {
  IntGenMat fixed(static_cast<unsigned>(u_.matrix.unknowns),
                  static_cast<unsigned>(v_.matrix.unknowns), 0);
  const int n = static_cast<int>(fixed.rows()) - 1, m = static_cast<int>(fixed.cols()) - 1;
  for (const int i : {0, n}) {
    for (const int j : {0, m}) fixed.set(i, j, 1);
  }
  const DoubleGenMat u = denseMatrix(u_.matrix), v = denseMatrix(v_.matrix);
  const auto solve = [&](const TtupleMatrix& rhs, TtupleMatrix& x) {
    return tensor_.solveFixed(u, v, fixed, rhs, &x);
  };
  return refined(u_, v_, b, corners.copy(), solve);
}

}  // namespace knotfit
