// SPDX-License-Identifier: MIT
// What the two general matrix classes share: a column-major matrix on an element vector.
#pragma once

#include <cstddef>
#include <iosfwd>

#include "knotwork/export.h"
#include "knotwork/fwd.h"

namespace knotwork {

/// A rows() x cols() matrix whose element (i, j), counted from 0, is element j * rows() + i of a
/// vector; `Mat` is the final class, `Vec` the vector's, `T` the element type.
///
/// Sharing is that of the vectors: copy construction, `reference`, `row`, `col`, `diagonal` and
/// `dataVec` give views on the same elements, through which one can write; assignment copies values
/// into the existing elements; `copy`, `deepCopy` and `deepenShallowCopy` make storage of the
/// matrix's own. Element-wise operations run over the element vectors.
///
/// A check reports and, should the handler return, the operation goes on. When memory cannot be had
/// (or the element count is beyond 32 bits), 0x3008 is reported; a new matrix is then 0 x 0 and one
/// that was to change keeps what it has. Where a constructor was given a vector that is too short,
/// operations on the whole matrix take the missing elements as 0.
template <class Mat, class Vec, class T>
class KNOTWORK_API GenMatBase {
 public:
  using value_type = T;
  using vector_type = Vec;

  /// Makes this another view on m's elements with m's dimensions, letting go of its own.
  Mat& reference(const Mat& m);
  /// @return new matrix with the same elements.
  [[nodiscard]] Mat copy() const;
  /// @return new matrix with the same elements.
  [[nodiscard]] Mat deepCopy() const;
  /// Gives the matrix contiguous storage of its own, unless it has that already.
  KNOTWORK_TEMPLATE_API void deepenShallowCopy() { vec_.deepenShallowCopy(); }
  /// Changes the dimensions, keeping the elements that both shapes have and setting new ones to 0.
  /// The same dimensions change nothing; others give the matrix storage of its own.
  void resize(unsigned rows, unsigned cols);
  /// Sets every element to 0.
  KNOTWORK_TEMPLATE_API Mat& zero() { return fill(T{}); }

  /// @return number of rows.
  KNOTWORK_TEMPLATE_API unsigned rows() const { return rows_; }
  /// @return number of columns.
  KNOTWORK_TEMPLATE_API unsigned cols() const { return cols_; }
  /// @return the element vector; the copy that a non-const matrix gives is a view on it.
  KNOTWORK_TEMPLATE_API const Vec& dataVec() const { return vec_; }
  KNOTWORK_TEMPLATE_API Vec dataVec() { return vec_; }
  /// @return address of element (0, 0).
  KNOTWORK_TEMPLATE_API T* data() { return vec_.data(); }
  KNOTWORK_TEMPLATE_API const T* data() const { return vec_.data(); }

  /// Value of element (i, j), unchecked.
  KNOTWORK_TEMPLATE_API T val(int i, int j) const { return data()[offset(i, j) * vec_.stride()]; }
  KNOTWORK_TEMPLATE_API T operator()(int i, int j) const { return val(i, j); }
  /// Stores x as element (i, j), unchecked. @return x.
  KNOTWORK_TEMPLATE_API T set(int i, int j, T x) { return ref(i, j) = x; }
  /// Element (i, j) itself, unchecked.
  KNOTWORK_TEMPLATE_API T& ref(int i, int j) { return data()[offset(i, j) * vec_.stride()]; }
  KNOTWORK_TEMPLATE_API T& operator()(int i, int j) { return ref(i, j); }

  /// As `val`, `set` and `ref`. Report 0x4005 unless 0 <= i < rows() and 0 <= j < cols(); the
  /// access is made all the same.
  KNOTWORK_TEMPLATE_API T bcval(int i, int j) const {
    boundsCheck(i, j);
    return val(i, j);
  }
  KNOTWORK_TEMPLATE_API T bcset(int i, int j, T x) { return bcref(i, j) = x; }
  KNOTWORK_TEMPLATE_API T& bcref(int i, int j) {
    boundsCheck(i, j);
    return ref(i, j);
  }

  /// Element j * rows() + i of storage from the matrix's start on, whatever the stride; unchecked.
  KNOTWORK_TEMPLATE_API T& sub(int i, int j) { return data()[offset(i, j)]; }
  KNOTWORK_TEMPLATE_API T sub(int i, int j) const { return data()[offset(i, j)]; }

  /// @return view on row i, of length cols(); unchecked.
  [[nodiscard]] Vec row(int i) const;
  /// @return view on column j, of length rows(); unchecked.
  [[nodiscard]] Vec col(int j) const;
  /// @return view on diagonal k: the main one for 0, above it for k > 0, starting at (0, k), below
  /// it for k < 0, starting at (-k, 0); empty if there is none.
  [[nodiscard]] Vec diagonal(int k = 0) const;
  /// As `row`. Reports 0x4006 unless 0 <= i < rows().
  Vec bcrow(int i) const;
  /// As `col`. Reports 0x4007 unless 0 <= j < cols().
  Vec bccol(int j) const;
  /// As `diagonal`. Reports 0x4008, with the negated k, unless k < cols() and -k < rows().
  Vec bcdiagonal(int k = 0) const;

  /// Reports 0x4005 unless 0 <= i < rows() and 0 <= j < cols().
  KNOTWORK_TEMPLATE_API void boundsCheck(int i, int j) const {
    if (static_cast<unsigned>(i) >= rows_ || static_cast<unsigned>(j) >= cols_) reportElement(i, j);
  }

  /// Element-wise and in place. Report 0x4004 if the dimensions differ.
  Mat& operator+=(const Mat& m);
  Mat& operator-=(const Mat& m);
  /// Element by element: no matrix product.
  Mat& operator*=(const Mat& m);
  Mat& operator/=(const Mat& m);
  /// Every element in place, as the vector's operators do it.
  Mat& operator+=(T x);
  Mat& operator-=(T x);
  Mat& operator*=(T x);
  /// Divides integers by x; multiplies doubles by the rounded reciprocal 1 / x.
  Mat& operator/=(T x);
  /// Adds 1 to every element.
  Mat& operator++();
  /// Subtracts 1 from every element.
  Mat& operator--();

  /// @return 1 if the dimensions are equal and every pair of elements compares equal, else 0.
  int operator==(const GenMatBase& m) const;
  /// @return the negation of `==`.
  KNOTWORK_TEMPLATE_API int operator!=(const GenMatBase& m) const { return !(*this == m); }

  /// Writes "2x3 [", then each row on a line of its own, each value in the width that the stream
  /// had on entry and followed by a blank, then "]".
  void printOn(std::ostream& out) const;
  /// Reads what `printOn` writes: the first number found is the row count, the next the column
  /// count; a vector of the elements row by row follows. Reports 0x4017 if their count is wrong;
  /// then, and when the stream failed, the matrix stays as it is. More than a million rows without
  /// columns, which would print as as many empty lines, fail the stream.
  void scanFrom(std::istream& in);

 protected:
  KNOTWORK_TEMPLATE_API GenMatBase() : cols_(0), rows_(0) {}
  GenMatBase(unsigned rows, unsigned cols);
  GenMatBase(unsigned rows, unsigned cols, T x);
  GenMatBase(const Vec& v, unsigned rows, unsigned cols);
  GenMatBase(const T* p, unsigned rows, unsigned cols);
  GenMatBase(const GenMatBase& m) = default;
  ~GenMatBase() = default;
  GenMatBase& operator=(const GenMatBase&) = delete;

  Mat& assign(const Mat& m);
  Mat& fill(T x);

 private:
  KNOTWORK_TEMPLATE_API const Mat& self() const { return static_cast<const Mat&>(*this); }
  KNOTWORK_TEMPLATE_API Mat& self() { return static_cast<Mat&>(*this); }
  KNOTWORK_TEMPLATE_API std::ptrdiff_t offset(int i, int j) const {
    return static_cast<std::ptrdiff_t>(j) * static_cast<std::ptrdiff_t>(rows_) + i;
  }
  KNOTWORK_LOCAL void takeDimensions(unsigned rows, unsigned cols);
  void reportElement(int i, int j) const;

  Vec vec_;
  unsigned cols_;
  unsigned rows_;
};

}  // namespace knotwork
