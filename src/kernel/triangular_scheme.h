// SPDX-License-Identifier: MIT
// De Boor's triangle run backwards: the weights of a span's control points, for point and
// derivatives.
#pragma once

#include <algorithm>
#include <cstddef>

#include "kernel/span_search.h"

namespace knotwork::detail {

/// The control points of a span in the order of the scheme, which starts from the end nearer to t.
struct Rows {
  /// @param points  first control point of the span; the next one lies `stride` doubles on.
  Rows(const double* points, std::ptrdiff_t stride, int degree, const NearEnd& end)
      : first(end.step > 0 ? points : points + degree * stride), step(end.step * stride) {}

  const double* operator[](int i) const { return first + i * step; }

  const double* first;
  std::ptrdiff_t step;
};

/// Weights of a span's m + 1 control points and of the m legs between them.
///
/// With x_i the i-th knot from the near end onwards, level l of the triangle has a leg for each i
/// in [0, m - l], over the knots x_(i-m+l) and x_(i+1). For the point, every level divides its legs
/// as t divides their knots; for a derivative of order q, the levels up to q divide them by the
/// distance of their knots instead. All knot distances bridge the span, and no weight of the point
/// and of its first derivative is a difference of others, so no digit is lost that the data do not
/// lose. Read from the right end, the same steps are the mirrored scheme. Source: L. Ramshaw,
/// Blossoming (1987); C. de Boor, A Practical Guide to Splines, ch. X.
class TriangularScheme {
 public:
  /// @param work  room for 2 (degree + 1) doubles.
  TriangularScheme(double* work, int degree, const NearEnd& end, double t)
      : point_(work), leg_(work + degree + 1), m_(degree), end_(end), t_(t) {}

  /// Calls use(q, weights) for every order q from min(k, degree) down to 0, with the weights of the
  /// legs in the order of the scheme, and for q = 0 with those of the points.
  template <class Use>
  void forEachOrder(int k, const Use& use) {
    point_[0] = 1.0;
    for (int q = m_; q > 0; divide(q), --q) {
      if (q <= k) use(q, legWeights(q));
    }
    use(0, static_cast<const double*>(point_));
  }

 private:
  double knot(int x) const { return end_.knot[end_.step * x]; }

  // Spans without length have no ratios; weights of 0 leave the near control point.
  static double inverse(double length) { return length != 0.0 ? 1.0 / length : 0.0; }

  void divide(int level) {
    const int legs = m_ - level + 1;
    double carried = 0.0;
    for (int i = 0; i < legs; ++i) {
      const double low = knot(i - m_ + level), high = knot(i + 1);
      const double share = point_[i] * inverse(high - low);
      point_[i] = carried + (high - t_) * share;
      carried = (t_ - low) * share;
    }
    point_[legs] = carried;
  }

  // Slope of leg i on a level, per unit of the leg. Seen from the right, both the leg and its knots
  // are reversed.
  double slope(int level, int i) const {
    return (m_ - level + 1) * inverse(knot(i + 1) - knot(i - m_ + level));
  }

  const double* legWeights(int q) {
    std::copy_n(point_, m_ - q + 1, leg_);
    for (int level = q; level > 1; --level) {
      double carried = 0.0;
      for (int i = 0; i <= m_ - level; ++i) {
        const double share = leg_[i] * slope(level, i);
        leg_[i] = carried - share;
        carried = share;
      }
      leg_[m_ - level + 1] = carried;
    }
    for (int i = 0; i < m_; ++i) leg_[i] *= slope(1, i);
    return leg_;
  }

  double* point_;
  double* leg_;
  int m_;
  NearEnd end_;
  double t_;
};

/// @return the doubles that TriangularScheme works in.
inline long long schemeDoubles(int degree) { return 2 * (degree + 1LL); }

/// Its work space: on the stack for degrees in use, else what the object keeps behind its control
/// points.
struct SchemeWork {
  SchemeWork(int degree, double* spare)
      : doubles(schemeDoubles(degree) <= kSmall ? small : spare) {}
  static constexpr int kSmall = 64;
  double small[kSmall];
  double* doubles;
};

/// Sum of control points, for weights of order q from a TriangularScheme, each in index order.
///
/// Points that coincide give exactly that point, and derivatives 0; one weight alone gives its
/// point to the bit.
/// @param out  `width` doubles, the width of a control point.
void combine(const Rows& points, int q, const double* weights, double* out, int width, int degree);

}  // namespace knotwork::detail
