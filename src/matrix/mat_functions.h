// SPDX-License-Identifier: MIT
// Functions of whole general matrices, written once for both element types.
#pragma once

#include <algorithm>
#include <limits>

#include "knotwork/vector/math_codes.h"
#include "matrix/blocked_product.h"
#include "vector/math_report.h"
#include "vector/memory_watch.h"
#include "vector/shared_block.h"
#include "vector/vec_functions.h"

namespace knotwork::detail {

template <class Mat>
using VectorOf = typename Mat::vector_type;

// ---- Shapes -------------------------------------------------------------------------------------

/// rows * cols; 0, with a report, if that is more than a vector can have.
inline unsigned elementCount(unsigned rows, unsigned cols) {
  const auto count = static_cast<unsigned long long>(rows) * cols;
  if (count <= std::numeric_limits<unsigned>::max()) return static_cast<unsigned>(count);
  reportOutOfMemory();
  return 0;
}

template <class A, class B>
bool sameShape(const A& a, const B& b) {
  return a.rows() == b.rows() && a.cols() == b.cols();
}

/// Reports 0x4004 unless the shapes are equal.
template <class A, class B>
void shapeCheck(const A& a, const B& b) {
  if (sameShape(a, b)) return;
  raiseMathErrorCode(kMatrixSizesDiffer, a.rows(), a.cols(), b.rows(), b.cols());
}

/// The vector as a matrix of the given dimensions, shortened or filled up with 0 where a report of
/// differing sizes was survived, so that every element that the matrix claims exists.
template <class Mat>
Mat wrap(VectorOf<Mat> v, unsigned rows, unsigned cols) {
  const unsigned count = elementCount(rows, cols);
  v.resize(count);
  return v.length() == count ? Mat(v, rows, cols) : Mat();
}

/// m, or where its vector is too short for its dimensions, a filled-up copy.
template <class Mat>
Mat complete(const Mat& m) {
  const auto count = static_cast<unsigned long long>(m.rows()) * m.cols();
  return m.dataVec().length() >= count ? m : wrap<Mat>(m.dataVec(), m.rows(), m.cols());
}

// ---- Element by element -------------------------------------------------------------------------

/// f of both element vectors as a matrix of a's dimensions; 0 x 0 where there was no memory for it.
template <class Mat, class F>
Mat combineMatrices(const Mat& a, const Mat& b, F f) {
  shapeCheck(a, b);
  const MemoryWatch memory;
  const VectorOf<Mat> v = f(a.dataVec(), b.dataVec());
  return memory.ranOut() ? Mat() : wrap<Mat>(v, a.rows(), a.cols());
}

/// The vector made of m's elements, one of each, as a matrix of m's dimensions; 0 x 0 where there
/// was no memory for it.
template <class Mat>
Mat shapedLike(const Mat& m, const VectorOf<Mat>& v) {
  return v.length() < m.dataVec().length() ? Mat() : wrap<Mat>(v, m.rows(), m.cols());
}

// ---- Products -----------------------------------------------------------------------------------

template <class Mat>
auto gridOf(const Mat& m) {
  const std::ptrdiff_t stride = m.dataVec().stride();
  return Grid<const ElementOf<Mat>>{m.data(), stride,
                                    stride * static_cast<std::ptrdiff_t>(m.rows())};
}

/// Reports 0x4014 unless m v exists.
template <class Mat>
void checkProduct(const Mat& m, const VectorOf<Mat>& v) {
  if (m.cols() == v.length()) return;
  raiseMathErrorCode(kNoMatrixVectorProduct, Mat::className, m.rows(), m.cols(), v.length());
}

/// Reports 0x4015 unless v' m exists.
template <class Mat>
void checkProduct(const VectorOf<Mat>& v, const Mat& m) {
  if (v.length() == m.rows()) return;
  raiseMathErrorCode(kNoVectorMatrixProduct, v.length(), Mat::className, m.rows(), m.cols());
}

/// Reports 0x4016 unless the inner dimensions of a product are equal.
template <class Mat>
void checkProduct(unsigned rows, unsigned leftDepth, unsigned rightDepth, unsigned cols) {
  if (leftDepth == rightDepth) return;
  raiseMathErrorCode(kNoMatrixProduct, Mat::className, rows, leftDepth, rightDepth, cols);
}

/// The depth of dot products of two vectors: the shorter length. Where a report was survived, each
/// of the `count` dot products reports its lengths, too.
template <class Vec>
unsigned dotDepth(unsigned count, unsigned left, unsigned right) {
  for (; left != right && count > 0; --count) {
    raiseMathError(recordOf<Vec>(kLengthMismatch), Vec::className, left, right);
  }
  return std::min(left, right);
}

/// a b for two grids, as a rows x cols matrix of dot products of vectors of the given lengths.
template <class Mat>
Mat productOf(unsigned rows, unsigned cols, unsigned left, unsigned right,
              Grid<const ElementOf<Mat>> a, Grid<const ElementOf<Mat>> b) {
  Mat result(rows, cols, 0);
  const unsigned depth = dotDepth<VectorOf<Mat>>(result.dataVec().length(), left, right);
  blockedProduct(result.rows(), result.cols(), depth, a, b, result.data());
  return result;
}

template <class Mat>
Mat product(const Mat& left, const Mat& right) {
  checkProduct<Mat>(left.rows(), left.cols(), right.rows(), right.cols());
  const Mat a = complete(left);
  const Mat b = complete(right);
  return productOf<Mat>(a.rows(), b.cols(), a.cols(), b.rows(), gridOf(a), gridOf(b));
}

template <class Mat>
Mat transposeProduct(const Mat& left, const Mat& right) {
  checkProduct<Mat>(left.cols(), left.rows(), right.rows(), right.cols());
  const Mat a = complete(left);
  const Mat b = complete(right);
  return productOf<Mat>(a.cols(), b.cols(), b.rows(), a.rows(), gridOf(a).transposed(), gridOf(b));
}

template <class Mat>
Mat transProduct(const Mat& left, const Mat& right) {
  checkProduct<Mat>(left.rows(), left.cols(), right.cols(), right.rows());
  const Mat a = complete(left);
  const Mat b = complete(right);
  return productOf<Mat>(a.rows(), b.rows(), b.cols(), a.cols(), gridOf(a), gridOf(b).transposed());
}

template <class Mat>
VectorOf<Mat> product(const Mat& matrix, const VectorOf<Mat>& v) {
  checkProduct(matrix, v);
  const Mat m = complete(matrix);
  VectorOf<Mat> result(m.rows(), 0);
  const unsigned depth = dotDepth<VectorOf<Mat>>(result.length(), m.cols(), v.length());
  addColumns(result.length(), depth, gridOf(m), runOf(v), result.data());
  return result;
}

template <class Mat>
VectorOf<Mat> product(const VectorOf<Mat>& v, const Mat& matrix) {
  checkProduct(v, matrix);
  const Mat m = complete(matrix);
  VectorOf<Mat> result(m.cols(), 0);
  const unsigned depth = dotDepth<VectorOf<Mat>>(result.length(), v.length(), m.rows());
  addColumnDots(depth, result.length(), runOf(v), gridOf(m), result.data());
  return result;
}

template <class Mat>
Mat transpose(const Mat& matrix) {
  const Mat m = complete(matrix);
  Mat result(m.cols(), m.rows());
  for (int i = 0; i < static_cast<int>(result.cols()); ++i) result.col(i) = m.row(i);
  return result;
}

/// Rows or columns of a Kronecker product; more than fit an integer are more than memory has.
inline unsigned timesDimension(unsigned a, unsigned b) {
  const auto product = static_cast<unsigned long long>(a) * b;
  constexpr unsigned long long kMost = std::numeric_limits<unsigned>::max();
  return static_cast<unsigned>(std::min(product, kMost));
}

template <class Mat>
Mat kronecker(const Mat& left, const Mat& right) {
  const Mat a = complete(left);
  const Mat b = complete(right);
  Mat result(timesDimension(a.rows(), b.rows()), timesDimension(a.cols(), b.cols()));
  for (int column = 0; column < static_cast<int>(result.cols()); ++column) {
    const int width = static_cast<int>(b.cols());
    const auto below = result.col(column);
    const auto source = b.col(column % width);
    for (int i = 0; i < static_cast<int>(a.rows()); ++i) {
      auto block = below.slice(i * static_cast<int>(b.rows()), b.rows(), 1);
      kernels<ElementOf<Mat>>().multiplyScalar(b.rows(), runOf(block), runOf(source),
                                               a(i, column / width));
    }
  }
  return result;
}

}  // namespace knotwork::detail
