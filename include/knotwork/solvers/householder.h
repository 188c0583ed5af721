// SPDX-License-Identifier: MIT
// Least squares with exact constraints by Householder reflections.
#pragma once

#include "knotwork/solvers/solve_constrained_lsq.h"

namespace knotwork::detail {
struct HouseholderStorage;
}

/// Solves min |A1 x - b1| subject to A2 x = b2, or, where there are fewer rows than columns, finds
/// the x of least norm that meets all rows.
///
/// Row reflections with row pivoting bring the constraint rows to a triangle and leave n = cols -
/// constraints unknowns free; column reflections with column pivoting do the same with the
/// least-squares rows. Sums run in index order. Exact zeros, of which the matrices of splines have
/// many, cost next to nothing.
///
/// What may surprise:
/// - Products of at most a tenth of the tolerance are not applied. So right-hand sides should be of
///   order 1: well below it they are solved wrongly, even in sign, with code 0.
/// - That threshold is one for all objects of the class, set by whichever factored last, for the
///   solutions of the others too.
/// - `altSolve` can worsen a solution: the right-hand sides of its corrections are small.
/// - A system is dependent where a pivot is below 1e-13 times the largest *squared* norm of a row
///   or column: entries near 1e13 make any system dependent unless rows are normalised.
/// - Systems of 65536 or more rows or columns are not accepted.
///
/// Source: G. H. Golub, C. F. Van Loan, Matrix Computations, 5.4 and 6.2.
class KNOTWORK_API Thouseholder : public TsolveConstrainedLsq {
 public:
  /// @param tolerance     magnitude up to which an entry counts as zero; also sets what is skipped.
  /// @param maxNonZeros   entries to keep per row; below 1, all of them.
  /// @param keepOriginal  see TbaseSolver.
  Thouseholder(double tolerance, int maxNonZeros, bool keepOriginal);
  /// The same with a reporter, which hears progress; it must live as long as the solver.
  Thouseholder(TsolverReporter& reporter, double tolerance, int maxNonZeros, bool keepOriginal);
  /// A solver that shares all storage with `other`.
  Thouseholder(const Thouseholder& other);
  ~Thouseholder() override;

  /// Makes this solver share all storage and the reporter of `other`. @return this solver.
  Thouseholder& reference(Thouseholder& other);
  /// Gives the lists, factors and the factorisation storage of their own.
  void deepenShallowCopy();

  /// Solves for points, all components at once and each as if alone.
  ///
  /// @param rhs  at least as many points as prepared rows; unchanged.
  /// @param x    at least as many points as prepared columns, of the same dimension.
  /// @return     0 done; 4 null result, shapes that do not fit or no memory; 5 dependent system, or
  ///             a solution for a component that is not a number.
  [[nodiscard]] int solveInPlace(TtupleVector& rhs, TtupleVector* x) const override;
  /// @param rhs  at least as many entries as prepared rows; used up. Multiplied by `rhsMult` if of
  ///             the same length.
  /// @param x    at least as many entries as prepared columns; further ones become 0.
  [[nodiscard]] int solveInPlace(DoubleVec& rhs, DoubleVec* x) const override;

  /// Solves and then solves n times for what is left of the right-hand side, adding up. Parts of it
  /// below the threshold are skipped, so more corrections are not always better.
  ///
  /// @param rhs  totalRows() points.
  /// @param n    number of corrections; none if it is not positive.
  /// @return     new list of totalCols() points; empty if the system is not solvable or memory ran
  ///             out, zeros where `solve` gives a code.
  [[nodiscard]] TtupleVector altSolve(const TtupleVector& rhs, int n) const;

 protected:
  /// Factors `matrix_` into new storage and sets the threshold of the class.
  bool factor() override;
  /// Brings `factorMatrix_` to its triangles, unless that is done. @return whether no pivot is a
  /// NaN or negligible against the largest squared norm of a row or column.
  bool inPlace();

  DoubleVec beta_;   ///< factor of each reflection, by pivot row; 0 where one was skipped
  DoubleVec sigma_;  ///< diagonal of the triangles, by pivot row
  DoubleVec norms_;  ///< running squared norms
  IntVec rowPerm_;   ///< where each row of the factor was
  IntVec colPerm_;   ///< where each column of the factor was
  DoubleGenMat factorMatrix_;

 private:
  friend struct knotwork::detail::HouseholderStorage;
};
