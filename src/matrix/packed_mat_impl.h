// SPDX-License-Identifier: MIT
// Bodies of PackedMat's members and the functions of packed matrices, for the sources of the three
// classes.
#pragma once

#include <algorithm>
#include <limits>

#include "knotwork/matrix/packed_mat.h"
#include "matrix/mat_functions.h"
#include "matrix/mat_text.h"
#include "vector/memory_watch.h"

namespace knotwork::detail {

// ---- Sizes --------------------------------------------------------------------------------------

/// n (n + 1) / 2, as far as it matters.
inline unsigned long long packedCount(unsigned n) {
  return static_cast<unsigned long long>(n) * (static_cast<unsigned long long>(n) + 1) / 2;
}

/// The length of an order's vector; 0, with a report, if that is more than a vector can have.
inline unsigned packedLength(unsigned n) {
  if (packedCount(n) <= std::numeric_limits<unsigned>::max()) {
    return static_cast<unsigned>(packedCount(n));
  }
  reportOutOfMemory();
  return 0;
}

/// The order of a matrix asked for as rows x cols. Reports 0x400D unless they are equal.
inline unsigned squareOrder(unsigned rows, unsigned cols) {
  if (rows != cols) raiseMathErrorCode(kMatrixNotSquare, rows, cols);
  return cols;
}

/// The vector as a matrix of order n, shortened or filled up with 0 where a report of differing
/// sizes was survived.
template <class Mat>
Mat packed(DoubleVec v, unsigned n) {
  const unsigned length = packedLength(n);
  v.resize(length);
  return v.length() == packedCount(n) ? Mat(v, n, n) : Mat();
}

/// The elements of m as a matrix of another class; shared unless m's vector has the wrong length.
template <class Mat, class Other>
Mat packedAs(const Other& m) {
  return packed<Mat>(m.dataVec(), m.rows());
}

/// The vector made of m's elements, one of each, as a matrix of m's class and order; 0 x 0 where
/// there was no memory for it.
template <class Mat>
Mat packedLike(const Mat& m, const DoubleVec& v) {
  return v.length() < m.dataVec().length() ? Mat() : packed<Mat>(v, m.rows());
}

template <class Mat, class F>
Mat combinePacked(const Mat& a, const Mat& b, F f) {
  shapeCheck(a, b);
  const MemoryWatch memory;
  const DoubleVec v = f(a.dataVec(), b.dataVec());
  return memory.ranOut() ? Mat() : packed<Mat>(v, a.rows());
}

/// m, or where its vector is too short for its order, a filled-up copy.
template <class Mat>
Mat completePacked(const Mat& m) {
  return m.dataVec().length() >= packedCount(m.rows()) ? m : packedAs<Mat>(m);
}

/// Every element as `val` gives it.
template <class Mat>
DoubleGenMat expanded(const Mat& packedMat) {
  const Mat m = completePacked(packedMat);
  DoubleGenMat full(m.rows(), m.cols(), 0.0);
  for (int j = 0; j < static_cast<int>(full.cols()); ++j) {
    for (int i = 0; i < static_cast<int>(full.rows()); ++i) full(i, j) = m.val(i, j);
  }
  return full;
}

// ---- Products with vectors ----------------------------------------------------------------------

// Packed row r holds elements (r, 0) to (r, r) of a lower triangle L; seen as an upper one, column
// r of its transpose; of a symmetric matrix S, what lies left of the diagonal and, mirrored, above
// it. So a product of either kind of triangle from either side is one of two, L x or x' L, and that
// of a symmetric matrix is L x with the part of x' L that lies above the diagonal. Each row is read
// once, from the first one on; every element of a product is one running sum in index order.

/// The operands, as long as the order says; what a report of differing sizes left missing is 0.
template <class Mat>
struct PackedOperands {
  PackedOperands(const Mat& packedMat, const DoubleVec& v) : m(completePacked(packedMat)), x(v) {
    if (x.length() < m.rows()) x.resize(m.rows());
  }

  /// As many elements as there was memory for.
  DoubleVec zeros() const { return DoubleVec(std::min(m.rows(), x.length()), 0.0); }

  Run<const double> row(int r) const {
    const auto stride = static_cast<std::ptrdiff_t>(m.dataVec().stride());
    return {m.data() + LowerPacking::index(r, 0) * stride, stride};
  }

  const Mat m;
  DoubleVec x;
};

/// sum + row[0] x[0] + ... + row[n - 1] x[n - 1]
inline double addDot(double sum, int n, Run<const double> row, Run<const double> x) {
  for (int j = 0; j < n; ++j) sum += row[j] * x[j];
  return sum;
}

/// y[j] += row[j] x for j < n
inline void addRow(int n, Run<const double> row, double x, double* y) {
  if (row.stride == 1) {
    addColumns(static_cast<std::size_t>(n), 1, Grid<const double>{row.start, 1, 0},
               Run<const double>{&x, 1}, y);
  } else {
    for (int j = 0; j < n; ++j) y[j] += row[j] * x;
  }
}

/// L x: element r is the sum of L(r, j) x(j) over j <= r.
template <class Mat>
DoubleVec timesLower(const Mat& lower, const DoubleVec& v) {
  const PackedOperands<Mat> in(lower, v);
  DoubleVec y = in.zeros();
  for (int r = 0; r < static_cast<int>(y.length()); ++r) {
    y(r) = addDot(0.0, r + 1, in.row(r), runOf(in.x));
  }
  return y;
}

/// x' L: element j is the sum of L(r, j) x(r) over r >= j.
template <class Mat>
DoubleVec lowerTimes(const DoubleVec& v, const Mat& lower) {
  const PackedOperands<Mat> in(lower, v);
  DoubleVec y = in.zeros();
  for (int r = 0; r < static_cast<int>(y.length()); ++r) {
    addRow(r + 1, in.row(r), in.x(r), y.data());
  }
  return y;
}

/// S x: element r is the sum of S(r, j) x(j), first over j <= r, when its own row is read, then one
/// by one as the rows behind it are.
template <class Mat>
DoubleVec timesSymmetric(const Mat& symmetric, const DoubleVec& v) {
  const PackedOperands<Mat> in(symmetric, v);
  DoubleVec y = in.zeros();
  for (int r = 0; r < static_cast<int>(y.length()); ++r) {
    y(r) = addDot(0.0, r + 1, in.row(r), runOf(in.x));
    addRow(r, in.row(r), in.x(r), y.data());
  }
  return y;
}

}  // namespace knotwork::detail

namespace knotwork {

using namespace detail;  // the bodies' helpers

// ---- Members ------------------------------------------------------------------------------------

template <class Mat, class Packing>
PackedMat<Mat, Packing>::PackedMat(unsigned rows, unsigned cols) : order_(squareOrder(rows, cols)) {
  vec_.reshape(packedLength(order_));
  takeOrder(order_);
}

template <class Mat, class Packing>
PackedMat<Mat, Packing>::PackedMat(unsigned rows, unsigned cols, double x) : PackedMat(rows, cols) {
  vec_ = x;
}

template <class Mat, class Packing>
PackedMat<Mat, Packing>::PackedMat(const DoubleVec& v, unsigned rows, unsigned cols)
    : vec_(v), order_(squareOrder(rows, cols)) {
  if (v.length() == packedCount(order_)) return;
  raiseMathErrorCode(kWrongPointCount, v.length(), order_, order_, Mat::className);
}

template <class Mat, class Packing>
PackedMat<Mat, Packing>::PackedMat(const DoubleGenMat& m) : PackedMat(m.rows(), m.cols(), 0.0) {
  if (m.rows() != m.cols()) return;
  const DoubleGenMat full = complete(m);
  for (int j = 0; j < static_cast<int>(std::min(order_, full.cols())); ++j) {
    for (int i = 0; i < static_cast<int>(order_); ++i) {
      if (Packing::inTriangle(i, j)) set(i, j, full(i, j));
    }
  }
}

// A new vector that is shorter than asked for means that there was no memory.
template <class Mat, class Packing>
void PackedMat<Mat, Packing>::takeOrder(unsigned order) {
  order_ = vec_.length() == packedCount(order) ? order : 0;
}

template <class Mat, class Packing>
Mat& PackedMat<Mat, Packing>::reference(const Mat& m) {
  vec_.reference(m.vec_);
  order_ = m.order_;
  return self();
}

template <class Mat, class Packing>
Mat PackedMat<Mat, Packing>::deepCopy() const {
  return packedLike(self(), vec_.deepCopy());
}

template <class Mat, class Packing>
Mat PackedMat<Mat, Packing>::copy() const {
  return deepCopy();
}

template <class Mat, class Packing>
void PackedMat<Mat, Packing>::resize(unsigned rows, unsigned cols) {
  const unsigned order = squareOrder(rows, cols);
  const unsigned length = packedLength(order);
  if (length != packedCount(order)) return;
  vec_.resize(length);
  if (vec_.length() == length) order_ = order;
}

template <class Mat, class Packing>
Mat& PackedMat<Mat, Packing>::zero() {
  vec_ = 0.0;
  return self();
}

template <class Mat, class Packing>
Mat& PackedMat<Mat, Packing>::assign(const Mat& m) {
  shapeCheck(m, self());
  vec_ = m.vec_;
  return self();
}

template <class Mat, class Packing>
double PackedMat<Mat, Packing>::bcset(int i, int j, double x) {
  boundsCheck(i, j);
  if (Packing::kTriangular && !Packing::inTriangle(i, j)) {
    raiseMathErrorCode(kElementNotStored, i, j, Mat::className);
  }
  return set(i, j, x);
}

template <class Mat, class Packing>
void PackedMat<Mat, Packing>::reportElement(int i, int j) const {
  raiseMathErrorCode(kNoSuchElement, i, j, order_, order_);
}

template <class Mat, class Packing>
Mat PackedMat<Mat, Packing>::leadingSubmatrix(int k) const {
  const int most = static_cast<int>(order_);
  if (k < 0 || k > most) raiseMathErrorCode(kNoLeadingSubmatrix, k, order_);
  const auto order = static_cast<unsigned>(std::clamp(k, 0, most));
  const Mat whole = completePacked(self());
  return packed<Mat>(whole.vec_.slice(0, static_cast<unsigned>(packedCount(order)), 1), order);
}

template <class Mat, class Packing>
Mat& PackedMat<Mat, Packing>::operator+=(const Mat& m) {
  shapeCheck(m, self());
  vec_ += m.vec_;
  return self();
}

template <class Mat, class Packing>
Mat& PackedMat<Mat, Packing>::operator-=(const Mat& m) {
  shapeCheck(m, self());
  vec_ -= m.vec_;
  return self();
}

template <class Mat, class Packing>
Mat& PackedMat<Mat, Packing>::operator*=(const Mat& m) {
  shapeCheck(m, self());
  vec_ *= m.vec_;
  return self();
}

template <class Mat, class Packing>
Mat& PackedMat<Mat, Packing>::operator/=(const Mat& m) {
  shapeCheck(m, self());
  vec_ /= m.vec_;
  return self();
}

template <class Mat, class Packing>
Mat& PackedMat<Mat, Packing>::operator*=(double x) {
  vec_ *= x;
  return self();
}

template <class Mat, class Packing>
Mat& PackedMat<Mat, Packing>::operator/=(double x) {
  vec_ /= x;
  return self();
}

template <class Mat, class Packing>
void PackedMat<Mat, Packing>::printOn(std::ostream& out) const {
  const auto width = out.width(0);
  out << Mat::className << ", ";
  printElements(out, width, completePacked(self()));
}

template <class Mat, class Packing>
void PackedMat<Mat, Packing>::scanFrom(std::istream& in) {
  const ScannedMatrix<DoubleVec> text(in);
  if (!text.good()) return;
  if (squareOrder(text.rows(), text.cols()) != text.rows() || !text.isComplete(Mat::className)) {
    return;
  }
  resize(text.rows(), text.cols());
  if (!sameShape(*this, text)) return;
  text.forEach([this](int i, int j, double x) {
    if (Packing::inTriangle(i, j)) set(i, j, x);
  });
}

}  // namespace knotwork
