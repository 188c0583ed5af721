// SPDX-License-Identifier: MIT
// Cholesky decomposition with diagonal pivoting, and its changes by columns and rows.
#pragma once

#include "knotwork/matrix/double_gen_mat.h"
#include "knotwork/vector/int_vec.h"

/// P'A P = R'R for a symmetric positive semi-definite matrix A, of which the upper triangle alone
/// is read: R upper triangular, P a permutation, or the identity with pivoting off.
///
/// A matrix that is not positive definite is no error: the number of positive pivots, k, tells how
/// far the factorisation went.
///
/// A copy changes with its original: both share the pivots, and go on sharing them when one of the
/// two factors another matrix of the same order, though the copy keeps its factor. What it computes
/// with the other's pivots is wrong. Shifts, updates and downdates change the factor of both.
///
/// When memory for a factorisation cannot be had, 0x3008 is reported and the factor is 0 x 0; when
/// it runs out in `solve`, `partialSolve` or a permutation, the result is empty; in `shift`,
/// `update` or `downdate`, nothing is changed.
///
/// Source: LINPACK Users' Guide (1979), ch. 8 and 10: DCHDC, DPOSL, DCHEX, DCHUD and DCHDD.
class KNOTWORK_API DoubleChDecomp {
 public:
  /// Where `setPivoting` keeps a column: at the front, anywhere, or at the back.
  enum Position : int { FINAL = -1, FREE = 0, INITIAL = 1 };

  /// 0 x 0, k = -1, pivoting on.
  DoubleChDecomp();
  /// The same, then `factor(A)`.
  explicit DoubleChDecomp(const DoubleGenMat& A);
  /// Shares factor and pivots (see above).
  DoubleChDecomp(const DoubleChDecomp& other);
  /// Copies factor and pivots into the elements that are there, and k and the pivoting flag.
  /// Reports 0x4004 where dimensions, 0x300F where lengths differ.
  DoubleChDecomp& operator=(const DoubleChDecomp& other);

  /// Factors a copy of A, up to the first pivot that is not positive. What is below the diagonal
  /// stays in the factor; so does, from the k-th place on, the part that could not be factored.
  ///
  /// Constraints set with `setPivoting` hold for one factorisation. It leaves its pivots in their
  /// place, which bind the next factorisation of the same order: columns with a positive entry come
  /// first in their order, those with the entry 0 are free and follow, negative ones come last.
  /// Reports 0x5010 if rows < cols; should the handler return, the leading square block is
  /// factored.
  void factor(const DoubleGenMat& A);
  /// Switches pivoting for the factorisations to come. @return the flag before.
  int doPivoting(int on);
  /// Constrains a column for the next factorisation with pivoting.
  ///
  /// @param column    column of A from 0; the pivot vector grows to hold it.
  /// @param position  a Position.
  /// @return the entry before.
  /// Reports  0x5012 for another position, and stores it all the same; 0x3005 for a column that
  ///          cannot be (then returns 0).
  int setPivoting(int column, int position);

  /// @return number of rows of the factored matrix.
  KNOTWORK_INLINE_API unsigned rows() const { return factor_.rows(); }
  /// @return number of columns of the factored matrix.
  KNOTWORK_INLINE_API unsigned cols() const { return factor_.cols(); }
  /// @return R in and above the diagonal; a copy of it is a view.
  KNOTWORK_INLINE_API const DoubleGenMat& factors() const { return factor_; }
  /// @return view on the pivots: entry i is the column of A, from 0, in place i of P'A P; before a
  /// factorisation the constraints.
  IntVec pivots() const;
  /// @return whether k is the number of rows.
  [[nodiscard]] bool isPD() const;
  /// @return k - 1, the last place with a positive pivot; -2 before any factorisation.
  int lastPosFactor() const;
  /// @return whether some diagonal element of the factor from place k - 1 on is negative.
  [[nodiscard]] bool fail() const;
  /// @return the negation of `fail`.
  [[nodiscard]] bool good() const;
  /// @return (R(n-1, n-1) / R(0, 0))^2, n = cols, if all pivots but the last are positive, so
  /// R(n-1, n-1) is what the factorisation stopped at; otherwise 0, for a positive definite matrix
  /// too. Reports 0x5001, a warning, with pivoting off and returns -1.
  [[nodiscard]] double condition() const;

  /// @return new vector w with w[i] = v[pivots()[i]]; with pivoting off, a view on v. Reports
  /// 0x5004 if v is not as long as the pivots; where there is no such element, w[i] is 0.
  [[nodiscard]] DoubleVec permute(const DoubleVec& v) const;
  /// @return new vector w with w[pivots()[i]] = v[i], the inverse of `permute`. Reports alike.
  [[nodiscard]] DoubleVec unpermute(const DoubleVec& v) const;

  /// Solution of R'R x = b with the leading n x n block of R.
  ///
  /// @param b  right-hand side of length n, any stride.
  /// @return   new vector as long as b.
  /// Reports   0x5002 if b's length is not n; 0x5011 if n > k, and solves all the same as far as b
  ///           and R go.
  [[nodiscard]] DoubleVec partialSolve(const DoubleVec& b, int n) const;
  /// @return new vector: the solution of A x = b, in the order of A. Reports as `permute`, then as
  /// `partialSolve` with n = cols.
  [[nodiscard]] DoubleVec solve(const DoubleVec& b) const;

  /// Moves a column of R, makes R triangular again by rotations from the left, and rotates the rows
  /// of Z alike. Pivots and k stay what they were.
  ///
  /// @param l,k        places, 0 <= l < k < rows.
  /// @param direction  0: column l goes to place k and those behind it move one to the left; 1:
  ///                   column k goes to place l and those from l on move one to the right.
  /// @param Z          data columns, as many rows as R; may be null. Written through.
  /// @param c,s        k - l cosines and sines, for direction 0 of the row pairs from (l, l + 1)
  ///                   down, for direction 1 of those from (k - 1, k) up; may be null.
  /// Reports  0x5005 if direction > 1 (then moves as for 1); 0x5006 for bad places (then nothing is
  ///          moved); 0x5007 if Z's row count is wrong (rotated if it reaches row k); 0x5008 for a
  ///          c, then an s, of a length other than k - l (filled as far as it goes).
  void shift(int l, int k, int direction, DoubleGenMat* Z, DoubleVec* c, DoubleVec* s);

  /// Adds the row x, with one value of y for each data column, to the factored system: R'R becomes
  /// R'R + x'x. k stays what it was.
  ///
  /// @param x    row of length cols.
  /// @param Z    data columns, as many rows as R; null for none. Written through.
  /// @param y    a value for each data column; not read without Z.
  /// @param rho  residual norm of each data column, written through; a negative one stays.
  /// @param c,s  cols cosines and sines; may be null.
  /// Reports  0x5007 if Z's row count is wrong; 0x5008 if c's, then s's length is; 0x500C for each
  ///          vector with a stride other than 1; 0x5009 if y's, then rho's length is not Z's column
  ///          count; 0x300F if x's length is wrong. Should the handler return, missing elements of
  ///          x count as 0, and of the data those columns take part that Z, y and rho all have.
  void update(const DoubleVec& x, DoubleGenMat* Z, const DoubleVec* y, DoubleVec* rho, DoubleVec* c,
              DoubleVec* s);
  /// Removes the row x again; arguments and reports as for `update`.
  ///
  /// @return 0: done; -1: R cannot be downdated, or there was no memory (0x3008 was reported then),
  /// and nothing but s has changed; 1: done, but some
  /// residual norm cannot be downdated, and is -1 from now on.
  [[nodiscard]] int downdate(const DoubleVec& x, DoubleGenMat* Z, const DoubleVec* y,
                             DoubleVec* rho, DoubleVec* c, DoubleVec* s);

 protected:
  /// Factors the matrix that stands in place of the factor. All pivots drop by 1 in the end, from
  /// LINPACK's numbering to ours; with pivoting off, too.
  void dofactor();

  DoubleGenMat factor_;
  int positive_ = -1;  // k, number of positive pivots
  IntVec pivots_;
  int pivoting_ = 1;
};
