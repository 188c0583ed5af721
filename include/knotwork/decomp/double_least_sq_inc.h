// SPDX-License-Identifier: MIT
// Linear least squares, equation by equation.
#pragma once

#include "knotwork/decomp/double_ch_decomp.h"

/// min ||A x - b|| for n unknowns and d right-hand sides at once, where equations come and go one
/// by one: R is updated and downdated, A is not kept. The squares of the residual norms are sums
/// over the equations, so memory does not grow with their number.
///
/// Copies share the factor R for good: `copy` and `deepenShallowCopy` separate the data and the
/// residual norms alone, so an equation added to one object changes the R of its copies too.
///
/// Without memory, reported by 0x3008, there are no unknowns and no data from the beginning, an
/// equation is not added or removed, and a solution is empty.
///
/// Source: LINPACK Users' Guide (1979), ch. 10: DCHUD and DCHDD; ch. 6: DTRSL.
class KNOTWORK_API DoubleLeastSqInc : public DoubleChDecomp {
 public:
  /// n unknowns, d right-hand sides, no equations.
  DoubleLeastSqInc(unsigned n, unsigned d);

  /// Adds an equation. Reports as `update`.
  ///
  /// @param x  the n coefficients.   @param y  the d right-hand sides; a single one for d = 1.
  void addEquation(DoubleVec& x, const DoubleVec& y);
  void addEquation(DoubleVec& x, double y);
  /// Removes an equation that was added. @return as `downdate`, and reports like it.
  [[nodiscard]] int deleteEquation(DoubleVec& x, const DoubleVec& y);
  [[nodiscard]] int deleteEquation(DoubleVec& x, double y);

  /// @return norm of the residual for right-hand side j; -1 after a removal that could not be.
  /// Reports 0x500B unless 0 <= j < d, and returns 0.
  [[nodiscard]] double residualNorm(int j) const;
  /// @return whether a diagonal element of R is exactly 0.
  [[nodiscard]] bool isUnderDetermined() const;
  /// @return `isUnderDetermined()`.
  [[nodiscard]] bool fail() const;
  /// @return the negation of `fail`.
  [[nodiscard]] bool good() const;
  /// Solution for right-hand side j.
  ///
  /// @return  new vector of length n; the transformed data where R has a zero on its diagonal;
  ///          empty if there is no such j.
  /// Reports  0x5011 if n is 0 or the system underdetermined; 0x500B unless 0 <= j < d; 0x5011 once
  ///          more where a zero on the diagonal is met.
  [[nodiscard]] DoubleVec solve(int j) const;

  /// @return a copy with data and residual norms of its own, and the same R; without memory, with
  /// no data.
  [[nodiscard]] DoubleLeastSqInc copy() const;
  /// Gives data and residual norms storage of their own; R stays shared, and without memory the
  /// others do.
  void deepenShallowCopy();

 protected:
  DoubleGenMat data_;  // Z, n x d
  DoubleVec norms_;

 private:
  KNOTWORK_LOCAL bool checkData(int j) const;
};
