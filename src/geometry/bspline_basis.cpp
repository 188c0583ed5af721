// SPDX-License-Identifier: MIT
// B-spline basis functions and knots.
//
// The functions that do not vanish on a span come from those of the degree below, starting with the
// one of degree 0 that is 1 there (t are the knots, j the degree, i the function):
//   N(i, j) = (u - t(i)) / (t(i+j) - t(i)) N(i, j-1)
//           + (t(i+j+1) - u) / (t(i+j+1) - t(i+1)) N(i+1, j-1)
// A derivative of order q takes its last q steps by another rule:
//   N'(i, j) = j (N(i, j-1) / (t(i+j) - t(i)) - N(i+1, j-1) / (t(i+j+1) - t(i+1)))
// Both divide by knot differences that bridge the span, which is not empty, so never by zero.
#include "knotwork/geometry/bspline_basis.h"

#include <algorithm>
#include <cmath>

#include "geometry/flat_points.h"

namespace knotwork {
namespace {

int lengthOf(const DoubleVec& v) { return static_cast<int>(v.length()); }

bool ascends(const DoubleVec& v) {
  for (int i = 1; i < lengthOf(v); ++i) {
    if (!(v(i - 1) <= v(i))) return false;
  }
  return v.length() == 0 || (std::isfinite(v(0)) && std::isfinite(v(lengthOf(v) - 1)));
}

// A row for each u(i) of its derivative number derivative(i). Where function j and function j +
// columns both exist they share a column; no row has both while columns > degree.
template <class Derivative>
DoubleGenMat filled(const BsplineBasis& basis, const DoubleVec& u, int columns,
                    Derivative derivative) {
  DoubleVec values(static_cast<unsigned>(basis.degree()) + 1);
  if (values.length() == 0) return DoubleGenMat();
  DoubleGenMat a(u.length(), static_cast<unsigned>(columns), 0.0);
  for (int i = 0; i < static_cast<int>(a.rows()); ++i) {
    const int first = basis.row(u(i), derivative(i), values.data());
    for (int k = 0; k <= basis.degree(); ++k) a(i, (first + k) % columns) = values(k);
  }
  return a;
}

// Where the functions differ from zero, by the conventions of a basis.
struct Supports {
  const double* t;
  int degree, count;

  // Whether u lies behind the begin of function j: at t(j) itself only if it jumps there, and not
  // at the end of the domain, where values are those from the left.
  bool beginsBefore(int j, double u) const {
    const bool jumps = t[j + degree] == t[j] && t[j] < t[j + degree + 1];
    return u > t[j] || (u == t[j] && jumps && u < t[count]);
  }

  // Whether u lies before the end of function j: there itself only if it jumps at the end of the
  // domain.
  bool reaches(int j, double u) const {
    const double end = t[j + degree + 1];
    return u < end || (u == end && end == t[count] && t[j + 1] == end && t[j] < end);
  }
};

// ---- Averages -----------------------------------------------------------------------------------

// `count` knots strictly within the data first .. last, as 9.68 and 9.69 place them. Where a knot
// comes to every interval (d = 1) they would fall on the data, the first one on its end: then they
// go to the middle.
void placeByShares(double*& next, const DoubleVec& u, int first, int last, int count) {
  const double d = static_cast<double>(last - first + 1) / static_cast<double>(count + 1);
  for (int j = 1; j <= count; ++j) {
    const double at = d > 1 ? j * d : j + 0.5;
    const int i = static_cast<int>(at);
    const double a = at - i;
    *next++ = (1 - a) * u(first + i - 1) + a * u(first + i);
  }
}

// As 9.8: the means of `degree` neighbours.
void placeByMeans(double* next, const DoubleVec& u, int degree) {
  for (int j = 1; j + degree < lengthOf(u); ++j) {
    double sum = 0;
    for (int k = j; k < j + degree; ++k) sum += u(k);
    *next++ = sum / degree;
  }
}

// `free` knots shared out between the corners, in proportion to the data there, and the corners.
void placeBetween(double* next, const DoubleVec& u, int degree, const IntVec& corners, int free) {
  const int bends = static_cast<int>(corners.length()), last = lengthOf(u) - 1;
  int shared = 0;
  for (int s = 0, from = 0; s <= bends; ++s) {
    if (s > 0) next = std::fill_n(next, degree, u(from));
    const int to = s < bends ? corners(s) : last;
    const int upTo = static_cast<int>(static_cast<long long>(free) * to / last);
    placeByShares(next, u, from, to, upTo - shared);
    shared = upTo;
    from = to;
  }
}

bool areInner(const IntVec& corners, int data) {
  int before = 0;
  for (int k = 0; k < static_cast<int>(corners.length()); ++k) {
    if (corners(k) <= before) return false;
    before = corners(k);
  }
  return before < data - 1;
}

}  // namespace

// ---- The functions ------------------------------------------------------------------------------

BsplineBasis::BsplineBasis() : degree_(0), count_(0) {}

BsplineBasis::BsplineBasis(int degree, const DoubleVec& knots) : BsplineBasis() {
  const long long count = static_cast<long long>(knots.length()) - degree - 1;
  if (degree < 0 || count <= degree || !ascends(knots)) return;
  if (!(knots(degree) < knots(static_cast<int>(count)))) return;
  knots_.reference(knots.deepCopy());
  if (knots_.length() != knots.length()) return;  // reported: no memory
  degree_ = degree;
  count_ = static_cast<int>(count);
}

BsplineBasis::BsplineBasis(const BsplineBasis& other) = default;
BsplineBasis::~BsplineBasis() = default;

BsplineBasis& BsplineBasis::operator=(const BsplineBasis& other) {
  degree_ = other.degree_;
  count_ = other.count_;
  knots_.reference(other.knots_);
  return *this;
}

int BsplineBasis::degree() const { return degree_; }
int BsplineBasis::count() const { return count_; }
DoubleVec BsplineBasis::knots() const { return knots_.deepCopy(); }

int BsplineBasis::span(double u) const {
  if (count_ == 0) return -1;
  const double* const t = knots_.data();
  const double *begin = t + degree_, *end = t + count_;
  const double* const behind = u < *end ? std::upper_bound(begin, end, std::max(u, *begin))
                                        : std::lower_bound(begin, end, *end);
  return static_cast<int>(behind - t) - 1;
}

int BsplineBasis::row(double u, int derivative, double* values) const {
  if (count_ == 0 || derivative < 0) return -1;
  const int span = this->span(u);
  const double* const t = knots_.data() + span;
  std::fill_n(values, degree_ + 1, 0.0);
  if (derivative > degree_) return span - degree_;
  values[0] = 1.0;
  for (int j = 1; j <= degree_; ++j) {
    const bool derives = j > degree_ - derivative;
    double carried = 0.0;  // what function span - j + k has from the one on its left
    for (int k = 0; k < j; ++k) {
      const double left = t[1 + k - j], right = t[1 + k], width = right - left;
      // Quotients first: at a clamped end they are exactly 1.
      const double falling = values[k] * (derives ? -j / width : (right - u) / width);
      const double rising = values[k] * (derives ? j / width : (u - left) / width);
      values[k] = carried + falling;
      carried = rising;
    }
    values[j] = carried;
  }
  return span - degree_;
}

DoubleVec BsplineBasis::greville() const {
  const double* const t = knots_.data();
  DoubleVec g(static_cast<unsigned>(count_));
  for (int j = 0; j < lengthOf(g); ++j) {
    double sum = 0;
    for (int k = 1; k <= degree_; ++k) sum += t[j + k];
    g(j) = degree_ > 0 ? sum / degree_ : t[j] + (t[j + 1] - t[j]) / 2;
  }
  return g;
}

// ---- Matrices -----------------------------------------------------------------------------------

DoubleGenMat BsplineBasis::collocation(const DoubleVec& u, int derivative) const {
  if (count_ == 0 || derivative < 0) return DoubleGenMat();
  return filled(*this, u, count_, [derivative](int) { return derivative; });
}

DoubleGenMat BsplineBasis::collocation(const DoubleVec& u, const IntVec& derivatives) const {
  if (count_ == 0 || derivatives.length() != u.length()) return DoubleGenMat();
  for (int i = 0; i < lengthOf(u); ++i) {
    if (derivatives(i) < 0) return DoubleGenMat();
  }
  return filled(*this, u, count_, [&](int i) { return derivatives(i); });
}

DoubleGenMat BsplineBasis::periodicCollocation(const DoubleVec& u, int derivative) const {
  const int columns = count_ - degree_;
  if (derivative < 0 || columns <= degree_) return DoubleGenMat();
  return filled(*this, u, columns, [derivative](int) { return derivative; });
}

// ---- Schoenberg and Whitney ---------------------------------------------------------------------

int BsplineBasis::firstUndetermined(const DoubleVec& u) const {
  if (count_ == 0 || !ascends(u)) return -1;
  const Supports functions{knots_.data(), degree_, count_};
  int next = 0, data = lengthOf(u);
  while (next < data && u(next) < functions.t[degree_]) ++next;
  while (data > next && u(data - 1) > functions.t[count_]) --data;
  // Functions begin, and end, in the order of their indices. So the first free datum is the best
  // one for a function to take: of those behind it, a later function can use no fewer.
  for (int j = 0; j < count_; ++j, ++next) {
    while (next < data && !functions.beginsBefore(j, u(next))) ++next;
    if (next == data || !functions.reaches(j, u(next))) return j;
  }
  return count_;
}

// ---- Knots --------------------------------------------------------------------------------------

DoubleVec clampedKnots(int degree, const DoubleVec& inner, double from, double to) {
  if (degree < 0) return DoubleVec();
  DoubleVec knots(detail::countOrReport(inner.length() + 2LL * degree + 2));
  for (int k = 0; k < lengthOf(knots); ++k) {
    const int j = k - degree - 1;
    knots(k) = j < 0 ? from : j < lengthOf(inner) ? inner(j) : to;
  }
  return knots;
}

DoubleVec uniformKnots(int degree, int count, double from, double to) {
  if (degree < 0 || count <= degree) return DoubleVec();
  const int spans = count - degree;
  DoubleVec knots(detail::countOrReport(1LL + count + degree));
  for (int k = 0; k < lengthOf(knots); ++k) {
    const int j = std::clamp(k - degree, 0, spans);
    knots(k) = j == spans ? to : from + (to - from) * (static_cast<double>(j) / spans);
  }
  return knots;
}

DoubleVec periodicKnots(int degree, int spans, double from, double to) {
  if (degree < 0 || spans <= degree) return DoubleVec();
  DoubleVec knots(detail::countOrReport(1LL + spans + 2LL * degree));
  for (int k = 0; k < lengthOf(knots); ++k) {
    const int j = k - degree;
    knots(k) = j == spans ? to : from + (to - from) * (static_cast<double>(j) / spans);
  }
  return knots;
}

DoubleVec averagedKnots(const DoubleVec& u, int degree, int count, const IntVec& corners) {
  const int data = lengthOf(u);
  const long long forCorners = static_cast<long long>(corners.length()) * degree;
  const long long free = count - forCorners - degree - 1;
  if (degree < 1 || free < 0 || count > data || !ascends(u) || !areInner(corners, data)) {
    return DoubleVec();
  }
  DoubleVec inner(static_cast<unsigned>(forCorners + free));
  if (lengthOf(inner) != forCorners + free) return DoubleVec();  // reported: no memory
  if (corners.length() == 0 && count == data) {
    placeByMeans(inner.data(), u, degree);
  } else {
    placeBetween(inner.data(), u, degree, corners, static_cast<int>(free));
  }
  return clampedKnots(degree, inner, u(0), u(data - 1));
}

}  // namespace knotwork
