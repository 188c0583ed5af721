// SPDX-License-Identifier: MIT
// Bodies of GenMatBase's members, for the sources of the two classes that instantiate it.
//
// A matrix is a vector, column by column, and two dimensions. What treats every element alike is
// left to the vector; rows, columns and diagonals are slices of it with another stride. A matrix
// made on a vector of the wrong length keeps it once that was reported, so what counts on all
// elements takes `complete(m)`.
#pragma once

#include <algorithm>

#include "knotwork/matrix/gen_mat_base.h"
#include "matrix/mat_functions.h"
#include "matrix/mat_text.h"

namespace knotwork {

using namespace detail;  // the bodies' helpers

// ---- Construction -------------------------------------------------------------------------------

template <class Mat, class Vec, class T>
GenMatBase<Mat, Vec, T>::GenMatBase(unsigned rows, unsigned cols) : vec_(elementCount(rows, cols)) {
  takeDimensions(rows, cols);
}

template <class Mat, class Vec, class T>
GenMatBase<Mat, Vec, T>::GenMatBase(unsigned rows, unsigned cols, T x)
    : vec_(elementCount(rows, cols), x) {
  takeDimensions(rows, cols);
}

template <class Mat, class Vec, class T>
GenMatBase<Mat, Vec, T>::GenMatBase(const T* p, unsigned rows, unsigned cols)
    : vec_(p, elementCount(rows, cols)) {
  takeDimensions(rows, cols);
}

template <class Mat, class Vec, class T>
GenMatBase<Mat, Vec, T>::GenMatBase(const Vec& v, unsigned rows, unsigned cols)
    : vec_(v), cols_(cols), rows_(rows) {
  const auto count = static_cast<unsigned long long>(rows) * cols;
  if (v.length() == count) return;
  raiseMathErrorCode(kWrongPointCount, v.length(), rows, cols, Mat::className);
}

// Of a new vector: a shorter one than asked for means that there was no memory.
template <class Mat, class Vec, class T>
void GenMatBase<Mat, Vec, T>::takeDimensions(unsigned rows, unsigned cols) {
  const bool complete = vec_.length() == static_cast<unsigned long long>(rows) * cols;
  cols_ = complete ? cols : 0;
  rows_ = complete ? rows : 0;
}

// ---- Sharing and copying ------------------------------------------------------------------------

template <class Mat, class Vec, class T>
Mat& GenMatBase<Mat, Vec, T>::reference(const Mat& m) {
  vec_.reference(m.vec_);
  cols_ = m.cols_;
  rows_ = m.rows_;
  return self();
}

template <class Mat, class Vec, class T>
Mat GenMatBase<Mat, Vec, T>::deepCopy() const {
  return shapedLike(self(), vec_.deepCopy());
}

template <class Mat, class Vec, class T>
Mat GenMatBase<Mat, Vec, T>::copy() const {
  return deepCopy();
}

template <class Mat, class Vec, class T>
void GenMatBase<Mat, Vec, T>::resize(unsigned rows, unsigned cols) {
  if (rows == rows_) {
    // Column by column, the old elements keep their places.
    const unsigned count = elementCount(rows, cols);
    if (count != static_cast<unsigned long long>(rows) * cols) return;
    vec_.resize(count);
    if (vec_.length() == count) cols_ = cols;
    return;
  }
  Mat resized(rows, cols, T{});
  if (resized.rows_ != rows || resized.cols_ != cols) return;
  const Mat old = complete(self());
  const unsigned keptRows = std::min(old.rows_, rows);
  for (int j = 0; j < static_cast<int>(std::min(old.cols_, cols)); ++j) {
    resized.col(j).slice(0, keptRows, 1) = old.col(j).slice(0, keptRows, 1);
  }
  reference(resized);
}

template <class Mat, class Vec, class T>
Mat& GenMatBase<Mat, Vec, T>::assign(const Mat& m) {
  shapeCheck(m, self());
  vec_ = m.vec_;
  return self();
}

template <class Mat, class Vec, class T>
Mat& GenMatBase<Mat, Vec, T>::fill(T x) {
  vec_ = x;
  return self();
}

// ---- Views --------------------------------------------------------------------------------------

template <class Mat, class Vec, class T>
Vec GenMatBase<Mat, Vec, T>::row(int i) const {
  return vec_.slice(i, cols_, static_cast<int>(rows_));
}

template <class Mat, class Vec, class T>
Vec GenMatBase<Mat, Vec, T>::col(int j) const {
  return vec_.slice(static_cast<int>(offset(0, j)), rows_, 1);
}

template <class Mat, class Vec, class T>
Vec GenMatBase<Mat, Vec, T>::diagonal(int k) const {
  const long long right = std::max(k, 0);
  const long long down = right - k;
  const long long length = std::min(rows_ - down, cols_ - right);
  if (length <= 0) return vec_.slice(0, 0, 1);
  return vec_.slice(static_cast<int>(offset(static_cast<int>(down), static_cast<int>(right))),
                    static_cast<unsigned>(length), static_cast<int>(rows_ + 1));
}

template <class Mat, class Vec, class T>
Vec GenMatBase<Mat, Vec, T>::bcrow(int i) const {
  if (static_cast<unsigned>(i) >= rows_) raiseMathErrorCode(kNoSuchRow, i, rows_);
  return row(i);
}

template <class Mat, class Vec, class T>
Vec GenMatBase<Mat, Vec, T>::bccol(int j) const {
  if (static_cast<unsigned>(j) >= cols_) raiseMathErrorCode(kNoSuchColumn, j, cols_);
  return col(j);
}

template <class Mat, class Vec, class T>
Vec GenMatBase<Mat, Vec, T>::bcdiagonal(int k) const {
  const long long negated = -static_cast<long long>(k);
  if (k >= static_cast<long long>(cols_) || negated >= static_cast<long long>(rows_)) {
    raiseMathErrorCode(kNoSuchDiagonal, static_cast<int>(negated), Mat::className, rows_, cols_);
  }
  return diagonal(k);
}

template <class Mat, class Vec, class T>
void GenMatBase<Mat, Vec, T>::reportElement(int i, int j) const {
  raiseMathErrorCode(kNoSuchElement, i, j, rows_, cols_);
}

// ---- Arithmetic in place ------------------------------------------------------------------------

template <class Mat, class Vec, class T>
Mat& GenMatBase<Mat, Vec, T>::operator+=(const Mat& m) {
  shapeCheck(self(), m);
  vec_ += m.vec_;
  return self();
}

template <class Mat, class Vec, class T>
Mat& GenMatBase<Mat, Vec, T>::operator-=(const Mat& m) {
  shapeCheck(self(), m);
  vec_ -= m.vec_;
  return self();
}

template <class Mat, class Vec, class T>
Mat& GenMatBase<Mat, Vec, T>::operator*=(const Mat& m) {
  shapeCheck(self(), m);
  vec_ *= m.vec_;
  return self();
}

template <class Mat, class Vec, class T>
Mat& GenMatBase<Mat, Vec, T>::operator/=(const Mat& m) {
  shapeCheck(self(), m);
  vec_ /= m.vec_;
  return self();
}

template <class Mat, class Vec, class T>
Mat& GenMatBase<Mat, Vec, T>::operator+=(T x) {
  vec_ += x;
  return self();
}

template <class Mat, class Vec, class T>
Mat& GenMatBase<Mat, Vec, T>::operator-=(T x) {
  vec_ -= x;
  return self();
}

template <class Mat, class Vec, class T>
Mat& GenMatBase<Mat, Vec, T>::operator*=(T x) {
  vec_ *= x;
  return self();
}

template <class Mat, class Vec, class T>
Mat& GenMatBase<Mat, Vec, T>::operator/=(T x) {
  vec_ /= x;
  return self();
}

template <class Mat, class Vec, class T>
Mat& GenMatBase<Mat, Vec, T>::operator++() {
  ++vec_;
  return self();
}

template <class Mat, class Vec, class T>
Mat& GenMatBase<Mat, Vec, T>::operator--() {
  --vec_;
  return self();
}

template <class Mat, class Vec, class T>
int GenMatBase<Mat, Vec, T>::operator==(const GenMatBase& m) const {
  return sameShape(*this, m) && vec_ == m.vec_;
}

// ---- Text ---------------------------------------------------------------------------------------

template <class Mat, class Vec, class T>
void GenMatBase<Mat, Vec, T>::printOn(std::ostream& out) const {
  const auto width = out.width(0);
  printElements(out, width, complete(self()));
}

template <class Mat, class Vec, class T>
void GenMatBase<Mat, Vec, T>::scanFrom(std::istream& in) {
  const ScannedMatrix<Vec> text(in);
  if (!text.good() || !text.isComplete(Mat::className)) return;
  resize(text.rows(), text.cols());
  if (!sameShape(*this, text)) return;
  text.forEach([this](int i, int j, T x) { set(i, j, x); });
}

}  // namespace knotwork
