// SPDX-License-Identifier: MIT
// Lists of points of one dimension: a vector, point after point. A point is a slice of it and a
// component a slice with the dimension as its stride, so that both write through. A constant list
// hands out copies: its views would be a way to write.
#include "knotwork/geometry/tuple_vector.h"

#include <algorithm>

#include "geometry/flat_points.h"
#include "knotwork/platform/foundation/xform_matrix.h"
#include "knotwork/vector/int_vec.h"
#include "vector/shared_block.h"

namespace detail = knotwork::detail;

namespace {

int dimensionOrOne(int dim, int n) { return dim >= 1 && n >= 0 ? dim : 1; }

// The indices first, first + 1, ..., count of them; none for a negative count.
IntVec indexRange(int first, int count) {
  return IntVec(static_cast<unsigned>(std::max(count, 0)), first, 1);
}

}  // namespace

// ---- Construction -------------------------------------------------------------------------------

TtupleVector::TtupleVector() : dimension_(1) {}
TtupleVector::TtupleVector(const TtupleVector& other) = default;

TtupleVector::TtupleVector(int dim, int n, double value)
    : DoubleVec(detail::elementCount({dim, n}), value), dimension_(dimensionOrOne(dim, n)) {}

TtupleVector::TtupleVector(int dim, int n, const double* values)
    : DoubleVec(values, detail::elementCount({dim, n})), dimension_(dimensionOrOne(dim, n)) {}

TtupleVector::TtupleVector(int dim, int n, const double* const* points)
    : DoubleVec(detail::elementCount({dim, n}), 0.0), dimension_(dim) {
  if (length() == 0) return;
  const int last = dimensionOrOne(dim, n) - 1;
  for (int i = 0; i < n; ++i) DoubleVec::operator()(i) = points[i][last];
}

TtupleVector::TtupleVector(int dim, DoubleVec& data) : TtupleVector(data, std::max(dim, 1)) {}

TtupleVector::TtupleVector(const DoubleVec& data, int dim) : DoubleVec(data), dimension_(dim) {}

TtupleVector& TtupleVector::operator=(const TtupleVector& other) {
  if (dimension_ == other.dimension_ && length() == other.length()) DoubleVec::operator=(other);
  return *this;
}

// ---- Counts and access --------------------------------------------------------------------------

int TtupleVector::points() const {
  return dimension_ < 1 ? 0 : static_cast<int>(length() / static_cast<unsigned>(dimension_));
}

int TtupleVector::size() const { return dimension_; }
DoubleVec TtupleVector::data() { return *this; }
DoubleVec TtupleVector::data() const { return deepCopy(); }

bool TtupleVector::correctIndex(int i) const { return 0 <= i && i < points(); }
bool TtupleVector::correctTuple(int c) const { return 0 <= c && c < dimension_; }

bool TtupleVector::correctRange(int start, int count) const {
  const long long last = static_cast<long long>(start) + count - 1;
  return correctIndex(start) && 0 <= last && last < points();
}

void TtupleVector::boundsCheck(int) const {}

DoubleVec TtupleVector::pointView(int i) const {
  return detail::checkedSlice(*this, static_cast<long long>(i) * dimension_, dimension_);
}

DoubleVec TtupleVector::realPoint(int i) { return pointView(i); }
DoubleVec TtupleVector::realPoint(int i) const { return pointView(i).copy(); }
DoubleVec TtupleVector::point(int i) { return realPoint(i); }
DoubleVec TtupleVector::point(int i) const { return realPoint(i); }
DoubleVec TtupleVector::operator()(int i) { return realPoint(i); }
DoubleVec TtupleVector::operator()(int i) const { return realPoint(i); }

DoubleVec TtupleVector::operator[](int i) {
  boundsCheck(i);
  return realPoint(i);
}

DoubleVec TtupleVector::operator[](int i) const {
  boundsCheck(i);
  return realPoint(i);
}

// ---- Selection ----------------------------------------------------------------------------------

DoubleVec TtupleVector::componentView(int c) const {
  if (!correctTuple(c)) return DoubleVec();
  return detail::checkedSlice(*this, c, points(), dimension_);
}

DoubleVec TtupleVector::component(int c) { return componentView(c); }
DoubleVec TtupleVector::component(int c) const { return componentView(c).copy(); }

TtupleVector TtupleVector::components(int first, int count) const {
  const long long last = static_cast<long long>(first) + count - 1;
  if (!correctTuple(first) || last >= dimension_) return TtupleVector();
  return components(indexRange(first, count));
}

TtupleVector TtupleVector::components(const IntVec& which) const {
  const int count = static_cast<int>(which.length());
  for (int j = 0; j < count; ++j) {
    if (!correctTuple(which(j))) return TtupleVector();
  }
  TtupleVector result(count, points(), 0.0);
  for (int j = 0; j < count; ++j) result.componentView(j) = componentView(which(j));
  return result;
}

TtupleVector TtupleVector::lPoints(int start, int count) {
  const int dim = std::max(dimension_, 1);
  if (count < 1 || !correctRange(start, count)) return TtupleVector(dim, 0, 0.0);
  const long long first = static_cast<long long>(start) * dim;
  const long long n = static_cast<long long>(count) * dim;
  return TtupleVector(detail::checkedSlice(*this, first, n), dim);
}

TtupleVector TtupleVector::lPoints(int start, int count) const { return rPoints(start, count); }

TtupleVector TtupleVector::rPoints(int start, int count) const {
  return TtupleVector(*this).lPoints(start, count).copy();
}

TtupleVector TtupleVector::rPoints(const IntVec& which) const {
  const int count = static_cast<int>(which.length());
  for (int k = 0; k < count; ++k) {
    if (!correctIndex(which(k))) return TtupleVector();
  }
  TtupleVector result(std::max(dimension_, 1), count, 0.0);
  for (int k = 0; k < count; ++k) result.pointView(k) = pointView(which(k));
  return result;
}

bool TtupleVector::accepts(const TtupleVector& source) const {
  return 1 <= source.dimension_ && source.dimension_ <= dimension_;
}

bool TtupleVector::setPoints(int start, int count, const TtupleVector& source) {
  if (count == 0) return true;
  if (!accepts(source) || !correctRange(start, count)) return false;
  for (int k = 0; k < count; ++k) pointView(start + k) = source.pointView(k);
  return true;
}

bool TtupleVector::setPoints(const IntVec& which, const TtupleVector& source) {
  if (!accepts(source)) return false;
  for (int k = 0; k < static_cast<int>(which.length()); ++k) {
    if (!correctIndex(which(k))) return false;
    pointView(which(k)) = source.pointView(k);
  }
  return true;
}

// ---- Whole lists --------------------------------------------------------------------------------

void TtupleVector::resize(int n) {
  if (n < 0) return detail::reportOutOfMemory();
  const unsigned count = detail::elementCount({n, dimension_});
  if (count > 0 || n == 0 || dimension_ == 0) DoubleVec::resize(count);
}

DoubleVec TtupleVector::vecLen() const {
  DoubleVec result(static_cast<unsigned>(points()));
  for (int i = 0; i < static_cast<int>(result.length()); ++i) result(i) = pointView(i).vecLen();
  return result;
}

TtupleVector TtupleVector::copy() const { return TtupleVector(deepCopy(), dimension_); }

TtupleVector& TtupleVector::reference(TtupleVector& other) {
  dimension_ = other.dimension_;
  DoubleVec::reference(other);
  return *this;
}

void TtupleVector::applyTransformation(const TxformMatrix& transform) {
  const T4dDblMatrix& matrix = transform.matrix();
  for (int i = 0; i < points(); ++i) {
    detail::transformPoint(*this, static_cast<long long>(i) * dimension_, dimension_, matrix);
  }
}

void TtupleVector::printOn(std::ostream&) const {}
void TtupleVector::printRaw(std::ostream&) const {}
bool TtupleVector::readRaw(std::istream&) { return false; }
