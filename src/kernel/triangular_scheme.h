// SPDX-License-Identifier: MIT
// De Boor's triangle run backwards: weights of a span's control points, for point and derivatives.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>

#include "kernel/bounded.h"
#include "kernel/doubled.h"
#include "kernel/span_search.h"
#include "kernel/storage.h"

namespace knotwork::detail {

/// The control points of a span in the order of the scheme, which starts from the end nearer to t.
template <class Number>
struct Rows {
  /// @param points  first control point of the span; the next one lies `stride` numbers on.
  Rows(const Number* points, std::ptrdiff_t stride, int degree, const NearEnd& end)
      : first(points + (1 - end.step) / 2 * degree * stride), step(end.step * stride) {}

  const Number* operator[](int i) const { return first + i * step; }

  const Number* first;
  std::ptrdiff_t step;
};

/// @return the numbers that a triangle of weights takes.
constexpr long long schemeNumbers(int degree) {
  return 2 * (degree + 1LL) + degree * (degree + 1LL) / 2;
}

/// Weights of a span's m + 1 control points and of the m legs between them.
///
/// With x_i the i-th knot from the near end onwards, level l of the triangle has a leg for each i
/// in [0, m - l], over the knots x_(i-m+l) and x_(i+1). For the point, every level divides its legs
/// as t divides their knots; for a derivative of order q, the levels up to q divide them by the
/// distance of their knots instead. All knot distances bridge the span, and no weight of the point
/// and of its first derivative is a difference of others, so no digit is lost that the data do not
/// lose. Read from the right end, the same steps are the mirrored scheme. Source: L. Ramshaw,
/// Blossoming (1987); C. de Boor, A Practical Guide to Splines, ch. X.
///
/// kDegree is the degree m where it is known at compile time, else 0. Number is double, Bounded to
/// learn what rounding does, or Doubled beyond the ends of the domain (isBeyond).
template <int kDegree, class Number = double>
class TriangularScheme {
 public:
  /// @param work  room for schemeNumbers(degree) numbers.
  TriangularScheme(Number* work, int degree, const NearEnd& end, double t)
      : degree_(degree),
        point_(work),
        leg_(work + m() + 1),
        inverse_(leg_ + m() + 1),
        end_(end),
        t_(t) {
    // Reciprocals of x_(i+1) - x_(i-m+l), from the last level on: m (m + 1) / 2 divisions, which
    // wait for nothing, in place of one in every step below.
    Number* length = inverse_;
    for (int level = m(); level > 0; --level) {
      for (int i = 0; i <= m() - level; ++i) {
        const Number distance = knot(i + 1) - knot(i - m() + level);
        *length++ = valueOf(distance) != 0.0 ? distance : std::numeric_limits<double>::infinity();
      }
    }
    for (Number* x = inverse_; x < length; ++x) *x = 1.0 / *x;  // 0 for a span without length
  }

  /// Calls use(q, weights) for every order q from min(k, degree) down to 0, with the weights of the
  /// legs in the order of the scheme, and for q = 0 with those of the points.
  template <class Use>
  void forEachOrder(int k, const Use& use) {
    point_[0] = 1.0;
    for (int q = m(); q > 0; divide(q), --q) {
      if (q <= k) use(q, legWeights(q));
    }
    use(0, static_cast<const Number*>(point_));
  }

 private:
  int m() const { return kDegree != 0 ? kDegree : degree_; }
  Number knot(int x) const { return end_.knot[end_.step * x]; }

  // Reciprocal knot distances of a level's legs; the shortest levels come first.
  const Number* inverses(int level) const {
    const std::ptrdiff_t legs = m() - level;
    return inverse_ + legs * (legs + 1) / 2;
  }

  // A leg's weight w goes to the two points that it joins, in the ratio of t to its knots:
  // w (x_(i+1) - t) / length to the one, w (t - x_(i-m+l)) / length to the next.
  void divide(int level) {
    const Number* const inverse = inverses(level);
    const int legs = m() - level + 1;
    Number carried = 0.0;
    for (int i = 0; i < legs; ++i) {
      const Number share = point_[i] * inverse[i];
      point_[i] = carried + (knot(i + 1) - t_) * share;
      carried = (t_ - knot(i - m() + level)) * share;
    }
    point_[legs] = carried;
  }

  // A leg's slope is (m - level + 1) / distance; from the right, both are reversed.
  const Number* legWeights(int q) {
    const int points = m() - q + 1;
    for (int i = 0; i < points; ++i) leg_[i] = point_[i];
    for (int level = q; level > 1; --level) spread(level);
    const Number* const inverse = inverses(1);
    for (int i = 0; i < m(); ++i) leg_[i] *= m() * inverse[i];
    return leg_;
  }

  // From the weights of a level's legs to those of its points, the legs of the level before: a
  // leg's slope counts (next point - point) times (m - level + 1) / length.
  void spread(int level) {
    const Number* const inverse = inverses(level);
    const int legs = m() - level + 1;
    Number carried = 0.0;
    for (int i = 0; i < legs; ++i) {
      const Number share = leg_[i] * (legs * inverse[i]);
      leg_[i] = carried - share;
      carried = share;
    }
    leg_[legs] = carried;
  }

  int degree_;
  Number* point_;
  Number* leg_;
  Number* inverse_;
  NearEnd end_;
  Number t_;
};

/// TriangularScheme::forEachOrder() of a degree in use, unrolled.
template <int kDegree, class Use>
void weighUnrolled(const NearEnd& end, double t, int k, const Use& use) {
  double work[schemeNumbers(kDegree)];
  TriangularScheme<kDegree>(work, kDegree, end, t).forEachOrder(k, use);
}

/// TriangularScheme::forEachOrder() of any degree.
/// @param spare  room for schemeNumbers(degree) numbers.
template <class Number, class Use>
void forEachOrder(Number* spare, int degree, const NearEnd& end, double t, int k, const Use& use) {
  TriangularScheme<0, Number>(spare, degree, end, t).forEachOrder(k, use);
}

/// Whether t is beyond the ends of the domain. Where knots go on there, the two parts of a weight
/// may have different signs and cancel.
inline bool isBeyond(const NearEnd& end, double t) {
  const double near = end.knot[0] - t, far = end.knot[end.step] - t;
  return (near > 0.0 && far > 0.0) || (near < 0.0 && far < 0.0);
}

/// TriangularScheme::forEachOrder() in doubled precision, its weights rounded at the end.
template <class Use>
void forEachOrderDoubled(int degree, const NearEnd& end, double t, int k, const Use& use) {
  constexpr int kSmall = 128;
  Scratch<Doubled, kSmall> work(schemeNumbers(degree));
  Scratch<double, kSmall> rounded(degree + 1);
  TriangularScheme<0, Doubled>(work.data(), degree, end, t)
      .forEachOrder(k, [&](int q, const Doubled* weights) {
        std::transform(weights, weights + degree + (q == 0), rounded.data(),
                       [](const Doubled& w) { return valueOf(w); });
        use(q, static_cast<const double*>(rounded.data()));
      });
}

/// The same in doubles, unrolled for the degrees in use.
/// @param spare  used only by high degrees.
template <class Use>
void forEachOrder(double* spare, int degree, const NearEnd& end, double t, int k, const Use& use) {
  constexpr int kSmall = 128;
  if (degree > 0 && isBeyond(end, t)) return forEachOrderDoubled(degree, end, t, k, use);
  switch (degree) {
    case 1:
      return weighUnrolled<1>(end, t, k, use);
    case 2:
      return weighUnrolled<2>(end, t, k, use);
    case 3:
      return weighUnrolled<3>(end, t, k, use);
    case 4:
      return weighUnrolled<4>(end, t, k, use);
    case 5:
      return weighUnrolled<5>(end, t, k, use);
    default:
      break;
  }
  double small[kSmall];
  double* const work = schemeNumbers(degree) <= kSmall ? small : spare;
  TriangularScheme<0>(work, degree, end, t).forEachOrder(k, use);
}

/// The control point from which the others are reckoned.
///
/// Within the domain, where no weight is negative: the middle one if it carries a good part of the
/// weight, as it mostly does. Beyond the ends weights of both signs cancel, and a point that takes
/// little part may be far larger than the result: there, and where the middle is light, the one of
/// the largest weight.
template <class Number>
int anchor(const Number* weights, int degree) {
  const int middle = degree / 2;
  bool within = true;
  for (int i = 0; i <= degree; ++i) within &= valueOf(weights[i]) >= 0.0;
  if (within && valueOf(weights[middle]) >= 0.125) return middle;
  const auto lighter = [](const Number& x, const Number& y) {
    return std::abs(valueOf(x)) < std::abs(valueOf(y));
  };
  return static_cast<int>(std::max_element(weights, weights + degree + 1, lighter) - weights);
}

/// Sum of control points, for weights of order q from a TriangularScheme, each in index order.
///
/// Points that coincide give exactly that point, and derivatives 0; one weight alone gives its
/// point to the bit.
/// @param out  `width` numbers, the width of a control point.
template <class Number>
void combine(const Rows<Number>& points, int q, const Number* weights, Number* out, int width,
             int degree);

extern template void combine(const Rows<double>&, int, const double*, double*, int, int);
extern template void combine(const Rows<Bounded>&, int, const Bounded*, Bounded*, int, int);

}  // namespace knotwork::detail
