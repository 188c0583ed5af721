// SPDX-License-Identifier: MIT
// General matrices of int.
#pragma once

#include "knotwork/matrix/gen_mat_base.h"
#include "knotwork/vector/int_vec.h"

extern template class knotwork::GenMatBase<IntGenMat, IntVec, int>;

/// A general dense matrix of int, column by column on a vector. Arithmetic wraps modulo 2^32,
/// division truncates toward zero. See GenMatBase for its members.
class KNOTWORK_API IntGenMat : public knotwork::GenMatBase<IntGenMat, IntVec, int> {
 public:
  using GenMatBase::operator();

  /// A 0 x 0 matrix.
  IntGenMat();
  /// Unspecified values.
  IntGenMat(unsigned rows, unsigned cols);
  /// Every element x.
  IntGenMat(unsigned rows, unsigned cols, int x);
  /// View on v's elements, taken column by column. Reports 0x400A if v's length is not rows * cols;
  /// the dimensions are set all the same.
  IntGenMat(const IntVec& v, unsigned rows, unsigned cols);
  /// A copy of p[0] to p[rows * cols - 1], taken column by column.
  IntGenMat(const int* p, unsigned rows, unsigned cols);
  /// Another view on m's elements, not a copy.
  IntGenMat(const IntGenMat& m);
  /// New matrix of the picked elements.
  IntGenMat(const IntGenMatPick& pick);

  /// Copies m's values into the existing elements, through a copy of m where the two share storage.
  /// Reports 0x4004 if the dimensions differ.
  IntGenMat& operator=(const IntGenMat& m);
  /// Sets every element to x.
  IntGenMat& operator=(int x);
  /// Copies the picked values into the existing elements. Reports 0x4004 if the dimensions differ.
  IntGenMat& operator=(const IntGenMatPick& pick);

  /// @return view on the elements in the listed rows and columns, in the lists' order. Reports
  /// 0x4001 for every index that is no row (then, no column) of the matrix, from the last one back.
  IntGenMatPick matPick(const IntVec& rows, const IntVec& cols);
  IntGenMatPick operator()(const IntVec& rows, const IntVec& cols);

  static const char className[];
};

/// @return new matrix a(i, j) op b(i, j) with a's dimensions. Report 0x4004 if b's differ.
[[nodiscard]] KNOTWORK_API IntGenMat operator+(const IntGenMat& a, const IntGenMat& b);
[[nodiscard]] KNOTWORK_API IntGenMat operator-(const IntGenMat& a, const IntGenMat& b);
/// Element by element: for the matrix product see `product`.
[[nodiscard]] KNOTWORK_API IntGenMat operator*(const IntGenMat& a, const IntGenMat& b);
[[nodiscard]] KNOTWORK_API IntGenMat operator/(const IntGenMat& a, const IntGenMat& b);
/// @return new matrix m(i, j) op x.
[[nodiscard]] KNOTWORK_API IntGenMat operator+(const IntGenMat& m, int x);
[[nodiscard]] KNOTWORK_API IntGenMat operator-(const IntGenMat& m, int x);
[[nodiscard]] KNOTWORK_API IntGenMat operator*(const IntGenMat& m, int x);
[[nodiscard]] KNOTWORK_API IntGenMat operator/(const IntGenMat& m, int x);
/// @return new matrix x op m(i, j).
[[nodiscard]] KNOTWORK_API IntGenMat operator+(int x, const IntGenMat& m);
[[nodiscard]] KNOTWORK_API IntGenMat operator-(int x, const IntGenMat& m);
[[nodiscard]] KNOTWORK_API IntGenMat operator*(int x, const IntGenMat& m);
[[nodiscard]] KNOTWORK_API IntGenMat operator/(int x, const IntGenMat& m);
/// @return new matrix -m(i, j).
[[nodiscard]] KNOTWORK_API IntGenMat operator-(const IntGenMat& m);
/// @return new matrix |m(i, j)|.
[[nodiscard]] KNOTWORK_API IntGenMat abs(const IntGenMat& m);

/// Matrix products. Every element of the result is a `dot` of two IntVec, in index order from 0:
/// where the inner dimensions differ and the handler returns, each reports 0x300F, too.
///
/// @return new matrix a b, a.rows() x b.cols(). Reports 0x4016 unless a.cols() == b.rows().
[[nodiscard]] KNOTWORK_API IntGenMat product(const IntGenMat& a, const IntGenMat& b);
/// @return new matrix a' b, a.cols() x b.cols(). Reports 0x4016 unless a.rows() == b.rows().
[[nodiscard]] KNOTWORK_API IntGenMat transposeProduct(const IntGenMat& a, const IntGenMat& b);
/// @return new matrix a b', a.rows() x b.rows(). Reports 0x4016 unless a.cols() == b.cols().
[[nodiscard]] KNOTWORK_API IntGenMat transProduct(const IntGenMat& a, const IntGenMat& b);
/// @return new vector m v of length m.rows(). Reports 0x4014 unless v.length() == m.cols().
[[nodiscard]] KNOTWORK_API IntVec product(const IntGenMat& m, const IntVec& v);
/// @return new vector v' m of length m.cols(). Reports 0x4015 unless v.length() == m.rows().
[[nodiscard]] KNOTWORK_API IntVec product(const IntVec& v, const IntGenMat& m);
/// @return new matrix m', m.cols() x m.rows().
[[nodiscard]] KNOTWORK_API IntGenMat transpose(const IntGenMat& m);
/// @return new Kronecker product, (a.rows() b.rows()) x (a.cols() b.cols()), of blocks a(i, j) b.
[[nodiscard]] KNOTWORK_API IntGenMat kronecker(const IntGenMat& a, const IntGenMat& b);

/// Writes the matrix with `printOn`, reads it with `scanFrom`; @return the stream.
KNOTWORK_API std::ostream& operator<<(std::ostream& out, const IntGenMat& m);
KNOTWORK_API std::istream& operator>>(std::istream& in, IntGenMat& m);
