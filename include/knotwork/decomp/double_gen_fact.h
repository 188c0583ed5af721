// SPDX-License-Identifier: MIT
// LU factorisation with partial pivoting.
#pragma once

#include "knotwork/matrix/double_gen_mat.h"
#include "knotwork/vector/int_vec.h"

/// P A = L U for a square matrix A, with an estimate of the reciprocal condition if wanted.
///
/// A singular matrix is no error when it is factored: `isSingular` tells it, and `solve` and
/// `inverse` report it. When memory for a factorisation cannot be had, 0x3008 is reported and the
/// object is 0 x 0, its condition not calculated; when it runs out in `solve` or `inverse`, their
/// result is empty.
///
/// Source: LINPACK Users' Guide (1979), ch. 1: DGEFA, DGECO, DGESL and DGEDI.
class KNOTWORK_API DoubleGenFact {
 public:
  /// The name of the class.
  static const char className[];

  /// 0 x 0, condition not calculated.
  DoubleGenFact();
  /// `factor(A, estimateCondition)`.
  explicit DoubleGenFact(const DoubleGenMat& A, int estimateCondition = 1);
  /// Shares factors and pivots. A later factorisation of either object takes storage of its own.
  DoubleGenFact(const DoubleGenFact& other);
  /// Copies factors and pivots into the elements that are there, and the reciprocal condition.
  /// Reports 0x4004 where dimensions, 0x300F where lengths differ.
  DoubleGenFact& operator=(const DoubleGenFact& other);

  /// Factors a copy of A. Reports 0x500D if A is not square; should the handler return, the leading
  /// square block of order min(rows, cols) is factored.
  ///
  /// @param estimateCondition  0 leaves the estimate out: then only an exactly zero pivot makes the
  ///                           factorisation singular. The condition of a 0 x 0 matrix stays what
  ///                           it was before.
  void factor(const DoubleGenMat& A, int estimateCondition = 1);

  /// @return number of rows of the factored matrix.
  KNOTWORK_INLINE_API unsigned rows() const { return factors_.rows(); }
  /// @return number of columns of the factored matrix.
  KNOTWORK_INLINE_API unsigned cols() const { return factors_.cols(); }
  /// @return U in and above the diagonal, below it the negated multipliers, each in the row where
  /// it was made; a copy of it is a view.
  KNOTWORK_INLINE_API const DoubleGenMat& factors() const { return factors_; }
  /// @return view on the pivots: the row, counted from 1, that each step brought to its diagonal.
  KNOTWORK_INLINE_API IntVec pivots() const { return pivots_; }

  /// @return whether 1 plus the reciprocal condition is 1.
  [[nodiscard]] bool isSingular() const;
  /// @return whether the factorisation is 0 x 0 or singular.
  [[nodiscard]] bool fail() const;
  /// @return the negation of `fail`.
  [[nodiscard]] bool good() const;
  /// @return estimate of 1 / (||A|| ||A^-1||), 1-norm, from 0 to 1; without the estimate 0 for a
  /// zero pivot, and -1 otherwise. Reports 0x5001, a warning, for a negative one.
  [[nodiscard]] double condition() const;

  /// Solution of A x = b.
  ///
  /// @param b  right-hand side of the order's length, any stride.
  /// @return   new vector; an empty one if b's length is wrong, or the pivots are no rows, as an
  ///           assignment between different orders may leave them.
  /// Reports   0x5002 if b's length is not the order; 0x5011 if the order is 0 or the factorisation
  ///           singular, and solves all the same, or if the pivots are no rows.
  [[nodiscard]] DoubleVec solve(const DoubleVec& b) const;
  /// @return the determinant, 0 for a 0 x 0 factorisation; it may be infinite or 0 where the true
  /// one is out of range. NaN, with a report of 0x5011, if the pivots are no rows.
  [[nodiscard]] double determinant() const;
  /// @return new matrix A^-1; of the dimensions of A, if it is not square, with the inverse of the
  /// leading block in its place. Reports 0x5011 if the order is 0 or the factorisation singular,
  /// and inverts all the same, dividing by 0; or if the pivots are no rows, and is then 0 x 0.
  [[nodiscard]] DoubleGenMat inverse() const;

 protected:
  /// Factors the matrix that stands in place of the factors.
  void dofactor(int estimateCondition);
  /// DGEDI with this object's pivots on the elements of a, which is written through.
  /// Does nothing to a matrix of other dimensions or with a stride, or without memory.
  ///
  /// @param job  10 determinant, 1 inverse in place of a, 11 both.
  /// @param det  mantissa, 1 <= |det[0]| < 10 or 0, and exponent; the last argument is not used.
  void calldi(const DoubleGenMat& a, int job, double* det, int*) const;

  DoubleGenMat factors_;
  IntVec pivots_;
  double condition_ = -1.0;
};
