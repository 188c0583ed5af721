// SPDX-License-Identifier: MIT
// Singular value decomposition.
#pragma once

#include "knotwork/matrix/double_gen_mat.h"

/// A = U S V' for a rows x cols matrix A: U and V orthogonal, S diagonal, its values decreasing and
/// not negative. There is no tolerance and no rank decision: the values tell.
///
/// Not every decomposition ends well, and of finite matrices not every one: ask `good` or `fail`
/// before using any value. Thirty sweeps may not be enough for a value (a 90 x 70 matrix with
/// singular values in equal ratios from 1 down to 1e-12 ends with none). Constant matrices, at many
/// sizes from 36 x 36 on, end in NaN: rounding leaves remainders that shrink from step to step
/// until the reciprocal of a length overflows. That is the published method, kept to the bit.
///
/// A copy changes with its original: both share values and vectors, and a later decomposition of
/// the same size by one of them writes through to the other.
///
/// When memory for a decomposition cannot be had, 0x3008 is reported and there are no singular
/// values.
///
/// Source: LINPACK Users' Guide (1979), ch. 11: DSVDC, with the shift of 1984.
class KNOTWORK_API DoubleSVDecomp {
 public:
  /// Empty; all left and right vectors will be computed.
  DoubleSVDecomp();
  /// All vectors on, then `factor(A)`.
  explicit DoubleSVDecomp(const DoubleGenMat& A);
  /// Shares values and vectors (see above).
  DoubleSVDecomp(const DoubleSVDecomp& other);
  /// Copies values and vectors into the elements that are there, and status and switches. Reports
  /// 0x4004 where dimensions, 0x300F where lengths differ.
  DoubleSVDecomp& operator=(const DoubleSVDecomp& other);

  /// Decomposes A, which is left as it is. Values and the vectors that are switched on are
  /// overwritten: in the storage they have where their size stays, so views on them follow. Vectors
  /// that are switched off stay what they were. With rows or cols 0 there are no values, and the
  /// status stays.
  ///
  /// At most 30 sweeps are spent on one value. Failure, as with a NaN or infinity in A, is not
  /// reported: `fail` and `numSVsFound` tell it.
  void factor(const DoubleGenMat& A);

  /// Switches the left vectors for the decompositions to come. On keeps a choice of
  /// `computeAllLeftVecs`, or after off means all. @return whether they were on.
  int computeLeftVecs(int on);
  /// Chooses between all rows left vectors and the first min(rows, cols); does nothing while left
  /// vectors are off. @return 1 if all were on, else 0.
  int computeAllLeftVecs(int on);
  /// Switches the right vectors. @return whether they were on.
  int computeRightVecs(int on);

  /// @return view on the singular values, decreasing, length min(rows, cols). Only those from the
  /// status on are right.
  DoubleVec singularValues() const;
  /// @return view on the superdiagonal of the last bidiagonal matrix, length cols: zeros after
  /// convergence, save that for cols >= rows + 2 the last cols - rows - 1 entries are leftovers of
  /// the reduction.
  DoubleVec eValues() const;
  /// @return view on U, rows x rows or rows x min(rows, cols).
  DoubleGenMat leftVecs() const;
  /// @return view on V, cols x cols.
  DoubleGenMat rightVecs() const;
  /// @return number of values less the status: how many are right. With rows < cols the status can
  /// be rows + 1, and the result -1.
  [[nodiscard]] int numSVsFound() const;
  /// @return whether there are values and all converged.
  [[nodiscard]] bool good() const;
  /// @return the negation of `good`.
  [[nodiscard]] bool fail() const;

 protected:
  DoubleVec values_;
  DoubleVec superdiagonal_;
  DoubleGenMat left_;
  DoubleGenMat right_;
  int status_ = 0;  // the number of leading values that did not converge
  int job_ = 11;    // left digit: 0 no left vectors, 1 all, 2 the first; right digit: right vectors
};
