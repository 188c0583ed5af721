// SPDX-License-Identifier: MIT
// What the triangular and the symmetric matrices share: a square matrix that stores one triangle.
#pragma once

#include <algorithm>
#include <cstddef>
#include <iosfwd>
#include <type_traits>

#include "knotwork/export.h"
#include "knotwork/matrix/double_gen_mat.h"
#include "knotwork/matrix/ro_double_ref.h"
#include "knotwork/vector/double_vec.h"

namespace knotwork {

/// Where an element stands in the packed vector. Every packing appends a row (or column) at its
/// end, so that a leading block is the first part of the vector.
struct KNOTWORK_API LowerPacking {
  static constexpr bool kTriangular = true;  ///< elements outside the triangle are 0
  KNOTWORK_INLINE_API static constexpr bool inTriangle(int i, int j) { return i >= j; }
  /// The lower triangle row by row.
  KNOTWORK_INLINE_API static constexpr std::ptrdiff_t index(int i, int j) {
    return static_cast<std::ptrdiff_t>(i) * (static_cast<std::ptrdiff_t>(i) + 1) / 2 + j;
  }
};

/// The upper triangle column by column.
struct KNOTWORK_API UpperPacking {
  static constexpr bool kTriangular = true;
  KNOTWORK_INLINE_API static constexpr bool inTriangle(int i, int j) { return i <= j; }
  KNOTWORK_INLINE_API static constexpr std::ptrdiff_t index(int i, int j) {
    return LowerPacking::index(j, i);
  }
};

/// One element for (i, j) and (j, i); taken from the lower triangle where there are two.
struct KNOTWORK_API SymmetricPacking {
  static constexpr bool kTriangular = false;
  KNOTWORK_INLINE_API static constexpr bool inTriangle(int i, int j) { return i >= j; }
  KNOTWORK_INLINE_API static constexpr std::ptrdiff_t index(int i, int j) {
    return LowerPacking::index(std::max(i, j), std::min(i, j));
  }
};

/// An n x n matrix of double whose n (n + 1) / 2 stored elements are packed into a vector; `Mat` is
/// the final class.
///
/// Sharing, memory and checks are those of the general matrices, see GenMatBase. Sizes are given as
/// rows and columns; 0x400D is reported unless they are equal, and then the columns count.
/// Element-wise operations run over the packed vectors.
template <class Mat, class Packing>
class KNOTWORK_API PackedMat {
 public:
  using value_type = double;
  using vector_type = DoubleVec;
  /// A triangular matrix has elements that cannot be written.
  using reference_type = std::conditional_t<Packing::kTriangular, RODoubleRef, double&>;

  /// Makes this another view on m's elements with m's order, letting go of its own.
  Mat& reference(const Mat& m);
  /// @return new matrix with the same elements.
  [[nodiscard]] Mat copy() const;
  /// @return new matrix with the same elements.
  [[nodiscard]] Mat deepCopy() const;
  /// Gives the matrix contiguous storage of its own, unless it has that already.
  KNOTWORK_TEMPLATE_API void deepenShallowCopy() { vec_.deepenShallowCopy(); }
  /// Changes the order, keeping the leading block and setting new elements to 0. Reports 0x400D
  /// unless rows == cols.
  void resize(unsigned rows, unsigned cols);
  /// Sets every element to 0.
  Mat& zero();

  /// @return the order.
  KNOTWORK_TEMPLATE_API unsigned rows() const { return order_; }
  KNOTWORK_TEMPLATE_API unsigned cols() const { return order_; }
  /// @return the packed vector; the copy that a non-const matrix gives is a view on it.
  KNOTWORK_TEMPLATE_API const DoubleVec& dataVec() const { return vec_; }
  KNOTWORK_TEMPLATE_API DoubleVec dataVec() { return vec_; }
  /// @return address of the first packed element.
  KNOTWORK_TEMPLATE_API double* data() { return vec_.data(); }
  KNOTWORK_TEMPLATE_API const double* data() const { return vec_.data(); }

  /// Value of element (i, j), 0 if it is not stored; unchecked.
  KNOTWORK_TEMPLATE_API double val(int i, int j) const {
    return Packing::kTriangular && !Packing::inTriangle(i, j) ? 0.0 : stored(i, j);
  }
  KNOTWORK_TEMPLATE_API double operator()(int i, int j) const { return val(i, j); }
  /// Writes x to the packing index of (i, j), unchecked: outside the stored triangle that is the
  /// place of another element. @return x.
  KNOTWORK_TEMPLATE_API double set(int i, int j, double x) { return stored(i, j) = x; }
  /// Element (i, j) itself. That of a triangular matrix may be read-only, and is reported with
  /// 0x4005 unless 0 <= i, j < rows(); that of a symmetric one is unchecked.
  KNOTWORK_TEMPLATE_API reference_type ref(int i, int j) {
    if constexpr (Packing::kTriangular) boundsCheck(i, j);
    return referenceTo(i, j);
  }
  KNOTWORK_TEMPLATE_API reference_type operator()(int i, int j) { return ref(i, j); }

  /// As `val`, `set` and `ref`. Report 0x4005 unless 0 <= i, j < rows(); the access is made all the
  /// same.
  KNOTWORK_TEMPLATE_API double bcval(int i, int j) const {
    boundsCheck(i, j);
    return val(i, j);
  }
  /// Reports 0x4009 if (i, j) is not stored, too.
  double bcset(int i, int j, double x);
  KNOTWORK_TEMPLATE_API reference_type bcref(int i, int j) {
    boundsCheck(i, j);
    return referenceTo(i, j);
  }

  /// Reports 0x4005 unless 0 <= i, j < rows().
  KNOTWORK_TEMPLATE_API void boundsCheck(int i, int j) const {
    const auto n = static_cast<int>(order_);
    if (i < 0 || i >= n || j < 0 || j >= n) reportElement(i, j);
  }

  /// @return view on the leading k x k block. Reports 0x4018 unless 0 <= k <= rows(); k then counts
  /// as the nearest of these.
  Mat leadingSubmatrix(int k) const;

  /// Element-wise and in place. Report 0x4004 if the orders differ.
  Mat& operator+=(const Mat& m);
  Mat& operator-=(const Mat& m);
  /// Element by element: no matrix product.
  Mat& operator*=(const Mat& m);
  Mat& operator/=(const Mat& m);
  /// Every element in place; `/=` multiplies by the rounded reciprocal 1 / x.
  Mat& operator*=(double x);
  Mat& operator/=(double x);

  /// @return 1 if the orders are equal and every pair of elements compares equal, else 0.
  KNOTWORK_TEMPLATE_API int operator==(const PackedMat& m) const {
    return order_ == m.order_ && vec_ == m.vec_;
  }
  /// @return the negation of `==`.
  KNOTWORK_TEMPLATE_API int operator!=(const PackedMat& m) const { return !(*this == m); }

  /// Writes the class name, ", " and all rows in full, as a general matrix does.
  void printOn(std::ostream& out) const;
  /// Reads a full matrix as general ones do and keeps the stored triangle; a symmetric matrix takes
  /// the lower one. Reports 0x400D if its size is not square, else 0x4017 if the count of elements
  /// is wrong; then, and when the stream failed, the matrix stays as it is.
  void scanFrom(std::istream& in);

 protected:
  KNOTWORK_TEMPLATE_API PackedMat() : order_(0) {}
  PackedMat(unsigned rows, unsigned cols);
  PackedMat(unsigned rows, unsigned cols, double x);
  PackedMat(const DoubleVec& v, unsigned rows, unsigned cols);
  explicit PackedMat(const DoubleGenMat& m);
  PackedMat(const PackedMat& m) = default;
  ~PackedMat() = default;
  PackedMat& operator=(const PackedMat&) = delete;

  Mat& assign(const Mat& m);

  DoubleVec vec_;

 private:
  KNOTWORK_TEMPLATE_API const Mat& self() const { return static_cast<const Mat&>(*this); }
  KNOTWORK_TEMPLATE_API Mat& self() { return static_cast<Mat&>(*this); }
  KNOTWORK_TEMPLATE_API double& stored(int i, int j) {
    return data()[Packing::index(i, j) * vec_.stride()];
  }
  KNOTWORK_TEMPLATE_API double stored(int i, int j) const {
    return data()[Packing::index(i, j) * vec_.stride()];
  }
  KNOTWORK_TEMPLATE_API reference_type referenceTo(int i, int j) {
    if constexpr (Packing::kTriangular) {
      return Packing::inTriangle(i, j) ? RODoubleRef(stored(i, j)) : RODoubleRef();
    } else {
      return stored(i, j);
    }
  }
  KNOTWORK_LOCAL void takeOrder(unsigned order);
  void reportElement(int i, int j) const;

  unsigned order_;
};

}  // namespace knotwork
