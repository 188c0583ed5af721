// SPDX-License-Identifier: MIT
// Linear least squares by QR decomposition.
#pragma once

#include "knotwork/decomp/double_qr_decomp.h"

/// min ||A x - b|| for a rows x cols matrix A of any rank: a QR decomposition of A with a tolerance
/// that decides which unknowns are free. Free unknowns are 0 in a solution (a basic solution, not
/// the shortest one). Copies, rank deficiency by structure and memory that runs out are as told of
/// DoubleQRDecomp.
///
/// Source: Businger, Golub (1965), Linear Least Squares Solutions by Householder Transformations.
class KNOTWORK_API DoubleLeastSqQR : public DoubleQRDecomp {
 public:
  /// 0 x 0, pivoting on, tolerance 0.
  DoubleLeastSqQR();
  /// Pivoting on, then `factor(A)`.
  explicit DoubleLeastSqQR(const DoubleGenMat& A);

  /// `DoubleQRDecomp::factor`, pivots carried over likewise; the tolerance goes back to 0, so it is
  /// to be set after each `factor`.
  void factor(const DoubleGenMat& A);
  /// @param t  diagonal elements of R of at most this size count as 0. @return the tolerance
  /// before.
  double setTolerance(double t);
  /// @return number of equations, rows.
  unsigned numEquations() const;
  /// @return number of free unknowns: those in excess of the rows, and the run of diagonal elements
  /// of R at its end whose size is at most the tolerance (a NaN is not).
  [[nodiscard]] unsigned numFreeCols() const;
  /// @return whether there are free unknowns.
  [[nodiscard]] bool isUnderDetermined() const;

  /// @param b  right-hand side, length rows, any stride.
  /// @return   new vector of length cols, in the column order of A.
  /// Reports   0x5002 if b's length is not rows; 0x5011 if cols is 0; then what the QR
  ///           decomposition reports, which looks at b's length once more.
  [[nodiscard]] DoubleVec solve(const DoubleVec& b) const;
  /// @return new vector of length rows, b - A x. Reports as `solve`, but 0x5011 if rows is 0.
  [[nodiscard]] DoubleVec residual(const DoubleVec& b) const;

 private:
  double tolerance_ = 0.0;
};
