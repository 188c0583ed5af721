// SPDX-License-Identifier: MIT
// Vectors of double, their mathematics and their tolerance predicates.
#pragma once

#include "knotwork/vector/strided_vec.h"

extern template class knotwork::StridedVec<DoubleVec, double>;

/// A dense vector of double: a view on shared storage. See StridedVec for what it shares with the
/// integer vectors.
class KNOTWORK_API DoubleVec : public knotwork::StridedVec<DoubleVec, double> {
 public:
  /// An empty vector.
  DoubleVec();
  /// n elements with unspecified values.
  explicit DoubleVec(unsigned n);
  /// n elements, each `value`.
  DoubleVec(unsigned n, double value);
  /// n elements: first, then each the rounded sum of the one before and `increment`.
  DoubleVec(unsigned n, double first, double increment);
  /// A copy of p[0] to p[n - 1].
  DoubleVec(const double* p, unsigned n);
  /// Another view on v's elements, not a copy.
  DoubleVec(const DoubleVec& v);
  ~DoubleVec();
  /// New vector of the picked elements, in the pick's order.
  DoubleVec(const DoubleVecPick& pick);

  /// Copies v's values into the existing elements, through a copy of v where the two share storage.
  /// Reports 0x300F if the lengths differ.
  DoubleVec& operator=(const DoubleVec& v);
  /// Sets every element to x.
  DoubleVec& operator=(double x);
  /// Copies the picked values into the existing elements. Reports 0x300F, in the pick's name, if
  /// the lengths differ.
  DoubleVec& operator=(const DoubleVecPick& pick);

  /// @return view on the elements that `indices` lists; indices are not checked.
  DoubleVecPick vecPick(const IntVec& indices);

  /// @return new vector of f(x) for every element x, in index order.
  DoubleVec apply(double (*f)(double)) const;

  /// @return Euclidean length, 0 for an empty vector; neither tiny nor huge elements make it under-
  /// or overflow before the result does.
  ///
  /// Source: C. L. Lawson et al., Basic Linear Algebra Subprograms (1979), the four-phase DNRM2
  /// with cutlo = 8.232e-11 and cuthi = 1.304e19.
  double vecLen() const;
  /// Scales the vector to unit length through the reciprocal of its length.
  /// @return 1, or 0 for a vector of length 0 or NaN, which stays as it is.
  int normalise();

  /// "Within tol of c" means |x - c| <= tol; a NaN is neither within nor beyond any tolerance.
  /// @return 1 if every element is within tol of 0 (1 for an empty vector), else 0.
  int isZero(double tol) const;
  /// @return 1 if every element is within tol of value (1 for an empty vector), else 0.
  int isEqual(double value, double tol) const;
  /// @return number of elements within tol of 0.
  int countZero(double tol) const;
  /// @return number of elements within tol of value.
  int countValue(double value, double tol) const;
  /// Sets every element within tol of 0 to +0.
  void clampZero(double tol);
  /// @return ascending indices of the elements within tol of 0.
  IntVec zeroIndex(double tol) const;
  /// @return ascending indices of the elements with |x| > tol.
  IntVec nonZeroIndex(double tol) const;
  /// @return ascending indices of the elements within tol of value.
  IntVec valueIndex(double value, double tol) const;
  /// @return ascending indices of the elements with |x - value| > tol.
  IntVec nonValueIndex(double value, double tol) const;

  static const char className[];
  static const unsigned short origin;
  /// Elements printed on a line; see `setFormatting`.
  static int numberPerLine;

 private:
  friend class knotwork::StridedVec<DoubleVec, double>;
  KNOTWORK_LOCAL DoubleVec(const DoubleVec& v, int first, unsigned n, int stride);
  KNOTWORK_LOCAL DoubleVec(RWBlock* block, double* start, unsigned n, int stride);
};

/// @return new vector a[i] op b[i], as long as b. Report 0x300F if the lengths differ; should the
/// handler return, elements of b without a partner give 0.
[[nodiscard]] KNOTWORK_API DoubleVec operator+(const DoubleVec& a, const DoubleVec& b);
[[nodiscard]] KNOTWORK_API DoubleVec operator-(const DoubleVec& a, const DoubleVec& b);
[[nodiscard]] KNOTWORK_API DoubleVec operator*(const DoubleVec& a, const DoubleVec& b);
[[nodiscard]] KNOTWORK_API DoubleVec operator/(const DoubleVec& a, const DoubleVec& b);
/// @return new vector v[i] op s; division by a scalar is true division here.
[[nodiscard]] KNOTWORK_API DoubleVec operator+(const DoubleVec& v, double s);
[[nodiscard]] KNOTWORK_API DoubleVec operator*(const DoubleVec& v, double s);
[[nodiscard]] KNOTWORK_API DoubleVec operator/(const DoubleVec& v, double s);
/// @return new vector s op v[i].
[[nodiscard]] KNOTWORK_API DoubleVec operator-(double s, const DoubleVec& v);
[[nodiscard]] KNOTWORK_API DoubleVec operator/(double s, const DoubleVec& v);
/// @return new vector -v[i].
[[nodiscard]] KNOTWORK_API DoubleVec operator-(const DoubleVec& v);

/// @return sum of a[i] b[i] in index order from 0.0. Reports 0x300F if the lengths differ.
[[nodiscard]] KNOTWORK_API double dot(const DoubleVec& a, const DoubleVec& b);
/// @return sum of the elements in index order from 0.0.
[[nodiscard]] KNOTWORK_API double sum(const DoubleVec& v);
/// @return product of the elements in index order from 1.0.
[[nodiscard]] KNOTWORK_API double prod(const DoubleVec& v);
/// @return sum over length; NaN for an empty vector, without a report.
[[nodiscard]] KNOTWORK_API double mean(const DoubleVec& v);
/// @return population variance: the sum of squared deviations from the mean, over the length.
/// Reports 0x3009 for fewer than two elements.
[[nodiscard]] KNOTWORK_API double variance(const DoubleVec& v);
/// @return index of the first largest (smallest) element; a NaN is chosen only in place 0. Report
/// 0x3011, a warning, and return -1 for an empty vector.
[[nodiscard]] KNOTWORK_API int maxIndex(const DoubleVec& v);
[[nodiscard]] KNOTWORK_API int minIndex(const DoubleVec& v);
/// @return the element at `maxIndex` (`minIndex`); 0 for an empty vector, with that function's
/// report.
[[nodiscard]] KNOTWORK_API double maxValue(const DoubleVec& v);
[[nodiscard]] KNOTWORK_API double minValue(const DoubleVec& v);
/// @return new vector of the running sums v[0] + ... + v[i].
[[nodiscard]] KNOTWORK_API DoubleVec cumsum(const DoubleVec& v);
/// @return new vector of v[0] and the differences v[i] - v[i - 1].
[[nodiscard]] KNOTWORK_API DoubleVec delta(const DoubleVec& v);
/// @return view on v backwards.
[[nodiscard]] KNOTWORK_API DoubleVec reverse(const DoubleVec& v);

/// @return new vector of the C library's function of each element; domain errors give its NaN or
/// infinity, without a report.
[[nodiscard]] KNOTWORK_API DoubleVec abs(const DoubleVec& v);
[[nodiscard]] KNOTWORK_API DoubleVec acos(const DoubleVec& v);
[[nodiscard]] KNOTWORK_API DoubleVec asin(const DoubleVec& v);
[[nodiscard]] KNOTWORK_API DoubleVec atan(const DoubleVec& v);
[[nodiscard]] KNOTWORK_API DoubleVec ceil(const DoubleVec& v);
[[nodiscard]] KNOTWORK_API DoubleVec cos(const DoubleVec& v);
[[nodiscard]] KNOTWORK_API DoubleVec cosh(const DoubleVec& v);
[[nodiscard]] KNOTWORK_API DoubleVec exp(const DoubleVec& v);
[[nodiscard]] KNOTWORK_API DoubleVec floorinline(const DoubleVec& v);
[[nodiscard]] KNOTWORK_API DoubleVec log(const DoubleVec& v);
[[nodiscard]] KNOTWORK_API DoubleVec log10(const DoubleVec& v);
[[nodiscard]] KNOTWORK_API DoubleVec sin(const DoubleVec& v);
[[nodiscard]] KNOTWORK_API DoubleVec sinh(const DoubleVec& v);
[[nodiscard]] KNOTWORK_API DoubleVec sqrt(const DoubleVec& v);
[[nodiscard]] KNOTWORK_API DoubleVec tan(const DoubleVec& v);
[[nodiscard]] KNOTWORK_API DoubleVec tanh(const DoubleVec& v);
/// @return new vector of atan2(a[i], b[i]), angles in radians. Reports 0x300F if the lengths
/// differ.
[[nodiscard]] KNOTWORK_API DoubleVec atan2(const DoubleVec& a, const DoubleVec& b);
/// @return new vector of a[i] to the power b[i]. Reports 0x300F if the lengths differ.
[[nodiscard]] KNOTWORK_API DoubleVec pow(const DoubleVec& a, const DoubleVec& b);

/// Writes the vector with `printOn`, reads it with `scanFrom`; @return the stream.
KNOTWORK_API std::ostream& operator<<(std::ostream& out, const DoubleVec& v);
KNOTWORK_API std::istream& operator>>(std::istream& in, DoubleVec& v);
