// SPDX-License-Identifier: MIT
// Curves and surfaces by the model of B-splines, in long double.
// Curves and surfaces are seen alike: a curve is a surface of one row.
#pragma once

#include <cmath>
#include <random>
#include <vector>

#include "knotwork/kernel/spline.h"
#include "knotwork/kernel/surface.h"
#include "support/bspline_model.h"

namespace knotwork::test {

using Real = long double;

/// One direction: knots with the outermost ones, which take no part, as NaN.
template <class Real>
struct BasisOf : private BsplineModel<Real> {
  explicit BasisOf(const KnotRecord& k)
      : BsplineModel<Real>{k.degree(), {Real(NAN)}}, spans(k.spans()) {
    for (int i = k.first(); i <= k.last(); ++i) this->t.push_back(k(i));
    this->t.push_back(Real(NAN));
  }
  using BsplineModel<Real>::degree;
  int spans;

  /// The span by definition. Those of degree 0 may be empty, and the first and last are unbounded.
  int span(double u) const {
    if (degree > 0) return BsplineModel<Real>::span(u) - degree;
    int last = 0;
    for (int j = 1; j < spans; ++j)
      if (this->t[at(j)] <= u) last = j;
    return last;
  }

  /// Derivative of order q of basis function i, in the polynomial of span j.
  Real value(int i, int q, int j, Real u) const {
    return BsplineModel<Real>::value(i, degree, q, j + degree, u);
  }
};

using Basis = BasisOf<Real>;

/// What curves and surfaces have in common.
struct Net {
  const KnotRecord &u, &v;
  const double* points;
  int dim, coords;
};

inline Net net(const AP_SPLINE& s) {
  static const KnotRecord one(0, 1);
  return {s.Knots(), one, s.CV(), s.Dim(), s.Coords()};
}

inline Net net(const AP_SURFACE& s) {
  return {s.uKnots(), s.vKnots(), s.CV(), s.Dim(), s.Coords()};
}

/// A sum and the largest of its terms.
struct Sum {
  Real value = 0;
  Real largest = 0;
  void add(Real term, Real size) {
    value += term;
    largest = std::max(largest, std::fabs(size));
  }
};

/// Partial (p, q) of stored coordinate c.
inline Sum partial(const Net& s, double u, double v, int p, int q, int c) {
  const Basis bu(s.u), bv(s.v);
  const int ju = bu.span(u), jv = bv.span(v);
  Sum sum;
  for (int i = jv; i <= jv + bv.degree; ++i) {
    for (int j = ju; j <= ju + bu.degree; ++j) {
      const Real term = bv.value(i, q, jv, v) * bu.value(j, p, ju, u) *
                        s.points[((bu.spans + bu.degree) * i + j) * s.coords + c];
      sum.add(term, term);
    }
  }
  return sum;
}

/// Seeded objects: knots with repetitions, clamped or not; weights, if any, in [0.5, 2].
class Maker {
 public:
  explicit Maker(unsigned seed) : random_(seed) {}

  int upTo(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n + 1)); }
  double real(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random_);
  }

  /// Knots that rise by steps from a tenth to ten, each interior one repeated up to `degree` times.
  void fill(KnotRecord& k) {
    std::vector<double> knots;
    const bool clamped = upTo(2) > 0;
    double t = real(-3, 3);
    for (int i = k.first(), run = 0; i <= k.last(); ++i, ++run) {
      const bool held = clamped && (i <= 0 || i > k.spans());
      const bool repeat = i > 0 && i < k.spans() && run < k.degree() && upTo(3) == 0;
      if (i > k.first() && !held && !repeat) t += std::exp(real(-2.3, 2.3)), run = 0;
      knots.push_back(t);
    }
    k.assign(knots.data(), static_cast<int>(knots.size()));
  }

  void fill(double* points, int count, int dim, bool rational) {
    for (int i = 0; i < count; ++i) {
      const double weight = rational ? real(0.5, 2) : 1;
      for (int c = 0; c < dim; ++c) *points++ = weight * real(-10, 10);
      if (rational) *points++ = weight;
    }
  }

  /// A curve of degree up to 7, or a surface of degrees up to 4.
  /// @param rational  for surfaces, one bit per direction.
  template <class Object>
  Object any(int dim, int rational) {
    if constexpr (std::is_same_v<Object, AP_SPLINE>) {
      AP_SPLINE s(dim, upTo(7), 1 + upTo(9), rational);
      fill(s.Knots());
      fill(s.CV(), s.Count(), dim, rational != 0);
      return s;
    } else {
      AP_SURFACE s(dim, upTo(4), upTo(4), 1 + upTo(4), 1 + upTo(4), rational & 1, rational & 2);
      fill(s.uKnots());
      fill(s.vKnots());
      fill(s.CV(), s.uCount() * s.vCount(), dim, rational != 0);
      return s;
    }
  }

  /// A parameter inside, at a knot, or a little outside the domain.
  double parameter(const KnotRecord& k) {
    if (k.last() < k.first()) return real(-1, 1);
    const double low = k.degree() ? k(0) : k(1), high = k.degree() ? k(k.spans()) : k(k.last());
    const int kind = upTo(9);
    if (kind == 0) return k(k.first() + upTo(k.last() - k.first()));
    if (kind == 1) return low;
    if (kind == 2) return high;
    const double margin = kind == 3 ? 0.05 * (high - low) : 0.0;
    return real(low - margin, high + margin);
  }

 private:
  std::mt19937 random_;
};

/// |a - b| in units of the last place of `scale`.
inline double ulps(Real a, Real b, Real scale) {
  const double s = static_cast<double>(std::fabs(scale));
  const double unit = s > 0 ? std::nextafter(s, INFINITY) - s : 4e-324;
  return static_cast<double>(std::fabs(a - b) / unit);
}

}  // namespace knotwork::test
