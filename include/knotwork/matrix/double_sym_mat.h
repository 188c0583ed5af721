// SPDX-License-Identifier: MIT
// Symmetric matrices of double.
#pragma once

#include "knotwork/matrix/packed_mat.h"

extern template class knotwork::PackedMat<DoubleSymMat, knotwork::SymmetricPacking>;

/// A symmetric matrix, packed: its lower triangle row by row, which is its upper one column by
/// column. See PackedMat for its members.
class KNOTWORK_API DoubleSymMat
    : public knotwork::PackedMat<DoubleSymMat, knotwork::SymmetricPacking> {
 public:
  /// A 0 x 0 matrix.
  DoubleSymMat();
  /// Unspecified values. Reports 0x400D unless rows == cols.
  DoubleSymMat(unsigned rows, unsigned cols);
  /// Every element x.
  DoubleSymMat(unsigned rows, unsigned cols, double x);
  /// View on v's elements, as packed. Reports 0x400D unless rows == cols, then 0x400A unless v has
  /// the length of the packed matrix.
  DoubleSymMat(const DoubleVec& v, unsigned rows, unsigned cols);
  /// Another view on m's elements, not a copy.
  DoubleSymMat(const DoubleSymMat& m);
  /// New matrix of m's lower triangle; what else m holds is ignored. Reports 0x400D if m is not
  /// square; the new matrix then has m.cols() columns of zeros.
  explicit DoubleSymMat(const DoubleGenMat& m);

  /// Copies m's values into the existing elements, through a copy of m where the two share storage.
  /// Reports 0x4004 if the orders differ.
  DoubleSymMat& operator=(const DoubleSymMat& m);

  /// Sets every element to x.
  DoubleSymMat& operator=(double x);
  using PackedMat::operator+=;
  using PackedMat::operator-=;
  /// Every element in place.
  DoubleSymMat& operator+=(double x);
  DoubleSymMat& operator-=(double x);
  /// Adds 1 to every element.
  DoubleSymMat& operator++();
  /// Subtracts 1 from every element.
  DoubleSymMat& operator--();
  /// @return new matrix of f(x) for every packed element x, in packing order.
  DoubleSymMat apply(double (*f)(double)) const;

  static const char className[];
};

/// @return new matrix a(i, j) op b(i, j) of the stored elements. Report 0x4004 if the orders
/// differ.
[[nodiscard]] KNOTWORK_API DoubleSymMat operator+(const DoubleSymMat& a, const DoubleSymMat& b);
[[nodiscard]] KNOTWORK_API DoubleSymMat operator-(const DoubleSymMat& a, const DoubleSymMat& b);
/// Element by element: no matrix product.
[[nodiscard]] KNOTWORK_API DoubleSymMat operator*(const DoubleSymMat& a, const DoubleSymMat& b);
[[nodiscard]] KNOTWORK_API DoubleSymMat operator/(const DoubleSymMat& a, const DoubleSymMat& b);
/// @return new matrix m(i, j) op x or x op m(i, j); division by a scalar is true division.
[[nodiscard]] KNOTWORK_API DoubleSymMat operator*(const DoubleSymMat& m, double x);
[[nodiscard]] KNOTWORK_API DoubleSymMat operator*(double x, const DoubleSymMat& m);
[[nodiscard]] KNOTWORK_API DoubleSymMat operator/(const DoubleSymMat& m, double x);
[[nodiscard]] KNOTWORK_API DoubleSymMat operator+(const DoubleSymMat& m, double x);
[[nodiscard]] KNOTWORK_API DoubleSymMat operator+(double x, const DoubleSymMat& m);
[[nodiscard]] KNOTWORK_API DoubleSymMat operator-(const DoubleSymMat& m, double x);
[[nodiscard]] KNOTWORK_API DoubleSymMat operator-(double x, const DoubleSymMat& m);
[[nodiscard]] KNOTWORK_API DoubleSymMat operator/(double x, const DoubleSymMat& m);
/// @return new matrix of atan2(a(i, j), b(i, j)), angles in radians. Reports 0x4004 if the orders
/// differ.
[[nodiscard]] KNOTWORK_API DoubleSymMat atan2(const DoubleSymMat& a, const DoubleSymMat& b);
/// @return new matrix -m(i, j) of the stored elements.
[[nodiscard]] KNOTWORK_API DoubleSymMat operator-(const DoubleSymMat& m);
/// @return new matrix |m(i, j)|.
[[nodiscard]] KNOTWORK_API DoubleSymMat abs(const DoubleSymMat& m);
/// @return view on m as its transpose.
[[nodiscard]] KNOTWORK_API DoubleSymMat transpose(const DoubleSymMat& m);

/// @return new vector m v; every sum runs over the stored elements in index order from 0.0. Reports
/// 0x4014 unless v.length() == m.cols(); missing elements then count as 0.
[[nodiscard]] KNOTWORK_API DoubleVec product(const DoubleSymMat& m, const DoubleVec& v);
/// @return new vector v' m, likewise. Reports 0x4015 unless v.length() == m.rows().
[[nodiscard]] KNOTWORK_API DoubleVec product(const DoubleVec& v, const DoubleSymMat& m);

/// Writes the matrix with `printOn`, reads it with `scanFrom`; @return the stream.
KNOTWORK_API std::ostream& operator<<(std::ostream& out, const DoubleSymMat& m);
KNOTWORK_API std::istream& operator>>(std::istream& in, DoubleSymMat& m);
