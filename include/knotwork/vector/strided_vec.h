// SPDX-License-Identifier: MIT
// What the three vector classes share: views on shared element storage.
//
// <cmath> comes before the vectors' own sqrt, abs, ...: seen after an overload of their names, the
// C library's functions would no longer be built into the compiler (GCC), for all the code that
// follows.
#pragma once

#include <cmath>
#include <concepts>
#include <iosfwd>

#include "knotwork/export.h"
#include "knotwork/fwd.h"
#include "knotwork/vector/rw_block.h"

namespace knotwork {

/// A strided view on a shared block of elements; `Vec` is the final class, `T` its element type.
///
/// Copy construction, `slice` and `reference` give another view on the same elements; assignment
/// copies values into the existing elements, which every view on them sees; `copy`, `deepCopy`,
/// `deepenShallowCopy` and a change of size make storage of the vector's own. When memory cannot be
/// had, 0x3008 is reported; should the handler return, a new vector is empty and a vector that was
/// to change keeps what it has.
///
/// Reports carry the final class's name and its origin tag. Where lengths differ and the handler
/// returns, an operation runs over the right operand's length as far as the left one goes.
template <class Vec, class T>
class KNOTWORK_API StridedVec {
 public:
  using value_type = T;

  /// Makes this another view on v's elements, letting go of its own.
  Vec& reference(const Vec& v);
  /// Gives the vector contiguous storage of its own, unless it has that already.
  void deepenShallowCopy();
  /// @return new vector with the same elements.
  [[nodiscard]] Vec deepCopy() const;
  /// @return new vector with the same elements.
  [[nodiscard]] Vec copy() const;
  /// Changes the length to n in storage of its own, keeping the leading elements and setting new
  /// ones to 0. The same length changes nothing.
  void resize(unsigned n);
  /// Changes the length to n in storage of its own with unspecified elements. The same length
  /// changes nothing.
  void reshape(unsigned n);
  /// @return view on elements first, first + stride, ..., n of them. Nothing is checked; see
  /// `sliceCheck`.
  [[nodiscard]] Vec slice(int first, unsigned n, int stride) const;

  /// Element i. Reports 0x3005 if i is not in [0, length()); the access is made all the same.
  KNOTWORK_TEMPLATE_API T& operator[](int i) {
    boundsCheck(i);
    return (*this)(i);
  }
  KNOTWORK_TEMPLATE_API T operator[](int i) const {
    boundsCheck(i);
    return (*this)(i);
  }
  /// Element i, unchecked.
  KNOTWORK_TEMPLATE_API T& operator()(int i) {
    return start_[static_cast<std::ptrdiff_t>(i) * elementStride_];
  }
  KNOTWORK_TEMPLATE_API T operator()(int i) const {
    return start_[static_cast<std::ptrdiff_t>(i) * elementStride_];
  }
  /// The i-th element of storage from the view's start on, whatever the stride; unchecked.
  KNOTWORK_TEMPLATE_API T& sub(int i) { return start_[i]; }
  KNOTWORK_TEMPLATE_API T sub(int i) const { return start_[i]; }
  /// @return address of element 0; null for an empty vector made by length.
  KNOTWORK_TEMPLATE_API T* data() { return start_; }
  KNOTWORK_TEMPLATE_API const T* data() const { return start_; }
  /// @return number of elements.
  KNOTWORK_TEMPLATE_API unsigned length() const { return len_; }
  /// @return distance between consecutive elements in storage; may be negative or 0.
  KNOTWORK_TEMPLATE_API int stride() const { return elementStride_; }

  /// Reports 0x3005 unless 0 <= i < length().
  KNOTWORK_TEMPLATE_API void boundsCheck(int i) const {
    if (i < 0 || i >= static_cast<int>(len_)) reportIndex(i);
  }
  /// Reports 0x300F unless length() is n.
  KNOTWORK_TEMPLATE_API void lengthCheck(unsigned n) const {
    if (len_ != n) reportLength(n);
  }
  /// Reports 0x300C unless the first and the last element of the slice lie in the vector; a slice
  /// of no elements is always accepted.
  void sliceCheck(int first, unsigned n, int stride) const;
  /// Reports 0x300D unless the stride is 1.
  void strideCheck() const;
  /// Reports 0x3011, a warning that names the function `fname`.
  void emptyErr(const char* fname) const;

  /// Element-wise, in index order and in place. Report 0x300F if the lengths differ.
  Vec& operator+=(const Vec& v);
  Vec& operator-=(const Vec& v);
  Vec& operator*=(const Vec& v);
  /// Integers divide truncating toward zero.
  Vec& operator/=(const Vec& v);
  /// Every element in place; `-=` adds the negated value.
  Vec& operator+=(T x);
  Vec& operator-=(T x);
  Vec& operator*=(T x);
  /// Divides integers by x; multiplies doubles by the rounded reciprocal 1 / x.
  Vec& operator/=(T x);
  /// Adds 1 to every element.
  Vec& operator++();
  /// Subtracts 1 from every element.
  Vec& operator--();

  /// @return 1 if the lengths are equal and every pair of elements compares equal, else 0.
  int operator==(const StridedVec& v) const;
  /// @return the negation of `==`.
  KNOTWORK_TEMPLATE_API int operator!=(const StridedVec& v) const { return !(*this == v); }

  /// @return 1 if every element equals value (1 for an empty vector), else 0.
  int isEqual(T value) const requires std::integral<T>;
  /// @return number of elements equal to value.
  int countValue(T value) const requires std::integral<T>;
  /// @return ascending indices of the elements equal to value.
  IntVec valueIndex(T value) const requires std::integral<T>;
  /// @return ascending indices of the elements not equal to value.
  IntVec nonValueIndex(T value) const requires std::integral<T>;
  /// @return ascending indices of the elements strictly less than value.
  ///
  /// Index lists are slices of a block as long as this vector.
  IntVec lessIndex(T value) const;

  /// Sets how many elements the class prints on a line; values below 1 are repaired to 5 by the
  /// next print. @return the previous number.
  static int setFormatting(int n);
  /// Writes "[ 1 2 3 ]", with line breaks when there are more elements than go on one line.
  /// Elements are written with the stream's own settings, characters as numbers.
  void printOn(std::ostream& out) const;
  /// Reads "[ 1 2 3 ]" or bare numbers up to the first thing that is none, and takes their count as
  /// the length. While they fit, values go into the existing storage. A malformed element leaves
  /// the stream failed and the elements read so far.
  void scanFrom(std::istream& in);

 protected:
  StridedVec();
  explicit StridedVec(unsigned n);
  StridedVec(unsigned n, T value);
  StridedVec(unsigned n, T first, T increment);
  StridedVec(const T* p, unsigned n);
  StridedVec(const StridedVec& v);
  StridedVec(const StridedVec& v, int first, unsigned n, int stride);
  StridedVec(RWBlock* block, T* start, unsigned n, int stride);
  ~StridedVec();
  StridedVec& operator=(const StridedVec&) = delete;

  Vec& assign(const Vec& v);
  Vec& fill(T x);

  RWBlock* block_;
  T* start_;
  unsigned len_;
  int elementStride_;

 private:
  KNOTWORK_TEMPLATE_API const Vec& self() const { return static_cast<const Vec&>(*this); }
  KNOTWORK_TEMPLATE_API Vec& self() { return static_cast<Vec&>(*this); }
  void reportIndex(int i) const;
  void reportLength(unsigned n) const;
  KNOTWORK_LOCAL bool storeScanned(unsigned count, T value);
};

}  // namespace knotwork
