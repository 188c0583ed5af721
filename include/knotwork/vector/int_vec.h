// SPDX-License-Identifier: MIT
// Vectors of int.
#pragma once

#include "knotwork/vector/strided_vec.h"

extern template class knotwork::StridedVec<IntVec, int>;

/// A dense vector of int: a view on shared storage. Arithmetic wraps modulo 2^32. See StridedVec
/// for what it shares with the other vectors.
class KNOTWORK_API IntVec : public knotwork::StridedVec<IntVec, int> {
 public:
  /// An empty vector.
  IntVec();
  /// n elements with unspecified values.
  explicit IntVec(unsigned n);
  /// n elements, each `value`.
  IntVec(unsigned n, int value);
  /// n elements: first, then each the wrapping sum of the one before and `increment`.
  IntVec(unsigned n, int first, int increment);
  /// A copy of p[0] to p[n - 1].
  IntVec(const int* p, unsigned n);
  /// Another view on v's elements, not a copy.
  IntVec(const IntVec& v);
  ~IntVec();
  /// New vector of the picked elements, in the pick's order.
  IntVec(const IntVecPick& pick);
  /// New vector of each element truncated toward zero; one beyond the range of int
  /// gives the least int.
  explicit IntVec(const DoubleVec& v);
  /// @return new vector of the same values.
  operator DoubleVec() const;

  /// Copies v's values into the existing elements, through a copy of v where the two share storage.
  /// Reports 0x300F if the lengths differ.
  IntVec& operator=(const IntVec& v);
  /// Sets every element to x.
  IntVec& operator=(int x);
  /// Copies the picked values into the existing elements. Reports 0x300F, in the pick's name, if
  /// the lengths differ.
  IntVec& operator=(const IntVecPick& pick);

  /// @return view on the elements that `indices` lists; indices are not checked.
  IntVecPick vecPick(const IntVec& indices);

  static const char className[];
  static const unsigned short origin;
  /// Elements printed on a line; see `setFormatting`.
  static int numberPerLine;

 private:
  friend class knotwork::StridedVec<IntVec, int>;
  KNOTWORK_LOCAL IntVec(const IntVec& v, int first, unsigned n, int stride);
};

/// @return new vector a[i] op b[i], as long as b. Report 0x300F if the lengths differ; should the
/// handler return, elements of b without a partner give 0.
[[nodiscard]] KNOTWORK_API IntVec operator+(const IntVec& a, const IntVec& b);
[[nodiscard]] KNOTWORK_API IntVec operator-(const IntVec& a, const IntVec& b);
[[nodiscard]] KNOTWORK_API IntVec operator*(const IntVec& a, const IntVec& b);
/// @return new vector v[i] op s.
[[nodiscard]] KNOTWORK_API IntVec operator+(const IntVec& v, int s);
[[nodiscard]] KNOTWORK_API IntVec operator*(const IntVec& v, int s);
/// @return new vector -v[i].
[[nodiscard]] KNOTWORK_API IntVec operator-(const IntVec& v);

/// @return sum of a[i] b[i], wrapping in the element type. Reports 0x300F if the lengths differ.
[[nodiscard]] KNOTWORK_API int dot(const IntVec& a, const IntVec& b);
/// @return sum of the elements, wrapping in the element type.
[[nodiscard]] KNOTWORK_API int sum(const IntVec& v);
/// @return product of the elements, wrapping in the element type; 1 for an empty vector.
[[nodiscard]] KNOTWORK_API int prod(const IntVec& v);
/// @return index of the first largest (smallest) element. Report 0x3011, a warning, and return -1
/// for an empty vector.
[[nodiscard]] KNOTWORK_API int maxIndex(const IntVec& v);
[[nodiscard]] KNOTWORK_API int minIndex(const IntVec& v);
/// @return the element at `maxIndex` (`minIndex`); 0 for an empty vector, with that function's
/// report.
[[nodiscard]] KNOTWORK_API int maxValue(const IntVec& v);
[[nodiscard]] KNOTWORK_API int minValue(const IntVec& v);
/// @return new vector of absolute values; that of the least value wraps to itself.
[[nodiscard]] KNOTWORK_API IntVec abs(const IntVec& v);
/// @return new vector of the running sums v[0] + ... + v[i].
[[nodiscard]] KNOTWORK_API IntVec cumsum(const IntVec& v);
/// @return new vector of v[0] and the differences v[i] - v[i - 1].
[[nodiscard]] KNOTWORK_API IntVec delta(const IntVec& v);
/// @return view on v backwards.
[[nodiscard]] KNOTWORK_API IntVec reverse(const IntVec& v);

/// Writes the vector with `printOn`, reads it with `scanFrom`; @return the stream.
KNOTWORK_API std::ostream& operator<<(std::ostream& out, const IntVec& v);
KNOTWORK_API std::istream& operator>>(std::istream& in, IntVec& v);
