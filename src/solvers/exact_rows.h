// SPDX-License-Identifier: MIT
// What is to hold exactly in a least-squares system of any size.
#pragma once

#include <vector>

#include "solvers/column_roles.h"
#include "solvers/triangle.h"
#include "solvers/triangle_constraints.h"

namespace knotwork::detail {

/// What the solution of a system tells; no solution where unknowns are undetermined or constraints
/// conflict.
struct LsqSolution {
  std::vector<double> x;        // unknown after unknown, dimension components each
  std::vector<double> squares;  // of the residuals, by component
  std::vector<int> undetermined, conflicting;
};

/// Prescribed unknowns, whose terms move to the right-hand sides, and constraint rows. Every
/// operation may throw std::bad_alloc.
class ExactRows {
 public:
  ExactRows(int unknowns, int dimension);

  void prescribe(int unknown, const double* value);
  bool isPrescribed(int unknown) const { return roles_.isPrescribed(unknown); }
  bool anyPrescribed() const { return anyPrescribed_; }
  /// Takes the entry of a prescribed unknown out of a row with right-hand sides `sides`.
  void takeOut(int unknown, double& entry, double* sides) const;

  void addConstraint(const ConstraintRow& row);
  const std::vector<ConstraintRow>& constraints() const { return constraints_; }

  /// Every column but those prescribed is in the band.
  const ColumnRoles& roles() const { return roles_; }

  /// A constraint as a least-squares row over columns of these lengths: its residual will be 0, so
  /// the minimum stays, and what it determines needs no other rows.
  ///
  /// @return the power of 2 that gives it the size of its columns; 0 for a row without entries.
  static double weightAsRow(const ConstraintRow& row, const std::vector<double>& lengths);

  /// Solves the reduced system of the rows, where `open` columns have no pivot.
  ///
  /// @param squares  sums of squares that the rows have left, by component.
  LsqSolution solve(const Triangle& triangle, const ColumnRoles& roles, double tolerance,
                    const std::vector<int>& open, const std::vector<double>& squares) const;

 private:
  void solveComponents(const TriangleConstraints& constraints, LsqSolution& solution) const;
  void correct(const TriangleConstraints& constraints, int component, std::vector<double>& x) const;

  int dimension_;
  ColumnRoles roles_;
  bool anyPrescribed_ = false;
  std::vector<double> prescribed_;
  std::vector<ConstraintRow> constraints_;
};

}  // namespace knotwork::detail
