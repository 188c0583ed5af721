// SPDX-License-Identifier: MIT
// What the constraints need of a system that has been reduced to a triangle.
#pragma once

namespace knotwork::detail {

/// [R11 R12 | c1; 0 R22 | c2]: R11 is sparse, and the columns of R12 and R22, the border, are full.
/// Numbers of columns are those of the unknowns.
class Triangle {
 public:
  virtual ~Triangle() = default;

  virtual int columns() const = 0;
  /// The right-hand sides c1 of a column of R11.
  virtual const double* rhs(int column) const = 0;
  /// Solves R11 y = y for `count` sides, stored column after column, each of columns() numbers;
  /// places outside R11 become 0.
  virtual void solve(int count, double* y) const = 0;
  /// The same for R11' y = y.
  virtual void solveTransposed(int count, double* y) const = 0;

  virtual int border() const { return 0; }
  /// R12 of a column of R11.
  virtual const double* borderPart(int) const { return nullptr; }
  /// Element (i, j) of R22 and the right-hand sides c2.
  virtual double borderElement(int, int) const { return 0; }
  virtual const double* borderRhs(int) const { return nullptr; }
};

}  // namespace knotwork::detail
