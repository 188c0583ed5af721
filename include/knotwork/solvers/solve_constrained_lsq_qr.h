// SPDX-License-Identifier: MIT
// Least squares by QR decomposition.
#pragma once

#include "knotwork/decomp/double_least_sq_qr.h"
#include "knotwork/solvers/solve_constrained_lsq.h"

/// Solves the whole prepared system in the least-squares sense. Constraint rows are equations like
/// all others, as exact as the fit makes them.
///
/// What may surprise: a second system with as many columns is factored with the column order that
/// the first one left, as DoubleQRDecomp does it. A system counts as dependent only where a
/// diagonal element of R is exactly 0 or a NaN (a constant matrix has the latter from about 45 x 45
/// on); the tolerance decides later which unknowns are free, that is 0.
class KNOTWORK_API TsolveConstrainedLsqQR : public TsolveConstrainedLsq {
 public:
  /// @param tolerance     magnitude up to which an entry counts as zero, and up to which a diagonal
  ///                      element of the factor leaves its unknown free.
  /// @param keepOriginal  see TbaseSolver.
  TsolveConstrainedLsqQR(double tolerance, bool keepOriginal);
  /// The same with a reporter, which must live as long as the solver.
  TsolveConstrainedLsqQR(TsolverReporter& reporter, double tolerance, bool keepOriginal);
  /// A solver that shares all storage with `other`.
  TsolveConstrainedLsqQR(const TsolveConstrainedLsqQR& other);
  ~TsolveConstrainedLsqQR() override;

  /// Makes this solver share all storage and the reporter of `other`. @return this solver.
  TsolveConstrainedLsqQR& reference(TsolveConstrainedLsqQR& other);
  /// Gives the lists, factors and the decomposition storage of their own.
  void deepenShallowCopy();

  /// @return the factored problem.
  const DoubleLeastSqQR& rwSolve() const;

  /// Solves for points, one component after the other.
  ///
  /// @param rhs  as many points as prepared rows; unchanged.
  /// @param x    as many points as prepared columns, of the same dimension.
  /// @return     0 done; 4 null result, shapes that do not fit or no memory; 5 dependent system, or
  ///             a solution that is not a number; the last code that is not 0 of all components.
  [[nodiscard]] int solveInPlace(TtupleVector& rhs, TtupleVector* x) const override;
  /// @param rhs  as many entries as prepared rows; multiplied by `rhsMult` if of the same length.
  /// @param x    as many entries as prepared columns: the basic solution, with zeros for the
  ///             unknowns that the tolerance leaves free.
  [[nodiscard]] int solveInPlace(DoubleVec& rhs, DoubleVec* x) const override;

 protected:
  /// Factors `matrix_`. @return whether no diagonal element of the factor is exactly 0 or a NaN.
  bool factor() override;

  DoubleLeastSqQR lsq_;
};
