// SPDX-License-Identifier: MIT
// Upper triangular matrices of double.
#pragma once

#include "knotwork/matrix/packed_mat.h"

extern template class knotwork::PackedMat<DoubleUpperTriMat, knotwork::UpperPacking>;

/// An upper triangular matrix, packed: its upper triangle column by column.
/// See PackedMat for its members.
class KNOTWORK_API DoubleUpperTriMat
    : public knotwork::PackedMat<DoubleUpperTriMat, knotwork::UpperPacking> {
 public:
  /// A 0 x 0 matrix.
  DoubleUpperTriMat();
  /// Unspecified values. Reports 0x400D unless rows == cols.
  DoubleUpperTriMat(unsigned rows, unsigned cols);
  /// View on v's elements, as packed. Reports 0x400D unless rows == cols, then 0x400A unless v has
  /// the length of the packed matrix.
  DoubleUpperTriMat(const DoubleVec& v, unsigned rows, unsigned cols);
  /// Another view on m's elements, not a copy.
  DoubleUpperTriMat(const DoubleUpperTriMat& m);
  /// New matrix of m's upper triangle; what else m holds is ignored. Reports 0x400D if m is not
  /// square; the new matrix then has m.cols() columns of zeros.
  explicit DoubleUpperTriMat(const DoubleGenMat& m);

  /// Copies m's values into the existing elements, through a copy of m where the two share storage.
  /// Reports 0x4004 if the orders differ.
  DoubleUpperTriMat& operator=(const DoubleUpperTriMat& m);

  static const char className[];
};

/// @return new matrix a(i, j) op b(i, j) of the stored elements. Report 0x4004 if the orders
/// differ.
[[nodiscard]] KNOTWORK_API DoubleUpperTriMat operator+(const DoubleUpperTriMat& a,
                                                       const DoubleUpperTriMat& b);
[[nodiscard]] KNOTWORK_API DoubleUpperTriMat operator-(const DoubleUpperTriMat& a,
                                                       const DoubleUpperTriMat& b);
/// Element by element: no matrix product.
[[nodiscard]] KNOTWORK_API DoubleUpperTriMat operator*(const DoubleUpperTriMat& a,
                                                       const DoubleUpperTriMat& b);
[[nodiscard]] KNOTWORK_API DoubleUpperTriMat operator/(const DoubleUpperTriMat& a,
                                                       const DoubleUpperTriMat& b);
/// @return new matrix m(i, j) op x or x op m(i, j); division by a scalar is true division.
[[nodiscard]] KNOTWORK_API DoubleUpperTriMat operator*(const DoubleUpperTriMat& m, double x);
[[nodiscard]] KNOTWORK_API DoubleUpperTriMat operator*(double x, const DoubleUpperTriMat& m);
[[nodiscard]] KNOTWORK_API DoubleUpperTriMat operator/(const DoubleUpperTriMat& m, double x);
/// @return new matrix -m(i, j) of the stored elements.
[[nodiscard]] KNOTWORK_API DoubleUpperTriMat operator-(const DoubleUpperTriMat& m);
/// @return new matrix |m(i, j)|.
[[nodiscard]] KNOTWORK_API DoubleUpperTriMat abs(const DoubleUpperTriMat& m);
/// @return view on m as its transpose.
[[nodiscard]] KNOTWORK_API DoubleLowerTriMat transpose(const DoubleUpperTriMat& m);

/// @return new vector m v; every sum runs over the stored elements in index order from 0.0. Reports
/// 0x4014 unless v.length() == m.cols(); missing elements then count as 0.
[[nodiscard]] KNOTWORK_API DoubleVec product(const DoubleUpperTriMat& m, const DoubleVec& v);
/// @return new vector v' m, likewise. Reports 0x4015 unless v.length() == m.rows().
[[nodiscard]] KNOTWORK_API DoubleVec product(const DoubleVec& v, const DoubleUpperTriMat& m);

/// Writes the matrix with `printOn`, reads it with `scanFrom`; @return the stream.
KNOTWORK_API std::ostream& operator<<(std::ostream& out, const DoubleUpperTriMat& m);
KNOTWORK_API std::istream& operator>>(std::istream& in, DoubleUpperTriMat& m);
