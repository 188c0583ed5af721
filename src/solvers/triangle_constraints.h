// SPDX-License-Identifier: MIT
// Exact rows and full columns beside the triangle of a sparse system.
#pragma once

#include <vector>

#include "knotwork/decomp/double_qr_decomp.h"
#include "solvers/column_roles.h"
#include "solvers/triangle.h"

namespace knotwork::detail {

/// One row that is to hold exactly, its prescribed unknowns moved to the right-hand side.
struct ConstraintRow {
  std::vector<int> columns;
  std::vector<double> values, rhs;
};

/// min |R x - c| subject to C x = d, where R is a triangle with a border.
///
/// With Z = R11^-T C1' = Q T over the columns of R11, and v for what its rows miss, the constraints
/// read Z'v = T's and E = C2 - Z'R12 gives
///   min |s|^2 + |R22 x2 - c2|^2   subject to   -T's + E x2 = d - Z'c1,
/// a small system in s and the border's unknowns x2, solved by the null space of [-T' E]; then
/// x1 = R11^-1 (c1 - R12 x2 - Q s). Any constraints do, dependent ones that agree included.
///
/// Source: C. L. Lawson, R. J. Hanson, Solving Least Squares Problems (1974), ch. 20.
class TriangleConstraints {
 public:
  /// Throws std::bad_alloc.
  TriangleConstraints(const Triangle& triangle, const ColumnRoles& roles,
                      const std::vector<ConstraintRow>& rows, double tolerance);

  /// Columns, one for each direction that neither rows nor constraints determine.
  const std::vector<int>& undetermined() const { return undetermined_; }

  /// What one component of the sides gives.
  struct Solution {
    std::vector<double> x;         // all columns
    double squares = 0;            // |R x - c|^2
    std::vector<int> conflicting;  // rows that contradict others; then x is no solution
  };
  /// Solves for one component c of the triangle's sides, and the constraints' `d`.
  Solution solve(int component, const std::vector<double>& d) const;
  /// Solves for sides c = 0.
  Solution correct(const std::vector<double>& d) const;

 private:
  void projectOnBand();
  void factorConstraints();
  void factorRest();
  void nameUndetermined(int free);
  Solution solve(const std::vector<double>& c1, const std::vector<double>& c2,
                 const std::vector<double>& d) const;
  DoubleVec meetConstraints(const DoubleVec& g, std::vector<int>* conflicting) const;
  DoubleVec residualOfRest(const DoubleVec& y, const std::vector<double>& c2) const;

  const Triangle& triangle_;
  const ColumnRoles& roles_;
  const std::vector<ConstraintRow>& rows_;
  double tolerance_;
  int count_, border_;

  DoubleGenMat z_;                     // Z, columns x constraints
  DoubleGenMat e_;                     // E, constraints x border
  std::vector<double> borderScale_;    // powers of 2 that bring R22's columns to order 1
  std::vector<double> equationScale_;  // the same for the rows of [-T' E]
  DoubleQRDecomp q_;                   // of Z
  DoubleQRDecomp equations_;           // of [-T' E]'
  int rank_ = 0;
  DoubleGenMat nullSpace_;  // (constraints + border) x free directions
  DoubleQRDecomp rest_;     // of diag(I, R22) times the null space
  std::vector<int> undetermined_;
};

}  // namespace knotwork::detail
