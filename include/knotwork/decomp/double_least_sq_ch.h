// SPDX-License-Identifier: MIT
// Linear least squares by Cholesky decomposition of the normal equations.
#pragma once

#include "knotwork/decomp/double_ch_decomp.h"

/// min ||A x - b|| for a rows x cols matrix A: a Cholesky decomposition of A'A, and a copy of A.
///
/// Faster than by QR, but A'A has the square of A's condition: half of the digits may be lost. The
/// solution is not refined. Free unknowns are 0. Copies, A among what they share, and memory that
/// runs out are as told of DoubleChDecomp.
class KNOTWORK_API DoubleLeastSqCh : public DoubleChDecomp {
 public:
  /// No equations, pivoting on, tolerance 0.
  DoubleLeastSqCh();
  /// The same, then `factor(A)`.
  explicit DoubleLeastSqCh(const DoubleGenMat& A);

  /// Forms A'A, factors it as `DoubleChDecomp::factor` does, and keeps a copy of A. The tolerance
  /// stays.
  void factor(const DoubleGenMat& A);
  /// @param t  diagonal elements of R up to t (no absolute value is taken) count as 0. @return the
  /// tolerance before.
  double setTolerance(double t);
  /// @return number of equations, the rows of A.
  unsigned numEquations() const;
  /// @return number of free unknowns: the order less the places up to the last positive pivot that
  /// is beyond the tolerance.
  [[nodiscard]] unsigned numFreeCols() const;
  /// @return whether there are free unknowns.
  [[nodiscard]] bool isUnderDetermined() const;

  /// @param b  right-hand side, as long as there are equations, any stride.
  /// @return   new vector of length cols, in the column order of A; empty if cols is 0.
  /// Reports   0x5002 if b's length is wrong, and then 0x4015.
  [[nodiscard]] DoubleVec solve(const DoubleVec& b) const;
  /// @return new vector b - A x. Reports as `solve`.
  [[nodiscard]] DoubleVec residual(const DoubleVec& b) const;

 private:
  DoubleGenMat data_;
  double tolerance_ = 0.0;
};
