// SPDX-License-Identifier: MIT
// General matrices of double.
#pragma once

#include "knotwork/matrix/gen_mat_base.h"
#include "knotwork/vector/double_vec.h"

extern template class knotwork::GenMatBase<DoubleGenMat, DoubleVec, double>;

/// A general dense matrix of double, column by column on a vector: what every decomposition and
/// solver takes. See GenMatBase for its members.
class KNOTWORK_API DoubleGenMat : public knotwork::GenMatBase<DoubleGenMat, DoubleVec, double> {
 public:
  using GenMatBase::operator();

  /// A 0 x 0 matrix.
  DoubleGenMat();
  /// Unspecified values.
  DoubleGenMat(unsigned rows, unsigned cols);
  /// Every element x.
  DoubleGenMat(unsigned rows, unsigned cols, double x);
  /// View on v's elements, taken column by column. Reports 0x400A if v's length is not rows * cols;
  /// the dimensions are set all the same.
  DoubleGenMat(const DoubleVec& v, unsigned rows, unsigned cols);
  /// A copy of p[0] to p[rows * cols - 1], taken column by column.
  DoubleGenMat(const double* p, unsigned rows, unsigned cols);
  /// Another view on m's elements, not a copy.
  DoubleGenMat(const DoubleGenMat& m);
  /// New matrix of the same values.
  DoubleGenMat(const IntGenMat& m);
  /// New square matrix of all elements, those that m does not store included.
  DoubleGenMat(const DoubleLowerTriMat& m);
  DoubleGenMat(const DoubleUpperTriMat& m);
  DoubleGenMat(const DoubleSymMat& m);
  /// New matrix of the picked elements.
  DoubleGenMat(const DoubleGenMatPick& pick);

  /// Copies m's values into the existing elements, through a copy of m where the two share storage.
  /// Reports 0x4004 if the dimensions differ.
  DoubleGenMat& operator=(const DoubleGenMat& m);
  /// Sets every element to x.
  DoubleGenMat& operator=(double x);
  /// Copies the picked values into the existing elements. Reports 0x4004 if the dimensions differ.
  DoubleGenMat& operator=(const DoubleGenMatPick& pick);

  /// @return view on the elements in the listed rows and columns, in the lists' order. Reports
  /// 0x4001 for every index that is no row (then, no column) of the matrix, from the last one back.
  DoubleGenMatPick matPick(const IntVec& rows, const IntVec& cols);
  DoubleGenMatPick operator()(const IntVec& rows, const IntVec& cols);

  /// @return new matrix of f(x) for every element x, in storage order.
  DoubleGenMat apply(double (*f)(double)) const;

  static const char className[];
};

/// @return new matrix a(i, j) op b(i, j) with a's dimensions. Report 0x4004 if b's differ.
[[nodiscard]] KNOTWORK_API DoubleGenMat operator+(const DoubleGenMat& a, const DoubleGenMat& b);
[[nodiscard]] KNOTWORK_API DoubleGenMat operator-(const DoubleGenMat& a, const DoubleGenMat& b);
/// Element by element: for the matrix product see `product`.
[[nodiscard]] KNOTWORK_API DoubleGenMat operator*(const DoubleGenMat& a, const DoubleGenMat& b);
[[nodiscard]] KNOTWORK_API DoubleGenMat operator/(const DoubleGenMat& a, const DoubleGenMat& b);
/// @return new matrix m(i, j) op x; division by a scalar is true division here.
[[nodiscard]] KNOTWORK_API DoubleGenMat operator+(const DoubleGenMat& m, double x);
[[nodiscard]] KNOTWORK_API DoubleGenMat operator-(const DoubleGenMat& m, double x);
[[nodiscard]] KNOTWORK_API DoubleGenMat operator*(const DoubleGenMat& m, double x);
[[nodiscard]] KNOTWORK_API DoubleGenMat operator/(const DoubleGenMat& m, double x);
/// @return new matrix x op m(i, j).
[[nodiscard]] KNOTWORK_API DoubleGenMat operator+(double x, const DoubleGenMat& m);
[[nodiscard]] KNOTWORK_API DoubleGenMat operator-(double x, const DoubleGenMat& m);
[[nodiscard]] KNOTWORK_API DoubleGenMat operator*(double x, const DoubleGenMat& m);
[[nodiscard]] KNOTWORK_API DoubleGenMat operator/(double x, const DoubleGenMat& m);
/// @return new matrix -m(i, j).
[[nodiscard]] KNOTWORK_API DoubleGenMat operator-(const DoubleGenMat& m);
/// @return new matrix |m(i, j)|.
[[nodiscard]] KNOTWORK_API DoubleGenMat abs(const DoubleGenMat& m);
/// @return new matrix of atan2(a(i, j), b(i, j)), angles in radians. Reports 0x4004 if the
/// dimensions differ.
[[nodiscard]] KNOTWORK_API DoubleGenMat atan2(const DoubleGenMat& a, const DoubleGenMat& b);

/// Matrix products. Every element of the result is a `dot` of two DoubleVec, in index order from
/// 0.0: where the inner dimensions differ and the handler returns, each reports 0x300F, too.
///
/// @return new matrix a b, a.rows() x b.cols(). Reports 0x4016 unless a.cols() == b.rows().
[[nodiscard]] KNOTWORK_API DoubleGenMat product(const DoubleGenMat& a, const DoubleGenMat& b);
/// @return new matrix a' b, a.cols() x b.cols(). Reports 0x4016 unless a.rows() == b.rows().
[[nodiscard]] KNOTWORK_API DoubleGenMat transposeProduct(const DoubleGenMat& a,
                                                         const DoubleGenMat& b);
/// @return new matrix a b', a.rows() x b.rows(). Reports 0x4016 unless a.cols() == b.cols().
[[nodiscard]] KNOTWORK_API DoubleGenMat transProduct(const DoubleGenMat& a, const DoubleGenMat& b);
/// @return new vector m v of length m.rows(). Reports 0x4014 unless v.length() == m.cols().
[[nodiscard]] KNOTWORK_API DoubleVec product(const DoubleGenMat& m, const DoubleVec& v);
/// @return new vector v' m of length m.cols(). Reports 0x4015 unless v.length() == m.rows().
[[nodiscard]] KNOTWORK_API DoubleVec product(const DoubleVec& v, const DoubleGenMat& m);
/// @return new matrix m', m.cols() x m.rows().
[[nodiscard]] KNOTWORK_API DoubleGenMat transpose(const DoubleGenMat& m);
/// @return new Kronecker product, (a.rows() b.rows()) x (a.cols() b.cols()), of blocks a(i, j) b.
[[nodiscard]] KNOTWORK_API DoubleGenMat kronecker(const DoubleGenMat& a, const DoubleGenMat& b);

/// Writes the matrix with `printOn`, reads it with `scanFrom`; @return the stream.
KNOTWORK_API std::ostream& operator<<(std::ostream& out, const DoubleGenMat& m);
KNOTWORK_API std::istream& operator>>(std::istream& in, DoubleGenMat& m);
