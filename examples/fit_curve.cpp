// SPDX-License-Identifier: MIT
// Fits a cubic spline curve through measured points: the ends are met exactly, the points between
// in the least-squares sense.
#include <knotwork/knotwork.h>

#include <cmath>
#include <cstdio>

namespace {

constexpr int kControlPoints = 7;
constexpr int kPoints = 25;

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
  DoubleVec parameters(kPoints);
  TtupleVector points(3, kPoints, 0.0);
  for (int row = 0; row < kPoints; ++row) {
    const int k = row < kPoints - 2 ? row + 1 : (row - kPoints + 2) * (kPoints - 1);
    parameters(row) = k / (kPoints - 1.0);
    measure(k, points.point(row));
  }
  const knotwork::BsplineBasis basis(3, knotwork::uniformKnots(3, kControlPoints));
  const DoubleGenMat collocation = basis.collocation(parameters);

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
