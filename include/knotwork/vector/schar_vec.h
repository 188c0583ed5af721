// SPDX-License-Identifier: MIT
// Vectors of signed char.
#pragma once

#include "knotwork/vector/strided_vec.h"

extern template class knotwork::StridedVec<SCharVec, signed char>;

/// A dense vector of signed char: a view on shared storage. Arithmetic wraps modulo 256. See
/// StridedVec for what it shares with the other vectors.
class KNOTWORK_API SCharVec : public knotwork::StridedVec<SCharVec, signed char> {
 public:
  /// An empty vector.
  SCharVec();
  /// n elements with unspecified values.
  explicit SCharVec(unsigned n);
  /// n elements, each `value`.
  SCharVec(unsigned n, signed char value);
  /// n elements: first, then each the wrapping sum of the one before and `increment`.
  SCharVec(unsigned n, signed char first, signed char increment);
  /// A copy of p[0] to p[n - 1].
  SCharVec(const signed char* p, unsigned n);
  /// Another view on v's elements, not a copy.
  SCharVec(const SCharVec& v);
  ~SCharVec();
  /// New vector of the picked elements, in the pick's order.
  SCharVec(const SCharVecPick& pick);
  /// New vector of the low 8 bits of each element.
  explicit SCharVec(const IntVec& v);
  /// @return new vector of the same values.
  operator IntVec() const;

  /// Copies v's values into the existing elements, through a copy of v where the two share storage.
  /// Reports 0x300F if the lengths differ.
  SCharVec& operator=(const SCharVec& v);
  /// Sets every element to x.
  SCharVec& operator=(signed char x);
  /// Copies the picked values into the existing elements. Reports 0x300F, in the pick's name, if
  /// the lengths differ.
  SCharVec& operator=(const SCharVecPick& pick);

  /// @return view on the elements that `indices` lists; indices are not checked.
  SCharVecPick vecPick(const IntVec& indices);

  static const char className[];
  static const unsigned short origin;
  /// Elements printed on a line; see `setFormatting`.
  static int numberPerLine;

 private:
  friend class knotwork::StridedVec<SCharVec, signed char>;
  KNOTWORK_LOCAL SCharVec(const SCharVec& v, int first, unsigned n, int stride);
};

/// @return new vector a[i] op b[i], as long as b. Report 0x300F if the lengths differ; should the
/// handler return, elements of b without a partner give 0.
[[nodiscard]] KNOTWORK_API SCharVec operator+(const SCharVec& a, const SCharVec& b);
[[nodiscard]] KNOTWORK_API SCharVec operator-(const SCharVec& a, const SCharVec& b);
[[nodiscard]] KNOTWORK_API SCharVec operator*(const SCharVec& a, const SCharVec& b);
/// @return new vector v[i] op s.
[[nodiscard]] KNOTWORK_API SCharVec operator+(const SCharVec& v, signed char s);
[[nodiscard]] KNOTWORK_API SCharVec operator*(const SCharVec& v, signed char s);
/// @return new vector -v[i].
[[nodiscard]] KNOTWORK_API SCharVec operator-(const SCharVec& v);

/// @return sum of a[i] b[i], wrapping in the element type. Reports 0x300F if the lengths differ.
[[nodiscard]] KNOTWORK_API signed char dot(const SCharVec& a, const SCharVec& b);
/// @return sum of the elements, wrapping in the element type.
[[nodiscard]] KNOTWORK_API signed char sum(const SCharVec& v);
/// @return product of the elements, wrapping in the element type; 1 for an empty vector.
[[nodiscard]] KNOTWORK_API signed char prod(const SCharVec& v);
/// @return index of the first largest (smallest) element. Report 0x3011, a warning, and return -1
/// for an empty vector.
[[nodiscard]] KNOTWORK_API int maxIndex(const SCharVec& v);
[[nodiscard]] KNOTWORK_API int minIndex(const SCharVec& v);
/// @return the element at `maxIndex` (`minIndex`); 0 for an empty vector, with that function's
/// report.
[[nodiscard]] KNOTWORK_API signed char maxValue(const SCharVec& v);
[[nodiscard]] KNOTWORK_API signed char minValue(const SCharVec& v);
/// @return new vector of absolute values; that of the least value wraps to itself.
[[nodiscard]] KNOTWORK_API SCharVec abs(const SCharVec& v);
/// @return new vector of the running sums v[0] + ... + v[i].
[[nodiscard]] KNOTWORK_API SCharVec cumsum(const SCharVec& v);
/// @return new vector of v[0] and the differences v[i] - v[i - 1].
[[nodiscard]] KNOTWORK_API SCharVec delta(const SCharVec& v);
/// @return view on v backwards.
[[nodiscard]] KNOTWORK_API SCharVec reverse(const SCharVec& v);

/// Writes the vector with `printOn`, reads it with `scanFrom`; @return the stream.
KNOTWORK_API std::ostream& operator<<(std::ostream& out, const SCharVec& v);
KNOTWORK_API std::istream& operator>>(std::istream& in, SCharVec& v);
