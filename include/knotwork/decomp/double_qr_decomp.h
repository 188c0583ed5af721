// SPDX-License-Identifier: MIT
// QR decomposition by Householder reflections, with column pivoting.
#pragma once

#include "knotwork/matrix/double_gen_mat.h"
#include "knotwork/vector/int_vec.h"

/// A P = Q R for a rows x cols matrix A: Q orthogonal, R upper triangular (trapezoidal where
/// rows < cols), P a permutation of the columns, or the identity with pivoting off.
///
/// A copy changes with its original: both share the pivots and the auxiliary vector, and go on
/// sharing them when one of the two factors another matrix of as many columns. The copy's factors
/// then belong to other pivots, and what it computes is wrong. `deepenShallowCopy` on the copy, at
/// once, makes it independent.
///
/// A finite matrix may give an R with NaN where its rank is deficient by its structure, as that of
/// a constant matrix is, at many sizes from 45 x 45 on: rounding leaves remainders that shrink from
/// step to step until the reciprocal of a length overflows. That is the published method, kept to
/// the bit. `rank` and `isSingular` do not tell it, as a NaN is not 0.
///
/// When memory for a factorisation cannot be had, 0x3008 is reported and the decomposition is 0 x
/// 0; when it runs out in what a member computes, the result is empty.
///
/// Source: LINPACK Users' Guide (1979), ch. 9: DQRDC and DQRSL.
class KNOTWORK_API DoubleQRDecomp {
 public:
  /// 0 x 0, pivoting on.
  DoubleQRDecomp();
  /// Pivoting on, then `factor(A)`.
  explicit DoubleQRDecomp(const DoubleGenMat& A);
  /// Shares factors, pivots and auxiliary vector, the latter two for good (see above).
  DoubleQRDecomp(const DoubleQRDecomp& other);
  /// Copies each part into the elements that are there, and the pivoting flag. Reports 0x4004 where
  /// dimensions, 0x300F where lengths differ.
  DoubleQRDecomp& operator=(const DoubleQRDecomp& other);

  /// Factors a copy of A.
  ///
  /// Pivots are carried over: where the object has factored a matrix of as many columns before, the
  /// pivots that it found, read as signs, now bind the columns. Those with a positive entry come
  /// first in their order, those with the entry 0 are free and follow, negative ones come last. So
  /// a second factorisation with pivoting keeps the order of the columns, save that the one whose
  /// entry was 0 goes behind the others. A fresh object pivots freely.
  void factor(const DoubleGenMat& A);
  /// Gives factors, pivots and auxiliary vector storage of their own, unless they have it already.
  void deepenShallowCopy();
  /// Factors the matrix that stands in place of the factors, in storage of its own.
  ///
  /// With pivoting the pivot vector is resized to cols (entries kept, new ones 0). The entries drop
  /// by 1 in the end, from LINPACK's numbering to ours; with pivoting off, what the vector still
  /// holds drops by 1 too, at every factorisation.
  void dofactor();
  /// Switches pivoting for the factorisations to come. @return the flag before.
  int doPivoting(int on);

  /// @return number of rows of the factored matrix.
  KNOTWORK_INLINE_API unsigned rows() const { return factors_.rows(); }
  /// @return number of columns of the factored matrix.
  KNOTWORK_INLINE_API unsigned cols() const { return factors_.cols(); }
  /// @return R in and above the diagonal, the Householder vectors, all but their first elements,
  /// below it; a copy of it is a view.
  KNOTWORK_INLINE_API const DoubleGenMat& factors() const { return factors_; }
  /// @return view on the pivots: entry i is the column of A, from 0, that is column i of A P.
  IntVec pivots() const;
  /// @return min(rows, cols) less the number of diagonal elements of R that are exactly 0: a
  /// tolerance is not applied, and a NaN is not 0.
  [[nodiscard]] unsigned rank() const;
  /// @return whether `rank()` is neither rows nor cols.
  [[nodiscard]] bool isSingular() const;

  /// In the next five, `k` columns of A P take part; below 0, above rows or above cols it means
  /// min(rows, cols). With k = 0 nothing is computed: no coefficients, y itself, a fit of zeros.
  ///
  /// Least-squares coefficients, min ||A P(:, 0..k-1) x - b||.
  ///
  /// @param b  right-hand side, length rows, any stride. Elements that are missing where a wrong
  ///           length is survived count as 0.
  /// @return   new vector of length k, in the order of A P.
  /// Reports   0x5002 if b's length is not rows; 0x5011 if R has an exact zero among its first k
  ///           diagonal elements, and returns what was found below the last of them and, before
  ///           that, what is left of Q'b (0 for a matrix of a single row).
  [[nodiscard]] DoubleVec partialSolve(const DoubleVec& b, int k) const;
  /// @return new vector of length rows: the product of the first k reflections, Q, times y. Reports
  /// 0x5002 if y's length is not rows.
  [[nodiscard]] DoubleVec computeQy(const DoubleVec& y, int k) const;
  /// @return new vector Q'y of length rows. Reports as `computeQy`.
  [[nodiscard]] DoubleVec computeQTy(const DoubleVec& y, int k) const;
  /// @return new vector of length rows: y less its fit, built from the rear part of Q'y and not as
  /// a difference. Reports as `computeQy`.
  [[nodiscard]] DoubleVec computeResidualVec(const DoubleVec& y, int k) const;
  /// @return new vector of length rows: the fit A P(:, 0..k-1) x. Reports as `computeQy`.
  [[nodiscard]] DoubleVec computeXb(const DoubleVec& y, int k) const;

  /// Least-squares solution of A x = b; with rows < cols the basic one, with 0 for the columns of
  /// A P behind the rows-th.
  ///
  /// @return new vector of length cols, in the column order of A. Reports as `partialSolve`.
  [[nodiscard]] DoubleVec solve(const DoubleVec& b) const;

  /// @return new vector w with w[i] = v[pivots()[i]]; with pivoting off, a view on v. Reports
  /// 0x5004 if v is not as long as the pivots; where there is no such element, w[i] is 0.
  [[nodiscard]] DoubleVec permute(const DoubleVec& v) const;
  /// @return new vector w with w[pivots()[i]] = v[i], the inverse of `permute`. Reports alike.
  [[nodiscard]] DoubleVec unpermute(const DoubleVec& v) const;

 protected:
  DoubleGenMat factors_;
  IntVec pivots_;
  int pivoting_ = 1;
  DoubleVec qraux_;  // first elements of the Householder vectors, length cols
};
