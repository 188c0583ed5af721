// SPDX-License-Identifier: MIT
// Fits a cubic spline curve through measured points: the ends are met exactly, the points between
// in the least-squares sense.
#include <knotwork/knotwork.h>

#include <cmath>
#include <cstdio>

namespace {

constexpr int kControlPoints = 7;
constexpr int kPoints = 25;

// Clamped knots 0, 0, 0, 0, 1, 2, ... end, end, end, end.
double knot(int i) {
  const int last = kControlPoints - 3;
  return i < 3 ? 0 : i - 3 > last ? last : i - 3;
}

// Value at t of B-spline i of the degree, by the de Boor-Cox recurrence; the last one that is not
// empty holds the end of the domain.
double basis(int i, int degree, double t) {
  if (degree == 0) {
    const bool isLast = i == kControlPoints - 1;
    return knot(i) <= t && (t < knot(i + 1) || (isLast && t == knot(i + 1))) ? 1 : 0;
  }
  const double rise = knot(i + degree) - knot(i), fall = knot(i + degree + 1) - knot(i + 1);
  double value = 0;
  if (rise > 0) value += (t - knot(i)) / rise * basis(i, degree - 1, t);
  if (fall > 0) value += (knot(i + degree + 1) - t) / fall * basis(i + 1, degree - 1, t);
  return value;
}

// A quarter of a helix, off by up to 0.01 except at its ends.
void measure(int k, DoubleVec point) {
  const double angle = k * std::acos(0.0) / (kPoints - 1);
  const double error = k == 0 || k == kPoints - 1 ? 0 : 0.01 * std::sin(37.0 * k);
  point(0) = std::cos(angle) + error;
  point(1) = std::sin(angle) - error;
  point(2) = 0.2 * angle;
}

}  // namespace

int main() {
  // Rows in order of the points, those that hold exactly last.
  DoubleGenMat collocation(kPoints, kControlPoints);
  TtupleVector points(3, kPoints, 0.0);
  for (int row = 0; row < kPoints; ++row) {
    const int k = row < kPoints - 2 ? row + 1 : (row - kPoints + 2) * (kPoints - 1);
    const double t = k * knot(kControlPoints) / (kPoints - 1);
    for (int j = 0; j < kControlPoints; ++j) collocation(row, j) = basis(j, 3, t);
    measure(k, points.point(row));
  }

  Thouseholder solver(1e-10, 0, false);
  const int constraints = 2;
  if (solver.setMatrix(collocation, constraints, false, true, false) != 0) return 1;
  TtupleVector control(3, kControlPoints, 0.0);
  if (solver.solve(points, &control, false) != 0) return 1;

  for (int j = 0; j < kControlPoints; ++j) {
    const DoubleVec p = control.point(j);
    std::printf("control point %d: %9.6f %9.6f %9.6f\n", j, p(0), p(1), p(2));
  }
  double largest = 0;
  for (int row = 0; row < kPoints; ++row) {
    DoubleVec misfit = points.point(row).copy();
    for (int j = 0; j < kControlPoints; ++j) misfit -= control.point(j) * collocation(row, j);
    if (row < kPoints - constraints) largest = std::fmax(largest, misfit.vecLen());
    if (row >= kPoints - constraints) std::printf("end residual: %.1e\n", misfit.vecLen());
  }
  std::printf("largest residual between: %.6f\n", largest);
  return 0;
}
