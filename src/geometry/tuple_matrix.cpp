// SPDX-License-Identifier: MIT
// Grids of points of one dimension: one vector, point after point down each column, so that a
// column is a list of points, a row a slice with gaps, and a component a matrix. Views are asked
// for through checked slices: a grid may have been made on a vector that is too short.
#include "knotwork/geometry/tuple_matrix.h"

#include <cstdlib>

#include "geometry/flat_points.h"
#include "knotwork/platform/foundation/xform_matrix.h"
#include "knotwork/vector/double_vec_pick.h"
#include "knotwork/vector/int_vec.h"

namespace detail = knotwork::detail;

namespace {

int magnitude(int count) { return detail::clampToInt(std::llabs(count)); }

}  // namespace

// ---- Construction -------------------------------------------------------------------------------

TtupleMatrix::TtupleMatrix() : dimension_(1), rows_(0), cols_(0) {}
TtupleMatrix::TtupleMatrix(const TtupleMatrix& other) = default;

TtupleMatrix::TtupleMatrix(int dim, int rows, int cols, double value)
    : TtupleMatrix(DoubleVec(detail::elementCount({dim, rows, cols}), value), dim, rows, cols) {
  // Where dimensions were asked for and there are no elements.
  const bool outOfMemory = length() == 0 && dim != 0 && rows != 0 && cols != 0;
  if (outOfMemory) rows_ = cols_ = 0;
}

TtupleMatrix::TtupleMatrix(int dim, int rows, int cols, DoubleVec& data)
    : TtupleMatrix(data, dim, rows, cols) {}

TtupleMatrix::TtupleMatrix(const DoubleVec& data, int dim, int rows, int cols)
    : DoubleVec(data),
      dimension_(dim >= 1 && rows >= 0 && cols >= 0 ? dim : 1),
      rows_(magnitude(rows)),
      cols_(magnitude(cols)) {}

TtupleMatrix& TtupleMatrix::operator=(const TtupleMatrix& other) {
  if (dimension_ == other.dimension_ && rows_ == other.rows_ && cols_ == other.cols_ &&
      length() == other.length()) {
    DoubleVec::operator=(other);
  }
  return *this;
}

// ---- Shape and access ---------------------------------------------------------------------------

int TtupleMatrix::rows() const { return rows_; }
int TtupleMatrix::cols() const { return cols_; }
int TtupleMatrix::size() const { return dimension_; }
DoubleVec TtupleMatrix::data() { return *this; }
DoubleVec TtupleMatrix::data() const { return deepCopy(); }

bool TtupleMatrix::correctTuple(int c) const { return 0 <= c && c < dimension_; }
bool TtupleMatrix::correctRow(int i) const { return 0 <= i && i < rows_; }
bool TtupleMatrix::correctCol(int j) const { return 0 <= j && j < cols_; }
void TtupleMatrix::boundsCheck(int, int) const {}

// Flat element where point (i, j) starts; no vector has points beyond the range of int.
long long TtupleMatrix::offset(int i, int j) const {
  const long long point = static_cast<long long>(rows_) * j + i;
  return static_cast<long long>(detail::clampToInt(point)) * dimension_;
}

long long TtupleMatrix::columnLength() const { return static_cast<long long>(rows_) * dimension_; }

DoubleVec TtupleMatrix::pointView(int i, int j) const {
  return detail::checkedSlice(*this, offset(i, j), dimension_);
}

DoubleVec TtupleMatrix::realPoint(int i, int j) { return pointView(i, j); }
DoubleVec TtupleMatrix::realPoint(int i, int j) const { return pointView(i, j).copy(); }
DoubleVec TtupleMatrix::point(int i, int j) { return realPoint(i, j); }
DoubleVec TtupleMatrix::point(int i, int j) const { return realPoint(i, j); }
DoubleVec TtupleMatrix::operator()(int i, int j) { return realPoint(i, j); }
DoubleVec TtupleMatrix::operator()(int i, int j) const { return realPoint(i, j); }

// ---- Rows and columns ---------------------------------------------------------------------------

DoubleVec TtupleMatrix::columnView(int j) const {
  if (!correctCol(j)) return DoubleVec();
  return detail::checkedSlice(*this, offset(0, j), columnLength());
}

DoubleVec TtupleMatrix::column(int j) { return columnView(j); }
DoubleVec TtupleMatrix::column(int j) const { return columnView(j).copy(); }

DoubleVec TtupleMatrix::row(int i) const {
  if (!correctRow(i)) return DoubleVec();
  DoubleVec result(detail::elementCount({cols_, dimension_}));
  for (int c = 0; c < dimension_; ++c) {
    DoubleVec target = detail::checkedSlice(result, c, cols_, dimension_);
    target = detail::checkedSlice(*this, offset(i, 0) + c, cols_, columnLength());
  }
  return result;
}

TtupleVector TtupleMatrix::rowVector(int i) const {
  DoubleVec points = row(i);
  return TtupleVector(dimension_, points);
}

TtupleVector TtupleMatrix::columnVector(int j) {
  DoubleVec points = column(j);
  return TtupleVector(dimension_, points);
}

TtupleVector TtupleMatrix::columnVector(int j) const {
  DoubleVec points = column(j);
  return TtupleVector(dimension_, points);
}

TtupleMatrix TtupleMatrix::cols(const IntVec& which) const {
  const int count = static_cast<int>(which.length());
  for (int k = 0; k < count; ++k) {
    if (!correctCol(which(k))) return TtupleMatrix();
  }
  TtupleMatrix result(dimension_, rows_, count, 0.0);
  for (int k = 0; k < count; ++k) result.columnView(k) = columnView(which(k));
  return result;
}

TtupleMatrix TtupleMatrix::rows(const IntVec& which) const {
  const int count = static_cast<int>(which.length());
  for (int k = 0; k < count; ++k) {
    if (cols_ > 0 && (which(k) < 0 || which(k) >= columnLength())) return TtupleMatrix();
  }
  TtupleMatrix result(dimension_, count, cols_, 0.0);
  for (int j = 0; j < cols_; ++j) {
    DoubleVec source = columnView(j);
    if (source.length() > 0) result.columnView(j) = source.vecPick(which);
  }
  return result;
}

// ---- Components ---------------------------------------------------------------------------------

DoubleGenMat TtupleMatrix::componentView(int c) const {
  if (!correctTuple(c)) return DoubleGenMat();
  const long long points = static_cast<long long>(rows_) * cols_;
  const DoubleVec elements = detail::checkedSlice(*this, c, points, dimension_);
  if (elements.length() != points) return DoubleGenMat();
  return DoubleGenMat(elements, static_cast<unsigned>(rows_), static_cast<unsigned>(cols_));
}

DoubleGenMat TtupleMatrix::component(int c) { return componentView(c); }
DoubleGenMat TtupleMatrix::component(int c) const { return componentView(c).copy(); }

void TtupleMatrix::setComponent(int c, const DoubleGenMat& m) {
  for (int j = 0; j < cols_; ++j) {
    DoubleVec target = detail::checkedSlice(*this, offset(0, j) + c, rows_, dimension_);
    const bool exists = static_cast<unsigned>(j) < m.cols();
    const auto first = static_cast<long long>(m.rows()) * j;
    target = exists ? detail::checkedSlice(m.dataVec(), first, m.rows()) : DoubleVec();
  }
}

// ---- Whole grids --------------------------------------------------------------------------------

DoubleGenMat TtupleMatrix::vecLen() const {
  DoubleGenMat result(static_cast<unsigned>(rows_), static_cast<unsigned>(cols_));
  for (int j = 0; j < static_cast<int>(result.cols()); ++j) {
    for (int i = 0; i < static_cast<int>(result.rows()); ++i) {
      result(i, j) = pointView(i, j).vecLen();
    }
  }
  return result;
}

TtupleMatrix TtupleMatrix::copy() const { return {deepCopy(), dimension_, rows_, cols_}; }

TtupleMatrix& TtupleMatrix::reference(TtupleMatrix& other) {
  dimension_ = other.dimension_;
  rows_ = other.rows_;
  cols_ = other.cols_;
  DoubleVec::reference(other);
  return *this;
}

void TtupleMatrix::applyTransformation(const TxformMatrix& transform) {
  const T4dDblMatrix& matrix = transform.matrix();
  for (int i = 0; i < rows_; ++i) {
    for (int j = 0; j < cols_; ++j) {
      detail::transformPoint(*this, offset(i, j), dimension_, matrix);
    }
  }
}

void TtupleMatrix::printOn(std::ostream&) const {}
void TtupleMatrix::printRaw(std::ostream&) const {}
bool TtupleMatrix::readRaw(std::istream&) { return false; }
