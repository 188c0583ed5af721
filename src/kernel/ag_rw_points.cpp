// SPDX-License-Identifier: MIT
// Conversions between containers of points and the points of lists, arrays, curves and surfaces.
#include <algorithm>
#include <climits>
#include <cstdlib>

#include "kernel/point_cursors.h"
#include "knotwork/kernel/ag_rw.h"

namespace {

using knotwork::detail::GridCursor;
using knotwork::detail::ListCursor;

// How a container's points lie in its flat elements; a list is a grid of one column.
struct Layout {
  int dim;
  int rows;
  int cols;

  explicit Layout(const TtupleVector& tv) : dim(tv.size()), rows(tv.points()), cols(1) {}
  explicit Layout(const TtupleMatrix& tm) : dim(tm.size()), rows(tm.rows()), cols(tm.cols()) {}

  int start(int i, int j) const { return (rows * j + i) * dim; }

  // Whether all points lie within `flat`.
  bool fits(const DoubleVec& flat) const {
    const long long points = static_cast<long long>(rows) * cols;
    return points == 0 || points <= std::min(flat.length(), unsigned{INT_MAX}) / dim;
  }
};

// Calls f(start, p) for each point of the layout, u row after u row, with its first flat element
// and the coordinates in the record. @return false at the first point that the record does not
// have.
template <class Cursor, class F>
bool eachPoint(const Layout& layout, Cursor cursor, F f) {
  for (int i = 0; i < layout.rows; ++i) {
    for (int j = 0; j < layout.cols; ++j) {
      double* const p = cursor.next();
      if (p == nullptr) return false;
      f(layout.start(i, j), p);
    }
  }
  return true;
}

// Reads as many coordinates of each point as there are in the record, `stored`, and the container.
template <class Cursor, class Points>
bool readPoints(Cursor cursor, long long stored, Points& points) {
  const Layout layout(points);
  DoubleVec& flat = points;
  if (!layout.fits(flat)) return false;
  const auto common = static_cast<int>(std::min<long long>(layout.dim, stored));
  return eachPoint(layout, cursor, [&](int start, const double* p) {
    for (int c = 0; c < common; ++c) flat(start + c) = p[c];
  });
}

// Writes them likewise; the record's further coordinates become 1 if `fillMissing` is set.
template <class Cursor, class Points>
bool writePoints(const Points& points, Cursor cursor, long long stored, bool fillMissing) {
  const Layout layout(points);
  const DoubleVec& flat = points;
  if (!layout.fits(flat)) return false;
  const auto common = static_cast<int>(std::min<long long>(layout.dim, stored));
  return eachPoint(layout, cursor, [&](int start, double* p) {
    for (int c = 0; c < common; ++c) p[c] = flat(start + c);
    if (fillMissing) std::fill(p + std::max(common, 0), p + std::max(stored, 0LL), 1.0);
  });
}

// Whether the record has that many points; found out before a container is made for them.
template <class Cursor>
bool holds(Cursor cursor, int count) {
  while (count > 0 && cursor.next() != nullptr) --count;
  return count == 0;
}

long long coordinatesOf(const ag_spline& s) { return s.dim + std::llabs(s.rational); }

long long coordinatesOf(const ag_surface& s) {
  return s.dim + (s.uRational != 0 || s.vRational != 0 ? 1LL : 0LL);
}

long long controlPoints(int degree, int spans) { return static_cast<long long>(degree) + spans; }

bool sameCounts(const TtupleVector& tv, const ag_spline& s) {
  return tv.points() == controlPoints(s.degree, s.spans);
}

bool sameCounts(const TtupleMatrix& tm, const ag_surface& s) {
  return tm.rows() == controlPoints(s.uDegree, s.uSpans) &&
         tm.cols() == controlPoints(s.vDegree, s.vSpans);
}

}  // namespace

// ---- Lists and arrays ---------------------------------------------------------------------------

TtupleVector TagRw::cpListToTv(int dim, const ag_cp_list* list) {
  if (list == nullptr || list->dim < 2 || dim < 1 || dim > list->dim) return TtupleVector();
  if (!holds(ListCursor(list->first), list->count)) return TtupleVector();
  TtupleVector tv(dim, list->count, 0.0);
  readPoints(ListCursor(list->first), dim, tv);
  return tv;
}

DoubleVec TagRw::cpListToDv(const ag_cp_list* list) { return cpListToTv(1, list).data(); }

bool TagRw::dvToCpList(int c, const DoubleVec& v, ag_cp_list* list) {
  if (list == nullptr || c < 0 || c >= list->dim) return false;
  DoubleVec shared = v;
  const Layout layout(TtupleVector(1, shared));
  if (layout.rows != list->count) return false;
  return eachPoint(layout, ListCursor(list->first), [&](int k, double* p) { p[c] = v(k); });
}

bool TagRw::tvToCpList(const TtupleVector& tv, ag_cp_list* list) {
  if (list == nullptr || tv.points() != list->count || list->dim < tv.size()) return false;
  return writePoints(tv, ListCursor(list->first), tv.size(), false);
}

TtupleMatrix TagRw::spArrayToTm(int dim, const ag_sp_array* array) {
  if (array == nullptr || dim < 1 || dim > array->dim) return TtupleMatrix();
  if (array->rows < 0 || array->cols < 0) return TtupleMatrix();
  const long long points = static_cast<long long>(array->rows) * array->cols;
  if (points > INT_MAX) return TtupleMatrix();
  const GridCursor cursor(array->first, array->cols);
  if (!holds(cursor, static_cast<int>(points))) return TtupleMatrix();
  TtupleMatrix tm(dim, array->rows, array->cols, 0.0);
  readPoints(cursor, dim, tm);
  return tm;
}

// ---- Control points -----------------------------------------------------------------------------

bool TagRw::cvsToTv(const ag_spline* s, TtupleVector& tv) {
  if (s == nullptr || !sameCounts(tv, *s)) return false;
  return readPoints(ListCursor(s->first), coordinatesOf(*s), tv);
}

bool TagRw::tvToCvs(const TtupleVector& tv, ag_spline* s, bool fillMissing) {
  if (s == nullptr || !sameCounts(tv, *s)) return false;
  return writePoints(tv, ListCursor(s->first), coordinatesOf(*s), fillMissing);
}

bool TagRw::cvsToTm(const ag_surface* s, TtupleMatrix& tm) {
  if (s == nullptr || !sameCounts(tm, *s)) return false;
  return readPoints(GridCursor(s->first, tm.cols()), coordinatesOf(*s), tm);
}

bool TagRw::tmToCvs(const TtupleMatrix& tm, ag_surface* s, bool fillMissing) {
  if (s == nullptr || !sameCounts(tm, *s)) return false;
  return writePoints(tm, GridCursor(s->first, tm.cols()), coordinatesOf(*s), fillMissing);
}
